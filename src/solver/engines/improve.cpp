/* improve.cpp - more digits for an answer of a quadratic problem, when all rounds are over. See optimize.h and refine.h.
 *
 * Who is asked is the engine that needs no start and takes free columns as they are, the conic one. */
#include "solver/engines/optimize.h"
#include "solver/engines/refine.h"
#include "solver/report/clock.h"
#include "solver/report/streams.h"

#include <algorithm>
#include <cmath>

/* What takes longer to solve is left as it is: each refinement takes about as long as a solve. */
static constexpr double patience_s = 2.0;

static bool is_wanted(const optimization *o, const solution *best)
{
    if (model_problem_type(o->problem.get()) != ZLR_PROBTYPE_QO || o->table->conic == nullptr) return false;
    if (param_int(&o->task->params, IPAR_QP_POLISH) == 0) return false;
    if (o->watch.stop_code != ZLR_RES_OK || o->limit_code != ZLR_RES_OK) return false;
    return best->defined && best->has_primal && best->has_dual && !solution_is_certificate(best);
}

/* At the end of an interior-point method each product of a distance and its multiplier is about the same. With the root of
 * that as the unit of both, what is in doubt is of size 1. */
static double magnification(const solution *best)
{
    constexpr double least_product = 1e-14, largest_product = 1.0;
    const double product = best->check.complementarity; /* not a number where there was nothing to compare */
    return 1.0 / std::sqrt(std::min(largest_product, std::max(least_product, product)));
}

void improve_answer(optimization *o)
{
    const solution *best = &o->best[ZLR_SOL_ITR];
    const double until = o->watch.start_s + patience_s;

    if (!is_wanted(o, best) || judge_is_exact(o) || clock_now_s() > until) return;
    progress_note(&o->watch.table, text_format("Refining the answer, whose largest residual is %.1e, with %s",
                                               check_largest_residual(best), o->table->conic->title)
                                       .c_str());
    /* Multipliers against values: where the objective is nearly flat, values have far to go for the last digits of
     * multipliers; where it is steep, multipliers for those of values. */
    for (const double ratio : {1.0, 1e2, 1e4, 1e-2}) {
        if (judge_is_exact(o) || clock_now_s() > until) break;
        const double scale = magnification(best), root = std::sqrt(ratio);
        const refinement r = refine_problem(o->problem.get(), best, scale / root, scale * root);
        run_entry entry;
        if (!run_aside(o, r.problem, plan_sharp_step(o->table->conic), &entry)) return;
        o->run.iterations += entry.answer.ipm_iterations;
        o->run.ipm_iterations += entry.answer.ipm_iterations;
        if (refine_take(o->problem.get(), &r, &entry.answer)) judge_refined(o, &entry.answer);
    }
    o->is_settled = o->is_settled || judge_is_exact(o);
}
