/* options_test.cpp - the command line: what each scanner takes for what, seen by the calls that follow. A failed read,
 * code 1053, shows "-r" by its exit status: 255 with it, 29 without. */
#include "case_check.h"

#include <gtest/gtest.h>

#include <algorithm>

#define UNREADABLE "code ZLR_readdata 1 1053"

// clang-format off
static const run_case prescan_cases[] = {
    {"analyse", "-anapro m", nullptr, 0, "analyzeproblem(task1, 1); optimize(task1)", nullptr, nullptr},
    {"initial kinds are checked and not used", "-anasoli itg m", nullptr, 0, "optimize(task1)", "analyze", nullptr},
    {"final kinds", "-anasolo itg m -anasolo itr m", nullptr, 0, "optimizersummary(task1, 1); analyzesolution(task1, 1, 0); analyzesolution(task1, 1, 2)", "analyzesolution(task1, 1, 1)", nullptr},
    {"final hides one token", "-anasolo itg -r m", UNREADABLE, 29, "readdata(task1, null) = 1053", nullptr, nullptr},
    {"final hides no more", "-anasolo itg m -r", UNREADABLE, 255, nullptr, nullptr, nullptr},
    {"kind missing", "m -anasoli", nullptr, 0, nullptr, "m; getcodedesc", "Error while procssing argument: -anasoli\nReturn code - 0 \n"},
    {"kind unknown", "-anasolo sol m", nullptr, 0, nullptr, "m; getcodedesc", "Error while procssing argument: -anasolo\n"},
    {"key a unknown", "-ab m", nullptr, 0, nullptr, "makeenv", "Error while procssing argument: 'ab'\nReturn code - 0 \n"},
    {"memory trace", "-dbgmem t.mem m", nullptr, 0, "makeenv(\"t.mem\"); putstrparam(task1, 1, \"m\")", "putstrparam(task1, 1, \"t.mem\")", nullptr},
    {"memory trace without name", "m -dbgmem", nullptr, 0, nullptr, "makeenv", "Error while procssing argument: -dbgmem\n"},
    {"return code file without name", "m -rout", nullptr, 0, nullptr, "makeenv", "Error while procssing argument: rout\n"},
    {"values of -d are options here", "-d NAME -r m", UNREADABLE, 255, "putparam(task1, \"NAME\", \"-r\"); readdata(task1, null) = 1053", nullptr, nullptr},
    {"anything with key r", "-rubbish m", UNREADABLE, 255, "readdata(task1, null) = 1053", nullptr, nullptr},
    {"anything with key w", "-wait m", nullptr, 0, "putlicensewait(env1, 1)", nullptr, nullptr},
    {"anything with key f", "-fx m", nullptr, 0, "putlicensedebug(env1, 1); echointro(env1, 1)", nullptr, nullptr},
    {"anything with key x", "-xyz m", nullptr, 0, "readdata(task1, null)", "optimize", nullptr},
    {"twice x stays off", "-x -x m", nullptr, 0, "readdata(task1, null)", "optimize", nullptr},
    {"anything with key d", "-dfoo a b m", nullptr, 0, "putparam(task1, \"a\", \"b\"); readdata(task1, null)", nullptr, nullptr},
    {"anything with key q", "-qfoo name m", nullptr, 0, "linkfiletotaskstream(task1, 0, \"name\", 0); readdata(task1, null)", nullptr, nullptr},
    {"anything with key l", "-lfoo dir m", nullptr, 0, "putlicensepath(env1, \"dir\"); putstrparam(task1, 1, \"m\")", "putstrparam(task1, 1, \"dir\")", nullptr},
    {"licence path may look like an option", "-L -v m", nullptr, 0, "putlicensepath(env1, \"-v\"); optimize(task1)", "getversion", nullptr},
    {"licence list", "-lb 3 44 -x m", nullptr, 0, "putlicensecode(env1, { 3 44 }); putlicensewait(env1, 0)", "putlicensepath; optimize; putstrparam(task1, 1, \"3\")", nullptr},
    {"licence list to the end", "m -Lb 5", nullptr, 0, "putlicensepath(env1, \"5\")", "putlicensecode", nullptr},
    {"licence list with bad items", "m -lb 1 x 99999999999 2", nullptr, 0, "putlicensecode(env1, { 1 2 })", nullptr, "Error in -lb argument\nError in -lb argument\n[ZLR_echointro]"},
    {"licence list empty", "m -lb -f", nullptr, 0, "linkfunctoenvstream(env1, 1, null); putlicensewait(env1, 0)", "putlicensecode; putlicensepath", nullptr},
    {"licence path before list", "-lb 7 -l dir m", nullptr, 0, "putlicensepath(env1, \"dir\")", "putlicensecode", nullptr},
    {"usage by h", "m -hello", nullptr, 0, nullptr, "makeenv; getcodedesc", "options : \n\t\t-anapro                { Analyze the problem data }\n"},
    {"usage by ?", "-? m", nullptr, 0, nullptr, "makeenv", "\n\t\t-=                     { List all possible parameters }\n\nReturn code - 0 \n"},
    {"list parameters", "-= m", nullptr, 0, "optimize(task1); printparam(task1); deletetask(task1)", nullptr, nullptr},
    {"list parameters without a task", "-= m", "code ZLR_makeemptytask 1 1051", 1051 & 255, "makeemptytask(env1) = 1051; printparam(null); deletetask(null); deleteenv(env1)", "freedbgtask", nullptr},
    {"no solution files", "-nowrsol -sen s m", "defined 0", 0, "optimize(task1); putstrparam(task1, 15, \"m.sen\"); sensitivityreport(task1, 0)", "writesolution; getstrparamal(task1, 4", nullptr},
    {"second sweep ends at the marker", "m -+ -nowrsol -w", "defined 0", 0, "putlicensewait(env1, 0); writesolution(task1, 0, null)", nullptr, nullptr},
    {"first sweep does not", "m -+ -removeitg", nullptr, 0, "getnumvar(task1)", nullptr, "Remove all integer constraints."},
    {"second sweep knows values of -out", "-out -v m", nullptr, 0, "writedata(task1, \"-v\")", "getversion", nullptr},
    {"and of -brni, which is refused later", "-brni -v m", nullptr, 0, nullptr, "getversion; readdata", "Error in argument: -brni\n"},
    {"but not of -q", "-q -v m", nullptr, 0, "getversion()", "makeenv", "ZELOR version 8.1 (Revision: 2 Build 3)\n"},
    {"version by anything with key v", "m -version", nullptr, 0, "getversion(); getcodedesc(0, null)", "makeenv", "Return code - 0  [NAME_0]\n"},
    {"silent", "-silent -toconic m", nullptr, 0, "toconic(task1); optimize(task1)", "echointro", nullptr},
};

