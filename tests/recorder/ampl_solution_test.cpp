/* ampl_solution_test.cpp - what AMPL gets back: solve codes, report, values, status keys, sensitivity. */
#include "ampl_run.h"

#include "case_check.h"

#include <gtest/gtest.h>

static ampl_result run_with(const std::string &script, const std::string &words = "")
{
    return run_ampl({.stub = nl_text(small_model()), .script = script, .words = words, .may_fail = false});
}

/* The values of a .sol file behind its options: multipliers, then columns. */
static std::vector<std::string> values_of(const std::string &sol)
{
    const std::vector<std::string> lines = split(sol, "\n");
    size_t at = 0;
    while (at < lines.size() && lines[at] != "Options") ++at;
    std::vector<std::string> values;
    const size_t num_options = at + 1 < lines.size() ? static_cast<size_t>(std::stoi(lines[at + 1])) : 0;
    for (size_t k = at + 2 + num_options + 4; k < lines.size() && lines[k].rfind("objno", 0) != 0; ++k)
        values.push_back(lines[k]);
    return values;
}

/* The lines of a suffix: "index value", for one kind (0 columns, 1 rows, 4 more for real values). */
static std::string suffix_of(const std::string &sol, int kind, const std::string &name)
{
    const std::vector<std::string> lines = split(sol, "\n");
    for (size_t k = 0; k + 1 < lines.size(); ++k) {
        if (lines[k].rfind("suffix " + std::to_string(kind) + " ", 0) != 0 || lines[k + 1] != name) continue;
        const size_t num = static_cast<size_t>(std::stoi(words_of(lines[k])[2]));
        std::string values;
        for (size_t p = 0; p < num; ++p) values += lines[k + 2 + p] + "\n";
        return values;
    }
    return "absent";
}

static const char *head(const char *problem, const char *solution)
{
    static std::string text;
    text = "ZELOR finished.\nProblem status    : PROBLEM_" + std::string(problem) + "\nSolution status   : SOLUTION_" +
           solution + "\n";
    return text.c_str();
}

/* ---- Codes and reports ---- */

TEST(ampl_solution, codes_of_statuses)
{
    const struct {
        int problem, solution, code;
        bool has_objectives;
    } cases[] = {
        {1, 0, 500, false},  {1, 1, 0, true},     {1, 2, 100, true},   {1, 3, 101, true},   {1, 4, 500, false},
        {4, 5, 200, false},  {5, 6, 300, false},  {1, 7, 150, false},  {1, 8, 500, false},  {1, 9, 500, false},
        {1, 10, 500, false}, {1, 11, 500, false}, {1, 12, 500, false}, {1, 14, 500, false}, {1, 15, 0, true},
        {1, 16, 150, false}, {7, 1, 501, false},  {7, 5, 501, false},  {7, 0, 501, false},  {0, 1, 0, true},
    };
    for (const auto &item : cases) {
        const std::string problem = std::to_string(item.problem);
        const std::string solution = std::to_string(item.solution);
        SCOPED_TRACE(problem + " / " + solution);
        const ampl_result result =
            run_with("defined 1\nprosta 1 " + problem + "\nstatus 1 " + solution + "\nprimal 1 -1.5e300\ndual 1 0.1");
        EXPECT_EQ(code_of(result.sol), item.code);
        std::string report = head(problem.c_str(), solution.c_str());
        if (item.has_objectives) report += "Primal objective  : -1.5e+300\nDual objective    : 0.1\n";
        EXPECT_EQ(report_of(result.sol), report);
    }
}

