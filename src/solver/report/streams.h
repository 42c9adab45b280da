/* streams.h - text on its way out of the library.
 *
 * A set has four streams: log, message, error, warning. Text written to one of the last three goes to the log as well,
 * so that the log is their union. A stream may have a function and a file at once. The set owns its files, and not the
 * capture, which gets a copy of the log while one is set. The log has a second file, whose name is a parameter. */
#pragma once

#include "zelor.h"

#include <cstdarg>
#include <cstdio>
#include <string>

struct stream_out {
    ZLR_streamfunc func = nullptr;
    void *handle = nullptr;
    std::FILE *file = nullptr;
};

/* A file that gets the log, opened when there is something to write. */
struct stream_log_file {
    std::string name; /* empty: none */
    bool append = false;
    bool is_tried = false;
    std::FILE *file = nullptr;
};

struct stream_capture;

struct stream_set {
    stream_out out[ZLR_STREAM_COUNT];
    stream_log_file log_file;
    stream_capture *capture = nullptr;
};

/* True when text written to `stream` would reach anybody: spares composing what nobody reads. */
bool streams_linked(const stream_set *set, int32_t stream);

/* Writes text to a stream (and to the log). Unknown streams are ignored. */
void streams_write(stream_set *set, int32_t stream, const char *text);
void streams_printf(stream_set *set, int32_t stream, const char *format, ...) ZLR_PRINTF(3, 4);
void streams_vprintf(stream_set *set, int32_t stream, const char *format, va_list args);

/* Formats as printf does, into a string or behind what stands in one. */
std::string text_format(const char *format, ...) ZLR_PRINTF(1, 2);
std::string text_vformat(const char *format, va_list args);
void text_append(std::string *text, const char *format, ...) ZLR_PRINTF(2, 3);

/* Links a file to a stream; a null name ends it. Returns ZLR_RES_OK or ZLR_RES_ERR_FILE_OPEN, with the earlier file kept. */
[[nodiscard]] int32_t streams_link_file(stream_set *set, int32_t stream, const char *filename, bool append);

/* Names the second file of the log; an empty name ends it, the same name changes nothing but how a file is opened that is
 * not open yet. One that cannot be opened is told on the error stream when it is first needed, and left out. */
void streams_name_log_file(stream_set *set, const char *name, bool append);

/* Closes the files and clears the set. Returns ZLR_RES_ERR_FILE_WRITE if a file could not be completed. */
int32_t streams_close(stream_set *set);
