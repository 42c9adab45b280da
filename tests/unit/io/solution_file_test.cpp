/* The library's own solution files: the same bits back, and nothing misread. */
#include "solver/io/solution_file.h"
#include "support/sys.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

namespace fs = std::filesystem;

class solution_file : public testing::Test
{
protected:
    void SetUp() override
    {
        std::string made = (fs::temp_directory_path() / "zelor-solution-XXXXXX").string();
        ASSERT_NE(mkdtemp(made.data()), nullptr);
        folder = made;
        path = (folder / "s.bas").string();
        param_set_defaults(&params);
        const auto append = [](void *text, const char *piece) { *static_cast<std::string *>(text) += piece; };
        out.out[ZLR_STREAM_ERR] = {append, &errors, nullptr};
        make_problem();
    }

    void TearDown() override { fs::remove_all(folder); }

    /* x + 2y in [1, 8], x free of bounds, y in [-inf, 3], z without a name. */
    void make_problem()
    {
        m.name = "a problem";
        model_append_cons(&m, 2);
        model_append_vars(&m, 3);
        m.con_lower = {1.0, -model_inf};
        m.con_upper = {8.0, 5.0};
        m.var_lower = {-model_inf, -model_inf, 0.1};
        m.var_upper = {model_inf, 3.0, 0.1};
        m.c = {1.0, 1.0, 1.0};
        const int32_t rows[] = {0, 1};
        const double values[] = {1.0, 2.0};
        model_put_column(&m, 0, 1, rows, values);
        model_put_column(&m, 1, 2, rows, values);
        names_put(&m.con_names, 0, "capacity");
        names_put(&m.con_names, 1, "row two");
        names_put(&m.var_names, 0, "x");
        names_put(&m.var_names, 1, "[y] \"\\\t#");
        solution_reset(&sol, m.num_con, m.num_var);
    }

    /* Four columns more, in two cones. */
    void add_cones()
    {
        model_append_vars(&m, 4);
        m.cones = {{ZLR_CT_QUAD, {6, 0}}, {ZLR_CT_RQUAD, {3, 5, 4}}};
        solution_reset(&sol, m.num_con, m.num_var, model_num_cones(&m));
        sol.defined = sol.has_keys = sol.has_primal = sol.has_dual = true;
        sol.solsta = ZLR_SOLSTA_OPTIMAL;
        sol.skn = {ZLR_SK_SUPBAS, ZLR_SK_FIXED};
        sol.skx[6] = ZLR_SK_LOWER;
        sol.xx = {1.0 / 3.0, 2.0, 0.1, 1e-9, -0.0, 7.0, 9.0};
        sol.snx = {-1.0 / 7.0, 0.0, 0.0, 1e-300, 5e-324, 2.0, 0.3};
        sol.slx[6] = 1.5;
    }

    void fill_solution()
    {
        sol.defined = sol.has_keys = sol.has_primal = sol.has_dual = true;
        sol.prosta = ZLR_PRO_PRIM_AND_DUAL_FEAS;
        sol.solsta = ZLR_SOLSTA_OPTIMAL;
        sol.primal_obj = 1.0 / 3.0;
        sol.dual_obj = -0.0;
        sol.skc = {ZLR_SK_LOWER, ZLR_SK_BASIC};
        sol.skx = {ZLR_SK_SUPBAS, ZLR_SK_UPPER, ZLR_SK_FIXED};
        sol.xc = {0.1 + 0.2, 4.9406564584124654e-324};
        sol.xx = {-1.7976931348623157e308, -0.0, 0.1};
        sol.y = {1e-300, 2.0 / 3.0};
        sol.slc = {1e22, 0.0};
        sol.suc = {0.0, 123456789.123456789};
        sol.slx = {1.0, 2.0, 3.0};
        sol.sux = {5e-7, 0.0, 1.0 / 7.0};
    }

    int32_t write(int32_t kind = ZLR_SOL_BAS)
    {
        const io_context io = {path.c_str(), &params, &out, test_sys()};
        return solution_file_write(&io, &m, &sol, kind);
    }

