/* nonlinear_modes_test.cpp - nonlinear models in both modes, on the real library: what is taken, what is refused and how it
 * is told, where a solve starts, and what is left in memory. */
#include "ampl_support.h"

#include <gtest/gtest.h>

#include <cmath>

static const double inf = nl_infinite;

/* min (x - 1)^2 exp(y) + y^2 over a row exp(x) + y, with these sides; both columns free. */
static nl_model smooth_model(double lower, double upper)
{
    const nl_expression distance = nl_plus(nl_variable(0), nl_number(-1));
    nl_model m;
    m.columns = {{-inf, inf}, {-inf, inf}};
    m.nlvc = m.nlvo = m.nlvb = 2;
    m.rows = {{lower, upper, {{0, 0.0}, {1, 1.0}}, nl_exp(nl_variable(0))}};
    m.objectives = {{{{0, 0.0}, {1, 0.0}},
                     nl_plus(nl_product("o5\n" + distance + nl_number(2), nl_exp(nl_variable(1))), nl_square(1))}};
    return m;
}

static nl_model with_integer_column(nl_model m)
{
    m.nlvbi = 1;
    return m;
}

static nl_model with_start(nl_model m, double x)
{
    m.x = {{0, x}};
    return m;
}

/* log(x) + x of a free column: a start below 0 has no value. */
static nl_model logarithm_model()
{
    nl_model m;
    m.columns = {{-inf, inf}};
    m.nlvo = 1;
    m.objectives = {{{{0, 1.0}}, nl_product("o43\nv0\n", "o43\nv0\n")}};
    return m;
}

static nl_model with_rounding()
{
    nl_model m = logarithm_model();
    m.objectives[0].nonlinear = "o57\nv0\nn2\n";
    return m;
}

static nl_model contradiction()
{
    nl_model m = smooth_model(-inf, -1.0);
    m.rows[0].linear = {{0, 0.0}};
    return m;
}

struct nonlinear_case {
    const char *name;
    nl_model model;
    int plain_code, extended_code;     /* -1: no .sol file */
    std::vector<const char *> reasons; /* all stand in the message of the extended mode */
};

static const nonlinear_case nonlinear_outcomes[] = {
    {"one_sided", smooth_model(2.0, inf), 0, 0, {"LOCALLY_OPTIMAL"}},
    {"free_row", smooth_model(-inf, inf), 0, 0, {"LOCALLY_OPTIMAL"}},
    {"equality", smooth_model(2.0, 2.0), -1, 0, {"LOCALLY_OPTIMAL"}},
    {"range", smooth_model(1.0, 2.0), -1, 0, {"LOCALLY_OPTIMAL"}},
    {"integer_column", with_integer_column(smooth_model(2.0, inf)), 500, 540, {"integer"}},
    {"rounding", with_rounding(), -1, 520, {"operator 57 (round) cannot be evaluated"}},
    {"contradiction", contradiction(), 500, 210, {"return code - 10008"}},
};

class ampl_nonlinear_modes : public ::testing::TestWithParam<nonlinear_case>
{
};

static void PrintTo(const nonlinear_case &c, std::ostream *out) { *out << c.name; }

TEST_P(ampl_nonlinear_modes, leave_what_they_promise)
{
    const nonlinear_case &c = GetParam();
    const temp_folder folder;
    write_stub(folder, c.model);
    for (const bool extended : {false, true}) {
        const ampl_run run = run_ampl(folder, "model", {extended ? "ampl_extended=on" : "outlev=0"});
        SCOPED_TRACE(run.process.out + run.sol.message);
        const int code = extended ? c.extended_code : c.plain_code;
        EXPECT_EQ(run.process.status, 0);
        ASSERT_EQ(run.has_sol, code >= 0);
        if (!run.has_sol) continue;
        EXPECT_EQ(run.sol.complaint, "");
        EXPECT_EQ(run.sol.code, code);
        EXPECT_EQ(run.sol.num_var, static_cast<int>(c.model.columns.size()));
        if (code == 0) {
            const stub_judgement judged = judge_point(folder.file("model"), run.sol.x, run.sol.y);
            EXPECT_LT(judged.infeasibility, 1e-6);
            EXPECT_LT(judged.loose_dual, 1e-6);
        }
        if (!extended) continue;
        for (const char *reason : c.reasons) EXPECT_NE(run.sol.message.find(reason), std::string::npos) << reason;
    }
}

INSTANTIATE_TEST_SUITE_P(outcomes, ampl_nonlinear_modes, ::testing::ValuesIn(nonlinear_outcomes),
                         [](const auto &tested) { return std::string(tested.param.name); });

