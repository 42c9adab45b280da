/* What makes the last digits of a quadratic answer: the problem that is left, magnified, and the gap that is taken out. */
#include "small_models.h"
#include "solver/engines/answer.h"
#include "solver/engines/gap.h"
#include "solver/engines/polish.h"
#include "solver/engines/refine.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

static const check_tolerances tolerances;

static double sign_of(int32_t sense) { return sense == ZLR_SENSE_MAX ? -1.0 : 1.0; }

/* minimise x0^2 + x1^2 - 8 x0 - 2 x1 + x2, x0 + x1 <= 3, -5 <= x0 - x1 + x2 <= 10, a free row, x0 <= 1e12, x1 >= 0,
 * x2 >= -1. Optimum -16 at (3, 0, -1), degenerate: the first row's multiplier is -2, x1 is at its bound and costs 0. */
static model degenerate_model(int32_t sense)
{
    const double s = sign_of(sense);
    model m = make_model(
        sense, {-8.0 * s, -2.0 * s, s},
        {{-model_inf, 3.0, {1.0, 1.0, 0.0}}, {-5.0, 10.0, {1.0, -1.0, 1.0}}, {-model_inf, model_inf, {1.0, 0.0, 1.0}}},
        {-model_inf, 0.0, -1.0}, {1e12, model_inf, model_inf});
    m.qobj = {{0, 0, 2.0 * s}, {1, 1, 2.0 * s}};
    return m;
}

static solution answer_at(const model *m, const std::vector<double> &x, const std::vector<double> &y,
                          check_result *found)
{
    engine_answer a;
    solution sol;
    a.x = x;
    a.y = y;
    *found = answer_to_solution(m, &tolerances, &a, ZLR_SOL_ITR, &sol);
    return sol;
}

class refine_sense : public testing::TestWithParam<int32_t>
{
};
INSTANTIATE_TEST_SUITE_P(both, refine_sense, testing::Values(ZLR_SENSE_MIN, ZLR_SENSE_MAX));

/* The way from an answer to the optimum, magnified, is the optimum of the problem that is left, and leads there. */
TEST_P(refine_sense, the_step_to_the_optimum_is_optimal_for_what_is_left)
{
    const double s = sign_of(GetParam()), x_scale = 8.0, y_scale = 64.0;
    const model m = degenerate_model(GetParam());
    const std::vector<double> from = {3.01, 0.02, -0.995}, from_y = {-2.03, 0.01, 0.0};
    check_result found;
    const solution near = answer_at(&m, from, {s * from_y[0], s * from_y[1], 0.0}, &found);
    ASSERT_GT(check_largest_residual(&near), 1e-3);

    const refinement r = refine_problem(&m, &near, x_scale, y_scale);
    ASSERT_EQ(r.problem->num_var, 5); /* two rows have slacks */
    EXPECT_EQ(r.problem->sense, ZLR_SENSE_MIN);
    engine_answer step;
    /* The first row is above its side, where its slack starts; the second is inside. */
    step.x = {x_scale * -0.01, x_scale * -0.02, x_scale * -0.005, 0.0, x_scale * (2.0 - (3.01 - 0.02 - 0.995))};
    step.y = {y_scale * 0.03, y_scale * -0.01, 0.0};
    solution at;
    const check_result step_found = answer_to_solution(r.problem.get(), &tolerances, &step, ZLR_SOL_ITR, &at);
    EXPECT_EQ(at.solsta, ZLR_SOLSTA_OPTIMAL);
    EXPECT_LE(std::max({step_found.primal, step_found.dual, step_found.gap}), 1e-3);
    EXPECT_LE(check_largest_residual(&at), 1e-10);

    ASSERT_TRUE(refine_take(&m, &r, &step));
    const solution best = answer_at(&m, step.x, step.y, &found);
    EXPECT_EQ(best.solsta, ZLR_SOLSTA_OPTIMAL);
    EXPECT_NEAR(best.primal_obj, s * -16.0, 1e-12);
    EXPECT_LE(check_largest_residual(&best), 1e-12);
    EXPECT_GE(best.xx[1], 0.0) << "kept within its bound";
}

