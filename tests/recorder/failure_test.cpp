/* failure_test.cpp - one run that reaches nearly every call: the calls in their order, and what becomes of the run when
 * each of them fails. */
#include "recorded_run.h"

#include <gtest/gtest.h>

#include <algorithm>

/* What a failure of a call does. */
enum effect {
    NONE,      /* the call has no code */
    DROPPED,   /* nothing */
    LOST,      /* no code, but calls that live on its result are missing */
    KEPT,      /* the run goes on for a while and ends with the code */
    ENDS_ENV,  /* clean-up at once, from the environment on */
    ENDS_LATE, /* from the files on, before anything was read */
    ENDS_READ, /* all of it, nothing read */
    ENDS       /* all of it, "-out" included */
};

static const char *const full_line =
    "-q log -l lic -w -f -p par.in -d A 1 -stat start -stat stop -stat append -paro par.out -max -itri i.sol -basi b.bas "
    "-inti n.int -anapro -primalrepair -toconic -removeitg -anasolo bas model.mps -sen s.in -info sub.lp -infrepo rep.lp "
    "-out out.lp -= -+ -d B 2";
static const char *const full_script = "defined 0\ndefined 1\ndefined 2\nstatus 0 5\nstatus 1 1\nstatus 2 6\nrows 1\n"
                                       "columns 1\nstr 3 own.int\n";

