/* judge.cpp - what engines say, held against the task's own data. See optimize.h. */
#include "solver/engines/certificate.h"
#include "solver/engines/optimize.h"
#include "solver/engines/own_work.h"
#include "solver/engines/polish.h"

#include <algorithm>
#include <cmath>

static std::string who_of(const run_entry *e)
{
    const std::string engine = e->engine.empty() ? e->step.source->title : e->engine;
    return engine + ", " + plan_method_name(e->step.method) + e->step.what;
}

void judge_failure(optimization *o, const std::string &who, const std::string &why)
{
    const std::string text = who + ": " + why;
    if (!o->failures.empty()) o->failures += "; ";
    o->failures += text;
    progress_note(&o->watch.table, text.c_str());
}

void judge_credit(optimization *o, const run_entry *e)
{
    const engine_answer *a = &e->answer;
    run_record *r = &o->run;

    r->engine = e->engine;
    r->method = plan_method_name(e->step.method);
    if (a->crossover_iterations > 0 || (e->step.method == METHOD_INTPNT && !a->col_key.empty()))
        r->method += " with crossover";
    r->method += e->step.what;
    r->simplex_iterations = a->simplex_iterations;
    r->ipm_iterations = a->ipm_iterations;
    r->crossover_iterations = a->crossover_iterations;
    r->pdlp_iterations = a->pdlp_iterations;
    r->iterations = a->simplex_iterations + a->ipm_iterations + a->crossover_iterations + a->pdlp_iterations;
    r->nodes = a->nodes;
    r->threads = o->round_threads;
    r->time_start_s += e->start_s;
}

/* ---- continuous */

static bool is_better(const solution *a, const solution *b, int32_t sense)
{
    if (!b->defined) return true;
    const int32_t rank_a = check_rank(a->solsta), rank_b = check_rank(b->solsta);
    if (rank_a != rank_b) return rank_a < rank_b;
    return sense == ZLR_SENSE_MAX ? a->primal_obj > b->primal_obj : a->primal_obj < b->primal_obj;
}

/* Where two answers are of the same status, linear problems go by the objective; quadratic and conic ones, whose engines
 * stop short of the optimum and not at a vertex, by the residuals. */
static bool improves(const optimization *o, int32_t kind, const solution *sol, const check_result *found)
{
    const solution *best = &o->best[kind];
    if (!sol->defined) return false;
    if (!best->defined || o->is_linear || check_rank(sol->solsta) != check_rank(best->solsta))
        return is_better(sol, best, o->problem->sense);
    if (polish_ratio(found) > 1.0 || o->best_ratio[kind] > 1.0) return polish_ratio(found) < o->best_ratio[kind];
    return check_largest_residual(sol) < check_largest_residual(best);
}

static void offer(optimization *o, int32_t kind, solution *sol, const check_result *found)
{
    if (!improves(o, kind, sol, found)) return;
    o->best[kind] = std::move(*sol);
    o->best_ratio[kind] = polish_ratio(found);
}

/* Whether an answer stands for itself: by the share of what is allowed, and by its residuals as they are. What uses up more
 * waits for the other racers, or for the next round: on ill-conditioned problems residuals within the tolerance leave
 * digits of the objective open. */
static bool stands_alone(const optimization *o, const check_result *found, const solution *sol)
{
    const double share = param_dou(&o->task->params, DPAR_QP_SURE_SHARE);
    return o->is_linear || (polish_ratio(found) <= share && check_largest_residual(sol) <= share);
}

static int32_t main_kind(const optimization *o) { return o->plan.sought[ZLR_SOL_BAS] ? ZLR_SOL_BAS : ZLR_SOL_ITR; }

/* From an answer for the form without quadratic rows. A row that is a cone in disguise has no multiplier at the cone's
 * apex: where its problem's own duals miss the check for that, those of the form, which has the cone's, stand for them. */
