/* polish.h - from an answer of a quadratic problem that is near the optimum to one that is at it.
 *
 * An interior-point answer tells which bounds and rows hold at the optimum; with these as equations the optimality
 * conditions are a linear system, whose solution has residuals of rounding only. Where the guess is wrong the signs and
 * bounds that it breaks correct it, a few times over (a primal-dual active-set method: Hintermueller, Ito and Kunisch, "The
 * primal-dual active set strategy as a semismooth Newton method", 2002). */
#pragma once

#include "solver/engines/check.h"

#include <functional>

struct polish_limits {
    int32_t max_rounds = 6;      /* corrections of one guess */
    int32_t num_guesses = 7;     /* at most 7 */
    double max_operations = 2e8; /* of a factorisation: 0.1 to 0.2 s */
};

/* Makes `sol`, a checked interior solution of a problem with a convex quadratic objective and linear rows, better where that
 * comes out of it, with *found. Takes some tenths of a second at most between two questions to `is_stopped`; where the
 * factors would take longer nothing is done. */
void polish_solution(const model *m, const check_tolerances *tol, const polish_limits *limits,
                     const std::function<bool()> &is_stopped, solution *sol, check_result *found);
