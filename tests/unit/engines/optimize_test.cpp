/* The order of an optimisation with engines that misbehave: a fake engine stands in the library's table. */
#include "small_models.h"
#include "solver/engines/optimize.h"
#include "solver/report/clock.h"

#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <thread>

/* What the fake does by method: set by each test before it optimises. */
using fake_solve = std::function<void(engine_job *, engine_answer *)>;
static std::map<engine_method, fake_solve> fake_methods;
static std::atomic<int> num_started{0}, num_ended{0};

static const char *fake_version(void) { return "1"; }
static bool fake_accepts(const model *, engine_method method) { return fake_methods.count(method) != 0; }

static void fake_run(const std::shared_ptr<engine_job> &job)
{
    engine_answer answer;
    num_started++;
    fake_methods[job->method](job.get(), &answer);
    const std::lock_guard<std::mutex> lock(job->mutex);
    job->answer = std::move(answer);
    num_ended++;
}

static const engine_adapter fake_adapter = {engine_abi, "Fake", fake_version, "none", fake_accepts, fake_run, nullptr};

static const engine_adapter *load_fake(const char *, std::string *) { return &fake_adapter; }
static const engine_adapter *load_nothing(const char *, std::string *message)
{
    *message = "no such file";
    return nullptr;
}

static const engine_source fake_source = {"highs", "Fake", "fetch it", load_fake};
static const engine_source missing_source = {"highs", "Missing", "fetch it", load_nothing};
static const engine_table fake_table = {&fake_source};
static const engine_table missing_table = {&missing_source};

static void give_optimum(engine_job *job, engine_answer *a)
{
    const double s = job->problem->sense == ZLR_SENSE_MAX ? -1.0 : 1.0;
    a->status = ENGINE_OPTIMAL;
    a->x = {3.0, 1.0};
    a->y = {0.0, s * -2.0 / 3.0};
    a->row_key = {ZLR_SK_BASIC, ZLR_SK_UPPER};
    a->col_key = {ZLR_SK_UPPER, ZLR_SK_BASIC};
}

static void give_garbage(engine_job *, engine_answer *a)
{
    a->status = ENGINE_OPTIMAL;
    a->x = {100.0, -7.0};
    a->y = {1.0, 1.0};
    a->row_key = {ZLR_SK_BASIC, ZLR_SK_BASIC};
    a->col_key = {ZLR_SK_LOWER, ZLR_SK_LOWER};
}

static void give_status(engine_status status, engine_answer *a) { a->status = status; }

static void nap() { std::this_thread::sleep_for(std::chrono::milliseconds(5)); }

static void run_until_stopped(engine_job *job, engine_answer *a)
{
    while (!job->stop) nap();
    a->status = ENGINE_STOPPED;
}

/* Does not look at the stop flag: has to be left. Ends for good when the runner has gone, so that the test can. */
static void run_until_left(engine_job *job, engine_answer *a)
{
    while (!job->left) nap();
    give_optimum(job, a);
}

static void hand_over(engine_job *job, const std::vector<double> &x)
{
    const std::lock_guard<std::mutex> lock(job->mutex);
    job->incumbent = x;
}

class optimize : public testing::Test
{
protected:
    ZLR_task task;
    std::string log;

    optimize()
    {
        task.problem = std::make_shared<model>(two_row_model(ZLR_SENSE_MIN));
        param_set_defaults(&task.params);
        for (const int32_t stream : {ZLR_STREAM_MSG, ZLR_STREAM_ERR})
            task.streams.out[stream] = {[](void *text, const char *s) { *static_cast<std::string *>(text) += s; }, &log,
                                        nullptr};
        fake_methods.clear();
        num_started = num_ended = 0;
    }

    /* Threads that were left use the table of methods: before it changes, and before the test ends, they must be gone. */
    static void wait_for_threads()
    {
        while (num_ended != num_started) nap();
    }
    ~optimize() override { wait_for_threads(); }

    void make_integer() { task.problem->var_type = {ZLR_VAR_INT, ZLR_VAR_INT}; }
    int32_t solsta(int32_t kind) const { return task.sol[kind].solsta; }

