/* lp_rows.h - coefficients by row, as an LP text brings them, on their way to the columns of a model.
 *
 * Finished rows lie in pieces of fixed size: growing moves nothing, and at the peak, when the columns are made, memory
 * holds each coefficient twice and not more. */
#pragma once

#include "solver/model/model.h"

#include <memory>
#include <vector>

inline constexpr int32_t lp_piece_entries = 32 * 1024;

struct lp_piece {
    int32_t num;
    int32_t col[lp_piece_entries];
    double value[lp_piece_entries];
};

/* Where a column stands in the open row: valid if `row` is the number of the open row. */
struct lp_seen {
    int32_t row = -1;
    int32_t at = 0;
};

struct lp_rows {
    double tiny = 0.0; /* entries below this are left out */
    std::vector<std::unique_ptr<lp_piece>> pieces;
    std::vector<int32_t> length; /* entries of each finished row */

    std::vector<int32_t> col; /* the open row */
    std::vector<double> value;
    std::vector<lp_seen> seen; /* one a column */
};

/* Adds to the open row; a column that it holds already gets the sum. */
inline void lp_rows_add(lp_rows *rows, int32_t col, double value)
{
    lp_seen *seen = &rows->seen[static_cast<size_t>(col)];
    const int32_t row = static_cast<int32_t>(rows->length.size());
    if (seen->row == row) {
        rows->value[static_cast<size_t>(seen->at)] += value;
        return;
    }
    seen->row = row;
    seen->at = static_cast<int32_t>(rows->col.size());
    rows->col.push_back(col);
    rows->value.push_back(value);
}

/* Finishes the open row and opens the next one. Coefficients of 0 go: they are how an LP text names a column without
 * using it. */
void lp_rows_finish(lp_rows *rows);

/* Hands the rows over as columns, each in order of rows. The pieces are freed. */
void lp_rows_to_columns(lp_rows *rows, int32_t num_var, sparse_columns *a);
