/* local_watch.h - one local solve as the library watches it: the engine's calls, the points that they go through, stops. */
#pragma once

#include "solver/engines/optimize.h"
#include "solver/nonlinear/smooth_form.h"

/* Where a function or derivative had no value, and the code of the program's call. */
struct local_failure {
    int64_t num = 0; /* evaluations without a value */
    int32_t code = ZLR_RES_OK;
    const char *what = ""; /* "gradient" ...: what was asked for */
    std::vector<double> x;
};

/* The best point that was evaluated: by its violation, as a multiple of what is allowed, and among those of at most 1 by
 * its objective (of the minimisation). */
struct local_best {
    std::vector<double> x;
    double violation = model_inf, objective = model_inf;
};

struct local_watch {
    optimization *o = nullptr;
    smooth_form form;
    local_best best;
    local_failure failure;
    int64_t iterations = 0; /* of earlier attempts */
    smooth_answer last;     /* of the last attempt */
    double last_poll_s = 0.0;
    bool is_unbounded = false; /* a feasible point has an objective beyond all sizes */

    /* What was found at the point at hand so far. */
    bool has_objective = false, has_violation = false;
    double objective = 0.0, violation = 0.0;
};

/* The calls that an engine gets; their handle is `watch`. */
smooth_calls local_calls(local_watch *watch);
