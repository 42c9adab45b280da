/* ipopt_test.cpp - answers of the Ipopt module. They are held against the optimality conditions, recomputed from the functions. */
#ifdef ZELOR_IPOPT_MODULE /* builds with the engine */
#include "ipopt_support.h"

#include <cfloat>

/* ---- the problems themselves */

/* Derivatives by central differences, at a point near the start. */
static void expect_derivatives(const smooth_case &c)
{
    constexpr double h = 1e-5, tol = 1e-5;
    const smooth_problem &p = c.problem;
    const auto n = c.start.size();
    const std::vector<double> lambda = {0.7, -1.3, 0.4};
    std::vector<double> x = c.start, gradient(n), jacobian(p.jac_row.size()), hessian(p.hes_row.size());
    for (size_t j = 0; j < n; j++) x[j] += 0.01 * static_cast<double>(j + 1);
    c.gradient(x.data(), gradient.data());
    if (!jacobian.empty()) c.jacobian(x.data(), jacobian.data());
    c.hessian(x.data(), 1.0, lambda.data(), hessian.data());
    for (size_t j = 0; j < n; j++) {
        std::vector<double> up = x, down = x;
        up[j] += h, down[j] -= h;
        EXPECT_NEAR(gradient[j], (c.objective(up.data()) - c.objective(down.data())) / (2 * h), tol);
        const std::vector<double> r_up = rows_at(c, up), r_down = rows_at(c, down);
        std::vector<double> column(r_up.size(), 0.0), expected = lagrangian_at(c, up, lambda);
        for (size_t k = 0; k < jacobian.size(); k++)
            if (static_cast<size_t>(p.jac_col[k]) == j) column[static_cast<size_t>(p.jac_row[k])] += jacobian[k];
        for (size_t i = 0; i < r_up.size(); i++) EXPECT_NEAR(column[i], (r_up[i] - r_down[i]) / (2 * h), tol);
        const std::vector<double> below = lagrangian_at(c, down, lambda);
        for (size_t k = 0; k < hessian.size(); k++) {
            EXPECT_GE(p.hes_row[k], p.hes_col[k]);
            if (static_cast<size_t>(p.hes_col[k]) != j) continue;
            const auto i = static_cast<size_t>(p.hes_row[k]);
            EXPECT_NEAR(hessian[k], (expected[i] - below[i]) / (2 * h),
                        10 * tol * std::max(1.0, std::fabs(hessian[k])));
        }
    }
}

TEST(ipopt_problems, derivatives_fit_the_functions)
{
    for (const smooth_case &c :
         {hs71(), rosenbrock(), linear(), square(), too_few_columns(), infeasible(), logarithm(), chain()}) {
        SCOPED_TRACE(c.name);
        expect_derivatives(c);
    }
}

/* ---- answers */

TEST_F(ipopt, optima_and_multipliers_fit_the_problem)
{
    const struct {
        smooth_case c;
        double optimum;
        std::vector<double> x;
    } cases[] = {
        {hs71(), 17.0140173, {1.0, 4.7429994, 3.8211503, 1.3794082}},
        {rosenbrock(), 0.0, {1.0, 1.0}},
        {linear(), -5.0, {3.0, 1.0}},
        {logarithm(), 1.0, {1.0, 0.0}},
    };
    for (const auto &known : cases) {
        SCOPED_TRACE(known.c.name);
        smooth_watch watch;
        const smooth_answer a = run(known.c, &watch);
        ASSERT_EQ(a.end, SMOOTH_SOLVED) << a.message;
        EXPECT_EQ(a.message, "");
        expect_stationary(known.c, a);
        EXPECT_NEAR(known.c.objective(a.x.data()), known.optimum, 1e-6);
        for (size_t j = 0; j < known.x.size(); j++) EXPECT_NEAR(a.x[j], known.x[j], 1e-5);
        EXPECT_EQ(a.iterations, static_cast<int64_t>(watch.news.size()) - 1);
        EXPECT_EQ(watch.count[CALL_ROWS] > 0, known.c.problem.num_con > 0);
    }
}

