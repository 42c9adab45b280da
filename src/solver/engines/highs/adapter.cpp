/* adapter.cpp - the HiGHS module: the one symbol that the library looks for, and the order of a solve. See session.h. */
#include "solver/engines/highs/session.h"

#include <algorithm>
#include <exception>
#include <new>
#include <thread>

static const char *version(void) { return Highs_version(); }

/* A module sees the library's records and none of its functions: what it needs of them it asks of the data. */
static bool has_integers(const model *problem)
{
    return std::any_of(problem->var_type.begin(), problem->var_type.end(),
                       [](uint8_t type) { return type == ZLR_VAR_INT; });
}

static bool accepts(const model *problem, engine_method method)
{
    const bool is_quadratic_method = method == METHOD_HIPO || method == METHOD_ACTIVE_SET;
    if (!problem->qcon.empty() || !problem->cones.empty()) return false;
    if (!problem->qobj.empty()) return is_quadratic_method && !has_integers(problem);
    if (method == METHOD_ACTIVE_SET) return false;
    return (method == METHOD_MIP) == has_integers(problem) || method == METHOD_CHOOSE;
}

bool highs_open(highs_session *s, engine_answer *answer)
{
    const auto begin = std::chrono::steady_clock::now();
    const engine_method method = s->job->method;

    s->is_mip = method == METHOD_MIP || (method == METHOD_CHOOSE && has_integers(s->problem.get()));
    s->highs = Highs_create();
    highs_watch(s); /* before the model is passed: its errors are told through the log */
    if (!highs_set_options(s, answer) || !highs_pass_model(s, answer)) return false;
    highs_pass_start(s);
    {
        const std::lock_guard<std::mutex> lock(s->job->mutex);
        s->job->start_s = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    }
    answer->status = ENGINE_STOPPED; /* until there is more to say */
    return !highs_is_stopped(s);
}

/* Turns what is thrown on the way into a status. Nothing may leave an engine's thread. */
template <class body_type> static void guard(engine_answer *answer, body_type &&body)
{
    try {
        body();
        return;
    } catch (const std::bad_alloc &) {
        *answer = engine_answer{};
        answer->status = ENGINE_MEMORY;
    } catch (const std::exception &e) {
        *answer = engine_answer{};
        answer->status = ENGINE_FAILED;
        answer->message = e.what();
    } catch (...) {
        *answer = engine_answer{};
        answer->status = ENGINE_FAILED;
    }
}

/* The interior solution: the same method in an engine of its own, without crossover. HiGHS does not give the point that
 * its crossover starts from, and its separate crossover refuses most points that its own presolve has given back. */
static void solve_interior(const std::shared_ptr<engine_job> &job)
{
    engine_answer answer;
    guard(&answer, [&] {
        highs_session s;
        s.job = job;
        s.problem = job->problem;
        s.is_second = true;
        if (!highs_open(&s, &answer)) return;
        (void)Highs_setStringOptionValue(s.highs, "run_crossover", "off");
        (void)Highs_run(s.highs);
        highs_get_answer(&s, &answer);
    });
    if (answer.x.empty() || answer.y.empty()) return;
    const std::lock_guard<std::mutex> lock(job->mutex);
    job->interior = std::move(answer);
    job->has_interior = true;
}

static void run_and_answer(highs_session *s, engine_answer *answer)
{
    (void)Highs_run(s->highs);
    *answer = engine_answer{};
    highs_get_answer(s, answer);
}

static void solve_both(highs_session *s, engine_answer *answer)
{
    if (!s->crossover) {
        run_and_answer(s, answer);
        return;
    }
    if (s->job->threads < 2) {
        solve_interior(s->job);
        if (!highs_is_stopped(s)) run_and_answer(s, answer);
        return;
    }
    std::thread second(solve_interior, s->job);
    guard(answer, [&] { run_and_answer(s, answer); });
    second.join(); /* it polls the same stop flag */
}

/* A basic solution from a first-order one: the simplex starts from the basis that the point suggests, which HiGHS
 * completes. What the simplex does not finish leaves the first-order solution as the answer. */
static void solve_first_order(highs_session *s, engine_answer *answer)
{
    run_and_answer(s, answer);
    if (!s->crossover || answer->x.empty() || answer->status != ENGINE_OPTIMAL || highs_is_stopped(s)) return;
    highs_set_basis_from_point(s, answer);
    (void)Highs_setStringOptionValue(s->highs, "solver", "simplex");
    engine_answer basic;
    run_and_answer(s, &basic);
    if (basic.status != ENGINE_OPTIMAL || basic.col_key.empty()) return;
    basic.pdlp_iterations = answer->pdlp_iterations;
    *answer = std::move(basic);
}

static void solve_session(highs_session *s, engine_answer *answer)
{
    if (!highs_open(s, answer)) return;
    const engine_method method = s->job->method;
    if (method == METHOD_PDLP)
        solve_first_order(s, answer);
    else if (s->job->want_interior && (method == METHOD_INTPNT || method == METHOD_HIPO))
        solve_both(s, answer);
    else
        run_and_answer(s, answer);
    if (!s->is_mip && !highs_is_stopped(s)) highs_get_rays(s, answer);
}

static void solve(const std::shared_ptr<engine_job> &job)
{
    engine_answer answer;
    guard(&answer, [&] {
        const auto session = std::make_shared<highs_session>();
        job->rest = session;
        session->job = job;
        session->problem = job->problem;
        solve_session(session.get(), &answer);
    });
    const std::lock_guard<std::mutex> lock(job->mutex);
    job->answer = std::move(answer);
}

extern "C" {
extern __attribute__((visibility("default"))) const engine_adapter zelor_engine;
const engine_adapter zelor_engine = {engine_abi, "HiGHS", version, "MIT", accepts, solve, &highs_session_calls};
}
