/* filter_conic.h - whether a problem with cones or quadratic rows has a feasible point. */
#pragma once

#include "solver/engines/check.h"
#include "solver/engines/engine.h"

enum verdict { IS_INFEASIBLE, IS_FEASIBLE, NOT_SETTLED };

/* Problems whose infeasible parts the conic engine is asked about. Quadratic objectives say nothing about feasibility. */
bool filter_is_conic(const model *m);

/* Asks the engine of a job, on its thread, about another problem than the job's. Infeasible: `proof` is one that holds for
 * `m`; feasible: there is a point that passes the check. Integrality is left out. */
verdict filter_ask_conic(const engine_adapter *adapter, const std::shared_ptr<engine_job> &job,
                         const std::shared_ptr<const model> &m, const check_tolerances *tol, double time_limit_s,
                         solution *proof);
