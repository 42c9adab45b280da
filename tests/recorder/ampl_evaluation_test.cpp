/* ampl_evaluation_test.cpp - the nonlinear callbacks, called by the recorder in place of an optimiser. */
#include "evaluated_model.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>

static std::vector<callback_answer> evaluate(const nl_model &model, const std::string &script)
{
    const ampl_result result = run_ampl({.stub = nl_text(model), .script = script, .may_fail = false});
    EXPECT_TRUE(result.has_sol);
    return answers_of(result.run);
}

static const std::string pattern_line = "evaluate structure yo=1 y=2 want=count\n";
static const double not_written = std::nan("");

static void expect_array(const callback_answer &answer, const std::string &name, const std::vector<double> &expected)
{
    const auto found = answer.arrays.find(name);
    ASSERT_NE(found, answer.arrays.end()) << name;
    EXPECT_TRUE(are_close(found->second, expected))
        << name << ": " << testing::PrintToString(found->second) << ", not " << testing::PrintToString(expected);
}

/* ---- Structure ---- */

/* The first `num` of `all` as a list of words, by the bits of a number. */
static std::string chosen(const std::vector<std::string> &all, unsigned bits)
{
    std::string words;
    for (size_t k = 0; k < all.size(); ++k)
        if (bits & (1U << k)) words += (words.empty() ? "" : ",") + all[k];
    return words;
}

/* Every set of items is answered by the same values, and what is not wanted stays away. */
TEST(ampl_evaluation, structure_with_any_items)
{
    const std::vector<std::string> items = {"grad", "gradsub", "con", "row", "rowsub", "count", "sub"};
    const std::map<std::string, std::vector<double>> expected = {{"grad", {2}},
                                                                 {"gradsub", {0, 1, not_written}},
                                                                 {"con", {1}},
                                                                 {"row", {2}},
                                                                 {"rowsub", {0, 1, not_written}},
                                                                 {"count", {3}},
                                                                 {"subi", {0, 1, 1}},
                                                                 {"subj", {0, 0, 1}}};
    std::string script;
    for (unsigned bits = 0; bits < 128; ++bits)
        script += "evaluate structure i=1 yo=1 y=2 room=3 want=" + chosen(items, bits) + "\n";
    const std::vector<callback_answer> answers = evaluate(evaluated_stub(), script);
    ASSERT_EQ(answers.size(), 128U);
    for (unsigned bits = 0; bits < 128; ++bits) {
        SCOPED_TRACE(chosen(items, bits));
        EXPECT_EQ(answers[bits].code, 0);
        for (const auto &[name, values] : expected)
            if (answers[bits].arrays.count(name) != 0) expect_array(answers[bits], name, values);
        size_t num = 0;
        for (size_t k = 0; k < items.size(); ++k)
            if (bits >> k & 1U) num += items[k] == "sub" ? 2 : 1;
        EXPECT_EQ(answers[bits].arrays.size(), num);
    }
}

/* Rows that are evaluated have all of their columns, the linear ones too; others are no error and have nothing. */
TEST(ampl_evaluation, structure_of_rows)
{
    const struct {
        int row;
        double is_evaluated, num;
    } cases[] = {{0, 1, 3}, {1, 1, 2}, {2, 0, 0}, {3, 0, 0}, {-1, 0, 0}, {2000000000, 0, 0}};
    std::string script;
    for (const auto &item : cases) script += "evaluate structure want=con,row i=" + std::to_string(item.row) + "\n";
    const std::vector<callback_answer> answers = evaluate(evaluated_stub(), script);
    for (size_t k = 0; k < std::size(cases); ++k) {
        SCOPED_TRACE(cases[k].row);
        expect_array(answers.at(k), "con", {cases[k].is_evaluated});
        expect_array(answers.at(k), "row", {cases[k].num});
    }
}

