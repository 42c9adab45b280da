/* bytes.cpp - see bytes.h. Sources, then sinks.
 *
 * gzip goes through zlib's streams and not its file functions: these take a cut file for its end, and pass over what
 * follows the first damaged member. */
#include "solver/io/bytes.h"

#include "solver/io/bytes_os.h"
#include "solver/io/raw_buffer.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <vector>
#include <zlib.h>

namespace
{
constexpr size_t head_bytes = size_t{128} * 1024; /* also what inflate is fed with */
constexpr size_t buffer_bytes = size_t{256} * 1024;
constexpr int gzip_window = 15 + 16; /* the largest window, gzip header and trailer */
constexpr char gzip_magic[] = {'\x1f', '\x8b'};

enum class source_state { fresh, plain, gzip, between_members, ended, failed };
}  // namespace

struct byte_source {
    int file = -1; /* -1: bytes of the caller, all of them in `next` from the start */
    source_state state = source_state::fresh;
    raw_buffer head; /* what was read of the file and not yet handed on or inflated */
    const char *next = nullptr;
    size_t available = 0;
    bool input_ended = false;
    z_stream inflater = {};
    bool has_inflater = false;
    std::string error;
    std::string unread; /* given back by the reader, from unread_at on */
    size_t unread_at = 0;
};

namespace
{
int32_t source_fail(byte_source *source, const char *why)
{
    source->state = source_state::failed;
    source->error = why;
    return ZLR_RES_ERR_FILE_READ;
}

/* Reads a block behind what is there; for a fresh source until the first two bytes are known. */
int32_t source_fill(byte_source *source)
{
    if (source->input_ended) return ZLR_RES_OK;
    if (source->available > 0) std::memmove(source->head.data(), source->next, source->available);
    source->next = source->head.data();
    const int64_t got =
        os_read(source->file, source->head.data() + source->available, source->head.size() - source->available);
    if (got < 0) return source_fail(source, std::strerror(errno));
    source->available += static_cast<size_t>(got);
    source->input_ended = got == 0;
    return ZLR_RES_OK;
}

bool gzip_begins(const byte_source *source)
{
    return source->available >= 2 && std::memcmp(source->next, gzip_magic, 2) == 0;
}

int32_t source_fill_two(byte_source *source)
{
    while (source->available < 2 && !source->input_ended) {
        const int32_t res = source_fill(source);
        if (res != ZLR_RES_OK) return res;
    }
    return ZLR_RES_OK;
}

/* Looks at the first bytes and makes ready for what they announce. */
int32_t source_begin(byte_source *source)
{
    const int32_t res = source_fill_two(source);
    if (res != ZLR_RES_OK) return res;
    source->state = source_state::plain;
    if (!gzip_begins(source)) return ZLR_RES_OK;

    if (inflateInit2(&source->inflater, gzip_window) != Z_OK) return ZLR_RES_ERR_SPACE;
    source->has_inflater = true;
    source->state = source_state::gzip;
    return ZLR_RES_OK;
}

/* A gzip file may be several files one behind the other, and may be filled up with zeros. */
int32_t gzip_next_member(byte_source *source)
{
    int32_t res = source_fill_two(source);
    while (res == ZLR_RES_OK && source->available > 0 && *source->next == '\0') {
        ++source->next;
        --source->available;
        res = source_fill_two(source);
    }
    if (res != ZLR_RES_OK) return res;
    if (source->available == 0) {
        source->state = source_state::ended;
        return ZLR_RES_OK;
    }
    if (!gzip_begins(source)) return source_fail(source, "garbage behind the end of the compressed data");
    inflateReset(&source->inflater);
    source->state = source_state::gzip;
    return ZLR_RES_OK;
}

int32_t source_read_plain(byte_source *source, char *buffer, size_t capacity, size_t *got)
{
    if (source->available > 0) {
        *got = std::min(capacity, source->available);
        std::memcpy(buffer, source->next, *got);
        source->next += *got;
        source->available -= *got;
        return ZLR_RES_OK;
    }
    if (source->input_ended) return ZLR_RES_OK;
    const int64_t size = os_read(source->file, buffer, capacity);
    if (size < 0) return source_fail(source, std::strerror(errno));
    *got = static_cast<size_t>(size);
    source->input_ended = size == 0;
    return ZLR_RES_OK;
}

/* One step of inflate. May leave *got 0 although the end is not reached. */
int32_t gzip_step(byte_source *source, char *buffer, size_t capacity, size_t *got)
{
    if (source->available == 0) {
        const int32_t res = source_fill(source);
        if (res != ZLR_RES_OK) return res;
        if (source->available == 0) return source_fail(source, "the compressed data is cut off");
    }
    constexpr size_t step_max = std::numeric_limits<uInt>::max();
    z_stream *z = &source->inflater;
    const size_t room = std::min(capacity, step_max);
    const size_t input = std::min(source->available, step_max);
    z->next_in = reinterpret_cast<Bytef *>(const_cast<char *>(source->next));
    z->avail_in = static_cast<uInt>(input);
    z->next_out = reinterpret_cast<Bytef *>(buffer);
    z->avail_out = static_cast<uInt>(room);

    const int result = inflate(z, Z_NO_FLUSH);
    const size_t used = input - z->avail_in;
    source->next += used;
    source->available -= used;
    *got = room - z->avail_out;
    if (result == Z_STREAM_END) source->state = source_state::between_members;
    if (result == Z_OK || result == Z_STREAM_END || result == Z_BUF_ERROR) return ZLR_RES_OK;
    if (result == Z_MEM_ERROR) return ZLR_RES_ERR_SPACE;
    return source_fail(source, z->msg != nullptr ? (std::string("the compressed data is damaged: ") + z->msg).c_str()
                                                 : "the compressed data is damaged");
}
}  // namespace

