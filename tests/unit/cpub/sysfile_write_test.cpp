/* sysfile_write_test.cpp - writes: what each entry leaves in the file, the edge of the buffer, failing disks. */
#include "cpub/sysfile_internal.h"
#include "sysfile_fixture.h"

#include <fcntl.h>
#include <functional>
#include <unistd.h>

static const int32_t KINDS[] = {SYSFILE_PLAIN, SYSFILE_GZIP};

using writer = std::function<int32_t(sysfile_t *)>;

static int32_t format(sysfile_t *file, const char *text, ...)
{
    va_list args;
    va_start(args, text);
    const int32_t res = sysenv_vfformat(file, text, args);
    va_end(args);
    return res;
}

/* Runs an entry that takes a status, once with one that stops it. */
template <typename function> static int32_t chained(function call)
{
    int32_t res = 77;
    call(&res);
    EXPECT_EQ(res, 77);
    res = 0;
    call(&res);
    return res;
}

static const struct {
    const char *name;
    writer write;
    std::string text;
} CASES[] = {
    {"fputc", [](sysfile_t *f) { return sysenv_fputc(f, 'a'); }, "a"},
    {"fputc, line end", [](sysfile_t *f) { return sysenv_fputc(f, '\n'); }, "\r\n"},
    {"fputs", [](sysfile_t *f) { return sysenv_fputs(f, "a\n\nb"); }, "a\r\n\r\nb"},
    {"fputs, CR LF", [](sysfile_t *f) { return sysenv_fputs(f, "a\r\n"); }, "a\r\r\n"},
    {"fputs, empty", [](sysfile_t *f) { return sysenv_fputs(f, ""); }, ""},
    {"fputs, null", [](sysfile_t *f) { return sysenv_fputs(f, nullptr); }, ""},
    {"fwritetext", [](sysfile_t *f) { return sysenv_fwritetext(f, 4, "\na\0\nb"); }, std::string("\r\na\0\r\n", 6)},
    {"fwritetext, none", [](sysfile_t *f) { return sysenv_fwritetext(f, 0, "a"); }, ""},
    {"fwritetext, null", [](sysfile_t *f) { return sysenv_fwritetext(f, 4, nullptr); }, ""},
    {"fputsres", [](sysfile_t *f) { return chained([f](int32_t *res) { sysenv_fputsres(f, "\na", res); }); }, "\r\na"},
    {"fputsres, null", [](sysfile_t *f) { return chained([f](int32_t *res) { sysenv_fputsres(f, nullptr, res); }); },
     ""},
    {"fputsraw", [](sysfile_t *f) { return chained([f](int32_t *res) { sysenv_fputsraw(f, "a\n", res); }); }, "a\n"},
    {"fnewline", [](sysfile_t *f) { return chained([f](int32_t *res) { sysenv_fnewline(f, res); }); }, "\r\n"},
    {"fformat", [](sysfile_t *f) { return sysenv_fformat(f, "%d\n%Iu", -1, size_t{2}); }, "-1\r\n2"},
    {"fformat, empty", [](sysfile_t *f) { return sysenv_fformat(f, "%s", ""); }, ""},
    {"vfformat", [](sysfile_t *f) { return format(f, "%s\n", "a"); }, "a\r\n"},
    {"fformat, whole", [](sysfile_t *f) { return format(f, "%s", std::string(2047, 'x').c_str()); },
     std::string(2047, 'x')},
    {"fformat, cut", [](sysfile_t *f) { return format(f, "%s", std::string(2048, 'x').c_str()); },
     std::string(2047, 'x')},
    {"fformat, cut more", [](sysfile_t *f) { return format(f, "%5000d", 1); }, std::string(2047, ' ')},
    {"fwrite", [](sysfile_t *f) { return chained([f](int32_t *res) { sysenv_fwrite(f, "a\nbc", 2, 2, res); }); },
     "a\nbc"},
    {"fwrite, none", [](sysfile_t *f) { return chained([f](int32_t *res) { sysenv_fwrite(f, nullptr, 2, 0, res); }); },
     ""},
    {"fwritestring", [](sysfile_t *f) { return chained([f](int32_t *res) { sysenv_fwritestring(f, 2, "a\n", res); }); },
     std::string("\2\0\0\0\0\0\0\0a\n", 10)},
    {"fwritestring, empty",
     [](sysfile_t *f) { return chained([f](int32_t *res) { sysenv_fwritestring(f, 0, nullptr, res); }); },
     std::string(8, '\0')},
};