static const run_case apply_cases[] = {
    {"last name wins", "a b", nullptr, 0, "putstrparam(task1, 1, \"a\"); putstrparam(task1, 1, \"b\"); readdata(task1, null)", nullptr, nullptr},
    {"parameter files first", "-d X 1 -pari b -p a m", nullptr, 0, "readparamfile(task1, \"b\"); readparamfile(task1, \"a\"); putparam(task1, \"X\", \"1\")", "putintparam", nullptr},
    {"-n reaches files behind it", "-n -p f m", nullptr, 0, "putintparam(task1, 92, 1); readparamfile(task1, \"f\")", nullptr, nullptr},
    {"and no file in front of it", "-p f -n m", nullptr, 0, "readparamfile(task1, \"f\")", "putintparam", nullptr},
    {"but every -d", "-d X 1 m -n", "code ZLR_putparam 1 1200", 0, "putparam(task1, \"X\", \"1\") = 1200; optimize(task1)", nullptr, nullptr},
    {"-n is forgotten behind the marker", "-n m -+ -d X 1", "code ZLR_putparam 2 1200", 1200 & 255, "putparam(task1, \"X\", \"1\"); readsummary(task1, 1); putparam(task1, \"X\", \"1\") = 1200; deletetask(task1)", "optimize", nullptr},
    {"error of a file stops the passes", "-p f -p g -d X 1 m", "code ZLR_readparamfile 1 1053", 29, nullptr, "readparamfile(task1, \"g\"); putparam; putstrparam", nullptr},
    {"error of a parameter stops the pass", "-d X 1 -d Y 2 m", "code ZLR_putparam 1 1200", 1200 & 255, nullptr, "putparam(task1, \"Y\"; putstrparam", nullptr},
    {"-p takes what looks like an option", "-p -n m", nullptr, 0, "readparamfile(task1, \"-n\")", "putintparam", nullptr},
    {"everything behind the marker twice", "-p a.par m -+ -p b.par -d X 1", nullptr, 0, "readparamfile(task1, \"a.par\"); readparamfile(task1, \"b.par\"); putparam(task1, \"X\", \"1\"); readdata(task1, null); readsummary(task1, 1); readparamfile(task1, \"b.par\"); putparam(task1, \"X\", \"1\"); optimize(task1)", nullptr, nullptr},
    {"a second marker ends the run behind the read", "m -out o -+ -+", nullptr, 0, "readdata(task1, null); readsummary(task1, 1); freedbgtask(task1, mem1); writedata(task1, \"o\")", "optimize", "Return code - 0  [NAME_0]\n"},
    {"marker by its key", "m -+x -paro f", nullptr, 0, "writeparamfile(task1, null); readdata(task1, null); writeparamfile(task1, null)", nullptr, nullptr},
    {"parameter dump in front of the marker", "m -paro f -+", nullptr, 0, "putstrparam(task1, 8, \"f\"); writeparamfile(task1, null); readdata(task1, null); optimize(task1)", nullptr, nullptr},
    {"statistics start twice", "-stat start m", nullptr, 0, "startstat(task1); readdata(task1, null); startstat(task1); optimize(task1)", "stopstat; appendstat", nullptr},
    {"statistics behind the marker too", "m -+ -stat start", nullptr, 0, "startstat(task1); readdata(task1, null); startstat(task1)", nullptr, nullptr},
    {"statistics label", "-stat mine m", nullptr, 0, "putstrparam(task1, 20, \"mine\")", "startstat", nullptr},
    {"statistics stop and append", "-stat stop -stat append m", nullptr, 0, "optimize(task1); appendstat(task1); freedbgtask(task1, mem1); stopstat(task1)", "startstat", nullptr},
    {"dump behind statistics before the read", "-stat start -paro f m -+ -paro f", nullptr, 0, "startstat(task1); writeparamfile(task1, null); readdata(task1, null); writeparamfile(task1, null); startstat(task1)", nullptr, nullptr},
    {"output names", "-itro a -baso b -into c m", nullptr, 0, "putstrparam(task1, 4, \"a\"); putstrparam(task1, 0, \"b\"); putstrparam(task1, 3, \"c\"); optimize(task1)", "putstrparam(task1, 4, \"m.sol\"); putstrparam(task1, 0, \"m.bas\"); putstrparam(task1, 3, \"m.int\")", nullptr},
    {"initial solutions in the order of kinds", "-inti c -basi b0 -basi b -itri a m", nullptr, 0, "readsolution(task1, 0, \"a\"); readsolution(task1, 1, \"b\"); readsolution(task1, 2, \"c\")", "readsolution(task1, 1, \"b0\")", nullptr},
    {"minimise", "-max -min m", nullptr, 0, "readdata(task1, null); putobjsense(task1, 0); readsummary(task1, 1)", nullptr, nullptr},
    {"maximise", "-max m -+", nullptr, 0, "putobjsense(task1, 1)", nullptr, nullptr},
    {"value of -rout is no data file", "-rout {}/rc m", nullptr, 0, "putstrparam(task1, 1, \"m\"); optimize(task1)", "putstrparam(task1, 1, \"/", nullptr},
    {"last -out wins", "-out a m -out b", nullptr, 0, "writedata(task1, \"b\")", "writedata(task1, \"a\")", nullptr},
    {"options of the pre-scan pass", "--anything -help2? -t -Z m", nullptr, 0, nullptr, nullptr, "usage   : "},
    {"two dashes pass", "m --version -A1", nullptr, 0, nullptr, "optimize", nullptr, true},
    {"values missing at the end", "m -q", nullptr, 0, "optimize(task1)", nullptr, nullptr},
    {"-basi at the end", "m -basi", nullptr, 0, "optimize(task1)", "readsolution", nullptr},
    {"-itro at the end", "m -itro", nullptr, 0, "optimize(task1)", nullptr, nullptr},
    {"-info at the end", "m -info", nullptr, 0, "optimize(task1)", "getsolsta", nullptr},
    {"-out at the end", "m -out", nullptr, 0, "optimize(task1)", "writedata", nullptr},
    {"-stat at the end", "m -stat", nullptr, 0, "optimize(task1)", nullptr, nullptr},
    {"-l at the end", "m -l", nullptr, 0, "optimize(task1)", "putlicensepath", nullptr},
    {"no parameter file at the end", "m -p", nullptr, 0, nullptr, "readparamfile; readdata", "Error in argument: -p\n"},
};
// clang-format on

