/* functions.h - general nonlinear functions of a problem, which the program evaluates. They are added to what the model
 * holds of the objective and of rows; see ZLR_putnlfunc for what the two calls are asked for and in which order.
 *
 * The value of the objective holds its constant: the model's own counts for nothing beside functions. All calls lead into
 * the program, and are made on the thread that called the library. */
#pragma once

#include "zelor.h"

#include <cstdint>
#include <string>
#include <vector>

/* Values at one point. */
struct function_values {
    double objective = 0.0;
    std::vector<double> row;                /* one for each row with a function */
    std::vector<double> objective_gradient; /* num_var */
    std::vector<double> gradient;           /* of the rows, in the order of the structure */
};

/* The newest point that was asked for, so that a check, a report and an engine that ask for the same point share its
 * evaluation; and room for calls. */
struct function_cache {
    std::vector<double> x;
    bool has_values = false, has_gradients = false;
    function_values at_x;
    std::vector<int32_t> sub, other_sub;
    std::vector<double> value;
};

struct model_functions {
    void *handle = nullptr; /* the program's */
    ZLR_nlgetspfunc_t get_structure = nullptr;
    ZLR_nlgetvafunc_t get_values = nullptr;

    /* What functions_learn was told. */
    std::vector<int32_t> objective_col;    /* columns of the objective's gradient; those of linear terms may lack */
    std::vector<int32_t> row;              /* rows with a function, ascending */
    std::vector<int32_t> start = {0}, col; /* their gradients' columns: of row[k] from start[k] to start[k + 1] */
    std::vector<int32_t> hes_row, hes_col; /* of the Hessian of the Lagrangian: lower triangle */
    int32_t num_con = 0, num_var = 0;      /* of the problem that they are of */

    mutable function_cache cache;
};

/* Asks for the structure. An answer that contradicts itself is ZLR_RES_ERR_INDEX, with what is wrong in *complaint; a
 * code of the program's call is handed on. */
[[nodiscard]] int32_t functions_learn(int32_t num_con, int32_t num_var, model_functions *f, std::string *complaint);

/* Values at x, with gradients where they are wanted; they stand until the next call. Null where there are none: *code is
 * then the program's, or ZLR_RES_ERR_NL_EVALUATION for a value that is not a finite number. */
const function_values *functions_at(const model_functions *f, const double *x, bool gradients, int32_t *code);

/* `weight` times the Hessian of the objective less the sum of y_i times that of row i, in the order of the structure; y is
 * by row number. Values must have been asked for at x before. */
[[nodiscard]] int32_t functions_hessian(const model_functions *f, const double *x, double weight, const double *y,
                                        double *out);

/* Which function has no value at x, where functions_at finds none: a row's number, -1 for the objective, -2 where each one
 * alone has one. */
int32_t functions_find_failure(const model_functions *f, const double *x);
