/* ampl_cone_test.cpp - cones by the suffix "cone", and the suffixes that are taken and go nowhere. */
#include "ampl_run.h"

#include <gtest/gtest.h>

static nl_model model_with_cone(const std::vector<int> &values)
{
    nl_model model;
    model.columns.resize(values.size());
    model.objectives = {{.linear = {{0, 1.0}}}};
    nl_suffix cone = {0, "cone", {}};
    for (size_t j = 0; j < values.size(); ++j) cone.values.push_back({static_cast<int>(j), values[j]});
    model.suffixes = {cone};
    return model;
}

static ampl_result run_cone(const std::vector<int> &values, const std::string &script = "")
{
    return run_ampl({.stub = nl_text(model_with_cone(values)), .script = script});
}

/* The text of the run, without the line break before the optimiser. */
static std::string printed(const ampl_result &result)
{
    std::string out = result.run.process.out;
    if (!out.empty() && out.back() == '\n') out.pop_back();
    return out;
}

TEST(ampl_cone, roots_and_members)
{
    const struct {
        const char *name;
        std::vector<int> values;
        const char *calls;
    } cases[] = {
        {"no cone: nothing happens", {0, 0, 0}, ""},
        {"one root", {1, -1, 1}, "putmaxnumcone(task1, 1)\nappendcone(task1, 0, 0, 3, {1 0 2})\n"},
        {"two roots", {1, -1, 1, -1}, "putmaxnumcone(task1, 1)\nappendcone(task1, 1, 0, 4, {1 3 2 0})\n"},
        {"two cones and a column in none",
         {-2, 1, 0, 2, -1, 2},
         "putmaxnumcone(task1, 2)\nappendcone(task1, 0, 0, 2, {4 1})\nappendcone(task1, 0, 0, 3, {0 3 5})\n"},
        {"roots first in ascending order",
         {-1, -1, 1},
         "putmaxnumcone(task1, 1)\nappendcone(task1, 1, 0, 3, {0 1 2})\n"},
        {"a root alone", {0, -1}, "putmaxnumcone(task1, 1)\nappendcone(task1, 0, 0, 1, {1})\n"},
    };
    for (const auto &item : cases) {
        SCOPED_TRACE(item.name);
        const ampl_result result = run_cone(item.values);
        EXPECT_EQ(part_of(result, "putmaxnumcone appendcone"), item.calls);
        EXPECT_TRUE(result.has_sol);
    }
}

/* A cone that was appended before the failure stays; nothing is optimised and no .sol file left. */
TEST(ampl_cone, refused)
{
    const struct {
        const char *name;
        std::vector<int> values;
        const char *calls;
        std::string text;
    } cases[] = {
        {"no root", {1, 1}, "putmaxnumcone(task1, 1)\n", "No root specified for cone: 0\n"},
        {"three roots",
         {-1, -1, -1, 1},
         "putmaxnumcone(task1, 1)\n",
         "3 roots specified for cone 0. Has to be >=1 and <=2.\n"},
        {"a gap in the numbers",
         {-1, 1, 3, -3},
         "putmaxnumcone(task1, 3)\nappendcone(task1, 0, 0, 2, {0 1})\n",
         "No root specified for cone: 1\n"},
        {"a number beyond the columns", {-5, 5}, "putmaxnumcone(task1, 5)\n", "No root specified for cone: 0\n"},
        {"a number beyond all reason", {-1, 1, -2147483647}, "", "No root specified for cone: 1\n"},
        {"the least number", {-2147483647 - 1, 1, 3}, "", "No root specified for cone: 1\n"},
    };
    for (const auto &item : cases) {
        SCOPED_TRACE(item.name);
        const ampl_result result = run_cone(item.values);
        EXPECT_EQ(part_of(result, "putmaxnumcone appendcone putvartype"), item.calls);
        EXPECT_EQ(calls_of(result.run, "getcodedesc(1301, null)").size(), 1U);
        EXPECT_EQ(calls_of(result.run, "putintparam").back(), "putintparam(task1, 34, 0)");
        EXPECT_FALSE(result.has_sol);
        const std::string end = " *** Error: " + item.text;
        const std::string &out = result.run.process.out;
        EXPECT_TRUE(out.size() >= end.size() && out.compare(out.size() - end.size(), end.size(), end) == 0) << out;
    }
}