TEST(ampl_evaluation, structure_that_does_not_fit)
{
    const std::vector<callback_answer> answers =
        evaluate(evaluated_stub(), "evaluate structure yo=1 y=2 room=2 want=sub\n"
                                   "evaluate structure yo=1 y=2 room=2 want=count,sub\n"
                                   "evaluate structure yo=1 y=2 room=4 want=count,sub\n");
    ASSERT_EQ(answers.size(), 3U);
    EXPECT_EQ(answers[0].code, 1);
    EXPECT_EQ(answers[1].code, 1);
    expect_array(answers[1], "count", {3});
    expect_array(answers[1], "subi", {not_written, not_written});
    EXPECT_EQ(answers[2].code, 0);
    expect_array(answers[2], "subi", {0, 1, 1, not_written});
}

/* Without multipliers the pattern is the objective's alone; each call that asks for the count builds it anew. */
TEST(ampl_evaluation, pattern_follows_the_selection)
{
    const std::vector<callback_answer> answers =
        evaluate(evaluated_stub(), "evaluate structure yo=1 y=0 room=3 want=count,sub\n"
                                   "evaluate structure yo=1 y=2 room=3 want=count,sub\n"
                                   "evaluate structure yo=0 y=0 room=3 want=sub\n");
    ASSERT_EQ(answers.size(), 3U);
    expect_array(answers[0], "count", {2});
    expect_array(answers[0], "subi", {0, 1, not_written});
    expect_array(answers[1], "count", {3});
    expect_array(answers[2], "subi", {0, 1, 1});
}

/* A linear objective over nonlinear rows: the structure lists nothing of it, the evaluation all of the nonlinear columns. */
TEST(ampl_evaluation, linear_objective)
{
    nl_model model = evaluated_stub();
    model.objectives[0] = {.linear = {{0, 2.0}, {1, -3.0}, {2, 7.0}}, .constant = 5.0};
    model.nlvo = model.nlvb = 0;
    const ampl_result result = run_ampl({.stub = nl_text(model),
                                         .script = "evaluate structure want=grad,gradsub\n" + pattern_line +
                                                   values_line({1, 2, 3}, "yo=2 want=obj,grad,lag,count,hes room=3"),
                                         .may_fail = false});
    const std::vector<callback_answer> answers = answers_of(result.run);
    ASSERT_EQ(answers.size(), 3U);
    expect_array(answers[0], "grad", {0});
    expect_array(answers[2], "obj", {5.0 + 2.0 - 6.0});
    expect_array(answers[2], "gradsub", {0, 1});
    expect_array(answers[2], "gradval", {2.0, -3.0});
    expect_array(answers[2], "lag", {4.0, -6.0, 0.0});
    expect_array(answers[2], "hes", {0, 0, 0});
    EXPECT_EQ(part_of(result, "putclist"),
              "putclist(task1, 1, {0}, {0})\nputclist(task1, 1, {1}, {0})\nputclist(task1, 1, {2}, {7})\n")
        << "what is evaluated is not in the task";
}

/* ---- Values ---- */

static std::vector<double> hessian_of(const evaluated_model &m, double weight, double y0, double y1)
{
    std::vector<double> h;
    for (size_t k = 0; k < 3; ++k) h.push_back(weight * m.ddf[k] + y0 * m.ddg[0][k] + y1 * m.ddg[1][k]);
    return h;
}

static std::vector<double> gradient_of(const evaluated_model &m, double weight, double y0, double y1)
{
    std::vector<double> g;
    for (size_t j = 0; j < 3; ++j) g.push_back((j < 2 ? weight * m.df[j] : 0.0) + y0 * m.dg[0][j] + y1 * m.dg[1][j]);
    return g;
}

