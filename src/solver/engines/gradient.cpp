/* gradient.cpp - see gradient.h. */
#include "solver/engines/gradient.h"

#include <algorithm>
#include <cmath>
#include <limits>

/* Adds factor * Qx to the values, and the sizes of its terms. */
static void add_product(const std::vector<quad_term> &terms, const std::vector<double> &x, double factor,
                        std::vector<double> *value, std::vector<double> *size)
{
    if (factor == 0.0) return;
    quad_add_product(terms, x.data(), factor, value->data());
    for (const quad_term &t : terms) {
        const auto i = static_cast<size_t>(t.i), j = static_cast<size_t>(t.j);
        (*size)[i] += std::fabs(factor * t.value * x[j]);
        if (i != j) (*size)[j] += std::fabs(factor * t.value * x[i]);
    }
}

bool gradient_exists(const model *m, const solution *sol)
{
    int32_t code = ZLR_RES_OK;
    return m->functions == nullptr || !sol->has_primal ||
           functions_at(m->functions.get(), sol->xx.data(), true, &code) != nullptr;
}

/* The gradients of functions in place of Qx: NaN where there is none. What the objective's gradient adds to the costs is
 * added to `cost` as well. */
static void add_functions(const model_functions *f, const solution *sol, std::vector<double> *value,
                          std::vector<double> *size, std::vector<double> *cost)
{
    int32_t code = ZLR_RES_OK;
    const function_values *at = functions_at(f, sol->xx.data(), true, &code);
    if (at == nullptr) {
        std::fill(value->begin(), value->end(), std::numeric_limits<double>::quiet_NaN());
        return;
    }
    const auto add = [&](size_t j, double term) {
        (*value)[j] += term;
        (*size)[j] += std::fabs(term);
    };
    for (size_t j = 0; j < value->size(); j++) {
        add(j, at->objective_gradient[j]);
        (*cost)[j] += at->objective_gradient[j];
    }
    for (size_t k = 0; k < f->row.size(); k++) {
        const double y = sol->y[static_cast<size_t>(f->row[k])];
        if (y == 0.0) continue;
        for (auto p = static_cast<size_t>(f->start[k]); p < static_cast<size_t>(f->start[k + 1]); p++)
            add(static_cast<size_t>(f->col[p]), -y * at->gradient[p]);
    }
}

std::vector<reduced_cost> gradient_reduced_costs(const model *m, const check_tolerances *tol, const solution *sol)
{
    const auto n = static_cast<size_t>(m->num_var);
    std::vector<double> value = m->c, cost = m->c, size(n);
    std::vector<reduced_cost> all(n);

    for (size_t j = 0; j < n; j++) size[j] = std::fabs(value[j]);
    if (gradient_needs_point(m) && sol->has_primal) {
        add_product(m->qobj, sol->xx, 1.0, &value, &size);
        for (const quad_row &q : m->qcon)
            add_product(q.terms, sol->xx, -sol->y[static_cast<size_t>(q.row)], &value, &size);
        if (m->functions != nullptr) add_functions(m->functions.get(), sol, &value, &size, &cost);
    }
    for (size_t j = 0; j < n; j++) {
        for (auto k = static_cast<size_t>(m->a.start[j]); k < static_cast<size_t>(m->a.start[j + 1]); k++) {
            const double term = m->a.value[k] * sol->y[static_cast<size_t>(m->a.row[k])];
            value[j] -= term;
            size[j] += std::fabs(term);
        }
        all[j] = {value[j], check_allowed(tol != nullptr ? tol->dual : 0.0, cost[j], size[j])};
    }
    return all;
}

void gradient_split_cones(const model *m, const std::vector<reduced_cost> &d, const std::vector<double> &bound_dual,
                          solution *sol)
{
    for (const model_cone &cone : m->cones) {
        for (const int32_t member : cone.member) {
            const auto j = static_cast<size_t>(member);
            const bool is_free = std::isinf(m->var_lower[j]) && std::isinf(m->var_upper[j]);
            const double on_bounds = is_free || bound_dual.size() != d.size() ? 0.0 : bound_dual[j];
            sol->snx[j] = d[j].value - on_bounds;
        }
    }
}

void gradient_add_dual_share(const model *m, const solution *sol, exact_sum *sum)
{
    if (!gradient_needs_point(m) || !sol->has_primal) return;
    quad_add_value(m->qobj, sol->xx.data(), -1.0, sum);
    for (const quad_row &q : m->qcon)
        sum->add_product(sol->y[static_cast<size_t>(q.row)], quad_value(q.terms, sol->xx.data()));
}

cone_residuals gradient_check_cone(const model *m, const check_tolerances *tol, const solution *sol, size_t cone)
{
    const model_cone *k = &m->cones[cone];
    const double sign = m->sense == ZLR_SENSE_MAX ? -1.0 : 1.0;
    cone_residuals r;
    double terms = 0.0, dual_terms = 0.0, cost = 0.0;
    std::vector<double> dual(k->member.size());
    model_cone places = *k;

    for (size_t p = 0; p < k->member.size(); p++) {
        const auto j = static_cast<size_t>(k->member[p]);
        terms += std::fabs(sol->xx[j]);
        cost = std::max(cost, std::fabs(m->c[j]));
        places.member[p] = static_cast<int32_t>(p);
        if (!sol->has_dual) continue;
        dual[p] = sign * sol->snx[j];
        dual_terms += std::fabs(dual[p]);
        r.product += sol->snx[j] * sol->xx[j];
    }
    if (sol->has_primal) r.primal = cone_violation(k, sol->xx.data());
    r.primal_allowed = check_allowed(tol->primal, sol->xx[static_cast<size_t>(k->member[0])], terms);
    if (sol->has_dual) r.dual = cone_violation(&places, dual.data());
    r.dual_allowed = check_allowed(tol->dual, cost, dual_terms);
    r.product = std::fabs(r.product);
    return r;
}
