/* certificate.h - proofs that a problem has no feasible point, or no finite optimum, checked on the task's data. Rows are
 * linear; the objective may be a convex quadratic one, and there may be cones.
 *
 * Status 5 (no feasible point): y, slc, suc, slx, sux, snx with A'y + slx - sux + snx = 0, snx in the dual cones (its
 * negative in a maximisation), every multiplier on a side that exists
 * and with the sign of its side, and lower'slc - upper'suc + lower'slx - upper'sux above 0 (below 0 in a maximisation):
 * adding up the sides with these weights gives a contradiction. dual_obj is that sum.
 * Status 6 (no finite optimum where there is a feasible point): xx, a direction that stays within rows and bounds from
 * anywhere, is in every cone, and improves the objective, whose quadratic part is flat along it; xc = A xx,
 * primal_obj = c'xx.
 * Both are scaled so that their largest entry is 1. */
#pragma once

#include "solver/engines/check.h"

/* Make `sol` the certificate that `ray` gives, of either sign, and set its statuses; near ones where it misses the
 * tolerances by the factor of a near answer. Return whether it is a full certificate. `sol` is complete, of the
 * model's size. `cone_dual`: an engine's snx with the ray, for columns that are in a cone and have bounds besides. */
bool certificate_from_dual_ray(const model *m, const check_tolerances *tol, const std::vector<double> &ray,
                               solution *sol, const std::vector<double> &cone_dual = {});
bool certificate_from_primal_ray(const model *m, const check_tolerances *tol, const std::vector<double> &ray,
                                 solution *sol);

/* The certificate of a single row or column whose lower bound lies above its upper one. */
void certificate_from_crossed_bounds(const model *m, bool is_row, int32_t index, solution *sol);

/* What the certificate in `sol` (by its status, either kind) proves, computed anew from its arrays. */
struct certificate_proof {
    double value = 0.0;       /* the contradiction or the improvement, at least 0 where it proves anything */
    double residual = 0.0;    /* largest multiplier on no side, or largest step out of a side */
    double ratio = model_inf; /* of the residual to what is allowed; at most 1 passes, infinite: no proof at all */
};

certificate_proof certificate_check(const model *m, const check_tolerances *tol, const solution *sol);
