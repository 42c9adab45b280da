/* differences_test.cpp - derivatives of every nonlinear stub of the data against differences of the callbacks' own values:
 * at the start, and at points about it. */
#include "ampl/evaluation/evaluated_stubs.h"
#include "ampl/evaluation/slopes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iterator>

/* Multipliers of both signs, none of them round. */
static std::vector<double> some_multipliers(const stub_callbacks &c)
{
    std::vector<double> y(static_cast<size_t>(c.num_rows));
    for (size_t i = 0; i < y.size(); ++i) y[i] = i % 3 == 2 ? -0.37 : 0.81 + 0.01 * static_cast<double>(i % 7);
    return y;
}

/* Starts at which a function has no derivative, or one that nobody can compute: quotients of two differences that both
 * vanish there but for a tiny constant; rounding to integers at an integer. */
static const char *const starts_without_slope[] = {"heatexch_gen1_nl", "heatexch_gen2_nl", "heatexch_gen3_nl",
                                                   "pyomo_small14_nl"};

/* Rows of these lack columns that their expressions use: the stub itself says that there is no slope. */
static const char *const incomplete_stubs[] = {"hs085_nl"};

template <size_t num> static bool is_one_of(const std::string &name, const char *const (&names)[num])
{
    return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

class ampl_differences : public ::testing::TestWithParam<data_row>
{
};

TEST_P(ampl_differences, agree)
{
    if (is_one_of(GetParam().name, incomplete_stubs)) GTEST_SKIP() << "rows of the stub lack columns";
    const open_stub stub(GetParam());
    const stub_callbacks &c = stub.callbacks;
    if (c.handle == nullptr) return; /* quadratic or linear: nothing is evaluated */
    const std::vector<double> y = some_multipliers(c);
    int num_points = 0;
    for (unsigned turn = is_one_of(GetParam().name, starts_without_slope); turn < 12 && num_points < 3; ++turn) {
        const slope_check check = check_slopes(c, point_about_start(c, turn), 1.75, y);
        EXPECT_LT(check.worst, 1e-6) << "point " << turn << ", direction " << check.direction;
        num_points += check.has_values;
    }
    EXPECT_GE(num_points, 2) << "points at which there are values";
}

INSTANTIATE_TEST_SUITE_P(data, ampl_differences, ::testing::ValuesIn(evaluated_stubs()),
                         [](const auto &tested) { return tested.param.name; });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ampl_differences);
