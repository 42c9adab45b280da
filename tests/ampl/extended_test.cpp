/* extended_test.cpp - what AMPL_EXTENDED adds, each point beside what is left without it; limits and stops; memory. */
#include "ampl_support.h"
#include "zelor.h"

#include <gtest/gtest.h>

#include <cmath>
#include <csignal>

static nl_model tiny_lp()
{
    nl_model m;
    m.columns = {{0, 4}, {0, 4}};
    m.rows = {{-nl_infinite, 6, {{0, 1}, {1, 1}}, ""}};
    m.objectives = {{{{0, 2}, {1, 1}}, "", true, 0}};
    return m;
}

/* Equal shares of many numbers: an answer is found at once, no proof within a lifetime. */
static nl_model endless_mip()
{
    nl_model m;
    constexpr int num_items = 40, num_rows = 4;
    uint32_t seed = 1;
    for (int i = 0; i < num_rows; ++i) {
        nl_row row;
        double sum = 0;
        for (int j = 0; j < num_items; ++j) {
            seed = seed * 1664525u + 1013904223u;
            const double weight = seed >> 25;
            row.linear.emplace_back(2 * num_rows + j, weight);
            sum += weight;
        }
        row.linear.insert(row.linear.begin(), {{2 * i, 1}, {2 * i + 1, -1}});
        row.lower = row.upper = std::floor(sum / 2);
        m.rows.push_back(row);
        m.columns.insert(m.columns.end(), {nl_column{}, nl_column{}});
    }
    m.columns.insert(m.columns.end(), num_items, nl_column{0, 1});
    m.objectives.resize(1);
    for (int k = 0; k < 2 * num_rows; ++k) m.objectives[0].linear.emplace_back(k, 1);
    m.nbv = num_items;
    return m;
}

static nl_model with_quadratic_row(double lower, double upper, double factor)
{
    nl_model m = tiny_lp();
    m.nlvc = 2;
    m.rows[0].nonlinear =
        nl_plus(nl_product(nl_number(factor), nl_square(0)), nl_product(nl_number(factor), nl_square(1)));
    m.rows[0].lower = lower;
    m.rows[0].upper = upper;
    return m;
}

static nl_model with_bad_cone(double second_root)
{
    nl_model m = tiny_lp();
    m.suffixes = {{0, "cone", {{0, 1}, {1, second_root}}}};
    return m;
}

/* ---- Outcomes in both modes ---- */

struct outcome_case {
    const char *name;
    nl_model model;
    std::vector<std::string> words;
    int plain_code; /* -1: no .sol file */
    int extended_code;
    std::vector<const char *> reasons; /* all stand in the message of the extended mode */
};

static const outcome_case outcomes[] = {
    {"solved", tiny_lp(), {}, 0, 0, {}},
    {"bad_option", tiny_lp(), {"no_such_option=1"}, -1, 520, {"return code - 3700", "no_such_option is no option"}},
    {"bad_option_with_a_dash", tiny_lp(), {"-zzz"}, -1, 520, {"return code - 3700", "-zzz is no option"}},
    {"rejected_value", tiny_lp(), {"time_limit=soon"}, 0, 0, {}},
    {"quadratic_equality", with_quadratic_row(4, 4, 1), {}, -1, 0, {"LOCALLY_OPTIMAL"}},
    {"quadratic_range", with_quadratic_row(1, 4, 1), {}, -1, 0, {"LOCALLY_OPTIMAL"}},
    {"not_convex",
     with_quadratic_row(-nl_infinite, 4, -1),
     {},
     500,
     530,
     {"return code - 1293", "Row c1 is not convex"}},
    {"cone_without_root", with_bad_cone(1), {}, -1, 530, {"return code - 1301"}},
    {"limit_without_a_point", endless_mip(), {"time_limit=0"}, 500, 400, {"return code - 10001"}},
    {"limit_with_a_point", endless_mip(), {"time_limit=1.5"}, 100, 100, {"return code - 10001"}},
    {"nodes_with_a_point", endless_mip(), {"mip_max_nodes=5"}, 100, 100, {"return code - 10003"}},
};

