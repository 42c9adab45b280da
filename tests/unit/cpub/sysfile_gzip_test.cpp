/* sysfile_gzip_test.cpp - cut and damaged gzip files. */
#include "sysfile_fixture.h"

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
