/* disguise.h - rows that are cones, though their quadratic part is not convex: one negative square, or one negative
 * product, of columns that are at least 0 by their bounds.
 *
 *   x^2 + y^2 + 3 <= t^2,  t >= 0         (t; x, y, sqrt 3) in a quadratic cone
 *   x^2 <= 2 u v,          u, v >= 0      (u, v; x) in a rotated one
 *
 * In place of x^2 + y^2 any positive semidefinite form without t, u and v may stand. The row has no linear part and one
 * side; where that is a lower one, all signs are the other way round. */
#pragma once

#include "solver/conic/quad_parts.h"

#include <string>
#include <vector>

struct disguised_cone {
    int32_t row = -1;
    int32_t type = ZLR_CT_QUAD;
    int32_t head[2] = {-1, -1}; /* columns; a quadratic cone has one */
    linear_forms tail;          /* the other members, scaled so that the heads need no factor */
    double constant = 0.0;      /* the last member, fixed; 0: there is none */
};

/* Whether a row, whose quadratic part has not the sign that its side needs, is a cone. `has_linear`: whether it has a
 * linear part. Where one fact alone is in the way, `*near_miss` says which. Either output may be null. */
bool disguise_of_row(const model *m, const quad_row *q, bool has_linear, disguised_cone *cone, std::string *near_miss,
                     work_effort *effort = nullptr, double tolerance = quad_sign_tolerance);

/* The rows of a model that are such cones, ascending. */
std::vector<disguised_cone> disguise_list(const model *m);

/* Which rows have a linear part, by row. */
std::vector<uint8_t> disguise_linear_rows(const model *m);
