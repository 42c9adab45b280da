/* clarabel_test.cpp - the Clarabel module, by jobs as the library gives them. Answers are recomputed from the problem's own
 * data: optimality conditions, proofs of infeasibility and directions of unboundedness. */
#ifdef ZELOR_CLARABEL_MODULE /* builds with the engine */
#include "small_models.h"
#include "solver/engines/engine.h"
#include "solver/params/params.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <thread>

static const double root2 = std::sqrt(2.0);

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

static engine_option number(const char *name, double value)
{
    engine_option o;
    o.name = name;
    o.param_class = ZLR_PAR_DOUBLE;
    o.dou = value;
    return o;
}

static engine_option whole(const char *name, int32_t value)
{
    engine_option o;
    o.name = name;
    o.param_class = ZLR_PAR_INT;
    o.integer = value;
    return o;
}

/* ---- residuals */

static double row_value(const model &m, size_t i, const std::vector<double> &x)
{
    double value = 0.0;
    for (size_t j = 0; j < x.size(); j++)
        for (auto k = static_cast<size_t>(m.a.start[j]); k < static_cast<size_t>(m.a.start[j + 1]); k++)
            if (static_cast<size_t>(m.a.row[k]) == i) value += m.a.value[k] * x[j];
    return value;
}

static double times_y(const model &m, size_t j, const std::vector<double> &y)
{
    double value = 0.0;
    for (auto k = static_cast<size_t>(m.a.start[j]); k < static_cast<size_t>(m.a.start[j + 1]); k++)
        value += m.a.value[k] * y[static_cast<size_t>(m.a.row[k])];
    return value;
}

/* A multiplier has the sign of the side that its value is at. `dual` is that of a minimisation. */
static void expect_side(double value, double lower, double upper, double dual, double tol)
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

static void expect_in_cone(const model_cone &cone, const std::vector<double> &v, double sign, double tol)
{
    std::vector<double> turned(v.size());
    for (size_t j = 0; j < v.size(); j++) turned[j] = sign * v[j];
    EXPECT_LE(cone_violation(&cone, turned.data()), tol);
}

/* The optimality conditions of the problem, and its known optimum. */
static void expect_optimal(const model &m, const engine_answer &a, double optimum)
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

/* A'y + slx - sux + snx = 0 with a sum of the sides above 0, for the sense of a minimisation. */
static void expect_infeasible(const model &m, const engine_answer &a)
{
    constexpr double tol = 1e-6;
    const double sign = m.sense == ZLR_SENSE_MAX ? -1.0 : 1.0;
    double sum = 0.0, largest = 0.0;

    ASSERT_EQ(a.status, ENGINE_PRIMAL_INFEASIBLE) << a.message;
    ASSERT_EQ(a.dual_ray.size(), static_cast<size_t>(m.num_con));
    EXPECT_TRUE(a.x.empty() && a.primal_ray.empty());
    const auto add_side = [&](double dual, double lower, double upper) {
        const double side = dual > 0.0 ? lower : upper;
        largest = std::max(largest, std::fabs(dual));
        if (std::isfinite(side))
            sum += dual * side;
        else
            EXPECT_NEAR(dual, 0.0, tol * largest);
    };
    for (const double y : a.dual_ray) largest = std::max(largest, std::fabs(y));
    for (size_t i = 0; i < a.dual_ray.size(); i++) add_side(sign * a.dual_ray[i], m.con_lower[i], m.con_upper[i]);
    for (size_t j = 0; j < static_cast<size_t>(m.num_var); j++) {
        const double in_cone = a.cone_dual.empty() ? 0.0 : a.cone_dual[j];
        add_side(-sign * (times_y(m, j, a.dual_ray) + in_cone), m.var_lower[j], m.var_upper[j]);
    }
    for (const model_cone &cone : m.cones) expect_in_cone(cone, a.cone_dual, sign, tol * largest);
    EXPECT_GT(sum, 1e-3 * largest);
}

