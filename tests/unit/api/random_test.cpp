/* random_test.cpp - tiny random problems against exact answers: no wrong status, no wrong objective, no point that is
 * not feasible. ZELOR_RANDOM_COUNT sets how many (default 2000); ZELOR_RANDOM_SEED where they begin. */
#include "enumerator.h"
#include "zelor.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <random>
#include <string>

static int64_t env_number(const char *name, int64_t fallback)
{
    const char *text = std::getenv(name);
    return text != nullptr ? std::strtoll(text, nullptr, 10) : fallback;
}

static int64_t draw(std::mt19937_64 *rng, int64_t from, int64_t to)
{
    return from + static_cast<int64_t>((*rng)() % static_cast<uint64_t>(to - from + 1));
}

/* Two sides of one of the five kinds, sometimes crossed. */
static void draw_sides(std::mt19937_64 *rng, int64_t *lower, int64_t *upper, bool finite)
{
    const int64_t a = draw(rng, -6, 6);
    const int64_t b = a + draw(rng, 0, 6);
    switch (finite ? 4 : draw(rng, 0, 5)) {
    case 0: *lower = a, *upper = exact_none; break;
    case 1: *lower = -exact_none, *upper = b; break;
    case 2: *lower = a, *upper = a; break;
    case 3: *lower = -exact_none, *upper = exact_none; break;
    default: *lower = a, *upper = b; break;
    }
    if (!finite && *lower != -exact_none && *upper != exact_none && draw(rng, 0, 60) == 0) std::swap(*lower, *upper);
}

static exact_problem draw_problem(uint64_t seed)
{
    std::mt19937_64 rng(seed);
    exact_problem p;
    p.num_var = static_cast<int32_t>(draw(&rng, 1, 4));
    const auto num_con = static_cast<size_t>(draw(&rng, 0, 4));
    const bool integers = draw(&rng, 0, 1) == 1;
    p.maximise = draw(&rng, 0, 1) == 1;
    for (int32_t j = 0; j < p.num_var; ++j) {
        int64_t lower = 0;
        int64_t upper = 0;
        p.is_int.push_back(integers && draw(&rng, 0, 2) > 0);
        draw_sides(&rng, &lower, &upper, p.is_int.back());
        p.var_lower.push_back(lower);
        p.var_upper.push_back(upper);
        p.c.push_back(draw(&rng, -4, 4));
    }
    for (size_t i = 0; i < num_con; ++i) {
        int64_t lower = 0;
        int64_t upper = 0;
        draw_sides(&rng, &lower, &upper, false);
        p.row_lower.push_back(lower);
        p.row_upper.push_back(upper);
        p.row.emplace_back();
        for (int32_t j = 0; j < p.num_var; ++j) p.row.back().push_back(draw(&rng, 0, 2) == 0 ? 0 : draw(&rng, -5, 5));
    }
    return p;
}

static double side(int64_t value)
{
    if (value == exact_none) return INFINITY;
    return value == -exact_none ? -INFINITY : static_cast<double>(value);
}

static int32_t key_of(int64_t lower, int64_t upper)
{
    if (lower == -exact_none) return upper == exact_none ? ZLR_BK_FR : ZLR_BK_UP;
    if (upper == exact_none) return ZLR_BK_LO;
    return lower == upper ? ZLR_BK_FX : ZLR_BK_RA;
}

static void fill_task(ZLR_task *task, const exact_problem *p)
{
    const auto num_con = static_cast<int32_t>(p->row.size());
    ASSERT_EQ(ZLR_appendcons(task, num_con), 0);
    ASSERT_EQ(ZLR_appendvars(task, p->num_var), 0);
    ASSERT_EQ(ZLR_putobjsense(task, p->maximise ? ZLR_SENSE_MAX : ZLR_SENSE_MIN), 0);
    for (int32_t i = 0; i < num_con; ++i) {
        const auto at = static_cast<size_t>(i);
        ASSERT_EQ(ZLR_putconbound(task, i, key_of(p->row_lower[at], p->row_upper[at]), side(p->row_lower[at]),
                                  side(p->row_upper[at])),
                  0);
    }
    for (int32_t j = 0; j < p->num_var; ++j) {
        const auto at = static_cast<size_t>(j);
        const double c = static_cast<double>(p->c[at]);
        std::vector<int32_t> sub;
        std::vector<double> value;
        for (int32_t i = 0; i < num_con; ++i) {
            sub.push_back(i);
            value.push_back(static_cast<double>(p->row[static_cast<size_t>(i)][at]));
        }
        ASSERT_EQ(ZLR_putvarbound(task, j, key_of(p->var_lower[at], p->var_upper[at]), side(p->var_lower[at]),
                                  side(p->var_upper[at])),
                  0);
        ASSERT_EQ(ZLR_putclist(task, 1, &j, &c), 0);
        ASSERT_EQ(ZLR_putacol(task, j, num_con, sub.data(), value.data()), 0);
        if (p->is_int[at]) {
            ASSERT_EQ(ZLR_putvartype(task, j, ZLR_VAR_INT), 0);
        }
    }
}

