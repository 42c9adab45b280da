/* ipopt_support.h - what tests of the Ipopt module share: the module, problems coded by hand, a watch on how their functions are
 * called, the optimality conditions of an answer. */
#pragma once

#include "solver/engines/engine.h"

#include <algorithm>
#include <cmath>
#include <dlfcn.h>
#include <functional>
#include <gtest/gtest.h>
#include <limits>

inline constexpr double no_bound = std::numeric_limits<double>::infinity();

/* A problem with its functions; arrays as smooth_calls has them. */
struct smooth_case {
    const char *name;
    smooth_problem problem;
    std::vector<double> start;
    double (*objective)(const double *x);
    void (*gradient)(const double *x, double *value);
    void (*rows)(const double *x, double *value);
    void (*jacobian)(const double *x, double *value);
    void (*hessian)(const double *x, double weight, const double *lambda, double *value);
};

enum call_kind { CALL_OBJECTIVE, CALL_GRADIENT, CALL_ROWS, CALL_JACOBIAN, CALL_HESSIAN, num_call_kinds };

enum call_fault { FAULT_NONE, FAULT_FALSE, FAULT_NAN, FAULT_INF };

/* What stands behind the calls of one solve. It holds the engine to what it promises of them. */
struct smooth_watch {
    const smooth_case *c = nullptr;
    int count[num_call_kinds] = {};
    std::vector<smooth_news> news;
    std::vector<double> last_x;
    std::vector<double> jacobian_x; /* where the engine stands */
    bool wants_new = true;          /* the first call must be told as new */
    std::function<call_fault(call_kind kind, const double *x)> fault;
    std::function<bool(const smooth_news &news)> go_on;
};

inline call_fault enter_call(smooth_watch *w, call_kind kind, const double *x, bool is_new)
{
    const std::vector<double> here(x, x + w->c->problem.num_var);
    if (w->wants_new || here != w->last_x) {
        EXPECT_TRUE(is_new) << "call of kind " << kind;
    }
    w->wants_new = false;
    w->last_x = here;
    w->count[kind]++;
    return w->fault ? w->fault(kind, x) : FAULT_NONE;
}

/* The last value is spoiled: one that is looked at in sums only would show. */
inline bool leave_call(call_fault fault, double *value, size_t num)
{
    if (fault == FAULT_NAN && num > 0) value[num - 1] = std::numeric_limits<double>::quiet_NaN();
    if (fault == FAULT_INF && num > 0) value[num - 1] = no_bound;
    return fault != FAULT_FALSE;
}

inline smooth_calls calls_of(smooth_watch *w)
{
    smooth_calls calls;
    calls.handle = w;
    calls.objective = [](void *h, const double *x, bool is_new, double *value) {
        auto *watch = static_cast<smooth_watch *>(h);
        const call_fault fault = enter_call(watch, CALL_OBJECTIVE, x, is_new);
        *value = watch->c->objective(x);
        return leave_call(fault, value, 1);
    };
    calls.gradient = [](void *h, const double *x, bool is_new, double *value) {
        auto *watch = static_cast<smooth_watch *>(h);
        const call_fault fault = enter_call(watch, CALL_GRADIENT, x, is_new);
        watch->c->gradient(x, value);
        return leave_call(fault, value, static_cast<size_t>(watch->c->problem.num_var));
    };
    calls.rows = [](void *h, const double *x, bool is_new, double *value) {
        auto *watch = static_cast<smooth_watch *>(h);
        const call_fault fault = enter_call(watch, CALL_ROWS, x, is_new);
        watch->c->rows(x, value);
        return leave_call(fault, value, static_cast<size_t>(watch->c->problem.num_con));
    };
    calls.jacobian = [](void *h, const double *x, bool is_new, double *value) {
        auto *watch = static_cast<smooth_watch *>(h);
        const call_fault fault = enter_call(watch, CALL_JACOBIAN, x, is_new);
        watch->jacobian_x = watch->last_x;
        watch->c->jacobian(x, value);
        return leave_call(fault, value, watch->c->problem.jac_row.size());
    };
    calls.hessian = [](void *h, const double *x, bool is_new, double weight, const double *lambda, double *value) {
        auto *watch = static_cast<smooth_watch *>(h);
        const call_fault fault = enter_call(watch, CALL_HESSIAN, x, is_new);
        watch->c->hessian(x, weight, lambda, value);
        return leave_call(fault, value, watch->c->problem.hes_row.size());
    };
    calls.iterate = [](void *h, const smooth_news *news) {
        auto *watch = static_cast<smooth_watch *>(h);
        watch->news.push_back(*news);
        return !watch->go_on || watch->go_on(*news);
    };
    return calls;
}

