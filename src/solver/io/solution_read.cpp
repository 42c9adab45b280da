/* solution_read.cpp - reads the format of solution_file.h.
 *
 * Nothing is guessed: every row and column that a section speaks of must be listed, exactly once and with every field of
 * the heading, and the file must end with [end]. In order: tokens, finding rows and columns, header, sections, what
 * follows from what was read. */
#include "solver/io/line_reader.h"
#include "solver/io/number.h"
#include "solver/io/solution_file.h"
#include "solver/io/source_holder.h"
#include "solver/report/words.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdarg>
#include <cstring>
#include <iterator>

/* The rows or the columns of the problem, and which of them were listed. */
struct listed_items {
    const name_table *names = nullptr;
    char prefix = 'x';
    int32_t num = 0;
    const char *what = ""; /* "row", "column" */

    /* Made when names do not come in the problem's order. Without it a million names need no index. */
    name_table shown;
    name_index index;
    bool indexed = false, unique = true;

    std::vector<uint8_t> seen;
    int32_t count = 0;
    bool has_section = false, has_key = false, has_primal = false, has_dual = false;
};

struct solution_reader {
    const io_context *io;
    const model *m;
    int32_t kind;
    line_reader lines;
    solution sol;
    uint32_t keywords_seen = 0;
    bool holds_given = false;
    bool primal_obj_given = false;
    std::string quoted; /* the last token, if it stood in quotes */
    listed_items items[2];
};

enum { ITEM_ROW = 0, ITEM_COLUMN = 1 };

/* An error in the line that was read last. */
static int32_t fail(const solution_reader *r, int32_t code, const char *format, ...) ZLR_PRINTF(3, 4);

static int32_t fail(const solution_reader *r, int32_t code, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    const std::string message = text_vformat(format, args);
    va_end(args);
    return io_error(r->io, code, r->lines.number, "%s", message.c_str());
}

/* ---- Tokens ---- */

static int hex_digit(char c)
{
    const char *digits = "0123456789abcdef";
    const char *found = c != '\0' ? std::strchr(digits, c) : nullptr;
    return found != nullptr ? static_cast<int>(found - digits) : -1;
}

/* A text in quotes at the front of `rest`, with \" \\ and \xHH undone. */
static bool take_quoted(std::string_view *rest, std::string *text)
{
    const std::string_view in = *rest;
    text->clear();
    for (size_t i = 1; i < in.size(); i++) {
        if (in[i] == '"') {
            rest->remove_prefix(i + 1);
            return rest->empty() || rest->front() == ' ' || rest->front() == '\t';
        }
        if (in[i] != '\\') {
            *text += in[i];
            continue;
        }
        i++;
        if (i < in.size() && (in[i] == '"' || in[i] == '\\')) {
            *text += in[i];
        } else if (i + 2 < in.size() && in[i] == 'x' && hex_digit(in[i + 1]) >= 0 && hex_digit(in[i + 2]) >= 0) {
            *text += static_cast<char>(16 * hex_digit(in[i + 1]) + hex_digit(in[i + 2]));
            i += 2;
        } else {
            return false;
        }
    }
    return false;
}

static void skip_blanks(std::string_view *rest)
{
    rest->remove_prefix(std::min(rest->find_first_not_of(" \t"), rest->size()));
}

/* The next token of a line, empty at its end. False for a malformed quotation. A token in quotes is valid until the
 * next one in quotes. */
static bool take_token(solution_reader *r, std::string_view *rest, std::string_view *token)
{
    skip_blanks(rest);
    if (!rest->empty() && rest->front() == '"') {
        if (!take_quoted(rest, &r->quoted)) return false;
        *token = r->quoted;
        return true;
    }
    const size_t end = std::min(rest->find_first_of(" \t"), rest->size());
    *token = rest->substr(0, end);
    rest->remove_prefix(end);
    return true;
}

/* The next line that is neither blank nor a comment. At the end of the file: at_end. */
static int32_t next_line(solution_reader *r, std::string_view *line)
{
    do {
        const int32_t res = lines_next(&r->lines, line);
        if (res != ZLR_RES_OK) return res;
        skip_blanks(line);
    } while (!r->lines.at_end && (line->empty() || line->front() == '#'));
    return ZLR_RES_OK;
}

