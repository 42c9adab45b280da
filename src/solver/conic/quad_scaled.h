/* quad_scaled.h - a part of a quadratic form in columns scaled so that its diagonal is 1. */
#pragma once

#include "solver/conic/quad_parts.h"

/* A part without the columns that count as 0 (see quad_remainder), in the same order. What is left may be in several
 * pieces, which does no harm. */
struct reduced_part {
    std::vector<int32_t> column;
    std::vector<quad_term> term;
    double tolerance; /* of the part that it is made of */
};

/* Whether a column was left out. */
bool quad_leave_remainders(const quad_part *part, double sign, reduced_part *out);
quad_part quad_view(const reduced_part *part);

/* sign * Q = S C S with S the diagonal matrix of `scale` and C with diagonal 1. */
struct quad_scaled {
    std::vector<double> scale;
    std::vector<quad_term> term; /* of C, off the diagonal */
    double tolerance;            /* of the part */
};

std::vector<double> quad_diagonal(const quad_part *part, double sign);

/* For a diagonal above 0. */
quad_scaled quad_scale(const quad_part *part, double sign, const std::vector<double> &diagonal);

/* Parts up to this size, and those with at least a tenth of all entries, are factored as full matrices. */
inline constexpr int32_t quad_dense_size = 300;
bool quad_is_dense(const quad_part *part);
