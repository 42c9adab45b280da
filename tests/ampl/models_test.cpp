/* models_test.cpp - real stubs in both modes: published optima, and the answer judged by the stub's own data. */
#include "ampl_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iterator>

/* Why a stub has no answer, by mode: without AMPL_EXTENDED most leave no .sol file. */
enum refusal { TAKEN, TWO_SIDED, NOT_CONVEX, COMPLEMENTARITY, SETS };

static const struct {
    const char *stub;
    refusal why;
} refused[] = {
    {"pyomo_mpec_t2a", COMPLEMENTARITY},
    {"pyomo_mpec_t3a", COMPLEMENTARITY},
    {"sos1a", SETS},
    {"gjh_stub1", SETS},
    {"bt1", TWO_SIDED},
    {"bt12", TWO_SIDED},
    {"bt13", TWO_SIDED},
    {"bt8", TWO_SIDED},
    {"byrdsphr", TWO_SIDED},
    {"coolhans", TWO_SIDED},
    {"dispatch", TWO_SIDED},
    {"gilbert", TWO_SIDED},
    {"hs006", TWO_SIDED},
    {"hs061", TWO_SIDED},
    {"hs063", TWO_SIDED},
    {"hs084", TWO_SIDED},
    {"kall_circles_c8a", TWO_SIDED},
    {"pyomo_small1", TWO_SIDED},
    {"pyomo_small2", TWO_SIDED},
    {"pyomo_small3", TWO_SIDED},
    {"pyomo_small5", TWO_SIDED},
    {"pyomo_small6", TWO_SIDED},
    {"st_e02", TWO_SIDED},
    {"st_e05", TWO_SIDED},
    {"st_e07", TWO_SIDED},
    {"couenne_prod", NOT_CONVEX},
    {"couenne_qquad", NOT_CONVEX},
    {"hs095", NOT_CONVEX},
    {"hs096", NOT_CONVEX},
    {"hs098", NOT_CONVEX},
    {"hs106", NOT_CONVEX},
    {"hs108", NOT_CONVEX},
    {"kiwcresc", NOT_CONVEX},
    {"prodpl0", NOT_CONVEX},
    {"prodpl1", NOT_CONVEX},
    {"sosqp1", NOT_CONVEX},
    {"st_e09", NOT_CONVEX},
    {"st_e18", NOT_CONVEX},
};

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

static refusal refusal_of(const std::string &stub)
{
    for (const auto &r : refused)
        if (stub == r.stub) return r.why;
    return TAKEN;
}

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
static void expect_refusal(const ampl_run &run, refusal why, bool extended)
{
    static const struct {
        int code;
        const char *reason;
    } reports[] = {{0, ""},
                   {540, "general nonlinear"},
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
    const refusal why = refusal_of(stub);
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
