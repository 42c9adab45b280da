/* sysfile_internal.h - what the files of the stream layer share: the record behind a handle, the primitives below the
 * public entries, and what each platform does in its own way. */
#pragma once

#include "cpub/sysfile.h"

#include <cstdio>
#include <cstring>

/* The source that blocks are allocated under, and the one that failed assertions tell. The two forms differ: kept,
 * reports and traces are searched for them. */
static const char SYSFILE_SOURCE[] = "src\\cpub\\sysfile";
static const char SYSFILE_ASSERT_SOURCE[] = "src/cpub/sysfile";

/* What is allocated for a state. zlib does not tell the descriptor that it was given, and only through that can data be
 * sent to the disk and an end be forgotten. It belongs to zlib, which closes it. */
typedef struct sysfile_record {
    sysfile_state_t state; /* first: handles point to it */
    int descriptor;        /* gzip only */
} sysfile_record;

inline void sysfile_assert(const sysfile_t *file, int32_t line, bool condition)
{
    if (!condition) sysenv_assert(file->sys, SYSFILE_ASSERT_SOURCE, line, 0);
}

/* Both flags set or both clear: the file beneath is open in both directions. */
inline bool sysfile_is_update(const sysfile_state_t *state) { return (state->read != 0) == (state->write != 0); }

/* ---- Input: sysfile_read.cpp, sysfile_lines.cpp */

/* Reads up to n bytes from the file itself. A failure of zlib is its -1, widened. */
uint64_t sysfile_rawread(sysfile_state_t *state, void *destination, uint64_t n);

/* Refills the buffer: SYSFILE_EOF when no data comes. Called when pos equals used. */
void sysenv_fillbuffer(sysfile_t *file, int32_t *res);

/* Bytes that may be taken from the buffer before it is refilled. Two states have `used` elsewhere than behind `pos`:
 * after a failed gzread it is the widened -1, and on a stream with neither flag a write out has set it back under `pos`.
 * Bytes go on coming then, as far as the buffer reaches. */
inline uint64_t sysfile_unread(const sysfile_state_t *state)
{
    const bool is_end_known = state->pos <= state->used && state->used <= state->bufsize;
    return (is_end_known ? state->used : state->bufsize) - state->pos;
}

/* ---- Output: sysfile_write.cpp. Results are SYSFILE_OK or SYSFILE_WRITE. */

/* Writes n bytes to the file itself; on a gzip stream they are the first of the buffer, see sysfile.h. */
int32_t sysfile_rawwrite(sysfile_t *file, const void *source, uint64_t n);

/* Writes what waits in the buffer of an output, which is left as it is. */
int32_t sysfile_drain(sysfile_t *file);

/* Stores a block that the buffer has no room for, and a byte: the general forms of the two below. */
int32_t sysfile_store_across(sysfile_t *file, const char *source, uint64_t n);
int32_t sysfile_storebyte(sysfile_t *file, char c);

/* Free bytes of the buffer. A gzip stream that was opened with append alone may be read from, in vain, which leaves
 * `used` beyond the buffer: it counts as full then, and writing it out fails. */
inline uint64_t sysfile_room(const sysfile_state_t *state)
{
    return state->used < state->bufsize ? state->bufsize - state->used : 0;
}

inline int32_t sysfile_store(sysfile_t *file, const void *source, uint64_t n)
{
    sysfile_state_t *const state = file->state;
    if (state->read != 0) return sysfile_rawwrite(file, source, n);
    if (n == 0) return SYSFILE_OK; /* the source may be null */
    if (n >= sysfile_room(state)) return sysfile_store_across(file, static_cast<const char *>(source), n);
    std::memcpy(state->buffer + state->used, source, n);
    state->used += n;
    return SYSFILE_OK;
}

/* CR LF. Through the file itself it is two writes: kept, on a gzip stream both take the buffer's first byte. */
inline int32_t sysfile_storelineend(sysfile_t *file)
{
    sysfile_state_t *const state = file->state;
    if (state->read == 0 && sysfile_room(state) >= 2) {
        state->buffer[state->used++] = '\r';
        state->buffer[state->used++] = '\n';
        return SYSFILE_OK;
    }
    const int32_t res = sysfile_storebyte(file, '\r');
    return res != SYSFILE_OK ? res : sysfile_storebyte(file, '\n');
}

/* ---- Platform: sysfile_posix.cpp, sysfile_win32.cpp */

/* Opens a file and returns its descriptor, or -1. `wide` may be null (-1) if `utf8` is too; a `utf8` that is not null
 * names the same file and is preferred where the system takes bytes. Directories are not files. */
int sysfile_opendescriptor(const uint16_t *wide, const char *utf8, int32_t read, int32_t write, int32_t append);
void sysfile_closedescriptor(int descriptor);

/* The C library's stream over a descriptor, which then belongs to it; and back. */
FILE *sysfile_attach(int descriptor, const char *mode);
int sysfile_descriptor(FILE *stream);

/* Makes the C library forget that reads of a descriptor have come to the end of its file. What is above the descriptor
 * has marks of its own. */
void sysfile_forgetend(int descriptor);

/* Waits until the data of a file is on the disk. Nothing to do, and SYSFILE_OK, for what is no file on a disk. */
int32_t sysfile_todisk(int descriptor);
