/* aside.cpp - see aside.h. */
#include "solver/engines/aside.h"
#include "solver/engines/certificate.h"

#include <algorithm>
#include <cmath>

/* Sizes, sense and matrix of `m`, rows and columns as they are, no names and no constant. */
static std::shared_ptr<model> copy_of(const model *m)
{
    auto p = std::make_shared<model>();
    p->num_con = m->num_con;
    p->num_var = m->num_var;
    p->sense = m->sense;
    p->c = m->c;
    p->con_lower = m->con_lower;
    p->con_upper = m->con_upper;
    p->var_lower = m->var_lower;
    p->var_upper = m->var_upper;
    p->var_type.assign(m->var_type.size(), ZLR_VAR_CONT);
    p->a = m->a;
    return p;
}

/* Entries by column, as row and value. */
typedef std::vector<std::vector<std::pair<int32_t, double>>> column_entries;

/* Puts entries behind those of their columns. */
static void add_entries(const column_entries &added, sparse_columns *a)
{
    sparse_columns all;
    for (size_t j = 0; j < added.size(); j++) {
        for (auto k = static_cast<size_t>(a->start[j]); k < static_cast<size_t>(a->start[j + 1]); k++) {
            all.row.push_back(a->row[k]);
            all.value.push_back(a->value[k]);
        }
        for (const auto &[row, value] : added[j]) {
            all.row.push_back(row);
            all.value.push_back(value);
        }
        all.start.push_back(static_cast<int64_t>(all.row.size()));
    }
    *a = std::move(all);
}

static void add_slack(model *p, int32_t row, double coefficient)
{
    p->num_var++;
    p->c.push_back(1.0);
    p->var_lower.push_back(0.0);
    p->var_upper.push_back(model_inf);
    p->var_type.push_back(ZLR_VAR_CONT);
    p->a.row.push_back(row);
    p->a.value.push_back(coefficient);
    p->a.start.push_back(static_cast<int64_t>(p->a.row.size()));
}

std::shared_ptr<model> aside_phase_one(const model *m)
{
    std::shared_ptr<model> p = copy_of(m);

    p->sense = ZLR_SENSE_MIN;
    std::fill(p->c.begin(), p->c.end(), 0.0);
    for (int32_t i = 0; i < m->num_con; i++) {
        if (std::isfinite(m->con_lower[static_cast<size_t>(i)])) add_slack(p.get(), i, 1.0);
        if (std::isfinite(m->con_upper[static_cast<size_t>(i)])) add_slack(p.get(), i, -1.0);
    }
    return p;
}

static void add_bound_row(model *p, column_entries *added, size_t column)
{
    (*added)[column].emplace_back(p->num_con++, 1.0);
    p->con_lower.push_back(p->var_lower[column]);
    p->con_upper.push_back(p->var_upper[column]);
    p->var_lower[column] = -model_inf;
    p->var_upper[column] = model_inf;
}

std::shared_ptr<model> aside_conic_phase_one(const model *m)
{
    column_entries added(static_cast<size_t>(m->num_var));
    model with_rows = *copy_of(m);
    for (const model_cone &cone : m->cones)
        for (const int32_t member : cone.member) {
            const auto j = static_cast<size_t>(member);
            if (std::isfinite(m->var_lower[j]) || std::isfinite(m->var_upper[j])) add_bound_row(&with_rows, &added, j);
        }
    add_entries(added, &with_rows.a);
    std::shared_ptr<model> p = aside_phase_one(&with_rows);
    p->cones = m->cones;
    return p;
}

/* The side of a cone where there was a bound, `open` where there was none. */
static void recede(std::vector<double> *lower, std::vector<double> *upper, double open)
{
    for (double &side : *lower) side = std::isfinite(side) ? 0.0 : -open;
    for (double &side : *upper) side = std::isfinite(side) ? 0.0 : open;
}

/* Adds the rows Qd = 0: convex quadratic parts get no worse without end only where they are flat. */
static void keep_flat(const std::vector<quad_term> &terms, model *p)
{
    if (terms.empty()) return;
    std::vector<int32_t> row_of(static_cast<size_t>(p->num_var), -1);
    column_entries added(row_of.size());
    const auto add = [&](int32_t i, int32_t j, double value) {
        int32_t &row = row_of[static_cast<size_t>(i)];
        if (row < 0) row = p->num_con++;
        added[static_cast<size_t>(j)].emplace_back(row, value);
    };
    for (const quad_term &t : terms) {
        add(t.i, t.j, t.value);
        if (t.i != t.j) add(t.j, t.i, t.value);
    }
    p->con_lower.resize(static_cast<size_t>(p->num_con), 0.0);
    p->con_upper.resize(p->con_lower.size(), 0.0);
    add_entries(added, &p->a);
}

std::shared_ptr<model> aside_recession(const model *m)
{
    std::shared_ptr<model> p = copy_of(m);

    recede(&p->con_lower, &p->con_upper, model_inf);
    recede(&p->var_lower, &p->var_upper, 1.0);
    keep_flat(m->qobj, p.get());
    for (const quad_row &q : m->qcon) keep_flat(q.terms, p.get());
    p->cones = m->cones;
    return p;
}

std::shared_ptr<model> aside_feasibility(const model *m)
{
    std::shared_ptr<model> p = copy_of(m);

    std::fill(p->c.begin(), p->c.end(), 0.0);
    p->var_type = m->var_type;
    return p;
}

std::shared_ptr<model> aside_conic_feasibility(const model *m)
{
    auto p = std::make_shared<model>(*m);
    std::fill(p->c.begin(), p->c.end(), 0.0);
    p->cfix = 0.0;
    p->qobj.clear();
    return p;
}