static void expect_point_feasible(const exact_problem *p, const std::vector<double> &x)
{
    const double tol = 1e-6;
    for (size_t j = 0; j < x.size(); ++j) {
        EXPECT_GE(x[j], side(p->var_lower[j]) - tol);
        EXPECT_LE(x[j], side(p->var_upper[j]) + tol);
        if (p->is_int[j]) {
            EXPECT_NEAR(x[j], std::round(x[j]), tol);
        }
    }
    for (size_t i = 0; i < p->row.size(); ++i) {
        double activity = 0.0;
        for (size_t j = 0; j < x.size(); ++j) activity += static_cast<double>(p->row[i][j]) * x[j];
        EXPECT_GE(activity, side(p->row_lower[i]) - tol);
        EXPECT_LE(activity, side(p->row_upper[i]) + tol);
    }
}

/* Duals of a linear optimum must prove the objective: checked here by the weak duality bound, from the data alone. */
static void expect_duals_prove(const exact_problem *p, const std::vector<double> &y, double objective)
{
    const double sign = p->maximise ? -1.0 : 1.0;
    double bound = 0.0;
    const auto add = [&](double dual, double lower, double upper) {
        const double s = sign * dual;
        if (s > 1e-7) {
            ASSERT_TRUE(std::isfinite(lower)) << "a dual on a side that does not exist";
            bound += dual * lower;
        } else if (s < -1e-7) {
            ASSERT_TRUE(std::isfinite(upper)) << "a dual on a side that does not exist";
            bound += dual * upper;
        }
    };
    for (size_t i = 0; i < p->row.size(); ++i) add(y[i], side(p->row_lower[i]), side(p->row_upper[i]));
    for (size_t j = 0; j < p->c.size(); ++j) {
        double reduced = static_cast<double>(p->c[j]);
        for (size_t i = 0; i < p->row.size(); ++i) reduced -= y[i] * static_cast<double>(p->row[i][j]);
        add(reduced, side(p->var_lower[j]), side(p->var_upper[j]));
    }
    EXPECT_NEAR(bound, objective, 1e-6 * (1.0 + std::fabs(objective)));
}

static void expect_answer(ZLR_task *task, const exact_problem *p, const exact_answer *want, int32_t kind)
{
    int32_t solsta = -1;
    double objective = 0.0;
    std::vector<double> x(p->c.size()), y(p->row.size());
    ASSERT_EQ(ZLR_getsolution(task, kind, nullptr, &solsta, nullptr, nullptr, nullptr, nullptr, x.data(), y.data(),
                              nullptr, nullptr, nullptr, nullptr, nullptr),
              0);
    switch (want->status) {
    case EXACT_OPTIMAL:
        ASSERT_EQ(solsta, kind == ZLR_SOL_ITG ? ZLR_SOLSTA_INTEGER_OPTIMAL : ZLR_SOLSTA_OPTIMAL);
        ASSERT_EQ(ZLR_getprimalobj(task, kind, &objective), 0);
        EXPECT_NEAR(objective, want->objective, 1e-6 * (1.0 + std::fabs(want->objective)));
        expect_point_feasible(p, x);
        if (kind != ZLR_SOL_ITG) expect_duals_prove(p, y, want->objective);
        break;
    case EXACT_INFEASIBLE: EXPECT_EQ(solsta, ZLR_SOLSTA_PRIM_INFEAS_CER); break;
    case EXACT_UNBOUNDED: EXPECT_EQ(solsta, ZLR_SOLSTA_DUAL_INFEAS_CER); break;
    }
}

TEST(random_problems, statuses_and_objectives_are_exact)
{
    const int64_t count = env_number("ZELOR_RANDOM_COUNT", 2000);
    const int64_t first = env_number("ZELOR_RANDOM_SEED", 1);
    /* In turn: the library's choice, each simplex, interior point. */
    const char *optimizers[] = {"FREE", "INTPNT", "DUAL_SIMPLEX", "PRIMAL_SIMPLEX"};

    ZLR_env *env = nullptr;
    ASSERT_EQ(ZLR_makeenv(&env, nullptr), 0);
    for (int64_t k = 0; k < count && !::testing::Test::HasFailure(); ++k) {
        const auto seed = static_cast<uint64_t>(first + k);
        const exact_problem p = draw_problem(seed);
        const exact_answer want = exact_solve(&p);
        bool mixed = false;
        for (bool is_int : p.is_int) mixed = mixed || is_int;

        ZLR_task *task = nullptr;
        ASSERT_EQ(ZLR_makeemptytask(env, &task), 0);
        SCOPED_TRACE("seed " + std::to_string(seed) + " " + optimizers[k % 4]);
        ASSERT_NO_FATAL_FAILURE(fill_task(task, &p));
        ASSERT_EQ(ZLR_putparam(task, "OPTIMIZER", optimizers[k % 4]), 0);
        ASSERT_EQ(ZLR_putparam(task, "TIME_LIMIT", "20"), 0); /* what hangs is to be told with its seed */
        EXPECT_EQ(ZLR_optimize(task), 0);
        expect_answer(task, &p, &want, mixed ? ZLR_SOL_ITG : ZLR_SOL_BAS);
        if (HasFailure()) ZLR_writedata(task, "random-failure.lp");
        ZLR_deletetask(&task);
    }
    EXPECT_EQ(ZLR_deleteenv(&env), 0);
}
