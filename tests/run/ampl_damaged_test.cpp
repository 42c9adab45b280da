/* ampl_damaged_test.cpp - stubs that are damaged, or are none, on the real library: each is refused with a message that names
 * the place, and with AMPL_EXTENDED a .sol file that says the same; none ends the program or keeps it busy. */
#include "run_support.h"

#include "support/nl_text.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <limits>
#include <random>
#include <sstream>

/* A model with all that a stub can hold, but for functions of a user's own. */
static nl_model rich_model()
{
    nl_model m;
    m.columns = {{0.0, 10.0}, {0.0, 10.0}, {}, {-1.0, nl_infinite}};
    m.commons = {{.linear = {{1, 0.5}}, .nonlinear = nl_square(1)}};
    m.rows = {{.upper = 50.0, .linear = {{0, 1.0}, {1, 1.0}}, .nonlinear = nl_plus(nl_square(0), nl_variable(4))},
              {.lower = 1.0, .linear = {{1, 1.0}, {2, 2.0}}},
              {.lower = -3.0, .upper = 8.0, .linear = {{2, 1.0}, {3, 1.0}}}};
    m.objectives = {{.linear = {{0, 1.0}, {2, 1.0}, {3, 1.0}}, .nonlinear = nl_square(0)}};
    m.nlvc = 2;
    m.nlvo = m.nlvb = 1;
    m.suffixes = {{0, "sstatus", {{0, 1}, {1, 3}}}, {1, "sstatus", {{2, 1}}}, {4, "weight", {{3, 0.5}}}};
    m.x = {{0, 0.5}, {3, 1.0}};
    m.y = {{1, -0.5}};
    return m;
}

struct stub_run {
    process_result process;
    std::string code, sol; /* the code's name; empty where there is no .sol file */
};

static stub_run run_stub(const temp_folder &folder, bool extended)
{
    process_options options;
    options.args = {"s", "-AMPL", "-a", "-rout", folder.file("code"), "-r"};
    if (extended) options.args.insert(options.args.begin() + 2, "ampl_extended=on");
    options.folder = folder.path;
    options.limit_s = 30;
    options.memory_bytes = int64_t{4} << 30;
    std::filesystem::remove(folder.file("s.sol"));
    stub_run run;
    run.process = process_run(ZELOR_PROGRAM, options);
    EXPECT_FALSE(run.process.timed_out);
    EXPECT_EQ(run.process.signal, 0);
    run.code = file_read(folder.file("code"));
    if (!run.code.empty()) run.code.pop_back();
    run.sol = file_read(folder.file("s.sol"));
    return run;
}

static int code_of(const std::string &sol)
{
    const size_t at = sol.find("\nobjno 0 ");
    return at == std::string::npos ? -1 : std::stoi(sol.substr(at + 9));
}

/* In both modes. `what` begins with the file's name. */
static void check_refused(const temp_folder &folder, const std::string &what,
                          const char *code = "ZLR_RES_ERR_AMPL_STUB")
{
    const stub_run run = run_stub(folder, false);
    EXPECT_EQ(run.code, code);
    EXPECT_NE(run.process.out.find("** Fatal error: " + what), std::string::npos) << what << "\n" << run.process.out;
    EXPECT_EQ(run.sol, "");
    const stub_run extended = run_stub(folder, true);
    EXPECT_EQ(extended.code, code);
    EXPECT_NE(extended.sol.find("\n" + what), std::string::npos) << what << "\n" << extended.sol;
    EXPECT_EQ(code_of(extended.sol), 520);
}

static int line_of(const std::string &text, const std::string &line)
{
    std::istringstream in(text);
    std::string found;
    for (int number = 1; std::getline(in, found); ++number)
        if (found == line) return number;
    ADD_FAILURE() << "no line '" << line << "'";
    return 0;
}

/* ---- One fault ---- */

TEST(ampl_damaged, undamaged)
{
    for (const nl_form form : {NL_TEXT, NL_BINARY, NL_SWAPPED}) {
        const temp_folder folder;
        file_write(folder.file("s.nl"), nl_text(rich_model(), form));
        const stub_run run = run_stub(folder, false);
        EXPECT_EQ(run.process.out.find("Fatal"), std::string::npos) << run.process.out;
        EXPECT_NE(run.sol, "");
    }
}

