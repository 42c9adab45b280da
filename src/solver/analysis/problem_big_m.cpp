/* problem_big_m.cpp - see problem_facts.h. A big-M row is an inequality that a binary column switches off by a coefficient
 * far above all others: x - 1000000 y <= 0. */
#include "solver/analysis/problem_facts.h"

#include <algorithm>
#include <cmath>

/* Several columns may switch one row, as in M (1 - y) + M (1 - z); with more of them it is a row of another kind. */
static constexpr int32_t most_switches = 3;

/* What a switch that is off by the integrality tolerance lets through, in units of the largest other coefficient: a whole
 * unit makes nonsense of an answer. A hundredth is worth telling where a tenth of M would do or nobody knows how large
 * M must be. */
static constexpr double harmful_leak = 1.0;
static constexpr double doubtful_leak = 0.01;

/* A row with M is told as "could be smaller" when more than a tenth of M is superfluous. */
static constexpr double smaller_share = 0.1;

struct big_m_row {
    int32_t switches = 0;
    int32_t switch_col = -1;
    double m = 0.0;         /* coefficient of the switch, with its sign */
    double negative = 0.0;  /* the negative coefficients of switches added up */
    double positive = 0.0;  /* and the positive ones */
    double next_size = 0.0; /* the largest coefficient of the rest */
    row_reach rest;
    bool is_one = false;
};

static big_m_row take_apart(const problem_facts *facts, int32_t row, double most)
{
    const row_matrix *rows = &facts->rows;
    big_m_row found;
    const auto end = static_cast<size_t>(rows->start[static_cast<size_t>(row) + 1]);
    for (auto k = static_cast<size_t>(rows->start[static_cast<size_t>(row)]); k < end; k++) {
        const column_info *column = &facts->columns[static_cast<size_t>(rows->col[k])];
        const double value = rows->value[k];
        if (std::fabs(value) * facts->rules.big_ratio <= most) {
            found.next_size = std::max(found.next_size, std::fabs(value));
            reach_add(&found.rest, value, column);
            continue;
        }
        if (!column->is_binary || std::fabs(value) != most || ++found.switches > most_switches) return found;
        found.switch_col = rows->col[k];
        found.m = value;
        (value < 0.0 ? found.negative : found.positive) += value;
    }
    found.is_one = found.switches > 0 && found.next_size > 0.0;
    return found;
}

/* How much of M is superfluous: with the switch off the row's side is so far beyond anything that the rest can reach.
 * Infinite sizes of the rest give -infinity: nobody knows. */
static double superfluous(const big_m_row *found, double lower, double upper)
{
    if (std::isinf(lower)) return upper - found->negative - reach_most(&found->rest);
    return reach_least(&found->rest) - (lower - found->positive);
}

/* FIND_BIG_M: rank is the leak, a is M. FIND_M_SMALLER: a is M, b the size that is enough. `other` is the switch in both. */
void problem_look_for_big_m(problem_facts *facts, int32_t row, double most)
{
    const double lower = facts->m->con_lower[static_cast<size_t>(row)];
    const double upper = facts->m->con_upper[static_cast<size_t>(row)];
    if (std::isinf(lower) == std::isinf(upper)) return; /* ranges and equalities define, they do not switch */
    const big_m_row found = take_apart(facts, row, most);
    if (!found.is_one) return;

    big_m_facts *all = &facts->big_m;
    all->rows++;
    all->least = std::min(all->least, most / found.next_size);
    all->most = std::max(all->most, most / found.next_size);

    const double leak = facts->tol.integer * most / found.next_size;
    const double spare = superfluous(&found, lower, upper);
    const bool is_endless = std::isinf(spare);
    /* A row whose M may be 0 or less is redundant, which is told elsewhere. */
    const bool is_smaller = !is_endless && found.switches == 1 && spare > smaller_share * most && spare < most;
    const bool is_needless = is_endless || (is_smaller && spare > 0.9 * most);
    if (leak >= harmful_leak || (leak >= doubtful_leak && is_needless))
        facts->found[FIND_BIG_M].push_back({row, leak, most, 0.0, found.switch_col});
    if (is_smaller)
        facts->found[FIND_M_SMALLER].push_back({row, most / (most - spare), most, most - spare, found.switch_col});
}
