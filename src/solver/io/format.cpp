/* format.cpp - see io.h: the table of formats, the choice of one, and the messages of readers and writers. */
#include "solver/io/adjust.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <new>
#include <stdexcept>

/* clang-format off */
const file_format format_table[] = {
    { "MPS", "mps qps", mps_read, mps_write, true,  false },
    { "LP",  "lp",      lp_read,  lp_write,  true,  false },
    { "CBF", "cbf",     cbf_read, cbf_write, false, true  },
};
/* clang-format on */
const int32_t format_count = static_cast<int32_t>(std::size(format_table));

namespace
{
enum { format_mps = 0, format_lp = 1, format_cbf = 2 };

constexpr size_t head_bytes = size_t{16} * 1024; /* enough to get over the comments that most files begin with */
constexpr size_t quote_max = 60;

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool equal_words(std::string_view a, std::string_view b)
{
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) { return lower(x) == lower(y); });
}

bool is_one_of(std::string_view word, std::string_view words)
{
    while (!words.empty()) {
        const size_t end = std::min(words.find(' '), words.size());
        if (equal_words(word, words.substr(0, end))) return true;
        words.remove_prefix(std::min(end + 1, words.size()));
    }
    return false;
}

/* Takes the extension off a name: what stands behind the last point of its last part. */
std::string_view take_extension(std::string_view *name)
{
    const size_t point = name->find_last_of("./\\");
    if (point == std::string_view::npos || (*name)[point] != '.') return {};
    const std::string_view extension = name->substr(point + 1);
    *name = name->substr(0, point);
    return extension;
}

/* The first line that says something: neither blank nor a comment of any format. */
std::string_view first_line(std::string_view head, char *comment)
{
    *comment = '\0';
    while (!head.empty()) {
        const size_t end = std::min(head.find('\n'), head.size());
        std::string_view line = head.substr(0, end);
        head.remove_prefix(std::min(end + 1, head.size()));
        const size_t text = line.find_first_not_of(" \t\r");
        if (text == std::string_view::npos) continue;
        if (line[text] != '*' && line[text] != '\\' && line[text] != '#') return line;
        *comment = line[text];
    }
    return {};
}

void io_tell(const io_context *io, int32_t stream, int64_t line, const char *kind, const char *format, va_list args)
{
    const std::string where = line > 0 ? "(" + std::to_string(line) + ")" : "";
    const std::string text = text_vformat(format, args);
    streams_printf(io->out, stream, "%s%s: %s%s.\n", io->file, where.c_str(), kind, text.c_str());
}
}  // namespace

size_t utf8_size(std::string_view text)
{
    const auto first = static_cast<unsigned char>(text[0]);
    const size_t size = first < 0x80   ? 1
                        : first < 0xc2 ? 0
                        : first < 0xe0 ? 2
                        : first < 0xf0 ? 3
                        : first < 0xf5 ? 4
                                       : 0;
    if (size > text.size()) return 0;
    for (size_t i = 1; i < size; ++i)
        if ((static_cast<unsigned char>(text[i]) & 0xc0U) != 0x80U) return 0;
    if (size < 3) return size;
    const auto second = static_cast<unsigned char>(text[1]);
    const bool is_overlong = (first == 0xe0 && second < 0xa0) || (first == 0xf0 && second < 0x90);
    const bool is_no_character = (first == 0xed && second >= 0xa0) || (first == 0xf4 && second >= 0x90);
    return is_overlong || is_no_character ? 0 : size;
}

int32_t format_by_name(const char *filename)
{
    std::string_view name = filename;
    std::string_view extension = take_extension(&name);
    if (equal_words(extension, "gz")) extension = take_extension(&name);
    for (int32_t i = 0; i < format_count; ++i)
        if (!extension.empty() && is_one_of(extension, format_table[i].extensions)) return i;
    return -1;
}

int32_t format_by_content(std::string_view head)
{
    static const char mps_words[] = "NAME ROWS OBJSENSE OBJSENSEMAX OBJNAME";
    static const char lp_words[] = "min max minimize maximize minimise maximise minimum maximum subject st s.t. such";

    if (head.size() >= 3 && head.substr(0, 3) == "\xef\xbb\xbf") head.remove_prefix(3);
    char comment = '\0';
    const std::string_view line = first_line(head, &comment);
    const size_t begin = std::min(line.find_first_not_of(" \t\r"), line.size());
    const size_t end = std::min(line.find_first_of(" \t\r:", begin), line.size());
    const std::string_view word = line.substr(begin, end - begin);

    if (begin == 0 && is_one_of(word, mps_words)) return format_mps;
    if (is_one_of(word, lp_words)) return format_lp;
    if (word == "VER") return format_cbf;
    if (comment == '*') return format_mps;
    if (comment == '#') return format_cbf;
    return comment == '\\' ? format_lp : -1;
}

