/* check.cpp - see check.h. */
#include "solver/engines/check.h"

#include "solver/engines/gradient.h"

#include <algorithm>
#include <cmath>

/* Rounding in a sum of terms: far above 2^-53, for engines add in another order and on scaled data; far below any
 * tolerance. */
static constexpr double rounding = 1e-9;

static double size_of(double bound) { return std::isfinite(bound) ? std::max(1.0, std::fabs(bound)) : 1.0; }

static double sense_sign(const model *m) { return m->sense == ZLR_SENSE_MAX ? -1.0 : 1.0; }

check_tolerances check_tolerances_of(const param_set *params)
{
    check_tolerances tol;
    const bool has_one = !param_is_default(params, param_find(ZLR_PAR_DOUBLE, DPAR_ENGINE_KKT_TOL));
    const double one = has_one ? param_dou(params, DPAR_ENGINE_KKT_TOL) : 0.0; /* in place of all of an engine's own */
    const double base = std::max(param_dou(params, DPAR_CHECK_TOL), one);
    /* A user who lets the engine be less exact must not be told that its answer fails. */
    tol.primal = std::max(base, param_dou(params, DPAR_PRIMAL_FEASIBILITY_TOL));
    tol.dual = std::max(base, param_dou(params, DPAR_DUAL_FEASIBILITY_TOL));
    tol.gap = std::max({base, param_dou(params, DPAR_IPM_OPTIMALITY_TOL), param_dou(params, DPAR_PDLP_OPTIMALITY_TOL)});
    tol.integer = std::max(base, param_dou(params, DPAR_MIP_FEASIBILITY_TOL));
    tol.mip_rel_gap = param_dou(params, DPAR_MIP_REL_GAP);
    tol.mip_abs_gap = param_dou(params, DPAR_MIP_ABS_GAP);
    tol.near = param_dou(params, DPAR_CHECK_NEAR_FACTOR);
    return tol;
}

double check_allowed(double tolerance, double side, double terms)
{
    return tolerance * size_of(side) + rounding * terms;
}

/* A function without a value makes its rows NaN, which no check passes. */
static void add_functions(const model_functions *f, const std::vector<double> &x, row_sums *sums)
{
    int32_t code = ZLR_RES_OK;
    const function_values *at = functions_at(f, x.data(), false, &code);
    for (size_t k = 0; k < f->row.size(); k++) {
        const auto i = static_cast<size_t>(f->row[k]);
        const double value = at != nullptr ? at->row[k] : std::numeric_limits<double>::quiet_NaN();
        sums->value[i] += value;
        if (at != nullptr) sums->terms[i] += std::fabs(value);
    }
}

row_sums check_row_sums(const model *m, const std::vector<double> &x)
{
    row_sums sums;
    const auto rows = static_cast<size_t>(m->num_con);
    sums.value.assign(rows, 0.0);
    sums.terms.assign(rows, 0.0);
    for (size_t j = 0; j < x.size(); j++) {
        if (x[j] == 0.0) continue;
        for (auto k = static_cast<size_t>(m->a.start[j]); k < static_cast<size_t>(m->a.start[j + 1]); k++) {
            const auto i = static_cast<size_t>(m->a.row[k]);
            const double term = m->a.value[k] * x[j];
            sums.value[i] += term;
            sums.terms[i] += std::fabs(term);
        }
    }
    for (const quad_row &q : m->qcon) {
        for (const quad_term &t : q.terms) {
            const double term =
                (t.i == t.j ? 0.5 : 1.0) * t.value * x[static_cast<size_t>(t.i)] * x[static_cast<size_t>(t.j)];
            sums.value[static_cast<size_t>(q.row)] += term;
            sums.terms[static_cast<size_t>(q.row)] += std::fabs(term);
        }
    }
    if (m->functions != nullptr) add_functions(m->functions.get(), x, &sums);
    return sums;
}

bool check_is_at(double value, double side, double tolerance)
{
    return std::isfinite(side) && std::fabs(value - side) <= tolerance * size_of(side);
}

