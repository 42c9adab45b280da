/* The analysis of a solution: whether its keys are an optimal basis, and what certificates prove. */
#include "solution_report.h"
#include "solver/engines/certificate.h"

class solution_basis : public solution_report
{
};

TEST_F(solution_basis, optimal_basis_is_recognised_in_both_senses)
{
    for (const int32_t sense : {ZLR_SENSE_MIN, ZLR_SENSE_MAX}) {
        put_optimum(renew(two_row_model(sense)), sense);
        ASSERT_EQ(analyse(), ZLR_RES_OK);
        EXPECT_TRUE(has("Result: an optimal basis")) << text;
        EXPECT_EQ(number_of("Basis:", 0), 2);
        EXPECT_EQ(number_of("Degenerate:", 0), 0);
        EXPECT_EQ(number_of("Nonbasic with a multiplier or reduced cost of 0:", 0), 0);
        EXPECT_FALSE(has("Other optimal")) << text;
        /* BS LL UL EQ SB IN UN */
        EXPECT_EQ(line_of("Status keys").substr(16), "       BS       LL       UL       EQ       SB       IN       UN");
        const size_t keys = text.find("Status keys");
        text = text.substr(keys);
        EXPECT_EQ(number_of("Rows", 0), 1);
        EXPECT_EQ(number_of("Rows", 2), 1);
        EXPECT_EQ(number_of("Columns", 0), 1);
        EXPECT_EQ(number_of("Columns", 2), 1);
    }
}

TEST_F(solution_basis, each_fault_is_found)
{
    struct fault_case {
        const char *name, *told;
        void (*spoil)(solution *sol);
    };
    static const fault_case cases[] = {
        {"too many basic", "wrong number of basic entries", [](solution *s) { s->skx[0] = ZLR_SK_BASIC; }},
        {"no key", "entries without a key", [](solution *s) { s->skx[0] = ZLR_SK_UNDEF; }},
        {"side that is not there", "keys of sides that are not there", [](solution *s) { s->skc[1] = ZLR_SK_LOWER; }},
        {"not a fixed column", "keys of sides that are not there", [](solution *s) { s->skx[0] = ZLR_SK_FIXED; }},
        {"off the bound", "nonbasic off their sides", [](solution *s) { s->xx[0] = 2.5; }},
        {"at the other bound", "nonbasic off their sides", [](solution *s) { s->skx[0] = ZLR_SK_LOWER; }},
        {"row not solved", "rows not solved", [](solution *s) { s->xx[1] = 0.5; }},
        {"infeasible", "not feasible", [](solution *s) { s->xx[1] = 1.5; }},
        {"dual of a basic row", "duals against the keys", [](solution *s) { s->y[0] = 0.5; }},
        {"sign against the key", "duals against the keys",
         [](solution *s) {
             s->y[1] = -2.0; /* reduced costs 1 and 4 */
         }},
    };
    for (const fault_case &c : cases) {
        SCOPED_TRACE(c.name);
        solution *sol = renew(two_row_model(ZLR_SENSE_MIN));
        put_optimum(sol, ZLR_SENSE_MIN);
        c.spoil(sol);
        ASSERT_EQ(analyse(), ZLR_RES_OK);
        EXPECT_TRUE(has("Result: not an optimal basis")) << text;
        EXPECT_TRUE(has(c.told)) << text;
        EXPECT_FALSE(has("Other optimal")) << text;
    }
}

TEST_F(solution_basis, distances_are_given_with_names)
{
    solution *sol = renew(two_row_model(ZLR_SENSE_MIN));
    put_optimum(sol, ZLR_SENSE_MIN);
    sol->xx = {2.5, 1.0}; /* x1 half below its bound; there the row is solved */
    sol->y = {0.25, -2.0 / 3.0};
    ASSERT_EQ(analyse(), ZLR_RES_OK);
    EXPECT_NEAR(number_of("Nonbasic off sides", 0), 0.5, 1e-9);
    EXPECT_EQ(number_of("Nonbasic off sides", 1), 2) << "the column, and the row at 5.5\n" << text;
    EXPECT_EQ(number_of("Residual of rows", 0), 0.0);
    EXPECT_NEAR(number_of("Duals against keys", 0), 0.25, 1e-9);
    EXPECT_EQ(number_of("Duals against keys", 1), 2) << "the basic row and the basic column\n" << text;
    EXPECT_TRUE(has("column x1 5.0e-01")) << text;
}

