/* streams.cpp - see streams.h. Nothing here allocates but the formatting of texts longer than a line or two and the
 * capture, which does without where there is no memory; so that "out of memory" can still be told. */
#include "solver/report/streams.h"

#include "solver/report/stream_capture.h"

#include <cstdlib>

static void out_write(stream_out *out, const char *text)
{
    if (out->func != nullptr) out->func(out->handle, text);
    if (out->file != nullptr) {
        std::fputs(text, out->file);
        /* A log is read most eagerly when its process has died. */
        std::fflush(out->file);
    }
}

bool streams_linked(const stream_set *set, int32_t stream)
{
    if (stream < 0 || stream >= ZLR_STREAM_COUNT) return false;
    if (set->capture != nullptr) return true;
    const stream_out *own = &set->out[stream];
    const stream_out *log = &set->out[ZLR_STREAM_LOG];
    return own->func != nullptr || own->file != nullptr || log->func != nullptr || log->file != nullptr;
}

void streams_write(stream_set *set, int32_t stream, const char *text)
{
    if (stream < 0 || stream >= ZLR_STREAM_COUNT || text == nullptr) return;
    out_write(&set->out[stream], text);
    if (stream != ZLR_STREAM_LOG) out_write(&set->out[ZLR_STREAM_LOG], text);
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

int32_t streams_close(stream_set *set)
{
    int32_t res = ZLR_RES_OK;
    for (stream_out &out : set->out) {
        if (out.file == nullptr) continue;
        const bool failed = std::ferror(out.file) != 0;
        if (std::fclose(out.file) != 0 || failed) res = ZLR_RES_ERR_FILE_WRITE;
    }
    *set = stream_set{};
    return res;
}
