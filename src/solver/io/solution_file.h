/* solution_file.h - the library's own solution text, for .sol, .bas and .int files. docs/formats-solution.md describes
 * it for users.
 *
 * A header of keywords, then sections of one line a row and one a column. A section's heading names its fields, so that
 * a reader knows what it holds, and [end] closes the file, so that a cut file is never taken for a whole one. Numbers
 * read back as the same bits. */
#pragma once

#include "solver/io/io.h"
#include "solver/model/solution.h"

/* Writes a solution of a kind beside the target and renames. `io->file` is the target. ZLR_RES_ERR_FILE_OPEN,
 * ZLR_RES_ERR_FILE_WRITE, ZLR_RES_ERR_NAN for a value that is not finite; told on the error stream. */
[[nodiscard]] int32_t solution_file_write(const io_context *io, const model *m, const solution *sol, int32_t kind);

/* Reads a solution of a kind for the problem into *sol, which is left alone on failure. Rows and columns are matched by
 * name; where names occur twice the file must list them in the problem's order. ZLR_RES_ERR_FILE_READ,
 * ZLR_RES_ERR_FILE_FORMAT, ZLR_RES_ERR_SOL_MISMATCH, told with file and line. */
[[nodiscard]] int32_t solution_file_read(const io_context *io, const model *m, int32_t kind, solution *sol);

/* ---- What reader and writer share ---- */

inline constexpr const char *solution_file_magic = "zelor-solution 1";

/* A field of a section. FIELD_PRIMAL and FIELD_DUAL are values of the solution; the bounds are there for the reader's
 * eyes and are not read into anything. */
enum solution_field_part { FIELD_NAME, FIELD_KEY, FIELD_BOUND, FIELD_PRIMAL, FIELD_DUAL };

struct solution_field {
    const char *name;
    solution_field_part part;
    bool in_rows, in_columns;
    std::vector<double> solution::*row; /* null: none in rows */
    std::vector<double> solution::*column;
};

inline constexpr solution_field solution_fields[] = {
    {"name", FIELD_NAME, true, true, nullptr, nullptr},
    {"key", FIELD_KEY, true, true, nullptr, nullptr},
    {"activity", FIELD_PRIMAL, true, true, &solution::xc, &solution::xx},
    {"lower", FIELD_BOUND, true, true, nullptr, nullptr},
    {"upper", FIELD_BOUND, true, true, nullptr, nullptr},
    {"y", FIELD_DUAL, true, false, &solution::y, nullptr},
    {"slc", FIELD_DUAL, true, false, &solution::slc, nullptr},
    {"suc", FIELD_DUAL, true, false, &solution::suc, nullptr},
    {"slx", FIELD_DUAL, false, true, nullptr, &solution::slx},
    {"sux", FIELD_DUAL, false, true, nullptr, &solution::sux},
};
