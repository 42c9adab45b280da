/* clarabel_shim_test.cpp - the C interface to Clarabel, as clarabel_shim.h promises it: bad data and panics become codes. */
#ifdef ZELOR_CLARABEL_MODULE /* builds with the engine */
#include "solver/engines/clarabel/clarabel_shim.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <utility>

/* minimise x0^2 + x1^2 subject to x0 + x1 = 2, x0 <= 0.5: (0.5, 1.5). */
struct shim_data {
    int64_t p_start[3] = {0, 1, 2}, p_row[2] = {0, 1}, a_start[3] = {0, 2, 3}, a_row[3] = {0, 1, 0};
    double p_value[2] = {2.0, 2.0}, a_value[3] = {1.0, 1.0, 1.0}, q[2] = {0.0, 0.0}, b[2] = {2.0, 0.5};
    zlr_clarabel_cone cones[2] = {{ZLR_CLARABEL_ZERO, 1}, {ZLR_CLARABEL_NONNEGATIVE, 1}};
    zlr_clarabel_problem problem = {{2, 2, p_start, p_row, p_value}, q, {2, 2, a_start, a_row, a_value}, b, cones, 2};

    shim_data() = default;
    shim_data(const shim_data &) = delete; /* the problem points into the record */
    shim_data &operator=(const shim_data &) = delete;
};

class clarabel_shim : public testing::Test
{
protected:
    void SetUp() override
    {
        settings = zlr_clarabel_settings_new();
        ASSERT_NE(settings, nullptr);
    }
    void TearDown() override
    {
        zlr_clarabel_free(solver);
        zlr_clarabel_settings_free(settings);
    }
    int32_t load(const shim_data &from)
    {
        return zlr_clarabel_new(&from.problem, settings, &solver, message, sizeof message);
    }

    shim_data data;
    zlr_clarabel_settings *settings = nullptr;
    zlr_clarabel_solver *solver = nullptr;
    zlr_clarabel_result result = {};
    char message[128] = "before";
};

TEST_F(clarabel_shim, solves)
{
    ASSERT_EQ(load(data), ZLR_CLARABEL_OK) << message;
    EXPECT_STREQ(message, "");
    EXPECT_EQ(zlr_clarabel_get_result(solver, &result), ZLR_CLARABEL_STATE);
    for (int round = 0; round < 2; round++) { /* a solver may be used again */
        ASSERT_EQ(zlr_clarabel_solve(solver, nullptr, nullptr, message, sizeof message), ZLR_CLARABEL_OK) << message;
        ASSERT_EQ(zlr_clarabel_get_result(solver, &result), ZLR_CLARABEL_OK);
        EXPECT_EQ(result.status, ZLR_CLARABEL_SOLVED);
        ASSERT_EQ(result.num_columns, 2);
        ASSERT_EQ(result.num_rows, 2);
        EXPECT_NEAR(result.x[0], 0.5, 1e-7);
        EXPECT_NEAR(result.x[1], 1.5, 1e-7);
        EXPECT_NEAR(result.z[0], -3.0, 1e-6); /* 2 x1 + z0 = 0 */
        EXPECT_NEAR(result.z[1], 2.0, 1e-6);
        EXPECT_NEAR(result.s[1], 0.0, 1e-6);
        EXPECT_NEAR(result.primal_obj, 2.5, 1e-6);
        EXPECT_NEAR(result.dual_obj, 2.5, 1e-6);
        EXPECT_LT(std::max(result.primal_residual, result.dual_residual), 1e-7);
        EXPECT_GT(result.iterations, 1);
        EXPECT_GT(result.time_s, 0.0);
    }
}

