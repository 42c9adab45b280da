/* smooth_form.cpp - see smooth_form.h. */
#include "solver/nonlinear/smooth_form.h"

#include <algorithm>
#include <cmath>

/* Entries of a pattern, each with where it came from: to be sorted by row and merged. `from` numbers the entries. */
struct pattern_entry {
    int32_t row, col, from;
};

/* Sorts entries by row in linear time, gives each place of the pattern once, and tells for every entry which place is its
 * own. Both indices are below `num`, which is the larger of the two ranges. */
static std::vector<int32_t> merge_pattern(const std::vector<pattern_entry> &entries, int32_t num,
                                          std::vector<int32_t> *row, std::vector<int32_t> *col)
{
    std::vector<int64_t> begin(static_cast<size_t>(num) + 1, 0);
    for (const pattern_entry &e : entries) begin[static_cast<size_t>(e.row) + 1]++;
    for (size_t i = 1; i < begin.size(); i++) begin[i] += begin[i - 1];
    std::vector<int64_t> next(begin.begin(), begin.end() - 1);
    std::vector<pattern_entry> sorted(entries.size());
    for (const pattern_entry &e : entries) sorted[static_cast<size_t>(next[static_cast<size_t>(e.row)]++)] = e;

    std::vector<int32_t> place_of(entries.size());
    std::vector<int32_t> seen(static_cast<size_t>(num),
                              -1); /* the place of a column in the row at hand, if not older */
    int32_t row_begin = 0, current = -1;
    row->reserve(entries.size());
    col->reserve(entries.size());
    for (const pattern_entry &e : sorted) {
        if (e.row != current) {
            current = e.row;
            row_begin = static_cast<int32_t>(row->size());
        }
        int32_t *place = &seen[static_cast<size_t>(e.col)];
        if (*place < row_begin) {
            *place = static_cast<int32_t>(row->size());
            row->push_back(e.row);
            col->push_back(e.col);
        }
        place_of[static_cast<size_t>(e.from)] = *place;
    }
    return place_of;
}

/* Of the quadratic rows. */
static size_t count_terms(const model *m)
{
    size_t num = 0;
    for (const quad_row &q : m->qcon) num += q.terms.size();
    return num;
}

static void add_entry(std::vector<pattern_entry> *entries, int32_t row, int32_t col)
{
    entries->push_back({row, col, static_cast<int32_t>(entries->size())});
}

static void make_jacobian(smooth_form *form)
{
    const model *m = form->source;
    std::vector<pattern_entry> entries;
    entries.reserve(m->a.value.size() + 2 * count_terms(m) + (m->functions != nullptr ? m->functions->col.size() : 0));
    for (int32_t j = 0; j < m->num_var; j++)
        for (auto k = m->a.start[static_cast<size_t>(j)]; k < m->a.start[static_cast<size_t>(j) + 1]; k++)
            add_entry(&entries, m->a.row[static_cast<size_t>(k)], j);
    for (const quad_row &q : m->qcon)
        for (const quad_term &t : q.terms) {
            add_entry(&entries, q.row, t.i);
            if (t.i != t.j) add_entry(&entries, q.row, t.j);
        }
    if (m->functions != nullptr)
        for (size_t k = 0; k < m->functions->row.size(); k++)
            for (auto p = m->functions->start[k]; p < m->functions->start[k + 1]; p++)
                add_entry(&entries, m->functions->row[k], m->functions->col[static_cast<size_t>(p)]);

    smooth_problem *to = &form->problem;
    const std::vector<int32_t> place =
        merge_pattern(entries, std::max(m->num_con, m->num_var), &to->jac_row, &to->jac_col);
    form->jac_linear.assign(to->jac_row.size(), 0.0);
    size_t at = 0;
    for (const double value : m->a.value) form->jac_linear[static_cast<size_t>(place[at++])] += value;
    for (const quad_row &q : m->qcon)
        for (const quad_term &t : q.terms) {
            form->jac_products.push_back({place[at++], t.j, t.value});
            if (t.i != t.j) form->jac_products.push_back({place[at++], t.i, t.value});
        }
    form->jac_function.assign(place.begin() + static_cast<std::ptrdiff_t>(at), place.end());
}