class ipopt : public testing::Test
{
protected:
    void SetUp() override
    {
        void *module = dlopen(ZELOR_IPOPT_MODULE, RTLD_LAZY | RTLD_LOCAL); /* never unloaded, as by the library */
        ASSERT_NE(module, nullptr) << dlerror();
        adapter = static_cast<const engine_adapter *>(dlsym(module, "zelor_engine"));
        ASSERT_NE(adapter, nullptr);
        ASSERT_EQ(adapter->abi, engine_abi);
        ASSERT_NE(adapter->solve_smooth, nullptr);
    }

    smooth_answer run(const smooth_case &c, smooth_watch *watch, const std::vector<engine_option> &options = {},
                      const smooth_start *start = nullptr) const
    {
        smooth_start plain;
        plain.x = c.start;
        watch->c = &c;
        const smooth_calls calls = calls_of(watch);
        smooth_answer answer;
        adapter->solve_smooth(&c.problem, &calls, options, start != nullptr ? start : &plain, &answer);
        return answer;
    }

    smooth_answer solve(const smooth_case &c, const std::vector<engine_option> &options = {},
                        const smooth_start *start = nullptr) const
    {
        smooth_watch watch;
        return run(c, &watch, options, start);
    }

    const engine_adapter *adapter = nullptr;
};

inline engine_option option_of(const char *name, int32_t param_class, double dou, int32_t integer, const char *str)
{
    engine_option o;
    o.name = name;
    o.param_class = param_class;
    o.dou = dou;
    o.integer = integer;
    o.str = str;
    return o;
}
inline engine_option number_option(const char *name, double value)
{
    return option_of(name, ZLR_PAR_DOUBLE, value, 0, "");
}
inline engine_option whole_option(const char *name, int32_t value)
{
    return option_of(name, ZLR_PAR_INT, 0.0, value, "");
}
inline engine_option word_option(const char *name, const char *word)
{
    return option_of(name, ZLR_PAR_INT, 0.0, 0, word);
}

/* ---- optimality conditions */

/* A multiplier of a side that does not exist is 0, of one that the value is away from nearly so. */
inline void expect_multiplier(double z, double slack, double tol)
{
    EXPECT_GE(z, -tol);
    if (z > 0.0 && std::isfinite(slack)) {
        EXPECT_NEAR(z * slack, 0.0, tol);
    }
    if (!std::isfinite(slack)) {
        EXPECT_NEAR(z, 0.0, tol);
    }
}

inline std::vector<double> rows_at(const smooth_case &c, const std::vector<double> &x)
{
    std::vector<double> rows(static_cast<size_t>(c.problem.num_con));
    if (!rows.empty()) c.rows(x.data(), rows.data());
    return rows;
}

/* The gradient of the Lagrangian without the bounds' multipliers. */
inline std::vector<double> lagrangian_at(const smooth_case &c, const std::vector<double> &x,
                                         const std::vector<double> &lambda)
{
    const smooth_problem &p = c.problem;
    std::vector<double> gradient(x.size()), jacobian(p.jac_row.size());
    c.gradient(x.data(), gradient.data());
    if (!jacobian.empty()) c.jacobian(x.data(), jacobian.data());
    for (size_t k = 0; k < jacobian.size(); k++)
        gradient[static_cast<size_t>(p.jac_col[k])] += lambda[static_cast<size_t>(p.jac_row[k])] * jacobian[k];
    return gradient;
}

