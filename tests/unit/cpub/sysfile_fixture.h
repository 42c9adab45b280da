/* sysfile_fixture.h - an environment with a counting allocator, a folder, and files stored and read behind the back of the
 * layer. Every test ends with the check that its streams have given back all blocks and descriptors. */
#pragma once

#include "cpub/sysfile.h"
#include "failing_allocator.h"
#include "platform.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

static const uint64_t BUFFER = SYSFILE_BUFFER_BYTES;

inline void stream_to_stderr(void *, const char *text)
{
    (void)std::fputs(text, stderr);
    (void)std::fflush(stderr); /* on Windows it is buffered unless it is a console */
}

/* Bytes whose place in the file can be told. */
inline std::string pattern(uint64_t n)
{
    std::string text(n, ' ');
    for (uint64_t i = 0; i < n; ++i) text[i] = static_cast<char>('!' + (i * i / 7 + i) % 90);
    return text;
}

/* What a file holds, unpacked if it is gzip. */
inline std::string stored(const std::string &path)
{
    std::string text;
    char piece[65536];
    gzFile in = gzip_open(path, "rb");
    if (in == nullptr) return "(none)";
    for (int n = 0; (n = gzread(in, piece, sizeof piece)) > 0;) text.append(piece, static_cast<size_t>(n));
    EXPECT_EQ(gzclose(in), Z_OK);
    return text;
}

struct outcome {
    std::string text;
    int32_t error;
};

/* Reads a gzip file to its end. What comes behind a fault is not text. */
inline outcome read_all(sysfile_t *file)
{
    std::string text(5 * BUFFER, ' ');
    int32_t res = 0;
    text.resize(sysenv_freadcount(file, text.data(), text.size(), &res));
    EXPECT_EQ(res, SYSFILE_EOF);
    outcome got = {text, sysenv_ferror(file)};
    EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
    return got;
}

/* Ends the test's child as internal faults of the layer do. */
#define EXPECT_ASSERTION(statement)                                                                                    \
    EXPECT_EXIT(statement, has_aborted, "Msg. : Assertion failed at src/cpub/sysfile\\(" DIGITS "\\)\\.")

struct sysfile : testing::Test {
    temp_folder folder;
    failing_allocator allocator;
    sysenv *sys = nullptr;
    int64_t num_blocks = 0, num_descriptors = 0;

    sysfile()
    {
        const sysenv_allocator functions = failing_functions(&allocator);
        sys = sysenv_create(__FILE__, __LINE__, 0, &functions);
        sys->streamfunc[0] = stream_to_stderr;
        num_blocks = allocator.num_live;
        num_descriptors = count_descriptors();
    }

    ~sysfile() override
    {
        expect_nothing_left();
        (void)sysenv_delete(__FILE__, __LINE__, &sys);
        EXPECT_EQ(allocator.num_live, 0);
    }

    void expect_nothing_left() const
    {
        EXPECT_EQ(allocator.num_live, num_blocks);
        EXPECT_EQ(count_descriptors(), num_descriptors);
    }

    /* `mode` has the letters r, w and a of the flags that are set. */
    sysfile_t *open(const std::string &path, const char *mode, int32_t kind, int32_t expected = SYSFILE_OK) const
    {
        sysfile_t *file = nullptr;
        int32_t res = 0;
        sysenv_fopen(sys, path.c_str(), 0, std::strchr(mode, 'r') != nullptr, std::strchr(mode, 'w') != nullptr,
                     std::strchr(mode, 'a') != nullptr, kind, 0, &file, &res);
        EXPECT_EQ(res, expected) << path << " mode '" << mode << "' kind " << kind;
        EXPECT_EQ(file == nullptr, res != SYSFILE_OK);
        return file;
    }

    /* A file with this text, of either kind, opened. */
    sysfile_t *open_text(const std::string &text, const char *mode, int32_t kind) const
    {
        const std::string path = folder.file("text");
        gzFile out = gzip_open(path, kind == SYSFILE_GZIP ? "wb1" : "wbT");
        EXPECT_EQ(gzwrite(out, text.data(), static_cast<unsigned>(text.size())), static_cast<int>(text.size()));
        EXPECT_EQ(gzclose(out), Z_OK);
        return open(path, mode, kind);
    }

    /* Writes a file under its one name and appends to it under the other. */
    void expect_same_file(const std::string &utf8, const std::vector<uint16_t> &wide) const
    {
        sysfile_t *file = open(folder.file(utf8), "w", SYSFILE_PLAIN);
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(sysenv_fputs(file, utf8.c_str()), SYSFILE_OK);
        EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
        EXPECT_EQ(stored(folder.file(utf8)), utf8);
        std::vector<uint16_t> path(folder.path.begin(), folder.path.end()); /* ASCII */
        path.push_back('/');
        path.insert(path.end(), wide.begin(), wide.end());
        path.push_back(0);
        int32_t res = 0;
        sysenv_wfopen(sys, path.data(), 0, 0, 1, 1, SYSFILE_PLAIN, 0, &file, &res);
        ASSERT_EQ(res, SYSFILE_OK) << utf8;
        EXPECT_EQ(sysenv_fputc(file, '.'), SYSFILE_OK);
        EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
        EXPECT_EQ(stored(folder.file(utf8)), utf8 + ".");
    }
};
