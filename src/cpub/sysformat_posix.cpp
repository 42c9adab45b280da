/* sysformat_posix.cpp - formatted output on POSIX: translates the "I" prefixes, which its C libraries lack or take for
 * something else, and brings the truncation rule about. */
#include "sysformat_platform.h"

#include <cstdlib>
#include <cstring>

/* Formats and texts below this size need no memory: what reports a damaged heap must get through, and the largest buffer
 * that a report is made in has 2048 bytes. */
static const size_t STACK_TEXT = 4096;

/* The length of the "I" prefix that `text` begins with and what replaces it, or 0. */
static size_t size_prefix(const char *text, const char **replacement)
{
    if (std::strncmp(text, "I64", 3) == 0) {
        *replacement = "ll";
        return 3;
    }
    if (std::strncmp(text, "I32", 3) == 0) {
        *replacement = "";
        return 3;
    }
    if (text[0] == 'I' && text[1] != 0 && std::strchr("diouxX", text[1]) != nullptr) {
        *replacement = "z";
        return 1;
    }
    return 0;
}

/* Copies a format with its prefixes replaced. A replacement is never longer than its prefix, so that room for the
 * format is room for the copy. */
static void translate(const char *format, char *copy)
{
    while (*format != 0) {
        const bool conversion = *format == '%';
        *copy++ = *format++;
        if (!conversion) continue;
        if (*format == '%') {
            *copy++ = *format++;
            continue;
        }
        while (*format != 0 && std::strchr("-+ #0123456789*.", *format) != nullptr) *copy++ = *format++;
        const char *replacement = "";
        const size_t length = size_prefix(format, &replacement);
        format += length;
        while (*replacement != 0) *copy++ = *replacement++;
    }
    *copy = 0;
}

/* The format that the C library is given: the caller's own, or its translation in `space` or, where that is too small,
 * in memory that the caller frees through *memory. Null: no memory. */
static const char *local_format(const char *format, char *space, char **memory)
{
    *memory = nullptr;
    if (std::strchr(format, 'I') == nullptr) return format;
    const size_t size = std::strlen(format) + 1;
    if (size > STACK_TEXT) {
        *memory = static_cast<char *>(std::malloc(size));
        if (*memory == nullptr) return nullptr;
        space = *memory;
    }
    translate(format, space);
    return space;
}

/* Fills the whole buffer with the beginning of a text that is at least as long. The C library would put a terminator on
 * the last byte, so that the text is made elsewhere first. Returns 0 or -1. */
static int32_t fill_buffer(size_t capacity, char *buffer, const char *format, va_list args)
{
    char space[STACK_TEXT];
    char *text = capacity < sizeof space ? space : static_cast<char *>(std::malloc(capacity + 1));
    if (text == nullptr) return -1;
    const int length = std::vsnprintf(text, capacity + 1, format, args);
    if (length >= 0) std::memcpy(buffer, text, capacity);
    if (text != space) std::free(text);
    return length < 0 ? -1 : 0;
}

static int32_t bounded_local(size_t capacity, char *buffer, const char *format, va_list args)
{
    va_list again;
    va_copy(again, args);
    const int length = std::vsnprintf(buffer, capacity, format, args);
    int32_t res = length < 0 ? -1 : length;
    if (res >= 0 && static_cast<size_t>(res) >= capacity) {
        const bool fits = static_cast<size_t>(res) == capacity;
        const bool filled = capacity == 0 || fill_buffer(capacity, buffer, format, again) == 0;
        if (!fits || !filled) res = -1;
    }
    va_end(again);
    return res;
}

int32_t sysformat_bounded(size_t capacity, char *buffer, const char *format, va_list args)
{
    char space[STACK_TEXT];
    char *memory = nullptr;
    const char *local = local_format(format, space, &memory);
    if (local == nullptr) return -1;
    const int32_t res = bounded_local(capacity, buffer, local, args);
    std::free(memory);
    return res;
}

int32_t sysformat_unbounded(char *buffer, const char *format, va_list args)
{
    char space[STACK_TEXT];
    char *memory = nullptr;
    const char *local = local_format(format, space, &memory);
    if (local == nullptr) return -1;
    const int length = std::vsprintf(buffer, local, args);
    std::free(memory);
    return length < 0 ? -1 : length;
}

int32_t sysformat_stream(std::FILE *stream, const char *format, va_list args)
{
    char space[STACK_TEXT];
    char *memory = nullptr;
    const char *local = local_format(format, space, &memory);
    if (local == nullptr) return -1;
    const int length = std::vfprintf(stream, local, args);
    std::free(memory);
    return length < 0 ? -1 : length;
}
