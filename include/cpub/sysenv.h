/* sysenv.h - the environment: first argument of the support library, owner of its memory manager, of the fatal hook and of
 * the log streams.
 *
 * It exists before every object that is made through it and outlives them all. It takes no lock: hooks and streams are
 * set before the first use, and are called on the thread that fails. Allocation is as thread-safe as the manager. */
#ifndef CPUB_SYSENV_H
#define CPUB_SYSENV_H

#include "cpub/memman.h"
#include "cpub/sysformat.h"

#ifdef __cplusplus
extern "C" {
#endif

enum { SYSENV_NUM_STREAMS = 10 };

/* A hook that hears of a fatal error first. Its last argument is always -1; the report goes on if it returns. */
typedef void (*sysenv_fatalfunc)(void *handle, const char *file, int32_t line, const char *text, int32_t code);
typedef void (*sysenv_streamfunc)(void *handle, const char *text);

typedef struct fatal_record {
    void *handle;
    sysenv_fatalfunc func; /* may be null */
} fatal_record;

struct sysenv {
    void *owner; /* the client's two words: kept for it, never read here */
    void *reserved;
    memman *memman;      /* owned, never null */
    fatal_record *fatal; /* null: a fatal error ends the process without a word; else &own_fatal, or the client's */
    fatal_record own_fatal;
    void *streamhandle[SYSENV_NUM_STREAMS];
    sysenv_streamfunc streamfunc[SYSENV_NUM_STREAMS]; /* each may be null */
};

/* Allocator functions of an environment; a null function is the C library's. They are also asked for the record itself. */
typedef struct sysenv_allocator {
    void *handle;
    memman_mallocfunc mallocfunc;
    memman_callocfunc callocfunc;
    memman_reallocfunc reallocfunc;
    memman_freefunc freefunc;
} sysenv_allocator;

/* Makes an environment: manager with `debug` as given, no hooks, no streams, levels 0, `fatal` at its own record with a null
 * func, so that fatal errors reach the streams. `allocator` null: the C library. Null without memory. */
sysenv *sysenv_create(const char *file, int32_t line, int32_t debug, const sysenv_allocator *allocator);

/* Deletes it: the manager last of all, with its scan and leak report. Sets the pointer to null. Returns how many blocks had
 * not been given back (0 with `debug` off, where nobody counts); 0 for a null pointer. */
uint64_t sysenv_delete(const char *file, int32_t line, sysenv **sys);

/* Allocation with the caller's file and line; see memman.h. Null without memory. */
void *sysenv_mallocdbg(sysenv *sys, const char *file, int32_t line, uint64_t count, uint64_t size);
void *sysenv_callocdbg(sysenv *sys, const char *file, int32_t line, uint64_t count, uint64_t size);
void sysenv_freedbg(sysenv *sys, const char *file, int32_t line, void *block); /* fatal for the environment itself */
void *sysenv_aligned_mallocdbg(sysenv *sys, const char *file, int32_t line, uint64_t size, uint64_t alignment);
void sysenv_aligned_freedbg(sysenv *sys, const char *file, int32_t line, void *block);

/* Nothing for a condition that is not 0, else fatal. */
void sysenv_assert(sysenv *sys, const char *file, int32_t line, int32_t condition);

/* Reports and aborts. With a null `sys` on standard output; with a null `fatal` record without a word: kept, clients
 * switch reports off in that way. The message has at most 2047 bytes. */
#if defined(__GNUC__)
__attribute__((noreturn))
#endif
void sysenv_fatal(sysenv *sys, const char *file, int32_t line, const char *format, ...);

/* A text to each stream that is set, cut to 1047 bytes. */
void sysenv_broadcast(sysenv *sys, const char *format, ...);

/* Without an environment: tells on standard output and aborts. */
#if defined(__GNUC__)
__attribute__((noreturn))
#endif
void sysenv_assertfail(const char *expression, const char *file, int32_t line);

/* The path of the shared library or program that holds this code, in a buffer of `capacity` bytes, always terminated.
 * Returns 0, or 1 where it is not known or does not fit. */
int32_t sysenv_getdllname(sysenv *sys, uint64_t capacity, char *buffer);

#ifdef __cplusplus
}
#endif

#endif
