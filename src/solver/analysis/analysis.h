/* analysis.h - what a user asks when a model misbehaves: reports on problem and solution, sensitivity, the cause of an
 * infeasibility, the smallest repair. Each entry backs the entry of zelor.h that is named beside it, returns its code and
 * may throw std::bad_alloc. */
#pragma once

#include "solver/model/task.h"

/* problem_analysis.cpp: ZLR_analyzeproblem. */
[[nodiscard]] int32_t problem_analysis_print(ZLR_task *task, int32_t stream);

/* solution_analysis.cpp: ZLR_analyzesolution. */
[[nodiscard]] int32_t solution_analysis_print(ZLR_task *task, int32_t stream, int32_t kind);

/* infeasible.cpp: ZLR_getinfeasiblesubproblem. */
[[nodiscard]] int32_t infeasible_subproblem(ZLR_task *task, int32_t kind, ZLR_task **subproblem);

/* sensitivity.cpp: ZLR_sensitivityreport, ZLR_primalsensitivity, ZLR_dualsensitivity. */
struct sensitivity_arrays {
    double *left_price, *right_price, *left_range, *right_range; /* null: not wanted */
};

struct sensitivity_sides {
    int32_t num;
    const int32_t *sub, *mark; /* 0 lower, 1 upper */
    sensitivity_arrays out;
};

[[nodiscard]] int32_t sensitivity_report(ZLR_task *task, int32_t stream);
[[nodiscard]] int32_t primal_sensitivity(ZLR_task *task, const sensitivity_sides *rows,
                                         const sensitivity_sides *columns);
[[nodiscard]] int32_t dual_sensitivity(ZLR_task *task, int32_t num, const int32_t *sub,
                                       const sensitivity_arrays *arrays);

/* repair.cpp: ZLR_primalrepair. */
[[nodiscard]] int32_t primal_repair(ZLR_task *task, const double *wlc, const double *wuc, const double *wlx,
                                    const double *wux);
