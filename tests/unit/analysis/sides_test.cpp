/* Parts of a problem with cones: none is cut, and none that the part has nothing to do with comes along. */
#include "solver/analysis/sides.h"

#include "solver/analysis/analysis.h"
#include "unit/engines/small_models.h"

#include <gtest/gtest.h>

static constexpr double inf = model_inf;

/* Seven columns in two cones: (x6, x1, x2) and, rotated, (x3, x4, x5); x7 in none. One row each of x1, of x4 and of x7. */
static model coned_model()
{
    model m =
        make_model(ZLR_SENSE_MIN, {1, 2, 3, 4, 5, 6, 7},
                   {{1, inf, {1, 0, 0, 0, 0, 0, 0}}, {2, inf, {0, 0, 0, 1, 0, 0, 0}}, {3, inf, {0, 0, 0, 0, 0, 0, 1}}},
                   {-inf, -inf, -inf, -inf, -inf, -inf, -inf}, {inf, inf, inf, inf, inf, inf, inf});
    m.cones = {{ZLR_CT_QUAD, {5, 0, 1}}, {ZLR_CT_RQUAD, {2, 3, 4}}};
    return m;
}

TEST(sides_of_cones, members_are_mapped)
{
    const model m = coned_model();
    const side_problem first = sides_problem(&m, {{true, false, 0}}, true);
    EXPECT_EQ(first.col_of, (std::vector<int32_t>{0, 1, 5}));
    ASSERT_EQ(first.problem->cones.size(), 1U);
    EXPECT_EQ(first.problem->cones[0].type, ZLR_CT_QUAD);
    EXPECT_EQ(first.problem->cones[0].member, (std::vector<int32_t>{2, 0, 1}));

    const side_problem last = sides_problem(&m, {{true, false, 1}, {true, false, 2}}, false);
    EXPECT_EQ(last.col_of, (std::vector<int32_t>{2, 3, 4, 6}));
    ASSERT_EQ(last.problem->cones.size(), 1U);
    EXPECT_EQ(last.problem->cones[0].type, ZLR_CT_RQUAD);
    EXPECT_EQ(last.problem->cones[0].member, (std::vector<int32_t>{0, 1, 2}));

    EXPECT_TRUE(sides_problem(&m, {{true, false, 2}}, false).problem->cones.empty());
}

/* A part without any column gets one, and with it its whole cone. */
TEST(sides_of_cones, the_column_of_an_empty_part)
{
    const model m = coned_model();
    const side_problem none = sides_problem(&m, {}, false);
    EXPECT_EQ(none.col_of, (std::vector<int32_t>{0, 1, 5}));
    ASSERT_EQ(none.problem->cones.size(), 1U);
    EXPECT_EQ(none.problem->cones[0].member, (std::vector<int32_t>{2, 0, 1}));
}

/* Along a ray that leaves some members of a cone at 0 they stay there. */
TEST(sides_of_cones, recession)
{
    ZLR_task task;
    ZLR_task *part = nullptr;
    param_set_defaults(&task.params);
    task.problem = std::make_shared<model>(coned_model());
    task.problem->sense = ZLR_SENSE_MAX;
    solution *sol = &task.sol[ZLR_SOL_ITR];
    solution_reset(sol, 3, 7, 2);
    sol->defined = true;
    sol->solsta = ZLR_SOLSTA_DUAL_INFEAS_CER;
    sol->xx[5] = 1.0;
    sol->xx[0] = 0.5;
    ASSERT_EQ(infeasible_subproblem(&task, ZLR_SOL_ITR, &part), ZLR_RES_OK);
    const std::unique_ptr<ZLR_task> owner(part);
    const model *p = part->problem.get();
    ASSERT_EQ(p->num_var, 3);
    EXPECT_EQ(p->c, (std::vector<double>{1, 2, 6}));
    EXPECT_EQ(p->var_lower, (std::vector<double>{-inf, 0, -inf}));
    EXPECT_EQ(p->var_upper, (std::vector<double>{inf, 0, inf}));
    ASSERT_EQ(p->cones.size(), 1U);
    EXPECT_EQ(p->cones[0].member, (std::vector<int32_t>{2, 0, 1}));
    EXPECT_EQ(p->con_lower, std::vector<double>{0.0});
}

/* The set of a proof that needs a cone has that cone, and is told with it. */
TEST(sides_of_cones, infeasible_part)
{
    std::string text;
    ZLR_task task;
    ZLR_task *part = nullptr;
    param_set_defaults(&task.params);
    task.params.integer[IPAR_ANALYZE_INFEAS_EFFORT] = INFEAS_CERTIFICATE;
    task.problem = std::make_shared<model>(coned_model());
    task.problem->var_upper[5] = 0.5; /* x6 >= |x1| >= 1 */
    task.streams.out[ZLR_STREAM_MSG].handle = &text;
    task.streams.out[ZLR_STREAM_MSG].func = [](void *handle, const char *piece) {
        *static_cast<std::string *>(handle) += piece;
    };
    solution *sol = &task.sol[ZLR_SOL_ITR];
    solution_reset(sol, 3, 7, 2);
    sol->defined = true;
    sol->solsta = ZLR_SOLSTA_PRIM_INFEAS_CER;
    sol->y[0] = sol->slc[0] = 1.0;
    sol->sux[5] = 1.0;
    sol->snx = {-1, 0, 0, 0, 0, 1, 0};
    ASSERT_EQ(infeasible_subproblem(&task, ZLR_SOL_ITR, &part), ZLR_RES_OK);
    const std::unique_ptr<ZLR_task> owner(part);
    EXPECT_EQ(part->problem->num_con, 1);
    EXPECT_EQ(part->problem->num_var, 3);
    EXPECT_EQ(part->problem->var_upper, (std::vector<double>{inf, inf, 0.5}));
    EXPECT_EQ(part->problem->cones.size(), 1U);
    EXPECT_NE(text.find("\n  with 1 cone\n"), std::string::npos) << text;
}
