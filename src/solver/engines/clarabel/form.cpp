/* form.cpp - see form.h. A module sees the library's records and none of its functions. */
#include "solver/engines/clarabel/form.h"

#include <algorithm>
#include <cmath>
#include <utility>

static const double half_root = std::sqrt(0.5);

/* ---- places */

static void place_equations(const std::vector<double> &lower, const std::vector<double> &upper, clarabel_places *places,
                            std::vector<double> *b)
{
    places->lower.assign(lower.size(), -1);
    places->upper.assign(upper.size(), -1);
    for (size_t k = 0; k < lower.size(); k++) {
        if (lower[k] != upper[k] || !std::isfinite(lower[k])) continue;
        places->upper[k] = static_cast<int64_t>(b->size());
        b->push_back(upper[k]);
    }
}

static void place_inequalities(const std::vector<double> &lower, const std::vector<double> &upper,
                               clarabel_places *places, std::vector<double> *b)
{
    for (size_t k = 0; k < lower.size(); k++) {
        if (places->upper[k] >= 0) continue; /* an equation */
        if (std::isfinite(upper[k])) {
            places->upper[k] = static_cast<int64_t>(b->size());
            b->push_back(upper[k]);
        }
        if (std::isfinite(lower[k])) {
            places->lower[k] = static_cast<int64_t>(b->size());
            b->push_back(-lower[k]);
        }
    }
}

static void add_cone(clarabel_form *form, int32_t kind, size_t from)
{
    const size_t size = form->b.size() - from;
    if (size > 0) form->cones.push_back({kind, static_cast<int64_t>(size)});
}

static void place_rows(const model *m, clarabel_form *form)
{
    place_equations(m->con_lower, m->con_upper, &form->con, &form->b);
    place_equations(m->var_lower, m->var_upper, &form->var, &form->b);
    add_cone(form, ZLR_CLARABEL_ZERO, 0);
    const size_t equations = form->b.size();
    place_inequalities(m->con_lower, m->con_upper, &form->con, &form->b);
    place_inequalities(m->var_lower, m->var_upper, &form->var, &form->b);
    add_cone(form, ZLR_CLARABEL_NONNEGATIVE, equations);
    for (const model_cone &cone : m->cones) {
        const size_t from = form->b.size();
        form->cone_at.push_back(static_cast<int64_t>(from));
        form->b.resize(from + cone.member.size(), 0.0);
        add_cone(form, ZLR_CLARABEL_SECOND_ORDER, from);
    }
}

/* ---- matrices */

typedef std::vector<std::pair<int64_t, double>> column_entries;

/* Appends a column, its rows ascending: the engine wants that order, the problem promises none. */
static void append_column(clarabel_matrix *to, column_entries *entries)
{
    const auto by_row = [](const auto &x, const auto &y) { return x.first < y.first; };
    if (!std::is_sorted(entries->begin(), entries->end(), by_row)) std::sort(entries->begin(), entries->end(), by_row);
    for (const auto &[row, value] : *entries) {
        to->row.push_back(row);
        to->value.push_back(value);
    }
    to->start.push_back(static_cast<int64_t>(to->row.size()));
}

static void add_sides(const clarabel_places *places, size_t k, double value, column_entries *entries)
{
    if (places->upper[k] >= 0) entries->emplace_back(places->upper[k], value);
    if (places->lower[k] >= 0) entries->emplace_back(places->lower[k], -value);
}

/* Where a column is in its cone. */
struct cone_place {
    int32_t cone = -1;
    int64_t position = 0;
};

static std::vector<cone_place> find_members(const model *m)
{
    std::vector<cone_place> found(static_cast<size_t>(m->num_var));
    for (size_t k = 0; k < m->cones.size(); k++)
        for (size_t p = 0; p < m->cones[k].member.size(); p++)
            found[static_cast<size_t>(m->cones[k].member[p])] = {static_cast<int32_t>(k), static_cast<int64_t>(p)};
    return found;
}

static void add_member(const model *m, const clarabel_form *form, cone_place place, column_entries *entries)
{
    if (place.cone < 0) return;
    const auto k = static_cast<size_t>(place.cone);
    const int64_t at = form->cone_at[k];
    if (m->cones[k].type != ZLR_CT_RQUAD || place.position > 1) {
        entries->emplace_back(at + place.position, -1.0);
        return;
    }
    entries->emplace_back(at, -half_root);
    entries->emplace_back(at + 1, place.position == 0 ? -half_root : half_root);
}