    int32_t read(solution *back, int32_t kind = ZLR_SOL_BAS)
    {
        const io_context io = {path.c_str(), &params, &out, test_sys()};
        errors.clear();
        return solution_file_read(&io, &m, kind, back);
    }

    int32_t read_text(const std::string &text, solution *back, int32_t kind = ZLR_SOL_BAS)
    {
        std::ofstream(path, std::ios::binary) << text;
        return read(back, kind);
    }

    std::string file_text() const
    {
        std::ifstream in(path, std::ios::binary);
        std::stringstream text;
        text << in.rdbuf();
        return text.str();
    }

    fs::path folder;
    std::string path, errors;
    param_set params;
    stream_set out;
    model m;
    solution sol;
};

static bool same_bits(const std::vector<double> &a, const std::vector<double> &b)
{
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0);
}

static void expect_same(const solution &a, const solution &b, bool duals)
{
    EXPECT_EQ(a.defined, b.defined);
    EXPECT_EQ(a.prosta, b.prosta);
    EXPECT_EQ(a.solsta, b.solsta);
    EXPECT_EQ(a.has_keys, b.has_keys);
    EXPECT_EQ(a.has_primal, b.has_primal);
    EXPECT_EQ(a.has_dual && duals, b.has_dual);
    EXPECT_TRUE(same_bits({a.primal_obj, a.dual_obj}, {b.primal_obj, b.dual_obj}));
    EXPECT_EQ(a.skc, b.skc);
    EXPECT_EQ(a.skx, b.skx);
    EXPECT_EQ(a.skn, b.skn);
    EXPECT_TRUE(same_bits(a.xc, b.xc));
    EXPECT_TRUE(same_bits(a.xx, b.xx));
    if (!duals) return;
    EXPECT_TRUE(same_bits(a.y, b.y));
    EXPECT_TRUE(same_bits(a.slc, b.slc));
    EXPECT_TRUE(same_bits(a.suc, b.suc));
    EXPECT_TRUE(same_bits(a.slx, b.slx));
    EXPECT_TRUE(same_bits(a.sux, b.sux));
    EXPECT_TRUE(same_bits(a.snx, b.snx));
}

TEST_F(solution_file, same_bits_back)
{
    for (const int32_t kind : {ZLR_SOL_ITR, ZLR_SOL_BAS, ZLR_SOL_ITG}) {
        SCOPED_TRACE(kind);
        fill_solution();
        ASSERT_EQ(write(kind), ZLR_RES_OK) << errors;
        solution back;
        ASSERT_EQ(read(&back, kind), ZLR_RES_OK) << errors;
        expect_same(sol, back, kind != ZLR_SOL_ITG);
        EXPECT_EQ(file_text().find("slx") == std::string::npos, kind == ZLR_SOL_ITG);
        EXPECT_EQ(file_text().find("cones"), std::string::npos); /* only where there are some */
        EXPECT_EQ(file_text().find("snx"), std::string::npos);
    }
}

TEST_F(solution_file, cones_and_their_duals_come_back)
{
    for (const int32_t kind : {ZLR_SOL_ITR, ZLR_SOL_ITG}) {
        SCOPED_TRACE(kind);
        m = model{};
        make_problem();
        add_cones();
        ASSERT_EQ(write(kind), ZLR_RES_OK) << errors;
        const std::string text = file_text();
        EXPECT_NE(text.find("\ncones             2\n"), std::string::npos) << text;
        EXPECT_NE(text.find("[cones] name key type members\nk1                   SB         QUAD            2\n"
                            "k2                   EQ        RQUAD            3\n\n[end]\n"),
                  std::string::npos)
            << text;
        EXPECT_EQ(text.find(" slx sux snx\n") == std::string::npos, kind == ZLR_SOL_ITG);
        solution back;
        ASSERT_EQ(read(&back, kind), ZLR_RES_OK) << errors;
        expect_same(sol, back, kind != ZLR_SOL_ITG);
        for (size_t length = 0; length < text.size() - 1; length += 11)
            ASSERT_NE(read_text(text.substr(0, length), &back, kind), ZLR_RES_OK) << "cut at " << length;
    }
}

