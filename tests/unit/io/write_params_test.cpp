/* The parameters of writing: each case writes one problem at the defaults and with a parameter changed, and looks for
 * what the texts have and have not. What can be read back is read back. */
#include "mps_support.h"

#include "solver/io/solution_file.h"

#include <set>

using namespace test_mps;

namespace
{
/* min 5 + 2x - y/3 + x^2 + xy, a: x + 1e-9 y <= 4, quadratic row, integer columns of three sorts, a free one, a name that
 * is long. */
const char problem[] =
    "\\Problem name: sample\n"
    "Minimize\n cost: 2 x - 0.3333333333333333 a_long_name + 5 + [ 2 x ^ 2 + 2 x * a_long_name ] / 2\n"
    "Subject To\n cap: x + 0.000000001 a_long_name + n + b <= 4\n"
    " quad: n + [ x ^ 2 + 4 x * b ] <= 8.125\n"
    "Bounds\n a_long_name free\n 2 <= n <= 7\n f >= -inf\nGenerals\n n\n f\nBinary\n b\nEnd\n";

model sample()
{
    caught_io c("t.lp");
    model m;
    EXPECT_EQ(read_text(&c, problem, &m, lp_read), ZLR_RES_OK) << c.log;
    return m;
}

/* The text of a file written with a parameter changed, and behind it what was told. */
std::string written(const char *file, const model &m, const char *param, const char *value)
{
    const temp_folder folder;
    const std::string path = folder.file(file);
    caught_io c(path);
    if (param != nullptr) {
        EXPECT_EQ(param_put_text(&c.params, param, value, &c.streams), ZLR_RES_OK) << c.log;
    }
    int32_t format = -1;
    const int32_t res = problem_write(&c.io, &m, &format);
    if (res != ZLR_RES_OK) return "error " + std::to_string(res) + "\n" + c.log;
    return file_text(path) + c.log;
}

struct write_case {
    const char *param, *value, *file;
    const char *as_default; /* stands in the text at the defaults, not in the other one; may be empty */
    const char *as_asked;
};

const write_case cases[] = {
    {"WRITE_DIGITS", "3", "t.mps", "-0.3333333333333333\n", "-0.333\n"},
    {"WRITE_DIGITS", "3", "t.lp", "- 0.3333333333333333 a_long_name", "- 0.333 a_long_name"},
    {"WRITE_NAMES", "NUMBER", "t.mps", "a_long_name", " L  c1\n"},
    {"WRITE_NAMES", "NUMBER", "t.lp", "cap: x", "c1: x1"},
    {"WRITE_SENSE", "MAX", "t.lp", "Minimize\n cost: 2 x - 0.3333333333333333 a_long_name",
     "Maximize\n cost: - 2 x + 0.3333333333333333 a_long_name"},
    {"WRITE_SENSE", "MAX", "t.mps", "", "OBJSENSE\n    MAX\n"},
    {"WRITE_CONSTANT", "COLUMN", "t.mps", "    RHS       cost      -5\n", "    constant  cost      5\n"},
    {"WRITE_CONSTANT", "COLUMN", "t.lp", "+ 5\n", " constant = 1\n"},
    {"WRITE_CONSTANT", "OMIT", "t.lp", "+ 5\n", "the constant 5 of the objective is left out"},
    {"WRITE_HEADER", "PROGRAM", "t.mps", "", "* Written by ZELOR 8.1.0\nNAME"},
    {"WRITE_HEADER", "PROGRAM", "t.lp", "", "\\ Written by ZELOR 8.1.0\nMinimize"},
    {"WRITE_HEADER", "DATE", "t.mps", "", "* Written by ZELOR 8.1.0, 20"},
    {"WRITE_COMMENT", "for\nthe plant", "t.mps", "", "* for the plant\n"},
    {"WRITE_COMMENT", "ENDATA", "t.lp", "", "\\ ENDATA\n"},
    {"WRITE_PROBLEM_NAME", "plan", "t.mps", "NAME          sample\n", "NAME          plan\n"},
    {"WRITE_PROBLEM_NAME", "plan", "t.lp", "\\Problem name: sample\n", "\\Problem name: plan\n"},
    {"WRITE_TINY_COEF", "1e-6", "t.lp", "1e-09 a_long_name", " cap: x + n + b <= 4\n"},
    {"WRITE_MPS_LAYOUT", "FIXED", "t.mps", "    a_long_name  cost", "    x2        cost      -0.333333333\n"},
    {"WRITE_MPS_LAYOUT", "FIXED", "t.mps", "",
     "numbers rounded to the 12 characters that the fixed layout has for them: 1."},
    {"WRITE_MPS_OBJECTIVE_RHS", "KEEP", "t.mps", "cost      -5\n", "cost      5\n"},
    {"WRITE_MPS_INTEGERS", "BOUNDS", "t.mps", "'MARKER'", " LI BND       n         2\n UI BND       n         7\n"},
    {"WRITE_MPS_INTEGERS", "BOUNDS", "t.mps", "'INTORG'", " LI BND       f         -1e+30\n"},
    {"WRITE_MPS_QUADRATIC", "QMATRIX", "t.mps", "QUADOBJ\n",
     "QMATRIX\n    x         x         2\n    x         a_long_name  1\n    a_long_name  x         1\n"},
    {"WRITE_MPS_QUADRATIC", "QSECTION", "t.mps", "QCMATRIX",
     "QSECTION  quad\n    x         x         2\n    x         b         4\n"},
    {"WRITE_LP_LINE_LENGTH", "30", "t.lp", " cap: x + 1e-09 a_long_name + n + b <= 4\n",
     " cap: x + 1e-09 a_long_name\n  + n + b <= 4\n"},
    {"WRITE_LP_RANGES", "SPLIT", "r.lp", " r: 1 <= x <= 2\n", " r: x >= 1\n r_up: x <= 2\n"},
};

model problem_of(const write_case &c)
{
    if (c.file[0] != 'r') return sample();
    caught_io io("r.lp");
    model m;
    EXPECT_EQ(read_text(&io, "min x\nst\n r: 1 <= x <= 2\nend\n", &m, lp_read), ZLR_RES_OK) << io.log;
    return m;
}

/* Written and read again with a second parameter set for the reader. */
std::string read_back(const char *file, const char *param, const char *value, const char *reader_param = nullptr,
                      const char *reader_value = nullptr)
{
    const temp_folder folder;
    const std::string path = folder.file(file);
    const model m = sample();
    caught_io c(path);
    int32_t format = -1;
    EXPECT_EQ(param_put_text(&c.params, param, value, &c.streams), ZLR_RES_OK) << c.log;
    EXPECT_EQ(problem_write(&c.io, &m, &format), ZLR_RES_OK) << c.log;
    if (reader_param != nullptr) {
        EXPECT_EQ(param_put_text(&c.params, reader_param, reader_value, &c.streams), ZLR_RES_OK) << c.log;
    }
    model back;
    EXPECT_EQ(problem_read(&c.io, &back, &format), ZLR_RES_OK) << c.log << file_text(path);
    return shown(back);
}

/* A solved problem of one row and two columns, and its file with a parameter changed. */
std::string solution_text(int32_t kind, const char *param, const char *value, bool reads_back = true)
{
    const temp_folder folder;
    const std::string path = folder.file("t.bas");
    caught_io c(path);
    model m;
    solution sol, back;
    model_append_cons(&m, 1);
    model_append_vars(&m, 2);
    solution_reset(&sol, 1, 2);
    sol.defined = sol.has_keys = sol.has_primal = sol.has_dual = true;
    sol.xc = {1.0 / 3.0};
    sol.xx = {1.0 / 3.0, 1e-9};
    sol.y = {0.125};
    sol.primal_obj = sol.dual_obj = 2.0 / 3.0;
    if (param != nullptr) {
        EXPECT_EQ(param_put_text(&c.params, param, value, &c.streams), ZLR_RES_OK) << c.log;
    }
    EXPECT_EQ(solution_file_write(&c.io, &m, &sol, kind), ZLR_RES_OK) << c.log;
    if (reads_back) {
        EXPECT_EQ(solution_file_read(&c.io, &m, kind, &back), ZLR_RES_OK) << c.log << file_text(path);
    }
    return file_text(path);
}
}  // namespace