static int32_t cut_file(const solution_reader *r)
{
    return fail(r, ZLR_RES_ERR_FILE_FORMAT, "found the end of the file, expected [end]: the file is not complete");
}

/* ---- Finding rows and columns ---- */

static void index_items(listed_items *items)
{
    items->indexed = true;
    for (int32_t i = 0; i < items->num; i++) names_append(&items->shown, names_shown(items->names, i, items->prefix));
    items->unique = name_index_build(&items->index, &items->shown) < 0;
}

static bool stands_at(const listed_items *items, int32_t i, std::string_view name)
{
    const std::string_view given = names_get(items->names, i);
    return given.empty() ? names_shown(items->names, i, items->prefix) == name : given == name;
}

/* Lines in the problem's order are matched by position, which is right whether names are unique or not. The first line
 * out of order calls for the index, which works for unique names alone. */
static int32_t find_item(solution_reader *r, listed_items *items, std::string_view name, size_t *at)
{
    int32_t i = items->count;
    if (i >= items->num || !stands_at(items, i, name)) {
        if (!items->indexed) index_items(items);
        i = items->unique ? name_index_find(&items->index, &items->shown, name) : -1;
        if (i < 0)
            return fail(r, ZLR_RES_ERR_SOL_MISMATCH,
                        items->unique ? "the problem has no %s %s"
                                      : "found %s %s, which is not the next one of the problem; names that occur twice "
                                        "in the problem must be listed in its order",
                        items->what, io_quote(name).c_str());
    }
    *at = static_cast<size_t>(i);
    if (items->seen[*at] != 0)
        return fail(r, ZLR_RES_ERR_SOL_MISMATCH, "%s %s is listed twice", items->what, io_quote(name).c_str());
    items->seen[*at] = 1;
    items->count++;
    return ZLR_RES_OK;
}

/* ---- Header ---- */

static int32_t found_expected(const solution_reader *r, std::string_view found, const char *expected)
{
    return fail(r, ZLR_RES_ERR_FILE_FORMAT, "found %s, expected %s", io_quote(found).c_str(), expected);
}

static int32_t header_problem(solution_reader *, std::string_view) { return ZLR_RES_OK; } /* told to people alone */

static int32_t header_kind(solution_reader *r, std::string_view value)
{
    for (int32_t kind = ZLR_SOL_ITR; kind <= ZLR_SOL_ITG; kind++) {
        if (value != words_solution_kind(kind)) continue;
        if (kind == r->kind) return ZLR_RES_OK;
        return fail(r, ZLR_RES_ERR_SOL_MISMATCH, "the file holds the %s solution, asked for is the %s one",
                    words_solution_kind(kind), words_solution_kind(r->kind));
    }
    return found_expected(r, value, "interior, basic or integer");
}

static int32_t header_size(solution_reader *r, std::string_view value, const listed_items *items)
{
    double num = -1.0;
    if (!number_parse(value, &num) || num < 0.0 || num != std::floor(num))
        return found_expected(r, value, "a number of rows or columns");
    if (num == items->num) return ZLR_RES_OK;
    return fail(r, ZLR_RES_ERR_SOL_MISMATCH, "the file has %.0f %ss, the problem has %d", num, items->what, items->num);
}

static int32_t header_rows(solution_reader *r, std::string_view value)
{
    return header_size(r, value, &r->items[ITEM_ROW]);
}

static int32_t header_columns(solution_reader *r, std::string_view value)
{
    return header_size(r, value, &r->items[ITEM_COLUMN]);
}

static int32_t header_prosta(solution_reader *r, std::string_view value)
{
    r->sol.prosta = words_find_problem_status(value);
    return r->sol.prosta >= 0 ? ZLR_RES_OK : found_expected(r, value, "a problem status such as PRIMAL_FEASIBLE");
}

static int32_t header_solsta(solution_reader *r, std::string_view value)
{
    r->sol.solsta = words_find_solution_status(value);
    return r->sol.solsta >= 0 ? ZLR_RES_OK : found_expected(r, value, "a solution status such as OPTIMAL");
}

