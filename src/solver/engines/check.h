/* check.h - the check of a solution on the task's own, unscaled data. Statuses come from here, not from engines.
 *
 * A residual is compared with what is allowed for it: the tolerance, relative to the size of the bound or cost that it
 * belongs to where that is above 1, and a share for rounding that grows with the terms that were added up. So a correct
 * answer on a model with large numbers passes, and a wrong one does not hide behind numbers elsewhere in the model. */
#pragma once

#include "solver/model/model.h"
#include "solver/model/solution.h"
#include "solver/params/params.h"

#include <functional>

struct check_tolerances {
    double primal = 1e-6, dual = 1e-6, gap = 1e-6, integer = 1e-6;
    double mip_rel_gap = 1e-4, mip_abs_gap = 1e-6;
    double near = 100.0; /* what lies between "optimal" and "near optimal": so many times over the tolerances */
};

/* The largest ratio of residual to what is allowed; at most 1 passes. Infinite: nothing there to check. */
struct check_result {
    double primal = model_inf; /* rows, bounds, integrality, cones */
    double dual = model_inf;   /* stationarity and signs */
    double gap = model_inf;    /* primal against dual objective */
};

check_tolerances check_tolerances_of(const param_set *params);

/* Computes xc from xx, and the duals of the sides from y and the reduced costs d (see gradient.h): y = slc - suc,
 * d = slx - sux + snx. What
 * has the sign of a side that does not exist, or is below the tolerance at a side that is not met, stays in neither: it
 * is a residual. Needs has_primal or has_dual. `bound_dual` is an engine's slx - sux, where it has them, for columns that
 * are in a cone and have bounds besides: there the point does not tell which of the two holds it. */
void check_complete(const model *m, const check_tolerances *tol, solution *sol,
                    const std::vector<double> &bound_dual = {});

/* Fills sol->check and the objectives, of what has_primal and has_dual say is there. `integers`: whether integrality is
 * asked for. The solution is complete. */
check_result check_solution(const model *m, const check_tolerances *tol, bool integers, solution *sol);

/* ---- single residuals, for who wants more than the largest */

enum check_what {
    CHECK_ROW,
    CHECK_BOUND,
    CHECK_INTEGRALITY,
    CHECK_CONE,         /* the index is the cone's */
    CHECK_SIGN,         /* a dual of the wrong sign, or at a side that does not exist; of a cone by its head */
    CHECK_STATIONARITY, /* what of a multiplier or reduced cost is not in the duals of the sides */
    CHECK_COMPLEMENTARITY,
    CHECK_NUM
};

/* One residual above 0: of which row or column, and what is allowed for it. */
struct check_residual {
    check_what what;
    bool is_row;
    int32_t index;
    double size, allowed;
};

typedef std::function<void(const check_residual &)> check_visitor;

/* Shows the residuals that check_solution looks at, each finite one above 0, by kind, then by number. The solution has
 * been checked: complementarity is measured against its objectives. */
void check_each(const model *m, const check_tolerances *tol, bool integers, const solution *sol,
                const check_visitor &see);

/* Reduced cost of a column, and what is allowed for its residual. See gradient.h for all of them. */
struct reduced_cost {
    double value, allowed;
};

/* Row activities at x, and the sizes of the terms that were added up. */
struct row_sums {
    std::vector<double> value, terms;
};

row_sums check_row_sums(const model *m, const std::vector<double> &x);

/* What a sum of `terms` may be off a side by. */
double check_allowed(double tolerance, double side, double terms);

/* What a gap between the objectives is measured against. */
double check_objective_size(const model *m, const solution *sol);

/* Whether a value stands at a side that exists. */
bool check_is_at(double value, double side, double tolerance);

/* Statuses of a checked solution of a continuous problem. */
void check_set_status(const check_tolerances *tol, const check_result *found, solution *sol);

/* Statuses of a checked integer solution. `bound` is the engine's bound on the objective. Integer optimal needs a gap
 * within the tolerances. */
void check_set_integer_status(const check_tolerances *tol, int32_t sense, const check_result *found, bool has_bound,
                              double bound, solution *sol);

/* Gap between incumbent and bound, relative to the incumbent; infinite where an incumbent of 0 has a bound elsewhere. */
double check_relative_gap(double objective, double bound);

/* The largest residual of a checked continuous solution as it is, the gap among them, whatever the numbers that it belongs
 * to. */
double check_largest_residual(const solution *sol);

/* Better first: the order of solution statuses for choosing the best of several points. Smaller is better. */
int32_t check_rank(int32_t solsta);
