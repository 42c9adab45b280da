/* stop_test.cpp - a stop at every moment of a run: back at once, nothing lost, whole files, the right code. */
#include "run_support.h"
#include "zelor.h"

#include <gtest/gtest.h>

#include <cmath>
#include <csignal>
#include <fstream>
#include <map>
#include <random>

/* Generous against a loaded machine: the process also ends, writes files and unloads within it. What is asked of the
 * optimiser alone, 0.2 s, is tested where nothing else is measured with it. */
static const double allowance_s = 1.0;

struct stop_case {
    const char *name, *file, *optimizer;
    double after_s; /* from the start of the optimiser */
    int number;
};

static void PrintTo(const stop_case &c, std::ostream *out) { *out << c.file << " after " << c.after_s << " s"; }

class stops : public ::testing::TestWithParam<stop_case>
{
};

TEST_P(stops, end_the_optimiser_and_keep_what_was_found)
{
    const stop_case &c = GetParam();
    if (!file_exists(data_path(c.file))) GTEST_SKIP() << "no data";
    const temp_folder folder;
    const std::string file = copy_data(folder, c.file);

    /* The summary of the read is the last thing printed before the optimiser starts. */
    const zelor_run run =
        run_zelor(folder, {file, "-d", "OPTIMIZER", c.optimizer, "-r"}, {{c.number, c.after_s, "Nonzeros"}});
    ASSERT_FALSE(run.process.timed_out);
    EXPECT_EQ(run.process.signal, 0);
    ASSERT_TRUE(run.result.is_object()) << run.process.out;
    if (run.result["return_code"] == 0) GTEST_SKIP() << "the optimiser was done before the signal";

    EXPECT_EQ(run.result["return_code"], ZLR_RES_TRM_USER_STOP);
    EXPECT_EQ(run.process.status, 0) << "with -r a stop is no error";
    EXPECT_NE(run.process.out.find("CTRLC-C has been pressed.\n"), std::string::npos);
    EXPECT_NE(run.process.out.find("Return code - 10000  [ZLR_RES_TRM_USER_STOP]"), std::string::npos);
    EXPECT_LT(run.result["time"]["solve"].get<double>(), c.after_s + allowance_s);

    /* A point that was found must be on disk, and read back as a start of a further run. */
    const std::string stem = file.substr(0, file.find('.'));
    if (std::isfinite(result_number(run.result, "primal_objective"))) {
        const bool mip = file_exists(folder.file(stem + ".int"));
        ASSERT_TRUE(mip || file_exists(folder.file(stem + ".bas")) || file_exists(folder.file(stem + ".sol")));
        if (mip) {
            const zelor_run again =
                run_zelor(folder, {file, "-inti", stem + ".int", "-d", "TIME_LIMIT", "0", "-nowrsol"});
            EXPECT_EQ(again.result["return_code"], ZLR_RES_TRM_TIME_LIMIT) << again.process.out;
            EXPECT_NEAR(result_number(again.result, "primal_objective"), result_number(run.result, "primal_objective"),
                        1e-6 * std::fabs(result_number(run.result, "primal_objective")));
        }
    }
}

static const stop_case stop_cases[] = {
    {"before_the_optimiser", "lp/pilot87.mps.gz", "FREE", 0.0, SIGINT},
    {"presolve", "lp/pilot87.mps.gz", "DUAL_SIMPLEX", 0.03, SIGINT},
    {"simplex", "lp/dfl001.mps.gz", "DUAL_SIMPLEX", 0.8, SIGINT},
    {"primal_simplex", "lp/dfl001.mps.gz", "PRIMAL_SIMPLEX", 0.5, SIGTERM},
    {"interior_point", "lp/dfl001.mps.gz", "INTPNT", 0.3, SIGINT},
    {"hipo", "lp/dfl001.mps.gz", "HIPO", 0.3, SIGINT},
    {"first_order", "lp/dfl001.mps.gz", "PDLP", 0.5, SIGTERM},
    {"race", "lp/pilot87.mps.gz", "FREE", 0.4, SIGTERM},
    {"root_of_nw04", "mip/nw04.mps.gz", "FREE", 0.5, SIGINT},
    {"root_of_dano3mip", "mip/dano3mip.mps.gz", "FREE", 2.0, SIGTERM},
    {"tree", "mip/misc07.mps.gz", "FREE", 2.0, SIGINT},
    {"tree_with_many_incumbents", "mip/mas74.mps.gz", "FREE", 1.0, SIGTERM},
};

INSTANTIATE_TEST_SUITE_P(moments, stops, ::testing::ValuesIn(stop_cases),
                         [](const auto &tested) { return std::string(tested.param.name); });