/* The basic solution first, then the integer one, then the interior one, there or not. */
TEST(ampl_solution, kinds)
{
    const struct {
        const char *script;
        int kind;
    } cases[] = {
        {"defined 0\ndefined 1\ndefined 2", 1},
        {"defined 0\ndefined 2", 2},
        {"defined 0", 0},
        {"", 0},
        {"defined 1\ncode ZLR_solutiondef 1 1300\ndefined 2", 2},
    };
    for (const auto &item : cases) {
        SCOPED_TRACE(item.script);
        const std::string kind = std::to_string(item.kind);
        const ampl_result result =
            run_with(std::string(item.script) + "\nstatus " + kind + " 1\nprimal " + kind + " 7\ndual " + kind + " 8");
        EXPECT_EQ(joined(calls_of(result.run, "getsolution")), "getsolution(task1, " + kind + ")\n");
        const std::string dual = item.kind == 2 ? "" : "Dual objective    : 8\n";
        EXPECT_EQ(report_of(result.sol), head("0", "1") + ("Primal objective  : 7\n" + dual));
        EXPECT_EQ(calls_of(result.run, "getdualobj").size(), item.kind == 2 ? 0U : 1U);
    }
}

/* Multipliers before columns, unchanged, for a maximisation as well. */
TEST(ampl_solution, values)
{
    nl_model model = small_model();
    for (const bool maximise : {false, true}) {
        model.objectives[0].maximise = maximise;
        const ampl_result result = run_ampl({.stub = nl_text(model),
                                             .script = "defined 1\nstatus 1 1\nx 0 0.1\nx 1 -2\ny 0 1e-300\ny 1 3.5\n"
                                                       "primal 1 12",
                                             .may_fail = false});
        EXPECT_EQ(values_of(result.sol), (std::vector<std::string>{"1e-300", "3.5", "0.1", "-2"}));
        EXPECT_NE(report_of(result.sol).find("Primal objective  : 12\n"), std::string::npos);
    }
}

TEST(ampl_solution, status_keys)
{
    const char *expected[] = {"0", "1", "6", "3", "4", "5", "0", "0", "0"};
    nl_model model;
    std::string script = "defined 1\nstatus 1 1\n", rows, columns;
    const int keys[] = {0, 1, 2, 3, 4, 5, 6, -1, 99};
    for (int k = 0; k < 9; ++k) {
        const std::string number = std::to_string(k);
        model.columns.push_back({});
        model.rows.push_back({.upper = 1.0, .linear = {{k, 1.0}}});
        script += "columnkey " + number + " " + std::to_string(keys[k]) + "\n";
        script += "rowkey " + std::to_string(8 - k) + " " + std::to_string(keys[k]) + "\n";
        if (std::string(expected[k]) != "0") columns += number + " " + expected[k] + "\n"; /* zeros are not written */
    }
    for (int k = 8; k >= 0; --k)
        if (std::string(expected[k]) != "0") rows += std::to_string(8 - k) + " " + expected[k] + "\n";
    model.objectives = {{}};
    const ampl_result result = run_ampl({.stub = nl_text(model), .script = script, .may_fail = false});
    EXPECT_EQ(suffix_of(result.sol, 0, "sstatus"), columns);
    EXPECT_EQ(suffix_of(result.sol, 1, "sstatus"), rows);
}

/* ---- Failures ---- */

TEST(ampl_solution, none_to_be_had)
{
    const ampl_result result = run_with("defined 1\nprosta 1 1\nstatus 1 1\nx 0 1\ny 0 2\nrowkey 0 1\ncolumnkey 0 1\n"
                                        "code ZLR_getsolution 1 1300");
    EXPECT_EQ(report_of(result.sol), head("0", "0"));
    EXPECT_EQ(code_of(result.sol), 500);
    EXPECT_EQ(values_of(result.sol), (std::vector<std::string>{"0", "0", "0", "0"}));
    EXPECT_EQ(suffix_of(result.sol, 0, "sstatus"), "");
    EXPECT_EQ(suffix_of(result.sol, 1, "sstatus"), "");
    EXPECT_TRUE(calls_of(result.run, "getprimalobj").empty());
    EXPECT_EQ(calls_of(result.run, "getcodedesc(0, null)").size(), 1U) << "not a failure of the job";

    /* An objective that is not to be had takes nothing from the rest. */
    const ampl_result without =
        run_with("defined 1\nstatus 1 1\nx 0 1\nprimal 1 5\ndual 1 6\ncode ZLR_getprimalobj 1 1300");
    EXPECT_EQ(report_of(without.sol), head("0", "1") + std::string("Primal objective  : 0\nDual objective    : 6\n"));
    EXPECT_EQ(values_of(without.sol).at(2), "1");
}