int32_t io_error(const io_context *io, int32_t code, int64_t line, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    io_tell(io, ZLR_STREAM_ERR, line, "", format, args);
    va_end(args);
    return code;
}

void io_warning(const io_context *io, int64_t line, const char *format, ...)
{
    io_tally *tally = io->warnings;
    if (tally != nullptr && tally->num++ >= tally->most && tally->most >= 0) return;
    va_list args;
    va_start(args, format);
    io_tell(io, ZLR_STREAM_WRN, line, "warning: ", format, args);
    va_end(args);
}

sink_options io_sink_options_replacing(const io_context *io)
{
    sink_options options;
    if (io->params == nullptr) return options;
    options.sync = param_int(io->params, IPAR_WRITE_SYNC) != 0;
    options.gzip_level = param_int(io->params, IPAR_WRITE_GZIP_LEVEL);
    return options;
}

sink_options io_sink_options(const io_context *io)
{
    sink_options options = io_sink_options_replacing(io);
    options.may_replace = io->params == nullptr || param_int(io->params, IPAR_WRITE_EXISTING) == EXISTING_REPLACE;
    return options;
}

std::string io_quote(std::string_view text)
{
    std::string out;
    while (!text.empty()) {
        const size_t size = utf8_size(text);
        if (out.size() + size > quote_max) return out + "...";
        const auto first = static_cast<unsigned char>(text[0]);
        if (size == 0 || first < 0x20 || first == 0x7f)
            out += '?';
        else
            out += text.substr(0, size);
        text.remove_prefix(std::max<size_t>(size, 1));
    }
    return out;
}

namespace
{
/* Looks at the beginning of a source and puts it back. */
int32_t format_of_source(const io_context *io, byte_source *in, int32_t *format)
{
    std::string head(head_bytes, '\0');
    size_t size = 0;
    for (;;) {
        size_t got = 0;
        const int32_t res = source_read(in, head.data() + size, head.size() - size, &got);
        if (res == ZLR_RES_ERR_FILE_READ) return io_error(io, res, 0, "reading fails: %s", source_error(in));
        if (res != ZLR_RES_OK) return res;
        size += got;
        if (got == 0 || size == head.size()) break;
    }
    head.resize(size);
    source_unread(in, head.data(), head.size());
    *format = format_by_content(head);
    if (*format >= 0) return ZLR_RES_OK;
    if (head.empty()) return io_error(io, ZLR_RES_ERR_FILE_FORMAT, 0, "the file is empty");
    return io_error(io, ZLR_RES_ERR_FILE_FORMAT, 0,
                    "neither the name nor the content tells the format; known extensions are .mps, .qps, .lp and .cbf");
}

/* The format that READ_FORMAT names; -1 where it leaves the choice. */
int32_t format_asked_for(const io_context *io)
{
    switch (param_int(io->params, IPAR_READ_FORMAT)) {
    case READ_FORMAT_MPS: return format_mps;
    case READ_FORMAT_LP: return format_lp;
    case READ_FORMAT_CBF: return format_cbf;
    case READ_FORMAT_CONTENT: return -1;
    default: return format_by_name(io->file);
    }
}

int32_t read_source(const io_context *io, byte_source *in, model *m, int32_t *format)
{
    *format = format_asked_for(io);
    int32_t res = *format >= 0 ? ZLR_RES_OK : format_of_source(io, in, format);
    if (res == ZLR_RES_OK) res = format_table[*format].read(io, in, m);
    if (res == ZLR_RES_OK) res = adjust_read(io, m);
    return res;
}

/* What READ_MAX_WARNINGS has kept back, and whether there may be any. */
int32_t judge_warnings(const io_context *io, int32_t res)
{
    const io_tally *tally = io->warnings;
    if (tally->most >= 0 && tally->num > tally->most)
        streams_printf(io->out, ZLR_STREAM_WRN, "%s: warning: %lld more warnings are not told (READ_MAX_WARNINGS).\n",
                       io->file, static_cast<long long>(tally->num - tally->most));
    if (res != ZLR_RES_OK || tally->num == 0 || param_int(io->params, IPAR_READ_WARNINGS_AS_ERRORS) == 0) return res;
    return io_error(io, ZLR_RES_ERR_FILE_FORMAT, 0, "there is cause for %lld %s, and READ_WARNINGS_AS_ERRORS is on",
                    static_cast<long long>(tally->num), tally->num == 1 ? "warning" : "warnings");
}
}  // namespace

