/* ampl_model_test.cpp - a stub becomes task data: the linear part, bounds, integer marks, objectives, names. */
#include "ampl_run.h"

#include "case_check.h"

#include <gtest/gtest.h>

static ampl_result run_model(const nl_model &model, const std::string &script = "")
{
    return run_ampl({.stub = nl_text(model), .script = script, .may_fail = false});
}

/* Every call of a small model, in order. */
TEST(ampl_model, whole_transfer)
{
    const ampl_result result = run_model(small_model());
    EXPECT_EQ(joined(result.transfer), "getintparam(task1, 172)\n"
                                       "getdouparam(task1, 11)\n"
                                       "getdouparam(task1, 8)\n"
                                       "putobjname(task1, \"_sobj[1]\")\n"
                                       "getnumcon(task1)\n"
                                       "getnumvar(task1)\n"
                                       "putmaxnumcon(task1, 2)\n"
                                       "putmaxnumvar(task1, 2)\n"
                                       "putmaxnumanz(task1, 4)\n"
                                       "appendcons(task1, 2)\n"
                                       "appendvars(task1, 2)\n"
                                       "putobjname(task1, \"_sobj[1]\")\n"
                                       "getnumcon(task1)\n"
                                       "getnumvar(task1)\n"
                                       "putcfix(task1, 0)\n"
                                       "putclist(task1, 1, {0}, {1})\n"
                                       "putclist(task1, 1, {1}, {2})\n"
                                       "putconbound(task1, 0, 0, 1, inf)\n"
                                       "putconbound(task1, 1, 1, -inf, 2)\n"
                                       "putvarbound(task1, 0, 0, 0, inf)\n"
                                       "putvarbound(task1, 1, 0, 0, inf)\n"
                                       "putacol(task1, 0, 2, {0 1}, {1 1})\n"
                                       "putacol(task1, 1, 2, {0 1}, {1 -1})\n"
                                       "getnumcon(task1)\n"
                                       "getnumvar(task1)\n"
                                       "getnumcone(task1)\n"
                                       "getnumintvar(task1)\n"
                                       "getprobtype(task1)\n");
    EXPECT_EQ(result.run.process.status, 0);
    EXPECT_EQ(result.run.process.out, "\n") << "the transfer prints nothing";
}

/* All forms of a stub give the same task. */
TEST(ampl_model, text_and_binary_forms)
{
    nl_model model = small_model();
    model.rows[0].upper = 7.25;
    model.columns[1] = {-3.0, -3.0};
    model.suffixes = {{0, "sstatus", {{0, 1}, {1, 4}}}, {5, "down", {{1, 0.5}}}};
    model.x = {{1, -3.0}};
    const std::string expected = joined(run_model(model).transfer);
    EXPECT_NE(expected.find("putsolution"), std::string::npos);
    for (const nl_form form : {NL_BINARY, NL_SWAPPED}) {
        const ampl_result result = run_ampl({.stub = nl_text(model, form), .may_fail = false});
        EXPECT_EQ(joined(result.transfer), expected) << form;
    }
}

/* Coefficients of rows that stand in one piece, in two, or in another order than the rows: within a column they keep the
 * file's order. */
TEST(ampl_model, coefficients_in_pieces)
{
    const std::string j0 = "J0 2\n0 1\n1 1\n", j1 = "J1 2\n0 1\n1 -1\n", g = "G0 2\n0 1\n1 2\n", b = "b\n2 0\n2 0\n";
    const std::string ascending = "putacol(task1, 0, 2, {0 1}, {1 1})\nputacol(task1, 1, 2, {0 1}, {1 -1})\n";
    const std::string descending = "putacol(task1, 0, 2, {1 0}, {1 1})\nputacol(task1, 1, 2, {1 0}, {-1 1})\n";
    const struct {
        const char *name;
        std::string end; /* of the stub, behind the lengths of the columns */
        std::string expected;
    } cases[] = {
        {"one piece", b + j0 + j1 + g, ascending},        {"at the end", b + g + j0 + j1, ascending},
        {"two pieces", b + j0 + g + j1, ascending},       {"descending", b + j1 + j0 + g, descending},
        {"two, descending", j1 + b + j0 + g, descending}, {"in front", j0 + j1 + g + b, ascending},
    };
    const std::string text = nl_text(small_model());
    const size_t at = text.find("b\n2 0\n2 0\n"), k = text.find("k1\n2\n");
    ASSERT_TRUE(at < k && k != std::string::npos);
    for (const auto &item : cases) {
        SCOPED_TRACE(item.name);
        const ampl_result result = run_ampl({.stub = text.substr(0, at) + "k1\n2\n" + item.end, .may_fail = false});
        EXPECT_EQ(part_of(result, "putacol"), item.expected);
        EXPECT_EQ(part_of(result, "putclist"), "putclist(task1, 1, {0}, {1})\nputclist(task1, 1, {1}, {2})\n");
        EXPECT_EQ(part_of(result, "putvarbound"),
                  "putvarbound(task1, 0, 0, 0, inf)\nputvarbound(task1, 1, 0, 0, inf)\n");
    }
}

