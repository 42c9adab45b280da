/* answer.cpp - see answer.h. */
#include "solver/engines/answer.h"
#include "solver/report/streams.h"

#include <algorithm>
#include <cmath>

static bool is_usable(const std::vector<double> &v, int32_t size)
{
    return v.size() == static_cast<size_t>(size) &&
           std::all_of(v.begin(), v.end(), [](double value) { return std::isfinite(value); });
}

/* The key of a value by where it stands: for solutions without a basis. */
static int32_t key_of(double value, double lower, double upper, double tol)
{
    const auto near = [&](double side) {
        return std::isfinite(side) && std::fabs(value - side) <= tol * std::max(1.0, std::fabs(side));
    };
    if (lower == upper) return ZLR_SK_FIXED;
    if (near(lower)) return ZLR_SK_LOWER;
    return near(upper) ? ZLR_SK_UPPER : ZLR_SK_SUPBAS;
}

void answer_set_keys(const model *m, const check_tolerances *tol, solution *sol)
{
    const double near = tol->primal;
    for (size_t i = 0; i < sol->skc.size(); i++)
        sol->skc[i] = key_of(sol->xc[i], m->con_lower[i], m->con_upper[i], near);
    for (size_t j = 0; j < sol->skx.size(); j++)
        sol->skx[j] = key_of(sol->xx[j], m->var_lower[j], m->var_upper[j], near);
}

check_result answer_to_solution(const model *m, const check_tolerances *tol, const engine_answer *answer, int32_t kind,
                                solution *sol)
{
    check_result found;

    solution_reset(sol, m->num_con, m->num_var, model_num_cones(m));
    sol->has_primal = is_usable(answer->x, m->num_var);
    sol->has_dual = is_usable(answer->y, m->num_con);
    if (!sol->has_primal && !sol->has_dual) return found;
    if (sol->has_primal) sol->xx = answer->x;
    if (sol->has_dual) sol->y = answer->y;
    check_complete(m, tol, sol, answer->reduced);
    sol->has_keys =
        kind == ZLR_SOL_BAS && answer->col_key.size() == sol->skx.size() && answer->row_key.size() == sol->skc.size();
    if (sol->has_keys) {
        sol->skc = answer->row_key;
        sol->skx = answer->col_key;
    } else if (sol->has_primal) {
        answer_set_keys(m, tol, sol);
    }
    found = check_solution(m, tol, false, sol);
    sol->defined = true;
    check_set_status(tol, &found, sol);
    return found;
}

static check_result check_point(const model *m, const check_tolerances *tol, const std::vector<double> &x,
                                solution *sol)
{
    solution_reset(sol, m->num_con, m->num_var, model_num_cones(m));
    sol->xx = x;
    sol->has_primal = true;
    check_complete(m, tol, sol);
    const check_result found = check_solution(m, tol, true, sol);
    answer_set_keys(m, tol, sol);
    sol->defined = true;
    check_set_integer_status(tol, m->sense, &found, false, 0.0, sol);
    return found;
}

/* The share of a tolerance up to which a point counts as clean. Simplex points stay below it; what branch and cut leaves
 * may use the tolerance up. */
static constexpr double clean_share = 0.1;

check_result answer_to_incumbent(const model *m, const check_tolerances *tol, const std::vector<double> &x,
                                 solution *sol, bool *clean)
{
    std::vector<double> exact = x;

    *clean = false;
    if (!is_usable(x, m->num_var)) {
        solution_reset(sol, m->num_con, m->num_var, model_num_cones(m));
        return {};
    }
    for (size_t j = 0; j < exact.size(); j++)
        if (m->var_type[j] == ZLR_VAR_INT && std::fabs(x[j] - std::round(x[j])) <= tol->integer)
            exact[j] = std::round(x[j]);
    const check_result at_exact = check_point(m, tol, exact, sol);
    *clean = at_exact.primal <= clean_share;
    if (at_exact.primal <= 1.0) return at_exact;
    return check_point(m, tol, x, sol);
}

engine_start answer_to_start(const solution *basic, const solution *interior, const solution *integer)
{
    engine_start start;

    if (basic->defined && basic->has_keys && !solution_is_certificate(basic)) {
        start.row_key = basic->skc;
        start.col_key = basic->skx;
    }
    for (const solution *sol : {integer, basic, interior})
        if (start.x.empty() && sol->defined && sol->has_primal && !solution_is_certificate(sol)) start.x = sol->xx;
    for (const solution *sol : {basic, interior})
        if (start.y.empty() && sol->defined && sol->has_dual && !solution_is_certificate(sol)) start.y = sol->y;
    return start;
}

static double zero_if_none(double violation) { return std::isnan(violation) ? 0.0 : violation; }

std::string answer_complaint(const model *m, const check_result *found, const solution *sol)
{
    if (!sol->has_primal) return "it has no point";
    if (found->primal > 1.0) {
        const solution_check *c = &sol->check;
        if (c->worst_row >= 0 && c->row >= std::max({c->bound, zero_if_none(c->integrality), zero_if_none(c->cone)}))
            return text_format("row %s is off by %.1e", names_shown(&m->con_names, c->worst_row, 'c').c_str(), c->row);
        if (c->worst_bound >= 0 && !(c->integrality > c->bound) && !(c->cone > c->bound))
            return text_format("column %s is off its bounds by %.1e",
                               names_shown(&m->var_names, c->worst_bound, 'x').c_str(), c->bound);
        if (c->worst_cone >= 0 && c->cone > 0.0 && !(c->integrality > c->cone))
            return text_format("cone %d is off by %.1e", c->worst_cone + 1, c->cone);
        if (c->worst_int >= 0)
            return text_format("column %s is off an integer by %.1e",
                               names_shown(&m->var_names, c->worst_int, 'x').c_str(), c->integrality);
        return "it is not feasible";
    }
    if (!sol->has_dual) return "it has no duals";
    if (found->dual > 1.0) return text_format("its duals are off by %.1e", sol->check.dual);
    return text_format("primal and dual objective differ by %.1e", std::fabs(sol->primal_obj - sol->dual_obj));
}