/* Each entry in an empty buffer and at each place near its edge, and straight to the file. */
TEST_F(sysfile, entries)
{
    const std::string before = pattern(BUFFER);
    for (const int32_t kind : KINDS)
        for (const auto &item : CASES)
            for (uint64_t room = 0; room <= 5; ++room) {
                SCOPED_TRACE(std::string(item.name) + " with room " + std::to_string(room));
                const uint64_t length = room == 5 ? 0 : BUFFER - room;
                sysfile_t *file = open(folder.file("f"), "w", kind);
                std::memcpy(file->state->buffer, before.data(), length); /* as if written, but quicker */
                file->state->used = length;
                EXPECT_EQ(item.write(file), SYSFILE_OK);
                const uint64_t total = length + item.text.size();
                EXPECT_EQ(file->state->used, total <= BUFFER ? total : total - BUFFER);
                EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
                EXPECT_TRUE(stored(folder.file("f")) == before.substr(0, length) + item.text);
            }
    for (const auto &item : CASES) {
        sysfile_t *file = open(folder.file("f"), "rw", SYSFILE_PLAIN);
        EXPECT_EQ(item.write(file), SYSFILE_OK);
        EXPECT_EQ(stored(folder.file("f")), item.text) << item.name; /* there before the stream is closed */
        EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
        file = open(folder.file("f"), "r", SYSFILE_PLAIN);
        EXPECT_EQ(item.write(file), item.text.empty() ? SYSFILE_OK : SYSFILE_WRITE) << item.name;
        EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
    }
}

/* Blocks around the size of the buffer, behind a beginning: what stays in it, and what the file has already. */
TEST_F(sysfile, blocks)
{
    const struct {
        uint64_t first, block, used;
    } cases[] = {
        {0, BUFFER - 1, BUFFER - 1},  {0, BUFFER, BUFFER}, {0, BUFFER + 1, 1},
        {1, BUFFER - 1, BUFFER},      {1, BUFFER, 1},      {BUFFER, 1, 1},
        {BUFFER, 2 * BUFFER, BUFFER}, {BUFFER, 0, BUFFER}, {7, 3 * BUFFER, 7},
        {0, 3 * BUFFER + 5, 5},
    };
    for (const int32_t kind : KINDS)
        for (const auto &item : cases) {
            SCOPED_TRACE(std::to_string(item.first) + " and " + std::to_string(item.block));
            const std::string text = pattern(item.first + item.block);
            sysfile_t *file = open(folder.file("f"), "w", kind);
            int32_t res = 0;
            sysenv_fwrite(file, text.data(), 1, item.first, &res);
            sysenv_fwrite(file, text.data() + item.first, item.block, 1, &res);
            EXPECT_EQ(res, SYSFILE_OK);
            EXPECT_EQ(file->state->used, item.used);
            EXPECT_EQ(file->state->pos, 0U);
            if (kind == SYSFILE_PLAIN) {
                EXPECT_EQ(std::filesystem::file_size(folder.file("f")), text.size() - item.used);
            }
            EXPECT_EQ(sysenv_fflush(file), SYSFILE_OK);
            EXPECT_EQ(file->state->used, 0U);
            EXPECT_EQ(sysenv_fputc(file, 'z'), SYSFILE_OK);
            EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
            EXPECT_TRUE(stored(folder.file("f")) == text + "z");
        }
}

/* A gzip stream for both directions writes the beginning of its buffer, never more than that holds. */
TEST_F(sysfile, gzip_in_both_directions)
{
    const std::string text = pattern(BUFFER);
    sysfile_t *file = open(folder.file("f"), "rw", SYSFILE_GZIP);
    std::memcpy(file->state->buffer, text.data(), BUFFER);
    EXPECT_EQ(sysenv_fputs(file, "abc\n"), SYSFILE_OK);
    int32_t res = 0;
    sysenv_fwrite(file, text.data(), BUFFER, 2, &res);
    EXPECT_EQ(res, SYSFILE_WRITE);
    EXPECT_EQ(sysenv_ffinish(file), SYSFILE_OK);
    EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
    EXPECT_TRUE(stored(folder.file("f")) == text.substr(0, 3) + text[0] + text[0] + text);
}