int32_t source_open(byte_source **source, const char *filename)
{
    *source = nullptr;
    const int file = os_open_read(filename);
    if (file < 0) return ZLR_RES_ERR_FILE_READ;

    auto opened = std::make_unique<byte_source>();
    opened->file = file;
    opened->head.resize(head_bytes);
    *source = opened.release();
    return ZLR_RES_OK;
}

int32_t source_open_memory(byte_source **source, const char *data, size_t size)
{
    auto opened = std::make_unique<byte_source>();
    opened->next = data;
    opened->available = size;
    opened->input_ended = true;
    *source = opened.release();
    return ZLR_RES_OK;
}

int32_t source_read(byte_source *source, char *buffer, size_t capacity, size_t *got)
{
    int32_t res = ZLR_RES_OK;
    *got = 0;
    if (source->unread_at < source->unread.size()) {
        *got = source->unread.copy(buffer, capacity, source->unread_at);
        source->unread_at += *got;
        return ZLR_RES_OK;
    }
    if (source->state == source_state::failed) return ZLR_RES_ERR_FILE_READ;
    if (source->state == source_state::fresh) res = source_begin(source);

    while (res == ZLR_RES_OK && *got == 0) {
        if (source->state == source_state::plain) return source_read_plain(source, buffer, capacity, got);
        if (source->state == source_state::ended) return ZLR_RES_OK;
        if (source->state == source_state::between_members)
            res = gzip_next_member(source);
        else
            res = gzip_step(source, buffer, capacity, got);
    }
    return res;
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
    if ((*source)->has_inflater) inflateEnd(&(*source)->inflater);
    if ((*source)->file >= 0) os_close((*source)->file);
    delete *source;
    *source = nullptr;
}

/* ---- Sinks --------------------------------------------------------------------------------------------------------- */

struct byte_sink {
    os_target target;
    raw_buffer buffer;
    size_t used = 0;
    bool compress = false;
    z_stream deflater = {};
    raw_buffer packed; /* what deflate gives */
    int32_t error = ZLR_RES_OK;
    int error_number = 0; /* errno at the first error */
};

