/* The check of solutions and certificates: right ones pass, and each single thing that is wrong with one is found. */
#include "small_models.h"
#include "solver/engines/answer.h"
#include "solver/engines/aside.h"
#include "solver/engines/certificate.h"

#include <cmath>
#include <gtest/gtest.h>

static const check_tolerances tolerances;

static engine_answer optimal_answer(int32_t sense)
{
    const double s = sense == ZLR_SENSE_MAX ? -1.0 : 1.0;
    engine_answer a;
    a.status = ENGINE_OPTIMAL;
    a.x = {3.0, 1.0};
    a.y = {0.0, s * -2.0 / 3.0};
    a.row_key = {ZLR_SK_BASIC, ZLR_SK_UPPER};
    a.col_key = {ZLR_SK_UPPER, ZLR_SK_BASIC};
    return a;
}

class check_sense : public testing::TestWithParam<int32_t>
{
};
INSTANTIATE_TEST_SUITE_P(both, check_sense, testing::Values(ZLR_SENSE_MIN, ZLR_SENSE_MAX));

TEST_P(check_sense, optimal_point_passes_with_signs_of_the_sense)
{
    const model m = two_row_model(GetParam());
    const double s = GetParam() == ZLR_SENSE_MAX ? -1.0 : 1.0;
    engine_answer a = optimal_answer(GetParam());
    solution sol;

    const check_result found = answer_to_solution(&m, &tolerances, &a, ZLR_SOL_BAS, &sol);
    EXPECT_EQ(ZLR_SOLSTA_OPTIMAL, sol.solsta);
    EXPECT_EQ(ZLR_PRO_PRIM_AND_DUAL_FEAS, sol.prosta);
    EXPECT_LE(found.gap, 1.0);
    EXPECT_DOUBLE_EQ(s * -5.0, sol.primal_obj);
    EXPECT_NEAR(s * -5.0, sol.dual_obj, 1e-12);
    /* the row's upper side and the column's upper bound: at least 0 in a minimisation, at most 0 in a maximisation */
    EXPECT_DOUBLE_EQ(s * 2.0 / 3.0, sol.suc[1]);
    EXPECT_DOUBLE_EQ(0.0, sol.slc[1]);
    EXPECT_NEAR(s / 3.0, sol.sux[0], 1e-12);
    EXPECT_DOUBLE_EQ(0.0, sol.slx[0]);
    EXPECT_DOUBLE_EQ(6.0, sol.xc[1]);
    EXPECT_EQ(ZLR_SK_UPPER, sol.skc[1]);
}

TEST_P(check_sense, each_fault_is_found)
{
    struct {
        const char *name;
        double x0, x1, y0, y1; /* added to the optimal answer; duals in the signs of a minimisation */
        int32_t solsta;
    } cases[] = {
        {"nothing", 0.0, 0.0, 0.0, 0.0, ZLR_SOLSTA_OPTIMAL},
        {"below the tolerance", 1e-8, 0.0, 0.0, 0.0, ZLR_SOLSTA_OPTIMAL},
        {"bound violated", 0.1, -0.1, 0.0, 0.0, ZLR_SOLSTA_DUAL_FEAS},
        {"bound violated a little", 2e-5, -1e-5, 0.0, 0.0, ZLR_SOLSTA_NEAR_OPTIMAL},
        {"row violated", 0.0, 0.1, 0.0, 0.0, ZLR_SOLSTA_DUAL_FEAS},
        {"feasible, not optimal", -1.0, 0.0, 0.0, 0.0, ZLR_SOLSTA_PRIM_AND_DUAL_FEAS},
        {"multiplier of an inactive row", 0.0, 0.0, -0.5, 0.0, ZLR_SOLSTA_PRIM_AND_DUAL_FEAS},
        {"multiplier of the wrong sign", 0.0, 0.0, 0.5, 0.0, ZLR_SOLSTA_PRIM_FEAS},
        {"both wrong", 1.0, 1.0, 0.5, 0.0, ZLR_SOLSTA_UNKNOWN},
    };
    const model m = two_row_model(GetParam());
    const double s = GetParam() == ZLR_SENSE_MAX ? -1.0 : 1.0;
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        engine_answer a = optimal_answer(GetParam());
        a.x[0] += c.x0;
        a.x[1] += c.x1;
        a.y[0] += s * c.y0;
        a.y[1] += s * c.y1;
        solution sol;
        (void)answer_to_solution(&m, &tolerances, &a, ZLR_SOL_BAS, &sol);
        EXPECT_EQ(c.solsta, sol.solsta);
    }
}

