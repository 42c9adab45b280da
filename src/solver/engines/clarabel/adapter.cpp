/* adapter.cpp - the Clarabel module: the one symbol that the library looks for, and the order of a solve.
 *
 * Clarabel is an interior-point method for linear and convex quadratic objectives over linear rows and cones. It gives
 * no basis, takes no start and works in one thread. It looks at its callback once an iteration, so that a stop waits for the factorisation at
 * hand. Whether a quadratic objective is convex it does not ask: that is the library's to know before. */
#include "solver/engines/clarabel/form.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <exception>
#include <new>

typedef std::chrono::steady_clock engine_clock;

/* Lives on the engine's thread; freed behind the answer, while that is looked at. */
struct clarabel_session {
    std::shared_ptr<engine_job> job;
    engine_clock::time_point begin = engine_clock::now();
    clarabel_form form;
    zlr_clarabel_settings *settings = nullptr;
    zlr_clarabel_solver *solver = nullptr;
    char message[256] = "";
    bool has_iteration_limit = false; /* the user's: reaching it is a limit, reaching the engine's own a stall */

    clarabel_session() = default;
    clarabel_session(const clarabel_session &) = delete;
    clarabel_session &operator=(const clarabel_session &) = delete;
    ~clarabel_session()
    {
        zlr_clarabel_free(solver);
        zlr_clarabel_settings_free(settings);
    }
};

static const char *version(void) { return zlr_clarabel_version(); }

static bool accepts(const model *problem, engine_method method)
{
    const bool has_integers = std::any_of(problem->var_type.begin(), problem->var_type.end(),
                                          [](uint8_t type) { return type == ZLR_VAR_INT; });
    return (method == METHOD_INTPNT || method == METHOD_CHOOSE) && !has_integers && problem->qcon.empty();
}

static double elapsed_s(const clarabel_session *s)
{
    return std::chrono::duration<double>(engine_clock::now() - s->begin).count();
}

static bool is_stopped(const engine_job *job) { return job->stop.load() || job->left.load(); }

static bool end_with(engine_answer *answer, engine_status status, const std::string &message)
{
    answer->status = status;
    answer->message = message;
    return false;
}

/* ---- before the solve */

static int32_t put_option(zlr_clarabel_settings *settings, const engine_option *o)
{
    const char *name = o->name.c_str();
    if (o->param_class == ZLR_PAR_STR) return zlr_clarabel_put_text(settings, name, o->str.c_str());
    const double value = o->param_class == ZLR_PAR_DOUBLE ? o->dou : static_cast<double>(o->integer);
    return zlr_clarabel_put_number(settings, name, value);
}

static bool put_options(clarabel_session *s, engine_answer *answer)
{
    const engine_job *job = s->job.get();

    s->settings = zlr_clarabel_settings_new();
    if (s->settings == nullptr) return end_with(answer, ENGINE_FAILED, "has no settings");
    for (const engine_option &o : job->options) {
        const int32_t res = put_option(s->settings, &o);
        if (res == ZLR_CLARABEL_VALUE)
            return end_with(answer, ENGINE_REFUSED, "does not take the value of the option " + o.name);
        if (res != ZLR_CLARABEL_OK) return end_with(answer, ENGINE_REFUSED, "does not take the option " + o.name);
        if (o.name == "max_iter") s->has_iteration_limit = true;
    }
    return true;
}

/* Clarabel's own matrices are scaled copies, so that the form's are freed before the work begins. */
static bool load(clarabel_session *s, engine_answer *answer)
{
    clarabel_form_make(s->job->problem.get(), &s->form);
    if (std::isfinite(s->job->time_limit_s)) /* it counts from when the solver is made */
        (void)zlr_clarabel_put_number(s->settings, "time_limit", std::max(s->job->time_limit_s - elapsed_s(s), 0.0));
    const zlr_clarabel_problem problem = clarabel_form_view(&s->form);
    const int32_t res = zlr_clarabel_new(&problem, s->settings, &s->solver, s->message, sizeof s->message);
    if (res == ZLR_CLARABEL_PANIC) return end_with(answer, ENGINE_FAILED, s->message);
    if (res != ZLR_CLARABEL_OK)
        return end_with(answer, ENGINE_REFUSED, std::string("does not take the problem: ") + s->message);
    s->form.a = {};
    s->form.p = {};
    const std::lock_guard<std::mutex> lock(s->job->mutex);
    s->job->start_s = elapsed_s(s);
    return true;
}