TEST_F(solution_basis, degeneracy_is_counted)
{
    /* minimise -x0, x0 + x1 <= 3, x0 + 3 x1 <= 3, 0 <= x <= 3: at (3, 0) with x0 and one row basic */
    const model m = make_model(ZLR_SENSE_MIN, {-1.0, 0.0},
                               {{-model_inf, 3.0, {1.0, 1.0}}, {-model_inf, 3.0, {1.0, 3.0}}}, {0.0, -1.0}, {3.0, 3.0});
    solution *sol = renew(m);
    sol->has_primal = sol->has_dual = sol->has_keys = true;
    sol->xx = {3.0, 0.0};
    sol->y = {0.0, 0.0};
    sol->sux = {1.0, 0.0};
    sol->skc = {ZLR_SK_BASIC, ZLR_SK_UPPER};
    sol->skx = {ZLR_SK_UPPER, ZLR_SK_BASIC};
    ASSERT_EQ(analyse(), ZLR_RES_OK);
    EXPECT_TRUE(has("Result: an optimal basis")) << text;
    EXPECT_EQ(number_of("Degenerate:", 0), 1) << "row 1 at 3\n" << text;
    EXPECT_EQ(number_of("Nonbasic with a multiplier or reduced cost of 0:", 0), 1) << "row 2\n" << text;
    EXPECT_TRUE(has("Other optimal solutions may exist.")) << text;
}

TEST_F(solution_basis, keys_alone_and_empty_problems)
{
    solution *sol = renew(two_row_model(ZLR_SENSE_MIN));
    sol->has_keys = true;
    sol->skc = {ZLR_SK_BASIC, ZLR_SK_BASIC};
    sol->skx = {ZLR_SK_LOWER, ZLR_SK_LOWER};
    ASSERT_EQ(analyse(), ZLR_RES_OK);
    EXPECT_TRUE(has("cannot be told without values and duals")) << text;

    sol = renew(model());
    sol->has_primal = sol->has_dual = sol->has_keys = true;
    ASSERT_EQ(analyse(), ZLR_RES_OK);
    EXPECT_TRUE(has("Result: an optimal basis")) << text;
    EXPECT_EQ(number_of("Objective", 0), 0.0);
}

/* ---- certificates */

static const check_tolerances tolerances;

/* x0 + x1 >= 3, x0 + x1 <= 2, x >= 0; minimise or maximise x0 */
static model infeasible_model(int32_t sense)
{
    return make_model(sense, {1.0, 0.0}, {{3.0, model_inf, {1.0, 1.0}}, {-model_inf, 2.0, {1.0, 1.0}}}, {0.0, 0.0},
                      {model_inf, model_inf});
}

TEST_F(solution_basis, infeasibility_is_proved_by_its_sides)
{
    for (const int32_t sense : {ZLR_SENSE_MIN, ZLR_SENSE_MAX}) {
        const model m = infeasible_model(sense);
        solution *sol = renew(m);
        ASSERT_TRUE(certificate_from_dual_ray(&m, &tolerances, {2.0, -1.5}, sol) || sol->defined);
        ASSERT_TRUE(certificate_from_dual_ray(&m, &tolerances, {2.0, -2.0}, sol));
        ASSERT_EQ(analyse(), ZLR_RES_OK);
        EXPECT_NE(line_of("Status").find("PRIMAL_INFEASIBLE"), std::string::npos);
        EXPECT_NEAR(number_of("Contradiction", 0), 1.0, 1e-9) << text;
        EXPECT_EQ(number_of("Residual", 0), 0.0);
        EXPECT_NE(line_of("Check").find("holds"), std::string::npos);
        EXPECT_EQ(number_of("Sides in it", 0), 2);
        EXPECT_EQ(number_of("Sides in it", 1), 0);
        EXPECT_TRUE(has("at least 3: row c1\n") && has("at most 2: row c2\n")) << text;

        sol->suc[1] *= 0.5; /* the multiplier and its side do not agree any more */
        ASSERT_EQ(analyse(), ZLR_RES_OK);
        EXPECT_NEAR(number_of("Residual", 0), 0.5, 1e-9);
        EXPECT_NE(line_of("Check").find("fails"), std::string::npos) << text;
        sol->slc[0] = sol->y[0] = 0.0; /* what is left proves nothing */
        ASSERT_EQ(analyse(), ZLR_RES_OK);
        EXPECT_NE(line_of("Check").find("proves nothing"), std::string::npos) << text;
    }
}

