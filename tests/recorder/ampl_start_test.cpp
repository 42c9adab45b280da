/* ampl_start_test.cpp - what AMPL sends to start from: statuses, point, multipliers. */
#include "ampl_run.h"

#include <gtest/gtest.h>

static const nl_suffix columns_status = {0, "sstatus", {{0, 1}, {1, 3}}};
static const nl_suffix rows_status = {1, "sstatus", {{0, 4}, {1, 5}}};

static std::string started(const nl_model &model, const std::string &script = "")
{
    return part_of(run_ampl({.stub = nl_text(model), .script = script}), "putsolution solutionsummary");
}

/* The gates are crossed: the statuses of rows are let in by those of columns, and the other way round. */
TEST(ampl_start, statuses)
{
    const std::string summary = "solutionsummary(task1, 1)\n";
    const std::string rest = ", null, null, null, null, null, null, null, null, null)\n";
    const struct {
        const char *name;
        std::vector<nl_suffix> suffixes;
        std::string expected;
    } cases[] = {
        {"none", {}, ""},
        {"both", {columns_status, rows_status}, "putsolution(task1, 1, {4 5}, {1 3}" + rest + summary},
        {"rows alone: dropped", {rows_status}, "putsolution(task1, 1, {0 0}, {0 0}" + rest + summary},
        {"columns alone: dropped", {columns_status}, "putsolution(task1, 1, {0 0}, {0 0}" + rest + summary},
        {"every value",
         {{0, "sstatus", {{0, 6}, {1, 2}}}, {1, "sstatus", {{0, -1}, {1, 17}}}},
         "putsolution(task1, 1, {2 2}, {2 2}" + rest + summary},
        {"missing values are 0",
         {{0, "sstatus", {{1, 3}}}, {1, "sstatus", {{0, 1}}}},
         "putsolution(task1, 1, {1 0}, {0 3}" + rest + summary},
    };
    for (const auto &item : cases) {
        SCOPED_TRACE(item.name);
        nl_model model = small_model();
        model.suffixes = item.suffixes;
        EXPECT_EQ(started(model), item.expected);
    }
}

TEST(ampl_start, values)
{
    const std::string summary = "solutionsummary(task1, 1)\n";
    const struct {
        const char *name;
        nl_terms x, y;
        std::string expected;
    } cases[] = {
        {"none", {}, {}, ""},
        {"point",
         {{1, 2.5}},
         {},
         "putsolution(task1, 1, {0 0}, {0 0}, null, null, {0 2.5}, null, null, null, null, null, null)\n" + summary},
        {"multipliers",
         {},
         {{0, -1}, {1, 0.5}},
         "putsolution(task1, 1, {0 0}, {0 0}, null, null, null, {-1 0.5}, null, null, null, null, null)\n" + summary},
        {"both",
         {{0, 1}},
         {{1, 3}},
         "putsolution(task1, 1, {0 0}, {0 0}, null, null, {1 0}, {0 3}, null, null, null, null, null)\n" + summary},
    };
    for (const auto &item : cases) {
        SCOPED_TRACE(item.name);
        nl_model model = small_model();
        model.x = item.x;
        model.y = item.y;
        EXPECT_EQ(started(model), item.expected);
    }
    /* All of it at once. */
    nl_model model = small_model();
    model.suffixes = {columns_status, rows_status};
    model.x = {{0, 1}};
    model.y = {{1, 3}};
    EXPECT_EQ(started(model),
              "putsolution(task1, 1, {4 5}, {1 3}, null, null, {1 0}, {0 3}, null, null, null, null, null)\n" +
                  summary);
    /* A model without rows has no multipliers to send. */
    model = small_model();
    model.rows.clear();
    model.x = {{0, 1}};
    EXPECT_EQ(started(model),
              "putsolution(task1, 1, {}, {0 0}, null, null, {1 0}, null, null, null, null, null, null)\n" + summary);
}

TEST(ampl_start, kind_of_solution)
{
    nl_model model = small_model();
    model.x = {{0, 1}};
    const struct {
        const char *script;
        int niv, kind;
    } cases[] = {
        {"", 0, 1}, {"type 1", 0, 0}, {"type 2", 0, 0}, {"type 3", 0, 0}, {"", 1, 2}, {"type 3", 1, 2},
    };
    for (const auto &item : cases) {
        SCOPED_TRACE(std::string(item.script) + " / " + std::to_string(item.niv));
        model.niv = item.niv;
        EXPECT_EQ(started(model, item.script).rfind("putsolution(task1, " + std::to_string(item.kind) + ", ", 0), 0U);
    }
}

/* The start's code is the transfer's. */
TEST(ampl_start, failures)
{
    nl_model model = small_model();
    model.x = {{0, 1}};
    for (const char *entry : {"putsolution", "getnumcone", "getnumintvar", "getprobtype"}) {
        SCOPED_TRACE(entry);
        const ampl_result result =
            run_ampl({.stub = nl_text(model), .script = std::string("code ZLR_") + entry + " 1 1777"});
        EXPECT_EQ(calls_of(result.run, "getcodedesc(1777, null)").size(), 1U);
        EXPECT_EQ(position_of(result.run, "optimize"), -1);
        EXPECT_FALSE(result.has_sol);
    }
    EXPECT_EQ(calls_of(run_ampl({.stub = nl_text(model), .script = "code ZLR_solutionsummary 1 1777"}).run,
                       "getcodedesc(0, null)")
                  .size(),
              1U)
        << "the summary's code is not looked at";
}