/* A direction that nothing bounds and that improves the objective. */
static void expect_unbounded(const model &m, const engine_answer &a)
{
    const double sign = m.sense == ZLR_SENSE_MAX ? -1.0 : 1.0;

    ASSERT_EQ(a.status, ENGINE_DUAL_INFEASIBLE) << a.message;
    ASSERT_EQ(a.primal_ray.size(), static_cast<size_t>(m.num_var));
    EXPECT_TRUE(a.y.empty() && a.dual_ray.empty());
    double size = 0.0, change = 0.0;
    for (size_t j = 0; j < a.primal_ray.size(); j++) {
        size = std::max(size, std::fabs(a.primal_ray[j]));
        change += sign * m.c[j] * a.primal_ray[j];
    }
    const double tol = 1e-6 * size;
    const auto expect_recession = [&](double value, double lower, double upper) {
        if (std::isfinite(lower)) {
            EXPECT_GE(value, -tol);
        }
        if (std::isfinite(upper)) {
            EXPECT_LE(value, tol);
        }
    };
    for (size_t i = 0; i < static_cast<size_t>(m.num_con); i++)
        expect_recession(row_value(m, i, a.primal_ray), m.con_lower[i], m.con_upper[i]);
    for (size_t j = 0; j < a.primal_ray.size(); j++) expect_recession(a.primal_ray[j], m.var_lower[j], m.var_upper[j]);
    std::vector<double> product(a.primal_ray.size(), 0.0);
    quad_add_product(m.qobj, a.primal_ray.data(), 1.0, product.data());
    for (const double value : product) EXPECT_NEAR(value, 0.0, tol);
    for (const model_cone &cone : m.cones) expect_in_cone(cone, a.primal_ray, 1.0, tol);
    EXPECT_LT(change, -1e-3 * size);
}

/* ---- problems */

static model negated(model m)
{
    m.sense = m.sense == ZLR_SENSE_MAX ? ZLR_SENSE_MIN : ZLR_SENSE_MAX;
    m.cfix = -m.cfix;
    for (double &c : m.c) c = -c;
    for (quad_term &t : m.qobj) t.value = -t.value;
    return m;
}

/* minimise x0 + 2 x1 + 3 x2 - x3: an equation, a range, a free row, a free, a fixed and an upward bounded column. */
static model mixed_model()
{
    return make_model(ZLR_SENSE_MIN, {1.0, 2.0, 3.0, -1.0},
                      {{4.0, 4.0, {1.0, 1.0, 1.0, 0.0}},
                       {-1.0, 2.0, {1.0, -1.0, 0.0, 0.0}},
                       {-model_inf, model_inf, {5.0, 5.0, 5.0, 5.0}},
                       {-3.0, model_inf, {0.0, 0.0, 0.0, -1.0}}},
                      {-model_inf, 0.0, 1.0, -model_inf}, {model_inf, model_inf, 1.0, 2.5});
}

/* minimise (x0 - 1)^2 + (x1 - 2)^2 subject to x0 + x1 <= 2: 0.5 at (0.5, 1.5), multiplier -1. */
static model nearest_point_model()
{
    model m = make_model(ZLR_SENSE_MIN, {-2.0, -4.0}, {{-model_inf, 2.0, {1.0, 1.0}}}, {0.0, 0.0}, {9.0, 9.0});
    m.cfix = 5.0;
    m.qobj = {{0, 0, 2.0}, {1, 1, 2.0}};
    return m;
}

/* minimise x0^2 + x0 x1 + x1^2 - 3 x0, nothing else: -3 at (2, -1). */
static model no_rows_model()
{
    model m = make_model(ZLR_SENSE_MIN, {-3.0, 0.0}, {}, {-model_inf, -model_inf}, {model_inf, model_inf});
    m.qobj = {{0, 0, 2.0}, {1, 0, 1.0}, {1, 1, 2.0}};
    return m;
}

/* maximise x1 + x2 with x0 = 1 >= |(x1, x2)|: root 2. The members stand in another order than the columns. */
static model disc_model()
{
    model m =
        make_model(ZLR_SENSE_MAX, {1.0, 1.0, 0.0}, {}, {-model_inf, -model_inf, 1.0}, {model_inf, model_inf, 1.0});
    m.cones = {{ZLR_CT_QUAD, {2, 1, 0}}};
    return m;
}

