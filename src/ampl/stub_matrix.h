/* stub_matrix.h - the coefficients of rows, the bulk of most stubs: their check, and the matrix of the linear rows.
 *
 * To be checked every coefficient has to be taken from the file anyway. Kept on the way they need not be taken a second time
 * by the AMPL Solver Library, which takes a number letter by letter: what it is given then is the stub without those of linear
 * rows, with which it would do no more than put them into arrays or lists. That is done where they stand in the file in one
 * piece. */
#pragma once

#include "ampl/stub_header.h"

struct ZLR_task;

/* By columns. Null arrays: not known. Arrays are from ZLR_calloctask. As it is taken from the file it has the rows that are not
 * linear as well, whose coefficients the AMPL Solver Library changes in its own lists. */
struct stub_matrix {
    int32_t *colstart; /* num_var + 1 */
    int32_t *rowno;    /* within a column in the file's order */
    double *value;
    int64_t begin, end; /* the bytes of the file that hold coefficients of linear rows, all of them and nothing else */
};

[[nodiscard]] int32_t stub_matrix_make(ZLR_task *task, int32_t num_var, int32_t num_nz, stub_matrix *matrix);
void stub_matrix_free(ZLR_task *task, stub_matrix *matrix);

/* Of a column: where its next coefficient goes, and the end of its places. Beside each other, for they are wanted together. */
struct stub_places {
    int32_t next, end;
};

/* The look at the coefficients. stub_coefs_make makes it, stub_coefs_free releases what stub_coefs_release has not handed on. */
struct stub_coefs {
    stub_places *places;    /* num_var; known once the lengths of the columns were there */
    unsigned char *has_row; /* one a row: its coefficients were there */
    stub_matrix matrix;
    int64_t num;      /* so far */
    int32_t last_row; /* of the linear ones */
    bool is_kept;     /* the matrix is being filled */
    bool has_starts;
};

[[nodiscard]] int32_t stub_coefs_make(ZLR_task *task, const stub_header *header, stub_coefs *coefs);
void stub_coefs_free(ZLR_task *task, stub_coefs *coefs);

/* Lengths of the columns, behind their letter: where all but the last end (k), or how long they are (K). */
template <bool binary>
[[nodiscard]] bool stub_take_starts(stub_reader *r, const stub_header *header, bool is_length, stub_coefs *coefs);

/* Coefficients of a row, behind their letter. */
template <bool binary> [[nodiscard]] bool stub_take_row(stub_reader *r, const stub_header *header, stub_coefs *coefs);

/* The matrix of a stub without a fault becomes the caller's, where it was kept. */
void stub_coefs_release(const stub_reader *r, const stub_header *header, stub_coefs *coefs, stub_matrix *matrix);
