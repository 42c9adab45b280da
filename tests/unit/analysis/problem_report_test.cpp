/* problem_report_test.cpp - the report is read back: numbers and names are where they belong, and it fits a screen. */
#include "problem_support.h"

#include <gtest/gtest.h>

#include <regex>
#include <sstream>

static constexpr double inf = model_inf;

static std::vector<std::string> lines_of(const std::string &text)
{
    std::vector<std::string> lines;
    std::stringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

/* The line that begins with a label, without it; empty if there is none. */
static std::string line_after(const std::string &text, const std::string &label)
{
    for (const std::string &line : lines_of(text)) {
        const size_t at = line.find_first_not_of(' ');
        if (at != std::string::npos && line.compare(at, label.size(), label) == 0)
            return line.substr(at + label.size());
    }
    return "";
}

static std::string report(const model &m, int32_t detail = ANALYSIS_SCREEN)
{
    int32_t code = -1;
    const std::string text = report_of(m, detail, &code);
    EXPECT_EQ(code, ZLR_RES_OK);
    EXPECT_EQ(text.find("nan"), std::string::npos) << text;
    if (detail == ANALYSIS_SCREEN) {
        for (const std::string &line : lines_of(text)) EXPECT_LE(line.size(), 80U) << line;
        EXPECT_LE(lines_of(text).size(), 40U) << text;
    }
    return text;
}

TEST(problem_report, nothing_stands_out_on_a_good_model)
{
    const std::string text = report(two_row_model(ZLR_SENSE_MIN));
    EXPECT_NE(text.find("Advice: nothing stands out.\n"), std::string::npos) << text;
    int rows = 0, at_most = 0, cols = 0, continuous = 0, nz = 0;
    ASSERT_EQ(std::sscanf(line_after(text, "Rows").c_str(), " %d: %d at most", &rows, &at_most), 2) << text;
    ASSERT_EQ(std::sscanf(line_after(text, "Columns").c_str(), " %d: %d continuous", &cols, &continuous), 2) << text;
    ASSERT_EQ(std::sscanf(line_after(text, "Nonzeros").c_str(), " %d", &nz), 1) << text;
    EXPECT_EQ(rows, 2);
    EXPECT_EQ(at_most, 2);
    EXPECT_EQ(cols, 2);
    EXPECT_EQ(continuous, 2);
    EXPECT_EQ(nz, 4);
    double least = 0, most = 0;
    ASSERT_EQ(std::sscanf(line_after(text, "sides").c_str(), " %lf %lf", &least, &most), 2) << text;
    EXPECT_EQ(least, 5.0);
    EXPECT_EQ(most, 6.0);
}

TEST(problem_report, empty_shapes_print)
{
    model m;
    EXPECT_NE(report(m).find("Advice: nothing stands out.\n"), std::string::npos);
    model_append_cons(&m, 2);
    EXPECT_NE(report(m).find("2 rows are free"), std::string::npos);
    report(m, ANALYSIS_FULL);
    model columns;
    model_append_vars(&columns, 3);
    EXPECT_NE(report(columns).find("3 columns are in no row"), std::string::npos);
    report(columns, ANALYSIS_FULL);
    columns.var_lower = {-inf, inf, -inf};
    columns.var_upper = {inf, inf, -inf};
    columns.c = {0, 1, 1};
    EXPECT_NE(report(columns).find("2 columns have their lower bound above their upper bound"), std::string::npos);
}

TEST(problem_report, names_the_faults_with_their_amounts)
{
    model m = make_model(ZLR_SENSE_MIN, {1, -1}, {{10, inf, {1, 0.5}}, {-inf, inf, {1, 1}}}, {0, 0}, {4, 2});
    names_put(&m.con_names, 0, "demand");
    const std::string text = report(m);
    EXPECT_NE(text.find("Advice: the problem has no feasible point (!!).\n"), std::string::npos) << text;
    EXPECT_NE(text.find("demand (at most 5, needs 10: 5 off)"), std::string::npos) << text;
    EXPECT_NE(text.find("1 row is free: it has no side: c2"), std::string::npos) << text;
}

TEST(problem_report, unbounded_is_told_apart_from_infeasible)
{
    const model m = make_model(ZLR_SENSE_MAX, {3, 1}, {{-inf, 4, {-1, 1}}}, {0, 0}, {inf, 9});
    const std::string text = report(m);
    EXPECT_NE(text.find("Advice: the problem is unbounded"), std::string::npos) << text;
    EXPECT_NE(text.find("x1 (cost 3, no upper bound)"), std::string::npos) << text;
}

/* A model with something of nearly every kind: still one screen, gravest first; in full every name. */
static model troubled_model()
{
    std::vector<test_row> rows;
    for (int i = 0; i < 20; i++) rows.push_back({100.0 + i, inf, {1, 1, 0, 0, 0, 0}});  /* out of reach */
    for (int i = 0; i < 5; i++) rows.push_back({-inf, 1e-9, {0, 1, 1e-12, 0, 1e8, 0}}); /* tiny, too far apart */
    for (int i = 0; i < 5; i++) rows.push_back({-inf, 1e11 + i, {0, 1, 1, -1, 0, 0}});  /* large */
    for (int i = 0; i < 5; i++) rows.push_back({-inf, inf, {0, 1, 1, -1, 0, 0}});       /* free */
    for (int i = 0; i < 5; i++) rows.push_back({-inf, 5.0 + i, {0, 0, 0, 1, 0, 0}});    /* singletons */
    for (int i = 0; i < 5; i++) rows.push_back({-inf, 0, {0, 0, 0, 0, 1, -1e7}});       /* big-M */
    rows.push_back({5, 4, {1, 1, 1, 1, 1, 1}});
    model m = make_model(ZLR_SENSE_MIN, {1e12, 1, 1, 1, 1e-3, 0}, rows, {0, 0, 0.5, 3, 0, 0}, {9, 9, 2e9, 2, inf, 1});
    make_integer(&m, {2, 5});
    for (int32_t i = 0; i < m.num_con; i++) names_put(&m.con_names, i, "a_row_with_a_long_name_" + std::to_string(i));
    return m;
}

TEST(problem_report, screen_holds_the_gravest_and_full_holds_all)
{
    const model m = troubled_model();
    const std::string screen = report(m), full = report(m, ANALYSIS_FULL);
    const size_t grave = screen.find("!! "), doubtful = screen.find("  !  "), simple = screen.find("  -  ");
    ASSERT_NE(grave, std::string::npos) << screen;
    EXPECT_LT(grave, doubtful);
    EXPECT_TRUE(simple == std::string::npos || doubtful < simple);
    EXPECT_NE(screen.find("ANALYZE_DETAIL=FULL"), std::string::npos) << screen;
    EXPECT_NE(screen.find("20 rows cannot be met"), std::string::npos) << screen;
    EXPECT_NE(screen.find("a_row_with_a_long_name_19 (at most 18, needs 119"), std::string::npos) << "the worst first";
    EXPECT_NE(screen.find("and 16 more"), std::string::npos) << screen;

    const std::string advice = full.substr(full.find("\nAdvice"));
    for (int32_t i = 0; i < m.num_con; i++)
        EXPECT_NE(advice.find("a_row_with_a_long_name_" + std::to_string(i)), std::string::npos) << i;
    EXPECT_FALSE(std::regex_search(advice, std::regex("and [0-9]+ more"))) << advice;
}

TEST(problem_report, full_counts_agree_with_the_model)
{
    const model m = troubled_model();
    const std::string full = report(m, ANALYSIS_FULL);
    const problem_facts facts = facts_of(&m);
    long rows = 0, by_class = 0, matrix = 0;
    bool in_classes = false, in_sizes = false;
    for (const std::string &line : lines_of(full)) {
        if (line.empty()) in_classes = in_sizes = false;
        const size_t colon = line.find(": ");
        if (in_classes && line.compare(0, 4, "    ") != 0 && colon != std::string::npos)
            by_class += std::strtol(line.c_str() + colon + 2, nullptr, 10);
        if (in_sizes) matrix += std::strtol(line.c_str() + 13, nullptr, 10);
        if (line == "Rows by structure") in_classes = true;
        if (line.compare(0, 5, "From ") == 0) in_sizes = true;
    }
    ASSERT_EQ(std::sscanf(line_after(full, "Rows").c_str(), " %ld", &rows), 1);
    EXPECT_EQ(rows, m.num_con);
    EXPECT_EQ(by_class, rows);
    EXPECT_EQ(matrix, model_num_nz(&m));
    EXPECT_EQ(facts.num_nz, model_num_nz(&m));
}

TEST(problem_report, nobody_listens_nothing_is_done)
{
    ZLR_task task;
    param_set_defaults(&task.params);
    task.problem = std::make_shared<model>(two_row_model(ZLR_SENSE_MIN));
    EXPECT_EQ(problem_analysis_print(&task, ZLR_STREAM_MSG), ZLR_RES_OK);
}

TEST(problem_report, cones_by_type_and_size)
{
    model m = two_row_model(ZLR_SENSE_MIN);
    EXPECT_EQ(line_after(report(m), "Cones"), "");
    model_append_vars(&m, 8);
    names_put(&m.var_names, 3, "head");
    m.cones = {{ZLR_CT_QUAD, {3, 2}}, {ZLR_CT_RQUAD, {4, 5, 6}}, {ZLR_CT_QUAD, {7, 8, 9}}};
    EXPECT_EQ(line_after(report(m), "Cones"), "      3: 2 quadratic of 2 to 3 columns, 1 rotated of 3 columns,");
    const std::string full = report(m, ANALYSIS_FULL);
    EXPECT_NE(full.find("\nCones\n  1, quadratic: head, x3\n  2, rotated: x5, x6, x7\n  3, quadratic: x8, x9, x10\n"),
              std::string::npos)
        << full;
}