/* x0 + 0.001 (x1 + ... + x20) >= 30 with x <= 1 but for x0, which is at most 2: the row comes first, then x0, whose part is
 * the largest. */
TEST_F(solution_basis, rows_of_a_proof_come_first)
{
    const size_t num = 21;
    std::vector<double> a(num, 0.001), upper(num, 1.0);
    a[0] = 1.0;
    upper[0] = 2.0;
    const model m = make_model(ZLR_SENSE_MIN, std::vector<double>(num, 0.0), {{30.0, model_inf, a}},
                               std::vector<double>(num, 0.0), upper);
    ASSERT_TRUE(certificate_from_dual_ray(&m, &tolerances, {0.5}, renew(m)));
    ASSERT_EQ(analyse(), ZLR_RES_OK);
    EXPECT_NEAR(number_of("Contradiction", 0), 30.0 - 2.0 - 0.02, 1e-9) << text;
    EXPECT_EQ(number_of("Sides in it", 0), 1);
    EXPECT_EQ(number_of("Sides in it", 1), 21);
    EXPECT_LT(text.find("at least 30: row c1"), text.find("at most 2: column x1")) << text;
    EXPECT_LT(text.find("at most 2: column x1"), text.find("at most 1: column")) << text;
}

TEST_F(solution_basis, crossed_bounds_prove_infeasibility)
{
    model m = two_row_model(ZLR_SENSE_MAX);
    m.var_lower[1] = 3.5;
    certificate_from_crossed_bounds(&m, false, 1, renew(m));
    ASSERT_EQ(analyse(), ZLR_RES_OK);
    EXPECT_NEAR(number_of("Contradiction", 0), 0.5, 1e-9) << text;
    EXPECT_NE(line_of("Check").find("holds"), std::string::npos);
    EXPECT_TRUE(has("at least 3.5: column x2\n") && has("at most 3: column x2\n")) << text;
}

TEST_F(solution_basis, a_ray_shows_its_columns)
{
    /* maximise x0, x0 - x1 <= 2, x >= 0 */
    const model m =
        make_model(ZLR_SENSE_MAX, {3.0, -1.0}, {{-model_inf, 2.0, {1.0, -1.0}}}, {0.0, 0.0}, {model_inf, model_inf});
    solution *sol = renew(m);
    ASSERT_TRUE(certificate_from_primal_ray(&m, &tolerances, {2.0, 2.0}, sol));
    ASSERT_EQ(analyse(), ZLR_RES_OK);
    EXPECT_NEAR(number_of("Improvement", 0), 2.0, 1e-9) << text;
    EXPECT_NE(line_of("Check").find("holds"), std::string::npos);
    EXPECT_EQ(number_of("Columns in it", 0), 2);
    EXPECT_TRUE(has("cost 3: column x1\n") && has("cost -1: column x2\n")) << text;
    sol->xx[1] = 0.5; /* leaves the row by 0.5 for each step */
    ASSERT_EQ(analyse(), ZLR_RES_OK);
    EXPECT_NEAR(number_of("Improvement", 0), 2.5, 1e-9);
    EXPECT_NEAR(number_of("Residual", 0), 0.5, 1e-9);
    EXPECT_NE(line_of("Check").find("fails"), std::string::npos) << text;
}

TEST_F(solution_basis, a_status_without_numbers_is_told)
{
    for (const int32_t status : {ZLR_SOLSTA_PRIM_INFEAS_CER, ZLR_SOLSTA_DUAL_INFEAS_CER}) {
        renew(infeasible_model(ZLR_SENSE_MIN), ZLR_SOL_ITG)->solsta = status;
        ASSERT_EQ(analyse(ZLR_SOL_ITG), ZLR_RES_OK);
        EXPECT_TRUE(has("this status alone")) << text;
    }
}
