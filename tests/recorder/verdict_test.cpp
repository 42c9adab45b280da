/* verdict_test.cpp - how a run ends: console line, return-code file, exit status; runs without a problem; interrupts. */
#include "case_check.h"

#include <gtest/gtest.h>

#include <csignal>

/* ---- Verdict ---- */

TEST(verdict, three_forms)
{
    const struct {
        const char *line, *script;
        int status;
        const char *console; /* the last line; null: none of the kind */
        const char *file;    /* what "-rout" leaves; null: no file */
    } cases[] = {
        {"m", "", 0, "Return code - 0  [NAME_0]\n", nullptr},
        {"m -rout {}/rc", "", 0, "Return code - 0  [NAME_0]\n", "NAME_0\n"},
        {"-ab -rout {}/rc", "", 0, "Return code - 0 \n", nullptr},
        {"-rout {}/rc -h", "", 0, "Return code - 0 \n", "\n"},
        {"-rout {}/rc -ab", "", 0, "Return code - 0 \n", "\n"},
        {"-v -rout {}/rc", "", 0, "Return code - 0  [NAME_0]\n", "NAME_0\n"},
        {"-v -silent -rout {}/rc", "", 0, nullptr, "NAME_0\n"},
        {"-g m -rout {}/rc", "", 0, "Return code - 0  [NAME_0]\n", "NAME_0\n"},
        {"m -rout {}/rc", "code ZLR_optimize 1 7", 7, "Return code - 7  [NAME_7]\n", "NAME_7\n"},
        {"m -rout {}/rc", "code ZLR_optimize 1 1501", 1501 & 255, "Return code - 1501  [NAME_1501]\n", "NAME_1501\n"},
        {"m -silent", "code ZLR_optimize 1 10001", 10001 & 255, nullptr, nullptr},
        {"m -r", "code ZLR_optimize 1 999", 0, "Return code - 999  [NAME_999]\n", nullptr},
        {"m -r", "code ZLR_optimize 1 1000", 255, "Return code - 1000  [NAME_1000]\n", nullptr},
        {"m -r", "code ZLR_optimize 1 9999", 255, "Return code - 9999  [NAME_9999]\n", nullptr},
        {"m -r", "code ZLR_optimize 1 10000", 0, "Return code - 10000  [NAME_10000]\n", nullptr},
        {"-rout  m", "", 0, "Return code - 0  [NAME_0]\n", nullptr},
        {"m -rout {}/no/such/rc", "", 0, "Return code - 0  [NAME_0]\n", nullptr},
        {"m -rout {}/rc", "code ZLR_makeenv 1 1014", 1014 & 255, "Return code - 1014  [NAME_1014]\n", "NAME_1014\n"},
    };
    for (const auto &item : cases) {
        SCOPED_TRACE(std::string(item.line) + " / " + item.script);
        const temp_folder folder;
        const recorded_run run = run_recorded({.line = item.line, .script = item.script}, folder);
        const std::string &out = run.process.out;
        EXPECT_EQ(run.process.status, item.status);
        if (item.console != nullptr) {
            const size_t at = out.rfind("Return code");
            EXPECT_EQ(at == std::string::npos ? out : out.substr(at), item.console);
        } else {
            EXPECT_EQ(out.find("Return code"), std::string::npos);
        }
        EXPECT_EQ(file_exists(folder.file("rc")), item.file != nullptr);
        if (item.file != nullptr) {
            EXPECT_EQ(file_read(folder.file("rc")), item.file);
        }
    }
}