/* So few that the piece of them is not worth being left out of what the library reads. */
TEST(ampl_model, few_coefficients)
{
    nl_model model = small_model();
    model.columns.resize(400);
    model.rows = {{.upper = 1.5, .linear = {{0, -1.0}, {7, -2.0}}}, {.lower = 0.25, .linear = {{7, 1.0}, {150, -1.0}}}};
    for (const bool is_nonlinear : {false, true}) {
        SCOPED_TRACE(is_nonlinear);
        if (is_nonlinear) model.objectives[0].nonlinear = nl_exp(nl_variable(0));
        model.nlvo = is_nonlinear ? 1 : 0;
        const std::string calls = part_of(run_model(model), "putmaxnumanz putacol");
        for (const char *call :
             {"putmaxnumanz(task1, 4)", "putacol(task1, 0, 1, {0}, {-1})", "putacol(task1, 1, 0, {}, {})",
              "putacol(task1, 7, 2, {0 1}, {-2 1})", "putacol(task1, 150, 1, {1}, {-1})"})
            EXPECT_NE(calls.find(std::string(call) + "\n"), std::string::npos) << call << " in\n" << calls;
    }
}

/* ---- Bounds ---- */

TEST(ampl_model, keys_of_bounds)
{
    const double inf = nl_infinite;
    const struct {
        const char *name;
        double lower, upper;
        const char *expected; /* key and bounds */
    } cases[] = {
        {"lower", -1.0, inf, "0, -1, inf"},
        {"upper", -inf, 4.0, "1, -inf, 4"},
        {"fixed", 2.5, 2.5, "2, 2.5, 2.5"},
        {"free", -inf, inf, "3, -inf, inf"},
        {"range", -1.0, 4.0, "4, -1, 4"},
        {"empty range is left to the solver", 4.0, -1.0, "4, 4, -1"},
        {"of the size of the infinity", -1e16, 1e16, "3, -1e+16, 1e+16"},
        {"just inside", -9.9e15, 9.9e15, "4, -9.9e+15, 9.9e+15"},
        {"lower inside alone", -9.9e15, 1e16, "0, -9.9e+15, 1e+16"},
        {"upper inside alone", -1e16, 9.9e15, "1, -1e+16, 9.9e+15"},
        {"equal beyond the infinity above", 1e17, 1e17, "2, 1e+17, 1e+17"},
        {"equal beyond the infinity below", -1e17, -1e17, "2, -1e+17, -1e+17"},
        {"ends the wrong way round", 1e17, -1e17, "4, 1e+17, -1e+17"},
    };
    nl_model model;
    std::string rows, columns;
    for (const auto &item : cases) {
        const std::string number = std::to_string(model.columns.size());
        model.columns.push_back({item.lower, item.upper});
        model.rows.push_back({.lower = item.lower, .upper = item.upper, .linear = {{0, 1.0}}});
        rows += "putconbound(task1, " + number + ", " + item.expected + ")\n";
        columns += "putvarbound(task1, " + number + ", " + item.expected + ")\n";
    }
    model.objectives = {{}};
    const ampl_result result = run_model(model);
    EXPECT_EQ(part_of(result, "putconbound"), rows);
    EXPECT_EQ(part_of(result, "putvarbound"), columns);
    /* The infinity is the library's. */
    const ampl_result smaller = run_model(model, "dou 11 3");
    EXPECT_EQ(split(part_of(smaller, "putvarbound"), "\n").at(4), "putvarbound(task1, 4, 0, -1, 4)");
    EXPECT_EQ(split(part_of(smaller, "putconbound"), "\n").at(1), "putconbound(task1, 1, 3, -inf, 4)");
}

