/* model.h - the data of an optimisation problem.
 *
 *   minimise or maximise   cfix + c'x + x'Q0x/2
 *   subject to             con_lower[i] <= a_i x + x'Qix/2 <= con_upper[i]
 *                          var_lower[j] <= x_j <= var_upper[j],  x_j integer where var_type[j] is ZLR_VAR_INT
 *                          the members of each cone, in their order, in it
 *
 * General nonlinear functions (functions.h) are added to the objective and to rows; with them cfix counts for nothing, as
 * the objective's function holds the constant.
 *
 * Invariants, true between calls of the functions below: every array has num_con or num_var entries; `a` is by column,
 * its row numbers are in range and occur once a column, in the order given; bounds that do not exist are -infinity or
 * +infinity (IEEE), never a large number; nothing is NaN. A lower bound may lie above its upper bound: such a problem
 * is infeasible, not invalid. Quadratic terms are the lower triangle of Q (i >= j), each entry once.
 * A cone has at least two members, a rotated one three, and a column is in one cone at most. While columns are put one
 * after another, the starts behind the last one wait (model_put_column_open): model_close_columns writes them.
 *
 * Readers fill a fresh model that the task takes over on success. A task shares its model with running engines: it is
 * copied before it is changed while others hold it (task_edit in task.h). */
#pragma once

#include "solver/model/exact_sum.h"
#include "solver/model/functions.h"
#include "solver/model/names.h"
#include "zelor.h"

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

inline constexpr double model_inf = std::numeric_limits<double>::infinity();

struct sparse_columns {
    std::vector<int64_t> start = {0}; /* num_var + 1 */
    std::vector<int32_t> row;
    std::vector<double> value;
};

struct quad_term {
    int32_t i, j; /* i >= j */
    double value;
};

struct quad_row {
    int32_t row;
    std::vector<quad_term> terms;
};

struct model_cone {
    int32_t type = ZLR_CT_QUAD;
    std::vector<int32_t> member; /* columns, the head first, of a rotated cone the two heads */
};

struct model {
    std::string name;
    std::string obj_name;

    int32_t num_con = 0;
    int32_t num_var = 0;
    int32_t sense = ZLR_SENSE_MIN;
    double cfix = 0.0;

    std::vector<double> c;
    std::vector<double> con_lower, con_upper;
    std::vector<double> var_lower, var_upper;
    std::vector<uint8_t> var_type; /* ZLR_VAR_CONT or ZLR_VAR_INT */
    sparse_columns a;
    int32_t open_column = -1; /* the starts behind that of this column and its end wait; -1: none do */
    std::vector<quad_term> qobj;
    std::vector<quad_row> qcon; /* ascending by row, none empty */
    std::vector<model_cone> cones;

    std::shared_ptr<const model_functions> functions; /* general nonlinear parts; null: none */

    name_table con_names, var_names;
};

void model_append_cons(model *m, int32_t num); /* free rows */
void model_append_vars(model *m, int32_t num); /* continuous, fixed at 0, empty columns */

int64_t model_num_nz(const model *m);
int32_t model_num_int(const model *m);
int32_t model_num_cones(const model *m);
int32_t model_problem_type(const model *m); /* ZLR_PROBTYPE_... */

/* Replaces column j by `num` entries. The caller has checked rows and values. */
void model_put_column(model *m, int32_t j, int32_t num, const int32_t *row, const double *value);

/* The same, at a cost that does not grow with the columns behind j where those are empty; model_close_columns is due
 * before anyone looks at the matrix. */
void model_put_column_open(model *m, int32_t j, int32_t num, const int32_t *row, const double *value);
void model_close_columns(model *m);

/* Sorts by (i, j) and adds up repeated entries; entries that cancel out to 0 go. Swaps i and j where i < j. */
void quad_normalise(std::vector<quad_term> *terms);

/* What is wrong with a cone that is to be added, for a message, or empty. */
std::string model_cone_complaint(const model *m, int32_t type, const std::vector<int32_t> &member);

/* Number of heads of a cone: 1, of a rotated one 2. */
inline size_t cone_num_heads(int32_t type) { return type == ZLR_CT_RQUAD ? 2 : 1; }

/* How far the members' values are outside the cone, as the least change of the heads that brings them in; 0 inside. */
double cone_violation(const model_cone *cone, const double *x);

/* Bounds between the model's form and the interface's. A bound of size `infinite` or more does not exist.
 * bounds_from_key returns ZLR_RES_OK, ZLR_RES_ERR_ARGUMENT (unknown key), ZLR_RES_ERR_NAN, ZLR_RES_ERR_BOUNDS. */
int32_t bounds_to_key(double lower, double upper);
[[nodiscard]] int32_t bounds_from_key(int32_t key, double lower, double upper, double infinite, double *out_lower,
                                      double *out_upper);

/* Adds `factor` times Qx, by the lower triangle of Q, to `out`. */
void quad_add_product(const std::vector<quad_term> &terms, const double *x, double factor, double *out);

/* x'Qx/2; the other adds `factor` times that to a sum, exactly where the factor is 1 or -1. */
void quad_add_value(const std::vector<quad_term> &terms, const double *x, double factor, exact_sum *sum);
double quad_value(const std::vector<quad_term> &terms, const double *x);

/* Objective value, exact but for the rounding of the result, and row activities at x; NaN where a function has no value.
 * `activity` has num_con entries and may be null. */
double model_objective(const model *m, const double *x);
void model_activity(const model *m, const double *x, double *activity);
