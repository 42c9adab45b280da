/* param_effects_test.cpp - parameters of the order of an optimisation, each by what it changes: the plan, what an engine is
 * given, what is made of its answer. A fake engine stands in the library's table. */
#include "small_models.h"
#include "solver/engines/optimize.h"

#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <thread>

/* ---- plans */

static const engine_adapter *load_none(const char *, std::string *) { return nullptr; }
static const engine_source linear_source = {"highs", "Linear", "", load_none};
static const engine_source conic_source = {"clarabel", "Conic", "", load_none};
static const engine_table both_engines = {&linear_source, &conic_source};

static const char *short_name(engine_method method)
{
    switch (method) {
    case METHOD_DUAL_SIMPLEX: return "dual";
    case METHOD_PRIMAL_SIMPLEX: return "primal";
    case METHOD_INTPNT: return "ipm";
    case METHOD_HIPO: return "hipo";
    case METHOD_PDLP: return "pdlp";
    case METHOD_ACTIVE_SET: return "qpasm";
    case METHOD_MIP: return "mip";
    case METHOD_CHOOSE: break;
    }
    return "?";
}

/* "dual+ipm primal": rounds with a blank between, racers with a plus; "-" behind a step with options of its own. */
static std::string text_of(const engine_plan &plan, size_t most_rounds)
{
    std::string text;
    for (size_t k = 0; k < std::min(most_rounds, plan.rounds.size()); k++) {
        if (k > 0) text += " ";
        for (const plan_step &step : plan.rounds[k]) {
            if (&step != plan.rounds[k].data()) text += "+";
            text += std::string(step.source == &conic_source ? "conic" : short_name(step.method)) +
                    (step.extra.empty() ? "" : "-");
        }
    }
    return text + (plan.want_interior ? " itr" : "");
}

/* Rows and columns as small as can be, with so many nonzeros. */
static model model_of_size(int32_t num_nz)
{
    model m = two_row_model(ZLR_SENSE_MIN);
    const int32_t rows[] = {0, 1};
    const double values[] = {1.0, 1.0};
    for (int32_t k = 4; k < num_nz; k += 2) {
        model_append_vars(&m, 1);
        model_put_column(&m, m.num_var - 1, std::min(2, num_nz - k), rows, values);
    }
    return m;
}

static void set_param(param_set *params, const std::string &name, const std::string &value)
{
    std::string message;
    ASSERT_EQ(param_set_text(params, name.c_str(), value.c_str(), &message), ZLR_RES_OK) << message;
}

