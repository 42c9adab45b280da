/* settle.cpp - proofs with problems of our own, where an engine says more than it shows. See optimize.h.
 *
 * "Infeasible or unbounded" is no answer. The least violation of the rows tells which of the two it is and gives the
 * proof of infeasibility; the best direction within the recession cone gives the proof of unboundedness. When both say
 * no, the claim was wrong and the next engine is asked. */
#include "solver/engines/aside.h"
#include "solver/engines/certificate.h"
#include "solver/engines/optimize.h"

#include <algorithm>
#include <cmath>

bool run_aside(optimization *o, const std::shared_ptr<const model> &problem, const plan_step &step, run_entry *entry)
{
    runner r;
    run_order order;
    size_t which = 0;

    order.problem = problem;
    order.step = step;
    o->watch.is_aside = true;
    o->watch.round_deadline_s = model_inf;
    run_event event = runner_start(&r, &o->watch, {order}) ? RUN_INCUMBENT : RUN_END;
    while (event == RUN_INCUMBENT) event = runner_next(&r, &which);
    if (event == RUN_STOP) {
        std::vector<size_t> back;
        runner_halt(&r, &back);
    }
    o->watch.is_aside = false;
    if (event != RUN_ANSWER) return false;
    *entry = std::move(r.entries[which]);
    return true;
}

static plan_step step_by(const engine_source *source, engine_method method)
{
    plan_step step;
    step.source = source;
    step.method = method;
    return step;
}

/* Solves a linear problem of our own; true with `sol` optimal by its check. */
static bool solve_aside(optimization *o, const std::shared_ptr<const model> &problem, solution *sol)
{
    for (const engine_method method : {METHOD_DUAL_SIMPLEX, METHOD_INTPNT, METHOD_PRIMAL_SIMPLEX}) {
        run_entry entry;
        if (!run_aside(o, problem, step_by(o->table->linear, method), &entry)) return false;
        (void)answer_to_solution(problem.get(), &o->tol, &entry.answer, ZLR_SOL_BAS, sol);
        if (sol->solsta == ZLR_SOLSTA_OPTIMAL) return true;
    }
    return false;
}

enum finding { FOUND_NOTHING, FOUND_YES, FOUND_NO };

/* Whether the rows of a linear problem can be met; if not, the proof. */
static finding find_feasible(optimization *o, claim claimed, solution *certificate)
{
    const std::shared_ptr<model> phase_one = aside_phase_one(o->problem.get());
    solution sol;

    if (!solve_aside(o, phase_one, &sol)) return FOUND_NOTHING;
    const auto columns = static_cast<size_t>(o->problem->num_var);
    sol.xx.resize(columns);
    std::vector<double> ray = sol.y;
    engine_answer point;
    point.x = sol.xx;
    solution at;
    /* What is left may be within what the check takes: then a proof counts where an engine has come to the same. */
    const bool proven = certificate_from_dual_ray(o->problem.get(), &o->tol, ray, certificate);
    if (proven && claimed == CLAIM_INFEASIBLE) return FOUND_NO;
    if (answer_to_solution(o->problem.get(), &o->tol, &point, ZLR_SOL_ITR, &at).primal <= 1.0) return FOUND_YES;
    return proven ? FOUND_NO : FOUND_NOTHING;
}

/* Whether there is any integer point: FOUND_NO needs branch and cut's word. */
static finding find_integer_feasible(optimization *o)
{
    run_entry entry;

    if (o->best[ZLR_SOL_ITG].solsta == ZLR_SOLSTA_PRIM_FEAS) return FOUND_YES;
    if (!run_aside(o, aside_feasibility(o->problem.get()), step_by(o->table->linear, METHOD_MIP), &entry))
        return FOUND_NOTHING;
    if (entry.answer.status == ENGINE_PRIMAL_INFEASIBLE) return FOUND_NO;
    for (const std::vector<double> *x : {&entry.incumbent, &entry.answer.x})
        if (!x->empty()) judge_incumbent(o, *x);
    return o->best[ZLR_SOL_ITG].solsta == ZLR_SOLSTA_PRIM_FEAS ? FOUND_YES : FOUND_NOTHING;
}

static finding find_direction(optimization *o, solution *certificate)
{
    solution sol;
    if (!solve_aside(o, aside_recession(o->problem.get()), &sol)) return FOUND_NOTHING;
    return certificate_from_primal_ray(o->problem.get(), &o->tol, sol.xx, certificate) ? FOUND_YES : FOUND_NO;
}

