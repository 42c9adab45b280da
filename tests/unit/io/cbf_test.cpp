/* The CBF reader and writer on texts: what each section gives, what is refused and how it is told. */
#include "mps_support.h"

#include "fuzz/reader_fuzz.h"

using namespace test_mps;

namespace
{
constexpr int32_t good = ZLR_RES_OK;
constexpr int32_t wrong = ZLR_RES_ERR_FILE_FORMAT;
constexpr int32_t unsupported = ZLR_RES_ERR_FILE_UNSUPPORTED;

int32_t read_cbf(caught_io *context, const std::string &text, model *m)
{
    return read_text(context, text, m, cbf_read);
}

const std::string head = "VER\n1\nOBJSENSE\nMIN\n";

TEST(Cbf, EverySection)
{
    const std::string text = "# by hand\n\nVER\n3\n\nOBJSENSE\nMAX\n"
                             "VAR\n9 6\nL+ 1\nL- 1\nL= 1\nF 1\n# cones\nQ 3\nL+ 2\n"
                             "INT\n2\n0\n\n7\n"
                             "CON\n5 4\nL= 1\nL+ 1\nL- 1\nF 2\n"
                             "OBJACOORD\n2\n0 1.5\n8 -2e1 # behind data\n"
                             "OBJBCOORD\n-4\n"
                             "BCOORD\n3\n0 -3\n1 4\n2 0\n"
                             "ACOORD\n4\n1 3 1\n0 3 2\n\t 2   0\t-1.25\n4 8 1e-13\n"
                             "PSDVAR\n0\n";
    caught_io context;
    model m;
    EXPECT_EQ(read_cbf(&context, text, &m), good);
    EXPECT_EQ(context.log, "");
    EXPECT_EQ(shown(m), "max -4 | c1 [3,3] | c2 [-4,inf] | c3 [-inf,0] | c4 [-inf,inf] | c5 [-inf,inf]"
                        " | int x1 [0,inf] 1.5 c3:-1.25 | x2 [-inf,0] 0 | x3 [0,0] 0 | x4 [-inf,inf] 0 c2:1 c1:2"
                        " | x5 [-inf,inf] 0 | x6 [-inf,inf] 0 | x7 [-inf,inf] 0 | int x8 [0,inf] 0 | x9 [0,inf] -20"
                        " | Q x5 x6 x7");
}

/* Rows in cones get columns for their values; cones that are too short for the model are bounds. */
TEST(Cbf, Cones)
{
    static const struct {
        const char *var, *con, *shown;
    } cases[] = {
        {"3 1\nQ 3", "", "min 0 | x1 [-inf,inf] 0 | x2 [-inf,inf] 0 | x3 [-inf,inf] 0 | Q x1 x2 x3"},
        {"5 2\nQR 3\nQ 2", "",
         "min 0 | x1 [-inf,inf] 0 | x2 [-inf,inf] 0 | x3 [-inf,inf] 0 | x4 [-inf,inf] 0 | x5 [-inf,inf] 0"
         " | QR x1 x2 x3 | Q x4 x5"},
        {"3 2\nQ 1\nQR 2", "", "min 0 | x1 [0,inf] 0 | x2 [0,inf] 0 | x3 [0,inf] 0"},
        {"1 1\nF 1", "CON\n3 2\nL- 1\nQ 2\nACOORD\n2\n1 0 3\n2 0 4\nBCOORD\n1\n2 5\n",
         "min 0 | c1 [-inf,0] | c2 [0,0] | c3 [-5,-5] | x1 [-inf,inf] 0 c2:3 c3:4"
         " | c2_cone [-inf,inf] 0 c2:-1 | c3_cone [-inf,inf] 0 c3:-1 | Q c2_cone c3_cone"},
        {"1 1\nF 1", "CON\n3 2\nQ 1\nQR 2\nACOORD\n1\n1 0 3\nBCOORD\n1\n1 5\n",
         "min 0 | c1 [0,inf] | c2 [-5,inf] | c3 [0,inf] | x1 [-inf,inf] 0 c2:3"},
        {"0 0", "CON\n1 1\nL= 1\nBCOORD\n1\n0 1\n", "min 0 | c1 [-1,-1]"},
        {"2 3\nL+ 0\nF 2\nL= 0", "", "min 0 | x1 [-inf,inf] 0 | x2 [-inf,inf] 0"},
    };
    for (const auto &c : cases) {
        caught_io context;
        model m;
        EXPECT_EQ(read_cbf(&context, head + "VAR\n" + c.var + "\n" + c.con, &m), good) << context.log;
        EXPECT_EQ(shown(m), c.shown);
    }
}

/* The value with which "at least" and "at most" are no sides at all is the parameter of bounds. */
TEST(Cbf, SidesFromInfiniteOnAreNone)
{
    caught_io context;
    model m;
    const std::string text = head + "VAR\n1 1\nF 1\nCON\n3 2\nL+ 2\nL- 1\nBCOORD\n3\n0 1e16\n1 -1e20\n2 -1e17\n";
    EXPECT_EQ(read_cbf(&context, text, &m), good) << context.log;
    EXPECT_EQ(shown(m), "min 0 | c1 [-inf,inf] | c2 [1e+20,inf] | c3 [-inf,inf] | x1 [-inf,inf] 0");
}

struct refused_case {
    const char *name;
    std::string text;
    int32_t code;
    const char *message;
};

void expect_refused(const refused_case *cases, size_t num)
{
    for (size_t k = 0; k < num; k++) {
        const refused_case &c = cases[k];
        SCOPED_TRACE(c.name);
        caught_io context("t.cbf");
        model m;
        EXPECT_EQ(read_cbf(&context, c.text, &m), c.code);
        EXPECT_EQ(context.log.find(c.message), 0U) << context.log;
        EXPECT_EQ(std::count(context.log.begin(), context.log.end(), '\n'), 1) << context.log;
    }
}

TEST(Cbf, StructureIsRefused)
{
    const std::string var = head + "VAR\n2 1\nF 2\n";
    const refused_case cases[] = {
        {"empty", "", wrong, "t.cbf: the file is empty."},
        {"comments alone", "# x\n", wrong, "t.cbf(1): found the end of the file where the section VER was expected"},
        {"no VER", "OBJSENSE\nMIN\n", wrong, "t.cbf(1): found the section OBJSENSE where VER was expected first."},
        {"version 0", "VER\n0\n", unsupported, "t.cbf(2): version 0 of the format is not supported"},
        {"version 4", "VER\n4\n", unsupported, "t.cbf(2): version 4 of the format is not supported; versions 1 to 3"},
        {"version word", "VER\none\n", wrong, "t.cbf(2): found 'one' in VER where the version of the format"},
        {"more behind", "VER\n1 2\n", wrong, "t.cbf(2): found '2' in VER where the end of the line was expected."},
        {"behind a section", "VER 1\n", wrong, "t.cbf(1): found '1' in VER where the end of the line was expected."},
        {"sense", "VER\n1\nOBJSENSE\nmin\n", wrong, "t.cbf(4): found 'min' in OBJSENSE where MIN or MAX was expected."},
        {"section twice", head + "VER\n1\n", wrong, "t.cbf(5): found a second section VER."},
        {"no section", head + "hello\n", wrong,
         "t.cbf(5): found 'hello' where the name of a section was expected, behind the last line of OBJSENSE."},
        {"no VAR", head, wrong, "t.cbf(4): found the end of the file where the section VAR was expected"},
        {"INT before VAR", head + "INT\n0\n", wrong, "t.cbf(5): found the section INT where VAR was expected first."},
        {"ACOORD before CON", var + "ACOORD\n0\n", wrong,
         "t.cbf(8): found the section ACOORD where CON was expected first."},
        {"cut in VER", "VER\n", wrong, "t.cbf(1): found the end of the file in the section VER where the version"},
        {"cut in OBJSENSE", "VER\n1\nOBJSENSE\n", wrong, "t.cbf(3): found the end of the file in the section OBJSENSE"},
        {"cut in VAR", head + "VAR\n", wrong, "t.cbf(5): found the end of the file in the section VAR where a number"},
        {"cut in cones", head + "VAR\n2 2\nF 1\n", wrong,
         "t.cbf(7): found the end of the file in the section VAR where a cone and its size was expected"},
        {"cut in INT", var + "INT\n2\n1\n", wrong, "t.cbf(10): found the end of the file in the section INT"},
        {"columns below 0", head + "VAR\n-1 0\n", wrong, "t.cbf(6): found '-1' in VAR where a number of columns"},
        {"too many", head + "VAR\n999999999 1\nF 999999999\n", wrong,
         "t.cbf(6): found 999999999 in VAR where a number of columns up to 100000000 was expected."},
        {"far too many", head + "VAR\n9999999999999999999 1\n", wrong, "t.cbf(6): found '9999999999999999999' in VAR"},
        {"no number of cones", head + "VAR\n2\n", wrong,
         "t.cbf(6): found the end of the line in VAR where a number of cones was expected."},
        {"cones too large", head + "VAR\n2 1\nF 3\n", wrong,
         "t.cbf(7): found a cone of size 3 where the first line of VAR leaves 2."},
        {"cones too small", head + "VAR\n2 1\nF 1\nINT\n0\n", wrong,
         "t.cbf(7): the cones of VAR have 1 members in all, and its first line says 2."},
        {"fewer cones than told", head + "VAR\n2 2\nF 2\nINT\n0\n", wrong, "t.cbf(8): found 'INT' in VAR where a cone"},
        {"more cones than told", var + "F 2\n", wrong, "t.cbf(8): found 'F' where the name of a section was expected"},
        {"Q 0", head + "VAR\n0 1\nQ 0\n", wrong, "t.cbf(7): found a cone Q of size 0, which needs at least 1."},
        {"QR 1", head + "VAR\n1 1\nQR 1\n", wrong, "t.cbf(7): found a cone QR of size 1, which needs at least 2."},
        {"unknown cone", head + "VAR\n1 1\nCUBE 1\n", wrong, "t.cbf(7): found 'CUBE' in VAR where a cone (F,"},
        {"EXP", head + "VAR\n3 1\nEXP 3\n", unsupported, "t.cbf(7): the cone EXP is not supported; F, L+, L-, L=, Q"},
        {"POW", head + "VAR\n3 1\n@0:POW* 3\n", unsupported, "t.cbf(7): the cone @0:POW* is not supported"},
        {"INT again", var + "INT\n2\n1\n1\n", wrong, "t.cbf(11): column 1 stands twice in INT."},
        {"INT out of range", var + "INT\n1\n2\n", wrong, "t.cbf(10): found column 2 in INT, and there are 2, with the"},
        {"INT more than columns", var + "INT\n3\n", wrong,
         "t.cbf(9): found 3 in INT where a number of integer columns"},
        {"PSDVAR", head + "PSDVAR\n1\n3\n", unsupported, "t.cbf(5): the section PSDVAR is not supported."},
        {"POWCONES", head + "POWCONES\n1 2\n", unsupported, "t.cbf(5): the section POWCONES is not supported."},
        {"CHANGE", var + "CHANGE\n", unsupported, "t.cbf(8): the section CHANGE, which begins another problem"},
        {"zero byte", head + std::string(1, '\0'), wrong, "t.cbf(5): found a zero byte"},
    };
    expect_refused(cases, std::size(cases));
}

TEST(Cbf, DataAreRefused)
{
    const std::string begin = head + "VAR\n2 1\nF 2\nCON\n2 1\nL= 2\n"; /* ten lines */
    const refused_case cases[] = {
        {"cut objective", begin + "OBJACOORD\n2\n0 1\n", wrong,
         "t.cbf(13): found the end of the file in the section OBJACOORD where an entry was expected"},
        {"cut constant", begin + "OBJBCOORD\n", wrong, "t.cbf(11): found the end of the file in the section OBJBCOORD"},
        {"cut matrix", begin + "ACOORD\n1\n", wrong, "t.cbf(12): found the end of the file in the section ACOORD"},
        {"cut sides", begin + "BCOORD\n", wrong, "t.cbf(11): found the end of the file in the section BCOORD"},
        {"fewer than told", begin + "ACOORD\n2\n0 0 1\nBCOORD\n0\n", wrong,
         "t.cbf(14): found 'BCOORD' in ACOORD where the number of a row was expected."},
        {"more than told", begin + "BCOORD\n1\n0 1\n1 1\n", wrong,
         "t.cbf(14): found '1' where the name of a section was expected, behind the last line of BCOORD."},
        {"row out of range", begin + "ACOORD\n1\n2 0 1\n", wrong, "t.cbf(13): found row 2 in ACOORD, and there are 2"},
        {"column out of range", begin + "ACOORD\n1\n0 5 1\n", wrong, "t.cbf(13): found column 5 in ACOORD, and there"},
        {"too many entries", begin + "ACOORD\n5\n", wrong,
         "t.cbf(12): found 5 in ACOORD where a number of entries up to 4"},
        {"no value", begin + "ACOORD\n1\n0 1\n", wrong,
         "t.cbf(13): found the end of the line in ACOORD where a finite number was expected."},
        {"no number", begin + "ACOORD\n1\n0 1 1x\n", wrong, "t.cbf(13): found '1x' in ACOORD where a finite number"},
        {"nan", begin + "BCOORD\n1\n0 nan\n", wrong, "t.cbf(13): found 'nan' in BCOORD where a finite number"},
        {"inf", begin + "OBJBCOORD\ninf\n", wrong, "t.cbf(12): found 'inf' in OBJBCOORD where a finite number"},
        {"one more", begin + "OBJACOORD\n1\n0 1 1\n", wrong, "t.cbf(13): found '1' in OBJACOORD where the end of the"},
        {"cost twice", begin + "OBJACOORD\n2\n1 1\n1 1\n", wrong,
         "t.cbf(14): the entry of column 1 stands twice in OBJACOORD."},
        {"side twice", begin + "BCOORD\n2\n1 1\n1 0\n", wrong, "t.cbf(14): the entry of row 1 stands twice in BCOORD."},
        {"entry twice", begin + "ACOORD\n3\n1 0 1\n# between\n\n0 0 1\n1 0 2\n", wrong,
         "t.cbf(17): the entry of row 1 and column 0 stands twice in ACOORD."},
    };
    expect_refused(cases, std::size(cases));
}

TEST(Cbf, LastLineWithoutEndIsTold)
{
    caught_io context("t.cbf");
    model m;
    EXPECT_EQ(read_cbf(&context, head + "VAR\n2 1\nF 2\nOBJBCOORD\n12", &m), good);
    EXPECT_EQ(context.log, "t.cbf(9): warning: the last line has no end: the file may have been cut off.\n");
    EXPECT_EQ(m.cfix, 12.0);
}

/* ---- damage ---- */

const std::string seed = head +
                         "VAR\n7 3\nL+ 2\nQ 3\nQR 2\nINT\n1\n1\nCON\n5 3\nL= 1\nQR 3\nL- 1\nOBJACOORD\n2\n0 1\n1 2.5\n"
                         "OBJBCOORD\n3\nACOORD\n4\n0 0 1\n1 2 -1\n4 6 2\n2 1 1e3\nBCOORD\n2\n0 -3\n3 4\n";

/* A cut between sections, behind those that are needed, cannot be seen; one inside a section always is. */
TEST(Cbf, CutAtEveryByte)
{
    int num_taken = 0;
    const size_t needed = seed.find("INT");
    for (size_t size = 0; size <= seed.size(); size++) {
        const std::string cut(seed, 0, size);
        const int32_t res = fuzz_reader(cbf_read, cbf_write, cut.data(), cut.size());
        EXPECT_TRUE(res == good || res == wrong || res == unsupported) << res;
        if (res != good) continue;
        num_taken++;
        EXPECT_GE(size, needed - 1) << cut;
    }
    EXPECT_GE(num_taken, 7); /* whole sections, and the whole */
}

TEST(Cbf, BytesChanged)
{
    static const char changes[] = {'\0', ' ', '\n', '#', '9', '-', 'Q', '+', '\x80'};
    for (size_t at = 0; at < seed.size(); at++)
        for (const char change : changes) {
            std::string text = seed;
            text[at] = change;
            const int32_t res = fuzz_reader(cbf_read, cbf_write, text.data(), text.size());
            EXPECT_TRUE(res == good || res == wrong || res == unsupported) << res;
        }
}

/* ---- writing ---- */

std::string written(const model &m, std::string *log)
{
    const temp_folder folder;
    caught_io context(folder.file("w.cbf"));
    int32_t format = -1;
    EXPECT_EQ(problem_write(&context.io, &m, &format), good) << context.log;
    *log = context.log;
    return file_text(context.name);
}

model small_model()
{
    model m;
    model_append_vars(&m, 6);
    model_append_cons(&m, 4);
    m.sense = ZLR_SENSE_MAX;
    m.cfix = 0.1;
    m.c = {1.0, 0.0, -2.5, 0.0, 0.0, 1e-300};
    m.var_lower = {0.0, -model_inf, 2.0, -1.0, -model_inf, 0.0};
    m.var_upper = {1.0, 0.0, 2.0, model_inf, 7.0, 0.0};
    m.var_type[0] = ZLR_VAR_INT;
    m.con_lower = {1.0, -model_inf, 3.0, -model_inf};
    m.con_upper = {2.0, 4.0, 3.0, model_inf};
    for (int32_t j = 0; j < 6; j++) {
        const int32_t row[] = {j % 4};
        const double value[] = {1.0 + j};
        model_put_column(&m, j, 1, row, value);
    }
    return m;
}

TEST(Cbf, WritesBoundsAndRangesAsRows)
{
    const model m = small_model();
    std::string log;
    EXPECT_EQ(written(m, &log), "VER\n1\n\nOBJSENSE\nMAX\n\nVAR\n6 4\nL+ 1\nL- 1\nF 3\nL= 1\n\nINT\n1\n0\n\n"
                                "CON\n9 8\nL+ 1\nL- 1\nL= 1\nF 1\nL- 2\nL= 1\nL+ 1\nL- 1\n\n"
                                "OBJACOORD\n3\n0 1\n2 -2.5\n5 1e-300\n\nOBJBCOORD\n0.1\n\n"
                                "ACOORD\n12\n0 0 1\n4 0 1\n1 1 2\n2 2 3\n3 3 4\n0 4 5\n4 4 5\n1 5 6\n"
                                "5 0 1\n6 2 1\n7 3 1\n8 4 1\n\n"
                                "BCOORD\n8\n0 -1\n1 -4\n2 -3\n4 -2\n5 -1\n6 -2\n7 1\n8 -7\n");
    EXPECT_EQ(log, "");
}

TEST(Cbf, WritesConesWhereTheyStandAndOthersAsRows)
{
    model m;
    model_append_vars(&m, 7);
    for (size_t j = 0; j < 7; j++) m.var_lower[j] = -model_inf, m.var_upper[j] = model_inf;
    m.var_lower[1] = 0.0; /* of a head: part of the cone */
    m.var_upper[2] = 5.0;
    m.cones = {{ZLR_CT_RQUAD, {1, 2, 3}}, {ZLR_CT_QUAD, {6, 4}}};
    names_put(&m.var_names, 0, "flow");
    std::string log;
    EXPECT_EQ(written(m, &log), "VER\n1\n\nOBJSENSE\nMIN\n\nVAR\n7 3\nF 1\nQR 3\nF 3\n\nCON\n3 2\nL- 1\nQ 2\n\n"
                                "ACOORD\n3\n0 2 1\n1 6 1\n2 4 1\n\nBCOORD\n1\n0 -5\n");
    EXPECT_NE(log.find("the format holds no names"), std::string::npos) << log;
}

TEST(Cbf, WritesEmptyProblems)
{
    model none;
    model rows;
    model_append_cons(&rows, 1);
    std::string log;
    EXPECT_EQ(written(none, &log), "VER\n1\n\nOBJSENSE\nMIN\n\nVAR\n0 0\n");
    for (const model *m : {&none, &rows}) {
        caught_io context;
        model back;
        EXPECT_EQ(read_cbf(&context, written(*m, &log), &back), good) << context.log;
        EXPECT_EQ(shown(back), shown(*m));
    }
}
}  // namespace
