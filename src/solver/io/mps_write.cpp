/* mps_write.cpp - writes a model as MPS, free unless WRITE_MPS_LAYOUT asks for the fixed layout.
 *
 * The text is the same for the same model, keeps to the columns of the fixed format as long as names and numbers are
 * short, and is laid out so that the readers that are about take it alike:
 *   - free rows are rows of type N; the objective is the first of them;
 *   - an integer column always has its bounds written: what one without any is taken for differs from reader to reader;
 *   - a lower bound is written wherever an upper one below 0 would change it;
 *   - the objective constant is a negative right-hand side of the objective.
 * A row whose lower side lies above its upper one has no form in MPS: it is written as two rows. */
#include "solver/io/adjust.h"
#include "solver/io/mps_names.h"
#include "solver/io/number.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr size_t pad_width = 8; /* of a name in the fixed format */
constexpr size_t fixed_number_width = 12;
constexpr double infinite_bound = 1e30; /* for a bound that is infinite and must be given */

struct mps_writer {
    const io_context *io;
    byte_sink *out;
    const model *m;
    mps_name_list rows, columns;
    std::string objective;
    std::vector<int32_t> twin;           /* by row: number in twin_names, or -1; empty: no row is crossed */
    std::vector<std::string> twin_names; /* of the rows that hold the lower sides of crossed rows */
    std::string line;                    /* under construction */

    /* By parameters. */
    int32_t digits;
    bool is_fixed;          /* fields keep to their columns */
    bool keeps_sign_of_rhs; /* of the objective */
    bool tells_integers_by_bounds;
    int32_t quadratic;   /* MPS_QUADRATIC_... */
    int64_t num_rounded; /* numbers that lost digits to the fixed layout */
};

/* ---- Lines --------------------------------------------------------------------------------------------------------- */

void line_name(mps_writer *w, std::string_view name)
{
    w->line += name;
    if (name.size() < pad_width) w->line.append(pad_width - name.size(), ' ');
    w->line += "  ";
}

void line_value(mps_writer *w, double value)
{
    char text[number_room];
    size_t length = number_write(text, value, w->digits);
    if (w->is_fixed && length > fixed_number_width) {
        ++w->num_rounded;
        for (int32_t digits = fixed_number_width; length > fixed_number_width; --digits)
            length = number_write(text, value, digits);
    }
    w->line.append(text, length);
}

void line_end(mps_writer *w)
{
    w->line += '\n';
    sink_text(w->out, w->line);
    w->line.clear();
}

/* "    FIRST     SECOND    VALUE" */
void put_entry(mps_writer *w, std::string_view first, std::string_view second, double value)
{
    w->line += "    ";
    line_name(w, first);
    line_name(w, second);
    line_value(w, value);
    line_end(w);
}

bool is_plain_zero(double value) { return value == 0.0 && !std::signbit(value); }

/* ---- Rows ---------------------------------------------------------------------------------------------------------- */

struct row_form {
    char type;
    double rhs = 0.0;
    double range = 0.0; /* 0: none */
};

/* The range that leads from the right-hand side to exactly the other side: their difference, or a neighbour of it where
 * the difference was rounded. 0 when there is none. */
double exact_range(double from, double to)
{
    const double range = std::fabs(to - from);
    const double tries[] = {range, std::nextafter(range, model_inf), std::nextafter(range, 0.0)};
    for (const double r : tries)
        if ((to < from ? from - r : from + r) == to) return r;
    return 0.0;
}

row_form form_of_ranged(double lower, double upper)
{
    const double down = exact_range(upper, lower);
    if (down != 0.0) return {'L', upper, down};
    const double up = exact_range(lower, upper);
    return {'G', lower, up != 0.0 ? up : upper - lower}; /* at worst a rounding away from the upper side */
}

row_form form_of_row(const model *m, int32_t i)
{
    const double lower = m->con_lower[static_cast<size_t>(i)];
    const double upper = m->con_upper[static_cast<size_t>(i)];
    if (lower == -model_inf) return upper == model_inf ? row_form{'N'} : row_form{'L', upper};
    if (upper == model_inf) return {'G', lower};
    if (lower == upper) return {'E', lower};
    return lower < upper ? form_of_ranged(lower, upper) : row_form{'L', upper};
}

