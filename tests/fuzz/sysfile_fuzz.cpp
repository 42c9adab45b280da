/* sysfile_fuzz.cpp - fuzz target of the file layer: the bytes are calls on one file, each compared with a model that goes
 * byte by byte.
 *
 * The first byte picks the kind and the way: a file that is written and then read, or a plain stream for both
 * directions. Every call is a byte that picks it and the bytes that it takes. */
#include "cpub/sysfile.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <unistd.h>
#include <vector>

static const uint64_t BUFFER = SYSFILE_BUFFER_BYTES;
static const uint64_t LIMIT = 5 * BUFFER; /* of a file: inputs must stay quick */

static void require(bool holds)
{
    if (!holds) std::abort();
}

/* ---- The input ---- */

struct input {
    const uint8_t *data;
    size_t size, at;
};

static uint8_t next(input *in) { return in->at < in->size ? in->data[in->at++] : 0; }

/* Small, or about the size of the buffer, or a multiple of it. */
static uint64_t next_length(input *in)
{
    const uint64_t value = next(in);
    if (value < 192) return value;
    if (value < 240) return BUFFER + value - 216;
    return BUFFER * (value - 239) / 4;
}

/* Bytes with many line ends. A text has no zero byte. */
static std::string next_bytes(input *in, bool is_text)
{
    std::string bytes(next_length(in), ' ');
    unsigned seed = next(in);
    for (char &c : bytes) {
        seed = seed * 1103515245U + 12345U;
        c = "\n\r\n\r\0abcdefghij"[(seed >> 16) % 15];
        if (is_text && c == 0) c = 'z';
    }
    return bytes;
}

static std::string with_line_ends(const std::string &text)
{
    std::string out;
    for (const char c : text) out += c == '\n' ? std::string("\r\n") : std::string(1, c);
    return out;
}

/* ---- Output ---- */

struct output_model {
    std::string file, waiting;
    uint64_t at; /* the place in the file */
};

static void model_write_out(output_model *model, uint64_t n)
{
    model->file.replace(model->at, n, model->waiting, 0, n);
    model->at += n;
    model->waiting.erase(0, n);
}

static void model_store(output_model *model, const std::string &bytes)
{
    model->waiting += bytes;
    while (model->waiting.size() > BUFFER) model_write_out(model, BUFFER);
}

/* One writing call; what it must have written is the result. */
static std::string write_one(sysfile_t *file, input *in, uint8_t call, int32_t *res)
{
    std::string text = next_bytes(in, call < 4);
    switch (call) {
    case 0: *res = sysenv_fputs(file, text.c_str()); return with_line_ends(text);
    case 1: sysenv_fputsraw(file, text.c_str(), res); return text;
    case 2: *res = sysenv_fformat(file, "%s", text.c_str()); return with_line_ends(text.substr(0, 2047));
    case 3: sysenv_fputsres(file, text.c_str(), res); return with_line_ends(text);
    case 4: *res = sysenv_fwritetext(file, text.size(), text.data()); return with_line_ends(text);
    case 5: sysenv_fwrite(file, text.data(), 1, text.size(), res); return text;
    case 6: {
        const uint64_t length = text.size();
        sysenv_fwritestring(file, length, text.data(), res);
        return std::string(reinterpret_cast<const char *>(&length), sizeof length) + text;
    }
    case 7: sysenv_fnewline(file, res); return "\r\n";
    default:
        *res = sysenv_fputc(file, static_cast<char>(text.size()));
        return with_line_ends({static_cast<char>(text.size())});
    }
}

static void run_output(sysfile_t *file, input *in, output_model *model, int32_t kind)
{
    while (in->at < in->size && model->file.size() + model->waiting.size() < LIMIT) {
        const uint8_t call = next(in) % 12;
        int32_t res = 0;
        if (call < 9) {
            model_store(model, write_one(file, in, call, &res));
            require(res == SYSFILE_OK);
        } else if (call == 9) {
            require(sysenv_fflush(file) == SYSFILE_OK);
            model_write_out(model, model->waiting.size());
        } else if (call == 10) {
            require(sysenv_frewind(file) == (kind == SYSFILE_GZIP ? SYSFILE_REWIND : SYSFILE_OK));
            model->waiting.clear();
            if (kind != SYSFILE_GZIP) model->at = 0;
        } else {
            return;
        }
        require(file->state->used == model->waiting.size() && file->state->pos == 0);
    }
}

