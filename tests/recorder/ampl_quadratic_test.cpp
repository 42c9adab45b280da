/* ampl_quadratic_test.cpp - what is quadratic in a stub, what is more, and the drop tolerance. */
#include "ampl_run.h"

#include <gtest/gtest.h>

static const char *const quadratic_calls = "putmaxnumqnz putqobj putqconk putnlfunc";

static ampl_result run_model(const nl_model &model, const std::string &script = "")
{
    return run_ampl({.stub = nl_text(model), .script = script});
}

/* x0^2 + 3 x0 x1 + 2 x1^2 as an objective of small_model. */
static nl_model quadratic_objective()
{
    nl_model model = small_model();
    model.nlvo = 2;
    model.objectives[0].nonlinear =
        nl_plus(nl_plus(nl_square(0), nl_product(nl_number(3), nl_product(nl_variable(0), nl_variable(1)))),
                nl_product(nl_number(2), nl_square(1)));
    return model;
}

/* Row 0 of small_model gets a square of column 0, with these sides. */
static nl_model quadratic_row(double lower, double upper)
{
    nl_model model = small_model();
    model.nlvc = 1;
    model.rows[0].lower = lower;
    model.rows[0].upper = upper;
    model.rows[0].nonlinear = nl_square(0);
    return model;
}

/* Values are those of the matrix of x'Qx/2, its lower triangle. */
TEST(ampl_quadratic, objective)
{
    const ampl_result result = run_model(quadratic_objective());
    EXPECT_EQ(part_of(result, quadratic_calls),
              "putmaxnumqnz(task1, 3)\nputqobj(task1, 3, {0 1 1}, {0 0 1}, {2 3 4})\n");
    EXPECT_EQ(part_of(result, "putclist putacol"),
              "putclist(task1, 1, {0}, {1})\nputclist(task1, 1, {1}, {2})\n"
              "putacol(task1, 0, 2, {0 1}, {1 1})\nputacol(task1, 1, 2, {0 1}, {1 -1})\n");
}

/* What an expression holds beside squares: a constant goes to the objective's, linear terms to its coefficients. */
TEST(ampl_quadratic, constants_and_linear_terms_inside)
{
    nl_model model = quadratic_objective();
    /* (x0 + 2)^2 = x0^2 + 4 x0 + 4 */
    model.objectives[0].nonlinear = "o5\n" + nl_plus(nl_variable(0), nl_number(2)) + nl_number(2);
    const ampl_result objective = run_model(model);
    EXPECT_EQ(part_of(objective, "putcfix putclist putqobj"),
              "putcfix(task1, 4)\nputclist(task1, 1, {0}, {5})\nputclist(task1, 1, {1}, {2})\n"
              "putqobj(task1, 1, {0}, {0}, {2})\n");

    model = quadratic_row(-nl_infinite, 10.0);
    model.rows[0].nonlinear = "o5\n" + nl_plus(nl_variable(0), nl_number(2)) + nl_number(2);
    const ampl_result row = run_model(model);
    EXPECT_EQ(part_of(row, "putconbound putacol putqconk"),
              "putconbound(task1, 0, 1, -inf, 6)\nputconbound(task1, 1, 1, -inf, 2)\n"
              "putacol(task1, 0, 2, {1 0}, {1 5})\nputacol(task1, 1, 2, {1 0}, {-1 1})\n"
              "putqconk(task1, 0, 1, {0}, {0}, {2})\n");
}

/* Several objectives: the first is linear as it is not among the leading nonlinear ones only when there are none; one that
 * counts as nonlinear and is linear all the same has no quadratic part. */
TEST(ampl_quadratic, objective_of_degree_one)
{
    nl_model model = quadratic_objective();
    model.objectives[0].nonlinear = nl_plus(nl_variable(0), nl_number(1));
    EXPECT_EQ(part_of(run_model(model), "putcfix putclist putmaxnumqnz putqobj"),
              "putcfix(task1, 1)\nputclist(task1, 1, {0}, {2})\nputclist(task1, 1, {1}, {2})\n"
              "putmaxnumqnz(task1, 0)\nputqobj(task1, 0, null, null, null)\n");
}

