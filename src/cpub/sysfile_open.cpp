/* sysfile_open.cpp - streams are opened, closed and rewound here.
 *
 * Memory is asked for before the file is touched, and a stream that cannot be completed goes the way of a closed one, so
 * that there is one release. */
#include "sysfile_internal.h"

#include <zlib.h>

/* zlib's own buffer. Its default of 8 KiB costs a system call for every so many bytes. */
static const unsigned GZIP_BUFFER_BYTES = 256 * 1024;

/* What both opening entries ask for. One of the names may be null. */
typedef struct open_request {
    const uint16_t *wide;
    const char *utf8;
    int32_t read, write, append, kind, level;
} open_request;

/* ---- Modes ---- */

/* The mode text for zlib. Texts like "rwb" and a bare "b" are meant: zlib takes the last letter of direction, and
 * refuses to open where there is none. */
static void gzip_mode(const open_request *request, char (&mode)[24])
{
    size_t length = 0;
    if (request->read != 0) mode[length++] = 'r';
    if (request->append != 0)
        mode[length++] = 'a';
    else if (request->write != 0)
        mode[length++] = 'w';
    mode[length++] = 'b';
    mode[length] = 0;
    if (request->level > 0 && request->read == 0)
        (void)sysenv_snprintf(sizeof mode - length, mode + length, "%d", request->level);
}

/* The mode for the C library, which knows no such texts: the one that gives what the descriptor was opened for. */
static const char *plain_mode(const open_request *request)
{
    const bool append = request->append != 0;
    if (request->read != 0 && request->write != 0) return append ? "a+b" : "r+b";
    if (request->read != 0) return "rb";
    if (request->write != 0) return append ? "ab" : "wb";
    return append ? "ab" : "r+b";
}

/* ---- Open ---- */

static int32_t attach_gzip(sysfile_state_t *state, const open_request *request, int descriptor)
{
    char mode[24];
    gzip_mode(request, mode);
    gzFile gz = gzdopen(descriptor, mode);
    if (gz == nullptr) return SYSFILE_OPEN; /* the descriptor stays open: kept, see sysfile.h */
    (void)gzbuffer(gz, GZIP_BUFFER_BYTES);
    state->gz = gz;
    reinterpret_cast<sysfile_record *>(state)->descriptor = descriptor;
    return SYSFILE_OK;
}

static int32_t attach_plain(sysfile_state_t *state, const open_request *request, int descriptor)
{
    state->fp = sysfile_attach(descriptor, plain_mode(request));
    if (state->fp == nullptr) {
        sysfile_closedescriptor(descriptor);
        return SYSFILE_OPEN;
    }
    /* One buffer is enough, and a full disk must show at the write that met it. */
    (void)std::setvbuf(state->fp, nullptr, _IONBF, 0);
    return SYSFILE_OK;
}

/* Fills in a handle. What is there on failure is left to the release. */
static int32_t open_file(sysfile_t *file, const open_request *request)
{
    sysfile_record *const record =
        static_cast<sysfile_record *>(sysenv_callocdbg(file->sys, SYSFILE_SOURCE, __LINE__, 1, sizeof(sysfile_record)));
    if (record == nullptr) return SYSFILE_NOMEM;
    sysfile_state_t *const state = &record->state;
    file->state = state;
    state->read = request->read;
    state->write = request->write;
    state->kind = request->kind;
    state->bufsize = SYSFILE_BUFFER_BYTES;
    state->buffer = static_cast<char *>(sysenv_mallocdbg(file->sys, SYSFILE_SOURCE, __LINE__, state->bufsize, 1));
    if (state->buffer == nullptr) return SYSFILE_NOMEM;

    const int descriptor =
        sysfile_opendescriptor(request->wide, request->utf8, request->read, request->write, request->append);
    if (descriptor == -1) return SYSFILE_OPEN;
    if (request->kind == SYSFILE_GZIP) return attach_gzip(state, request, descriptor);
    return attach_plain(state, request, descriptor);
}

