/* optimize.cpp - see optimize.h. */
#include "solver/engines/optimize.h"
#include "solver/engines/aside.h"
#include "solver/engines/engines.h"
#include "solver/engines/local.h"
#include "solver/engines/machine.h"
#include "solver/engines/quadratic.h"
#include "solver/report/clock.h"

#include <algorithm>
#include <cmath>

/* What of the solutions that are there an engine may start from. */
static engine_start start_of(const ZLR_task *task)
{
    engine_start start = answer_to_start(&task->sol[ZLR_SOL_BAS], &task->sol[ZLR_SOL_ITR], &task->sol[ZLR_SOL_ITG]);
    if (param_int(&task->params, IPAR_START_BASIS) == 0) {
        start.row_key.clear();
        start.col_key.clear();
    }
    if (param_int(&task->params, IPAR_START_POINT) == 0) {
        start.x.clear();
        start.y.clear();
    }
    return start;
}

static void begin(optimization *o, ZLR_task *task, const engine_table *table)
{
    const param_set *params = &task->params;
    const plan_machine machine = {machine_cores(), machine_memory_bytes()};
    const double limit_s = param_dou(params, DPAR_TIME_LIMIT);

    o->task = task;
    o->table = table;
    o->problem = task->problem;
    o->given = task->problem;
    o->watch.task = task;
    o->watch.start_s = clock_now_s();
    o->watch.deadline_s = o->watch.start_s + limit_s;
    o->is_integer = model_num_int(o->problem.get()) > 0;
    o->is_linear = model_problem_type(o->problem.get()) == ZLR_PROBTYPE_LO;
    o->wants_local = o->problem->functions != nullptr;
    o->tol = check_tolerances_of(params);
    o->plan = plan_make(table, o->problem.get(), params, &machine);
    o->start = start_of(task);
    o->run.ran = true;
    progress_begin(&o->watch.table, params, &task->streams);
    if (task->trace != nullptr) o->watch.history = &task->trace->history;
}

/* The start as the first of the best: a stop may leave nothing better. */
static void take_start(optimization *o)
{
    const model *m = o->problem.get();

    if (param_int(&o->task->params, IPAR_START_POINT) == 0) return;
    if (o->is_integer) {
        if (o->start.x.size() == static_cast<size_t>(m->num_var)) judge_incumbent(o, o->start.x);
        return;
    }
    for (const int32_t kind : {ZLR_SOL_ITR, ZLR_SOL_BAS}) {
        const solution *given = &o->task->sol[kind];
        if (!o->plan.sought[kind] || !given->defined || solution_is_certificate(given) ||
            (!given->has_primal && !given->has_dual))
            continue;
        engine_answer answer;
        if (given->has_primal) answer.x = given->xx;
        if (given->has_dual) answer.y = given->y;
        if (given->has_keys) {
            answer.row_key = given->skc;
            answer.col_key = given->skx;
        }
        (void)answer_to_solution(m, &o->tol, &answer, kind, &o->best[kind]);
    }
}

static std::vector<run_order> orders_of(const optimization *o, const std::vector<plan_step> &round)
{
    std::vector<run_order> orders;
    for (const plan_step &step : round) {
        run_order order;
        order.step = step;
        order.problem = o->given;
        order.options = plan_options(step.source, &o->task->params);
        order.start = o->start;
        order.want_interior = o->plan.want_interior;
        orders.push_back(std::move(order));
    }
    return orders;
}

static void note_round(optimization *o, const std::vector<plan_step> &round)
{
    std::string text = o->round == 0 ? "Solving with " : "Trying ";
    text += std::string(round[0].source->title) + ": ";
    for (size_t k = 0; k < round.size(); k++) {
        if (k > 0) text += k + 1 < round.size() ? ", " : " and ";
        text += plan_method_name(round[k].method);
        text += round[k].what;
    }
    if (round.size() > 1) text += " side by side";
    progress_note(&o->watch.table, text.c_str());
}

/* What engines that did not come back have left: incumbents and bounds. */
static void judge_left(optimization *o, const run_entry *e)
{
    if (!e->incumbent.empty()) judge_incumbent(o, e->incumbent);
    if (o->is_integer && e->progress.has_dual) judge_bound(o, e->progress.dual_obj);
    if (!o->run.engine.empty()) return;
    judge_credit(o, e);
    o->run.iterations = e->progress.iterations;
    o->run.nodes = e->progress.nodes;
}

static void halt_round(optimization *o, runner *r)
{
    std::vector<size_t> back;

    runner_halt(r, &back);
    for (const size_t k : back) (void)judge_answer(o, &r->entries[k]);
    for (size_t k = 0; k < r->entries.size(); k++)
        if (std::find(back.begin(), back.end(), k) == back.end()) judge_left(o, &r->entries[k]);
}

static bool has_optimal(const optimization *o)
{
    return std::any_of(std::begin(o->best), std::end(o->best),
                       [](const solution &s) { return s.defined && s.solsta == ZLR_SOLSTA_OPTIMAL; });
}

