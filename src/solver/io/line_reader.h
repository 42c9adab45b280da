/* line_reader.h - a text file line by line, for readers of line-oriented formats.
 *
 * Lines lie in one buffer that grows only with the longest line. They end in LF or CR LF; the last one may end with the
 * file. A byte order mark at the beginning is passed over. */
#pragma once

#include "solver/io/io.h"
#include "solver/io/raw_buffer.h"

#include <string_view>
#include <vector>

struct line_reader {
    const io_context *io = nullptr;
    byte_source *in = nullptr;
    int64_t number = 0; /* of the line that was given last, from 1 on; at the end the number of lines */
    bool at_end = false;
    bool last_is_whole = true; /* the line that was given last ended in a line end, not with the file */

    raw_buffer buffer;
    size_t next = 0, end = 0; /* what of the buffer is not given out yet */
    size_t nul = 0;           /* where the first zero byte of the buffer stands; `end`: there is none */
    bool input_ended = false;
};

void lines_open(line_reader *lines, const io_context *io, byte_source *in);

/* The next line, without its end, valid until the next call. At the end of the file `at_end` is set and the line is
 * empty. A read error, and a zero byte, which no text holds, are told and give a code. */
[[nodiscard]] int32_t lines_next(line_reader *lines, std::string_view *line);

/* Several lines at once, at least one but at the end of the file, and at most `max`; all are valid until the next call.
 * `number` is then that of the line before the first one: the caller counts on as it takes them. */
[[nodiscard]] int32_t lines_next_batch(line_reader *lines, std::string_view *line, int32_t max, int32_t *num);