TEST(refine, what_is_far_away_comes_nearer_and_what_does_not_exist_stays_away)
{
    const model m = degenerate_model(ZLR_SENSE_MIN);
    check_result found;
    const solution near = answer_at(&m, {3.01, 0.02, -0.995}, {-2.03, 0.01, 0.0}, &found);
    const refinement r = refine_problem(&m, &near, 1e3, 1e9);
    const model *p = r.problem.get();
    EXPECT_EQ(p->var_lower[0], -model_inf);
    EXPECT_EQ(p->var_upper[0], 1e3); /* not 1e15 */
    EXPECT_EQ(p->var_upper[1], model_inf);
    EXPECT_NEAR(p->var_lower[1], -20.0, 1e-9);
    EXPECT_EQ(std::fabs(p->c[0]), 1e3);
    EXPECT_EQ(p->con_lower[2], -model_inf);
    EXPECT_EQ(p->con_upper[2], model_inf);
    EXPECT_EQ(p->con_lower[0], p->con_upper[0]);
    engine_answer short_answer;
    short_answer.x = {0.0, 0.0, 0.0};
    short_answer.y = {0.0, 0.0, 0.0};
    EXPECT_FALSE(refine_take(&m, &r, &short_answer));
}

TEST_P(refine_sense, a_gap_of_rounding_is_taken_out_of_the_multipliers)
{
    const double s = sign_of(GetParam());
    const model m = two_row_model(GetParam());
    check_result found;
    solution sol = answer_at(&m, {3.0, 1.0}, {0.0, s * (-2.0 / 3.0 + 1e-9)}, &found);
    const double gap = std::fabs(sol.primal_obj - sol.dual_obj);
    ASSERT_GT(gap, 1e-9);
    gap_close(&m, &tolerances, 1e-6, &sol, &found);
    EXPECT_LE(std::fabs(sol.primal_obj - sol.dual_obj), 1e-15);
    EXPECT_LE(sol.check.dual, 1e-8);
    EXPECT_EQ(sol.solsta, ZLR_SOLSTA_OPTIMAL);
    EXPECT_EQ(sol.xx, (std::vector<double>{3.0, 1.0}));
    EXPECT_EQ(sol.y[0], 0.0) << "a row that is not met has no multiplier";
}

/* Of a point that is not the optimum the gap is none of rounding: multipliers that hid it would be wrong. */
TEST_P(refine_sense, a_gap_of_the_point_stays)
{
    const double s = sign_of(GetParam());
    const model m = two_row_model(GetParam());
    check_result found;
    solution sol = answer_at(&m, {3.0, 0.999}, {0.0, s * -2.0 / 3.0}, &found);
    const std::vector<double> y = sol.y;
    const double gap = std::fabs(sol.primal_obj - sol.dual_obj);
    ASSERT_NEAR(gap, 2e-3, 1e-9);
    gap_close(&m, &tolerances, 1e-6, &sol, &found);
    EXPECT_EQ(sol.y, y);
    EXPECT_EQ(std::fabs(sol.primal_obj - sol.dual_obj), gap);
}

/* Sides of 1e9 with coefficients that have no exact form: equations solved to the last digit, objectives that agree. */
TEST(polish, large_numbers_come_out_to_the_last_digit)
{
    model m = make_model(ZLR_SENSE_MIN, {1.0 / 3.0, 0.1, 7.0},
                         {{1e9 / 3.0, model_inf, {0.1, 1.0 / 3.0, 0.7}}, {2e8, 2e8, {1.0 / 7.0, -0.3, 0.9}}},
                         {0.0, 0.0, 0.0}, {model_inf, model_inf, model_inf});
    m.qobj = {{0, 0, 1e-3}, {1, 1, 2e-3}, {2, 2, 1.0}};
    /* From near the optimum: the digits that an interior point method would have. */
    check_result found;
    solution sol = answer_at(&m, {2.0e9, 3.9e8, 1.0}, {9.0e6, 5.0e6}, &found);
    ASSERT_GT(check_largest_residual(&sol), 1.0);
    const polish_limits limits;
    polish_solution(&m, &tolerances, &limits, nullptr, &sol, &found);
    EXPECT_EQ(sol.solsta, ZLR_SOLSTA_OPTIMAL);
    EXPECT_LE(std::max({found.primal, found.dual, found.gap}), 1e-3);
    EXPECT_LE(std::fabs(sol.primal_obj - sol.dual_obj), 1e-15 * std::fabs(sol.primal_obj));
}