/* minimise x0 + x1, 2 x0 x1 >= x2^2 + x3^2, x2 = 2 and x3 >= x2 by rows: 4 at (2, 2, 2, 2). */
static model rotated_model()
{
    model m = make_model(ZLR_SENSE_MIN, {1.0, 1.0, 0.0, 0.0},
                         {{2.0, 2.0, {0.0, 0.0, 1.0, 0.0}}, {0.0, model_inf, {0.0, 0.0, -1.0, 1.0}}},
                         {-model_inf, -model_inf, -model_inf, -model_inf}, {9.0, model_inf, model_inf, model_inf});
    m.cones = {{ZLR_CT_RQUAD, {1, 0, 3, 2}}};
    return m;
}

/* minimise the norm of a long vector that adds up to its number of entries, in two cones: 3 + 4. */
static model two_norms_model()
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

TEST_F(clarabel, optimum_and_duals_fit_the_problem)
{
    model cone_of_two = make_model(ZLR_SENSE_MIN, {1.0, 0.0}, {{-3.0, -3.0, {0.0, 1.0}}}, {-model_inf, -model_inf},
                                   {model_inf, model_inf});
    cone_of_two.cones = {{ZLR_CT_QUAD, {0, 1}}};
    /* Distance of (3, 4) from the disc of radius 1, squared and halved: 8. */
    model quadratic_over_cone =
        make_model(ZLR_SENSE_MIN, {0.0, -3.0, -4.0}, {}, {0.0, -model_inf, -model_inf}, {1.0, model_inf, model_inf});
    quadratic_over_cone.cfix = 12.5;
    quadratic_over_cone.qobj = {{1, 1, 1.0}, {2, 2, 1.0}};
    quadratic_over_cone.cones = {{ZLR_CT_QUAD, {0, 1, 2}}};

    const struct {
        const char *name;
        model m;
        double optimum;
    } cases[] = {
        {"two rows", two_row_model(ZLR_SENSE_MIN), -5.0},
        {"mixed", mixed_model(), 4.0},
        {"nearest point", nearest_point_model(), 0.5},
        {"no rows, off-diagonal term", no_rows_model(), -3.0},
        {"disc", disc_model(), root2},
        {"rotated", rotated_model(), 4.0},
        {"two norms", two_norms_model(), 7.0},
        {"cone of two", cone_of_two, 3.0},
        {"quadratic over a cone", quadratic_over_cone, 8.0},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        expect_optimal(c.m, solve(c.m), c.optimum);
        SCOPED_TRACE("negated");
        const model other = negated(c.m);
        expect_optimal(other, solve(other), -c.optimum);
    }
    EXPECT_NEAR(solve(nearest_point_model()).y[0], -1.0, 1e-6);
    EXPECT_NEAR(solve(two_row_model(ZLR_SENSE_MAX)).reduced[0], 1.0 / 3.0, 1e-6);
    EXPECT_NEAR(solve(rotated_model()).y[0], 2.0, 1e-5);
}

TEST_F(clarabel, unsorted_columns_are_taken)
{
    model m = two_row_model(ZLR_SENSE_MIN);
    std::swap(m.a.row[2], m.a.row[3]);
    std::swap(m.a.value[2], m.a.value[3]);
    expect_optimal(m, solve(m), -5.0);
}

TEST_F(clarabel, infeasible_problems_come_with_a_proof)
{
    model rows = make_model(ZLR_SENSE_MIN, {1.0, 1.0}, {{3.0, model_inf, {1.0, 1.0}}}, {0.0, 0.0}, {1.0, 1.0});
    model conic = make_model(ZLR_SENSE_MIN, {0.0, 0.0, 1.0},
                             {{-model_inf, 1.0, {1.0, 0.0, 0.0}}, {2.0, model_inf, {0.0, 1.0, 0.0}}},
                             std::vector<double>(3, -model_inf), std::vector<double>(3, model_inf));
    conic.cones = {{ZLR_CT_QUAD, {0, 1, 2}}};
    model rotated =
        make_model(ZLR_SENSE_MIN, {0.0, 0.0, 0.0}, {{-model_inf, 2.0, {1.0, 1.0, 0.0}}, {3.0, 3.0, {0.0, 0.0, 1.0}}},
                   std::vector<double>(3, -model_inf), std::vector<double>(3, model_inf));
    rotated.cones = {{ZLR_CT_RQUAD, {0, 1, 2}}};
    model quadratic = rows;
    quadratic.qobj = {{0, 0, 1.0}, {1, 1, 1.0}};

    for (const model &m : {rows, conic, rotated, quadratic}) {
        expect_infeasible(m, solve(m));
        const model other = negated(m);
        expect_infeasible(other, solve(other));
    }
}

