/* problem_scaling.cpp - see problem_facts.h. Sizes that differ because rows and columns have different units do no harm:
 * engines divide them out. So they are divided out here too, by powers of two, and only what is left is told. Coefficients
 * that count as 0 are told elsewhere and left out. */
#include "solver/analysis/problem_facts.h"

#include <algorithm>
#include <bit>
#include <cmath>

/* Sizes that spread no further than this, as they stand, are taken as they are: every engine copes. */
static constexpr double harmless_spread = 1e6;

/* The spread that the columns bring into a row is told at the rows where it can be seen. */
static constexpr double visible_spread = 1e3;

/* Turns of scaling rows, then columns. The gain of the first is large, that of the fourth is nothing in practice. */
static constexpr int32_t num_turns = 3;

static int32_t exponent_of(double value)
{
    return static_cast<int32_t>((std::bit_cast<uint64_t>(value) >> 52U) & 0x7ffU) - 1023;
}

struct exponent_range {
    int32_t least = INT32_MAX, most = INT32_MIN;
    size_t least_at = 0, most_at = 0;
};

static void range_add(exponent_range *range, int32_t exponent, size_t at)
{
    if (exponent < range->least) {
        range->least = exponent;
        range->least_at = at;
    }
    if (exponent > range->most) {
        range->most = exponent;
        range->most_at = at;
    }
}

/* The exponents of a row as its columns are scaled; least above most where it has no entries. */
static exponent_range range_of_row(const problem_facts *facts, size_t row, const std::vector<int32_t> *col_scale)
{
    const row_matrix *rows = &facts->rows;
    exponent_range range;
    for (auto k = static_cast<size_t>(rows->start[row]); k < static_cast<size_t>(rows->start[row + 1]); k++) {
        if (std::fabs(rows->value[k]) < facts->rules.tiny_coefficient) continue;
        range_add(&range, exponent_of(rows->value[k]) + (*col_scale)[static_cast<size_t>(rows->col[k])], k);
    }
    return range;
}

static void scale_columns(const problem_facts *facts, const std::vector<int32_t> *row_scale,
                          std::vector<int32_t> *col_scale)
{
    const model *m = facts->m;
    for (size_t j = 0; j < col_scale->size(); j++) {
        exponent_range range;
        for (auto k = static_cast<size_t>(m->a.start[j]); k < static_cast<size_t>(m->a.start[j + 1]); k++) {
            if (std::fabs(m->a.value[k]) < facts->rules.tiny_coefficient) continue;
            range_add(&range, exponent_of(m->a.value[k]) + (*row_scale)[static_cast<size_t>(m->a.row[k])], k);
        }
        if (range.least <= range.most) (*col_scale)[j] = -(range.least + range.most) / 2;
    }
}

/* FIND_SCALING: a and b are the smallest and largest coefficient of the row after scaling, as they stand in the row,
 * `other` and `third` their columns. */
void problem_find_scaling(problem_facts *facts)
{
    const size_counts *sizes = &facts->sizes[SIZES_MATRIX];
    const row_matrix *rows = &facts->rows;
    if (sizes->total == 0 || sizes->most <= std::min(harmless_spread, facts->rules.harmful_spread) * sizes->least)
        return;

    std::vector<int32_t> row_scale(static_cast<size_t>(facts->m->num_con), 0);
    std::vector<int32_t> col_scale(static_cast<size_t>(facts->m->num_var), 0);
    for (int32_t turn = 0; turn < num_turns; turn++) {
        for (size_t i = 0; i < row_scale.size(); i++) {
            const exponent_range range = range_of_row(facts, i, &col_scale);
            if (range.least <= range.most) row_scale[i] = -(range.least + range.most) / 2;
        }
        scale_columns(facts, &row_scale, &col_scale);
    }

    int32_t most = 0;
    for (size_t i = 0; i < row_scale.size(); i++) {
        const exponent_range range = range_of_row(facts, i, &col_scale);
        if (range.least > range.most) continue;
        most = std::max(most, range.most - range.least);
        const double spread = std::ldexp(1.0, range.most - range.least);
        const double as_it_stands = std::fabs(rows->value[range.most_at] / rows->value[range.least_at]);
        if (spread < facts->rules.harmful_spread ||
            as_it_stands < std::min(visible_spread, facts->rules.harmful_spread))
            continue;
        facts->found[FIND_SCALING].push_back({static_cast<int32_t>(i), spread, rows->value[range.least_at],
                                              rows->value[range.most_at], rows->col[range.least_at],
                                              rows->col[range.most_at]});
    }
    facts->scaled_spread = std::ldexp(1.0, most);
}
