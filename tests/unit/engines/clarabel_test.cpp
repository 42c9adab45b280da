/* clarabel_test.cpp - answers of the Clarabel module, by jobs as the library gives them. They are recomputed from the problem's
 * own data: optimality conditions, proofs of infeasibility and directions of unboundedness. */
#ifdef ZELOR_CLARABEL_MODULE /* builds with the engine */
#include "clarabel_support.h"

/* A'y + slx - sux + snx = 0 with a sum of the sides above 0, for the sense of a minimisation. */
static void expect_infeasible(const model &m, const engine_answer &a)
{
    constexpr double tol = 1e-6;
    const double sign = m.sense == ZLR_SENSE_MAX ? -1.0 : 1.0;
    double sum = 0.0, largest = 0.0;

    ASSERT_EQ(a.status, ENGINE_PRIMAL_INFEASIBLE) << a.message;
    ASSERT_EQ(a.dual_ray.size(), static_cast<size_t>(m.num_con));
    EXPECT_TRUE(a.x.empty() && a.primal_ray.empty());
    const auto add_side = [&](double dual, double lower, double upper) {
        const double side = dual > 0.0 ? lower : upper;
        largest = std::max(largest, std::fabs(dual));
        if (std::isfinite(side))
            sum += dual * side;
        else
            EXPECT_NEAR(dual, 0.0, tol * largest);
    };
    for (const double y : a.dual_ray) largest = std::max(largest, std::fabs(y));
    for (size_t i = 0; i < a.dual_ray.size(); i++) add_side(sign * a.dual_ray[i], m.con_lower[i], m.con_upper[i]);
    for (size_t j = 0; j < static_cast<size_t>(m.num_var); j++) {
        const double in_cone = a.cone_dual.empty() ? 0.0 : a.cone_dual[j];
        add_side(-sign * (times_y(m, j, a.dual_ray) + in_cone), m.var_lower[j], m.var_upper[j]);
    }
    for (const model_cone &cone : m.cones) expect_in_cone(cone, a.cone_dual, sign, tol * largest);
    EXPECT_GT(sum, 1e-3 * largest);
}

