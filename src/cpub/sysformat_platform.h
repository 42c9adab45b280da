/* sysformat_platform.h - the formatted output of the platform's C library, with the meanings that sysformat.h promises:
 * the "I" prefixes, and for the bounded form its truncation rule. Results are the number of bytes, or -1. */
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>

int32_t sysformat_bounded(size_t capacity, char *buffer, const char *format, va_list args);
int32_t sysformat_unbounded(char *buffer, const char *format, va_list args);
int32_t sysformat_stream(std::FILE *stream, const char *format, va_list args);
