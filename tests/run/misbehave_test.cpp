/* misbehave_test.cpp - whole runs with the options for models that misbehave: subproblem, repair, sensitivity. */
#include "run_support.h"
#include "zelor.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>

static const char *const clash =
    "Minimize\n obj: x + y\nSubject To\n demand: x + y >= 4\n other: x - z <= 9\nBounds\n x <= 1\n y <= 1\nEnd\n";
static const char *const fine = "Maximize\n obj: 3 x + 2 y\nSubject To\n a: x + y <= 4\n b: x + 3 y <= 6\nEnd\n";

static bool holds(const std::string &text, const char *part) { return text.find(part) != std::string::npos; }

TEST(infeasible_run, subproblem_is_written_beside_the_base_name)
{
    const temp_folder folder;
    const std::string file = folder.file("a.b.lp");
    ASSERT_TRUE(file_write(file, clash));
    zelor_run run = run_zelor(folder, {file, "-info", folder.file("sub.mps.gz")});
    EXPECT_EQ(run.process.status, 0) << run.process.out;
    EXPECT_TRUE(holds(run.process.out, "Writing infeasible subproblem to file"));
    EXPECT_TRUE(holds(run.process.out, "  demand: x + y >= 4\n")) << run.process.out;

    /* The part is infeasible by itself. */
    run = run_zelor(folder, {folder.file("sub.bas.inf.mps.gz"), "-nowrsol"});
    EXPECT_EQ(run.result["solution_status"], "primal_infeasible") << run.process.out;
    EXPECT_EQ(run.result["rows"], 1);
    EXPECT_EQ(run.result["columns"], 2);

    run = run_zelor(folder, {file, "-info", folder.file("no/such/folder"), "-nowrsol"});
    EXPECT_EQ(run.process.status, ZLR_RES_ERR_FILE_OPEN % 256) << run.process.out;
    ASSERT_TRUE(file_write(file, fine));
    run = run_zelor(folder, {file, "-info", folder.file("none"), "-infrepo", folder.file("repair.lp")});
    EXPECT_EQ(run.process.status, 0);
    EXPECT_FALSE(holds(run.process.out, "Writing infeasible"));
    EXPECT_TRUE(holds(run.process.out, "Writing feasibility analysis problem to file - "));
    EXPECT_FALSE(file_exists(folder.file("repair.lp")));
}

TEST(infeasible_run, integer_problem_without_a_ray)
{
    const temp_folder folder;
    const std::string file = folder.file("m.lp");
    ASSERT_TRUE(file_write(file, "Minimize\n obj: x\nSubject To\n even: 2 x + 2 y = 5\n spare: x + y <= 7\nBounds\n"
                                 " x <= 3\n y <= 3\nGeneral\n x y\nEnd\n"));
    zelor_run run = run_zelor(folder, {file, "-info", folder.file("sub")});
    EXPECT_EQ(run.result["solution_status"], "primal_infeasible") << run.process.out;
    EXPECT_TRUE(holds(run.process.out, "integer columns")) << run.process.out;
    run = run_zelor(folder, {folder.file("sub.int.inf"), "-nowrsol"});
    EXPECT_EQ(run.result["solution_status"], "primal_infeasible") << run.process.out;
    EXPECT_FALSE(holds(file_read(folder.file("sub.int.inf")), "spare"));
}

/* x1 < x2 < ... < xn: each row and both bounds are needed, and each is tried by itself. */
TEST(infeasible_run, stop_of_the_reduction_leaves_the_smallest_so_far)
{
    const int32_t n = 4000;
    const temp_folder folder;
    const std::string file = folder.file("chain.lp");
    std::string text = "Minimize\n obj: x1\nSubject To\n";
    for (int32_t i = 1; i < n; i++) text += " x" + std::to_string(i + 1) + " - x" + std::to_string(i) + " >= 1\n";
    text += "Bounds\n x1 >= 1\n";
    for (int32_t i = 2; i < n; i++) text += " x" + std::to_string(i) + " free\n";
    text += " x" + std::to_string(n) + " <= " + std::to_string(n - 1) + "\nEnd\n";
    ASSERT_TRUE(file_write(file, text));
    zelor_run run =
        run_zelor(folder, {file, "-info", folder.file("sub.lp"), "-nowrsol"}, {{SIGINT, 0.5, "Optimizer:"}});
    ASSERT_FALSE(run.process.timed_out);
    if (holds(run.process.out, "irreducible")) GTEST_SKIP() << "the reduction was done before the signal";
    EXPECT_EQ(run.process.status, 0) << run.process.out;
    EXPECT_TRUE(holds(run.process.out, "when the reduction was stopped")) << run.process.out;
    run = run_zelor(folder, {folder.file("sub.bas.inf.lp"), "-nowrsol"});
    EXPECT_EQ(run.result["solution_status"], "primal_infeasible");
}

TEST(repair_run, repairs_before_it_optimises)
{
    const temp_folder folder;
    const std::string file = folder.file("m.lp");
    ASSERT_TRUE(file_write(file, clash));
    zelor_run run = run_zelor(folder, {file, "-primalrepair"});
    EXPECT_EQ(run.process.status, 0);
    EXPECT_EQ(run.result["solution_status"], "optimal") << run.process.out;
    EXPECT_TRUE(holds(run.process.out, "weighted sum 2")) << run.process.out;
    run = run_zelor(folder, {file, "-primalrepair", "-x", "-out", folder.file("repaired.lp")});
    EXPECT_EQ(run.process.status, 0);
    run = run_zelor(folder, {folder.file("repaired.lp"), "-primalrepair", "-nowrsol"});
    EXPECT_TRUE(holds(run.process.out, "nothing to change")) << run.process.out;
    EXPECT_EQ(run.result["solution_status"], "optimal");
}

