/* local.h - problems of general nonlinear functions, and quadratic ones that are not convex: a local solution.
 *
 * The engine runs on the calling thread, since it evaluates functions of the program, and is asked to stop at every
 * evaluation and iteration. What ends badly is tried again from elsewhere and with other settings, each attempt told in the
 * log; every point that was evaluated counts, and the best one stays when a stop or a limit ends it all. */
#pragma once

#include "solver/engines/optimize.h"

/* Solves o->problem, whatever its convexity. The solution is an interior one, marked as local unless all functions are
 * linear. Returns the code of the optimisation: a limit or stop; ZLR_RES_TRM_LOCAL_INFEASIBLE, ZLR_RES_TRM_DIVERGING,
 * ZLR_RES_TRM_STALL, ZLR_RES_ERR_NL_EVALUATION, ZLR_RES_ERR_NO_ENGINE, ZLR_RES_ERR_ENGINE. */
[[nodiscard]] int32_t local_optimize(optimization *o);
