/* answer.cpp - what HiGHS found, in the library's terms. See session.h.
 *
 * Duals: HiGHS gives row duals y with reduced costs c - A'y in both senses, which is the library's convention. */
#include "solver/engines/highs/session.h"

#include <cmath>

static engine_status status_of(HighsInt model_status)
{
    constexpr HighsInt memory_limit = 18; /* not named by the C header */
    if (model_status == kHighsModelStatusOptimal || model_status == kHighsModelStatusModelEmpty) return ENGINE_OPTIMAL;
    if (model_status == kHighsModelStatusInfeasible) return ENGINE_PRIMAL_INFEASIBLE;
    if (model_status == kHighsModelStatusUnbounded) return ENGINE_DUAL_INFEASIBLE;
    if (model_status == kHighsModelStatusUnboundedOrInfeasible) return ENGINE_INFEASIBLE_OR_UNBOUNDED;
    if (model_status == kHighsModelStatusObjectiveBound || model_status == kHighsModelStatusObjectiveTarget)
        return ENGINE_OBJECTIVE_LIMIT;
    if (model_status == kHighsModelStatusTimeLimit) return ENGINE_TIME_LIMIT;
    if (model_status == kHighsModelStatusIterationLimit) return ENGINE_ITERATION_LIMIT;
    if (model_status == kHighsModelStatusSolutionLimit) return ENGINE_SOLUTION_LIMIT;
    if (model_status == kHighsModelStatusInterrupt) return ENGINE_STOPPED;
    if (model_status == memory_limit) return ENGINE_MEMORY;
    if (model_status == kHighsModelStatusUnknown) return ENGINE_UNKNOWN;
    return ENGINE_FAILED;
}

static int64_t info_int(void *h, const char *name)
{
    HighsInt value = 0;
    if (Highs_getIntInfoValue(h, name, &value) != kHighsStatusOk || value < 0) return 0;
    return value;
}

static void get_counts(highs_session *s, engine_answer *a)
{
    a->simplex_iterations = info_int(s->highs, "simplex_iteration_count");
    a->ipm_iterations = info_int(s->highs, "ipm_iteration_count");
    a->crossover_iterations = info_int(s->highs, "crossover_iteration_count");
    a->pdlp_iterations = info_int(s->highs, "pdlp_iteration_count");
    if (!s->is_mip) return;
    int64_t nodes = 0;
    if (Highs_getInt64InfoValue(s->highs, "mip_node_count", &nodes) == kHighsStatusOk && nodes > 0) a->nodes = nodes;
    double bound = 0.0;
    if (Highs_getDoubleInfoValue(s->highs, "mip_dual_bound", &bound) == kHighsStatusOk && std::isfinite(bound)) {
        a->best_bound = bound;
        a->has_bound = true;
    }
    /* HiGHS tells limits of nodes, leaves and nodes without progress as a limit of solutions. */
    HighsInt max_nodes = 0, max_solutions = 0;
    if (a->status != ENGINE_SOLUTION_LIMIT ||
        Highs_getIntOptionValue(s->highs, "mip_max_nodes", &max_nodes) != kHighsStatusOk ||
        Highs_getIntOptionValue(s->highs, "mip_max_improving_sols", &max_solutions) != kHighsStatusOk)
        return;
    if (a->nodes >= max_nodes || max_solutions == INT32_MAX) a->status = ENGINE_NODE_LIMIT;
}

static int32_t key_of(HighsInt status, double lower, double upper)
{
    if (status == kHighsBasisStatusBasic) return ZLR_SK_BASIC;
    if (status == kHighsBasisStatusZero) return ZLR_SK_SUPBAS;
    if (lower == upper) return ZLR_SK_FIXED;
    if (status == kHighsBasisStatusLower) return ZLR_SK_LOWER;
    if (status == kHighsBasisStatusUpper) return ZLR_SK_UPPER;
    if (std::isfinite(lower)) return ZLR_SK_LOWER;
    return std::isfinite(upper) ? ZLR_SK_UPPER : ZLR_SK_SUPBAS;
}

static void get_basis(highs_session *s, engine_answer *a)
{
    const model *m = s->problem.get();
    if (info_int(s->highs, "basis_validity") != kHighsBasisValidityValid) return;
    std::vector<HighsInt> col(static_cast<size_t>(m->num_var)), row(static_cast<size_t>(m->num_con));
    if (Highs_getBasis(s->highs, col.data(), row.data()) != kHighsStatusOk) return;
    a->col_key.resize(col.size());
    a->row_key.resize(row.size());
    for (size_t j = 0; j < col.size(); j++) a->col_key[j] = key_of(col[j], m->var_lower[j], m->var_upper[j]);
    for (size_t i = 0; i < row.size(); i++) a->row_key[i] = key_of(row[i], m->con_lower[i], m->con_upper[i]);
}

/* Vectors are taken only where HiGHS says that it has them: otherwise its arrays are zeros that look like a point. */
static void get_vectors(highs_session *s, engine_answer *a)
{
    const model *m = s->problem.get();
    const auto n = static_cast<size_t>(m->num_var);
    const auto k = static_cast<size_t>(m->num_con);
    std::vector<double> activity(k);

    const bool has_primal = info_int(s->highs, "primal_solution_status") != kHighsSolutionStatusNone;
    const bool has_dual = !s->is_mip && info_int(s->highs, "dual_solution_status") != kHighsSolutionStatusNone;
    if (!has_primal && !has_dual) return;
    a->x.resize(n);
    a->reduced.resize(n);
    a->y.resize(k);
    (void)Highs_getSolution(s->highs, a->x.data(), a->reduced.data(), activity.data(), a->y.data());
    if (!has_primal) a->x.clear();
    if (!has_dual) {
        a->y.clear();
        a->reduced.clear();
    }
}

void highs_get_answer(highs_session *s, engine_answer *answer)
{
    answer->status = status_of(Highs_getModelStatus(s->highs));
    if (answer->status == ENGINE_FAILED || answer->status == ENGINE_UNKNOWN) answer->message = s->last_error;
    get_counts(s, answer);
    const bool is_ipm = s->job->method == METHOD_INTPNT || s->job->method == METHOD_HIPO;
    if (answer->status == ENGINE_ITERATION_LIMIT && is_ipm && !s->has_ipm_limit) {
        answer->status = ENGINE_UNKNOWN;
        answer->message = "stalls";
    }
    get_vectors(s, answer);
    if (!s->is_mip) get_basis(s, answer);
}

void highs_get_rays(highs_session *s, engine_answer *answer)
{
    const model *m = s->problem.get();
    HighsInt has = 0;

    if (answer->status == ENGINE_PRIMAL_INFEASIBLE) {
        std::vector<double> ray(static_cast<size_t>(m->num_con));
        if (Highs_getDualRay(s->highs, &has, ray.data()) != kHighsStatusError && has != 0)
            answer->dual_ray = std::move(ray);
    }
    if (answer->status == ENGINE_DUAL_INFEASIBLE) {
        std::vector<double> ray(static_cast<size_t>(m->num_var));
        if (Highs_getPrimalRay(s->highs, &has, ray.data()) != kHighsStatusError && has != 0)
            answer->primal_ray = std::move(ray);
    }
}
