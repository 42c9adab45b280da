/* nonlinear_test.cpp - general nonlinear functions through the interface: answers, multipliers, what is told of what. */
#include "function_model.h"

#include <algorithm>

class nonlinear : public api_optimize
{
protected:
    /* Rows and columns with bounds and no linear parts, and the functions. */
    void fill_functions(function_model *model, const std::vector<std::pair<double, double>> &rows,
                        const std::vector<std::pair<double, double>> &columns, int32_t sense = ZLR_SENSE_MIN)
    {
        api_model m = {sense, std::vector<double>(columns.size(), 0.0), {}, {}, {}, {}, 0.0};
        for (const auto &[lower, upper] : rows)
            m.rows.push_back({lower, upper, std::vector<double>(columns.size(), 0.0)});
        for (const auto &[lower, upper] : columns) {
            m.lower.push_back(lower);
            m.upper.push_back(upper);
        }
        model->num_var = columns.size();
        fill(task, m);
        ASSERT_EQ(put_functions(task, model), ZLR_RES_OK) << log;
    }

    void start_at(const std::vector<double> &x)
    {
        ASSERT_EQ(ZLR_putsolution(task, ZLR_SOL_ITR, nullptr, nullptr, nullptr, nullptr, x.data(), nullptr, nullptr,
                                  nullptr, nullptr, nullptr, nullptr),
                  ZLR_RES_OK);
    }

    void put(const char *name, const char *value) { ASSERT_EQ(ZLR_putparam(task, name, value), ZLR_RES_OK) << log; }

    std::string status_text(int32_t solsta)
    {
        char text[1024] = "";
        EXPECT_EQ(ZLR_solstatostr(task, solsta, text), ZLR_RES_OK);
        return text;
    }

    int64_t iterations()
    {
        int32_t num = 0;
        EXPECT_EQ(ZLR_getintinf(task, ZLR_IINF_IPM_ITERATIONS, &num), ZLR_RES_OK);
        return num;
    }
};

static bool has(const std::string &text, const char *part) { return text.find(part) != std::string::npos; }

/* Hock and Schittkowski, problem 71, times `sign`: the product of all at least 25, the sum of squares 40. */
static function_model hs71(double sign)
{
    function_model m;
    m.objective = [sign](const std::vector<jet> &x) { return (x[0] * x[3] * (x[0] + x[1] + x[2]) + x[2]) * sign; };
    m.rows = {[](const std::vector<jet> &x) { return x[0] * x[1] * x[2] * x[3]; },
              [](const std::vector<jet> &x) { return x[0] * x[0] + x[1] * x[1] + x[2] * x[2] + x[3] * x[3]; }};
    return m;
}

static const std::vector<std::pair<double, double>> hs71_columns(4, {1.0, 5.0});

TEST_F(nonlinear, a_minimum_and_a_maximum_with_the_multipliers_of_their_perturbations)
{
    for (const int32_t sense : {ZLR_SENSE_MIN, ZLR_SENSE_MAX}) {
        SCOPED_TRACE(sense);
        const double sign = sense == ZLR_SENSE_MAX ? -1.0 : 1.0;
        function_model m = hs71(sign);
        const auto solve = [&](double product, double squares) {
            renew();
            fill_functions(&m, {{product, inf}, {squares, squares}}, hs71_columns, sense);
            start_at({1.0, 5.0, 5.0, 1.0});
            EXPECT_EQ(ZLR_optimize(task), ZLR_RES_OK) << log;
            return get_solution(task, ZLR_SOL_ITR);
        };
        const double step = 1e-3;
        const double by_product = (solve(25.0 + step, 40.0).primal - solve(25.0 - step, 40.0).primal) / (2.0 * step);
        const double by_squares = (solve(25.0, 40.0 + step).primal - solve(25.0, 40.0 - step).primal) / (2.0 * step);
        const api_solution s = solve(25.0, 40.0);
        EXPECT_EQ(s.solsta, ZLR_SOLSTA_OPTIMAL);
        EXPECT_EQ(status_text(s.solsta), "LOCALLY_OPTIMAL");
        EXPECT_NEAR(s.primal, sign * 17.0140173, 1e-6);
        EXPECT_NEAR(s.dual, s.primal, 1e-6);
        EXPECT_NEAR(s.xx[1], 4.7429994, 1e-6);
        EXPECT_NEAR(s.y[0], by_product, 1e-5);
        EXPECT_NEAR(s.y[1], by_squares, 1e-5);
        EXPECT_NEAR(s.slx[0], sign * 1.0878712, 1e-5); /* the only bound that holds */
        EXPECT_TRUE(has(log, "Ipopt"));
        EXPECT_EQ(ZLR_solutionsummary(task, ZLR_STREAM_MSG), ZLR_RES_OK);
        EXPECT_TRUE(has(log, "LOCALLY_OPTIMAL")) << log;
    }
}