/* A line of the stub becomes another; the fault is told `place` lines behind it, or without a place (-1). */
TEST(ampl_damaged, lines)
{
    const struct {
        const char *line, *damaged;
        int place;
        const char *what;
    } cases[] = {
        /* The header. */
        {"g3 1 1 0\t# problem test", "x3 1 1 0", 0, "expected an AMPL stub, which begins with 'g' or 'b', found 'x3'"},
        {"g3 1 1 0\t# problem test", "g10 1 1 0", 0, "expected a count of options from 0 to 9, found 10"},
        {" 4 3 1 1 0 0\t# vars, constraints, objectives, ranges, eqns, lcons", " -4 3 1", 0,
         "expected a count of columns, rows or objectives from 0 to 2147483647, found -4"},
        {" 4 3 1 1 0 0\t# vars, constraints, objectives, ranges, eqns, lcons", " 4 3", 0,
         "expected a count of columns, rows or objectives, found the end of the line"},
        {" 4 3 1 1 0 0\t# vars, constraints, objectives, ranges, eqns, lcons", " 4 99999999999 1", 0,
         "expected a count of columns, rows or objectives, found '99999999999'"},
        {" 4 3 1 1 0 0\t# vars, constraints, objectives, ranges, eqns, lcons", " 2000000000 3 1", -1,
         "the header has 2000000000 columns, but "},
        {" 4 3 1 1 0 0\t# vars, constraints, objectives, ranges, eqns, lcons", " 4 2000000000 1", -1,
         "the header has 2000000000 rows, but "},
        {" 4 3 1 1 0 0\t# vars, constraints, objectives, ranges, eqns, lcons", " 4 3 2000000000", -1,
         "the header has 2000000000 objectives, but "},
        {" 4 3 1 1 0 0\t# vars, constraints, objectives, ranges, eqns, lcons", " 0 3 1", -1,
         "the model has no columns"},
        {" 4 3 1 1 0 0\t# vars, constraints, objectives, ranges, eqns, lcons", " 4 0 0", -1,
         "the model has neither rows nor objectives"},
        {" 1 1 0 0 0 0\t# nonlinear constraints, objs; ccons", " 4 1", -1,
         "the header has 4 nonlinear rows, but 3 rows"},
        {" 2 1 1\t# nonlinear vars in constraints, objectives, both", " 5 1 1", -1,
         "the header has 5 nonlinear columns in rows, but 4 columns"},
        {" 0 0 0 1\t# linear network variables; functions; arith, flags", " 0 0 7 1", 0,
         "expected a kind of arithmetic from 0 to 2, found 7"},
        {" 0 0 0 1\t# linear network variables; functions; arith, flags", " 0 2000000000", -1,
         "the header has 2000000000 functions, but "},
        {" 0 0 0 0 0\t# discrete variables", " 3 2 0 0 0", -1, "the header has 5 integer columns, but 4 columns"},
        {" 6 3\t# nonzeros in Jacobian, gradients", " 3000000000 3", 0,
         "expected a count of coefficients, below 2^31, found '3000000000'"},
        {" 6 3\t# nonzeros in Jacobian, gradients", " 2000000000 3", -1,
         "the header has 2000000000 coefficients of rows, but "},
        {" 1 0 0 0 0\t# common exprs: b,c,o,c1,o1", " 1 0 2000000000 0 0", -1,
         "the header has 2000000001 common expressions, but "},
        {" 1 0 0 0 0\t# common exprs: b,c,o,c1,o1", " 1 0 0 0", 0,
         "expected a count of common expressions, found the end of the line"},
        /* Segments. */
        {"r", "q", 0, "expected a segment, found 'q'"},
        {"C0", "C3", 0, "expected row from 0 to 2, found 3"},
        {"C1", "C0", 0, "row 0 comes a second time"},
        {"O0 0", "O1 0", 0, "expected objective from 0 to 0, found 1"},
        {"O0 0", "O0 2", 0, "expected a sense from 0 to 1, found 2"},
        {"V4 1 0", "V3 1 0", 0, "expected a common expression from 4 to 4, found 3"},
        {"V4 1 0", "V4 -1 0", 0, "expected a count of terms from 0 to 4, found -1"},
        {"V4 1 0", "V4 1 2", 0, "expected the function that a common expression is of from 0 to 0, found 2"},
        {"1 0.5", "4 0.5", 0, "expected a column from 0 to 3, found 4"},
        {"v4", "v5", 0, "expected a variable from 0 to 4, found 5"},
        {"o0", "o83", 0, "expected an operator from 0 to 82, found 83"},
        {"o0", "o7", 0, "operator 7 is not one that can be taken"},
        {"o0", "o78", 0, "operator 78 is not one that can be taken"},
        {"o0", "f0 2", 0, "found a function 0, where the header leaves room for none"},
        {"o0", "h3:abc", 0, "expected an expression, found 'h3:abc'"},
        {"o0", "o54", 1, "expected a count of operands, found 'o5'"},
        {"S0 2 sstatus", "S8 2 sstatus", 0, "expected a kind of suffix from 0 to 7, found 8"},
        {"S0 2 sstatus", "S0 5 sstatus", 0, "expected a count of values from 1 to 4, found 5"},
        {"S0 2 sstatus", "S0 2", 0, "expected a name of 1 to 127 letters, found the end of the line"},
        {"S0 2 sstatus", "S0 0 sstatus", 0, "expected a count of values from 1 to 4, found 0"},
        {"2 1", "3 1", 0, "expected an index of a suffix from 0 to 2, found 3"},
        {"2 1", "2 0.5", 0, "expected the end of the line, found '.5'"},
        {"x2", "x5", 0, "expected a count of values from 0 to 4, found 5"},
        {"0 0.5", "-1 0.5", 0, "expected a column from 0 to 3, found -1"},
        {"0 0.5", "0 half", 0, "expected a value, found 'half'"},
        {"0 0.5", "0 1x3", 0, "expected a value, found '1x3'"},
        {"0 0.5", "0 0x10", 0, "expected a value, found '0x10'"},
        {"0 0.5", "0 1e", 0, "expected a value, found '1e'"},
        {"0 0.5", "0 0.00000000000000000000000000000000000000000000000000000000000000000000000000001", 0,
         "the line's numbers go beyond its first 78 letters"},
        {"0 0.5", "0 0.5 # a\rb", 0, "a carriage return stands in the midst of the line"},
        {"d1", "d4", 0, "expected a count of values from 0 to 3, found 4"},
        {"1 -0.5", "3 -0.5", 0, "expected a row from 0 to 2, found 3"},
        {"0 -3 8", "6 -3 8", 0, "expected the sides of a row, found '6'"},
        {"0 -3 8", "5 1 2", 0, "expected the sides of a row, found '5'"},
        {"0 -3 8", "0 -3", 0, "expected a bound, found the end of the line"},
        {"2 -1", "2", 0, "expected a bound, found the end of the line"},
        {"k3", "k2", 0, "expected a count of columns less one from 3 to 3, found 2"},
        {"J0 2", "J3 2", 0, "expected a row from 0 to 2, found 3"},
        {"J0 2", "J-1 2", 0, "expected a row from 0 to 2, found -1"},
        {"J0 2", "J0 5", 0, "expected a count of coefficients from 1 to 4, found 5"},
        {"J1 2", "J0 2", 0, "row 0 comes a second time"},
        {"J2 2", "J2 1", 2, "expected a segment, found '3'"},
        {"2 2", "4 2", 0, "expected a column from 0 to 3, found 4"},
        {"2 2", "-2147483648 2", 0, "expected a column from 0 to 3, found -2147483648"},
        {"2 2", "99999999999999999999 2", 0, "expected a column, found '99999999999999999999'"},
        {"2 2", "3 2", 3, "column 3 has more coefficients than its length (k) says"},
        {"G0 3", "G1 3", 0, "expected an objective from 0 to 0, found 1"},
        {"G0 3", "G0 5", 0, "expected a count of coefficients from 1 to 4, found 5"},
        {"G0 3", "J0 3", 0, "row 0 comes a second time"},
    };
    const std::string text = nl_text(rich_model());
    for (const auto &item : cases) {
        SCOPED_TRACE(std::string(item.line) + " -> " + item.damaged);
        const temp_folder folder;
        const int number = line_of(text, item.line);
        file_write(folder.file("s.nl"), nl_with_line(text, number, item.damaged));
        const std::string place = item.place < 0 ? "" : ", line " + std::to_string(number + item.place);
        check_refused(folder, "s.nl" + place + ": " + item.what);
    }
}

