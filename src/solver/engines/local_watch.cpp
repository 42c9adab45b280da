/* local_watch.cpp - see local_watch.h. */
#include "solver/engines/local_watch.h"

#include "solver/report/clock.h"

#include <algorithm>
#include <cmath>

static constexpr double poll_s = 0.05;

/* A stop is looked for at every evaluation, but the program is not asked more often than twenty times a second. */
static bool is_stopped(local_watch *w)
{
    run_watch *watch = &w->o->watch;
    const double now = clock_now_s();
    if (watch->stop_code != ZLR_RES_OK) return true;
    if (now - w->last_poll_s < poll_s) return false;
    w->last_poll_s = now;
    engine_progress progress;
    progress.iterations = w->iterations;
    return watch_poll(watch, &progress);
}

static bool begin_call(local_watch *w, bool is_new)
{
    if (is_new) w->has_objective = w->has_violation = false;
    return !is_stopped(w);
}

static bool end_call(local_watch *w, int32_t code, const char *what, const double *x)
{
    if (code == ZLR_RES_OK) return true;
    local_failure *failure = &w->failure;
    failure->num++;
    failure->code = code;
    failure->what = what;
    failure->x.assign(x, x + w->form.problem.num_var);
    return false;
}

/* ---- the best point */

static double share_of(double value, double lower, double upper, double tolerance)
{
    const double beyond = std::max(lower - value, value - upper);
    if (!(beyond > 0.0)) return 0.0;
    const double side = lower - value > value - upper ? lower : upper;
    return beyond / check_allowed(tolerance, side, 0.0);
}

static double violation_of(const local_watch *w, const double *x, const double *rows)
{
    const smooth_problem *p = &w->form.problem;
    const double tolerance = w->o->tol.primal;
    double worst = 0.0;
    for (size_t i = 0; i < p->con_lower.size(); i++)
        worst = std::max(worst, share_of(rows[i], p->con_lower[i], p->con_upper[i], tolerance));
    for (size_t j = 0; j < p->var_lower.size(); j++)
        worst = std::max(worst, share_of(x[j], p->var_lower[j], p->var_upper[j], tolerance));
    return worst;
}

static void see_point(local_watch *w, const double *x)
{
    constexpr double endless = 1e20; /* as the engine has it for columns */
    local_best *best = &w->best;
    if (!w->has_objective || !w->has_violation) return;
    if (w->violation <= 1.0 && w->objective < -endless) w->is_unbounded = true;
    const bool is_feasible = w->violation <= 1.0, was_feasible = best->violation <= 1.0;
    const bool is_better =
        is_feasible && was_feasible ? w->objective < best->objective : w->violation < best->violation;
    if (!is_better) return;
    best->x.assign(x, x + w->form.problem.num_var);
    best->violation = w->violation;
    best->objective = w->objective;
}

/* ---- the calls */

static bool call_objective(void *handle, const double *x, bool is_new, double *value)
{
    auto *w = static_cast<local_watch *>(handle);
    if (!begin_call(w, is_new)) return false;
    if (!end_call(w, smooth_form_objective(&w->form, x, value), "value", x)) return false;
    w->objective = *value;
    w->has_objective = true;
    if (w->form.problem.num_con == 0) {
        w->violation = violation_of(w, x, nullptr);
        w->has_violation = true;
    }
    see_point(w, x);
    return true;
}

static bool call_rows(void *handle, const double *x, bool is_new, double *value)
{
    auto *w = static_cast<local_watch *>(handle);
    if (!begin_call(w, is_new)) return false;
    if (!end_call(w, smooth_form_rows(&w->form, x, value), "value", x)) return false;
    w->violation = violation_of(w, x, value);
    w->has_violation = true;
    see_point(w, x);
    return true;
}

static bool call_gradient(void *handle, const double *x, bool is_new, double *value)
{
    auto *w = static_cast<local_watch *>(handle);
    return begin_call(w, is_new) && end_call(w, smooth_form_gradient(&w->form, x, value), "gradient", x);
}

static bool call_jacobian(void *handle, const double *x, bool is_new, double *value)
{
    auto *w = static_cast<local_watch *>(handle);
    return begin_call(w, is_new) && end_call(w, smooth_form_jacobian(&w->form, x, value), "gradient", x);
}

static bool call_hessian(void *handle, const double *x, bool is_new, double weight, const double *lambda, double *value)
{
    auto *w = static_cast<local_watch *>(handle);
    return begin_call(w, is_new) &&
           end_call(w, smooth_form_hessian(&w->form, x, weight, lambda, value), "second derivative", x);
}

/* Each iteration is a line of the progress table, and the program is asked each time. */
static bool call_iterate(void *handle, const smooth_news *news)
{
    auto *w = static_cast<local_watch *>(handle);
    run_watch *watch = &w->o->watch;
    progress_line line;
    line.method = plan_method_name(METHOD_INTPNT);
    line.iterations = w->iterations + news->iterations;
    line.has_primal = !news->in_restoration && std::isfinite(news->objective);
    if (line.has_primal) line.primal_obj = w->form.sign * news->objective;
    if (std::isfinite(news->primal_infeas)) line.primal_infeas = news->primal_infeas;
    if (std::isfinite(news->dual_infeas)) line.dual_infeas = news->dual_infeas;
    line.time_s = clock_now_s() - watch->start_s;
    progress_show(&watch->table, &line, false);
    if (watch->history != nullptr) run_history_add(watch->history, &line);

    engine_progress progress;
    progress.iterations = line.iterations;
    progress.has_primal = line.has_primal;
    progress.primal_obj = line.primal_obj;
    w->last_poll_s = clock_now_s();
    return !watch_poll(watch, &progress) && !w->is_unbounded;
}

smooth_calls local_calls(local_watch *watch)
{
    return {watch, call_objective, call_gradient, call_rows, call_jacobian, call_hessian, call_iterate};
}
