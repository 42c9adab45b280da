/* sysfile_gzip_test.cpp - gzip files made and read by others, files of several members, cut and damaged ones. */
#include "support/process.h"
#include "sysfile_fixture.h"

static bool shell(const std::string &command)
{
    process_options options;
    options.args = {"-c", command};
    return process_run("/bin/sh", options).status == 0;
}

struct outcome {
    std::string text;
    int32_t error;
};

/* Reads a gzip file to its end. What comes behind a fault is not text. */
static outcome read_all(sysfile_t *file)
{
    std::string text(5 * BUFFER, ' ');
    int32_t res = 0;
    text.resize(sysenv_freadcount(file, text.data(), text.size(), &res));
    EXPECT_EQ(res, SYSFILE_EOF);
    outcome got = {text, sysenv_ferror(file)};
    EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
    return got;
}

TEST_F(sysfile, gzip_command)
{
    if (!shell("gzip --version")) GTEST_SKIP() << "no gzip command";
    const std::string path = folder.file("f");
    for (const uint64_t length : {uint64_t{0}, uint64_t{1}, BUFFER, 2 * BUFFER + 3}) {
        const std::string text = pattern(length);
        sysfile_t *file = open(path + ".gz", "w", SYSFILE_GZIP);
        int32_t res = 0;
        sysenv_fwrite(file, text.data(), 1, length, &res);
        EXPECT_EQ(res, SYSFILE_OK);
        EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
        EXPECT_TRUE(shell("gzip -df '" + path + ".gz'"));
        EXPECT_TRUE(file_read(path) == text);

        EXPECT_TRUE(shell("cd '" + folder.path + "' && gzip -kf f && gzip -c f >>f.gz"));
        const outcome got = read_all(open(path + ".gz", "r", SYSFILE_GZIP));
        EXPECT_TRUE(got.text == text + text);
        EXPECT_EQ(got.error, SYSFILE_OK);
        EXPECT_TRUE(read_all(open(path, "r", SYSFILE_GZIP)).text == text); /* not packed at all */
    }
}

/* A file cut anywhere but at its very beginning, where nothing tells that it is one, reads as a shorter one: only
 * sysenv_ferror tells. */
TEST_F(sysfile, cut_gzip)
{
    const std::string text = pattern(200);
    sysfile_t *file = open_text(text, "r", SYSFILE_GZIP);
    EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
    const std::string packed = file_read(folder.file("text"));
    for (size_t length = 2; length <= packed.size(); ++length) {
        EXPECT_TRUE(file_write(folder.file("cut"), packed.substr(0, length)));
        file = open(folder.file("cut"), "r", SYSFILE_GZIP);
        const outcome got = read_all(file);
        EXPECT_EQ(got.error, length < packed.size() ? SYSFILE_READ : SYSFILE_OK) << length;
        EXPECT_EQ(got.text, text.substr(0, got.text.size()));
    }
    EXPECT_TRUE(file_write(folder.file("cut"), packed + "trailing bytes"));
    EXPECT_EQ(read_all(open(folder.file("cut"), "r", SYSFILE_GZIP)).text, text);
}

/* After a read that zlib refuses the stream goes on with what is in its buffer and ends where that ends. */
TEST_F(sysfile, damaged_gzip)
{
    const std::string text = pattern(2000);
    sysfile_t *file = open_text(text, "r", SYSFILE_GZIP);
    EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
    const std::string packed = file_read(folder.file("text"));
    int num_failed = 0;
    for (size_t at = 2; at < packed.size(); ++at) {
        std::string damaged = packed;
        damaged[at] = static_cast<char>(damaged[at] ^ 0x55);
        EXPECT_TRUE(file_write(folder.file("bad"), damaged));
        file = open(folder.file("bad"), "r", SYSFILE_GZIP);
        char bytes[100];
        int32_t res = 0;
        (void)sysenv_freadcount(file, bytes, 1, &res);
        const bool has_failed = file->state->used == UINT64_MAX;
        num_failed += has_failed ? 1 : 0;
        if (has_failed) {
            EXPECT_EQ(res, SYSFILE_OK);
            EXPECT_EQ(file->state->pos, 1U);
            file->state->buffer[BUFFER - 2] = '\n';
            file->state->buffer[BUFFER - 1] = '!';
            file->state->pos = BUFFER - 10;
            uint64_t length = 0;
            sysenv_fgetslen(file, 100, &length, bytes, &res);
            EXPECT_EQ(length, 8U);
            sysenv_fgets(file, 100, bytes, &res);
            EXPECT_STREQ(bytes, "!\n");
            EXPECT_EQ(res, SYSFILE_OK);
            sysenv_fgets(file, 100, bytes, &res);
            EXPECT_EQ(res, SYSFILE_EOF);
            res = 0;
            sysenv_fread(file, bytes, 1, 1, &res);
            EXPECT_EQ(res, SYSFILE_EOF);
            EXPECT_EQ(file->state->pos, BUFFER);
            EXPECT_EQ(sysenv_ferror(file), SYSFILE_READ);
        }
        EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
    }
    EXPECT_GT(num_failed, static_cast<int>(packed.size() / 2));
}
