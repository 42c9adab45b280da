/* polish.h - from an answer of a quadratic problem that is near the optimum to one that is at it.
 *
 * An interior-point answer tells which bounds and rows hold at the optimum; with these as equations the optimality
 * conditions are a linear system, whose solution has residuals of rounding only. Where the guess is wrong the signs and
 * bounds that it breaks correct it, a few times over (a primal-dual active-set method: Hintermueller, Ito and Kunisch, "The
 * primal-dual active set strategy as a semismooth Newton method", 2002). */
#pragma once

#include "solver/conic/effort.h"
#include "solver/engines/check.h"

/* Makes `sol`, a checked interior solution of a problem with a convex quadratic objective and linear rows, better where that
 * comes out of it, with *found. Takes some tenths of a second at most between two looks at the effort; where the factors
 * would take longer nothing is done. Where the effort is given up, what was found so far stands. */
void polish_solution(const model *m, const check_tolerances *tol, work_effort *effort, solution *sol,
                     check_result *found);