/* The multiplier of a side is what the optimal value changes by, with the sign of the Lagrangian. */
TEST_F(ipopt, multipliers_are_the_slopes_of_the_optimal_value)
{
    constexpr double h = 1e-3, tol = 1e-5;
    const smooth_case c = hs71();
    const smooth_answer a = solve(c);
    ASSERT_EQ(a.end, SMOOTH_SOLVED);
    const auto value = [&](const std::function<void(smooth_problem *, double)> &move, double by) {
        smooth_case moved = c;
        move(&moved.problem, by);
        const smooth_answer there = solve(moved);
        EXPECT_EQ(there.end, SMOOTH_SOLVED);
        return moved.objective(there.x.data());
    };
    const auto slope = [&](const std::function<void(smooth_problem *, double)> &move) {
        return (value(move, h) - value(move, -h)) / (2 * h);
    };
    EXPECT_NEAR(slope([](smooth_problem *p, double by) { p->con_lower[0] += by; }), -a.lambda[0], tol);
    EXPECT_NEAR(slope([](smooth_problem *p, double by) { p->con_lower[1] += by, p->con_upper[1] += by; }), -a.lambda[1],
                tol);
    EXPECT_NEAR(slope([](smooth_problem *p, double by) { p->var_lower[0] += by; }), a.z_lower[0], tol);
    EXPECT_GT(a.z_lower[0], 0.5);
}

/* Fixed columns, some or all, keep their multipliers; rows may be free of entries, and of sides. */
TEST_F(ipopt, fixed_columns)
{
    smooth_case some = hs71();
    some.problem.var_lower[1] = some.problem.var_upper[1] = 4.5;
    smooth_answer a = solve(some);
    ASSERT_EQ(a.end, SMOOTH_SOLVED) << a.message;
    expect_stationary(some, a);
    EXPECT_GT(std::max(a.z_lower[1], a.z_upper[1]), 1e-3);

    smooth_case all = hs71();
    all.problem.var_lower = all.problem.var_upper = {2, 3, 4, 5};
    all.problem.con_lower[1] = 10, all.problem.con_upper[1] = 60;
    a = solve(all);
    ASSERT_EQ(a.end, SMOOTH_SOLVED) << a.message;
    EXPECT_EQ(a.x, all.problem.var_lower);
    EXPECT_EQ(a.iterations, 0);
    expect_stationary(all, a);

    all.problem.con_upper[1] = 53; /* it is 54 there */
    a = solve(all);
    EXPECT_EQ(a.end, SMOOTH_LOCALLY_INFEASIBLE);
    EXPECT_EQ(a.x, all.problem.var_lower);
    smooth_watch watch;
    watch.fault = [](call_kind kind, const double *) { return kind == CALL_ROWS ? FAULT_NAN : FAULT_NONE; };
    a = run(all, &watch);
    EXPECT_EQ(a.end, SMOOTH_NO_VALUE);
    EXPECT_TRUE(a.x.empty());
}

TEST_F(ipopt, no_columns)
{
    smooth_case c = square();
    c.problem = problem_of({}, {}, {1, -no_bound}, {1, 3});
    c.start.clear();
    c.objective = [](const double *) { return 7.0; };
    c.gradient = [](const double *, double *) {};
    c.jacobian = c.gradient;
    c.rows = [](const double *, double *v) { v[0] = 1, v[1] = 2; };
    smooth_answer a = solve(c);
    EXPECT_EQ(a.end, SMOOTH_SOLVED) << a.message;
    EXPECT_TRUE(a.x.empty());
    EXPECT_EQ(a.lambda, (std::vector<double>{0, 0}));
    c.problem.con_upper[1] = 1.5;
    EXPECT_EQ(solve(c).end, SMOOTH_LOCALLY_INFEASIBLE);
    c.problem = problem_of({}, {}, {}, {});
    EXPECT_EQ(solve(c).end, SMOOTH_SOLVED);
    c.objective = [](const double *) { return std::nan(""); };
    EXPECT_EQ(solve(c).end, SMOOTH_NO_VALUE);
}

/* A row of constants, without entries: it holds or it does not. */
TEST_F(ipopt, rows_without_entries)
{
    smooth_case c = rosenbrock();
    c.problem.num_con = 2;
    c.problem.con_lower = {1, -no_bound};
    c.problem.con_upper = {3, no_bound};
    c.rows = [](const double *, double *v) { v[0] = 2, v[1] = -8; };
    smooth_answer a = solve(c);
    ASSERT_EQ(a.end, SMOOTH_SOLVED) << a.message;
    expect_stationary(c, a);
    EXPECT_NEAR(a.x[0], 1.0, 1e-6);

    c.problem.con_upper[0] = 1.5;
    smooth_watch watch;
    a = run(c, &watch);
    EXPECT_EQ(a.end, SMOOTH_LOCALLY_INFEASIBLE) << a.message;
    EXPECT_EQ(watch.news.back().primal_infeas, 0.5);
}

