/* ampl_no_value_test.cpp - points at which something of a nonlinear model has no value or no derivative: the callbacks say
 * so, every time, print nothing, and give the right values at the next point. */
#include "evaluated_model.h"

#include <gtest/gtest.h>

#include <cmath>

static const std::string pattern_line = "evaluate structure yo=1 y=2 want=count\n";
static const point good = {0.75, 1.25, 2.0};

/* What is asked for, one at a time, of all rows with multipliers 1 and weight 2. */
static const std::vector<std::string> items = {"obj", "grad", "con", "jac", "lag", "count,hes"};

static std::string line_for(const point &x, const std::string &want, const std::string &y = "1,1,1")
{
    /* Room is what asks for the Hessian. */
    const bool has_hessian = want.find("hes") != std::string::npos;
    return values_line(x, "yo=2 y=" + y + " rows=0,1 want=" + want + (has_hessian ? " room=8" : ""));
}

/* A nonlinear model over three columns with a common expression, which is the variable 3; empty: that function is linear. */
static nl_model model_of(const nl_expression &objective, const nl_expression &row0, const nl_expression &row1,
                         const nl_expression &common = "")
{
    nl_model m;
    m.columns.resize(3);
    m.nlvc = m.nlvo = m.nlvb = 2;
    const nl_terms zero = {{0, 0.0}, {1, 0.0}};
    m.rows = {{.upper = 1.0, .linear = zero, .nonlinear = row0}, {.upper = 1.0, .linear = zero, .nonlinear = row1}};
    m.objectives = {{.linear = zero, .nonlinear = objective}};
    if (!common.empty()) m.commons = {{.linear = {{1, 1.0}}, .nonlinear = common}};
    return m;
}

static std::vector<callback_answer> evaluate(const nl_model &model, const std::string &script)
{
    return answers_of(run_ampl({.stub = nl_text(model), .script = script, .may_fail = false}).run);
}

static const nl_expression smooth = "o2\n" + nl_exp(nl_variable(0)) + nl_variable(1);
static const nl_expression other = nl_plus(nl_square(0), nl_exp(nl_variable(1)));

struct gap_case {
    const char *name;
    nl_model model;
    point bad;
    std::string expected; /* a letter an item: f it fails, v it has its values */
};

static std::vector<gap_case> gap_cases()
{
    const nl_expression logarithm = "o43\nv0\n", root = "o39\nv0\n", quotient = "o3\nn1\nv0\n",
                        power = "o5\nv0\nn0.5\n", half_power = "o5\nv0\nn1.5\n", exponential = nl_exp("o2\nn500\nv0\n"),
                        of_columns = "o5\nv0\nv1\n", common = nl_product(nl_variable(3), nl_variable(1));
    nl_model linear = model_of("", common, smooth, root);
    linear.nlvo = linear.nlvb = 0;
    const point below = {-1, 1.25, 2}, at_zero = {0, 1.25, 2}, large = {2, 1.25, 2};
    return {
        {"objective without value", model_of(logarithm, smooth, other), below, "ffvvff"},
        {"row without value", model_of(other, logarithm, smooth), below, "vvffff"},
        {"last row without value", model_of(other, smooth, logarithm), below, "vvffff"},
        {"quotient", model_of(quotient, smooth, other), at_zero, "ffvvff"},
        {"overflow", model_of(smooth, exponential, other), large, "vvffff"},
        {"power of a negative number", model_of(smooth, of_columns, other), below, "vvffff"},
        {"both without value", model_of(logarithm, root, other), below, "ffffff"},
        /* A value, and no derivative. */
        {"objective without derivative", model_of(root, smooth, other), at_zero, "vfvvff"},
        {"row without derivative", model_of(smooth, root, other), at_zero, "vvvfff"},
        {"last row without derivative", model_of(smooth, other, root), at_zero, "vvvfff"},
        {"power without derivative", model_of(smooth, other, power), at_zero, "vvvfff"},
        {"no second derivative", model_of(smooth, other, half_power), at_zero, "vvvfff"},
        /* Common expressions are evaluated with the point, and their gaps are those of every function. */
        {"common expression without value", model_of(common, common, smooth, logarithm), below, "ffffff"},
        {"common expression of one row without value", model_of(smooth, common, other, root), below, "ffffff"},
        {"common expression without derivative", model_of(common, smooth, other, root), at_zero, "vfvfff"},
        {"common expression of a row without derivative", model_of(smooth, other, common, root), at_zero, "vfvfff"},
        {"common expression under a linear objective", linear, at_zero, "vvvfff"},
    };
}

static bool is_finite_everywhere(const callback_answer &answer)
{
    for (const auto &[name, values] : answer.arrays)
        for (const double value : values)
            if (std::isinf(value)) return false;
    return true;
}