TEST(check, a_reduced_cost_without_a_bound_is_a_residual)
{
    /* minimise x0 with x0 free and a row that does not hold it: no multiplier can be right */
    const model m = make_model(ZLR_SENSE_MIN, {1.0}, {{0.0, 10.0, {1.0}}}, {-model_inf}, {model_inf});
    engine_answer a;
    a.x = {0.0};
    a.y = {0.0};
    solution sol;
    (void)answer_to_solution(&m, &tolerances, &a, ZLR_SOL_ITR, &sol);
    EXPECT_EQ(ZLR_SOLSTA_PRIM_FEAS, sol.solsta);
    EXPECT_DOUBLE_EQ(1.0, sol.check.dual);
    EXPECT_EQ(0, sol.check.worst_dual);
    a.y = {1.0};
    (void)answer_to_solution(&m, &tolerances, &a, ZLR_SOL_ITR, &sol);
    EXPECT_EQ(ZLR_SOLSTA_OPTIMAL, sol.solsta);
}

TEST(check, large_numbers_do_not_hide_a_wrong_row)
{
    /* the second row is in units; the first one in millions */
    const model m = make_model(ZLR_SENSE_MIN, {0.0, 0.0}, {{1e9, 1e9, {1e3, 0.0}}, {1.0, 1.0, {0.0, 1.0}}}, {0.0, 0.0},
                               {model_inf, model_inf});
    engine_answer a;
    a.y = {0.0, 0.0};
    solution sol;
    a.x = {1e6 + 1e-5, 1.0}; /* 0.01 in a thousand millions is rounding of the data */
    (void)answer_to_solution(&m, &tolerances, &a, ZLR_SOL_ITR, &sol);
    EXPECT_EQ(ZLR_SOLSTA_OPTIMAL, sol.solsta);
    a.x = {1e6, 1.01}; /* 0.01 in 1 is wrong */
    (void)answer_to_solution(&m, &tolerances, &a, ZLR_SOL_ITR, &sol);
    EXPECT_EQ(ZLR_SOLSTA_DUAL_FEAS, sol.solsta);
    EXPECT_EQ(1, sol.check.worst_row);
}

TEST(check, answers_that_are_no_numbers_or_too_short_are_no_solutions)
{
    const model m = two_row_model(ZLR_SENSE_MIN);
    solution sol;
    for (const std::vector<double> &x : {std::vector<double>{std::nan(""), 1.0}, {3.0}, {model_inf, 0.0}, {}}) {
        engine_answer a;
        a.x = x;
        (void)answer_to_solution(&m, &tolerances, &a, ZLR_SOL_BAS, &sol);
        EXPECT_FALSE(sol.defined);
    }
}

static model integer_model()
{
    model m = two_row_model(ZLR_SENSE_MIN);
    m.var_type = {ZLR_VAR_INT, ZLR_VAR_INT};
    return m;
}

TEST(check, integer_statuses_follow_gap_and_integrality)
{
    struct {
        const char *name;
        double x0, x1;
        bool has_bound;
        double bound;
        int32_t solsta;
    } cases[] = {
        {"closed gap", 3.0, 1.0, true, -5.0, ZLR_SOLSTA_INTEGER_OPTIMAL},
        {"gap within the tolerance", 3.0, 1.0, true, -5.0004, ZLR_SOLSTA_INTEGER_OPTIMAL},
        {"open gap", 3.0, 1.0, true, -5.1, ZLR_SOLSTA_PRIM_FEAS},
        {"no bound", 3.0, 1.0, false, 0.0, ZLR_SOLSTA_PRIM_FEAS},
        {"nearly integer is put there", 2.9999999, 1.0, true, -5.0, ZLR_SOLSTA_INTEGER_OPTIMAL},
        {"not integer", 2.5, 1.0, true, -4.5, ZLR_SOLSTA_UNKNOWN},
        {"not feasible", 3.0, 2.0, true, -7.0, ZLR_SOLSTA_UNKNOWN},
    };
    const model m = integer_model();
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        solution sol;
        bool exact = false;
        const check_result found = answer_to_incumbent(&m, &tolerances, {c.x0, c.x1}, &sol, &exact);
        check_set_integer_status(&tolerances, m.sense, &found, c.has_bound, c.bound, &sol);
        EXPECT_EQ(c.solsta, sol.solsta);
        if (sol.solsta == ZLR_SOLSTA_INTEGER_OPTIMAL) {
            EXPECT_EQ(3.0, sol.xx[0]);
        }
    }
}

