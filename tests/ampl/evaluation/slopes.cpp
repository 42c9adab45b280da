/* slopes.cpp - see slopes.h. */
#include "ampl/evaluation/slopes.h"

#include <algorithm>
#include <cmath>

/* Slopes along a direction: by differences, by derivatives, and the size of the terms that the latter is the sum of. */
struct slope {
    double by_difference = 0.0, by_derivative = 0.0, terms = 0.0;
};

/* All that is compared along one direction. */
struct slopes {
    bool has_values = false;
    slope objective;
    std::vector<slope> rows, lagrangian; /* the latter by columns */
};

static std::vector<double> moved(const std::vector<double> &x, const std::vector<double> &d, double by)
{
    std::vector<double> to = x;
    for (size_t j = 0; j < to.size(); ++j) to[j] += by * d[j];
    return to;
}

static void add_term(slope *s, double term)
{
    s->by_derivative += term;
    s->terms += std::fabs(term);
}

/* By differences over h and over half of it, whose errors of second order cancel. */
static double difference(const double *above, const double *below, const double *near_above, const double *near_below,
                         double h)
{
    return (8 * (*near_above - *near_below) - (*above - *below)) / (6 * h);
}

static bool is_known(const point_values *values, size_t num)
{
    for (size_t k = 0; k < num; ++k)
        if (values[k].code != 0) return false;
    return true;
}

static void add_derivatives(const stub_callbacks &c, const point_values &at, const std::vector<double> &d, slopes *s)
{
    for (size_t j = 0; j < d.size(); ++j) add_term(&s->objective, at.gradient[j] * d[j]);
    for (size_t i = 0; i < at.rows.size(); ++i)
        for (size_t p = 0; p < c.row_columns[i].size(); ++p)
            add_term(&s->rows[i], at.row_gradients[i][p] * d[static_cast<size_t>(c.row_columns[i][p])]);
    for (size_t p = 0; p < c.hes_i.size(); ++p) {
        const auto i = static_cast<size_t>(c.hes_i[p]);
        const auto j = static_cast<size_t>(c.hes_j[p]);
        add_term(&s->lagrangian[i], at.hessian[p] * d[j]);
        if (i != j) add_term(&s->lagrangian[j], at.hessian[p] * d[i]);
    }
}

static slopes slopes_along(const stub_callbacks &c, const std::vector<double> &x, const point_values &at,
                           const std::vector<double> &d, double h, double weight, const std::vector<double> &y)
{
    slopes s;
    point_values v[4];
    const double steps[] = {h, -h, h / 2, -h / 2};
    for (size_t k = 0; k < 4; ++k) v[k] = derivatives_at(c, moved(x, d, steps[k]), weight, y);
    s.has_values = is_known(v, 4);
    if (!s.has_values) return s;
    s.objective.by_difference = difference(&v[0].objective, &v[1].objective, &v[2].objective, &v[3].objective, h);
    s.rows.resize(at.rows.size());
    for (size_t i = 0; i < at.rows.size(); ++i)
        s.rows[i].by_difference = difference(&v[0].rows[i], &v[1].rows[i], &v[2].rows[i], &v[3].rows[i], h);
    s.lagrangian.resize(x.size());
    for (size_t j = 0; j < x.size(); ++j)
        s.lagrangian[j].by_difference =
            difference(&v[0].lagrangian[j], &v[1].lagrangian[j], &v[2].lagrangian[j], &v[3].lagrangian[j], h);
    add_derivatives(c, at, d, &s);
    return s;
}

/* How far the two are apart, where `size` is that of the function, whose rounding the division by h blows up. */
static double distance(const slope &s, double size, double h)
{
    const double scale = 1.0 + s.terms + std::fabs(s.by_difference);
    const double rounding = 1e-14 * size / h;
    return std::max(0.0, std::fabs(s.by_difference - s.by_derivative) - rounding) / scale;
}

/* The worst of all functions along d, at the step that suits each best: a long one for what is flat, a short one for what
 * is steep. */
static double worst_distance(const stub_callbacks &c, const std::vector<double> &x, const point_values &at,
                             const std::vector<double> &d, double weight, const std::vector<double> &y,
                             bool *has_values)
{
    std::vector<double> best;
    for (const double h : {1e-3, 1e-5, 1e-7}) {
        const slopes s = slopes_along(c, x, at, d, h, weight, y);
        if (!s.has_values) continue;
        *has_values = true;
        std::vector<double> found = {distance(s.objective, std::fabs(at.objective), h)};
        for (size_t i = 0; i < s.rows.size(); ++i) found.push_back(distance(s.rows[i], std::fabs(at.rows[i]), h));
        for (size_t j = 0; j < s.lagrangian.size(); ++j)
            found.push_back(distance(s.lagrangian[j], std::fabs(at.lagrangian[j]), h));
        if (best.empty()) best = found;
        for (size_t k = 0; k < best.size(); ++k) best[k] = std::min(best[k], found[k]);
    }
    return best.empty() ? 0.0 : *std::max_element(best.begin(), best.end());
}

slope_check check_slopes(const stub_callbacks &c, const std::vector<double> &x, double weight,
                         const std::vector<double> &y)
{
    slope_check check;
    const size_t num = x.size();
    const point_values at = derivatives_at(c, x, weight, y);
    for (size_t k = 0; k < 6 && at.code == 0; ++k) {
        std::vector<double> d(num, 0.0);
        const size_t chosen = k * (num / 3 + 1) % num;
        for (size_t j = 0; j < num; ++j)
            if (k >= 3 || j == chosen) d[j] = ((j + k) % 3 == 0 ? 1.0 : -0.7) * (1.0 + std::fabs(x[j]));
        const double found = worst_distance(c, x, at, d, weight, y, &check.has_values);
        if (found <= check.worst) continue;
        check.worst = found;
        check.direction = k;
    }
    return check;
}