inline void expect_within(double value, double lower, double upper, double tol)
{
    EXPECT_GE(value, lower - tol);
    EXPECT_LE(value, upper + tol);
}

inline void expect_stationary(const smooth_case &c, const smooth_answer &a, double tol = 1e-6)
{
    const smooth_problem &p = c.problem;
    ASSERT_EQ(a.x.size(), static_cast<size_t>(p.num_var));
    ASSERT_EQ(a.lambda.size(), static_cast<size_t>(p.num_con));
    ASSERT_EQ(a.z_lower.size(), a.x.size());
    ASSERT_EQ(a.z_upper.size(), a.x.size());
    const std::vector<double> rows = rows_at(c, a.x), gradient = lagrangian_at(c, a.x, a.lambda);
    for (size_t j = 0; j < a.x.size(); j++) {
        SCOPED_TRACE("column " + std::to_string(j));
        expect_within(a.x[j], p.var_lower[j], p.var_upper[j], 0.0);
        EXPECT_NEAR(gradient[j] - a.z_lower[j] + a.z_upper[j], 0.0, tol);
        expect_multiplier(a.z_lower[j], a.x[j] - p.var_lower[j], tol);
        expect_multiplier(a.z_upper[j], p.var_upper[j] - a.x[j], tol);
    }
    for (size_t i = 0; i < rows.size(); i++) {
        SCOPED_TRACE("row " + std::to_string(i));
        expect_within(rows[i], p.con_lower[i], p.con_upper[i], tol);
        if (p.con_lower[i] == p.con_upper[i]) continue;
        expect_multiplier(std::max(a.lambda[i], 0.0), p.con_upper[i] - rows[i], tol);
        expect_multiplier(std::max(-a.lambda[i], 0.0), rows[i] - p.con_lower[i], tol);
    }
}

/* ---- problems */

inline smooth_problem problem_of(std::vector<double> var_lower, std::vector<double> var_upper,
                                 std::vector<double> con_lower, std::vector<double> con_upper)
{
    smooth_problem p;
    p.num_var = static_cast<int32_t>(var_lower.size());
    p.num_con = static_cast<int32_t>(con_lower.size());
    p.var_lower = std::move(var_lower);
    p.var_upper = std::move(var_upper);
    p.con_lower = std::move(con_lower);
    p.con_upper = std::move(con_upper);
    return p;
}

/* Problem 71 of Hock and Schittkowski: 17.0140173 at (1, 4.743, 3.8211, 1.3794). */
inline smooth_case hs71()
{
    smooth_case c = {};
    c.name = "HS71";
    c.problem = problem_of({1, 1, 1, 1}, {5, 5, 5, 5}, {25, 40}, {no_bound, 40});
    c.problem.jac_row = {0, 0, 0, 0, 1, 1, 1, 1};
    c.problem.jac_col = {0, 1, 2, 3, 0, 1, 2, 3};
    c.problem.hes_row = {0, 1, 1, 2, 2, 2, 3, 3, 3, 3};
    c.problem.hes_col = {0, 0, 1, 0, 1, 2, 0, 1, 2, 3};
    c.start = {1, 5, 5, 1};
    c.objective = [](const double *x) { return x[0] * x[3] * (x[0] + x[1] + x[2]) + x[2]; };
    c.gradient = [](const double *x, double *v) {
        v[0] = x[3] * (2 * x[0] + x[1] + x[2]);
        v[1] = x[0] * x[3];
        v[2] = x[0] * x[3] + 1;
        v[3] = x[0] * (x[0] + x[1] + x[2]);
    };
    c.rows = [](const double *x, double *v) {
        v[0] = x[0] * x[1] * x[2] * x[3];
        v[1] = x[0] * x[0] + x[1] * x[1] + x[2] * x[2] + x[3] * x[3];
    };
    c.jacobian = [](const double *x, double *v) {
        for (int j = 0; j < 4; j++) {
            v[j] = 1.0;
            for (int k = 0; k < 4; k++) v[j] *= k == j ? 1.0 : x[k];
            v[4 + j] = 2 * x[j];
        }
    };
    c.hessian = [](const double *x, double w, const double *l, double *v) {
        const double f[10] = {2 * x[3], x[3], 0, x[3], 0, 0, 2 * x[0] + x[1] + x[2], x[0], x[0], 0};
        const double g[10] = {0, x[2] * x[3], 0, x[1] * x[3], x[0] * x[3], 0, x[1] * x[2], x[0] * x[2], x[0] * x[1], 0};
        const double square[10] = {2, 0, 2, 0, 0, 2, 0, 0, 0, 2};
        for (int k = 0; k < 10; k++) v[k] = w * f[k] + l[0] * g[k] + l[1] * square[k];
    };
    return c;
}