TEST(ampl_quadratic, rows)
{
    nl_model model = quadratic_row(-nl_infinite, 3.0);
    const ampl_result upper = run_model(model);
    EXPECT_EQ(part_of(upper, quadratic_calls), "putmaxnumqnz(task1, 1)\nputqobj(task1, 0, null, null, null)\n"
                                               "putqconk(task1, 0, 1, {0}, {0}, {2})\n");
    EXPECT_EQ(part_of(upper, "putconbound"), "putconbound(task1, 0, 1, -inf, 3)\nputconbound(task1, 1, 1, -inf, 2)\n");
    /* Within a column the rows stand in descending order, and the linear terms of the quadratic row are there. */
    EXPECT_EQ(part_of(upper, "putacol"), "putacol(task1, 0, 2, {1 0}, {1 1})\nputacol(task1, 1, 2, {1 0}, {-1 1})\n");
    EXPECT_EQ(part_of(run_model(quadratic_row(3.0, nl_infinite)), "putqconk"),
              "putqconk(task1, 0, 1, {0}, {0}, {2})\n");
    EXPECT_EQ(part_of(run_model(quadratic_row(-nl_infinite, nl_infinite)), "putconbound putqconk"),
              "putconbound(task1, 0, 3, -inf, inf)\nputconbound(task1, 1, 1, -inf, 2)\n"
              "putqconk(task1, 0, 1, {0}, {0}, {2})\n");
    /* The rows' walk goes on behind an error, and the last row's code stands. */
    model.rows[1].nonlinear = nl_square(0);
    model.nlvc = 1;
    const ampl_result first = run_model(model, "code ZLR_putqconk 1 1500");
    EXPECT_EQ(part_of(first, "putqconk"),
              "putqconk(task1, 0, 1, {0}, {0}, {2}) = 1500\nputqconk(task1, 1, 1, {0}, {0}, {2})\n");
    EXPECT_TRUE(first.has_sol);
    const ampl_result last = run_model(model, "code ZLR_putqconk 2 1500");
    EXPECT_FALSE(last.has_sol);
    EXPECT_EQ(position_of(last.run, "optimize"), -1);
}

/* A row that is not linear has one side. */
TEST(ampl_quadratic, two_sided_rows)
{
    const double inf = nl_infinite;
    const struct {
        const char *name;
        double lower[3], upper[3];
        int code;
    } cases[] = {
        {"one-sided", {-inf, 1.0, -inf}, {1.0, inf, inf}, 0},
        {"equality", {1.0, -inf, -inf}, {1.0, 1.0, 1.0}, 1290},
        {"range", {1.0, -inf, -inf}, {2.0, 1.0, 1.0}, 1292},
        {"last of several decides: range", {1.0, -inf, 1.0}, {1.0, 1.0, 2.0}, 1292},
        {"last of several decides: equality", {1.0, 1.0, -inf}, {2.0, 1.0, 1.0}, 1290},
        {"bounds of 1e16 are none", {-1e16, 0.0, -inf}, {1.0, 1e16, 0.0}, 0},
        {"bounds below 1e16 are some", {-9e15, -inf, -inf}, {9e15, 0.0, 0.0}, 1292},
    };
    for (const auto &item : cases) {
        SCOPED_TRACE(item.name);
        nl_model model = small_model();
        model.nlvc = 1;
        model.rows.clear();
        for (int i = 0; i < 3; ++i)
            model.rows.push_back(
                {.lower = item.lower[i], .upper = item.upper[i], .linear = {{0, 1.0}}, .nonlinear = nl_square(0)});
        model.rows.push_back({.lower = 1.0, .upper = 2.0, .linear = {{1, 1.0}}}); /* linear: not looked at */
        /* The library's own infinity has no part in it. */
        const ampl_result result = run_model(model, "dou 11 0.5");
        EXPECT_EQ(calls_of(result.run, "getcodedesc(" + std::to_string(item.code) + ", null)").size(), 1U);
        EXPECT_EQ(result.has_sol, item.code == 0);
        if (item.code != 0) {
            EXPECT_EQ(part_of(result, "putmaxnumcon appendcons appendvars putobjname"),
                      "putobjname(task1, \"_sobj[1]\")\n")
                << "before any row or column exists";
        }
    }
}

