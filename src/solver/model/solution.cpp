/* solution.cpp - see solution.h. */
#include "solver/model/solution.h"

#include <cstddef>

void solution_reset(solution *sol, int32_t num_con, int32_t num_var, int32_t num_cones)
{
    const auto rows = static_cast<size_t>(num_con);
    const auto cols = static_cast<size_t>(num_var);

    *sol = solution{};
    sol->skc.assign(rows, ZLR_SK_UNDEF);
    sol->skx.assign(cols, ZLR_SK_UNDEF);
    sol->skn.assign(static_cast<size_t>(num_cones), ZLR_SK_UNDEF);
    if (num_cones > 0) sol->snx.assign(cols, 0.0);
    for (std::vector<double> *v : {&sol->xc, &sol->y, &sol->slc, &sol->suc}) v->assign(rows, 0.0);
    for (std::vector<double> *v : {&sol->xx, &sol->slx, &sol->sux}) v->assign(cols, 0.0);
}

void solution_clear(solution *sol) { *sol = solution{}; }
