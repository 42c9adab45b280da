/* sysfile_read_test.cpp - reads of bytes and counted strings: ends, edges of the buffer, faults of the file beneath. */
#include "sysfile_fixture.h"

#include <fcntl.h>
#include <unistd.h>

static const int32_t KINDS[] = {SYSFILE_PLAIN, SYSFILE_GZIP};

/* Steps of one size through a file, beginning with a first one that puts the edge of the buffer somewhere. */
TEST_F(sysfile, steps)
{
    const struct {
        uint64_t length, first, step;
    } cases[] = {
        {0, 0, 1},
        {10, 0, 3},
        {BUFFER, 0, BUFFER},
        {BUFFER + 1, 1, BUFFER},
        {2 * BUFFER, 0, 2 * BUFFER},
        {2 * BUFFER + 5, 3, BUFFER + 1},
        {3 * BUFFER + 5, 0, 3 * BUFFER + 6},
        {3 * BUFFER, BUFFER - 1, 2 * BUFFER - 1},
        {BUFFER + 100, 7, 1000},
    };
    for (const int32_t kind : KINDS)
        for (const auto &item : cases) {
            SCOPED_TRACE(std::to_string(item.length) + " by " + std::to_string(item.step));
            const std::string text = pattern(item.length);
            sysfile_t *file = open_text(text, "r", kind);
            std::string got(item.length + item.step + 1, '#');
            int32_t res = 0;
            uint64_t done = item.first;
            sysenv_fread(file, got.data(), item.first, 1, &res);
            EXPECT_EQ(res, SYSFILE_OK);
            while (res == 0) done += sysenv_freadcount(file, got.data() + done, item.step, &res);
            EXPECT_EQ(res, SYSFILE_EOF);
            EXPECT_EQ(done, item.length);
            EXPECT_TRUE(got.compare(0, done, text) == 0);
            EXPECT_EQ(got[done], '#');
            EXPECT_EQ(sysenv_freadcount(file, got.data(), 1, &res), 0U);

            /* The same in one read, which has no more to tell than the end. */
            EXPECT_EQ(sysenv_frewind(file), SYSFILE_OK);
            got.assign(item.length + 1, '#');
            res = 0;
            sysenv_fread(file, got.data(), 1, item.length, &res);
            EXPECT_EQ(res, SYSFILE_OK);
            EXPECT_EQ(file->state->pos, file->state->used);
            EXPECT_EQ(file->state->used, item.length == 0 ? 0 : (item.length - 1) % BUFFER + 1);
            sysenv_fread(file, got.data() + item.length, 1, 0, &res);
            EXPECT_EQ(res, SYSFILE_OK);
            sysenv_fread(file, got.data() + item.length, 1, 1, &res);
            EXPECT_EQ(res, SYSFILE_EOF);
            EXPECT_TRUE(got == text + "#");
            EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
        }
}

/* The end is not kept: what is appended afterwards is found, also behind a file that gzip takes for cut. */
TEST_F(sysfile, growing_file)
{
    for (const int32_t kind : KINDS) {
        sysfile_t *file = open_text("abc", "r", kind);
        char bytes[8] = "";
        int32_t res = 0;
        EXPECT_EQ(sysenv_freadcount(file, bytes, 8, &res), 3U);
        EXPECT_EQ(res, SYSFILE_EOF);
        sysfile_t *more = open(folder.file("text"), "wa", kind);
        EXPECT_EQ(sysenv_fputs(more, "def"), SYSFILE_OK);
        EXPECT_EQ(sysenv_fclose(&more), SYSFILE_OK);
        res = 0;
        EXPECT_EQ(sysenv_freadcount(file, bytes, 8, &res), 3U);
        EXPECT_EQ(std::string(bytes, 3), "def");
        EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
    }
}

TEST_F(sysfile, wrong_directions)
{
    for (const int32_t kind : KINDS) {
        sysfile_t *file = open(folder.file("f"), "w", kind);
        char bytes[8];
        char *text = nullptr;
        uint64_t capacity = 0;
        uint64_t length = 9;
        int32_t res = 0;
        sysenv_fread(file, bytes, 1, 8, &res);
        EXPECT_EQ(res, SYSFILE_READ);
        sysenv_fread(file, nullptr, 1, 8, &res);
        sysenv_freadstring(file, &capacity, &text, &res);
        sysenv_fgets(file, 8, bytes, &res);
        sysenv_fgetslen(file, 8, &length, bytes, &res);
        EXPECT_EQ(res, SYSFILE_READ);
        res = 0;
        sysenv_fread(file, nullptr, 1, 0, &res);
        EXPECT_EQ(res, SYSFILE_OK);
        sysenv_freadstring(file, &capacity, &text, &res);
        EXPECT_EQ(res, SYSFILE_READ);
        res = 0;
        sysenv_fgetslen(file, 8, &length, bytes, &res);
        EXPECT_EQ(res, SYSFILE_NOTREADABLE);
        EXPECT_EQ(length, 9U);
        res = 3;
        EXPECT_ASSERTION((void)sysenv_freadcount(file, bytes, 1, &res));
        EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);

        file = open(folder.file("f"), "rw", kind);
        res = 0;
        EXPECT_ASSERTION(sysenv_fgets(file, 8, bytes, &res));
        EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
        file = open_text("abc", "r", kind);
        EXPECT_ASSERTION(sysenv_fgets(file, 0, bytes, &res));
        EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
    }
}