/* ---- Input ---- */

struct input_model {
    std::string file;
    uint64_t at; /* behind the last refill */
    uint64_t used, pos;
};

/* The next byte, or -1. */
static int model_byte(input_model *model)
{
    if (model->pos == model->used) {
        model->used = std::min(BUFFER, model->file.size() - model->at);
        model->pos = 0;
        model->at += model->used;
        if (model->used == 0) return -1;
    }
    return static_cast<uint8_t>(model->file[model->at - model->used + model->pos++]);
}

static std::string model_take(input_model *model, uint64_t n, int32_t *res)
{
    std::string bytes;
    while (bytes.size() < n && *res == 0) {
        const int c = model_byte(model);
        if (c >= 0)
            bytes += static_cast<char>(c);
        else
            *res = SYSFILE_EOF;
    }
    return bytes;
}

static std::string model_line(input_model *model, uint64_t capacity, int32_t *res)
{
    std::string line;
    if (model->pos + capacity < model->used) {
        const uint64_t begin = model->at - model->used;
        while (line.size() + 1 < capacity && model->file[begin + model->pos] != '\n')
            line += model->file[begin + model->pos++];
        if (model->file[begin + model->pos] == '\n') ++model->pos;
    } else {
        while (line.size() + 1 < capacity) {
            const int c = model_byte(model);
            if (c < 0 && line.empty()) *res = SYSFILE_EOF;
            if (c < 0 || c == '\n') break;
            line += static_cast<char>(c);
        }
    }
    while (!line.empty() && line.back() == '\r') line.pop_back();
    return line;
}

static void read_line(sysfile_t *file, input_model *model, uint64_t capacity, bool with_end)
{
    std::vector<char> room(capacity, '#'); /* exact: a byte too many is a sanitizer's report */
    int32_t res = 0;
    int32_t expected_res = 0;
    uint64_t length = 0;
    if (with_end)
        sysenv_fgets(file, capacity, room.data(), &res);
    else
        sysenv_fgetslen(file, capacity, &length, room.data(), &res);
    std::string expected = model_line(model, capacity, &expected_res);
    require(with_end || length == expected.size());
    if (with_end && expected_res == 0 && expected.size() + 1 < capacity) expected += '\n';
    require(res == expected_res && room[expected.size()] == 0);
    require(std::memcmp(room.data(), expected.data(), expected.size()) == 0);
}

static void read_string(sysfile_t *file, input_model *model, uint64_t *capacity, char **text)
{
    int32_t res = 0;
    int32_t expected_res = 0;
    uint64_t length = 0;
    const std::string bytes = model_take(model, sizeof length, &expected_res);
    std::memcpy(&length, bytes.data(), bytes.size());
    if (expected_res == 0 && length > LIMIT && length < UINT64_MAX / 4) { /* memory for it may be there, or not */
        model->pos = model->used = 0;
        model->at = 0;
        require(sysenv_frewind(file) == SYSFILE_OK);
        return;
    }
    sysenv_freadstring(file, capacity, text, &res);
    if (expected_res == 0 && length > LIMIT) {
        require(res == SYSFILE_NOMEM && *text == nullptr && *capacity == 0);
        return;
    }
    std::string expected;
    if (expected_res == 0) expected = model_take(model, length, &expected_res);
    require(res == expected_res);
    if (bytes.size() < sizeof length) return;
    require(*capacity > length && (*text)[length] == 0);
    require(std::memcmp(*text, expected.data(), expected.size()) == 0);
}