/* Multipliers of rows cannot tell this proof, which weighs both sides of one row or column the same. */
TEST_F(clarabel, crossed_sides_are_infeasible_without_a_ray)
{
    const model row = make_model(ZLR_SENSE_MIN, {1.0}, {{2.0, 1.0, {1.0}}}, {-model_inf}, {model_inf});
    const model column = make_model(ZLR_SENSE_MAX, {1.0}, {{0.0, 9.0, {1.0}}}, {2.0}, {1.0});
    for (const model &m : {row, column}) {
        const engine_answer a = solve(m);
        EXPECT_EQ(a.status, ENGINE_PRIMAL_INFEASIBLE);
        EXPECT_TRUE(a.dual_ray.empty() && a.x.empty());
    }
}

TEST_F(clarabel, unbounded_problems_come_with_a_direction)
{
    model rows =
        make_model(ZLR_SENSE_MIN, {-1.0, 0.0}, {{-model_inf, 1.0, {1.0, -1.0}}}, {0.0, 0.0}, {model_inf, model_inf});
    model quadratic = make_model(ZLR_SENSE_MIN, {0.0, -1.0}, {}, {0.0, 0.0}, {model_inf, model_inf});
    quadratic.qobj = {{0, 0, 2.0}};
    model conic =
        make_model(ZLR_SENSE_MIN, {0.5, -1.0, 0.0}, {}, {0.0, -model_inf, 0.0}, std::vector<double>(3, model_inf));
    conic.cones = {{ZLR_CT_RQUAD, {0, 2, 1}}};

    for (const model &m : {rows, quadratic, conic}) {
        expect_unbounded(m, solve(m));
        const model other = negated(m);
        expect_unbounded(other, solve(other));
    }
}

TEST_F(clarabel, problems_with_nothing_in_them)
{
    const model nothing = make_model(ZLR_SENSE_MIN, {}, {}, {}, {});
    EXPECT_EQ(solve(nothing).status, ENGINE_OPTIMAL);
    const model satisfied = make_model(ZLR_SENSE_MIN, {}, {{-1.0, 1.0, {}}, {-model_inf, model_inf, {}}}, {}, {});
    expect_optimal(satisfied, solve(satisfied), 0.0);
    for (const int32_t sense : {ZLR_SENSE_MIN, ZLR_SENSE_MAX}) {
        const model below = make_model(sense, {}, {{-1.0, 1.0, {}}, {2.0, model_inf, {}}}, {}, {});
        expect_infeasible(below, solve(below));
        const model above = make_model(sense, {}, {{-model_inf, -1.0, {}}}, {}, {});
        expect_infeasible(above, solve(above));
    }
    const model columns = make_model(ZLR_SENSE_MIN, {1.0, -1.0}, {}, {2.0, 0.0}, {model_inf, 3.0});
    expect_optimal(columns, solve(columns), -1.0);
    const model no_side = make_model(ZLR_SENSE_MIN, {0.0}, {{-model_inf, model_inf, {1.0}}}, {-model_inf}, {model_inf});
    expect_optimal(no_side, solve(no_side), 0.0);
    const model empty_row = make_model(ZLR_SENSE_MIN, {1.0}, {{1.0, model_inf, {0.0}}}, {0.0}, {1.0});
    expect_infeasible(empty_row, solve(empty_row));
}