/* Each item alone at the bad point, twice, with the good point before and behind; then with the bad point first. */
TEST(ampl_no_value, items)
{
    const std::string all = "obj,grad,con,jac,lag,count,hes";
    for (const gap_case &gap : gap_cases()) {
        std::string script = pattern_line + line_for(good, all);
        for (const std::string &item : items)
            script += line_for(gap.bad, item) + line_for(gap.bad, item) + line_for(good, all);
        const std::vector<callback_answer> answers = evaluate(gap.model, script);
        ASSERT_EQ(answers.size(), 2 + 3 * items.size()) << gap.name;
        ASSERT_EQ(answers[1].code, 0) << gap.name;
        for (size_t k = 0; k < items.size(); ++k) {
            SCOPED_TRACE(std::string(gap.name) + ": " + items[k]);
            for (const size_t turn : {2U, 3U}) {
                const callback_answer &answer = answers[3 * k + turn];
                EXPECT_EQ(answer.code, gap.expected[k] == 'f' ? 1433 : 0) << "turn " << turn;
                EXPECT_TRUE(is_finite_everywhere(answer));
            }
            const callback_answer &after = answers[3 * k + 4];
            EXPECT_EQ(after.code, 0);
            for (const auto &[name, values] : answers[1].arrays)
                EXPECT_TRUE(are_close(after.arrays.at(name), values)) << name;
        }
        for (size_t k = 0; k < items.size(); ++k) {
            SCOPED_TRACE(std::string(gap.name) + ": first of all " + items[k]);
            const std::vector<callback_answer> first =
                evaluate(gap.model, pattern_line + line_for(gap.bad, items[k]) + line_for(gap.bad, items[k]));
            ASSERT_EQ(first.size(), 3U);
            EXPECT_EQ(first[1].code, gap.expected[k] == 'f' ? 1433 : 0);
            EXPECT_EQ(first[2].code, gap.expected[k] == 'f' ? 1433 : 0);
        }
    }
}

/* All items at once, and each item behind each other one at the bad point: what was tried before changes no verdict. */
TEST(ampl_no_value, items_behind_each_other)
{
    for (const gap_case &gap : gap_cases()) {
        std::string script = pattern_line;
        for (const std::string &before : items)
            for (const std::string &item : items)
                script += line_for(good, "obj,con") + line_for(gap.bad, before) + line_for(gap.bad, item);
        script += line_for(gap.bad, "obj,grad,con,jac,lag,count,hes");
        const std::vector<callback_answer> answers = evaluate(gap.model, script);
        ASSERT_EQ(answers.size(), 2 + 3 * items.size() * items.size()) << gap.name;
        for (size_t b = 0; b < items.size(); ++b)
            for (size_t k = 0; k < items.size(); ++k) {
                EXPECT_EQ(answers[3 * (b * items.size() + k) + 3].code, gap.expected[k] == 'f' ? 1433 : 0)
                    << gap.name << ": " << items[k] << " behind " << items[b];
            }
        EXPECT_EQ(answers.back().code, 1433) << gap.name;
    }
}

/* A row without a multiplier is not needed for the Lagrangian. */
TEST(ampl_no_value, rows_that_do_not_count)
{
    const nl_model model = model_of(other, smooth, "o43\nv0\n");
    const std::vector<callback_answer> answers =
        evaluate(model, pattern_line + line_for({-1, 1.25, 2}, "lag,count,hes", "1,0,1") +
                            line_for({-1, 1.25, 2}, "lag,count,hes", "1,1,1") +
                            line_for({-2, 1.25, 2}, "lag,count,hes", "1,0,1"));
    ASSERT_EQ(answers.size(), 4U);
    EXPECT_EQ(answers[1].code, 0);
    EXPECT_EQ(answers[2].code, 1433);
    EXPECT_EQ(answers[3].code, 0);
}

/* The gradients of the rows before the one that fails are there, those behind it too; of values it is the ones before. */
TEST(ampl_no_value, rows_around_a_gap)
{
    nl_model model = model_of(smooth, other, "o39\nv0\n");
    model.rows.push_back(
        {.upper = 1.0, .linear = {{0, 0.0}, {1, 0.0}}, .nonlinear = nl_product(nl_variable(0), smooth)});
    const std::vector<callback_answer> answers =
        evaluate(model, pattern_line + values_line({0, 1.25, 2}, "rows=0,1,2 want=con") +
                            values_line({0, 1.25, 2}, "rows=0,1,2 want=jac") +
                            values_line({-1, 1.25, 2}, "rows=0,1,2 want=con") +
                            values_line({-1, 1.25, 2}, "rows=0,1,2 want=jac"));
    ASSERT_EQ(answers.size(), 5U);
    EXPECT_EQ(answers[1].code, 0);
    const double e = std::exp(1.25);
    EXPECT_TRUE(are_close(answers[1].arrays.at("con"), {e, 0, 0}));
    EXPECT_EQ(answers[2].code, 1433);
    EXPECT_TRUE(are_close(answers[2].arrays.at("jac"), {0, e}));
    EXPECT_TRUE(are_close(answers[2].arrays.at("jac2"), {0, 0}));
    EXPECT_TRUE(are_close(answers[2].arrays.at("jac3"), {1.25, 0}));
    EXPECT_EQ(answers[3].code, 1433);
    EXPECT_TRUE(are_close({answers[3].arrays.at("con")[0]}, {1 + e}));
    EXPECT_EQ(answers[4].code, 1433);
    EXPECT_TRUE(are_close(answers[4].arrays.at("jac"), {-2, e}));
    EXPECT_TRUE(are_close(answers[4].arrays.at("jac3"), {0, -std::exp(-1.0)}));
}