int32_t problem_read(const io_context *given, model *m, int32_t *format)
{
    io_tally tally;
    io_context counted = *given;
    const io_context *io = &counted;
    tally.most = param_int(given->params, IPAR_READ_MAX_WARNINGS);
    counted.warnings = &tally;
    byte_source *in = nullptr;
    int32_t res = ZLR_RES_OK;
    *format = -1;
    try {
        res = source_open(io->sys, &in, io->file);
        if (res != ZLR_RES_OK) return io_error(io, res, 0, "the file cannot be opened: %s", std::strerror(errno));
        res = judge_warnings(io, read_source(io, in, m, format));
    } catch (const std::bad_alloc &) {
        res = ZLR_RES_ERR_SPACE;
    } catch (const std::length_error &) {
        res = ZLR_RES_ERR_SPACE;
    }
    source_close(&in);
    return res;
}

namespace
{
bool has_quadratic(const model *m) { return !m->qobj.empty() || !m->qcon.empty(); }

bool format_holds(const file_format *format, const model *m)
{
    return (format->holds_quadratic || !has_quadratic(m)) && (format->holds_cones || m->cones.empty());
}

/* The wished format where the name asks for none, or the first that can hold the problem. */
int32_t format_that_holds(const model *m, int32_t wished)
{
    for (int32_t i = 0; i < format_count && !format_holds(&format_table[wished], m); ++i)
        if (format_holds(&format_table[i], m)) return i;
    return wished;
}

/* "MPS (.mps), LP (.lp)": the formats that can hold a problem. */
std::string formats_that_hold(const model *m)
{
    std::string text;
    for (const file_format &format : format_table) {
        if (!format_holds(&format, m)) continue;
        const std::string_view extensions = format.extensions;
        text += text.empty() ? "" : ", ";
        text += std::string(format.name) + " (." + std::string(extensions.substr(0, extensions.find(' '))) + ")";
    }
    return text;
}

int32_t refuse_write(const io_context *io, const file_format *format, const model *m)
{
    const bool lacks_cones = !m->cones.empty() && !format->holds_cones;
    const char *what = lacks_cones ? "cones" : "quadratic terms";
    const std::string others = formats_that_hold(m);
    /* Only a conic format lacks quadratic terms, and only the conic form of the problem has none. */
    if (others.empty())
        return io_error(
            io, ZLR_RES_ERR_WRITE_FORMAT, 0,
            "the format %s cannot hold %s, and no format holds cones beside quadratic terms; the conic form of "
            "the problem (-toconic) can be written as CBF (.cbf)",
            format->name, what);
    return io_error(io, ZLR_RES_ERR_WRITE_FORMAT, 0, "the format %s cannot hold %s; formats that can: %s%s",
                    format->name, what, others.c_str(),
                    lacks_cones ? "" : "; or the conic form of the problem is written (-toconic)");
}
}  // namespace

int32_t problem_write(const io_context *io, const model *given, int32_t *format)
{
    model changed;
    if (given->functions != nullptr)
        return io_error(io, ZLR_RES_ERR_WRITE_FORMAT, 0,
                        "the problem has general nonlinear functions, which no format holds; the stub (.nl) that it "
                        "was read from does");
    const model *m = adjust_to_write(io, given, &changed);
    const int32_t by_name = format_by_name(io->file);
    if (by_name >= 0) *format = by_name;
    if (*format < 0 || *format >= format_count) *format = format_lp;
    if (by_name < 0) *format = format_that_holds(m, *format);
    if (!format_holds(&format_table[*format], m)) return refuse_write(io, &format_table[*format], m);

    byte_sink *out = nullptr;
    int32_t res = ZLR_RES_OK;
    try {
        res = sink_open(io->sys, &out, io->file, io_sink_options(io));
        if (res != ZLR_RES_OK)
            return io_error(io, res, 0, "the file cannot be opened for writing: %s", std::strerror(errno));
        res = format_table[*format].write(io, out, m);
    } catch (const std::bad_alloc &) {
        res = ZLR_RES_ERR_SPACE;
    }
    const int32_t closed = sink_close(&out, res == ZLR_RES_OK);
    if (closed == ZLR_RES_ERR_FILE_WRITE && (res == ZLR_RES_OK || res == closed))
        return io_error(io, closed, 0, "the file cannot be written: %s", std::strerror(errno));
    return res;
}