/* Puts a multiplier on the side that its sign names. `distance`: how far the point is from that side; negative when
 * there is no point to tell. */
static void put_on_side(double multiplier, double sign, double lower, double upper, double allowed, bool has_point,
                        double at, double primal_tol, double *on_lower, double *on_upper)
{
    const bool wants_lower = multiplier * sign > 0.0;
    const double side = wants_lower ? lower : upper;

    *on_lower = *on_upper = 0.0;
    if (multiplier == 0.0 || !std::isfinite(side)) return;
    const bool met = !has_point || check_is_at(at, side, primal_tol);
    if (!met && std::fabs(multiplier) <= allowed) return;
    if (wants_lower)
        *on_lower = multiplier;
    else
        *on_upper = -multiplier;
}

static double cone_dual(const solution *sol, size_t j) { return sol->snx.empty() ? 0.0 : sol->snx[j]; }

void check_complete(const model *m, const check_tolerances *tol, solution *sol, const std::vector<double> &bound_dual)
{
    const double sign = sense_sign(m);

    for (double &v : sol->xx) v += 0.0; /* makes 0 of -0, which only puzzles who reads it */
    for (double &v : sol->y) v += 0.0;
    if (sol->has_primal) sol->xc = check_row_sums(m, sol->xx).value;
    if (!sol->has_dual) return;
    for (size_t i = 0; i < sol->y.size(); i++)
        put_on_side(sol->y[i], sign, m->con_lower[i], m->con_upper[i], tol->dual, sol->has_primal, sol->xc[i],
                    tol->primal, &sol->slc[i], &sol->suc[i]);
    const std::vector<reduced_cost> d = gradient_reduced_costs(m, tol, sol);
    gradient_split_cones(m, d, bound_dual, sol);
    for (size_t j = 0; j < sol->slx.size(); j++)
        put_on_side(d[j].value - cone_dual(sol, j), sign, m->var_lower[j], m->var_upper[j], d[j].allowed,
                    sol->has_primal, sol->xx[j], tol->primal, &sol->slx[j], &sol->sux[j]);
}

/* ---- the residuals, one by one. `see` takes a check_residual; sizes of 0 may be among them. */

static int32_t number(size_t place) { return static_cast<int32_t>(place); }

/* A value that does not exist is beyond every bound. */
static double violation(double value, double lower, double upper)
{
    if (std::isnan(value)) return model_inf;
    return std::max({0.0, lower - value, value - upper});
}

static double nearer_side(double value, double lower, double upper)
{
    return lower - value > value - upper ? lower : upper;
}

template <class see_type>
static void each_row(const model *m, const check_tolerances *tol, const solution *sol, see_type see)
{
    const row_sums sums = check_row_sums(m, sol->xx);

    for (size_t i = 0; i < sums.value.size(); i++) {
        const double v = violation(sums.value[i], m->con_lower[i], m->con_upper[i]);
        if (v == 0.0) continue;
        const double side = nearer_side(sums.value[i], m->con_lower[i], m->con_upper[i]);
        see(check_residual{CHECK_ROW, true, number(i), v, check_allowed(tol->primal, side, sums.terms[i])});
    }
}

/* Bounds, and every integer column where `integers`. */
template <class see_type>
static void each_column(const model *m, const check_tolerances *tol, bool integers, const solution *sol, see_type see)
{
    for (size_t j = 0; j < sol->xx.size(); j++) {
        const double x = sol->xx[j];
        const double v = violation(x, m->var_lower[j], m->var_upper[j]);
        if (v > 0.0) {
            const double side = nearer_side(x, m->var_lower[j], m->var_upper[j]);
            see(check_residual{CHECK_BOUND, false, number(j), v, check_allowed(tol->primal, side, 0.0)});
        }
        if (!integers || m->var_type[j] != ZLR_VAR_INT) continue;
        see(check_residual{CHECK_INTEGRALITY, false, number(j), std::fabs(x - std::round(x)), tol->integer});
    }
}