static int32_t header_objective(solution_reader *r, std::string_view value, double *objective)
{
    if (value == "none") *objective = std::numeric_limits<double>::quiet_NaN();
    return value == "none" || number_parse(value, objective) ? ZLR_RES_OK
                                                             : found_expected(r, value, "a number or none");
}

static int32_t header_primal(solution_reader *r, std::string_view value)
{
    r->primal_obj_given = true;
    return header_objective(r, value, &r->sol.primal_obj);
}

static int32_t header_dual(solution_reader *r, std::string_view value)
{
    return header_objective(r, value, &r->sol.dual_obj);
}

static int32_t header_holds(solution_reader *r, std::string_view value)
{
    r->holds_given = true;
    if (value == "keys") r->sol.has_keys = true;
    if (value == "primal") r->sol.has_primal = true;
    if (value == "dual") r->sol.has_dual = true;
    const bool known = value == "keys" || value == "primal" || value == "dual" || value == "nothing";
    return known ? ZLR_RES_OK : found_expected(r, value, "keys, primal, dual or nothing");
}

static const struct {
    const char *word;
    int32_t (*take)(solution_reader *r, std::string_view value);
    bool takes_list;
} header_keywords[] = {
    {"problem", header_problem, false},
    {"kind", header_kind, false},
    {"rows", header_rows, false},
    {"columns", header_columns, false},
    {"problem_status", header_prosta, false},
    {"solution_status", header_solsta, false},
    {"primal_objective", header_primal, false},
    {"dual_objective", header_dual, false},
    {"holds", header_holds, true},
};

/* The values behind keyword number k: one, or a list. */
static int32_t header_values(solution_reader *r, size_t k, std::string_view rest)
{
    int32_t num = 0;
    for (skip_blanks(&rest); !rest.empty(); skip_blanks(&rest)) {
        std::string_view value;
        if (!take_token(r, &rest, &value)) return found_expected(r, rest, "a text with closed quotes");
        if (num > 0 && !header_keywords[k].takes_list) return found_expected(r, value, "the end of the line");
        const int32_t res = header_keywords[k].take(r, value);
        if (res != ZLR_RES_OK) return res;
        num++;
    }
    if (num > 0) return ZLR_RES_OK;
    return fail(r, ZLR_RES_ERR_FILE_FORMAT, "found the end of the line, expected a value of %s",
                header_keywords[k].word);
}

static int32_t header_line(solution_reader *r, std::string_view line)
{
    std::string_view word;
    if (!take_token(r, &line, &word)) return found_expected(r, line, "a keyword or a section");
    for (size_t k = 0; k < std::size(header_keywords); k++) {
        if (word != header_keywords[k].word) continue;
        if ((r->keywords_seen >> k & 1u) != 0)
            return fail(r, ZLR_RES_ERR_FILE_FORMAT, "keyword %s occurs twice", header_keywords[k].word);
        r->keywords_seen |= 1u << k;
        return header_values(r, k, line);
    }
    return found_expected(r, word, "a keyword of the header, [rows] or [columns]");
}

/* ---- Sections ---- */

typedef std::vector<const solution_field *> field_list;

static const solution_field *find_field(std::string_view word, bool rows)
{
    for (const solution_field &field : solution_fields)
        if (word == field.name && (rows ? field.in_rows : field.in_columns)) return &field;
    return nullptr;
}

static int32_t check_fields(solution_reader *r, const listed_items *items, const field_list &fields, bool rows)
{
    int32_t num_dual = 0;
    for (size_t i = 0; i < fields.size(); i++) {
        for (size_t j = 0; j < i; j++)
            if (fields[i] == fields[j])
                return fail(r, ZLR_RES_ERR_FILE_FORMAT, "field %s occurs twice", fields[i]->name);
        num_dual += fields[i]->part == FIELD_DUAL ? 1 : 0;
    }
    if (fields.empty() || fields[0]->part != FIELD_NAME)
        return fail(r, ZLR_RES_ERR_FILE_FORMAT, "expected name as the first field of the section");
    if (num_dual > 0 && r->kind == ZLR_SOL_ITG)
        return fail(r, ZLR_RES_ERR_FILE_FORMAT, "an integer solution has no duals");
    if (num_dual > 0 && num_dual != (rows ? 3 : 2))
        return fail(r, ZLR_RES_ERR_FILE_FORMAT, "expected all dual fields of a %s (%s) or none", items->what,
                    rows ? "y slc suc" : "slx sux");
    return ZLR_RES_OK;
}

