/* sysfile_open_test.cpp - modes, names, failures of opening, closing, rewinding. */
#include "sysfile_fixture.h"

#include <unistd.h>

/* What a mode does to a file that holds "older!", with "NEW" written and then three bytes read. */
TEST_F(sysfile, modes)
{
    const struct {
        const char *mode;
        int32_t kind, missing, existing, written, read;
        const char *text;
    } cases[] = {
        {"r", SYSFILE_PLAIN, 2, 0, 5, 0, "older!"},
        {"w", SYSFILE_PLAIN, 0, 0, 0, 3, "NEW"},
        {"rw", SYSFILE_PLAIN, 0, 0, 0, 3, "NEW"},
        {"", SYSFILE_PLAIN, 0, 0, 0, 0, "NEWer!"},
        {"ra", SYSFILE_PLAIN, 2, 0, 5, READ_BEHIND_REFUSED_APPEND, "older!"},
        {"wa", SYSFILE_PLAIN, 0, 0, 0, 3, "older!NEW"},
        {"rwa", SYSFILE_PLAIN, 0, 0, 0, 3, "older!NEW"},
        {"a", SYSFILE_PLAIN, 0, 0, 0, 0, "older!NEW"},
        {"r", SYSFILE_GZIP, 2, 0, 5, 0, "older!"},
        {"w", SYSFILE_GZIP, 0, 0, 0, 3, "NEW"},
        {"rw", SYSFILE_GZIP, 0, 0, 0, 3, "NEW"},
        {"wa", SYSFILE_GZIP, 0, 0, 0, 3, "older!NEW"},
        {"rwa", SYSFILE_GZIP, 0, 0, 0, 3, "older!NEW"},
    };
    for (const auto &item : cases) {
        SCOPED_TRACE(std::string(item.mode) + " kind " + std::to_string(item.kind));
        const std::string path = folder.file("new");
        sysfile_t *file = open(path, item.mode, item.kind, item.missing);
        EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
        EXPECT_EQ(file_exists(path), item.missing == 0);
        std::filesystem::remove(path);

        file = open_text("older!", "r", item.kind);
        EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
        file = open(folder.file("text"), item.mode, item.kind, item.existing);
        ASSERT_NE(file, nullptr);
        std::memcpy(file->state->buffer, "NEW", 3); /* what gzip streams opened for both write instead */
        int32_t res = 0;
        sysenv_fwrite(file, "NEW", 1, 3, &res);
        EXPECT_EQ(res, item.written);
        char bytes[3];
        res = 0;
        sysenv_fread(file, bytes, 3, 1, &res);
        EXPECT_EQ(res, item.read);
        EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
        EXPECT_EQ(file, nullptr);
        EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
        EXPECT_EQ(stored(folder.file("text")), item.text);
        expect_nothing_left();
    }
    EXPECT_EQ(sysenv_fclose(nullptr), SYSFILE_OK);
}

/* zlib opens nothing without a direction, and this failure alone leaves its descriptor behind. */
TEST_F(sysfile, gzip_without_direction)
{
    const int next = dup(0);
    close(next);
    (void)open(folder.file("f"), "", SYSFILE_GZIP, SYSFILE_OPEN);
    EXPECT_EQ(count_descriptors(), num_descriptors + 1);
    EXPECT_EQ(close(next), 0);
}

/* Streams for both directions turn round without being told. */
TEST_F(sysfile, both_directions)
{
    for (const char *mode : {"rw", "rwa"}) {
        const std::string path = folder.file(mode);
        sysfile_t *file = open(path, mode, SYSFILE_PLAIN);
        int32_t res = 0;
        char bytes[8] = "";
        sysenv_fwritestring(file, 3, "abc", &res);
        EXPECT_EQ(sysenv_frewind(file), SYSFILE_OK);
        sysenv_fread(file, bytes, 1, 8, &res);
        EXPECT_EQ(res, SYSFILE_OK);
        EXPECT_EQ(sysenv_fputs(file, "d\n"), SYSFILE_OK);
        sysenv_fread(file, bytes, 1, 8, &res);
        EXPECT_EQ(res, SYSFILE_READ);
        EXPECT_EQ(file->state->used, 0U);
        EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
        EXPECT_EQ(stored(path).substr(8), std::strcmp(mode, "rw") == 0 ? "d\r\n" : "abcd\r\n");
    }
}

TEST_F(sysfile, names)
{
    expect_same_file("plain", {'p', 'l', 'a', 'i', 'n'});
    expect_same_file("\xC3\xA9\xE2\x82\xAC", {0xE9, 0x20AC});
    expect_same_file("\xF0\x9F\x98\x80z", {UNIT_OF_1F600, 0xDE00, 'z'});
}