template <class see_type>
static void each_cone(const model *m, const check_tolerances *tol, const solution *sol, see_type see)
{
    for (size_t k = 0; k < m->cones.size(); k++) {
        const cone_residuals r = gradient_check_cone(m, tol, sol, k);
        see(check_residual{CHECK_CONE, false, number(k), r.primal, r.primal_allowed});
    }
}

/* A multiplier of a row, or the reduced cost of a column, against the duals of the two sides. What check_complete has
 * left out because the side that it wants does not exist is a sign that is wrong. */
template <class see_type>
static void each_side(double multiplier, double sign, double lower, double upper, double on_lower, double on_upper,
                      check_residual r, see_type see)
{
    const bool wants_absent =
        (multiplier * sign > 0.0 && lower == -model_inf) || (multiplier * sign < 0.0 && upper == model_inf);
    const bool left_out = wants_absent && on_lower == 0.0 && on_upper == 0.0;

    r.what = left_out ? CHECK_SIGN : CHECK_STATIONARITY;
    r.size = std::fabs(multiplier - on_lower + on_upper);
    see(r);
    r.what = CHECK_SIGN;
    r.size = std::max({0.0, -sign * on_lower, -sign * on_upper, lower == -model_inf ? std::fabs(on_lower) : 0.0,
                       upper == model_inf ? std::fabs(on_upper) : 0.0});
    see(r);
}

template <class see_type>
static void each_dual(const model *m, const check_tolerances *tol, const solution *sol, see_type see)
{
    const double sign = sense_sign(m);

    for (size_t i = 0; i < sol->y.size(); i++)
        each_side(sol->y[i], sign, m->con_lower[i], m->con_upper[i], sol->slc[i], sol->suc[i],
                  {CHECK_SIGN, true, number(i), 0.0, tol->dual}, see);
    const std::vector<reduced_cost> d = gradient_reduced_costs(m, tol, sol);
    for (size_t j = 0; j < sol->slx.size(); j++)
        each_side(d[j].value - cone_dual(sol, j), sign, m->var_lower[j], m->var_upper[j], sol->slx[j], sol->sux[j],
                  {CHECK_SIGN, false, number(j), 0.0, d[j].allowed}, see);
    for (size_t k = 0; k < m->cones.size(); k++) {
        const cone_residuals r = gradient_check_cone(m, tol, sol, k);
        see(check_residual{CHECK_SIGN, false, m->cones[k].member[0], r.dual, r.dual_allowed});
    }
}

template <class see_type>
static void each_product(const std::vector<double> &on_lower, const std::vector<double> &on_upper,
                         const std::vector<double> &lower, const std::vector<double> &upper,
                         const std::vector<double> &at, check_residual r, see_type see)
{
    for (size_t i = 0; i < at.size(); i++) {
        r.index = number(i);
        r.size = 0.0;
        if (on_lower[i] != 0.0) r.size = std::fabs(on_lower[i] * (at[i] - lower[i]));
        if (on_upper[i] != 0.0) r.size = std::max(r.size, std::fabs(on_upper[i] * (upper[i] - at[i])));
        see(r);
    }
}

/* The constant belongs to both objectives and must not make the gap look small. */
double check_objective_size(const model *m, const solution *sol)
{
    const double dual = std::fabs(sol->dual_obj - m->cfix); /* infinite where a dual stands on no side */
    return std::max({1.0, std::fabs(sol->primal_obj - m->cfix), std::isfinite(dual) ? dual : 0.0});
}