/* Bounds are bounds however large, and none where they are infinite. */
TEST_F(ipopt, large_bounds)
{
    for (const double size : {1e16, 1e20, 1e100, 1e300, DBL_MAX}) {
        SCOPED_TRACE(size);
        smooth_case c = hs71();
        c.problem.con_upper[0] = size;
        c.problem.var_upper.assign(4, size);
        const smooth_answer a = solve(c);
        ASSERT_EQ(a.end, SMOOTH_SOLVED) << a.message;
        expect_stationary(c, a);
        EXPECT_NEAR(c.objective(a.x.data()), 17.0140173, 1e-6);
    }
    for (const double at : {-2e19, 2e19}) { /* fixed, if the sides beyond the engine's own limit of 1e19 count */
        smooth_case c = rosenbrock();
        c.objective = [](const double *x) { return x[1] * x[1]; };
        c.gradient = [](const double *x, double *v) { v[0] = 0, v[1] = 2 * x[1]; };
        c.hessian = [](const double *, double w, const double *, double *v) { v[0] = v[1] = 0, v[2] = 2 * w; };
        c.problem.var_lower[0] = c.problem.var_upper[0] = at;
        c.start = {4 * at, 3};
        const smooth_answer a = solve(c);
        ASSERT_EQ(a.end, SMOOTH_SOLVED) << a.message;
        EXPECT_EQ(a.x[0], at);
        EXPECT_NEAR(a.x[1], 0.0, 1e-7);
    }
}

TEST_F(ipopt, problems_without_a_solution)
{
    const smooth_case no_point = infeasible();
    smooth_watch watch;
    smooth_answer a = run(no_point, &watch);
    ASSERT_EQ(a.end, SMOOTH_LOCALLY_INFEASIBLE) << a.message;
    ASSERT_EQ(a.x.size(), 2u);
    EXPECT_NEAR(a.x[0], 0.0, 1e-3);
    EXPECT_NEAR(a.x[1], 0.0, 1e-3);
    EXPECT_TRUE(
        std::any_of(watch.news.begin(), watch.news.end(), [](const smooth_news &n) { return n.in_restoration; }));
    EXPECT_FALSE(watch.news.front().in_restoration);
    EXPECT_NEAR(watch.news.back().primal_infeas, 1.0, 1e-3);

    smooth_case endless = linear();
    endless.problem.con_upper = {no_bound, no_bound};
    a = solve(endless);
    EXPECT_EQ(a.end, SMOOTH_DIVERGING) << a.message;
}

TEST_F(ipopt, as_many_equations_as_columns_or_more)
{
    const smooth_case c = square();
    smooth_answer a = solve(c);
    ASSERT_EQ(a.end, SMOOTH_SQUARE_SOLVED) << a.message;
    EXPECT_NEAR(a.x[0], a.x[1], 1e-7);
    EXPECT_NEAR(std::fabs(a.x[0]), 1.0, 1e-7);

    a = solve(too_few_columns());
    EXPECT_EQ(a.end, SMOOTH_TOO_FEW_COLUMNS) << a.message;
    EXPECT_TRUE(a.x.empty());
    EXPECT_EQ(a.iterations, 0);
}

TEST_F(ipopt, contradicting_or_misshapen_data_is_told)
{
    static const struct {
        const char *text;
        void (*spoil)(smooth_case *c);
    } cases[] = {
        {"column 2", [](smooth_case *c) { c->problem.var_lower[2] = 6; }},
        {"row 1", [](smooth_case *c) { c->problem.con_upper[1] = 39; }},
        {"row 0", [](smooth_case *c) { c->problem.con_lower[0] = std::nan(""); }},
        {"lengths", [](smooth_case *c) { c->start.pop_back(); }},
        {"lengths", [](smooth_case *c) { c->problem.con_upper.pop_back(); }},
        {"lengths", [](smooth_case *c) { c->problem.jac_col.pop_back(); }},
        {"lengths", [](smooth_case *c) { c->problem.hes_row.pop_back(); }},
    };
    for (const auto &bad : cases) {
        SCOPED_TRACE(bad.text);
        smooth_case c = hs71();
        bad.spoil(&c);
        smooth_watch watch;
        const smooth_answer a = run(c, &watch);
        EXPECT_EQ(a.end, SMOOTH_FAILED);
        EXPECT_NE(a.message.find(bad.text), std::string::npos) << a.message;
        EXPECT_TRUE(a.x.empty());
        EXPECT_EQ(watch.count[CALL_OBJECTIVE], 0);
    }
}

