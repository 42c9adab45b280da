/* sysformat.cpp - formatters, bounded copies, console sinks, UTF-8 to UTF-16. What differs between platforms stands in
 * sysformat_posix.cpp and sysformat_win32.cpp. */
#include "cpub/sysformat.h"

#include "sysformat_platform.h"

#include <cstring>

/* ---- Formatters ---- */

int32_t sysenv_vsnprintf(size_t capacity, char *buffer, const char *format, va_list args)
{
    return sysformat_bounded(capacity, buffer, format, args);
}

int32_t sysenv_snprintf(size_t capacity, char *buffer, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    const int32_t res = sysformat_bounded(capacity, buffer, format, args);
    va_end(args);
    return res;
}

int32_t sysenv_sprintf(char *buffer, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    const int32_t res = sysformat_unbounded(buffer, format, args);
    va_end(args);
    return res;
}

void sysenv_printf(const char *format, ...)
{
    va_list args;
    va_start(args, format);
    (void)sysformat_stream(stdout, format, args);
    va_end(args);
}

void sysenv_fprintf(FILE *stream, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    (void)sysformat_stream(stream, format, args);
    va_end(args);
}

int32_t sysenv_sizetostr(int32_t units, size_t capacity, char *buffer, uint64_t value)
{
    if (units == 0) return sysenv_snprintf(capacity, buffer, "%Iu", static_cast<size_t>(value));
    const size_t gigabytes = value >> 30;
    const size_t megabytes = value >> 20 & 1023;
    const size_t kilobytes = value >> 10 & 1023;
    const size_t bytes = value & 1023;
    return sysenv_snprintf(capacity, buffer, "%Iu:%Iu:%Iu:%Iu", gigabytes, megabytes, kilobytes, bytes);
}

/* ---- Texts and sinks ---- */

size_t sysenv_strlen(const char *text) { return text == nullptr ? 0 : std::strlen(text); }

char *sysenv_strncpy(size_t capacity, char *destination, const char *source)
{
    if (capacity == 0) return nullptr;
    size_t length = 0;
    if (source != nullptr) {
        while (length < capacity - 1 && source[length] != 0) ++length;
        std::memcpy(destination, source, length);
    }
    destination[length] = 0;
    return destination;
}

void sysenv_print(void *handle, const char *text)
{
    (void)handle;
    if (text == nullptr) return;
    (void)std::fputs(text, stdout);
    (void)std::fflush(stdout);
}

void sysenv_printquiet(void *context, const char *text)
{
    const sysenv_printcontext *print = static_cast<const sysenv_printcontext *>(context);
    if (print == nullptr || print->silent != 0) return;
    sysenv_print(context, text);
}

/* ---- UTF-8 to UTF-16 ---- */

static const uint32_t BROKEN = UINT32_MAX; /* no sequence has that value: six bytes hold 31 bits */

static uint32_t sequence_length(uint32_t lead)
{
    if ((lead & 0xE0) == 0xC0) return 2;
    if ((lead & 0xF0) == 0xE0) return 3;
    if ((lead & 0xF8) == 0xF0) return 4;
    if ((lead & 0xFC) == 0xF8) return 5;
    return 6;
}

/* Reads the character at *at, which is not the terminator, and moves behind it. */
static uint32_t read_character(const unsigned char **at)
{
    const uint32_t lead = *(*at)++;
    if (lead < 0x80) return lead;

    const uint32_t length = sequence_length(lead);
    uint32_t value = lead & 0x7FU >> length;
    for (uint32_t i = 1; i < length; ++i) {
        const uint32_t next = **at;
        if (next == 0) return BROKEN;
        ++*at;
        if ((next & 0xC0) != 0x80) return BROKEN;
        value = value << 6 | (next & 0x3F);
    }
    return value;
}

/* The one or two units of a character, and how many they are. */
static uint32_t character_units(uint32_t value, uint16_t units[2], uint64_t *errors)
{
    if (value > 0x10FFFF) { /* BROKEN too */
        ++*errors;
        units[0] = '.';
        return 1;
    }
    if (value < 0x10000) {
        units[0] = static_cast<uint16_t>(value);
        return 1;
    }
    /* Bits 12 to 15 do not get into the first unit: see the header. */
    const uint32_t first = 0xD800 | (((value >> 16) + 15) * 1024 + (value >> 10 & 3));
    units[0] = static_cast<uint16_t>(first);
    units[1] = static_cast<uint16_t>(0xDC00 | (value & 0x3FF));
    return 2;
}

uint64_t utf8_towide(const char *source, uint16_t *destination, uint64_t *bytes_read, uint64_t capacity,
                     uint64_t *errors)
{
    const unsigned char *const begin = reinterpret_cast<const unsigned char *>(source);
    const unsigned char *at = begin;
    uint64_t num_units = 0;
    uint64_t num_errors = 0;

    while (*at != 0) {
        if (destination != nullptr && num_units + 1 >= capacity) break;
        uint16_t units[2] = {0, 0};
        const uint32_t num = character_units(read_character(&at), units, &num_errors);
        if (destination != nullptr) std::memcpy(destination + num_units, units, num * sizeof units[0]);
        num_units += num;
    }
    if (destination != nullptr) destination[num_units] = 0;
    if (bytes_read != nullptr) *bytes_read = static_cast<uint64_t>(at - begin);
    if (errors != nullptr) *errors = num_errors;
    return num_units;
}

int32_t sysenv_utf8towide(sysenv *sys, uint64_t capacity, uint64_t *num_units, uint16_t *destination,
                          uint64_t *bytes_read, const char *source)
{
    (void)sys;
    uint64_t errors = 0;
    const uint64_t num = utf8_towide(source, destination, bytes_read, capacity, &errors);
    if (num_units != nullptr) *num_units = num;
    return errors == 0 ? 0 : SYSENV_UTF8_BROKEN;
}