    double timed_optimize(int32_t *code)
    {
        const double begin = clock_now_s();
        *code = optimize_with(&task, &fake_table);
        return clock_now_s() - begin;
    }
};

static int32_t stop_after(ZLR_task *, void *seconds, const ZLR_progress *p)
{
    return p->time_s >= *static_cast<double *>(seconds) ? 1 : 0;
}

TEST_F(optimize, a_good_answer_is_taken_and_recorded)
{
    fake_methods[METHOD_DUAL_SIMPLEX] = give_optimum;
    EXPECT_EQ(ZLR_RES_OK, optimize_with(&task, &fake_table));
    EXPECT_EQ(ZLR_SOLSTA_OPTIMAL, solsta(ZLR_SOL_BAS));
    EXPECT_FALSE(task.sol[ZLR_SOL_ITR].defined);
    EXPECT_FALSE(task.sol[ZLR_SOL_ITG].defined);
    EXPECT_TRUE(task.run.ran);
    EXPECT_EQ("Fake 1", task.run.engine);
    EXPECT_EQ("dual simplex without presolve", task.run.method);
    EXPECT_EQ("", task.run.remark);
}

TEST_F(optimize, a_wrong_answer_is_not_believed_and_the_next_engine_is_asked)
{
    fake_methods[METHOD_DUAL_SIMPLEX] = give_garbage;
    fake_methods[METHOD_INTPNT] = give_optimum;
    EXPECT_EQ(ZLR_RES_OK, optimize_with(&task, &fake_table));
    EXPECT_EQ(ZLR_SOLSTA_OPTIMAL, solsta(ZLR_SOL_BAS));
    EXPECT_EQ(-5.0, task.sol[ZLR_SOL_BAS].primal_obj);
    EXPECT_NE(std::string::npos, task.run.method.find("interior point"));
    EXPECT_NE(std::string::npos, task.run.remark.find("does not pass the check"));
    EXPECT_NE(std::string::npos, log.find("The answer is from Fake 1, interior point"));
}

TEST_F(optimize, when_all_are_wrong_no_point_is_called_optimal)
{
    for (const engine_method method : {METHOD_DUAL_SIMPLEX, METHOD_INTPNT, METHOD_PRIMAL_SIMPLEX})
        fake_methods[method] = give_garbage;
    EXPECT_EQ(ZLR_RES_TRM_STALL, optimize_with(&task, &fake_table));
    EXPECT_EQ(ZLR_SOLSTA_UNKNOWN, solsta(ZLR_SOL_BAS));
}

TEST_F(optimize, when_all_fail_it_says_how)
{
    for (const engine_method method : {METHOD_DUAL_SIMPLEX, METHOD_INTPNT, METHOD_PRIMAL_SIMPLEX})
        fake_methods[method] = [](engine_job *, engine_answer *a) {
            a->status = ENGINE_FAILED;
            a->message = "singular";
        };
    EXPECT_EQ(ZLR_RES_ERR_ENGINE, optimize_with(&task, &fake_table));
    EXPECT_NE(std::string::npos, log.find("singular"));
    EXPECT_FALSE(task.sol[ZLR_SOL_BAS].defined);
}

TEST_F(optimize, a_missing_engine_is_told_by_name_with_how_to_get_it)
{
    EXPECT_EQ(ZLR_RES_ERR_NO_ENGINE, optimize_with(&task, &missing_table));
    EXPECT_NE(std::string::npos, log.find("Missing cannot be loaded: no such file"));
    EXPECT_NE(std::string::npos, log.find("fetch it"));
    EXPECT_EQ(ZLR_RES_ERR_NO_ENGINE, task.run.return_code);
}

TEST_F(optimize, the_engine_that_is_missing_is_the_one_that_is_named)
{
    const engine_table without_conic = {fake_table.linear, missing_table.linear};
    task.problem->cones = {{ZLR_CT_QUAD, {0, 1}}};
    EXPECT_EQ(ZLR_RES_ERR_NO_ENGINE, optimize_with(&task, &without_conic));
    EXPECT_NE(std::string::npos, log.find("Missing cannot be loaded: no such file")) << log;
    EXPECT_EQ(std::string::npos, log.find("Fake cannot be loaded")) << log;
}