TEST(plan, follows_its_parameters)
{
    enum { LINEAR, QUADRATIC, INTEGER };
    static const struct {
        const char *name, *value;
        int32_t type, num_nz;
        const char *optimizer;
        plan_machine machine;
        size_t rounds;
        const char *usual, *changed;
    } cases[] = {
        {"RACE_LINEAR", "OFF", LINEAR, 6000, "FREE", {2, 0}, 1, "dual+ipm", "dual"},
        {"RACE_MIN_NONZEROS", "6001", LINEAR, 6000, "FREE", {2, 0}, 1, "dual+ipm", "dual"},
        {"RACE_MIN_NONZEROS", "600", LINEAR, 600, "FREE", {2, 0}, 1, "dual", "dual+ipm"},
        {"RACE_MAX_ENGINES", "2", LINEAR, 6000, "FREE", {8, 0}, 1, "dual+ipm+hipo", "dual+ipm"},
        {"RACE_MAX_ENGINES", "1", QUADRATIC, 4, "FREE", {8, 0}, 1, "hipo-+conic-", "hipo-"},
        {"RACE_HIPO_MIN_NONZEROS", "6001", LINEAR, 6000, "FREE", {8, 0}, 1, "dual+ipm+hipo", "dual+ipm"},
        {"RACE_PDLP_MIN_NONZEROS", "6000", LINEAR, 6000, "FREE", {8, 0}, 1, "dual+ipm+hipo", "dual+ipm+hipo+pdlp"},
        {"RACE_QUADRATIC", "OFF", QUADRATIC, 4, "FREE", {2, 0}, 2, "hipo-+conic- hipo", "hipo- hipo"},
        {"RACE_MEMORY_SHARE", "0.5", LINEAR, 6000, "FREE", {2, 6000000}, 1, "dual", "dual+ipm"},
        {"RACE_MEMORY_SHARE", "0", QUADRATIC, 4, "FREE", {2, 6000000}, 1, "hipo-+conic-", "hipo-"},
        {"PRESOLVE_MIN_NONZEROS", "300", LINEAR, 400, "FREE", {2, 0}, 1, "dual-", "dual"},
        {"OPTIMIZER_MAX_ATTEMPTS",
         "2",
         LINEAR,
         6000,
         "FREE",
         {1, 0},
         9,
         "dual ipm dual- primal ipm- dual-",
         "dual ipm"},
        {"OPTIMIZER_MAX_ATTEMPTS", "1", INTEGER, 4, "FREE", {1, 0}, 9, "mip mip- mip-", "mip"},
        {"QP_MAX_ATTEMPTS",
         "2",
         QUADRATIC,
         4,
         "FREE",
         {2, 0},
         9,
         "hipo-+conic- hipo conic- conic- qpasm",
         "hipo-+conic- hipo"},
        {"IPM_KEEP_INTERIOR", "OFF", LINEAR, 4, "INTPNT", {1, 0}, 1, "ipm itr", "ipm"},
        {"IPM_CROSSOVER", "OFF", LINEAR, 4, "HIPO", {1, 0}, 1, "hipo", "hipo itr"},
        {"PDLP_CODE", "HIPDLP", LINEAR, 4, "PDLP", {1, 0}, 1, "pdlp", "pdlp-"},
        {"THREADS", "1", LINEAR, 6000, "FREE", {8, 0}, 1, "dual+ipm+hipo", "dual"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.name) + " " + c.value);
        model m = model_of_size(c.num_nz);
        if (c.type == QUADRATIC) m.qobj = {{0, 0, 1.0}};
        if (c.type == INTEGER) m.var_type[0] = ZLR_VAR_INT;
        param_set params;
        param_set_defaults(&params);
        set_param(&params, "OPTIMIZER", c.optimizer);
        EXPECT_EQ(text_of(plan_make(&both_engines, &m, &params, &c.machine), c.rounds), c.usual);
        set_param(&params, c.name, c.value);
        EXPECT_EQ(text_of(plan_make(&both_engines, &m, &params, &c.machine), c.rounds), c.changed);
    }
}

/* ---- with an engine */

using fake_solve = std::function<void(engine_job *, engine_answer *)>;
static fake_solve fake_body;
static std::atomic<int> num_started{0}, num_ended{0};

static const char *fake_version(void) { return "1"; }
static bool fake_accepts(const model *, engine_method) { return true; }

static void fake_run(const std::shared_ptr<engine_job> &job)
{
    engine_answer answer;
    num_started++;
    fake_body(job.get(), &answer);
    const std::lock_guard<std::mutex> lock(job->mutex);
    job->answer = std::move(answer);
    num_ended++;
}

static const engine_adapter fake_adapter = {engine_abi, "Fake", fake_version, "none", fake_accepts, fake_run, nullptr};
static const engine_adapter *load_fake(const char *, std::string *) { return &fake_adapter; }
static const engine_source fake_source = {"highs", "Fake", "", load_fake};
static const engine_table fake_table = {&fake_source, &fake_source};

class param_effects : public testing::Test
{
protected:
    /* A task anew, with one parameter set; an empty name leaves all at their defaults. */
    void renew(const model &m, const std::string &name, const std::string &value)
    {
        task = std::make_unique<ZLR_task>();
        task->problem = std::make_shared<model>(m);
        param_set_defaults(&task->params);
        set_param(&task->params, "THREADS", "1");
        if (!name.empty()) set_param(&task->params, name, value);
        log.clear();
        for (const int32_t stream : {ZLR_STREAM_MSG, ZLR_STREAM_ERR})
            task->streams.out[stream] = {[](void *text, const char *s) { *static_cast<std::string *>(text) += s; },
                                         &log, nullptr};
    }
    int32_t run(const fake_solve &body)
    {
        fake_body = body;
        num_started = num_ended = 0;
        const int32_t code = optimize_with(task.get(), &fake_table);
        while (num_started != num_ended) std::this_thread::yield();
        return code;
    }