/* Coefficients of linear rows beside those of a quadratic row, whose own linear part the expression adds to: in whatever
 * order the file has them the rows of a column descend. */
TEST(ampl_quadratic, linear_rows_in_any_order)
{
    const std::string j0 = "J0 2\n0 1\n1 1\n", j1 = "J1 2\n0 1\n1 -1\n", j2 = "J2 1\n1 7\n", g = "G0 2\n0 1\n1 2\n";
    nl_model model = quadratic_row(-nl_infinite, 10.0);
    model.rows.push_back({.upper = 5.0, .linear = {{1, 7.0}}});
    model.rows[0].nonlinear = "o5\n" + nl_plus(nl_variable(0), nl_number(2)) + nl_number(2);
    const std::string text = nl_text(model);
    const std::string begin = text.substr(0, text.find("J0 2"));
    ASSERT_EQ(text, begin + j0 + j1 + j2 + g);
    for (const std::string &end : {j0 + j1 + j2 + g, g + j0 + j1 + j2, j1 + j2 + g + j0, j0 + g + j1 + j2,
                                   j1 + j0 + j2 + g, j0 + j2 + j1 + g, j2 + j1 + j0 + g, j1 + g + j2 + j0}) {
        const ampl_result result = run_ampl({.stub = begin + end, .may_fail = false});
        EXPECT_EQ(part_of(result, "putmaxnumanz putconbound putacol putqconk"),
                  "putmaxnumanz(task1, 5)\nputconbound(task1, 0, 1, -inf, 6)\nputconbound(task1, 1, 1, -inf, 2)\n"
                  "putconbound(task1, 2, 1, -inf, 5)\nputacol(task1, 0, 2, {1 0}, {1 5})\n"
                  "putacol(task1, 1, 3, {2 1 0}, {7 -1 1})\nputqconk(task1, 0, 1, {0}, {0}, {2})\n")
            << end;
    }
}

/* ---- The drop tolerance ---- */

TEST(ampl_quadratic, drop_tolerance_where_rows_are_not_linear)
{
    nl_model model = small_model();
    model.rows[0].linear = {{0, 1e-3}, {1, -2e-3}};
    model.rows[1].linear = {{0, -1e-3}, {1, 0.0}};
    EXPECT_EQ(part_of(run_model(model, "dou 8 1e-3"), "putacol"),
              "putacol(task1, 0, 2, {0 1}, {0.001 -0.001})\nputacol(task1, 1, 2, {0 1}, {-0.002 0})\n")
        << "a linear model passes all";
    model.rows.insert(model.rows.begin(), {.upper = 1.0, .linear = {{0, 0.0}, {1, 1.0}}, .nonlinear = nl_square(0)});
    model.nlvc = 1;
    EXPECT_EQ(part_of(run_model(model, "dou 8 1e-3"), "putmaxnumanz putacol"),
              "putmaxnumanz(task1, 2)\nputacol(task1, 0, 0, {}, {})\nputacol(task1, 1, 2, {1 0}, {-0.002 1})\n")
        << "one of the tolerance's size is dropped";
    EXPECT_EQ(part_of(run_model(model, "dou 8 0.999e-3"), "putacol"),
              "putacol(task1, 0, 2, {2 1}, {-0.001 0.001})\nputacol(task1, 1, 2, {1 0}, {-0.002 1})\n");
}

/* ---- General nonlinear functions ---- */

