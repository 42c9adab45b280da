/* polish.cpp - see polish.h. */
#include "solver/engines/polish.h"
#include "solver/conic/counted_ldlt.h"
#include "solver/engines/gap.h"
#include "solver/engines/gradient.h"

#include <algorithm>
#include <cmath>

typedef Eigen::SparseMatrix<double> matrix;
typedef Eigen::VectorXd column_vector;

enum standing : int8_t { STANDS_FREE, STANDS_LOWER, STANDS_UPPER };

/* A value, its multiplier as for a minimisation, and its sides. */
struct standing_value {
    double value, multiplier, lower, upper;
};

struct active_set {
    std::vector<standing> column, row;
    bool operator==(const active_set &) const = default;
};

static constexpr double good_enough = 1e-6; /* of what is allowed */
static constexpr double good_residual = 1e-7;
static constexpr double far_off = 1e4;
static constexpr double entry_steps = 200.0; /* a round's, by the entry of the problem */
static constexpr double order_steps = 300.0; /* by the entry of the system, to order its columns */
static constexpr double refine_steps = 4.0;  /* by the entry of the factor */
static constexpr double shift = 1e-8;        /* makes the scaled system quasidefinite; refinement takes it out again */

/* Where a value with its multiplier (as for a minimisation) stands: what is smaller, slack or multiplier, is taken for 0.
 * They have units of their own: `weight` is how many of the one are taken for one of the other. */
static standing guess(const standing_value &v, double weight)
{
    if (v.lower == v.upper) return STANDS_LOWER;
    const double size = weight * std::max(1.0, std::fabs(v.value));
    if (v.multiplier > 0.0 && v.value - v.lower < v.multiplier * size) return STANDS_LOWER;
    if (v.multiplier < 0.0 && v.upper - v.value < -v.multiplier * size) return STANDS_UPPER;
    return STANDS_FREE;
}

/* The same after a step: a multiplier of the wrong sign lets go, a side that is broken holds. */
static standing correct(standing now, const standing_value &v)
{
    constexpr double tiny = 1e-11;
    const double room = tiny * std::max(1.0, std::fabs(v.value));
    if (v.lower == v.upper) return STANDS_LOWER;
    if (now == STANDS_LOWER) return v.multiplier < 0.0 ? STANDS_FREE : STANDS_LOWER;
    if (now == STANDS_UPPER) return v.multiplier > 0.0 ? STANDS_FREE : STANDS_UPPER;
    if (v.value < v.lower - room) return STANDS_LOWER;
    return v.value > v.upper + room ? STANDS_UPPER : STANDS_FREE;
}

static double sign_of(const model *m) { return m->sense == ZLR_SENSE_MAX ? -1.0 : 1.0; }

template <class rule_type> static active_set stand(const model *m, const solution *sol, rule_type rule)
{
    const double sign = sign_of(m);
    active_set set;
    set.column.resize(sol->xx.size());
    set.row.resize(sol->y.size());
    const std::vector<reduced_cost> d = gradient_reduced_costs(m, nullptr, sol);
    for (size_t j = 0; j < set.column.size(); j++)
        set.column[j] = rule(false, j, standing_value{sol->xx[j], sign * d[j].value, m->var_lower[j], m->var_upper[j]});
    for (size_t i = 0; i < set.row.size(); i++)
        set.row[i] = rule(true, i, standing_value{sol->xc[i], sign * sol->y[i], m->con_lower[i], m->con_upper[i]});
    return set;
}

/* ---- the system: free columns first, then the rows that hold */

struct kkt_system {
    std::vector<int32_t> column_place, row_place; /* -1: not in it */
    Eigen::Index num_columns = 0, size = 0;
    matrix k;              /* lower triangle, scaled on both sides */
    column_vector scaling; /* of rows and columns alike */
};