/* ---- Sizes at the edge ---- */

TEST(ampl_model, without_rows)
{
    nl_model model = small_model();
    model.rows.clear();
    const ampl_result result = run_model(model);
    EXPECT_EQ(part_of(result, "putmaxnumcon putmaxnumanz appendcons putconbound putacol"),
              "putmaxnumcon(task1, 0)\nputmaxnumanz(task1, 0)\nappendcons(task1, 0)\n");
    EXPECT_EQ(part_of(result, "putclist"), "putclist(task1, 1, {0}, {1})\nputclist(task1, 1, {1}, {2})\n");
}

TEST(ampl_model, empty_rows_and_columns)
{
    nl_model model = small_model();
    model.columns.insert(model.columns.begin() + 1, 2, {});
    model.rows = {{.upper = 1.0}, {.lower = 0.0, .linear = {{3, 2.0}}}, {.lower = 0.0, .upper = 0.0}};
    const ampl_result result = run_model(model);
    EXPECT_EQ(part_of(result, "putmaxnumanz putacol"),
              "putmaxnumanz(task1, 1)\nputacol(task1, 0, 0, {}, {})\nputacol(task1, 1, 0, {}, {})\n"
              "putacol(task1, 2, 0, {}, {})\nputacol(task1, 3, 1, {1}, {2})\n");
}

/* ---- Objectives ---- */

TEST(ampl_model, objectives)
{
    const nl_objective first = {.linear = {{0, 3.0}}, .constant = 4.5};
    const nl_objective second = {.linear = {{1, 5.0}}, .maximise = true, .constant = 9.0};
    nl_objective maximised = first;
    maximised.maximise = true;
    const std::string two_names = "putobjname(task1, \"_sobj[1]\")\nputobjname(task1, \"_sobj[1]\")\n";
    const struct {
        const char *name;
        std::vector<nl_objective> objectives;
        std::string expected;
    } cases[] = {
        {"none", {}, "putcfix(task1, 0)\nputclist(task1, 1, {0}, {0})\nputclist(task1, 1, {1}, {0})\n"},
        {"constant",
         {first},
         two_names + "putcfix(task1, 4.5)\nputclist(task1, 1, {0}, {3})\nputclist(task1, 1, {1}, {0})\n"},
        {"of several the first",
         {first, second},
         two_names + "putcfix(task1, 4.5)\nputclist(task1, 1, {0}, {3})\nputclist(task1, 1, {1}, {0})\n"},
        {"maximised, nothing negated",
         {maximised, first},
         "putobjname(task1, \"_sobj[1]\")\nputobjsense(task1, 1)\nputobjname(task1, \"_sobj[1]\")\nputcfix(task1, 4.5)\n"
         "putclist(task1, 1, {0}, {3})\nputclist(task1, 1, {1}, {0})\n"},
    };
    for (const auto &item : cases) {
        SCOPED_TRACE(item.name);
        nl_model model = small_model();
        model.objectives = item.objectives;
        EXPECT_EQ(part_of(run_model(model), "putobjsense putobjname putcfix putclist"), item.expected);
    }
}

/* ---- Integer columns ---- */

/* Columns of a model in the order of the format: nonlinear in both, in rows alone, in objectives alone, linear; in each the
 * integer ones last. The library's rule marks a run that ends with the nonlinear columns, and one that ends with all. */
