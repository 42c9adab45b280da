/* param_file.cpp - parameter files.
 *
 *   NAME value      NAME = value      # a comment, also behind a value
 *
 * A value ends at a comment or at the end of the line; blanks around it do not count. In double quotes blanks, # and =
 * are ordinary, and a doubled quote stands for one. No backslash escapes: Windows paths are written as they are. */
#include "solver/io/io.h"
#include "solver/io/line_reader.h"
#include "solver/io/source_holder.h"
#include "solver/params/params.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

static constexpr const char *blanks = " \t";

struct assignment {
    std::string name, value;
    bool empty = false; /* nothing on the line but blanks and comments */
};

static std::string_view skip_blanks(std::string_view text)
{
    return text.substr(std::min(text.find_first_not_of(blanks), text.size()));
}

/* The value in quotes at the front of `rest`; false if the closing quote is missing. */
static bool take_quoted(std::string_view *rest, std::string *value)
{
    size_t i = 1;
    for (; i < rest->size(); i++) {
        if ((*rest)[i] == '"') {
            const bool doubled = i + 1 < rest->size() && (*rest)[i + 1] == '"';
            if (!doubled) break;
            i++;
        }
        *value += (*rest)[i];
    }
    if (i >= rest->size()) return false;
    rest->remove_prefix(i + 1);
    return true;
}

/* The value up to a comment. A # begins one behind a blank alone: file names may hold one. `rest` begins with neither a
 * blank nor a #. */
static std::string_view take_plain(std::string_view *rest)
{
    size_t end = rest->find('#');
    while (end < rest->size() && (*rest)[end - 1] != ' ' && (*rest)[end - 1] != '\t') end = rest->find('#', end + 1);
    end = std::min(end, rest->size());
    std::string_view value = rest->substr(0, end);
    rest->remove_prefix(end);
    return value.substr(0, value.find_last_not_of(blanks) + 1);
}

/* Takes a line apart. Returns null, or what is wrong with it. */
static const char *parse_line(std::string_view line, assignment *found)
{
    std::string_view rest = skip_blanks(line);
    found->empty = rest.empty() || rest[0] == '#';
    if (found->empty) return nullptr;

    const size_t name_end = std::min(rest.find_first_of(" \t=#\""), rest.size());
    found->name = rest.substr(0, name_end);
    rest = skip_blanks(rest.substr(name_end));
    const bool equal = !rest.empty() && rest[0] == '=';
    if (equal) rest = skip_blanks(rest.substr(1));
    if (found->name.empty()) return "found no name at the beginning of the line";
    if (rest.empty() || rest[0] == '#') return "found a name without a value (an empty text is written as \"\")";

    if (rest[0] != '"') {
        found->value = take_plain(&rest);
        return nullptr;
    }
    if (!take_quoted(&rest, &found->value)) return "the closing quote is missing";
    rest = skip_blanks(rest);
    return rest.empty() || rest[0] == '#' ? nullptr : "found text behind the closing quote";
}

static int32_t set_from_line(param_set *set, std::string_view line, std::string *message)
{
    assignment found;
    const char *fault = parse_line(line, &found);
    if (fault != nullptr) {
        *message = fault;
        return ZLR_RES_ERR_FILE_FORMAT;
    }
    return found.empty ? ZLR_RES_OK : param_set_text(set, found.name.c_str(), found.value.c_str(), message);
}

/* Every line is tried. An error that is passed over is a warning, so that the error stream and the result agree. */
static int32_t read_lines(param_set *set, line_reader *reader, const io_context *io)
{
    int32_t first = ZLR_RES_OK;
    for (;;) {
        std::string_view line;
        const int32_t res = lines_next(reader, &line);
        if (res != ZLR_RES_OK) return first != ZLR_RES_OK ? first : res;
        if (reader->at_end) return first;

        std::string message;
        const int32_t code = set_from_line(set, line, &message);
        if (code == ZLR_RES_OK) continue;
        if (param_int(set, IPAR_PARAM_IGNORE_ERRORS) == 1) {
            io_warning(io, reader->number, "%s; the line is passed over", message.c_str());
        } else {
            io_error(io, code, reader->number, "%s", message.c_str());
            if (first == ZLR_RES_OK) first = code;
        }
    }
}

int32_t param_read_file(param_set *set, sysenv *sys, const char *filename, stream_set *out)
{
    const io_context io = {filename, set, out, sys};
    byte_source *in = nullptr;
    errno = 0;
    const int32_t res = source_open(sys, &in, filename);
    if (res != ZLR_RES_OK)
        return io_error(&io, res, 0, "the parameter file cannot be opened: %s", std::strerror(errno));
    const source_holder holder(in);
    line_reader reader;
    lines_open(&reader, &io, in);
    return read_lines(set, &reader, &io);
}

/* ---- Writing ---- */

static std::string quoted(std::string_view value)
{
    std::string text = "\"";
    for (const char c : value) {
        if (c == '"') text += '"';
        text += c;
    }
    return text + '"';
}

static std::string line_of(const param_set *set, const param_row *row)
{
    const std::string value = param_value_text(set, row);
    return text_format("%-28s %s", row->name, row->param_class == ZLR_PAR_STR ? quoted(value).c_str() : value.c_str());
}

/* A value with a line break has no form in a file of lines: it is left out, and told. */
static bool has_form(const param_set *set, const param_row *row, const io_context *io)
{
    if (row->param_class != ZLR_PAR_STR) return true;
    if (set->str[static_cast<size_t>(row->number)].find_first_of("\r\n") == std::string::npos) return true;
    io_warning(io, 0, "%s is left out: its value holds a line break, which a parameter file cannot hold", row->name);
    return false;
}

static std::string file_text(const param_set *set, const io_context *io)
{
    int32_t num = 0;
    const param_row *table = param_table(&num);
    std::string changed = "# Parameters: NAME value, one a line; # begins a comment.\n\n";
    std::string defaults = "\n# At their defaults:\n";
    for (const param_row *row = table; row != table + num; row++) {
        if (param_is_reserved(row)) continue;
        if (param_is_default(set, row))
            defaults += "# " + line_of(set, row) + "\n";
        else if (has_form(set, row, io))
            changed += line_of(set, row) + "\n";
    }
    return changed + defaults;
}

int32_t param_write_file(const param_set *set, sysenv *sys, const char *filename, stream_set *out)
{
    const io_context io = {filename, set, out, sys};
    if (filename[0] == '\0')
        return io_error(&io, ZLR_RES_ERR_FILE_OPEN, 0, "no name is given for the parameter file (PARAM_WRITE_FILE)");
    errno = 0;
    const int32_t res = sink_whole_file(sys, filename, io_sink_options(&io), file_text(set, &io));
    if (res == ZLR_RES_OK) return res;
    return io_error(&io, res, 0, "the parameter file cannot be written%s%s", errno != 0 ? ": " : "",
                    errno != 0 ? std::strerror(errno) : "");
}
