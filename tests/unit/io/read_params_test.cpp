/* The parameters of reading: each case is a file, what it gives at the defaults, and what a parameter makes of it. */
#include "mps_support.h"

#include <set>

using namespace test_mps;

namespace
{
/* What a read leaves: the problem as text, or "error", and behind it all messages. */
std::string outcome(const char *file, const char *text, const char *param, const char *value)
{
    const temp_folder folder;
    const std::string path = folder.file(file);
    caught_io c(path);
    put_file(path, text);
    if (param != nullptr) {
        EXPECT_EQ(param_put_text(&c.params, param, value, &c.streams), ZLR_RES_OK) << c.log;
    }
    model m;
    int32_t format = -1;
    const int32_t res = problem_read(&c.io, &m, &format);
    if (res != ZLR_RES_OK) return "error " + std::to_string(res) + "\n" + c.log;
    return shown(m) + "\n" + c.log;
}

/* Two sets of each vector, two rows of type N, an integer column without bounds. */
const char two_of_all[] = "NAME t\n"
                          "ROWS\n N cost\n N other\n L a\n G b\n"
                          "COLUMNS\n m1 'MARKER' 'INTORG'\n i a 1 b 1\n m2 'MARKER' 'INTEND'\n"
                          " x cost 1 a 2\n x other 7 b 3\n"
                          "RHS\n R1 a 10 b 1\n R2 a 20 b 2\n R2 cost 5\n"
                          "RANGES\n G1 a 4\n G2 a 6\n"
                          "BOUNDS\n UP B1 x 8\n UP B2 x 9\n"
                          "ENDATA\n";

const char negative_upper[] = "ROWS\n N o\n L a\nCOLUMNS\n x o 1 a 1\nBOUNDS\n UP B x -3\nENDATA\n";
const char objective_rhs[] = "ROWS\n N o\n L a\nCOLUMNS\n x o 1 a 1\nRHS\n R o 5\nENDATA\n";
const char without_end[] = "ROWS\n N o\n L a\nCOLUMNS\n x o 1 a 1\nRHS\n R a 5\n";
const char entry_again[] = "ROWS\n N o\n L a\n L b\nCOLUMNS\n x o 1 a 2\n x a 3 b 1\n y a 4\n x b 5 o 6\nENDATA\n";
const char crossed[] = "min o: x\nst\n a: x >= 1\n r: 3 <= x + y <= 2\nbounds\n 1.00000001 <= y <= 1\nend\n";
const char lp_negative[] = "min o: x\nst\n a: x + y >= -9\nbounds\n y <= -2\nend\n";
const char lp_new_column[] = "min o: cost\nst\n a: cost >= 1\nbounds\n cots <= 4\nend\n";
const char lp_no_end[] = "min o: x\nst\n a: x >= 1\n";
const char odd_names[] = "min o: \xc3\xa9t\xc3\xa9\nst\n a: \xc3\xa9t\xc3\xa9 >= 1\nend\n";
const char broken_names[] = "ROWS\n N o\n L a\xff\nCOLUMNS\n x o 1 a\xff 1\nRHS\nENDATA\n";
const char two_doubts[] = "ROWS\n N o\n L a\nCOLUMNS\n x o 1 a 1\n y a 1\nBOUNDS\n UP B x -3\n MI B y 7\nENDATA\n";
const char plain_lp[] = "min o: x + 1000000 y\nst\n a: x + 2000000 y >= 1\nend\n";

struct read_case {
    const char *param, *value;
    const char *file, *text;
    const char *as_default; /* stands in the outcome at the defaults, not in the other one */
    const char *as_asked;   /* the other way round */
};

const read_case cases[] = {
    {"READ_FORMAT", "LP", "t.mps", plain_lp, "error 1100", "min 0 | a [1,inf]"},
    {"READ_FORMAT", "CONTENT", "t.mps", plain_lp, "error 1100", "min 0 | a [1,inf]"},
    {"READ_FORMAT", "MPS", "t.lp", objective_rhs, "error 1100", "min -5 | a"},
    {"READ_FORMAT", "CBF", "t.lp", "VER\n1\nOBJSENSE\nMIN\nVAR\n2 1\nF 2\n", "error 1100", "min 0 | x1 [-inf,inf] 0"},
    {"READ_NAMES", "DROP", "t.mps", two_of_all, "| other [", "| c1 ["},
    {"READ_NAMES", "DROP", "t.mps", two_of_all, "int i [", "int x1 ["},
    {"READ_SENSE", "MAX", "t.lp", plain_lp, "min 0", "max 0"},
    {"READ_SENSE", "MIN", "t.lp", "max o: x\nst\n a: x <= 1\nend\n", "max 0", "min 0"},
    {"READ_INTEGERS", "RELAX", "t.mps", two_of_all, "| int i [0,1]", "| i [0,1] 0"},
    {"READ_FREE_ROWS", "DROP", "t.mps", two_of_all, "other:7 ", "free rows left out: 1."},
    {"READ_FREE_ROWS", "DROP", "t.mps", two_of_all, " a:2 other:7 b:3", "x [0,8] 1 a:2 b:3"},
    {"READ_FREE_ROWS", "DROP", "t.lp", "min o: x\nst\n f: x + [ x ^ 2 ] >= -1e30\n g: [ x ^ 2 ] <= 4\nend\n",
     "f [-inf,inf]", "min 0 | g [-inf,4] | x [0,inf] 1 | q0:0,0:2"},
    {"READ_CROSSED_BOUNDS", "WARN", "t.lp", crossed, "", "row 'r' has its lower bound above the upper one (1 in all)"},
    {"READ_CROSSED_BOUNDS", "WARN", "t.lp", crossed, "", "column 'y' has its lower bound"},
    {"READ_CROSSED_BOUNDS", "ERROR", "t.lp", crossed, "r [3,2]", "error 1100\n"},
    {"READ_ENCODING", "ASCII", "t.lp", odd_names, "min 0", "of column 1 is not ASCII"},
    {"READ_ENCODING", "UTF", "t.mps", broken_names, "min 0", "of row 1 is not UTF-8"},
    {"READ_MAX_WARNINGS", "1", "t.mps", two_doubts, "the value has no effect", "1 more warnings are not told"},
    {"READ_WARNINGS_AS_ERRORS", "ON", "t.mps", two_doubts, "min 0", "there is cause for 2 warnings"},
    {"READ_NEGATIVE_UPPER", "ZERO", "t.mps", negative_upper, "x [-inf,-3]", "x [0,-3]"},
    {"READ_NEGATIVE_UPPER", "ERROR", "t.mps", negative_upper, "x [-inf,-3]", "column 'x' has the upper bound -3"},
    {"READ_NEGATIVE_UPPER", "INFINITE", "t.lp", lp_negative, "y [0,-2]", "y [-inf,-2]"},
    {"READ_NEGATIVE_UPPER", "ERROR", "t.lp", lp_negative, "y [0,-2]", "variable 'y' has the upper bound -2"},
    {"READ_MISSING_END", "ERROR", "t.mps", without_end, "min 0 | a [-inf,5]", "error 1100\n"},
    {"READ_MISSING_END", "WARN", "t.lp", lp_no_end, "error 1100\n", "where 'End' was expected: a part may be missing"},
    {"READ_MPS_DUPLICATES", "FIRST", "t.mps", entry_again, "error 1100\n", "x [0,inf] 1 a:2 b:1"},
    {"READ_MPS_DUPLICATES", "LAST", "t.mps", entry_again, "error 1100\n", "x [0,inf] 6 a:3 b:5"},
    {"READ_MPS_DUPLICATES", "ADD", "t.mps", entry_again, "error 1100\n", "x [0,inf] 7 a:5 b:6"},
    {"READ_MPS_DUPLICATES", "ADD", "t.mps", entry_again, "error 1100\n",
     "and 2 after it, has an entry that is given again"},
    {"READ_MPS_DUPLICATES", "ADD", "t.mps", "ROWS\n N o\n L a\n L b\nCOLUMNS\n x a 2 a -2\n x b 1 b 1\nRHS\nENDATA\n",
     "error 1100\n", "x [0,inf] 0 b:2"},
    {"READ_MPS_INTEGER_BOUNDS", "INFINITE", "t.mps", two_of_all, "int i [0,1]", "int i [0,inf]"},
    {"READ_MPS_OBJECTIVE_RHS", "KEEP", "t.mps", objective_rhs, "min -5", "min 5"},
    {"READ_MPS_OBJECTIVE_RHS", "IGNORE", "t.mps", objective_rhs, "min -5", "min 0"},
    {"READ_LP_NEW_COLUMNS", "ERROR", "t.lp", lp_new_column, "cots [0,4]",
     "(5): found 'cots' where a variable of the objective"},
    {"READ_OBJECTIVE_ROW", "other", "t.mps", two_of_all, "x [0,8] 1 a:2 other:7", "x [0,8] 7 cost:1 a:2"},
    {"READ_OBJECTIVE_ROW", "none", "t.mps", two_of_all, "min 0", "no row of type N has the name 'none'"},
    {"READ_OBJECTIVE_ROW", "other", "t.mps",
     "OBJNAME\n cost\nROWS\n N cost\n N other\n L a\nCOLUMNS\n x cost 1 other 2\nRHS\nENDATA\n", "x [0,inf] 1 other:2",
     "x [0,inf] 2 cost:1"},
    {"READ_RHS_SET", "R2", "t.mps", two_of_all, "min 0 | other [-inf,inf] | a [6,10] | b [1,",
     "min -5 | other [-inf,inf] | a [16,20] | b [2,"},
    {"READ_RHS_SET", "R3", "t.mps", two_of_all, "min 0",
     "has right-hand sides, but none under the name 'R3' (READ_RHS_SET)"},
    {"READ_RANGES_SET", "G2", "t.mps", two_of_all, "a [6,10]", "a [4,10]"},
    {"READ_RANGES_SET", "G3", "t.mps", two_of_all, "min 0", "has ranges, but none under the name 'G3'"},
    {"READ_BOUNDS_SET", "B2", "t.mps", two_of_all, "x [0,8]", "x [0,9]"},
    {"READ_BOUNDS_SET", "B3", "t.mps", two_of_all, "min 0", "has bounds, but none under the name 'B3'"},
    {"READ_TOL_CROSSED", "1e-6", "t.lp", crossed, "y [1.0000000099999999,1]", "y [1,1]"},
    {"READ_TOL_CROSSED", "1", "t.lp", crossed, "r [3,2]", "r [2,2]"},
    {"READ_HUGE_COEF", "1e6", "t.lp", plain_lp, "",
     "coefficients of 1e+06 or more: 1; the largest, 2e+06, is that of column 'y' in row 'a'"},
    {"READ_MPS_FORMAT", "FIXED", "t.mps", two_of_all, "min 0", "found 'N c' where a row type"},
};
}  // namespace

TEST(read_params, each_changes_what_is_read)
{
    for (const read_case &c : cases) {
        SCOPED_TRACE(std::string(c.param) + " " + c.value);
        const std::string at_default = outcome(c.file, c.text, nullptr, nullptr);
        const std::string asked = outcome(c.file, c.text, c.param, c.value);
        EXPECT_NE(at_default.find(c.as_default), std::string::npos) << at_default;
        EXPECT_NE(asked.find(c.as_asked), std::string::npos) << asked;
        EXPECT_EQ(at_default.find(c.as_asked), std::string::npos) << at_default;
        if (c.as_default[0] != '\0') {
            EXPECT_EQ(asked.find(c.as_default), std::string::npos) << asked;
        }
    }
}

TEST(read_params, every_row_has_a_case)
{
    std::set<std::string> seen;
    for (const read_case &c : cases) seen.insert(c.param);
    int32_t num = 0;
    const param_row *table = param_table(&num);
    for (const param_row *row = table; row != table + num; row++) {
        if (std::string(row->name).starts_with("READ_")) {
            EXPECT_EQ(seen.count(row->name), 1U) << row->name;
        }
    }
}