/* ---- the solve */

static double objective_of(const clarabel_session *s, double value)
{
    return s->form.sign * value + s->job->problem->cfix;
}

/* Called by Rust: nothing may be thrown. Locking a mutex that nobody misuses throws nothing. */
static int32_t on_iteration(void *user, const zlr_clarabel_progress *news) noexcept
{
    auto *s = static_cast<clarabel_session *>(user);
    const std::lock_guard<std::mutex> lock(s->job->mutex);
    engine_progress *p = &s->job->progress;

    p->phase = "interior point";
    p->iterations = news->iterations;
    p->primal_obj = objective_of(s, news->primal_obj);
    p->dual_obj = objective_of(s, news->dual_obj);
    p->has_primal = std::isfinite(p->primal_obj);
    p->has_dual = std::isfinite(p->dual_obj);
    p->primal_infeas = std::isfinite(news->primal_residual) ? news->primal_residual : -1.0;
    p->dual_infeas = std::isfinite(news->dual_residual) ? news->dual_residual : -1.0;
    return is_stopped(s->job.get()) ? 1 : 0;
}

/* ---- behind the solve */

static double setting_of(const clarabel_session *s, const char *name)
{
    double value = 0.0;
    (void)zlr_clarabel_get_number(s->settings, name, &value);
    return value;
}

/* Behind a limit Clarabel looks whether the reduced tolerances are met, and then tells that in place of the limit. */
static engine_status limit_behind(const clarabel_session *s, const zlr_clarabel_result *r)
{
    if (s->has_iteration_limit && static_cast<double>(r->iterations) >= setting_of(s, "max_iter"))
        return ENGINE_ITERATION_LIMIT;
    return r->time_s > setting_of(s, "time_limit") ? ENGINE_TIME_LIMIT : ENGINE_UNKNOWN;
}

static void set_status(const clarabel_session *s, const zlr_clarabel_result *r, engine_answer *answer)
{
    switch (r->status) {
    case ZLR_CLARABEL_SOLVED: answer->status = ENGINE_OPTIMAL; break;
    case ZLR_CLARABEL_PRIMAL_INFEASIBLE: answer->status = ENGINE_PRIMAL_INFEASIBLE; break;
    case ZLR_CLARABEL_DUAL_INFEASIBLE: answer->status = ENGINE_DUAL_INFEASIBLE; break;
    case ZLR_CLARABEL_ALMOST_SOLVED:
        (void)end_with(answer, limit_behind(s, r), "solved to its reduced tolerances only");
        break;
    case ZLR_CLARABEL_ALMOST_PRIMAL_INFEASIBLE:
        (void)end_with(answer, limit_behind(s, r), "infeasible by its reduced tolerances only");
        break;
    case ZLR_CLARABEL_ALMOST_DUAL_INFEASIBLE:
        (void)end_with(answer, limit_behind(s, r), "unbounded by its reduced tolerances only");
        break;
    case ZLR_CLARABEL_MAX_TIME: answer->status = ENGINE_TIME_LIMIT; break;
    case ZLR_CLARABEL_STOPPED: answer->status = ENGINE_STOPPED; break;
    case ZLR_CLARABEL_MAX_ITERATIONS:
        (void)end_with(answer, limit_behind(s, r), s->has_iteration_limit ? "" : "stalls");
        break;
    case ZLR_CLARABEL_NUMERICAL_ERROR:
    case ZLR_CLARABEL_INSUFFICIENT_PROGRESS: (void)end_with(answer, ENGINE_UNKNOWN, "stalls"); break;
    default: (void)end_with(answer, ENGINE_FAILED, "ended with a status that is not known"); break;
    }
}

static bool all_finite(const double *v, int64_t num)
{
    return std::all_of(v, v + num, [](double value) { return std::isfinite(value); });
}