static int32_t section_heading(solution_reader *r, listed_items *items, bool rows, std::string_view rest,
                               field_list *fields)
{
    if (items->has_section) return fail(r, ZLR_RES_ERR_FILE_FORMAT, "the section of %ss occurs twice", items->what);
    items->has_section = true;
    for (skip_blanks(&rest); !rest.empty(); skip_blanks(&rest)) {
        std::string_view word;
        if (!take_token(r, &rest, &word)) return found_expected(r, rest, "a field of the section");
        const solution_field *field = find_field(word, rows);
        if (field == nullptr) return found_expected(r, word, "a field of the section");
        fields->push_back(field);
        items->has_key = items->has_key || field->part == FIELD_KEY;
        items->has_primal = items->has_primal || field->part == FIELD_PRIMAL;
        items->has_dual = items->has_dual || field->part == FIELD_DUAL;
    }
    return check_fields(r, items, *fields, rows);
}

static int32_t take_value(solution_reader *r, const solution_field *field, bool rows, size_t at, std::string_view token)
{
    if (field->part == FIELD_KEY) {
        const int32_t key = words_find_status_key(token);
        if (key < 0) return found_expected(r, token, "a status key (UN, BS, SB, LL, UL, EQ, IN)");
        (rows ? r->sol.skc : r->sol.skx)[at] = key;
        return ZLR_RES_OK;
    }
    double value = 0.0;
    if (!number_parse(token, &value)) return found_expected(r, token, "a number");
    if (field->part == FIELD_BOUND) return ZLR_RES_OK;
    if (!std::isfinite(value)) return found_expected(r, token, "a finite number");
    (r->sol.*(rows ? field->row : field->column))[at] = value;
    return ZLR_RES_OK;
}

static int32_t section_line(solution_reader *r, listed_items *items, bool rows, const field_list &fields,
                            std::string_view line)
{
    size_t at = 0;
    for (const solution_field *field : fields) {
        std::string_view token;
        if (!take_token(r, &line, &token)) return found_expected(r, line, "a name with closed quotes");
        if (token.empty() && field->part != FIELD_NAME)
            return fail(r, ZLR_RES_ERR_FILE_FORMAT, "found the end of the line, expected field %s", field->name);
        const int32_t res =
            field->part == FIELD_NAME ? find_item(r, items, token, &at) : take_value(r, field, rows, at, token);
        if (res != ZLR_RES_OK) return res;
    }
    skip_blanks(&line);
    return line.empty() ? ZLR_RES_OK : found_expected(r, line, "the end of the line");
}

static int32_t section_complete(solution_reader *r, const listed_items *items)
{
    if (items->count == items->num) return ZLR_RES_OK;
    int32_t missing = 0;
    while (items->seen[static_cast<size_t>(missing)] != 0) missing++;
    return fail(r, ZLR_RES_ERR_SOL_MISMATCH, "the section lists %d of %d %ss; all must be listed, and %s is missing",
                items->count, items->num, items->what,
                io_quote(names_shown(items->names, missing, items->prefix)).c_str());
}

/* Lines up to the next section, whose heading is left in *line. */
static int32_t read_section(solution_reader *r, bool rows, std::string_view fields_text, std::string_view *line)
{
    listed_items *items = &r->items[rows ? ITEM_ROW : ITEM_COLUMN];
    field_list fields;
    int32_t res = section_heading(r, items, rows, fields_text, &fields);
    while (res == ZLR_RES_OK) {
        res = next_line(r, line);
        if (res != ZLR_RES_OK) break;
        if (r->lines.at_end) return cut_file(r);
        if (line->front() == '[') return section_complete(r, items);
        res = section_line(r, items, rows, fields, *line);
    }
    return res;
}

static int32_t read_after_end(solution_reader *r)
{
    std::string_view line;
    const int32_t res = next_line(r, &line);
    if (res != ZLR_RES_OK || r->lines.at_end) return res;
    return found_expected(r, line, "nothing behind [end]");
}