TEST_F(clarabel_shim, callback_is_called_at_every_iteration_and_stops)
{
    struct watch {
        int64_t calls = 0, stop_at = -1;
        double gap = 0.0;
    } w;
    const zlr_clarabel_callback count = [](void *user, const zlr_clarabel_progress *news) -> int32_t {
        auto *seen = static_cast<watch *>(user);
        EXPECT_EQ(news->iterations, seen->calls);
        seen->calls++;
        seen->gap = news->gap_abs;
        return news->iterations == seen->stop_at ? 1 : 0;
    };
    ASSERT_EQ(load(data), ZLR_CLARABEL_OK);
    ASSERT_EQ(zlr_clarabel_solve(solver, count, &w, nullptr, 0), ZLR_CLARABEL_OK);
    ASSERT_EQ(zlr_clarabel_get_result(solver, &result), ZLR_CLARABEL_OK);
    EXPECT_EQ(w.calls, result.iterations + 1);
    EXPECT_LT(w.gap, 1e-6);

    w = {0, 2, 0.0};
    ASSERT_EQ(zlr_clarabel_solve(solver, count, &w, nullptr, 0), ZLR_CLARABEL_OK);
    ASSERT_EQ(zlr_clarabel_get_result(solver, &result), ZLR_CLARABEL_OK);
    EXPECT_EQ(result.status, ZLR_CLARABEL_STOPPED);
    EXPECT_EQ(result.iterations, 2);
}

TEST_F(clarabel_shim, bad_data_is_told)
{
    static constexpr double nan = std::numeric_limits<double>::quiet_NaN(),
                            inf = std::numeric_limits<double>::infinity();
    static constexpr int64_t many = std::numeric_limits<int64_t>::max();
    static const struct {
        const char *text; /* part of the message */
        void (*spoil)(shim_data *d);
    } cases[] = {
        {"entry 1 of q is NaN", [](shim_data *d) { d->q[1] = nan; }},
        {"entry 0 of b is inf", [](shim_data *d) { d->b[0] = inf; }},
        {"entry 2 of A is NaN", [](shim_data *d) { d->a_value[2] = nan; }},
        {"entry 0 of P is -inf", [](shim_data *d) { d->p_value[0] = -inf; }},
        {"q is null", [](shim_data *d) { d->problem.q = nullptr; }},
        {"starts of a matrix is null", [](shim_data *d) { d->problem.a.start = nullptr; }},
        {"P has entries below its diagonal", [](shim_data *d) { d->p_row[0] = 1; }},
        {"P is not square", [](shim_data *d) { d->problem.p.rows = 3; }},
        {"P is not square", [](shim_data *d) { d->problem.p.columns = 1; }},
        {"A has -1 rows", [](shim_data *d) { d->problem.a.rows = -1; }},
        {"A has too many columns", [](shim_data *d) { d->problem.a.columns = many; }},
        {"starts of A do not ascend", [](shim_data *d) { d->a_start[1] = 4; }},
        {"starts of A do not ascend", [](shim_data *d) { d->a_start[0] = 1; }},
        {"an entry of the row numbers", [](shim_data *d) { d->a_row[1] = -1; }},
        {"A: Row value exceeds", [](shim_data *d) { d->a_row[1] = 2; }},
        {"A: ", [](shim_data *d) { std::swap(d->a_row[0], d->a_row[1]); }},
        {"do not add up", [](shim_data *d) { d->problem.num_cones = 1; }},
        {"do not add up", [](shim_data *d) { d->cones[1].size = many; }},
        {"do not add up", [](shim_data *d) { d->problem.a.rows = 3; }},
        {"the size of a cone is negative", [](shim_data *d) { d->cones[0].size = -1; }},
        {"the size of the list of cones", [](shim_data *d) { d->problem.num_cones = -1; }},
        {"no cone of kind 7", [](shim_data *d) { d->cones[0].kind = 7; }},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.text);
        shim_data bad;
        c.spoil(&bad);
        EXPECT_EQ(load(bad), ZLR_CLARABEL_DATA);
        EXPECT_EQ(solver, nullptr);
        EXPECT_NE(std::string(message).find(c.text), std::string::npos) << message;
    }
}

TEST_F(clarabel_shim, panic_becomes_a_code)
{
    testing::internal::CaptureStderr();
    EXPECT_EQ(zlr_clarabel_provoke(message, sizeof message), ZLR_CLARABEL_PANIC);
    EXPECT_EQ(zlr_clarabel_provoke(nullptr, 0), ZLR_CLARABEL_PANIC);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_STREQ(message, "provoked");
    EXPECT_EQ(load(data), ZLR_CLARABEL_OK) << "nothing is left behind";
}

TEST_F(clarabel_shim, messages_are_cut_to_fit)
{
    char text[6] = "-----";
    EXPECT_EQ(zlr_clarabel_provoke(text, 5), ZLR_CLARABEL_PANIC);
    EXPECT_STREQ(text, "prov");
    EXPECT_EQ(zlr_clarabel_provoke(text, 1), ZLR_CLARABEL_PANIC);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(text[1], 'r');
    EXPECT_EQ(zlr_clarabel_provoke(text, -1), ZLR_CLARABEL_PANIC);
}

