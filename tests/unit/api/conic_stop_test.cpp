/* conic_stop_test.cpp - stops and time limits while quadratic parts are factored, where no engine runs yet. */
#include "api_support.h"

#include <chrono>
#include <map>
#include <random>

typedef std::chrono::steady_clock stop_clock;

static double seconds_since(stop_clock::time_point begin)
{
    return std::chrono::duration<double>(stop_clock::now() - begin).count();
}

/* The lower triangle of F'F + I for random F with `per_row` entries of +-1 a row: definite, and its factor is nearly full. */
struct sparse_form {
    std::vector<int32_t> i, j;
    std::vector<double> value;
};

static sparse_form random_form(int32_t columns, int32_t per_row)
{
    std::mt19937 random(1);
    std::map<std::pair<int32_t, int32_t>, double> sum;
    for (int32_t j = 0; j < columns; j++) sum[{j, j}] = 1.0;
    for (int32_t r = 0; r < columns; r++) {
        std::vector<std::pair<int32_t, double>> row;
        for (int32_t k = 0; k < per_row; k++)
            row.emplace_back(static_cast<int32_t>(random() % static_cast<uint32_t>(columns)),
                             random() % 2 == 0 ? 1.0 : -1.0);
        for (const auto &a : row)
            for (const auto &b : row)
                if (a.first >= b.first) sum[{a.first, b.first}] += a.second * b.second;
    }
    sparse_form form;
    for (const auto &[at, value] : sum) {
        if (value == 0.0) continue;
        form.i.push_back(at.first);
        form.j.push_back(at.second);
        form.value.push_back(value);
    }
    return form;
}

/* Minimise the sum of x >= 1, with the form in the objective, or in a row that is at most 1e9. */
static void fill_quadratic(ZLR_task *task, int32_t columns, int32_t per_row, bool in_row)
{
    const sparse_form form = random_form(columns, per_row);
    const auto num = static_cast<int32_t>(form.value.size());
    ASSERT_EQ(0, ZLR_appendvars(task, columns));
    ASSERT_EQ(0, ZLR_appendcons(task, 1));
    for (int32_t j = 0; j < columns; j++) {
        const double one = 1.0;
        ASSERT_EQ(0, ZLR_putclist(task, 1, &j, &one));
        ASSERT_EQ(0, ZLR_putvarbound(task, j, ZLR_BK_LO, 1.0, inf));
    }
    if (in_row) {
        ASSERT_EQ(0, ZLR_putconbound(task, 0, ZLR_BK_UP, -inf, 1e9));
        ASSERT_EQ(0, ZLR_putqconk(task, 0, num, form.i.data(), form.j.data(), form.value.data()));
    } else {
        ASSERT_EQ(0, ZLR_putqobj(task, num, form.i.data(), form.j.data(), form.value.data()));
    }
}

struct conic_stopper {
    stop_clock::time_point begin = stop_clock::now(), asked{};
    double after_s = 0.0;
    int32_t calls = 0;
};

static int32_t stop_after(ZLR_task *, void *handle, const ZLR_progress *)
{
    auto *s = static_cast<conic_stopper *>(handle);
    s->calls++;
    if (seconds_since(s->begin) < s->after_s) return 0;
    if (s->asked.time_since_epoch().count() == 0) s->asked = stop_clock::now();
    return 1;
}

static constexpr int32_t many_columns = 12000; /* most of a minute on a fast machine */
static constexpr double allowance_s = 1.0;     /* 0.2 is what is asked; room for a loaded machine and sanitizers */

static void expect_stop(ZLR_task *task, int32_t (*entry)(ZLR_task *), double after_s)
{
    conic_stopper s;
    s.after_s = after_s;
    ASSERT_EQ(0, ZLR_putcallbackfunc(task, stop_after, &s));
    s.begin = stop_clock::now();
    EXPECT_EQ(ZLR_RES_TRM_USER_STOP, entry(task));
    const double took_s = seconds_since(s.asked);
    EXPECT_LT(took_s, allowance_s);
    EXPECT_GE(s.calls, 1 + static_cast<int32_t>(after_s * 10.0)) << "polled too seldom";
    testing::Test::RecordProperty("stop_ms", static_cast<int>(1000.0 * took_s));
    ASSERT_EQ(0, ZLR_putcallbackfunc(task, nullptr, nullptr));
}