    std::unique_ptr<ZLR_task> task;
    std::string log;
};

static void give(engine_answer *a, engine_status status, const std::vector<double> &x, const std::vector<double> &y)
{
    a->status = status;
    a->x = x;
    a->y = y;
}

/* The optimum of two_row_model, with one value off. */
static void give_optimum(engine_answer *a, double off)
{
    give(a, ENGINE_OPTIMAL, {3.0 + off, 1.0}, {0.0, -2.0 / 3.0});
    a->row_key = {ZLR_SK_BASIC, ZLR_SK_UPPER};
    a->col_key = {ZLR_SK_UPPER, ZLR_SK_BASIC};
}

static void set_start(solution *start)
{
    solution_reset(start, 2, 2);
    start->defined = start->has_primal = start->has_keys = true;
    start->xx = {1.0, 1.0};
    start->skc = {ZLR_SK_BASIC, ZLR_SK_BASIC};
    start->skx = {ZLR_SK_LOWER, ZLR_SK_LOWER};
    start->solsta = ZLR_SOLSTA_PRIM_FEAS;
}

TEST_F(param_effects, what_an_engine_starts_from)
{
    static const struct {
        const char *name;
        bool has_basis, has_point;
    } cases[] = {{"", true, true}, {"START_BASIS", false, true}, {"START_POINT", true, false}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        renew(two_row_model(ZLR_SENSE_MIN), c.name, "OFF");
        set_start(&task->sol[ZLR_SOL_BAS]);
        engine_start seen;
        EXPECT_EQ(run([&](engine_job *job, engine_answer *a) {
                      seen = job->start;
                      a->status = ENGINE_TIME_LIMIT;
                  }),
                  ZLR_RES_TRM_TIME_LIMIT);
        EXPECT_EQ(!seen.col_key.empty() && !seen.row_key.empty(), c.has_basis);
        EXPECT_EQ(!seen.x.empty(), c.has_point);
        EXPECT_EQ(task->sol[ZLR_SOL_BAS].defined, c.has_point) << "a given point is the answer where none is better";
    }
}

TEST_F(param_effects, claims_are_taken_without_a_proof)
{
    static const struct {
        engine_status said;
        int32_t prosta;
    } cases[] = {{ENGINE_PRIMAL_INFEASIBLE, ZLR_PRO_PRIM_INFEAS},
                 {ENGINE_DUAL_INFEASIBLE, ZLR_PRO_DUAL_INFEAS},
                 {ENGINE_INFEASIBLE_OR_UNBOUNDED, ZLR_PRO_PRIM_INFEAS_OR_UNBND}};
    for (const auto &c : cases) {
        const fake_solve claim = [&](engine_job *, engine_answer *a) { a->status = c.said; };
        renew(two_row_model(ZLR_SENSE_MIN), "", "");
        EXPECT_NE(run(claim), ZLR_RES_OK);
        EXPECT_NE(task->sol[ZLR_SOL_BAS].prosta, c.prosta);
        EXPECT_GT(num_started, 1);
        renew(two_row_model(ZLR_SENSE_MIN), "CHECK_PROOFS", "OFF");
        EXPECT_EQ(run(claim), ZLR_RES_OK);
        EXPECT_EQ(task->sol[ZLR_SOL_BAS].prosta, c.prosta);
        EXPECT_FALSE(solution_is_certificate(&task->sol[ZLR_SOL_BAS])) << "there is none";
        EXPECT_EQ(num_started, 1);
        EXPECT_NE(log.find("no proof is asked for"), std::string::npos) << log;
    }
}

