/* function_model.h - nonlinear models for tests: functions are written once, over jets that carry their first and second
 * derivatives, and are given to a task through the two calls of ZLR_putnlfunc. */
#pragma once

#include "api_support.h"

#include <cmath>
#include <functional>

/* A value with its gradient and Hessian, dense. */
struct jet {
    double value = 0.0;
    std::vector<double> grad, hess; /* n and n * n; empty for constants */

    jet(double constant = 0.0) : value(constant) {} /* NOLINT: numbers stand in formulas as they are */
};

jet jet_column(double value, size_t j, size_t n);
jet operator+(const jet &a, const jet &b);
jet operator-(const jet &a, const jet &b);
jet operator*(const jet &a, const jet &b);
jet jet_log(const jet &a); /* without a value for arguments that are not above 0 */
jet jet_exp(const jet &a);

typedef std::function<jet(const std::vector<jet> &x)> jet_function;

/* Rows with an empty function have none. Every function depends on every column, and the Hessian is full. */
struct function_model {
    size_t num_var = 0;
    jet_function objective;
    std::vector<jet_function> rows;
    std::vector<std::vector<double>> asked; /* points at which values were asked for, in order */
    int64_t hessians_without_objective = 0; /* calls with the weight 0 */
    bool is_linear = false;                 /* says that the Hessian is empty */
};

/* Gives the model's functions to a task that has its rows and columns. */
int32_t put_functions(ZLR_task *task, function_model *model);

/* Objective and rows at a point, NaN where there is no value. */
std::vector<double> values_at(const function_model *model, const std::vector<double> &x);