/* ---- The start ---- */

/* (x^2 - 1)^2 + x / 4 has a minimum on each side of 0: with AMPL_EXTENDED the start decides which is found. */
TEST(ampl_nonlinear_start, is_kept_in_the_practical_mode)
{
    nl_model m;
    m.columns = {{-inf, inf}};
    m.nlvo = 1;
    m.objectives = {{{{0, 0.25}}, "o5\n" + nl_plus(nl_square(0), nl_number(-1)) + nl_number(2)}};
    std::vector<double> plain;
    for (const double start : {-1.5, 1.5}) {
        const temp_folder folder;
        write_stub(folder, with_start(m, start));
        const ampl_run extended = run_ampl(folder, "model", {"ampl_extended=on"});
        ASSERT_EQ(extended.sol.code, 0) << extended.process.out;
        EXPECT_GT(extended.sol.x[0] * start, 0.0);
        const ampl_run run = run_ampl(folder, "model", {});
        ASSERT_EQ(run.sol.code, 0) << run.process.out;
        plain.push_back(run.sol.x[0]);
    }
    EXPECT_EQ(plain[0], plain[1]) << "the start is not kept";
}

/* A start without a value: told, with the function's name, or left for another one. */
TEST(ampl_nonlinear_start, without_a_value)
{
    const temp_folder folder;
    write_stub(folder, with_start(logarithm_model(), -2.0));
    const ampl_run run = run_ampl(folder, "model", {"ampl_extended=on", "nlp_max_attempts=1"});
    ASSERT_TRUE(run.has_sol) << run.process.out;
    EXPECT_EQ(run.process.status, 0);
    EXPECT_EQ(run.process.out.find("can't evaluate"), std::string::npos) << run.process.out;
    EXPECT_EQ(run.sol.code, 550) << run.sol.message;
    EXPECT_NE(run.sol.message.find("has no value"), std::string::npos) << run.sol.message;
    EXPECT_NE(run.sol.message.find("return code - 1433"), std::string::npos) << run.sol.message;
}

/* ---- Memory ---- */

TEST(ampl_nonlinear_memory, no_job_leaves_a_block)
{
    const struct {
        const char *name;
        nl_model model;
        std::vector<std::string> words;
    } cases[] = {
        {"solved", smooth_model(2.0, inf), {}},
        {"extended, equality", smooth_model(2.0, 2.0), {"ampl_extended=on"}},
        {"extended, integer column", with_integer_column(smooth_model(2.0, inf)), {"ampl_extended=on"}},
        {"no value", with_start(logarithm_model(), -2.0), {"ampl_extended=on"}},
        {"limit", smooth_model(2.0, inf), {"nlp_max_iterations=1"}},
        {"sensitivity", smooth_model(2.0, inf), {"sensitivity=1"}},
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

/* ---- User functions ---- */

/* The function of the user is called while the optimiser runs, also where a root has no value. */
TEST(ampl_nonlinear_user_functions, are_evaluated)
{
    nl_model m;
    m.columns = {{-inf, inf}, {-inf, inf}};
    m.nlvo = 2;
    m.functions = {{"zelor_root", 1}};
    /* root(x) + exp(y - x) + 2 / x + x - y: the best y is x, and of what is left the slope is 1 / (2 root(x)) - 2 / x^2 */
    m.objectives = {{{{0, 1.0}, {1, -1.0}}, nl_plus("f0 1\nv0\n", nl_plus(nl_exp("o1\nv1\nv0\n"), "o3\nn2\nv0\n"))}};
    m.x = {{0, 0.1}, {1, 0.0}};
    const temp_folder folder;
    write_stub(folder, m);
    process_options options;
    options.folder = folder.path;
    options.args = {"model", "-AMPL", "ampl_extended=on"};
    options.environment = {{"AMPLFUNC", ZELOR_USER_FUNCTIONS}, {"zelor_options", ""}};
    const process_result run = process_run(ZELOR_PROGRAM, options);
    EXPECT_EQ(run.status, 0) << run.out;
    const sol_file sol = sol_read(file_read(folder.file("model.sol")));
    ASSERT_EQ(sol.complaint, "");
    SCOPED_TRACE(sol.message);
    EXPECT_EQ(sol.code, 0);
    ASSERT_EQ(sol.num_x, 2);
    EXPECT_NEAR(sol.x[0], std::pow(4.0, 2.0 / 3.0), 1e-5);
    EXPECT_NEAR(sol.x[1], sol.x[0], 1e-5);
    EXPECT_EQ(run.out.find("Error in function"), std::string::npos) << run.out;
}
