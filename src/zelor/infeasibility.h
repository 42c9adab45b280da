/* infeasibility.h - what is left behind for problems without a feasible solution: infeasible subproblems, and the stage
 * that announces a repair problem. */
#pragma once

#include "zelor.h"

/* Writes, for each kind of solution that carries a certificate, its infeasible subproblem to a file named after
 * `file_name`. Absent or empty: nothing. Returns the first failure. */
[[nodiscard]] int32_t write_infeasible_subproblems(ZLR_task *task, const char *file_name);

/* The name of one such file: the tag stands in front of the first extension of `base`, so that all extensions stay at
 * the end. Memory of the C library, to be freed; null when there is none. `tag` has at most 7 characters. */
[[nodiscard]] char *infeasible_file_name(const char *base, const char *tag);

/* The stage of "-infrepo". Returns 0, 1051, or a failure of asking for the sizes. */
[[nodiscard]] int32_t feasibility_repair_dump(ZLR_task *task, const char *repair_file);