static void place(const active_set *set, kkt_system *s)
{
    s->column_place.assign(set->column.size(), -1);
    s->row_place.assign(set->row.size(), -1);
    for (size_t j = 0; j < set->column.size(); j++)
        if (set->column[j] == STANDS_FREE) s->column_place[j] = static_cast<int32_t>(s->size++);
    s->num_columns = s->size;
    for (size_t i = 0; i < set->row.size(); i++)
        if (set->row[i] != STANDS_FREE) s->row_place[i] = static_cast<int32_t>(s->size++);
}

static std::vector<Eigen::Triplet<double>> entries_of(const model *m, const kkt_system *s)
{
    const double sign = sign_of(m);
    std::vector<Eigen::Triplet<double>> entries;
    for (const quad_term &t : m->qobj) {
        const int32_t i = s->column_place[static_cast<size_t>(t.i)], j = s->column_place[static_cast<size_t>(t.j)];
        if (i >= 0 && j >= 0) entries.emplace_back(std::max(i, j), std::min(i, j), sign * t.value);
    }
    for (size_t j = 0; j < s->column_place.size(); j++) {
        if (s->column_place[j] < 0) continue;
        for (auto k = static_cast<size_t>(m->a.start[j]); k < static_cast<size_t>(m->a.start[j + 1]); k++) {
            const int32_t i = s->row_place[static_cast<size_t>(m->a.row[k])];
            if (i >= 0) entries.emplace_back(i, s->column_place[j], m->a.value[k]);
        }
    }
    for (Eigen::Index i = 0; i < s->size; i++) entries.emplace_back(i, i, 0.0); /* room for the shift */
    return entries;
}

/* Scales so that the largest entry of each row is about 1. */
static void scale(kkt_system *s)
{
    constexpr int32_t passes = 5;
    s->scaling = column_vector::Ones(s->size);
    for (int32_t pass = 0; pass < passes; pass++) {
        column_vector largest = column_vector::Zero(s->size);
        for (Eigen::Index j = 0; j < s->size; j++)
            for (matrix::InnerIterator it(s->k, j); it; ++it) {
                largest[it.row()] = std::max(largest[it.row()], std::fabs(it.value()));
                largest[j] = std::max(largest[j], std::fabs(it.value()));
            }
        for (double &v : largest) v = v > 0.0 ? 1.0 / std::sqrt(v) : 1.0;
        s->k = largest.asDiagonal() * s->k * largest.asDiagonal();
        s->scaling = s->scaling.cwiseProduct(largest);
    }
}

static column_vector right_side(const model *m, const active_set *set, const kkt_system *s,
                                const std::vector<double> &x)
{
    const double sign = sign_of(m);
    std::vector<exact_sum> sum(static_cast<size_t>(s->size));
    column_vector b(s->size);
    const auto add = [&](int32_t at, double value, size_t column) {
        if (at >= 0 && s->column_place[column] < 0) sum[static_cast<size_t>(at)].add_product(-value, x[column]);
    };

    for (const quad_term &t : m->qobj) {
        const auto i = static_cast<size_t>(t.i), j = static_cast<size_t>(t.j);
        add(s->column_place[i], sign * t.value, j);
        if (i != j) add(s->column_place[j], sign * t.value, i);
    }
    for (size_t j = 0; j < x.size(); j++) {
        if (s->column_place[j] >= 0) sum[static_cast<size_t>(s->column_place[j])].add(-sign * m->c[j]);
        for (auto k = static_cast<size_t>(m->a.start[j]); k < static_cast<size_t>(m->a.start[j + 1]); k++)
            add(s->row_place[static_cast<size_t>(m->a.row[k])], m->a.value[k], j);
    }
    for (size_t i = 0; i < set->row.size(); i++)
        if (s->row_place[i] >= 0)
            sum[static_cast<size_t>(s->row_place[i])].add(set->row[i] == STANDS_LOWER ? m->con_lower[i]
                                                                                      : m->con_upper[i]);
    for (Eigen::Index i = 0; i < s->size; i++) b[i] = sum[static_cast<size_t>(i)].value();
    return b;
}

