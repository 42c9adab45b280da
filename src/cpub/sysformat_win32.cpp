/* sysformat_win32.cpp - formatted output on Windows, whose C library has the prefixes and the truncation rule itself. The
 * compiler brings formatters of its own, which it puts in the place of some of the C library's and which print pointers
 * and exponents in another form. Only the C library's are called here, so that a value looks the same wherever it goes. */
#include "sysformat_platform.h"

int32_t sysformat_bounded(size_t capacity, char *buffer, const char *format, va_list args)
{
    const int length = _vsnprintf(buffer, capacity, format, args);
    /* With no room at all this C library answers with the length that it would need. */
    return length < 0 || static_cast<size_t>(length) > capacity ? -1 : length;
}

int32_t sysformat_unbounded(char *buffer, const char *format, va_list args)
{
    const int length = __ms_vsprintf(buffer, format, args);
    return length < 0 ? -1 : length;
}

int32_t sysformat_stream(std::FILE *stream, const char *format, va_list args)
{
    const int length = __ms_vfprintf(stream, format, args);
    return length < 0 ? -1 : length;
}