/* The other racers get as long again to do better than an optimal answer that nobody is sure of. */
static void limit_wait(optimization *o, const runner *r)
{
    constexpr double least_s = 0.2;
    const double now = clock_now_s();
    o->watch.round_deadline_s = std::min(o->watch.round_deadline_s, now + std::max(least_s, now - r->begin_s));
}

static void run_round(optimization *o, const std::vector<plan_step> &round)
{
    runner r;
    bool is_over = false;

    o->watch.round_deadline_s = model_inf;
    note_round(o, round);
    o->round_threads = 0;
    for (const plan_step &step : round) o->round_threads += step.threads;
    if (!runner_start(&r, &o->watch, orders_of(o, round))) {
        judge_failure(o, round[0].source->title, "no thread can be started");
        return;
    }
    while (!is_over) {
        size_t which = 0;
        const run_event event = runner_next(&r, &which);
        if (event == RUN_INCUMBENT) judge_incumbent(o, r.entries[which].incumbent);
        if (event == RUN_ANSWER) is_over = judge_answer(o, &r.entries[which]);
        if (event == RUN_ANSWER && !o->is_linear && has_optimal(o)) limit_wait(o, &r);
        if (event == RUN_STOP) halt_round(o, &r);
        if (event == RUN_STOP || event == RUN_END) break;
    }
}

static bool is_over(const optimization *o)
{
    return o->is_settled || o->watch.stop_code != ZLR_RES_OK || o->limit_code != ZLR_RES_OK;
}

/* After the rounds that are there to make a good answer better, which are for problems that take no time. */
static bool is_good_enough(const optimization *o)
{
    const solution *best = &o->best[o->plan.sought[ZLR_SOL_BAS] ? ZLR_SOL_BAS : ZLR_SOL_ITR];
    constexpr double patience_s = 1.0;
    const bool is_over = o->round >= o->plan.num_better || clock_now_s() - o->watch.start_s > patience_s;
    return !o->is_linear && o->round > 0 && is_over && best->solsta == ZLR_SOLSTA_OPTIMAL;
}

/* Whether a later round asks another engine than the first one, which may not be installed. */
static bool has_other_engine(const optimization *o)
{
    const engine_source *first = o->plan.rounds[0][0].source;
    return std::any_of(o->plan.rounds.begin(), o->plan.rounds.end(),
                       [first](const std::vector<plan_step> &round) { return round[0].source != first; });
}

static void run_rounds(optimization *o)
{
    for (const std::vector<plan_step> &round : o->plan.rounds) {
        if (is_good_enough(o)) break;
        run_round(o, round);
        o->round++;
        if (o->watch.stop_code == ZLR_RES_OK) settle_claim(o);
        if (is_over(o) || (!o->any_engine && !has_other_engine(o))) return;
    }
}

/* ---- the outcome */

/* An optimal one that no engine was sure of, or a near one. */
static bool has_answer(const optimization *o)
{
    return std::any_of(std::begin(o->best), std::end(o->best), [](const solution &s) {
        return s.defined && (s.solsta == ZLR_SOLSTA_OPTIMAL || s.solsta == ZLR_SOLSTA_NEAR_OPTIMAL ||
                             s.solsta == ZLR_SOLSTA_NEAR_INTEGER_OPTIMAL);
    });
}

static int32_t tell(optimization *o, int32_t code, const std::string &text)
{
    streams_printf(&o->task->streams, ZLR_STREAM_ERR, "%s\n", text.c_str());
    return code;
}

static int32_t outcome_of(optimization *o)
{
    if (!o->is_linear && has_optimal(o)) return ZLR_RES_OK; /* a limit came while it was to be made better */
    if (o->is_settled && o->limit_code == ZLR_RES_OK) return ZLR_RES_OK;
    if (o->is_settled && o->limit_code != ZLR_RES_TRM_OBJECTIVE) return ZLR_RES_OK;
    if (o->watch.stop_code != ZLR_RES_OK) return o->watch.stop_code;
    if (o->limit_code != ZLR_RES_OK) return o->limit_code;
    if (!o->any_engine) {
        const engine_source *first = o->plan.rounds[0][0].source;
        return tell(o, ZLR_RES_ERR_NO_ENGINE,
                    std::string(first->title) + " cannot be loaded: " + o->missing + ". To get it: " + first->advice +
                        ".");
    }
    if (has_answer(o)) return ZLR_RES_OK;
    if (!o->any_answer) return tell(o, ZLR_RES_ERR_ENGINE, "Every engine has failed: " + o->failures);
    return tell(o, ZLR_RES_TRM_STALL, "No engine has come to an answer that passes the check: " + o->failures);
}

static void finish_integer(optimization *o)
{
    solution *best = &o->best[ZLR_SOL_ITG];

    if (!best->defined || !best->has_primal) return;
    const check_result found = check_solution(o->problem.get(), &o->tol, true, best);
    check_set_integer_status(&o->tol, o->problem->sense, &found, o->has_bound, o->bound, best);
    if (!o->has_bound) return;
    o->run.best_bound = o->bound;
    o->run.relative_gap = check_relative_gap(best->primal_obj, o->bound);
}

