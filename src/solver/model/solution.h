/* solution.h - a solution of one kind, and what the check of it on the task's own data found. */
#pragma once

#include "zelor.h"

#include <cstdint>
#include <limits>
#include <vector>

/* Largest violations, absolute, on the unscaled data of the task. NaN: not looked at (no duals, no integers). The
 * index names the worst row or column; -1 where there is none. */
struct solution_check {
    double row = std::numeric_limits<double>::quiet_NaN();
    double bound = std::numeric_limits<double>::quiet_NaN();
    double integrality = std::numeric_limits<double>::quiet_NaN();
    double cone = std::numeric_limits<double>::quiet_NaN();
    double dual = std::numeric_limits<double>::quiet_NaN(); /* stationarity and dual signs */
    double complementarity = std::numeric_limits<double>::quiet_NaN();
    int32_t worst_row = -1;
    int32_t worst_bound = -1;
    int32_t worst_int = -1;
    int32_t worst_cone = -1;
    int32_t worst_dual = -1; /* column */
};

struct solution {
    bool defined = false;
    int32_t prosta = ZLR_PRO_UNKNOWN;
    int32_t solsta = ZLR_SOLSTA_UNKNOWN;
    bool is_local = false; /* an optimum of its surroundings: nothing is said of the whole problem */
    double primal_obj = 0.0;
    double dual_obj = 0.0; /* integer kind: the bound */

    /* Each of the row or column arrays is of full length when the solution is defined. For a certificate xx and xc are
     * the ray (status 6), or y and the bound duals are (status 5), scaled so that the largest entry is 1. */
    std::vector<int32_t> skc, skx, skn;
    std::vector<double> xc, xx, y, slc, suc, slx, sux;
    std::vector<double> snx; /* cone duals by column; empty where there are no cones */

    /* What is there to start from: a given start may hold only one of them. */
    bool has_keys = false, has_primal = false, has_dual = false;

    solution_check check;
};

/* Makes every array of full length, zero, keys undefined, and the solution undefined. */
void solution_reset(solution *sol, int32_t num_con, int32_t num_var, int32_t num_cones = 0);

/* Undefined and empty: releases the arrays. */
void solution_clear(solution *sol);

/* Certificates, full or near: whether the column values are a direction in which the objective improves without end,
 * whether the row duals prove that no point is feasible. Their arrays hold a ray, not a point. */
inline bool solution_is_primal_ray(const solution *sol)
{
    return sol->solsta == ZLR_SOLSTA_DUAL_INFEAS_CER || sol->solsta == ZLR_SOLSTA_NEAR_DUAL_INFEAS_CER;
}
inline bool solution_is_dual_ray(const solution *sol)
{
    return sol->solsta == ZLR_SOLSTA_PRIM_INFEAS_CER || sol->solsta == ZLR_SOLSTA_NEAR_PRIM_INFEAS_CER;
}
inline bool solution_is_certificate(const solution *sol)
{
    return solution_is_primal_ray(sol) || solution_is_dual_ray(sol);
}