TEST_F(clarabel, takes_what_it_says)
{
    model m = nearest_point_model();
    EXPECT_TRUE(adapter->accepts(&m, METHOD_CHOOSE));
    EXPECT_FALSE(adapter->accepts(&m, METHOD_DUAL_SIMPLEX));
    EXPECT_FALSE(adapter->accepts(&m, METHOD_MIP));
    m.var_type[1] = ZLR_VAR_INT;
    EXPECT_FALSE(adapter->accepts(&m, METHOD_CHOOSE));
    m = nearest_point_model();
    m.qcon = {{0, {{0, 0, 1.0}}}};
    EXPECT_FALSE(adapter->accepts(&m, METHOD_INTPNT));
    EXPECT_STREQ(adapter->name, "Clarabel");
    EXPECT_STREQ(adapter->version(), "0.11.1");
}

/* ---- options and limits */

TEST_F(clarabel, options_act_or_are_refused)
{
    const model m = rotated_model();
    const int64_t usual = solve(m).ipm_iterations;
    EXPECT_LT(
        solve(m, {number("tol_gap_rel", 1e-2), number("tol_gap_abs", 1e-2), number("tol_feas", 1e-2)}).ipm_iterations,
        usual);
    EXPECT_GT(solve(m, {number("max_step_fraction", 0.5)}).ipm_iterations, usual);

    EXPECT_EQ(solve(m, {number("tol_gap", 1e-2)}).status, ENGINE_REFUSED);
    EXPECT_EQ(solve(m, {number("tol_gap", 1e-2)}).message, "does not take the option tol_gap");
    EXPECT_EQ(solve(m, {whole("equilibrate_enable", 2)}).message,
              "does not take the value of the option equilibrate_enable");
    EXPECT_EQ(solve(make_model(ZLR_SENSE_MIN, {}, {}, {}, {}), {whole("presolve", 0)}).status, ENGINE_REFUSED);
    engine_option text;
    text.name = "direct_solve_method";
    text.param_class = ZLR_PAR_STR;
    text.str = "pardiso";
    EXPECT_EQ(solve(m, {text}).status, ENGINE_REFUSED);
    text.str = "qdldl";
    expect_optimal(m, solve(m, {text}), 4.0);
}

/* Badly scaled and nearly dependent rows, so that every part of the engine has something to do. */
static model rough_model()
{
    model m = make_model(ZLR_SENSE_MIN, {1e3, 1.0, 1e-3, 0.0, 1.0},
                         {{1e6, 1e6, {1e5, 1e4, 1.0, 0.0, 0.0}},
                          {1e6 + 1.0, model_inf, {1e5, 1e4, 1.0 + 1e-7, 1e-6, 0.0}},
                          {-model_inf, 1e21, {1.0, 1.0, 1.0, 1.0, 1.0}},
                          {1e-3, 1.0, {0.0, 0.0, 1e-6, 1e-5, 1.0}}},
                         {0.0, 0.0, 0.0, -model_inf, -model_inf}, {1e5, model_inf, 1e7, model_inf, model_inf});
    m.qobj = {{0, 0, 1e-4}, {3, 3, 1e4}};
    m.cones = {{ZLR_CT_QUAD, {4, 3}}};
    return m;
}

static bool same(const engine_answer &a, const engine_answer &b)
{
    return a.status == b.status && a.message == b.message && a.ipm_iterations == b.ipm_iterations && a.x == b.x &&
           a.y == b.y && a.dual_ray == b.dual_ray;
}

