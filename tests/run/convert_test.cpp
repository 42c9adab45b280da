/* convert_test.cpp - conversions keep the problem: MPS to LP to MPS gives the same optimum in us and in another solver. */
#include "run_support.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

/* Optimum of a file by glpsol, from its report; NaN when it has none. */
static double glpsol_optimum(const temp_folder &folder, const std::string &file)
{
    process_options options;
    options.folder = folder.path;
    options.args = {"-c", std::string("glpsol ") + (file.find(".lp") != std::string::npos ? "--lp " : "--freemps ") +
                              file + " --tmlim 60 -o report.txt"};
    process_run("/bin/sh", options);
    const std::string text = file_read(folder.file("report.txt"));
    const size_t at = text.find("Objective:");
    if (at == std::string::npos || text.find("OPTIMAL") == std::string::npos) return NAN;
    return std::strtod(text.c_str() + text.find('=', at) + 1, nullptr);
}

class conversions : public ::testing::TestWithParam<const char *>
{
};

TEST_P(conversions, keep_the_optimum)
{
    const std::string path = GetParam();
    if (!file_exists(data_path(path))) GTEST_SKIP() << "no data";
    const temp_folder folder;
    const std::string file = copy_data(folder, path);

    const zelor_run original = run_zelor(folder, {file, "-nowrsol", "-d", "MIP_REL_GAP", "1e-7"});
    const double optimum = result_number(original.result, "primal_objective");
    ASSERT_TRUE(std::isfinite(optimum)) << original.process.out;

    ASSERT_EQ(run_zelor(folder, {file, "-x", "-out", "one.lp", "-d", "WRITE_LP_RANGES", "SPLIT"}).process.status, 0);
    ASSERT_EQ(run_zelor(folder, {"one.lp", "-x", "-out", "two.mps"}).process.status, 0);
    ASSERT_EQ(run_zelor(folder, {"two.mps", "-x", "-out", "three.mps.gz"}).process.status, 0);

    const zelor_run converted = run_zelor(folder, {"three.mps.gz", "-nowrsol", "-d", "MIP_REL_GAP", "1e-7"});
    EXPECT_TRUE(close_to(result_number(converted.result, "primal_objective"), optimum, 1e-6)) << converted.process.out;

    if (!have_command("glpsol")) GTEST_SKIP() << "no glpsol for a second opinion";
    for (const char *written : {"one.lp", "two.mps"})
        EXPECT_TRUE(close_to(glpsol_optimum(folder, written), optimum, 1e-6))
            << written << " " << glpsol_optimum(folder, written) << " ours " << optimum;
}

INSTANTIATE_TEST_SUITE_P(files, conversions,
                         ::testing::Values("lp/boeing2.mps", "lp/capri.mps.gz", "lp/finnis.mps.gz", "lp/kb2.mps",
                                           "lp/standmps.mps.gz", "lp/vtpbase.mps", "lp/nesm.mps.gz", "mip/flugpl.mps",
                                           "mip/egout.mps", "mip/p0201.mps.gz", "mip/bell5.mps"));
