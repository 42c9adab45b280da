/* solution_read.cpp - reads the format of solution_file.h: tokens and lines, the whole of a file, and what follows from
 * what was read. See solution_reader.h. */
#include "solver/io/solution_reader.h"
#include "solver/io/source_holder.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstring>

int32_t solution_fail(const solution_reader *r, int32_t code, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    const std::string message = text_vformat(format, args);
    va_end(args);
    return io_error(r->io, code, r->lines.number, "%s", message.c_str());
}

int32_t solution_found_expected(const solution_reader *r, std::string_view found, const char *expected)
{
    return solution_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found %s, expected %s", io_quote(found).c_str(), expected);
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

void solution_skip_blanks(std::string_view *rest)
{
    rest->remove_prefix(std::min(rest->find_first_not_of(" \t"), rest->size()));
}

bool solution_take_token(solution_reader *r, std::string_view *rest, std::string_view *token)
{
    solution_skip_blanks(rest);
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

int32_t solution_next_line(solution_reader *r, std::string_view *line)
{
    do {
        const int32_t res = lines_next(&r->lines, line);
        if (res != ZLR_RES_OK) return res;
        solution_skip_blanks(line);
    } while (!r->lines.at_end && (line->empty() || line->front() == '#'));
    return ZLR_RES_OK;
}

int32_t solution_cut_file(const solution_reader *r)
{
    return solution_fail(r, ZLR_RES_ERR_FILE_FORMAT,
                         "found the end of the file, expected [end]: the file is not complete");
}

/* ---- What follows from what was read ---- */

/* A file written by hand need not say what it holds, nor activities of rows and the objective. */
static int32_t complete_solution(solution_reader *r)
{
    const listed_items *rows = &r->items[ITEM_ROW], *columns = &r->items[ITEM_COLUMN];
    if (!columns->has_section && r->m->num_var > 0)
        return solution_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found [end], expected a section [columns]");
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
        return solution_fail(r, ZLR_RES_ERR_FILE_FORMAT, "the sections lack fields for what the line holds promises");
    if (primal && !rows->has_primal) model_activity(r->m, sol->xx.data(), sol->xc.data());
    if (sol->has_primal && !r->primal_obj_given) sol->primal_obj = model_objective(r->m, sol->xx.data());
    sol->defined = true;
    return ZLR_RES_OK;
}

static int32_t read_all(solution_reader *r)
{
    std::string_view line;
    int32_t res = solution_next_line(r, &line);
    if (res != ZLR_RES_OK) return res;
    if (r->lines.at_end)
        return solution_fail(r, ZLR_RES_ERR_FILE_FORMAT, "the file is empty, expected '%s'", solution_file_magic);
    if (line.substr(0, line.find_last_not_of(" \t") + 1) != solution_file_magic)
        return solution_found_expected(r, line, text_format("'%s' in the first line", solution_file_magic).c_str());
    for (;;) {
        res = solution_next_line(r, &line);
        if (res != ZLR_RES_OK) return res;
        if (r->lines.at_end) return solution_cut_file(r);
        if (line.front() == '[') break;
        res = solution_header_line(r, line);
        if (res != ZLR_RES_OK) return res;
    }
    res = solution_read_sections(r, line);
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
    names_resize(&r.cone_names, model_num_cones(m));
    list_items(&r.items[ITEM_CONE], &r.cone_names, model_num_cones(m), solution_cone_prefix, "cone");
    res = read_all(&r);
    if (res == ZLR_RES_OK) *sol = std::move(r.sol);
    return res;
}