TEST(write_params, each_changes_what_is_written)
{
    for (const write_case &c : cases) {
        SCOPED_TRACE(std::string(c.param) + " " + c.value + " " + c.file);
        const model m = problem_of(c);
        const std::string at_default = written(c.file, m, nullptr, nullptr);
        const std::string asked = written(c.file, m, c.param, c.value);
        EXPECT_NE(at_default.find(c.as_default), std::string::npos) << at_default;
        EXPECT_NE(asked.find(c.as_asked), std::string::npos) << asked;
        EXPECT_EQ(at_default.find(c.as_asked), std::string::npos) << at_default;
        if (c.as_default[0] != '\0') {
            EXPECT_EQ(asked.find(c.as_default), std::string::npos) << asked;
        }
    }
}

/* Another form of the same problem is read as the same problem. */
TEST(write_params, forms_read_back_as_the_same_problem)
{
    const std::string same = read_back("t.mps", "WRITE_DIGITS", "0");
    EXPECT_EQ(read_back("t.mps", "WRITE_DIGITS", "17"), same);
    EXPECT_EQ(read_back("t.lp", "WRITE_LP_LINE_LENGTH", "20"), same);
    EXPECT_EQ(read_back("t.mps", "WRITE_MPS_INTEGERS", "BOUNDS"), same);
    EXPECT_EQ(read_back("t.mps", "WRITE_MPS_QUADRATIC", "QMATRIX"), same);
    EXPECT_EQ(read_back("t.mps", "WRITE_MPS_QUADRATIC", "QSECTION"), same);
    EXPECT_EQ(read_back("t.mps", "WRITE_MPS_OBJECTIVE_RHS", "KEEP", "READ_MPS_OBJECTIVE_RHS", "KEEP"), same);
    EXPECT_EQ(read_back("t.mps", "WRITE_NAMES", "NUMBER"), read_back("t.lp", "READ_NAMES", "DROP"));
    const std::string fixed = read_back("t.mps", "WRITE_MPS_LAYOUT", "FIXED", "READ_MPS_FORMAT", "FIXED");
    EXPECT_NE(fixed.find(" | x2 [-inf,inf] -0.33333333300000001 cap:1.0000000000000001e-09 |"), std::string::npos)
        << fixed;
}