/* A direction that nothing bounds and that improves the objective. */
static void expect_unbounded(const model &m, const engine_answer &a)
{
    const double sign = m.sense == ZLR_SENSE_MAX ? -1.0 : 1.0;

    ASSERT_EQ(a.status, ENGINE_DUAL_INFEASIBLE) << a.message;
    ASSERT_EQ(a.primal_ray.size(), static_cast<size_t>(m.num_var));
    EXPECT_TRUE(a.y.empty() && a.dual_ray.empty());
    double size = 0.0, change = 0.0;
    for (size_t j = 0; j < a.primal_ray.size(); j++) {
        size = std::max(size, std::fabs(a.primal_ray[j]));
        change += sign * m.c[j] * a.primal_ray[j];
    }
    const double tol = 1e-6 * size;
    const auto expect_recession = [&](double value, double lower, double upper) {
        if (std::isfinite(lower)) {
            EXPECT_GE(value, -tol);
        }
        if (std::isfinite(upper)) {
            EXPECT_LE(value, tol);
        }
    };
    for (size_t i = 0; i < static_cast<size_t>(m.num_con); i++)
        expect_recession(row_value(m, i, a.primal_ray), m.con_lower[i], m.con_upper[i]);
    for (size_t j = 0; j < a.primal_ray.size(); j++) expect_recession(a.primal_ray[j], m.var_lower[j], m.var_upper[j]);
    std::vector<double> product(a.primal_ray.size(), 0.0);
    quad_add_product(m.qobj, a.primal_ray.data(), 1.0, product.data());
    for (const double value : product) EXPECT_NEAR(value, 0.0, tol);
    for (const model_cone &cone : m.cones) expect_in_cone(cone, a.primal_ray, 1.0, tol);
    EXPECT_LT(change, -1e-3 * size);
}
TEST_F(clarabel, optimum_and_duals_fit_the_problem)
{
    model cone_of_two = make_model(ZLR_SENSE_MIN, {1.0, 0.0}, {{-3.0, -3.0, {0.0, 1.0}}}, {-model_inf, -model_inf},
                                   {model_inf, model_inf});
    cone_of_two.cones = {{ZLR_CT_QUAD, {0, 1}}};
    /* Distance of (3, 4) from the disc of radius 1, squared and halved: 8. */
    model quadratic_over_cone =
        make_model(ZLR_SENSE_MIN, {0.0, -3.0, -4.0}, {}, {0.0, -model_inf, -model_inf}, {1.0, model_inf, model_inf});
    quadratic_over_cone.cfix = 12.5;
    quadratic_over_cone.qobj = {{1, 1, 1.0}, {2, 2, 1.0}};
    quadratic_over_cone.cones = {{ZLR_CT_QUAD, {0, 1, 2}}};

    const struct {
        const char *name;
        model m;
        double optimum;
    } cases[] = {
        {"two rows", two_row_model(ZLR_SENSE_MIN), -5.0},
        {"mixed", mixed_model(), 4.0},
        {"nearest point", nearest_point_model(), 0.5},
        {"no rows, off-diagonal term", no_rows_model(), -3.0},
        {"disc", disc_model(), std::sqrt(2.0)},
        {"rotated", rotated_model(), 4.0},
        {"two norms", two_norms_model(), 7.0},
        {"cone of two", cone_of_two, 3.0},
        {"quadratic over a cone", quadratic_over_cone, 8.0},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        expect_optimal(c.m, solve(c.m), c.optimum);
        SCOPED_TRACE("negated");
        const model other = negated(c.m);
        expect_optimal(other, solve(other), -c.optimum);
    }
    EXPECT_NEAR(solve(nearest_point_model()).y[0], -1.0, 1e-6);
    EXPECT_NEAR(solve(two_row_model(ZLR_SENSE_MAX)).reduced[0], 1.0 / 3.0, 1e-6);
    EXPECT_NEAR(solve(rotated_model()).y[0], 2.0, 1e-5);
}

TEST_F(clarabel, unsorted_columns_are_taken)
{
    model m = two_row_model(ZLR_SENSE_MIN);
    std::swap(m.a.row[2], m.a.row[3]);
    std::swap(m.a.value[2], m.a.value[3]);
    expect_optimal(m, solve(m), -5.0);
}

TEST_F(clarabel, infeasible_problems_come_with_a_proof)
{
    model rows = make_model(ZLR_SENSE_MIN, {1.0, 1.0}, {{3.0, model_inf, {1.0, 1.0}}}, {0.0, 0.0}, {1.0, 1.0});
    model conic = make_model(ZLR_SENSE_MIN, {0.0, 0.0, 1.0},
                             {{-model_inf, 1.0, {1.0, 0.0, 0.0}}, {2.0, model_inf, {0.0, 1.0, 0.0}}},
                             std::vector<double>(3, -model_inf), std::vector<double>(3, model_inf));
    conic.cones = {{ZLR_CT_QUAD, {0, 1, 2}}};
    model rotated =
        make_model(ZLR_SENSE_MIN, {0.0, 0.0, 0.0}, {{-model_inf, 2.0, {1.0, 1.0, 0.0}}, {3.0, 3.0, {0.0, 0.0, 1.0}}},
                   std::vector<double>(3, -model_inf), std::vector<double>(3, model_inf));
    rotated.cones = {{ZLR_CT_RQUAD, {0, 1, 2}}};
    model quadratic = rows;
    quadratic.qobj = {{0, 0, 1.0}, {1, 1, 1.0}};

    for (const model &m : {rows, conic, rotated, quadratic}) {
        expect_infeasible(m, solve(m));
        const model other = negated(m);
        expect_infeasible(other, solve(other));
    }
}

