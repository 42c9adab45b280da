/* matrix_bins.h - where the nonzeros of a matrix lie, counted in a grid that fits a picture. */
#pragma once

#include "solver/model/model.h"

#include <cstdint>
#include <vector>

/* Rows and columns are shared out evenly: cell (r, c) holds rows matrix_bin_start(num_con, rows, r) up to the start of
 * the next one, and columns alike. A matrix that is small enough has a cell for each entry. */
struct matrix_bins {
    int32_t rows = 0, columns = 0; /* of the grid; 0 where the matrix has none */
    std::vector<int64_t> count;    /* rows * columns, row by row */
};

matrix_bins matrix_bins_of(const model *m, int32_t most_rows, int32_t most_columns);

/* First of `num` rows or columns in cell `k` of `cells`. */
inline int64_t matrix_bin_start(int32_t num, int32_t cells, int32_t k)
{
    return (int64_t{num} * k + cells - 1) / cells;
}
