/* The byte layer under good and bad conditions: plain and gzip sources, sinks that complete or leave nothing, lines and
 * numbers. */
#include "mps_support.h"

#include "solver/io/line_reader.h"
#include "solver/io/number.h"
#include "support/sys.h"

#include <cerrno>
#include <cmath>
#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <zlib.h>

/* Stands in front of the C library's, and counts. */
static int num_synced = 0;
extern "C" int fdatasync(int file)
{
    num_synced++;
    return static_cast<int>(syscall(SYS_fdatasync, file));
}

using namespace test_mps;

namespace
{
std::string gzip(const std::string &text)
{
    z_stream z = {};
    EXPECT_EQ(deflateInit2(&z, 6, Z_DEFLATED, 31, 8, Z_DEFAULT_STRATEGY), Z_OK);
    std::string out(text.size() + 1000, '\0');
    std::string in = text;
    z.next_in = reinterpret_cast<Bytef *>(in.data());
    z.avail_in = static_cast<uInt>(in.size());
    z.next_out = reinterpret_cast<Bytef *>(out.data());
    z.avail_out = static_cast<uInt>(out.size());
    EXPECT_EQ(deflate(&z, Z_FINISH), Z_STREAM_END);
    out.resize(out.size() - z.avail_out);
    deflateEnd(&z);
    return out;
}

/* Everything a source gives, asked for in pieces; the code of the first failure in *code. */
std::string drained(byte_source *in, size_t piece, int32_t *code)
{
    std::string text;
    std::string buffer(piece, '\0');
    for (;;) {
        size_t got = 0;
        *code = source_read(in, buffer.data(), piece, &got);
        if (*code != ZLR_RES_OK || got == 0) return text;
        text.append(buffer, 0, got);
    }
}

std::string file_through_source(const std::string &name, size_t piece, int32_t *code, std::string *why = nullptr)
{
    byte_source *in = nullptr;
    *code = source_open(test_sys(), &in, name.c_str());
    if (*code != ZLR_RES_OK) return {};
    std::string text = drained(in, piece, code);
    if (why != nullptr) *why = source_error(in);
    source_close(&in);
    EXPECT_EQ(in, nullptr);
    return text;
}

std::string long_text(size_t size)
{
    std::string text;
    for (uint64_t x = 1; text.size() < size; x = x * 6364136223846793005U + 1442695040888963407U)
        text += std::to_string(x >> 40U) + "\n";
    return text;
}

TEST(Source, GivesWhatTheFileHolds)
{
    const std::string text = long_text(700000);
    const struct {
        const char *name;
        std::string bytes, text;
    } cases[] = {
        {"empty", "", ""},
        {"one byte", "\x1f", "\x1f"},
        {"plain", text, text},
        {"gzip", gzip(text), text},
        {"gzip of nothing", gzip(""), ""},
        {"gzip in two members", gzip(text) + gzip("more") + gzip("") + gzip("end"), text + "moreend"},
        {"gzip filled up with zeros", gzip("a") + std::string(600, '\0'), "a"},
    };
    temp_folder folder;
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        put_file(folder.file("f"), c.bytes);
        for (const size_t piece : {size_t{1}, size_t{1000}, size_t{1} << 20U}) {
            if (piece == 1 && c.bytes.size() > 1000) continue;
            int32_t code = -1;
            EXPECT_TRUE(file_through_source(folder.file("f"), piece, &code) == c.text);
            EXPECT_EQ(code, ZLR_RES_OK);
        }
    }
}

/* Every cut of a gzip file is an error, and so is every byte that is not as it was, but for those of the header that
 * mean nothing for the content. */
TEST(Source, DamagedGzip)
{
    const std::string text = long_text(300);
    const std::string whole = gzip(text);
    temp_folder folder;
    std::string why;
    int32_t code = -1;
    for (size_t size = 2; size < whole.size(); ++size) {
        put_file(folder.file("f"), whole.substr(0, size));
        file_through_source(folder.file("f"), 4096, &code, &why);
        EXPECT_EQ(code, ZLR_RES_ERR_FILE_READ) << size;
        EXPECT_EQ(why, "the compressed data is damaged or cut off") << size;
    }
    constexpr size_t header_bytes = 10;
    for (size_t at = header_bytes; at < whole.size(); ++at) {
        std::string damaged = whole;
        damaged[at] = static_cast<char>(damaged[at] ^ 0x55);
        put_file(folder.file("f"), damaged);
        file_through_source(folder.file("f"), 4096, &code, &why);
        EXPECT_EQ(code, ZLR_RES_ERR_FILE_READ) << at;
        EXPECT_NE(why, "") << at;
    }
}

