/* ranging.h - how far a side, a bound or a cost can go before the price of it changes.
 *
 * The optimal value of a linear task as a function of one number is piecewise linear. For each item the slopes on both
 * sides of the present value are given, and how far each holds: the true ones, also where the basis is degenerate and would
 * only tell of itself. Sides of an equality and bounds of a fixed column move together. */
#pragma once

#include "solver/model/task.h"

#include <string>
#include <vector>

enum range_what { RANGE_ROW, RANGE_COLUMN, RANGE_COST };

struct range_item {
    range_what what;
    int32_t index;
    bool is_upper; /* which side; not for costs */
};

/* Ranges are changes from the present value, left at most 0, right at least 0, infinite where there is no end. A price that
 * is infinite: the task is infeasible (a cost: unbounded) as soon as the value moves that way; its range is 0. */
struct range_result {
    double left_price = 0.0, right_price = 0.0;
    double left_range = 0.0, right_range = 0.0;
    bool is_known = false; /* false: a stop came first, or no engine gave an answer that bears the check */
};

struct ranging {
    std::vector<range_result> results; /* as the items */
    int32_t num_primal_degenerate = 0; /* basic rows and columns that sit on a bound */
    int32_t num_dual_degenerate = 0;   /* nonbasic ones with a price of 0: the optimal point need not be the only one */
    int32_t num_solved = 0;
    double objective = 0.0;
    std::vector<double> x, activity; /* the optimal point that the ranges are of */
};

/* Needs a linear task without integer columns and an optimal solution of `basis`, which the ranges start from. Returns
 * ZLR_RES_OK, the code of a stop (results that were found stay), or ZLR_RES_ERR_ENGINE with `message`. */
[[nodiscard]] int32_t ranging_compute(ZLR_task *task, const solution *basis, const std::vector<range_item> &items,
                                      ranging *out, std::string *message);