TEST(options, prescan)
{
    for (const run_case &item : prescan_cases) check_case(item);
}

TEST(options, apply)
{
    for (const run_case &item : apply_cases) check_case(item);
}

/* Refused when the options are applied: a message, no code, nothing read or written. */
TEST(options, refused)
{
    const char *const last[] = {"-pari", "-paro", "-d X",  "-d",    "-",      "-1", "-c",     "-e",      "-g",    "-j",
                                "-k",    "-u",    "-B",    "-Z",    "-,",     "-~", "-bas",   "-brno",   "-min2", "-m",
                                "-nowr", "-o",    "-outx", "-px v", "-stats", "-i", "-infox", "-primal", "-paro"};
    for (const char *line : last) {
        SCOPED_TRACE(line);
        const recorded_run run = run_recorded(std::string("m -out o -= ") + line);
        const std::string token = words_of(line)[0];
        EXPECT_NE(run.process.out.find("Error in argument: " + token + "\nReturn code"), std::string::npos)
            << run.process.out;
        EXPECT_EQ(run.process.status, 0);
        EXPECT_TRUE(calls_of(run, "getstrparamal").empty());
        EXPECT_TRUE(calls_of(run, "writedata").empty());
        EXPECT_EQ(calls_of(run, "printparam").size(), 1U);
    }
    /* Behind the marker the pre-scan does not see it. */
    const recorded_run run = run_recorded("m -+ -v");
    EXPECT_NE(run.process.out.find("Error in argument: -v\n"), std::string::npos);
    EXPECT_TRUE(calls_of(run, "getversion").empty());
}

