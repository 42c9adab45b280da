/* gap.h - objectives that agree to the last digit.
 *
 * Residuals of a point and its multipliers that are of rounding only still leave a gap between the objectives, for each is
 * weighed with numbers as large as the problem has: 1e-12 a row with sides of 1e6 and a thousand rows make 1e-3. A change of
 * the multipliers that is far below what is allowed for their residuals takes it out. */
#pragma once

#include "solver/engines/check.h"

/* Makes the dual objective of a checked solution of a problem with linear rows that of its point, by the least change of
 * the multipliers; sol is complete and checked, and is so again. Kept where no residual grows beyond `allowed` and the gap
 * gets smaller. */
void gap_close(const model *m, const check_tolerances *tol, double allowed, solution *sol, check_result *found);
