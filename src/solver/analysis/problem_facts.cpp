/* problem_facts.cpp - see problem_facts.h. What is counted without looking at a whole row: sizes, keys, lengths; and the
 * matrix by rows, on which the other finders stand. */
#include "solver/analysis/problem_facts.h"

#include <algorithm>
#include <bit>
#include <cmath>

/* ---- sizes -------------------------------------------------------------------------------------------------------- */

static constexpr double powers_of_ten[num_decades] = {
    1e-20, 1e-19, 1e-18, 1e-17, 1e-16, 1e-15, 1e-14, 1e-13, 1e-12, 1e-11, 1e-10, 1e-9, 1e-8, 1e-7,
    1e-6,  1e-5,  1e-4,  1e-3,  1e-2,  1e-1,  1e0,   1e1,   1e2,   1e3,   1e4,   1e5,  1e6,  1e7,
    1e8,   1e9,   1e10,  1e11,  1e12,  1e13,  1e14,  1e15,  1e16,  1e17,  1e18,  1e19, 1e20};

/* The decade by the binary exponent, which is at most one too low: ten million logarithms would take a fifth of a
 * second. */
static size_t decade_of(double size)
{
    constexpr int32_t shift = 12;
    constexpr int32_t factor = 1233; /* log10(2) * 2^shift, a little less */
    constexpr uint64_t exponent_bits = 0x7ffU;
    const auto exponent = static_cast<int32_t>((std::bit_cast<uint64_t>(size) >> 52U) & exponent_bits) - 1023;
    const int32_t guess = ((exponent * factor) >> shift) - decade_first;
    auto at = static_cast<size_t>(std::clamp(guess, 0, num_decades - 1));
    while (at > 0 && size < powers_of_ten[at]) at--;
    while (at + 1 < num_decades && size >= powers_of_ten[at + 1]) at++;
    return at;
}

void sizes_add(size_counts *sizes, double value, int32_t row, int32_t col)
{
    const double size = std::fabs(value);
    if (size == 0.0 || std::isinf(size)) return;
    sizes->num[decade_of(size)]++;
    sizes->total++;
    if (size < sizes->least) {
        sizes->least = size;
        sizes->least_row = row;
        sizes->least_col = col;
    }
    if (size > sizes->most) {
        sizes->most = size;
        sizes->most_row = row;
        sizes->most_col = col;
    }
}

static void count_sizes(problem_facts *facts)
{
    const model *m = facts->m;
    size_counts *sizes = facts->sizes;

    for (int32_t j = 0; j < m->num_var; j++) {
        const auto at = static_cast<size_t>(j);
        sizes_add(&sizes[SIZES_COST], m->c[at], -1, j);
        sizes_add(&sizes[SIZES_BOUNDS], m->var_lower[at], -1, j);
        if (m->var_upper[at] != m->var_lower[at]) sizes_add(&sizes[SIZES_BOUNDS], m->var_upper[at], -1, j);
    }
    for (int32_t i = 0; i < m->num_con; i++) {
        const auto at = static_cast<size_t>(i);
        sizes_add(&sizes[SIZES_SIDES], m->con_lower[at], i, -1);
        if (m->con_upper[at] != m->con_lower[at]) sizes_add(&sizes[SIZES_SIDES], m->con_upper[at], i, -1);
        for (auto k = static_cast<size_t>(facts->rows.start[at]); k < static_cast<size_t>(facts->rows.start[at + 1]);
             k++)
            sizes_add(&sizes[SIZES_MATRIX], facts->rows.value[k], i, facts->rows.col[k]);
    }
    for (const quad_term &t : m->qobj) sizes_add(&sizes[SIZES_QUADRATIC], t.value, -1, t.i);
    for (const quad_row &q : m->qcon)
        for (const quad_term &t : q.terms) sizes_add(&sizes[SIZES_QUADRATIC], t.value, q.row, t.i);
}

/* ---- rows and columns --------------------------------------------------------------------------------------------- */

