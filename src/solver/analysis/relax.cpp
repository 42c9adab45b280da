/* relax.cpp - see relax.h. */
#include "solver/analysis/relax.h"

#include "solver/engines/check.h"
#include "solver/engines/work.h"

#include <algorithm>
#include <cmath>

static constexpr double gap_tol = 1e-7; /* of a total to its bound, relative where the total is above 1 */

/* What a multiplier that no side answers for may be, by the size of the terms that it came from. */
static constexpr double residual_tol = 1e-9;

/* ---- whether the facility serves */

/* The one weight of a row. Returns whether there is one. */
static bool row_weight(double lower, double upper, double lower_weight, double upper_weight, double *weight)
{
    const bool has_lower = std::isfinite(lower), has_upper = std::isfinite(upper);
    *weight = has_lower ? lower_weight : (has_upper ? upper_weight : 1.0);
    return !has_lower || !has_upper || lower_weight == upper_weight || (lower_weight < 0.0 && upper_weight < 0.0);
}

static bool serves(const model *m, const side_weights *weights, engine_weights *w)
{
    if (model_num_int(m) > 0 || !m->qcon.empty() || !m->cones.empty()) return false;
    w->col_lower = weights->col_lower;
    w->col_upper = weights->col_upper;
    w->row.assign(static_cast<size_t>(m->num_con), 1.0);
    for (size_t i = 0; i < w->row.size(); i++)
        if (!row_weight(m->con_lower[i], m->con_upper[i], weights->row_lower[i], weights->row_upper[i], &w->row[i]))
            return false;
    return true;
}

/* ---- the check */

/* Sums over all sides: what a point violates, and what the multipliers show of every point. */
struct relax_check {
    double total = 0.0, bound = 0.0;
    double tolerance = 0.0; /* of the sides that may not give way */
    bool is_valid = true;
};

static void add_violation(relax_check *c, double violation, double side, double weight)
{
    if (!std::isfinite(side) || !(violation > 0.0)) return;
    if (weight >= 0.0)
        c->total += weight * violation;
    else if (violation > c->tolerance * std::max(1.0, std::fabs(side)))
        c->is_valid = false;
}

/* A multiplier stands on one of the sides, up to the weight of that side where it may give way. */
static void add_bound(relax_check *c, double multiplier, double terms, double side, double weight)
{
    double size = std::fabs(multiplier);
    const double most = !std::isfinite(side) ? 0.0 : (weight >= 0.0 ? weight : size);

    if (size > most + residual_tol * std::max(1.0, terms)) c->is_valid = false;
    size = std::min(size, most);
    if (size > 0.0) c->bound += multiplier > 0.0 ? size * side : -size * side;
}

static void add_sides(relax_check *c, double value, double multiplier, double terms, double lower, double upper,
                      double lower_weight, double upper_weight)
{
    add_violation(c, lower - value, lower, lower_weight);
    add_violation(c, value - upper, upper, upper_weight);
    add_bound(c, multiplier, terms, multiplier > 0.0 ? lower : upper, multiplier > 0.0 ? lower_weight : upper_weight);
}

/* Weak duality of the elastic form: no point has a total below the bound. */
static bool is_least(const model *m, const side_weights *w, const engine_answer *answer, double tolerance)
{
    std::vector<double> activity(static_cast<size_t>(m->num_con));
    relax_check c;

    c.tolerance = tolerance;
    if (answer->x.size() != static_cast<size_t>(m->num_var) || answer->y.size() != activity.size()) return false;
    model_activity(m, answer->x.data(), activity.data());
    for (size_t i = 0; i < activity.size(); i++)
        add_sides(&c, activity[i], answer->y[i], 0.0, m->con_lower[i], m->con_upper[i], w->row_lower[i],
                  w->row_upper[i]);
    for (size_t j = 0; j < answer->x.size(); j++) {
        double reduced = 0.0, terms = 0.0;
        for (auto k = static_cast<size_t>(m->a.start[j]); k < static_cast<size_t>(m->a.start[j + 1]); k++) {
            const double term = m->a.value[k] * answer->y[static_cast<size_t>(m->a.row[k])];
            reduced -= term;
            terms += std::fabs(term);
        }
        add_sides(&c, answer->x[j], reduced, terms, m->var_lower[j], m->var_upper[j], w->col_lower[j], w->col_upper[j]);
    }
    return c.is_valid && std::isfinite(c.total) && c.total - c.bound <= gap_tol * std::max(1.0, c.total);
}

relax_end relax_by_engine(ZLR_task *task, const side_weights *weights, double time_limit_s, std::vector<double> *x)
{
    const std::shared_ptr<const model> problem = task->problem;
    const auto got = std::make_shared<work_find<engine_answer>>();
    engine_weights w;
    std::string message;

    if (!serves(problem.get(), weights, &w)) return RELAX_NONE;
    const session_use use = [got, w, time_limit_s](const engine_session_calls *calls, engine_session *session) {
        engine_answer mine;
        if (calls->relax == nullptr || !calls->relax(session, time_limit_s, &w, &mine)) return;
        const std::lock_guard<std::mutex> lock(got->mutex);
        got->found = std::move(mine);
    };
    const work_end end = engines_session(task, problem, time_limit_s, use, &message);
    if (end == WORK_STOPPED) return RELAX_STOPPED;
    const std::lock_guard<std::mutex> lock(got->mutex);
    if (end != WORK_DONE || !is_least(problem.get(), weights, &got->found, check_tolerances_of(&task->params).primal))
        return RELAX_NONE;
    *x = std::move(got->found.x);
    return RELAX_FOUND;
}