/* Linear and quadratic terms of the task stand beside the functions; the fixed term does not. */
TEST_F(nonlinear, functions_are_added_to_what_the_task_holds)
{
    function_model m;
    m.objective = [](const std::vector<jet> &x) { return jet_exp(x[0]) + 7.0; };
    m.rows = {[](const std::vector<jet> &x) { return x[0] * x[1]; }, nullptr};
    fill_functions(&m, {{2.0, inf}, {-inf, 3.0}}, {{0.1, inf}, {0.1, inf}});
    const double cost = 1.0, square = 2.0, one = 1.0;
    const int32_t column = 1, row = 1;
    ASSERT_EQ(ZLR_putclist(task, 1, &column, &cost), ZLR_RES_OK);
    ASSERT_EQ(ZLR_putcfix(task, 1000.0), ZLR_RES_OK);
    ASSERT_EQ(ZLR_putqobj(task, 1, &column, &column, &square), ZLR_RES_OK);
    ASSERT_EQ(ZLR_putqconk(task, 0, 1, &column, &column, &square), ZLR_RES_OK);
    ASSERT_EQ(ZLR_putacol(task, 0, 1, &row, &one), ZLR_RES_OK);
    /* minimise exp(x) + 7 + y + y^2, x y + y^2 >= 2, x <= 3 */
    ASSERT_EQ(ZLR_optimize(task), ZLR_RES_OK) << log;
    const api_solution s = get_solution(task, ZLR_SOL_ITR);
    const double x = s.xx[0], y = s.xx[1];
    EXPECT_NEAR(s.primal, std::exp(x) + 7.0 + y + y * y, 1e-9);
    EXPECT_NEAR(x * y + y * y, 2.0, 1e-6);
    EXPECT_NEAR(std::exp(x) - s.y[0] * y - s.slx[0], 0.0, 1e-5);
    EXPECT_NEAR(1.0 + 2.0 * y - s.y[0] * (x + 2.0 * y), 0.0, 1e-5);
    int32_t type = 0;
    EXPECT_EQ(ZLR_getprobtype(task, &type), ZLR_RES_OK);
    EXPECT_EQ(type, ZLR_PROBTYPE_NL);
    ASSERT_EQ(ZLR_putnlfunc(task, nullptr, nullptr, nullptr), ZLR_RES_OK);
    EXPECT_EQ(ZLR_getprobtype(task, &type), ZLR_RES_OK);
    EXPECT_EQ(type, ZLR_PROBTYPE_QCQO);
}

TEST_F(nonlinear, linear_functions_give_an_optimum_of_the_whole)
{
    function_model m;
    m.is_linear = true;
    m.objective = [](const std::vector<jet> &x) { return x[0] * 2.0 + x[1]; };
    m.rows = {[](const std::vector<jet> &x) { return x[0] + x[1]; }};
    fill_functions(&m, {{1.0, inf}}, {{0.0, inf}, {0.0, inf}});
    ASSERT_EQ(ZLR_optimize(task), ZLR_RES_OK) << log;
    EXPECT_EQ(status_text(get_solution(task, ZLR_SOL_ITR).solsta), "OPTIMAL");
}