/* A disk that takes no more, played by a descriptor that is exchanged for one that cannot be written. */
TEST_F(sysfile, writes_that_fail)
{
    EXPECT_TRUE(file_write(folder.file("bad"), ""));
    for (const int32_t kind : KINDS) {
        sysfile_t *file = open(folder.file("f"), "w", kind);
        EXPECT_EQ(sysenv_fputs(file, "abc"), SYSFILE_OK);
        EXPECT_EQ(sysenv_ferror(file), SYSFILE_OK);
        const bool is_gzip = kind == SYSFILE_GZIP;
        const int bad = ::open(folder.file("bad").c_str(), O_RDONLY);
        EXPECT_GE(dup2(bad, is_gzip ? reinterpret_cast<const sysfile_record *>(file->state)->descriptor
                                    : fileno(file->state->fp)),
                  0);
        close(bad);
        EXPECT_EQ(sysenv_fflush(file), is_gzip ? SYSFILE_OK : SYSFILE_WRITE); /* zlib has it */
        EXPECT_EQ(file->state->used, is_gzip ? 0U : 3U);
        EXPECT_EQ(sysenv_ffinish(file), SYSFILE_WRITE);
        EXPECT_EQ(sysenv_ferror(file), SYSFILE_WRITE);
        EXPECT_EQ(sysenv_fputc(file, 'd'), SYSFILE_OK);
        EXPECT_EQ(sysenv_fclose(&file), SYSFILE_WRITE);
        EXPECT_EQ(file, nullptr);
    }
}

/* A stream with neither flag uses one buffer for both directions. What comes of a mixture is of no use, but stays
 * within the buffer. So does a stream of gzip for appending that is read from. */
TEST_F(sysfile, one_buffer_for_both)
{
    sysfile_t *file = open_text(pattern(BUFFER + 100), "", SYSFILE_PLAIN);
    std::string got(2 * BUFFER, ' ');
    int32_t res = 0;
    sysenv_fread(file, got.data(), 10, 1, &res);
    EXPECT_EQ(got.substr(0, 10), pattern(10));
    EXPECT_EQ(sysenv_fflush(file), SYSFILE_OK);
    EXPECT_EQ(sysenv_freadcount(file, got.data(), 2 * BUFFER, &res), BUFFER - 10);
    EXPECT_EQ(res, SYSFILE_EOF);
    EXPECT_EQ(sysenv_fputs(file, "abc"), SYSFILE_OK);
    EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);

    file = open(folder.file("a"), "a", SYSFILE_GZIP);
    res = 0;
    EXPECT_EQ(sysenv_freadcount(file, got.data(), 2 * BUFFER, &res), BUFFER);
    EXPECT_EQ(res, SYSFILE_EOF);
    EXPECT_EQ(file->state->used, UINT64_MAX);
    EXPECT_EQ(sysenv_fputs(file, "abc\n"), SYSFILE_WRITE);
    EXPECT_EQ(sysenv_fputc(file, '\n'), SYSFILE_OK);
    EXPECT_EQ(sysenv_fclose(&file), SYSFILE_WRITE);
}

TEST_F(sysfile, finish)
{
    EXPECT_EQ(sysenv_ffinish(nullptr), SYSFILE_OK);
    EXPECT_EQ(sysenv_fflush(nullptr), SYSFILE_OK);
    EXPECT_EQ(sysenv_ferror(nullptr), SYSFILE_OK);
    for (const int32_t kind : KINDS) {
        for (const char *text : {"", "abc"}) {
            sysfile_t *file = open(folder.file("f"), "w", kind);
            EXPECT_EQ(sysenv_fputs(file, text), SYSFILE_OK);
            EXPECT_EQ(sysenv_ffinish(file), SYSFILE_OK);
            EXPECT_EQ(stored(folder.file("f")), text); /* complete before the close */
            const uintmax_t size = std::filesystem::file_size(folder.file("f"));
            EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
            EXPECT_EQ(std::filesystem::file_size(folder.file("f")), size);
            file = open(folder.file("f"), "r", kind);
            EXPECT_EQ(sysenv_ffinish(file), SYSFILE_OK);
            EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
        }
        sysfile_t *file = open(NULL_DEVICE, "w", kind); /* no disk beneath */
        EXPECT_EQ(sysenv_ffinish(file), SYSFILE_OK);
        EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
    }
}

/* Internal faults are fatal. */
TEST_F(sysfile, lost_file)
{
    for (const int32_t kind : KINDS) {
        sysfile_t *file = open(folder.file("f"), "rw", kind);
        EXPECT_ASSERTION({
            file->state->fp = nullptr;
            file->state->gz = nullptr;
            (void)sysenv_fputc(file, 'a');
        });
        EXPECT_EQ(sysenv_fclose(&file), SYSFILE_OK);
    }
}
