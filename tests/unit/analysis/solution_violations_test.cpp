/* The analysis of a solution: objectives, violations and sizes in the report are those that are computed here from a dense
 * copy of the model. */
#include "solution_report.h"

#include <algorithm>
#include <random>

/* What a row of the table of violations says. */
struct class_numbers {
    double largest = 0.0, total = 0.0;
    int32_t num = 0;

    void add(double size)
    {
        if (!(size > 0.0) || std::isinf(size)) return;
        largest = std::max(largest, size);
        total += size;
        num++;
    }
};

struct expected_violations {
    class_numbers rows, bounds, integers, signs, stationarity, products;
};

/* Rows and reduced costs, the plain way. */
struct dense_model {
    std::vector<std::vector<double>> a; /* by row */
    explicit dense_model(const model &m)
        : a(static_cast<size_t>(m.num_con), std::vector<double>(static_cast<size_t>(m.num_var), 0.0))
    {
        for (size_t j = 0; j < m.c.size(); j++)
            for (auto k = static_cast<size_t>(m.a.start[j]); k < static_cast<size_t>(m.a.start[j + 1]); k++)
                a[static_cast<size_t>(m.a.row[k])][j] = m.a.value[k];
    }
};

/* One multiplier with what stands on its sides. The side that its sign names may be missing: then nothing stands for it,
 * and the sign is wrong; else the duals must add up to it. */
static void add_multiplier(double multiplier, double sign, double lower, double upper, double on_lower, double on_upper,
                           double value, expected_violations *e)
{
    const double outward = sign * multiplier;
    const bool missing = (outward > 0.0 && std::isinf(lower)) || (outward < 0.0 && std::isinf(upper));
    const bool bare = on_lower == 0.0 && on_upper == 0.0;
    (missing && bare ? e->signs : e->stationarity).add(std::fabs(multiplier - (on_lower - on_upper)));
    double wrong = 0.0;
    if (sign * on_lower < 0.0 || (on_lower != 0.0 && std::isinf(lower))) wrong = std::fabs(on_lower);
    if (sign * on_upper < 0.0 || (on_upper != 0.0 && std::isinf(upper))) wrong = std::max(wrong, std::fabs(on_upper));
    e->signs.add(wrong);
    e->products.add(std::max(on_lower != 0.0 ? std::fabs(on_lower) * std::fabs(value - lower) : 0.0,
                             on_upper != 0.0 ? std::fabs(on_upper) * std::fabs(value - upper) : 0.0));
}

static expected_violations expect_from(const model &m, const solution &s)
{
    const dense_model d(m);
    const double sign = m.sense == ZLR_SENSE_MAX ? -1.0 : 1.0;
    expected_violations e;

    for (size_t i = 0; i < d.a.size(); i++) {
        double activity = 0.0;
        for (size_t j = 0; j < m.c.size(); j++) activity += d.a[i][j] * s.xx[j];
        e.rows.add(std::max(m.con_lower[i] - activity, activity - m.con_upper[i]));
        add_multiplier(s.y[i], sign, m.con_lower[i], m.con_upper[i], s.slc[i], s.suc[i], activity, &e);
    }
    for (size_t j = 0; j < m.c.size(); j++) {
        double reduced = m.c[j];
        for (size_t i = 0; i < d.a.size(); i++) reduced -= d.a[i][j] * s.y[i];
        e.bounds.add(std::max(m.var_lower[j] - s.xx[j], s.xx[j] - m.var_upper[j]));
        if (m.var_type[j] == ZLR_VAR_INT) e.integers.add(std::fabs(s.xx[j] - std::nearbyint(s.xx[j])));
        add_multiplier(reduced, sign, m.var_lower[j], m.var_upper[j], s.slx[j], s.sux[j], s.xx[j], &e);
    }
    return e;
}

class solution_violations : public solution_report
{
protected:
    void expect_row(const char *title, const class_numbers &e)
    {
        SCOPED_TRACE(title);
        EXPECT_NEAR(number_of(title, 0), e.largest, 0.06 * e.largest + 1e-13); /* two digits are printed */
        EXPECT_NEAR(number_of(title, 1), e.total, 0.06 * e.total + 1e-13);
        EXPECT_EQ(number_of(title, 2), e.num);
    }
};

/* Numbers of quarters: sums are exact, and a residual is 0 or far above the tolerances. */
struct random_models {
    std::mt19937 source{4711};

