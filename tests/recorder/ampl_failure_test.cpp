/* ampl_failure_test.cpp - the order of a whole job, and what becomes of it when each call or allocation fails. */
#include "ampl_run.h"

#include "case_check.h"

#include <gtest/gtest.h>

#include <algorithm>

/* What a failure of a call does to the job. */
enum effect {
    NONE,    /* the call has no code, or it is looked at elsewhere */
    DROPPED, /* nothing */
    UNKNOWN, /* the same, but AMPL gets no solution */
    ENDS,    /* the transfer ends: no .sol file, and what it made is left to the task */
    KEPT     /* the job goes on to its .sol file and ends with the code */
};

struct job_call {
    const char *call; /* how the line begins */
    effect on_failure;
};

/* A job that reaches every call of the front end: rows that are quadratic, a cone, integer columns, names, a start,
 * keywords, sensitivity. The script says that it is linear and without integer columns, so that there is sensitivity. */
static ampl_request full_job()
{
    nl_model model;
    model.columns.resize(3);
    model.rows = {{.upper = 1.0, .linear = {{0, 1.0}}, .nonlinear = nl_square(0)},
                  {.lower = 1.0, .nonlinear = nl_square(0)},
                  {.upper = 4.0, .linear = {{1, 1.0}, {2, 1.0}}}};
    model.objectives = {{.linear = {{2, 1.0}}, .nonlinear = nl_square(0), .maximise = true}};
    model.nlvc = model.nlvo = model.nlvb = 1;
    model.nbv = 1;
    model.suffixes = {{0, "cone", {{1, -1}, {2, 1}}}};
    model.x = {{0, 1.0}};
    model.max_row_name = model.max_column_name = 2;
    ampl_request request;
    request.stub = nl_text(model);
    request.row_names = "r0\nr1\nr2\nf\n";
    request.column_names = "c0\nc1\nc2\n";
    request.script = "int 34 7\nintegers 0\ntype 0\ndefined 1\nstatus 1 1\nx 0 1";
    request.line = "s -AMPL outlev=2 alpha_int_1=3 sensitivity=1 -a";
    return request;
}