/* ---- stops */

struct stopper {
    int32_t after = 0, calls = 0;
};

static int32_t stop_after(ZLR_task *, void *handle, const ZLR_progress *)
{
    auto *s = static_cast<stopper *>(handle);
    return ++s->calls > s->after ? 1 : 0;
}

/* Worst violation of problem 71, and its objective. */
static std::pair<double, double> measure(const function_model *m, const std::vector<double> &x)
{
    const std::vector<double> v = values_at(m, x);
    double worst = std::max({0.0, 25.0 - v[1], std::fabs(v[2] - 40.0)});
    for (const double value : x) worst = std::max({worst, 1.0 - value, value - 5.0});
    return {worst, v[0]};
}

static void expect_best_of_asked(const function_model *m, const std::vector<double> &x)
{
    const auto [worst, objective] = measure(m, x);
    for (const std::vector<double> &other : m->asked) {
        const auto [other_worst, other_objective] = measure(m, other);
        if (worst > 1e-6) {
            EXPECT_GE(other_worst, worst * 0.9); /* by the shares of what is allowed, which differ by row */
        } else if (other_worst <= 1e-7) {
            EXPECT_GE(other_objective, objective - 1e-9);
        }
    }
}

TEST_F(nonlinear, a_stop_at_any_iteration_leaves_the_best_point_that_was_seen)
{
    bool ended = false;
    for (int32_t k = 0; k < 60 && !ended; k++) {
        SCOPED_TRACE(k);
        renew();
        function_model m = hs71(1.0);
        fill_functions(&m, {{25.0, inf}, {40.0, 40.0}}, hs71_columns);
        stopper s;
        s.after = k;
        ASSERT_EQ(ZLR_putcallbackfunc(task, stop_after, &s), ZLR_RES_OK);
        const int32_t code = ZLR_optimize(task);
        ended = code == ZLR_RES_OK;
        if (ended) break;
        ASSERT_EQ(code, ZLR_RES_TRM_USER_STOP);
        int32_t defined = 0;
        ASSERT_EQ(ZLR_solutiondef(task, ZLR_SOL_ITR, &defined), ZLR_RES_OK);
        if (k < 2 || defined == 0) continue; /* before the first evaluation */
        expect_best_of_asked(&m, get_solution(task, ZLR_SOL_ITR).xx);
    }
    EXPECT_TRUE(ended);
}

/* The engine moves a start away from its bounds, and so never sees this one. */
TEST_F(nonlinear, a_stop_leaves_a_given_start_that_is_better)
{
    function_model m;
    m.objective = [](const std::vector<jet> &x) { return x[0] + x[1] * x[1]; };
    m.rows = {[](const std::vector<jet> &x) { return x[0] * x[0] + x[1] * x[1]; }};
    fill_functions(&m, {{-inf, 4.0}}, {{0.0, inf}, {-5.0, 5.0}});
    start_at({0.0, 0.0});
    stopper s;
    s.after = 3;
    ASSERT_EQ(ZLR_putcallbackfunc(task, stop_after, &s), ZLR_RES_OK);
    ASSERT_EQ(ZLR_optimize(task), ZLR_RES_TRM_USER_STOP);
    ASSERT_GT(m.asked.size(), 1u);
    const api_solution found = get_solution(task, ZLR_SOL_ITR);
    EXPECT_EQ(found.xx, (std::vector<double>{0.0, 0.0}));
    EXPECT_EQ(found.solsta, ZLR_SOLSTA_PRIM_FEAS);
}