static void settle_infeasible_integer(optimization *o)
{
    solution status;
    solution_reset(&status, o->problem->num_con, o->problem->num_var, model_num_cones(o->problem.get()));
    status.defined = true;
    status.prosta = ZLR_PRO_PRIM_INFEAS;
    status.solsta = ZLR_SOLSTA_PRIM_INFEAS_CER;
    judge_certificate(o, &status);
}

static const char *claim_text(claim claimed)
{
    if (claimed == CLAIM_INFEASIBLE) return "infeasible";
    return claimed == CLAIM_UNBOUNDED ? "unbounded" : "infeasible or unbounded";
}

/* With cones: whether there is a feasible point; if not, the proof. */
static finding find_conic_feasible(optimization *o, solution *certificate)
{
    run_entry entry;

    if (!run_aside(o, aside_conic_feasibility(o->given.get()), step_by(o->table->conic, METHOD_INTPNT), &entry))
        return FOUND_NOTHING;
    engine_answer *a = &entry.answer;
    if (certificate_from_dual_ray(o->given.get(), &o->tol, a->dual_ray, certificate, a->cone_dual)) return FOUND_NO;
    a->y.clear();
    if (a->x.size() > static_cast<size_t>(o->problem->num_var)) a->x.resize(static_cast<size_t>(o->problem->num_var));
    solution point;
    return answer_to_solution(o->problem.get(), &o->tol, a, ZLR_SOL_ITR, &point).primal <= 1.0 ? FOUND_YES
                                                                                               : FOUND_NOTHING;
}

/* What an interior-point method leaves of an entry of a ray that is 0: the root of its tolerance where a cone is met at its
 * apex. */
static constexpr double ray_noise = 1e-3;

/* The proof by the least violation, which is attained where the engine's own proof is one in the limit only. The second time
 * the rows that take no part in it are left out, and with them the noise. */
static bool find_conic_contradiction(optimization *o, solution *certificate)
{
    const std::shared_ptr<model> phase_one = aside_conic_phase_one(o->given.get());
    const auto rows = static_cast<size_t>(o->given->num_con), columns = static_cast<size_t>(o->given->num_var);

    for (int32_t attempt = 0; attempt < 2; attempt++) {
        run_entry entry;
        if (!run_aside(o, phase_one, step_by(o->table->conic, METHOD_INTPNT), &entry)) return false;
        const std::vector<double> y = entry.answer.y;
        std::vector<double> ray = y, cone_dual = entry.answer.cone_dual;
        if (y.size() != static_cast<size_t>(phase_one->num_con)) return false;
        ray.resize(rows);
        if (!cone_dual.empty()) cone_dual.resize(columns);
        if (certificate_from_dual_ray(o->given.get(), &o->tol, ray, certificate, cone_dual)) return true;
        for (size_t i = 0; i < y.size(); i++) {
            if (std::fabs(y[i]) > ray_noise) continue;
            phase_one->con_lower[i] = -model_inf;
            phase_one->con_upper[i] = model_inf;
        }
    }
    return false;
}

/* The best direction of `m`, the problem or its form. The second time the columns that do not move are held. */
static bool find_direction_of(optimization *o, const model *m, solution *certificate)
{
    const std::shared_ptr<model> recession = aside_recession(m);

    for (int32_t attempt = 0; attempt < 2; attempt++) {
        run_entry entry;
        if (!run_aside(o, recession, step_by(o->table->conic, METHOD_INTPNT), &entry)) return false;
        std::vector<double> ray = entry.answer.x;
        if (ray.size() != static_cast<size_t>(m->num_var)) return false;
        for (size_t j = 0; j < ray.size(); j++)
            if (std::fabs(ray[j]) <= ray_noise) recession->var_lower[j] = recession->var_upper[j] = 0.0;
        ray.resize(static_cast<size_t>(o->problem->num_var));
        if (certificate_from_primal_ray(o->problem.get(), &o->tol, ray, certificate)) return true;
    }
    return false;
}

/* Along a direction quadratic rows are linear, but for those that are cones in disguise: these the form alone knows. */
static bool find_conic_direction(optimization *o, solution *certificate)
{
    if (o->problem->cones.empty() && find_direction(o, certificate) == FOUND_YES) return true;
    if (!o->problem->cones.empty() && find_direction_of(o, o->problem.get(), certificate)) return true;
    return o->given != o->problem && find_direction_of(o, o->given.get(), certificate);
}

/* With cones a proof comes from the engine, or, where no round has brought one that holds, from problems of our own. A
 * direction of improvement is one where there is a feasible point. */