    double quarter(int most) { return std::uniform_int_distribution<int>(-4 * most, 4 * most)(source) / 4.0; }
    bool chance(double share) { return std::uniform_real_distribution<double>(0.0, 1.0)(source) < share; }
    double lower(double share) { return chance(share) ? -model_inf : quarter(2) - 2.0; }
    double upper(double share) { return chance(share) ? model_inf : quarter(2) + 2.0; }

    model make()
    {
        const auto rows = static_cast<size_t>(std::uniform_int_distribution<int>(0, 4)(source));
        const auto columns = static_cast<size_t>(std::uniform_int_distribution<int>(0, 5)(source));
        std::vector<double> c(columns), lo(columns), up(columns);
        std::vector<test_row> r(rows);
        for (size_t j = 0; j < columns; j++) {
            c[j] = quarter(3);
            lo[j] = lower(0.3);
            up[j] = upper(0.3);
        }
        for (test_row &row : r) {
            row = {lower(0.4), upper(0.4), std::vector<double>(columns)};
            for (double &v : row.a) v = chance(0.5) ? quarter(2) : 0.0;
        }
        model m = make_model(chance(0.5) ? ZLR_SENSE_MIN : ZLR_SENSE_MAX, c, r, lo, up);
        for (uint8_t &type : m.var_type) type = chance(0.5) ? ZLR_VAR_INT : ZLR_VAR_CONT;
        return m;
    }

    void fill(solution *s)
    {
        s->has_primal = s->has_dual = true;
        for (std::vector<double> *v : {&s->xx, &s->y, &s->slc, &s->suc, &s->slx, &s->sux})
            for (double &value : *v) value = chance(0.3) ? 0.0 : quarter(5);
    }
};

TEST_F(solution_violations, are_those_of_a_dense_computation)
{
    random_models random;
    int32_t num_bad = 0;

    for (int32_t round = 0; round < 300; round++) {
        SCOPED_TRACE("round " + std::to_string(round));
        const model m = random.make();
        const int32_t kind = round % 3;
        solution *sol = renew(m, kind);
        random.fill(sol);
        /* All sides zero would mean that they are not known. */
        if (m.num_var > 0 && sol->slx[0] == 0.0) sol->slx[0] = 0.25;
        if (m.num_var == 0 && m.num_con > 0 && sol->slc[0] == 0.0) sol->slc[0] = 0.25;
        const expected_violations e = expect_from(m, *sol);
        ASSERT_EQ(analyse(kind), ZLR_RES_OK);
        expect_row("Rows", e.rows);
        expect_row("Bounds", e.bounds);
        expect_row("Dual signs", e.signs);
        expect_row("Stationarity", e.stationarity);
        expect_row("Complementarity", e.products);
        EXPECT_EQ(number_of("Rows", 3), e.rows.num) << "all are far above the tolerance\n" << text;
        EXPECT_EQ(number_of("Bounds", 3), e.bounds.num);
        if (kind == ZLR_SOL_ITG && model_num_int(&m) > 0)
            expect_row("Integrality", e.integers);
        else
            EXPECT_EQ(line_of("Integrality"), "");
        num_bad += e.rows.num + e.bounds.num + e.signs.num;
        if (HasFailure()) FAIL() << text;
    }
    EXPECT_GT(num_bad, 300) << "the models have something to find";
}

TEST_F(solution_violations, name_the_worst_with_their_values)
{
    model m = two_row_model(ZLR_SENSE_MIN);
    names_resize(&m.con_names, 2);
    names_resize(&m.var_names, 2);
    names_put(&m.con_names, 1, "capacity");
    names_put(&m.var_names, 0, "corn");
    solution *sol = renew(m);
    put_optimum(sol, ZLR_SENSE_MIN);
    sol->xx = {4.0, 1.0}; /* corn above 3, row 2 at 7 */
    sol->y = {0.5, -2.0 / 3.0};
    sol->slc = {0.5, 0.0}; /* a lower side that is not there */
    ASSERT_EQ(analyse(), ZLR_RES_OK);
    EXPECT_TRUE(has("activity 7 above 6: row capacity\n")) << text;
    EXPECT_TRUE(has("value 4 above 3: column corn\n")) << text;
    EXPECT_TRUE(has("dual 0.5 of a lower side that is not there: row c1\n")) << text;
    EXPECT_TRUE(has("reduced cost -0.833333, its bounds give -0.333333: column corn\n")) << text;
    EXPECT_TRUE(has("dual 0.333333333 of the upper bound, 1 away: column corn\n")) << text;
    EXPECT_TRUE(has("dual none: a dual has no side")) << text;
    EXPECT_NE(line_of("Status").find("OPTIMAL (problem PRIMAL_AND_DUAL_FEASIBLE)"), std::string::npos);
    EXPECT_NE(line_of("By check").find("UNKNOWN"), std::string::npos) << text;

    sol->slc = {0.0, 0.0};
    ASSERT_EQ(analyse(), ZLR_RES_OK);
    EXPECT_TRUE(has("multiplier 0.5 wants a lower side, which is not there: row c1\n")) << text;
    EXPECT_NEAR(number_of("Dual signs", 0), 0.5, 1e-12);
}

