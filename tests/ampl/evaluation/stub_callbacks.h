/* stub_callbacks.h - a nonlinear stub, transferred into a task within the test's own process, and its callbacks asked for
 * values as an optimiser does. */
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

struct ZLR_env;
struct ZLR_task;
struct stub_objects; /* what the front end has made */

/* One open stub. */
struct stub_callbacks {
    ZLR_env *env = nullptr;
    ZLR_task *task = nullptr;
    stub_objects *made = nullptr;
    void *handle = nullptr; /* of the callbacks; null: the stub is not a nonlinear one */
    int32_t num_var = 0, num_con = 0;
    int32_t num_rows = 0;             /* rows that are evaluated: the first ones */
    int32_t num_columns = 0;          /* columns that take part in nonlinear terms: the first ones */
    std::vector<double> lower, upper; /* of columns, infinite where there is none */
    std::vector<double> start;        /* NaN where the stub has none */
    std::vector<double> linear;       /* the objective's coefficients in the task */
    std::vector<std::vector<int32_t>> row_columns;
    std::vector<int32_t> hes_i, hes_j; /* lower triangle */
};

/* What was found at a point; what was not wanted is empty. */
struct point_values {
    int32_t code = 0;
    double objective = 0.0;
    std::vector<double> gradient; /* num_var */
    std::vector<double> rows;     /* num_rows */
    std::vector<std::vector<double>> row_gradients;
    std::vector<double> lagrangian; /* num_var */
    std::vector<double> hessian;    /* as hes_i */
};

/* Opens the stub, with AMPL_EXTENDED so that rows of two sides are taken, and asks for the structure. */
bool open_callbacks(const std::string &stub, stub_callbacks *callbacks);
void close_callbacks(stub_callbacks *callbacks);

/* Values alone, or derivatives with them: gradients, the Lagrangian's gradient and Hessian for the weight and the rows'
 * multipliers y, which are added. */
point_values values_at(const stub_callbacks &callbacks, const std::vector<double> &x);
point_values derivatives_at(const stub_callbacks &callbacks, const std::vector<double> &x, double weight,
                            const std::vector<double> &y);