TEST_F(nonlinear, limits_of_iterations_and_time_have_their_codes)
{
    function_model m = hs71(1.0);
    fill_functions(&m, {{25.0, inf}, {40.0, 40.0}}, hs71_columns);
    put("NLP_MAX_ITERATIONS", "4");
    EXPECT_EQ(ZLR_optimize(task), ZLR_RES_TRM_MAX_ITERATIONS) << log;
    expect_best_of_asked(&m, get_solution(task, ZLR_SOL_ITR).xx);
    put("TIME_LIMIT", "0");
    EXPECT_EQ(ZLR_optimize(task), ZLR_RES_TRM_TIME_LIMIT) << log;
}

/* ---- what is not solved */

TEST_F(nonlinear, local_infeasibility_and_growth_without_end_are_no_certificates)
{
    function_model m;
    m.objective = [](const std::vector<jet> &x) { return x[0]; };
    m.rows = {[](const std::vector<jet> &x) { return x[0] * x[0] + 1.0; }};
    fill_functions(&m, {{-inf, 0.0}}, {{-10.0, 10.0}});
    EXPECT_EQ(ZLR_optimize(task), ZLR_RES_TRM_LOCAL_INFEASIBLE) << log;
    EXPECT_TRUE(has(log, "that is no proof that the problem is infeasible")) << log;
    EXPECT_TRUE(has(log, "from a perturbed start")) << log;
    EXPECT_EQ(m.hessians_without_objective, 0); /* the way back to feasible points weighs the objective with 0 */
    api_solution s = get_solution(task, ZLR_SOL_ITR);
    EXPECT_EQ(s.solsta, ZLR_SOLSTA_UNKNOWN);
    EXPECT_NEAR(s.xx[0], 0.0, 1e-2);

    renew();
    function_model without_end;
    without_end.objective = [](const std::vector<jet> &x) { return x[0] * x[0] * -1.0; };
    fill_functions(&without_end, {}, {{-inf, inf}});
    start_at({1.0});
    EXPECT_EQ(ZLR_optimize(task), ZLR_RES_TRM_DIVERGING) << log;
    EXPECT_NE(get_solution(task, ZLR_SOL_ITR).solsta, ZLR_SOLSTA_DUAL_INFEAS_CER);
}

TEST_F(nonlinear, a_function_without_a_value_is_told_with_row_and_point)
{
    function_model m;
    m.objective = [](const std::vector<jet> &x) { return x[0] * x[0]; };
    m.rows = {nullptr, [](const std::vector<jet> &x) { return jet_log(x[0] * -1.0 - 2.0); }};
    fill_functions(&m, {{-inf, inf}, {0.0, inf}}, {{0.0, 10.0}});
    ASSERT_EQ(ZLR_putconname(task, 1, "reach"), ZLR_RES_OK);
    ASSERT_EQ(ZLR_putvarname(task, 0, "far"), ZLR_RES_OK);
    start_at({3.0});
    EXPECT_EQ(ZLR_optimize(task), ZLR_RES_ERR_NL_EVALUATION) << log;
    EXPECT_TRUE(has(log, "Row reach has no value at far = ")) << log;

    renew();
    function_model objective;
    objective.objective = [](const std::vector<jet> &x) { return jet_log(x[0]); };
    fill_functions(&objective, {}, {{-5.0, -1.0}});
    EXPECT_EQ(ZLR_optimize(task), ZLR_RES_ERR_NL_EVALUATION) << log;
    EXPECT_TRUE(has(log, "The objective has no value at x1 = ")) << log;
}

