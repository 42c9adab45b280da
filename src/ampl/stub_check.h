/* stub_check.h - looks through a stub before the AMPL Solver Library reads it.
 *
 * The library trusts the counts and indices of a stub: one that is damaged makes it write beyond its arrays, or ends the
 * process. What is let through here has all of its segments, with every index in its range and as many coefficients in each
 * column as the stub says; whether a number has a sensible value is not looked at. One pass over the file by blocks, in the
 * memory of a few integers a column, row and common expression, and of the matrix where that is kept (stub_matrix.h). */
#pragma once

#include "ampl/stub_matrix.h"

/* What is learned on the way. */
struct stub_facts {
    int32_t num_con, num_var; /* 0 where the header is at fault */
    bool has_sets;            /* special ordered sets, by their suffixes */
    bool is_nonlinear;        /* the first objective or a row is, for sure; false: it may be all the same */
};

/* `name` as the library takes it: NAME.nl, or NAME itself where that ends in .nl. `matrix` comes empty, and is filled where
 * the stub is good and its coefficients could be kept. Returns ZLR_RES_OK; ZLR_RES_ERR_FILE_READ, where it cannot be opened;
 * ZLR_RES_ERR_AMPL_STUB with `fault` (stub_fault_bytes), which says where the fault is, what was expected and what was found,
 * without a full stop; ZLR_RES_ERR_SPACE. */
[[nodiscard]] int32_t stub_check(ZLR_task *task, const char *name, stub_facts *facts, stub_matrix *matrix, char *fault);