static int32_t read_sections(solution_reader *r, std::string_view line)
{
    for (;;) {
        std::string_view heading;
        if (!take_token(r, &line, &heading)) return found_expected(r, line, "a section");
        if (heading == "[end]") {
            skip_blanks(&line);
            return line.empty() ? read_after_end(r) : found_expected(r, line, "the end of the line");
        }
        const bool rows = heading == "[rows]";
        if (!rows && heading != "[columns]") return found_expected(r, heading, "[rows], [columns] or [end]");
        const int32_t res = read_section(r, rows, line, &line);
        if (res != ZLR_RES_OK) return res;
    }
}

/* ---- What follows from what was read ---- */

/* A file written by hand need not say what it holds, nor activities of rows and the objective. */
static int32_t complete_solution(solution_reader *r)
{
    const listed_items *rows = &r->items[ITEM_ROW], *columns = &r->items[ITEM_COLUMN];
    if (!columns->has_section && r->m->num_var > 0)
        return fail(r, ZLR_RES_ERR_FILE_FORMAT, "found [end], expected a section [columns]");
    const bool all_rows = rows->has_section || r->m->num_con == 0;
    solution *sol = &r->sol;
    const bool keys = columns->has_key && (rows->has_key || r->m->num_con == 0);
    const bool primal = columns->has_primal;
    const bool dual = columns->has_dual && (rows->has_dual || r->m->num_con == 0) && all_rows;
    const bool point = !solution_is_certificate(sol);
    if (!r->holds_given) {
        sol->has_keys = keys;
        sol->has_primal = primal && point;
        sol->has_dual = dual && point;
    }
    if ((sol->has_keys && !keys) || (sol->has_primal && !primal) || (sol->has_dual && !dual))
        return fail(r, ZLR_RES_ERR_FILE_FORMAT, "the sections lack fields for what the line holds promises");
    if (primal && !rows->has_primal) model_activity(r->m, sol->xx.data(), sol->xc.data());
    if (sol->has_primal && !r->primal_obj_given) sol->primal_obj = model_objective(r->m, sol->xx.data());
    sol->defined = true;
    return ZLR_RES_OK;
}

static int32_t read_all(solution_reader *r)
{
    std::string_view line;
    int32_t res = next_line(r, &line);
    if (res != ZLR_RES_OK) return res;
    if (r->lines.at_end)
        return fail(r, ZLR_RES_ERR_FILE_FORMAT, "the file is empty, expected '%s'", solution_file_magic);
    if (line.substr(0, line.find_last_not_of(" \t") + 1) != solution_file_magic)
        return found_expected(r, line, text_format("'%s' in the first line", solution_file_magic).c_str());
    for (;;) {
        res = next_line(r, &line);
        if (res != ZLR_RES_OK) return res;
        if (r->lines.at_end) return cut_file(r);
        if (line.front() == '[') break;
        res = header_line(r, line);
        if (res != ZLR_RES_OK) return res;
    }
    res = read_sections(r, line);
    return res == ZLR_RES_OK ? complete_solution(r) : res;
}

static void list_items(listed_items *items, const name_table *names, int32_t num, char prefix, const char *what)
{
    items->names = names;
    items->num = num;
    items->prefix = prefix;
    items->what = what;
    items->seen.assign(static_cast<size_t>(num), 0);
}

int32_t solution_file_read(const io_context *io, const model *m, int32_t kind, solution *sol)
{
    solution_reader r = {};
    r.io = io;
    r.m = m;
    r.kind = kind;
    byte_source *in = nullptr;
    errno = 0;
    int32_t res = source_open(io->sys, &in, io->file);
    if (res != ZLR_RES_OK) return io_error(io, res, 0, "the solution file cannot be opened: %s", std::strerror(errno));
    const source_holder holder(in);
    lines_open(&r.lines, io, in);

    solution_reset(&r.sol, m->num_con, m->num_var, model_num_cones(m));
    list_items(&r.items[ITEM_ROW], &m->con_names, m->num_con, 'c', "row");
    list_items(&r.items[ITEM_COLUMN], &m->var_names, m->num_var, 'x', "column");
    res = read_all(&r);
    if (res == ZLR_RES_OK) *sol = std::move(r.sol);
    return res;
}