TEST(Source, CannotBeOpened)
{
    temp_folder folder;
    byte_source *in = nullptr;
    errno = 0;
    EXPECT_EQ(source_open(test_sys(), &in, folder.file("none").c_str()), ZLR_RES_ERR_FILE_READ);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(source_open(test_sys(), &in, folder.path.c_str()), ZLR_RES_ERR_FILE_READ);
    EXPECT_EQ(errno, EISDIR);
    EXPECT_EQ(in, nullptr);
}

TEST(Source, Unread)
{
    byte_source *in = nullptr;
    ASSERT_EQ(source_open_memory(&in, "abcdef", 6), ZLR_RES_OK);
    char part[4];
    size_t got = 0;
    ASSERT_EQ(source_read(in, part, 4, &got), ZLR_RES_OK);
    source_unread(in, part, 4);
    ASSERT_EQ(source_read(in, part, 1, &got), ZLR_RES_OK);
    source_unread(in, part, 1);
    int32_t code = -1;
    EXPECT_EQ(drained(in, 3, &code), "abcdef");
    source_close(&in);
}

/* ---- Sinks --------------------------------------------------------------------------------------------------------- */

bool to_disk = true; /* how the tests' files are written */

int32_t write_whole(const std::string &target, const std::string &text, bool commit)
{
    byte_sink *out = nullptr;
    const int32_t res = sink_open(test_sys(), &out, target.c_str(), {to_disk});
    if (res != ZLR_RES_OK) return res;
    for (size_t at = 0; at < text.size(); at += 10000) sink_text(out, std::string_view(text).substr(at, 10000));
    return sink_close(&out, commit);
}

TEST(Sink, CompletesOrLeavesNothing)
{
    const std::string text = long_text(900000);
    temp_folder folder;
    for (const char *name : {"plain.txt", "packed.txt.gz", "PACKED.GZ"}) {
        SCOPED_TRACE(name);
        const std::string target = folder.file(name);
        EXPECT_EQ(write_whole(target, "old", true), ZLR_RES_OK);
        EXPECT_EQ(write_whole(target, text, false), ZLR_RES_OK);
        int32_t code = -1;
        EXPECT_EQ(file_through_source(target, 4096, &code), "old");
        EXPECT_EQ(write_whole(target, text, true), ZLR_RES_OK);
        EXPECT_TRUE(file_through_source(target, 4096, &code) == text);
    }
    EXPECT_EQ(folder.num_files(), 3U);
    EXPECT_EQ(file_text(folder.file("packed.txt.gz")).substr(0, 2), "\x1f\x8b");
    EXPECT_EQ(sink_whole_file(test_sys(), folder.file("w").c_str(), {}, "whole"), ZLR_RES_OK);
    EXPECT_EQ(file_text(folder.file("w")), "whole");
}

TEST(Sink, WritesTheSameWithoutWaitingForTheDisk)
{
    const std::string text = long_text(900000);
    temp_folder folder;
    to_disk = false;
    for (const char *name : {"plain.txt", "packed.txt.gz"}) {
        SCOPED_TRACE(name);
        int32_t code = -1;
        const int before = num_synced;
        EXPECT_EQ(write_whole(folder.file(name), text, true), ZLR_RES_OK);
        EXPECT_EQ(num_synced, before);
        EXPECT_TRUE(file_through_source(folder.file(name), 4096, &code) == text);
        to_disk = true;
        EXPECT_EQ(write_whole(folder.file(name), text, true), ZLR_RES_OK);
        EXPECT_GT(num_synced, before);
        to_disk = false;
    }
    if (std::filesystem::exists("/dev/full")) {
        EXPECT_EQ(write_whole("/dev/full", "x", true), ZLR_RES_ERR_FILE_WRITE);
    }
    to_disk = true;
}

mode_t mode_of(const std::string &file)
{
    struct stat info = {};
    EXPECT_EQ(stat(file.c_str(), &info), 0);
    return info.st_mode & 07777U;
}

