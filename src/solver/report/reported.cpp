/* reported.cpp - see reported.h. */
#include "solver/report/reported.h"

int32_t reported_kind(const ZLR_task *task)
{
    static const int32_t integer[] = {ZLR_SOL_ITG, ZLR_SOL_BAS, ZLR_SOL_ITR};
    static const int32_t continuous[] = {ZLR_SOL_BAS, ZLR_SOL_ITR, ZLR_SOL_ITG};
    for (const int32_t kind : model_num_int(task->problem.get()) > 0 ? integer : continuous)
        if (task->sol[kind].defined) return kind;
    return -1;
}

bool reported_is_primal_ray(const solution *sol)
{
    return sol->solsta == ZLR_SOLSTA_DUAL_INFEAS_CER || sol->solsta == ZLR_SOLSTA_NEAR_DUAL_INFEAS_CER;
}

bool reported_is_dual_ray(const solution *sol)
{
    return sol->solsta == ZLR_SOLSTA_PRIM_INFEAS_CER || sol->solsta == ZLR_SOLSTA_NEAR_PRIM_INFEAS_CER;
}

bool reported_has_primal_objective(const solution *sol)
{
    return sol->has_primal && !reported_is_primal_ray(sol) && !reported_is_dual_ray(sol);
}

bool reported_has_dual_objective(const solution *sol, int32_t kind)
{
    return kind != ZLR_SOL_ITG && sol->has_dual && !reported_is_primal_ray(sol) && !reported_is_dual_ray(sol);
}
