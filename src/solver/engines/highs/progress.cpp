/* progress.cpp - HiGHS's callbacks: what it tells on its way, incumbents, and the stop flag. See session.h.
 *
 * The interrupt callbacks of simplex and interior point carry hardly more than an iteration count. Objectives and
 * infeasibilities stand in the log lines alone, so these are read as well; a build whose lines look otherwise shows less
 * progress and solves as well. */
#include "solver/engines/highs/session.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

/* "   5295     1.2278421081e+05 Pr: 0(0); Du: 0(1.01415e-10) 0.6s" */
static bool read_simplex_line(const char *line, engine_progress *p)
{
    char *end = nullptr;
    auto iteration = std::strtoll(line, &end, 10);
    char *after = nullptr;
    if (end == line || *end != ' ') return false;
    const double objective = std::strtod(end, &after);
    if (after == end || *after != ' ') return false;

    const char *primal = std::strstr(after, "Pr: ");
    const char *dual = std::strstr(after, "Du: ");
    const char *phase1 = std::strstr(after, "Ph1: ");
    if (primal == nullptr && phase1 == nullptr) return false;
    p->iterations = iteration;
    const char *open = primal != nullptr ? std::strchr(primal, '(') : nullptr;
    if (open != nullptr) p->primal_infeas = std::strtod(open + 1, nullptr);
    open = dual != nullptr ? std::strchr(dual, '(') : nullptr;
    if (open != nullptr) p->dual_infeas = std::strtod(open + 1, nullptr);
    if (phase1 == nullptr) { /* the objective of the present basis: both sides share it */
        p->primal_obj = objective;
        p->dual_obj = objective;
        p->has_primal = p->has_dual = true;
    }
    return true;
}

/* "   15*   1.34822294e+05   1.09110614e+05   2.28e-06   6.80e-07  2.11e-01   0.2": iteration, objectives, residuals. */
static bool read_interior_line(const char *line, engine_progress *p)
{
    char *end = nullptr;
    const auto iteration = std::strtoll(line, &end, 10);
    if (end == line || (*end != ' ' && *end != '*')) return false;
    if (*end == '*') end++;
    double value[4] = {};
    for (double &v : value) {
        char *after = nullptr;
        v = std::strtod(end, &after);
        if (after == end || (*after != ' ' && *after != '\0')) return false;
        end = after;
    }
    p->iterations = iteration;
    p->primal_obj = value[0];
    p->dual_obj = value[1];
    p->has_primal = p->has_dual = true;
    p->primal_infeas = value[2];
    p->dual_infeas = value[3];
    return true;
}

void highs_read_log_line(const char *line, engine_method method, engine_progress *progress)
{
    if (read_simplex_line(line, progress)) return;
    if (method == METHOD_INTPNT || method == METHOD_HIPO || method == METHOD_PDLP)
        (void)read_interior_line(line, progress);
}

static bool is_due(highs_session *s)
{
    const auto now = std::chrono::steady_clock::now();
    if (std::chrono::duration<double>(now - s->last_update).count() < s->min_step_s) return false;
    s->last_update = now;
    return true;
}

static void on_log(highs_session *s, const HighsCallbackDataOut *out, const char *message)
{
    constexpr int log_error = 5; /* HighsLogType::kError */
    if (message == nullptr) return;
    if (out->log_type == log_error) {
        s->last_error = message;
        while (!s->last_error.empty() && std::strchr("\r\n ", s->last_error.back()) != nullptr)
            s->last_error.pop_back();
        return;
    }
    if (s->is_mip || s->is_second)
        return; /* its callbacks carry the numbers, and its sub-problems write lines of the other kinds */
    const std::lock_guard<std::mutex> lock(s->job->mutex);
    highs_read_log_line(message, s->job->method, &s->job->progress);
}

static void on_simplex(highs_session *s, const HighsCallbackDataOut *out)
{
    if (s->is_mip || s->is_second || !is_due(s)) return;
    const std::lock_guard<std::mutex> lock(s->job->mutex);
    s->job->progress.phase = "simplex";
    if (out->simplex_iteration_count > s->job->progress.iterations)
        s->job->progress.iterations = out->simplex_iteration_count;
}

static void on_mip(highs_session *s, const HighsCallbackDataOut *out)
{
    if (!is_due(s)) return;
    const std::lock_guard<std::mutex> lock(s->job->mutex);
    engine_progress &p = s->job->progress;
    p.phase = "branch and cut";
    p.nodes = out->mip_node_count > 0 ? out->mip_node_count : 0;
    if (out->mip_total_lp_iterations > 0) p.iterations = out->mip_total_lp_iterations;
    p.has_dual = std::isfinite(out->mip_dual_bound);
    if (p.has_dual) p.dual_obj = out->mip_dual_bound;
}

static void on_incumbent(highs_session *s, const HighsCallbackDataOut *out)
{
    if (out->mip_solution == nullptr || s->job->left.load()) return;
    const auto size = static_cast<size_t>(s->problem->num_var);
    const std::lock_guard<std::mutex> lock(s->job->mutex);
    s->job->incumbent.assign(out->mip_solution, out->mip_solution + size);
    s->job->incumbent_obj = out->objective_function_value;
    s->job->progress.primal_obj = out->objective_function_value;
    s->job->progress.has_primal = true;
}

/* HiGHS calls this; what is thrown here would pass through its code, so nothing may be. */
static void on_callback(int type, const char *message, const HighsCallbackDataOut *out, HighsCallbackDataIn *in,
                        void *user)
{
    auto *s = static_cast<highs_session *>(user);
    try {
        if (type == kHighsCallbackLogging) on_log(s, out, message);
        if (type == kHighsCallbackSimplexInterrupt) on_simplex(s, out);
        if (type == kHighsCallbackMipInterrupt || type == kHighsCallbackMipLogging) on_mip(s, out);
        if (type == kHighsCallbackMipImprovingSolution) on_incumbent(s, out);
    } catch (...) { /* out of memory: the solve goes on without this piece of news */
        s->last_error.clear();
    }
    if (in != nullptr && (s->job->stop.load() || s->job->left.load())) in->user_interrupt = 1;
}

void highs_watch(highs_session *s)
{
    (void)Highs_setCallback(s->highs, on_callback, s);
    for (const HighsInt type :
         {kHighsCallbackLogging, kHighsCallbackSimplexInterrupt, kHighsCallbackIpmInterrupt,
          kHighsCallbackMipImprovingSolution, kHighsCallbackMipLogging, kHighsCallbackMipInterrupt})
        (void)Highs_startCallback(s->highs, type);
}
