/* models_test.cpp - real stubs in both modes: published optima, and the answer judged by the stub's own data. */
#include "ampl_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iterator>

/* Where the published value has fewer digits than it seems to, or is another model's. Each answer is proved by its duals. */
static const struct {
    const char *stub;
    double optimal;
} corrected[] = {
    {"tfi2", 0.6490420691844763}, /* of the continuous problem; the stub has 10001 of its points */
    {"bt3", 4.093023255813954},     {"gouldqp3", 2.065155444557604},
    {"arglinb", 4.634146341463424}, {"hues-mod", 34824463.873333},
};

/* Answers that the feasibility of a small integer or free model decides, and those without a published status. */
static const struct {
    const char *stub;
    int code;
} unpublished[] = {
    {"pyomo_mpec_list1", 200},
    {"pyomo_small9", 200},
    {"pyomo_small11", 300},
};

static int code_of(const data_row &row, const std::string &stub)
{
    if (row.status == "infeasible") return 200;
    if (row.status == "unbounded") return 300;
    for (const auto &u : unpublished)
        if (stub == u.stub) return u.code;
    return 0;
}

static double optimum_of(const data_row &row, const std::string &stub)
{
    for (const auto &c : corrected)
        if (stub == c.stub) return c.optimal;
    return row.optimal;
}

struct stub_case {
    data_row row;
    bool extended;
};

static void PrintTo(const stub_case &c, std::ostream *out)
{
    *out << c.row.path << (c.extended ? " with AMPL_EXTENDED" : "");
}

static std::vector<stub_case> stub_cases()
{
    static const char *const classes[] = {"LP", "MIP", "QP", "QCQP"};
    std::vector<stub_case> cases;
    for (const data_row &row : data_rows("nl"))
        if (std::find(std::begin(classes), std::end(classes), row.problem_class) != std::end(classes))
            for (const bool extended : {false, true}) cases.push_back({row, extended});
    return cases;
}

class ampl_stubs : public ::testing::TestWithParam<stub_case>
{
};

/* The report of a refusal; the reason stands in it where the mode asks for one. */
static void expect_refusal(const ampl_run &run, stub_refusal why, bool extended)
{
    static const struct {
        int code;
        const char *reason;
    } reports[] = {{0, ""},
                   {0, ""}, /* in that mode it is taken */
                   {530, "is not convex"},
                   {520, "complementarity conditions"},
                   {520, "special ordered sets"}};
    if (!extended && why != NOT_CONVEX) {
        EXPECT_FALSE(run.has_sol);
        return;
    }
    ASSERT_TRUE(run.has_sol);
    EXPECT_EQ(run.sol.complaint, "");
    EXPECT_EQ(run.sol.code, extended ? reports[why].code : 500);
    const bool is_told = run.sol.message.find(reports[why].reason) != std::string::npos;
    EXPECT_EQ(is_told, extended) << run.sol.message;
}

static void expect_optimal(const temp_folder &folder, const std::string &stub, const stub_case &c, const sol_file &sol)
{
    const stub_judgement judged = judge_point(folder.file(stub), sol.x, sol.y);
    ASSERT_TRUE(judged.is_read);
    EXPECT_EQ(sol.num_con, judged.num_con);
    EXPECT_EQ(sol.num_y, judged.num_con);
    EXPECT_EQ(sol.num_var, judged.num_var);
    EXPECT_EQ(sol.num_x, judged.num_var);
    EXPECT_LT(judged.infeasibility, 2e-6);
    if (c.row.problem_class != "MIP") {
        EXPECT_LT(judged.gap, 2e-6 * (1.0 + std::fabs(judged.objective)));
        EXPECT_LT(judged.loose_dual, 1e-6);
    }
    const double optimal = optimum_of(c.row, stub);
    if (std::isfinite(optimal)) {
        EXPECT_TRUE(close_to(judged.objective, optimal, 2e-6)) << judged.objective << " published " << optimal;
    }
    if (c.extended && c.row.problem_class != "MIP") {
        const std::vector<double> rc = sol_suffix_values(sol, "rc", 0, judged.num_var);
        ASSERT_EQ(rc.size(), judged.reduced_cost.size());
        for (size_t k = 0; k < rc.size(); ++k) EXPECT_NEAR(rc[k], judged.reduced_cost[k], 1e-4) << k;
    }
}

TEST_P(ampl_stubs, are_answered_or_refused)
{
    const stub_case &c = GetParam();
    const temp_folder folder;
    const std::string stub = copy_stub(folder, c.row);
    const ampl_run run =
        run_ampl(folder, stub, c.extended ? std::vector<std::string>{"ampl_extended=on"} : std::vector<std::string>{});
    SCOPED_TRACE(run.process.out);
    EXPECT_EQ(run.process.status, 0);
    const stub_refusal why = stub_refusal_of(stub);
    if (why == TWO_SIDED && c.extended) return; /* solved as a nonlinear model: see nonlinear_test.cpp */
    if (why != TAKEN) return expect_refusal(run, why, c.extended);

    ASSERT_TRUE(run.has_sol);
    ASSERT_EQ(run.sol.complaint, "");
    EXPECT_EQ(run.sol.objno, 0);
    EXPECT_EQ(run.sol.message.find("ZELOR finished.\nProblem status    : "), 0u) << run.sol.message;
    EXPECT_EQ(sol_suffix_values(run.sol, "rc", 0, run.sol.num_var).empty(), !c.extended || run.sol.num_var == 0);
    const int code = code_of(c.row, stub);
    if (code != 0 || c.row.problem_class != "QCQP") {
        EXPECT_EQ(run.sol.code, code) << run.sol.message;
    }
    if (code != 0) return;
    EXPECT_EQ(run.sol.code, 0);
    expect_optimal(folder, stub, c, run.sol);
}

INSTANTIATE_TEST_SUITE_P(data, ampl_stubs, ::testing::ValuesIn(stub_cases()), [](const auto &tested) {
    return tested.param.row.name + (tested.param.extended ? "_extended" : "");
});
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ampl_stubs);
