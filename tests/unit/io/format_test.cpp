/* The choice of a format, the messages, and reading and writing a problem as a whole. */
#include "mps_support.h"
#include "support/sys.h"

using namespace test_mps;

namespace
{
std::string format_name(int32_t format) { return format < 0 ? "none" : format_table[format].name; }

TEST(Format, ByName)
{
    static const struct {
        const char *name, *format;
    } cases[] = {{"a.mps", "MPS"},     {"a.QPS", "MPS"},   {"a.lp", "LP"},     {"a.mps.gz", "MPS"},
                 {"a.LP.GZ", "LP"},    {"a.txt", "none"},  {"mps", "none"},    {"a", "none"},
                 {"", "none"},         {"a.", "none"},     {"a.gz", "none"},   {"dir.mps/a", "none"},
                 {"a.lp.txt", "none"}, {".lp", "LP"},      {"d/a.b.lp", "LP"}, {"a.mps qps", "none"},
                 {"a.cbf", "CBF"},     {"a.CBF.gz", "CBF"}};
    for (const auto &c : cases) EXPECT_EQ(format_name(format_by_name(c.name)), c.format) << c.name;
}

TEST(Format, ByContent)
{
    static const struct {
        const char *head, *format;
    } cases[] = {
        {"NAME\n", "MPS"},
        {"* comment\n\n*\r\nROWS\n", "MPS"},
        {"* only comments", "MPS"},
        {"\xef\xbb\xbfNAME t", "MPS"},
        {"OBJSENSE\n MAX\n", "MPS"},
        {"\\ comment\nminimize\n", "LP"},
        {"\\ comment", "LP"},
        {" Maximize obj: x", "LP"},
        {"MIN\n", "LP"},
        {"VER\n3\n", "CBF"},
        {"# comment\n\n#\r\nVER\r\n", "CBF"},
        {"# only comments", "CBF"},
        {" NAME\n", "none"},
        {"hello\n", "none"},
        {"", "none"},
        {"\x1f\x8b", "none"},
    };
    for (const auto &c : cases) EXPECT_EQ(format_name(format_by_content(c.head)), c.format) << c.head;
}

TEST(Format, Quote)
{
    EXPECT_EQ(io_quote("plain"), "plain");
    EXPECT_EQ(io_quote("a\tb\x01\x7f"), "a?b??");
    EXPECT_EQ(io_quote("gr\xc3\xbc\xc3\x9f"), "gr\xc3\xbc\xc3\x9f");
    EXPECT_EQ(io_quote("cut\xc3"), "cut?");
    EXPECT_EQ(io_quote("\xff\xfe"), "??");
    EXPECT_EQ(io_quote(std::string(100, 'x')), std::string(60, 'x') + "...");
    EXPECT_EQ(io_quote(std::string(59, 'x') + "\xc3\xbc"), std::string(59, 'x') + "..."); /* no half character */
}

const char small_mps[] = "NAME s\nROWS\n N o\n L a\nCOLUMNS\n x o 1 a 2\nRHS\n R a 3\nENDATA\n";
const char small_shown[] = "min 0 | a [-inf,3] | x [0,inf] 1 a:2";

TEST(Problem, IsReadByNameOrContent)
{
    temp_folder folder;
    for (const char *name : {"a.mps", "a.txt", "a"}) {
        caught_io context(folder.file(name));
        put_file(context.name, small_mps);
        model m;
        int32_t format = -1;
        EXPECT_EQ(problem_read(&context.io, &m, &format), ZLR_RES_OK) << context.log;
        EXPECT_EQ(format_name(format), "MPS");
        EXPECT_EQ(shown(m), small_shown);
    }
}

/* A gzip file is known by its content, whatever its name. */
TEST(Problem, GzipUnderAnyName)
{
    temp_folder folder;
    ASSERT_EQ(sink_whole_file(test_sys(), folder.file("a.gz").c_str(), {}, small_mps), ZLR_RES_OK);
    for (const char *name : {"b.mps", "b"}) {
        caught_io context(folder.file(name));
        std::filesystem::copy_file(folder.file("a.gz"), context.name);
        model m;
        int32_t format = -1;
        EXPECT_EQ(problem_read(&context.io, &m, &format), ZLR_RES_OK) << context.log;
        EXPECT_EQ(shown(m), small_shown);
    }
}

TEST(Problem, FailedReadsSayWhy)
{
    temp_folder folder;
    put_file(folder.file("empty"), "");
    put_file(folder.file("empty.mps"), "");
    put_file(folder.file("what"), "this is no problem\n");
    ASSERT_EQ(sink_whole_file(test_sys(), folder.file("cut.mps.gz").c_str(), {}, small_mps), ZLR_RES_OK);
    put_file(folder.file("cut.mps.gz"), file_text(folder.file("cut.mps.gz")).substr(0, 40));
    static const struct {
        const char *name;
        int32_t code;
        const char *message;
    } cases[] = {
        {"none.mps", ZLR_RES_ERR_FILE_READ, ": the file cannot be opened: No such file or directory.\n"},
        {".", ZLR_RES_ERR_FILE_READ, ": the file cannot be opened: Is a directory.\n"},
        {"empty", ZLR_RES_ERR_FILE_FORMAT, ": the file is empty.\n"},
        {"empty.mps", ZLR_RES_ERR_FILE_FORMAT, ": the file is empty.\n"},
        {"what", ZLR_RES_ERR_FILE_FORMAT,
         ": neither the name nor the content tells the format; known extensions are .mps, .qps, .lp and .cbf.\n"},
        {"cut.mps.gz", ZLR_RES_ERR_FILE_READ, ": reading fails: the compressed data is damaged or cut off.\n"},
    };
    for (const auto &c : cases) {
        caught_io context(folder.file(c.name));
        model m;
        int32_t format = -1;
        EXPECT_EQ(problem_read(&context.io, &m, &format), c.code) << c.name;
        EXPECT_EQ(context.log, context.name + c.message);
    }
}

TEST(Problem, WriteTakesTheGivenFormatWhereTheNameTellsNone)
{
    temp_folder folder;
    caught_io source;
    model m;
    ASSERT_EQ(read_text(&source, small_mps, &m), ZLR_RES_OK);
    static const struct {
        const char *name;
        int32_t given;
        const char *format;
    } cases[] = {{"a.mps", 1, "MPS"}, {"a.lp.gz", 0, "LP"}, {"a", 0, "MPS"}, {"a", 1, "LP"}, {"a", -1, "LP"}};
    for (const auto &c : cases) {
        caught_io context(folder.file(c.name));
        int32_t format = c.given;
        EXPECT_EQ(problem_write(&context.io, &m, &format), ZLR_RES_OK) << context.log;
        EXPECT_EQ(format_name(format), c.format);
        model back;
        int32_t read_format = -1;
        EXPECT_EQ(problem_read(&context.io, &back, &read_format), ZLR_RES_OK) << context.log;
        EXPECT_EQ(read_format, format);
        EXPECT_EQ(shown(back), small_shown);
    }
}

/* What a format lacks is told with the formats that have it; a name that asks for no format gets one that has. */
TEST(Problem, FormatsThatCannotHoldItAreRefused)
{
    temp_folder folder;
    const model linear = [] {
        model m;
        model_append_vars(&m, 3);
        return m;
    }();
    model conic = linear;
    conic.cones.push_back({ZLR_CT_QUAD, {0, 1, 2}});
    model quadratic = linear;
    quadratic.qobj.push_back({0, 0, 2.0});
    model both = conic;
    both.qobj = quadratic.qobj;
    static const struct {
        const char *name;
        int32_t given;
        const model *m;
        const char *taken, *message;
    } cases[] = {
        {"a.lp", -1, &conic, nullptr, "the format LP cannot hold cones; formats that can: CBF (.cbf).\n"},
        {"a.mps.gz", -1, &conic, nullptr, "the format MPS cannot hold cones; formats that can: CBF (.cbf).\n"},
        {"a.cbf", -1, &quadratic, nullptr,
         "the format CBF cannot hold quadratic terms; formats that can: MPS (.mps), LP (.lp); or the conic form of the "
         "problem is written (-toconic).\n"},
        {"a.lp", -1, &both, nullptr,
         "the format LP cannot hold cones, and no format holds cones beside quadratic terms; the conic form of the "
         "problem (-toconic) can be written as CBF (.cbf).\n"},
        {"a", 0, &both, nullptr, "the format MPS cannot hold cones, and"},
        {"a", -1, &conic, "CBF", ""},
        {"a", 0, &conic, "CBF", ""},
        {"a", 2, &quadratic, "MPS", ""},
        {"a.cbf", 0, &linear, "CBF", ""},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.name) + " " + c.message);
        caught_io context(folder.file(c.name));
        int32_t format = c.given;
        const int32_t res = problem_write(&context.io, c.m, &format);
        EXPECT_EQ(res, c.taken != nullptr ? ZLR_RES_OK : ZLR_RES_ERR_WRITE_FORMAT);
        EXPECT_EQ(c.taken == nullptr ? "" : format_name(format), c.taken == nullptr ? "" : c.taken);
        EXPECT_EQ(context.log.find(c.message), c.taken != nullptr ? 0 : context.name.size() + 2) << context.log;
        EXPECT_EQ(std::filesystem::exists(context.name), c.taken != nullptr);
        std::filesystem::remove(context.name);
    }
}

TEST(Problem, FailedWritesSayWhy)
{
    model m;
    int32_t format = 0;
    caught_io folder_missing("/nonexistent/a.mps");
    EXPECT_EQ(problem_write(&folder_missing.io, &m, &format), ZLR_RES_ERR_FILE_OPEN);
    EXPECT_EQ(folder_missing.log,
              "/nonexistent/a.mps: the file cannot be opened for writing: No such file or directory.\n");
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no such device here";
    caught_io full("/dev/full");
    EXPECT_EQ(problem_write(&full.io, &m, &format), ZLR_RES_ERR_FILE_WRITE);
    EXPECT_EQ(full.log, "/dev/full: the file cannot be written: No space left on device.\n");
}
}  // namespace