/* Which of a model's functions make it a nonlinear one. */
TEST(ampl_quadratic, nonlinear_models)
{
    const nl_expression exponential = nl_exp(nl_variable(0));
    nl_model objective = quadratic_objective();
    objective.objectives[0].nonlinear = exponential;
    nl_model row = quadratic_row(-nl_infinite, 3.0);
    row.rows[0].nonlinear = exponential;
    nl_model both = quadratic_row(-nl_infinite, 3.0); /* the row is quadratic, the objective decides */
    both.nlvo = both.nlvb = 1;
    both.objectives[0].nonlinear = exponential;
    nl_model second = quadratic_objective(); /* the objective that is not used */
    second.objectives.push_back({.nonlinear = exponential});
    const struct {
        const char *name;
        const nl_model *model;
        bool is_nonlinear;
        const char *linear; /* objective and matrix */
    } cases[] = {
        {"objective", &objective, true,
         "putclist(task1, 1, {0}, {0})\nputclist(task1, 1, {1}, {0})\n"
         "putacol(task1, 0, 2, {0 1}, {1 1})\nputacol(task1, 1, 2, {0 1}, {1 -1})\n"},
        {"row: its linear terms stay out, the linear objective is whole from its columns on", &row, true,
         "putclist(task1, 1, {0}, {0})\nputclist(task1, 1, {1}, {2})\n"
         "putacol(task1, 0, 1, {1}, {1})\nputacol(task1, 1, 1, {1}, {-1})\n"},
        {"objective over a quadratic row", &both, true,
         "putclist(task1, 1, {0}, {0})\nputclist(task1, 1, {1}, {2})\n"
         "putacol(task1, 0, 1, {1}, {1})\nputacol(task1, 1, 1, {1}, {-1})\n"},
        {"second objective", &second, false,
         "putclist(task1, 1, {0}, {1})\nputclist(task1, 1, {1}, {2})\n"
         "putacol(task1, 0, 2, {0 1}, {1 1})\nputacol(task1, 1, 2, {0 1}, {1 -1})\n"},
    };
    for (const auto &item : cases) {
        SCOPED_TRACE(item.name);
        const ampl_result result = run_model(*item.model);
        EXPECT_EQ(part_of(result, "putclist putacol"), item.linear);
        EXPECT_EQ(part_of(result, "putnlfunc").empty(), !item.is_nonlinear);
        EXPECT_EQ(part_of(result, "putqobj putqconk").empty(), item.is_nonlinear);
    }
}

/* A factor that is left with a constant alone, which the AMPL Solver Library stumbles over: either kind of model is right. */
TEST(ampl_quadratic, factor_without_variables)
{
    const nl_expression one = nl_plus(nl_product(nl_number(0), nl_variable(0)), nl_number(1));
    for (const nl_expression &expression :
         {nl_product(one, nl_variable(1)), nl_expression("o5\n" + one + nl_number(2))}) {
        nl_model model = quadratic_objective();
        model.objectives[0].nonlinear = expression;
        /* Where the library is left in midst of its work a leak checker finds its arrays. */
        const ampl_result result = run_ampl({.stub = nl_text(model), .may_print_errors = true});
        EXPECT_NE(part_of(result, "putnlfunc putqobj"), "");
    }
}

/* Rows of a nonlinear model have the bounds of the stub, though the search for quadratic parts moves constants into them. */
TEST(ampl_quadratic, bounds_of_a_nonlinear_model)
{
    nl_model model = quadratic_row(-nl_infinite, 3.0);
    model.rows[0].nonlinear = nl_plus(nl_square(0), nl_number(100));
    model.rows[1].nonlinear = nl_exp(nl_variable(0));
    const ampl_result result = run_model(model);
    EXPECT_EQ(part_of(result, "putconbound"), "putconbound(task1, 0, 1, -inf, 3)\nputconbound(task1, 1, 1, -inf, 2)\n");
    EXPECT_FALSE(part_of(result, "putnlfunc").empty());
}
