/* local.cpp - see local.h: the attempts, and what comes of them. */
#include "solver/engines/local.h"

#include "solver/engines/local_attempts.h"
#include "solver/engines/local_watch.h"

#include <algorithm>
#include <cmath>

/* Equations as ranges far narrower than the tolerance. */
static void open_equations(smooth_problem *problem)
{
    constexpr double half_width = 1e-8;
    for (size_t i = 0; i < problem->con_lower.size(); i++) {
        if (problem->con_lower[i] != problem->con_upper[i]) continue;
        const double half = half_width * std::max(1.0, std::fabs(problem->con_lower[i]));
        problem->con_lower[i] -= half;
        problem->con_upper[i] += half;
    }
}

static engine_answer answer_of(const local_watch *w, const smooth_answer *a)
{
    const double sign = w->form.sign;
    engine_answer answer;
    answer.status = a->end == SMOOTH_SOLVED ? ENGINE_OPTIMAL : ENGINE_UNKNOWN;
    answer.message = a->message;
    answer.ipm_iterations = a->iterations;
    answer.x = a->x;
    for (const double lambda : a->lambda) answer.y.push_back(-sign * lambda);
    for (size_t j = 0; j < a->z_lower.size(); j++) answer.reduced.push_back(sign * (a->z_lower[j] - a->z_upper[j]));
    return answer;
}

/* Multipliers that fit at a point say nothing of the problem's dual, and nothing at all where the point is not feasible. */
static void local_status(solution *sol)
{
    if (sol->prosta == ZLR_PRO_PRIM_AND_DUAL_FEAS) sol->prosta = ZLR_PRO_PRIM_FEAS;
    if (sol->prosta == ZLR_PRO_DUAL_FEAS) sol->prosta = ZLR_PRO_UNKNOWN;
    if (sol->solsta == ZLR_SOLSTA_PRIM_AND_DUAL_FEAS) sol->solsta = ZLR_SOLSTA_PRIM_FEAS;
    if (sol->solsta == ZLR_SOLSTA_DUAL_FEAS || sol->solsta == ZLR_SOLSTA_NEAR_DUAL_FEAS)
        sol->solsta = ZLR_SOLSTA_UNKNOWN;
}

/* Whether a column is so far out that a gradient that fades away there says nothing, with no bound to hold it. */
static bool is_endless(const model *m, const std::vector<double> &x)
{
    constexpr double far = 1e15;
    for (size_t j = 0; j < x.size(); j++)
        if ((x[j] >= far && m->var_upper[j] > x[j]) || (x[j] <= -far && m->var_lower[j] < x[j])) return true;
    return false;
}

/* Takes a point where it is better than the one there is: by status, feasible ones by the objective, others by how far they
 * are off. Returns what keeps it from being optimal; empty: it is. */
static std::string take_point(optimization *o, const engine_answer *answer, const run_entry *who)
{
    const model *m = o->problem.get();
    solution *best = &o->best[ZLR_SOL_ITR];
    solution sol;
    const check_result found = answer_to_solution(m, &o->tol, answer, ZLR_SOL_ITR, &sol);
    if (o->run.engine.empty()) judge_credit(o, who);
    if (!sol.defined || !sol.has_primal) return "it has no point";
    local_status(&sol);
    if (is_endless(m, sol.xx) && found.primal <= 1.0) sol.solsta = ZLR_SOLSTA_PRIM_FEAS;
    std::string complaint = sol.solsta == ZLR_SOLSTA_OPTIMAL ? "" : answer_complaint(m, &found, &sol);
    const int32_t rank = check_rank(sol.solsta), best_rank = check_rank(best->solsta);
    const double sign = m->sense == ZLR_SENSE_MAX ? -1.0 : 1.0;
    bool is_better = !best->defined || !best->has_primal || rank < best_rank;
    if (!is_better && rank == best_rank)
        is_better = found.primal <= 1.0 ? sign * sol.primal_obj < sign * best->primal_obj
                                        : found.primal < o->best_ratio[ZLR_SOL_ITR];
    if (!is_better) return complaint;
    *best = std::move(sol);
    o->best_ratio[ZLR_SOL_ITR] = found.primal;
    judge_credit(o, who);
    return complaint;
}