static void make_hessian(smooth_form *form)
{
    const model *m = form->source;
    std::vector<pattern_entry> entries;
    entries.reserve(m->qobj.size() + count_terms(m) + (m->functions != nullptr ? m->functions->hes_row.size() : 0));
    for (const quad_term &t : m->qobj) add_entry(&entries, t.i, t.j);
    for (const quad_row &q : m->qcon)
        for (const quad_term &t : q.terms) add_entry(&entries, t.i, t.j);
    if (m->functions != nullptr)
        for (size_t k = 0; k < m->functions->hes_row.size(); k++)
            add_entry(&entries, m->functions->hes_row[k], m->functions->hes_col[k]);

    smooth_problem *to = &form->problem;
    const std::vector<int32_t> place = merge_pattern(entries, m->num_var, &to->hes_row, &to->hes_col);
    size_t at = 0;
    for (const quad_term &t : m->qobj) form->hes_constant.push_back({place[at++], -1, t.value});
    for (const quad_row &q : m->qcon)
        for (const quad_term &t : q.terms) form->hes_constant.push_back({place[at++], q.row, t.value});
    form->hes_function.assign(place.begin() + static_cast<std::ptrdiff_t>(at), place.end());
    form->is_all_function = m->functions != nullptr && form->hes_constant.empty() &&
                            place.size() == to->hes_row.size() && std::is_sorted(place.begin(), place.end());
    form->curvature.resize(form->is_all_function ? 0 : form->hes_function.size());
    form->multipliers.resize(static_cast<size_t>(m->num_con));
}

void smooth_form_make(const model *m, smooth_form *form)
{
    form->source = m;
    form->sign = m->sense == ZLR_SENSE_MAX ? -1.0 : 1.0;
    form->problem.num_var = m->num_var;
    form->problem.num_con = m->num_con;
    form->problem.var_lower = m->var_lower;
    form->problem.var_upper = m->var_upper;
    form->problem.con_lower = m->con_lower;
    form->problem.con_upper = m->con_upper;
    make_jacobian(form);
    make_hessian(form);
}

/* ---- values */

/* The model's own functions, where there are any: *at is null where there are none. */
static int32_t functions_of(const smooth_form *form, const double *x, bool gradients, const function_values **at)
{
    int32_t code = ZLR_RES_OK;
    const model_functions *f = form->source->functions.get();
    *at = f != nullptr ? functions_at(f, x, gradients, &code) : nullptr;
    return code;
}

int32_t smooth_form_objective(const smooth_form *form, const double *x, double *value)
{
    const function_values *at = nullptr;
    const int32_t code = functions_of(form, x, false, &at);
    if (code == ZLR_RES_OK) *value = form->sign * model_objective(form->source, x);
    return code;
}

int32_t smooth_form_gradient(const smooth_form *form, const double *x, double *value)
{
    const model *m = form->source;
    const function_values *at = nullptr;
    const int32_t code = functions_of(form, x, true, &at);
    if (code != ZLR_RES_OK) return code;
    const auto n = static_cast<size_t>(m->num_var);
    std::copy(m->c.begin(), m->c.end(), value);
    quad_add_product(m->qobj, x, 1.0, value);
    if (at != nullptr)
        for (size_t j = 0; j < n; j++) value[j] += at->objective_gradient[j];
    for (size_t j = 0; j < n; j++) value[j] *= form->sign;
    return ZLR_RES_OK;
}

int32_t smooth_form_rows(const smooth_form *form, const double *x, double *value)
{
    const function_values *at = nullptr;
    const int32_t code = functions_of(form, x, false, &at);
    if (code == ZLR_RES_OK) model_activity(form->source, x, value);
    return code;
}

int32_t smooth_form_jacobian(const smooth_form *form, const double *x, double *value)
{
    const function_values *at = nullptr;
    const int32_t code = functions_of(form, x, true, &at);
    if (code != ZLR_RES_OK) return code;
    std::copy(form->jac_linear.begin(), form->jac_linear.end(), value);
    for (const smooth_product &p : form->jac_products) value[p.place] += p.value * x[p.col];
    for (size_t k = 0; at != nullptr && k < form->jac_function.size(); k++)
        value[form->jac_function[k]] += at->gradient[k];
    return ZLR_RES_OK;
}

/* The functions' Hessian takes multipliers with the library's sign: the sum is less y_i times a row's. */
int32_t smooth_form_hessian(smooth_form *form, const double *x, double weight, const double *lambda, double *value)
{
    const model_functions *f = form->source->functions.get();
    for (size_t i = 0; i < form->multipliers.size(); i++) form->multipliers[i] = -lambda[i];
    if (form->is_all_function) return functions_hessian(f, x, form->sign * weight, form->multipliers.data(), value);
    std::fill_n(value, form->problem.hes_row.size(), 0.0);
    for (const smooth_curvature &c : form->hes_constant)
        value[c.place] += c.value * (c.row < 0 ? form->sign * weight : lambda[c.row]);
    if (f == nullptr) return ZLR_RES_OK;
    const int32_t code = functions_hessian(f, x, form->sign * weight, form->multipliers.data(), form->curvature.data());
    for (size_t k = 0; k < form->hes_function.size() && code == ZLR_RES_OK; k++)
        value[form->hes_function[k]] += form->curvature[k];
    return code;
}
