/* functions_test.cpp - what the program's calls for nonlinear functions are asked, and what is made of their answers. */
#include "solver/model/functions.h"

#include <cmath>
#include <gtest/gtest.h>

/* Objective x^2 y, row 1 x y^2, for y above -1; row 0 has no function. Counts calls; `last_x` keeps the newest point that
 * values were asked for at, as an evaluator does that has derivatives of that point alone. */
struct cubic {
    int32_t value_calls = 0, gradient_calls = 0;
    double last_x[2] = {NAN, NAN};
    int32_t wrong_column = 0, hessian_size = 3;
};

static int32_t structure(void *handle, int32_t *numgrdobjnz, int32_t *grdobjsub, int32_t i, int32_t *convali,
                         int32_t *grdconinz, int32_t *grdconisub, int32_t, int32_t, const int32_t *,
                         int32_t maxnumhesnz, int32_t *numhesnz, int32_t *hessubi, int32_t *hessubj)
{
    const auto *c = static_cast<const cubic *>(handle);
    if (numgrdobjnz != nullptr) *numgrdobjnz = 2;
    if (grdobjsub != nullptr) grdobjsub[0] = 0, grdobjsub[1] = 1;
    if (convali != nullptr) *convali = i == 1;
    if (grdconinz != nullptr) *grdconinz = i == 1 ? 2 : 0;
    if (grdconisub != nullptr) grdconisub[0] = 1, grdconisub[1] = c->wrong_column;
    if (numhesnz != nullptr) *numhesnz = c->hessian_size;
    if (maxnumhesnz == 0) return 0;
    const int32_t row[] = {0, 0, 1}, col[] = {0, 1, 1}; /* the upper triangle */
    for (int32_t k = 0; k < 3; k++) hessubi[k] = row[k], hessubj[k] = col[k];
    return 0;
}

static int32_t values(void *handle, const double *xx, double yo, const double *yc, double *objval, int32_t *numgrdobjnz,
                      int32_t *grdobjsub, double *grdobjval, int32_t numi, const int32_t *subi, double *conval,
                      const int32_t *grdconptrb, const int32_t *, const int32_t *, double *grdconval, double *,
                      int32_t maxnumhesnz, int32_t *numhesnz, int32_t *hessubi, int32_t *hessubj, double *hesval)
{
    auto *c = static_cast<cubic *>(handle);
    const double x = xx[0], y = xx[1];
    if (y < -1.0) return ZLR_RES_ERR_NL_EVALUATION;
    if (objval != nullptr) *objval = x * x * y;
    for (int32_t k = 0; k < numi && conval != nullptr; k++) conval[k] = x * y * y;
    if (objval != nullptr) c->value_calls++, c->last_x[0] = x, c->last_x[1] = y;
    const bool derives = numgrdobjnz != nullptr || maxnumhesnz > 0;
    EXPECT_TRUE(!derives || (c->last_x[0] == x && c->last_x[1] == y)) << "derivatives before values";
    if (numgrdobjnz != nullptr) {
        c->gradient_calls++;
        *numgrdobjnz = 2;
        grdobjsub[0] = 0, grdobjsub[1] = 1;
        grdobjval[0] = 2.0 * x * y, grdobjval[1] = x * x;
        EXPECT_EQ(numi, 1);
        EXPECT_EQ(subi[0], 1);
        grdconval[grdconptrb[0]] = 2.0 * x * y, grdconval[grdconptrb[0] + 1] = y * y;
    }
    if (maxnumhesnz == 0) return 0;
    *numhesnz = 3;
    const double r = numi > 0 && yo != 0.0 ? -yc[1] / yo : 0.0;
    const double h[] = {2.0 * y, 2.0 * x + r * 2.0 * y, r * 2.0 * x};
    for (int32_t k = 0; k < 3; k++) hessubi[k] = hessubj[k] = 0, hesval[k] = h[k] * yo; /* at the weight 0: nothing */
    return 0;
}

static model_functions functions_of(cubic *c)
{
    model_functions f;
    f.handle = c;
    f.get_structure = structure;
    f.get_values = values;
    return f;
}

TEST(functions, structure_and_values_with_each_point_evaluated_once)
{
    cubic c;
    model_functions f = functions_of(&c);
    std::string complaint;
    ASSERT_EQ(functions_learn(2, 2, &f, &complaint), ZLR_RES_OK) << complaint;
    EXPECT_EQ(f.row, std::vector<int32_t>{1});
    EXPECT_EQ(f.col, (std::vector<int32_t>{1, 0}));
    EXPECT_EQ(f.hes_row, (std::vector<int32_t>{0, 1, 1}));
    EXPECT_EQ(f.hes_col, (std::vector<int32_t>{0, 0, 1}));

    int32_t code = 0;
    const double a[] = {3.0, 2.0}, b[] = {1.0, 5.0}, none[] = {1.0, -2.0};
    const function_values *at = functions_at(&f, a, false, &code);
    ASSERT_NE(at, nullptr);
    EXPECT_EQ(at->objective, 18.0);
    EXPECT_EQ(at->row[0], 12.0);
    at = functions_at(&f, a, true, &code);
    ASSERT_NE(at, nullptr);
    EXPECT_EQ(at->objective_gradient, (std::vector<double>{12.0, 9.0}));
    EXPECT_EQ(at->gradient, (std::vector<double>{12.0, 4.0}));
    EXPECT_EQ(functions_at(&f, a, true, &code), at);
    EXPECT_EQ(c.value_calls, 1);
    EXPECT_EQ(c.gradient_calls, 1);
    ASSERT_NE(functions_at(&f, b, true, &code), nullptr); /* values first: `values` watches */
    EXPECT_EQ(functions_at(&f, none, true, &code), nullptr);
    EXPECT_EQ(code, ZLR_RES_ERR_NL_EVALUATION);
    EXPECT_EQ(functions_find_failure(&f, none), -1);
}

TEST(functions, the_rows_share_of_the_hessian_is_there_at_the_weight_0_too)
{
    cubic c;
    model_functions f = functions_of(&c);
    std::string complaint;
    ASSERT_EQ(functions_learn(2, 2, &f, &complaint), ZLR_RES_OK) << complaint;
    const double x[] = {3.0, 2.0}, y[] = {100.0, 0.5};
    double h[3];
    for (const double weight : {0.0, 2.0, -1.0}) {
        ASSERT_EQ(functions_hessian(&f, x, weight, y, h), ZLR_RES_OK);
        EXPECT_NEAR(h[0], weight * 4.0, 1e-14);
        EXPECT_NEAR(h[1], weight * 6.0 - 0.5 * 4.0, 1e-14);
        EXPECT_NEAR(h[2], -0.5 * 6.0, 1e-14);
    }
}

TEST(functions, a_structure_that_contradicts_itself_is_refused)
{
    for (const auto &[column, size] : {std::pair<int32_t, int32_t>{2, 3}, {-1, 3}, {0, -1}}) {
        cubic c;
        c.wrong_column = column;
        c.hessian_size = size;
        model_functions f = functions_of(&c);
        std::string complaint;
        EXPECT_EQ(functions_learn(2, 2, &f, &complaint), ZLR_RES_ERR_INDEX);
        EXPECT_NE(complaint, "");
    }
}
