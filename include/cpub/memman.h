/* memman.h - a checking allocator over allocator functions that its owner gives.
 *
 * With `debug` 0 each entry goes straight to the given function: no lock, no header, nothing recorded. With `debug` on,
 * every block has a header of its own in a list (newest first), guards of 32 bytes on both sides and a number; usage is
 * counted, and each release verifies what it releases.
 *
 * All entries but memman_create and the setters take the caller's file (may be null) and line in front of the manager.
 * Faults of the heap end the process: the report goes to the echo file and the message hook, then the fatal hook is
 * called, then exit(-99). Memory that runs out is no fault: the entry gives null.
 *
 * Callbacks, the allocator functions included, run with the manager's mutex held: they must not wait for another thread
 * that calls the manager. The mutex is recursive. */
#ifndef CPUB_MEMMAN_H
#define CPUB_MEMMAN_H

#include "cpub/syssync.h"

#include <stdint.h>
#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef void *(*memman_mallocfunc)(void *handle, uint64_t size);
typedef void *(*memman_callocfunc)(void *handle, uint64_t count, uint64_t size); /* zeroed */
typedef void *(*memman_reallocfunc)(void *handle, void *block, uint64_t size);   /* null: the old block stays valid */
typedef void (*memman_freefunc)(void *handle, void *block);                      /* must take null */
typedef void (*memman_fatalfunc)(void *handle, const char *file, int32_t line, const char *text, int32_t code);
typedef void (*memman_msgfunc)(void *handle, const char *text);

enum { MEMMAN_GUARD_BYTES = 32, MEMMAN_SEED = 0x20 };

/* The header of a block. The raw region is one allocation: guard, `size` user bytes, guard; byte i of a guard is its
 * seed plus i. The pointer that the caller gets is raw + 32. */
typedef struct memman_block {
    uint64_t id; /* kept through reallocation */
    int32_t locked;
    uint8_t digest[16]; /* MD5, taken when locking */
    uint64_t size;      /* user bytes */
    char *raw;
    signed char beginseed, endseed; /* always MEMMAN_SEED */
    struct memman_block *prev;      /* towards the head */
    struct memman_block *next;
} memman_block;

typedef struct memman_list {
    int32_t flags;     /* 0, not read */
    int32_t tracefrom; /* -1 at first, written by memman_setlevels, not read */
    int32_t level;     /* texts with a threshold below it reach msgfunc */
    uint32_t nextid;   /* wraps */
    memman_block *head;
} memman_list;

typedef struct memman {
    char begin_guard[9]; /* "begin": the manager's own mark, verified by memman_scan */
    char name[24];       /* always empty; printed in reports */
    int32_t usemutex;    /* 1 once the mutex exists */
    sysmutex *mutex;
    void *allochandle;
    memman_mallocfunc mallocfunc;
    memman_callocfunc callocfunc;
    memman_reallocfunc reallocfunc;
    memman_freefunc freefunc;
    void *fatalhandle;
    memman_fatalfunc fatalfunc;
    void *msghandle;
    memman_msgfunc msgfunc;
    memman_list *list;
    uint64_t maxusage; /* highest curusage that an allocation has left, bytes; reallocation does not raise it */
    uint64_t curusage; /* user bytes now allocated */
    int32_t debug;     /* fixed at creation */
    char echopath[2048];
    FILE *echofile;    /* null: closed */
    char end_guard[9]; /* "end": written, never verified */
} memman;

/* Makes a manager; null without memory. The first three arguments are not read. Before first use the owner calls
 * memman_setfatalfunc, memman_setmsgfunc and memman_setlevels, with null functions where no hook is wanted. */
memman *memman_create(const char *file, int32_t line, const void *unused, int32_t debug, void *allochandle,
                      memman_mallocfunc mallocfunc, memman_callocfunc callocfunc, memman_reallocfunc reallocfunc,
                      memman_freefunc freefunc);

