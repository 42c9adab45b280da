/* certificate.cpp - see certificate.h. */
#include "solver/engines/certificate.h"

#include <algorithm>
#include <cmath>

/* Entries of a ray below this share of the largest one are rounding and go before anything is computed from it. */
static constexpr double ray_noise = 1e-11;

static double largest_entry(const std::vector<double> &v)
{
    double largest = 0.0;
    for (const double value : v) largest = std::max(largest, std::fabs(value));
    return largest;
}

static void clean(std::vector<double> *ray, double largest)
{
    for (double &value : *ray)
        if (std::fabs(value) <= ray_noise * largest) value = 0.0;
}

/* What a certificate amounts to: the contradiction or improvement, the size of the terms in it, and the largest part
 * that stands on a side that does not exist, with the size of the terms that it came from. */
struct proof {
    double value = 0.0;
    double terms = 0.0;
    double residual = 0.0;
};

/* What a sum of so large terms may be off by rounding alone. */
static constexpr double sum_rounding = 1e-13;

/* Splits a multiplier onto the sides, for a minimisation. What is rounding, or has no side, stands on neither. */
static void split(double multiplier, double terms, double lower, double upper, double *on_lower, double *on_upper)
{
    const double side = multiplier > 0.0 ? lower : upper;

    *on_lower = *on_upper = 0.0;
    if (std::fabs(multiplier) <= sum_rounding * terms || !std::isfinite(side)) return;
    (multiplier > 0.0 ? *on_lower : *on_upper) = std::fabs(multiplier);
}

/* Adds one side with its multiplier, which is a residual where it has the wrong sign or no side. */
static void add_side(double on_side, double side, double sign, proof *p)
{
    if (on_side == 0.0) return;
    if (sign * on_side < 0.0 || !std::isfinite(side)) {
        p->residual = std::max(p->residual, std::fabs(on_side));
        return;
    }
    p->value += on_side * side;
    p->terms += std::fabs(on_side * side);
}

static void add_sides(double multiplier, double terms, double sign, double lower, double upper, double on_lower,
                      double on_upper, proof *p)
{
    const double rest = std::fabs(multiplier - on_lower + on_upper);

    if (rest > sum_rounding * terms) p->residual = std::max(p->residual, rest);
    add_side(sign * on_lower, lower, 1.0, p);
    add_side(-sign * on_upper, upper, -1.0, p);
}

/* The reduced cost of a column where all costs are 0, and the size of its terms. */
static double homogeneous_cost(const model *m, const std::vector<double> &y, size_t j, double *terms)
{
    double value = 0.0;

    *terms = 0.0;
    for (auto k = static_cast<size_t>(m->a.start[j]); k < static_cast<size_t>(m->a.start[j + 1]); k++) {
        const double term = m->a.value[k] * y[static_cast<size_t>(m->a.row[k])];
        value -= term;
        *terms += std::fabs(term);
    }
    return value;
}

/* Duals of cones that are no duals of them. */
static void add_cones(const model *m, double sign, const std::vector<double> &snx, proof *p)
{
    std::vector<double> dual;
    for (const model_cone &cone : m->cones) {
        model_cone places = cone;
        dual.clear();
        for (size_t k = 0; k < cone.member.size(); k++) {
            places.member[k] = static_cast<int32_t>(k);
            dual.push_back(sign * snx[static_cast<size_t>(cone.member[k])]);
        }
        const double outside = cone_violation(&places, dual.data());
        if (outside > sum_rounding * largest_entry(dual)) p->residual = std::max(p->residual, outside);
    }
}

static double on_cone(const solution *sol, size_t j) { return sol->snx.empty() ? 0.0 : sol->snx[j]; }

/* What the duals of the sides amount to, with the signs of a minimisation (`sign` 1) or of a maximisation (-1). */
static proof add_up(const model *m, double sign, const solution *sol)
{
    proof p;

    for (size_t i = 0; i < sol->y.size(); i++)
        add_sides(sol->y[i], 0.0, sign, m->con_lower[i], m->con_upper[i], sol->slc[i], sol->suc[i], &p);
    for (size_t j = 0; j < sol->slx.size(); j++) {
        double terms = 0.0;
        const double value = homogeneous_cost(m, sol->y, j, &terms);
        add_sides(value - on_cone(sol, j), terms, sign, m->var_lower[j], m->var_upper[j], sol->slx[j], sol->sux[j], &p);
    }
    add_cones(m, sign, sol->snx, &p);
    return p;
}

/* On the columns of cones the reduced cost is the cone's, but for what an engine gives to bounds. */
static void fill_cones(const model *m, const std::vector<double> &cone_dual, double factor, solution *sol)
{
    for (const model_cone &cone : m->cones) {
        for (const int32_t member : cone.member) {
            const auto j = static_cast<size_t>(member);
            double terms = 0.0;
            const bool is_free = std::isinf(m->var_lower[j]) && std::isinf(m->var_upper[j]);
            sol->snx[j] = is_free || cone_dual.size() != sol->snx.size() ? homogeneous_cost(m, sol->y, j, &terms)
                                                                         : factor * cone_dual[j];
        }
    }
}

