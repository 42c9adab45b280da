/* solution_file.h - the library's own solution text, for .sol, .bas and .int files. docs/formats-solution.md describes
 * it for users.
 *
 * A header of keywords, then sections of one line a row, a column and, where there are any, a cone. A section's heading
 * names its fields, so that a reader knows what it holds, and [end] closes the file, so that a cut file is never taken
 * for a whole one. Numbers read back as the same bits. */
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

enum solution_item { ITEM_ROW, ITEM_COLUMN, ITEM_CONE, NUM_ITEMS };

/* A field of a section. FIELD_PRIMAL and FIELD_DUAL are values of the solution; the bounds are there for the reader's
 * eyes and are not read into anything, and what is told of a cone must be the problem's. */
enum solution_field_part {
    FIELD_NAME,
    FIELD_KEY,
    FIELD_BOUND,
    FIELD_PRIMAL,
    FIELD_DUAL,
    FIELD_CONE_TYPE,
    FIELD_CONE_SIZE
};

struct solution_field {
    const char *name;
    solution_field_part part;
    bool is_in[NUM_ITEMS];
    std::vector<double> solution::*values[NUM_ITEMS]; /* null: none */
    bool needs_cones = false;                         /* only in files of problems with cones */
};

inline constexpr solution_field solution_fields[] = {
    {"name", FIELD_NAME, {true, true, true}, {}},
    {"key", FIELD_KEY, {true, true, true}, {}},
    {"activity", FIELD_PRIMAL, {true, true, false}, {&solution::xc, &solution::xx, nullptr}},
    {"lower", FIELD_BOUND, {true, true, false}, {}},
    {"upper", FIELD_BOUND, {true, true, false}, {}},
    {"y", FIELD_DUAL, {true, false, false}, {&solution::y, nullptr, nullptr}},
    {"slc", FIELD_DUAL, {true, false, false}, {&solution::slc, nullptr, nullptr}},
    {"suc", FIELD_DUAL, {true, false, false}, {&solution::suc, nullptr, nullptr}},
    {"slx", FIELD_DUAL, {false, true, false}, {nullptr, &solution::slx, nullptr}},
    {"sux", FIELD_DUAL, {false, true, false}, {nullptr, &solution::sux, nullptr}},
    {"snx", FIELD_DUAL, {false, true, false}, {nullptr, &solution::snx, nullptr}, true},
    {"type", FIELD_CONE_TYPE, {false, false, true}, {}},
    {"members", FIELD_CONE_SIZE, {false, false, true}, {}},
};

/* Whether a section of the problem's file can have the field. */
inline bool solution_field_stands(const solution_field *field, solution_item item, const model *m)
{
    return field->is_in[item] && (!field->needs_cones || !m->cones.empty());
}

/* Names of cones: k1, k2 ... */
inline constexpr char solution_cone_prefix = 'k';
