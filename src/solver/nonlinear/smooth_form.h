/* smooth_form.h - a task's problem as one of smooth functions, as engines/smooth.h has it.
 *
 * A maximisation becomes a minimisation of the negative. Linear terms, quadratic terms and the program's functions are
 * added up place by place: where each of them goes in the patterns is settled once. Cones and integrality are left out.
 * The constant stays in the objective. */
#pragma once

#include "solver/engines/smooth.h"
#include "solver/model/model.h"

/* Adds value * x[col] to a place of the Jacobian. */
struct smooth_product {
    int32_t place, col;
    double value;
};

/* Adds value times the multiplier of `row` (-1: the weight of the objective) to a place of the Hessian. */
struct smooth_curvature {
    int32_t place, row;
    double value;
};

struct smooth_form {
    const model *source = nullptr;
    double sign = 1.0; /* -1: a maximisation */
    smooth_problem problem;
    std::vector<double> jac_linear;             /* what does not depend on the point, by place */
    std::vector<smooth_product> jac_products;   /* of quadratic rows */
    std::vector<int32_t> jac_function;          /* places of the functions' gradients, in their order */
    std::vector<smooth_curvature> hes_constant; /* of quadratic parts */
    std::vector<int32_t> hes_function;          /* places of the functions' Hessian, in its order */
    bool is_all_function = false;               /* the Hessian has nothing else, and in the functions' own order */
    std::vector<double> multipliers, curvature; /* room: by row, and the functions' Hessian */
};

void smooth_form_make(const model *m, smooth_form *form);

/* The functions of a smooth_problem at x. Return ZLR_RES_OK, or why there is no value there. */
[[nodiscard]] int32_t smooth_form_objective(const smooth_form *form, const double *x, double *value);
[[nodiscard]] int32_t smooth_form_gradient(const smooth_form *form, const double *x, double *value);
[[nodiscard]] int32_t smooth_form_rows(const smooth_form *form, const double *x, double *value);
[[nodiscard]] int32_t smooth_form_jacobian(const smooth_form *form, const double *x, double *value);
[[nodiscard]] int32_t smooth_form_hessian(smooth_form *form, const double *x, double weight, const double *lambda,
                                          double *value);
