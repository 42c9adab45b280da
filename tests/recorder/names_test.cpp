/* names_test.cpp - names of the files that a run leaves, and when sensitivity is asked for. */
#include "case_check.h"

#include <gtest/gtest.h>

static std::string put_name(const recorded_run &run, int parameter)
{
    const std::vector<std::string> calls = calls_of(run, "putstrparam(task1, " + std::to_string(parameter) + ", ");
    return calls.empty() ? "" : split(calls.back(), "\"").at(1);
}

TEST(names, derived_from_the_data_file)
{
    const struct {
        const char *data, *base, *sensitivity;
    } cases[] = {
        {"model", "model", "model.sen"},
        {"model.", "model", "model.sen"},
        {"model.mps", "model", "model.sen"},
        {"model.mps.gz", "model", "model.mps.sen"},
        {"model.gz", "model", "model.sen"},
        {"model.GZ", "model", "model.sen"},
        {"model.gz.mps", "model.gz", "model.gz.sen"},
        {"a.b.c", "a.b", "a.b.sen"},
        {".gz", "", ".sen"},
        {".hidden", "", ".sen"},
        {"run.old\\model", "run.old\\model", "run.old\\model.sen"},
        {"run.old\\model.lp.gz", "run.old\\model", "run.old\\model.lp.sen"},
        {"run.old/model", "run.old/model", "run.old/model.sen"},
        {"./model", "./model", "./model.sen"},
        {"../x/model", "../x/model", "../x/model.sen"},
        {"run.d/model.mps", "run.d/model", "run.d/model.sen"},
        {"dir/", "dir/", "dir/.sen"},
    };
    for (const auto &item : cases) {
        SCOPED_TRACE(item.data);
        const recorded_run run = run_recorded(std::string(item.data) + " -sen", "defined 0\ndefined 2");
        EXPECT_EQ(put_name(run, 4), std::string(item.base) + ".sol");
        EXPECT_EQ(put_name(run, 0), std::string(item.base) + ".bas");
        EXPECT_EQ(put_name(run, 3), std::string(item.base) + ".int");
        EXPECT_EQ(put_name(run, 15), item.sensitivity);
        EXPECT_EQ(put_name(run, 1), item.data);
        EXPECT_EQ(names_of(calls_of(run, "writesolution")), "writesolution writesolution");
    }
}

TEST(names, infeasible_subproblem)
{
    const struct {
        const char *base, *expected;
    } cases[] = {
        {"sub", "sub.bas.inf"},
        {"sub.", "sub.bas.inf"},
        {"sub.lp", "sub.bas.inf.lp"},
        {"sub.mps.gz", "sub.bas.inf.mps.gz"},
        {"dir.x\\sub.lp", "dir.x\\sub.bas.inf.lp"},
        {"dir.x/sub.lp", "dir.x/sub.bas.inf.lp"},
        {"./sub", "./sub.bas.inf"},
        {"../a.b/sub.mps.gz", "../a.b/sub.bas.inf.mps.gz"},
        {".lp", ".bas.inf.lp"},
        {"sub..lp", "sub.bas.inf..lp"},
    };
    for (const auto &item : cases) {
        SCOPED_TRACE(item.base);
        const recorded_run run = run_recorded(std::string("m -info ") + item.base, "defined 1\nstatus 1 5");
        const std::string call = std::string("writedata(task2, \"") + item.expected + "\")";
        EXPECT_EQ(calls_of(run, "writedata"), std::vector<std::string>{call});
        EXPECT_NE(
            run.process.out.find(std::string("\nWriting infeasible subproblem to file '") + item.expected + "'.\n"),
            std::string::npos);
    }
}