/* Objectives of two_row_model at its optimum and moved. */
TEST_F(solution_violations, objectives_and_gap)
{
    for (const int32_t sense : {ZLR_SENSE_MIN, ZLR_SENSE_MAX}) {
        const double s = sense == ZLR_SENSE_MAX ? -1.0 : 1.0;
        model m = two_row_model(sense);
        m.cfix = 100.0;
        solution *sol = renew(m);
        put_optimum(sol, sense);
        ASSERT_EQ(analyse(), ZLR_RES_OK);
        EXPECT_NEAR(number_of("Objective", 0), 100.0 - s * 5.0, 1e-9);
        EXPECT_NEAR(number_of("Objective", 1), 100.0 - s * 5.0, 1e-9);
        EXPECT_LT(number_of("Gap", 0), 1e-12);
        EXPECT_EQ(line_of("By check"), "");

        sol->xx = {2.0, 1.0};
        ASSERT_EQ(analyse(), ZLR_RES_OK);
        EXPECT_NEAR(number_of("Objective", 0), 100.0 - s * 4.0, 1e-9);
        EXPECT_NEAR(number_of("Gap", 0), 1.0, 1e-9);
        EXPECT_NEAR(number_of("Gap", 1), 0.2, 1e-9) << "the constant does not make it look small";
    }
}

TEST_F(solution_violations, integer_solutions_have_a_bound)
{
    model m = two_row_model(ZLR_SENSE_MIN);
    m.var_type = {ZLR_VAR_INT, ZLR_VAR_INT};
    solution *sol = renew(m, ZLR_SOL_ITG);
    sol->has_primal = true;
    sol->xx = {2.0, 1.25};
    ASSERT_EQ(analyse(ZLR_SOL_ITG), ZLR_RES_OK);
    EXPECT_NEAR(number_of("Objective", 0), -4.5, 1e-9);
    EXPECT_TRUE(has("bound none")) << text;
    EXPECT_EQ(number_of("Integrality", 3), 1);
    EXPECT_TRUE(has("value 1.25: column x2")) << text;
    task.run.best_bound = -5.4;
    ASSERT_EQ(analyse(ZLR_SOL_ITG), ZLR_RES_OK);
    EXPECT_NEAR(number_of("Objective", 1), -5.4, 1e-9);
    EXPECT_NEAR(number_of("Gap", 0), 0.9, 1e-9);
    EXPECT_NEAR(number_of("Gap", 1), 0.2, 1e-9);
    sol->xx = {0.0, 0.0};
    ASSERT_EQ(analyse(ZLR_SOL_ITG), ZLR_RES_OK);
    EXPECT_TRUE(std::isnan(number_of("Gap", 1))) << "an incumbent of 0 has no relative gap\n" << text;
}

TEST_F(solution_violations, sizes_name_the_largest)
{
    solution *sol = renew(two_row_model(ZLR_SENSE_MIN));
    put_optimum(sol, ZLR_SENSE_MIN);
    ASSERT_EQ(analyse(), ZLR_RES_OK);
    EXPECT_NE(line_of("Columns  ").find("column x1"), std::string::npos);
    EXPECT_NEAR(number_of("Columns  ", 0), 3.0, 1e-9);
    EXPECT_NEAR(number_of("Columns  ", 1), 3.2, 1e-9); /* root of 10 */
    EXPECT_NEAR(number_of("Row activities", 0), 6.0, 1e-9);
    EXPECT_NE(line_of("Row activities").find("row c2"), std::string::npos);
    EXPECT_NEAR(number_of("Row duals", 0), 0.67, 1e-9);
    EXPECT_NEAR(number_of("Reduced costs", 0), 0.33, 1e-9);
}

