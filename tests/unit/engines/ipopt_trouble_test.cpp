/* ipopt_trouble_test.cpp - the Ipopt module where things go wrong or come together: functions without values, what they throw,
 * stops, limits, options, threads, a file of options in the folder. */
#ifdef ZELOR_IPOPT_MODULE /* builds with the engine */
#include "ipopt_support.h"

#include <atomic>
#include <filesystem>
#include <fstream>
#include <new>
#include <stdexcept>
#include <thread>

static constexpr call_kind kinds[] = {CALL_OBJECTIVE, CALL_GRADIENT, CALL_ROWS, CALL_JACOBIAN, CALL_HESSIAN};
static constexpr call_fault faults[] = {FAULT_FALSE, FAULT_NAN, FAULT_INF};

/* ---- functions without values */

TEST_F(ipopt, no_value_anywhere)
{
    for (const call_kind kind : kinds)
        for (const call_fault fault : faults) {
            SCOPED_TRACE("kind " + std::to_string(kind) + ", fault " + std::to_string(fault));
            smooth_watch watch;
            watch.fault = [&](call_kind k, const double *) { return k == kind ? fault : FAULT_NONE; };
            const smooth_answer a = run(hs71(), &watch);
            EXPECT_EQ(a.end, SMOOTH_NO_VALUE) << a.message;
            EXPECT_EQ(a.iterations, 0);
            EXPECT_GT(watch.count[kind], 0);
            EXPECT_LE(watch.count[kind], 3);
            EXPECT_TRUE(a.x.empty() || a.x.size() == 4);
        }
}

/* Where the values end a shorter step leads back to where there are some. */
TEST_F(ipopt, no_value_at_trial_points)
{
    const smooth_case c = logarithm();
    for (const call_fault fault : faults) {
        SCOPED_TRACE(fault);
        int beyond = 0;
        smooth_watch watch;
        watch.fault = [&](call_kind, const double *x) {
            beyond += x[0] <= 0.0 ? 1 : 0;
            return x[0] <= 0.0 ? fault : FAULT_NONE;
        };
        const smooth_answer a = run(c, &watch);
        ASSERT_EQ(a.end, SMOOTH_SOLVED) << a.message;
        EXPECT_NEAR(a.x[0], 1.0, 1e-6);
        EXPECT_GT(beyond, 0);
    }
    smooth_case from_beyond = c;
    from_beyond.start[0] = -1;
    const smooth_answer a = solve(from_beyond); /* by the logarithm's own NaN */
    EXPECT_EQ(a.end, SMOOTH_NO_VALUE);
}

/* The same by a row: sqrt(x0) <= 1.5, which a full step from 100 takes for x0 <= -70. */
TEST_F(ipopt, no_value_of_rows_at_trial_points)
{
    smooth_case c = logarithm();
    c.problem.num_con = 1;
    c.problem.con_lower = {-no_bound};
    c.problem.con_upper = {1.5};
    c.problem.jac_row = c.problem.jac_col = {0};
    c.start = {100, 1};
    c.objective = [](const double *x) { return std::pow(x[0] - 9, 2) + x[1] * x[1]; };
    c.gradient = [](const double *x, double *v) { v[0] = 2 * (x[0] - 9), v[1] = 2 * x[1]; };
    c.rows = [](const double *x, double *v) { v[0] = std::sqrt(x[0]); };
    c.jacobian = [](const double *x, double *v) { v[0] = 0.5 / std::sqrt(x[0]); };
    c.hessian = [](const double *x, double w, const double *l, double *v) {
        v[0] = 2 * w - 0.25 * l[0] / (x[0] * std::sqrt(x[0])), v[1] = 2 * w;
    };
    int beyond = 0;
    smooth_watch watch;
    watch.fault = [&](call_kind, const double *x) {
        beyond += x[0] < 0.0 ? 1 : 0;
        return FAULT_NONE;
    };
    const smooth_answer a = run(c, &watch);
    ASSERT_EQ(a.end, SMOOTH_SOLVED) << a.message;
    expect_stationary(c, a);
    EXPECT_NEAR(a.x[0], 2.25, 1e-6);
    EXPECT_GT(beyond, 0);
}