/* Fills the duals of `sol` from sol->y as for a minimisation. */
static proof prove_infeasible(const model *m, solution *sol)
{
    for (size_t i = 0; i < sol->y.size(); i++)
        split(sol->y[i], 0.0, m->con_lower[i], m->con_upper[i], &sol->slc[i], &sol->suc[i]);
    for (size_t j = 0; j < sol->slx.size(); j++) {
        double terms = 0.0;
        const double value = homogeneous_cost(m, sol->y, j, &terms);
        split(value - on_cone(sol, j), terms, m->var_lower[j], m->var_upper[j], &sol->slx[j], &sol->sux[j]);
    }
    return add_up(m, 1.0, sol);
}

/* The ratio of what is wrong with a proof to what is allowed: a residual r moves the contradiction by r times the size
 * of a column, so that it is measured against the contradiction itself. */
static double proof_ratio(const proof *p, double tolerance)
{
    constexpr double rounding = 1e-12;
    if (!(p->value > rounding * p->terms)) return model_inf;
    return p->residual / (tolerance * std::max(p->value, rounding));
}

static void scale(std::vector<double> *v, double factor)
{
    for (double &value : *v) value *= factor;
}

static void set_status(const check_tolerances *tol, solution *sol, double ratio, int32_t full, int32_t near,
                       int32_t prosta)
{
    sol->defined = true;
    sol->solsta = ratio <= 1.0 ? full : (ratio <= tol->near ? near : ZLR_SOLSTA_UNKNOWN);
    sol->prosta = ratio <= 1.0 ? prosta : ZLR_PRO_UNKNOWN;
}

/* Scales the duals so that the largest is 1 and gives them the signs of the sense. */
static void finish_dual(const model *m, const proof *p, solution *sol)
{
    double largest = 0.0;
    for (const std::vector<double> *v : {&sol->y, &sol->slc, &sol->suc, &sol->slx, &sol->sux, &sol->snx})
        largest = std::max(largest, largest_entry(*v));
    const double factor = (m->sense == ZLR_SENSE_MAX ? -1.0 : 1.0) / (largest > 0.0 ? largest : 1.0);
    for (std::vector<double> *v : {&sol->y, &sol->slc, &sol->suc, &sol->slx, &sol->sux, &sol->snx}) scale(v, factor);
    sol->dual_obj = p->value * factor;
    sol->check.dual = p->residual * std::fabs(factor);
    sol->has_dual = true;
}

bool certificate_from_dual_ray(const model *m, const check_tolerances *tol, const std::vector<double> &ray,
                               solution *sol, const std::vector<double> &cone_dual)
{
    /* Bounds and cones may contradict each other without a row. */
    const double largest = std::max(largest_entry(ray), largest_entry(cone_dual));
    if (ray.size() != static_cast<size_t>(m->num_con) || !(largest > 0.0) || !std::isfinite(largest)) return false;

    /* Engines differ in the sign of their rays: the one that proves more is meant. */
    proof best;
    double best_ratio = model_inf;
    for (const double sign : {1.0, -1.0}) {
        solution trial;
        solution_reset(&trial, m->num_con, m->num_var, model_num_cones(m));
        trial.y = ray;
        clean(&trial.y, largest);
        scale(&trial.y, sign / largest);
        fill_cones(m, cone_dual, sign / largest, &trial);
        const proof p = prove_infeasible(m, &trial);
        const double ratio = proof_ratio(&p, tol->dual);
        if (ratio >= best_ratio) continue;
        best_ratio = ratio;
        best = p;
        *sol = std::move(trial);
    }
    if (std::isinf(best_ratio)) return false;
    finish_dual(m, &best, sol);
    set_status(tol, sol, best_ratio, ZLR_SOLSTA_PRIM_INFEAS_CER, ZLR_SOLSTA_NEAR_PRIM_INFEAS_CER, ZLR_PRO_PRIM_INFEAS);
    return best_ratio <= 1.0;
}

/* How far a direction of size `value` leaves a recession cone whose sides are finite where the bounds are. */
static double leaves(double value, double lower, double upper)
{
    if (value < 0.0 && std::isfinite(lower)) return -value;
    return value > 0.0 && std::isfinite(upper) ? value : 0.0;
}

