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

bool reported_has_primal_objective(const solution *sol) { return sol->has_primal && !solution_is_certificate(sol); }

bool reported_has_dual_objective(const solution *sol, int32_t kind)
{
    return kind != ZLR_SOL_ITG && sol->has_dual && !solution_is_certificate(sol);
}