/* A derivative that fails at a later point: no step can be made up for it. */
TEST_F(ipopt, no_value_of_a_derivative_on_the_way)
{
    for (const call_kind kind : {CALL_GRADIENT, CALL_JACOBIAN, CALL_HESSIAN})
        for (const call_fault fault : faults) {
            SCOPED_TRACE("kind " + std::to_string(kind) + ", fault " + std::to_string(fault));
            smooth_watch watch;
            watch.fault = [&](call_kind k, const double *) {
                return k == kind && watch.count[k] > 4 ? fault : FAULT_NONE;
            };
            const smooth_answer a = run(hs71(), &watch);
            EXPECT_EQ(a.end, SMOOTH_NO_VALUE) << a.message;
            EXPECT_GT(a.iterations, 0);
            ASSERT_EQ(a.x.size(), 4u);
            for (const double v : a.x) EXPECT_TRUE(std::isfinite(v));
        }
}

/* ---- what functions throw */

TEST_F(ipopt, what_is_thrown_ends_the_solve)
{
    smooth_watch whole;
    ASSERT_EQ(run(hs71(), &whole).end, SMOOTH_SOLVED);
    int total = 0;
    for (const int num : whole.count) total += num;
    for (int at = 1; at <= total; at++) {
        SCOPED_TRACE(at);
        int calls = 0;
        smooth_watch watch;
        watch.fault = [&](call_kind, const double *) -> call_fault {
            if (++calls == at) throw std::bad_alloc();
            EXPECT_LT(calls, at) << "nothing is called behind a failure";
            return FAULT_NONE;
        };
        const smooth_answer a = run(hs71(), &watch);
        EXPECT_EQ(a.end, SMOOTH_MEMORY);
        EXPECT_EQ(calls, at);
    }
    smooth_watch watch;
    watch.fault = [&](call_kind kind, const double *) -> call_fault {
        if (kind == CALL_HESSIAN) throw std::runtime_error("the sky has fallen");
        return FAULT_NONE;
    };
    smooth_answer a = run(hs71(), &watch);
    EXPECT_EQ(a.end, SMOOTH_FAILED);
    EXPECT_NE(a.message.find("the sky has fallen"), std::string::npos) << a.message;
    watch = smooth_watch();
    watch.go_on = [](const smooth_news &news) -> bool {
        if (news.iterations == 3) throw 3;
        return true;
    };
    a = run(hs71(), &watch);
    EXPECT_EQ(a.end, SMOOTH_FAILED);
    EXPECT_NE(a.message, "");
    EXPECT_EQ(watch.news.size(), 4u);
    EXPECT_EQ(solve(hs71()).end, SMOOTH_SOLVED) << "nothing is left behind";
}

/* ---- stops and limits */

TEST_F(ipopt, stops_at_every_iteration)
{
    for (const smooth_case &c : {hs71(), infeasible()}) {
        SCOPED_TRACE(c.name);
        smooth_watch whole;
        const smooth_answer all = run(c, &whole);
        ASSERT_GT(whole.news.size(), 5u);
        for (size_t k = 0; k < whole.news.size(); k++) {
            SCOPED_TRACE(k);
            smooth_watch watch;
            watch.go_on = [&](const smooth_news &) { return watch.news.size() <= k; };
            const smooth_answer a = run(c, &watch);
            EXPECT_EQ(a.end, SMOOTH_STOPPED);
            EXPECT_EQ(watch.news.size(), k + 1);
            EXPECT_EQ(a.iterations, whole.news[k].iterations);
            EXPECT_EQ(watch.news[k].objective, whole.news[k].objective) << "the path is the same";
            ASSERT_EQ(a.x.size(), c.start.size());
            for (const double v : a.x) EXPECT_TRUE(std::isfinite(v));
        }
    }
}