// clang-format off
static const struct { const char *call; effect on_failure; } full_run[] = {
    {"makeenv(null)", ENDS_ENV},
    {"linkfunctoenvstream(env1, 1, null)", ENDS_ENV},
    {"putlicensepath(env1, \"lic\")", ENDS_ENV},
    {"putlicensewait(env1, 1)", ENDS_ENV},
    {"putlicensedebug(env1, 1)", ENDS_ENV},
    {"makeemptytask(env1)", ENDS_LATE},
    {"putcallbackfunc(task1, null)", DROPPED},
    {"linkfunctotaskstream(task1, 0, handle)", DROPPED},
    {"linkfiletotaskstream(task1, 0, \"log\", 0)", DROPPED},
    {"echointro(env1, 1)", DROPPED},
    {"readparamfile(task1, \"par.in\")", ENDS_LATE},
    {"putparam(task1, \"A\", \"1\")", ENDS_LATE},
    {"putstrparam(task1, 8, \"par.out\")", ENDS_LATE},
    {"putstrparam(task1, 1, \"model.mps\")", LOST},
    {"putparam(task1, \"B\", \"2\")", ENDS_LATE},
    {"startstat(task1)", ENDS_READ},
    {"writeparamfile(task1, null)", ENDS_READ},
    {"getstrparamal(task1, 1, 128)", ENDS_READ},
    {"readdata(task1, null)", ENDS_READ},
    {"putobjsense(task1, 1)", LOST},
    {"readsummary(task1, 1)", DROPPED},
    {"putparam(task1, \"B\", \"2\")", ENDS},
    {"getnumvar(task1)", LOST},
    {"putvartype(task1, 0, 0)", DROPPED},
    {"toconic(task1)", KEPT},
    {"startstat(task1)", DROPPED},
    {"readsolution(task1, 0, \"i.sol\")", ENDS},
    {"readsolution(task1, 1, \"b.bas\")", ENDS},
    {"readsolution(task1, 2, \"n.int\")", ENDS},
    {"analyzeproblem(task1, 1)", ENDS},
    {"primalrepair(task1, null, null, null, null)", ENDS},
    {"optimize(task1)", KEPT},
    {"solutionsummary(task1, 1)", DROPPED},
    {"echotask(task1, 1, \"\\n\")", DROPPED},
    {"optimizersummary(task1, 1)", DROPPED},
    {"analyzesolution(task1, 1, 1)", DROPPED},
    {"getstrparamal(task1, 4, 0)", KEPT},
    {"putstrparam(task1, 4, \"model.sol\")", KEPT},
    {"freedbgtask(task1, mem2)", NONE},
    {"getstrparamal(task1, 0, 0)", KEPT},
    {"putstrparam(task1, 0, \"model.bas\")", KEPT},
    {"freedbgtask(task1, mem3)", NONE},
    {"getstrparamal(task1, 3, 0)", KEPT},
    {"freedbgtask(task1, mem4)", NONE},
    {"solutiondef(task1, 0)", LOST},
    {"writesolution(task1, 0, null)", KEPT},
    {"solutiondef(task1, 1)", LOST},
    {"writesolution(task1, 1, null)", KEPT},
    {"solutiondef(task1, 2)", LOST},
    {"writesolution(task1, 2, null)", KEPT},
    {"getresponseclass(0)", DROPPED},
    {"getintparam(task1, 112)", DROPPED},
    {"getstrparamal(task1, 15, 0)", DROPPED},
    {"getstrparamal(task1, 1, 6)", LOST},
    {"putstrparam(task1, 15, \"model.sen\")", DROPPED},
    {"putstrparam(task1, 14, \"s.in\")", DROPPED},
    {"sensitivityreport(task1, 0)", KEPT},
    {"freedbgtask(task1, mem5)", NONE},
    {"freedbgtask(task1, mem6)", NONE},
    {"appendstat(task1)", DROPPED},
    {"solutiondef(task1, 0)", ENDS},
    {"getsolsta(task1, 0)", ENDS},
    {"getinfeasiblesubproblem(task1, 0)", KEPT},
    {"echotask(task1, 1, \"\\nWriting infeasible subproblem to file 'sub.itr.inf.lp'.\\n\")", DROPPED},
    {"writedata(task2, \"sub.itr.inf.lp\")", KEPT},
    {"deletetask(task2)", DROPPED},
    {"solutiondef(task1, 1)", ENDS},
    {"getsolsta(task1, 1)", ENDS},
    {"deletetask(null)", DROPPED},
    {"solutiondef(task1, 2)", ENDS},
    {"getsolsta(task1, 2)", ENDS},
    {"getinfeasiblesubproblem(task1, 2)", KEPT},
    {"echotask(task1, 1, \"\\nWriting infeasible subproblem to file 'sub.int.inf.lp'.\\n\")", DROPPED},
    {"writedata(task3, \"sub.int.inf.lp\")", KEPT},
    {"deletetask(task3)", DROPPED},
    {"getenv(task1)", DROPPED},
    {"getnumvar(task1)", KEPT},
    {"getnumcon(task1)", KEPT},
    {"callocdbgenv(env1, 1, 8)", NONE},
    {"callocdbgenv(env1, 1, 8)", NONE},
    {"callocdbgenv(env1, 1, 8)", NONE},
    {"callocdbgenv(env1, 1, 8)", NONE},
    {"callocdbgenv(env1, 30, 1)", NONE},
    {"echotask(task1, 1, \"Writing feasibility analysis problem to file - rep.lp\\n\")", DROPPED},
    {"writedata(null, \"rep.lp\")", DROPPED},
    {"freedbgenv(env1, mem11)", NONE},
    {"freedbgenv(env1, mem7)", NONE},
    {"freedbgenv(env1, mem8)", NONE},
    {"freedbgenv(env1, mem9)", NONE},
    {"freedbgenv(env1, mem10)", NONE},
    {"freedbgtask(task1, mem1)", NONE},
    {"stopstat(task1)", DROPPED},
    {"writedata(task1, \"out.lp\")", KEPT},
    {"printparam(task1)", DROPPED},
    {"deletetask(task1)", KEPT},
    {"deleteenv(env1)", KEPT},
    {"getcodedesc(0, null)", DROPPED},
};
// clang-format on

static const char *tail_of(effect on_failure)
{
    switch (on_failure) {
    case ENDS_ENV: return "deleteenv getcodedesc";
    case ENDS_LATE: return "printparam deletetask deleteenv getcodedesc";
    case ENDS_READ: return "freedbgtask stopstat printparam deletetask deleteenv getcodedesc";
    default: return "freedbgtask stopstat writedata printparam deletetask deleteenv getcodedesc";
    }
}

static bool ends_at_once(effect on_failure) { return on_failure >= ENDS_ENV; }