/* The largest entry of Qr for the quadratic objective and rows: along a direction of recession there is none. */
static double bends(const model *m, const std::vector<double> &ray)
{
    std::vector<double> product(ray.size(), 0.0);
    double largest = 0.0;
    const auto look_at = [&](const std::vector<quad_term> &terms) {
        quad_add_product(terms, ray.data(), 1.0, product.data());
        for (const quad_term &t : terms) {
            for (double *entry : {&product[static_cast<size_t>(t.i)], &product[static_cast<size_t>(t.j)]}) {
                largest = std::max(largest, std::fabs(*entry));
                *entry = 0.0;
            }
        }
    };
    look_at(m->qobj);
    for (const quad_row &q : m->qcon) look_at(q.terms);
    return largest;
}

static proof prove_unbounded(const model *m, solution *sol)
{
    proof p;
    std::vector<double> terms(sol->xc.size(), 0.0);
    const double sign = m->sense == ZLR_SENSE_MAX ? -1.0 : 1.0;

    for (size_t j = 0; j < sol->xx.size(); j++) {
        const double r = sol->xx[j];
        if (r == 0.0) continue;
        const double out = leaves(r, m->var_lower[j], m->var_upper[j]);
        p.residual = std::max(p.residual, out);
        p.value -= sign * m->c[j] * r;
        p.terms += std::fabs(m->c[j] * r);
        for (auto k = static_cast<size_t>(m->a.start[j]); k < static_cast<size_t>(m->a.start[j + 1]); k++) {
            const auto i = static_cast<size_t>(m->a.row[k]);
            sol->xc[i] += m->a.value[k] * r;
            terms[i] += std::fabs(m->a.value[k] * r);
        }
    }
    for (size_t i = 0; i < sol->xc.size(); i++) {
        constexpr double rounding = 1e-13;
        if (std::fabs(sol->xc[i]) <= rounding * terms[i]) sol->xc[i] = 0.0;
        p.residual = std::max(p.residual, leaves(sol->xc[i], m->con_lower[i], m->con_upper[i]));
    }
    p.residual = std::max(p.residual, bends(m, sol->xx));
    for (const model_cone &cone : m->cones) p.residual = std::max(p.residual, cone_violation(&cone, sol->xx.data()));
    return p;
}

bool certificate_from_primal_ray(const model *m, const check_tolerances *tol, const std::vector<double> &ray,
                                 solution *sol)
{
    const double largest = largest_entry(ray);
    if (!(largest > 0.0) || !std::isfinite(largest)) return false;

    solution_reset(sol, m->num_con, m->num_var, model_num_cones(m));
    sol->xx = ray;
    clean(&sol->xx, largest);
    scale(&sol->xx, 1.0 / largest);
    const proof p = prove_unbounded(m, sol);
    const double ratio = proof_ratio(&p, tol->primal);
    if (std::isinf(ratio)) {
        solution_clear(sol);
        return false;
    }
    sol->primal_obj = m->sense == ZLR_SENSE_MAX ? p.value : -p.value;
    sol->check.row = p.residual;
    sol->check.bound = 0.0;
    sol->has_primal = true;
    set_status(tol, sol, ratio, ZLR_SOLSTA_DUAL_INFEAS_CER, ZLR_SOLSTA_NEAR_DUAL_INFEAS_CER, ZLR_PRO_DUAL_INFEAS);
    return ratio <= 1.0;
}

void certificate_from_crossed_bounds(const model *m, bool is_row, int32_t index, solution *sol)
{
    const auto at = static_cast<size_t>(index);
    const double sign = m->sense == ZLR_SENSE_MAX ? -1.0 : 1.0;
    const double lower = is_row ? m->con_lower[at] : m->var_lower[at];
    const double upper = is_row ? m->con_upper[at] : m->var_upper[at];

    solution_reset(sol, m->num_con, m->num_var, model_num_cones(m));
    /* Both sides of the one row or column, so that y and the reduced cost are 0. */
    (is_row ? sol->slc : sol->slx)[at] = sign;
    (is_row ? sol->suc : sol->sux)[at] = sign;
    sol->dual_obj = sign * (lower - upper);
    sol->check.dual = 0.0;
    sol->has_dual = true;
    const check_tolerances tol; /* the proof is exact */
    set_status(&tol, sol, 0.0, ZLR_SOLSTA_PRIM_INFEAS_CER, ZLR_SOLSTA_PRIM_INFEAS_CER, ZLR_PRO_PRIM_INFEAS);
}

certificate_proof certificate_check(const model *m, const check_tolerances *tol, const solution *sol)
{
    const bool is_ray = solution_is_primal_ray(sol);
    proof p;

    if (is_ray) {
        solution ray;
        ray.xx = sol->xx;
        ray.xc.assign(sol->xc.size(), 0.0);
        p = prove_unbounded(m, &ray);
    } else {
        p = add_up(m, m->sense == ZLR_SENSE_MAX ? -1.0 : 1.0, sol);
    }
    return {p.value, p.residual, proof_ratio(&p, is_ray ? tol->primal : tol->dual)};
}