// clang-format off
static const job_call job[] = {
    {"getintparam(task1, 34)", DROPPED}, {"putintparam(task1, 34, 0)", DROPPED}, {"getstrparamal(task1, 1, 1024)", ENDS},
    {"getversion()", DROPPED}, {"getparamname(task1, 1, 0)", ENDS}, {"getparamname(task1, 3, 23)", ENDS},
    {"putintparam(task1, 34, 10)", DROPPED}, {"linkfunctotaskstream(task1, 1, handle)", DROPPED},
    {"linkfunctotaskstream(task1, 3, handle)", DROPPED}, {"linkfunctotaskstream(task1, 0, null)", DROPPED},
    {"linkfunctotaskstream(task1, 2, handle)", DROPPED}, {"putparam(task1, \"ALPHA_INT_1\", \"3\")", DROPPED},
    {"linkfunctotaskstream(task1, 2, handle)", DROPPED}, {"getintparam(task1, 172)", DROPPED},
    {"getdouparam(task1, 11)", ENDS}, {"getdouparam(task1, 8)", ENDS},
    {"putobjname(task1, \"f\")", ENDS}, {"getnumcon(task1)", ENDS}, {"getnumvar(task1)", ENDS},
    {"putobjsense(task1, 1)", ENDS}, {"putmaxnumcon(task1, 3)", ENDS}, {"putmaxnumvar(task1, 3)", ENDS},
    {"putmaxnumanz(task1, 3)", ENDS}, {"appendcons(task1, 3)", ENDS}, {"appendvars(task1, 3)", ENDS},
    {"putobjname(task1, \"f\")", ENDS}, {"getnumcon(task1)", ENDS}, {"getnumvar(task1)", ENDS},
    {"putconname(task1, 0, \"r0\")", ENDS}, {"putconname(task1, 1, \"r1\")", ENDS}, {"putconname(task1, 2, \"r2\")", ENDS},
    {"putvarname(task1, 0, \"c0\")", ENDS}, {"putvarname(task1, 1, \"c1\")", ENDS}, {"putvarname(task1, 2, \"c2\")", ENDS},
    {"putcfix(task1, 0)", ENDS}, {"putclist(task1, 1, {0}, {0})", ENDS}, {"putclist(task1, 1, {1}, {0})", ENDS},
    {"putclist(task1, 1, {2}, {1})", ENDS},
    {"putconbound(task1, 0, 1, -inf, 1)", ENDS}, {"putconbound(task1, 1, 0, 1, inf)", ENDS},
    {"putconbound(task1, 2, 1, -inf, 4)", ENDS}, {"putvarbound(task1, 0, 0, 0, inf)", ENDS},
    {"putvarbound(task1, 1, 0, 0, inf)", ENDS}, {"putvarbound(task1, 2, 0, 0, inf)", ENDS},
    {"putacol(task1, 0, 1, {0}, {1})", ENDS}, {"putacol(task1, 1, 1, {2}, {1})", ENDS},
    {"putacol(task1, 2, 1, {2}, {1})", ENDS},
    {"getvarname(task1, 0, 1024)", DROPPED}, {"getvarname(task1, 1, 1024)", DROPPED}, {"getvarname(task1, 2, 1024)", DROPPED},
    {"putmaxnumcone(task1, 1)", ENDS}, {"appendcone(task1, 0, 0, 2, {1 2})", ENDS}, {"putvartype(task1, 2, 1)", ENDS},
    {"putmaxnumqnz(task1, 3)", DROPPED}, {"putqobj(task1, 1, {0}, {0}, {2})", ENDS},
    {"putqconk(task1, 0, 1, {0}, {0}, {2})", DROPPED}, {"putqconk(task1, 1, 1, {0}, {0}, {2})", ENDS},
    {"getnumcon(task1)", ENDS}, {"getnumvar(task1)", ENDS}, {"getnumcone(task1)", ENDS}, {"getnumintvar(task1)", ENDS},
    {"getprobtype(task1)", ENDS},
    {"putsolution(task1, 1, {0 0 0}, {0 0 0}, null, null, {1 0 0}, null, null, null, null, null, null)", ENDS},
    {"solutionsummary(task1, 1)", DROPPED}, {"echotask(task1, 1, \"\\n\")", DROPPED},
    {"optimize(task1)", KEPT}, {"getprobtype(task1)", KEPT}, {"getnumintvar(task1)", KEPT},
    {"getnumcon(task1)", KEPT}, {"getnumvar(task1)", KEPT}, {"getbound(task1, 1, 0)", KEPT}, {"getbound(task1, 1, 1)", KEPT},
    {"getbound(task1, 1, 2)", KEPT}, {"primalsensitivity(task1, 3, {0 1 2}, {1 0 1}, 0, {}, {})", KEPT},
    {"dualsensitivity(task1, 3, {0 1 2})", KEPT}, {"solutiondef(task1, 1)", UNKNOWN},
    {"getintinf(task1, 16)", DROPPED}, {"getintinf(task1, 70)", DROPPED}, {"getintinf(task1, 63)", DROPPED},
    {"getnumcon(task1)", DROPPED}, {"getnumvar(task1)", DROPPED}, {"getsolution(task1, 1)", UNKNOWN},
    {"getprimalobj(task1, 1)", DROPPED}, {"getdualobj(task1, 1)", DROPPED}, {"prostatostr(task1, 0)", DROPPED},
    {"solstatostr(task1, 1)", DROPPED}, {"getbound(task1, 1, 0)", DROPPED}, {"getbound(task1, 1, 1)", DROPPED},
    {"getbound(task1, 1, 2)", DROPPED}, {"getc(task1)", DROPPED}, {"linkfunctotaskstream(task1, 1, null)", DROPPED},
    {"linkfunctotaskstream(task1, 2, null)", DROPPED}, {"linkfunctotaskstream(task1, 3, null)", DROPPED},
    {"putintparam(task1, 34, 7)", DROPPED},
};
// clang-format on

static bool begins_with(const std::string &text, const std::string &begin) { return text.rfind(begin, 0) == 0; }

static bool is_memory(const std::string &call)
{
    for (const char *name :
         {"calloctask(", "freetask(", "strduptask(", "callocdbgtask(", "freedbgtask(", "!!", "no memory"})
        if (begins_with(call, name)) return true;
    return false;
}

/* Calls with a code, of the whole run, with the numbers by which the script makes them fail. Of the many names of
 * parameters the first and the last are taken. */
static std::vector<std::pair<std::string, int>> calls_with_code(const recorded_run &run)
{
    std::vector<std::pair<std::string, int>> calls;
    int number = 0;
    for (const std::string &call : run.calls) {
        if (is_memory(call)) continue;
        ++number;
        const bool is_name = begins_with(call, "getparamname(");
        if (!is_name || call == "getparamname(task1, 1, 0)" || call == "getparamname(task1, 3, 23)")
            calls.emplace_back(call, number);
    }
    return calls;
}

