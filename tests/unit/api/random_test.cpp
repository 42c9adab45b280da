/* random_test.cpp - tiny random problems against exact answers: no wrong status, no wrong objective, no point that is
 * not feasible. ZELOR_RANDOM_COUNT sets how many (default 2000); ZELOR_RANDOM_SEED where they begin. */
#include "random_problem.h"
#include "zelor.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

static void expect_point_feasible(const exact_problem *p, const std::vector<double> &x)
{
    const double tol = 1e-6;
    for (size_t j = 0; j < x.size(); ++j) {
        EXPECT_GE(x[j], random_side(p->var_lower[j]) - tol);
        EXPECT_LE(x[j], random_side(p->var_upper[j]) + tol);
        if (p->is_int[j]) {
            EXPECT_NEAR(x[j], std::round(x[j]), tol);
        }
    }
    for (size_t i = 0; i < p->row.size(); ++i) {
        double activity = 0.0;
        for (size_t j = 0; j < x.size(); ++j) activity += static_cast<double>(p->row[i][j]) * x[j];
        EXPECT_GE(activity, random_side(p->row_lower[i]) - tol);
        EXPECT_LE(activity, random_side(p->row_upper[i]) + tol);
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
    for (size_t i = 0; i < p->row.size(); ++i) add(y[i], random_side(p->row_lower[i]), random_side(p->row_upper[i]));
    for (size_t j = 0; j < p->c.size(); ++j) {
        double reduced = static_cast<double>(p->c[j]);
        for (size_t i = 0; i < p->row.size(); ++i) reduced -= y[i] * static_cast<double>(p->row[i][j]);
        add(reduced, random_side(p->var_lower[j]), random_side(p->var_upper[j]));
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
    const int64_t count = random_env("ZELOR_RANDOM_COUNT", 2000);
    const int64_t first = random_env("ZELOR_RANDOM_SEED", 1);
    /* In turn: the library's choice, each simplex, interior point. */
    const char *optimizers[] = {"FREE", "INTPNT", "DUAL_SIMPLEX", "PRIMAL_SIMPLEX"};

    ZLR_env *env = nullptr;
    ASSERT_EQ(ZLR_makeenv(&env, nullptr), 0);
    for (int64_t k = 0; k < count && !::testing::Test::HasFailure(); ++k) {
        const auto seed = static_cast<uint64_t>(first + k);
        const exact_problem p = random_problem(seed);
        const exact_answer want = exact_solve(&p);
        bool mixed = false;
        for (bool is_int : p.is_int) mixed = mixed || is_int;

        ZLR_task *task = nullptr;
        ASSERT_EQ(ZLR_makeemptytask(env, &task), 0);
        SCOPED_TRACE("seed " + std::to_string(seed) + " " + optimizers[k % 4]);
        ASSERT_NO_FATAL_FAILURE(random_fill(task, &p));
        ASSERT_EQ(ZLR_putparam(task, "OPTIMIZER", optimizers[k % 4]), 0);
        ASSERT_EQ(ZLR_putparam(task, "TIME_LIMIT", "20"), 0); /* what hangs is to be told with its seed */
        EXPECT_EQ(ZLR_optimize(task), 0);
        expect_answer(task, &p, &want, mixed ? ZLR_SOL_ITG : ZLR_SOL_BAS);
        if (HasFailure()) ZLR_writedata(task, "random-failure.lp");
        ZLR_deletetask(&task);
    }
    EXPECT_EQ(ZLR_deleteenv(&env), 0);
}
