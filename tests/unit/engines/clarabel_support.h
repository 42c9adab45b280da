/* clarabel_support.h - what tests of the Clarabel module share: the module, the optimality conditions of an answer, problems. */
#pragma once

#include "small_models.h"
#include "solver/engines/engine.h"

#include <algorithm>
#include <cmath>
#include <dlfcn.h>
#include <gtest/gtest.h>

class clarabel : public testing::Test
{
protected:
    void SetUp() override
    {
        void *module = dlopen(ZELOR_CLARABEL_MODULE, RTLD_LAZY | RTLD_LOCAL); /* never unloaded, as by the library */
        ASSERT_NE(module, nullptr) << dlerror();
        adapter = static_cast<const engine_adapter *>(dlsym(module, "zelor_engine"));
        ASSERT_NE(adapter, nullptr);
        ASSERT_EQ(adapter->abi, engine_abi);
    }

    std::shared_ptr<engine_job> job_of(const model &m)
    {
        auto job = std::make_shared<engine_job>();
        job->problem = std::make_shared<const model>(m);
        job->method = METHOD_INTPNT;
        job->time_limit_s = model_inf;
        return job;
    }

    engine_answer run(const std::shared_ptr<engine_job> &job)
    {
        EXPECT_TRUE(adapter->accepts(job->problem.get(), job->method));
        adapter->solve(job);
        job->rest.reset();
        return job->answer;
    }

    engine_answer solve(const model &m, const std::vector<engine_option> &options = {})
    {
        const auto job = job_of(m);
        job->options = options;
        return run(job);
    }

    const engine_adapter *adapter = nullptr;
};

inline engine_option number(const char *name, double value)
{
    engine_option o;
    o.name = name;
    o.param_class = ZLR_PAR_DOUBLE;
    o.dou = value;
    return o;
}

inline engine_option whole(const char *name, int32_t value)
{
    engine_option o;
    o.name = name;
    o.param_class = ZLR_PAR_INT;
    o.integer = value;
    return o;
}

/* ---- residuals */

inline double row_value(const model &m, size_t i, const std::vector<double> &x)
{
    double value = 0.0;
    for (size_t j = 0; j < x.size(); j++)
        for (auto k = static_cast<size_t>(m.a.start[j]); k < static_cast<size_t>(m.a.start[j + 1]); k++)
            if (static_cast<size_t>(m.a.row[k]) == i) value += m.a.value[k] * x[j];
    return value;
}

inline double times_y(const model &m, size_t j, const std::vector<double> &y)
{
    double value = 0.0;
    for (auto k = static_cast<size_t>(m.a.start[j]); k < static_cast<size_t>(m.a.start[j + 1]); k++)
        value += m.a.value[k] * y[static_cast<size_t>(m.a.row[k])];
    return value;
}

/* A multiplier has the sign of the side that its value is at. `dual` is that of a minimisation. */
inline void expect_side(double value, double lower, double upper, double dual, double tol)
{
    EXPECT_GE(value, lower - tol);
    EXPECT_LE(value, upper + tol);
    if (std::isinf(lower)) {
        EXPECT_LE(dual, tol);
    }
    if (std::isinf(upper)) {
        EXPECT_GE(dual, -tol);
    }
    if (dual > 0.0 && std::isfinite(lower)) {
        EXPECT_NEAR(dual * (value - lower), 0.0, tol);
    }
    if (dual < 0.0 && std::isfinite(upper)) {
        EXPECT_NEAR(dual * (value - upper), 0.0, tol);
    }
}

inline void expect_in_cone(const model_cone &cone, const std::vector<double> &v, double sign, double tol)
{
    std::vector<double> turned(v.size());
    for (size_t j = 0; j < v.size(); j++) turned[j] = sign * v[j];
    EXPECT_LE(cone_violation(&cone, turned.data()), tol);
}

/* The optimality conditions of the problem, and its known optimum. */
inline void expect_optimal(const model &m, const engine_answer &a, double optimum)
{
    constexpr double tol = 2e-6;
    const double sign = m.sense == ZLR_SENSE_MAX ? -1.0 : 1.0;
    const auto n = static_cast<size_t>(m.num_var);

    ASSERT_EQ(a.status, ENGINE_OPTIMAL) << a.message;
    ASSERT_EQ(a.x.size(), n);
    ASSERT_EQ(a.y.size(), static_cast<size_t>(m.num_con));
    ASSERT_EQ(a.reduced.size(), n);
    ASSERT_EQ(a.cone_dual.size(), m.cones.empty() ? 0 : n);
    EXPECT_NEAR(model_objective(&m, a.x.data()), optimum, tol * std::max(1.0, std::fabs(optimum)));
    for (size_t i = 0; i < a.y.size(); i++) {
        SCOPED_TRACE("row " + std::to_string(i));
        expect_side(row_value(m, i, a.x), m.con_lower[i], m.con_upper[i], sign * a.y[i], tol);
    }
    std::vector<double> gradient = m.c;
    quad_add_product(m.qobj, a.x.data(), 1.0, gradient.data());
    for (size_t j = 0; j < n; j++) {
        SCOPED_TRACE("column " + std::to_string(j));
        const double in_cone = m.cones.empty() ? 0.0 : a.cone_dual[j];
        EXPECT_NEAR(gradient[j] - times_y(m, j, a.y) - a.reduced[j] - in_cone, 0.0, tol);
        expect_side(a.x[j], m.var_lower[j], m.var_upper[j], sign * a.reduced[j], tol);
    }
    for (const model_cone &cone : m.cones) {
        double product = 0.0;
        for (const int32_t j : cone.member)
            product += a.x[static_cast<size_t>(j)] * a.cone_dual[static_cast<size_t>(j)];
        EXPECT_NEAR(product, 0.0, tol);
        expect_in_cone(cone, a.x, 1.0, tol);
        expect_in_cone(cone, a.cone_dual, sign, tol);
    }
}