class ampl_modes : public ::testing::TestWithParam<outcome_case>
{
};

static void PrintTo(const outcome_case &c, std::ostream *out) { *out << c.name; }

TEST_P(ampl_modes, leave_what_they_promise)
{
    const outcome_case &c = GetParam();
    const temp_folder folder;
    write_stub(folder, c.model);

    const ampl_run plain = run_ampl(folder, "model", c.words);
    EXPECT_EQ(plain.process.status, 0);
    EXPECT_EQ(plain.has_sol, c.plain_code >= 0) << plain.process.out;
    if (plain.has_sol) {
        EXPECT_EQ(plain.sol.complaint, "");
        EXPECT_EQ(plain.sol.code, c.plain_code) << plain.sol.message;
        EXPECT_EQ(plain.sol.message.find("return code"), std::string::npos) << plain.sol.message;
        for (const sol_suffix &suffix : plain.sol.suffixes) EXPECT_EQ(suffix.name, "sstatus");
    }

    const ampl_run run = run_ampl(folder, "model", c.words, "ampl_extended=on");
    EXPECT_EQ(run.process.status, 0);
    ASSERT_TRUE(run.has_sol) << run.process.out;
    EXPECT_EQ(run.sol.complaint, "");
    EXPECT_EQ(run.sol.code, c.extended_code) << run.sol.message;
    EXPECT_EQ(run.sol.num_con, static_cast<int>(c.model.rows.size()));
    EXPECT_EQ(run.sol.num_var, static_cast<int>(c.model.columns.size()));
    for (const char *reason : c.reasons)
        EXPECT_NE(run.sol.message.find(reason), std::string::npos) << reason << " in\n" << run.sol.message;
    if (c.extended_code < 200) {
        const stub_judgement judged = judge_point(folder.file("model"), run.sol.x, run.sol.y);
        EXPECT_LT(judged.infeasibility, 1e-6);
    }
}

INSTANTIATE_TEST_SUITE_P(outcomes, ampl_modes, ::testing::ValuesIn(outcomes),
                         [](const auto &tested) { return std::string(tested.param.name); });

TEST(ampl_stub_that_is_not_there, is_told_in_a_file_that_reads)
{
    const temp_folder folder;
    const ampl_run plain = run_ampl(folder, "model", {});
    EXPECT_FALSE(plain.has_sol);
    EXPECT_NE(plain.process.out.find("** Fatal error: Could not read AMPL stub: model\n"), std::string::npos);
    const ampl_run run = run_ampl(folder, "model", {"ampl_extended=on"});
    ASSERT_TRUE(run.has_sol);
    EXPECT_EQ(run.sol.complaint, "");
    EXPECT_EQ(run.sol.code, 510);
    EXPECT_EQ(run.sol.num_var, 0);
}

/* ---- Values of keywords ---- */

TEST(ampl_text_values, keep_their_case_behind_the_keyword)
{
    static const struct {
        std::vector<std::string> words;
        const char *file;
    } cases[] = {
        {{"result_file=Mixed.json"}, "MIXED.JSON"},
        {{"ampl_extended=on", "result_file=Mixed.json"}, "Mixed.json"},
        {{"result_file=Mixed.json", "ampl_extended=on"}, "MIXED.JSON"},
        {{"ampl_extended=on", "result_file=\"Mixed case.json\""}, "Mixed case.json"},
        {{"ampl_extended=off", "result_file=Mixed.json"}, "MIXED.JSON"},
    };
    for (const auto &c : cases) {
        const temp_folder folder;
        write_stub(folder, tiny_lp());
        (void)run_ampl(folder, "model", c.words);
        EXPECT_TRUE(file_exists(folder.file(c.file))) << c.words[0] << " " << c.file;
    }
}

/* ---- Stops ---- */