TEST_F(optimize, what_no_engine_takes_is_refused_with_the_reason)
{
    model *m = task.problem.get();
    m->qobj = {{0, 0, 1.0}};
    m->var_type[0] = ZLR_VAR_INT;
    EXPECT_EQ(ZLR_RES_ERR_NO_ENGINE, optimize_with(&task, &fake_table));
    EXPECT_NE(std::string::npos, log.find("integer columns together with a quadratic objective"));
    m->var_type[0] = ZLR_VAR_CONT;
    m->qobj.clear();
    m->cones = {{ZLR_CT_QUAD, {0, 1}}};
    EXPECT_EQ(ZLR_RES_ERR_NO_ENGINE, optimize_with(&task, &fake_table)); /* the fake table has no conic engine */
    EXPECT_NE(std::string::npos, log.find("The problem has cones, and no engine takes that"));
    m->cones.clear();
    m->qobj = {{0, 0, -1.0}};
    EXPECT_EQ(ZLR_RES_ERR_NONCONVEX, optimize_with(&task, &fake_table));
    task.params.integer[IPAR_NONCONVEX] = NONCONVEX_LOCAL;
    log.clear();
    EXPECT_EQ(ZLR_RES_ERR_NO_ENGINE, optimize_with(&task, &fake_table)); /* nor a nonlinear one */
    EXPECT_NE(std::string::npos, log.find("The problem needs a nonlinear engine, and there is none"));
}

TEST_F(optimize, claims_without_proof_are_settled_by_problems_of_our_own)
{
    /* The fake takes a feasible, bounded problem for infeasible. The aside problems, which have other sizes, fail; the
     * next engine has the answer. */
    fake_methods[METHOD_DUAL_SIMPLEX] = [](engine_job *job, engine_answer *a) {
        give_status(job->problem->num_var == 2 ? ENGINE_PRIMAL_INFEASIBLE : ENGINE_FAILED, a);
    };
    fake_methods[METHOD_PRIMAL_SIMPLEX] = [](engine_job *, engine_answer *a) { give_status(ENGINE_FAILED, a); };
    fake_methods[METHOD_INTPNT] = [](engine_job *job, engine_answer *a) {
        if (job->problem->num_var == 2)
            give_optimum(job, a);
        else
            give_status(ENGINE_FAILED, a);
    };
    EXPECT_EQ(ZLR_RES_OK, optimize_with(&task, &fake_table));
    EXPECT_EQ(ZLR_SOLSTA_OPTIMAL, solsta(ZLR_SOL_BAS));
    EXPECT_NE(std::string::npos, task.run.remark.find("infeasible"));
}

TEST_F(optimize, a_stop_before_the_start_starts_nothing)
{
    double at = 0.0;
    fake_methods[METHOD_DUAL_SIMPLEX] = give_optimum;
    task.callback = stop_after;
    task.callback_handle = &at;
    EXPECT_EQ(ZLR_RES_TRM_USER_STOP, optimize_with(&task, &fake_table));
    EXPECT_EQ(0, num_started);
}

TEST_F(optimize, stops_and_limits_are_served_at_once_whatever_the_engine_does)
{
    struct {
        const char *name;
        fake_solve solve;
        bool by_callback;
        int32_t code;
    } cases[] = {
        {"polite, callback", run_until_stopped, true, ZLR_RES_TRM_USER_STOP},
        {"polite, time limit", run_until_stopped, false, ZLR_RES_TRM_TIME_LIMIT},
        {"deaf, callback", run_until_left, true, ZLR_RES_TRM_USER_STOP},
        {"deaf, time limit", run_until_left, false, ZLR_RES_TRM_TIME_LIMIT},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        double at = 0.1;
        int32_t code = 0;
        wait_for_threads();
        fake_methods[METHOD_DUAL_SIMPLEX] = c.solve;
        task.callback = c.by_callback ? stop_after : nullptr;
        task.callback_handle = &at;
        task.params.dou[DPAR_TIME_LIMIT] = c.by_callback ? model_inf : 0.1;
        const double took = timed_optimize(&code);
        EXPECT_EQ(c.code, code);
        EXPECT_GE(took, 0.1);
        EXPECT_LT(took, 0.1 + 0.2 + 0.1);            /* 0.1 s for a loaded machine */
        EXPECT_FALSE(task.sol[ZLR_SOL_BAS].defined); /* what a left engine finds later is nobody's */
    }
}