TEST(write_params, cbf_files_follow_them)
{
    model m;
    model_append_cons(&m, 1);
    model_append_vars(&m, 1);
    m.con_lower[0] = 1.0 / 3.0;
    m.cfix = 2.0;
    EXPECT_NE(written("t.cbf", m, "WRITE_DIGITS", "2").find("0 -0.33\n"), std::string::npos);
    EXPECT_EQ(written("t.cbf", m, "WRITE_COMMENT", "hello").substr(0, 14), "# hello\nVER\n1\n");
    EXPECT_NE(written("t.cbf", m, nullptr, nullptr).find("OBJBCOORD"), std::string::npos);
    EXPECT_EQ(written("t.cbf", m, "WRITE_CONSTANT", "OMIT").find("OBJBCOORD"), std::string::npos);
    EXPECT_NE(written("t.cbf", m, "WRITE_SENSE", "MAX").find("OBJBCOORD\n-2\n"), std::string::npos);
}

TEST(write_params, fixed_layout_keeps_to_its_columns)
{
    const std::string text = written("t.mps", sample(), "WRITE_MPS_LAYOUT", "FIXED");
    const size_t begin = text.find("COLUMNS\n") + 8, end = text.find("RHS\n");
    size_t num = 0;
    for (size_t at = begin; at < end; at = text.find('\n', at) + 1, num++) {
        const std::string line = text.substr(at, text.find('\n', at) - at);
        if (line.find("MARKER") != std::string::npos) continue;
        EXPECT_LE(line.size(), 36U) << line;
        EXPECT_EQ(line.substr(0, 4) + line.substr(12, 2) + line.substr(22, 2), "        ") << line;
        EXPECT_NE(line[4], ' ') << line;
        EXPECT_NE(line[14], ' ') << line;
        EXPECT_NE(line[24], ' ') << line;
    }
    EXPECT_GT(num, 8U);
}