/* What an end means, for the log; empty: nothing to tell. */
static const char *end_text(smooth_end end)
{
    switch (end) {
    case SMOOTH_ACCEPTABLE: return "ended at an acceptable point, short of the tolerance";
    case SMOOTH_LOCALLY_INFEASIBLE:
        return "ended where the violation is least nearby; that is no proof that the problem is infeasible";
    case SMOOTH_DIVERGING: return "columns or objective grow without end; the problem may be unbounded";
    case SMOOTH_SMALL_STEPS: return "ended as its steps became too small";
    case SMOOTH_RESTORATION_FAILED: return "ended as it found no way back to a feasible point";
    case SMOOTH_STEP_FAILED: return "ended as it could not compute a step";
    case SMOOTH_NO_VALUE: return "ended where a function or derivative has no value";
    case SMOOTH_TOO_FEW_COLUMNS: return "does not take more equations than columns";
    case SMOOTH_ITERATION_LIMIT: return "ended at its limit of iterations";
    case SMOOTH_MEMORY: return "ended without memory";
    case SMOOTH_REFUSED: return "refused";
    case SMOOTH_FAILED: return "failed";
    default: return "";
    }
}

static smooth_end try_once(local_watch *w, const engine_adapter *adapter, const local_attempt *attempt)
{
    optimization *o = w->o;
    smooth_start start = local_start(o, attempt, w->form.sign);
    smooth_answer answer;
    run_entry who;

    if (attempt->goes_on) start = {w->last.x, w->last.lambda, w->last.z_lower, w->last.z_upper};
    smooth_problem opened;
    if (attempt->has_ranges) {
        opened = w->form.problem;
        open_equations(&opened);
    }
    const smooth_calls calls = local_calls(w);
    adapter->solve_smooth(attempt->has_ranges ? &opened : &w->form.problem, &calls, local_options(o, attempt), &start,
                          &answer);
    w->iterations += answer.iterations;

    who.step.source = o->table->smooth;
    who.step.method = METHOD_INTPNT;
    who.step.what = attempt->what;
    who.engine = std::string(adapter->name) + " " + adapter->version();
    who.answer = answer_of(w, &answer);
    o->any_engine = true;
    o->any_answer = o->any_answer || (answer.end != SMOOTH_REFUSED && answer.end != SMOOTH_FAILED);
    std::string complaint = take_point(o, &who.answer, &who);
    if (answer.end == SMOOTH_SQUARE_SOLVED && !complaint.empty()) { /* no multipliers were looked for: most need none */
        std::fill(who.answer.y.begin(), who.answer.y.end(), 0.0);
        complaint = take_point(o, &who.answer, &who);
    }
    if (o->watch.stop_code != ZLR_RES_OK) return SMOOTH_STOPPED;
    if (w->is_unbounded || is_endless(o->problem.get(), answer.x)) answer.end = SMOOTH_DIVERGING;
    std::string text = end_text(answer.end);
    if (!answer.message.empty()) text += (text.empty() ? "" : ": ") + answer.message;
    if (answer.end == SMOOTH_SOLVED && !complaint.empty()) text = "the answer does not pass the check: " + complaint;
    if (!text.empty()) judge_failure(o, who.engine + ", " + plan_method_name(METHOD_INTPNT) + attempt->what, text);
    if (answer.end == SMOOTH_SQUARE_SOLVED && !complaint.empty()) o->start.x = answer.x;
    w->last = std::move(answer);
    return w->last.end;
}

/* ---- the outcome */

