/* ampl_keyword_test.cpp - settings by keywords, and where the output goes. */
#include "ampl_run.h"

#include "case_check.h"

#include <gtest/gtest.h>

#include <algorithm>

static ampl_result run_words(const std::string &words, const std::string &options = "", const std::string &script = "")
{
    return run_ampl({.stub = nl_text(small_model()), .script = script, .words = words, .options = options});
}

/* "Accepted: " and "Rejected: " lines, as printed. */
static std::string told(const ampl_result &result)
{
    std::string lines;
    for (const std::string &line : split(result.run.process.out, "\n"))
        if (line.rfind("Accepted: ", 0) == 0 || line.rfind("Rejected: ", 0) == 0) lines += line + "\n";
    return lines;
}

static std::string line_of(const char *verdict, const std::string &name, const std::string &value)
{
    return std::string(verdict) + ": " + name + std::string(35 - name.size(), ' ') + " = " + value + "\n";
}

/* The library's "-=" lists its keywords and ends the process, so the program's handles are left over. */
TEST(ampl_keyword, table)
{
    const temp_folder folder;
    run_request request;
    request.line = "-= -AMPL";
    request.may_keep_blocks = request.may_end_early = true;
    const recorded_run run = run_recorded(request, folder);
    std::vector<std::string> names;
    for (const std::string &line : split(run.process.out, "\n"))
        if (!line.empty()) names.push_back(line.substr(0, line.find(' ')));
    EXPECT_EQ(names.size(), 270U);
    EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
    for (const char *name : {"outlev", "sensitivity", "wantsol", "zeta_dou_0", "zeta_dou_69", "alpha_int_0",
                             "alpha_int_172", "mid_str_0", "mid_str_23"})
        EXPECT_EQ(std::count(names.begin(), names.end(), name), 1) << name;
    EXPECT_NE(run.process.out.find("outlev"), std::string::npos);
    EXPECT_NE(run.process.out.find("Controls amount of printed information\n"), std::string::npos);
    EXPECT_NE(run.process.out.find(" Whether to return sensitivity information for the objective (in" +
                                   std::string(43, ' ') + "suffixes .up"),
              std::string::npos);
}

/* Fetched class by class in the order of their numbers. */
TEST(ampl_keyword, names_come_from_the_library)
{
    const std::vector<std::string> fetched = calls_of(run_words("").run, "getparamname");
    ASSERT_EQ(fetched.size(), 267U);
    size_t at = 0;
    for (const auto &[number, size] : {std::pair<int, int>{1, 70}, {2, 173}, {3, 24}})
        for (int k = 0; k < size; ++k)
            EXPECT_EQ(fetched[at++], "getparamname(task1, " + std::to_string(number) + ", " + std::to_string(k) + ")");
    const ampl_result failed = run_words("", "", "code ZLR_getparamname 100 1444");
    EXPECT_EQ(calls_of(failed.run, "getparamname").size(), 100U) << "ends at the first failure";
    EXPECT_EQ(calls_of(failed.run, "getcodedesc(1444, null)").size(), 1U);
}

TEST(ampl_keyword, assignments)
{
    const struct {
        const char *name, *words, *options, *script, *calls;
        std::string told;
    } cases[] = {
        {"name and value in capitals", "mid_str_3=some/File.lp", "", "",
         "putparam(task1, \"MID_STR_3\", \"SOME/FILE.LP\")\n", line_of("Accepted", "mid_str_3", "SOME/FILE.LP")},
        {"of the environment first", "zeta_dou_1=2", "alpha_int_5=7 zeta_dou_1=1.5", "",
         "putparam(task1, \"ALPHA_INT_5\", \"7\")\nputparam(task1, \"ZETA_DOU_1\", \"1.5\")\nputparam(task1, \"ZETA_DOU_1\", \"2\")\n",
         line_of("Accepted", "alpha_int_5", "7") + line_of("Accepted", "zeta_dou_1", "1.5") +
             line_of("Accepted", "zeta_dou_1", "2")},
        {"blanks and line ends part them", "", "  alpha_int_5   =  7\nzeta_dou_1 1e-3", "",
         "putparam(task1, \"ALPHA_INT_5\", \"7\")\nputparam(task1, \"ZETA_DOU_1\", \"1E-3\")\n",
         line_of("Accepted", "alpha_int_5", "7") + line_of("Accepted", "zeta_dou_1", "1E-3")},
        {"rejected, and on it goes", "alpha_int_5=x alpha_int_6=1", "", "code ZLR_putparam 1 1205",
         "putparam(task1, \"ALPHA_INT_5\", \"X\") = 1205\nputparam(task1, \"ALPHA_INT_6\", \"1\")\n",
         line_of("Rejected", "alpha_int_5", "X") + line_of("Accepted", "alpha_int_6", "1")},
        {"no line for these two", "sensitivity=1 wantsol=1", "", "", "", ""},
    };
    for (const auto &item : cases) {
        SCOPED_TRACE(item.name);
        const ampl_result result = run_words(item.words, item.options, item.script);
        EXPECT_EQ(part_of(result, "putparam"), item.calls);
        EXPECT_EQ(told(result), item.told);
        EXPECT_TRUE(result.has_sol);
    }
}

