/* refine.h - an answer of a quadratic problem that is near the optimum, seen through a magnifying glass.
 *
 * What is left to go from an answer (x, y) is a quadratic problem of its own, in the step d = x_scale (x' - x): its costs
 * are the reduced costs at (x, y) times y_scale, its sides the distances to the sides, and its multipliers are
 * y_scale (y' - y). Magnified so, it is of ordinary size, and an engine solves it to as many digits as it did the first:
 * each round adds digits (iterative refinement, as Gleixner, Steffy and Wolter, "Iterative refinement for linear
 * programming", 2016, do it for linear problems). On degenerate problems these digits tell what holds at the optimum. */
#pragma once

#include "solver/engines/check.h"
#include "solver/engines/engine.h"

#include <memory>

struct refinement {
    std::shared_ptr<model> problem; /* a minimisation: rows and columns as the task's, then columns for rows' slacks */
    std::vector<double> x, y;       /* what the step is from; y as for a minimisation */
    double x_scale = 1.0, y_scale = 1.0;
};

/* `sol` is complete, with point and duals, of a problem with linear rows and no cones. */
refinement refine_problem(const model *m, const solution *sol, double x_scale, double y_scale);

/* Makes an answer of that problem one of the task. False: it has nothing to give. */
bool refine_take(const model *m, const refinement *r, engine_answer *answer);