/* All that can be asked for at a point: rows 0 and 1, multipliers as the callbacks are handed them. */
static void expect_values(const callback_answer &answer, const point &x, double weight, double y0, double y1)
{
    const evaluated_model m = evaluated_at(x);
    const std::map<std::string, std::vector<double>> expected = {
        {"obj", {m.f}},
        {"grad", {2}},
        {"gradsub", {0, 1}},
        {"gradval", {m.df[0], m.df[1]}},
        {"con", {m.g[0], m.g[1]}},
        {"jac", {m.dg[0][0], m.dg[0][1], m.dg[0][2]}},
        {"jac2", {m.dg[1][0], m.dg[1][1]}},
        {"lag", gradient_of(m, weight, -y0, -y1)},
        {"count", {3}},
        {"subi", {0, 1, 1}},
        {"subj", {0, 0, 1}},
        {"hes", hessian_of(m, weight, -y0, -y1)},
    };
    EXPECT_EQ(answer.code, 0);
    for (const auto &[name, values] : answer.arrays) expect_array(answer, name, expected.at(name));
}

/* Every set of items, at a point of its own and again at the same point, alone and behind another set. */
TEST(ampl_evaluation, values_with_any_items)
{
    const std::vector<std::string> items = {"obj", "grad", "con", "jac", "lag", "count,hes", "sub"};
    std::string script = pattern_line;
    std::vector<point> points;
    for (unsigned bits = 0; bits < 128; ++bits) {
        /* Subscripts come with the count. */
        const std::string want = chosen(items, bits & 32U ? bits : bits & 31U);
        points.push_back({0.5 + bits * 0.01, 1.5 - bits * 0.003, bits * 0.1});
        const std::string words = " yo=2 y=0.5,-1.5,9 rows=0,1 room=3 want=";
        script += values_line(points[bits], words + want) +
                  values_line(points[bits], words + chosen(items, 127 - bits)) +
                  values_line(points[bits], words + want);
    }
    const std::vector<callback_answer> answers = evaluate(evaluated_stub(), script);
    ASSERT_EQ(answers.size(), 1U + 3 * 128);
    for (size_t k = 1; k < answers.size(); ++k) {
        SCOPED_TRACE(k);
        callback_answer answer = answers[k];
        /* Without the count the Hessian's places are not told: of those items nothing is to be looked at. */
        if (answer.arrays.count("count") == 0) answer.arrays.erase("subi"), answer.arrays.erase("subj");
        expect_values(answer, points[(k - 1) / 3], 2, 0.5, -1.5);
    }
}

/* Values of the Hessian without its count are neither scaled nor told where they stand. */
TEST(ampl_evaluation, hessian_without_its_count)
{
    const point x = {1.5, 0.5, 0};
    const std::vector<callback_answer> answers =
        evaluate(evaluated_stub(), pattern_line + values_line(x, "yo=2 y=0.5,-1.5,9 rows=0,1 room=3 want=hes,sub"));
    const evaluated_model m = evaluated_at(x);
    std::vector<double> half = hessian_of(m, 2, -0.5, 1.5);
    for (double &value : half) value /= 2;
    expect_array(answers.at(1), "hes", half);
    expect_array(answers.at(1), "subi", {not_written, not_written, not_written});
}

