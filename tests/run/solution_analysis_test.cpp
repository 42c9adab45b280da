/* solution_analysis_test.cpp - `-anasolo` on real runs: the report's numbers are those of the JSON result and of the model. */
#include "run_support.h"
#include "zelor.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

/* Number behind `key` in the text, from `from` on; NaN where it is not. */
static double number_behind(const std::string &text, const std::string &key, size_t from = 0)
{
    const size_t at = text.find(key, from);
    if (at == std::string::npos) return NAN;
    const char *begin = text.c_str() + at + key.size();
    char *end = nullptr;
    const double value = std::strtod(begin, &end);
    return end == begin ? NAN : value;
}

static std::string analysis_of(const std::string &out, const char *kind)
{
    const size_t at = out.find(std::string("Analysis of the ") + kind + " solution\n");
    return at == std::string::npos ? "" : out.substr(at);
}

static void expect_narrow(const std::string &text)
{
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) EXPECT_LE(line.size(), 80U) << line;
}

TEST(solution_analysis, basic_solutions_of_real_models_are_optimal_bases)
{
    for (const char *file : {"lp/kb2.mps", "lp/capri.mps.gz", "lp/boeing2.mps"}) {
        SCOPED_TRACE(file);
        if (!file_exists(data_path(file))) GTEST_SKIP() << "no data";
        const temp_folder folder;
        const zelor_run run = run_zelor(folder, {copy_data(folder, file), "-anasolo", "bas", "-nowrsol"});
        ASSERT_EQ(run.process.status, 0) << run.process.out;
        const std::string text = analysis_of(run.process.out, "basic");
        EXPECT_NE(text.find("Status     OPTIMAL"), std::string::npos) << run.process.out;
        EXPECT_EQ(text.find("By check"), std::string::npos) << text;
        EXPECT_NEAR(number_behind(text, "Objective  primal"), result_number(run.result, "primal_objective"),
                    1e-9 * std::fabs(result_number(run.result, "primal_objective")));
        EXPECT_NEAR(number_behind(text, "  Rows"), run.result["max_violation"]["rows"].get<double>(), 1e-9);
        EXPECT_NE(text.find("Result: an optimal basis"), std::string::npos) << text;
        EXPECT_EQ(number_behind(text, "Basis:"), run.result["rows"].get<double>());
        expect_narrow(text);
    }
}

TEST(solution_analysis, interior_and_integer_solutions)
{
    const temp_folder folder;
    file_write(folder.file("m.lp"),
               "Minimize\n obj: x + 2 y\nSubject To\n cover: 2 x + y >= 3.5\nBounds\n x <= 1\nEnd\n");
    zelor_run run = run_zelor(folder, {"m.lp", "-anasolo", "itr", "-d", "OPTIMIZER", "INTPNT", "-nowrsol"});
    std::string text = analysis_of(run.process.out, "interior");
    EXPECT_NEAR(number_behind(text, "Objective  primal"), 4.0, 1e-6) << run.process.out;
    EXPECT_EQ(text.find("Basis:"), std::string::npos) << text;

    file_write(folder.file("i.lp"),
               "Minimize\n obj: x + 2 y\nSubject To\n cover: 2 x + y >= 3.5\nBounds\n x <= 1\nGeneral\n y\nEnd\n");
    run = run_zelor(folder, {"i.lp", "-anasolo", "itg", "-anasolo", "bas", "-nowrsol"});
    EXPECT_EQ(run.process.status, 0);
    EXPECT_NE(run.process.out.find("There is no basic solution to analyse.\n"), std::string::npos) << run.process.out;
    text = analysis_of(run.process.out, "integer");
    EXPECT_NEAR(number_behind(text, "incumbent"), 4.75, 1e-6) << run.process.out; /* x 0.75, y 2 */
    EXPECT_NEAR(number_behind(text, "bound"), 4.75, 1e-3);
    EXPECT_EQ(number_behind(text, "  Integrality"), 0.0);
}

/* A start whose faults are known, kept as the solution by a time limit of 0. */
TEST(solution_analysis, faults_of_a_start_are_named)
{
    const temp_folder folder;
    file_write(folder.file("m.lp"),
               "Minimize\n obj: x + 2 y\nSubject To\n cover: 2 x + y >= 3.5\nBounds\n x <= 1\nEnd\n");
    file_write(folder.file("m.start"), "zelor-solution 1\n\n[rows] name key\ncover LL\n\n"
                                       "[columns] name key activity\nx UL 1.25\ny BS 0.5\n\n[end]\n");
    const zelor_run run =
        run_zelor(folder, {"m.lp", "-basi", "m.start", "-d", "TIME_LIMIT", "0", "-anasolo", "bas", "-nowrsol"});
    const std::string text = analysis_of(run.process.out, "basic");
    ASSERT_NE(text, "") << run.process.out;
    EXPECT_NEAR(number_behind(text, "  Rows"), 0.5, 1e-9) << text;
    EXPECT_NE(text.find("activity 3 below 3.5: row cover"), std::string::npos) << text;
    EXPECT_NE(text.find("value 1.25 above 1: column x"), std::string::npos) << text;
    EXPECT_NE(text.find("Result: not an optimal basis"), std::string::npos) << text;
}

TEST(solution_analysis, certificates_name_the_rows_that_matter)
{
    const temp_folder folder;
    file_write(folder.file("inf.lp"),
               "Minimize\n x\nSubject To\n idle: x + z >= 1\n low: x + y >= 3\n high: x + y <= 2\nEnd\n");
    zelor_run run = run_zelor(folder, {"inf.lp", "-anasolo", "bas", "-nowrsol"});
    std::string text = analysis_of(run.process.out, "basic");
    EXPECT_NEAR(number_behind(text, "Contradiction"), 1.0, 1e-6) << run.process.out;
    EXPECT_NE(text.find("row low"), std::string::npos) << text;
    EXPECT_NE(text.find("row high"), std::string::npos) << text;
    EXPECT_EQ(text.find("row idle"), std::string::npos) << text;
    EXPECT_NE(text.find("Check            holds"), std::string::npos) << text;

    file_write(folder.file("unb.lp"), "Maximize\n x\nSubject To\n a: x - y <= 2\n b: z <= 4\nEnd\n");
    run = run_zelor(folder, {"unb.lp", "-anasolo", "bas", "-nowrsol"});
    text = analysis_of(run.process.out, "basic");
    EXPECT_NEAR(number_behind(text, "Improvement"), 1.0, 1e-6) << run.process.out;
    EXPECT_NE(text.find("column x"), std::string::npos) << text;
    EXPECT_EQ(text.find("column z"), std::string::npos) << text;
}