TEST(Sink, PermissionsAndLinks)
{
    temp_folder folder;
    const mode_t old_mask = umask(027);
    EXPECT_EQ(write_whole(folder.file("new"), "x", true), ZLR_RES_OK);
    umask(old_mask);
    EXPECT_EQ(mode_of(folder.file("new")), 0640U);

    ASSERT_EQ(chmod(folder.file("new").c_str(), 0600), 0);
    EXPECT_EQ(write_whole(folder.file("new"), "y", true), ZLR_RES_OK);
    EXPECT_EQ(mode_of(folder.file("new")), 0600U);

    std::filesystem::create_symlink("new", folder.file("link"));
    EXPECT_EQ(write_whole(folder.file("link"), "z", true), ZLR_RES_OK);
    EXPECT_TRUE(std::filesystem::is_symlink(folder.file("link")));
    EXPECT_EQ(file_text(folder.file("new")), "z");
    EXPECT_EQ(folder.num_files(), 2U);
}

TEST(Sink, CannotBeOpened)
{
    temp_folder folder;
    byte_sink *out = nullptr;
    EXPECT_EQ(sink_open(test_sys(), &out, folder.path.c_str(), {}), ZLR_RES_ERR_FILE_OPEN);
    EXPECT_EQ(sink_open(test_sys(), &out, folder.file("none/x").c_str(), {}), ZLR_RES_ERR_FILE_OPEN);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(folder.num_files(), 0U);
}

TEST(Sink, DevicesAreWrittenInPlace)
{
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no such devices here";
    EXPECT_EQ(write_whole("/dev/null", "x", true), ZLR_RES_OK);
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
    errno = 0;
    EXPECT_EQ(write_whole("/dev/full", "x", true), ZLR_RES_ERR_FILE_WRITE);
    EXPECT_EQ(errno, ENOSPC);
    EXPECT_EQ(write_whole("/dev/full", long_text(900000), true), ZLR_RES_ERR_FILE_WRITE);
    EXPECT_EQ(write_whole("/dev/full", "x", false), ZLR_RES_OK); /* nothing was written */
}

/* A limit on the size of files stands for a full disk. */
TEST(Sink, FullDiskLeavesTheOldFile)
{
    temp_folder folder;
    const std::string text = long_text(900000);
    EXPECT_EQ(write_whole(folder.file("f"), "old", true), ZLR_RES_OK);

    struct rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    struct rlimit small = before;
    small.rlim_cur = 300000;
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    const int32_t res = write_whole(folder.file("f"), text, true);
    const int why = errno;
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);

    EXPECT_EQ(res, ZLR_RES_ERR_FILE_WRITE);
    EXPECT_EQ(why, EFBIG);
    EXPECT_EQ(file_text(folder.file("f")), "old");
    EXPECT_EQ(folder.num_files(), 1U);
}

TEST(Sink, Numbers)
{
    temp_folder folder;
    byte_sink *out = nullptr;
    ASSERT_EQ(sink_open(test_sys(), &out, folder.file("n").c_str(), {}), ZLR_RES_OK);
    const double values[] = {0.1, -0.0, 1e30, 5e-324, 123456.0, -model_inf, model_inf, 1.0 / 3.0};
    for (const double value : values) {
        sink_double(out, value);
        sink_text(out, " ");
    }
    sink_int(out, INT64_MIN);
    ASSERT_EQ(sink_close(&out, true), ZLR_RES_OK);
    EXPECT_EQ(file_text(folder.file("n")),
              "0.1 -0 1e+30 5e-324 123456 -inf inf 0.3333333333333333 -9223372036854775808");
}

/* ---- Numbers and lines --------------------------------------------------------------------------------------------- */