TEST(ampl_evaluation, weights_and_multipliers)
{
    const point x = {1.25, 0.75, 2.0};
    const evaluated_model m = evaluated_at(x);
    const struct {
        double weight, y0, y1;
    } cases[] = {{1, 0, 0}, {1, 1, 0}, {1, 0, -1}, {-1, 2, 3}, {0.5, -2, 1e-3}, {1e-3, 1, 1}};
    std::string script = pattern_line;
    for (const auto &item : cases) {
        char words[200];
        std::snprintf(words, sizeof words, "yo=%.17g y=%.17g,%.17g,9 rows=0,1 room=3 want=lag,count,hes", item.weight,
                      item.y0, item.y1);
        script += values_line(x, words);
    }
    script += values_line(x, "yo=0 y=3,4,9 rows=0,1 room=3 want=lag,count,sub,hes"); /* the weight 0 */
    script += values_line(x, "yo=3 y=3,4,9 room=3 want=lag,count,hes,jac,all");      /* no rows */
    const std::vector<callback_answer> answers = evaluate(evaluated_stub(), script);
    ASSERT_EQ(answers.size(), std::size(cases) + 3);
    for (size_t k = 0; k < std::size(cases); ++k) {
        SCOPED_TRACE(k);
        expect_values(answers[k + 1], x, cases[k].weight, cases[k].y0, cases[k].y1);
    }
    const callback_answer &zero = answers[answers.size() - 2];
    EXPECT_EQ(zero.code, 0);
    expect_array(zero, "lag", gradient_of(m, 0, -3, -4));
    expect_array(zero, "hes", {0, 0, 0});
    expect_array(zero, "subi", {0, 1, 1});
    const callback_answer &none = answers.back();
    EXPECT_EQ(none.code, 0);
    expect_array(none, "lag", gradient_of(m, 3, 0, 0));
    expect_array(none, "hes", hessian_of(m, 3, 0, 0));
    EXPECT_EQ(none.arrays.count("jac"), 0U);
}

/* Rows in another order: their multipliers are taken by position and, for the Hessian, read by number. */
TEST(ampl_evaluation, rows_in_another_order)
{
    const point x = {1.25, 0.75, 2.0};
    const evaluated_model m = evaluated_at(x);
    const std::vector<callback_answer> answers = evaluate(
        evaluated_stub(), pattern_line + values_line(x, "yo=2 y=3,4,9 rows=1,0 room=3 want=con,all,lag,count,hes"));
    const callback_answer &a = answers.at(1);
    expect_array(a, "con", {m.g[1], m.g[0]});
    expect_array(a, "jac", {m.dg[1][2], m.dg[1][1], m.dg[1][0]});
    expect_array(a, "jac2", {m.dg[0][2], m.dg[0][1], m.dg[0][0]});
    expect_array(a, "lag", gradient_of(m, 2, -3, -4));
    expect_array(a, "hes", hessian_of(m, 2, -4, -3));
}

/* Rows in the order of their lists, some of all, one behind the other at a point. */
TEST(ampl_evaluation, single_rows)
{
    const point x = {1.25, 0.75, 2.0};
    const evaluated_model m = evaluated_at(x);
    std::string script = pattern_line;
    const std::vector<std::vector<size_t>> turns = {{1}, {0}, {0, 1}, {1, 0}, {1}};
    for (const std::vector<size_t> &rows : turns)
        script += values_line(x, std::string("want=con,jac rows=") + std::to_string(rows.front()) +
                                     (rows.size() > 1 ? "," + std::to_string(rows.back()) : ""));
    const std::vector<callback_answer> answers = evaluate(evaluated_stub(), script);
    const std::vector<std::vector<double>> gradients = {{m.dg[0][0], m.dg[0][1], m.dg[0][2]}, {m.dg[1][0], m.dg[1][1]}};
    for (size_t k = 0; k < turns.size(); ++k) {
        SCOPED_TRACE(k);
        for (size_t r = 0; r < turns[k].size(); ++r)
            expect_array(answers.at(k + 1), r == 0 ? "jac" : "jac2", gradients[turns[k][r]]);
    }
}

/* Rows that are not evaluated: linear ones and those that do not exist. */
TEST(ampl_evaluation, rows_out_of_range)
{
    const point x = {1.25, 0.75, 2.0};
    const evaluated_model m = evaluated_at(x);
    const std::vector<callback_answer> answers = evaluate(
        evaluated_stub(),
        pattern_line + values_line(x, "yo=1 y=3,4,9 rows=0,2,3,-1,2000000000,1 room=3 want=con,all,lag,count,hes"));
    const callback_answer &a = answers.at(1);
    EXPECT_EQ(a.code, 0);
    expect_array(a, "con", {m.g[0], 0, 0, 0, 0, m.g[1]});
    for (const char *name : {"jac2", "jac3", "jac4", "jac5"}) expect_array(a, name, {0, 0, 0});
    expect_array(a, "jac6", {m.dg[1][2], m.dg[1][1], m.dg[1][0]});
    expect_array(a, "lag", gradient_of(m, 1, -3, 0)); /* there are three places for multipliers */
}

