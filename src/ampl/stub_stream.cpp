/* stub_stream.cpp - see stub_stream.h. */
#include "ampl/stub_stream.h"

#include <algorithm>
#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

/* A file without a piece of it. It lives as long as its stream. */
struct cut_file {
    std::FILE *file;
    int64_t at;         /* where to read on */
    int64_t begin, end; /* of the piece */
};

static ssize_t read_cut(void *cookie, char *bytes, size_t size)
{
    auto *cut = static_cast<cut_file *>(cookie);
    if (cut->at == cut->begin) cut->at = cut->end;
    if (cut->at < cut->begin) size = std::min(size, static_cast<size_t>(cut->begin - cut->at));
    const ssize_t got = pread(fileno(cut->file), bytes, size, cut->at);
    if (got > 0) cut->at += got;
    return got;
}

static int close_cut(void *cookie)
{
    auto *cut = static_cast<cut_file *>(cookie);
    const int code = std::fclose(cut->file);
    std::free(cut);
    return code;
}

static std::FILE *open_cut(std::FILE *file, int64_t at, const stub_matrix *known)
{
    auto *cut = static_cast<cut_file *>(std::malloc(sizeof(cut_file)));
    if (cut == nullptr) return nullptr;
    *cut = {file, at, known->begin, known->end};
    std::FILE *stream = fopencookie(cut, "rb", {read_cut, nullptr, nullptr, close_cut});
    if (stream == nullptr) std::free(cut);
    return stream;
}

/* Each letter costs more through a stream of our own than through a file's: only what is a good part of the file is worth it. */
static bool is_worth_a_cut(std::FILE *file, const stub_matrix *known)
{
    constexpr int64_t least_share = 32;
    struct stat about = {};
    return known != nullptr && known->value != nullptr && fstat(fileno(file), &about) == 0 &&
           (known->end - known->begin) * least_share >= about.st_size;
}

std::FILE *stub_stream_open(const char *path, int64_t begin, const stub_matrix *known)
{
    std::FILE *file = std::fopen(path, "rb");
    if (file == nullptr) return nullptr;
    std::FILE *stream = nullptr;
    if (is_worth_a_cut(file, known))
        stream = open_cut(file, begin, known);
    else if (std::fseek(file, static_cast<long>(begin), SEEK_SET) == 0)
        stream = file;
    if (stream == nullptr) (void)std::fclose(file);
    return stream;
}