namespace
{
int32_t sink_fail(byte_sink *sink)
{
    if (sink->error == ZLR_RES_OK) {
        sink->error = ZLR_RES_ERR_FILE_WRITE;
        sink->error_number = errno;
    }
    return sink->error;
}

int32_t sink_deflate(byte_sink *sink, int flush)
{
    z_stream *z = &sink->deflater;
    z->next_in = reinterpret_cast<Bytef *>(sink->buffer.data());
    z->avail_in = static_cast<uInt>(sink->used);
    int result = Z_OK;
    do {
        z->next_out = reinterpret_cast<Bytef *>(sink->packed.data());
        z->avail_out = static_cast<uInt>(sink->packed.size());
        result = deflate(z, flush);
        if (os_write_all(sink->target.file, sink->packed.data(), sink->packed.size() - z->avail_out) != 0)
            return sink_fail(sink);
    } while (z->avail_out == 0 && result != Z_STREAM_END);
    return ZLR_RES_OK;
}

/* Hands the buffer on. `last`: nothing follows. */
int32_t sink_flush(byte_sink *sink, bool last)
{
    if (sink->error == ZLR_RES_OK) {
        if (sink->compress)
            sink_deflate(sink, last ? Z_FINISH : Z_NO_FLUSH);
        else if (os_write_all(sink->target.file, sink->buffer.data(), sink->used) != 0)
            sink_fail(sink);
    }
    sink->used = 0;
    return sink->error;
}

int32_t sink_bytes(byte_sink *sink, const char *data, size_t size)
{
    while (size > sink->buffer.size() - sink->used) {
        const size_t part = sink->buffer.size() - sink->used;
        std::memcpy(sink->buffer.data() + sink->used, data, part);
        sink->used += part;
        data += part;
        size -= part;
        if (sink_flush(sink, false) != ZLR_RES_OK) return sink->error;
    }
    std::memcpy(sink->buffer.data() + sink->used, data, size);
    sink->used += size;
    return sink->error;
}

bool ends_in_gz(const char *name)
{
    const size_t size = std::strlen(name);
    return size > 3 && name[size - 3] == '.' && (name[size - 2] | 0x20) == 'g' && (name[size - 1] | 0x20) == 'z';
}
}  // namespace

int32_t sink_open(byte_sink **sink, const char *target)
{
    *sink = nullptr;
    auto opened = std::make_unique<byte_sink>();
    opened->buffer.resize(buffer_bytes);
    opened->compress = ends_in_gz(target);
    if (opened->compress) {
        opened->packed.resize(head_bytes);
        if (deflateInit2(&opened->deflater, Z_DEFAULT_COMPRESSION, Z_DEFLATED, gzip_window, 8, Z_DEFAULT_STRATEGY) !=
            Z_OK)
            return ZLR_RES_ERR_SPACE;
    }
    if (os_open_target(target, &opened->target) != 0) {
        const int why = errno;
        if (opened->compress) deflateEnd(&opened->deflater);
        errno = why;
        return ZLR_RES_ERR_FILE_OPEN;
    }
    *sink = opened.release();
    return ZLR_RES_OK;
}

int32_t sink_write(byte_sink *sink, const char *data, size_t size)
{
    if (!os_text_crlf) return sink_bytes(sink, data, size);
    const char *end = data + size;
    while (data != end) {
        const char *line = std::find(data, end, '\n');
        sink_bytes(sink, data, static_cast<size_t>(line - data));
        if (line == end) break;
        sink_bytes(sink, "\r\n", 2);
        data = line + 1;
    }
    return sink->error;
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
    byte_sink *s = *sink;
    if (s == nullptr) return ZLR_RES_OK;
    *sink = nullptr;

    if (commit) sink_flush(s, true);
    if (os_close_target(&s->target, commit && s->error == ZLR_RES_OK) != 0) sink_fail(s);
    if (s->compress) deflateEnd(&s->deflater);
    const int32_t res = s->error;
    const int why = s->error_number;
    delete s;
    if (res != ZLR_RES_OK) errno = why;
    return res;
}

int32_t sink_whole_file(const char *target, std::string_view text)
{
    byte_sink *sink = nullptr;
    int32_t res = sink_open(&sink, target);
    if (res != ZLR_RES_OK) return res;
    sink_text(sink, text);
    return sink_close(&sink, true);
}