template <class see_type>
static void each_complementarity(const model *m, const check_tolerances *tol, const solution *sol, double allowed,
                                 see_type see)
{
    each_product(sol->slc, sol->suc, m->con_lower, m->con_upper, sol->xc,
                 {CHECK_COMPLEMENTARITY, true, 0, 0.0, allowed}, see);
    each_product(sol->slx, sol->sux, m->var_lower, m->var_upper, sol->xx,
                 {CHECK_COMPLEMENTARITY, false, 0, 0.0, allowed}, see);
    for (size_t k = 0; k < m->cones.size(); k++)
        see(check_residual{CHECK_COMPLEMENTARITY, false, m->cones[k].member[0],
                           gradient_check_cone(m, tol, sol, k).product, allowed});
}

/* ---- what they come to */

/* The larger of what was found so far and a new residual, with the place where it is. */
static void note(const check_residual &r, double *largest, int32_t *worst)
{
    if (!(r.size > *largest)) return;
    *largest = r.size;
    *worst = r.index;
}

static double check_rows(const model *m, const check_tolerances *tol, solution *sol)
{
    double ratio = 0.0;

    sol->check.row = 0.0;
    each_row(m, tol, sol, [&](const check_residual &r) {
        note(r, &sol->check.row, &sol->check.worst_row);
        ratio = std::max(ratio, r.size / r.allowed);
    });
    return ratio;
}

static double check_columns(const model *m, const check_tolerances *tol, bool integers, solution *sol)
{
    solution_check *check = &sol->check;
    double ratio = 0.0;

    check->bound = 0.0;
    each_column(m, tol, integers, sol, [&](const check_residual &r) {
        if (r.what == CHECK_INTEGRALITY) {
            if (std::isnan(check->integrality)) check->integrality = 0.0;
            note(r, &check->integrality, &check->worst_int);
        } else {
            note(r, &check->bound, &check->worst_bound);
        }
        ratio = std::max(ratio, r.size / r.allowed);
    });
    return ratio;
}

static double check_cones(const model *m, const check_tolerances *tol, solution *sol)
{
    double ratio = 0.0;

    if (m->cones.empty()) return 0.0;
    sol->check.cone = 0.0;
    each_cone(m, tol, sol, [&](const check_residual &r) {
        note(r, &sol->check.cone, &sol->check.worst_cone);
        ratio = std::max(ratio, r.size / r.allowed);
    });
    return ratio;
}

static bool all_finite(const std::vector<double> &v)
{
    return std::all_of(v.begin(), v.end(), [](double value) { return std::isfinite(value); });
}

static double check_primal(const model *m, const check_tolerances *tol, bool integers, solution *sol)
{
    if (!sol->has_primal || !all_finite(sol->xx)) return model_inf;
    sol->primal_obj = model_objective(m, sol->xx.data());
    if (std::isnan(sol->primal_obj)) return model_inf; /* a function has no value here */
    const double rows = check_rows(m, tol, sol);
    const double columns = check_columns(m, tol, integers, sol);
    return std::max({rows, columns, check_cones(m, tol, sol)});
}

/* Stationarity and signs together. */
static double check_dual(const model *m, const check_tolerances *tol, solution *sol)
{
    double ratio = 0.0;
    int32_t worst_row = -1;

    if (!sol->has_dual || !all_finite(sol->y)) return model_inf;
    if (gradient_needs_point(m) && !sol->has_primal) return model_inf;
    if (!gradient_exists(m, sol)) return model_inf;
    sol->check.dual = 0.0;
    each_dual(m, tol, sol, [&](const check_residual &r) {
        note(r, &sol->check.dual, r.is_row ? &worst_row : &sol->check.worst_dual);
        ratio = std::max(ratio, r.size / r.allowed);
    });
    return ratio;
}

static void add_sides(const std::vector<double> &on_lower, const std::vector<double> &on_upper,
                      const std::vector<double> &lower, const std::vector<double> &upper, exact_sum *sum)
{
    for (size_t i = 0; i < on_lower.size(); i++) { /* 0 for no multiplier: a side that does not exist is infinite */
        if (on_lower[i] != 0.0) sum->add_product(on_lower[i], lower[i]);
        if (on_upper[i] != 0.0) sum->add_product(-on_upper[i], upper[i]);
    }
}

