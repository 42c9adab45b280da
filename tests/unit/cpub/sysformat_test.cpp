/* sysformat_test.cpp - formatters, bounded copies, sinks, UTF-8 to UTF-16. */
#include "cpub/sysformat.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

/* Formats into a buffer with a guard behind it. */
struct bounded {
    int32_t result;
    std::string bytes; /* all that the buffer holds */
};

template <typename... types> static bounded format(size_t capacity, const char *text, types... args)
{
    std::vector<char> buffer(capacity + 8, '#');
    const int32_t result = sysenv_snprintf(capacity, buffer.data(), text, args...);
    EXPECT_EQ(std::string(buffer.begin() + static_cast<long>(capacity), buffer.end()), "########") << text;
    return {result, std::string(buffer.begin(), buffer.begin() + static_cast<long>(capacity))};
}

/* A full buffer is not terminated, whether the text fits exactly or not at all. */
TEST(sysformat, truncation)
{
    using namespace std::string_literals;
    const struct {
        size_t capacity;
        const char *text;
        int32_t result;
        std::string bytes;
    } cases[] = {
        {8, "abc", 3, "abc\0####"s}, {4, "abc", 3, "abc\0"s}, {3, "abc", 3, "abc"}, {2, "abc", -1, "ab"},
        {1, "abc", -1, "a"},         {1, "", 0, "\0"s},       {0, "", 0, ""},       {0, "abc", -1, ""},
    };
    for (const auto &item : cases) {
        SCOPED_TRACE(std::to_string(item.capacity) + " for '" + item.text + "'");
        const bounded got = format(item.capacity, "%s", item.text);
        EXPECT_EQ(got.result, item.result);
        EXPECT_EQ(got.bytes, item.bytes);
    }
    /* The same beyond what is done on the stack. */
    for (const size_t length : {4095U, 4096U, 4097U, 9000U}) {
        const std::string text(length, 'x');
        EXPECT_EQ(format(length, "%s", text.c_str()).bytes, text);
        EXPECT_EQ(format(length, "%s", text.c_str()).result, static_cast<int32_t>(length));
        EXPECT_EQ(format(length - 1, "%s", text.c_str()).result, -1);
        EXPECT_EQ(format(length - 1, "%s", text.c_str()).bytes, text.substr(1));
    }
}

TEST(sysformat, size_prefixes)
{
    const uint64_t large = 0xFEDCBA9876543210U;
    const size_t size = SIZE_MAX;
    const int64_t negative = INT64_MIN;
    const struct {
        std::string got, expected;
    } cases[] = {
        {format(60, "%Iu", size).bytes.c_str(), std::to_string(SIZE_MAX)},
        {format(60, "%I64u|", large).bytes.c_str(), "18364758544493064720|"},
        {format(60, "#%-6I64u at", uint64_t{42}).bytes.c_str(), "#42     at"},
        {format(60, "%I64d %I64x %I64X", negative, large, large).bytes.c_str(),
         "-9223372036854775808 fedcba9876543210 FEDCBA9876543210"},
        {format(60, "%*Iu,%-*Iu,%+.3Id", 5, size_t{7}, 3, size_t{8}, ptrdiff_t{9}).bytes.c_str(), "    7,8  ,+009"},
        {format(60, "%I32u %d", 5U, 6).bytes.c_str(), "5 6"},
        {format(60, "%%Iu %d I64 %s", 1, "I%Iu").bytes.c_str(), "%Iu 1 I64 I%Iu"},
        {format(60, "%s%%%Iu%c", "a", size_t{1}, 'I').bytes.c_str(), "a%1I"},
    };
    for (const auto &item : cases) EXPECT_EQ(item.got, item.expected);

    for (const size_t length : {4080U, 4096U, 5000U}) { /* formats that are translated on the stack, and longer ones */
        char text[6000];
        const std::string longer(length, 'I');
        EXPECT_EQ(sysenv_sprintf(text, (longer + "%Iu %s").c_str(), size_t{12}, "end"),
                  static_cast<int32_t>(length + 6));
        EXPECT_EQ(text, longer + "12 end");
        EXPECT_EQ(format(length + 6, (longer + "%Iu %s").c_str(), size_t{12}, "end").bytes, longer + "12 end");
    }
}