static check_result mapped_solution(const optimization *o, const engine_answer *answer, solution *sol)
{
    const model *m = o->problem.get();
    solution form;
    const check_result at_form = answer_to_solution(o->given.get(), &o->tol, answer, ZLR_SOL_ITR, &form);
    if (!form.defined) return at_form;
    conic_map_point(m, &o->map, &form, sol);
    check_complete(m, &o->tol, sol, sol->snx.empty() ? std::vector<double>{} : answer->reduced);
    check_result found = check_solution(m, &o->tol, false, sol);
    if (!o->map.disguised.empty() && std::max(found.dual, found.gap) > std::max(at_form.dual, at_form.gap)) {
        found = {found.primal, at_form.dual, at_form.gap};
        sol->dual_obj = form.dual_obj;
        sol->check.dual = form.check.dual;
        sol->check.complementarity = form.check.complementarity;
    }
    answer_set_keys(m, &o->tol, sol);
    sol->defined = true;
    check_set_status(&o->tol, &found, sol);
    return found;
}

/* A stop leaves the answer as it is. */
static void polish(optimization *o, solution *sol, check_result *found)
{
    const param_set *params = &o->task->params;
    const int32_t type = model_problem_type(o->problem.get());
    if ((type != ZLR_PROBTYPE_QO && type != ZLR_PROBTYPE_QCQO) || param_int(params, IPAR_QP_POLISH) == 0) return;
    const polish_limits limits = {param_int(params, IPAR_QP_POLISH_MAX_ROUNDS),
                                  param_int(params, IPAR_QP_POLISH_GUESSES),
                                  1e6 * param_int(params, IPAR_QP_POLISH_MAX_WORK)};
    struct polished {
        solution sol;
        check_result found;
    };
    const auto from = std::make_shared<const polished>(polished{*sol, *found});
    const auto to = std::make_shared<polished>();
    const own_work work = [problem = o->problem, tol = o->tol, limits, from, to](work_effort *effort) {
        *to = *from;
        polish_solution(problem.get(), &tol, &limits, effort, &to->sol, &to->found);
        polish_quadratic_rows(problem.get(), &tol, &limits, effort, &to->sol, &to->found);
    };
    if (!own_work_do(&o->watch, work)) return;
    *sol = std::move(to->sol);
    *found = to->found;
}

/* Takes a point with its duals. An optimal one settles the task. */
static bool judge_point(optimization *o, const run_entry *e)
{
    const model *m = o->problem.get();
    const int32_t kind = main_kind(o);
    solution sol;

    if (e->has_interior && o->plan.sought[ZLR_SOL_ITR]) {
        const check_result inner = answer_to_solution(m, &o->tol, &e->interior, ZLR_SOL_ITR, &sol);
        offer(o, ZLR_SOL_ITR, &sol, &inner);
    }
    check_result found = o->given == o->problem ? answer_to_solution(m, &o->tol, &e->answer, kind, &sol)
                                                : mapped_solution(o, &e->answer, &sol);
    if (!sol.defined) return false;
    polish(o, &sol, &found);
    const bool optimal = sol.solsta == ZLR_SOLSTA_OPTIMAL;
    const bool claims = e->answer.status == ENGINE_OPTIMAL || e->answer.status == ENGINE_UNKNOWN;
    if (kind == ZLR_SOL_BAS && !sol.has_keys) {
        /* Crossover did not get there: what there is, is an interior solution, and the next engine is asked. */
        if (o->plan.sought[ZLR_SOL_ITR]) offer(o, ZLR_SOL_ITR, &sol, &found);
        if (claims) judge_failure(o, who_of(e), "ended without a basic solution");
        return false;
    }
    if (claims && !optimal)
        judge_failure(o, who_of(e), "the answer does not pass the check: " + answer_complaint(m, &found, &sol));
    if (improves(o, kind, &sol, &found)) judge_credit(o, e);
    offer(o, kind, &sol, &found);
    if (!optimal) return false;
    const bool is_sure = stands_alone(o, &found, &o->best[kind]);
    o->is_settled = o->is_settled || is_sure;
    return is_sure;
}

bool judge_is_exact(const optimization *o)
{
    const solution *best = &o->best[main_kind(o)];
    return best->solsta == ZLR_SOLSTA_OPTIMAL &&
           check_largest_residual(best) <= param_dou(&o->task->params, DPAR_QP_SURE_SHARE);
}

