/* netlib_sensitivity_test.cpp - prices and ranges on real, degenerate problems, against solving again. */
#include "api_support.h"
#include "support/files.h"

#include <algorithm>

enum number_kind { ROW, COLUMN, COST };

/* A number of a problem whose price is asked. */
struct number {
    number_kind what;
    int32_t index, mark;
    double value, lower, upper; /* of the row or column */
};

static std::vector<number> numbers_of(ZLR_task *task)
{
    std::vector<number> all;
    int32_t size[2] = {0, 0}, key = 0;
    double lower = 0.0, upper = 0.0;
    EXPECT_EQ(ZLR_getnumcon(task, &size[0]), 0);
    EXPECT_EQ(ZLR_getnumvar(task, &size[1]), 0);
    for (const number_kind what : {ROW, COLUMN}) {
        for (int32_t k = 0; k < size[what]; k++) {
            EXPECT_EQ(ZLR_getbound(task, what == ROW ? ZLR_ACC_CON : ZLR_ACC_VAR, k, &key, &lower, &upper), 0);
            if (std::isfinite(lower)) all.push_back({what, k, 0, lower, lower, upper});
            if (std::isfinite(upper) && upper != lower) all.push_back({what, k, 1, upper, lower, upper});
        }
    }
    std::vector<double> cost(static_cast<size_t>(size[1]));
    EXPECT_EQ(ZLR_getc(task, cost.data()), 0);
    for (int32_t j = 0; j < size[1]; j++) all.push_back({COST, j, 0, cost[static_cast<size_t>(j)], 0.0, 0.0});
    return all;
}

static void put(ZLR_task *task, const number &n, double value)
{
    if (n.what == COST) {
        EXPECT_EQ(ZLR_putclist(task, 1, &n.index, &value), 0);
        return;
    }
    const bool together = n.lower == n.upper;
    const double lower = together || n.mark == 0 ? value : n.lower, upper = together || n.mark == 1 ? value : n.upper;
    EXPECT_EQ((n.what == ROW ? ZLR_putconbound : ZLR_putvarbound)(task, n.index, key_of(lower, upper), lower, upper),
              0);
}

/* Not a number where there is no optimum. */
static double value_at(ZLR_task *task, const number &n, double value)
{
    int32_t solsta = -1;
    double objective = std::nan("");
    put(task, n, value);
    EXPECT_EQ(ZLR_optimize(task), 0);
    EXPECT_EQ(ZLR_getsolsta(task, ZLR_SOL_BAS, &solsta), 0);
    if (solsta == ZLR_SOLSTA_OPTIMAL) {
        EXPECT_EQ(ZLR_getprimalobj(task, ZLR_SOL_BAS, &objective), 0);
    }
    put(task, n, n.value);
    return objective;
}

static void expect_slope(ZLR_task *task, const number &n, double objective, double price, double range, bool right)
{
    const double size = std::max(1.0, std::fabs(n.value)), sign = right ? 1.0 : -1.0;
    if (std::isinf(price)) {
        EXPECT_TRUE(std::isnan(value_at(task, n, n.value + sign * 1e-3 * size)));
        return;
    }
    const double end = std::isinf(range) ? sign * 10.0 * size : range;
    EXPECT_GE(sign * end, 0.0);
    for (const double share : {0.4, 0.98}) {
        const double found = value_at(task, n, n.value + share * end);
        EXPECT_NEAR(found, objective + price * share * end, 2e-6 * std::max(1.0, std::fabs(found))) << "at " << share;
    }
    if (std::isinf(range) || price == 0.0)
        return; /* without a price up to the activity: another point may do as well */
    const double beyond = 1.5 * end + sign * 1e-2 * size;
    const double found = value_at(task, n, n.value + beyond);
    EXPECT_FALSE(std::fabs(found - (objective + price * beyond)) < 1e-9 * std::max(1.0, std::fabs(found)))
        << "holds beyond " << range;
}

class netlib_sensitivity : public testing::TestWithParam<const char *>
{
};

TEST_P(netlib_sensitivity, agrees_with_solving_again)
{
    const std::string file = std::string(ZELOR_DATA_DIR "/lp/") + GetParam();
    constexpr size_t num_asked = 25;
    ZLR_env *env = nullptr;
    ZLR_task *task = nullptr, *moved = nullptr;
    double objective = 0.0;
    if (!file_exists(file)) GTEST_SKIP() << "no data";
    ASSERT_EQ(ZLR_makeenv(&env, nullptr), 0);
    for (ZLR_task **one : {&task, &moved}) {
        ASSERT_EQ(ZLR_makeemptytask(env, one), 0);
        ASSERT_EQ(ZLR_readdata(*one, file.c_str()), 0);
        ASSERT_EQ(ZLR_optimize(*one), 0);
    }
    ASSERT_EQ(ZLR_getprimalobj(task, ZLR_SOL_BAS, &objective), 0);
    const std::vector<number> all = numbers_of(task);
    for (size_t k = 0; k < all.size(); k += std::max<size_t>(1, all.size() / num_asked)) {
        const number &n = all[k];
        double lp = 0.0, rp = 0.0, lr = 0.0, rr = 0.0;
        SCOPED_TRACE("kind " + std::to_string(n.what) + " number " + std::to_string(n.index) + " mark " +
                     std::to_string(n.mark));
        if (n.what == COST)
            ASSERT_EQ(ZLR_dualsensitivity(task, 1, &n.index, &lp, &rp, &lr, &rr), 0);
        else if (n.what == ROW)
            ASSERT_EQ(ZLR_primalsensitivity(task, 1, &n.index, &n.mark, 0, nullptr, nullptr, &lp, &rp, &lr, &rr,
                                            nullptr, nullptr, nullptr, nullptr),
                      0);
        else
            ASSERT_EQ(ZLR_primalsensitivity(task, 0, nullptr, nullptr, 1, &n.index, &n.mark, nullptr, nullptr, nullptr,
                                            nullptr, &lp, &rp, &lr, &rr),
                      0);
        expect_slope(moved, n, objective, lp, lr, false);
        expect_slope(moved, n, objective, rp, rr, true);
    }
    EXPECT_EQ(ZLR_deletetask(&task), 0);
    EXPECT_EQ(ZLR_deletetask(&moved), 0);
    EXPECT_EQ(ZLR_deleteenv(&env), 0);
}

INSTANTIATE_TEST_SUITE_P(data, netlib_sensitivity,
                         testing::Values("kb2.mps", "blend.mps", "scorpion.mps.gz", "degen2.mps.gz", "bnl1.mps.gz"));
