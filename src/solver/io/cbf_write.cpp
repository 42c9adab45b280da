/* cbf_write.cpp - writes a model in version 1 of the Conic Benchmark Format, which has all that a model without
 * quadratic terms needs and which every reader knows.
 *
 * Columns and rows keep their numbers. What the format has no place for becomes rows behind the model's own, in this
 * order: upper sides of rows that have two, bounds that are neither 0 nor infinite (and those of columns in a cone),
 * and the members of cones that do not stand side by side as columns. */
#include "solver/io/adjust.h"
#include "solver/io/cbf.h"
#include "solver/io/number.h"

#include <algorithm>
#include <charconv>
#include <cmath>

/* A row that is a single column and a constant. */
struct column_row {
    int32_t col;
    cbf_cone cone;
    double side;
};

struct cbf_writer {
    byte_sink *out;
    const model *m;
    std::vector<const model_cone *> begun; /* by column: the cone whose block in VAR begins there */
    std::vector<int32_t> two_sided;        /* rows */
    std::vector<column_row> extra;
    std::vector<cbf_block> var_blocks, con_blocks;
    std::string line;
    int32_t digits;
};

/* ---- lines ------------------------------------------------------------------------------------------------------- */

static void line_int(cbf_writer *w, int64_t value)
{
    char text[24];
    const std::to_chars_result result = std::to_chars(text, text + sizeof text, value);
    w->line.append(text, static_cast<size_t>(result.ptr - text));
    w->line += ' ';
}

/* Ends the line with a number. */
static void line_value(cbf_writer *w, double value)
{
    char text[number_room];
    w->line.append(text, number_write(text, value, w->digits));
    w->line += '\n';
    sink_text(w->out, w->line);
    w->line.clear();
}

static void put_section(cbf_writer *w, const char *word)
{
    sink_text(w->out, "\n");
    sink_text(w->out, word);
    sink_text(w->out, "\n");
}

static void put_count(cbf_writer *w, int64_t num)
{
    sink_int(w->out, num);
    sink_text(w->out, "\n");
}

/* ---- what goes where --------------------------------------------------------------------------------------------- */

/* `merges`: linear cones that follow each other are one; quadratic ones are not. */
static void add_block(std::vector<cbf_block> *blocks, cbf_cone cone, int32_t size, bool merges)
{
    if (merges && !blocks->empty() && blocks->back().cone == cone)
        blocks->back().size += size;
    else
        blocks->push_back({cone, size});
}

static bool stands_side_by_side(const model_cone *cone)
{
    for (size_t k = 1; k < cone->member.size(); k++)
        if (cone->member[k] != cone->member[k - 1] + 1) return false;
    return true;
}

static cbf_cone cone_word(const model_cone *cone)
{
    return cone->type == ZLR_CT_QUAD ? cbf_cone::quad : cbf_cone::rquad;
}

/* Bounds of a column that are not said by its place in VAR. */
static void add_bound_rows(cbf_writer *w, int32_t j, bool lower_said, bool upper_said)
{
    const double lower = w->m->var_lower[static_cast<size_t>(j)];
    const double upper = w->m->var_upper[static_cast<size_t>(j)];
    if (lower == upper && !lower_said && !upper_said) {
        w->extra.push_back({j, cbf_cone::zero, lower});
        return;
    }
    if (lower != -model_inf && !lower_said) w->extra.push_back({j, cbf_cone::plus, lower});
    if (upper != model_inf && !upper_said) w->extra.push_back({j, cbf_cone::minus, upper});
}

static void place_column(cbf_writer *w, int32_t j)
{
    const double lower = w->m->var_lower[static_cast<size_t>(j)];
    const double upper = w->m->var_upper[static_cast<size_t>(j)];
    const bool is_lower = lower == 0.0;
    const bool is_upper = upper == 0.0;
    const cbf_cone cone = is_lower && is_upper ? cbf_cone::zero
                          : is_lower           ? cbf_cone::plus
                          : is_upper           ? cbf_cone::minus
                                               : cbf_cone::free;
    add_block(&w->var_blocks, cone, 1, true);
    add_bound_rows(w, j, is_lower, is_upper);
}

/* That a head is at least 0 is part of the cone. */
static void place_cone(cbf_writer *w, const model_cone *cone)
{
    const size_t heads = cone_num_heads(cone->type);
    add_block(&w->var_blocks, cone_word(cone), static_cast<int32_t>(cone->member.size()), false);
    for (size_t k = 0; k < cone->member.size(); k++) {
        const int32_t j = cone->member[k];
        add_bound_rows(w, j, k < heads && w->m->var_lower[static_cast<size_t>(j)] <= 0.0, false);
    }
}