/* The matrix by rows, without zeros: counts, places, then one pass over the columns in their order. */
static void build_rows(problem_facts *facts)
{
    const model *m = facts->m;
    row_matrix *rows = &facts->rows;
    const auto num_stored = static_cast<size_t>(model_num_nz(m));

    rows->start.assign(static_cast<size_t>(m->num_con) + 1, 0);
    facts->column_length.assign(static_cast<size_t>(m->num_var), 0);
    for (size_t k = 0; k < num_stored; k++)
        if (m->a.value[k] != 0.0) rows->start[static_cast<size_t>(m->a.row[k]) + 1]++;
    for (size_t i = 0; i < static_cast<size_t>(m->num_con); i++) rows->start[i + 1] += rows->start[i];

    facts->num_nz = rows->start.back();
    facts->num_stored_zeros = model_num_nz(m) - facts->num_nz;
    rows->col.resize(static_cast<size_t>(facts->num_nz));
    rows->value.resize(static_cast<size_t>(facts->num_nz));
    std::vector<int64_t> next(rows->start.begin(), rows->start.end() - 1);
    for (int32_t j = 0; j < m->num_var; j++) {
        const auto col = static_cast<size_t>(j);
        for (auto k = static_cast<size_t>(m->a.start[col]); k < static_cast<size_t>(m->a.start[col + 1]); k++) {
            if (m->a.value[k] == 0.0) continue;
            const auto to = static_cast<size_t>(next[static_cast<size_t>(m->a.row[k])]++);
            rows->col[to] = j;
            rows->value[to] = m->a.value[k];
            facts->column_length[col]++;
        }
    }
}

static void build_columns(problem_facts *facts)
{
    const model *m = facts->m;

    facts->columns.resize(static_cast<size_t>(m->num_var));
    for (size_t j = 0; j < facts->columns.size(); j++) {
        column_info *info = &facts->columns[j];
        info->lower = std::min(m->var_lower[j], m->var_upper[j]);
        info->upper = std::max(m->var_lower[j], m->var_upper[j]);
        info->is_int = m->var_type[j] == ZLR_VAR_INT;
        info->is_binary = info->is_int && info->lower == 0.0 && info->upper == 1.0;
        info->is_quadratic = false;
        info->is_conic = false;

        const int32_t kind = info->is_binary ? COLUMN_BINARY : (info->is_int ? COLUMN_INTEGER : COLUMN_CONTINUOUS);
        facts->column_keys[kind][bounds_to_key(m->var_lower[j], m->var_upper[j])]++;
    }
    facts->is_quadratic_row.assign(static_cast<size_t>(m->num_con), 0);
    const auto mark = [facts](const std::vector<quad_term> &terms) {
        for (const quad_term &t : terms)
            facts->columns[static_cast<size_t>(t.i)].is_quadratic =
                facts->columns[static_cast<size_t>(t.j)].is_quadratic = true;
    };
    mark(m->qobj);
    for (const quad_row &q : m->qcon) {
        facts->is_quadratic_row[static_cast<size_t>(q.row)] = 1;
        mark(q.terms);
    }
    for (const model_cone &cone : m->cones)
        for (const int32_t j : cone.member) facts->columns[static_cast<size_t>(j)].is_conic = true;
}

/* Keeps the longest lines, longest first; of two that are equally long the earlier. */
static void note_length(std::vector<line_length> *longest, int32_t index, int64_t length)
{
    if (length == 0 || (longest->size() == num_longest && longest->back().length >= length)) return;
    auto place = longest->begin();
    while (place != longest->end() && place->length >= length) ++place;
    longest->insert(place, {index, length});
    if (longest->size() > num_longest) longest->pop_back();
}

void problem_collect(const model *m, const check_tolerances *tol, problem_facts *facts)
{
    facts->m = m;
    facts->tol = *tol;
    build_rows(facts);
    build_columns(facts);
    count_sizes(facts);
    for (int32_t i = 0; i < m->num_con; i++) {
        const auto at = static_cast<size_t>(i);
        facts->row_keys[bounds_to_key(m->con_lower[at], m->con_upper[at])]++;
        note_length(&facts->longest_rows, i, facts->rows.start[at + 1] - facts->rows.start[at]);
    }
    for (int32_t j = 0; j < m->num_var; j++)
        note_length(&facts->longest_columns, j, facts->column_length[static_cast<size_t>(j)]);
}