/* The function that has no value, and the point: its columns, or the first of them. */
static void tell_failure(const local_watch *w)
{
    constexpr size_t most = 10;
    const model *m = w->o->problem.get();
    const model_functions *f = m->functions.get();
    const local_failure *failure = &w->failure;
    if (f == nullptr || failure->x.empty()) return;
    const int32_t row = functions_find_failure(f, failure->x.data());
    std::vector<int32_t> columns = f->objective_col;
    std::string text = row == -1 ? "The objective" : row < 0 ? "A function" : "Row ";
    if (row >= 0) {
        const auto k = static_cast<size_t>(std::find(f->row.begin(), f->row.end(), row) - f->row.begin());
        text += names_shown(&m->con_names, row, 'c');
        columns.assign(f->col.begin() + f->start[k], f->col.begin() + f->start[k + 1]);
    }
    text += std::string(" has no ") + (row == -2 ? failure->what : "value") + " at";
    for (size_t k = 0; k < columns.size() && k < most; k++)
        text += text_format("%s %s = %.10g", k == 0 ? "" : ",", names_shown(&m->var_names, columns[k], 'x').c_str(),
                            failure->x[static_cast<size_t>(columns[k])]);
    if (columns.empty()) text += " the point that was tried";
    if (columns.size() > most) text += " ...";
    streams_printf(&w->o->task->streams, ZLR_STREAM_ERR, "%s\n", text.c_str());
}

static bool is_feasible(const optimization *o)
{
    return o->best[ZLR_SOL_ITR].defined && o->best_ratio[ZLR_SOL_ITR] <= 1.0;
}

/* `first` is how the first attempt without multipliers ended: the later ones had other starts and settings. */
static int32_t code_of_end(optimization *o, const local_watch *w, smooth_end first)
{
    const int32_t solsta = o->best[ZLR_SOL_ITR].solsta;
    if (solsta == ZLR_SOLSTA_OPTIMAL) return ZLR_RES_OK;
    if (o->watch.stop_code != ZLR_RES_OK) return o->watch.stop_code;
    if (o->limit_code != ZLR_RES_OK) return o->limit_code;
    if (solsta == ZLR_SOLSTA_NEAR_OPTIMAL) return ZLR_RES_OK;
    switch (first) {
    case SMOOTH_DIVERGING: return ZLR_RES_TRM_DIVERGING;
    case SMOOTH_ITERATION_LIMIT: return ZLR_RES_TRM_MAX_ITERATIONS;
    case SMOOTH_LOCALLY_INFEASIBLE: return is_feasible(o) ? ZLR_RES_TRM_STALL : ZLR_RES_TRM_LOCAL_INFEASIBLE;
    case SMOOTH_NO_VALUE:
        tell_failure(w);
        return w->failure.code >= ZLR_RES_ERR_LICENSE ? w->failure.code : ZLR_RES_ERR_NL_EVALUATION; /* an error's */
    default: break;
    }
    if (w->failure.num > 0) tell_failure(w); /* it may be why */
    if (!o->any_answer) {
        streams_printf(&o->task->streams, ZLR_STREAM_ERR, "Every attempt has failed: %s\n", o->failures.c_str());
        return ZLR_RES_ERR_ENGINE;
    }
    return ZLR_RES_TRM_STALL;
}

/* By a stop or a limit. */
static bool is_cut_short(const optimization *o)
{
    return o->watch.stop_code != ZLR_RES_OK || o->limit_code != ZLR_RES_OK;
}

static bool is_last_word(const optimization *o, smooth_end end)
{
    if (o->best[ZLR_SOL_ITR].solsta == ZLR_SOLSTA_OPTIMAL || o->watch.stop_code != ZLR_RES_OK) return true;
    return end == SMOOTH_REFUSED || (end == SMOOTH_DIVERGING && is_feasible(o));
}

/* A limit of iterations that the user has set is one; the engine's own is a reason to try otherwise. */
static int32_t limit_of(const optimization *o, smooth_end end)
{
    const bool is_set = !param_is_default(&o->task->params, param_find(ZLR_PAR_INT, IPAR_NLP_MAX_ITERATIONS));
    if (end == SMOOTH_ITERATION_LIMIT && is_set) return ZLR_RES_TRM_MAX_ITERATIONS;
    return end == SMOOTH_MEMORY ? ZLR_RES_TRM_MEMORY : ZLR_RES_OK;
}