static int32_t open_stream(sysenv *sys, const open_request *request, sysfile_t **out)
{
    *out = nullptr;
    sysfile_t *file = static_cast<sysfile_t *>(sysenv_callocdbg(sys, SYSFILE_SOURCE, __LINE__, 1, sizeof(sysfile_t)));
    if (file == nullptr) return SYSFILE_NOMEM;
    file->sys = sys;
    const int32_t res = open_file(file, request);
    if (res != SYSFILE_OK) (void)sysenv_fclose(&file);
    *out = file;
    return res;
}

void sysenv_wfopen(sysenv *sys, const uint16_t *name, int32_t modeflag, int32_t read, int32_t write, int32_t append,
                   int32_t kind, int32_t level, sysfile_t **out, int32_t *res)
{
    (void)modeflag;
    if (*res != SYSFILE_OK) {
        *out = nullptr;
        return;
    }
    const open_request request = {name, nullptr, read, write, append, kind, level};
    *res = open_stream(sys, &request, out);
}

void sysenv_fopen(sysenv *sys, const char *name, int32_t modeflag, int32_t read, int32_t write, int32_t append,
                  int32_t kind, int32_t level, sysfile_t **out, int32_t *res)
{
    (void)modeflag;
    if (*res != SYSFILE_OK) return;
    *out = nullptr;
    if (name == nullptr) {
        *res = SYSFILE_OPEN;
        return;
    }
    uint64_t num_units = 0;
    if (sysenv_utf8towide(sys, 0, &num_units, nullptr, nullptr, name) != 0) {
        *res = SYSFILE_BADNAME;
        return;
    }
    /* Made on every platform, also where the bytes name the file: so a stream costs the same blocks everywhere, and is
     * refused for the same reasons. */
    uint16_t *const wide =
        static_cast<uint16_t *>(sysenv_mallocdbg(sys, SYSFILE_SOURCE, __LINE__, num_units + 1, sizeof(uint16_t)));
    if (wide == nullptr) {
        *res = SYSFILE_NOMEM;
        return;
    }
    (void)sysenv_utf8towide(sys, num_units + 1, &num_units, wide, nullptr, name);
    const open_request request = {wide, name, read, write, append, kind, level};
    *res = open_stream(sys, &request, out);
    sysenv_freedbg(sys, SYSFILE_SOURCE, __LINE__, wide);
}

/* ---- Close and rewind ---- */

static void close_beneath(const sysfile_state_t *state)
{
    /* What these answer is dropped: kept, sysenv_ffinish is for those who must know. */
    if (state->kind == SYSFILE_GZIP) {
        if (state->gz != nullptr) (void)gzclose(static_cast<gzFile>(state->gz));
    } else if (state->fp != nullptr) {
        (void)std::fclose(state->fp);
    }
}

int32_t sysenv_fclose(sysfile_t **file)
{
    if (file == nullptr || *file == nullptr) return SYSFILE_OK;
    sysenv *const sys = (*file)->sys;
    sysfile_state_t *const state = (*file)->state;
    int32_t res = SYSFILE_OK;
    if (state != nullptr) {
        res = sysfile_drain(*file);
        sysenv_freedbg(sys, SYSFILE_SOURCE, __LINE__, state->buffer);
        close_beneath(state);
        sysenv_freedbg(sys, SYSFILE_SOURCE, __LINE__, state);
    }
    sysenv_freedbg(sys, SYSFILE_SOURCE, __LINE__, *file);
    *file = nullptr;
    return res;
}

int32_t sysenv_frewind(sysfile_t *file)
{
    sysfile_state_t *const state = file->state;
    state->used = 0;
    state->pos = 0;
    if (state->kind == SYSFILE_GZIP)
        return gzrewind(static_cast<gzFile>(state->gz)) == -1 ? SYSFILE_REWIND : SYSFILE_OK;
    std::rewind(state->fp);
    return SYSFILE_OK;
}
