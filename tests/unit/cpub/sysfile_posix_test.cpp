/* sysfile_posix_test.cpp - what the file layer does with what only POSIX has: permissions, the gzip command, a device that
 * is always full, any bytes in names. */
#include "support/process.h"
#include "sysfile_fixture.h"

#include <sys/stat.h>

TEST_F(sysfile, permissions)
{
    const mode_t mask = umask(027);
    sysfile_t *file = open(folder.file("f"), "w", SYSFILE_PLAIN);
    umask(mask);
    EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
    struct stat about = {};
    EXPECT_EQ(stat(folder.file("f").c_str(), &about), 0);
    EXPECT_EQ(about.st_mode & 0777, 0640U);
}

/* Half of a pair. What Windows makes of it depends on the file system. */
TEST_F(sysfile, names_that_are_no_text) { expect_same_file("\xED\xA0\x80", {0xD800}); }

/* ---- gzip files made and read by others, and of several members ---- */

static bool shell(const std::string &command)
{
    process_options options;
    options.args = {"-c", command};
    return process_run("/bin/sh", options).status == 0;
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

/* ---- A full disk ---- */

TEST_F(sysfile, full_disk)
{
    const std::string text = pattern(BUFFER);
    sysfile_t *file = open("/dev/full", "w", SYSFILE_PLAIN);
    int32_t res = 0;
    sysenv_fwrite(file, text.data(), 1, BUFFER, &res);
    EXPECT_EQ(res, SYSFILE_OK);
    EXPECT_EQ(sysenv_ferror(file), SYSFILE_OK);
    EXPECT_EQ(sysenv_fflush(file), SYSFILE_WRITE); /* and what waits stays */
    EXPECT_EQ(file->state->used, BUFFER);
    EXPECT_EQ(sysenv_ferror(file), SYSFILE_WRITE);
    EXPECT_EQ(sysenv_ffinish(file), SYSFILE_WRITE);
    EXPECT_EQ(file->state->used, BUFFER);
    EXPECT_EQ(sysenv_fputs(file, "ab"), SYSFILE_WRITE); /* and all of it goes */
    EXPECT_EQ(file->state->used, 0U);
    EXPECT_EQ(sysenv_ffinish(file), SYSFILE_WRITE); /* nothing waits, but there is a hole */
    EXPECT_EQ(sysenv_fputc(file, 'c'), SYSFILE_OK);
    sysenv_fwrite(file, text.data(), 3, BUFFER, &res);
    EXPECT_EQ(res, SYSFILE_WRITE);
    EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);

    file = open("/dev/full", "w", SYSFILE_PLAIN);
    EXPECT_EQ(sysenv_fputc(file, 'c'), SYSFILE_OK);
    EXPECT_EQ(sysenv_fclose(&file), SYSFILE_WRITE);
    EXPECT_EQ(file, nullptr);
}

TEST_F(sysfile, full_disk_under_gzip)
{
    sysfile_t *file = open("/dev/full", "w", SYSFILE_GZIP);
    EXPECT_EQ(sysenv_fputc(file, 'c'), SYSFILE_OK);
    EXPECT_EQ(sysenv_fflush(file), SYSFILE_OK); /* zlib has it */
    EXPECT_EQ(sysenv_ffinish(file), SYSFILE_WRITE);
    EXPECT_EQ(sysenv_ferror(file), SYSFILE_WRITE);
    EXPECT_EQ(sysenv_fputc(file, 'c'), SYSFILE_OK);
    EXPECT_EQ(sysenv_fclose(&file), SYSFILE_WRITE);

    file = open("/dev/full", "w", SYSFILE_GZIP);
    std::string text = pattern(BUFFER);
    for (uint64_t i = 0; i < BUFFER; ++i) text[i] = static_cast<char>(i * i * i >> 9 ^ i * 2654435761U >> 13);
    int32_t res = 0;
    for (int i = 0; i < 5 && res == 0; ++i) sysenv_fwrite(file, text.data(), BUFFER, 1, &res);
    EXPECT_EQ(res, SYSFILE_WRITE);
    EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);

    file = open("/dev/full", "w", SYSFILE_GZIP);
    EXPECT_EQ(sysenv_fputc(file, 'c'), SYSFILE_OK);
    EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK); /* shows at the close alone: not told */
}