std::shared_ptr<model> aside_fixed(const model *m, const std::vector<double> &x)
{
    std::shared_ptr<model> p = copy_of(m);

    p->cfix = m->cfix;
    for (size_t j = 0; j < x.size(); j++)
        if (m->var_type[j] == ZLR_VAR_INT) p->var_lower[j] = p->var_upper[j] = std::round(x[j]);
    return p;
}

/* ---- what needs no engine */

struct interval {
    double lower, upper;
};

/* A column's bounds, for an integer solution the integers within them. */
static interval bounds_of(const model *m, const check_tolerances *tol, bool integers, size_t j)
{
    interval b = {m->var_lower[j], m->var_upper[j]};
    if (integers && m->var_type[j] == ZLR_VAR_INT)
        b = {std::ceil(b.lower - tol->integer), std::floor(b.upper + tol->integer)};
    return b;
}

static void set_integer_infeasible(const model *m, solution *sol)
{
    solution_reset(sol, m->num_con, m->num_var, model_num_cones(m));
    sol->defined = true;
    sol->prosta = ZLR_PRO_PRIM_INFEAS;
    sol->solsta = ZLR_SOLSTA_PRIM_INFEAS_CER;
}

static bool find_crossed(const model *m, const check_tolerances *tol, double crossed_tol, bool integers, solution *sol)
{
    for (int32_t i = 0; i < m->num_con; i++) {
        const auto at = static_cast<size_t>(i);
        if (!(m->con_lower[at] - m->con_upper[at] > crossed_tol)) continue;
        certificate_from_crossed_bounds(m, true, i, sol);
        return true;
    }
    for (int32_t j = 0; j < m->num_var; j++) {
        const auto at = static_cast<size_t>(j);
        if (m->var_lower[at] - m->var_upper[at] > crossed_tol) {
            certificate_from_crossed_bounds(m, false, j, sol);
            return true;
        }
        const interval b = bounds_of(m, tol, integers, at);
        if (!integers || b.lower <= b.upper) continue;
        set_integer_infeasible(m, sol); /* no integer between the bounds: there is no ray for that */
        return true;
    }
    return false;
}

static int32_t key_at(double x, double lower, double upper)
{
    if (lower == upper) return ZLR_SK_FIXED;
    if (x == lower) return ZLR_SK_LOWER;
    return x == upper ? ZLR_SK_UPPER : ZLR_SK_SUPBAS;
}

/* A column that no row holds goes to the end of its bounds that its cost asks for. False: there is no end. */
static bool place_column(const model *m, const check_tolerances *tol, bool integers, size_t j, solution *sol)
{
    const interval b = bounds_of(m, tol, integers, j);
    const double cost = m->sense == ZLR_SENSE_MAX ? -m->c[j] : m->c[j];
    double x = std::max(b.lower, std::min(b.upper, 0.0));

    if (cost > 0.0) x = b.lower;
    if (cost < 0.0) x = b.upper;
    if (!std::isfinite(x)) return false;
    sol->xx[j] = x;
    sol->skx[j] = key_at(x, m->var_lower[j], m->var_upper[j]);
    return true;
}

static void solve_without_matrix(const model *m, const check_tolerances *tol, bool integers, solution *sol)
{
    std::vector<double> ray(static_cast<size_t>(m->num_con), 0.0);

    for (size_t i = 0; i < ray.size(); i++) {
        if (m->con_lower[i] <= tol->primal && m->con_upper[i] >= -tol->primal) continue;
        ray[i] = 1.0;
        (void)certificate_from_dual_ray(m, tol, ray, sol);
        return;
    }
    solution_reset(sol, m->num_con, m->num_var, model_num_cones(m));
    for (size_t j = 0; j < sol->xx.size(); j++) {
        if (place_column(m, tol, integers, j, sol)) continue;
        std::vector<double> direction(sol->xx.size(), 0.0);
        const double down = (m->c[j] > 0.0) == (m->sense == ZLR_SENSE_MIN) ? -1.0 : 1.0;
        direction[j] = down;
        (void)certificate_from_primal_ray(m, tol, direction, sol);
        return;
    }
    std::fill(sol->skc.begin(), sol->skc.end(), ZLR_SK_BASIC);
    sol->defined = sol->has_keys = sol->has_primal = true;
    sol->has_dual = !integers;
    check_complete(m, tol, sol);
    const check_result found = check_solution(m, tol, integers, sol);
    if (integers)
        check_set_integer_status(tol, m->sense, &found, true, sol->primal_obj, sol);
    else
        check_set_status(tol, &found, sol);
}

bool aside_trivial(const model *m, const check_tolerances *tol, double crossed_tol, bool integers, solution *sol)
{
    const bool is_empty =
        m->a.row.empty() && m->qobj.empty() && m->qcon.empty() && m->cones.empty() && m->functions == nullptr;
    const bool crossed = find_crossed(m, tol, crossed_tol, integers, sol);

    if (!crossed && !is_empty) return false;
    if (!crossed) solve_without_matrix(m, tol, integers, sol);
    if (!integers || (sol->solsta != ZLR_SOLSTA_PRIM_INFEAS_CER && sol->solsta != ZLR_SOLSTA_DUAL_INFEAS_CER))
        return true;
    /* An integer solution has a status and no ray. */
    const int32_t prosta = sol->prosta, solsta = sol->solsta;
    solution_reset(sol, m->num_con, m->num_var, model_num_cones(m));
    sol->defined = true;
    sol->prosta = prosta;
    sol->solsta = solsta;
    return true;
}
