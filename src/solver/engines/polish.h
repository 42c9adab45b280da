/* polish.h - from an answer of a quadratic problem that is near the optimum to one that is at it.
 *
 * An interior-point answer tells which bounds and rows hold at the optimum; with these as equations the optimality
 * conditions are a linear system, whose solution has residuals of rounding only. Where the guess is wrong the signs and
 * bounds that it breaks correct it, a few times over (a primal-dual active-set method: Hintermueller, Ito and Kunisch, "The
 * primal-dual active set strategy as a semismooth Newton method", 2002). A gap between the objectives of the size of
 * rounding in them is taken out in the end (see gap.h), of the engine's own answer too. */
#pragma once

#include "solver/conic/effort.h"
#include "solver/engines/check.h"

#include <algorithm>

/* How an answer stands to what is allowed: at most 1 passes. */
inline double polish_ratio(const check_result *found) { return std::max({found->primal, found->dual, found->gap}); }

/* Whether the first of two checked solutions is the better one: by that ratio while one does not pass, else by what is left
 * as it is. */
bool polish_is_better(const check_result *a, const solution *a_sol, const check_result *b, const solution *b_sol);

struct polish_limits {
    int32_t max_rounds = 6;      /* corrections of one guess */
    int32_t num_guesses = 7;     /* at most 7 */
    double max_operations = 2e8; /* of a factorisation: 0.1 to 0.2 s */
};

/* Makes `sol`, a checked interior solution of a problem with a convex quadratic objective and linear rows, better where that
 * comes out of it, with *found. Takes some tenths of a second at most between two looks at the effort; where the factors
 * would take longer nothing is done. Where the effort is given up, what was found so far stands. */
void polish_solution(const model *m, const check_tolerances *tol, const polish_limits *limits, work_effort *effort,
                     solution *sol, check_result *found);

/* The same for a problem with quadratic rows and no cones: see polish_rows.cpp. */
void polish_quadratic_rows(const model *m, const check_tolerances *tol, const polish_limits *limits,
                           work_effort *effort, solution *sol, check_result *found);