static void read_bytes(sysfile_t *file, input_model *model, uint64_t n, bool counted)
{
    std::vector<char> room(n + 1);
    int32_t res = 0;
    int32_t expected_res = 0;
    uint64_t num = 0;
    if (counted)
        num = sysenv_freadcount(file, room.data(), n, &res);
    else
        sysenv_fread(file, room.data(), n, 1, &res);
    const std::string expected = model_take(model, n, &expected_res);
    require(res == expected_res && (!counted || num == expected.size()));
    require(std::memcmp(room.data(), expected.data(), expected.size()) == 0);
}

static void run_input(sysfile_t *file, input *in, input_model *model)
{
    char *text = nullptr;
    uint64_t capacity = 0;
    while (in->at < in->size) {
        const uint8_t call = next(in) % 6;
        if (call < 2)
            read_bytes(file, model, next_length(in), call == 0);
        else if (call < 4)
            read_line(file, model, next_length(in) + 1, call == 2);
        else if (call == 4)
            read_string(file, model, &capacity, &text);
        else {
            require(sysenv_frewind(file) == SYSFILE_OK);
            *model = {model->file, 0, 0, 0};
        }
        require(file->state->used == model->used && file->state->pos == model->pos);
    }
    require(sysenv_frewind(file) == SYSFILE_OK);
    *model = {model->file, 0, 0, 0};
    read_bytes(file, model, model->file.size() + 1, true);
    require(sysenv_ferror(file) == SYSFILE_OK);
    sysenv_freedbg(file->sys, __FILE__, __LINE__, text);
}

/* ---- Both directions, unbuffered ---- */

static void run_update(sysfile_t *file, input *in)
{
    std::string model;
    uint64_t at = 0;
    while (in->at < in->size && model.size() < LIMIT) {
        const uint8_t call = next(in) % 11;
        int32_t res = 0;
        if (call < 9) {
            const std::string bytes = write_one(file, in, call, &res);
            model.replace(at, bytes.size(), bytes);
            at += bytes.size();
            require(res == SYSFILE_OK);
        } else if (call == 9) {
            const uint64_t n = next_length(in);
            std::vector<char> room(n + 1);
            sysenv_fread(file, room.data(), 1, n, &res);
            const uint64_t num = std::min(n, model.size() - at);
            require(res == (num == n ? SYSFILE_OK : SYSFILE_READ));
            require(std::memcmp(room.data(), model.data() + at, num) == 0);
            at += num;
        } else {
            require(sysenv_frewind(file) == SYSFILE_OK);
            at = 0;
        }
        require(file->state->used == 0 && file->state->pos == 0);
    }
}

/* ---- Runs ---- */

static sysfile_t *open_file(sysenv *sys, const std::string &path, bool read, bool write, int32_t kind)
{
    sysfile_t *file = nullptr;
    int32_t res = 0;
    sysenv_fopen(sys, path.c_str(), 0, read, write, 0, kind, 1, &file, &res);
    require(res == SYSFILE_OK);
    return file;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static sysenv *const sys = sysenv_create(__FILE__, __LINE__, 1, nullptr);
    const std::string path =
        (std::filesystem::temp_directory_path() / ("sysfile_fuzz." + std::to_string(getpid()))).string();
    input in = {data, size, 0};
    const uint8_t way = next(&in) % 3;
    const int32_t kind = way == 1 ? SYSFILE_GZIP : SYSFILE_PLAIN;
    sysfile_t *file = open_file(sys, path, way == 2, true, kind);
    output_model out = {"", "", 0};
    if (way == 2)
        run_update(file, &in);
    else
        run_output(file, &in, &out, kind);
    require(sysenv_fclose(&file) == SYSFILE_OK);
    if (way != 2) {
        model_write_out(&out, out.waiting.size());
        file = open_file(sys, path, true, false, kind);
        input_model model = {out.file, 0, 0, 0};
        run_input(file, &in, &model);
        require(sysenv_fclose(&file) == SYSFILE_OK);
    }
    std::filesystem::remove(path);
    require(sys->memman->curusage == 0);
    return 0;
}