TEST(check, integers_stay_where_the_rows_cannot_bear_the_rounding)
{
    /* x1 = 1e7 x0: one ten-millionth of x0 is one unit of x1 */
    model m = make_model(ZLR_SENSE_MIN, {0.0, 1.0}, {{0.0, 0.0, {1e7, -1.0}}}, {0.0, 0.0}, {1.0, model_inf});
    m.var_type = {ZLR_VAR_INT, ZLR_VAR_CONT};
    solution sol;
    bool exact = true;
    (void)answer_to_incumbent(&m, &tolerances, {1e-7, 1.0}, &sol, &exact);
    EXPECT_FALSE(exact);
    EXPECT_EQ(1e-7, sol.xx[0]);
    EXPECT_EQ(ZLR_SOLSTA_PRIM_FEAS, sol.solsta);
}

/* ---- certificates */

/* x0 + x1 >= 3 and x0 + x1 <= 2, x >= 0 */
static model contradiction(int32_t sense)
{
    return make_model(sense, {1.0, 1.0}, {{3.0, model_inf, {1.0, 1.0}}, {-model_inf, 2.0, {1.0, 1.0}}}, {0.0, 0.0},
                      {model_inf, model_inf});
}

TEST_P(check_sense, a_dual_ray_of_either_sign_and_size_becomes_the_certificate)
{
    const model m = contradiction(GetParam());
    const double s = GetParam() == ZLR_SENSE_MAX ? -1.0 : 1.0;
    for (const double factor : {1.0, -1.0, 1e7, -1e-7}) {
        solution sol;
        ASSERT_TRUE(certificate_from_dual_ray(&m, &tolerances, {factor, -factor}, &sol)) << factor;
        EXPECT_EQ(ZLR_SOLSTA_PRIM_INFEAS_CER, sol.solsta);
        EXPECT_EQ(ZLR_PRO_PRIM_INFEAS, sol.prosta);
        EXPECT_DOUBLE_EQ(s, sol.slc[0]);
        EXPECT_DOUBLE_EQ(s, sol.suc[1]);
        EXPECT_DOUBLE_EQ(s, sol.y[0]);
        EXPECT_DOUBLE_EQ(s * 1.0, sol.dual_obj);
    }
}

TEST(certificate, dual_rays_that_prove_nothing_are_refused)
{
    const model m = contradiction(ZLR_SENSE_MIN);
    solution sol;
    for (const std::vector<double> &ray :
         {std::vector<double>{0.0, 0.0}, {1.0, 0.0}, {0.0, 1.0}, {1.0, 1.0}, {1.0, -2.0}, {std::nan(""), -1.0}, {}})
        EXPECT_FALSE(certificate_from_dual_ray(&m, &tolerances, ray, &sol));
    EXPECT_FALSE(certificate_from_dual_ray(&m, &tolerances, {1.001, -1.0}, &sol)); /* leaves 0.001 on a missing bound */
    const model feasible = two_row_model(ZLR_SENSE_MIN);
    for (const std::vector<double> &ray : {std::vector<double>{1.0, 0.0}, {0.0, 1.0}, {1.0, -1.0}})
        EXPECT_FALSE(certificate_from_dual_ray(&feasible, &tolerances, ray, &sol));
}

TEST(certificate, column_bounds_take_part)
{
    /* x0 + x1 >= 7 with x <= 3 */
    const model m = make_model(ZLR_SENSE_MIN, {0.0, 0.0}, {{7.0, model_inf, {1.0, 1.0}}}, {0.0, 0.0}, {3.0, 3.0});
    solution sol;
    ASSERT_TRUE(certificate_from_dual_ray(&m, &tolerances, {5.0}, &sol));
    EXPECT_DOUBLE_EQ(1.0, sol.sux[0]);
    EXPECT_DOUBLE_EQ(1.0, sol.dual_obj);
}

/* minimise -x0 - x1, x0 - x1 <= 1, x >= 0: (1, 1) is a direction; as a maximisation of x0 + x1 too */
static model open_model(int32_t sense)
{
    const double c = sense == ZLR_SENSE_MAX ? 1.0 : -1.0;
    return make_model(sense, {c, c}, {{-model_inf, 1.0, {1.0, -1.0}}}, {0.0, 0.0}, {model_inf, model_inf});
}