/* No-ops on a null manager, and where the mutex cannot be taken. */
void memman_setmsgfunc(memman *man, memman_msgfunc func, void *handle);
void memman_setfatalfunc(memman *man, memman_fatalfunc func, void *handle);
void memman_setlevels(memman *man, int32_t tracefrom, int32_t level);

/* ---- Allocation: the user pointer, or null for a total of 0, without memory, without the mutex. `count` times `size` is
 * not checked for overflow. */
void *memman_malloc(const char *file, int32_t line, memman *man, uint64_t count, uint64_t size);
void *memman_calloc(const char *file, int32_t line, memman *man, uint64_t count, uint64_t size);
char *memman_strdup(const char *file, int32_t line, memman *man, const char *text); /* null counts as "" */
void *memman_allocx(const char *file, int32_t line, memman *man, uint64_t count, uint64_t size, int32_t zero);

/* The block has size + alignment bytes, p is its body, and the result is p + p % alignment, with p stored in the 8 bytes
 * in front of it. So the result is a multiple of the alignment only for a lucky p. Where p % alignment is below 8, the
 * stored pointer begins in front of the block, and for a p that is a multiple already all of it lies there:
 *   `debug` on    on the guard's last bytes, which the next verification of the block reports, also that of its release
 *   `debug` off   on the last bytes in front of what the given function returned. Nothing notices it here; an allocator
 *                 that keeps a header there, as those of C libraries do, loses it and may end the process at the release
 * Kept: what is stored in blocks made so far depends on it. Given back by memman_aligned_free alone. Null also where
 * size + alignment wraps; an alignment of 0 ends the process as a division fault. */
void *memman_aligned_malloc(const char *file, int32_t line, memman *man, uint64_t size, uint64_t alignment);

/* ---- Release and reallocation. Null is allowed. */
void memman_free(const char *file, int32_t line, memman *man, void *block);
void memman_freex(const char *file, int32_t line, memman *man, void *block);
void memman_aligned_free(const char *file, int32_t line, memman *man, void *block);

/* A new size of 0 releases, a null block allocates. Null without memory: the block is then as it was. What was locked
 * comes out unlocked. With `debug` 0 it is the given function's word in all of this. */
void *memman_realloc(const char *file, int32_t line, memman *man, void *block, uint64_t size);

/* ---- Checks. With `debug` 0 all but lockall and unlockall do nothing. */
int32_t memman_scan(const char *file, int32_t line, memman *man, int32_t level);                     /* 0 */
int32_t memman_usage(const char *file, int32_t line, memman *man, uint64_t min_size, int32_t level); /* 0 */

/* Fatal unless the pointer lies in a live block: from its first user byte on, its last 32 user bytes not counted. Takes no
 * lock: it must not run beside a thread that changes the list. */
void memman_checkptr(const char *file, int32_t line, memman *man, const void *pointer);
void memman_checkblock(const char *file, int32_t line, memman *man, const void *block);

/* A locked block must not change: each verification compares its MD5. The digest is over `size` bytes from the start of
 * the guard in front, so that the last 32 user bytes are outside it: kept. Locking again takes a new digest. */
void memman_lockblock(const char *file, int32_t line, memman *man, void *block);
void memman_unlockblock(const char *file, int32_t line, memman *man, void *block);
void memman_lockall(const char *file, int32_t line, memman *man);
void memman_unlockall(const char *file, int32_t line, memman *man);

/* Scans, reports leaks, takes the manager down and sets the pointer to null. Returns how many blocks are left; they stay
 * allocated. No other thread may use the manager any more. */
uint64_t memman_delete(const char *file, int32_t line, memman **man);

/* ---- The echo file takes every text, whatever the level. No-ops on a null manager. */
void memman_openecho(memman *man, const char *path, const char *header); /* closes an open one; failure is silent */
void memman_closeecho(memman *man);
void memman_echotofile(memman *man, const char *text); /* no lock, no flush */

#ifdef __cplusplus
}
#endif

#endif