/* Lines that are missing as a whole, by the words of the fault. */
TEST(ampl_damaged, missing_segments)
{
    const struct {
        const char *first;
        int num;
        const char *what;
    } cases[] = {
        {"C1", 2, "the file ends without row 1"},
        {"O0 0", 4, "the file ends without objective 0"},
        {"V4 1 0", 5, "the common expression 4 is used before it is defined"},
        {"r", 4, "the file ends without the sides of the rows"},
        {"b", 5, "the file ends without the bounds of the columns"},
        {"k3", 4, "coefficients of a row come before the lengths of the columns (k)"},
        {"J2 2", 3, "expected 6 coefficients of rows, found 4"},
        {"G0 3", 4, "the file ends without the coefficients of the objectives"},
    };
    const std::string text = nl_text(rich_model());
    for (const auto &item : cases) {
        SCOPED_TRACE(item.first);
        const temp_folder folder;
        std::string damaged = text;
        const int number = line_of(text, item.first);
        for (int k = 0; k < item.num; ++k) damaged = nl_without_line(damaged, number);
        file_write(folder.file("s.nl"), damaged);
        const stub_run run = run_stub(folder, true);
        EXPECT_NE(run.sol.find(std::string(": ") + item.what + "\n"), std::string::npos) << run.sol;
        EXPECT_EQ(code_of(run.sol), 520);
    }
}