static void place_columns(cbf_writer *w)
{
    const model *m = w->m;
    w->begun.assign(static_cast<size_t>(m->num_var), nullptr);
    for (const model_cone &cone : m->cones)
        if (stands_side_by_side(&cone)) w->begun[static_cast<size_t>(cone.member[0])] = &cone;
    for (int32_t j = 0; j < m->num_var;) {
        const model_cone *cone = w->begun[static_cast<size_t>(j)];
        if (cone != nullptr)
            place_cone(w, cone);
        else
            place_column(w, j);
        j += cone != nullptr ? static_cast<int32_t>(cone->member.size()) : 1;
    }
}

/* What a row is with its lower side, where it has two that differ. */
static cbf_cone row_cone(const model *m, int32_t i)
{
    const double lower = m->con_lower[static_cast<size_t>(i)];
    const double upper = m->con_upper[static_cast<size_t>(i)];
    if (lower == upper) return cbf_cone::zero;
    if (lower != -model_inf) return cbf_cone::plus;
    return upper != model_inf ? cbf_cone::minus : cbf_cone::free;
}

static void place_rows(cbf_writer *w)
{
    const model *m = w->m;
    for (int32_t i = 0; i < m->num_con; i++) {
        const cbf_cone cone = row_cone(m, i);
        add_block(&w->con_blocks, cone, 1, true);
        if (cone == cbf_cone::plus && m->con_upper[static_cast<size_t>(i)] != model_inf) w->two_sided.push_back(i);
    }
    if (!w->two_sided.empty())
        add_block(&w->con_blocks, cbf_cone::minus, static_cast<int32_t>(w->two_sided.size()), true);
    for (const column_row &row : w->extra) add_block(&w->con_blocks, row.cone, 1, true);
    for (const model_cone &cone : m->cones) {
        if (stands_side_by_side(&cone)) continue;
        add_block(&w->con_blocks, cone_word(&cone), static_cast<int32_t>(cone.member.size()), false);
        for (const int32_t j : cone.member) w->extra.push_back({j, cone_word(&cone), 0.0});
    }
}

/* ---- sections ---------------------------------------------------------------------------------------------------- */

static void put_blocks(cbf_writer *w, const char *section, const std::vector<cbf_block> &blocks)
{
    int64_t total = 0;
    for (const cbf_block &block : blocks) total += block.size;
    put_section(w, section);
    w->line = std::to_string(total) + ' ' + std::to_string(blocks.size()) + '\n';
    for (const cbf_block &block : blocks) {
        w->line += cbf_cone_table[static_cast<size_t>(block.cone)].word;
        w->line += ' ' + std::to_string(block.size) + '\n';
        sink_text(w->out, w->line);
        w->line.clear();
    }
    sink_text(w->out, w->line); /* the first line, where there is no block */
    w->line.clear();
}

static void put_integers(cbf_writer *w)
{
    const int32_t num = model_num_int(w->m);
    if (num == 0) return;
    put_section(w, "INT");
    put_count(w, num);
    for (int32_t j = 0; j < w->m->num_var; j++)
        if (w->m->var_type[static_cast<size_t>(j)] == ZLR_VAR_INT) put_count(w, j);
}

static void put_objective(cbf_writer *w)
{
    const model *m = w->m;
    const auto num = static_cast<int64_t>(m->c.size()) - std::count(m->c.begin(), m->c.end(), 0.0);
    if (num > 0) {
        put_section(w, "OBJACOORD");
        put_count(w, num);
        for (size_t j = 0; j < m->c.size(); j++) {
            if (m->c[j] == 0.0) continue;
            line_int(w, static_cast<int64_t>(j));
            line_value(w, m->c[j]);
        }
    }
    if (m->cfix == 0.0) return;
    put_section(w, "OBJBCOORD");
    line_value(w, m->cfix);
}

static void put_entry(cbf_writer *w, int64_t row, int64_t col, double value)
{
    line_int(w, row);
    line_int(w, col);
    line_value(w, value);
}

/* The number of the row of the upper sides for each row that has one of its own; -1 for the others. */
static std::vector<int32_t> second_rows(const cbf_writer *w)
{
    std::vector<int32_t> second;
    if (w->two_sided.empty()) return second;
    second.assign(static_cast<size_t>(w->m->num_con), -1);
    for (size_t k = 0; k < w->two_sided.size(); k++)
        second[static_cast<size_t>(w->two_sided[k])] = w->m->num_con + static_cast<int32_t>(k);
    return second;
}