/* b - K z, exact but for the rounding of the result: what refinement goes by. */
static column_vector residual(const kkt_system *s, const column_vector &b, const column_vector &z)
{
    std::vector<exact_sum> sum(static_cast<size_t>(s->size));
    column_vector r(s->size);

    for (Eigen::Index j = 0; j < s->size; j++)
        for (matrix::InnerIterator it(s->k, j); it; ++it) {
            sum[static_cast<size_t>(it.row())].add_product(-it.value(), z[j]);
            if (it.row() != j) sum[static_cast<size_t>(j)].add_product(-it.value(), z[it.row()]);
        }
    for (Eigen::Index i = 0; i < s->size; i++) {
        sum[static_cast<size_t>(i)].add(b[i]);
        r[i] = sum[static_cast<size_t>(i)].value();
    }
    return r;
}

/* Solves the scaled system from *z on, which is near a solution: where there is none, or more than one, it stays near.
 * False where the factors cost too much or fail. */
static bool solve(const kkt_system *s, const column_vector &b, double max_operations, work_effort *effort,
                  column_vector *z)
{
    constexpr int32_t max_refinements = 40;
    counted_ldlt<matrix> factor;
    matrix shifted = s->k;

    if (s->size == 0) return true;
    for (Eigen::Index i = 0; i < s->size; i++) shifted.coeffRef(i, i) += i < s->num_columns ? shift : -shift;
    if (!effort_take(effort, order_steps * static_cast<double>(shifted.nonZeros()))) return false;
    factor.analyzePattern(shifted);
    if (factor.operations() > max_operations || !effort_take(effort, 2.0 * factor.operations())) return false;
    factor.factorize(shifted);
    if (factor.info() != Eigen::Success) return false;
    column_vector r = residual(s, b, *z);
    double last = r.lpNorm<Eigen::Infinity>();
    const auto entries = static_cast<double>(factor.matrixL().nestedExpression().nonZeros());
    for (int32_t k = 0; k < max_refinements && effort_take(effort, refine_steps * entries); k++) {
        const column_vector step = *z + factor.solve(r);
        const column_vector rest = residual(s, b, step);
        const double size = rest.lpNorm<Eigen::Infinity>();
        if (!(size < last)) break;
        *z = step;
        r = rest;
        const bool is_slow = size > 0.9 * last;
        last = size;
        if (is_slow || size <= 1e-16 * b.lpNorm<Eigen::Infinity>()) break;
    }
    return z->allFinite();
}

/* The point and multipliers where the set holds as equations. */
static bool solve_at(const model *m, const active_set *set, const solution *from, double max_operations,
                     work_effort *effort, std::vector<double> *x, std::vector<double> *y)
{
    kkt_system s;
    column_vector z;

    *x = from->xx;
    for (size_t j = 0; j < x->size(); j++) {
        if (set->column[j] == STANDS_LOWER) (*x)[j] = m->var_lower[j];
        if (set->column[j] == STANDS_UPPER) (*x)[j] = m->var_upper[j];
    }
    place(set, &s);
    const std::vector<Eigen::Triplet<double>> entries = entries_of(m, &s);
    s.k.resize(s.size, s.size);
    s.k.setFromTriplets(entries.begin(), entries.end());
    scale(&s);
    const column_vector b = right_side(m, set, &s, *x).cwiseProduct(s.scaling);
    z.resize(s.size);
    for (size_t j = 0; j < x->size(); j++)
        if (s.column_place[j] >= 0) z[s.column_place[j]] = from->xx[j];
    for (size_t i = 0; i < set->row.size(); i++)
        if (s.row_place[i] >= 0) z[s.row_place[i]] = -sign_of(m) * from->y[i];
    z = z.cwiseQuotient(s.scaling);
    if (!solve(&s, b, max_operations, effort, &z)) return false;
    z = z.cwiseProduct(s.scaling);
    y->assign(set->row.size(), 0.0);
    for (size_t j = 0; j < x->size(); j++)
        if (s.column_place[j] >= 0) (*x)[j] = z[s.column_place[j]];
    for (size_t i = 0; i < y->size(); i++)
        if (s.row_place[i] >= 0) (*y)[i] = -sign_of(m) * z[s.row_place[i]];
    return true;
}