TEST_F(solution_file, other_cones_are_told)
{
    add_cones();
    ASSERT_EQ(write(), ZLR_RES_OK) << errors;
    const std::string text = file_text();
    const auto changed = [&](const std::string &from, const std::string &to) {
        std::string other = text;
        return other.replace(other.find(from), from.size(), to);
    };
    const struct {
        std::string text;
        int32_t code;
        const char *message;
    } cases[] = {
        {changed("cones             2", "cones             3"), ZLR_RES_ERR_SOL_MISMATCH,
         "the file has 3 cones, the problem has 2"},
        {changed("        QUAD   ", "       RQUAD   "), ZLR_RES_ERR_SOL_MISMATCH,
         "cone 1 is RQUAD in the file and QUAD in the problem"},
        {changed("RQUAD            3", "RQUAD            4"), ZLR_RES_ERR_SOL_MISMATCH,
         "cone 2 has 4 members in the file and 3 in the problem"},
        {changed("        QUAD   ", "         POW   "), ZLR_RES_ERR_FILE_FORMAT, "a type of cones (QUAD, RQUAD)"},
        {changed("\nk2", "\nk3"), ZLR_RES_ERR_SOL_MISMATCH, "the problem has no cone k3"},
        {changed("\nk2                   EQ        RQUAD            3\n", "\n"), ZLR_RES_ERR_SOL_MISMATCH,
         "the section lists 1 of 2 cones; all must be listed, and k2 is missing"},
        {changed(" slx sux snx", " slx sux"), ZLR_RES_ERR_FILE_FORMAT,
         "expected all dual fields of a column (slx sux snx) or none"},
    };
    for (const auto &c : cases) {
        solution back;
        EXPECT_EQ(read_text(c.text, &back), c.code) << c.message;
        EXPECT_NE(errors.find(c.message), std::string::npos) << errors;
    }
    m.cones.clear();
    solution back;
    EXPECT_EQ(read_text(text, &back), ZLR_RES_ERR_SOL_MISMATCH);
}

/* A start need not speak of cones. */
TEST_F(solution_file, cones_may_be_left_out)
{
    add_cones();
    solution back;
    const std::string start = "zelor-solution 1\n[columns] name activity\nx 1\n\"[y] \\\"\\\\\\x09#\" 2\n"
                              "x3 3\nx4 4\nx5 5\nx6 6\nx7 7\n[end]\n";
    ASSERT_EQ(read_text(start, &back), ZLR_RES_OK) << errors;
    EXPECT_TRUE(back.has_primal && !back.has_dual);
    EXPECT_EQ(back.skn, (std::vector<int32_t>{ZLR_SK_UNDEF, ZLR_SK_UNDEF}));
    EXPECT_EQ(back.snx, std::vector<double>(7, 0.0));
}

TEST_F(solution_file, every_status_and_key_comes_back)
{
    fill_solution();
    for (int32_t status = 0; status <= ZLR_SOLSTA_NEAR_INTEGER_OPTIMAL; status++) {
        if (status > ZLR_SOLSTA_NEAR_DUAL_INFEAS_CER && status < ZLR_SOLSTA_INTEGER_OPTIMAL) continue;
        sol.solsta = status;
        sol.prosta = status % 9;
        sol.skx[0] = status % 7;
        /* A ray is no start, and an unfinished one has infinite objectives. */
        sol.has_primal = sol.has_dual = status < ZLR_SOLSTA_PRIM_INFEAS_CER;
        sol.dual_obj = status % 2 != 0 ? -model_inf : model_inf;
        ASSERT_EQ(write(), ZLR_RES_OK) << errors;
        solution back;
        ASSERT_EQ(read(&back), ZLR_RES_OK) << errors;
        expect_same(sol, back, true);
    }
}