static void put_matrix(cbf_writer *w)
{
    const sparse_columns *a = &w->m->a;
    const std::vector<int32_t> second = second_rows(w);
    auto num = static_cast<int64_t>(w->extra.size());
    for (size_t k = 0; k < a->row.size(); k++)
        if (a->value[k] != 0.0) num += !second.empty() && second[static_cast<size_t>(a->row[k])] >= 0 ? 2 : 1;
    if (num == 0) return;

    put_section(w, "ACOORD");
    put_count(w, num);
    for (int32_t j = 0; j < w->m->num_var; j++) {
        const auto end = static_cast<size_t>(a->start[static_cast<size_t>(j) + 1]);
        for (auto k = static_cast<size_t>(a->start[static_cast<size_t>(j)]); k < end; k++) {
            if (a->value[k] == 0.0) continue;
            put_entry(w, a->row[k], j, a->value[k]);
            const int32_t other = second.empty() ? -1 : second[static_cast<size_t>(a->row[k])];
            if (other >= 0) put_entry(w, other, j, a->value[k]);
        }
    }
    int64_t row = w->m->num_con + static_cast<int64_t>(w->two_sided.size());
    for (const column_row &each : w->extra) put_entry(w, row++, each.col, 1.0);
}

/* What is added to each row: its side with the sign turned. */
static std::vector<double> constants(const cbf_writer *w)
{
    const model *m = w->m;
    std::vector<double> b;
    b.reserve(static_cast<size_t>(m->num_con) + w->two_sided.size() + w->extra.size());
    for (int32_t i = 0; i < m->num_con; i++) {
        const cbf_cone cone = row_cone(m, i);
        const auto at = static_cast<size_t>(i);
        b.push_back(cone == cbf_cone::free ? 0.0 : -(cone == cbf_cone::minus ? m->con_upper : m->con_lower)[at]);
    }
    for (const int32_t i : w->two_sided) b.push_back(-m->con_upper[static_cast<size_t>(i)]);
    for (const column_row &row : w->extra) b.push_back(-row.side);
    return b;
}

static void put_constants(cbf_writer *w)
{
    const std::vector<double> b = constants(w);
    const auto num = static_cast<int64_t>(b.size()) - std::count(b.begin(), b.end(), 0.0);
    if (num == 0) return;
    put_section(w, "BCOORD");
    put_count(w, num);
    for (size_t i = 0; i < b.size(); i++) {
        if (b[i] == 0.0) continue;
        line_int(w, static_cast<int64_t>(i));
        line_value(w, b[i]);
    }
}

/* ---- the file ---------------------------------------------------------------------------------------------------- */

/* "c12", and "c12_cone" for the columns that the reader makes of rows in cones. */
static bool is_made_name(std::string_view name, char prefix)
{
    if (name.empty()) return true;
    if (name.ends_with("_cone")) name.remove_suffix(5);
    return name.size() > 1 && (name[0] == prefix || name[0] == 'c') &&
           name.substr(1).find_first_not_of("0123456789") == std::string_view::npos;
}

static bool has_own_name(const name_table *names, int32_t num, char prefix)
{
    for (int32_t i = 0; i < num; i++)
        if (!is_made_name(names_get(names, i), prefix)) return true;
    return false;
}

static void tell_names(const io_context *io, const model *m)
{
    if (!has_own_name(&m->con_names, m->num_con, 'c') && !has_own_name(&m->var_names, m->num_var, 'x')) return;
    io_warning(io, 0, "the format holds no names: rows and columns are numbered in the problem's order");
}

int32_t cbf_write(const io_context *io, byte_sink *out, const model *m)
{
    cbf_writer w{};
    w.out = out;
    w.m = m;
    w.digits = io_digits(io);
    tell_names(io, m);
    place_columns(&w);
    place_rows(&w);

    for (const std::string &line : adjust_comment(io)) sink_text(out, "# " + line + "\n");
    sink_text(out, "VER\n1\n");
    put_section(&w, "OBJSENSE");
    sink_text(out, m->sense == ZLR_SENSE_MAX ? "MAX\n" : "MIN\n");
    put_blocks(&w, "VAR", w.var_blocks);
    put_integers(&w);
    if (!w.con_blocks.empty()) put_blocks(&w, "CON", w.con_blocks);
    put_objective(&w);
    put_matrix(&w);
    put_constants(&w);
    return sink_text(out, "");
}
