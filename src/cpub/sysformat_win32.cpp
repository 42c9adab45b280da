/* sysformat_win32.cpp - formatted output on Windows, whose C library has the prefixes and the truncation rule itself. */
#include "sysformat_platform.h"

int32_t sysformat_bounded(size_t capacity, char *buffer, const char *format, va_list args)
{
    const int length = _vsnprintf(buffer, capacity, format, args);
    /* With no room at all this C library answers with the length that it would need. */
    return length < 0 || static_cast<size_t>(length) > capacity ? -1 : length;
}

int32_t sysformat_unbounded(char *buffer, const char *format, va_list args)
{
    const int length = vsprintf(buffer, format, args);
    return length < 0 ? -1 : length;
}

int32_t sysformat_stream(std::FILE *stream, const char *format, va_list args)
{
    const int length = std::vfprintf(stream, format, args);
    return length < 0 ? -1 : length;
}