TEST_F(solution_violations, lists_are_short_unless_asked_for)
{
    const size_t num = 40;
    const model m = make_model(ZLR_SENSE_MIN, std::vector<double>(num, 1.0), {}, std::vector<double>(num, 0.0),
                               std::vector<double>(num, 1.0));
    solution *sol = renew(m, ZLR_SOL_ITR);
    sol->has_primal = true;
    for (size_t j = 0; j < num; j++) sol->xx[j] = 2.0 + static_cast<double>(j);
    const auto num_listed = [&] {
        size_t count = 0;
        for (size_t at = text.find("above 1: column"); at != std::string::npos;
             at = text.find("above 1: column", at + 1))
            count++;
        return count;
    };
    ASSERT_EQ(analyse(ZLR_SOL_ITR), ZLR_RES_OK);
    EXPECT_EQ(num_listed(), 3U);
    EXPECT_LT(text.find("column x40\n"), text.find("column x39\n")) << "largest first";
    EXPECT_LT(text.find("column x39\n"), text.find("column x38\n"));
    ASSERT_EQ(param_put_int(&task.params, IPAR_ANALYZE_DETAIL, ANALYSIS_FULL, &task.streams), ZLR_RES_OK);
    ASSERT_EQ(analyse(ZLR_SOL_ITR), ZLR_RES_OK);
    EXPECT_EQ(num_listed(), num);
    EXPECT_EQ(number_of("Bounds", 3), num);
}

/* What is below the tolerance is named, but not counted. */
TEST_F(solution_violations, tolerances_are_those_of_the_check)
{
    solution *sol = renew(two_row_model(ZLR_SENSE_MIN));
    put_optimum(sol, ZLR_SENSE_MIN);
    sol->xx[0] = 3.0 + 2e-6; /* 3e-6 are allowed at a bound of 3 */
    ASSERT_EQ(analyse(), ZLR_RES_OK);
    EXPECT_EQ(number_of("Bounds", 2), 1);
    EXPECT_EQ(number_of("Bounds", 3), 0);
    EXPECT_TRUE(has("column x1 2.0e-06")) << text;
    ASSERT_EQ(param_put_double(&task.params, DPAR_CHECK_TOL, 1e-7, &task.streams), ZLR_RES_OK);
    ASSERT_EQ(param_put_double(&task.params, DPAR_PRIMAL_FEASIBILITY_TOL, 1e-7, &task.streams), ZLR_RES_OK);
    ASSERT_EQ(analyse(), ZLR_RES_OK);
    EXPECT_EQ(number_of("Bounds", 3), 1);
}

TEST_F(solution_violations, incomplete_solutions_are_told)
{
    solution *sol = renew(two_row_model(ZLR_SENSE_MIN));
    EXPECT_EQ(solution_analysis_print(&task, ZLR_STREAM_MSG, ZLR_SOL_ITG), ZLR_RES_ERR_NO_SOLUTION);
    EXPECT_EQ(text, "There is no integer solution to analyse.\n");

    ASSERT_EQ(analyse(), ZLR_RES_OK);
    EXPECT_TRUE(has("no values of columns") && has("no duals")) << text;
    EXPECT_EQ(line_of("Rows"), "");

    put_optimum(sol, ZLR_SENSE_MIN); /* the multipliers of the rows alone */
    sol->suc = sol->sux = {0.0, 0.0};
    ASSERT_EQ(analyse(), ZLR_RES_OK);
    EXPECT_EQ(number_of("Stationarity", 0), 0.0) << text;
    EXPECT_NEAR(number_of("Objective", 1), -5.0, 1e-9);

    sol->xx[1] = model_inf;
    ASSERT_EQ(analyse(), ZLR_RES_OK);
    EXPECT_TRUE(has("one is infinite: column x2")) << text;
    EXPECT_EQ(line_of("Bounds"), "");
    sol->y[0] = -model_inf;
    ASSERT_EQ(analyse(), ZLR_RES_OK);
    EXPECT_TRUE(has("one is infinite: row c1")) << text;
}

TEST_F(solution_violations, quadratic_rows_count_and_their_duals_do_not)
{
    model m = two_row_model(ZLR_SENSE_MIN);
    m.qcon = {{0, {{0, 0, 2.0}, {1, 0, 1.0}}}}; /* x0^2 + x0 x1 */
    solution *sol = renew(m);
    put_optimum(sol, ZLR_SENSE_MIN); /* 3 + 1 + 9 + 3 against 5 */
    ASSERT_EQ(analyse(), ZLR_RES_OK);
    EXPECT_NEAR(number_of("Rows", 0), 11.0, 0.5);
    EXPECT_TRUE(has("activity 16 above 5: row c1")) << text;
    EXPECT_TRUE(has("not linear")) << text;
    EXPECT_EQ(line_of("Stationarity"), "");
}
