/* The functions of model.h. */
#include "solver/model/model.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace
{
model small_model()
{
    model m;
    model_append_cons(&m, 3);
    model_append_vars(&m, 3);
    return m;
}

void put(model *m, int32_t j, const std::vector<int32_t> &row, const std::vector<double> &value)
{
    model_put_column(m, j, static_cast<int32_t>(row.size()), row.data(), value.data());
}

TEST(Model, Append)
{
    const model m = small_model();
    EXPECT_EQ(m.con_lower, std::vector<double>(3, -model_inf));
    EXPECT_EQ(m.con_upper, std::vector<double>(3, model_inf));
    EXPECT_EQ(m.var_upper, std::vector<double>(3, 0.0));
    EXPECT_EQ(m.a.start, std::vector<int64_t>(4, 0));
    EXPECT_EQ(m.con_names.start.size(), 3U);
    EXPECT_EQ(model_num_nz(&m), 0);
    EXPECT_EQ(model_num_int(&m), 0);
}

/* Columns in any order, growing, shrinking and emptied, leave the others as they are. */
TEST(Model, PutColumn)
{
    model m = small_model();
    put(&m, 2, {2, 0}, {1.0, 2.0});
    put(&m, 0, {1}, {3.0});
    put(&m, 1, {0, 1, 2}, {4.0, 5.0, 6.0});
    EXPECT_EQ(m.a.start, (std::vector<int64_t>{0, 1, 4, 6}));
    EXPECT_EQ(m.a.row, (std::vector<int32_t>{1, 0, 1, 2, 2, 0}));
    put(&m, 1, {2}, {7.0});
    put(&m, 0, {0, 2}, {8.0, 9.0});
    EXPECT_EQ(m.a.start, (std::vector<int64_t>{0, 2, 3, 5}));
    EXPECT_EQ(m.a.row, (std::vector<int32_t>{0, 2, 2, 2, 0}));
    EXPECT_EQ(m.a.value, (std::vector<double>{8.0, 9.0, 7.0, 1.0, 2.0}));
    put(&m, 0, {}, {});
    put(&m, 2, {}, {});
    EXPECT_EQ(m.a.start, (std::vector<int64_t>{0, 0, 1, 1}));
    model_append_vars(&m, 1);
    put(&m, 3, {1}, {1.0});
    EXPECT_EQ(m.a.start, (std::vector<int64_t>{0, 0, 1, 1, 2}));
}

/* Columns that are put in any order with the starts left open are those that are put one by one. */
TEST(Model, PutColumnOpen)
{
    std::mt19937 random(7);
    constexpr int32_t num_var = 6;
    for (int round = 0; round < 300; ++round) {
        model open, plain;
        for (model *m : {&open, &plain}) {
            model_append_cons(m, 3);
            model_append_vars(m, num_var);
        }
        for (int32_t k = 0; k < 10; ++k) {
            /* mostly the next one, as a task is filled */
            const auto j =
                static_cast<int32_t>(random() % 4 == 0 ? random() % num_var : static_cast<uint32_t>(k) % num_var);
            const std::vector<int32_t> row = {2, 0, 1};
            const std::vector<double> value = {1.0 * k, 2.0 * k, 3.0 * k};
            const auto num = static_cast<int32_t>(random() % 4);
            model_put_column_open(&open, j, num, row.data(), value.data());
            model_put_column(&plain, j, num, row.data(), value.data());
            if (random() % 8 == 0) model_close_columns(&open);
        }
        model_close_columns(&open);
        EXPECT_EQ(open.a.start, plain.a.start);
        EXPECT_EQ(open.a.row, plain.a.row);
        EXPECT_EQ(open.a.value, plain.a.value);
    }
}

TEST(Model, ProblemType)
{
    model m = small_model();
    EXPECT_EQ(model_problem_type(&m), ZLR_PROBTYPE_LO);
    m.var_type[1] = ZLR_VAR_INT;
    EXPECT_EQ(model_problem_type(&m), ZLR_PROBTYPE_LO);
    EXPECT_EQ(model_num_int(&m), 1);
    m.qobj = {{0, 0, 1.0}};
    EXPECT_EQ(model_problem_type(&m), ZLR_PROBTYPE_QO);
    m.qcon = {{0, {{0, 0, 1.0}}}};
    EXPECT_EQ(model_problem_type(&m), ZLR_PROBTYPE_QCQO);
}

TEST(Model, QuadNormalise)
{
    std::vector<quad_term> terms = {{2, 1, 1.0},  {0, 0, 2.0}, {1, 2, 3.0}, {1, 0, 4.0},
                                    {0, 1, -4.0}, {0, 0, 0.5}, {2, 2, 0.0}};
    quad_normalise(&terms);
    ASSERT_EQ(terms.size(), 2U);
    EXPECT_TRUE(terms[0].i == 0 && terms[0].j == 0 && terms[0].value == 2.5);
    EXPECT_TRUE(terms[1].i == 2 && terms[1].j == 1 && terms[1].value == 4.0);
}

TEST(Model, BoundKeys)
{
    static const struct {
        int32_t key;
        double lower, upper;
        int32_t code;
        double out_lower, out_upper;
    } cases[] = {
        {ZLR_BK_LO, 1.0, std::nan(""), ZLR_RES_OK, 1.0, model_inf},
        {ZLR_BK_LO, -1e20, 0.0, ZLR_RES_OK, -model_inf, model_inf},
        {ZLR_BK_UP, std::nan(""), 2.0, ZLR_RES_OK, -model_inf, 2.0},
        {ZLR_BK_UP, 0.0, 1e16, ZLR_RES_OK, -model_inf, model_inf},
        {ZLR_BK_FX, 3.0, 3.0, ZLR_RES_OK, 3.0, 3.0},
        {ZLR_BK_FX, 3.0, 4.0, ZLR_RES_ERR_BOUNDS, 0, 0},
        {ZLR_BK_FX, 1e20, 1e20, ZLR_RES_ERR_BOUNDS, 0, 0},
        {ZLR_BK_FR, std::nan(""), std::nan(""), ZLR_RES_OK, -model_inf, model_inf},
        {ZLR_BK_RA, 5.0, 4.0, ZLR_RES_OK, 5.0, 4.0},
        {ZLR_BK_RA, std::nan(""), 4.0, ZLR_RES_ERR_NAN, 0, 0},
        {5, 0.0, 0.0, ZLR_RES_ERR_ARGUMENT, 0, 0},
        {-1, 0.0, 0.0, ZLR_RES_ERR_ARGUMENT, 0, 0},
    };
    for (const auto &c : cases) {
        double lower = -7.0;
        double upper = -7.0;
        EXPECT_EQ(bounds_from_key(c.key, c.lower, c.upper, 1e16, &lower, &upper), c.code);
        EXPECT_EQ(lower, c.code == ZLR_RES_OK ? c.out_lower : -7.0);
        EXPECT_EQ(upper, c.code == ZLR_RES_OK ? c.out_upper : -7.0);
    }
    EXPECT_EQ(bounds_to_key(1.0, model_inf), ZLR_BK_LO);
    EXPECT_EQ(bounds_to_key(-model_inf, 1.0), ZLR_BK_UP);
    EXPECT_EQ(bounds_to_key(1.0, 1.0), ZLR_BK_FX);
    EXPECT_EQ(bounds_to_key(-model_inf, model_inf), ZLR_BK_FR);
    EXPECT_EQ(bounds_to_key(2.0, 1.0), ZLR_BK_RA);
}

TEST(Model, ObjectiveAndActivity)
{
    model m = small_model();
    m.cfix = 10.0;
    m.c = {1.0, 2.0, 3.0};
    m.qobj = {{0, 0, 2.0}, {2, 1, 5.0}};
    m.qcon = {{1, {{1, 1, 4.0}}}};
    put(&m, 0, {0, 1}, {1.0, -1.0});
    put(&m, 2, {1}, {0.5});
    const double x[] = {1.0, 2.0, -4.0};
    EXPECT_EQ(model_objective(&m, x), 10.0 + (1.0 + 4.0 - 12.0) + (0.5 * 2.0 + 5.0 * 2.0 * -4.0));
    double activity[3];
    model_activity(&m, x, activity);
    EXPECT_EQ(activity[0], 1.0);
    EXPECT_EQ(activity[1], -1.0 - 2.0 + 0.5 * 4.0 * 4.0);
    EXPECT_EQ(activity[2], 0.0);
    model_activity(&m, x, nullptr);
}
}  // namespace