TEST_P(check_sense, primal_rays_are_checked)
{
    const model m = open_model(GetParam());
    solution sol;
    ASSERT_TRUE(certificate_from_primal_ray(&m, &tolerances, {20.0, 20.0}, &sol));
    EXPECT_EQ(ZLR_SOLSTA_DUAL_INFEAS_CER, sol.solsta);
    EXPECT_EQ(ZLR_PRO_DUAL_INFEAS, sol.prosta);
    EXPECT_DOUBLE_EQ(1.0, sol.xx[0]);
    EXPECT_DOUBLE_EQ(GetParam() == ZLR_SENSE_MAX ? 2.0 : -2.0, sol.primal_obj);
    for (const std::vector<double> &ray :
         {std::vector<double>{1.0, 0.0}, {-1.0, -1.0}, {1.0, 0.99}, {1.0, -1e-3}, {0.0, 0.0}, {}})
        EXPECT_FALSE(certificate_from_primal_ray(&m, &tolerances, ray, &sol));
}

/* ---- problems that need no engine */

TEST(trivial, crossed_bounds_prove_themselves)
{
    model m = two_row_model(ZLR_SENSE_MIN);
    m.con_lower[1] = 8.0;
    solution sol;
    ASSERT_TRUE(aside_trivial(&m, &tolerances, 1e-7, false, &sol));
    EXPECT_EQ(ZLR_SOLSTA_PRIM_INFEAS_CER, sol.solsta);
    EXPECT_DOUBLE_EQ(1.0, sol.slc[1]);
    EXPECT_DOUBLE_EQ(1.0, sol.suc[1]);
    EXPECT_DOUBLE_EQ(0.0, sol.y[1]);
    EXPECT_DOUBLE_EQ(2.0, sol.dual_obj);

    m = two_row_model(ZLR_SENSE_MIN);
    m.var_lower[0] = 3.0 + 1e-9; /* less than engines take as feasible */
    EXPECT_FALSE(aside_trivial(&m, &tolerances, 1e-7, false, &sol));
}

TEST(trivial, no_integer_between_the_bounds)
{
    model m = integer_model();
    m.var_lower[0] = 0.2;
    m.var_upper[0] = 0.8;
    solution sol;
    ASSERT_TRUE(aside_trivial(&m, &tolerances, 1e-7, true, &sol));
    EXPECT_EQ(ZLR_SOLSTA_PRIM_INFEAS_CER, sol.solsta);
    EXPECT_EQ(ZLR_PRO_PRIM_INFEAS, sol.prosta);
    EXPECT_FALSE(aside_trivial(&m, &tolerances, 1e-7, false, &sol)); /* its relaxation is an ordinary problem */
}

TEST(trivial, an_empty_matrix_is_solved_column_by_column)
{
    struct {
        const char *name;
        int32_t sense;
        double c, lower, upper, row_lower;
        bool integers;
        int32_t solsta;
        double x;
    } cases[] = {
        {"lower end", ZLR_SENSE_MIN, 2.0, -1.5, 4.0, 0.0, false, ZLR_SOLSTA_OPTIMAL, -1.5},
        {"upper end", ZLR_SENSE_MIN, -2.0, -1.5, 4.0, 0.0, false, ZLR_SOLSTA_OPTIMAL, 4.0},
        {"maximise", ZLR_SENSE_MAX, 2.0, -1.5, 4.0, 0.0, false, ZLR_SOLSTA_OPTIMAL, 4.0},
        {"no cost", ZLR_SENSE_MIN, 0.0, 2.0, 4.0, 0.0, false, ZLR_SOLSTA_OPTIMAL, 2.0},
        {"integer rounds inward", ZLR_SENSE_MIN, 2.0, -1.5, 4.0, 0.0, true, ZLR_SOLSTA_INTEGER_OPTIMAL, -1.0},
        {"unbounded", ZLR_SENSE_MIN, -1.0, 0.0, model_inf, 0.0, false, ZLR_SOLSTA_DUAL_INFEAS_CER, 1.0},
        {"unbounded downward", ZLR_SENSE_MAX, -1.0, -model_inf, 0.0, 0.0, false, ZLR_SOLSTA_DUAL_INFEAS_CER, -1.0},
        {"integer unbounded has no ray", ZLR_SENSE_MIN, -1.0, 0.0, model_inf, 0.0, true, ZLR_SOLSTA_DUAL_INFEAS_CER,
         0.0},
        {"row that cannot be met", ZLR_SENSE_MIN, 1.0, 0.0, 1.0, 1.0, false, ZLR_SOLSTA_PRIM_INFEAS_CER, 0.0},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        model m = make_model(c.sense, {c.c}, {{c.row_lower, model_inf, {0.0}}}, {c.lower}, {c.upper});
        if (c.integers) m.var_type[0] = ZLR_VAR_INT;
        solution sol;
        ASSERT_TRUE(aside_trivial(&m, &tolerances, 1e-7, c.integers, &sol));
        EXPECT_EQ(c.solsta, sol.solsta);
        EXPECT_DOUBLE_EQ(c.x, sol.xx[0]);
        if (c.solsta == ZLR_SOLSTA_OPTIMAL) {
            EXPECT_DOUBLE_EQ(sol.primal_obj, sol.dual_obj);
        }
    }
}