/* The row that holds the lower side of a crossed one; -1: it is not crossed. */
int32_t twin_of(const mps_writer *w, int32_t i) { return w->twin.empty() ? -1 : w->twin[static_cast<size_t>(i)]; }

void make_twins(mps_writer *w)
{
    const model *m = w->m;
    for (int32_t i = 0; i < m->num_con; ++i) {
        if (!(m->con_lower[static_cast<size_t>(i)] > m->con_upper[static_cast<size_t>(i)])) continue;
        if (w->twin.empty()) w->twin.assign(static_cast<size_t>(m->num_con), -1);
        w->twin[static_cast<size_t>(i)] = static_cast<int32_t>(w->twin_names.size());
        w->twin_names.push_back(mps_name_new(&w->rows, std::string(mps_name(&w->rows, i)) + "_lower"));
    }
    if (w->twin_names.empty()) return;
    io_warning(w->io, 0, "%zu rows with a lower side above the upper one are written as two rows each; one is '%s'",
               w->twin_names.size(), io_quote(w->twin_names[0]).c_str());
}

void put_rows(mps_writer *w)
{
    sink_text(w->out, "ROWS\n N  ");
    sink_text(w->out, w->objective);
    sink_text(w->out, "\n");
    for (int32_t i = 0; i < w->m->num_con; ++i) {
        w->line += ' ';
        w->line += form_of_row(w->m, i).type;
        w->line += "  ";
        w->line += mps_name(&w->rows, i);
        line_end(w);
    }
    for (const std::string &name : w->twin_names) {
        w->line = " G  " + name;
        line_end(w);
    }
}

/* ---- Columns ------------------------------------------------------------------------------------------------------- */

void put_marker(mps_writer *w, bool opens)
{
    sink_text(w->out, opens ? "    MARKER    'MARKER'                 'INTORG'\n"
                            : "    MARKER    'MARKER'                 'INTEND'\n");
}

void put_column(mps_writer *w, int32_t j)
{
    const model *m = w->m;
    const auto at = static_cast<size_t>(j);
    const std::string_view name = mps_name(&w->columns, j);
    const auto begin = static_cast<size_t>(m->a.start[at]);
    const auto end = static_cast<size_t>(m->a.start[at + 1]);

    /* A column without entries is known from its line in the objective alone. */
    if (!is_plain_zero(m->c[at]) || begin == end) put_entry(w, name, w->objective, m->c[at]);
    for (size_t k = begin; k < end; ++k) {
        const int32_t i = m->a.row[k];
        put_entry(w, name, mps_name(&w->rows, i), m->a.value[k]);
        const int32_t twin = twin_of(w, i);
        if (twin >= 0) put_entry(w, name, w->twin_names[static_cast<size_t>(twin)], m->a.value[k]);
    }
}

void put_columns(mps_writer *w)
{
    bool inside = false;
    sink_text(w->out, "COLUMNS\n");
    for (int32_t j = 0; j < w->m->num_var; ++j) {
        const bool is_integer = w->m->var_type[static_cast<size_t>(j)] == ZLR_VAR_INT;
        if (is_integer != inside && !w->tells_integers_by_bounds) put_marker(w, is_integer);
        inside = is_integer;
        put_column(w, j);
    }
    if (inside && !w->tells_integers_by_bounds) put_marker(w, false);
}

/* ---- Vectors ------------------------------------------------------------------------------------------------------- */

void put_rhs(mps_writer *w)
{
    const model *m = w->m;
    sink_text(w->out, "RHS\n");
    if (m->cfix != 0.0) put_entry(w, "RHS", w->objective, w->keeps_sign_of_rhs ? m->cfix : -m->cfix);
    for (int32_t i = 0; i < m->num_con; ++i) {
        const row_form form = form_of_row(m, i);
        if (form.type != 'N' && !is_plain_zero(form.rhs)) put_entry(w, "RHS", mps_name(&w->rows, i), form.rhs);
        const int32_t twin = twin_of(w, i);
        const double lower = m->con_lower[static_cast<size_t>(i)];
        if (twin >= 0 && !is_plain_zero(lower)) put_entry(w, "RHS", w->twin_names[static_cast<size_t>(twin)], lower);
    }
}

void put_ranges(mps_writer *w)
{
    bool any = false;
    for (int32_t i = 0; i < w->m->num_con; ++i) {
        const row_form form = form_of_row(w->m, i);
        if (form.range == 0.0) continue;
        if (!any) sink_text(w->out, "RANGES\n");
        any = true;
        put_entry(w, "RNG", mps_name(&w->rows, i), form.range);
    }
}