/* Values look the same wherever they go, also where there is more than one formatter to be had. */
TEST(sysformat, one_form)
{
    const int value = 0;
    const void *const at = &value;
    char text[100];
    EXPECT_GT(sysenv_sprintf(text, "%p %g %e %d", at, 1e300, -0.5, value), 0);
    EXPECT_STREQ(format(100, "%p %g %e %d", at, 1e300, -0.5, value).bytes.c_str(), text);
    testing::internal::CaptureStdout();
    sysenv_printf("%p %g %e %d", at, 1e300, -0.5, value);
    sysenv_fprintf(stdout, "%p %g %e %d", at, 1e300, -0.5, value);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), std::string(text) + text);
}

TEST(sysformat, sizes)
{
    const struct {
        uint64_t value;
        const char *plain, *units;
    } cases[] = {
        {0, "0", "0:0:0:0"},
        {1536, "1536", "0:0:1:512"},
        {1023, "1023", "0:0:0:1023"},
        {(uint64_t{5} << 30) + (3U << 20) + (2U << 10) + 1, "5371856897", "5:3:2:1"},
        {UINT64_MAX, "18446744073709551615", "17179869183:1023:1023:1023"},
    };
    for (const auto &item : cases) {
        char text[64];
        EXPECT_EQ(sysenv_sizetostr(0, sizeof text, text, item.value), static_cast<int32_t>(std::strlen(item.plain)));
        EXPECT_STREQ(text, item.plain);
        EXPECT_EQ(sysenv_sizetostr(1, sizeof text, text, item.value), static_cast<int32_t>(std::strlen(item.units)));
        EXPECT_STREQ(text, item.units);
        EXPECT_EQ(sysenv_sizetostr(1, 3, text, item.value), -1);
    }
}

TEST(sysformat, bounded_copies)
{
    char text[8] = "#######";
    EXPECT_EQ(sysenv_strncpy(0, text, "abc"), nullptr);
    EXPECT_STREQ(text, "#######");
    EXPECT_EQ(sysenv_strncpy(1, text, "abc"), text);
    EXPECT_EQ(std::string(text, 3), std::string("\0##", 3));
    EXPECT_EQ(sysenv_strncpy(3, text, "abc"), text);
    EXPECT_EQ(std::string(text, 4), std::string("ab\0#", 4));
    EXPECT_STREQ(sysenv_strncpy(sizeof text, text, "abc"), "abc");
    EXPECT_STREQ(sysenv_strncpy(sizeof text, text, nullptr), "");
    EXPECT_EQ(sysenv_strlen(nullptr), 0U);
    EXPECT_EQ(sysenv_strlen("abc"), 3U);
}

TEST(sysformat, console)
{
    sysenv_printcontext context = {nullptr, nullptr, 0};
    testing::internal::CaptureStdout();
    sysenv_print(nullptr, "a %s\n");
    sysenv_printquiet(nullptr, "never\n");
    sysenv_printquiet(&context, "b\n");
    context.silent = 1;
    sysenv_printquiet(&context, "never\n");
    sysenv_printf("%Iu%s\n", size_t{3}, "c");
    sysenv_fprintf(stdout, "%I64u\n", uint64_t{4});
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "a %s\nb\n3c\n4\n");
}

/* ---- UTF-8 to UTF-16 ---- */

using units = std::vector<uint16_t>;

struct wide {
    units text;
    uint64_t bytes_read, errors;
};

/* Counts, then converts into exactly the room that the count asks for. */
static wide convert(const std::string &source)
{
    wide got = {};
    uint64_t bytes_counted = 0;
    const uint64_t num = utf8_towide(source.c_str(), nullptr, &bytes_counted, 0, nullptr);
    got.text.assign(num + 2, 0xAAAA);
    EXPECT_EQ(utf8_towide(source.c_str(), got.text.data(), &got.bytes_read, num + 1, &got.errors), num);
    EXPECT_EQ(got.bytes_read, bytes_counted);
    EXPECT_EQ(got.text[num], 0) << "terminator";
    EXPECT_EQ(got.text[num + 1], 0xAAAA) << "guard";
    got.text.resize(num);
    return got;
}