/* The job's part of those calls. */
static std::vector<std::pair<std::string, int>> job_calls(const recorded_run &run)
{
    std::vector<std::pair<std::string, int>> calls = calls_with_code(run);
    const auto begin = std::find_if(calls.begin(), calls.end(),
                                    [](const auto &call) { return call.first == "getintparam(task1, 34)"; });
    const auto end =
        std::find_if(begin, calls.end(), [](const auto &call) { return begins_with(call.first, "deletetask("); });
    return {begin, end};
}

static int final_code(const recorded_run &run)
{
    int code = -1;
    for (const std::string &call : calls_of(run, "getcodedesc("))
        if (call.find(", null)") != std::string::npos) code = std::stoi(call.substr(12));
    return code;
}

TEST(ampl_failure, calls_of_a_whole_job)
{
    ampl_request request = full_job();
    request.may_fail = false;
    const ampl_result result = run_ampl(request);
    std::string expected, found;
    for (const job_call &row : job) expected += std::string(row.call) + "\n";
    for (const auto &[call, number] : job_calls(result.run)) found += call + "\n";
    EXPECT_EQ(found, expected);
    EXPECT_EQ(final_code(result.run), 0);
    EXPECT_EQ(code_of(result.sol), 0);
    EXPECT_EQ(result.run.process.status, 0);
}

/* The first failure is kept, the log level comes back, and what was made is released, but for a transfer that failed. */
static void check_failed_call(const job_call &row, int number)
{
    SCOPED_TRACE(std::string("fails: ") + row.call);
    ampl_request request = full_job();
    request.script += "\nfail " + std::to_string(number) + " 1500";
    request.may_fail = row.on_failure == ENDS;
    const ampl_result result = run_ampl(request);
    const recorded_run &run = result.run;
    EXPECT_FALSE(calls_of(run, std::string(row.call) + " = 1500").empty());
    EXPECT_EQ(final_code(run), row.on_failure == DROPPED || row.on_failure == UNKNOWN ? 0 : 1500);
    EXPECT_EQ(result.has_sol, row.on_failure != ENDS);
    const std::string level = calls_of(run, "putintparam(task1, 34, ").back();
    const bool is_known = !begins_with(row.call, "getintparam(task1, 34)"); /* otherwise it cannot come back */
    EXPECT_TRUE(begins_with(level, is_known ? "putintparam(task1, 34, 7)" : "putintparam(task1, 34, 0)")) << level;
    if (row.on_failure == ENDS) {
        EXPECT_EQ(position_of(run, "optimize("), -1);
        EXPECT_EQ(run.process.status, 0) << "the place of the solve code is left alone";
        /* Nothing of the transfer comes behind the failing call but releases. */
        bool behind = false;
        for (const std::string &call : run.calls) {
            if (behind && !is_memory(call) && !begins_with(call, "solutionsummary(")) {
                EXPECT_EQ(call, "putintparam(task1, 34, 7)");
                break;
            }
            behind |= call == std::string(row.call) + " = 1500";
        }
    } else {
        const int solve_code = row.on_failure == KEPT ? 1500 + 501 : row.on_failure == UNKNOWN ? 500 : 0;
        EXPECT_EQ(run.process.status, solve_code & 255);
    }
}

TEST(ampl_failure, each_call_in_turn)
{
    const std::vector<std::pair<std::string, int>> calls = job_calls(run_ampl(full_job()).run);
    ASSERT_EQ(calls.size(), sizeof job / sizeof job[0]);
    for (size_t k = 0; k < calls.size(); ++k) check_failed_call(job[k], calls[k].second);
}

/* How many blocks a failed transfer leaves, which come and go with the task: the option record, the keyword table with its
 * names and descriptions, the job's own record; of the model's arrays none. */
TEST(ampl_failure, blocks_of_a_failed_transfer)
{
    const struct {
        const char *failing;
        int num_kept;
    } cases[] = {
        {"code ZLR_getstrparamal 2 1500", 0},
        {"code ZLR_getdouparam 1 1500", 2 + 4 + 1 + 270 + 3},
        {"code ZLR_putacol 2 1500", 2 + 4 + 1 + 270 + 3},
        {"code ZLR_appendcone 1 1500", 2 + 4 + 1 + 270 + 3},
        {"code ZLR_putsolution 1 1500", 2 + 4 + 1 + 270 + 3},
    };
    for (const auto &item : cases) {
        SCOPED_TRACE(item.failing);
        ampl_request request = full_job();
        request.script += std::string("\n") + item.failing;
        EXPECT_EQ(run_ampl(request).num_kept, item.num_kept);
    }
}