/* At a trial point the step is cut; at the start alone another start is tried. */
TEST_F(nonlinear, points_without_a_value_are_got_around)
{
    function_model trial;
    trial.objective = [](const std::vector<jet> &x) { return x[0] - jet_log(x[0]) * 1e-3; };
    fill_functions(&trial, {}, {{-inf, inf}});
    start_at({100.0});
    EXPECT_EQ(ZLR_optimize(task), ZLR_RES_OK) << log;
    EXPECT_NEAR(get_solution(task, ZLR_SOL_ITR).xx[0], 1e-3, 1e-6);

    renew();
    function_model start;
    start.objective = [](const std::vector<jet> &x) { return jet_log(x[0] * x[0]) * jet_log(x[0] * x[0]); };
    fill_functions(&start, {}, {{-inf, inf}});
    EXPECT_EQ(ZLR_optimize(task), ZLR_RES_OK) << log;
    EXPECT_NEAR(std::fabs(get_solution(task, ZLR_SOL_ITR).xx[0]), 1.0, 1e-6);
    EXPECT_TRUE(has(log, "from a perturbed start")) << log;

    renew();
    put("NLP_MAX_ATTEMPTS", "1");
    fill_functions(&start, {}, {{-inf, inf}});
    EXPECT_EQ(ZLR_optimize(task), ZLR_RES_ERR_NL_EVALUATION) << log;
}

TEST_F(nonlinear, what_is_not_for_functions_says_so)
{
    function_model m = hs71(1.0);
    fill_functions(&m, {{25.0, inf}, {40.0, 40.0}}, hs71_columns);
    EXPECT_EQ(ZLR_putnlfunc(task, &m, nullptr, [](auto...) -> int32_t { return 0; }), ZLR_RES_ERR_NULL_POINTER);
    EXPECT_EQ(ZLR_writedata(task, "model.lp"), ZLR_RES_ERR_WRITE_FORMAT);
    EXPECT_TRUE(has(log, "which no format holds")) << log;
    EXPECT_EQ(ZLR_toconic(task), ZLR_RES_ERR_ARGUMENT);
    ZLR_task *part = nullptr;
    EXPECT_EQ(ZLR_getinfeasiblesubproblem(task, ZLR_SOL_ITR, &part), ZLR_RES_ERR_ARGUMENT);
    EXPECT_EQ(ZLR_primalrepair(task, nullptr, nullptr, nullptr, nullptr), ZLR_RES_ERR_ARGUMENT);
    EXPECT_EQ(ZLR_sensitivityreport(task, ZLR_STREAM_MSG), ZLR_RES_ERR_ARGUMENT);
    EXPECT_EQ(ZLR_analyzeproblem(task, ZLR_STREAM_MSG), ZLR_RES_OK);
    EXPECT_TRUE(has(log, "not looked into here")) << log;
    ASSERT_EQ(ZLR_putvartype(task, 0, ZLR_VAR_INT), ZLR_RES_OK);
    EXPECT_EQ(ZLR_optimize(task), ZLR_RES_ERR_NO_ENGINE);
    EXPECT_TRUE(has(log, "integer columns together with general nonlinear functions")) << log;
}

/* ---- starts and settings */

TEST_F(nonlinear, an_earlier_solution_with_multipliers_spares_iterations)
{
    function_model m = hs71(1.0);
    fill_functions(&m, {{25.0, inf}, {40.0, 40.0}}, hs71_columns);
    ASSERT_EQ(ZLR_optimize(task), ZLR_RES_OK) << log;
    const int64_t cold = iterations();
    ASSERT_EQ(ZLR_optimize(task), ZLR_RES_OK) << log;
    const int64_t warm = iterations();
    EXPECT_LT(2 * warm, cold);
    EXPECT_NEAR(get_solution(task, ZLR_SOL_ITR).primal, 17.0140173, 1e-6);
    put("NLP_WARM_START", "OFF");
    ASSERT_EQ(ZLR_optimize(task), ZLR_RES_OK) << log;
    EXPECT_GT(iterations(), warm);
}