/* A point given by the user, which must outlive a stop. */
static void put_point(ZLR_task *task, double value)
{
    const std::vector<double> x(static_cast<size_t>(many_columns), value);
    ASSERT_EQ(0, ZLR_putsolution(task, ZLR_SOL_ITR, nullptr, nullptr, nullptr, nullptr, x.data(), nullptr, nullptr,
                                 nullptr, nullptr, nullptr, nullptr));
}

static void expect_point(ZLR_task *task, double value)
{
    const api_solution sol = get_solution(task, ZLR_SOL_ITR);
    EXPECT_EQ(std::vector<double>(static_cast<size_t>(many_columns), value), sol.xx);
    EXPECT_NE(ZLR_SOLSTA_OPTIMAL, sol.solsta);
}

TEST_F(api_optimize, a_stop_during_the_convexity_check_is_served_and_keeps_the_solution)
{
    fill_quadratic(task, many_columns, 8, false);
    put_point(task, 3.0);
    for (const double after_s : {0.0, 0.4}) {
        SCOPED_TRACE(after_s);
        expect_stop(task, ZLR_optimize, after_s);
        expect_point(task, 3.0);
        EXPECT_EQ(0, defined(ZLR_SOL_BAS));
    }
    /* The task is its caller's again, whatever the thread that was left still reads. */
    const double other = 7.0;
    const int32_t first = 0;
    std::vector<double> cost(static_cast<size_t>(many_columns));
    ASSERT_EQ(0, ZLR_putclist(task, 1, &first, &other));
    ASSERT_EQ(0, ZLR_getc(task, cost.data()));
    EXPECT_EQ(7.0, cost[0]);
}

TEST_F(api_optimize, the_time_limit_ends_the_convexity_check)
{
    fill_quadratic(task, many_columns, 8, false);
    put_point(task, 2.0);
    for (const char *limit : {"0", "0.5"}) {
        SCOPED_TRACE(limit);
        ASSERT_EQ(0, ZLR_putparam(task, "TIME_LIMIT", limit));
        const stop_clock::time_point begin = stop_clock::now();
        EXPECT_EQ(ZLR_RES_TRM_TIME_LIMIT, ZLR_optimize(task));
        EXPECT_LT(seconds_since(begin), std::atof(limit) + allowance_s);
        expect_point(task, 2.0);
    }
}

TEST_F(api_optimize, a_stop_during_the_conic_form_leaves_the_task_as_it_was)
{
    int32_t rows = 0, columns = 0, type = -1;
    fill_quadratic(task, many_columns, 8, true);
    put_point(task, 2.0);
    expect_stop(task, ZLR_toconic, 0.4);
    expect_point(task, 2.0);
    expect_stop(task, ZLR_optimize, 0.4);
    expect_point(task, 2.0);
    ASSERT_EQ(0, ZLR_getnumcon(task, &rows));
    ASSERT_EQ(0, ZLR_getnumvar(task, &columns));
    ASSERT_EQ(0, ZLR_getprobtype(task, &type));
    EXPECT_EQ(1, rows);
    EXPECT_EQ(many_columns, columns);
    EXPECT_EQ(ZLR_PROBTYPE_QCQO, type);
}

/* Long enough for a thread of its own, short enough to come to its end: the outcome is that of the calling thread. */
TEST_F(api_optimize, work_on_a_thread_of_its_own_comes_to_the_same)
{
    conic_stopper never;
    int32_t cones = 0;
    never.after_s = 1e9;
    fill_quadratic(task, 1500, 4, true);
    ASSERT_EQ(0, ZLR_putcallbackfunc(task, stop_after, &never));
    ASSERT_EQ(0, ZLR_toconic(task)) << log;
    EXPECT_GE(never.calls, 1) << "this was meant to take longer";
    EXPECT_NE(std::string::npos, log.find("Conic form: 1 cone, for 1 convex row\n  New        1502 columns, 1500 rows"))
        << log;
    ASSERT_EQ(0, ZLR_getnumcone(task, &cones));
    EXPECT_EQ(1, cones);
}
