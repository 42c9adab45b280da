/* form.h - the library's problem in Clarabel's form, and what Clarabel finds in the library's terms.
 *
 * Clarabel minimises x'Px/2 + q'x subject to Ax + s = b with s in a product of cones. Its rows are, in this order:
 *
 *   zero cone        equations and fixed columns
 *   nonnegative      upper sides as they are, lower sides negated: of rows, then of columns
 *   second-order     one for each of our cones; the heads u, v of a rotated one as (u + v)/sqrt 2 and (u - v)/sqrt 2,
 *                    an orthogonal and symmetric map, so that duals come back by the same map
 *
 * A side that does not exist has no row. An equation counts as an upper side: its dual may have either sign. */
#pragma once

#include "solver/engines/clarabel/clarabel_shim.h"
#include "solver/engines/engine.h"

#include <vector>

struct clarabel_matrix {
    std::vector<int64_t> start = {0};
    std::vector<int64_t> row;
    std::vector<double> value;
};

/* Where the sides of rows, or the bounds of columns, are in Clarabel's rows; -1: nowhere. */
struct clarabel_places {
    std::vector<int64_t> lower, upper;
};

struct clarabel_form {
    double sign = 1.0; /* -1 for a maximisation, whose objective is negated */
    clarabel_matrix p, a;
    std::vector<double> q, b;
    std::vector<zlr_clarabel_cone> cones;
    clarabel_places con, var;
    std::vector<int64_t> cone_at; /* first row of each of our cones */
};

void clarabel_form_make(const model *m, clarabel_form *form);

/* Points into `form`. */
zlr_clarabel_problem clarabel_form_view(const clarabel_form *form);

/* y, reduced costs and duals of cones from Clarabel's duals, for the sense of the problem. */
void clarabel_form_duals(const model *m, const clarabel_form *form, const double *z, engine_answer *answer);
