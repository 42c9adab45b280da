/* sysfile_write.cpp - the output side of the buffer: the write to the file itself, the stores, flush and completion. What
 * becomes of text stands in sysfile_text.cpp. */
#include "sysfile_internal.h"

#include <zlib.h>

/* ---- To the file itself ---- */

/* The number of bytes taken. A gzip stream has them from the buffer, whatever the source: kept, see sysfile.h; more than
 * the buffer has are not taken. */
static uint64_t write_beneath(sysfile_t *file, const void *source, uint64_t n)
{
    sysfile_state_t *const state = file->state;
    if (state->kind == SYSFILE_GZIP) {
        sysfile_assert(file, __LINE__, state->gz != nullptr);
        const uint64_t cut = static_cast<uint32_t>(n);
        const bool is_refused = cut > INT32_MAX; /* by zlib, which does not look at the bytes then */
        const uint64_t num = cut <= state->bufsize || is_refused ? cut : state->bufsize;
        const int taken = gzwrite(static_cast<gzFile>(state->gz), state->buffer, static_cast<unsigned>(num));
        return static_cast<uint64_t>(static_cast<int64_t>(taken));
    }
    sysfile_assert(file, __LINE__, state->fp != nullptr);
    /* The C library wants a positioning call between the two directions. */
    if (sysfile_is_update(state)) (void)std::fseek(state->fp, 0, SEEK_CUR);
    return n == 0 ? 0 : std::fwrite(source, 1, n, state->fp);
}

int32_t sysfile_rawwrite(sysfile_t *file, const void *source, uint64_t n)
{
    return write_beneath(file, source, n) == n ? SYSFILE_OK : SYSFILE_WRITE;
}

int32_t sysfile_drain(sysfile_t *file)
{
    sysfile_state_t *const state = file->state;
    if (state->read != 0 || (state->fp == nullptr && state->gz == nullptr)) return SYSFILE_OK;
    return sysfile_rawwrite(file, state->buffer, state->used);
}

/* ---- Through the buffer ---- */

/* Empties a full buffer, of which nothing is kept if that fails. */
static int32_t write_out(sysfile_t *file)
{
    sysfile_state_t *const state = file->state;
    const uint64_t n = state->used;
    state->used = 0;
    return sysfile_rawwrite(file, state->buffer, n);
}

int32_t sysfile_storebyte(sysfile_t *file, char c)
{
    sysfile_state_t *const state = file->state;
    if (state->read != 0) return sysfile_rawwrite(file, &c, 1);
    if (sysfile_room(state) == 0) {
        const int32_t res = write_out(file);
        if (res != SYSFILE_OK) return res;
    }
    state->buffer[state->used++] = c;
    return SYSFILE_OK;
}

/* The buffer is written out when it is full and one more byte arrives, not before: it may stand full in between. Whole
 * buffers that would pass through it empty-handed go straight to the file, where nobody can tell: not on gzip streams,
 * which write from the buffer alone, nor on those whose buffer serves reads too. */
int32_t sysfile_store_across(sysfile_t *file, const char *source, uint64_t n)
{
    sysfile_state_t *const state = file->state;
    const bool is_direct = state->kind != SYSFILE_GZIP && state->write != 0;
    while (n > 0) {
        int32_t res = SYSFILE_OK;
        if (sysfile_room(state) == 0) res = write_out(file);
        if (res == SYSFILE_OK && is_direct && state->used == 0 && n > state->bufsize) {
            const uint64_t whole = (n - 1) / state->bufsize * state->bufsize;
            res = sysfile_rawwrite(file, source, whole);
            source += whole;
            n -= whole;
        }
        if (res != SYSFILE_OK) return res;
        const uint64_t room = sysfile_room(state);
        const uint64_t part = n < room ? n : room;
        std::memcpy(state->buffer + state->used, source, part);
        state->used += part;
        source += part;
        n -= part;
    }
    return SYSFILE_OK;
}

/* ---- Entries ---- */

void sysenv_fwrite(sysfile_t *file, const void *source, uint64_t size, uint64_t count, int32_t *res)
{
    if (*res != SYSFILE_OK) return;
    *res = sysfile_store(file, source, size * count);
}

void sysenv_fwritestring(sysfile_t *file, uint64_t n, const char *text, int32_t *res)
{
    if (*res != SYSFILE_OK) return;
    *res = sysfile_store(file, &n, sizeof n);
    if (*res == SYSFILE_OK) *res = sysfile_store(file, text, n);
}

int32_t sysenv_fflush(sysfile_t *file)
{
    if (file == nullptr) return SYSFILE_OK;
    sysfile_state_t *const state = file->state;
    const int32_t res = sysfile_drain(file);
    if (state->read == 0 && res == SYSFILE_OK) state->used = 0;
    /* Compressed data is not forced out: kept, flushes would cost compression. */
    if (state->kind == SYSFILE_GZIP)
        (void)gzflush(static_cast<gzFile>(state->gz), Z_NO_FLUSH);
    else if (state->fp != nullptr)
        (void)std::fflush(state->fp);
    return res;
}

int32_t sysenv_ferror(sysfile_t *file)
{
    if (file == nullptr) return SYSFILE_OK;
    const sysfile_state_t *const state = file->state;
    bool has_failed = false;
    if (state->kind == SYSFILE_GZIP) {
        int error = Z_OK;
        (void)gzerror(static_cast<gzFile>(state->gz), &error);
        has_failed = error != Z_OK && error != Z_STREAM_END;
    } else {
        has_failed = std::ferror(state->fp) != 0;
    }
    if (!has_failed) return SYSFILE_OK;
    return state->read != 0 ? SYSFILE_READ : SYSFILE_WRITE;
}

int32_t sysenv_ffinish(sysfile_t *file)
{
    if (file == nullptr) return SYSFILE_OK;
    sysfile_state_t *const state = file->state;
    if (state->read != 0 && state->write == 0) return SYSFILE_OK; /* no output */
    int32_t res = sysenv_fflush(file);
    /* A write that has failed before leaves a hole, also where a later one has gone well. */
    if (res == SYSFILE_OK && sysenv_ferror(file) != SYSFILE_OK) res = SYSFILE_WRITE;
    if (res != SYSFILE_OK) return res;
    if (state->kind == SYSFILE_GZIP) {
        if (gzflush(static_cast<gzFile>(state->gz), Z_FINISH) != Z_OK) return SYSFILE_WRITE;
        return sysfile_todisk(reinterpret_cast<const sysfile_record *>(state)->descriptor);
    }
    return sysfile_todisk(sysfile_descriptor(state->fp));
}