TEST_F(clarabel_shim, null_is_told)
{
    EXPECT_EQ(zlr_clarabel_new(nullptr, settings, &solver, nullptr, 0), ZLR_CLARABEL_NULL);
    EXPECT_EQ(zlr_clarabel_new(&data.problem, nullptr, &solver, nullptr, 0), ZLR_CLARABEL_NULL);
    EXPECT_EQ(zlr_clarabel_new(&data.problem, settings, nullptr, nullptr, 0), ZLR_CLARABEL_NULL);
    EXPECT_EQ(zlr_clarabel_solve(nullptr, nullptr, nullptr, nullptr, 0), ZLR_CLARABEL_NULL);
    EXPECT_EQ(zlr_clarabel_get_result(nullptr, &result), ZLR_CLARABEL_NULL);
    EXPECT_EQ(zlr_clarabel_put_number(nullptr, "max_iter", 1.0), ZLR_CLARABEL_NULL);
    EXPECT_EQ(zlr_clarabel_put_number(settings, nullptr, 1.0), ZLR_CLARABEL_NULL);
    EXPECT_EQ(zlr_clarabel_put_text(settings, "direct_solve_method", nullptr), ZLR_CLARABEL_NULL);
    EXPECT_EQ(zlr_clarabel_get_number(settings, "max_iter", nullptr), ZLR_CLARABEL_NULL);
    zlr_clarabel_free(nullptr);
    zlr_clarabel_settings_free(nullptr);
}

TEST_F(clarabel_shim, settings_take_what_fits_them)
{
    static const struct {
        const char *name;
        double value;
        int32_t code;
    } cases[] = {
        {"tol_feas", 1e-3, ZLR_CLARABEL_OK},
        {"tol_feas", -1e-3, ZLR_CLARABEL_VALUE},
        {"tol_feas", std::numeric_limits<double>::quiet_NaN(), ZLR_CLARABEL_VALUE},
        {"time_limit", 12.5, ZLR_CLARABEL_OK},
        {"max_iter", 7.0, ZLR_CLARABEL_OK},
        {"max_iter", 0.0, ZLR_CLARABEL_OK},
        {"max_iter", 7.5, ZLR_CLARABEL_VALUE},
        {"max_iter", -1.0, ZLR_CLARABEL_VALUE},
        {"max_iter", 4294967296.0, ZLR_CLARABEL_VALUE},
        {"presolve_enable", 0.0, ZLR_CLARABEL_OK},
        {"presolve_enable", 2.0, ZLR_CLARABEL_VALUE},
        {"direct_solve_method", 0.0, ZLR_CLARABEL_VALUE},
        {"verbose", 1.0, ZLR_CLARABEL_OPTION},
        {"", 1.0, ZLR_CLARABEL_OPTION},
        {"\xff", 1.0, ZLR_CLARABEL_OPTION},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        double before = 0.0, now = 0.0;
        const int32_t known = zlr_clarabel_get_number(settings, c.name, &before);
        EXPECT_EQ(known == ZLR_CLARABEL_OPTION, c.code == ZLR_CLARABEL_OPTION);
        EXPECT_EQ(zlr_clarabel_put_number(settings, c.name, c.value), c.code) << c.value;
        if (known != ZLR_CLARABEL_OK) continue;
        EXPECT_EQ(zlr_clarabel_get_number(settings, c.name, &now), ZLR_CLARABEL_OK);
        EXPECT_EQ(now, c.code == ZLR_CLARABEL_OK ? c.value : before);
    }
    EXPECT_EQ(zlr_clarabel_put_text(settings, "direct_solve_method", "qdldl"), ZLR_CLARABEL_OK);
    EXPECT_EQ(zlr_clarabel_put_text(settings, "direct_solve_method", "faer"), ZLR_CLARABEL_VALUE);
    EXPECT_EQ(zlr_clarabel_put_text(settings, "max_iter", "7"), ZLR_CLARABEL_VALUE);
    EXPECT_EQ(zlr_clarabel_put_text(settings, "colour", "red"), ZLR_CLARABEL_OPTION);
}

#endif