/* Every parameter that is an option of this engine changes what the engine does: the answer or the way to it. */
TEST_F(clarabel, every_parameter_acts)
{
    const model infeasible =
        negated(make_model(ZLR_SENSE_MIN, {1.0, 1.0}, {{3.0, model_inf, {1.0, 1.0}}}, {0.0, 0.0}, {1.0, 1.0}));
    const std::vector<engine_option> none;
    /* Tolerances that are never met, so that the reduced ones decide. */
    const std::vector<engine_option> stalled = {number("tol_gap_abs", 0.0), number("tol_gap_rel", 0.0),
                                                number("tol_feas", 0.0), number("tol_infeas_rel", 0.0)};
    std::vector<engine_option> by_rel = stalled, by_abs = stalled;
    by_rel.push_back(number("reduced_tol_gap_abs", 0.0));
    by_abs.push_back(number("reduced_tol_gap_rel", 0.0));
    const struct {
        const char *option;
        double value;
        model m;
        std::vector<engine_option> with;
    } cases[] = {
        {"tol_gap_rel", 0.0, rotated_model(), {number("tol_gap_abs", 0.0)}},
        {"tol_gap_abs", 1.0, rotated_model(), none},
        {"tol_feas", 0.0, rotated_model(), none},
        {"tol_infeas_rel", 1e-14, infeasible, none},
        {"tol_infeas_abs", 1e6, infeasible, none},
        {"tol_ktratio", 1e-12, infeasible, none},
        {"reduced_tol_gap_rel", 0.0, rotated_model(), by_rel},
        {"reduced_tol_gap_abs", 0.0, rotated_model(), by_abs},
        {"reduced_tol_feas", 0.0, rotated_model(), stalled},
        {"reduced_tol_infeas_rel", 0.0, infeasible, stalled},
        {"reduced_tol_infeas_abs", 1e30, infeasible, stalled},
        {"reduced_tol_ktratio", 1.0, infeasible, {number("tol_infeas_rel", 0.0), whole("max_iter", 4)}},
        {"max_step_fraction", 0.5, rotated_model(), none},
        {"min_terminate_step_length", 0.5, rotated_model(), {number("max_step_fraction", 0.3)}},
        {"equilibrate_min_scaling", 0.5, rough_model(), none},
        {"equilibrate_max_scaling", 2.0, rough_model(), none},
        {"static_regularization_constant", 1e-6, rotated_model(), none},
        {"static_regularization_proportional", 1e-4, rotated_model(), none},
        {"dynamic_regularization_eps", 1e-2, rough_model(), none},
        {"dynamic_regularization_delta", 1e-4, mixed_model(), {whole("static_regularization_enable", 0)}},
        {"iterative_refinement_reltol", 1e-3, rotated_model(), none},
        {"iterative_refinement_abstol", 1e-3, rotated_model(), none},
        {"iterative_refinement_stop_ratio", 1e6, rough_model(), none},
        {"max_iter", 3.0, rotated_model(), none},
        {"presolve_enable", 0.0, rough_model(), none},
        {"equilibrate_enable", 0.0, rough_model(), none},
        {"equilibrate_max_iter", 1.0, rough_model(), none},
        {"static_regularization_enable", 0.0, rotated_model(), none},
        {"iterative_refinement_enable", 0.0, rotated_model(), none},
        {"iterative_refinement_max_iter", 1.0, rough_model(), none},
    };
    std::set<std::string> tried;
    for (const auto &c : cases) {
        SCOPED_TRACE(c.option);
        tried.insert(std::string("clarabel:") + c.option);
        std::vector<engine_option> changed = c.with;
        changed.push_back(number(c.option, c.value));
        EXPECT_FALSE(same(solve(c.m, c.with), solve(c.m, changed)));
        EXPECT_TRUE(same(solve(c.m, changed), solve(c.m, changed))) << "a difference may be chance";
    }
    int32_t num = 0;
    const param_row *rows = param_table(&num);
    for (const param_row *row = rows; row != rows + num; row++)
        if (row->engine_option != nullptr && std::string(row->engine_option).starts_with("clarabel:")) {
            EXPECT_EQ(tried.count(row->engine_option), 1U) << row->name;
        }
}

TEST_F(clarabel, limits_leave_the_last_iterate)
{
    const engine_answer a = solve(two_norms_model(), {whole("max_iter", 2)});
    EXPECT_EQ(a.status, ENGINE_ITERATION_LIMIT);
    EXPECT_EQ(a.ipm_iterations, 2);
    EXPECT_EQ(a.x.size(), 27U);
    EXPECT_EQ(a.y.size(), 2U);
    /* The limit is told where the reduced tolerances are met there, too. */
    const engine_answer near = solve(
        two_norms_model(), {whole("max_iter", 2), number("reduced_tol_gap_abs", 1e9), number("reduced_tol_feas", 1e9)});
    EXPECT_EQ(near.status, ENGINE_ITERATION_LIMIT);
    EXPECT_EQ(near.message, "solved to its reduced tolerances only");

    const auto job = job_of(two_norms_model());
    job->time_limit_s = 0.0;
    EXPECT_EQ(run(job).status, ENGINE_TIME_LIMIT);
    EXPECT_EQ(job->answer.x.size(), 27U);
}