static bool prove_conic(optimization *o, claim claimed)
{
    const bool is_last = static_cast<size_t>(o->round) >= o->plan.rounds.size();
    solution certificate;

    if (o->table->conic == nullptr) return false;
    if (claimed == CLAIM_INFEASIBLE) {
        if (!is_last || !find_conic_contradiction(o, &certificate)) return false;
        judge_dual_ray(o, &certificate);
        return true;
    }
    if (o->ray.empty() && !is_last) return false;
    const finding feasible = find_conic_feasible(o, &certificate);
    if (feasible == FOUND_NO) {
        judge_dual_ray(o, &certificate);
        return true;
    }
    if (feasible != FOUND_YES) return false;
    if (!certificate_from_primal_ray(o->problem.get(), &o->tol, o->ray, &certificate) &&
        (!is_last || !find_conic_direction(o, &certificate)))
        return false;
    judge_certificate(o, &certificate);
    return true;
}

static void settle_conic(optimization *o, claim claimed)
{
    if (prove_conic(o, claimed) || o->watch.stop_code != ZLR_RES_OK) return;
    judge_failure(o, o->run.engine,
                  std::string("it takes the problem for ") + claim_text(claimed) + ", and its proof does not hold");
}

/* The user wants no proofs: what an engine says is the status of the problem. */
static void take_word(optimization *o, claim claimed)
{
    solution said;
    solution_reset(&said, o->problem->num_con, o->problem->num_var, model_num_cones(o->problem.get()));
    said.defined = true;
    said.prosta = claimed == CLAIM_INFEASIBLE  ? ZLR_PRO_PRIM_INFEAS
                  : claimed == CLAIM_UNBOUNDED ? ZLR_PRO_DUAL_INFEAS
                                               : ZLR_PRO_PRIM_INFEAS_OR_UNBND;
    progress_note(&o->watch.table, (o->run.engine + " takes the problem for " + claim_text(claimed) +
                                    "; no proof is asked for (CHECK_PROOFS).")
                                       .c_str());
    judge_certificate(o, &said);
}

void settle_claim(optimization *o)
{
    const claim claimed = o->claimed;
    solution certificate;

    o->claimed = CLAIM_NONE;
    if (o->is_settled || claimed == CLAIM_NONE) return;
    if (o->is_integer && claimed == CLAIM_INFEASIBLE) {
        settle_infeasible_integer(o);
        return;
    }
    if (param_int(&o->task->params, IPAR_CHECK_PROOFS) == 0) {
        take_word(o, claimed);
        return;
    }
    if (!o->problem->qcon.empty() || !o->problem->cones.empty()) {
        settle_conic(o, claimed);
        return;
    }
    const finding feasible = o->is_integer ? find_integer_feasible(o) : find_feasible(o, claimed, &certificate);
    if (feasible == FOUND_NO) {
        if (o->is_integer)
            settle_infeasible_integer(o);
        else
            judge_certificate(o, &certificate);
        return;
    }
    if (o->watch.stop_code != ZLR_RES_OK) return;
    if (feasible == FOUND_YES && claimed != CLAIM_INFEASIBLE && find_direction(o, &certificate) == FOUND_YES) {
        judge_certificate(o, &certificate);
        return;
    }
    if (o->watch.stop_code == ZLR_RES_OK)
        judge_failure(o, o->run.engine,
                      std::string("it takes the problem for ") + claim_text(claimed) +
                          ", which the check does not bear out");
}

void settle_integers(optimization *o)
{
    solution *best = &o->best[ZLR_SOL_ITG];
    run_entry entry;

    if (o->is_clean || o->watch.stop_code != ZLR_RES_OK || !best->defined || !best->has_primal) return;
    const std::shared_ptr<model> fixed = aside_fixed(o->problem.get(), best->xx);
    if (!run_aside(o, fixed, step_by(o->table->linear, METHOD_DUAL_SIMPLEX), &entry) || entry.answer.x.empty()) return;
    solution sol;
    bool clean = false;
    const check_result found = answer_to_incumbent(o->problem.get(), &o->tol, entry.answer.x, &sol, &clean);
    check_set_integer_status(&o->tol, o->problem->sense, &found, o->has_bound, o->bound, &sol);
    const check_result before = check_solution(o->problem.get(), &o->tol, true, best);
    check_set_integer_status(&o->tol, o->problem->sense, &before, o->has_bound, o->bound, best);
    /* A clean point is worth a change within the gap, not a worse status. */
    if (!clean || sol.solsta != best->solsta) return;
    *best = std::move(sol);
    o->is_clean = true;
}