// clang-format off
static const run_case end_cases[] = {
    {"no arguments", "", nullptr, 0, "echointro(env1, 0); getstrparamal(task1, 1, 128); freedbgtask(task1, mem1); deletetask(task1); deleteenv(env1); getcodedesc(0, null)", "readdata; optimize", "[ZLR_echointro]\n\n*** No input file specfied. No optimization is performed.\n\nReturn code - 0  [NAME_0]\n"},
    {"no input file: the empty task is written", "-out o.lp -anapro", nullptr, 0, "analyzeproblem(task1, 1); writedata(task1, \"o.lp\")", "optimize", nullptr},
    {"unreadable file", "m -out o", "code ZLR_readdata 1 1053", 1053 & 255, "readdata(task1, null) = 1053; freedbgtask(task1, mem1); deletetask(task1)", "writedata; readsummary", "\n*** Warning: No input file specified.\n             Common usage of the ZELOR command line tool is: \n\n             zelor file_name\n\nReturn code - 1053 "},
    {"converter", "in.mps -x -out out.lp", nullptr, 0, "readdata(task1, null); readsummary(task1, 1); writedata(task1, \"out.lp\")", "optimize; getresponseclass", nullptr},
    {"integer removal", "m -removeitg -silent -x -out o", "columns 2", 0, "getnumvar(task1); putvartype(task1, 0, 0); putvartype(task1, 1, 0); writedata(task1, \"o\")", nullptr, "Remove all integer constraints.\n"},
    {"failed conic form is told behind dump and statistics", "m -toconic -stat start -+ -paro f", "code ZLR_toconic 1 1900", 1900 & 255, "toconic(task1) = 1900; writeparamfile(task1, null); startstat(task1); freedbgtask(task1, mem1)", "optimize", nullptr},
    {"licence failure", "m", "code ZLR_makeemptytask 1 1014", 1014 & 255, "deletetask(null); deleteenv(env1)", nullptr, "-w waits until one is free.\nReturn code - 1014 "},
    {"environment that is deleted with a code", "m", "code ZLR_deleteenv 1 1014", 1014 & 255, nullptr, nullptr, "[ZLR_optimizersummary]\nReturn code - 1014 "},
};
// clang-format on

TEST(verdict, ends_of_runs)
{
    for (const run_case &item : end_cases) check_case(item);
}

TEST(verdict, silent_run_prints_nothing)
{
    EXPECT_EQ(run_recorded("m -silent").process.out, "");
    EXPECT_EQ(run_recorded("m").process.out,
              "[ZLR_echointro]\n[ZLR_readsummary]\n[ZLR_solutionsummary]\n\n[ZLR_optimizersummary]\n"
              "Return code - 0  [NAME_0]\n");
}

TEST(verdict, standard_output_without_room)
{
    const temp_folder folder;
    const recorded_run full =
        run_recorded({.line = "m -removeitg", .script = "code ZLR_optimize 1 7", .output = "/dev/full"}, folder);
    EXPECT_EQ(full.process.status, 7);
    EXPECT_EQ(names_of(full.calls), names_of(run_recorded("m -removeitg", "code ZLR_optimize 1 7").calls));
}

/* ---- AMPL mode ---- */

TEST(ampl, arguments_and_verdict)
{
    const struct {
        const char *name, *line, *script;
        int status;
        const char *calls, *absent;
    } cases[] = {
        {"list ends at -a", "stub.nl -l dir -x -a -d P 1 name", "", 0,
         "putstrparam(task1, 1, \"stub.nl\"); putstrparam(task1, 1, \"dir\"); putparam(task1, \"P\", \"1\"); "
         "putstrparam(task1, 1, \"name\"); callocdbgtask(task1, 11, 8); strduptask(task1, \"stub.nl\"); "
         "strduptask(task1, \"-x\")",
         "strduptask(task1, \"-l; strduptask(task1, \"dir; strduptask(task1, \"-a; strduptask(task1, \"-d; echointro; "
         "readdata; putlicensepath"},
        {"all of it by name", "stub.nl -AMPL k=1 -d P 1", "", 0,
         "callocdbgtask(task1, 8, 8); strduptask(task1, \"-AMPL\"); strduptask(task1, \"k=1\"); "
         "strduptask(task1, \"-d\")",
         "putparam"},
        {"-l at the end", "stub.nl -AMPL -l", "", 0, "strduptask(task1, \"-AMPL\")", "strduptask(task1, \"-l"},
        {"-d without value ends the scan", "s -a -d P", "", 0, "callocdbgtask(task1, 6, 8)", "putparam"},
        {"bad parameter", "s -a -d P 1 t", "code ZLR_putparam 1 1200", 0, "putparam(task1, \"P\", \"1\") = 1200",
         "putstrparam(task1, 1, \"t\"); callocdbgtask; writedata"},
        {"-r overrides both", "s -a -d P 1 -r", "code ZLR_putparam 1 1200", 255, nullptr, nullptr},
        {"no memory for the list", "s -AMPL -out o", "nomem 1", 0,
         "callocdbgtask(task1, 6, 8); freedbgtask(task1, mem1)", "strduptask; writedata"},
        {"no memory for an argument", "s -AMPL -r", "nomem 3", 255, "getcodedesc(1051, null)", "writedata"},
        {"another word with key A", "s -Afoo -v -h", "", 0, "callocdbgtask(task1, 6, 8)", "echointro"},
    };
    for (const auto &item : cases) {
        SCOPED_TRACE(item.name);
        const recorded_run run =
            check_case({item.name, item.line, item.script, item.status, item.calls, item.absent, nullptr, true});
        EXPECT_EQ(run.process.out.find("Return code"), std::string::npos);
    }
}