TEST(ampl_stops, leave_the_point_that_was_found)
{
    for (const bool extended : {false, true}) {
        for (const int number : {SIGINT, SIGTERM}) {
            const temp_folder folder;
            write_stub(folder, endless_mip());
            const ampl_run run =
                run_ampl(folder, "model", {extended ? "ampl_extended=on" : "outlev=1"}, "", {{number, 2.0, ""}});
            EXPECT_FALSE(run.process.timed_out);
            EXPECT_EQ(run.process.status, 0);
            EXPECT_LT(run.process.wall_s, 4.0);
            ASSERT_TRUE(run.has_sol) << run.process.out;
            EXPECT_EQ(run.sol.complaint, "");
            EXPECT_EQ(run.sol.code, 100) << run.sol.message;
            EXPECT_EQ(run.sol.message.find("return code - 10000") != std::string::npos, extended);
            EXPECT_LT(judge_point(folder.file("model"), run.sol.x, run.sol.y).infeasibility, 1e-6);
        }
    }
}

/* ---- The script ---- */

TEST(ampl_script, turns_the_mode_on)
{
    const std::string script = std::string(ZELOR_PROGRAM) + "-ampl";
    const temp_folder folder;
    write_stub(folder, tiny_lp());
    static const struct {
        std::vector<std::string> args;
        std::string settings;
        int status, code;
    } cases[] = {
        {{"model", "-AMPL"}, "", 0, 0},
        {{"model", "-AMPL", "bad=1"}, "", 0, 520},
        {{"model", "-AMPL"}, "time_limit=0", 0, 400},
        {{"model"}, "", 0, 0},
        {{"model", "bad=1"}, "", 520 % 256, 520},
    };
    for (const auto &c : cases) {
        process_options options;
        options.folder = folder.path;
        options.args = c.args;
        options.environment = {{"zelor_options", c.settings}};
        std::remove(folder.file("model.sol").c_str());
        const process_result run = process_run(script, options);
        const sol_file sol = sol_read(file_read(folder.file("model.sol")));
        EXPECT_EQ(run.status, c.status) << run.out;
        EXPECT_EQ(sol.complaint, "");
        EXPECT_EQ(sol.code, c.code) << run.out;
        EXPECT_EQ(sol_suffix_values(sol, "rc", 0, 2).empty(), c.code != 0);
    }
    process_options asking;
    asking.args = {"-v"};
    const process_result version = process_run(script, asking);
    EXPECT_NE(version.out.find("ZELOR version 8.1"), std::string::npos) << version.out;
}

/* ---- Memory ---- */

/* The paths on which everything is given back: all that reach the optimiser, and with AMPL_EXTENDED all. */
TEST(ampl_memory, no_job_leaves_a_block)
{
    nl_model quadratic = tiny_lp();
    quadratic.nlvo = 1;
    quadratic.objectives[0].nonlinear = nl_product(nl_number(-1), nl_square(0));
    nl_model cone = tiny_lp();
    cone.suffixes = {{0, "cone", {{0, -1}, {1, 1}}}};
    const struct {
        const char *name;
        nl_model model;
        std::vector<std::string> words;
    } cases[] = {
        {"linear", tiny_lp(), {}},
        {"sensitivity", tiny_lp(), {"sensitivity=1"}},
        {"quadratic", quadratic, {"sensitivity=1"}},
        {"quadratic row", with_quadratic_row(-nl_infinite, 4, 1), {}},
        {"not convex", with_quadratic_row(-nl_infinite, 4, -1), {}},
        {"cone", cone, {}},
        {"limit", tiny_lp(), {"time_limit=0"}},
        {"extended", tiny_lp(), {"ampl_extended=on"}},
        {"extended, bad option", tiny_lp(), {"ampl_extended=on", "bad=1"}},
        {"extended, bad cone", with_bad_cone(1), {"ampl_extended=on"}},
        {"extended, two-sided row", with_quadratic_row(4, 4, 1), {"ampl_extended=on"}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        const temp_folder folder;
        write_stub(folder, c.model);
        const std::string trace = run_with_trace(folder, c.words);
        EXPECT_NE(trace.find("src/zelor/zelorbin("), std::string::npos) << trace;
        EXPECT_NE(trace.find("Number of blocks: 0 "), std::string::npos) << trace;
        EXPECT_NE(trace.find("Checking leaks\nDone checking leaks\n"), std::string::npos) << trace;
    }
}