TEST_F(optimize, an_integer_point_that_uses_its_tolerances_up_is_made_clean)
{
    task.problem->var_type = {ZLR_VAR_CONT, ZLR_VAR_INT};
    fake_methods[METHOD_MIP] = [](engine_job *, engine_answer *a) {
        a->status = ENGINE_OPTIMAL;
        a->x = {3.0000005, 1.0}; /* past its bound, within the tolerance */
        a->best_bound = -5.0000005;
        a->has_bound = true;
    };
    fake_methods[METHOD_DUAL_SIMPLEX] = give_optimum; /* with the integer column fixed */
    EXPECT_EQ(ZLR_RES_OK, optimize_with(&task, &fake_table));
    EXPECT_EQ(ZLR_SOLSTA_INTEGER_OPTIMAL, solsta(ZLR_SOL_ITG));
    EXPECT_EQ((std::vector<double>{3.0, 1.0}), task.sol[ZLR_SOL_ITG].xx);
}

TEST_F(optimize, incumbents_survive_a_stop_and_the_best_is_kept)
{
    make_integer();
    double at = 0.15;
    fake_methods[METHOD_MIP] = [](engine_job *job, engine_answer *a) {
        hand_over(job, {1.0, 1.0}); /* -3 */
        std::this_thread::sleep_for(std::chrono::milliseconds(60));
        hand_over(job, {2.0, 1.0}); /* -4 */
        std::this_thread::sleep_for(std::chrono::milliseconds(60));
        hand_over(job, {9.0, 9.0}); /* violates everything */
        run_until_left(job, a);
    };
    task.callback = stop_after;
    task.callback_handle = &at;
    EXPECT_EQ(ZLR_RES_TRM_USER_STOP, optimize_with(&task, &fake_table));
    EXPECT_EQ(ZLR_SOLSTA_PRIM_FEAS, solsta(ZLR_SOL_ITG));
    EXPECT_EQ(-4.0, task.sol[ZLR_SOL_ITG].primal_obj);
}

TEST_F(optimize, a_given_start_stays_when_nothing_better_comes)
{
    make_integer();
    double at = 0.05;
    fake_methods[METHOD_MIP] = run_until_stopped;
    task.callback = stop_after;
    task.callback_handle = &at;
    solution *start = &task.sol[ZLR_SOL_ITG];
    solution_reset(start, 2, 2);
    start->defined = start->has_primal = true;
    start->xx = {1.0, 1.0};
    EXPECT_EQ(ZLR_RES_TRM_USER_STOP, optimize_with(&task, &fake_table));
    EXPECT_EQ(ZLR_SOLSTA_PRIM_FEAS, solsta(ZLR_SOL_ITG));
    EXPECT_EQ(-3.0, task.sol[ZLR_SOL_ITG].primal_obj);
}

TEST_F(optimize, an_infeasible_start_is_not_kept_as_feasible)
{
    make_integer();
    double at = 0.05;
    fake_methods[METHOD_MIP] = run_until_stopped;
    task.callback = stop_after;
    task.callback_handle = &at;
    solution *start = &task.sol[ZLR_SOL_ITG];
    solution_reset(start, 2, 2);
    start->defined = start->has_primal = true;
    start->xx = {3.0, 3.0};
    EXPECT_EQ(ZLR_RES_TRM_USER_STOP, optimize_with(&task, &fake_table));
    EXPECT_NE(ZLR_SOLSTA_PRIM_FEAS, solsta(ZLR_SOL_ITG));
}

TEST_F(optimize, integer_optimal_needs_the_bound)
{
    make_integer();
    struct {
        const char *name;
        double bound;
        int32_t solsta, code;
    } cases[] = {
        {"closed", -5.0, ZLR_SOLSTA_INTEGER_OPTIMAL, ZLR_RES_OK},
        {"says optimal with a gap", -6.0, ZLR_SOLSTA_PRIM_FEAS, ZLR_RES_TRM_STALL},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        fake_methods[METHOD_MIP] = [&](engine_job *, engine_answer *a) {
            a->status = ENGINE_OPTIMAL;
            a->x = {3.0, 1.0};
            a->best_bound = c.bound;
            a->has_bound = true;
        };
        EXPECT_EQ(c.code, optimize_with(&task, &fake_table));
        EXPECT_EQ(c.solsta, solsta(ZLR_SOL_ITG));
        EXPECT_EQ(c.bound, task.run.best_bound);
        task_drop_solutions(&task);
    }
}

