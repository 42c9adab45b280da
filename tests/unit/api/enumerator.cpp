/* enumerator.cpp - see enumerator.h.
 *
 * Continuous problems: a polyhedron cut by the coordinate planes falls into pieces without lines, so each nonempty piece
 * has a vertex, which lies on num_var independent planes out of: row sides, bound sides, coordinate planes. Trying every
 * choice of planes finds all of them. The problem is unbounded when it is feasible and its recession cone, cut by a box,
 * has a vertex that improves the objective. */
#include "enumerator.h"

#include <cstdlib>
#include <numeric>
#include <optional>

/* A rational point: num / den, den > 0. */
struct exact_point {
    std::vector<int64_t> num;
    int64_t den;
};

/* Solves the square system by Bareiss elimination, which keeps every number an integer. False: singular. */
static bool solve_square(std::vector<std::vector<int64_t>> m, exact_point *point)
{
    const size_t n = m.size();
    int64_t previous = 1;
    for (size_t k = 0; k < n; ++k) {
        size_t pivot = k;
        while (pivot < n && m[pivot][k] == 0) ++pivot;
        if (pivot == n) return false;
        std::swap(m[pivot], m[k]);
        for (size_t i = 0; i < n; ++i) {
            if (i == k) continue;
            for (size_t j = k + 1; j <= n; ++j) m[i][j] = (m[i][j] * m[k][k] - m[i][k] * m[k][j]) / previous;
            m[i][k] = 0;
        }
        previous = m[k][k];
        for (size_t i = 0; i < k; ++i) m[i][i] = previous;
    }
    point->den = std::abs(previous);
    point->num.resize(n);
    for (size_t i = 0; i < n; ++i) point->num[i] = previous > 0 ? m[i][n] : -m[i][n];
    return true;
}

static int64_t dot(const std::vector<int64_t> &a, const std::vector<int64_t> &b)
{
    return std::inner_product(a.begin(), a.end(), b.begin(), int64_t{0});
}

static bool inside(const std::vector<exact_half> &halves, const exact_point &point)
{
    for (const exact_half &h : halves)
        if (dot(h.a, point.num) < h.b * point.den) return false;
    return true;
}

/* The vertex with the least c'x among those inside; none if there is no vertex. */
static std::optional<exact_point> best_vertex(const std::vector<exact_half> &halves, const std::vector<int64_t> &c)
{
    const size_t n = c.size();
    std::vector<exact_half> planes = halves;
    for (size_t j = 0; j < n; ++j) {
        exact_half plane = {std::vector<int64_t>(n, 0), 0};
        plane.a[j] = 1;
        planes.push_back(plane);
    }

    std::optional<exact_point> best;
    std::vector<size_t> pick(n);
    std::iota(pick.begin(), pick.end(), size_t{0});
    for (bool more = n <= planes.size(); more;) {
        std::vector<std::vector<int64_t>> system;
        for (size_t k : pick) {
            system.push_back(planes[k].a);
            system.back().push_back(planes[k].b);
        }
        exact_point point;
        if (solve_square(std::move(system), &point) && inside(halves, point) &&
            (!best || dot(c, point.num) * best->den < dot(c, best->num) * point.den))
            best = point;

        size_t at = n; /* the next choice in lexicographic order */
        while (at > 0 && pick[at - 1] == planes.size() - n + at - 1) --at;
        more = at > 0;
        if (more) {
            ++pick[at - 1];
            for (size_t k = at; k < n; ++k) pick[k] = pick[k - 1] + 1;
        }
    }
    return best;
}

static void add_sides(std::vector<exact_half> *halves, const std::vector<int64_t> &a, int64_t lower, int64_t upper)
{
    if (lower != -exact_none) halves->push_back({a, lower});
    if (upper != exact_none) {
        std::vector<int64_t> minus = a;
        for (int64_t &v : minus) v = -v;
        halves->push_back({minus, -upper});
    }
}

/* The continuous problem min c'x inside `halves`; the objective comes back as a fraction. */
static exact_status solve_continuous(const std::vector<exact_half> &halves, const std::vector<int64_t> &c,
                                     double *objective)
{
    const size_t n = c.size();
    if (n == 0) {
        *objective = 0.0;
        return inside(halves, {{}, 1}) ? EXACT_OPTIMAL : EXACT_INFEASIBLE;
    }
    const std::optional<exact_point> vertex = best_vertex(halves, c);
    if (!vertex) return EXACT_INFEASIBLE;

    std::vector<exact_half> cone = halves;
    for (exact_half &h : cone) h.b = 0;
    for (size_t j = 0; j < n; ++j) {
        std::vector<int64_t> unit(n, 0);
        unit[j] = 1;
        add_sides(&cone, unit, -1, 1);
    }
    const std::optional<exact_point> ray = best_vertex(cone, c);
    if (ray && dot(c, ray->num) < 0) return EXACT_UNBOUNDED;
    *objective = static_cast<double>(dot(c, vertex->num)) / static_cast<double>(vertex->den);
    return EXACT_OPTIMAL;
}

/* With the integer columns fixed at `fixed`, what is left is continuous. */
static exact_status solve_fixed(const exact_problem *p, const std::vector<int64_t> &fixed, double *objective)
{
    const auto n = static_cast<size_t>(p->num_var);
    std::vector<int64_t> c;
    int64_t constant = 0;
    for (size_t j = 0; j < n; ++j) {
        if (p->is_int[j])
            constant += p->c[j] * fixed[j];
        else
            c.push_back(p->maximise ? -p->c[j] : p->c[j]);
    }

    std::vector<exact_half> halves;
    const auto add = [&](const std::vector<int64_t> &full, int64_t lower, int64_t upper) {
        std::vector<int64_t> a;
        int64_t shift = 0;
        for (size_t j = 0; j < n; ++j) {
            if (p->is_int[j])
                shift += full[j] * fixed[j];
            else
                a.push_back(full[j]);
        }
        add_sides(&halves, a, lower == -exact_none ? lower : lower - shift,
                  upper == exact_none ? upper : upper - shift);
    };
    for (size_t i = 0; i < p->row.size(); ++i) add(p->row[i], p->row_lower[i], p->row_upper[i]);
    for (size_t j = 0; j < n; ++j) {
        std::vector<int64_t> unit(n, 0);
        unit[j] = 1;
        add(unit, p->var_lower[j], p->var_upper[j]);
    }

    const exact_status status = solve_continuous(halves, c, objective);
    *objective = (p->maximise ? -*objective : *objective) + static_cast<double>(constant);
    return status;
}

exact_answer exact_solve(const exact_problem *p)
{
    const auto n = static_cast<size_t>(p->num_var);
    std::vector<int64_t> point(n, 0);
    exact_answer best = {EXACT_INFEASIBLE, 0.0};
    for (size_t j = 0; j < n; ++j)
        if (p->is_int[j]) point[j] = p->var_lower[j];

    for (;;) {
        double objective = 0.0;
        const exact_status status = solve_fixed(p, point, &objective);
        if (status == EXACT_UNBOUNDED) return {EXACT_UNBOUNDED, 0.0};
        const bool better = p->maximise ? objective > best.objective : objective < best.objective;
        if (status == EXACT_OPTIMAL && (best.status == EXACT_INFEASIBLE || better)) best = {EXACT_OPTIMAL, objective};

        size_t j = 0; /* the next integer point, as an odometer counts */
        for (; j < n; ++j) {
            if (!p->is_int[j]) continue;
            if (++point[j] <= p->var_upper[j]) break;
            point[j] = p->var_lower[j];
        }
        if (j == n) return best;
    }
}
