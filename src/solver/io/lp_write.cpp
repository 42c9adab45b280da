/* lp_write.cpp - writing an LP file. Order: terms, objective, constraints, bounds, integers, the file.
 *
 * What is written is what all common readers take alike: an objective and rows are never empty ("0 x"), a free row has
 * the right-hand side -1e30, both bounds are given wherever one is finite above. See docs/formats-lp.md. */
#include "solver/io/adjust.h"
#include "solver/io/lp_writer.h"

#include <cmath>

struct lp_output {
    const model *m = nullptr;
    lp_names vars, cons;
    lp_matrix a;
    lp_text text;
    std::string piece; /* built here, so that its memory is used again */
    bool split_ranges = false;
    int32_t digits = 0;
};

static constexpr double free_row_side = -1e30;

/* ---- terms */

static std::string_view var_name(const lp_output *o, int32_t col) { return names_get(o->vars.shown, col); }

/* "+ 3 x", and "3 x" or "- 3 x" at the start of an expression. The coefficient 1 is left out. */
static void begin_term(lp_output *o, double value, bool is_first)
{
    o->piece.clear();
    if (std::signbit(value))
        o->piece += "- ";
    else if (!is_first)
        o->piece += "+ ";
    if (std::fabs(value) != 1.0) {
        lp_append_number(&o->piece, std::fabs(value), o->digits);
        o->piece += ' ';
    }
}

static void write_term(lp_output *o, int32_t col, double value, bool *is_first)
{
    begin_term(o, value, *is_first);
    o->piece += var_name(o, col);
    lp_text_piece(&o->text, o->piece);
    *is_first = false;
}

/* The bracket of x'Qx/2: the objective has "/ 2" behind it, a row has not. */
static void write_quad(lp_output *o, const std::vector<quad_term> *terms, bool is_objective, bool *is_first)
{
    if (terms->empty()) return;
    lp_text_piece(&o->text, *is_first ? "[" : "+ [");
    bool is_first_term = true;
    for (const quad_term &term : *terms) {
        const bool is_square = term.i == term.j;
        const double factor = is_objective ? (is_square ? 1.0 : 2.0) : (is_square ? 0.5 : 1.0);
        begin_term(o, factor * term.value, is_first_term);
        o->piece += var_name(o, term.j);
        if (is_square) {
            o->piece += " ^ 2";
        } else {
            o->piece += " * ";
            o->piece += var_name(o, term.i);
        }
        lp_text_piece(&o->text, o->piece);
        is_first_term = false;
    }
    lp_text_piece(&o->text, is_objective ? "] / 2" : "]");
    *is_first = false;
}

/* ---- objective */

static std::string objective_name(const lp_output *o)
{
    const std::string &name = o->m->obj_name;
    if (lp_name_can_stand(name) && name_index_find(&o->cons.index, o->cons.shown, name) < 0) return name;
    return lp_name_unused(&o->cons, "obj");
}

static void write_objective(lp_output *o)
{
    const model *m = o->m;
    const int32_t listed = lp_listed_columns(m, &o->a);
    bool is_first = true;
    lp_text_line(&o->text, m->sense == ZLR_SENSE_MAX ? "Maximize" : "Minimize");
    lp_text_line(&o->text, " " + objective_name(o) + ":");
    for (int32_t col = 0; col < m->num_var; col++) {
        const double cost = m->c[static_cast<size_t>(col)];
        if (cost != 0.0 || col < listed) write_term(o, col, cost + 0.0, &is_first); /* no "- 0 x" */
    }
    /* Some readers want at least one term. */
    if (is_first && m->qobj.empty() && m->num_var > 0) write_term(o, 0, 0.0, &is_first);
    write_quad(o, &m->qobj, true, &is_first);
    if (m->cfix != 0.0 || is_first) {
        o->piece = std::signbit(m->cfix) ? "- " : is_first ? "" : "+ ";
        lp_append_number(&o->piece, std::fabs(m->cfix), o->digits);
        lp_text_piece(&o->text, o->piece);
    }
}

/* ---- constraints */

static void write_expression(lp_output *o, int32_t row, const quad_row *quad)
{
    const auto i = static_cast<size_t>(row);
    bool is_first = true;
    for (auto k = static_cast<size_t>(o->a.start[i]); k < static_cast<size_t>(o->a.start[i + 1]); k++)
        write_term(o, o->a.col[k], o->a.value[k], &is_first);
    if (quad != nullptr) write_quad(o, &quad->terms, false, &is_first);
    if (is_first && o->m->num_var > 0) write_term(o, 0, 0.0, &is_first);
    if (is_first) lp_text_piece(&o->text, "0");
}

static void write_number(lp_output *o, std::string_view before, double value, std::string_view behind)
{
    o->piece = before;
    lp_append_number(&o->piece, value, o->digits);
    o->piece += behind;
    lp_text_piece(&o->text, o->piece);
}

/* A row with one side: >= lower where it is finite, else <= upper. */
static void write_one_sided(lp_output *o, std::string_view name, int32_t row, const quad_row *quad, double lower,
                            double upper)
{
    lp_text_line(&o->text, " " + std::string(name) + ":");
    write_expression(o, row, quad);
    if (lower == upper)
        write_number(o, "= ", lower, "");
    else if (lower > -model_inf)
        write_number(o, ">= ", lower, "");
    else
        write_number(o, upper < model_inf ? "<= " : ">= ", upper < model_inf ? upper : free_row_side, "");
}