/* ---- what is told on the way */

/* The violation is that of the problem as it was given: rows with such gradients are scaled down by the engine. */
TEST_F(ipopt, iterations_are_told_in_the_problem_s_own_scale)
{
    static const smooth_case unscaled = hs71();
    smooth_case c = hs71();
    c.problem.con_lower[1] = c.problem.con_upper[1] = 40e4;
    c.rows = [](const double *x, double *v) { unscaled.rows(x, v), v[1] *= 1e4; };
    c.jacobian = [](const double *x, double *v) {
        unscaled.jacobian(x, v);
        for (int k = 4; k < 8; k++) v[k] *= 1e4;
    };
    c.hessian = [](const double *x, double w, const double *l, double *v) {
        const double scaled[2] = {l[0], 1e4 * l[1]};
        unscaled.hessian(x, w, scaled, v);
    };
    smooth_watch watch;
    watch.go_on = [&](const smooth_news &news) {
        const std::vector<double> rows = rows_at(c, watch.jacobian_x);
        const double violation = std::max({0.0, 25.0 - rows[0], std::fabs(rows[1] - 40e4)});
        EXPECT_EQ(news.primal_infeas, violation) << "iteration " << news.iterations;
        EXPECT_EQ(news.objective, c.objective(watch.jacobian_x.data())) << "iteration " << news.iterations;
        return true;
    };
    const smooth_answer a = run(c, &watch);
    ASSERT_EQ(a.end, SMOOTH_SOLVED) << a.message;
    EXPECT_GT(watch.news.front().primal_infeas, 1e4);
    EXPECT_LT(watch.news.back().primal_infeas, 1e-2);
    EXPECT_LT(watch.news.back().dual_infeas, 1e-6);
    for (size_t k = 0; k < watch.news.size(); k++) EXPECT_EQ(watch.news[k].iterations, static_cast<int64_t>(k));
}

/* ---- starts */

TEST_F(ipopt, warm_start_is_shorter)
{
    const smooth_case c = hs71();
    const smooth_answer cold = solve(c);
    ASSERT_EQ(cold.end, SMOOTH_SOLVED);
    smooth_start start = {cold.x, cold.lambda, cold.z_lower, cold.z_upper};
    const smooth_answer plain = solve(c, {}, &start);
    const std::vector<engine_option> near = {number_option("mu_init", 1e-8),
                                             number_option("warm_start_bound_push", 1e-8),
                                             number_option("warm_start_mult_bound_push", 1e-8)};
    const smooth_answer warm = solve(c, near, &start);
    EXPECT_EQ(warm.end, SMOOTH_SOLVED);
    expect_stationary(c, warm);
    EXPECT_LT(plain.iterations, cold.iterations);
    EXPECT_LT(warm.iterations, plain.iterations);

    std::vector<engine_option> off = near;
    off.push_back(word_option("warm_start_init_point", "no"));
    EXPECT_GT(solve(c, off, &start).iterations, warm.iterations) << "an option of the user's goes first";
    start.z_upper.clear(); /* not all three: a cold start from the same point */
    EXPECT_GT(solve(c, near, &start).iterations, warm.iterations);
}

/* ---- the adapter record */

TEST_F(ipopt, takes_smooth_problems_only)
{
    const model m;
    for (const engine_method method : {METHOD_CHOOSE, METHOD_INTPNT, METHOD_MIP})
        EXPECT_FALSE(adapter->accepts(&m, method));
    EXPECT_FALSE(adapter->accepts(nullptr, METHOD_CHOOSE));
    adapter->solve(nullptr);
    const auto job = std::make_shared<engine_job>();
    adapter->solve(job);
    EXPECT_EQ(job->answer.status, ENGINE_REFUSED);
    EXPECT_NE(job->answer.message, "");
    EXPECT_EQ(adapter->sessions, nullptr);
    EXPECT_STREQ(adapter->name, "Ipopt");
    EXPECT_EQ(std::string(adapter->version()).rfind("3.", 0), 0u);
    EXPECT_EQ(std::string(adapter->licence).rfind("EPL-", 0), 0u);
}

#endif
