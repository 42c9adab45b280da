/* smooth.h - a problem of smooth functions, as an engine asks for it that solves it locally.
 *
 *   minimise    f(x)
 *   subject to  con_lower <= g(x) <= con_upper,  var_lower <= x <= var_upper
 *
 * The functions have first and second derivatives and are evaluated through smooth_calls, which may lead back into the
 * program: an engine makes all its calls on the thread that it was called on, one at a time, and is never left alone.
 *
 * Multipliers, by the Lagrangian  L = f + sum of lambda_i g_i : at a solution
 * grad f + sum of lambda_i grad g_i - z_lower + z_upper = 0 with z_lower, z_upper >= 0. */
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct engine_option;

/* Bounds that do not exist are infinite. Both patterns hold each place once, in any order. */
struct smooth_problem {
    int32_t num_var = 0, num_con = 0;
    std::vector<double> var_lower, var_upper, con_lower, con_upper;
    std::vector<int32_t> jac_row, jac_col; /* of the rows' gradients */
    std::vector<int32_t> hes_row, hes_col; /* of the Hessian of the Lagrangian, its lower triangle: row >= column */
};

/* What an engine tells after each iteration; values that it does not have are NaN. */
struct smooth_news {
    int64_t iterations = 0;
    double objective = 0.0;
    double primal_infeas = 0.0;  /* of the rows as they were given, as far as the engine tells */
    double dual_infeas = 0.0;    /* as the engine scales the objective */
    bool in_restoration = false; /* objective and dual_infeas are not the problem's */
};

/* `is_new`: x is not that of the call before. Each returns false where there is no value. Arrays are as long as the
 * problem says; the values of patterns stand in their order. */
struct smooth_calls {
    void *handle;
    bool (*objective)(void *handle, const double *x, bool is_new, double *value);
    bool (*gradient)(void *handle, const double *x, bool is_new, double *value);
    bool (*rows)(void *handle, const double *x, bool is_new, double *value);
    bool (*jacobian)(void *handle, const double *x, bool is_new, double *value);

    /* weight times the Hessian of f plus the sum of lambda_i times that of g_i. */
    bool (*hessian)(void *handle, const double *x, bool is_new, double weight, const double *lambda, double *value);

    /* After each iteration. False: the engine is to end with the point that it has. */
    bool (*iterate)(void *handle, const smooth_news *news);
};

/* Where to begin, and how. */
struct smooth_start {
    std::vector<double> x;                        /* of full length */
    std::vector<double> lambda, z_lower, z_upper; /* all three or none: then the start is a warm one */
};

enum smooth_end {
    SMOOTH_SOLVED = 0,
    SMOOTH_ACCEPTABLE,         /* at the engine's lower demands, and no better to be had */
    SMOOTH_SQUARE_SOLVED,      /* as many equations as columns: a feasible point, nothing is said of optimality */
    SMOOTH_LOCALLY_INFEASIBLE, /* the violation is least here, and above 0: no proof for the problem as a whole */
    SMOOTH_DIVERGING,          /* the columns grow without end */
    SMOOTH_SMALL_STEPS,        /* no step of a size that counts */
    SMOOTH_RESTORATION_FAILED, /* no way from here to a feasible point */
    SMOOTH_STEP_FAILED,        /* the systems for a step could not be solved */
    SMOOTH_NO_VALUE,           /* a function or a derivative has no value where one is needed */
    SMOOTH_TOO_FEW_COLUMNS,    /* more equations than columns */
    SMOOTH_ITERATION_LIMIT,
    SMOOTH_STOPPED, /* by `iterate` */
    SMOOTH_MEMORY,
    SMOOTH_REFUSED, /* does not take an option; `message` tells */
    SMOOTH_FAILED   /* an error inside the engine; `message` tells */
};

/* The last point and its multipliers; empty where there is none. */
struct smooth_answer {
    smooth_end end = SMOOTH_FAILED;
    std::string message;
    std::vector<double> x, lambda, z_lower, z_upper;
    int64_t iterations = 0;
};

/* Solves; throws nothing. Options that are not given are at the engine's own defaults, but that it prints nothing. */
typedef void (*smooth_solve)(const smooth_problem *problem, const smooth_calls *calls,
                             const std::vector<engine_option> &options, const smooth_start *start,
                             smooth_answer *answer);