static void write_row(lp_output *o, int32_t row, const quad_row *quad)
{
    const std::string_view name = names_get(o->cons.shown, row);
    const double lower = o->m->con_lower[static_cast<size_t>(row)];
    const double upper = o->m->con_upper[static_cast<size_t>(row)];
    const bool is_range = lower > -model_inf && upper < model_inf && lower != upper;
    if (!is_range) {
        write_one_sided(o, name, row, quad, lower, upper);
    } else if (o->split_ranges) {
        write_one_sided(o, name, row, quad, lower, model_inf);
        write_one_sided(o, lp_name_unused(&o->cons, std::string(name) + "_up"), row, quad, -model_inf, upper);
    } else {
        lp_text_line(&o->text, " " + std::string(name) + ":");
        write_number(o, "", lower, " <=");
        write_expression(o, row, quad);
        write_number(o, "<= ", upper, "");
    }
}

static void write_rows(lp_output *o)
{
    size_t quad = 0;
    lp_text_line(&o->text, "Subject To");
    for (int32_t row = 0; row < o->m->num_con; row++) {
        const bool has_quad = quad < o->m->qcon.size() && o->m->qcon[quad].row == row;
        write_row(o, row, has_quad ? &o->m->qcon[quad++] : nullptr);
    }
}

/* ---- bounds and integers */

static bool is_plain_zero(double value) { return value == 0.0 && !std::signbit(value); }

static bool is_binary(const model *m, size_t j)
{
    return m->var_type[j] == ZLR_VAR_INT && is_plain_zero(m->var_lower[j]) && m->var_upper[j] == 1.0;
}

static void write_bound(lp_output *o, int32_t col)
{
    const double lower = o->m->var_lower[static_cast<size_t>(col)];
    const double upper = o->m->var_upper[static_cast<size_t>(col)];
    std::string *piece = &o->piece;
    piece->clear();
    if (lower == -model_inf && upper == model_inf) {
        piece->append(var_name(o, col)).append(" free");
    } else if (lower == upper && std::signbit(lower) == std::signbit(upper)) {
        piece->append(var_name(o, col)).append(" = ");
        lp_append_number(piece, lower, o->digits);
    } else if (upper == model_inf) {
        piece->append(var_name(o, col)).append(" >= ");
        lp_append_number(piece, lower, o->digits);
    } else {
        lp_append_number(piece, lower, o->digits); /* "-inf" for none */
        piece->append(" <= ").append(var_name(o, col)).append(" <= ");
        lp_append_number(piece, upper, o->digits);
    }
    lp_text_line(&o->text, "");
    lp_text_piece(&o->text, *piece);
}

static void write_bounds(lp_output *o)
{
    bool is_begun = false;
    for (int32_t col = 0; col < o->m->num_var; col++) {
        const auto j = static_cast<size_t>(col);
        if (is_binary(o->m, j) || (is_plain_zero(o->m->var_lower[j]) && o->m->var_upper[j] == model_inf)) continue;
        if (!is_begun) lp_text_line(&o->text, "Bounds");
        is_begun = true;
        write_bound(o, col);
    }
}

static void write_integers(lp_output *o, bool binaries)
{
    bool is_begun = false;
    for (int32_t col = 0; col < o->m->num_var; col++) {
        const auto j = static_cast<size_t>(col);
        if (o->m->var_type[j] != ZLR_VAR_INT || is_binary(o->m, j) != binaries) continue;
        if (!is_begun) {
            lp_text_line(&o->text, binaries ? "Binary" : "General");
            lp_text_line(&o->text, "");
        }
        is_begun = true;
        lp_text_piece(&o->text, var_name(o, col));
    }
}

/* ---- the file */

static void write_head(lp_output *o, const std::vector<std::string> &comment)
{
    std::string name = o->m->name;
    for (char &c : name)
        if (static_cast<unsigned char>(c) < 0x20) c = '_';
    if (!name.empty()) lp_text_line(&o->text, "\\Problem name: " + name);
    for (const std::string &line : comment) lp_text_line(&o->text, "\\ " + line);
}

int32_t lp_write(const io_context *io, byte_sink *out, const model *m)
{
    lp_output o;
    o.m = m;
    o.text.out = out;
    o.split_ranges = io->params != nullptr && param_int(io->params, IPAR_WRITE_LP_RANGES) == LP_RANGES_SPLIT;
    o.digits = io_digits(io);
    if (io->params != nullptr)
        o.text.line_limit = static_cast<size_t>(param_int(io->params, IPAR_WRITE_LP_LINE_LENGTH));
    lp_names_make(io, &m->var_names, m->num_var, true, &o.vars);
    lp_names_make(io, &m->con_names, m->num_con, false, &o.cons);
    o.vars.index = {};
    lp_matrix_make(m, &o.a);

    write_head(&o, adjust_comment(io));
    write_objective(&o);
    write_rows(&o);
    write_bounds(&o);
    write_integers(&o, false);
    write_integers(&o, true);
    lp_text_line(&o.text, "End");
    return lp_text_end(&o.text);
}
