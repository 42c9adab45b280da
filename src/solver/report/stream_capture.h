/* stream_capture.h - a copy of what goes to the log, for a report that is written later.
 *
 * It keeps the beginning and the end: of a log beyond the limit the middle is the part that nobody misses. */
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

struct stream_capture {
    size_t limit_bytes = size_t{1} << 20U;
    std::string head; /* at most half of the limit */
    std::string tail; /* what came last; cut back to the other half whenever it has grown to twice that */
    int64_t left_out_bytes = 0;
};

/* Throws nothing: where memory is short, the text is left out and counted. */
void stream_capture_add(stream_capture *capture, const char *text) noexcept;

/* Cuts `tail` to its half of the limit and to a whole line; to be called once nothing more comes. */
void stream_capture_end(stream_capture *capture);