TEST_F(ipopt, iteration_limit)
{
    for (const int32_t limit : {0, 1, 4}) {
        const smooth_answer a = solve(hs71(), {whole_option("max_iter", limit)});
        EXPECT_EQ(a.end, SMOOTH_ITERATION_LIMIT);
        EXPECT_EQ(a.iterations, limit);
        EXPECT_EQ(a.x.size(), 4u);
    }
    const smooth_answer a = solve(hs71(), {number_option("max_cpu_time", 1e-9)});
    EXPECT_EQ(a.end, SMOOTH_ITERATION_LIMIT);
    EXPECT_NE(a.message, "");
}

/* ---- options */

TEST_F(ipopt, options_are_taken_in_their_own_type)
{
    const auto text = [](const char *name, const char *value) { return option_of(name, ZLR_PAR_STR, 0.0, 0, value); };
    const struct {
        engine_option o;
        bool is_taken;
    } cases[] = {
        {number_option("tol", 1e-6), true},
        {number_option("tol", -1.0), false},
        {number_option("tol", std::nan("")), false},
        {number_option("max_iter", 50.0), false},
        {whole_option("max_iter", 50), true},
        {whole_option("max_iter", -1), false},
        {whole_option("mu_init", 1), true}, /* a whole number is a number */
        {word_option("mu_strategy", "adaptive"), true},
        {word_option("mu_strategy", "hasty"), false},
        {word_option("hessian_approximation", "limited-memory"), true},
        {word_option("hessian_approximation", "limited_memory"), true},
        {word_option("fixed_variable_treatment", "make_constraint"), true},
        {option_of("max_iter", ZLR_PAR_INT, 0.0, 60, "sixty"), true}, /* a word where the engine has numbers */
        {text("mu_strategy", "monotone"), true},
        {text("mu_strategy", ""), false},
        {whole_option("colour", 3), false},
        {text("", "red"), false},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.o.name + " " + c.o.str);
        smooth_watch watch;
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const smooth_answer a = run(hs71(), &watch, {number_option("acceptable_tol", 1e-5), c.o});
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        EXPECT_EQ(a.end, c.is_taken ? SMOOTH_SOLVED : SMOOTH_REFUSED);
        if (c.is_taken) continue;
        EXPECT_NE(a.message.find("the option " + c.o.name), std::string::npos) << a.message;
        EXPECT_TRUE(a.x.empty());
        EXPECT_EQ(watch.count[CALL_OBJECTIVE], 0);
    }
}

/* Taken, but what it names is not there: that shows when the engine starts. */
TEST_F(ipopt, option_that_names_what_is_missing)
{
    smooth_watch watch;
    testing::internal::CaptureStdout();
    const smooth_answer a = run(hs71(), &watch, {number_option("tol", 1e-7), word_option("linear_solver", "ma57")});
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    if (a.end == SMOOTH_SOLVED) GTEST_SKIP() << "this Ipopt has MA57";
    EXPECT_EQ(a.end, SMOOTH_REFUSED);
    EXPECT_NE(a.message.find("linear_solver"), std::string::npos) << a.message;
}

TEST_F(ipopt, limited_memory_asks_for_no_second_derivatives)
{
    for (const smooth_case &c : {hs71(), rosenbrock()}) {
        SCOPED_TRACE(c.name);
        smooth_watch exact, limited;
        const smooth_answer with = run(c, &exact);
        const smooth_answer without = run(c, &limited, {word_option("hessian_approximation", "limited-memory")});
        ASSERT_EQ(without.end, SMOOTH_SOLVED) << without.message;
        EXPECT_GT(exact.count[CALL_HESSIAN], 0);
        EXPECT_EQ(limited.count[CALL_HESSIAN], 0);
        expect_stationary(c, without, 1e-5);
        for (size_t j = 0; j < with.x.size(); j++) EXPECT_NEAR(with.x[j], without.x[j], 1e-5);
    }
}