static double check_gap(const model *m, const check_tolerances *tol, solution *sol)
{
    const double allowed = tol->gap * check_objective_size(m, sol);
    double terms = 0.0;

    for (size_t j = 0; j < sol->xx.size(); j++) terms += std::fabs(m->c[j] * sol->xx[j]);
    for (const quad_term &t : m->qobj)
        terms += std::fabs(t.value * sol->xx[static_cast<size_t>(t.i)] * sol->xx[static_cast<size_t>(t.j)]);
    sol->check.complementarity = 0.0;
    each_complementarity(m, tol, sol, allowed, [&](const check_residual &r) {
        sol->check.complementarity = std::max(sol->check.complementarity, r.size);
    });
    const double gap = std::fabs(sol->primal_obj - sol->dual_obj) / (allowed + rounding * terms);
    return std::isnan(gap) ? model_inf : gap;
}

static double sum_of_products(const std::vector<double> &on_lower, const std::vector<double> &on_upper,
                              const std::vector<double> &lower, const std::vector<double> &upper,
                              const std::vector<double> &at)
{
    double sum = 0.0;
    for (size_t i = 0; i < at.size(); i++) {
        if (on_lower[i] != 0.0) sum += on_lower[i] * (at[i] - lower[i]);
        if (on_upper[i] != 0.0) sum += on_upper[i] * (upper[i] - at[i]);
    }
    return sum;
}

/* Functions have no dual objective that is known beyond the point. Theirs is that of their tangents there: less than the
 * primal one by what complementarity leaves. */
static double tangent_dual(const model *m, const solution *sol)
{
    return sol->primal_obj - sum_of_products(sol->slc, sol->suc, m->con_lower, m->con_upper, sol->xc) -
           sum_of_products(sol->slx, sol->sux, m->var_lower, m->var_upper, sol->xx);
}

static double dual_objective(const model *m, const solution *sol)
{
    exact_sum sum;
    if (m->functions != nullptr) return tangent_dual(m, sol);
    sum.add(m->cfix);
    gradient_add_dual_share(m, sol, &sum);
    add_sides(sol->slc, sol->suc, m->con_lower, m->con_upper, &sum);
    add_sides(sol->slx, sol->sux, m->var_lower, m->var_upper, &sum);
    return sum.value();
}

check_result check_solution(const model *m, const check_tolerances *tol, bool integers, solution *sol)
{
    check_result found;

    sol->check = solution_check{};
    found.primal = check_primal(m, tol, integers, sol);
    found.dual = check_dual(m, tol, sol);
    if (sol->has_dual) sol->dual_obj = dual_objective(m, sol);
    if (std::isfinite(found.primal) && std::isfinite(found.dual)) found.gap = check_gap(m, tol, sol);
    return found;
}

void check_each(const model *m, const check_tolerances *tol, bool integers, const solution *sol,
                const check_visitor &see)
{
    const bool primal = sol->has_primal && all_finite(sol->xx);
    const bool dual = sol->has_dual && all_finite(sol->y);
    const auto shown = [&](const check_residual &r) {
        if (r.size > 0.0 && std::isfinite(r.size)) see(r);
    };

    if (primal) each_row(m, tol, sol, shown);
    if (primal) each_column(m, tol, integers, sol, shown);
    if (primal) each_cone(m, tol, sol, shown);
    if (dual) each_dual(m, tol, sol, shown);
    if (primal && dual) each_complementarity(m, tol, sol, tol->gap * check_objective_size(m, sol), shown);
}

