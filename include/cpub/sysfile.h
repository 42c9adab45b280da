/* sysfile.h - streams over plain and gzip files, with a buffer of their own, UTF-8 names and their own line ends.
 *
 * Most entries take a status `res`: they do nothing when it is not 0 already, and else leave their result there, so that
 * calls can be chained and tested once. A stream keeps no error and no end of file: the next call tries the file again.
 * A stream belongs to one thread at a time. Nothing is printed.
 *
 * Which way is buffered follows from how the stream was opened: output goes through the buffer exactly when `read` is 0,
 * input exactly when `write` is 0. A stream for both is not buffered at all. Files are binary; entries that write text
 * turn each "\n" into CR LF, and line reads take any line end.
 *
 * Two things are kept because stored files and clients depend on them: a gzip stream that is opened for reading too writes
 * the first bytes of its buffer in place of the caller's (unbuffered path), and the end of a file is SYSFILE_EOF on the
 * buffered path and SYSFILE_READ on the other. */
#ifndef CPUB_SYSFILE_H
#define CPUB_SYSFILE_H

#include "cpub/sysenv.h"

#ifdef __cplusplus
extern "C" {
#endif

enum {
    SYSFILE_OK = 0,
    SYSFILE_NOMEM = 1,
    SYSFILE_OPEN = 2,        /* the file cannot be opened, or the name is null */
    SYSFILE_READ = 3,        /* an unbuffered read has given fewer bytes than asked for */
    SYSFILE_EOF = 4,         /* a buffered read has found no more data */
    SYSFILE_WRITE = 5,       /* a write has taken fewer bytes than given */
    SYSFILE_NOTREADABLE = 6, /* a line read on a stream that was not opened for reading */
    SYSFILE_REWIND = 7,
    SYSFILE_BADNAME = 9 /* the name is not valid UTF-8 */
};

enum { SYSFILE_PLAIN = 0, SYSFILE_GZIP = 1, SYSFILE_BUFFER_BYTES = 1048576 };

typedef struct sysfile_state_t {
    int32_t read, write; /* how it was opened; not 0: yes */
    int32_t kind;        /* SYSFILE_GZIP: through gz; any other: plain, through fp */
    uint64_t bufsize;    /* SYSFILE_BUFFER_BYTES */
    uint64_t used;       /* output: bytes that wait in the buffer; input: bytes of the last refill */
    uint64_t pos;        /* input: the next unread byte; 0 on output */
    char *buffer;
    FILE *fp;
    void *gz; /* zlib's file */
} sysfile_state_t;

typedef struct sysfile_t {
    sysenv *sys;
    sysfile_state_t *state;
} sysfile_t;

/* ---- Open and close
 * Opens a file by its UTF-8 name (sysenv_fopen) or UTF-16 name (sysenv_wfopen), both ending in 0.
 *   modeflag            not read
 *   read, write         not 0: for reading, for writing (creates the file). Both 0: for update, created
 *   append              not 0: writes go to the end; else a file opened for writing is emptied
 *   kind                SYSFILE_GZIP or plain; neither name nor content is looked at
 *   level               gzip, not opened for reading: compression level if above 0
 *   out                 out, the stream, null on failure. With a `res` that is not 0 on entry wfopen sets it to null and
 *                       fopen leaves it alone
 * SYSFILE_NOMEM, SYSFILE_OPEN, SYSFILE_BADNAME (fopen).
 * With SYSFILE_GZIP and read, write and append all 0 it is always SYSFILE_OPEN: zlib takes no file without a direction.
 * The file has been created by then, and its descriptor stays open until the process ends: kept, and the only failure
 * that leaves something behind. */
void sysenv_fopen(sysenv *sys, const char *name, int32_t modeflag, int32_t read, int32_t write, int32_t append,
                  int32_t kind, int32_t level, sysfile_t **out, int32_t *res);
void sysenv_wfopen(sysenv *sys, const uint16_t *name, int32_t modeflag, int32_t read, int32_t write, int32_t append,
                   int32_t kind, int32_t level, sysfile_t **out, int32_t *res);

/* Writes out what waits, releases everything, sets the pointer to null. SYSFILE_WRITE if not all of it was taken; what
 * shows only when the file itself is closed goes untold (see sysenv_ffinish). Null: 0. */
int32_t sysenv_fclose(sysfile_t **file);

/* Back to the beginning. Output that waits is dropped. SYSFILE_REWIND, gzip only. */
int32_t sysenv_frewind(sysfile_t *file);

/* ---- Reads
 * sysenv_fread reads exactly size * count bytes. sysenv_freadcount reads at most n and returns how many; streams opened
 * with `write` are a fatal error there. sysenv_freadstring reads a counted string (8 bytes of length in the machine's
 * order, then the bytes) into *text, which it grows through the environment: *capacity is its size, and the caller
 * releases it with sysenv_freedbg. A terminator is put behind it.
 * Short: SYSFILE_EOF buffered, SYSFILE_READ otherwise, with the bytes that came in the destination. */
void sysenv_fread(sysfile_t *file, void *destination, uint64_t size, uint64_t count, int32_t *res);
uint64_t sysenv_freadcount(sysfile_t *file, void *destination, uint64_t n, int32_t *res);
void sysenv_freadstring(sysfile_t *file, uint64_t *capacity, char **text, int32_t *res);

/* A line, of at most capacity - 1 bytes (capacity at least 1), without any carriage returns at its end. sysenv_fgets
 * ends it with one "\n" where there is room for it, also where the file or the capacity has ended it. sysenv_fgetslen
 * leaves that off and tells the length. SYSFILE_EOF when nothing is left, SYSFILE_NOTREADABLE; streams opened with
 * `write` are a fatal error.
 * A "\n" directly behind a line of capacity - 1 bytes is consumed with it only where pos + capacity is below `used`;
 * otherwise it is the next, empty, line. Kept. */
void sysenv_fgets(sysfile_t *file, uint64_t capacity, char *destination, int32_t *res);
void sysenv_fgetslen(sysfile_t *file, uint64_t capacity, uint64_t *length, char *destination, int32_t *res);

/* ---- Writes: SYSFILE_OK or SYSFILE_WRITE, returned or left in `res`. After a failure the rest of the data and what was in
 * the buffer are gone. Null text is nothing, but for sysenv_fputsraw. Formatted text is cut at 2048 bytes. */
int32_t sysenv_fputc(sysfile_t *file, char c);
int32_t sysenv_fputs(sysfile_t *file, const char *text);
int32_t sysenv_fwritetext(sysfile_t *file, uint64_t n, const char *text);
void sysenv_fputsres(sysfile_t *file, const char *text, int32_t *res);
void sysenv_fputsraw(sysfile_t *file, const char *text, int32_t *res); /* line ends as they stand */
void sysenv_fnewline(sysfile_t *file, int32_t *res);                   /* CR LF */
int32_t sysenv_fformat(sysfile_t *file, const char *format, ...);
int32_t sysenv_vfformat(sysfile_t *file, const char *format, va_list args);
void sysenv_fwrite(sysfile_t *file, const void *source, uint64_t size, uint64_t count, int32_t *res); /* as it stands */
void sysenv_fwritestring(sysfile_t *file, uint64_t n, const char *text, int32_t *res); /* counted string */

/* Writes out what waits in the buffer; it stays there if that fails, for another try. On gzip files compressed data may
 * still wait in zlib. Null: 0. */
int32_t sysenv_fflush(sysfile_t *file);

/* ---- For clients that must know
 * sysenv_ferror asks the file beneath: SYSFILE_OK, or SYSFILE_READ or SYSFILE_WRITE by how it was opened. A damaged or
 * cut gzip file and a disk that fails show here; the reads above take them for the end of the file.
 * sysenv_ffinish completes an output: buffer out, gzip ended, data on the disk. SYSFILE_OK or SYSFILE_WRITE. To be
 * followed by sysenv_fclose. */
int32_t sysenv_ferror(sysfile_t *file);
int32_t sysenv_ffinish(sysfile_t *file);

#ifdef __cplusplus
}
#endif

#endif