TEST(sensitivity_run, report_follows_the_file_and_the_rules_of_the_options)
{
    const temp_folder folder;
    const std::string file = folder.file("m.lp");
    ASSERT_TRUE(file_write(file, fine));
    ASSERT_TRUE(file_write(folder.file("ask"), "row a\ncost y\n"));
    zelor_run run = run_zelor(folder, {file, "-sen", folder.file("ask")});
    EXPECT_EQ(run.process.status, 0) << run.process.out;
    const std::string report = file_read(folder.file("m.sen"));
    EXPECT_TRUE(holds(report, "maximised to 12"));
    EXPECT_TRUE(holds(report, "a              upper           4           3           3           0           6\n"))
        << report;
    EXPECT_TRUE(holds(report, "y                              2")) << report;
    EXPECT_FALSE(holds(report, "\nb ")) << report;
    EXPECT_TRUE(holds(run.process.out, "Sensitivity of ''"));

    ASSERT_TRUE(file_write(folder.file("ask"), "row nosuch\n"));
    run = run_zelor(folder, {file, "-sen", folder.file("ask")});
    EXPECT_EQ(run.process.status, ZLR_RES_ERR_FILE_FORMAT % 256);
    EXPECT_TRUE(holds(run.process.out, "(1): the problem has no row 'nosuch'.")) << run.process.out;
    /* Without the optimiser there is nothing to report. */
    std::filesystem::remove(folder.file("m.sen"));
    run = run_zelor(folder, {file, "-sen", folder.file("ask"), "-x"});
    EXPECT_EQ(run.process.status, 0);
    EXPECT_FALSE(file_exists(folder.file("m.sen")));
}

TEST(misbehave_run, all_together)
{
    const temp_folder folder;
    const std::string file = folder.file("m.lp");
    ASSERT_TRUE(file_write(file, clash));
    const zelor_run run = run_zelor(folder, {file,     "-anapro",         "-anasolo",
                                             "bas",    "-info",           folder.file("s.lp"),
                                             "-stat",  "start",           "-stat",
                                             "append", "-stat",           "a label",
                                             "-d",     "STAT_FILE",       folder.file("stat"),
                                             "-d",     "REPORT_FILE",     folder.file("r.html"),
                                             "-d",     "SENSITIVITY_ALL", "1"});
    /* The sensitivity report needs an optimum, and says so. */
    EXPECT_EQ(run.process.status, ZLR_RES_ERR_NO_SOLUTION % 256) << run.process.out;
    EXPECT_TRUE(holds(run.process.out, "Sensitivity needs an optimal solution")) << run.process.out;
    EXPECT_TRUE(file_exists(folder.file("s.bas.inf.lp")));
    EXPECT_TRUE(holds(file_read(folder.file("stat")), "\"a label\""));
    EXPECT_TRUE(holds(file_read(folder.file("r.html")), "Infeasible"));
}

TEST(misbehave_run, optimiser_that_fails)
{
    const temp_folder folder;
    const std::string file = folder.file("q.lp");
    ASSERT_TRUE(file_write(file, "Minimize\n obj: x + [ 2 x * y + x^2 ] / 2\nSubject To\n a: x + y >= 1\nEnd\n"));
    ASSERT_TRUE(file_write(folder.file("ask"), "all\n"));
    const zelor_run run =
        run_zelor(folder, {file, "-anapro", "-anasolo", "bas", "-sen", folder.file("ask"), "-info", folder.file("s.lp"),
                           "-stat", "append", "-d", "STAT_FILE", folder.file("stat")});
    EXPECT_EQ(run.process.status, ZLR_RES_ERR_NONCONVEX % 256) << run.process.out;
    EXPECT_TRUE(holds(run.process.out, "Analysis of problem")) << run.process.out;
    EXPECT_TRUE(holds(run.process.out, "There is no basic solution to analyse.")) << run.process.out;
    EXPECT_FALSE(holds(run.process.out, "Sensitivity of"));
    EXPECT_FALSE(file_exists(folder.file("q.sen")));
    EXPECT_FALSE(file_exists(folder.file("s.bas.inf.lp")));
    EXPECT_TRUE(holds(file_read(folder.file("stat")), "ZLR_RES_ERR_NONCONVEX"));
}

TEST(misbehave_run, without_the_optimiser)
{
    const temp_folder folder;
    const std::string file = folder.file("m.lp");
    ASSERT_TRUE(file_write(file, clash));
    const zelor_run run = run_zelor(folder, {file, "-x", "-anapro", "-anasolo", "bas", "-info", folder.file("s.lp")});
    EXPECT_EQ(run.process.status, 0) << run.process.out;
    EXPECT_TRUE(holds(run.process.out, "Analysis of problem")) << run.process.out;
    EXPECT_FALSE(holds(run.process.out, "solution")) << run.process.out;
    EXPECT_FALSE(file_exists(folder.file("s.bas.inf.lp")));
}
