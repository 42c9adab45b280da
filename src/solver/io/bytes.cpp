/* bytes.cpp - see bytes.h. Sources, then sinks, then appending. */
#include "solver/io/bytes.h"

#include "cpub/sysfile.h"
#include "solver/io/bytes_os.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstring>
#include <memory>
#include <thread>

/* ---- Sources ------------------------------------------------------------------------------------------------------- */

struct byte_source {
    sysfile_t *file = nullptr; /* null: bytes of the caller */
    const char *next = nullptr;
    size_t available = 0;
    std::string error;  /* not empty once a read has failed */
    std::string unread; /* given back by the reader, from unread_at on */
    size_t unread_at = 0;
};

namespace
{
int32_t source_fail(byte_source *source)
{
    if (source->error.empty())
        source->error = errno != 0 ? std::strerror(errno) : "the compressed data is damaged or cut off";
    return ZLR_RES_ERR_FILE_READ;
}
}  // namespace

/* Opens in the kind that the first two bytes ask for. What cannot be opened twice, a pipe, is opened as gzip whatever it
 * is: that gives a text as it stands where it is not compressed, but takes memory and time for it. */
static int32_t open_by_content(sysenv *sys, const char *filename, byte_source *source)
{
    static const char magic[] = {'\x1f', '\x8b'};
    int32_t res = SYSFILE_OK;
    int32_t kind = os_can_reopen(filename) ? SYSFILE_PLAIN : SYSFILE_GZIP;
    sysenv_fopen(sys, filename, 0, 1, 0, 0, kind, 0, &source->file, &res);
    if (res != SYSFILE_OK || kind == SYSFILE_GZIP) return res;

    char head[2] = {};
    int32_t end = SYSFILE_OK;
    const auto got = static_cast<size_t>(sysenv_freadcount(source->file, head, sizeof head, &end));
    if (got == sizeof head && std::memcmp(head, magic, sizeof head) == 0) {
        (void)sysenv_fclose(&source->file);
        sysenv_fopen(sys, filename, 0, 1, 0, 0, SYSFILE_GZIP, 0, &source->file, &res);
        return res;
    }
    source->unread.assign(head, got);
    return SYSFILE_OK;
}

int32_t source_open(sysenv *sys, byte_source **source, const char *filename)
{
    *source = nullptr;
    auto opened = std::make_unique<byte_source>();
    errno = 0;
    const int32_t res = open_by_content(sys, filename, opened.get());
    if (res == SYSFILE_NOMEM) return ZLR_RES_ERR_SPACE;
    if (res == SYSFILE_BADNAME) errno = EILSEQ;
    if (res != SYSFILE_OK) return ZLR_RES_ERR_FILE_READ;
    *source = opened.release();
    return ZLR_RES_OK;
}

int32_t source_open_memory(byte_source **source, const char *data, size_t size)
{
    auto opened = std::make_unique<byte_source>();
    opened->next = data;
    opened->available = size;
    *source = opened.release();
    return ZLR_RES_OK;
}

int32_t source_read(byte_source *source, char *buffer, size_t capacity, size_t *got)
{
    *got = 0;
    if (source->unread_at < source->unread.size()) {
        *got = source->unread.copy(buffer, capacity, source->unread_at);
        source->unread_at += *got;
        return ZLR_RES_OK;
    }
    if (!source->error.empty()) return ZLR_RES_ERR_FILE_READ;
    if (source->file == nullptr) {
        *got = std::min(capacity, source->available);
        if (*got > 0) std::memcpy(buffer, source->next, *got);
        source->next += *got;
        source->available -= *got;
        return ZLR_RES_OK;
    }
    int32_t res = SYSFILE_OK;
    errno = 0;
    *got = static_cast<size_t>(sysenv_freadcount(source->file, buffer, capacity, &res));
    /* Asked at each read: behind an error the stream gives bytes that mean nothing. */
    if (sysenv_ferror(source->file) == SYSFILE_OK) return ZLR_RES_OK;
    *got = 0;
    return source_fail(source);
}