/* ---- problems */

inline model negated(model m)
{
    m.sense = m.sense == ZLR_SENSE_MAX ? ZLR_SENSE_MIN : ZLR_SENSE_MAX;
    m.cfix = -m.cfix;
    for (double &c : m.c) c = -c;
    for (quad_term &t : m.qobj) t.value = -t.value;
    return m;
}

/* minimise x0 + 2 x1 + 3 x2 - x3: an equation, a range, a free row, a free, a fixed and an upward bounded column. */
inline model mixed_model()
{
    return make_model(ZLR_SENSE_MIN, {1.0, 2.0, 3.0, -1.0},
                      {{4.0, 4.0, {1.0, 1.0, 1.0, 0.0}},
                       {-1.0, 2.0, {1.0, -1.0, 0.0, 0.0}},
                       {-model_inf, model_inf, {5.0, 5.0, 5.0, 5.0}},
                       {-3.0, model_inf, {0.0, 0.0, 0.0, -1.0}}},
                      {-model_inf, 0.0, 1.0, -model_inf}, {model_inf, model_inf, 1.0, 2.5});
}

/* minimise (x0 - 1)^2 + (x1 - 2)^2 subject to x0 + x1 <= 2: 0.5 at (0.5, 1.5), multiplier -1. */
inline model nearest_point_model()
{
    model m = make_model(ZLR_SENSE_MIN, {-2.0, -4.0}, {{-model_inf, 2.0, {1.0, 1.0}}}, {0.0, 0.0}, {9.0, 9.0});
    m.cfix = 5.0;
    m.qobj = {{0, 0, 2.0}, {1, 1, 2.0}};
    return m;
}

/* minimise x0^2 + x0 x1 + x1^2 - 3 x0, nothing else: -3 at (2, -1). */
inline model no_rows_model()
{
    model m = make_model(ZLR_SENSE_MIN, {-3.0, 0.0}, {}, {-model_inf, -model_inf}, {model_inf, model_inf});
    m.qobj = {{0, 0, 2.0}, {1, 0, 1.0}, {1, 1, 2.0}};
    return m;
}

/* maximise x1 + x2 with x0 = 1 >= |(x1, x2)|: root 2. The members stand in another order than the columns. */
inline model disc_model()
{
    model m =
        make_model(ZLR_SENSE_MAX, {1.0, 1.0, 0.0}, {}, {-model_inf, -model_inf, 1.0}, {model_inf, model_inf, 1.0});
    m.cones = {{ZLR_CT_QUAD, {2, 1, 0}}};
    return m;
}

/* minimise x0 + x1, 2 x0 x1 >= x2^2 + x3^2, x2 = 2 and x3 >= x2 by rows: 4 at (2, 2, 2, 2). */
inline model rotated_model()
{
    model m = make_model(ZLR_SENSE_MIN, {1.0, 1.0, 0.0, 0.0},
                         {{2.0, 2.0, {0.0, 0.0, 1.0, 0.0}}, {0.0, model_inf, {0.0, 0.0, -1.0, 1.0}}},
                         {-model_inf, -model_inf, -model_inf, -model_inf}, {9.0, model_inf, model_inf, model_inf});
    m.cones = {{ZLR_CT_RQUAD, {1, 0, 3, 2}}};
    return m;
}

/* minimise the norm of a long vector that adds up to its number of entries, in two cones: 3 + 4. */
inline model two_norms_model()
{
    constexpr size_t n = 9 + 16 + 2;
    std::vector<double> c(n, 0.0), first(n, 0.0), second(n, 0.0);
    model_cone one, two;
    c[0] = c[10] = 1.0;
    for (size_t j = 0; j < n; j++) {
        (j < 10 ? one : two).member.push_back(static_cast<int32_t>(j));
        (j < 10 ? first : second)[j] = j == 0 || j == 10 ? 0.0 : 1.0;
    }
    model m = make_model(ZLR_SENSE_MIN, c, {{9.0, 9.0, first}, {16.0, model_inf, second}},
                         std::vector<double>(n, -model_inf), std::vector<double>(n, model_inf));
    m.cones = {one, two};
    return m;
}