/* Whether the best point that was evaluated is better than the one that an attempt has ended with: by feasibility, then by
 * the objective. One that is as good stays, as it has multipliers. */
static bool is_best_seen(const optimization *o, const local_watch *w)
{
    const solution *best = &o->best[ZLR_SOL_ITR];
    const local_best *seen = &w->best;
    if (seen->x.empty() || best->solsta == ZLR_SOLSTA_OPTIMAL) return false;
    if (!best->defined || !best->has_primal) return true;
    if (!is_feasible(o)) return seen->violation < o->best_ratio[ZLR_SOL_ITR];
    const double room = 1e-9 * std::max(1.0, std::fabs(seen->objective));
    return seen->violation <= 1.0 && seen->objective < w->form.sign * best->primal_obj - room;
}

/* What no attempt has ended with may be the best of all points: where the solve is cut short, or has found nothing feasible
 * to end with. Elsewhere an end is worth more than a point on the way that uses up the tolerance for its objective. */
static void take_best_seen(optimization *o, const local_watch *w)
{
    const bool has_end = is_feasible(o) || o->best[ZLR_SOL_ITR].solsta == ZLR_SOLSTA_NEAR_OPTIMAL;
    if ((has_end && !is_cut_short(o)) || !is_best_seen(o, w)) return;
    engine_answer answer;
    solution sol;
    answer.x = w->best.x;
    const check_result found = answer_to_solution(o->problem.get(), &o->tol, &answer, ZLR_SOL_ITR, &sol);
    local_status(&sol);
    o->best[ZLR_SOL_ITR] = std::move(sol);
    o->best_ratio[ZLR_SOL_ITR] = found.primal;
}

static void note_attempt(optimization *o, const local_attempt *attempt)
{
    std::string text = o->round == 0 ? "Solving with " : "Trying ";
    text += std::string(o->table->smooth->title) + ": " + plan_method_name(METHOD_INTPNT) + attempt->what;
    if (o->round == 0) text += ", for a local solution";
    progress_note(&o->watch.table, text.c_str());
    o->round++;
}

/* Whether an attempt has come near enough to a solution to go on from there. */
static bool can_go_on(const local_watch *w, smooth_end end)
{
    const optimization *o = w->o;
    const solution *best = &o->best[ZLR_SOL_ITR];
    const bool has_multipliers = w->last.lambda.size() == static_cast<size_t>(w->form.problem.num_con) &&
                                 w->last.z_lower.size() == static_cast<size_t>(w->form.problem.num_var);
    const bool is_near = end == SMOOTH_SOLVED || end == SMOOTH_ACCEPTABLE || best->solsta == ZLR_SOLSTA_NEAR_OPTIMAL ||
                         (is_feasible(o) && best->has_dual && w->last.x == best->xx);
    return has_multipliers && is_near && best->solsta != ZLR_SOLSTA_OPTIMAL && o->watch.stop_code == ZLR_RES_OK &&
           param_int(&o->task->params, IPAR_NLP_MAX_ATTEMPTS) != 1;
}

