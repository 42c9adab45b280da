/* The MPS reader and writer on small texts: what they make of each construct, and what they say of each fault. */
#include "mps_support.h"
#include "support/sys.h"

#include <algorithm>

using namespace test_mps;

namespace
{
struct good_case {
    const char *name;
    const char *text;
    const char *shown;
    const char *message; /* a part of the messages; null: there is none */
};

#define HEAD "NAME t\nROWS\n N obj\n L a\n G b\n E c\nCOLUMNS\n x obj 1 a 2\n x b 3 c 4\n"
#define BODY "[0,inf] 1 a:2 b:3 c:4"
#define ROWS "min 0 | a [-inf,0] | b [0,inf] | c [0,0] | "

const good_case good_cases[] = {
    {"plain", HEAD "ENDATA\n", ROWS "x " BODY, nullptr},
    {"no newline at the end", HEAD "ENDATA", ROWS "x " BODY, nullptr},
    {"byte order mark", "\xef\xbb\xbf" HEAD "ENDATA\n", ROWS "x " BODY, nullptr},
    {"CR LF, tabs, comments", "* c\r\nROWS\r\n\tN\tobj\r\n\r\n*\r\nCOLUMNS\r\n\tx\tobj\t1\t$ c\r\nENDATA\r\n",
     "min 0 | x [0,inf] 1", nullptr},
    {"comment behind rows and data",
     "ROWS\n N obj $c\n L a *c\nCOLUMNS\n x obj 1 *c\n x a 2 $ c c\nRHS\n a 3 *c\nBOUNDS\n UP x 4 $c\nENDATA\n",
     "min 0 | a [-inf,3] | x [0,4] 1 a:2", nullptr},
    {"row names like comments", "ROWS\n N obj\n L $a\n L *b\nCOLUMNS\n x $a 1 *b 2\nENDATA\n",
     "min 0 | $a [-inf,0] | *b [-inf,0] | x [0,inf] 0 $a:1 *b:2", nullptr},
    {"no name, no vectors", "ROWS\n N obj\nCOLUMNS\nENDATA\n", "min 0", nullptr},
    {"no objective", "ROWS\n L a\nCOLUMNS\n x a 1\nENDATA\n", "min 0 | a [-inf,0] | x [0,inf] 0 a:1",
     "the objective is 0"},
    {"maximise, next line", "OBJSENSE\n    MAX\n" HEAD "ENDATA\n", "max 0 | a [-inf,0] | b [0,inf] | c [0,0] | x " BODY,
     nullptr},
    {"maximise, same line, at the end", HEAD "OBJSENSE maximize\nENDATA\n",
     "max 0 | a [-inf,0] | b [0,inf] | c [0,0] | x " BODY, nullptr},
    {"maximise, first column", "OBJSENSE\nMAX\n" HEAD "ENDATA\n", "max 0 | a [-inf,0] | b [0,inf] | c [0,0] | x " BODY,
     nullptr},
    {"objective constant", HEAD "RHS\n RHS obj 5 a 6\nENDATA\n", "min -5 | a [-inf,6] | b [0,inf] | c [0,0] | x " BODY,
     nullptr},
    {"right-hand sides without a set", HEAD "RHS\n a 5 b 6\n c 7\nENDATA\n",
     "min 0 | a [-inf,5] | b [6,inf] | c [7,7] | x " BODY, nullptr},
    {"first set of right-hand sides", HEAD "RHS\n one a 5\n two a 6 b 7\nENDATA\n",
     "min 0 | a [-inf,5] | b [0,inf] | c [0,0] | x " BODY, "'one' are taken, and those of 'two'"},
    {"infinite right-hand side", HEAD "RHS\n R a 1e30 b -1e30\nENDATA\n",
     "min 0 | a [-inf,inf] | b [-inf,inf] | c [0,0] | x " BODY, nullptr},
    {"ranges before right-hand sides", HEAD "RANGES\n R a 4 b -4\n R c 4\nRHS\n R a 10 b 10\n R c 10\nENDATA\n",
     "min 0 | a [6,10] | b [10,14] | c [10,14] | x " BODY, nullptr},
    {"negative range of an equation", HEAD "RHS\n R c 10\nRANGES\n R c -4 a 0\nENDATA\n",
     "min 0 | a [0,0] | b [0,inf] | c [6,10] | x " BODY, nullptr},
    {"free rows", "ROWS\n N obj\n L a\n N free\nCOLUMNS\n x free 2 obj 1\nRHS\n R free 3\nENDATA\n",
     "min 0 | a [-inf,0] | free [-inf,inf] | x [0,inf] 1 free:2", "'free' is a free row"},
    {"objective chosen", "OBJNAME\n second\nROWS\n N first\n N second\nCOLUMNS\n x first 1 second 2\nENDATA\n",
     "min 0 | first [-inf,inf] | x [0,inf] 2 first:1", nullptr},
    {"all bounds",
     "ROWS\n N o\nCOLUMNS\n a o 1\n b o 1\n c o 1\n d o 1\n e o 1\n f o 1\n g o 1\n h o 1\n i o 1\nBOUNDS\n"
     " UP B a 4\n LO B b -4\n FX B c 4\n FR B d\n MI B e\n PL B f\n BV B g\n LI B h 2\n UI B i 3\nENDATA\n",
     "min 0 | a [0,4] 1 | b [-4,inf] 1 | c [4,4] 1 | d [-inf,inf] 1 | e [-inf,inf] 1 | f [0,inf] 1 | int g [0,1] 1 "
     "| int h [2,inf] 1 | int i [0,3] 1",
     nullptr},
    {"bounds without a set, and with needless values", HEAD " y a 1\n z a 1\nBOUNDS\n UP x 4\n FR y\n BV z 1\nENDATA\n",
     "min 0 | a [-inf,0] | b [0,inf] | c [0,0] | x [0,4] 1 a:2 b:3 c:4 | y [-inf,inf] 0 a:1 | int z [0,1] 0 a:1",
     nullptr},
    {"a column named like the set", HEAD " B a 1\nBOUNDS\n FR B x\n UP B B 3\nENDATA\n",
     "min 0 | a [-inf,0] | b [0,inf] | c [0,0] | x [-inf,inf] 1 a:2 b:3 c:4 | B [0,3] 0 a:1", nullptr},
    {"a value without effect", HEAD "BOUNDS\n PL B x 3\nENDATA\n", ROWS "x " BODY, "the value has no effect"},
    {"infinite bounds", HEAD "BOUNDS\n LO B x -1e16\n UP B x Inf\nENDATA\n", ROWS "x [-inf,inf] 1 a:2 b:3 c:4",
     nullptr},
    {"large but finite bound", HEAD "BOUNDS\n UP B x 9e15\nENDATA\n", ROWS "x [0,9000000000000000] 1 a:2 b:3 c:4",
     nullptr},
    {"negative upper bound", HEAD "BOUNDS\n UP B x -2\nENDATA\n", ROWS "x [-inf,-2] 1 a:2 b:3 c:4",
     "t.mps(11): warning: 'x' has a negative upper bound"},
    {"negative upper bound with a lower one", HEAD "BOUNDS\n LO B x 0\n UP B x -2\nENDATA\n",
     ROWS "x [0,-2] 1 a:2 b:3 c:4", nullptr},
    {"bound given twice", HEAD "BOUNDS\n UP B x 2\n UP B x 3\nENDATA\n", ROWS "x [0,3] 1 a:2 b:3 c:4",
     "t.mps(12): warning: 'x' has a bound that is given again"},
    {"first set of bounds", HEAD "BOUNDS\n UP B x 2\n UP C x 3\nENDATA\n", ROWS "x [0,2] 1 a:2 b:3 c:4",
     "those of 'C'"},
    {"integer markers",
     "ROWS\n N o\nCOLUMNS\n x o 1\n M 'MARKER' 'INTORG'\n y o 1\n z o 1\n M 'MARKER' 'INTEND'\n w o 1\n"
     "BOUNDS\n PL B z\nENDATA\n",
     "min 0 | x [0,inf] 1 | int y [0,1] 1 | int z [0,inf] 1 | w [0,inf] 1", "1 integer columns have no bounds"},
    {"integers that a lower bound opens",
     "ROWS\n N o\nCOLUMNS\n M 'MARKER' 'INTORG'\n y o 1\nBOUNDS\n LO B y 2\nENDATA\n", "min 0 | int y [2,inf] 1",
     nullptr},
    {"numbers", "ROWS\n N o\n L a\nCOLUMNS\n w o 1d2\n x o +.5\n y o 1.E-3 a -1D+01\n z o 0 a 1e-13\nENDATA\n",
     "min 0 | a [-inf,0] | w [0,inf] 100 | x [0,inf] 0.5 | y [0,inf] 0.001 a:-10 | z [0,inf] 0", nullptr},
    {"column in two places", "ROWS\n N o\n L a\nCOLUMNS\n x o 1\n y a 2\n x a 3\n z a 4\nENDATA\n",
     "min 0 | a [-inf,0] | x [0,inf] 1 a:3 | y [0,inf] 0 a:2 | z [0,inf] 0 a:4",
     "t.mps(7): warning: 'x' stands in more"},
    {"line without a column", "ROWS\n N o\n L a\n L b\nCOLUMNS\n x o 1\n a 2 b 3\nENDATA\n",
     "min 0 | a [-inf,0] | b [-inf,0] | x [0,inf] 1 a:2 b:3", nullptr},
    {"the same entry again", "ROWS\n N o\n L a\nCOLUMNS\n x o 1 a 2\n x a 2\nENDATA\n",
     "min 0 | a [-inf,0] | x [0,inf] 1 a:2", "counts once"},
    {"names like sections", "ROWS\n N COST\n L RHS\nCOLUMNS\n RHS RHS 1\n ENDATA COST 2\nRHS\n RHS RHS 3\nENDATA\n",
     "min 0 | RHS [-inf,3] | RHS [0,inf] 0 RHS:1 | ENDATA [0,inf] 2", nullptr},
    {"QUADOBJ, either triangle", "ROWS\n N o\nCOLUMNS\n x o 1\n y o 1\nQUADOBJ\n x x 2\n x y 3\n y y 4\nENDATA\n",
     "min 0 | x [0,inf] 1 | y [0,inf] 1 | q0,0:2 | q1,0:3 | q1,1:4", nullptr},
    {"QUADOBJ adds up",
     "ROWS\n N o\nCOLUMNS\n x o 1\n y o 1\n z o 1\nQSECTION\n x y 3\n y x 4\n z x 2\n x x 1\n x x -1\nENDATA\n",
     "min 0 | x [0,inf] 1 | y [0,inf] 1 | z [0,inf] 1 | q1,0:7 | q2,0:2",
     "t.mps(12): warning: 'x' has a quadratic entry that stands more than once: the values are added up.\n"
     "t.mps(9): warning: 'y' has a quadratic entry in both triangles of a section that holds one: the values are added "
     "up."},
    {"QMATRIX", "ROWS\n N o\nCOLUMNS\n x o 1\n y o 1\nQMATRIX\n x x 2\n x y 3\n y x 3\nENDATA\n",
     "min 0 | x [0,inf] 1 | y [0,inf] 1 | q0,0:2 | q1,0:3", nullptr},
    {"quadratic rows, in any order",
     "ROWS\n N o\n L a\n G b\nCOLUMNS\n x o 1\n y o 1\nQCMATRIX b\n x y 3\n y x 3\nQSECTION a\n y y 2\nENDATA\n",
     "min 0 | a [-inf,0] | b [0,inf] | x [0,inf] 1 | y [0,inf] 1 | q0:1,1:2 | q1:1,0:6", nullptr},
    {"no ENDATA behind whole right-hand sides", HEAD "RHS\n R a 5\n",
     "min 0 | a [-inf,5] | b [0,inf] | c [0,0] | x " BODY,
     "t.mps(11): warning: found the end of the file where ENDATA was expected"},
    {"text behind the end", HEAD "ENDATA\nmore\n", ROWS "x " BODY, "t.mps(11): warning: what stands behind ENDATA"},
    {"fixed format, blanks in names",
     "NAME          fixed\nROWS\n N  COST\n L  MY ROW\n E  B 1\nCOLUMNS\n"
     "    X 1       COST               1.0   MY ROW             2.0\n"
     "    X 1       B 1               -3.0\n    X 2       B 1                4.0\nRHS\n"
     "    RHS 1     MY ROW             9.0\nRANGES\n              MY ROW             5.0\nBOUNDS\n"
     " UP BND 1     X 1                4.0\n FR BND 1     X 2\nENDATA\n",
     "min 0 | MY ROW [4,9] | B 1 [0,0] | X 1 [0,4] 1 MY ROW:2 B 1:-3 | X 2 [-inf,inf] 0 B 1:4",
     "t.mps(4): fixed MPS format, with blanks in names"},
    {"fixed format, blanks in columns alone",
     "ROWS\n N  COST\n L  ROW\nCOLUMNS\n    A 1 2     COST               1.0   ROW                2.0\nRHS\n"
     "    R 1       ROW                5.0\nENDATA\n",
     "min 0 | ROW [-inf,5] | A 1 2 [0,inf] 1 ROW:2", "t.mps(5): fixed MPS format"},
};

TEST(MpsRead, Good)
{
    for (const good_case &c : good_cases) {
        SCOPED_TRACE(c.name);
        caught_io context;
        model m;
        EXPECT_EQ(read_text(&context, c.text, &m), ZLR_RES_OK) << context.log;
        EXPECT_EQ(shown(m), c.shown);
        if (c.message == nullptr)
            EXPECT_EQ(context.log, "");
        else
            EXPECT_NE(context.log.find(c.message), std::string::npos) << context.log;
    }
}

struct bad_case {
    const char *name;
    const char *text;
    int32_t code;
    const char *message; /* where, and a part of what is said */
};

constexpr int32_t wrong = ZLR_RES_ERR_FILE_FORMAT;
constexpr int32_t unsupported = ZLR_RES_ERR_FILE_UNSUPPORTED;

const bad_case bad_cases[] = {
    {"empty", "", wrong, "t.mps: the file is empty"},
    {"comments only", "* a\n* b\n", wrong, "t.mps(2): found the end of the file where a section"},
    {"cut", HEAD "RHS\n R a 1", wrong, "t.mps(11): found the end of the file in the section RHS where ENDATA"},
    {"binary", "NAME t\nROWS\n N \0obj\n", wrong, "t.mps(3): found a zero byte"},
    {"data before a section", " N obj\n", wrong, "t.mps(1): found 'obj' where the name of a section"},
    {"unknown section", HEAD "EXTRA\n", wrong, "t.mps(10): found 'EXTRA' where the name of a section"},
    {"section too early", "NAME\nCOLUMNS\n", wrong, "t.mps(2): found COLUMNS where the section ROWS"},
    {"section twice", HEAD "RHS\nRHS\n", wrong, "t.mps(11): the section RHS stands twice"},
    {"words behind a section", HEAD "RHS R a 5\n", wrong, "t.mps(10): found 'R' behind the name of the section RHS"},
    {"name too late", HEAD "NAME x\n", wrong, "t.mps(10): found NAME behind"},
    {"no columns", "ROWS\n N o\nENDATA\n", wrong, "t.mps(3): found ENDATA where the section COLUMNS"},
    {"row type", "ROWS\n X a\n", wrong, "t.mps(2): found 'X' where a row type"},
    {"row without a name", "ROWS\n N\n", wrong, "t.mps(2): found the end of the line where the name of a row"},
    {"row twice", "ROWS\n N o\n L a\n L a\n", wrong, "t.mps(4): there is a row 'a' already"},
    {"row like the objective", "ROWS\n N o\n L o\n", wrong, "t.mps(3): there is a row 'o' already"},
    {"text behind a row", "ROWS\n N o\n L a b\n", wrong, "t.mps(3): found 'b' behind the name of a row"},
    {"chosen objective missing", "OBJNAME\n p\nROWS\n N o\nCOLUMNS\n", wrong,
     "t.mps(3): no row of type N has the name 'p'"},
    {"unknown row", "ROWS\n N o\nCOLUMNS\n x a 1\n", wrong, "t.mps(4): found 'a' where the name of a row"},
    {"no number", "ROWS\n N o\nCOLUMNS\n x o\n", wrong, "t.mps(4): found the end of the line where a number"},
    {"no second number", HEAD " y a 1 b\n", wrong, "t.mps(10): found 'a' where a number"},
    {"bad number", HEAD " y a 1.2.3\n", wrong, "t.mps(10): found '1.2.3' where a number"},
    {"hexadecimal", HEAD " y a 0x10\n", wrong, "t.mps(10): found '0x10' where a number"},
    {"NaN", HEAD " y a nan\n", wrong, "t.mps(10): found 'nan' where a number"},
    {"too large", HEAD " y a 1e400\n", wrong, "t.mps(10): found '1e400' where a number"},
    {"infinite coefficient", HEAD " y a inf\n", wrong, "t.mps(10): found an infinite coefficient"},
    {"too many fields", HEAD " y a 1 b 2 c 3\n", wrong, "t.mps(10): found 'c' where the end of the line"},
    {"entry twice", HEAD " x a 3\n", wrong, "t.mps(10): the column 'x' has an entry in the row 'a' already"},
    {"entry twice in a line", HEAD " y a 1 a 1\n", wrong, "t.mps(10): the column 'y' has an entry in the row 'a'"},
    {"objective twice", HEAD " x obj 3\n", wrong, "t.mps(10): the column 'x' has an entry in the row 'obj'"},
    {"entry twice in two places", HEAD " y a 1\n x a 2\nRHS\n", wrong, "t.mps(11): the column 'x' has an entry"},
    {"unknown marker", HEAD " M 'MARKER' 'INT'\n", wrong, "t.mps(10): found ''INT'' where 'INTORG'"},
    {"marker that ends nothing", HEAD " M 'MARKER' 'INTEND'\n", wrong, "t.mps(10): found 'INTEND'"},
    {"integer and not", HEAD " M 'MARKER' 'INTORG'\n x a 1\n", wrong, "t.mps(11): the column 'x' stands inside"},
    {"ordered sets", HEAD " M 'MARKER' 'SOSORG'\n", unsupported, "t.mps(10): special ordered sets"},
    {"right-hand side twice", HEAD "RHS\n R a 1\n R a 1\n", wrong, "t.mps(12): the row 'a' has a right-hand side"},
    {"right-hand side of nothing", HEAD "RHS\n R d 1\n", wrong, "t.mps(11): found 'd' where the name of a row"},
    {"impossible right-hand side", HEAD "RHS\n R a -1e30\n", wrong, "t.mps(11): found an infinite right-hand side"},
    {"range twice", HEAD "RANGES\n R a 1\n R b 1 a 2\n", wrong, "t.mps(12): the row 'a' has a range already"},
    {"bound type", HEAD "BOUNDS\n XX B x 1\n", wrong, "t.mps(11): found 'XX' where a bound type"},
    {"bound of nothing", HEAD "BOUNDS\n UP B y 1\n", wrong, "t.mps(11): found 'y' where the name of a column"},
    {"bound without a number", HEAD "BOUNDS\n UP x\n", wrong, "t.mps(11): found the end of the line where a number"},
    {"bound with a bad number", HEAD "BOUNDS\n UP B x y\n", wrong, "t.mps(11): found 'y' where a number"},
    {"lower bound infinite", HEAD "BOUNDS\n LO B x 1e30\n", wrong, "t.mps(11): found '1e30', which is infinite"},
    {"fixed at infinity", HEAD "BOUNDS\n FX B x -inf\n", wrong, "t.mps(11): found '-inf', which is infinite"},
    {"semi-continuous", HEAD "BOUNDS\n SC B x 4\n", unsupported, "t.mps(11): found the bound type 'SC': semi-cont"},
    {"semi-integer", HEAD "BOUNDS\n SI B x 4\n", unsupported, "t.mps(11): found the bound type 'SI': semi-cont"},
    {"section of another system", HEAD "SOS\n", unsupported, "t.mps(10): the section SOS is not supported"},
    {"indicators", HEAD "INDICATORS\n", unsupported, "t.mps(10): the section INDICATORS is not"},
    {"sense", "OBJSENSE\n UP\n", wrong, "t.mps(2): found 'UP' where MAX or MIN"},
    {"sense twice", "OBJSENSE\n MAX\n MIN\n", wrong, "t.mps(3): the objective sense is given twice"},
    {"no sense", "OBJSENSE\nROWS\n", wrong, "t.mps(1): the section OBJSENSE holds neither"},
    {"quadratic part before columns", "ROWS\n N o\nQUADOBJ\n x x 2\n", wrong, "t.mps(3): found "},
    {"quadratic row before columns", "ROWS\n N o\n L a\nQCMATRIX a\n x x 2\n", wrong, "t.mps(4): found "},
    {"QMATRIX entry twice", HEAD " y a 1\nQMATRIX\n x y 1\n x y 1\nENDATA\n", wrong,
     "t.mps(13): the entry of 'x' and 'y' in QMATRIX stands twice"},
    {"QUADOBJ behind QMATRIX", HEAD "QMATRIX\n x x 1\nQUADOBJ\n x x 1\n", wrong, "t.mps(12): the row 'obj' has a"},
    {"quadratic row of nothing", HEAD "QCMATRIX w\n x x 1\n", wrong, "t.mps(10): found 'w' where the name of a row"},
    {"infinite quadratic entry", HEAD "QUADOBJ\n x x inf\n", wrong, "t.mps(11): found an infinite coefficient"},
    {"quadratic entry of nothing", HEAD "QUADOBJ\n x y 1\n", wrong, "t.mps(11): found 'y' where the name of a column"},
    {"quadratic entry without a number", HEAD "QUADOBJ\n x x\n", wrong, "t.mps(11): found the end of the line"},
    {"half a QMATRIX", HEAD " y a 1\nQMATRIX\n x y 1\nENDATA\n", wrong,
     "t.mps(12): the entry of 'x' and 'y' in QMATRIX has no mirror image"},
    {"QUADOBJ with both triangles",
     "ROWS\n N o\nCOLUMNS\n x o 1\n y o 1\n z o 1\nQUADOBJ\n x x 2\n x y 3\n y x 3\n y z 1\n z y 1\nENDATA\n", wrong,
     "t.mps(9): the entry of 'x' and 'y' in QUADOBJ stands in both triangles, as all the others"},
    {"QMATRIX not symmetric", HEAD " y a 1\nQMATRIX\n x y 1\n y x 2\nENDATA\n", wrong,
     "t.mps(13): the entry of 'y' and 'x' in QMATRIX differs"},
    {"QCMATRIX entry twice", HEAD "QCMATRIX a\n x x 1\n x x 1\nENDATA\n", wrong, "t.mps(12): the entry of 'x' and 'x'"},
    {"QCMATRIX of nothing", HEAD "QCMATRIX\n", wrong, "t.mps(10): found the end of the line where the name of a row"},
    {"QCMATRIX of the objective", HEAD "QCMATRIX obj\n", wrong, "t.mps(10): found the objective 'obj'"},
    {"QCMATRIX twice", HEAD "QCMATRIX a\n x x 1\nQCMATRIX a\n", wrong, "t.mps(12): the row 'a' has a quadratic part"},
    {"not by columns either", "ROWS\n N  MUCH TOO LONG\n", wrong, "t.mps(2): found 'TOO' behind the name of a row"},
    {"unprintable", "ROWS\n N\x01\x02\x80o a\n", wrong, "t.mps(2): found 'N???o' where a row type"},
};

TEST(MpsRead, Bad)
{
    for (const bad_case &c : bad_cases) {
        SCOPED_TRACE(c.name);
        caught_io context;
        model m;
        const std::string text = c.name == std::string("binary") ? std::string("NAME t\nROWS\n N \0obj\n", 20) : c.text;
        EXPECT_EQ(read_text(&context, text, &m), c.code);
        EXPECT_EQ(context.log.substr(0, std::strlen(c.message)), c.message) << context.log;
        EXPECT_EQ(std::count(context.log.begin(), context.log.end(), '\n'), 1) << context.log;
    }
}

TEST(MpsRead, Name)
{
    static const struct {
        const char *line, *name;
    } cases[] = {{"NAME", ""},         {"NAME   ", ""},       {"NAME a b  ", "a b"},
                 {"NAME x FREE", "x"}, {"NAME FREE", "FREE"}, {"name low", "low"},
                 {"NAME\ttab", "tab"}, {"NAME $x", "$x"},     {"NAME  a  b FREE ", "a  b"}};
    for (const auto &c : cases) {
        caught_io context;
        model m;
        EXPECT_EQ(read_text(&context, std::string(c.line) + "\nROWS\n N o\nCOLUMNS\nENDATA\n", &m), ZLR_RES_OK);
        EXPECT_EQ(m.name, c.name) << c.line;
        EXPECT_EQ(m.obj_name, "o");
    }
}

TEST(MpsRead, ForcedFormat)
{
    const std::string blanks = "ROWS\n N  A B\nCOLUMNS\n    X         A B                1.0\nENDATA\n";
    const std::string loose = "ROWS\n N A\nCOLUMNS\n X A 1\nENDATA\n";
    for (const int32_t format : {MPS_AUTO, MPS_FREE, MPS_FIXED}) {
        SCOPED_TRACE(format);
        for (const bool is_loose : {false, true}) {
            caught_io context;
            model m;
            context.params.integer[IPAR_READ_MPS_FORMAT] = format;
            const bool good = format == MPS_AUTO || (format == MPS_FREE) == is_loose;
            EXPECT_EQ(read_text(&context, is_loose ? loose : blanks, &m), good ? ZLR_RES_OK : wrong) << context.log;
        }
    }
}

TEST(MpsRead, Parameters)
{
    caught_io context;
    model m;
    context.params.dou[DPAR_DATA_TOL_COEF] = 0.5;
    context.params.dou[DPAR_BOUND_INFINITE] = 100.0;
    EXPECT_EQ(read_text(&context, HEAD " y a 0.4 b 0.6\nBOUNDS\n UP B x 100\n UP B y 99\nENDATA\n", &m), ZLR_RES_OK);
    EXPECT_EQ(shown(m), ROWS "x " BODY " | y [0,99] 0 b:0.59999999999999998");
}

/* ---- Writing ------------------------------------------------------------------------------------------------------- */

std::string written(caught_io *context, const model &m)
{
    temp_folder folder;
    const std::string file = folder.file("out.mps");
    byte_sink *out = nullptr;
    EXPECT_EQ(sink_open(test_sys(), &out, file.c_str(), {}), ZLR_RES_OK);
    EXPECT_EQ(mps_write(&context->io, out, &m), ZLR_RES_OK);
    EXPECT_EQ(sink_close(&out, true), ZLR_RES_OK);
    return file_text(file);
}

void expect_round_trip(const model &m)
{
    caught_io context;
    model back;
    const std::string text = written(&context, m);
    EXPECT_EQ(read_text(&context, text, &back), ZLR_RES_OK) << context.log << text;
    EXPECT_EQ(shown(back), shown(m)) << text;
    expect_same(m, back);
}

model small_model(int32_t num_con, int32_t num_var)
{
    model m;
    m.name = "small";
    m.obj_name = "cost";
    model_append_cons(&m, num_con);
    model_append_vars(&m, num_var);
    for (int32_t i = 0; i < num_con; ++i) names_put(&m.con_names, i, "r" + std::to_string(i));
    for (int32_t j = 0; j < num_var; ++j) {
        names_put(&m.var_names, j, "v" + std::to_string(j));
        m.var_upper[static_cast<size_t>(j)] = model_inf;
    }
    return m;
}

TEST(MpsWrite, EveryBound)
{
    const double values[] = {-model_inf, -2.5, -0.0, 0.0, 0.5, 1.0, 7.0, model_inf};
    for (const uint8_t type : {ZLR_VAR_CONT, ZLR_VAR_INT}) {
        model m = small_model(1, 0);
        for (const double lower : values)
            for (const double upper : values) {
                if (lower == model_inf || upper == -model_inf) continue;
                model_append_vars(&m, 1);
                names_put(&m.var_names, m.num_var - 1, "v" + std::to_string(m.num_var));
                m.var_lower.back() = lower;
                m.var_upper.back() = upper;
                m.var_type.back() = type;
            }
        expect_round_trip(m);
    }
}

TEST(MpsWrite, EveryRow)
{
    const double values[] = {-model_inf, -1e10, -1.1, -0.25, 0.0, 1e-7, 0.1, 0.5, 1.0, 1e15, model_inf};
    model m = small_model(0, 2);
    for (const double lower : values)
        for (const double upper : values) {
            if (lower == model_inf || upper == -model_inf || lower > upper) continue;
            model_append_cons(&m, 1);
            names_put(&m.con_names, m.num_con - 1, "r" + std::to_string(m.num_con));
            m.con_lower.back() = lower;
            m.con_upper.back() = upper;
        }
    expect_round_trip(m);
}

/* A range is a difference in the file: for some pairs no double leads from one side to the other. One side is exact
 * then, and the other the next double at most. */
TEST(MpsWrite, RangesThatNoNumberGivesExactly)
{
    model m = small_model(2, 1);
    m.con_lower = {-0.3, 0.7};
    m.con_upper = {0.1, 10.0 / 3.0};
    caught_io context;
    model back;
    ASSERT_EQ(read_text(&context, written(&context, m), &back), ZLR_RES_OK);
    for (size_t i = 0; i < 2; ++i) {
        EXPECT_DOUBLE_EQ(back.con_lower[i], m.con_lower[i]);
        EXPECT_DOUBLE_EQ(back.con_upper[i], m.con_upper[i]);
        EXPECT_TRUE(back.con_lower[i] == m.con_lower[i] || back.con_upper[i] == m.con_upper[i]);
    }
}

TEST(MpsWrite, ObjectiveEmptyColumnsAndQuadratics)
{
    model m = small_model(2, 3);
    m.sense = ZLR_SENSE_MAX;
    m.cfix = 1.0 / 3.0;
    m.c = {0.0, 1e-300, -0.1};
    const int32_t rows[] = {1, 0};
    const double values[] = {5e-324, 1.7976931348623157e308};
    model_put_column(&m, 2, 2, rows, values);
    m.con_upper = {4.0, model_inf};
    m.qobj = {{0, 0, 2.0}, {1, 0, -1.5}};
    m.qcon = {{0, {{1, 1, 3.0}, {2, 0, 0.1}}}, {1, {{2, 2, 1.0}}}};
    caught_io context;
    model back;
    context.params.dou[DPAR_DATA_TOL_COEF] = 0.0; /* the smallest double is to survive */
    EXPECT_EQ(read_text(&context, written(&context, m), &back), ZLR_RES_OK) << context.log;
    expect_same(m, back);
    EXPECT_EQ(back.obj_name, "cost");
    EXPECT_EQ(context.log, "");
}

TEST(MpsWrite, NamesThatTheFormatCannotHold)
{
    model m = small_model(4, 6);
    m.obj_name = "r0"; /* a row has the same name */
    names_put(&m.con_names, 1, "");
    names_put(&m.con_names, 2, "c1"); /* what row 0 would be called */
    names_put(&m.con_names, 3, "c1");
    names_put(&m.var_names, 0, "two words");
    names_put(&m.var_names, 1, "$dollar");
    names_put(&m.var_names, 2, "*star");
    names_put(&m.var_names, 3, std::string(256, 'n'));
    names_put(&m.var_names, 4, std::string(255, 'n'));
    names_put(&m.var_names, 5, "tab\there");
    caught_io context;
    model back;
    EXPECT_EQ(read_text(&context, written(&context, m), &back), ZLR_RES_OK) << context.log;
    const std::vector<std::string> rows = {"c1_1", "c2", "c1", "c4"};
    const std::vector<std::string> cols = {"x1", "x2", "x3", "x4", std::string(255, 'n'), "x6"};
    EXPECT_EQ(names_of(back.con_names, 4), rows);
    EXPECT_EQ(names_of(back.var_names, 6), cols);
    EXPECT_EQ(context.log, "t.mps: warning: 7 names cannot stand in an MPS file and are replaced; the first is 'r0', "
                           "written as 'c1_1'.\n");
}

TEST(MpsWrite, CrossedRowBecomesTwo)
{
    model m = small_model(1, 1);
    const int32_t row = 0;
    const double value = 2.0;
    model_put_column(&m, 0, 1, &row, &value);
    m.con_lower = {3.0};
    m.con_upper = {1.0};
    m.qcon = {{0, {{0, 0, 4.0}}}};
    caught_io context;
    model back;
    EXPECT_EQ(read_text(&context, written(&context, m), &back), ZLR_RES_OK) << context.log;
    EXPECT_EQ(shown(back),
              "min 0 | r0 [-inf,1] | r0_lower [3,inf] | v0 [0,inf] 0 r0:2 r0_lower:2 | q0:0,0:4 | q1:0,0:4");
    EXPECT_NE(context.log.find("1 rows with a lower side above the upper one"), std::string::npos) << context.log;
}

TEST(MpsWrite, Layout)
{
    caught_io context;
    model m;
    ASSERT_EQ(read_text(&context,
                        "NAME demo\nOBJSENSE MAX\nROWS\n N o\n L a\n N f\nCOLUMNS\n M 'MARKER' 'INTORG'\n x o 1 a 2.5\n"
                        " M 'MARKER' 'INTEND'\n y f 1\nRHS\n R o 4 a 9\nBOUNDS\n LI B x 0\n UP B y 3\nENDATA\n",
                        &m),
              ZLR_RES_OK);
    EXPECT_EQ(written(&context, m),
              "NAME          demo\nOBJSENSE\n    MAX\nROWS\n N  o\n L  a\n N  f\nCOLUMNS\n"
              "    MARKER    'MARKER'                 'INTORG'\n"
              "    x         o         1\n    x         a         2.5\n"
              "    MARKER    'MARKER'                 'INTEND'\n"
              "    y         f         1\nRHS\n    RHS       o         4\n    RHS       a         9\n"
              "BOUNDS\n PL BND       x\n UP BND       y         3\nENDATA\n");
}
}  // namespace
