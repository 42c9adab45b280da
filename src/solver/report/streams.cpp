/* streams.cpp - see streams.h. Nothing here allocates but the formatting of texts longer than a line or two and the
 * capture, which does without where there is no memory; so that "out of memory" can still be told. */
#include "solver/report/streams.h"

#include "solver/report/stream_capture.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

/* Flushed each time: a log is read most eagerly when its process has died. */
static void file_write(std::FILE *file, const char *text)
{
    if (file == nullptr) return;
    std::fputs(text, file);
    std::fflush(file);
}

static void out_write(stream_out *out, const char *text)
{
    if (out->func != nullptr) out->func(out->handle, text);
    file_write(out->file, text);
}

static void log_file_write(stream_set *set, const char *text)
{
    stream_log_file *log = &set->log_file;
    if (log->name.empty()) return;
    if (!log->is_tried) {
        log->is_tried = true;
        log->file = std::fopen(log->name.c_str(), log->append ? "a" : "w");
        if (log->file == nullptr)
            streams_printf(set, ZLR_STREAM_ERR, "%s: cannot be opened as a log file: %s.\n", log->name.c_str(),
                           std::strerror(errno));
    }
    file_write(log->file, text);
}

static bool log_file_linked(const stream_log_file *log)
{
    return !log->name.empty() && (log->file != nullptr || !log->is_tried);
}

bool streams_linked(const stream_set *set, int32_t stream)
{
    if (stream < 0 || stream >= ZLR_STREAM_COUNT) return false;
    if (set->capture != nullptr || log_file_linked(&set->log_file)) return true;
    const stream_out *own = &set->out[stream];
    const stream_out *log = &set->out[ZLR_STREAM_LOG];
    return own->func != nullptr || own->file != nullptr || log->func != nullptr || log->file != nullptr;
}

void streams_write(stream_set *set, int32_t stream, const char *text)
{
    if (stream < 0 || stream >= ZLR_STREAM_COUNT || text == nullptr) return;
    out_write(&set->out[stream], text);
    if (stream != ZLR_STREAM_LOG) out_write(&set->out[ZLR_STREAM_LOG], text);
    log_file_write(set, text);
    if (set->capture != nullptr) stream_capture_add(set->capture, text);
}

void streams_vprintf(stream_set *set, int32_t stream, const char *format, va_list args)
{
    if (!streams_linked(set, stream)) return;
    char text[2048];
    va_list again;
    va_copy(again, args);
    const int length = std::vsnprintf(text, sizeof text, format, args);
    if (length >= 0 && static_cast<size_t>(length) < sizeof text)
        streams_write(set, stream, text);
    else if (length >= 0)
        streams_write(set, stream, text_vformat(format, again).c_str());
    va_end(again);
}

void streams_printf(stream_set *set, int32_t stream, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    streams_vprintf(set, stream, format, args);
    va_end(args);
}

std::string text_vformat(const char *format, va_list args)
{
    va_list again;
    va_copy(again, args);
    const int length = std::vsnprintf(nullptr, 0, format, args);
    std::string text;
    if (length > 0) {
        text.resize(static_cast<size_t>(length) + 1);
        std::vsnprintf(text.data(), text.size(), format, again);
        text.pop_back();
    }
    va_end(again);
    return text;
}

std::string text_format(const char *format, ...)
{
    va_list args;
    va_start(args, format);
    std::string text = text_vformat(format, args);
    va_end(args);
    return text;
}

void text_append(std::string *text, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    *text += text_vformat(format, args);
    va_end(args);
}

int32_t streams_link_file(stream_set *set, int32_t stream, const char *filename, bool append)
{
    std::FILE *file = nullptr;
    if (filename != nullptr && filename[0] != '\0') {
        file = std::fopen(filename, append ? "a" : "w");
        if (file == nullptr) return ZLR_RES_ERR_FILE_OPEN;
    }
    if (set->out[stream].file != nullptr) std::fclose(set->out[stream].file);
    set->out[stream].file = file;
    return ZLR_RES_OK;
}

void streams_name_log_file(stream_set *set, const char *name, bool append)
{
    stream_log_file *log = &set->log_file;
    if (log->name != name) {
        if (log->file != nullptr) std::fclose(log->file);
        *log = stream_log_file{};
        log->name = name;
    }
    log->append = append;
}

static int32_t file_close(std::FILE *file)
{
    if (file == nullptr) return ZLR_RES_OK;
    const bool failed = std::ferror(file) != 0;
    return std::fclose(file) != 0 || failed ? ZLR_RES_ERR_FILE_WRITE : ZLR_RES_OK;
}

int32_t streams_close(stream_set *set)
{
    int32_t res = file_close(set->log_file.file);
    for (const stream_out &out : set->out) {
        const int32_t closed = file_close(out.file);
        if (closed != ZLR_RES_OK) res = closed;
    }
    *set = stream_set{};
    return res;
}