TEST(options, usage)
{
    const std::string out = run_recorded("-h").process.out;
    EXPECT_EQ(out.rfind("\nusage   : ", 0), 0U);
    EXPECT_NE(out.find(" [options] [filename]\noptions : \n"), std::string::npos);
    EXPECT_NE(out.find("\t\t-n                     { Ignore errors in subsequent paramter settings }\n"),
              std::string::npos);
    EXPECT_EQ(std::count(out.begin(), out.end(), '\t'), 2 * 38);
}

/* Names and values are cut to what their buffers hold. */
TEST(options, long_texts)
{
    const std::string text(5000, 'x');
    const recorded_run run = run_recorded("-l " + text + " -d " + text + " " + text + " " + text + " -itro " + text);
    const std::string cut = "\"" + text.substr(0, 1023) + "\"";
    EXPECT_EQ(calls_of(run, "putlicensepath(env1, " + cut + ")").size(), 1U);
    EXPECT_EQ(calls_of(run, "putparam(task1, " + cut + ", " + cut + ")").size(), 1U);
    EXPECT_EQ(calls_of(run, "putstrparam(task1, 4, \"" + text + "\")").size(), 1U);
    EXPECT_EQ(calls_of(run, "putstrparam(task1, 0, \"" + text + ".bas\")").size(), 1U);
    EXPECT_EQ(run.process.status, 0);
}

/* The log file is linked when its name is new, and once more behind the marker where the first invocation has taken
 * the option for a value. The old name is then handed to the library, which must leave it alone. */
TEST(options, log_file)
{
    const struct {
        const char *line, *linked;
    } cases[] = {
        {"m -q a", "a"}, {"-q a m -+ -q b", "b"},        {"-anasolo itg -q m -q b -+", "b"},
        {"-q  m", ""},   {"-q a -d -+ -q b m", "b a b"}, {"-anasolo itg -q a m", "a"},
    };
    for (const auto &item : cases) {
        SCOPED_TRACE(item.line);
        const recorded_run run = run_recorded(item.line);
        std::string linked;
        for (const std::string &call : calls_of(run, "linkfiletotaskstream")) {
            const std::string name = split(call, "\"")[1];
            linked += (linked.empty() ? "" : " ") + name;
        }
        EXPECT_EQ(linked, item.linked) << joined(run.calls);
        EXPECT_EQ(calls_of(run, "freeenv(env1, foreign)").size(), linked == "b a b" ? 1U : 0U);
    }
}