TEST(ampl, copies_go_back_in_reverse_order)
{
    /* The last copy fails: the list, which is the second block, and the two made before it go back. */
    const recorded_run run = run_recorded("stub -AMPL", "nomem 4");
    EXPECT_EQ(joined(calls_of(run, "freedbgtask")), "freedbgtask(task1, mem4)\nfreedbgtask(task1, mem3)\n"
                                                    "freedbgtask(task1, mem2)\nfreedbgtask(task1, mem1)\n");
}

/* ---- Interrupts ---- */

TEST(interrupt, counted_wherever_it_comes)
{
    const struct {
        const char *name, *script;
        int status, num_stops;
        bool is_told;
    } cases[] = {
        {"none", "poll 3", 0, 0, false},
        {"before the environment", "poll 3\nraise ZLR_makeenv 1 2", 10000 & 255, 1, true},
        {"during the read", "poll 3\nraise ZLR_readdata 1 2", 10000 & 255, 1, true},
        {"at a poll", "poll 3\nraisepoll 2 2", 10000 & 255, 1, true},
        {"twice, and polled on", "poll 4\nstubborn\nraisepoll 2 2\nraisepoll 3 2", 0, 3, true},
        {"termination signal", "poll 3\nraisepoll 3 15", 10000 & 255, 1, true},
        {"both", "poll 3\nraise ZLR_readdata 1 15\nraisepoll 1 2", 10000 & 255, 1, true},
        {"no poll at all", "raise ZLR_readdata 1 2", 0, 0, false},
        {"while solutions are written", "poll 1\nraise ZLR_writesolution 1 2\nraise ZLR_deletetask 1 15", 0, 0, false},
        {"at the very end", "poll 1\nraise ZLR_deleteenv 1 2\nraise ZLR_getcodedesc 1 2", 0, 0, false},
    };
    for (const auto &item : cases) {
        SCOPED_TRACE(item.name);
        const recorded_run run = run_recorded("m -silent -sen f", std::string("defined 1\n") + item.script);
        EXPECT_EQ(run.process.status, item.status);
        EXPECT_EQ(calls_of(run, "stop asked for").size(), static_cast<size_t>(item.num_stops));
        EXPECT_EQ(run.process.out, !item.is_told ? "" : "CTRLC-C has been pressed.\n");
        EXPECT_EQ(calls_of(run, "writesolution").size(), 1U) << "a stopped run leaves its solution";
        EXPECT_EQ(calls_of(run, "sensitivityreport").size(), 1U);
    }
}

/* From outside, as a terminal or a batch system does it. */
TEST(interrupt, real_signals)
{
    for (const int number : {SIGINT, SIGTERM}) {
        const temp_folder folder;
        const recorded_run run = run_recorded(
            {.line = "m", .script = "defined 1\npoll 4000\npause 5", .signals = {{number, 0.02, "[optimizer starts]"}}},
            folder);
        EXPECT_EQ(run.process.status, 10000 & 255);
        EXPECT_LT(run.process.wall_s, 10.0);
        EXPECT_EQ(calls_of(run, "writesolution").size(), 1U);
        EXPECT_NE(run.process.out.find("CTRLC-C has been pressed.\n"), std::string::npos);
    }
}
