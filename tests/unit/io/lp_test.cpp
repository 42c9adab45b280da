/* lp_test.cpp - the LP reader and writer on small texts: what is read as what, what is refused where, what is written, and
 * damage of every kind. */
#include "lp_support.h"

#include <algorithm>

using namespace lp_support;

namespace
{
/* ---- texts that are read */

struct read_case {
    const char *name, *text, *model, *warning;
};

const read_case read_cases[] = {
    {"plain", "Minimize\n obj: x + 2 y\nSubject To\n c1: x + y >= 2\nEnd\n",
     "min 1x 2y | c1[2,inf]: 1x 1y | x[0,inf] y[0,inf]", ""},
    {"one line, named", "max 3x+y st c1:x+y<=1 c2:2x>=-3 bounds x<=4 y free end",
     "max 3x 1y | c1[-inf,1]: 1x 1y | c2[-3,inf]: 2x | x[0,4] y[-inf,inf]", ""},
    {"CR LF and comments", "\\ a\r\nmin\r\n x \\ b\r\ns.t.\r\n x\r\n >= \\ c\r\n 1\r\nend\r\n\\ d",
     "min 1x | c1[1,inf]: 1x | x[0,inf]", ""},
    {"byte order mark", "\xef\xbb\xbfmin x st x >= 1 end", "min 1x | c1[1,inf]: 1x | x[0,inf]", ""},
    {"constants move", "min 2 + x - 0.5 st c1: x + 3 - y <= 5 c2: 4 <= 1 + x end",
     "min 1x +1.5 | c1[-inf,2]: 1x -1y | c2[3,inf]: 1x | x[0,inf] y[0,inf]", ""},
    {"signs", "min + - x - - 2 y st c1: - x + - + 3 y >= - + 5 end",
     "min -1x 2y | c1[-5,inf]: -1x -3y | x[0,inf] y[0,inf]", ""},
    {"sums and cancellation", "min x + x st c1: x + 2 y + 3 x - 2 y >= 1 c2: y - y <= 0 end",
     "min 2x | c1[1,inf]: 4x | c2[-inf,0]: | x[0,inf] y[0,inf]", ""},
    {"coefficients below the drop tolerance", "min x st c1: x + 1e-13 y >= 1 end",
     "min 1x | c1[1,inf]: 1x | x[0,inf] y[0,inf]", ""},
    {"coefficients", "min 3x1 + .5e1 x2 + 2. x3 + 2 e1 + 3 * x1 st c: 2e1 <= 1e1x1 end",
     "min 6x1 5x2 2x3 2e1 | c[20,inf]: 10x1 | x1[0,inf] x2[0,inf] x3[0,inf] e1[0,inf]", ""},
    {"senses", "min x st a: x < 1 b: x =< 2 c: x <= 3 d: x > 4 e: x => 5 f: x >= 6 g: x = 7 end",
     "min 1x | a[-inf,1]: 1x | b[-inf,2]: 1x | c[-inf,3]: 1x | d[4,inf]: 1x | e[5,inf]: 1x | f[6,inf]: 1x | "
     "g[7,7]: 1x | x[0,inf]",
     ""},
    {"ranges", "min x st a: 1 <= x <= 2 b: 5 >= x + 1 >= -inf c: -1e30 <= x <= +infinity d: 3 = x e: 7 <= x <= 2 end",
     "min 1x | a[1,2]: 1x | b[-inf,4]: 1x | c[-inf,inf]: 1x | d[3,3]: 1x | e[7,2]: 1x | x[0,inf]", ""},
    {"unnamed rows on lines of their own", "min x st\n x + y <= 5\n2 x - y >= 0\n-x + y >= 0\n[x^2] <= 1\nend",
     "min 1x | c1[-inf,5]: 1x 1y | c2[0,inf]: 2x -1y | c3[0,inf]: -1x 1y | c4[-inf,1]: 2*x*x | x[0,inf] y[0,inf]", ""},
    {"generated names avoid given ones", "min x st\n x >= 1\n c1: x >= 2\n c3: x >= 3\n x >= 4\nend",
     "min 1x | c1_[1,inf]: 1x | c1[2,inf]: 1x | c3[3,inf]: 1x | c4[4,inf]: 1x | x[0,inf]", ""},
    {"empty rows", "min x st\n c1: >= -2\n c2: 0 >= -3\n c3: 0 x <= 4\n c4: 1 <= 2\nend",
     "min 1x | c1[-2,inf]: | c2[-3,inf]: | c3[-inf,4]: | c4[-inf,1]: | x[0,inf]", ""},
    {"reserved words as row names", "min x st\n end: x - 1 >= 2\n st: x <= 9\n bounds: x <= 8\nend",
     "min 1x | end[3,inf]: 1x | st[-inf,9]: 1x | bounds[-inf,8]: 1x | x[0,inf]", ""},
    {"no rows, no columns", "min obj: 3 end", "min +3 |", ""},
    {"empty objective", "max obj: subject to c: x <= 1 end", "max | c[-inf,1]: 1x | x[0,inf]", ""},
    {"quadratic", "min x + [ 2 x^2 - 3 x * y + 4 y ^ 2 ] / 2 + y st q: x + [ x^2 + 3 y * x ] - y <= 4 end",
     "min 1x 1y 2*x*x -1.5*y*x 4*y*y | q[-inf,4]: 1x -1y 2*x*x 3*y*x | x[0,inf] y[0,inf]", ""},
    {"quadratic objective as it stands", "min [ x^2 + x * y ] st end", "min 2*x*x 1*y*x | x[0,inf] y[0,inf]",
     "t.lp(1): warning: a quadratic part of the objective without '/ 2'"},
    {"quadratic row halved", "min x st q: - [ x^2 ]/2 >= -4 end", "min 1x | q[-4,inf]: -1*x*x | x[0,inf]",
     "with '/ 2' is halved"},
    {"product without a star", "min x st q: [ -2 x y + z z ] >= -4 end",
     "min 1x | q[-4,inf]: -2*y*x 2*z*z | x[0,inf] y[0,inf] z[0,inf]", "'x y' in brackets"},
    {"quadratic terms cancel", "min x st q: x + [ x * y - y * x ] >= 1 end",
     "min 1x | q[1,inf]: 1x | x[0,inf] y[0,inf]", ""},
    {"bounds of all forms",
     "min a + b + c + d + e + f + g bounds\n 1 <= a <= 2\n b >= -3\n -inf <= c\n d FREE\n 5 = e\n "
     "9 >= f >= -Infinity\n g <= 1e20 g >= 4\nend",
     "min 1a 1b 1c 1d 1e 1f 1g | a[1,2] b[-3,inf] c[-inf,inf] d[-inf,inf] e[5,5] f[-inf,9] g[4,inf]", ""},
    {"negative upper bound keeps the lower bound", "min x bounds x <= -3 end", "min 1x | x[0,-3]",
     "an upper bound below 0 leaves the lower bound at 0"},
    {"integers", "min x + y + z + b + f bounds f = 0 b <= 0.5 general\n x y\n binary b f\nend",
     "min 1x 1y 1z 1b 1f | x[0,inf]i y[0,inf]i z[0,inf] b[0,0.5]i f[0,0]i", ""},
    {"bounds behind a binary section win", "min x binaries x bounds x <= 7 end", "min 1x | x[0,7]i", ""},
    {"binary without a value", "min x bounds 2 <= x <= 5 bin x end", "min 1x | x[2,1]i", "leave neither 0 nor 1"},
    {"new columns in later sections", "min x bounds z <= 3 gen w end", "min 1x | x[0,inf] z[0,3] w[0,inf]i",
     "taken as empty columns (2 in all, first 'z')"},
    {"empty sections that hold nothing we lack", "min x st\nbounds\nbin\ngen\nsemi\nsos\nend\n", "min 1x | x[0,inf]",
     ""},
    {"names with odd characters", "min !a + x#1 + y(2,3) + _z + {q} + x.1e5 + u/2 + \xc3\xbc end",
     "min 1!a 1x#1 1y(2,3) 1_z 1{q} 1x.1e5 1u/2 1\xc3\xbc | !a[0,inf] x#1[0,inf] y(2,3)[0,inf] _z[0,inf] {q}[0,inf] "
     "x.1e5[0,inf] u/2[0,inf] \xc3\xbc[0,inf]",
     ""},
};

TEST(lp_read, texts)
{
    for (const read_case &c : read_cases) {
        SCOPED_TRACE(c.name);
        session s;
        model m;
        EXPECT_EQ(read_text(&s, c.text, &m), ZLR_RES_OK) << s.messages.errors;
        EXPECT_EQ(describe(&m), c.model);
        if (*c.warning == 0)
            EXPECT_EQ(s.messages.warnings, "");
        else
            EXPECT_NE(s.messages.warnings.find(c.warning), std::string::npos) << s.messages.warnings;
    }
}

TEST(lp_read, problem_name_comes_from_the_comment)
{
    session s;
    model m;
    ASSERT_EQ(read_text(&s, "\\ first\n\\Problem name: two words \r\nmin\n\\Problem name: late\n x end", &m),
              ZLR_RES_OK);
    EXPECT_EQ(m.name, "two words");
}

TEST(lp_read, infinity_is_the_parameter)
{
    session s;
    s.params.dou[DPAR_BOUND_INFINITE] = 1e5;
    model m;
    ASSERT_EQ(read_text(&s, "min x st c: x >= -1e5 d: x <= 99999 bounds x <= 1e6 end", &m), ZLR_RES_OK);
    EXPECT_EQ(describe(&m), "min 1x | c[-inf,inf]: 1x | d[-inf,99999]: 1x | x[0,inf]");
}

/* ---- texts that are refused */

struct error_case {
    const char *name, *text;
    int32_t code;
    const char *message; /* its beginning or middle */
};

constexpr int32_t bad = ZLR_RES_ERR_FILE_FORMAT;
constexpr int32_t lacking = ZLR_RES_ERR_FILE_UNSUPPORTED;

const error_case error_cases[] = {
    {"empty file", "", bad, "t.lp(1): found the end of the file where 'Minimize' or 'Maximize' was expected"},
    {"only comments", "\\ a\n\\ b\n\n", bad, "(4): found the end of the file where 'Minimize'"},
    {"no objective", "\nx + y\n", bad, "(2): found 'x' where 'Minimize' or 'Maximize'"},
    {"garbage", "\\^%(^%\ndvhf,x,^%(^%", bad, "(2): found 'dvhf,x,' where"},
    {"binary",
     "min x\n\x01"
     " st end",
     bad, "(2): found the byte 0x01"},
    {"no end", "min x st\n x >= 1\n", bad, "(3): found the end of the file where 'End' "},
    {"more behind the end", "min x end\nx", bad, "(2): found 'x' where nothing behind 'End'"},
    {"operator left over", "min x +\nst x >= 1 end", bad, "(2): found 'st' where a variable name or a number"},
    {"two names", "min x y st end", bad, "(1): found 'y' where '+', '-' or a section"},
    {"two numbers", "min 3 1x st end", bad, "found '1' where"},
    {"sense in the objective", "min x >= 3 st end", bad, "found '>=' where '+', '-' or a section"},
    {"infinite objective", "min inf st end", bad, "where a finite objective"},
    {"infinite coefficient", "min x st inf x >= 1 end", bad, "found 'x' where"},
    {"square without brackets", "min x^2 st end", bad, "found '^' where"},
    {"product without brackets", "min x * y st end", bad, "found '*' where"},
    {"cube", "min [ x^3 ] / 2 st end", bad, "found '3' where the exponent 2"},
    {"linear term in brackets", "min [ x + y^2 ] / 2 st end", bad, "found '+' where '^ 2' or '*'"},
    {"brackets open", "min [ x^2 st end", bad, "found 'st' where '+', '-' or ']'"},
    {"brackets divided", "min [ x^2 ] / 3 st end", bad, "found '3' where '2' behind ']/'"},
    {"factor before brackets", "min 2 [ x^2 ] / 2 st end", bad, "found '[' where"},
    {"no sense", "min x st\n c1: x + y\n c2: x >= 1\nend", bad, "(3): found 'c2' where '+', '-', '<=', '>=' or '='"},
    {"no right-hand side", "min x st\n c1: x >=\nend", bad, "(3): found 'end' where a number"},
    {"variable on the right", "min x st\n c1: x >= y\nend", bad, "(2): found 'y' where a number"},
    {"sum on the right", "min x st\n c1: x >= 2 + y\nend", bad, "(2): found '+' where the end of the constraint"},
    {"term on the right", "min x st\n c1: x >= 2 y\nend", bad, "(2): found 'y' where the end of the constraint"},
    {"range from the right", "min x st c1: x >= 2 <= 3 end", bad, "found '<=' where the next constraint (a range"},
    {"range of two senses", "min x st c1: 1 <= x >= 2 end", bad, "found '>=' where '<=' as on the left"},
    {"range of an equation", "min x st c1: 1 = x = 2 end", bad, "found '=' where the next constraint"},
    {"double equal sign", "min x st c1: x == 2 end", bad, "found '=' where a number"},
    {"row that nothing meets", "min x st c1: x >= inf end", bad, "a constraint that a finite activity can meet"},
    {"infinite equation", "min x st c1: x = -1e30 end", bad, "a constraint that a finite activity can meet"},
    {"infinite term", "min x st c1: x + inf >= 1 end", bad, "found 'inf' where"},
    {"row name twice", "min x st c1: x >= 1\n c1: x >= 2 end", bad,
     "(2): found 'c1' where a row name that does not occur"},
    {"number too large", "min x st c1: x >= 1e400 end", bad, "found '1e400' where a number in the range"},
    {"coefficient too large", "min 1e309 x end", bad, "found '1e309' where a number in the range"},
    {"not a number", "min x st c1: x >= nan end", bad, "found 'nan' where a number"},
    {"second label", "min o: x p: y st end", bad, "found 'p' where"},
    {"bound without a number", "min x bounds\n x <=\n y <= 3\nend", bad, "(3): found 'y' where a number"},
    {"bound with a coefficient", "min x bounds 2 x <= 3 end", bad, "found 'x' where '<=', '>=' or '='"},
    {"bound without a sense", "min x bounds x 3 end", bad, "found '3' where '<=', '>=', '=' or 'free'"},
    {"bound of two senses", "min x bounds 1 <= x >= 2 end", bad, "found '>=' where the same sense"},
    {"bound that nothing meets", "min x bounds x >= inf end", bad, "a bound that a finite value can meet"},
    {"number among integers", "min x general x 3 end", bad, "found '3' where a variable name"},
    {"name that is no UTF-8", "min x + \xc3( end", bad, "where a name in UTF-8"},
    {"point alone", "min x + . end", bad, "found '.' where a variable name or a number"},
    {"special ordered sets", "min x st\nsos\n s1: S1:: x:1\nend", lacking, "(3): the section 'SOS' is not supported"},
    {"special ordered sets by number", "min x st\nsos2\n s1: x:1\nend", lacking, "(3): the section 'SOS2'"},
    {"semi-continuous", "min x st\nSemi-Continuous\n x\nend", lacking, "(3): the section 'Semi-Continuous'"},
    {"general constraints", "min x st\nGeneral Constraints\n g: x = MAX(y)\nend", lacking, "'General Constraints'"},
    {"lazy constraints", "min x st\nLazy Constraints\n l: x >= 1\nend", lacking, "'Lazy Constraints'"},
    {"user cuts", "min x st\nUSER CUTS\n l: x >= 1\nend", lacking, "'User Cuts'"},
    {"indicator", "min x st\n c: b = 1 -> x <= 2\nend", lacking, "(2): found '->': indicator constraints"},
    {"several objectives", "min multi-objectives\n o1: x\nst end", lacking, "several objectives"},
};

TEST(lp_read, errors)
{
    for (const error_case &c : error_cases) {
        SCOPED_TRACE(c.name);
        session s;
        model m;
        EXPECT_EQ(read_text(&s, c.text, &m), c.code);
        EXPECT_NE(s.messages.errors.find(c.message), std::string::npos) << s.messages.errors;
        EXPECT_EQ(std::count(s.messages.errors.begin(), s.messages.errors.end(), '\n'), 1) << s.messages.errors;
    }
}

TEST(lp_read, long_names_and_numbers)
{
    const std::string name(255, 'n');
    session s;
    model m;
    EXPECT_EQ(read_text(&s, "min " + name + " st " + name + ": " + name + ">= 1 end", &m), ZLR_RES_OK);
    for (const std::string &text :
         {"min a" + name, "min x st b" + name + ": x >= 1", "min " + std::string(500, '1') + " x"}) {
        model other;
        s.messages = {};
        EXPECT_EQ(read_text(&s, text + " end", &other), ZLR_RES_ERR_FILE_FORMAT);
        EXPECT_NE(s.messages.errors.find("was expected"), std::string::npos);
    }
}

/* ---- damage, and blocks of bytes */

const char whole_text[] = "\\Problem name: all\nMaximize\n obj: 2.5 x - 3e-2 y + [ x ^ 2 - 2 x * y ] / 2 + 7\n"
                          "Subject To\n c1: x + y <= 10\n -4 <= x - z <= 1e+2\n q: [ y^2 ] + z >= -inf\n e: 0 x = 0\n"
                          "Bounds\n -inf <= x <= 4\n y free\n z >= 1.5\nGenerals\n x\nBinary\n b\nEnd\n";

TEST(lp_damage, a_cut_anywhere_is_an_error)
{
    const std::string_view text = whole_text;
    for (size_t size = 0; size < text.size() - 1; size++) {
        SCOPED_TRACE(size);
        session s;
        model m;
        EXPECT_EQ(read_text(&s, text.substr(0, size), &m), ZLR_RES_ERR_FILE_FORMAT);
        EXPECT_NE(s.messages.errors, "");
    }
}

TEST(lp_damage, any_byte_changed_is_read_or_refused_with_a_message)
{
    for (size_t at = 0; at + 1 < sizeof whole_text; at++) {
        for (const char c : {'\0', '\xff', '+', '9', 'e', ' ', '<', '[', ':', '\n', '\\', '.'}) {
            std::string text = whole_text;
            text[at] = c;
            session s;
            model m;
            const int32_t res = read_text(&s, text, &m);
            if (res == ZLR_RES_OK) {
                EXPECT_EQ(m.a.start.size(), static_cast<size_t>(m.num_var) + 1);
                EXPECT_EQ(s.messages.errors, "");
            } else {
                EXPECT_TRUE(res == ZLR_RES_ERR_FILE_FORMAT || res == ZLR_RES_ERR_FILE_UNSUPPORTED) << res;
                EXPECT_NE(s.messages.errors, "");
            }
        }
    }
}

/* Words that cross the end of a block read as those that do not, wherever they are cut. */
TEST(lp_damage, blocks_cut_words_anywhere)
{
    session s;
    model expected;
    ASSERT_EQ(read_text(&s, whole_text, &expected), ZLR_RES_OK);
    for (size_t shift = 0; shift < sizeof whole_text + 8; shift++) {
        SCOPED_TRACE(shift);
        /* Blanks for one half, a comment for the other: both must carry on over a block. */
        const size_t pad = size_t{256} * 1024 - shift;
        std::string text(pad, ' ');
        if (shift % 2 == 1) text[0] = '\\', text[pad - 1] = '\n';
        model m;
        ASSERT_EQ(read_text(&s, text + whole_text, &m), ZLR_RES_OK) << s.messages.errors;
        EXPECT_EQ(difference(&expected, &m, true), "");
    }
}

TEST(lp_damage, one_line_of_many_blocks)
{
    std::string text = "min x0 st c:";
    for (int j = 0; j < 100000; j++) text += " + " + std::to_string(j % 7 + 1) + " x" + std::to_string(j % 50000);
    session s;
    model m;
    ASSERT_EQ(read_text(&s, text + " <= 1 end", &m), ZLR_RES_OK) << s.messages.errors;
    ASSERT_EQ(m.num_var, 50000);
    ASSERT_EQ(m.a.row.size(), 50000U);
    for (size_t j = 0; j < 50000; j++)
        ASSERT_EQ(m.a.value[j], static_cast<double>(j % 7 + 1 + (j + 50000) % 7 + 1)) << j;
}

/* ---- writing */

TEST(lp_write, text)
{
    session s;
    model m;
    ASSERT_EQ(read_text(&s, whole_text, &m), ZLR_RES_OK);
    EXPECT_EQ(written(&s, &m), "\\Problem name: all\n"
                               "Maximize\n"
                               " obj: 2.5 x - 0.03 y + 0 z + 0 b + [ x ^ 2 - 2 x * y ] / 2 + 7\n"
                               "Subject To\n"
                               " c1: x + y <= 10\n"
                               " c2: -4 <= x - z <= 100\n"
                               " q: z + [ y ^ 2 ] >= -1e+30\n"
                               " e: 0 x = 0\n"
                               "Bounds\n"
                               " -inf <= x <= 4\n"
                               " y free\n"
                               " z >= 1.5\n"
                               "General\n"
                               " x\n"
                               "Binary\n"
                               " b\n"
                               "End\n");
}

/* Texts whose models are hard to write. Each must come back to the bit, names and order of columns included. */
const struct {
    const char *name, *text;
} hard_models[] = {
    {"empty", "min end"},
    {"constant only", "max 0 - 3.25 end"},
    {"rows without columns", "min st c: >= 1 d: <= 2 end"},
    {"empty columns", "min x bounds y <= 3 z free general w binary b end"},
    {"order of columns", "min 0 c + 0 b + 0 a + d st r: a + d >= 1 s: c + b <= 4 end"},
    {"order of columns in quadratic parts", "min 0 c + 0 b + 0 a st q: [ a^2 + b * c ] <= 1 end"},
    {"column in the objective alone, late", "min 0 a + 0 b + z st r: b + a >= 1 end"},
    {"free, empty and crossed rows", "min x st f: x + y >= -inf e: 0 x = 3 g: 0 x >= -inf h: 5 <= x <= 3 end"},
    {"crossed and fixed bounds", "min x + y + z bounds 4 <= x <= 2 y = -0.1 0 <= z <= -3 end"},
    {"signs of zero", "min x + y bounds x = -0 -0 <= y <= 1 general y end"},
    {"digits",
     "min 0.1 x + 1e-300 y + 123456789.12345678 z st c: 0.30000000000000004 x - 5e-324 y <= 1.7976931348623157e308 end"},
    {"integers with bounds", "min x + y + z general x y z bounds 0 <= x <= 2 1 <= y <= 1 -inf <= z <= 1 end"},
    {"quadratic parts alone",
     "max [ - x^2 + 3 y * x - 0.1 y^2 ] / 2 st q: [ 0.1 x^2 ] <= 1 r: -1 <= [ x * y ] <= 1 end"},
    {"names that look alike", "min obj + e + E2x st obj: obj >= 1 e1: e1a + obj >= 2 end"},
};

TEST(lp_write, hard_models_come_back)
{
    for (const auto &c : hard_models) {
        SCOPED_TRACE(c.name);
        session s;
        model m;
        model back;
        ASSERT_EQ(read_text(&s, c.text, &m), ZLR_RES_OK) << s.messages.errors;
        const std::string text = written(&s, &m);
        s.messages = {};
        ASSERT_EQ(read_text(&s, text, &back), ZLR_RES_OK) << s.messages.errors << text;
        /* Names that other readers take for numbers are replaced; the reader itself has no trouble with them. */
        const bool renamed = std::strcmp(c.name, "names that look alike") == 0;
        EXPECT_EQ(difference(&m, &back, !renamed), "") << text;
    }
}

TEST(lp_write, lines_stay_below_80_columns)
{
    session s;
    model m;
    std::string source = "min x st c:";
    for (int j = 0; j < 300; j++) source += " + 1." + std::to_string(j) + " some_long_name_" + std::to_string(j * j);
    source += " <= 3 general";
    for (int j = 0; j < 300; j++) source += " some_long_name_" + std::to_string(j * j);
    ASSERT_EQ(read_text(&s, source + " end", &m), ZLR_RES_OK);
    std::istringstream lines(written(&s, &m));
    for (std::string line; std::getline(lines, line);) EXPECT_LT(line.size(), 80U) << line;
}

TEST(lp_write, names_that_cannot_stand_are_replaced)
{
    const char *const names[] = {"a b",  "3x",  ".x", "",    "e5", "St", "free",    "inf",
                                 "x[1]", "x:y", "x2", "a/b", "ok", "ok", "\xc3\xbc"};
    const auto num = static_cast<int32_t>(std::size(names));
    model m;
    model_append_vars(&m, num);
    model_append_cons(&m, num);
    for (int32_t j = 0; j < num; j++) {
        names_put(&m.var_names, j, names[j]);
        names_put(&m.con_names, j, names[j]);
    }
    m.obj_name = "the objective";
    session s;
    const std::string text = written(&s, &m);
    EXPECT_NE(s.messages.warnings.find(
                  "12 names of variables cannot stand in an LP file and were replaced, the first, 'a b', by 'x1'"),
              std::string::npos)
        << s.messages.warnings;
    EXPECT_NE(s.messages.warnings.find("11 names of constraints"), std::string::npos) << s.messages.warnings;

    model back;
    ASSERT_EQ(read_text(&s, text, &back), ZLR_RES_OK) << s.messages.errors;
    EXPECT_EQ(difference(&m, &back, false), "");
    EXPECT_EQ(names_get(&back.var_names, 1), "x2_") << "x2 is the name of another";
    EXPECT_EQ(names_get(&back.var_names, 10), "x2");
    EXPECT_EQ(names_get(&back.var_names, 12), "ok");
    EXPECT_EQ(names_get(&back.con_names, 4), "e5") << "before a colon it is no number";
    EXPECT_EQ(back.obj_name, "obj");
}

TEST(lp_write, ranges_split_on_request)
{
    session s;
    model m;
    s.params.integer[IPAR_WRITE_LP_RANGES] = LP_RANGES_SPLIT;
    ASSERT_EQ(read_text(&s, "min x st c: 1 <= x + y <= 2 c_up: 3 <= y <= 4 e: 5 = x end", &m), ZLR_RES_OK);
    model back;
    ASSERT_EQ(read_text(&s, written(&s, &m), &back), ZLR_RES_OK);
    EXPECT_EQ(describe(&back),
              "min 1x | c[1,inf]: 1x 1y | c_up_[-inf,2]: 1x 1y | c_up[3,inf]: 1y | c_up_up[-inf,4]: 1y | "
              "e[5,5]: 1x | x[0,inf] y[0,inf]");
}

TEST(lp_write, a_full_disk_is_told)
{
    session s;
    model m;
    ASSERT_EQ(read_text(&s, whole_text, &m), ZLR_RES_OK);
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no /dev/full";
    EXPECT_EQ(write_file(&s, &m, "/dev/full"), ZLR_RES_ERR_FILE_WRITE);
}
}  // namespace