static smooth_end run_attempts(local_watch *w, const engine_adapter *adapter)
{
    optimization *o = w->o;
    smooth_end first = SMOOTH_FAILED;
    bool has_first = false, is_open = false;
    for (local_attempt &attempt : local_attempts(o)) {
        attempt.has_ranges = is_open;
        note_attempt(o, &attempt);
        smooth_end end = try_once(w, adapter, &attempt);
        /* The engine takes no more equations than columns, and of as many looks for a feasible point alone. */
        const bool is_square = end == SMOOTH_SQUARE_SOLVED && o->best[ZLR_SOL_ITR].solsta != ZLR_SOLSTA_OPTIMAL;
        if ((end == SMOOTH_TOO_FEW_COLUMNS || is_square) && !is_open) {
            is_open = attempt.has_ranges = true;
            end = try_once(w, adapter, &attempt);
        }
        if (can_go_on(w, end)) {
            local_attempt next = local_sharper(&o->task->params);
            note_attempt(o, &next);
            next.has_ranges = is_open;
            (void)try_once(w, adapter, &next);
        }
        const bool is_growing = end == SMOOTH_DIVERGING && is_feasible(o);
        if (!has_first || attempt.what[0] == '\0' || is_growing) first = end;
        has_first = true;
        o->limit_code = limit_of(o, end);
        if (is_last_word(o, end) || o->limit_code != ZLR_RES_OK) break;
    }
    return first;
}

/* Sizes that have changed since the program gave its functions change their structure too. */
static int32_t learn_again(optimization *o)
{
    const model *m = o->problem.get();
    if (m->functions == nullptr || (m->functions->num_con == m->num_con && m->functions->num_var == m->num_var))
        return ZLR_RES_OK;
    std::string complaint;
    auto fresh = std::make_shared<model_functions>(*m->functions);
    const int32_t res = functions_learn(m->num_con, m->num_var, fresh.get(), &complaint);
    if (res != ZLR_RES_OK) {
        streams_printf(&o->task->streams, ZLR_STREAM_ERR, "Nonlinear functions: %s\n", complaint.c_str());
        return res;
    }
    task_own_problem(o->task)->functions = std::move(fresh);
    o->problem = o->given = o->task->problem;
    return ZLR_RES_OK;
}

static int32_t refuse(optimization *o, int32_t code, const std::string &text)
{
    streams_printf(&o->task->streams, ZLR_STREAM_ERR, "%s\n", text.c_str());
    return code;
}

/* A user who lets the engine be less exact must not be told that its answer fails. */
static void loosen_check(optimization *o)
{
    const double tolerance = param_dou(&o->task->params, DPAR_NLP_TOL);
    o->tol.dual = std::max(o->tol.dual, tolerance);
    o->tol.gap = std::max(o->tol.gap, tolerance);
    o->tol.primal = std::max(o->tol.primal, tolerance);
}

/* A given start counts as a point like any other. */
static void measure_start(optimization *o)
{
    solution *best = &o->best[ZLR_SOL_ITR];
    if (!best->defined || !best->has_primal) return;
    o->best_ratio[ZLR_SOL_ITR] = check_solution(o->problem.get(), &o->tol, false, best).primal;
    local_status(best);
}

int32_t local_optimize(optimization *o)
{
    const engine_source *source = o->table->smooth;
    std::string message;

    if (!o->problem->cones.empty())
        return refuse(o, ZLR_RES_ERR_NO_ENGINE,
                      "The problem has cones together with general nonlinear functions, which no engine takes.");
    if (source == nullptr)
        return refuse(o, ZLR_RES_ERR_NO_ENGINE, "The problem needs a nonlinear engine, and there is none.");
    const engine_adapter *adapter = source->load(source->name, &message);
    if (adapter == nullptr || adapter->solve_smooth == nullptr)
        return refuse(o, ZLR_RES_ERR_NO_ENGINE,
                      std::string(source->title) + " cannot be loaded: " + message + ". To get it: " + source->advice +
                          ".");
    const int32_t res = learn_again(o);
    if (res != ZLR_RES_OK) return res;

    local_watch w;
    w.o = o;
    loosen_check(o);
    measure_start(o);
    smooth_form_make(o->problem.get(), &w.form);
    const smooth_end first = run_attempts(&w, adapter);
    take_best_seen(o, &w);
    solution *best = &o->best[ZLR_SOL_ITR];
    best->is_local = !w.form.problem.hes_row.empty();
    const int32_t code = code_of_end(o, &w, first);
    o->is_settled = code == ZLR_RES_OK;
    return code;
}