/* x0 >= |x1| with x0 <= 1 and x1 = 5: the least violation is 4, and its multipliers are the proof. */
TEST(aside, the_least_violation_with_cones_proves_infeasibility)
{
    model m =
        make_model(ZLR_SENSE_MIN, {0.0, 0.0}, {{5.0, 5.0, {0.0, 1.0}}}, {-model_inf, -model_inf}, {1.0, model_inf});
    m.cones.push_back({ZLR_CT_QUAD, {0, 1}});
    const std::shared_ptr<model> p = aside_conic_phase_one(&m);
    ASSERT_EQ(p->num_con, 2); /* the bound is a row */
    ASSERT_EQ(p->num_var, 5); /* x1 short of 5 or beyond, x0 beyond 1 */
    EXPECT_EQ(p->var_upper[0], model_inf);
    ASSERT_EQ(p->cones.size(), 1U);

    engine_answer a;
    solution sol, certificate;
    a.x = {1.0, 1.0, 4.0, 0.0, 0.0};
    a.y = {1.0, -1.0};
    (void)answer_to_solution(p.get(), &tolerances, &a, ZLR_SOL_ITR, &sol);
    EXPECT_EQ(sol.solsta, ZLR_SOLSTA_OPTIMAL);
    EXPECT_EQ(sol.primal_obj, 4.0);
    ASSERT_TRUE(certificate_from_dual_ray(&m, &tolerances, {a.y[0]}, &certificate, {sol.snx[0], sol.snx[1]}));
    EXPECT_EQ(certificate.solsta, ZLR_SOLSTA_PRIM_INFEAS_CER);
    EXPECT_EQ(certificate.dual_obj, 4.0);
    EXPECT_EQ(certificate.sux[0], 1.0);
}

/* minimise -x0 - x2 with x0^2 + x1 <= 1: along the row's linear part alone there is a direction, not along x0. */
TEST(aside, directions_keep_quadratic_rows_flat_and_stay_in_cones)
{
    model m = make_model(ZLR_SENSE_MIN, {-1.0, 0.0, -1.0, 0.0}, {{-model_inf, 1.0, {0.0, 1.0, 0.0, 0.0}}},
                         {-model_inf, -model_inf, -model_inf, 0.0}, {model_inf, model_inf, model_inf, model_inf});
    m.qcon.push_back({0, {{0, 0, 2.0}}});
    m.cones.push_back({ZLR_CT_QUAD, {3, 2}});
    const std::shared_ptr<model> p = aside_recession(&m);
    ASSERT_EQ(p->num_con, 2); /* the row, and 2 x0 = 0 */
    EXPECT_EQ(p->con_upper[0], 0.0);
    EXPECT_EQ(p->con_lower[1], 0.0);
    EXPECT_EQ(p->con_upper[1], 0.0);
    EXPECT_TRUE(p->qcon.empty());
    ASSERT_EQ(p->cones.size(), 1U);
    engine_answer a;
    solution sol, certificate;
    a.x = {0.0, -1.0, 1.0, 1.0};
    EXPECT_LE(answer_to_solution(p.get(), &tolerances, &a, ZLR_SOL_ITR, &sol).primal, 1.0);
    EXPECT_TRUE(certificate_from_primal_ray(&m, &tolerances, a.x, &certificate));
    a.x = {0.1, -1.0, 1.0, 1.0};
    EXPECT_GT(answer_to_solution(p.get(), &tolerances, &a, ZLR_SOL_ITR, &sol).primal, 1.0);
    EXPECT_FALSE(certificate_from_primal_ray(&m, &tolerances, a.x, &certificate));
}