// clang-format off
static const run_case infeasibility_cases[] = {
    {"no solution", "m -info s", nullptr, 0, "solutiondef(task1, 0); solutiondef(task1, 1); solutiondef(task1, 2)", "getsolsta; deletetask(null)", nullptr},
    {"solved", "m -info s", "defined 0\nstatus 0 1", 0, "getsolsta(task1, 0); deletetask(null)", "getinfeasible; echotask(task1, 1, \"\\nW", nullptr},
    {"all other statuses", "m -info s", "defined 0\ndefined 1\ndefined 2\nstatus 0 4\nstatus 1 7\nstatus 2 15", 0, nullptr, "getinfeasible", nullptr},
    {"dual certificate of an integer solution", "m -info s", "defined 2\nstatus 2 6", 0, "writedata(task2, \"s.int.inf\"); deletetask(task2)", nullptr, nullptr},
    {"empty name", "-info  m", "defined 0\nstatus 0 5", 0, "optimize(task1)", "getsolsta", nullptr},
    {"after a failed optimisation", "m -info s -infrepo r", "defined 0\nstatus 0 5\ncode ZLR_optimize 1 10001", 10001 & 255, "writedata(task2, \"s.itr.inf\"); deletetask(task2)", "getenv; getnumcon", nullptr},
    {"not with -x", "m -x -info s -infrepo r -sen f -anasolo bas m -primalrepair -out o", "defined 0\nstatus 0 5", 0, "primalrepair(task1, null, null, null, null); writedata(task1, \"o\")", "optimize; solutiondef; getenv; getresponseclass; analyzesolution", nullptr},
    {"repair of an empty task", "m -infrepo r.lp", nullptr, 0, "getenv(task1); getnumvar(task1); getnumcon(task1); callocdbgenv(env1, 28, 1); writedata(null, \"r.lp\"); freedbgenv(env1, null); freedbgenv(env1, null); freedbgenv(env1, null); freedbgenv(env1, null)", "callocdbgenv(env1, 0", "Writing feasibility analysis problem to file - r.lp\nReturn"},
    {"failed repair file is not told", "m -infrepo r.lp", "code ZLR_writedata 1 1054", 0, "writedata(null, \"r.lp\") = 1054", nullptr, "Return code - 0 "},
    {"repair ahead of the optimiser", "m -primalrepair", "code ZLR_primalrepair 1 1900", 1900 & 255, "primalrepair(task1, null, null, null, null) = 1900", "optimize", nullptr},

    {"sensitivity not asked for", "m", nullptr, 0, "getresponseclass(0); getintparam(task1, 112)", "getstrparamal(task1, 15; sensitivityreport", nullptr},
    {"sensitivity with a file", "m -sen f", nullptr, 0, "getstrparamal(task1, 15, 0); getstrparamal(task1, 1, 6); putstrparam(task1, 15, \"m.sen\"); putstrparam(task1, 14, \"f\"); sensitivityreport(task1, 0)", nullptr, nullptr},
    {"without a file: the name alone", "m -sen", nullptr, 0, "putstrparam(task1, 15, \"m.sen\")", "putstrparam(task1, 14; sensitivityreport", nullptr},
    {"for everything", "m", "int 112 1", 0, "putstrparam(task1, 15, \"m.sen\"); putstrparam(task1, 14, null); sensitivityreport(task1, 0)", nullptr, nullptr},
    {"another value: the name alone", "m", "int 112 2", 0, "putstrparam(task1, 15, \"m.sen\")", "sensitivityreport", nullptr},
    {"result file given", "m -sen f", "str 15 mine.sen", 0, "putstrparam(task1, 14, \"f\"); sensitivityreport(task1, 0)", "putstrparam(task1, 15", nullptr},
    {"not after an error", "m -sen f", "int 112 1\ncode ZLR_optimize 1 1501", 1501 & 255, "getresponseclass(1501); getintparam(task1, 112)", "getstrparamal(task1, 15", nullptr},
    {"after a stop", "m -sen f", "defined 1\ncode ZLR_optimize 1 10000", 10000 & 255, "writesolution(task1, 1, null); getresponseclass(10000); sensitivityreport(task1, 0)", nullptr, nullptr},
    {"by the library's class", "m -sen f", "class 3", 0, "getresponseclass(0)", "sensitivityreport", nullptr},
    {"its failure", "m -sen f -info s", "code ZLR_sensitivityreport 1 1900", 1900 & 255, "sensitivityreport(task1, 0) = 1900; solutiondef(task1, 2)", nullptr, nullptr},
};
// clang-format on

TEST(names, infeasibility_and_sensitivity)
{
    for (const run_case &item : infeasibility_cases) check_case(item);
}
