/* polish_rows.cpp - see polish.h: problems with quadratic rows.
 *
 * At the point and multipliers at hand the rows are replaced by their tangents and the objective gets the Hessian of the
 * Lagrangian: a problem with linear rows, which is polished as such. Its solution is a step of Newton's method on the
 * optimality conditions, so that two or three of them take an answer with six digits to all of them (sequential quadratic
 * programming: Nocedal and Wright, Numerical Optimization, 2nd edition, section 18.1). */
#include "solver/engines/gradient.h"
#include "solver/engines/polish.h"

#include <algorithm>
#include <cmath>

/* One entry of the tangents' matrix. */
struct tangent_entry {
    int32_t column, row;
    double value;
};

static bool entry_before(const tangent_entry &a, const tangent_entry &b)
{
    return a.column != b.column ? a.column < b.column : a.row < b.row;
}

static void set_matrix(const model *m, const std::vector<tangent_entry> &extra, model *tangent)
{
    std::vector<tangent_entry> all;
    all.reserve(m->a.row.size() + extra.size());
    for (int32_t j = 0; j < m->num_var; ++j)
        for (auto k = static_cast<size_t>(m->a.start[static_cast<size_t>(j)]);
             k < static_cast<size_t>(m->a.start[static_cast<size_t>(j) + 1]); ++k)
            all.push_back({j, m->a.row[k], m->a.value[k]});
    all.insert(all.end(), extra.begin(), extra.end());
    std::stable_sort(all.begin(), all.end(), entry_before);

    tangent->a = sparse_columns{};
    tangent->a.start.assign(static_cast<size_t>(m->num_var) + 1, 0);
    for (size_t k = 0; k < all.size();) {
        double sum = 0.0;
        const size_t first = k;
        for (; k < all.size() && !entry_before(all[first], all[k]); ++k) sum += all[k].value;
        if (sum == 0.0) continue;
        tangent->a.row.push_back(all[first].row);
        tangent->a.value.push_back(sum);
        ++tangent->a.start[static_cast<size_t>(all[first].column) + 1];
    }
    for (size_t j = 1; j < tangent->a.start.size(); ++j) tangent->a.start[j] += tangent->a.start[j - 1];
}

/* The problem with linear rows that touches `m` at a point and its multipliers. */
static model tangent_problem(const model *m, const solution *at)
{
    model tangent = *m;
    std::vector<tangent_entry> extra;
    std::vector<double> product(at->xx.size(), 0.0);
    tangent.qcon.clear();
    for (const quad_row &q : m->qcon) {
        const auto i = static_cast<size_t>(q.row);
        std::vector<int32_t> touched;
        for (const quad_term &t : q.terms) {
            touched.push_back(t.i);
            touched.push_back(t.j);
            tangent.qobj.push_back({t.i, t.j, -at->y[i] * t.value});
        }
        std::sort(touched.begin(), touched.end());
        touched.erase(std::unique(touched.begin(), touched.end()), touched.end());
        quad_add_product(q.terms, at->xx.data(), 1.0, product.data());
        double half = 0.0;
        for (const int32_t column : touched) {
            const auto j = static_cast<size_t>(column);
            extra.push_back({column, q.row, product[j]});
            tangent.c[j] += at->y[i] * product[j];
            half += 0.5 * product[j] * at->xx[j];
            product[j] = 0.0;
        }
        tangent.con_lower[i] += half;
        tangent.con_upper[i] += half;
    }
    quad_normalise(&tangent.qobj);
    set_matrix(m, extra, &tangent);
    return tangent;
}

static bool step(const model *m, const check_tolerances *tol, const polish_limits *limits, work_effort *effort,
                 solution *at)
{
    const model tangent = tangent_problem(m, at);
    solution made;
    solution_reset(&made, m->num_con, m->num_var);
    made.has_primal = made.has_dual = true;
    made.xx = at->xx;
    made.y = at->y;
    check_complete(&tangent, tol, &made);
    check_result found = check_solution(&tangent, tol, false, &made);
    made.defined = true;
    check_set_status(tol, &found, &made);
    polish_solution(&tangent, tol, limits, effort, &made, &found);
    if (made.xx == at->xx && made.y == at->y) return false;
    at->xx = made.xx;
    at->y = made.y;
    return true;
}

void polish_quadratic_rows(const model *m, const check_tolerances *tol, const polish_limits *limits,
                           work_effort *effort, solution *sol, check_result *found)
{
    constexpr int32_t max_steps = 6;
    if (!sol->has_primal || !sol->has_dual || m->qcon.empty() || !m->cones.empty()) return;
    solution at = *sol;
    for (int32_t k = 0; k < max_steps && !effort_is_over(effort); ++k) {
        if (!step(m, tol, limits, effort, &at)) return;
        solution made;
        solution_reset(&made, m->num_con, m->num_var);
        made.has_primal = made.has_dual = true;
        made.xx = at.xx;
        made.y = at.y;
        check_complete(m, tol, &made);
        const check_result now = check_solution(m, tol, false, &made);
        if (!polish_is_better(&now, &made, found, sol)) {
            if (k > 1) return; /* the first steps may go up before they come down */
            continue;
        }
        made.skc = sol->skc;
        made.skx = sol->skx;
        made.defined = true;
        check_set_status(tol, &now, &made);
        *sol = made;
        *found = now;
    }
}