TEST_F(param_effects, what_counts_as_near)
{
    const fake_solve off = [](engine_job *, engine_answer *a) { give_optimum(a, 1e-3); };
    renew(two_row_model(ZLR_SENSE_MIN), "", "");
    EXPECT_EQ(run(off), ZLR_RES_TRM_STALL); /* 333 times what is allowed for the bound */
    renew(two_row_model(ZLR_SENSE_MIN), "CHECK_NEAR_FACTOR", "10000");
    EXPECT_EQ(run(off), ZLR_RES_OK);
    EXPECT_EQ(task->sol[ZLR_SOL_BAS].solsta, ZLR_SOLSTA_NEAR_OPTIMAL);
    /* One tolerance in place of all of the engine's is one that its answer may use up. */
    renew(two_row_model(ZLR_SENSE_MIN), "ENGINE_KKT_TOL", "0.01");
    EXPECT_EQ(run(off), ZLR_RES_OK);
    EXPECT_EQ(task->sol[ZLR_SOL_BAS].solsta, ZLR_SOLSTA_OPTIMAL);
}

TEST_F(param_effects, number_of_attempts)
{
    const fake_solve fail = [](engine_job *, engine_answer *a) { a->status = ENGINE_FAILED; };
    renew(two_row_model(ZLR_SENSE_MIN), "", "");
    EXPECT_EQ(run(fail), ZLR_RES_ERR_ENGINE);
    EXPECT_EQ(num_started, 6);
    renew(two_row_model(ZLR_SENSE_MIN), "OPTIMIZER_MAX_ATTEMPTS", "2");
    EXPECT_EQ(run(fail), ZLR_RES_ERR_ENGINE);
    EXPECT_EQ(num_started, 2);
}

TEST_F(param_effects, integers_are_made_exact_or_left)
{
    model m = two_row_model(ZLR_SENSE_MIN);
    m.var_type = {ZLR_VAR_CONT, ZLR_VAR_INT};
    const fake_solve body = [](engine_job *job, engine_answer *a) {
        if (job->method != METHOD_MIP) return give_optimum(a, 0.0);
        give(a, ENGINE_OPTIMAL, {3.0000005, 1.0}, {});
        a->best_bound = -5.0000005;
        a->has_bound = true;
    };
    renew(m, "", "");
    EXPECT_EQ(run(body), ZLR_RES_OK);
    EXPECT_EQ(task->sol[ZLR_SOL_ITG].xx[0], 3.0);
    renew(m, "MIP_CLEAN_INTEGERS", "OFF");
    EXPECT_EQ(run(body), ZLR_RES_OK);
    EXPECT_EQ(task->sol[ZLR_SOL_ITG].xx[0], 3.0000005);
}

/* ---- quadratic problems */

/* minimise (x0^2 + x1^2)/2 - x0, x0 + x1 >= 1, x1 >= 0: (1, 0). */
static model square_model()
{
    model m = make_model(ZLR_SENSE_MIN, {-1.0, 0.0}, {{1.0, model_inf, {1.0, 1.0}}}, {-model_inf, 0.0},
                         {model_inf, model_inf});
    m.qobj = {{0, 0, 1.0}, {1, 1, 1.0}};
    return m;
}

TEST_F(param_effects, when_a_quadratic_answer_ends_the_search)
{
    const fake_solve near = [](engine_job *, engine_answer *a) { give(a, ENGINE_OPTIMAL, {1.0 + 1e-7, 1e-7}, {0.0}); };
    renew(square_model(), "QP_POLISH", "OFF");
    EXPECT_EQ(run(near), ZLR_RES_OK);
    const int usual = num_started;
    EXPECT_GT(usual, 1);
    renew(square_model(), "QP_POLISH", "OFF");
    set_param(&task->params, "QP_SURE_SHARE", "1");
    EXPECT_EQ(run(near), ZLR_RES_OK);
    EXPECT_EQ(num_started, 1);
    EXPECT_EQ(task->sol[ZLR_SOL_ITR].solsta, ZLR_SOLSTA_OPTIMAL);
}

/* minimise 1e-6 (x0 + x0^2/2) + x1^2/2 - 1e-3 x1 + (x2^2 + x2 x3 + x3^2)/2, x0, x1 >= 0: (0, 1e-3, 0, 0), where values of
 * 1e-4 and 1.1e-3 tell by no weight that x0 is at its bound and x1 is not, and 1e-4 and 1e-3 by large ones only. */
