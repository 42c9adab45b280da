/* conic_map.cpp - from solutions of the conic form back to the problem: see conic_form.h. */
#include "solver/conic/conic_form.h"

#include <algorithm>
#include <cmath>

/* What the reduced costs of the form's columns have from a cone in disguise: by the rows that link its members, and by
 * the cone's dual for members that are columns of the problem. Added to `out` times `factor`. */
static void add_cone_part(const conic_map *map, const conic_disguised *d, const solution *form, double factor,
                          double *out)
{
    for (int64_t k = d->first; k < d->first + d->num; k++) {
        const conic_member *member = &map->member[static_cast<size_t>(k)];
        const double weight = member->link >= 0 ? -form->y[static_cast<size_t>(member->link)]
                                                : form->snx[static_cast<size_t>(member->column)];
        const auto at = static_cast<size_t>(member->first);
        for (int64_t e = map->forms.start[at]; e < map->forms.start[at + 1]; e++)
            out[map->forms.column[static_cast<size_t>(e)]] +=
                factor * weight * map->forms.value[static_cast<size_t>(e)];
    }
}

/* Sign that the multiplier of a row with one side has: 1 at least 0, -1 at most 0. */
static double multiplier_sign(const model *m, int32_t row)
{
    const double side = convexity_row_sign(m, row) > 0.0 ? -1.0 : 1.0;
    return m->sense == ZLR_SENSE_MIN ? side : -side;
}

static const quad_row *find_quad_row(const model *m, int32_t row)
{
    return &*std::lower_bound(m->qcon.begin(), m->qcon.end(), row,
                              [](const quad_row &q, int32_t r) { return q.row < r; });
}

/* The y for which y Q x is nearest to the cone's part. `part` and `gradient` are of the problem's columns, 0 before and
 * after: only what the row touches is looked at. */
static double fit_multiplier(const model *m, const conic_map *map, const conic_disguised *d, const solution *form,
                             std::vector<double> *part, std::vector<double> *gradient)
{
    const quad_row *q = find_quad_row(m, d->row);
    add_cone_part(map, d, form, 1.0, part->data());
    quad_add_product(q->terms, form->xx.data(), 1.0, gradient->data());

    double largest = 0.0;
    for (const quad_term &t : q->terms)
        for (const int32_t j : {t.i, t.j}) largest = std::max(largest, std::fabs((*gradient)[static_cast<size_t>(j)]));
    double inner = 0.0, norm = 0.0;
    for (const quad_term &t : q->terms) {
        for (const int32_t j : {t.i, t.j}) {
            const auto at = static_cast<size_t>(j);
            if (largest > 0.0) {
                const double g = (*gradient)[at] / largest; /* squares of tiny gradients would be 0 */
                inner += g * (*part)[at];
                norm += g * g;
            }
            (*gradient)[at] = (*part)[at] = 0.0; /* a column that comes again adds nothing */
        }
    }
    const double y = norm > 0.0 ? inner / norm / largest : 0.0;
    return std::isfinite(y) && y * multiplier_sign(m, d->row) > 0.0 ? y : 0.0;
}

static void copy_front(const std::vector<double> &from, std::vector<double> *to)
{
    std::copy_n(from.begin(), std::min(from.size(), to->size()), to->begin());
}

/* Duals of the cones that the problem has itself. */
static void copy_cone_duals(const model *m, const conic_map *map, const solution *form, solution *out)
{
    if (form->snx.empty() || m->cones.empty()) return;
    for (const model_cone &cone : m->cones)
        for (const int32_t j : cone.member) out->snx[static_cast<size_t>(j)] = form->snx[static_cast<size_t>(j)];
    if (form->skn.size() >= static_cast<size_t>(map->num_cones))
        std::copy_n(form->skn.begin(), map->num_cones, out->skn.begin());
}

/* A multiplier goes to the side whose sign it has, and that exists. */
static void split_by_side(int32_t sense, const std::vector<double> &lower, const std::vector<double> &upper, size_t i,
                          double value, double *at_lower, double *at_upper)
{
    const bool is_lower = sense == ZLR_SENSE_MIN ? value > 0.0 : value < 0.0;
    *at_lower = is_lower && lower[i] != -model_inf ? value : 0.0;
    *at_upper = !is_lower && upper[i] != model_inf ? -value : 0.0;
}

