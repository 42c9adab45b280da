/* solution_write.cpp - writes the format of solution_file.h. */
#include "solver/io/solution_file.h"

#include "solver/io/number.h"
#include "solver/report/words.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>

/* Longer names push their line to the right: padding all lines to the longest would be paid by every line. */
static constexpr size_t widest_name = 20;
static constexpr size_t number_column = 13;

struct solution_writer {
    const io_context *io = nullptr;
    byte_sink *out = nullptr;
    const model *m = nullptr;
    const solution *sol = nullptr;
    int32_t kind = ZLR_SOL_BAS;
    int32_t digits = 0; /* parameters WRITE_... */
    int32_t parts = SOLUTION_PARTS_ALL;
    double zero_tol = 0.0;
    std::string line;
};

/* Names stand bare unless a reader could take them apart or for something else. */
static bool needs_quotes(std::string_view name)
{
    if (name.empty() || name[0] == '#' || name[0] == '[') return true;
    return std::any_of(name.begin(), name.end(), [](char c) {
        const auto u = static_cast<unsigned char>(c);
        return u <= ' ' || u == 0x7f || c == '"';
    });
}

static void append_name(std::string *line, std::string_view name)
{
    if (!needs_quotes(name)) {
        *line += name;
        return;
    }
    *line += '"';
    for (const char c : name) {
        const auto u = static_cast<unsigned char>(c);
        if (u < ' ' || u == 0x7f) {
            *line += text_format("\\x%02x", static_cast<unsigned>(u));
        } else {
            if (c == '"' || c == '\\') *line += '\\';
            *line += c;
        }
    }
    *line += '"';
}

static void append_number(solution_writer *w, double value)
{
    char text[number_room];
    const size_t length = number_write(text, value, w->digits);
    w->line.append(length + 1 < number_column ? number_column - length : 1, ' ');
    w->line.append(text, length);
}

static void put_line(solution_writer *w)
{
    w->line += '\n';
    sink_text(w->out, w->line);
    w->line.clear();
}

static void put_header_line(solution_writer *w, const char *keyword, std::string_view value)
{
    w->line += text_format("%-17s ", keyword);
    w->line += value;
    put_line(w);
}

static void put_objective(solution_writer *w, const char *keyword, double value)
{
    char text[number_room];
    put_header_line(w, keyword,
                    std::isnan(value) ? "none" : std::string_view(text, number_write(text, value, w->digits)));
}

static bool holds_duals(const solution_writer *w) { return w->kind != ZLR_SOL_ITG && w->parts == SOLUTION_PARTS_ALL; }

static void put_header(solution_writer *w)
{
    const solution *sol = w->sol;
    std::string name;
    append_name(&name, w->m->name);

    w->line = solution_file_magic;
    put_line(w);
    put_header_line(w, "problem", name);
    put_header_line(w, "kind", words_solution_kind(w->kind));
    put_header_line(w, "rows", std::to_string(w->m->num_con));
    put_header_line(w, "columns", std::to_string(w->m->num_var));
    if (!w->m->cones.empty()) put_header_line(w, "cones", std::to_string(w->m->cones.size()));
    const char *prosta = words_problem_status(sol->prosta), *solsta = words_solution_status(sol->solsta, sol->is_local);
    put_header_line(w, "problem_status", prosta != nullptr ? prosta : "UNKNOWN");
    put_header_line(w, "solution_status", solsta != nullptr ? solsta : "UNKNOWN");
    put_objective(w, "primal_objective", sol->primal_obj);
    put_objective(w, "dual_objective", sol->dual_obj);
    /* Without the keys of the rows those of the columns are no basis. */
    const bool has_keys = sol->has_keys && (w->parts != SOLUTION_PARTS_COLUMNS || w->m->num_con == 0);
    const std::string parts = std::string(has_keys ? " keys" : "") + (sol->has_primal ? " primal" : "") +
                              (sol->has_dual && holds_duals(w) ? " dual" : "");
    put_header_line(w, "holds", parts.empty() ? "nothing" : parts.substr(1));
    put_line(w);
}

static void begin_line(solution_writer *w, std::string_view name, int32_t status_key)
{
    append_name(&w->line, name);
    if (w->line.size() < widest_name) w->line.append(widest_name - w->line.size(), ' ');
    w->line += ' ';
    const char *key = words_status_key(status_key);
    w->line += key != nullptr ? key : words_status_key(ZLR_SK_UNDEF);
}

