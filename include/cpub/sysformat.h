/* sysformat.h - the small text services of the support library: formatters, bounded copies, console sinks, UTF-8 to
 * UTF-16. They lean on nothing but the C library and allocate only where said.
 *
 * Order of arguments: every bounded entry takes the capacity first and the buffer second, the reverse of the C library.
 *
 * Formats are those of printf. On every platform "%Iu" is a size (as size_t) and "%I64u" a 64-bit value, with the other
 * integer conversions (d i o x X) in place of u as well. That is why no format attribute is set here: compilers that
 * know the prefix give it another meaning.
 *
 * Truncation is the same on every platform: text shorter than the capacity is terminated; text of exactly that length
 * fills the buffer, gives its length and is not terminated; longer text fills the buffer, gives -1 and is not
 * terminated. A caller who needs a terminator sees to it. */
#ifndef CPUB_SYSFORMAT_H
#define CPUB_SYSFORMAT_H

#include <stdarg.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The environment record; opaque to the entries of this file. */
typedef struct sysenv sysenv;

/* Format into a buffer of `capacity` bytes. Return the number of bytes without a terminator, or -1 for text that does
 * not fit and for every failure of the C library. Memory is asked for, and given back, only for a format beyond 1000
 * bytes that holds an "I" prefix and for text that fills a buffer beyond 1000 bytes; without it the result is -1. */
int32_t sysenv_vsnprintf(size_t capacity, char *buffer, const char *format, va_list args);
int32_t sysenv_snprintf(size_t capacity, char *buffer, const char *format, ...);

/* The same with no limit: the buffer must be large enough for the text and its terminator. */
int32_t sysenv_sprintf(char *buffer, const char *format, ...);

/* Format to standard output, or to a stream. What the stream answers is dropped. */
void sysenv_printf(const char *format, ...);
void sysenv_fprintf(FILE *stream, const char *format, ...);

/* A size as text: plain if `units` is 0, else as gigabytes:megabytes:kilobytes:bytes in powers of 1024, of which only
 * the first may exceed 1023. Result and truncation as sysenv_snprintf. */
int32_t sysenv_sizetostr(int32_t units, size_t capacity, char *buffer, uint64_t value);

/* Length of a text in bytes; 0 for null. */
size_t sysenv_strlen(const char *text);

/* Copies at most capacity - 1 bytes and always ends them; a null source is an empty text. Returns `destination`, or
 * null for a capacity of 0, which writes nothing. */
char *sysenv_strncpy(size_t capacity, char *destination, const char *source);

/* Console sinks, in the form of stream functions. sysenv_print writes the text to standard output and flushes it; its
 * handle is not read. sysenv_printquiet takes a sysenv_printcontext and does nothing if that is null or silent. The
 * context is read at every call, so a client may change `silent` at any time. */
typedef struct sysenv_printcontext {
    void *env; /* the client's two handles: kept for it, never read here */
    void *task;
    int32_t silent;
} sysenv_printcontext;

void sysenv_print(void *handle, const char *text);
void sysenv_printquiet(void *context, const char *text);

/* Converts UTF-8 to 16-bit units and returns the number of units without the terminator.
 *   source       in, ends in 0
 *   destination  out, room for capacity + 1 units, see below; null: only count
 *   bytes_read   out, bytes of the source consumed, its terminator not counted; may be null
 *   capacity     units; a character is begun only while fewer than capacity - 1 units are written
 *   errors       out, number of sequences that are broken or above 0x10FFFF; may be null
 *
 * Nothing is refused: a broken sequence becomes one "." and is counted. The byte that breaks a sequence is consumed with
 * it, unless it is the terminator. Overlong forms and surrogate code points are taken.
 *
 * Two things are kept because names already stored depend on them. The first unit of a supplementary character takes
 * only bits 10 and 11 of the code point beside its plane, so that it is the standard one only in the first
 * supplementary plane with bits 12 to 15 zero. And since the room is tested before a character and not within it, a
 * supplementary character may fill the last two units, with the terminator one unit behind the capacity. Buffers sized
 * by a counting call (null, capacity 0) with the count plus 1 as capacity never meet that. */
uint64_t utf8_towide(const char *source, uint16_t *destination, uint64_t *bytes_read, uint64_t capacity,
                     uint64_t *errors);

/* The same with its count through `num_units`. Returns 0, or 12 if there were broken sequences: the output is complete
 * all the same. `sys` is not read. */
enum { SYSENV_UTF8_BROKEN = 12 };
int32_t sysenv_utf8towide(sysenv *sys, uint64_t capacity, uint64_t *num_units, uint16_t *destination,
                          uint64_t *bytes_read, const char *source);

#ifdef __cplusplus
}
#endif

#endif