/* What cannot be reached ends as a stall, with the point where it stood. */
TEST_F(clarabel, stall_is_told)
{
    const model m = two_norms_model();
    const engine_answer a = solve(m, {number("tol_gap_abs", 0.0), number("tol_gap_rel", 0.0), number("tol_feas", 0.0),
                                      number("reduced_tol_feas", 0.0)});
    EXPECT_EQ(a.status, ENGINE_UNKNOWN);
    EXPECT_EQ(a.message, "stalls");
    ASSERT_EQ(a.x.size(), 27U);
    EXPECT_NEAR(model_objective(&m, a.x.data()), 7.0, 1e-5);
    const engine_answer near =
        solve(m, {number("tol_gap_abs", 0.0), number("tol_gap_rel", 0.0), number("tol_feas", 0.0)});
    EXPECT_EQ(near.status, ENGINE_UNKNOWN);
    EXPECT_EQ(near.message, "solved to its reduced tolerances only");
    EXPECT_EQ(near.y.size(), 2U);
}

/* ---- progress and stop */

TEST_F(clarabel, progress_is_in_the_problems_terms)
{
    const model m = negated(nearest_point_model());
    const auto job = job_of(m);
    expect_optimal(m, run(job), -0.5);
    EXPECT_STREQ(job->progress.phase, "interior point");
    EXPECT_EQ(job->progress.iterations, job->answer.ipm_iterations);
    EXPECT_TRUE(job->progress.has_primal && job->progress.has_dual);
    EXPECT_NEAR(job->progress.primal_obj, -0.5, 1e-6);
    EXPECT_NEAR(job->progress.dual_obj, -0.5, 1e-6);
    EXPECT_LT(job->progress.primal_infeas, 1e-7);
    EXPECT_GE(job->progress.dual_infeas, 0.0);
    EXPECT_GT(job->start_s, 0.0);
}

TEST_F(clarabel, stop_before_the_start)
{
    const auto job = job_of(nearest_point_model());
    job->stop = true;
    EXPECT_EQ(run(job).status, ENGINE_STOPPED);
    EXPECT_EQ(job->progress.iterations, 0);
}

/* A dense problem of some tenths of a second. */
static model dense_model()
{
    constexpr size_t n = 300;
    std::mt19937 random(7);
    std::uniform_real_distribution<double> any(0.1, 1.0);
    std::vector<test_row> rows(n);
    std::vector<double> c(n);
    for (double &v : c) v = -any(random);
    for (test_row &row : rows) {
        row = {-model_inf, 1.0, std::vector<double>(n)};
        for (double &v : row.a) v = any(random);
    }
    return make_model(ZLR_SENSE_MIN, c, rows, std::vector<double>(n, 0.0), std::vector<double>(n, model_inf));
}

TEST_F(clarabel, stop_on_the_way)
{
    const auto job = job_of(dense_model());
    std::thread engine([&] { adapter->solve(job); });
    for (bool begun = false; !begun; std::this_thread::yield()) {
        const std::lock_guard<std::mutex> lock(job->mutex);
        begun = job->start_s > 0.0 && *job->progress.phase != '\0';
        if (begun) job->stop = true;
    }
    const auto stopped = std::chrono::steady_clock::now();
    engine.join();
    EXPECT_LT(std::chrono::steady_clock::now() - stopped, std::chrono::seconds(10));
    job->rest.reset();
    EXPECT_EQ(job->answer.status, ENGINE_STOPPED);
    EXPECT_EQ(job->answer.x.size(), 300U);
    EXPECT_EQ(job->answer.y.size(), 300U);
}

#endif