static std::string counted(uint64_t length, const std::string &bytes)
{
    std::string text(sizeof length, ' ');
    std::memcpy(text.data(), &length, sizeof length);
    return text + bytes;
}

TEST_F(sysfile, counted_strings)
{
    const struct {
        const char *name;
        std::string text;
        uint64_t capacity; /* before the read */
        int32_t res[2];    /* of a stream for reading, and for both directions */
        uint64_t capacity_after;
        const char *bytes;
    } cases[] = {
        {"empty", counted(0, ""), 0, {0, 0}, 1, ""},
        {"grown", counted(3, "abc"), 2, {0, 0}, 4, "abc"},
        {"grown by the terminator", counted(3, "abc"), 3, {0, 0}, 4, "abc"},
        {"not shrunk", counted(3, "abc"), 50, {0, 0}, 50, "abc"},
        {"no length", "", 2, {4, 3}, 2, "#"},
        {"length cut", counted(3, "").substr(1), 2, {4, 3}, 2, "#"},
        {"bytes cut", counted(6, "ab"), 0, {4, 3}, 7, "ab"},
        {"bytes cut, room there", counted(3, "ab"), 6, {4, 3}, 6, "ab#"},
        {"wraps", counted(UINT64_MAX, "ab"), 2, {1, 1}, 0, nullptr},
        {"wraps with guards", counted(UINT64_MAX - 64, "ab"), 2, {1, 1}, 0, nullptr},
        {"too long", counted(INT64_MAX, "ab"), 0, {1, 1}, 0, nullptr},
    };
    for (const auto &item : cases)
        for (const int way : {0, 1, 2}) {
            SCOPED_TRACE(std::string(item.name) + ", way " + std::to_string(way));
            sysfile_t *file = open_text(item.text, "r", way == 1 ? SYSFILE_GZIP : SYSFILE_PLAIN);
            if (way == 2) {
                EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
                file = open(folder.file("text"), "rwa", SYSFILE_PLAIN);
            }
            uint64_t capacity = item.capacity;
            char *text = nullptr;
            if (capacity != 0) {
                text = static_cast<char *>(sysenv_mallocdbg(sys, __FILE__, __LINE__, capacity, 1));
                std::memset(text, '#', capacity);
                text[1] = 0;
                if (capacity > 5) text[2] = '#';
            }
            int32_t res = 0;
            sysenv_freadstring(file, &capacity, &text, &res);
            EXPECT_EQ(res, item.res[way / 2]);
            EXPECT_EQ(capacity, item.capacity_after);
            EXPECT_EQ(text == nullptr, item.bytes == nullptr);
            if (text != nullptr && item.bytes != nullptr) {
                EXPECT_STREQ(text, item.bytes);
                res = 77;
                sysenv_freadstring(file, &capacity, &text, &res);
                EXPECT_STREQ(text, item.bytes);
            }
            sysenv_freedbg(sys, __FILE__, __LINE__, text);
            EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
            expect_nothing_left();
        }
}

TEST_F(sysfile, counted_string_without_memory)
{
    sysfile_t *file = open_text(counted(3, "abc"), "r", SYSFILE_PLAIN);
    uint64_t capacity = 2;
    char *text = static_cast<char *>(sysenv_mallocdbg(sys, __FILE__, __LINE__, capacity, 1));
    int32_t res = 0;
    allocator.until_failure = 0;
    sysenv_freadstring(file, &capacity, &text, &res);
    EXPECT_EQ(res, SYSFILE_NOMEM);
    EXPECT_EQ(capacity, 0U);
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
}

/* A disk that fails in the middle, played by a descriptor that is exchanged for one that cannot be read. */
TEST_F(sysfile, disk_fails)
{
    for (const uint64_t length : {BUFFER, 3 * BUFFER}) { /* through the buffer, and past it */
        sysfile_t *file = open_text(pattern(3 * BUFFER), "r", SYSFILE_PLAIN);
        std::string got(length, ' ');
        int32_t res = 0;
        sysenv_fread(file, got.data(), 1, 10, &res);
        EXPECT_EQ(sysenv_ferror(file), SYSFILE_OK);
        const int bad = ::open(folder.file("bad").c_str(), O_CREAT | O_WRONLY, 0600);
        EXPECT_GE(dup2(bad, fileno(file->state->fp)), 0);
        close(bad);
        EXPECT_EQ(sysenv_freadcount(file, got.data(), length, &res), BUFFER - 10);
        EXPECT_EQ(res, SYSFILE_EOF);
        EXPECT_EQ(sysenv_ferror(file), SYSFILE_READ);
        EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
    }
}