void judge_refined(optimization *o, const engine_answer *answer)
{
    const int32_t kind = main_kind(o);
    solution sol;

    check_result found = answer_to_solution(o->problem.get(), &o->tol, answer, kind, &sol);
    if (!sol.defined) return;
    polish(o, &sol, &found);
    offer(o, kind, &sol, &found);
}

void judge_certificate(optimization *o, const solution *certificate)
{
    for (int32_t kind = 0; kind < 3; kind++) {
        if (!o->plan.sought[kind]) continue;
        o->best[kind] = *certificate;
        if (kind != ZLR_SOL_ITG) continue;
        solution_reset(&o->best[kind], o->problem->num_con, o->problem->num_var, model_num_cones(o->problem.get()));
        o->best[kind].defined = true;
        o->best[kind].prosta = certificate->prosta;
        o->best[kind].solsta = certificate->solsta;
    }
    o->is_settled = true;
}

void judge_dual_ray(optimization *o, const solution *certificate)
{
    if (o->given == o->problem) {
        judge_certificate(o, certificate);
        return;
    }
    solution own;
    conic_map_ray(o->problem.get(), &o->map, certificate, &own);
    judge_certificate(o, &own);
}

/* An engine's proof of infeasibility, if it has one that holds. Else its claim is to be settled. */
static bool judge_infeasible(optimization *o, const run_entry *e)
{
    solution sol;
    o->claimed = CLAIM_INFEASIBLE;
    judge_credit(o, e);
    if (certificate_from_dual_ray(o->given.get(), &o->tol, e->answer.dual_ray, &sol, e->answer.cone_dual))
        judge_dual_ray(o, &sol);
    return true;
}

/* A direction alone proves no more than that there is no finite optimum where there is a feasible point. */
static bool judge_unbounded(optimization *o, const run_entry *e)
{
    solution ray, point;
    o->claimed = CLAIM_UNBOUNDED;
    judge_credit(o, e);
    engine_answer own = e->answer;
    const auto columns = static_cast<size_t>(o->problem->num_var);
    if (own.x.size() > columns) own.x.resize(columns); /* of a form, which has more */
    if (own.primal_ray.size() > columns) own.primal_ray.resize(columns);
    own.y.clear();
    const check_result found = answer_to_solution(o->problem.get(), &o->tol, &own, ZLR_SOL_BAS, &point);
    if (found.primal <= 1.0 && certificate_from_primal_ray(o->problem.get(), &o->tol, own.primal_ray, &ray))
        judge_certificate(o, &ray);
    o->ray = std::move(own.primal_ray);
    return true;
}

/* ---- integer */

void judge_bound(optimization *o, double bound)
{
    if (!std::isfinite(bound)) return;
    const bool tighter = o->problem->sense == ZLR_SENSE_MAX ? bound < o->bound : bound > o->bound;
    if (!o->has_bound || tighter) o->bound = bound;
    o->has_bound = true;
    o->watch.has_dual = true;
    o->watch.dual_obj = o->bound;
}

void judge_incumbent(optimization *o, const std::vector<double> &x)
{
    solution sol;
    bool clean = false;
    const check_result found = answer_to_incumbent(o->problem.get(), &o->tol, x, &sol, &clean);
    solution *best = &o->best[ZLR_SOL_ITG];

    if (!sol.defined || found.primal > o->tol.near) return;
    if (!is_better(&sol, best, o->problem->sense)) return;
    *best = std::move(sol);
    o->is_clean = clean;
    o->watch.has_primal = best->solsta == ZLR_SOLSTA_PRIM_FEAS;
    o->watch.primal_obj = best->primal_obj;
}

static bool has_feasible(const optimization *o) { return o->best[ZLR_SOL_ITG].solsta == ZLR_SOLSTA_PRIM_FEAS; }