TEST(ampl_evaluation, no_point)
{
    const std::vector<callback_answer> answers =
        evaluate(evaluated_stub(), "evaluate values yo=1 y=1,1,1 rows=0,1\nevaluate values want=obj\n" + pattern_line +
                                       values_line({1, 1, 1}, "want=obj") +
                                       "evaluate values rows=0 want=con\nevaluate values room=3 want=count,hes\n");
    ASSERT_EQ(answers.size(), 6U);
    EXPECT_EQ(answers[0].code, 0) << "nothing is asked for";
    EXPECT_EQ(answers[1].code, 1433);
    EXPECT_EQ(answers[3].code, 0);
    EXPECT_EQ(answers[4].code, 1433);
    EXPECT_EQ(answers[5].code, 1433);
}

/* A Hessian that does not fit its room, that has no pattern, or one for the objective alone. */
TEST(ampl_evaluation, hessian_that_does_not_fit)
{
    const point x = {1.25, 0.75, 2.0};
    const evaluated_model m = evaluated_at(x);
    const std::string objective = "evaluate structure yo=1 y=0 want=count\n";
    const std::string rows = "yo=1 y=3,4,9 rows=0,1 want=obj,count,hes ";
    const std::vector<callback_answer> answers =
        evaluate(evaluated_stub(), values_line(x, rows + "room=3") + pattern_line + values_line(x, rows + "room=2") +
                                       values_line(x, "yo=1 room=2 want=hes") + objective +
                                       values_line(x, rows + "room=3") + values_line(x, "yo=1 room=3 want=count,hes") +
                                       pattern_line + values_line(x, rows + "room=4"));
    ASSERT_EQ(answers.size(), 9U);
    for (const size_t k : {0U, 2U, 3U, 5U}) {
        SCOPED_TRACE(k);
        EXPECT_EQ(answers[k].code, 1);
        if (k != 3) expect_array(answers[k], "obj", {m.f});
        for (const double value : answers[k].arrays.at("hes")) EXPECT_TRUE(std::isnan(value));
    }
    expect_array(answers[2], "count", {3});
    EXPECT_EQ(answers[6].code, 0);
    EXPECT_EQ(answers[6].arrays.at("count")[0], 2);
    EXPECT_EQ(answers[8].code, 0);
    expect_array(answers[8], "hes", [&] {
        std::vector<double> h = hessian_of(m, 1, -3, -4);
        h.push_back(not_written);
        return h;
    }());
}

/* The callbacks live until the job is released: the optimiser may ask again when it is asked for solutions. */
TEST(ampl_evaluation, behind_the_optimiser)
{
    const point x = {1.25, 0.75, 2.0};
    std::string late = values_line(x, "yo=1 y=3,4,9 rows=0,1 room=3 want=obj,con,count,hes");
    late.replace(0, 8, "later");
    const std::vector<callback_answer> answers =
        evaluate(evaluated_stub(), "later structure yo=1 y=2 room=3 want=count,sub\n" + late);
    ASSERT_EQ(answers.size(), 2U);
    expect_values(answers[1], x, 1, 3, 4);
}

/* A maximisation turns no sign. */
TEST(ampl_evaluation, maximisation)
{
    nl_model model = evaluated_stub();
    model.objectives[0].maximise = true;
    const point x = {1.25, 0.75, 2.0};
    const std::vector<callback_answer> answers = evaluate(
        model, pattern_line + values_line(x, "yo=1 y=3,4,9 rows=0,1 room=3 want=obj,grad,con,jac,lag,count,hes"));
    expect_values(answers.at(1), x, 1, 3, 4);
}