static bool ends_with(const std::string &text, const std::string &end)
{
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

TEST(failure, calls_of_the_full_run)
{
    const recorded_run run = run_recorded(full_line, full_script);
    std::string expected;
    for (const auto &row : full_run) expected += std::string(row.call) + "\n";
    EXPECT_EQ(joined(run.calls), expected);
    EXPECT_EQ(run.process.status, 0);
}

static void check_verdict(const recorded_run &run, int code)
{
    const std::string number = std::to_string(code);
    EXPECT_EQ(run.process.status, code & 0xFF);
    EXPECT_NE(run.process.out.find("Return code - " + number + "  [NAME_" + number + "]\n"), std::string::npos)
        << run.process.out;
}

/* Every call in turn fails with an error of the library. Nothing leaks in any of these runs: the recorder tells. */
TEST(failure, each_call_in_turn)
{
    const int code = 1500;
    std::vector<std::string> all;
    for (const auto &row : full_run) all.push_back(row.call);

    const size_t before_optimize =
        static_cast<size_t>(std::find(all.begin(), all.end(), "optimize(task1)") - all.begin());
    int failing = 0;
    for (size_t i = 0; i < all.size(); ++i) {
        const effect on_failure = full_run[i].on_failure;
        if (on_failure == NONE) continue;
        SCOPED_TRACE("fails: " + all[i]);
        ++failing;
        const recorded_run run =
            run_recorded(full_line, full_script + ("fail " + std::to_string(failing) + " " + std::to_string(code)));
        ASSERT_LT(i, run.calls.size());
        ASSERT_EQ(run.calls[i], all[i] + " = " + std::to_string(code));
        check_verdict(run, on_failure == DROPPED || on_failure == LOST ? 0 : code);

        if (on_failure == DROPPED) {
            EXPECT_EQ(names_of(run.calls), names_of(all));
        }
        if (ends_at_once(on_failure)) {
            const std::vector<std::string> rest(run.calls.begin() + static_cast<long>(i) + 1, run.calls.end());
            EXPECT_EQ(names_of(rest), tail_of(on_failure));
        } else {
            EXPECT_TRUE(ends_with(names_of(run.calls), tail_of(on_failure))) << joined(run.calls);
        }
        if (on_failure == KEPT && i < before_optimize) {
            EXPECT_EQ(position_of(run, "optimize"), -1);
        }
    }
    check_verdict(run_recorded(full_line, full_script + ("fail " + std::to_string(failing + 1) + " 1500")), 0);
}

/* What is still done behind a failed optimisation: all of it but sensitivity (for an error) and the repair stage. */
TEST(failure, failed_optimisation_is_reported)
{
    for (const int code : {1500, 10000, 7}) {
        SCOPED_TRACE(code);
        const recorded_run run = run_recorded(full_line, full_script + ("code ZLR_optimize 1 " + std::to_string(code)));
        check_verdict(run, code);
        const std::string names = names_of(run.calls);
        EXPECT_NE(names.find("optimize solutionsummary echotask optimizersummary analyzesolution"), std::string::npos);
        EXPECT_EQ(calls_of(run, "writesolution").size(), 3U);
        EXPECT_EQ(calls_of(run, "sensitivityreport").size(), code == 1500 ? 0U : 1U);
        EXPECT_EQ(calls_of(run, "appendstat").size(), 1U);
        EXPECT_EQ(calls_of(run, "getinfeasiblesubproblem").size(), 2U);
        EXPECT_EQ(run.process.out.find("feasibility analysis"), std::string::npos);
        EXPECT_TRUE(ends_with(names, tail_of(ENDS)));
    }
}

TEST(failure, first_code_is_kept_but_for_the_environment)
{
    const std::string three = "code ZLR_optimize 1 10000\ncode ZLR_writedata 0 1054\ncode ZLR_deletetask 0 1501\n";
    check_verdict(run_recorded("m.mps -out o.lp", three), 10000);
    check_verdict(run_recorded("m.mps -out o.lp", "code ZLR_writedata 1 1054\ncode ZLR_deletetask 1 1501"), 1054);
    check_verdict(run_recorded("m.mps -out o.lp", three + "code ZLR_deleteenv 1 1502"), 1502);
    /* The report's code is lost behind that of the optimiser. */
    check_verdict(run_recorded("m.mps -info s", "code ZLR_optimize 1 10001\ndefined 1\ncode ZLR_getsolsta 1 1503"),
                  10001);
    /* Derived names fail: the solutions that exist are written all the same, and sensitivity is decided by the code. */
    const recorded_run run = run_recorded("m.mps -sen s", "defined 0\ndefined 1\ncode ZLR_putstrparam 2 1200");
    check_verdict(run, 1200);
    EXPECT_EQ(calls_of(run, "getstrparamal").size(), 2U);
    EXPECT_EQ(calls_of(run, "writesolution").size(), 2U);
    EXPECT_TRUE(calls_of(run, "sensitivityreport").empty());
    /* A failed solution file ends their loop. */
    EXPECT_EQ(
        calls_of(run_recorded("m.mps", "defined 0\ndefined 1\ncode ZLR_writesolution 1 1054"), "writesolution").size(),
        1U);
}

TEST(failure, no_memory_from_the_library)
{
    for (int n = 1; n <= 5; ++n) { /* the arrays and the name of the repair stage */
        SCOPED_TRACE(n);
        const recorded_run run = run_recorded(full_line, full_script + ("nomem " + std::to_string(n)));
        check_verdict(run, 1051);
        EXPECT_EQ(calls_of(run, "callocdbgenv").size(), static_cast<size_t>(n));
        EXPECT_EQ(calls_of(run, "freedbgenv").size(), 5U);
        EXPECT_TRUE(calls_of(run, "writedata(null").empty());
        EXPECT_TRUE(ends_with(names_of(run.calls), tail_of(ENDS)));
    }
    check_verdict(run_recorded(full_line, full_script + std::string("nomem 6")), 0);
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define SKIP_UNDER_SANITIZER() GTEST_SKIP() << "the sanitizer's own memory entries win"
#else
#define SKIP_UNDER_SANITIZER() (void)0
#endif

TEST(failure, no_memory_for_the_program)
{
    SKIP_UNDER_SANITIZER();
    const struct {
        const char *line, *script;
        int code;
        const char *absent;
    } cases[] = {
        {"m.mps -itri a", "nocopy 1", 1051, "readdata"},
        {"m.mps -basi a", "nocopy 1", 1051, "readdata"},
        {"m.mps -inti a", "nocopy 1", 1051, "readdata"},
        {"m.mps -info a", "nocopy 1", 1051, "readdata"},
        {"m.mps -infrepo a", "nocopy 1", 1051, "readdata"},
        {"m.mps -sen a", "nocopy 1", 1051, "readdata"},
        {"m.mps -out a", "nocopy 1", 0, "writedata"},
        {"m.mps -q a", "nocopy 1", 0, "nothing"},
        {"m.mps -rout a", "nocopy 1", 0, "nothing"},
        {"m.mps -dbgmem a", "nocopy 1", 0, "makeenv(\"a\")"},
        {"m.mps -lb 1 2", "nocalloc 1", 0, "putlicensecode"},
        {"m.mps -info a", "nocalloc 1\ndefined 1\nstatus 1 5", 1051, "writedata"},
    };
    for (const auto &item : cases) {
        SCOPED_TRACE(item.line);
        const recorded_run run = run_recorded(item.line, item.script);
        check_verdict(run, item.code);
        EXPECT_TRUE(calls_of(run, item.absent).empty()) << joined(run.calls);
    }
    for (int n = 1; n <= 16; ++n) {
        SCOPED_TRACE(n);
        const recorded_run run = run_recorded(full_line, full_script + ("nocopy " + std::to_string(n)));
        check_verdict(run, calls_of(run, "readdata").empty() ? 1051 : 0);
        EXPECT_TRUE(ends_with(names_of(run.calls), tail_of(ENDS_LATE))) << joined(run.calls);
    }
}