/* The answer is within the bounds to the last bit, unless the user wants it otherwise. */
TEST_F(ipopt, bounds_are_kept)
{
    const smooth_answer kept = solve(hs71()), loose = solve(hs71(), {word_option("honor_original_bounds", "no")});
    EXPECT_GE(kept.x[0], 1.0);
    EXPECT_LT(loose.x[0], 1.0);
}

/* Neither read nor written: an options file in the folder where the program runs. */
TEST_F(ipopt, options_file_in_the_folder_is_left_alone)
{
    const auto before = std::filesystem::current_path();
    const auto folder = std::filesystem::path(testing::TempDir()) / "zelor_ipopt_options";
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "ipopt.opt") << "max_iter 1\nprint_level 12\noutput_file talk.txt\n";
    std::filesystem::current_path(folder);
    testing::internal::CaptureStdout();
    const smooth_answer a = solve(hs71());
    const std::string printed = testing::internal::GetCapturedStdout();
    std::filesystem::current_path(before);
    const auto num_files = std::distance(std::filesystem::directory_iterator(folder), {});
    std::filesystem::remove_all(folder);
    EXPECT_EQ(printed, "");
    EXPECT_EQ(num_files, 1);
    EXPECT_EQ(a.end, SMOOTH_SOLVED);
    EXPECT_GT(a.iterations, 1);
}

/* ---- several at once */

TEST_F(ipopt, two_threads_find_what_one_finds)
{
    const smooth_case c = chain();
    const smooth_answer alone = solve(c);
    ASSERT_EQ(alone.end, SMOOTH_SOLVED) << alone.message;
    EXPECT_NEAR(lagrangian_at(c, alone.x, {})[0], 0.0, 1e-6);
    std::atomic<int> num_different{0};
    const auto work = [&] {
        for (int round = 0; round < 6; round++) {
            const smooth_answer a = solve(c);
            num_different += a.end != alone.end || a.x != alone.x || a.iterations != alone.iterations ? 1 : 0;
        }
    };
    std::thread first(work), second(work), third(work);
    first.join();
    second.join();
    third.join();
    EXPECT_EQ(num_different.load(), 0);
}

/* A function that takes its time keeps nobody from solving: this one waits for the other's end. */
TEST_F(ipopt, solve_goes_on_while_another_evaluates)
{
    std::atomic<bool> is_inside{false}, is_done{false};
    smooth_answer slow;
    smooth_watch watch;
    watch.fault = [&](call_kind kind, const double *) {
        if (kind == CALL_HESSIAN && watch.count[kind] == 3) {
            is_inside.store(true), is_inside.notify_all();
            is_done.wait(false);
        }
        return FAULT_NONE;
    };
    std::thread other([&] { slow = run(hs71(), &watch); });
    is_inside.wait(false);
    EXPECT_EQ(solve(chain()).end, SMOOTH_SOLVED);
    is_done.store(true), is_done.notify_all();
    other.join();
    EXPECT_EQ(slow.end, SMOOTH_SOLVED);
    EXPECT_EQ(slow.x, solve(hs71()).x);
}

TEST_F(ipopt, solve_inside_a_function_of_another)
{
    const smooth_answer alone = solve(hs71());
    int num_inner = 0;
    smooth_watch watch;
    watch.fault = [&](call_kind, const double *) {
        num_inner += solve(logarithm()).end == SMOOTH_SOLVED ? 1 : 0;
        return FAULT_NONE;
    };
    watch.go_on = [&](const smooth_news &) { return solve(infeasible()).end == SMOOTH_LOCALLY_INFEASIBLE; };
    const smooth_answer a = run(hs71(), &watch);
    EXPECT_EQ(a.end, SMOOTH_SOLVED);
    EXPECT_EQ(a.x, alone.x);
    EXPECT_EQ(a.iterations, alone.iterations);
    int total = 0;
    for (const int num : watch.count) total += num;
    EXPECT_EQ(num_inner, total);
}

#endif
