/* aside.h - problems that are made from the task's to settle what an engine has left open. Each is feasible and bounded
 * for linear data, so that any engine answers it. Names are left out. */
#pragma once

#include "solver/engines/check.h"

#include <memory>
#include <vector>

/* Least sum of violations of the rows, columns within their bounds. Above 0: the rows cannot be met, and the row
 * multipliers are the proof. Integrality is left out. */
std::shared_ptr<model> aside_phase_one(const model *m);

/* The same for a problem with cones. Bounds of their columns are rows here, behind the task's own, so that there is always
 * a point inside of the cones: their multipliers are found even where the task has no such point. */
std::shared_ptr<model> aside_conic_phase_one(const model *m);

/* Best improvement of the objective along a direction of size at most 1 that never leaves the feasible set: the
 * directions of unboundedness. Linear but for cones, which are kept; integrality is left out. */
std::shared_ptr<model> aside_recession(const model *m);

/* The task without its objective, integrality kept: whether there is any feasible point. */
std::shared_ptr<model> aside_feasibility(const model *m);

/* The same for a problem with cones, as a copy with everything else that it has. */
std::shared_ptr<model> aside_conic_feasibility(const model *m);

/* The task with its integer columns fixed at the nearest integers of x, continuous. */
std::shared_ptr<model> aside_fixed(const model *m, const std::vector<double> &x);

/* Problems that need no engine: no entries in the matrix, or bounds that contradict each other. Returns whether it is
 * one, with `sol` solved: optimal, or infeasible or unbounded with its certificate. With `integers` the solution is an
 * integer one. Bounds that cross by no more than `crossed_tol` count as equal. */
bool aside_trivial(const model *m, const check_tolerances *tol, double crossed_tol, bool integers, solution *sol);