TEST_F(solution_file, a_start_of_keys_alone_stays_one)
{
    sol.defined = sol.has_keys = true;
    sol.skx[1] = ZLR_SK_BASIC;
    sol.primal_obj = std::nan("");
    ASSERT_EQ(write(), ZLR_RES_OK) << errors;
    solution back;
    ASSERT_EQ(read(&back), ZLR_RES_OK) << errors;
    EXPECT_TRUE(back.has_keys);
    EXPECT_FALSE(back.has_primal || back.has_dual);
    EXPECT_TRUE(std::isnan(back.primal_obj));
}

TEST_F(solution_file, cut_at_every_byte_is_refused)
{
    fill_solution();
    ASSERT_EQ(write(), ZLR_RES_OK) << errors;
    const std::string whole = file_text();
    for (size_t length = 0; length < whole.size() - 1; length++) {
        solution back;
        EXPECT_NE(read_text(whole.substr(0, length), &back), ZLR_RES_OK) << "cut at " << length;
        EXPECT_FALSE(back.defined);
        EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 1) << length << ": " << errors;
        EXPECT_EQ(errors.rfind(path, 0), 0U) << errors;
    }
    /* The line end behind [end] says nothing. */
    solution back;
    EXPECT_EQ(read_text(whole.substr(0, whole.size() - 1), &back), ZLR_RES_OK) << errors;
}

TEST_F(solution_file, any_byte_changed_is_read_or_refused_in_order)
{
    fill_solution();
    ASSERT_EQ(write(), ZLR_RES_OK) << errors;
    const std::string whole = file_text();
    for (size_t at = 0; at < whole.size(); at++)
        for (const char byte : {'"', '\n', '9'}) {
            std::string changed = whole;
            changed[at] = byte;
            solution back;
            const int32_t res = read_text(changed, &back);
            EXPECT_EQ(back.defined, res == ZLR_RES_OK);
            EXPECT_EQ(errors.empty(), res == ZLR_RES_OK) << errors;
        }
}

TEST_F(solution_file, line_ends_order_comments_and_gzip)
{
    fill_solution();
    const std::string plain = path;
    path = (folder / "s.bas.gz").string();
    ASSERT_EQ(write(), ZLR_RES_OK) << errors;
    EXPECT_EQ(file_text().substr(0, 2), "\x1f\x8b");
    solution back;
    ASSERT_EQ(read(&back), ZLR_RES_OK) << errors;
    expect_same(sol, back, true);

    path = plain;
    ASSERT_EQ(write(), ZLR_RES_OK) << errors;
    std::string other = "# a comment\r\n";
    for (const char c : file_text()) other += c == '\n' ? "  \t\r\n\r\n" : std::string(1, c);
    ASSERT_EQ(read_text(other, &back), ZLR_RES_OK) << errors;
    expect_same(sol, back, true);
}

TEST_F(solution_file, written_by_hand)
{
    solution back;
    const std::string text = "zelor-solution 1\n"
                             "[columns] name activity\n"
                             "x3 0.1\n"
                             "x 2\n"
                             "\"[y] \\\"\\\\\\x09#\" 1.5\n"
                             "[end]\n";
    ASSERT_EQ(read_text(text, &back, ZLR_SOL_ITG), ZLR_RES_OK) << errors;
    EXPECT_TRUE(back.has_primal);
    EXPECT_FALSE(back.has_keys || back.has_dual);
    EXPECT_EQ(back.solsta, ZLR_SOLSTA_UNKNOWN);
    EXPECT_EQ(back.xx, (std::vector<double>{2.0, 1.5, 0.1}));
    EXPECT_EQ(back.xc, (std::vector<double>{3.5, 3.0})); /* recomputed */
    EXPECT_DOUBLE_EQ(back.primal_obj, 3.6);
}

TEST_F(solution_file, repeated_names_go_by_position)
{
    fill_solution();
    names_put(&m.con_names, 1, "capacity");
    names_put(&m.var_names, 0, "x3"); /* the name that the third column is shown by */
    ASSERT_EQ(write(), ZLR_RES_OK) << errors;
    solution back;
    ASSERT_EQ(read(&back), ZLR_RES_OK) << errors;
    expect_same(sol, back, true);

    const std::string text = "zelor-solution 1\n[columns] name activity\nx3 1\nx3 2\n";
    EXPECT_EQ(read_text(text + "\"[y] \\\"\\\\\\x09#\" 3\n[end]\n", &back), ZLR_RES_ERR_SOL_MISMATCH);
    EXPECT_NE(errors.find("(4): "), std::string::npos) << errors;
}