/* One line of a section: true when all its values are finite. */
static bool compose_line(solution_writer *w, solution_item item, int32_t i,
                         const std::vector<const solution_field *> &fields)
{
    const model *m = w->m;
    const solution *sol = w->sol;
    const bool rows = item == ITEM_ROW;
    const auto at = static_cast<size_t>(i);
    bool finite = true;
    begin_line(w, names_shown(rows ? &m->con_names : &m->var_names, i, rows ? 'c' : 'x'),
               (rows ? sol->skc : sol->skx)[at]);
    for (const solution_field *field : fields) {
        const double value = (sol->*(field->values[item]))[at];
        finite = finite && std::isfinite(value);
        append_number(w, std::fabs(value) < w->zero_tol ? 0.0 : value);
        if (field->part != FIELD_PRIMAL) continue;
        append_number(w, (rows ? m->con_lower : m->var_lower)[at]);
        append_number(w, (rows ? m->con_upper : m->var_upper)[at]);
    }
    return finite;
}

static int32_t put_section(solution_writer *w, solution_item item)
{
    const bool rows = item == ITEM_ROW;
    std::vector<const solution_field *> fields;
    w->line = rows ? "[rows] name key" : "[columns] name key";
    for (const solution_field &field : solution_fields) {
        if (field.values[item] == nullptr || !solution_field_stands(&field, item, w->m)) continue;
        if (field.part == FIELD_DUAL && !holds_duals(w)) continue;
        fields.push_back(&field);
        w->line += std::string(" ") + field.name + (field.part == FIELD_PRIMAL ? " lower upper" : "");
    }
    put_line(w);
    const int32_t num = rows ? w->m->num_con : w->m->num_var;
    for (int32_t i = 0; i < num; i++) {
        if (!compose_line(w, item, i, fields))
            return io_error(
                w->io, ZLR_RES_ERR_NAN, 0, "the solution of %s %s is not finite", rows ? "row" : "column",
                io_quote(names_shown(rows ? &w->m->con_names : &w->m->var_names, i, rows ? 'c' : 'x')).c_str());
        put_line(w);
    }
    put_line(w);
    return ZLR_RES_OK;
}

static void put_cones(solution_writer *w)
{
    const std::vector<model_cone> &cones = w->m->cones;
    if (cones.empty()) return;
    w->line = "[cones] name key type members";
    put_line(w);
    for (size_t k = 0; k < cones.size(); k++) {
        begin_line(w, solution_cone_prefix + std::to_string(k + 1), w->sol->skn[k]);
        w->line += text_format(" %12s", words_cone_type(cones[k].type));
        append_number(w, static_cast<double>(cones[k].member.size()));
        put_line(w);
    }
    put_line(w);
}

static int32_t put_all(solution_writer *w)
{
    put_header(w);
    int32_t res = w->parts == SOLUTION_PARTS_COLUMNS ? ZLR_RES_OK : put_section(w, ITEM_ROW);
    if (res == ZLR_RES_OK) res = put_section(w, ITEM_COLUMN);
    if (res == ZLR_RES_OK) put_cones(w);
    if (res == ZLR_RES_OK) sink_text(w->out, "[end]\n");
    return res;
}

int32_t solution_file_write(const io_context *io, const model *m, const solution *sol, int32_t kind)
{
    byte_sink *out = nullptr;
    errno = 0;
    int32_t open = sink_open(io->sys, &out, io->file, io_sink_options(io));
    if (open != ZLR_RES_OK)
        return io_error(io, open, 0, "the solution file cannot be opened: %s", std::strerror(errno));

    solution_writer w;
    w.io = io;
    w.out = out;
    w.m = m;
    w.sol = sol;
    w.kind = kind;
    w.digits = io_digits(io);
    w.parts = param_int(io->params, IPAR_WRITE_SOLUTION_PARTS);
    w.zero_tol = param_dou(io->params, DPAR_WRITE_SOLUTION_ZERO_TOL);
    int32_t composed;
    try {
        composed = put_all(&w);
    } catch (...) { /* memory: nothing is left under the asked name */
        (void)sink_close(&out, false);
        throw;
    }
    errno = 0;
    const int32_t written = sink_close(&out, composed == ZLR_RES_OK);
    if (composed != ZLR_RES_OK) return composed;
    if (written == ZLR_RES_OK) return written;
    return io_error(io, written, 0, "the solution file cannot be written%s%s", errno != 0 ? ": " : "",
                    errno != 0 ? std::strerror(errno) : "");
}