static void split_row_duals(const model *m, solution *out)
{
    for (size_t i = 0; i < out->y.size(); i++)
        split_by_side(m->sense, m->con_lower, m->con_upper, i, out->y[i], &out->slc[i], &out->suc[i]);
}

/* c + Q0 x - sum y_i (a_i + Q_i x) - snx. */
static std::vector<double> reduced_costs(const model *m, const solution *sol)
{
    std::vector<double> d = m->c;
    if (sol->has_primal) {
        quad_add_product(m->qobj, sol->xx.data(), 1.0, d.data());
        for (const quad_row &q : m->qcon)
            quad_add_product(q.terms, sol->xx.data(), -sol->y[static_cast<size_t>(q.row)], d.data());
    }
    for (size_t j = 0; j < d.size(); j++) {
        for (int64_t k = m->a.start[j]; k < m->a.start[j + 1]; k++) {
            const auto at = static_cast<size_t>(k);
            d[j] -= m->a.value[at] * sol->y[static_cast<size_t>(m->a.row[at])];
        }
        if (!sol->snx.empty()) d[j] -= sol->snx[j];
    }
    return d;
}

/* What point and ray have in common. */
static void start_solution(const model *m, const conic_map *map, const solution *form, solution *out)
{
    solution_reset(out, map->num_con, map->num_var, map->num_cones);
    out->defined = form->defined;
    out->prosta = form->prosta;
    out->solsta = form->solsta;
    out->primal_obj = form->primal_obj;
    out->dual_obj = form->dual_obj;
    out->has_keys = form->has_keys;
    out->has_primal = form->has_primal;
    out->has_dual = form->has_dual;
    if (form->has_keys) {
        std::copy_n(form->skc.begin(), map->num_con, out->skc.begin());
        std::copy_n(form->skx.begin(), map->num_var, out->skx.begin());
    }
    if (form->has_primal) copy_front(form->xx, &out->xx);
    if (form->has_dual) {
        copy_front(form->y, &out->y);
        copy_cone_duals(m, map, form, out);
    }
}

void conic_map_point(const model *m, const conic_map *map, const solution *form, solution *out)
{
    start_solution(m, map, form, out);
    if (form->has_primal) model_activity(m, out->xx.data(), out->xc.data());
    if (!form->has_dual) return;
    if (form->has_primal && !form->snx.empty() && !map->disguised.empty()) {
        std::vector<double> part(static_cast<size_t>(map->num_var)), gradient(part.size());
        for (const conic_disguised &d : map->disguised)
            out->y[static_cast<size_t>(d.row)] = fit_multiplier(m, map, &d, form, &part, &gradient);
    }
    split_row_duals(m, out);
    const std::vector<double> reduced = reduced_costs(m, out);
    for (size_t j = 0; j < reduced.size(); j++)
        split_by_side(m->sense, m->var_lower, m->var_upper, j, reduced[j], &out->slx[j], &out->sux[j]);
}

/* The size of a cone's dual, as that of the multiplier of the head or the heads. */
static double dual_size(const conic_map *map, const conic_disguised *d, const solution *form)
{
    const auto head = [&](int64_t k) {
        const conic_member *member = &map->member[static_cast<size_t>(d->first + k)];
        return std::fabs(form->snx[static_cast<size_t>(member->column)]);
    };
    return d->type == ZLR_CT_QUAD ? head(0) : std::sqrt(head(0)) * std::sqrt(2.0) * std::sqrt(head(1));
}

void conic_map_ray(const model *m, const conic_map *map, const solution *form, solution *out)
{
    start_solution(m, map, form, out);
    if (solution_is_primal_ray(form)) {
        model row_part; /* a ray's activity is that of the linear rows: the quadratic part of a direction is 0 */
        row_part.num_con = m->num_con;
        row_part.num_var = m->num_var;
        row_part.a = m->a;
        model_activity(&row_part, out->xx.data(), out->xc.data());
        return;
    }
    for (const conic_disguised &d : map->disguised)
        if (!form->snx.empty())
            out->y[static_cast<size_t>(d.row)] = multiplier_sign(m, d.row) * dual_size(map, &d, form);
    split_row_duals(m, out);
    copy_front(form->slx, &out->slx);
    copy_front(form->sux, &out->sux);
}