struct bound_writer {
    mps_writer *w;
    bool any;
};

void put_bound(bound_writer *b, const char *type, int32_t j, const double *value)
{
    mps_writer *w = b->w;
    if (!b->any) sink_text(w->out, "BOUNDS\n");
    b->any = true;
    w->line += ' ';
    w->line += type;
    w->line += " BND       ";
    if (value != nullptr) {
        line_name(w, mps_name(&w->columns, j));
        line_value(w, *value);
    } else {
        w->line += mps_name(&w->columns, j);
    }
    line_end(w);
}

/* The types that make a column an integer one. A lower bound is always given, so that an upper one cannot change it. */
void put_integer_bounds_of(bound_writer *b, int32_t j)
{
    const double lower = b->w->m->var_lower[static_cast<size_t>(j)];
    const double upper = b->w->m->var_upper[static_cast<size_t>(j)];
    if (is_plain_zero(lower) && upper == 1.0) {
        put_bound(b, "BV", j, nullptr);
        return;
    }
    const double least = lower == -model_inf ? -infinite_bound : lower;
    put_bound(b, "LI", j, &least);
    if (upper != model_inf) put_bound(b, "UI", j, &upper);
}

/* Lower bounds first: an upper one below 0 then finds the lower bound given. */
void put_bounds_of(bound_writer *b, int32_t j)
{
    const double lower = b->w->m->var_lower[static_cast<size_t>(j)];
    const double upper = b->w->m->var_upper[static_cast<size_t>(j)];
    const bool is_integer = b->w->m->var_type[static_cast<size_t>(j)] == ZLR_VAR_INT;
    const bool is_same = lower == upper && std::signbit(lower) == std::signbit(upper);

    if (is_integer && b->w->tells_integers_by_bounds) {
        put_integer_bounds_of(b, j);
    } else if (is_integer && is_plain_zero(lower) && upper == 1.0) {
        put_bound(b, "BV", j, nullptr);
    } else if (lower == -model_inf && upper == model_inf) {
        put_bound(b, "FR", j, nullptr);
    } else if (is_same) {
        put_bound(b, "FX", j, &lower);
    } else {
        if (lower == -model_inf)
            put_bound(b, "MI", j, nullptr);
        else if (!is_plain_zero(lower) || upper <= 0.0)
            put_bound(b, "LO", j, &lower);
        if (upper != model_inf)
            put_bound(b, "UP", j, &upper);
        else if (is_integer)
            put_bound(b, "PL", j, nullptr);
    }
}

/* ---- Quadratic parts ----------------------------------------------------------------------------------------------- */

void put_triangle(mps_writer *w, const std::vector<quad_term> &terms)
{
    for (const quad_term &t : terms) put_entry(w, mps_name(&w->columns, t.j), mps_name(&w->columns, t.i), t.value);
}

void put_both_triangles(mps_writer *w, const std::vector<quad_term> &terms, double factor)
{
    for (const quad_term &t : terms) {
        put_entry(w, mps_name(&w->columns, t.j), mps_name(&w->columns, t.i), factor * t.value);
        if (t.i != t.j) put_entry(w, mps_name(&w->columns, t.i), mps_name(&w->columns, t.j), factor * t.value);
    }
}

void put_heading(mps_writer *w, std::string_view section, std::string_view row)
{
    w->line += section;
    w->line += "  ";
    w->line += row;
    line_end(w);
}

void put_quadratic(mps_writer *w)
{
    const std::vector<quad_term> &terms = w->m->qobj;
    if (terms.empty()) return;
    if (w->quadratic == MPS_QUADRATIC_QMATRIX) {
        sink_text(w->out, "QMATRIX\n");
        put_both_triangles(w, terms, 1.0);
    } else if (w->quadratic == MPS_QUADRATIC_QSECTION) {
        put_heading(w, "QSECTION", w->objective);
        put_triangle(w, terms);
    } else {
        sink_text(w->out, "QUADOBJ\n");
        put_triangle(w, terms);
    }
}

