/* MPS files of others: sizes as the list of the files gives them, the round trip through our writer, and what other
 * programs make of what we write. */
#include "mps_support.h"

#include <algorithm>
#include <cmath>
#include <sstream>

using namespace test_mps;

namespace
{
struct listed_file {
    std::string path; /* below the folder of the data */
    int64_t rows, columns, nonzeros;
};

std::vector<std::string> split(const std::string &line)
{
    std::vector<std::string> fields;
    std::stringstream in(line);
    for (std::string field; std::getline(in, field, '\t');) fields.push_back(field);
    return fields;
}

bool is_mps(const std::string &path)
{
    const int32_t format = format_by_name(path.c_str());
    return format >= 0 && format_table[format].read == mps_read;
}

std::vector<listed_file> listed_files()
{
    std::vector<listed_file> files;
    std::ifstream list(ZELOR_DATA_DIR "/MANIFEST.tsv");
    for (std::string line; std::getline(list, line);) {
        const std::vector<std::string> f = split(line);
        if (f.size() < 5 || !is_mps(f[0])) continue;
        const bool is_bad = f[1] == "BAD";
        files.push_back(
            {f[0], is_bad ? -1 : std::stol(f[2]), is_bad ? -1 : std::stol(f[3]), is_bad ? -1 : std::stol(f[4])});
    }
    return files;
}

/* What differs from the list, and why. */
struct exception_row {
    const char *path;
    int32_t code;
    int64_t columns, nonzeros; /* -1: as listed */
    const char *why;
};

constexpr int32_t good = ZLR_RES_OK;
constexpr int32_t wrong = ZLR_RES_ERR_FILE_FORMAT;
constexpr int32_t unsupported = ZLR_RES_ERR_FILE_UNSUPPORTED;

const exception_row exceptions[] = {
    {"bad/bounds_invalid_type2.mps", good, 1, 0, "a value behind PL is usual in the field; told and without effect"},
    {"bad/bad-mps-bound-1.mps", unsupported, -1, -1, "semi-continuous"},
    {"bad/malformed_indicator.mps", unsupported, -1, -1, "refused before its fault shows"},
    {"bad/sos.mps", unsupported, -1, -1, "refused before its fault shows"},
    {"mip/semi-integer.mps", unsupported, -1, -1, "semi-integer"},
    {"mip/semicon1.mps", unsupported, -1, -1, "semi-continuous"},
    {"reader/toymps_sc.mps", unsupported, -1, -1, "semi-continuous"},
    {"reader/spec_sections.mps", unsupported, -1, -1, "ordered sets"},
    {"reader/warnings.mps", wrong, -1, -1, "unknown rows and columns are errors here, and it has semi-integer bounds"},
    {"reader/comment.mps", good, -1, 6, "the list leaves out what stands behind the comments"},
    {"reader/good-mps-free-ranges.mps", good, -1, 12, "two entries stand twice"},
    {"ranging/plan.mps", good, 7, -1, "the list counts a blank column name as a column"},
    {"lp/stocfor3.mps.gz", good, -1, 68627 - 3752, "explicit zeros"},
    {"mip/rentacar.mps.gz", good, -1, 41868 - 26, "explicit zeros"},
    {"qp/HUES-MOD.qps.gz", good, -1, 20000 - 101, "explicit zeros"},
    {"qp/KSIP.qps.gz", good, -1, 19898 - 1484, "explicit zeros"},
};

const exception_row *exception_of(const std::string &path)
{
    for (const exception_row &row : exceptions)
        if (path == row.path) return &row;
    return nullptr;
}

int32_t read_file(caught_io *context, model *m)
{
    int32_t format = -1;
    return problem_read(&context->io, m, &format);
}

/* Rows and entries without free rows: that is how the list counts. */
bool is_free(const model &m, int32_t i)
{
    return m.con_lower[static_cast<size_t>(i)] == -model_inf && m.con_upper[static_cast<size_t>(i)] == model_inf;
}

TEST(MpsFiles, SizesAsListed)
{
    const std::vector<listed_file> files = listed_files();
    if (files.empty()) GTEST_SKIP() << "no problem files";
    for (const listed_file &file : files) {
        SCOPED_TRACE(file.path);
        const exception_row *e = exception_of(file.path);
        caught_io context(std::string(ZELOR_DATA_DIR "/") + file.path);
        model m;
        const int32_t res = read_file(&context, &m);
        EXPECT_EQ(res, e != nullptr ? e->code : file.rows < 0 ? wrong : good) << context.log;
        if (res != good) {
            EXPECT_EQ(std::count(context.log.begin(), context.log.end(), '\n'), 1) << context.log;
            continue;
        }
        if (file.rows < 0) continue;

        int64_t rows = 0;
        int64_t nonzeros = 0;
        for (int32_t i = 0; i < m.num_con; ++i) rows += is_free(m, i) ? 0 : 1;
        for (const int32_t i : m.a.row) nonzeros += is_free(m, i) ? 0 : 1;
        EXPECT_EQ(rows, file.rows);
        EXPECT_EQ(m.num_var, e != nullptr && e->columns >= 0 ? e->columns : file.columns);
        EXPECT_EQ(nonzeros, e != nullptr && e->nonzeros >= 0 ? e->nonzeros : file.nonzeros);
    }
}

/* What the notes of the awkward files say, beyond sizes. */
TEST(MpsFiles, AwkwardFilesAsTheirNotesSay)
{
    static const struct {
        const char *file, *shown;
    } cases[] = {
        {"empty_matrix.mps", "min 0 | x1 [-inf,2] -3"},
        {"max_offset.mps", "max -4 | c1 [-inf,2] | x1 [0,inf] 1 c1:3 | x2 [0,inf] 2 c1:2 | x3 [0,1] 3 c1:1"},
        {"good-mps-fixed-var.mps", "min 0 | ROW1 [-inf,5.4000000000000004] | ROW2 [-inf,4.9000000000000004] | "
                                   "VAR1 [2,2] 0.20000000000000001 ROW1:3 ROW2:2.7000000000000002 | "
                                   "VAR2 [0,inf] 0.10000000000000001 ROW1:4 ROW2:10.1"},
        {"good-mps-fixed-two-objectives.mps",
         "min 0 | COST6679327 [-inf,inf] | ROW1 [-inf,5.4000000000000004] | ROW2 [-inf,4.9000000000000004] | "
         "VAR1 [0,inf] 0.20000000000000001 ROW1:3 ROW2:2.7000000000000002 | "
         "VAR2 [0,inf] 0.10000000000000001 ROW1:4 ROW2:10.1"},
        {"moi_free_integer.mps", "min 0 | con1 [1,inf] | int x [-inf,inf] 1 con1:1"},
        {"moi_integer_default_bounds.mps", "min 0 | int x [0,1] 1"},
        {"moi_integer_default_bounds_PL.mps", "min 0 | int x [0,inf] 1"},
        {"qpsreader_rim_obj.qps",
         "min 4.0999999999999996 | obj2 [-inf,inf] | r1 [2,inf] | r2 [-inf,6] | obj3 [-inf,inf] | "
         "c1 [0,inf] 1.5 r1:2.1000000000000001 r2:-1 obj2:2.2000000000000002 obj3:2.2999999999999998 | "
         "c2 [0,inf] -2.1000000000000001 r1:1 r2:2 obj2:-2.2000000000000002 obj3:-2.2999999999999998"},
        {"qpsreader_rim_rng.qps",
         "min 4.0999999999999996 | r1 [2,3.1000000000000001] | r2 [3.8999999999999999,6] | "
         "c1 [0,inf] 1.5 r1:2.1000000000000001 r2:-1 | c2 [0,inf] -2.1000000000000001 r1:1 r2:2"},
        {"silly-names.mps", "min 0 | R0 [-1,inf] | C0 [0,inf] -1 R0:-1 | OBJSENSE [0,inf] -1 R0:-1 | "
                            "RANGES [0,inf] -1 R0:-1 | RHS [0,inf] -1 R0:-1 | C1 [0,inf] -1 R0:-1"},
        {"toymps_ranges.mps", "min 0 | c1 [15,30] | x1 [0,inf] -1 c1:1 | x2 [0,inf] -2 c1:-3 | x3 [0,inf] -3 c1:1"},
    };
    if (!std::filesystem::exists(ZELOR_DATA_DIR "/reader")) GTEST_SKIP() << "no problem files";
    for (const auto &c : cases) {
        SCOPED_TRACE(c.file);
        caught_io context(std::string(ZELOR_DATA_DIR "/reader/") + c.file);
        model m;
        EXPECT_EQ(read_file(&context, &m), good) << context.log;
        EXPECT_EQ(shown(m), c.shown);
    }
}

/* Names with blanks, of fixed files, and with a $ in front are replaced when we write; all else must come back. */
bool has_odd_name(const name_table &names, int32_t num)
{
    const std::vector<std::string> all = names_of(names, num);
    return std::any_of(all.begin(), all.end(),
                       [](const std::string &n) { return n.find(' ') != std::string::npos || n[0] == '$'; });
}

TEST(MpsFiles, RoundTripBitByBit)
{
    const std::vector<listed_file> files = listed_files();
    if (files.empty()) GTEST_SKIP() << "no problem files";
    temp_folder folder;
    for (const listed_file &file : files) {
        SCOPED_TRACE(file.path);
        caught_io context(std::string(ZELOR_DATA_DIR "/") + file.path);
        model m;
        if (read_file(&context, &m) != good) continue;
        /* The small ones through gzip, which is slow. */
        caught_io copy(folder.file(model_num_nz(&m) < 1000 ? "copy.mps.gz" : "copy.mps"));
        model back;
        int32_t format = -1;
        EXPECT_EQ(problem_write(&copy.io, &m, &format), good) << copy.log;
        EXPECT_EQ(problem_read(&copy.io, &back, &format), good) << copy.log;
        const bool is_renamed = has_odd_name(m.con_names, m.num_con) || has_odd_name(m.var_names, m.num_var);
        EXPECT_EQ(copy.log.find("cannot stand in an MPS file") != std::string::npos, is_renamed) << copy.log;
        if (is_renamed) {
            m.con_names = back.con_names;
            m.var_names = back.var_names;
        }
        EXPECT_EQ(m.obj_name, back.obj_name);
        expect_same(m, back);
    }
}

/* ---- Other programs ------------------------------------------------------------------------------------------------ */

std::string output_of(const std::string &command)
{
    std::string text;
    std::FILE *pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return text;
    char part[4096];
    for (size_t got; (got = std::fread(part, 1, sizeof part, pipe)) > 0;) text.append(part, got);
    pclose(pipe);
    return text;
}

/* The number behind the last place where `word` stands; NaN if there is none. */
double number_behind(const std::string &text, const std::string &word)
{
    const size_t at = text.rfind(word);
    return at == std::string::npos ? std::nan("") : std::strtod(text.c_str() + at + word.size(), nullptr);
}

struct peer {
    const char *program, *command, *word; /* the command has FILE and OUT in it */
};

const peer peers[] = {
    {"glpsol",
     "glpsol --freemps FILE -o OUT > /dev/null 2>&1; sed -n 's/^Objective:.* = \\([^ ]*\\).*/objective \\1/p' OUT",
     "objective"},
    {"cbc",
     "cbc FILE solve 2>&1 | sed -n -e 's/^Objective value: */objective /p' -e 's/^Optimal - objective value /objective /p'",
     "objective"},
    {"clp", "clp FILE -dualsimplex 2>&1 | sed -n 's/^Optimal objective \\([^ ]*\\).*/objective \\1/p'", "objective"},
};

std::string command_of(const peer &p, const std::string &file, const std::string &out)
{
    std::string command = p.command;
    for (size_t at; (at = command.find("FILE")) != std::string::npos;) command.replace(at, 4, file);
    for (size_t at; (at = command.find("OUT")) != std::string::npos;) command.replace(at, 3, out);
    return command;
}

bool is_installed(const char *program)
{
    return std::system((std::string("command -v ") + program + " > /dev/null 2>&1").c_str()) == 0;
}

/* Solves what we write of a text with every peer, and compares with the value worked out by hand. */
TEST(MpsPeers, TakeWhatWeWriteAsItIsMeant)
{
    static const struct {
        const char *name, *text;
        double value;
        bool continuous;
    } cases[] = {
        {"integer up to infinity",
         "ROWS\n N o\n L a\nCOLUMNS\n M 'MARKER' 'INTORG'\n x o -1 a 1\nRHS\n R a 9.5\nBOUNDS\n"
         " PL B x\nENDATA\n",
         -9, false},
        {"integer from 2 to infinity",
         "ROWS\n N o\n L a\nCOLUMNS\n M 'MARKER' 'INTORG'\n x o -1 a 1\nRHS\n R a 9.5\n"
         "BOUNDS\n LO B x 2\nENDATA\n",
         -9, false},
        {"binary", "ROWS\n N o\n L a\nCOLUMNS\n M 'MARKER' 'INTORG'\n x o -1 a 1\nRHS\n R a 9.5\nENDATA\n", -1, false},
        {"free integer",
         "ROWS\n N o\n G a\nCOLUMNS\n M 'MARKER' 'INTORG'\n x o 1 a 1\nRHS\n R a -7.5\nBOUNDS\n"
         " FR B x\nENDATA\n",
         -7, false},
        {"integer below 3",
         "ROWS\n N o\n G a\nCOLUMNS\n M 'MARKER' 'INTORG'\n x o -1 a 1\nRHS\n R a -7.5\nBOUNDS\n"
         " MI B x\n UP B x 3\nENDATA\n",
         -3, false},
        {"negative upper bound",
         "ROWS\n N o\n G a\nCOLUMNS\n x o -1 a 1\nRHS\n R a -7.5\nBOUNDS\n MI B x\n UP B x -2\n"
         "ENDATA\n",
         2, true},
        {"negative bounds",
         "ROWS\n N o\n G a\nCOLUMNS\n x o 1 a 1\nRHS\n R a -7.5\nBOUNDS\n LO B x -3\n UP B x -2\n"
         "ENDATA\n",
         -3, true},
        {"ranges",
         "ROWS\n N o\n E a\n G b\n L c\nCOLUMNS\n x o 1 a 1\n y o -1 b 1\n z o 1 c 1\nRHS\n R a 10 b 10\n"
         " R c 10\nRANGES\n R a -4 b 4\n R c 4\nBOUNDS\n FR B x\n FR B y\n FR B z\nENDATA\n",
         6 - 14 + 6, true},
        {"free rows", "ROWS\n N o\n N f\n L a\n N g\nCOLUMNS\n x o -1 f 1\n x a 1 g 2\nRHS\n R a 4\nENDATA\n", -4,
         true},
        {"constant", "ROWS\n N o\n L a\nCOLUMNS\n x o -1 a 1\nRHS\n R o -10 a 4\nENDATA\n", 6, true},
    };
    int32_t num_peers = 0;
    temp_folder folder;
    for (const peer &p : peers) {
        if (!is_installed(p.program)) continue;
        ++num_peers;
        for (const auto &c : cases) {
            if (std::string(p.program) == "clp" && !c.continuous) continue;
            /* This one adds a right-hand side of the objective where the others, and we, take it off. */
            if (std::string(p.program) == "glpsol" && std::string(c.name) == "constant") continue;
            SCOPED_TRACE(std::string(p.program) + ": " + c.name);
            caught_io context(folder.file("peer.mps"));
            model m;
            int32_t format = -1;
            ASSERT_EQ(read_text(&context, c.text, &m), good) << context.log;
            ASSERT_EQ(problem_write(&context.io, &m, &format), good);
            const std::string text = output_of(command_of(p, context.name, folder.file("peer.out")));
            EXPECT_NEAR(number_behind(text, "objective"), c.value, 1e-6) << text << file_text(context.name);
        }
    }
    if (num_peers == 0) GTEST_SKIP() << "no other program installed";
}

/* The same optimum from the original and from our copy, for files that are quick to solve. */
TEST(MpsPeers, SolveOurCopyToTheSameValue)
{
    static const char *const names[] = {"lp/glpk_murtagh.mps", "lp/scagr7.mps", "ranging/plan.mps", "mip/p0033.mps",
                                        "mip/flugpl.mps",      "mip/egout.mps", "mip/bell5.mps"};
    if (!is_installed("glpsol") || !std::filesystem::exists(ZELOR_DATA_DIR "/lp"))
        GTEST_SKIP() << "nothing to compare with";
    temp_folder folder;
    for (const char *name : names) {
        SCOPED_TRACE(name);
        caught_io context(std::string(ZELOR_DATA_DIR "/") + name);
        caught_io copy(folder.file("copy.mps"));
        model m;
        int32_t format = -1;
        ASSERT_EQ(read_file(&context, &m), good) << context.log;
        ASSERT_EQ(problem_write(&copy.io, &m, &format), good) << copy.log;
        std::string original = command_of(peers[0], context.name, folder.file("a.out"));
        original.replace(original.find("--freemps"), 9, "--mps");
        const double before = number_behind(output_of(original), "objective");
        const double after =
            number_behind(output_of(command_of(peers[0], copy.name, folder.file("b.out"))), "objective");
        EXPECT_FALSE(std::isnan(before));
        EXPECT_NEAR(after, before, 1e-9 * std::fabs(before));
    }
}
}  // namespace