/* An interior solution that no engine has given is the basic one: it is a solution all the same. */
static void finish_interior(optimization *o)
{
    if (!o->plan.sought[ZLR_SOL_ITR] || o->best[ZLR_SOL_ITR].defined || !o->best[ZLR_SOL_BAS].defined) return;
    o->best[ZLR_SOL_ITR] = o->best[ZLR_SOL_BAS];
}

static void note_outcome(optimization *o)
{
    if (!o->failures.empty()) o->run.remark = o->failures;
    const bool is_race = !o->plan.rounds.empty() && o->plan.rounds[0].size() > 1 && !o->wants_local;
    if (!o->is_settled || o->run.engine.empty() || (o->round < 2 && !is_race)) return;
    progress_note(&o->watch.table, ("The answer is from " + o->run.engine + ", " + o->run.method + ".").c_str());
}

static void finish(optimization *o, int32_t code)
{
    ZLR_task *task = o->task;
    const double check = clock_now_s();

    if (o->is_integer) finish_integer(o);
    finish_interior(o);
    note_outcome(o);
    for (int32_t kind = 0; kind < 3; kind++) task->sol[kind] = std::move(o->best[kind]);
    const double now = clock_now_s();
    o->run.return_code = code;
    o->run.time_check_s += now - check;
    o->run.time_total_s = now - o->watch.start_s;
    o->run.time_solve_s = std::max(0.0, o->run.time_total_s - o->run.time_start_s - o->run.time_check_s);
    task->run = std::move(o->run);
}

/* Problems that need no engine. */
static bool solve_trivial(optimization *o)
{
    solution sol;
    const double crossed_tol = param_dou(&o->task->params, DPAR_PRIMAL_FEASIBILITY_TOL);

    if (!aside_trivial(o->problem.get(), &o->tol, crossed_tol, o->is_integer, &sol)) return false;
    for (int32_t kind = 0; kind < 3; kind++)
        if (o->plan.sought[kind]) o->best[kind] = sol;
    if (o->is_integer && sol.has_primal) judge_bound(o, sol.primal_obj);
    o->run.method = "none needed";
    o->is_settled = true;
    return true;
}

/* Whether the problem is convex; quadratic rows become cones. False: stopped. */
static bool look_at_quadratic(optimization *o)
{
    quadratic_look found;
    const model *m = o->problem.get();
    if (o->is_linear || o->wants_local || !o->plan.refusal.empty() || (m->qobj.empty() && m->qcon.empty())) return true;
    if (!quadratic_look_at(&o->watch, o->problem, m->qcon.empty() ? QUADRATIC_CHECK : QUADRATIC_ROWS, &found))
        return false;
    o->refusal_code = found.code;
    if (o->refusal_code == ZLR_RES_OK) {
        o->map = std::move(found.map);
        if (found.form != nullptr) o->given = std::move(found.form);
        const size_t num = o->map.disguised.size();
        if (num > 0)
            progress_note(&o->watch.table, (std::to_string(num) + (num == 1 ? " row is a cone" : " rows are cones") +
                                            " in disguise and taken as that.")
                                               .c_str());
        return true;
    }
    const bool is_local =
        o->refusal_code == ZLR_RES_ERR_NONCONVEX && param_int(&o->task->params, IPAR_NONCONVEX) == NONCONVEX_LOCAL;
    streams_write(&o->task->streams, is_local ? ZLR_STREAM_WRN : ZLR_STREAM_ERR, found.message.c_str());
    if (is_local) o->wants_local = true;
    return true;
}

/* Before it is known whether the problem is convex nothing is said about solutions: the task keeps those that it has, and
 * gets no others. */
static void keep_solutions(optimization *o)
{
    std::fill(std::begin(o->plan.sought), std::end(o->plan.sought), false);
    for (int32_t kind = 0; kind < 3; kind++) o->best[kind] = std::move(o->task->sol[kind]);
}

int32_t optimize_with(ZLR_task *task, const engine_table *table)
{
    optimization o;
    int32_t code = ZLR_RES_OK;

    begin(&o, task, table);
    if (!look_at_quadratic(&o)) {
        code = o.watch.stop_code;
        keep_solutions(&o);
    } else if (o.wants_local && o.plan.refusal.empty()) {
        take_start(&o);
        if (watch_poll(&o.watch, nullptr))
            code = o.watch.stop_code;
        else if (!solve_trivial(&o))
            code = local_optimize(&o);
    } else if (o.refusal_code != ZLR_RES_OK) {
        code = o.refusal_code;
    } else if (!o.plan.refusal.empty()) {
        code = tell(&o, ZLR_RES_ERR_NO_ENGINE, o.plan.refusal);
    } else {
        take_start(&o);
        if (!watch_poll(&o.watch, nullptr) && !solve_trivial(&o)) {
            run_rounds(&o);
            improve_answer(&o);
            if (o.is_integer && param_int(&task->params, IPAR_MIP_CLEAN_INTEGERS) != 0) settle_integers(&o);
        }
        code = outcome_of(&o);
    }
    finish(&o, code);
    return code;
}

int32_t engines_optimize(ZLR_task *task) { return optimize_with(task, engine_table_default()); }