/* QCMATRIX counts x'Qx without the half, and lists both triangles. */
void put_quadratic_row(mps_writer *w, std::string_view row, const quad_row *q)
{
    const bool is_section = w->quadratic == MPS_QUADRATIC_QSECTION;
    put_heading(w, is_section ? "QSECTION" : "QCMATRIX", row);
    if (is_section)
        put_triangle(w, q->terms);
    else
        put_both_triangles(w, q->terms, 0.5);
}

void put_quadratic_rows(mps_writer *w)
{
    for (const quad_row &q : w->m->qcon) {
        put_quadratic_row(w, mps_name(&w->rows, q.row), &q);
        const int32_t twin = twin_of(w, q.row);
        if (twin >= 0) put_quadratic_row(w, w->twin_names[static_cast<size_t>(twin)], &q);
    }
}

void make_names(mps_writer *w)
{
    const model *m = w->m;
    const size_t longest = w->is_fixed ? mps_longest_fixed_name : mps_longest_name;
    const bool has_name = mps_name_holds(m->obj_name, longest);
    w->rows.longest = w->columns.longest = longest;
    mps_names_make(&w->rows, &m->con_names, m->num_con, 'c',
                   has_name ? std::string_view(m->obj_name) : std::string_view());
    mps_names_make(&w->columns, &m->var_names, m->num_var, 'x', {});
    w->objective = has_name ? m->obj_name : mps_name_new(&w->rows, "obj");
    if (!has_name && !m->obj_name.empty())
        io_warning(w->io, 0, "the name '%s' of the objective cannot stand in an MPS file and is written as '%s'",
                   io_quote(m->obj_name).c_str(), w->objective.c_str());
    mps_names_tell(w->io, &w->rows, &w->columns);
    make_twins(w);
}

void put_head(mps_writer *w)
{
    for (const std::string &line : adjust_comment(w->io)) sink_text(w->out, "* " + line + "\n");
    std::string name = w->m->name;
    for (char &c : name)
        if (static_cast<unsigned char>(c) < ' ') c = ' ';
    sink_text(w->out, name.empty() ? "NAME" : "NAME          ");
    sink_text(w->out, name);
    sink_text(w->out, w->m->sense == ZLR_SENSE_MAX ? "\nOBJSENSE\n    MAX\n" : "\n");
}
void take_params(mps_writer *w, const param_set *params)
{
    if (params == nullptr) return;
    w->digits = param_int(params, IPAR_WRITE_DIGITS);
    w->is_fixed = param_int(params, IPAR_WRITE_MPS_LAYOUT) == MPS_LAYOUT_FIXED;
    w->keeps_sign_of_rhs = param_int(params, IPAR_WRITE_MPS_OBJECTIVE_RHS) == OBJECTIVE_RHS_KEEP;
    w->tells_integers_by_bounds = param_int(params, IPAR_WRITE_MPS_INTEGERS) == MPS_INTEGERS_BOUNDS;
    w->quadratic = param_int(params, IPAR_WRITE_MPS_QUADRATIC);
}

/* Columns of the fixed layout hold 9999999 numbered names. */
int32_t check_size(const mps_writer *w)
{
    constexpr int32_t most = 9999999;
    const int32_t num = std::max(w->m->num_con, w->m->num_var);
    if (!w->is_fixed || num <= most) return ZLR_RES_OK;
    return io_error(w->io, ZLR_RES_ERR_WRITE_FORMAT, 0,
                    "the fixed layout (WRITE_MPS_LAYOUT) has names for %d rows or columns, and there are %d", most,
                    num);
}
}  // namespace

int32_t mps_write(const io_context *io, byte_sink *out, const model *m)
{
    mps_writer w{};
    w.io = io;
    w.out = out;
    w.m = m;
    take_params(&w, io->params);
    const int32_t res = check_size(&w);
    if (res != ZLR_RES_OK) return res;
    make_names(&w);

    put_head(&w);
    put_rows(&w);
    put_columns(&w);
    put_rhs(&w);
    put_ranges(&w);
    bound_writer bounds = {&w, false};
    for (int32_t j = 0; j < m->num_var; ++j) put_bounds_of(&bounds, j);
    put_quadratic(&w);
    put_quadratic_rows(&w);
    if (w.num_rounded > 0)
        io_warning(io, 0, "numbers rounded to the 12 characters that the fixed layout has for them: %lld",
                   static_cast<long long>(w.num_rounded));
    return sink_text(out, "ENDATA\n");
}