static bool judge_integer_optimal(optimization *o, const run_entry *e)
{
    const engine_answer *a = &e->answer;
    solution sol;
    bool clean = false;

    const check_result found = answer_to_incumbent(o->problem.get(), &o->tol, a->x, &sol, &clean);
    if (!(found.primal <= 1.0)) {
        judge_failure(o, who_of(e),
                      "the answer does not pass the check: " + answer_complaint(o->problem.get(), &found, &sol));
        return false;
    }
    /* An engine that says optimal and gives no bound stands by its objective. */
    judge_bound(o, a->has_bound ? a->best_bound : sol.primal_obj);
    solution closed = o->best[ZLR_SOL_ITG];
    check_set_integer_status(&o->tol, o->problem->sense, &found, o->has_bound, o->bound, &closed);
    if (closed.solsta == ZLR_SOLSTA_INTEGER_OPTIMAL) {
        o->is_settled = true;
        return true;
    }
    judge_failure(o, who_of(e), "its bound leaves a gap to the solution");
    return false;
}

static bool judge_integer(optimization *o, const run_entry *e)
{
    const engine_answer *a = &e->answer;

    if (!e->incumbent.empty()) judge_incumbent(o, e->incumbent);
    if (!a->x.empty()) judge_incumbent(o, a->x);
    judge_credit(o, e);
    switch (a->status) {
    case ENGINE_OPTIMAL: return judge_integer_optimal(o, e);
    case ENGINE_PRIMAL_INFEASIBLE:
        if (has_feasible(o)) {
            judge_failure(o, who_of(e),
                          "it takes the problem for infeasible, but there is a solution that passes the check");
            return false;
        }
        o->claimed = CLAIM_INFEASIBLE;
        return true;
    default: break;
    }
    if (a->has_bound) judge_bound(o, a->best_bound);
    return false;
}

/* ---- all */

static int32_t limit_of(engine_status status)
{
    switch (status) {
    case ENGINE_TIME_LIMIT: return ZLR_RES_TRM_TIME_LIMIT;
    case ENGINE_ITERATION_LIMIT: return ZLR_RES_TRM_MAX_ITERATIONS;
    case ENGINE_NODE_LIMIT: return ZLR_RES_TRM_MAX_NODES;
    case ENGINE_SOLUTION_LIMIT: return ZLR_RES_TRM_MAX_SOLUTIONS;
    case ENGINE_OBJECTIVE_LIMIT: return ZLR_RES_TRM_OBJECTIVE;
    case ENGINE_MEMORY: return ZLR_RES_TRM_MEMORY;
    default: return ZLR_RES_OK;
    }
}

static bool judge_refusal(optimization *o, const run_entry *e)
{
    const engine_answer *a = &e->answer;
    if (e->is_missing) {
        o->missing = a->message;
        return false;
    }
    if (a->status == ENGINE_REFUSED || a->status == ENGINE_FAILED) {
        const char *what = a->status == ENGINE_REFUSED ? "refused" : "failed";
        judge_failure(o, who_of(e), a->message.empty() ? what : a->message);
    }
    return false;
}

bool judge_answer(optimization *o, const run_entry *e)
{
    const engine_status status = e->answer.status;
    const int32_t limit = limit_of(status);

    o->any_engine = o->any_engine || !e->is_missing;
    if (e->is_missing || status == ENGINE_REFUSED || status == ENGINE_FAILED) return judge_refusal(o, e);
    o->any_answer = true;
    if (limit != ZLR_RES_OK) o->limit_code = limit;
    if (status == ENGINE_DUAL_INFEASIBLE || status == ENGINE_INFEASIBLE_OR_UNBOUNDED) {
        if (status == ENGINE_DUAL_INFEASIBLE && !o->is_integer) return judge_unbounded(o, e);
        judge_credit(o, e);
        o->claimed = status == ENGINE_DUAL_INFEASIBLE ? CLAIM_UNBOUNDED : CLAIM_EITHER;
        return true;
    }
    if (o->is_integer) return judge_integer(o, e) || status == ENGINE_OBJECTIVE_LIMIT;
    if (status == ENGINE_PRIMAL_INFEASIBLE) return judge_infeasible(o, e);
    if (status == ENGINE_UNKNOWN && e->answer.x.empty()) judge_failure(o, who_of(e), "ended without an answer");
    return judge_point(o, e) || status == ENGINE_OBJECTIVE_LIMIT;
}
