/* quad_parts.h - the connected parts of a quadratic form, and what a part says about signs.
 *
 * Two columns are connected where they have a term together. Parts have no term in common, so a form is positive
 * semidefinite when each part is, and it is factored part by part: a diagonal form costs no more than a pass over it.
 * Other parts can cost as much as a full matrix of their size: what takes an effort (effort.h) may give it up, which
 * whoever gave it has to look for. Without one everything is done. */
#pragma once

#include "solver/conic/effort.h"
#include "solver/model/model.h"

#include <string>
#include <vector>

/* Part p has the columns column[first[p]] .. column[first[p + 1] - 1], ascending, and the terms term[first_term[p]] ..,
 * whose i and j count within these columns. Terms that are 0 are left out. Parts come in the order of their first
 * columns. */
struct quad_parts {
    std::vector<int32_t> column;
    std::vector<int32_t> first = {0};
    std::vector<quad_term> term;
    std::vector<int64_t> first_term = {0};
    bool is_finite = true; /* whether every term is; nothing else is filled in where one is not */
    double tolerance;      /* what its parts are judged with: see quad_sign_tolerance */
};

/* One part, as a view. */
struct quad_part {
    const int32_t *column;
    int32_t num;
    const quad_term *term;
    int64_t num_terms;
    double tolerance;
};

/* What may be missing to a sign; see there. */
inline constexpr double quad_sign_tolerance = 1e-8;

quad_parts quad_split(const std::vector<quad_term> &terms, work_effort *effort = nullptr,
                      double tolerance = quad_sign_tolerance);
inline int32_t quad_num_parts(const quad_parts *parts) { return static_cast<int32_t>(parts->first.size()) - 1; }
quad_part quad_part_at(const quad_parts *parts, int32_t p);

/* ---- signs
 *
 * `sign` 1 asks for x'Qx >= 0 everywhere, -1 for x'Qx <= 0. With the columns scaled so that the diagonal is 1, which no
 * choice of units changes, the least eigenvalue may be as low as -tolerance, by default quad_sign_tolerance. The coefficients of a form that
 * is semidefinite in exact numbers come rounded: with 9 digits the eigenvalues of the scaled matrix move by some 1e-9.
 * And what passes is wrong by less than engines and checks can see, whose tolerances start at 1e-8. */

/* What stands on a row of Q whose diagonal entry is not above 0 is a remainder of a sum that came out as 0, and taken
 * for 0, where it is at most so many times the largest diagonal entry of the part. */
inline constexpr double quad_remainder = 1e-14;

/* A point where a form has the wrong sign: values of the part's columns, the largest of size 1; all others are 0. */
struct quad_witness {
    std::vector<int32_t> column;
    std::vector<double> x;
    double value = 0.0; /* x'Qx/2 */
};

/* Whether a part has the sign. Where not, and `witness` is not null, it gets a point that shows it. */
bool quad_part_has_sign(const quad_part *part, double sign, quad_witness *witness, work_effort *effort = nullptr);

/* ---- factors */

/* Rows of linear forms: row k is the sum of value[e] x[column[e]] over e = start[k] .. start[k + 1] - 1. */
struct linear_forms {
    std::vector<int64_t> start = {0};
    std::vector<int32_t> column;
    std::vector<double> value;
};
inline int64_t forms_num(const linear_forms *forms) { return static_cast<int64_t>(forms->start.size()) - 1; }

/* Appends F with F'F = sign * Q for a part that has the sign, with as many rows as Q has rank. Exact up to rounding;
 * large sparse parts that are singular, up to 1e-12 of the diagonal, more only where Q itself is that far from
 * semidefinite. */
void quad_part_factor(const quad_part *part, double sign, linear_forms *forms, work_effort *effort = nullptr);
