/* relax.h - the point of least violation by the engine's own facility, taken where it is shown to be one. */
#pragma once

#include "solver/model/task.h"

#include <vector>

/* What a change of 1 of each side costs; negative: there is no such side, or it may not give way. */
struct side_weights {
    std::vector<double> row_lower, row_upper, col_lower, col_upper;
};

enum relax_end {
    RELAX_FOUND,
    RELAX_NONE, /* the engine has no such facility, does not serve these weights, or has shown nothing */
    RELAX_STOPPED
};

/* Engines relax both sides of a row by one weight, so that rows with two different ones are not served, and neither are
 * integer and quadratic tasks, whose answers carry no proof. The rows' multipliers bound the least violation from below:
 * the point is taken where its own violation, by the task's data, comes down to that bound. */
relax_end relax_by_engine(ZLR_task *task, const side_weights *weights, double time_limit_s, std::vector<double> *x);