TEST_F(optimize, an_infeasibility_that_a_known_point_refutes_is_not_believed)
{
    make_integer();
    fake_methods[METHOD_MIP] = [](engine_job *job, engine_answer *a) {
        if (job->options.empty()) {
            give_status(ENGINE_PRIMAL_INFEASIBLE, a);
            return;
        }
        a->status = ENGINE_OPTIMAL;
        a->x = {3.0, 1.0};
        a->best_bound = -5.0;
        a->has_bound = true;
    };
    solution *start = &task.sol[ZLR_SOL_ITG];
    solution_reset(start, 2, 2);
    start->defined = start->has_primal = true;
    start->xx = {0.0, 0.0};
    EXPECT_EQ(ZLR_RES_OK, optimize_with(&task, &fake_table));
    EXPECT_EQ(ZLR_SOLSTA_INTEGER_OPTIMAL, solsta(ZLR_SOL_ITG));
    EXPECT_EQ("branch and cut without presolve", task.run.method);
}

TEST_F(optimize, limits_of_an_engine_end_the_chain_with_their_code)
{
    struct {
        engine_status status;
        int32_t code;
    } cases[] = {
        {ENGINE_ITERATION_LIMIT, ZLR_RES_TRM_MAX_ITERATIONS},
        {ENGINE_OBJECTIVE_LIMIT, ZLR_RES_TRM_OBJECTIVE},
        {ENGINE_NODE_LIMIT, ZLR_RES_TRM_MAX_NODES},
        {ENGINE_SOLUTION_LIMIT, ZLR_RES_TRM_MAX_SOLUTIONS},
        {ENGINE_MEMORY, ZLR_RES_TRM_MEMORY},
    };
    for (const auto &c : cases) {
        num_started = num_ended = 0;
        fake_methods[METHOD_DUAL_SIMPLEX] = [&](engine_job *, engine_answer *a) { give_status(c.status, a); };
        EXPECT_EQ(c.code, optimize_with(&task, &fake_table));
        EXPECT_EQ(1, num_started);
    }
}

/* A larger task is raced; the fake tells which of its methods was asked. */
static std::shared_ptr<model> racing_model()
{
    auto m = std::make_shared<model>(two_row_model(ZLR_SENSE_MIN));
    for (int32_t k = 0; k < 4000; k++) { /* columns fixed at 0, to have the entries that a race begins at */
        const int32_t rows[] = {0, 1};
        const double values[] = {1.0, 1.0};
        model_append_vars(m.get(), 1);
        model_put_column(m.get(), m->num_var - 1, 2, rows, values);
    }
    return m;
}

static void give_racing_optimum(engine_job *job, engine_answer *a)
{
    give_optimum(job, a);
    a->x.resize(static_cast<size_t>(job->problem->num_var), 0.0);
    a->col_key.resize(a->x.size(), ZLR_SK_FIXED);
}

TEST_F(optimize, the_first_answer_that_passes_wins_and_the_others_are_told_to_stop)
{
    task.problem = racing_model();
    task.params.integer[IPAR_THREADS] = 2;
    std::atomic<bool> stopped{false};
    fake_methods[METHOD_DUAL_SIMPLEX] = [&](engine_job *job, engine_answer *a) {
        run_until_stopped(job, a);
        stopped = true;
    };
    fake_methods[METHOD_INTPNT] = [](engine_job *job, engine_answer *a) {
        while (num_started < 2) nap();
        give_racing_optimum(job, a);
    };
    num_started = num_ended = 0;
    int32_t code = 0;
    const double took = timed_optimize(&code);
    EXPECT_EQ(ZLR_RES_OK, code);
    EXPECT_LT(took, 0.15); /* nobody waits for the loser */
    EXPECT_EQ(ZLR_SOLSTA_OPTIMAL, solsta(ZLR_SOL_BAS));
    EXPECT_FALSE(task.sol[ZLR_SOL_ITR].defined);
    wait_for_threads();
    EXPECT_TRUE(stopped);
}