TEST(stop_while_reading, is_not_lost)
{
    if (!file_exists(data_path("lp/dfl001.mps.gz"))) GTEST_SKIP() << "no data";
    const temp_folder folder;
    const std::string file = copy_data(folder, "lp/dfl001.mps.gz");
    const zelor_run run = run_zelor(folder, {file}, {{SIGINT, 0.005, ""}});
    if (run.process.signal == SIGINT) GTEST_SKIP() << "the signal came before the program could take it";
    ASSERT_TRUE(run.result.is_object()) << run.process.out;
    EXPECT_EQ(run.result["return_code"], ZLR_RES_TRM_USER_STOP);
}

TEST(limits, end_a_run_with_their_own_code)
{
    static const struct {
        const char *file, *name, *value;
        int32_t code;
    } cases[] = {
        {"mip/mas74.mps.gz", "TIME_LIMIT", "1", ZLR_RES_TRM_TIME_LIMIT},
        {"mip/mas74.mps.gz", "MIP_MAX_NODES", "10", ZLR_RES_TRM_MAX_NODES},
        {"lp/dfl001.mps.gz", "TIME_LIMIT", "0.2", ZLR_RES_TRM_TIME_LIMIT},
    };
    for (const auto &c : cases) {
        if (!file_exists(data_path(c.file))) GTEST_SKIP() << "no data";
        SCOPED_TRACE(std::string(c.file) + " " + c.name);
        const temp_folder folder;
        const std::string file = copy_data(folder, c.file);
        const zelor_run run = run_zelor(folder, {file, "-d", c.name, c.value});
        ASSERT_TRUE(run.result.is_object()) << run.process.out;
        EXPECT_EQ(run.result["return_code"], c.code) << run.process.out;
        EXPECT_EQ(run.process.status, c.code % 256);
    }
}

/* A quadratic objective whose factor is nearly full: F'F + I with a few entries in each of the rows of F. */
static void write_filling_model(const std::string &path, int32_t columns, int32_t per_row)
{
    std::mt19937 random(1);
    std::map<std::pair<int32_t, int32_t>, int32_t> sum;
    for (int32_t j = 0; j < columns; j++) sum[{j, j}] = 1;
    for (int32_t r = 0; r < columns; r++) {
        std::vector<std::pair<int32_t, int32_t>> row;
        for (int32_t k = 0; k < per_row; k++)
            row.emplace_back(static_cast<int32_t>(random() % static_cast<uint32_t>(columns)),
                             random() % 2 == 0 ? 1 : -1);
        for (const auto &a : row)
            for (const auto &b : row)
                if (a.first >= b.first) sum[{a.first, b.first}] += a.second * b.second;
    }
    std::ofstream out(path);
    out << "NAME FILLING\nROWS\n N COST\n G R\nCOLUMNS\n";
    for (int32_t j = 0; j < columns; j++) out << " X" << j << " COST 1 R 1\n";
    out << "RHS\n RHS R 1\nQUADOBJ\n";
    for (const auto &[at, value] : sum)
        if (value != 0) out << " X" << at.second << " X" << at.first << " " << value << "\n";
    out << "ENDATA\n";
}

TEST(stop_before_any_engine, ends_the_convexity_check_and_the_conic_form)
{
    static const struct {
        std::vector<std::string> args;
        double after_s;
    } cases[] = {
        {{"-nowrsol"}, 0.0},
        {{"-nowrsol"}, 0.7},
        {{"-toconic", "-x"}, 0.7}, /* without an optimisation: there is no result */
    };
    const temp_folder folder;
    const std::string file = folder.file("filling.mps");
    write_filling_model(file, 15000, 9);
    const double reading_s = run_zelor(folder, {file, "-x"}).process.wall_s;
    for (const auto &c : cases) {
        SCOPED_TRACE(c.args[0] + " " + std::to_string(c.after_s));
        std::vector<std::string> args = {file};
        args.insert(args.end(), c.args.begin(), c.args.end());
        const zelor_run run = run_zelor(folder, args, {{SIGINT, c.after_s, "Nonzeros"}});
        ASSERT_FALSE(run.process.timed_out);
        EXPECT_EQ(run.process.signal, 0);
        EXPECT_EQ(run.process.status, ZLR_RES_TRM_USER_STOP % 256) << run.process.out;
        EXPECT_NE(run.process.out.find("CTRLC-C has been pressed.\n"), std::string::npos) << run.process.out;
        EXPECT_NE(run.process.out.find("Return code - 10000  [ZLR_RES_TRM_USER_STOP]"), std::string::npos);
        EXPECT_LT(run.process.wall_s, reading_s + c.after_s + allowance_s);
        if (c.args[0] == "-toconic") continue;
        ASSERT_TRUE(run.result.is_object()) << run.process.out;
        EXPECT_EQ(run.result["return_code"], ZLR_RES_TRM_USER_STOP);
        EXPECT_LT(run.result["time"]["solve"].get<double>(), c.after_s + allowance_s);
    }
}
