/* answer.h - an engine's answer as a solution of the task, completed, checked and given its status. */
#pragma once

#include "solver/engines/check.h"
#include "solver/engines/engine.h"

/* A continuous solution of `kind` (interior or basic). Undefined where the answer has no usable point and no duals. */
check_result answer_to_solution(const model *m, const check_tolerances *tol, const engine_answer *answer, int32_t kind,
                                solution *sol);

/* Status keys by where values stand: for solutions without a basis. */
void answer_set_keys(const model *m, const check_tolerances *tol, solution *sol);

/* An integer solution at x: integer columns that are within the tolerance of an integer are put there when the rows can
 * bear it. *clean tells whether all of them are exact and the rows far within their tolerances. The status is set without
 * a bound. */
check_result answer_to_incumbent(const model *m, const check_tolerances *tol, const std::vector<double> &x,
                                 solution *sol, bool *clean);

/* What is left to start from of a solution that the task has; empty parts where it has none. */
engine_start answer_to_start(const solution *basic, const solution *interior, const solution *integer);

/* What is wrong with a checked point, for the log: "row 12 is off by 3.1e-02". */
std::string answer_complaint(const model *m, const check_result *found, const solution *sol);