TEST_F(solution_file, faults_are_told_with_line_found_expected)
{
    const std::string magic = "zelor-solution 1\n", columns = "[columns] name activity\n";
    const std::string y = "\"[y] \\\"\\\\\\x09#\"";
    const struct {
        const char *name;
        std::string text;
        int32_t code;
        const char *message;
    } cases[] = {
        {"empty", "", ZLR_RES_ERR_FILE_FORMAT, "empty"},
        {"another format", "NAME afiro\n", ZLR_RES_ERR_FILE_FORMAT, "(1): "},
        {"another version", "zelor-solution 2\n", ZLR_RES_ERR_FILE_FORMAT, "zelor-solution 1"},
        {"unknown keyword", magic + "colour red\n", ZLR_RES_ERR_FILE_FORMAT, "(2): "},
        {"keyword twice", magic + "rows 2\nrows 2\n", ZLR_RES_ERR_FILE_FORMAT, "(3): "},
        {"keyword without value", magic + "rows\n", ZLR_RES_ERR_FILE_FORMAT, "value of rows"},
        {"more rows", magic + "rows 3\n", ZLR_RES_ERR_SOL_MISMATCH, "the file has 3 rows, the problem has 2"},
        {"no number of rows", magic + "rows two\n", ZLR_RES_ERR_FILE_FORMAT, "two"},
        {"another kind", magic + "kind integer\n", ZLR_RES_ERR_SOL_MISMATCH, "integer"},
        {"unknown status", magic + "solution_status GOOD\n", ZLR_RES_ERR_FILE_FORMAT, "GOOD"},
        {"unknown field", magic + "[columns] name slc\n", ZLR_RES_ERR_FILE_FORMAT, "slc"},
        {"field twice", magic + "[columns] name key key\n", ZLR_RES_ERR_FILE_FORMAT, "key occurs twice"},
        {"no name field", magic + "[columns] activity\n", ZLR_RES_ERR_FILE_FORMAT, "name as the first field"},
        {"half the duals", magic + "[rows] name y\n", ZLR_RES_ERR_FILE_FORMAT, "y slc suc"},
        {"unknown name", magic + columns + "w 1\n", ZLR_RES_ERR_SOL_MISMATCH, "(3): the problem has no column"},
        {"name twice", magic + columns + "x 1\nx 1\n", ZLR_RES_ERR_SOL_MISMATCH, "(4): column"},
        {"column missing", magic + columns + "x 1\nx3 1\n[end]\n", ZLR_RES_ERR_SOL_MISMATCH, "2 of 3 columns"},
        {"no columns", magic + "[end]\n", ZLR_RES_ERR_FILE_FORMAT, "[columns]"},
        {"no number", magic + columns + "x 1.5.2\n", ZLR_RES_ERR_FILE_FORMAT, "1.5.2"},
        {"infinite value", magic + columns + "x inf\n", ZLR_RES_ERR_FILE_FORMAT, "finite"},
        {"NaN", magic + columns + "x nan\n", ZLR_RES_ERR_FILE_FORMAT, "nan"},
        {"short line", magic + columns + "x\n", ZLR_RES_ERR_FILE_FORMAT, "expected field activity"},
        {"long line", magic + columns + "x 1 2\n", ZLR_RES_ERR_FILE_FORMAT, "end of the line"},
        {"open quote", magic + columns + "\"x 1\n", ZLR_RES_ERR_FILE_FORMAT, "(3): "},
        {"unknown escape", magic + columns + "\"\\x\" 1\n", ZLR_RES_ERR_FILE_FORMAT, "(3): "},
        {"unknown key", magic + "[columns] name key\nx XX\n", ZLR_RES_ERR_FILE_FORMAT, "XX"},
        {"unknown section", magic + "[sets]\n", ZLR_RES_ERR_FILE_FORMAT, "[sets]"},
        {"cones of none", magic + "cones 1\n", ZLR_RES_ERR_SOL_MISMATCH, "the file has 1 cones, the problem has 0"},
        {"a cone of none", magic + "[cones] name\nk1\n", ZLR_RES_ERR_SOL_MISMATCH, "the problem has no cone k1"},
        {"cone duals of none", magic + "[columns] name slx sux snx\n", ZLR_RES_ERR_FILE_FORMAT, "snx"},
        {"section twice", magic + "[rows] name\ncapacity\n\"row two\"\n[rows] name\n", ZLR_RES_ERR_FILE_FORMAT,
         "(5): "},
        {"promise not kept", magic + "holds keys\n" + columns + "x 1\n" + y + " 1\nx3 1\n[end]\n",
         ZLR_RES_ERR_FILE_FORMAT, "holds"},
        {"text behind the end", magic + columns + "x 1\n" + y + " 1\nx3 1\n[end]\nx 2\n", ZLR_RES_ERR_FILE_FORMAT,
         "(7): "},
        {"zero byte", magic + std::string("ro\0ws 1\n", 8), ZLR_RES_ERR_FILE_FORMAT, "(2): "},
    };
    for (const auto &c : cases) {
        solution back;
        EXPECT_EQ(read_text(c.text, &back), c.code) << c.name << ": " << errors;
        EXPECT_NE(errors.find(c.message), std::string::npos) << c.name << ": " << errors;
        EXPECT_FALSE(back.defined) << c.name;
    }
    solution back;
    EXPECT_EQ(read_text(magic + "[columns] name activity slx sux\n", &back, ZLR_SOL_ITG), ZLR_RES_ERR_FILE_FORMAT);
    path = (folder / "absent").string();
    EXPECT_EQ(read(&back), ZLR_RES_ERR_FILE_READ);
}