/* 0 at (1, 1), along a bent valley. */
inline smooth_case rosenbrock()
{
    smooth_case c = {};
    c.name = "Rosenbrock";
    c.problem = problem_of({-no_bound, -no_bound}, {no_bound, no_bound}, {}, {});
    c.problem.hes_row = {0, 1, 1};
    c.problem.hes_col = {0, 0, 1};
    c.start = {-1.2, 1};
    c.objective = [](const double *x) { return 100 * std::pow(x[1] - x[0] * x[0], 2) + std::pow(1 - x[0], 2); };
    c.gradient = [](const double *x, double *v) {
        v[0] = -400 * x[0] * (x[1] - x[0] * x[0]) - 2 * (1 - x[0]);
        v[1] = 200 * (x[1] - x[0] * x[0]);
    };
    c.rows = [](const double *, double *) { ADD_FAILURE() << "there are no rows"; };
    c.jacobian = [](const double *, double *) { ADD_FAILURE() << "there are no rows"; };
    c.hessian = [](const double *x, double w, const double *, double *v) {
        v[0] = w * (1200 * x[0] * x[0] - 400 * x[1] + 2);
        v[1] = -400 * w * x[0];
        v[2] = 200 * w;
    };
    return c;
}

/* maximise x0 + 2 x1 subject to x0 + x1 <= 4, x0 + 3 x1 <= 6: 5 at (3, 1), multipliers 1/2 and 1/2. */
inline smooth_case linear()
{
    smooth_case c = {};
    c.name = "linear";
    c.problem = problem_of({0, 0}, {no_bound, no_bound}, {-no_bound, -no_bound}, {4, 6});
    c.problem.jac_row = {1, 0, 1, 0};
    c.problem.jac_col = {1, 0, 0, 1};
    c.start = {0.5, 0.5};
    c.objective = [](const double *x) { return -x[0] - 2 * x[1]; };
    c.gradient = [](const double *, double *v) { v[0] = -1, v[1] = -2; };
    c.rows = [](const double *x, double *v) { v[0] = x[0] + x[1], v[1] = x[0] + 3 * x[1]; };
    c.jacobian = [](const double *, double *v) { v[0] = 3, v[1] = 1, v[2] = 1, v[3] = 1; };
    c.hessian = [](const double *, double, const double *, double *) {};
    return c;
}

/* A circle and a line through it: one of two points. As many equations as columns. */
inline smooth_case square()
{
    smooth_case c = {};
    c.name = "square";
    c.problem = problem_of({-no_bound, -no_bound}, {no_bound, no_bound}, {2, 0}, {2, 0});
    c.problem.jac_row = {0, 0, 1, 1};
    c.problem.jac_col = {0, 1, 0, 1};
    c.problem.hes_row = {0, 1};
    c.problem.hes_col = {0, 1};
    c.start = {3, 0.5};
    c.objective = [](const double *x) { return x[0]; };
    c.gradient = [](const double *, double *v) { v[0] = 1, v[1] = 0; };
    c.rows = [](const double *x, double *v) { v[0] = x[0] * x[0] + x[1] * x[1], v[1] = x[0] - x[1]; };
    c.jacobian = [](const double *x, double *v) { v[0] = 2 * x[0], v[1] = 2 * x[1], v[2] = 1, v[3] = -1; };
    c.hessian = [](const double *, double, const double *l, double *v) { v[0] = v[1] = 2 * l[0]; };
    return c;
}