static model doubtful_model()
{
    model m = make_model(ZLR_SENSE_MIN, {1e-6, -1e-3, 0.0, 0.0}, {{-model_inf, 10.0, {1.0, 1.0, 1.0, 1.0}}},
                         {0.0, 0.0, -model_inf, -model_inf}, {model_inf, model_inf, model_inf, model_inf});
    m.qobj = {{0, 0, 1e-6}, {1, 1, 1.0}, {2, 2, 1.0}, {3, 2, 0.5}, {3, 3, 1.0}};
    return m;
}

TEST_F(param_effects, polish)
{
    static const struct {
        const char *what, *name, *value;
        int32_t max_rounds;
        double x1;
        bool is_exact;
    } cases[] = {
        {"as it is", "", "", 6, 1.1e-3, true},
        {"not at all", "QP_POLISH", "OFF", 6, 1.1e-3, false},
        {"no work", "QP_POLISH_MAX_WORK", "0", 6, 1.1e-3, false},
        {"no corrections", "QP_POLISH_MAX_ROUNDS", "1", 1, 1.1e-3, false},
        {"no corrections, all guesses", "", "", 1, 1e-3, true},
        {"no corrections, one guess", "QP_POLISH_GUESSES", "1", 1, 1e-3, false},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        renew(doubtful_model(), c.name, c.value);
        set_param(&task->params, "QP_POLISH_MAX_ROUNDS", std::to_string(c.max_rounds));
        (void)run([&](engine_job *, engine_answer *a) { give(a, ENGINE_OPTIMAL, {1e-4, c.x1, 0.0, 0.0}, {0.0}); });
        ASSERT_TRUE(task->sol[ZLR_SOL_ITR].defined) << log;
        EXPECT_EQ(task->sol[ZLR_SOL_ITR].xx[0] == 0.0, c.is_exact) << task->sol[ZLR_SOL_ITR].xx[0];
    }
}

/* What convexity allows is read from the outcome: a code, or an engine that is started. */
TEST_F(param_effects, what_counts_as_convex)
{
    const fake_solve fail = [](engine_job *, engine_answer *a) { a->status = ENGINE_FAILED; };
    model off = square_model();
    off.qobj = {{0, 0, 1.0}, {1, 0, 1.0 + 1e-6}, {1, 1, 1.0}}; /* an eigenvalue of -1e-6 */
    renew(off, "", "");
    EXPECT_EQ(run(fail), ZLR_RES_ERR_NONCONVEX);
    renew(off, "QP_CONVEXITY_TOL", "1e-5");
    EXPECT_EQ(run(fail), ZLR_RES_ERR_ENGINE);
    EXPECT_GT(num_started, 0);

    model row = square_model(); /* the same in a row, which is factored */
    row.con_lower[0] = -model_inf;
    row.con_upper[0] = 1.0;
    row.qcon = {{0, off.qobj}};
    renew(row, "", "");
    EXPECT_EQ(run(fail), ZLR_RES_ERR_NONCONVEX);
    renew(row, "QP_CONVEXITY_TOL", "1e-5");
    EXPECT_EQ(run(fail), ZLR_RES_ERR_ENGINE);
    EXPECT_GT(num_started, 0);

    model cone = square_model(); /* x0^2 <= x1^2, x1 >= 0 */
    cone.qobj.clear();
    model_put_column(&cone, 0, 0, nullptr, nullptr);
    model_put_column(&cone, 1, 0, nullptr, nullptr);
    cone.con_lower[0] = -model_inf;
    cone.con_upper[0] = 0.0;
    cone.qcon = {{0, {{0, 0, 2.0}, {1, 1, -2.0}}}};
    renew(cone, "", "");
    EXPECT_EQ(run(fail), ZLR_RES_ERR_ENGINE);
    EXPECT_NE(log.find("1 row is a cone in disguise"), std::string::npos) << log;
    renew(cone, "QP_DISGUISED_CONES", "OFF");
    EXPECT_EQ(run(fail), ZLR_RES_ERR_NONCONVEX);
    EXPECT_EQ(num_started, 0);
}