TEST(write_params, existing_files_are_replaced_or_kept)
{
    const temp_folder folder;
    const std::string path = folder.file("t.lp");
    caught_io c(path);
    const model m = sample();
    int32_t format = -1;
    put_file(path, "old");
    ASSERT_EQ(param_put_text(&c.params, "WRITE_EXISTING", "REFUSE", &c.streams), ZLR_RES_OK);
    EXPECT_EQ(problem_write(&c.io, &m, &format), ZLR_RES_ERR_FILE_OPEN);
    EXPECT_EQ(file_text(path), "old");
    EXPECT_NE(c.log.find("exists"), std::string::npos) << c.log;
    EXPECT_EQ(param_write_file(&c.params, c.io.sys, path.c_str(), &c.streams), ZLR_RES_ERR_FILE_OPEN);
    EXPECT_EQ(file_text(path), "old");

    const std::string other = folder.file("new.lp");
    c.io.file = other.c_str();
    EXPECT_EQ(problem_write(&c.io, &m, &format), ZLR_RES_OK) << c.log;
    ASSERT_EQ(param_put_text(&c.params, "WRITE_EXISTING", "REPLACE", &c.streams), ZLR_RES_OK);
    c.io.file = path.c_str();
    EXPECT_EQ(problem_write(&c.io, &m, &format), ZLR_RES_OK) << c.log;
    EXPECT_EQ(file_text(path), file_text(other));
}

TEST(write_params, compression_makes_files_smaller)
{
    model m;
    model_append_cons(&m, 1);
    model_append_vars(&m, 3000);
    for (size_t j = 0; j < 3000; j++) m.c[j] = static_cast<double>(j * j % 977);
    const size_t fast = written("t.mps.gz", m, "WRITE_GZIP_LEVEL", "1").size();
    const size_t usual = written("t.mps.gz", m, nullptr, nullptr).size();
    EXPECT_LT(usual, fast);
    EXPECT_EQ(written("t.mps.gz", m, "WRITE_GZIP_LEVEL", "6").size(), usual);
}

TEST(write_params, solution_files_follow_them)
{
    const std::string usual = solution_text(ZLR_SOL_BAS, nullptr, nullptr);
    EXPECT_NE(usual.find("0.3333333333333333 "), std::string::npos) << usual;
    EXPECT_NE(usual.find("1e-09"), std::string::npos) << usual;

    const std::string rounded = solution_text(ZLR_SOL_BAS, "WRITE_DIGITS", "4");
    EXPECT_EQ(rounded.find("0.3333333333333333"), std::string::npos) << rounded;
    EXPECT_NE(rounded.find("primal_objective  0.6667\n"), std::string::npos) << rounded;

    const std::string clean = solution_text(ZLR_SOL_BAS, "WRITE_SOLUTION_ZERO_TOL", "1e-6");
    EXPECT_EQ(clean.find("1e-09"), std::string::npos) << clean;
    EXPECT_NE(clean.find("0.3333333333333333"), std::string::npos) << clean;

    const std::string primal = solution_text(ZLR_SOL_BAS, "WRITE_SOLUTION_PARTS", "PRIMAL");
    EXPECT_NE(primal.find("[rows] name key activity lower upper\n"), std::string::npos) << primal;
    EXPECT_NE(primal.find("holds             keys primal\n"), std::string::npos) << primal;

    const std::string columns = solution_text(ZLR_SOL_BAS, "WRITE_SOLUTION_PARTS", "COLUMNS");
    EXPECT_EQ(columns.find("[rows]"), std::string::npos) << columns;
    EXPECT_NE(columns.find("holds             primal\n"), std::string::npos) << columns;
}

/* The rows that are tried here; the others act in the interface, and are tried there. */
TEST(write_params, every_row_has_a_case)
{
    std::set<std::string> seen = {"WRITE_EXISTING",          "WRITE_GZIP_LEVEL", "WRITE_SOLUTION_PARTS",
                                  "WRITE_SOLUTION_ZERO_TOL", "WRITE_SYNC",       "WRITE_SOLUTION_STATUS"};
    for (const write_case &c : cases) seen.insert(c.param);
    int32_t num = 0;
    const param_row *table = param_table(&num);
    for (const param_row *row = table; row != table + num; row++) {
        if (std::string(row->name).starts_with("WRITE_")) {
            EXPECT_EQ(seen.count(row->name), 1U) << row->name;
        }
    }
}