/* Multipliers of rows cannot tell this proof, which weighs both sides of one row or column the same. */
TEST_F(clarabel, crossed_sides_are_infeasible_without_a_ray)
{
    const model row = make_model(ZLR_SENSE_MIN, {1.0}, {{2.0, 1.0, {1.0}}}, {-model_inf}, {model_inf});
    const model column = make_model(ZLR_SENSE_MAX, {1.0}, {{0.0, 9.0, {1.0}}}, {2.0}, {1.0});
    for (const model &m : {row, column}) {
        const engine_answer a = solve(m);
        EXPECT_EQ(a.status, ENGINE_PRIMAL_INFEASIBLE);
        EXPECT_TRUE(a.dual_ray.empty() && a.x.empty());
    }
}

TEST_F(clarabel, unbounded_problems_come_with_a_direction)
{
    model rows =
        make_model(ZLR_SENSE_MIN, {-1.0, 0.0}, {{-model_inf, 1.0, {1.0, -1.0}}}, {0.0, 0.0}, {model_inf, model_inf});
    model quadratic = make_model(ZLR_SENSE_MIN, {0.0, -1.0}, {}, {0.0, 0.0}, {model_inf, model_inf});
    quadratic.qobj = {{0, 0, 2.0}};
    model conic =
        make_model(ZLR_SENSE_MIN, {0.5, -1.0, 0.0}, {}, {0.0, -model_inf, 0.0}, std::vector<double>(3, model_inf));
    conic.cones = {{ZLR_CT_RQUAD, {0, 2, 1}}};

    for (const model &m : {rows, quadratic, conic}) {
        expect_unbounded(m, solve(m));
        const model other = negated(m);
        expect_unbounded(other, solve(other));
    }
}

TEST_F(clarabel, problems_with_nothing_in_them)
{
    const model nothing = make_model(ZLR_SENSE_MIN, {}, {}, {}, {});
    EXPECT_EQ(solve(nothing).status, ENGINE_OPTIMAL);
    const model satisfied = make_model(ZLR_SENSE_MIN, {}, {{-1.0, 1.0, {}}, {-model_inf, model_inf, {}}}, {}, {});
    expect_optimal(satisfied, solve(satisfied), 0.0);
    for (const int32_t sense : {ZLR_SENSE_MIN, ZLR_SENSE_MAX}) {
        const model below = make_model(sense, {}, {{-1.0, 1.0, {}}, {2.0, model_inf, {}}}, {}, {});
        expect_infeasible(below, solve(below));
        const model above = make_model(sense, {}, {{-model_inf, -1.0, {}}}, {}, {});
        expect_infeasible(above, solve(above));
    }
    const model columns = make_model(ZLR_SENSE_MIN, {1.0, -1.0}, {}, {2.0, 0.0}, {model_inf, 3.0});
    expect_optimal(columns, solve(columns), -1.0);
    const model no_side = make_model(ZLR_SENSE_MIN, {0.0}, {{-model_inf, model_inf, {1.0}}}, {-model_inf}, {model_inf});
    expect_optimal(no_side, solve(no_side), 0.0);
    const model empty_row = make_model(ZLR_SENSE_MIN, {1.0}, {{1.0, model_inf, {0.0}}}, {0.0}, {1.0});
    expect_infeasible(empty_row, solve(empty_row));
}

TEST_F(clarabel, takes_what_it_says)
{
    model m = nearest_point_model();
    EXPECT_TRUE(adapter->accepts(&m, METHOD_CHOOSE));
    EXPECT_FALSE(adapter->accepts(&m, METHOD_DUAL_SIMPLEX));
    EXPECT_FALSE(adapter->accepts(&m, METHOD_MIP));
    m.var_type[1] = ZLR_VAR_INT;
    EXPECT_FALSE(adapter->accepts(&m, METHOD_CHOOSE));
    m = nearest_point_model();
    m.qcon = {{0, {{0, 0, 1.0}}}};
    EXPECT_FALSE(adapter->accepts(&m, METHOD_INTPNT));
    EXPECT_STREQ(adapter->name, "Clarabel");
    EXPECT_STREQ(adapter->version(), "0.11.1");
}

#endif
