/* sysfile_lines_test.cpp - line reads, on both ways to a line. */
#include "sysfile_fixture.h"

struct line {
    int32_t res;
    std::string text;
    uint64_t length;
};

/* Reads one line with both entries: the second sees what the first has seen. */
static line read_line(sysfile_t *file, uint64_t capacity)
{
    const sysfile_state_t before = *file->state;
    std::vector<char> bytes(capacity + 1, '#');
    line got = {0, "", 99};
    sysenv_fgetslen(file, capacity, &got.length, bytes.data(), &got.res);
    EXPECT_EQ(bytes[got.length], 0);
    EXPECT_EQ(bytes[capacity], '#');
    got.text = bytes.data();
    EXPECT_EQ(got.text.size(), got.length);
    if (file->state->used == before.used && file->state->pos >= before.pos) { /* no refill: once more */
        file->state->pos = before.pos;
        int32_t res = 0;
        std::string expected = got.text;
        if (got.res == 0 && got.length + 1 < capacity) expected += '\n';
        std::fill(bytes.begin(), bytes.end(), '#');
        sysenv_fgets(file, capacity, bytes.data(), &res);
        EXPECT_EQ(bytes.data(), expected);
        EXPECT_EQ(bytes[capacity], '#');
        EXPECT_EQ(res, got.res);
    }
    return got;
}

/* Each text twice: as a whole file, where the end is never far, and in front of more, where it is. */
TEST_F(sysfile, lines)
{
    const struct {
        const char *name, *text;
        uint64_t capacity;
        std::vector<std::string> across, within;
    } cases[] = {
        {"empty", "", 10, {}, {}},
        {"no end", "a", 10, {"a"}, {"a~"}},
        {"line", "ab\n", 10, {"ab"}, {"ab"}},
        {"carriage returns", "a\r\r\nb\r\n", 10, {"a", "b"}, {"a", "b"}},
        {"within the line", "a\rb\n\rc\n", 10, {"a\rb", "\rc"}, {"a\rb", "\rc"}},
        {"nothing else", "\r", 10, {""}, {"\r~"}},
        {"empty lines", "\n\n\r\n", 10, {"", "", ""}, {"", "", ""}},
        {"longer", "abcdefg\n", 4, {"abc", "def", "g"}, {"abc", "def", "g"}},
        {"exactly", "abc\n", 4, {"abc", ""}, {"abc"}},
        {"cut before carriage returns", "ab\r\r\nc\n", 4, {"ab", "", "c"}, {"ab", "", "c"}},
        {"cut among them", "abcd\r\n", 6, {"abcd", ""}, {"abcd"}},
        {"one byte", "a\n", 2, {"a", ""}, {"a"}},
    };
    for (const int32_t kind : {SYSFILE_PLAIN, SYSFILE_GZIP})
        for (const auto &item : cases)
            for (const bool within : {false, true}) {
                SCOPED_TRACE(std::string(item.name) + (within ? ", within" : ", across"));
                const std::string text = std::string("-\n") + item.text + (within ? "~\n" + pattern(100) : "");
                sysfile_t *file = open_text(text, "r", kind);
                EXPECT_EQ(read_line(file, 100).text, "-"); /* and the buffer is filled */
                for (const std::string &expected : within ? item.within : item.across) {
                    const line got = read_line(file, item.capacity);
                    EXPECT_EQ(got.res, SYSFILE_OK);
                    EXPECT_EQ(got.text, expected);
                }
                if (!within) {
                    for (int i = 0; i < 2; ++i) {
                        const line got = read_line(file, item.capacity);
                        EXPECT_EQ(got.res, SYSFILE_EOF);
                        EXPECT_EQ(got.length, 0U);
                    }
                    int32_t res = 0;
                    char bytes[3] = "##";
                    sysenv_fgets(file, 2, bytes, &res);
                    EXPECT_EQ(res, SYSFILE_EOF);
                    EXPECT_EQ(bytes[0], 0);
                    bytes[0] = '#';
                    sysenv_fgets(file, 2, bytes, &res);
                    EXPECT_EQ(bytes[0], '#');
                }
                EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
            }
}

/* With room for nothing, the way within takes a "\n" that is next, and the other looks at nothing. */
TEST_F(sysfile, capacity_of_one)
{
    sysfile_t *file = open_text("\n\nab\n", "r", SYSFILE_PLAIN);
    char byte = '#';
    int32_t res = 0;
    uint64_t length = 9;
    sysenv_fgets(file, 1, &byte, &res);
    EXPECT_EQ(file->state->used, 0U);
    EXPECT_EQ(byte, 0);
    EXPECT_EQ(read_line(file, 2).text, "");
    for (const uint64_t pos : {2U, 2U}) {
        sysenv_fgetslen(file, 1, &length, &byte, &res);
        EXPECT_EQ(file->state->pos, pos);
        EXPECT_EQ(length, 0U);
    }
    file->state->pos = 4; /* the last "\n": no more than one byte is left */
    sysenv_fgetslen(file, 1, &length, &byte, &res);
    EXPECT_EQ(file->state->pos, 4U);
    EXPECT_EQ(res, SYSFILE_OK);
    EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
}

/* Lines across the edge of the buffer come out whole, wherever it cuts them and however large the capacity is. */
TEST_F(sysfile, lines_across_refills)
{
    for (uint64_t before = BUFFER - 6; before <= BUFFER; ++before) {
        const std::string first(before - 1, 'x');
        sysfile_t *file = open_text(first + "\nabc\r\nend", "r", SYSFILE_PLAIN);
        for (const uint64_t capacity : {uint64_t{6}, BUFFER + 10, UINT64_MAX}) {
            std::vector<char> bytes(BUFFER + 20);
            int32_t res = 0;
            uint64_t length = 0;
            sysenv_fgetslen(file, BUFFER + 1, &length, bytes.data(), &res);
            EXPECT_EQ(length, first.size());
            sysenv_fgetslen(file, capacity, &length, bytes.data(), &res);
            EXPECT_STREQ(bytes.data(), "abc") << before << " " << capacity;
            sysenv_fgets(file, capacity, bytes.data(), &res);
            EXPECT_STREQ(bytes.data(), "end\n");
            EXPECT_EQ(res, SYSFILE_OK);
            EXPECT_EQ(sysenv_frewind(file), SYSFILE_OK);
        }
        EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
    }
}