/* A failed optimisation: the file holds the code of the table, the program's exit status the other. */
TEST(ampl_solution, failed_optimisation)
{
    const char *script = "defined 1\nstatus 1 2\nx 0 1\ncode ZLR_optimize 1 10000";
    const ampl_result result = run_ampl({.stub = nl_text(small_model()), .script = script, .line = "s -AMPL -a"});
    EXPECT_EQ(code_of(result.sol), 100);
    EXPECT_EQ(values_of(result.sol).at(2), "1");
    EXPECT_EQ(result.run.process.status, (10000 + 501) & 255);
    EXPECT_EQ(calls_of(result.run, "getcodedesc(10000, text)").size(), 1U);
    EXPECT_TRUE(calls_of(result.run, "getprobtype").size() == 1U) << "asked for the start alone";
    EXPECT_EQ(run_with(script).run.process.status, 0) << "started by AMPL it is 0 whatever came of it";

    /* The optimiser's own code for a bad stub: nothing can be written. */
    const ampl_result bad =
        run_ampl({.stub = nl_text(small_model()), .script = "code ZLR_optimize 1 3700", .line = "s -AMPL -a"});
    EXPECT_FALSE(bad.has_sol);
    EXPECT_EQ(bad.run.process.out, "\nCannot write solution solution because of invalid AMPL stub\n");
    EXPECT_EQ(bad.run.process.status, (3700 + 501) & 255);
}

TEST(ampl_solution, not_optimised)
{
    const ampl_result result = run_ampl({.stub = nl_text(small_model()), .line = "s -AMPL -a -x", .may_fail = false});
    EXPECT_EQ(calls_of(result.run, "appendvars").size(), 1U);
    EXPECT_EQ(position_of(result.run, "optimize"), -1);
    EXPECT_EQ(position_of(result.run, "getsolution"), -1);
    EXPECT_FALSE(result.has_sol);
    EXPECT_EQ(result.run.process.status, 0);
}

/* ---- Sensitivity ---- */

/* Rows: lower, upper, range (its lower side), fixed, free (left out). */
static nl_model five_rows()
{
    nl_model model = small_model();
    const double inf = nl_infinite;
    const double sides[][2] = {{1.0, inf}, {-inf, 2.0}, {-3.0, 3.0}, {4.0, 4.0}, {-inf, inf}};
    model.rows = {{}};
    model.rows.clear();
    for (const auto &side : sides) model.rows.push_back({.lower = side[0], .upper = side[1], .linear = {{0, 1.0}}});
    std::swap(model.rows[1], model.rows[4]); /* the free row comes second */
    return model;
}

TEST(ampl_solution, sensitivity)
{
    std::string script = "defined 1\nstatus 1 1\n";
    for (int k = 0; k < 4; ++k) {
        const std::string number = std::to_string(k);
        script += "leftrangei " + number + " -" + std::to_string(k + 1) + "\nrightrangei " + number + " " +
                  std::to_string(10 * (k + 1)) + "\n";
    }
    script += "leftrangej 0 -0.5\nrightrangej 0 0.25\nleftrangej 1 -inf\nrightrangej 1 100\n";
    const ampl_result result =
        run_ampl({.stub = nl_text(five_rows()), .script = script, .words = "sensitivity=1", .may_fail = false});
    EXPECT_EQ(joined(calls_of(result.run, "primalsensitivity")),
              "primalsensitivity(task1, 4, {0 2 3 4}, {0 0 1 1}, 0, {}, {})\n");
    EXPECT_EQ(joined(calls_of(result.run, "dualsensitivity")), "dualsensitivity(task1, 2, {0 1})\n");
    /* Rows 0, 2, 3, 4 have the sides 1, -3, 4, 2; costs are 1 and 2. Zeros are not written. */
    EXPECT_EQ(suffix_of(result.sol, 5, "current"), "0 1\n2 -3\n3 4\n4 2\n");
    EXPECT_EQ(suffix_of(result.sol, 5, "down"), "2 -5\n3 1\n4 -2\n");
    EXPECT_EQ(suffix_of(result.sol, 5, "up"), "0 11\n2 17\n3 34\n4 42\n");
    EXPECT_EQ(suffix_of(result.sol, 4, "current"), "0 1\n1 2\n");
    EXPECT_EQ(suffix_of(result.sol, 4, "down"), "0 0.5\n1 -Infinity\n");
    EXPECT_EQ(suffix_of(result.sol, 4, "up"), "0 1.25\n1 102\n");
}