bool polish_is_better(const check_result *a, const solution *a_sol, const check_result *b, const solution *b_sol)
{
    if (polish_ratio(a) > 1.0 || polish_ratio(b) > 1.0) return polish_ratio(a) < polish_ratio(b);
    return check_largest_residual(a_sol) < check_largest_residual(b_sol);
}

static bool is_good(const check_result *found, const solution *sol)
{
    return polish_ratio(found) <= good_enough && check_largest_residual(sol) <= good_residual;
}

/* The system and its scaling, and the check of what comes out of it. */
static double round_steps(const model *m)
{
    return entry_steps * static_cast<double>(m->a.row.size() + m->qobj.size() + m->c.size() + m->con_lower.size());
}

/* Where a gap is what is left, and so small a share of the objective that the point is not to be blamed for it. */
static void close_gap(const model *m, const check_tolerances *tol, solution *sol, check_result *found)
{
    constexpr double allowed = 5e-7; /* for the other residuals */
    constexpr double largest_share = 1e-10;
    const double gap = std::fabs(sol->primal_obj - sol->dual_obj);
    if (gap <= good_residual || gap > largest_share * check_objective_size(m, sol)) return;
    if (std::max({sol->check.row, sol->check.bound, sol->check.dual}) > allowed) return;
    gap_close(m, tol, allowed, sol, found);
}

/* One guess and its corrections. */
static void polish_from(const model *m, const check_tolerances *tol, const polish_limits *limits, active_set set,
                        work_effort *effort, solution *sol, check_result *found)
{
    solution from = *sol;
    for (int32_t k = 0; k < limits->max_rounds && !is_good(found, sol); k++) {
        solution made;
        solution_reset(&made, m->num_con, m->num_var);
        made.has_primal = made.has_dual = true;
        if (!effort_take(effort, round_steps(m)) ||
            !solve_at(m, &set, &from, limits->max_operations, effort, &made.xx, &made.y))
            return;
        check_complete(m, tol, &made);
        check_result at = check_solution(m, tol, false, &made);
        close_gap(m, tol, &made, &at);
        if (polish_is_better(&at, &made, found, sol)) {
            made.skc = sol->skc;
            made.skx = sol->skx;
            made.defined = true;
            check_set_status(tol, &at, &made);
            *sol = made;
            *found = at;
        }
        const active_set next = stand(m, &made, [&](bool is_row, size_t place, const standing_value &v) {
            return correct((is_row ? set.row : set.column)[place], v);
        });
        if (next == set) return;
        set = next;
        /* Where the equations contradict each other the point is thrown far off: back to the answer. */
        from = polish_ratio(&at) < far_off ? made : *sol;
    }
}

void polish_solution(const model *m, const check_tolerances *tol, const polish_limits *limits, work_effort *effort,
                     solution *sol, check_result *found)
{
    if (!sol->has_primal || !sol->has_dual || !m->qcon.empty() || !m->cones.empty()) return;
    const solution answer = *sol;
    int32_t num = 0;
    for (const double weight : {1.0, 1e3, 1e-3, 30.0, 0.03, 1e5, 1e-5}) {
        if (num++ >= limits->num_guesses) break;
        if (is_good(found, sol) || !effort_take(effort, round_steps(m))) return;
        const active_set set =
            stand(m, &answer, [&](bool, size_t, const standing_value &v) { return guess(v, weight); });
        polish_from(m, tol, limits, set, effort, sol, found);
    }
    close_gap(m, tol, sol, found);
}