TEST(Number, Good)
{
    const struct {
        const char *text;
        double value;
    } cases[] = {
        {"0", 0.0},
        {"+1.5", 1.5},
        {"-.5", -0.5},
        {"5.", 5.0},
        {"1e3", 1000.0},
        {"1E+03", 1000.0},
        {"2d-2", 0.02},
        {"2.50D2", 250.0},
        {"inf", model_inf},
        {"-Infinity", -model_inf},
        {"+INF", model_inf},
        {"1e30", 1e30},
        {"00000000000000000000000012", 12.0},
        {"0.000000000000000000000000000012", 1.2e-29},
        {"123456789012345678901234567890", 123456789012345678901234567890.0},
        {"9007199254740993", 9007199254740992.0}, /* between two doubles: the even one */
        {"9007199254740992.9999999999999999999", 9007199254740992.0},
        {"1.7976931348623157e308", 1.7976931348623157e308},
        {"4.9e-324", 5e-324},
        {"1e-400", 0.0},
        {"0e999999999999", 0.0},
        {"1e-99999999999999999999", 0.0},
        {"0.1", 0.1},
        {"3.14159265358979323846264338327950288", 3.14159265358979323846},
        {"1d400000", -1.0}, /* -1 stands for: refused */
        {"1e400", -1.0},
        {"", -1.0},
        {"+", -1.0},
        {"-", -1.0},
        {".", -1.0},
        {"e5", -1.0},
        {"1e", -1.0},
        {"1e+", -1.0},
        {"1.2.3", -1.0},
        {"+-1", -1.0},
        {"1,5", -1.0},
        {"0x10", -1.0},
        {"nan", -1.0},
        {"infi", -1.0},
        {"infinityx", -1.0},
        {"1 ", -1.0},
        {"1f", -1.0},
        {"--1", -1.0},
    };
    for (const auto &c : cases) {
        double value = -1.0;
        const bool good = number_parse(c.text, &value);
        EXPECT_EQ(good, c.value != -1.0) << c.text;
        EXPECT_EQ(value, c.value) << c.text;
    }
    double zero = 1.0;
    EXPECT_TRUE(number_parse("-0", &zero));
    EXPECT_TRUE(std::signbit(zero));
}

/* The short way and the C library must agree on every bit. */
TEST(Number, AgreesWithTheLibrary)
{
    uint64_t x = 12345;
    for (int i = 0; i < 200000; ++i) {
        x = x * 6364136223846793005U + 1442695040888963407U;
        const int digits = static_cast<int>(x >> 59U) % 18 + 1;
        const int exponent = static_cast<int>(x >> 33U & 63U) - 32;
        const auto mantissa = static_cast<double>(x >> 11U);
        const std::string at = text_format("%.*e", digits, std::ldexp(mantissa, exponent));
        double value = 0.0;
        ASSERT_TRUE(number_parse(at, &value)) << at;
        ASSERT_EQ(value, std::strtod(at.c_str(), nullptr)) << at;
    }
}

struct lines_case {
    const char *name;
    std::string bytes;
    std::vector<std::string> lines;
    bool fails;
};

TEST(Lines, EveryEnding)
{
    const std::string wide(3000000, 'w');
    const lines_case cases[] = {
        {"empty", "", {}, false},
        {"LF", "a\n\nb\n", {"a", "", "b"}, false},
        {"CR LF", "a\r\n\r\nb\r\n", {"a", "", "b"}, false},
        {"no end", "a\nb", {"a", "b"}, false},
        {"CR at the end", "a\r", {"a"}, false},
        {"mark",
         "\xef\xbb\xbf"
         "a\n\xef\xbb\xbf"
         "b",
         {"a", "\xef\xbb\xbf"
               "b"},
         false},
        {"wide", "a\n" + wide + "\nb", {"a", wide, "b"}, false},
        {"zero byte", std::string("a\nb\0c\nd", 7), {"a"}, true},
        {"zero byte without a line", std::string(2000000, '\0'), {}, true},
        {"zero byte in a wide line", wide + '\0' + wide, {}, true},
    };
    for (const lines_case &c : cases) {
        SCOPED_TRACE(c.name);
        for (const bool in_batches : {false, true}) {
            caught_io context;
            byte_source *in = nullptr;
            ASSERT_EQ(source_open_memory(&in, c.bytes.data(), c.bytes.size()), ZLR_RES_OK);
            line_reader lines;
            lines_open(&lines, &context.io, in);
            std::vector<std::string> found;
            int32_t res = ZLR_RES_OK;
            while (res == ZLR_RES_OK && !lines.at_end) {
                std::string_view line[3];
                int32_t num = 1;
                res = in_batches ? lines_next_batch(&lines, line, 3, &num) : lines_next(&lines, &line[0]);
                if (res != ZLR_RES_OK || lines.at_end) break;
                for (int32_t k = 0; k < num; ++k) found.emplace_back(line[k]);
                if (in_batches) lines.number += num;
                EXPECT_EQ(lines.number, static_cast<int64_t>(found.size()));
            }
            source_close(&in);
            EXPECT_TRUE(found == c.lines);
            EXPECT_EQ(res, c.fails ? ZLR_RES_ERR_FILE_FORMAT : ZLR_RES_OK);
            const std::string where = "t.mps(" + std::to_string(c.lines.size() + 1) + "): found a zero byte";
            EXPECT_EQ(context.log.substr(0, where.size()), c.fails ? where : "");
        }
    }
}
}  // namespace