/* Every column is listed, those in no cone too, with the name that the task has for it. */
TEST(ampl_cone, listing)
{
    nl_model model = model_with_cone({0, -1, 1});
    EXPECT_EQ(printed(run_ampl({.stub = nl_text(model)})), "1643> XX variable: 0      cone: 0       ''\n"
                                                           "1643> XX variable: 1      cone: -1      ''\n"
                                                           "1643> XX variable: 2      cone: 1       ''\n"
                                                           "?2\n");
    model.max_column_name = 5;
    const ampl_result named = run_ampl({.stub = nl_text(model), .column_names = "a\nroot\nb c\n"});
    EXPECT_EQ(printed(named), "1643> XX variable: 0      cone: 0       'a'\n"
                              "1643> XX variable: 1      cone: -1      'root'\n"
                              "1643> XX variable: 2      cone: 1       'b c'\n"
                              "?2\n");
    EXPECT_EQ(printed(run_cone({-2, 2, 0})), "1643> XX variable: 0      cone: -2      ''\n"
                                             "1643> XX variable: 1      cone: 2       ''\n"
                                             "1643> XX variable: 2      cone: 0       ''\n"
                                             "?0\n?2\n *** Error: No root specified for cone: 0");
    EXPECT_EQ(printed(run_cone({0, 0})), "");
}

TEST(ampl_cone, suffix_of_rows_is_another)
{
    nl_model model = small_model();
    model.suffixes = {{1, "cone", {{0, -1}, {1, 1}}}};
    EXPECT_EQ(part_of(run_ampl({.stub = nl_text(model)}), "putmaxnumcone"), "");
}

TEST(ampl_cone, failures_of_the_library)
{
    for (const char *script : {"code ZLR_putmaxnumcone 1 1234", "code ZLR_appendcone 1 1234"}) {
        SCOPED_TRACE(script);
        const ampl_result result = run_cone({-1, 1, -2, 2}, script);
        EXPECT_EQ(calls_of(result.run, "getcodedesc(1234, null)").size(), 1U);
        EXPECT_LE(calls_of(result.run, "appendcone").size(), 1U);
        EXPECT_FALSE(result.has_sol);
    }
}

/* Cones of a general nonlinear model are built all the same. */
TEST(ampl_cone, nonlinear_model)
{
    nl_model model = model_with_cone({-1, 1});
    model.nlvo = 1;
    model.objectives[0].nonlinear = nl_exp(nl_variable(0));
    const ampl_result result = run_ampl({.stub = nl_text(model)});
    EXPECT_EQ(part_of(result, "appendcone"), "appendcone(task1, 0, 0, 2, {0 1})\n");
    EXPECT_LT(position_of(result.run, "appendcone"), position_of(result.run, "putnlfunc"));
}

/* Priorities and directions are accepted and reach the task in no way; so does any other suffix. */
TEST(ampl_cone, suffixes_that_go_nowhere)
{
    const std::string expected = joined(run_ampl({.stub = nl_text(small_model())}).transfer);
    nl_model model = small_model();
    model.suffixes = {{0, "priority", {{0, 3}, {1, 1}}},  {0, "direction", {{1, -1}}}, {0, "up", {{0, 5}}},
                      {1, "current", {{0, 2}}},           {2, "note", {{0, 2}}},       {3, "level", {{0, 2}}},
                      {4, "unknown", {{0, 2.5}, {1, 3}}}, {1, "priority", {{0, 1}}}};
    EXPECT_EQ(joined(run_ampl({.stub = nl_text(model)}).transfer), expected);
}
