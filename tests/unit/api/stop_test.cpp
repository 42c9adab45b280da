/* Stops, limits and the log through the interface, on a problem that takes long. */
#include "api_support.h"

#include <chrono>
#include <random>

/* A problem that branch and cut does not finish within a test: a knapsack equality with large, odd weights. */
static api_model hard_integer()
{
    api_model m = {ZLR_SENSE_MIN, {}, {}, {}, {}, {}, 0.0};
    for (int32_t i = 0; i < 6; i++) m.rows.push_back({0.0, 0.0, {}});
    std::mt19937 random(3);
    for (int32_t j = 0; j < 60; j++) {
        for (size_t i = 0; i < 6; i++) {
            const auto weight = static_cast<double>(random() % 100);
            m.rows[i].a.push_back(weight);
            m.rows[i].lower += weight / 2.0;
        }
        m.c.push_back(0.0);
        m.lower.push_back(0.0);
        m.upper.push_back(1.0);
        m.integers.push_back(j);
    }
    for (api_row &row : m.rows) row.lower = row.upper = std::floor(row.lower);
    for (api_row &row : m.rows) row.a.resize(72, 0.0);
    for (size_t i = 0; i < 6; i++) { /* what is over and under is what costs */
        m.rows[i].a[60 + 2 * i] = 1.0;
        m.rows[i].a[61 + 2 * i] = -1.0;
    }
    for (int32_t k = 0; k < 12; k++) {
        m.c.push_back(1.0);
        m.lower.push_back(0.0);
        m.upper.push_back(inf);
    }
    return m;
}

struct stopper {
    std::chrono::steady_clock::time_point begin = std::chrono::steady_clock::now(), asked{};
    double after_s = 0.0;
    int32_t calls = 0;
};

static int32_t stop_when_due(ZLR_task *, void *handle, const ZLR_progress *)
{
    auto *s = static_cast<stopper *>(handle);
    s->calls++;
    if (std::chrono::duration<double>(std::chrono::steady_clock::now() - s->begin).count() < s->after_s) return 0;
    if (s->asked.time_since_epoch().count() == 0) s->asked = std::chrono::steady_clock::now();
    return 1;
}

TEST_F(api_optimize, a_stop_is_served_within_a_fifth_of_a_second_and_keeps_the_point)
{
    for (const double after_s : {0.0, 0.02, 0.6}) {
        SCOPED_TRACE(after_s);
        stopper s;
        renew();
        fill(task, hard_integer());
        s.after_s = after_s;
        s.begin = std::chrono::steady_clock::now();
        ASSERT_EQ(ZLR_RES_OK, ZLR_putcallbackfunc(task, stop_when_due, &s));
        EXPECT_EQ(ZLR_RES_TRM_USER_STOP, ZLR_optimize(task));
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - s.asked;
        EXPECT_LT(took.count(), 0.3); /* 0.2, and room for a loaded machine */
        EXPECT_GE(s.calls, after_s > 0.5 ? 10 : 1);
        if (after_s < 0.5) continue;
        const api_solution sol = get_solution(task, ZLR_SOL_ITG);
        EXPECT_EQ(ZLR_SOLSTA_PRIM_FEAS, sol.solsta);
        EXPECT_GE(sol.primal, sol.dual); /* the incumbent and the bound */
    }
}

TEST_F(api_optimize, limits_have_their_codes)
{
    struct {
        const char *name, *value;
        int32_t code;
    } cases[] = {
        {"TIME_LIMIT", "0.3", ZLR_RES_TRM_TIME_LIMIT},          {"TIME_LIMIT", "0", ZLR_RES_TRM_TIME_LIMIT},
        {"MIP_MAX_SOLUTIONS", "1", ZLR_RES_TRM_MAX_SOLUTIONS},  {"MIP_MAX_NODES", "1", ZLR_RES_TRM_MAX_NODES},
        {"MIP_OBJECTIVE_TARGET", "1e6", ZLR_RES_TRM_OBJECTIVE},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        renew();
        fill(task, hard_integer());
        ASSERT_EQ(ZLR_RES_OK, ZLR_putparam(task, c.name, c.value));
        EXPECT_EQ(c.code, ZLR_optimize(task)) << log;
    }
    renew();
    fill(task, two_rows(ZLR_SENSE_MIN));
    ASSERT_EQ(ZLR_RES_OK, ZLR_putparam(task, "SIMPLEX_MAX_ITERATIONS", "0"));
    ASSERT_EQ(ZLR_RES_OK, ZLR_putparam(task, "PRESOLVE_LEVEL", "OFF"));
    EXPECT_EQ(ZLR_RES_TRM_MAX_ITERATIONS, ZLR_optimize(task)) << log;
}

TEST_F(api_optimize, a_given_integer_point_is_the_start_and_survives_a_stop)
{
    const api_model m = hard_integer();
    std::vector<double> x(72, 0.0);
    for (size_t i = 0; i < 6; i++) x[60 + 2 * i] = m.rows[i].lower; /* nothing packed, everything missing */
    fill(task, m);
    ASSERT_EQ(ZLR_RES_OK, ZLR_putsolution(task, ZLR_SOL_ITG, nullptr, nullptr, nullptr, nullptr, x.data(), nullptr,
                                          nullptr, nullptr, nullptr, nullptr, nullptr));
    ASSERT_EQ(ZLR_RES_OK, ZLR_putparam(task, "TIME_LIMIT", "0"));
    EXPECT_EQ(ZLR_RES_TRM_TIME_LIMIT, ZLR_optimize(task));
    const api_solution sol = get_solution(task, ZLR_SOL_ITG);
    EXPECT_EQ(ZLR_SOLSTA_PRIM_FEAS, sol.solsta);
    EXPECT_EQ(x, sol.xx);
}

TEST_F(api_optimize, the_log_level_silences_and_the_table_fits_80_columns)
{
    fill(task, hard_integer());
    ASSERT_EQ(ZLR_RES_OK, ZLR_putparam(task, "TIME_LIMIT", "0.5"));
    EXPECT_EQ(ZLR_RES_TRM_TIME_LIMIT, ZLR_optimize(task));
    EXPECT_NE(std::string::npos, log.find("Incumbent"));
    size_t lines = 0, begin = 0;
    for (size_t end = log.find('\n'); end != std::string::npos; begin = end + 1, end = log.find('\n', begin), lines++)
        EXPECT_LE(end - begin, 80u) << log.substr(begin, end - begin);
    EXPECT_GE(lines, 3u);

    renew();
    fill(task, hard_integer());
    ASSERT_EQ(ZLR_RES_OK, ZLR_putparam(task, "TIME_LIMIT", "0.2"));
    ASSERT_EQ(ZLR_RES_OK, ZLR_putintparam(task, ZLR_IPAR_LOG_LEVEL, 0));
    EXPECT_EQ(ZLR_RES_TRM_TIME_LIMIT, ZLR_optimize(task));
    EXPECT_EQ("", log);
}