/* Too deep for the library's recursion, and just not. */
TEST(ampl_damaged, deep_expressions)
{
    for (const int depth : {10000, 10001, 1000000}) {
        SCOPED_TRACE(depth);
        nl_model model = rich_model();
        nl_expression expression;
        for (int k = 0; k < depth; ++k) expression += "o16\n";
        model.objectives[0].nonlinear = expression + nl_variable(0);
        const temp_folder folder;
        file_write(folder.file("s.nl"), nl_text(model));
        const stub_run run = run_stub(folder, true);
        EXPECT_EQ(run.sol.find("more than 10000 operators deep") != std::string::npos, depth > 10000) << run.sol;
    }
}

/* Coefficients that are no numbers, in a model with a quadratic row, are refused by the task. */
TEST(ampl_damaged, coefficients_that_are_no_numbers)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const nl_form form : {NL_TEXT, NL_BINARY})
        for (const size_t row : {size_t{0}, size_t{1}}) {
            SCOPED_TRACE("form " + std::to_string(form) + ", row " + std::to_string(row));
            nl_model model = rich_model();
            model.commons.clear();
            model.rows[0].nonlinear = nl_square(0);
            for (auto &[j, value] : model.rows[row].linear) value = nan;
            const temp_folder folder;
            file_write(folder.file("s.nl"), nl_text(model, form));
            const stub_run run = run_stub(folder, true);
            EXPECT_EQ(run.code, "ZLR_RES_ERR_NAN");
            EXPECT_NE(run.sol.find("A value is not a number"), std::string::npos) << run.sol;
        }
}

/* ---- Cuts ---- */

/* A stub that ends too early is refused wherever it ends: none of its segments can be done without. */
static void check_cuts(const std::string &whole, size_t step, const char *unit)
{
    const size_t header = whole.find("# common exprs") + 100; /* and what cannot hold what it says */
    const temp_folder folder;
    for (size_t size = step; size < whole.size(); size += step) {
        SCOPED_TRACE(size);
        file_write(folder.file("s.nl"), whole.substr(0, size));
        const bool extended = size / step % 2 == 0;
        const stub_run run = run_stub(folder, extended);
        EXPECT_EQ(run.code, "ZLR_RES_ERR_AMPL_STUB");
        EXPECT_NE(run.process.out.find("** Fatal error: s.nl"), std::string::npos) << run.process.out;
        EXPECT_TRUE(size < header || run.process.out.find(unit) != std::string::npos) << run.process.out;
        EXPECT_EQ(code_of(run.sol), extended ? 520 : -1);
    }
}

TEST(ampl_damaged, cut_in_text) { check_cuts(nl_text(rich_model()), 3, " line "); }
TEST(ampl_damaged, cut_in_binary) { check_cuts(nl_text(rich_model(), NL_BINARY), 5, " byte "); }

TEST(ampl_damaged, cut_behind_every_line)
{
    const std::string text = nl_text(rich_model());
    const temp_folder folder;
    for (size_t at = text.find('\n'); at + 1 < text.size(); at = text.find('\n', at + 1)) {
        SCOPED_TRACE(at);
        file_write(folder.file("s.nl"), text.substr(0, at + 1));
        const stub_run run = run_stub(folder, true);
        EXPECT_NE(run.sol.find("\ns.nl"), std::string::npos) << run.sol;
        EXPECT_EQ(code_of(run.sol), 520);
    }
}

/* ---- Other files ---- */

TEST(ampl_damaged, no_stub_at_all)
{
    const struct {
        const char *name;
        std::string text;
        const char *what;
    } cases[] = {
        {"empty", "", "s.nl, line 1: expected an AMPL stub, found the end of the file"},
        {"a line end", "\n",
         "s.nl, line 1: expected an AMPL stub, which begins with 'g' or 'b', found the end of the line"},
        {"text", "good morning\n", "s.nl, line 1: expected an AMPL stub, which begins with 'g' or 'b', found 'good'"},
        {"gzip", std::string("\x1f\x8b\x08\x00\x00\x00\n\x00", 8),
         "s.nl, line 1: expected an AMPL stub, which begins with 'g' or 'b', found '???"},
        {"MPS", "NAME          X\nROWS\n N  COST\nENDATA\n",
         "s.nl, line 1: expected an AMPL stub, which begins with 'g' or 'b', found 'NAME'"},
        {"one endless line", std::string(1000000, 'g'), "s.nl, line 1: the line is longer than 262144 bytes"},
        {"zeros", std::string(5000, '\0'), "s.nl, line 1: the file ends in the midst of the line"},
    };
    for (const auto &item : cases) {
        SCOPED_TRACE(item.name);
        const temp_folder folder;
        file_write(folder.file("s.nl"), item.text);
        check_refused(folder, item.what);
    }
    const temp_folder folder;
    std::filesystem::create_directory(folder.file("s.nl"));
    check_refused(folder, "s.nl: not a file");
}