/* A third equation that the two points of the circle and the line do not meet. */
inline smooth_case too_few_columns()
{
    smooth_case c = square();
    c.name = "too few columns";
    c.problem.num_con = 3;
    c.problem.con_lower = c.problem.con_upper = {2, 0, 9};
    c.problem.jac_row = {0, 0, 1, 1, 2};
    c.problem.jac_col = {0, 1, 0, 1, 1};
    c.rows = [](const double *x, double *v) { v[0] = x[0] * x[0] + x[1] * x[1], v[1] = x[0] - x[1], v[2] = x[1]; };
    c.jacobian = [](const double *x, double *v) { v[0] = 2 * x[0], v[1] = 2 * x[1], v[2] = v[4] = 1, v[3] = -1; };
    return c;
}

/* x0^2 + x1^2 <= -1: the violation is least at 0. */
inline smooth_case infeasible()
{
    smooth_case c = square();
    c.name = "infeasible";
    c.problem.num_con = 1;
    c.problem.con_lower = {-no_bound};
    c.problem.con_upper = {-1};
    c.problem.jac_row = {0, 0};
    c.problem.jac_col = {0, 1};
    c.rows = [](const double *x, double *v) { v[0] = x[0] * x[0] + x[1] * x[1]; };
    c.jacobian = [](const double *x, double *v) { v[0] = 2 * x[0], v[1] = 2 * x[1]; };
    return c;
}

/* minimise x0 - log x0 + x1^2, of no value below 0: 1 at (1, 0). A full step from 5 leads to -15. */
inline smooth_case logarithm()
{
    smooth_case c = {};
    c.name = "logarithm";
    c.problem = problem_of({-no_bound, -3}, {no_bound, 8}, {}, {});
    c.problem.hes_row = {0, 1};
    c.problem.hes_col = {0, 1};
    c.start = {5, 1};
    c.objective = [](const double *x) { return x[0] - std::log(x[0]) + x[1] * x[1]; };
    c.gradient = [](const double *x, double *v) { v[0] = 1 - 1 / x[0], v[1] = 2 * x[1]; };
    c.rows = [](const double *, double *) { ADD_FAILURE() << "there are no rows"; };
    c.jacobian = c.rows;
    c.hessian = [](const double *x, double w, const double *, double *v) { v[0] = w / (x[0] * x[0]), v[1] = 2 * w; };
    return c;
}

/* A chain of Rosenbrock's valleys: long enough for solves to meet in the middle of everything. */
inline constexpr int chain_length = 60;

inline const smooth_case chain_link = rosenbrock();

inline smooth_case chain()
{
    smooth_case c = rosenbrock();
    const size_t n = chain_length;
    c.name = "chain";
    c.problem = problem_of(std::vector<double>(n, -3), std::vector<double>(n, 4), {}, {});
    c.start.assign(n, -1.2);
    for (int32_t j = 0; j < chain_length; j++) {
        if (j > 0) c.problem.hes_row.push_back(j), c.problem.hes_col.push_back(j - 1);
        c.problem.hes_row.push_back(j), c.problem.hes_col.push_back(j); /* entry 2 j */
    }
    c.objective = [](const double *x) {
        double sum = 0.0;
        for (int j = 0; j + 1 < chain_length; j++) sum += chain_link.objective(x + j);
        return sum;
    };
    c.gradient = [](const double *x, double *v) {
        std::fill(v, v + chain_length, 0.0);
        for (int j = 0; j + 1 < chain_length; j++) {
            double part[2];
            chain_link.gradient(x + j, part);
            v[j] += part[0], v[j + 1] += part[1];
        }
    };
    c.hessian = [](const double *x, double w, const double *, double *v) {
        std::fill(v, v + 2 * chain_length - 1, 0.0);
        for (int j = 0; j + 1 < chain_length; j++) {
            double part[3];
            chain_link.hessian(x + j, w, nullptr, part);
            v[2 * j] += part[0], v[2 * j + 1] += part[1], v[2 * j + 2] += part[2];
        }
    };
    return c;
}