static void make_rows(const model *m, clarabel_form *form)
{
    const std::vector<cone_place> members = find_members(m);
    column_entries entries;

    form->a.start.reserve(static_cast<size_t>(m->num_var) + 1);
    form->a.row.reserve(m->a.row.size() + form->b.size());
    form->a.value.reserve(m->a.row.size() + form->b.size());
    for (size_t j = 0; j < members.size(); j++) {
        entries.clear();
        for (auto k = static_cast<size_t>(m->a.start[j]); k < static_cast<size_t>(m->a.start[j + 1]); k++)
            add_sides(&form->con, static_cast<size_t>(m->a.row[k]), m->a.value[k], &entries);
        add_sides(&form->var, j, 1.0, &entries);
        add_member(m, form, members[j], &entries);
        append_column(&form->a, &entries);
    }
}

/* The upper triangle by column, which is the lower one by row. */
static void make_objective(const model *m, clarabel_form *form)
{
    const auto n = static_cast<size_t>(m->num_var);
    std::vector<size_t> start(n + 1, 0);
    std::vector<std::pair<int64_t, double>> terms(m->qobj.size());

    for (const quad_term &t : m->qobj) start[static_cast<size_t>(t.i) + 1]++;
    for (size_t j = 0; j < n; j++) start[j + 1] += start[j];
    std::vector<size_t> next = start;
    for (const quad_term &t : m->qobj) terms[next[static_cast<size_t>(t.i)]++] = {t.j, form->sign * t.value};

    column_entries entries;
    for (size_t j = 0; j < n; j++) {
        const auto first = terms.begin();
        entries.assign(first + static_cast<std::ptrdiff_t>(start[j]),
                       first + static_cast<std::ptrdiff_t>(start[j + 1]));
        append_column(&form->p, &entries);
    }
    form->q.resize(n);
    for (size_t j = 0; j < n; j++) form->q[j] = form->sign * m->c[j];
}

void clarabel_form_make(const model *m, clarabel_form *form)
{
    form->sign = m->sense == ZLR_SENSE_MAX ? -1.0 : 1.0;
    place_rows(m, form);
    make_rows(m, form);
    make_objective(m, form);
}

static zlr_clarabel_matrix view_of(const clarabel_matrix *m, size_t rows)
{
    return {static_cast<int64_t>(rows), static_cast<int64_t>(m->start.size()) - 1, m->start.data(), m->row.data(),
            m->value.data()};
}

zlr_clarabel_problem clarabel_form_view(const clarabel_form *form)
{
    zlr_clarabel_problem view = {};
    view.p = view_of(&form->p, form->q.size());
    view.q = form->q.data();
    view.a = view_of(&form->a, form->b.size());
    view.b = form->b.data();
    view.cones = form->cones.data();
    view.num_cones = static_cast<int64_t>(form->cones.size());
    return view;
}

/* ---- the way back */

/* Stationarity is Px + q + A'z = 0: a row of an upper side comes with its coefficients, that of a lower side with
 * their negatives. So lower minus upper is the multiplier of a minimisation. */
static std::vector<double> side_duals(const clarabel_places *places, double sign, const double *z)
{
    std::vector<double> duals(places->lower.size(), 0.0);
    for (size_t k = 0; k < duals.size(); k++) {
        const double lower = places->lower[k] >= 0 ? z[places->lower[k]] : 0.0;
        const double upper = places->upper[k] >= 0 ? z[places->upper[k]] : 0.0;
        duals[k] = sign * (lower - upper);
    }
    return duals;
}

void clarabel_form_duals(const model *m, const clarabel_form *form, const double *z, engine_answer *answer)
{
    answer->y = side_duals(&form->con, form->sign, z);
    answer->reduced = side_duals(&form->var, form->sign, z);
    answer->cone_dual.assign(m->cones.empty() ? 0 : static_cast<size_t>(m->num_var), 0.0);
    for (size_t k = 0; k < m->cones.size(); k++) {
        const std::vector<int32_t> &member = m->cones[k].member;
        const double *own = z + form->cone_at[k];
        for (size_t p = 0; p < member.size(); p++)
            answer->cone_dual[static_cast<size_t>(member[p])] = form->sign * own[p];
        if (m->cones[k].type != ZLR_CT_RQUAD) continue;
        answer->cone_dual[static_cast<size_t>(member[0])] = form->sign * half_root * (own[0] + own[1]);
        answer->cone_dual[static_cast<size_t>(member[1])] = form->sign * half_root * (own[0] - own[1]);
    }
}