TEST(ampl_damaged, wrong_byte_order)
{
    const temp_folder folder;
    std::string text = nl_text(rich_model(), NL_SWAPPED);
    const size_t at = text.find(" 0 0 2 1\t# linear network");
    ASSERT_NE(at, std::string::npos) << "on a machine whose own order this is the other way round";
    text[at + 5] = '1';
    file_write(folder.file("s.nl"), text);
    check_refused(folder, "s.nl, byte ");
}

/* Names that the header promises and that are not there are made up; this is no fault. */
TEST(ampl_damaged, missing_names)
{
    nl_model model = rich_model();
    model.max_row_name = model.max_column_name = 8;
    const temp_folder folder;
    file_write(folder.file("s.nl"), nl_text(model));
    for (const char *names : {"", "a\n", "\n\n\n\n\n\n\n"}) {
        file_write(folder.file("s.row"), names);
        file_write(folder.file("s.col"), names);
        EXPECT_EQ(run_stub(folder, false).process.out.find("Fatal"), std::string::npos);
    }
}

/* ---- At random ---- */

static std::string mutated(std::mt19937 *random, const std::string &text, bool is_text)
{
    static const char *const numbers[] = {"0",     "-1",         "1",          "2",     "3", "4", "7",
                                          "65536", "2147483647", "4294967295", "1e308", "x", ""};
    std::string out = text;
    const auto at = [&](size_t limit) { return static_cast<size_t>((*random)() % limit); };
    const int num = 1 + static_cast<int>(at(3));
    for (int k = 0; k < num && out.size() > 100; ++k) {
        const size_t place = at(out.size());
        const int lines = is_text ? nl_count_lines(out) : 0;
        switch (is_text ? at(6) : at(3)) {
        case 0: out[place] = static_cast<char>(at(256)); break;
        case 1: out.erase(place, 1 + at(8)); break;
        case 2: out.insert(place, 1 + at(4), static_cast<char>(at(256))); break;
        case 3: out = nl_without_line(out, 1 + static_cast<int>(at(static_cast<size_t>(lines)))); break;
        case 4: { /* a number becomes another */
            const size_t begin = out.find_first_of("0123456789", place);
            if (begin == std::string::npos) break;
            const size_t end = std::min(out.find_first_not_of("0123456789", begin), out.size());
            out.replace(begin, end - begin, numbers[at(sizeof numbers / sizeof numbers[0])]);
            break;
        }
        default: { /* a piece goes somewhere else */
            const std::string piece = out.substr(place, 1 + at(40));
            out.insert(at(out.size()), piece);
            break;
        }
        }
    }
    return out;
}

/* Whatever comes of it: no crash, no hang, and with AMPL_EXTENDED a .sol file with a code that clients know. */
static void check_mutations(nl_form form, unsigned seed, int num)
{
    std::mt19937 random(seed);
    const std::string whole = nl_text(rich_model(), form);
    int num_refused = 0;
    for (int k = 0; k < num; ++k) {
        SCOPED_TRACE(k);
        const temp_folder folder;
        file_write(folder.file("s.nl"), mutated(&random, whole, form == NL_TEXT));
        const stub_run run = run_stub(folder, true);
        EXPECT_NE(run.sol, "") << run.process.out;
        EXPECT_LT(code_of(run.sol), 600) << run.sol; /* none in binary, and where the header does not ask for one */
        if (run.code == "ZLR_RES_ERR_AMPL_STUB") ++num_refused;
        if (testing::Test::HasFailure()) {
            GTEST_FAIL() << "this stub:\n" << file_read(folder.file("s.nl"));
        }
    }
    EXPECT_GT(num_refused, num / 3);
    EXPECT_LT(num_refused, num) << "some are only another model";
}

TEST(ampl_damaged, text_at_random) { check_mutations(NL_TEXT, 20, 300); }
TEST(ampl_damaged, binary_at_random) { check_mutations(NL_BINARY, 21, 150); }