/* Streams: 0 log, 1 messages, 2 errors, 3 warnings. */
TEST(ampl_keyword, output_level)
{
    const std::string linked = "linkfunctotaskstream(task1, 1, handle)\nlinkfunctotaskstream(task1, 3, handle)\n"
                               "linkfunctotaskstream(task1, 0, null)\n";
    const std::string errors = "linkfunctotaskstream(task1, 2, handle)\n";
    const std::string raised = "putintparam(task1, 34, 10)\n";
    const struct {
        const char *words;
        std::string calls, told;
    } cases[] = {
        {"", "", ""},
        {"outlev=0", errors, line_of("Accepted", "outlev", "0")},
        {"outlev=1", linked + errors, line_of("Accepted", "outlev", "1")},
        {"outlev=2", raised + linked + errors, line_of("Accepted", "outlev", "2")},
        {"outlev=17", raised + linked + errors, line_of("Accepted", "outlev", "17")},
        {"outlev=-1", linked + errors, line_of("Accepted", "outlev", "-1")},
        {"OUTLEV=1", linked + errors, line_of("Accepted", "outlev", "1")},
        {"outlev=much", errors, line_of("Accepted", "outlev", "MUCH")},
        {"alpha_int_5=7", errors, line_of("Accepted", "alpha_int_5", "7")},
    };
    for (const auto &item : cases) {
        SCOPED_TRACE(item.words);
        const ampl_result result = run_words(item.words);
        EXPECT_EQ(part_of(result, "linkfunctotaskstream putintparam"), item.calls);
        EXPECT_EQ(told(result), item.told);
    }
}

/* The level is put to 0 before anything else and back at the end; what was linked is unlinked. */
TEST(ampl_keyword, level_and_streams_at_the_end)
{
    const ampl_result result = run_words("outlev=2", "", "int 34 7");
    EXPECT_EQ(joined(calls_of(result.run, "putintparam")),
              "putintparam(task1, 34, 0)\nputintparam(task1, 34, 10)\nputintparam(task1, 34, 7)\n");
    const int unlinked = position_of(result.run, "linkfunctotaskstream(task1, 1, null)");
    EXPECT_GT(unlinked, position_of(result.run, "solstatostr"));
    for (const char *stream : {"2", "3"})
        EXPECT_GT(position_of(result.run, std::string("linkfunctotaskstream(task1, ") + stream + ", null)"), unlinked);
}

/* What goes to the message stream shows once, whether by the driver's link or by the keyword's. */
TEST(ampl_keyword, messages_show_once)
{
    const char *script = "x 0 1\nprimal 1 3";
    nl_model model = small_model();
    model.x = {{0, 1.0}};
    for (const char *words : {"", "outlev=1", "outlev=2"}) {
        SCOPED_TRACE(words);
        const ampl_result result = run_ampl({.stub = nl_text(model), .script = script, .words = words});
        const std::string &out = result.run.process.out;
        const size_t at = out.find("[ZLR_solutionsummary]\n");
        EXPECT_NE(at, std::string::npos);
        EXPECT_EQ(out.find("[ZLR_solutionsummary]\n", at + 1), std::string::npos);
    }
}

TEST(ampl_keyword, sensitivity_by_any_value)
{
    for (const char *words : {"sensitivity=1", "sensitivity=0", "SENSITIVITY=no"}) {
        SCOPED_TRACE(words);
        EXPECT_EQ(calls_of(run_words(words).run, "primalsensitivity").size(), 1U);
    }
    EXPECT_TRUE(calls_of(run_words("").run, "primalsensitivity").empty());
}

/* By itself a run that was not started by AMPL leaves no .sol file. */
TEST(ampl_keyword, wanted_solution)
{
    const struct {
        const char *line;
        bool has_sol;
    } cases[] = {
        {"s -a", false},   {"s wantsol=1 -a", true},    {"s wantsol=0 -a", false},
        {"s -AMPL", true}, {"s -AMPL wantsol=0", true},
    };
    for (const auto &item : cases) {
        SCOPED_TRACE(item.line);
        EXPECT_EQ(run_ampl({.stub = nl_text(small_model()), .line = item.line}).has_sol, item.has_sol);
    }
    EXPECT_NE(run_words("wantsol=?").run.process.out.find("wantsol=1"), std::string::npos);
}

TEST(ampl_keyword, unknown_keyword)
{
    for (const char *words : {"nosuch=1", "alpha_int_5=1 nosuch=1", "outlev=1 nosuch"}) {
        SCOPED_TRACE(words);
        const ampl_result result = run_words(words, "", "int 34 10");
        EXPECT_EQ(calls_of(result.run, "getcodedesc(3700, null)").size(), 1U);
        EXPECT_NE(result.run.process.out.find("Unknown keyword \"nosuch\"\n"), std::string::npos);
        EXPECT_FALSE(result.has_sol);
        EXPECT_TRUE(part_of(result, "getdouparam appendvars").empty());
        EXPECT_EQ(calls_of(result.run, "putintparam").back(), "putintparam(task1, 34, 10)");
    }
}

TEST(ampl_keyword, version)
{
    const ampl_result result = run_ampl({.stub = nl_text(small_model()), .line = "-v s -AMPL"});
    const std::string &out = result.run.process.out;
    EXPECT_EQ(out.rfind("ZELOR 8.1.2.3", 0), 0U) << out;
    EXPECT_NE(out.find(", ASL("), std::string::npos) << out;
    EXPECT_TRUE(result.has_sol);
}
