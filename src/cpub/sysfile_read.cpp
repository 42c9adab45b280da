/* sysfile_read.cpp - reads of bytes and counted strings, and the refill below all buffered reads. */
#include "sysfile_internal.h"

#include <zlib.h>

/* No block of memory is larger, with room for what the manager adds to it. A length beyond is refused before it could
 * wrap round there. */
static const uint64_t MAX_STRING_BYTES = INT64_MAX / 2;

/* ---- From the file itself ---- */

uint64_t sysfile_rawread(sysfile_state_t *state, void *destination, uint64_t n)
{
    if (state->kind == SYSFILE_GZIP) {
        const int taken = gzread(static_cast<gzFile>(state->gz), destination, static_cast<unsigned>(n));
        return static_cast<uint64_t>(static_cast<int64_t>(taken));
    }
    /* The C library wants a positioning call between the two directions. */
    if (sysfile_is_update(state)) (void)std::fseek(state->fp, 0, SEEK_CUR);
    return std::fread(destination, 1, n, state->fp);
}

/* The end of a file is not kept: what has been appended meanwhile is found by the next read. */
static void forget_end(sysfile_state_t *state)
{
    if (state->kind == SYSFILE_GZIP) {
        gzclearerr(static_cast<gzFile>(state->gz));
        sysfile_forgetend(reinterpret_cast<const sysfile_record *>(state)->descriptor);
    } else {
        std::clearerr(state->fp);
        sysfile_forgetend(sysfile_descriptor(state->fp));
    }
}

void sysenv_fillbuffer(sysfile_t *file, int32_t *res)
{
    if (*res != SYSFILE_OK) return;
    sysfile_state_t *const state = file->state;
    sysfile_assert(file, __LINE__, state->write == 0);
    forget_end(state);
    state->used = sysfile_rawread(state, state->buffer, state->bufsize);
    state->pos = 0;
    if (state->used == 0) *res = SYSFILE_EOF;
}

/* ---- Through the buffer ---- */

/* Whole buffers go straight to the destination where nobody can tell: the buffer is empty and holds no output. With
 * gzip files they do not, for there a failed read goes on with what is in the buffer. */
static bool is_direct(const sysfile_state_t *state, uint64_t n)
{
    return n >= state->bufsize && state->kind != SYSFILE_GZIP && state->read != 0;
}

/* As many refills as n bytes have whole buffers, in one; `used` and `pos` are left as by the last of them. */
static uint64_t take_direct(sysfile_state_t *state, char *destination, uint64_t n, int32_t *res)
{
    forget_end(state);
    const uint64_t taken = sysfile_rawread(state, destination, n - n % state->bufsize);
    const uint64_t last = taken % state->bufsize;
    state->used = taken != 0 && last == 0 ? state->bufsize : last;
    state->pos = state->used;
    if (taken == 0) *res = SYSFILE_EOF;
    return taken;
}

/* Takes n bytes, or SYSFILE_EOF. Returns how many there were. */
static uint64_t take(sysfile_t *file, char *destination, uint64_t n, int32_t *res)
{
    sysfile_state_t *const state = file->state;
    uint64_t done = 0;
    while (done < n && *res == SYSFILE_OK) {
        if (state->pos == state->used) {
            if (is_direct(state, n - done)) {
                done += take_direct(state, destination + done, n - done, res);
                continue;
            }
            sysenv_fillbuffer(file, res);
            if (*res != SYSFILE_OK) break;
        }
        const uint64_t unread = sysfile_unread(state);
        const uint64_t part = unread < n - done ? unread : n - done;
        if (part == 0) *res = SYSFILE_EOF;
        std::memcpy(destination + done, state->buffer + state->pos, part);
        state->pos += part;
        done += part;
    }
    return done;
}

static void read_exact(sysfile_t *file, void *destination, uint64_t n, int32_t *res)
{
    if (file->state->write == 0)
        (void)take(file, static_cast<char *>(destination), n, res);
    else if (n != 0 && sysfile_rawread(file->state, destination, n) != n)
        *res = SYSFILE_READ;
}

/* ---- Entries ---- */

void sysenv_fread(sysfile_t *file, void *destination, uint64_t size, uint64_t count, int32_t *res)
{
    if (*res != SYSFILE_OK) return;
    read_exact(file, destination, size * count, res);
}

uint64_t sysenv_freadcount(sysfile_t *file, void *destination, uint64_t n, int32_t *res)
{
    sysfile_assert(file, __LINE__, file->state->write == 0);
    return take(file, static_cast<char *>(destination), n, res);
}

/* Makes room for `length` bytes and a terminator. */
static int32_t grow_string(sysenv *sys, uint64_t length, uint64_t *capacity, char **text)
{
    if (length < *capacity) return SYSFILE_OK;
    sysenv_freedbg(sys, SYSFILE_SOURCE, __LINE__, *text);
    *text = nullptr;
    *capacity = 0;
    if (length <= MAX_STRING_BYTES)
        *text = static_cast<char *>(sysenv_callocdbg(sys, SYSFILE_SOURCE, __LINE__, length + 1, 1));
    if (*text == nullptr) return SYSFILE_NOMEM;
    *capacity = length + 1;
    return SYSFILE_OK;
}

void sysenv_freadstring(sysfile_t *file, uint64_t *capacity, char **text, int32_t *res)
{
    if (*res != SYSFILE_OK) return;
    uint64_t length = 0;
    read_exact(file, &length, sizeof length, res);
    if (*res != SYSFILE_OK) return;
    *res = grow_string(file->sys, length, capacity, text);
    if (*res != SYSFILE_OK) return;
    read_exact(file, *text, length, res);
    (*text)[length] = 0; /* a text cut short is ended too, where its length says */
}