TEST(ampl_model, integer_marks)
{
    const struct {
        const char *name;
        int nlvb, nlvc, nlvo, nbv, niv, nlvbi, nlvci, nlvoi;
        std::vector<int> marked, extended;
    } cases[] = {
        {"none", 0, 0, 0, 0, 0, 0, 0, 0, {}, {}},
        {"linear binary", 0, 0, 0, 2, 0, 0, 0, 0, {8, 9}, {8, 9}},
        {"linear integer", 0, 0, 0, 0, 3, 0, 0, 0, {7, 8, 9}, {7, 8, 9}},
        {"both linear kinds", 0, 0, 0, 1, 2, 0, 0, 0, {7, 8, 9}, {7, 8, 9}},
        {"nonlinear in rows", 0, 4, 0, 1, 1, 0, 2, 0, {2, 3}, {2, 3, 8, 9}},
        {"nonlinear in objectives", 0, 0, 3, 2, 0, 0, 0, 1, {2, 9}, {2, 8, 9}},
        {"nonlinear in both", 3, 3, 3, 0, 3, 1, 0, 0, {2, 8, 9}, {2, 7, 8, 9}},
        {"in all groups", 2, 4, 6, 1, 2, 1, 1, 1, {3, 4, 5}, {1, 3, 5, 7, 8, 9}},
    };
    for (const auto &item : cases) {
        nl_model model;
        model.columns.resize(10);
        nl_expression rows, objective;
        for (int j = 0; j < item.nlvc; ++j) rows = rows.empty() ? nl_square(j) : nl_plus(rows, nl_square(j));
        for (int j = 0; j < item.nlvo; ++j)
            if (j < item.nlvb || j >= item.nlvc)
                objective = objective.empty() ? nl_square(j) : nl_plus(objective, nl_square(j));
        nl_terms all, lead;
        for (int j = 0; j < 10; ++j) all.push_back({j, 1.0});
        model.rows = {{.upper = 5.0, .linear = all, .nonlinear = rows}};
        model.objectives = {{.linear = all, .nonlinear = objective}};
        model.nlvb = item.nlvb;
        model.nlvc = item.nlvc;
        model.nlvo = item.nlvo;
        model.nbv = item.nbv;
        model.niv = item.niv;
        model.nlvbi = item.nlvbi;
        model.nlvci = item.nlvci;
        model.nlvoi = item.nlvoi;
        for (const bool extended : {false, true}) {
            SCOPED_TRACE(std::string(item.name) + (extended ? ", extended" : ""));
            std::string expected;
            for (const int j : extended ? item.extended : item.marked)
                expected += "putvartype(task1, " + std::to_string(j) + ", 1)\n";
            EXPECT_EQ(part_of(run_model(model, extended ? "int 172 1" : ""), "putvartype"), expected);
        }
    }
}

/* ---- Names ---- */

TEST(ampl_model, names)
{
    nl_model model = small_model();
    model.max_row_name = 4;
    model.max_column_name = 5;
    const std::string stub = nl_text(model);
    const char *calls = "putobjname putconname putvarname";
    const std::string objective = "putobjname(task1, \"cost\")\n";
    const std::string rows = "putconname(task1, 0, \"up 1\")\nputconname(task1, 1, \"down\")\n";
    const std::string columns = "putvarname(task1, 0, \"a\")\nputvarname(task1, 1, \"b[2]\")\n";
    EXPECT_EQ(part_of(run_ampl({.stub = stub, .row_names = "up 1\ndown\ncost\n", .column_names = "a\nb[2]\n"}), calls),
              objective + objective + rows + columns);

    /* No lengths in the header: no names, whatever files there are. */
    EXPECT_EQ(
        part_of(
            run_ampl({.stub = nl_text(small_model()), .row_names = "up 1\ndown\ncost\n", .column_names = "a\nb[2]\n"}),
            calls),
        objective + objective);
    model.max_column_name = 0;
    EXPECT_EQ(
        part_of(run_ampl({.stub = nl_text(model), .row_names = "up 1\ndown\ncost\n", .column_names = "a\nb\n"}), calls),
        objective + objective + rows);
    model.max_column_name = 5;
    model.max_row_name = 0;
    EXPECT_EQ(
        part_of(run_ampl({.stub = nl_text(model), .row_names = "up 1\ndown\ncost\n", .column_names = "a\nb[2]\n"}),
                calls),
        objective + objective + columns);

    /* Lengths, and a file that is not there: no names of rows and columns are made up. */
    const std::string two_names = "putobjname(task1, \"_sobj[1]\")\nputobjname(task1, \"_sobj[1]\")\n";
    model.max_row_name = 4;
    EXPECT_EQ(part_of(run_ampl({.stub = nl_text(model), .column_names = "a\nb[2]\n"}), calls), two_names + columns);

    /* The first failure ends them, and the transfer. */
    const ampl_result failed = run_ampl({.stub = stub,
                                         .script = "code ZLR_putconname 2 1300",
                                         .row_names = "up 1\ndown\ncost\n",
                                         .column_names = "a\nb\n"});
    EXPECT_EQ(part_of(failed, std::string(calls) + " putcfix"),
              objective + objective + "putconname(task1, 0, \"up 1\")\nputconname(task1, 1, \"down\") = 1300\n");
    EXPECT_FALSE(failed.has_sol);
}
