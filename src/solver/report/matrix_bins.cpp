/* matrix_bins.cpp - see matrix_bins.h. */
#include "solver/report/matrix_bins.h"

#include <algorithm>

matrix_bins matrix_bins_of(const model *m, int32_t most_rows, int32_t most_columns)
{
    matrix_bins bins;
    bins.rows = std::min(m->num_con, most_rows);
    bins.columns = std::min(m->num_var, most_columns);
    bins.count.assign(static_cast<size_t>(bins.rows) * static_cast<size_t>(bins.columns), 0);
    if (bins.count.empty()) return bins;
    for (int32_t j = 0; j < m->num_var; j++) {
        const int64_t column = int64_t{j} * bins.columns / m->num_var;
        const auto end = static_cast<size_t>(m->a.start[static_cast<size_t>(j) + 1]);
        for (auto k = static_cast<size_t>(m->a.start[static_cast<size_t>(j)]); k < end; k++) {
            const int64_t row = int64_t{m->a.row[k]} * bins.rows / m->num_con;
            bins.count[static_cast<size_t>(row * bins.columns + column)]++;
        }
    }
    return bins;
}
