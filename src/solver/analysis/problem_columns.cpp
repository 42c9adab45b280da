/* problem_columns.cpp - see problem_facts.h. What the bounds, the cost and the rows of a column say of it. */
#include "solver/analysis/problem_facts.h"

#include <algorithm>
#include <cmath>

/* Whether no row stops the column from growing (direction 1) or falling (-1) without end. */
static bool is_let_go(const problem_facts *facts, size_t col, double direction)
{
    const model *m = facts->m;
    for (auto k = static_cast<size_t>(m->a.start[col]); k < static_cast<size_t>(m->a.start[col + 1]); k++) {
        const auto row = static_cast<size_t>(m->a.row[k]);
        const double push = m->a.value[k] * direction;
        if (push > 0.0 && m->con_upper[row] != model_inf) return false;
        if (push < 0.0 && m->con_lower[row] != -model_inf) return false;
    }
    return true;
}

/* FIND_UNBOUNDED: rank is the size of the cost, a the cost, b the direction. */
static void note_unbounded(problem_facts *facts, int32_t j)
{
    const auto col = static_cast<size_t>(j);
    const double cost = facts->m->c[col];
    if (cost == 0.0 || facts->columns[col].is_quadratic || facts->columns[col].is_conic) return;
    const double direction = (facts->m->sense == ZLR_SENSE_MAX) == (cost > 0.0) ? 1.0 : -1.0;
    const double end = direction > 0.0 ? facts->columns[col].upper : facts->columns[col].lower;
    if (std::isinf(end) && is_let_go(facts, col, direction))
        facts->found[FIND_UNBOUNDED].push_back({j, std::fabs(cost), cost, direction});
}

/* Bounds by themselves: a and b are the bounds. Returns whether no value is possible. */
static bool note_bounds(problem_facts *facts, int32_t j)
{
    const auto col = static_cast<size_t>(j);
    const double lower = facts->m->var_lower[col];
    const double upper = facts->m->var_upper[col];
    const double gap = upper - lower;

    if (gap < 0.0 || lower == model_inf || upper == -model_inf) {
        facts->found[FIND_BOUNDS_CROSSED].push_back({j, std::isnan(gap) ? model_inf : -gap, lower, upper});
        return true;
    }
    if (facts->columns[col].is_int) {
        const double up = std::ceil(lower - facts->tol.integer);
        const double down = std::floor(upper + facts->tol.integer);
        if (up > down) {
            facts->found[FIND_NO_INTEGER].push_back({j, up - down, lower, upper});
            return true;
        }
        const double off = std::max(std::isinf(lower) ? 0.0 : std::fabs(lower - std::round(lower)),
                                    std::isinf(upper) ? 0.0 : std::fabs(upper - std::round(upper)));
        if (off > facts->tol.integer) facts->found[FIND_BOUND_FRACTION].push_back({j, off, lower, upper});
    }
    if (gap == 0.0)
        facts->found[FIND_COLUMN_FIXED].push_back({j, std::fabs(lower), lower, upper});
    else if (gap < rounding_room(upper))
        facts->found[FIND_BOUNDS_CLOSE].push_back({j, gap, lower, upper});
    return false;
}

/* Bounds that are huge or tiny; a is the bound. */
static void note_bound_sizes(problem_facts *facts, int32_t j)
{
    const auto col = static_cast<size_t>(j);
    for (const double bound : {facts->m->var_lower[col], facts->m->var_upper[col]}) {
        const double size = std::fabs(bound);
        if (std::isinf(size) || size == 0.0) continue;
        if (size >= facts->rules.large_value)
            facts->found[FIND_BOUND_LARGE].push_back({j, size, bound});
        else if (size < facts->tol.primal)
            facts->found[FIND_BOUND_TINY].push_back({j, -size, bound});
        else
            continue;
        return; /* one finding a column */
    }
}

/* FIND_COST_SPREAD: the objective's largest and smallest cost, where engines that scale by the first lose the second:
 * their tolerance is 1e-7 of it at best. a is the largest, b the smallest, `other` the column of the smallest. */
static void note_cost_spread(problem_facts *facts)
{
    constexpr double lost_share = 1e9;
    const size_counts *cost = &facts->sizes[SIZES_COST];
    if (cost->total == 0 || cost->most < lost_share * cost->least) return;
    facts->found[FIND_COST_SPREAD].push_back(
        {cost->most_col, cost->most / cost->least, cost->most, cost->least, cost->least_col});
}

void problem_find_columns(problem_facts *facts)
{
    const model *m = facts->m;
    for (int32_t j = 0; j < m->num_var; j++) {
        const auto col = static_cast<size_t>(j);
        const bool is_impossible = note_bounds(facts, j);
        note_bound_sizes(facts, j);
        if (is_impossible) continue;
        const size_t before = facts->found[FIND_UNBOUNDED].size();
        note_unbounded(facts, j);
        const bool is_unbounded = facts->found[FIND_UNBOUNDED].size() > before;
        const bool is_linear = !facts->columns[col].is_quadratic && !facts->columns[col].is_conic;
        if (facts->column_length[col] == 0 && is_linear && !is_unbounded)
            facts->found[FIND_COLUMN_EMPTY].push_back({j, std::fabs(m->c[col]), m->c[col]});
    }
    note_cost_spread(facts);
}