/* Every allocation in turn: code 1051 or no effect, never a crash, and the log level back where it was. */
TEST(ampl_failure, each_allocation_in_turn)
{
    const ampl_result whole = run_ampl(full_job());
    std::vector<std::string> blocks;
    for (const std::string &call : whole.run.calls)
        if (begins_with(call, "calloctask(") || begins_with(call, "strduptask(") || begins_with(call, "callocdbgtask("))
            blocks.push_back(call);
    size_t num_tried = 0;
    bool is_optimized = false;
    for (size_t k = 0; k < blocks.size(); ++k) {
        if (begins_with(blocks[k], "strduptask(") && k > 20 && k + 20 < 290 && k % 60 != 0)
            continue; /* parameter names */
        SCOPED_TRACE(std::to_string(k) + " " + blocks[k]);
        ampl_request request = full_job();
        request.script += "\nnomem " + std::to_string(k + 1);
        const ampl_result result = run_ampl(request);
        ++num_tried;
        const bool was_optimized = position_of(result.run, "optimize(") >= 0;
        if (begins_with(blocks[k], "calloctask(task1, 0, ")) { /* of no length: no block is as good */
            EXPECT_TRUE(was_optimized);
            EXPECT_EQ(final_code(result.run), 0);
            continue;
        }
        EXPECT_GE(was_optimized, is_optimized) << "later allocations fail later";
        is_optimized |= was_optimized;
        EXPECT_EQ(result.has_sol, was_optimized);
        if (was_optimized) {
            EXPECT_EQ(result.num_kept, 0);
        } else if (k > 0) { /* without a list of arguments nothing is done */
            EXPECT_EQ(final_code(result.run), 1051);
        }
        const std::vector<std::string> level = calls_of(result.run, "putintparam(task1, 34, ");
        if (!level.empty()) {
            EXPECT_EQ(level.back(), "putintparam(task1, 34, 7)");
        }
    }
    EXPECT_TRUE(is_optimized);
    EXPECT_GT(num_tried, 60U);
}

/* Without memory for the answer AMPL is told the code; in the sensitivity suffixes they alone are missing. */
TEST(ampl_failure, no_memory_behind_the_optimiser)
{
    ampl_request request = full_job();
    request.line = "s -AMPL -a"; /* no sensitivity: the answer's arrays are the last two blocks */
    request.may_fail = false;
    const ampl_result whole = run_ampl(request);
    int num = 0;
    for (const std::string &call : whole.run.calls)
        num +=
            begins_with(call, "calloctask(") || begins_with(call, "strduptask(") || begins_with(call, "callocdbgtask(");
    for (const int n : {num - 1, num}) {
        SCOPED_TRACE(n);
        ampl_request without = request;
        without.script += "\nnomem " + std::to_string(n);
        const ampl_result result = run_ampl(without);
        EXPECT_EQ(report_of(result.sol), "ZELOR finished.\nZELOR return code - 1051 (text of 1051)\n");
        EXPECT_EQ(code_of(result.sol), 1051 + 501);
        EXPECT_EQ(result.run.process.status, (1051 + 501) & 255);
        EXPECT_EQ(final_code(result.run), 0) << "the job's code is the optimiser's";
    }
}

/* Stubs that are not there or are none. */
TEST(ampl_failure, stubs)
{
    const struct {
        const char *name;
        std::string stub;
        int code;
        std::string out;
    } cases[] = {
        {"missing", "", 1053, "** Fatal error: Could not read AMPL stub: s\n"},
        {"of another kind", "hello\n", 3700,
         "** Fatal error: s.nl, line 1: expected an AMPL stub, which begins with 'g' or 'b', found 'hello'\n"},
        {"cut", nl_without_line(nl_text(small_model()), nl_count_lines(nl_text(small_model()))), 3700,
         "** Fatal error: s.nl, line 33: expected a column, found the end of the file\n"},
    };
    for (const auto &item : cases) {
        SCOPED_TRACE(item.name);
        const ampl_result result = run_ampl({.stub = item.stub, .script = "int 34 7"});
        EXPECT_EQ(final_code(result.run), item.code);
        EXPECT_EQ(result.run.process.out, item.out);
        EXPECT_FALSE(result.has_sol);
        EXPECT_EQ(calls_of(result.run, "putintparam").back(), "putintparam(task1, 34, 7)");
    }
}
