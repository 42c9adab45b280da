/* magnitudes.h - how the sizes of a problem's numbers are spread: counts by power of ten. */
#pragma once

#include "solver/model/model.h"

#include <array>
#include <cstdint>

/* Doubles have sizes from 4.9e-324 to 1.8e308. */
inline constexpr int32_t decade_least = -324, decade_most = 308;

struct magnitudes {
    std::array<int64_t, decade_most - decade_least + 1> count =
        {}; /* at d - decade_least: sizes from 10^d up to 10^(d+1) */
    int64_t total = 0;
    double least = model_inf, most = 0.0; /* sizes */
    int32_t first = 0, last = -1;         /* decades that hold anything, once there is something */
};

/* Counts a value; zeros and infinities do not count. */
void magnitudes_add(magnitudes *found, double value);

inline int64_t magnitudes_of(const magnitudes *found, int32_t decade)
{
    return found->count[static_cast<size_t>(decade - decade_least)];
}

/* The decade of a finite value that is not 0. */
int32_t magnitude_decade(double value);

/* The sets of numbers that matter for a solver's accuracy. A fixed bound or an equality's right-hand side, which stands
 * on both sides, counts once. */
struct problem_magnitudes {
    magnitudes matrix, cost, bounds, sides, quadratic;
};

problem_magnitudes magnitudes_of_problem(const model *m);
