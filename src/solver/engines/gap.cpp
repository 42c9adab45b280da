/* gap.cpp - see gap.h. */
#include "solver/engines/gap.h"

#include <algorithm>
#include <cmath>
#include <numeric>

static double gap_of(const solution *sol) { return sol->primal_obj - sol->dual_obj; }

static double largest_other(const solution *sol)
{
    return std::max({sol->check.row, sol->check.bound, sol->check.dual});
}

static bool stands(const solution *sol, size_t row) { return sol->slc[row] != 0.0 || sol->suc[row] != 0.0; }

/* What the dual objective gains by 1 more of each multiplier that stands on a side: that side, less what the columns at
 * their bounds lose with their reduced costs. */
static std::vector<double> gains(const model *m, const solution *sol)
{
    std::vector<double> gain(sol->y.size(), 0.0);
    for (size_t i = 0; i < gain.size(); i++)
        if (stands(sol, i)) gain[i] = sol->slc[i] != 0.0 ? m->con_lower[i] : m->con_upper[i];
    for (size_t j = 0; j < sol->slx.size(); j++) {
        if (sol->slx[j] == 0.0 && sol->sux[j] == 0.0) continue;
        const double bound = sol->slx[j] != 0.0 ? m->var_lower[j] : m->var_upper[j];
        for (auto k = static_cast<size_t>(m->a.start[j]); k < static_cast<size_t>(m->a.start[j + 1]); k++) {
            const auto i = static_cast<size_t>(m->a.row[k]);
            if (stands(sol, i)) gain[i] -= m->a.value[k] * bound;
        }
    }
    return gain;
}

/* Small multipliers take less of a change, so that none changes its sign. */
static double share(double y) { return std::min(1.0, y * y); }

/* Shared out by the gains, which makes the change least. False: no multiplier counts. */
static bool shift_all(const std::vector<double> &gain, double gap, std::vector<double> *y)
{
    double sum = 0.0;
    for (size_t i = 0; i < gain.size(); i++) sum += share((*y)[i]) * gain[i] * gain[i];
    if (!(sum > 0.0) || !std::isfinite(sum)) return false;
    for (size_t i = 0; i < gain.size(); i++) (*y)[i] += gap * share((*y)[i]) * gain[i] / sum;
    return true;
}

/* Completes and checks `next`; takes it where that is better. */
static bool take(const model *m, const check_tolerances *tol, double allowed, solution *next, solution *sol,
                 check_result *found)
{
    check_complete(m, tol, next);
    const check_result at = check_solution(m, tol, false, next);
    if (std::max({at.primal, at.dual, at.gap}) > std::max({1.0, found->primal, found->dual, found->gap})) return false;
    if (!(std::fabs(gap_of(next)) < std::fabs(gap_of(sol)))) return false;
    if (largest_other(next) > std::max(allowed, largest_other(sol))) return false;
    check_set_status(tol, &at, next);
    *sol = std::move(*next);
    *found = at;
    return true;
}

/* The last digits: many multipliers that change by less than their own last digit add noise, one alone does not. */
static void close_last_digits(const model *m, const check_tolerances *tol, double allowed, solution *sol,
                              check_result *found)
{
    constexpr size_t max_tries = 8;
    const std::vector<double> gain = gains(m, sol);
    std::vector<size_t> rows(gain.size());
    std::iota(rows.begin(), rows.end(), size_t{0});
    const size_t num = std::min(max_tries, rows.size());
    std::partial_sort(rows.begin(), rows.begin() + static_cast<std::ptrdiff_t>(num), rows.end(),
                      [&](size_t a, size_t b) {
                          return share(sol->y[a]) * std::fabs(gain[a]) > share(sol->y[b]) * std::fabs(gain[b]);
                      });
    for (size_t k = 0; k < num; k++) {
        const double gap = gap_of(sol), change = gap / gain[rows[k]];
        if (gap == 0.0) return;
        if (!(std::fabs(change) < 0.1 * std::fabs(sol->y[rows[k]]))) continue;
        solution next = *sol;
        next.y[rows[k]] += change;
        (void)take(m, tol, allowed, &next, sol, found);
    }
}

void gap_close(const model *m, const check_tolerances *tol, double allowed, solution *sol, check_result *found)
{
    constexpr int32_t max_passes = 4;
    constexpr double last_digits = 1e-14;

    for (int32_t pass = 0; pass < max_passes; pass++) {
        const double gap = gap_of(sol);
        solution next = *sol;
        if (gap == 0.0 || !std::isfinite(gap) || !shift_all(gains(m, sol), gap, &next.y)) return;
        if (!take(m, tol, allowed, &next, sol, found)) break;
    }
    if (std::fabs(gap_of(sol)) <= last_digits * std::fabs(sol->primal_obj))
        close_last_digits(m, tol, allowed, sol, found);
}