/* Of a proof that there is no feasible point only the duals mean something, of an unbounded direction only x. */
static void get_vectors(const clarabel_session *s, const zlr_clarabel_result *r, engine_answer *answer)
{
    const bool is_dual_ray =
        r->status == ZLR_CLARABEL_PRIMAL_INFEASIBLE || r->status == ZLR_CLARABEL_ALMOST_PRIMAL_INFEASIBLE;
    const bool is_primal_ray =
        r->status == ZLR_CLARABEL_DUAL_INFEASIBLE || r->status == ZLR_CLARABEL_ALMOST_DUAL_INFEASIBLE;

    if (!is_dual_ray && all_finite(r->x, r->num_columns))
        (is_primal_ray ? answer->primal_ray : answer->x).assign(r->x, r->x + r->num_columns);
    if (!is_primal_ray && all_finite(r->z, r->num_rows))
        clarabel_form_duals(s->job->problem.get(), &s->form, r->z, answer);
    if (!is_dual_ray) return;
    answer->dual_ray = std::move(answer->y);
    answer->y.clear();
    answer->reduced.clear();
}

static void run(clarabel_session *s, engine_answer *answer)
{
    zlr_clarabel_result r = {};
    const int32_t res = zlr_clarabel_solve(s->solver, on_iteration, s, s->message, sizeof s->message);

    if (res != ZLR_CLARABEL_OK || zlr_clarabel_get_result(s->solver, &r) != ZLR_CLARABEL_OK) {
        (void)end_with(answer, ENGINE_FAILED, s->message);
        return;
    }
    answer->ipm_iterations = r.iterations;
    set_status(s, &r, answer);
    get_vectors(s, &r, answer);
}

/* ---- problems that the engine is not asked about */

/* Without columns the rows hold at 0, or the first that does not is a proof. */
static void answer_without_columns(const model *m, engine_answer *answer)
{
    const double sign = m->sense == ZLR_SENSE_MAX ? -1.0 : 1.0;
    std::vector<double> y(static_cast<size_t>(m->num_con), 0.0);

    answer->status = ENGINE_OPTIMAL;
    for (size_t i = 0; i < y.size() && answer->status == ENGINE_OPTIMAL; i++) {
        if (m->con_lower[i] <= 0.0 && m->con_upper[i] >= 0.0) continue;
        y[i] = m->con_lower[i] > 0.0 ? sign : -sign;
        answer->status = ENGINE_PRIMAL_INFEASIBLE;
    }
    (answer->status == ENGINE_OPTIMAL ? answer->y : answer->dual_ray) = std::move(y);
}

static bool any_crossed(const std::vector<double> &lower, const std::vector<double> &upper)
{
    for (size_t k = 0; k < lower.size(); k++)
        if (lower[k] > upper[k]) return true;
    return false;
}

/* The proof of crossed sides is the pair of them, which cancels out in a ray. */
static bool answer_at_once(const model *m, engine_answer *answer)
{
    if (any_crossed(m->con_lower, m->con_upper) || any_crossed(m->var_lower, m->var_upper))
        answer->status = ENGINE_PRIMAL_INFEASIBLE;
    else if (m->num_var == 0)
        answer_without_columns(m, answer);
    else
        return false;
    return true;
}

static void solve_session(clarabel_session *s, engine_answer *answer)
{
    if (!put_options(s, answer) || answer_at_once(s->job->problem.get(), answer)) return;
    if (!load(s, answer)) return;
    answer->status = ENGINE_STOPPED;
    if (!is_stopped(s->job.get())) run(s, answer);
}

static void solve(const std::shared_ptr<engine_job> &job)
{
    engine_answer answer;
    try {
        const auto session = std::make_shared<clarabel_session>();
        job->rest = session;
        session->job = job;
        solve_session(session.get(), &answer);
    } catch (const std::bad_alloc &) {
        answer = engine_answer{};
        answer.status = ENGINE_MEMORY;
    } catch (const std::exception &e) {
        answer = engine_answer{};
        (void)end_with(&answer, ENGINE_FAILED, e.what());
    }
    const std::lock_guard<std::mutex> lock(job->mutex);
    job->answer = std::move(answer);
}

extern "C" {
extern __attribute__((visibility("default"))) const engine_adapter zelor_engine;
const engine_adapter zelor_engine = {engine_abi, "Clarabel", version, "Apache-2.0", accepts, solve, nullptr};
}
