/* gradient.h - what the quadratic parts, functions and cones of a problem add to the check of a solution. See check.h.
 *
 * With the multipliers y the gradient of the Lagrangian is  d = c + Q0 x - sum of y_i (a_i + Qi x); at an optimum
 * d = slx - sux + snx, where snx is in the dual cone of each cone (its negative in a maximisation) and 0 elsewhere. */
#pragma once

#include "solver/engines/check.h"

/* The reduced cost d of every column, with what is allowed for its residual, where `tol` is given. Quadratic parts are taken at sol->xx. */
std::vector<reduced_cost> gradient_reduced_costs(const model *m, const check_tolerances *tol, const solution *sol);

/* Sets sol->snx so that d = slx - sux + snx holds on the cones' columns: all of d, but for columns with bounds what is left
 * of it beside `bound_dual`, slx - sux as an engine gives it, which may be empty. */
void gradient_split_cones(const model *m, const std::vector<reduced_cost> &d, const std::vector<double> &bound_dual,
                          solution *sol);

/* Adds to the dual objective what quadratic parts give to it: half of the sum of y_i x'Qix, less half of x'Q0x. */
void gradient_add_dual_share(const model *m, const solution *sol, exact_sum *sum);

/* The residuals of a cone: how far its members are outside, how far their duals are outside the dual cone, and the product
 * of both, with what is allowed for each. `gap_allowed` is what is allowed for a product. */
struct cone_residuals {
    double primal = 0.0, primal_allowed = 1.0;
    double dual = 0.0, dual_allowed = 1.0;
    double product = 0.0;
};

cone_residuals gradient_check_cone(const model *m, const check_tolerances *tol, const solution *sol, size_t cone);

/* False where a function has no gradient at the point. */
bool gradient_exists(const model *m, const solution *sol);

/* Whether the reduced costs depend on the point. */
inline bool gradient_needs_point(const model *m)
{
    return !m->qobj.empty() || !m->qcon.empty() || m->functions != nullptr;
}