TEST_F(optimize, a_wrong_answer_does_not_win_a_race)
{
    task.problem = racing_model();
    task.params.integer[IPAR_THREADS] = 2;
    fake_methods[METHOD_INTPNT] = [](engine_job *job, engine_answer *a) {
        give_racing_optimum(job, a);
        a->x[0] = 50.0;
    };
    fake_methods[METHOD_DUAL_SIMPLEX] = [](engine_job *job, engine_answer *a) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        give_racing_optimum(job, a);
    };
    EXPECT_EQ(ZLR_RES_OK, optimize_with(&task, &fake_table));
    EXPECT_EQ(-5.0, task.sol[ZLR_SOL_BAS].primal_obj);
    EXPECT_EQ("dual simplex", task.run.method);
}

TEST(plan, races_only_where_it_pays_and_there_is_room)
{
    struct {
        const char *name;
        bool large;
        int32_t threads, optimizer, cores;
        uint64_t memory;
        size_t racers;
    } cases[] = {
        {"small", false, 0, OPTIMIZER_FREE, 8, 0, 1},
        {"two cores", true, 0, OPTIMIZER_FREE, 2, 0, 2},
        {"three cores", true, 0, OPTIMIZER_FREE, 3, 0, 3},
        {"one thread asked for", true, 1, OPTIMIZER_FREE, 8, 0, 1},
        {"one core", true, 0, OPTIMIZER_FREE, 1, 0, 1},
        {"little memory", true, 0, OPTIMIZER_FREE, 2, 1000000, 1},
        {"one engine named", true, 0, OPTIMIZER_DUAL_SIMPLEX, 8, 0, 1},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        param_set params;
        param_set_defaults(&params);
        params.integer[IPAR_THREADS] = c.threads;
        params.integer[IPAR_OPTIMIZER] = c.optimizer;
        const std::shared_ptr<model> large = racing_model();
        const model small = two_row_model(ZLR_SENSE_MIN);
        const plan_machine machine = {c.cores, c.memory};
        const engine_plan plan = plan_make(&fake_table, c.large ? large.get() : &small, &params, &machine);
        ASSERT_FALSE(plan.rounds.empty());
        EXPECT_EQ(c.racers, plan.rounds[0].size());
    }
}

TEST(plan, a_tiny_model_is_not_presolved_unless_that_is_asked_for)
{
    const plan_machine machine = {2, 0};
    const model small = two_row_model(ZLR_SENSE_MIN);
    param_set params;
    param_set_defaults(&params);
    const plan_step without = plan_make(&fake_table, &small, &params, &machine).rounds[0][0];
    ASSERT_EQ(1u, without.extra.size());
    EXPECT_EQ("presolve", without.extra[0].name);
    EXPECT_EQ("off", without.extra[0].str);
    EXPECT_TRUE(plan_make(&fake_table, racing_model().get(), &params, &machine).rounds[0][0].extra.empty());
    params.integer[IPAR_PRESOLVE_LEVEL] = PRESOLVE_ON;
    EXPECT_TRUE(plan_make(&fake_table, &small, &params, &machine).rounds[0][0].extra.empty());
}

TEST(plan, only_changed_parameters_of_the_engine_are_handed_over)
{
    param_set params;
    param_set_defaults(&params);
    EXPECT_TRUE(plan_options(&fake_source, &params).empty());
    params.integer[IPAR_PRESOLVE_LEVEL] = PRESOLVE_OFF;
    params.dou[DPAR_MIP_REL_GAP] = 0.5;
    params.dou[DPAR_CHECK_TOL] = 0.5; /* our own */
    const std::vector<engine_option> options = plan_options(&fake_source, &params);
    ASSERT_EQ(2u, options.size());
    EXPECT_EQ("mip_rel_gap", options[0].name);
    EXPECT_EQ(0.5, options[0].dou);
    EXPECT_EQ("presolve", options[1].name);
    EXPECT_EQ("off", options[1].str);
}