void source_unread(byte_source *source, const char *data, size_t size)
{
    source->unread.replace(0, source->unread_at, data, size);
    source->unread_at = 0;
}

const char *source_error(const byte_source *source) { return source->error.c_str(); }

void source_close(byte_source **source)
{
    if (*source == nullptr) return;
    (void)sysenv_fclose(&(*source)->file);
    delete *source;
    *source = nullptr;
}

/* ---- Sinks --------------------------------------------------------------------------------------------------------- */

struct byte_sink {
    os_target target;
    sysfile_t *file = nullptr;
    bool sync = true;
    int32_t res = SYSFILE_OK; /* of the stream's calls, which do nothing once it is not 0 */
    int error_number = 0;     /* errno at the first error */
};

namespace
{
bool ends_in_gz(const char *name)
{
    const size_t size = std::strlen(name);
    return size > 3 && name[size - 3] == '.' && (name[size - 2] | 0x20) == 'g' && (name[size - 1] | 0x20) == 'z';
}

/* Bytes as they stand. */
int32_t sink_bytes(byte_sink *sink, const char *data, size_t size)
{
    if (sink->res != SYSFILE_OK) return ZLR_RES_ERR_FILE_WRITE;
    sysenv_fwrite(sink->file, data, 1, size, &sink->res);
    if (sink->res == SYSFILE_OK) return ZLR_RES_OK;
    sink->error_number = errno;
    return ZLR_RES_ERR_FILE_WRITE;
}
}  // namespace

int32_t sink_open(sysenv *sys, byte_sink **sink, const char *target, const sink_options &options)
{
    *sink = nullptr;
    if (!options.may_replace && os_can_reopen(target)) {
        errno = EEXIST;
        return ZLR_RES_ERR_FILE_OPEN;
    }
    auto opened = std::make_unique<byte_sink>();
    opened->sync = options.sync;
    if (os_prepare_target(target, &opened->target) != 0) return ZLR_RES_ERR_FILE_OPEN;
    const os_target *t = &opened->target;
    sysenv_fopen(sys, t->opened_name.c_str(), 0, 0, 1, t->append ? 1 : 0,
                 ends_in_gz(target) ? SYSFILE_GZIP : SYSFILE_PLAIN, options.gzip_level, &opened->file, &opened->res);
    if (opened->res != SYSFILE_OK) {
        const int why = opened->res == SYSFILE_BADNAME ? EILSEQ : errno;
        (void)os_finish_target(&opened->target, false);
        errno = why;
        return opened->res == SYSFILE_NOMEM ? ZLR_RES_ERR_SPACE : ZLR_RES_ERR_FILE_OPEN;
    }
    *sink = opened.release();
    return ZLR_RES_OK;
}

/* Line by line where line ends change: the text entries of the stream write CR LF on every platform. */
int32_t sink_write(byte_sink *sink, const char *data, size_t size)
{
    if (!os_text_crlf) return sink_bytes(sink, data, size);
    int32_t res = ZLR_RES_OK;
    const char *end = data + size;
    while (data != end) {
        const char *line = std::find(data, end, '\n');
        res = sink_bytes(sink, data, static_cast<size_t>(line - data));
        if (line == end) break;
        res = sink_bytes(sink, "\r\n", 2);
        data = line + 1;
    }
    return res;
}

int32_t sink_double(byte_sink *sink, double value)
{
    char text[40];
    if (std::isinf(value)) return sink_text(sink, value > 0 ? "inf" : "-inf");
    const std::to_chars_result result = std::to_chars(text, text + sizeof text, value);
    return sink_bytes(sink, text, static_cast<size_t>(result.ptr - text));
}

int32_t sink_int(byte_sink *sink, int64_t value)
{
    char text[24];
    const std::to_chars_result result = std::to_chars(text, text + sizeof text, value);
    return sink_bytes(sink, text, static_cast<size_t>(result.ptr - text));
}

