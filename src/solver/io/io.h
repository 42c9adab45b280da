/* io.h - file formats: the table of them, and what readers and writers share.
 *
 * A reader fills a fresh model. It reports its first error once, with file, line, what was found and what was expected,
 * and returns a code; what it leaves in the model is then thrown away. Readers work on blocks of bytes and never hold
 * the whole text. A writer leaves a whole file or none. */
#pragma once

#include "solver/io/bytes.h"
#include "solver/model/model.h"
#include "solver/params/params.h"
#include "solver/report/streams.h"
#include "zelor.h"

/* Warnings of one read: how many there were, and how many of them are told. */
struct io_tally {
    int64_t num = 0;
    int64_t most = -1; /* -1: all */
};

struct io_context {
    const char *file = nullptr; /* the name as the user gave it, for messages */
    const param_set *params = nullptr;
    stream_set *out = nullptr;
    sysenv *sys = nullptr;
    io_tally *warnings = nullptr; /* null: nobody counts them, and all are told */
};

typedef int32_t (*format_read_func)(const io_context *io, byte_source *in, model *m);
typedef int32_t (*format_write_func)(const io_context *io, byte_sink *out, const model *m);

struct file_format {
    const char *name;       /* "MPS": for messages */
    const char *extensions; /* "mps qps", without dots */
    format_read_func read;
    format_write_func write;
    bool holds_quadratic, holds_cones;
};

/* How files are written, by the parameters. One that is written anew after each run is always replaced. */
sink_options io_sink_options(const io_context *io);
sink_options io_sink_options_replacing(const io_context *io);

/* Significant digits of numbers in files, as number_write takes them. */
inline int32_t io_digits(const io_context *io)
{
    return io->params != nullptr ? param_int(io->params, IPAR_WRITE_DIGITS) : 0;
}

extern const file_format format_table[];
extern const int32_t format_count;

/* Number of the format that the extension of a name stands for (a trailing .gz is looked through; no regard to case),
 * or -1. */
int32_t format_by_name(const char *filename);

/* Number of the format that the first bytes of a text look like; -1 when it cannot be told. */
int32_t format_by_content(std::string_view head);

/* Read and write a problem file: choose the format, open, read or write, close, tell errors. `*format` is the number of
 * the format that was used; for writing it is, on entry, the one to take when the extension does not tell (-1: LP), and
 * another is taken if that one cannot hold the problem. */
[[nodiscard]] int32_t problem_read(const io_context *io, model *m, int32_t *format);
[[nodiscard]] int32_t problem_write(const io_context *io, const model *m, int32_t *format);

/* The message of a failed read: "FILE(LINE): MESSAGE." on the error stream. Returns `code`, so that a caller writes
 * `return io_error(io, ZLR_RES_ERR_FILE_FORMAT, line, "found '%s' where a number was expected", text)`. `line` 0: the file as a whole.
 * Texts from the file are shown through io_quote, which cuts them and replaces what is not printable. */
int32_t io_error(const io_context *io, int32_t code, int64_t line, const char *format, ...) ZLR_PRINTF(4, 5);
void io_warning(const io_context *io, int64_t line, const char *format, ...) ZLR_PRINTF(3, 4);
std::string io_quote(std::string_view text);

/* Bytes of the well-formed UTF-8 character at the beginning of a text that is not empty; 0: there is none. */
size_t utf8_size(std::string_view text);

/* The formats. */
int32_t mps_read(const io_context *io, byte_source *in, model *m);
int32_t mps_write(const io_context *io, byte_sink *out, const model *m);
int32_t lp_read(const io_context *io, byte_source *in, model *m);
int32_t lp_write(const io_context *io, byte_sink *out, const model *m);
int32_t cbf_read(const io_context *io, byte_source *in, model *m);
int32_t cbf_write(const io_context *io, byte_sink *out, const model *m);