TEST_F(nonlinear, parameters_reach_the_engine)
{
    static const struct {
        const char *name, *value;
    } cases[] = {{"NLP_TOL", "1e-2"},
                 {"NLP_MU_INIT", "1e-4"},
                 {"NLP_BOUND_PUSH", "1"},
                 {"NLP_HESSIAN", "LIMITED_MEMORY"},
                 {"NLP_MU_STRATEGY", "ADAPTIVE"},
                 {"NLP_OPTIONS", "mu_init=1e-4"}};
    const auto solve = [&](const char *name, const char *value) {
        renew();
        function_model m = hs71(1.0);
        fill_functions(&m, {{25.0, inf}, {40.0, 40.0}}, hs71_columns);
        put(name, value);
        EXPECT_EQ(ZLR_optimize(task), ZLR_RES_OK) << log;
        return get_solution(task, ZLR_SOL_ITR).xx;
    };
    const std::vector<double> usual = solve("NLP_MAX_ITERATIONS", "100");
    for (const auto &c : cases) EXPECT_NE(solve(c.name, c.value), usual) << c.name;

    renew();
    function_model m = hs71(1.0);
    fill_functions(&m, {{25.0, inf}, {40.0, 40.0}}, hs71_columns);
    put("NLP_OPTIONS", "no_such_option=1");
    EXPECT_EQ(ZLR_optimize(task), ZLR_RES_ERR_ENGINE);
    EXPECT_TRUE(has(log, "no_such_option")) << log;
}

/* The distance from a minimum of fourth order shrinks by a third in each step, so that demands show in the iterations. */
TEST_F(nonlinear, scaling_and_acceptable_points)
{
    const auto solve = [&](const std::vector<std::pair<const char *, const char *>> &settings) {
        renew();
        function_model m;
        m.objective = [](const std::vector<jet> &x) {
            const jet square = (x[0] - 3.0) * (x[0] - 3.0);
            return square * square * 1e5;
        };
        fill_functions(&m, {}, {{-inf, inf}});
        put("NLP_MAX_ATTEMPTS", "1");
        for (const auto &[name, value] : settings) put(name, value);
        (void)ZLR_optimize(task);
        return iterations();
    };
    EXPECT_LT(solve({}), solve({{"NLP_SCALING", "NONE"}}));
    const int64_t strict = solve({{"NLP_TOL", "1e-14"}});
    const int64_t lax = solve({{"NLP_TOL", "1e-14"}, {"NLP_ACCEPTABLE_TOL", "1e-3"}});
    EXPECT_LT(lax, strict);
    EXPECT_LT(solve({{"NLP_TOL", "1e-14"}, {"NLP_ACCEPTABLE_TOL", "1e-3"}, {"NLP_ACCEPTABLE_ITERATIONS", "3"}}), lax);
}

/* ---- quadratic problems that are not convex */

TEST_F(nonlinear, a_quadratic_problem_that_is_not_convex_is_solved_locally_when_asked_for)
{
    /* minimise x y on the disc of radius 2: -2 at (t, -t) and (-t, t), t = sqrt 2. */
    api_model m = {ZLR_SENSE_MIN, {0.0, 0.0}, {{-inf, 4.0, {0.0, 0.0}}}, {-inf, -inf}, {inf, inf}, {}, 0.0};
    const int32_t first[] = {0, 1}, i = 1, j = 0;
    const double two[] = {2.0, 2.0}, one = 1.0;
    const auto build = [&] {
        renew();
        fill(task, m);
        ASSERT_EQ(ZLR_putqobj(task, 1, &i, &j, &one), ZLR_RES_OK);
        ASSERT_EQ(ZLR_putqconk(task, 0, 2, first, first, two), ZLR_RES_OK);
    };
    build();
    EXPECT_EQ(ZLR_optimize(task), ZLR_RES_ERR_NONCONVEX) << log;
    build();
    put("NONCONVEX", "LOCAL");
    start_at({1.0, -0.5});
    ASSERT_EQ(ZLR_optimize(task), ZLR_RES_OK) << log;
    const api_solution s = get_solution(task, ZLR_SOL_ITR);
    EXPECT_EQ(status_text(s.solsta), "LOCALLY_OPTIMAL");
    EXPECT_NEAR(s.primal, -2.0, 1e-6);
    EXPECT_NEAR(s.y[0], -0.5, 1e-6); /* the optimum is -r^2 / 2 */
    EXPECT_NEAR(s.xx[0], std::sqrt(2.0), 1e-5);
}