int32_t sink_close(byte_sink **sink, bool commit)
{
    const std::unique_ptr<byte_sink> s(*sink);
    if (s == nullptr) return ZLR_RES_OK;
    *sink = nullptr;

    if (commit && s->sync && s->res == SYSFILE_OK) {
        s->res = sysenv_ffinish(s->file);
        if (s->res != SYSFILE_OK) s->error_number = errno;
    }
    const int32_t closed = sysenv_fclose(&s->file);
    if (commit && s->res == SYSFILE_OK && closed != SYSFILE_OK) {
        s->res = closed;
        s->error_number = errno;
    }
    if (os_finish_target(&s->target, commit && s->res == SYSFILE_OK) != 0 && s->res == SYSFILE_OK) {
        s->res = SYSFILE_WRITE;
        s->error_number = errno;
    }
    if (s->res == SYSFILE_OK) return ZLR_RES_OK;
    errno = s->error_number;
    return ZLR_RES_ERR_FILE_WRITE;
}

int32_t sink_whole_file(sysenv *sys, const char *target, const sink_options &options, std::string_view text)
{
    byte_sink *sink = nullptr;
    int32_t res = sink_open(sys, &sink, target, options);
    if (res != ZLR_RES_OK) return res;
    sink_text(sink, text);
    return sink_close(&sink, true);
}

/* ---- Appending ----------------------------------------------------------------------------------------------------- */

namespace
{
/* Whether a text file ends in the middle of a line. */
bool ends_in_cut_line(sysenv *sys, const char *name)
{
    sysfile_t *file = nullptr;
    int32_t res = SYSFILE_OK;
    char last = '\n';

    if (!os_can_reopen(name)) return false;
    sysenv_fopen(sys, name, 0, 1, 0, 0, SYSFILE_PLAIN, 0, &file, &res);
    if (res != SYSFILE_OK) return false;
    if (std::fseek(file->state->fp, -1, SEEK_END) == 0) (void)sysenv_freadcount(file, &last, 1, &res);
    (void)sysenv_fclose(&file);
    return last != '\n';
}

/* The same, told from a line that another process is about to write: its size grows as its pages are filled. */
bool stays_cut(sysenv *sys, const char *name)
{
    for (int attempt = 0; attempt < 10; ++attempt) {
        if (!ends_in_cut_line(sys, name)) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

std::string with_line_ends(std::string_view text)
{
    std::string out;
    for (const char c : text) {
        if (c == '\n' && os_text_crlf) out += '\r';
        out += c;
    }
    return out;
}
}  // namespace

int32_t file_append(sysenv *sys, const char *target, const sink_options &options, std::string_view text)
{
    const bool is_gzip = ends_in_gz(target);
    sysfile_t *file = nullptr;
    int32_t res = SYSFILE_OK;

    const std::string bytes =
        with_line_ends(!is_gzip && stays_cut(sys, target) ? "\n" + std::string(text) : std::string(text));
    errno = 0;
    sysenv_fopen(sys, target, 0, 0, 1, 1, is_gzip ? SYSFILE_GZIP : SYSFILE_PLAIN, options.gzip_level, &file, &res);
    if (res != SYSFILE_OK) {
        if (res == SYSFILE_BADNAME) errno = EILSEQ;
        return res == SYSFILE_NOMEM ? ZLR_RES_ERR_SPACE : ZLR_RES_ERR_FILE_OPEN;
    }
    sysenv_fwrite(file, bytes.data(), 1, bytes.size(), &res);
    if (res == SYSFILE_OK) res = options.sync || is_gzip ? sysenv_ffinish(file) : sysenv_fflush(file);
    const int why = errno;
    if (res != SYSFILE_OK) (void)sysenv_frewind(file); /* drops what waits: closing would write it a second time */
    (void)sysenv_fclose(&file);
    errno = why;
    return res == SYSFILE_OK ? ZLR_RES_OK : ZLR_RES_ERR_FILE_WRITE;
}