TEST(sysformat, utf8_characters)
{
    const struct {
        const char *name;
        std::string source;
        units expected;
        uint64_t errors;
    } cases[] = {
        {"empty", "", {}, 0},
        {"plain", "az\x7F", {'a', 'z', 0x7F}, 0},
        {"two bytes", "\xC3\xA9\xDF\xBF", {0xE9, 0x7FF}, 0},
        {"three bytes", "\xE2\x82\xAC\xEF\xBF\xBF", {0x20AC, 0xFFFF}, 0},
        {"overlong", "\xC1\x81\xE0\x80\x80", {0x41, 0}, 0},
        {"surrogate", "\xED\xA0\x80", {0xD800}, 0},
        {"first supplementary", "\xF0\x90\x80\x80", {0xD800, 0xDC00}, 0},
        {"standard where bits 12 to 15 are zero", "\xF0\x90\xB0\x81", {0xD803, 0xDC01}, 0},
        {"bits 12 to 15 are lost", "\xF0\x9F\x98\x80", {0xD801, 0xDE00}, 0}, /* 1F600: standard is D83D DE00 */
        {"second plane", "\xF0\xA0\x80\x80", {0xDC00, 0xDC00}, 0},
        {"last character", "\xF4\x8F\xBF\xBF", {0xFC03, 0xDFFF}, 0},
        {"above the last", "\xF4\x90\x80\x80z", {'.', 'z'}, 1},
        {"five and six bytes", "\xF8\x88\x80\x80\x80\xFC\x84\x80\x80\x80\x80", {'.', '.'}, 2},
        {"six bytes, small value", "\xFC\x80\x80\x80\x81\x81", {0x41}, 0},
        {"breaking byte is lost", "a\xC3\x41", {'a', '.'}, 1},
        {"lead at the end", "a\xC3", {'a', '.'}, 1},
        {"cut in the middle", "\xE2\x82", {'.'}, 1},
        {"stray continuation takes six", "\x80\x80\x80\x80\x80\x81z", {1, 'z'}, 0},
        {"stray continuation, broken", "\x80zy", {'.', 'y'}, 1},
        {"no lead", "\xFE\x41z", {'.', 'z'}, 1},
    };
    for (const auto &item : cases) {
        SCOPED_TRACE(item.name);
        const wide got = convert(item.source);
        EXPECT_EQ(got.text, item.expected);
        EXPECT_EQ(got.errors, item.errors);
        EXPECT_EQ(got.bytes_read, item.source.size());

        uint64_t num = 99;
        uint64_t bytes_read = 99;
        EXPECT_EQ(sysenv_utf8towide(nullptr, 0, &num, nullptr, &bytes_read, item.source.c_str()),
                  item.errors == 0 ? 0 : 12);
        EXPECT_EQ(num, item.expected.size());
        EXPECT_EQ(bytes_read, item.source.size());
    }
}

TEST(sysformat, utf8_room)
{
    const struct {
        const char *source;
        uint64_t capacity, num, bytes_read;
    } cases[] = {
        {"abc", 4, 3, 3},
        {"abc", 3, 2, 2},
        {"abc", 1, 0, 0},
        {"abc", 0, 0, 0},
        {"", 1, 0, 0},
        {"a\xF0\x90\x80\x80z", 3, 3, 5}, /* both units fill it up: the terminator is one behind */
        {"a\xF0\x90\x80\x80z", 2, 1, 1},
        {"a\xF0\x90\x80\x80z", 4, 3, 5},
    };
    for (const auto &item : cases) {
        SCOPED_TRACE(std::string(item.source) + " in " + std::to_string(item.capacity));
        units room(item.capacity + 2, 0xAAAA);
        uint64_t bytes_read = 0;
        EXPECT_EQ(utf8_towide(item.source, room.data(), &bytes_read, item.capacity, nullptr), item.num);
        EXPECT_EQ(bytes_read, item.bytes_read);
        EXPECT_EQ(room[item.num], 0);
        EXPECT_EQ(room[item.num + 1], 0xAAAA);
    }
}