/* Elsewhere than in linear models without integer columns, and after a failure, there is none and no word. */
TEST(ampl_solution, sensitivity_dropped)
{
    nl_model integer = small_model();
    integer.nbv = 1;
    const struct {
        const char *name;
        nl_model model;
        const char *script, *words;
    } cases[] = {
        {"not asked for", small_model(), "", ""},
        {"integer column", integer, "", "sensitivity=1"},
        {"quadratic", small_model(), "type 1", "sensitivity=1"},
        {"conic", small_model(), "type 3", "sensitivity=1"},
        {"failed optimisation", small_model(), "code ZLR_optimize 1 10001", "sensitivity=1"},
    };
    for (const auto &item : cases) {
        SCOPED_TRACE(item.name);
        const ampl_result result =
            run_ampl({.stub = nl_text(item.model), .script = item.script, .words = item.words, .may_fail = false});
        EXPECT_TRUE(calls_of(result.run, "primalsensitivity").empty());
        EXPECT_EQ(suffix_of(result.sol, 5, "up"), "absent");
        EXPECT_EQ(suffix_of(result.sol, 4, "current"), "absent");
        EXPECT_EQ(result.run.process.out, "\n");
    }
}

TEST(ampl_solution, sensitivity_of_edge_models)
{
    nl_model model = small_model();
    model.rows.clear();
    const ampl_result result = run_ampl({.stub = nl_text(model), .words = "sensitivity=1", .may_fail = false});
    EXPECT_TRUE(calls_of(result.run, "primalsensitivity").empty());
    EXPECT_EQ(calls_of(result.run, "dualsensitivity").size(), 1U);
    EXPECT_EQ(suffix_of(result.sol, 4, "current"), "0 1\n1 2\n");
}

/* An analysis that fails is the job's failure, known by the exit status; the file has its code and no ranges. */
TEST(ampl_solution, failed_sensitivity)
{
    const std::string fine = "defined 1\nstatus 1 1\nx 0 1\n";
    for (const char *failing :
         {"code ZLR_primalsensitivity 1 1302", "code ZLR_dualsensitivity 1 1302", "code ZLR_getbound 1 1302"}) {
        SCOPED_TRACE(failing);
        const ampl_result result = run_ampl({.stub = nl_text(small_model()),
                                             .script = fine + failing,
                                             .line = "s -AMPL sensitivity=1 -a",
                                             .may_fail = false});
        EXPECT_EQ(code_of(result.sol), 0);
        EXPECT_EQ(values_of(result.sol).at(2), "1");
        EXPECT_EQ(result.run.process.status, (1302 + 501) & 255);
        EXPECT_EQ(suffix_of(result.sol, 5, "up"), "");
    }
    /* In the suffixes alone it changes nothing but them. */
    for (const char *failing : {"code ZLR_getc 1 1302", "code ZLR_getbound 3 1302"}) {
        SCOPED_TRACE(failing);
        const ampl_result result = run_ampl({.stub = nl_text(small_model()),
                                             .script = fine + failing,
                                             .line = "s -AMPL sensitivity=1 -a",
                                             .may_fail = false});
        EXPECT_EQ(code_of(result.sol), 0);
        EXPECT_EQ(result.run.process.status, 0);
        EXPECT_EQ(suffix_of(result.sol, 5, "up"), "absent");
    }
}
