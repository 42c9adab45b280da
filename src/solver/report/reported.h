/* reported.h - which of a task's solutions a report is about, and what of it may be shown as the problem's own. */
#pragma once

#include "solver/model/task.h"

/* The kind that a run of this problem leaves, as far as it is there; -1: none. */
int32_t reported_kind(const ZLR_task *task);

/* The objective of a ray is no objective of the problem. */
bool reported_has_primal_objective(const solution *sol);
bool reported_has_dual_objective(const solution *sol, int32_t kind);