TEST_F(sysfile, names_that_do_not_open)
{
    const struct {
        std::string name;
        const char *mode;
        int32_t res;
    } cases[] = {
        {"", "w", SYSFILE_OPEN},
        {folder.path, "r", SYSFILE_OPEN}, /* a directory */
        {folder.path, "rw", SYSFILE_OPEN},
        {folder.file("no/such"), "w", SYSFILE_OPEN},
        {folder.file(std::string(5000, 'x')), "w", SYSFILE_OPEN},
        {folder.file("a\xFF"), "w", SYSFILE_BADNAME},
        {folder.file("a\xC3"), "w", SYSFILE_BADNAME},
    };
    for (const auto &item : cases)
        for (const int32_t kind : {SYSFILE_PLAIN, SYSFILE_GZIP}) {
            (void)open(item.name, item.mode, kind, item.res);
            expect_nothing_left();
        }
    EXPECT_TRUE(std::filesystem::is_empty(folder.path));

    sysfile_t dummy = {};
    sysfile_t *file = &dummy;
    int32_t res = 0;
    sysenv_fopen(sys, nullptr, 0, 1, 0, 0, 0, 0, &file, &res);
    EXPECT_EQ(res, SYSFILE_OPEN);
    EXPECT_EQ(file, nullptr);
    const std::vector<uint16_t> longest(5000, 'x');
    for (const uint16_t *name : {static_cast<const uint16_t *>(nullptr), longest.data()}) {
        res = 0;
        sysenv_wfopen(sys, name, 0, 1, 0, 0, 0, 0, &file, &res);
        EXPECT_EQ(res, SYSFILE_OPEN);
    }
    /* A status on entry stays, and only the wide entry clears the handle. */
    for (int32_t status : {77, -1}) {
        file = &dummy;
        sysenv_fopen(sys, NULL_DEVICE, 0, 1, 0, 0, 0, 0, &file, &status);
        EXPECT_EQ(file, &dummy);
        sysenv_wfopen(sys, nullptr, 0, 1, 0, 0, 0, 0, &file, &status);
        EXPECT_EQ(file, nullptr);
        EXPECT_TRUE(status == 77 || status == -1);
    }
}

TEST_F(sysfile, memory_runs_out)
{
    for (const int32_t kind : {SYSFILE_PLAIN, SYSFILE_GZIP}) {
        const std::string path = folder.file(kind == SYSFILE_GZIP ? "gzip" : "plain");
        for (int64_t n = 0; n < 4; ++n) { /* name, handle, state, buffer */
            allocator.until_failure = n;
            (void)open(path, "w", kind, SYSFILE_NOMEM);
            EXPECT_EQ(allocator.until_failure, -1);
            EXPECT_FALSE(file_exists(path)) << n;
            expect_nothing_left();
        }
        allocator.until_failure = 4;
        sysfile_t *file = open(path, "w", kind);
        EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
        allocator.until_failure = -1;
    }
}

TEST_F(sysfile, gzip_levels)
{
    const std::string text = pattern(300000);
    uintmax_t sizes[3] = {};
    const int32_t levels[3] = {0, 1, 9};
    for (int i = 0; i < 3; ++i) {
        sysfile_t *file = nullptr;
        int32_t res = 0;
        sysenv_fopen(sys, folder.file("f").c_str(), 5, 0, 1, 0, SYSFILE_GZIP, levels[i], &file, &res);
        sysenv_fwrite(file, text.data(), 1, text.size(), &res);
        EXPECT_EQ(res, SYSFILE_OK);
        EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
        EXPECT_EQ(stored(folder.file("f")), text);
        sizes[i] = std::filesystem::file_size(folder.file("f"));
    }
    EXPECT_GT(sizes[1], sizes[2]);
    EXPECT_GT(sizes[1], sizes[0]); /* not above 0: zlib's own choice, between the two */
}

TEST_F(sysfile, rewind)
{
    for (const int32_t kind : {SYSFILE_PLAIN, SYSFILE_GZIP}) {
        sysfile_t *file = open_text("abcdef", "r", kind);
        char bytes[8];
        for (int i = 0; i < 3; ++i) {
            int32_t res = 0;
            EXPECT_EQ(sysenv_freadcount(file, bytes, 8, &res), 6U);
            EXPECT_EQ(res, SYSFILE_EOF);
            EXPECT_EQ(sysenv_frewind(file), SYSFILE_OK);
        }
        EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);

        file = open(folder.file("out"), "w", kind);
        EXPECT_EQ(sysenv_fputs(file, "written"), SYSFILE_OK);
        EXPECT_EQ(sysenv_fflush(file), SYSFILE_OK);
        EXPECT_EQ(sysenv_fputs(file, "dropped"), SYSFILE_OK);
        EXPECT_EQ(sysenv_frewind(file), kind == SYSFILE_GZIP ? SYSFILE_REWIND : SYSFILE_OK);
        EXPECT_EQ(sysenv_fputs(file, "WR"), SYSFILE_OK);
        EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
        EXPECT_EQ(stored(folder.file("out")), kind == SYSFILE_GZIP ? "writtenWR" : "WRitten");
    }
}
