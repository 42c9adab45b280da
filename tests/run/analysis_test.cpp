/* analysis_test.cpp - the analysis of a problem from the command line: on a problem with planted faults, and on real ones. */
#include "run_support.h"

#include <gtest/gtest.h>

#include <sstream>

static std::string analysis_of(const temp_folder &folder, const std::string &file)
{
    const zelor_run run = run_zelor(folder, {file, "-anapro", "-x"});
    EXPECT_EQ(run.process.status, 0) << run.process.out;
    EXPECT_TRUE(run.result.is_null()) << "nothing is optimised";
    const size_t at = run.process.out.find("Analysis of problem");
    EXPECT_NE(at, std::string::npos) << run.process.out;
    return at == std::string::npos ? "" : run.process.out.substr(at);
}

TEST(problem_analysis, planted_faults_are_named)
{
    const temp_folder folder;
    file_write(folder.file("m.lp"), "Minimize\n obj: x + 2 y + z\nSubject To\n"
                                    " demand: x + y >= 30\n"
                                    " switch: x - 1000000 b <= 0\n"
                                    " again: 2 x + 2 y >= 60\n"
                                    " single: 3 z >= 1\n"
                                    "Bounds\n x <= 10\n y <= 8\n z <= 5000000000\nBinaries\n b\nEnd\n");
    const std::string text = analysis_of(folder, "m.lp");
    for (const char *told :
         {"Advice: the problem has no feasible point", "demand (at most 18, needs 30: 12 off)", "z (5e+09)",
          "switch (1 by M of 1e+06 on b)", "switch (1e+06 to 10)", "again (repeats demand)", "single (z)"})
        EXPECT_NE(text.find(told), std::string::npos) << told << "\n" << text;
}

/* What is known of real problems from elsewhere. */
TEST(problem_analysis, real_models)
{
    static const struct {
        const char *path, *told;
    } cases[] = {
        {"lp-infeasible/pilot4i.mps.gz", "the problem has no feasible point"},
        {"lp/gas11.mps.gz", "the problem is unbounded"},
        {"mip/air05.mps.gz", "426 set partitioning"},
        {"mip/mas74.mps.gz", "(1e+12)"},
        {"mip/p0201.mps.gz", "201 binary"},
        {"lp/sc50b.mps", "Advice: "},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.path);
        if (!file_exists(data_path(c.path))) GTEST_SKIP() << "no data";
        const temp_folder folder;
        const std::string text = analysis_of(folder, copy_data(folder, c.path));
        EXPECT_NE(text.find(c.told), std::string::npos) << text;
    }
}

/* No solvable problem is called infeasible or unbounded, and every report fits a screen. */
TEST(problem_analysis, solvable_models_are_not_called_impossible)
{
    if (data_rows("lp").empty()) GTEST_SKIP() << "no data";
    int num = 0;
    for (const char *group : {"lp", "mip"}) {
        for (const data_row &row : data_rows(group)) {
            if (row.status != "optimal") continue;
            SCOPED_TRACE(row.path);
            const temp_folder folder;
            const zelor_run run = run_zelor(folder, {data_path(row.path), "-anapro", "-x"});
            const size_t at = run.process.out.find("Analysis of problem");
            if (at == std::string::npos) continue; /* refused by the reader, which models_test looks into */
            num++;
            EXPECT_EQ(run.process.out.find("(!!)"), std::string::npos) << run.process.out.substr(at);
            std::stringstream in(run.process.out.substr(at));
            int lines = 0;
            for (std::string line; std::getline(in, line); lines++) EXPECT_LE(line.size(), 80U) << line;
            EXPECT_LE(lines, 42);
        }
    }
    EXPECT_GT(num, 100);
}
