/* convexity.h - whether a problem is convex, found by factoring its quadratic parts before any engine runs.
 *
 * A minimised objective and a row with an upper side need a positive semidefinite form, a maximised objective and a
 * row with a lower side a negative semidefinite one; within a tolerance whose default, quad_sign_tolerance
 * (quad_parts.h), is reasoned there. Rows without sides, and forms whose terms are all 0, may be anything. Rows that are cones in disguise
 * pass. */
#pragma once

#include "solver/conic/disguise.h"
#include "solver/model/model.h"
#include "solver/params/params.h"

#include <string>
#include <vector>

/* What counts as convex. */
struct convexity_rules {
    double tolerance = quad_sign_tolerance;
    bool disguised = true; /* whether cones in disguise pass */
};

/* By the parameters QP_CONVEXITY_TOL and QP_DISGUISED_CONES. */
inline convexity_rules convexity_rules_of(const param_set *params)
{
    return {param_dou(params, DPAR_QP_CONVEXITY_TOL), param_int(params, IPAR_QP_DISGUISED_CONES) != 0};
}

struct convexity {
    int32_t code = ZLR_RES_OK;
    int32_t row = -1;    /* what the code is about; -1: the objective */
    std::string message; /* for users: lines of at most 80 columns, each ended by a newline; "" when convex */
    std::vector<disguised_cone> disguised; /* ascending by row; of the rows before the one that failed */
};

/* The first thing that is wrong, the objective first, then by row: ZLR_RES_ERR_NONCONVEX, ZLR_RES_ERR_QCON_EQUALITY or
 * ZLR_RES_ERR_QCON_RANGE. Means nothing where the effort was given up. */
convexity convexity_check(const model *m, work_effort *effort = nullptr, const convexity_rules &rules = {});

/* Which sign a form needs: 1 positive, -1 negative semidefinite, 0 none. For rows with one side. */
double convexity_objective_sign(const model *m);
double convexity_row_sign(const model *m, int32_t row);
