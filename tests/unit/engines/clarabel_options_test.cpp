/* clarabel_options_test.cpp - options, limits, progress and stop of the Clarabel module. */
#ifdef ZELOR_CLARABEL_MODULE /* builds with the engine */
#include "clarabel_support.h"
#include "solver/params/params.h"

#include <chrono>
#include <random>
#include <set>
#include <thread>

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

    const engine_answer slow = solve(m, {number("max_step_fraction", 0.05)});
    EXPECT_EQ(slow.ipm_iterations, 200);
    EXPECT_EQ(slow.status, ENGINE_UNKNOWN) << "a limit that nobody asked for";
    EXPECT_FALSE(slow.message.empty());
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