void check_set_status(const check_tolerances *tol, const check_result *found, solution *sol)
{
    const bool primal = found->primal <= 1.0, near_primal = found->primal <= tol->near;
    const bool dual = found->dual <= 1.0, near_dual = found->dual <= tol->near;

    sol->prosta = ZLR_PRO_UNKNOWN;
    sol->solsta = ZLR_SOLSTA_UNKNOWN;
    if (primal && dual) {
        sol->prosta = ZLR_PRO_PRIM_AND_DUAL_FEAS;
        sol->solsta = found->gap <= 1.0 ? ZLR_SOLSTA_OPTIMAL : ZLR_SOLSTA_PRIM_AND_DUAL_FEAS;
    } else if (primal) {
        sol->prosta = ZLR_PRO_PRIM_FEAS;
        sol->solsta = ZLR_SOLSTA_PRIM_FEAS;
    } else if (dual) {
        sol->prosta = ZLR_PRO_DUAL_FEAS;
        sol->solsta = ZLR_SOLSTA_DUAL_FEAS;
    }
    if (sol->solsta == ZLR_SOLSTA_OPTIMAL) return;
    if (near_primal && near_dual && found->gap <= tol->near)
        sol->solsta = ZLR_SOLSTA_NEAR_OPTIMAL;
    else if (sol->solsta == ZLR_SOLSTA_UNKNOWN && near_primal)
        sol->solsta = ZLR_SOLSTA_NEAR_PRIM_FEAS;
    else if (sol->solsta == ZLR_SOLSTA_UNKNOWN && near_dual)
        sol->solsta = ZLR_SOLSTA_NEAR_DUAL_FEAS;
}

double check_largest_residual(const solution *sol)
{
    const double gap = std::fabs(sol->primal_obj - sol->dual_obj);
    const double cone = std::isnan(sol->check.cone) ? 0.0 : sol->check.cone;
    return std::max({sol->check.row, sol->check.bound, cone, sol->check.dual, gap});
}

double check_relative_gap(double objective, double bound)
{
    const double gap = std::fabs(objective - bound);
    if (gap == 0.0) return 0.0;
    return objective == 0.0 ? model_inf : gap / std::fabs(objective);
}

void check_set_integer_status(const check_tolerances *tol, int32_t sense, const check_result *found, bool has_bound,
                              double bound, solution *sol)
{
    const bool primal = found->primal <= 1.0, near_primal = found->primal <= tol->near;
    /* An incumbent beyond its own bound has no gap. */
    const double over = sense == ZLR_SENSE_MAX ? bound - sol->primal_obj : sol->primal_obj - bound;
    const double room = rounding * std::max(1.0, std::fabs(sol->primal_obj));
    const bool closed = has_bound && (over <= tol->mip_abs_gap + room ||
                                      check_relative_gap(sol->primal_obj, bound) <= tol->mip_rel_gap + rounding);

    sol->dual_obj = has_bound ? bound : (sense == ZLR_SENSE_MAX ? model_inf : -model_inf);
    sol->prosta = primal ? ZLR_PRO_PRIM_FEAS : ZLR_PRO_UNKNOWN;
    sol->solsta = ZLR_SOLSTA_UNKNOWN;
    if (primal)
        sol->solsta = closed ? ZLR_SOLSTA_INTEGER_OPTIMAL : ZLR_SOLSTA_PRIM_FEAS;
    else if (near_primal)
        sol->solsta = closed ? ZLR_SOLSTA_NEAR_INTEGER_OPTIMAL : ZLR_SOLSTA_NEAR_PRIM_FEAS;
}

int32_t check_rank(int32_t solsta)
{
    static const int32_t order[] = {ZLR_SOLSTA_OPTIMAL,        ZLR_SOLSTA_INTEGER_OPTIMAL,
                                    ZLR_SOLSTA_NEAR_OPTIMAL,   ZLR_SOLSTA_PRIM_AND_DUAL_FEAS,
                                    ZLR_SOLSTA_PRIM_FEAS,      ZLR_SOLSTA_NEAR_INTEGER_OPTIMAL,
                                    ZLR_SOLSTA_NEAR_PRIM_FEAS, ZLR_SOLSTA_DUAL_FEAS,
                                    ZLR_SOLSTA_NEAR_DUAL_FEAS};
    const auto *end = std::end(order);
    return static_cast<int32_t>(std::find(std::begin(order), end, solsta) - std::begin(order));
}
