/* evaluated_model.h - a nonlinear stub of the tests' own, and what the callbacks must answer for it. */
#pragma once

#include "ampl_run.h"

#include <array>
#include <map>

/* Three columns, the first two nonlinear; rows 0 and 1 nonlinear, row 2 linear:
 *   f  = log(x0) + log(x1) + x0 + 10 + 7 x2      g0 = exp(x0 x1 / 4) + 3 x2      g1 = x0^3 + x0 sin(x1) + 2 x1
 * Values and derivatives as written out by hand. */
struct evaluated_model {
    double f;                                 /* without 7 x2, which is in the task */
    std::array<double, 2> df;                 /* by column */
    std::array<double, 2> g;                  /* by row */
    std::array<std::array<double, 3>, 2> dg;  /* by row, column */
    std::array<double, 3> ddf;                /* lower triangle: 00, 10, 11 */
    std::array<std::array<double, 3>, 2> ddg; /* by row */
};

using point = std::array<double, 3>;

nl_model evaluated_stub();
evaluated_model evaluated_at(const point &x);

/* An answer of a callback: its code and the named arrays; a name that comes again has the number of its turn behind it
 * ("jac", "jac2"). A place that was not written is NaN. */
struct callback_answer {
    int code = -1;
    std::map<std::string, std::vector<double>> arrays;
};

/* Answers of the "evaluate" and "later" lines of a run, in order. */
std::vector<callback_answer> answers_of(const recorded_run &run);

/* A line of the script, and what it says of the point. */
std::string values_line(const point &x, const std::string &words);

/* Whether both have the same length, and each pair is the same up to rounding; places that were not written are equal to
 * each other. */
bool are_close(const std::vector<double> &a, const std::vector<double> &b);