TEST_F(solution_file, failed_writes_leave_nothing)
{
    fill_solution();
    sol.xx[1] = std::nan("");
    EXPECT_EQ(write(), ZLR_RES_ERR_NAN);
    EXPECT_FALSE(fs::exists(path));
    EXPECT_NE(errors.find("[y]"), std::string::npos) << errors;
    fill_solution();
    path = (folder / "no" / "s.bas").string();
    EXPECT_EQ(write(), ZLR_RES_ERR_FILE_OPEN);
    if (fs::exists("/dev/full")) {
        path = "/dev/full";
        EXPECT_EQ(write(), ZLR_RES_ERR_FILE_WRITE);
    }
    EXPECT_TRUE(fs::is_empty(folder));
}

TEST_F(solution_file, empty_problem)
{
    m = model{};
    solution_reset(&sol, 0, 0);
    sol.defined = true;
    ASSERT_EQ(write(), ZLR_RES_OK) << errors;
    solution back;
    EXPECT_EQ(read(&back), ZLR_RES_OK) << errors;
    EXPECT_TRUE(back.defined);
}

/* The examples of the documentation are files of the format. */
TEST_F(solution_file, documented_examples_are_read)
{
    std::ifstream in(ZELOR_SOURCE_DIR "/docs/formats-solution.md");
    std::stringstream text;
    text << in.rdbuf();
    const std::string page = text.str(), fence = "```\n";
    m = model{};
    model_append_cons(&m, 2);
    model_append_vars(&m, 2);
    names_put(&m.con_names, 0, "capacity");
    names_put(&m.con_names, 1, "row two");
    names_put(&m.var_names, 0, "x");
    names_put(&m.var_names, 1, "y");
    int num_examples = 0;
    for (size_t at = page.find(fence); at != std::string::npos; at = page.find(fence, at + 1)) {
        at += fence.size();
        const size_t end = page.find(fence, at);
        ASSERT_NE(end, std::string::npos);
        solution back;
        EXPECT_EQ(read_text(page.substr(at, end - at), &back), ZLR_RES_OK) << errors;
        EXPECT_EQ(back.xx, (std::vector<double>{3.0, 1.0}));
        num_examples++;
        at = end;
    }
    EXPECT_EQ(num_examples, 2);
}
