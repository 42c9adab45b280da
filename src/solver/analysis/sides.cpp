/* sides.cpp - see sides.h. */
#include "solver/analysis/sides.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

static void collect(const std::vector<double> &lower, const std::vector<double> &upper, bool is_row,
                    std::vector<model_side> *sides)
{
    for (size_t k = 0; k < lower.size(); k++) {
        if (std::isfinite(lower[k])) sides->push_back({is_row, false, static_cast<int32_t>(k)});
        if (std::isfinite(upper[k])) sides->push_back({is_row, true, static_cast<int32_t>(k)});
    }
}

std::vector<model_side> sides_all(const model *m)
{
    std::vector<model_side> sides;
    collect(m->con_lower, m->con_upper, true, &sides);
    collect(m->var_lower, m->var_upper, false, &sides);
    return sides;
}

std::vector<model_side> sides_of_certificate(const solution *s)
{
    std::vector<model_side> sides;
    for (size_t i = 0; i < s->slc.size(); i++) {
        if (s->slc[i] != 0.0) sides.push_back({true, false, static_cast<int32_t>(i)});
        if (s->suc[i] != 0.0) sides.push_back({true, true, static_cast<int32_t>(i)});
    }
    for (size_t j = 0; j < s->slx.size(); j++) {
        if (s->slx[j] != 0.0) sides.push_back({false, false, static_cast<int32_t>(j)});
        if (s->sux[j] != 0.0) sides.push_back({false, true, static_cast<int32_t>(j)});
    }
    return sides;
}

double side_value(const model *m, const model_side *side)
{
    const auto k = static_cast<size_t>(side->index);
    if (side->is_row) return side->is_upper ? m->con_upper[k] : m->con_lower[k];
    return side->is_upper ? m->var_upper[k] : m->var_lower[k];
}

/* ---- the part of a problem */

/* Numbers of the part for those that are marked, -1 for the others. */
static std::vector<int32_t> number(const std::vector<char> &marked, std::vector<int32_t> *whole)
{
    std::vector<int32_t> part(marked.size(), -1);
    for (size_t k = 0; k < marked.size(); k++) {
        if (marked[k] == 0) continue;
        part[k] = static_cast<int32_t>(whole->size());
        whole->push_back(static_cast<int32_t>(k));
    }
    return part;
}

static void mark_columns(const model *m, const std::vector<char> &rows, std::vector<char> *columns)
{
    for (size_t j = 0; j < columns->size(); j++)
        for (auto k = static_cast<size_t>(m->a.start[j]); k < static_cast<size_t>(m->a.start[j + 1]); k++)
            if (rows[static_cast<size_t>(m->a.row[k])] != 0) (*columns)[j] = 1;
    for (const quad_row &q : m->qcon)
        if (rows[static_cast<size_t>(q.row)] != 0)
            for (const quad_term &t : q.terms)
                (*columns)[static_cast<size_t>(t.i)] = (*columns)[static_cast<size_t>(t.j)] = 1;
}

/* A cone without some of its members says something else. A column is in one cone at most, so that one pass is enough. */
static void mark_members(const model *m, std::vector<char> *columns)
{
    const auto is_marked = [columns](int32_t j) { return (*columns)[static_cast<size_t>(j)] != 0; };
    for (const model_cone &cone : m->cones)
        if (std::any_of(cone.member.begin(), cone.member.end(), is_marked))
            for (const int32_t j : cone.member) (*columns)[static_cast<size_t>(j)] = 1;
}

static void copy_cones(const model *m, const std::vector<int32_t> &col_part, model *p)
{
    for (const model_cone &cone : m->cones) {
        model_cone part = cone;
        for (int32_t &j : part.member) j = col_part[static_cast<size_t>(j)];
        if (part.member[0] >= 0) p->cones.push_back(std::move(part)); /* all are in the part, or none is */
    }
}

static void copy_entries(const model *m, const std::vector<int32_t> &row_part, const std::vector<int32_t> &col_part,
                         const side_problem *s)
{
    model *p = s->problem.get();
    for (const int32_t j : s->col_of) {
        const auto column = static_cast<size_t>(j);
        for (auto k = static_cast<size_t>(m->a.start[column]); k < static_cast<size_t>(m->a.start[column + 1]); k++) {
            const int32_t i = row_part[static_cast<size_t>(m->a.row[k])];
            if (i < 0) continue;
            p->a.row.push_back(i);
            p->a.value.push_back(m->a.value[k]);
        }
        p->a.start.push_back(static_cast<int64_t>(p->a.row.size()));
        p->var_type.push_back(m->var_type[column]);
    }
    for (const quad_row &q : m->qcon) {
        const int32_t i = row_part[static_cast<size_t>(q.row)];
        if (i < 0) continue;
        quad_row part = {i, q.terms};
        for (quad_term &t : part.terms) {
            t.i = col_part[static_cast<size_t>(t.i)];
            t.j = col_part[static_cast<size_t>(t.j)];
        }
        p->qcon.push_back(std::move(part));
    }
}

static void copy_names(const model *m, const side_problem *s)
{
    model *p = s->problem.get();
    p->name = m->name;
    for (const int32_t i : s->row_of) names_append(&p->con_names, names_shown(&m->con_names, i, 'c'));
    for (const int32_t j : s->col_of) names_append(&p->var_names, names_shown(&m->var_names, j, 'x'));
}

/* ---- cones in disguise */

/* The heads of one row: squares of the wrong sign, and products without squares beside them. Only columns that are at least
 * 0 by their bounds can be heads, so that what rounding has left in the form does no harm. */
static void add_heads(const model *m, const quad_row *q, std::vector<side_head> *heads)
{
    const double sign = std::isfinite(m->con_upper[static_cast<size_t>(q->row)]) ? 1.0 : -1.0;
    std::vector<int32_t> square; /* terms come by (i, j): ascending */
    for (const quad_term &t : q->terms)
        if (t.i == t.j && t.value != 0.0) square.push_back(t.i);
    const auto has_square = [&square](int32_t j) { return std::binary_search(square.begin(), square.end(), j); };
    const auto add = [&](int32_t j) {
        if (m->var_lower[static_cast<size_t>(j)] >= 0.0) heads->push_back({q->row, j});
    };
    std::sort(square.begin(), square.end());
    for (const quad_term &t : q->terms) {
        if (t.i == t.j) {
            if (sign * t.value < 0.0) add(t.i);
        } else if (t.value != 0.0 && !has_square(t.i) && !has_square(t.j)) {
            add(t.i);
            add(t.j);
        }
    }
}

std::vector<side_head> sides_heads(const model *m)
{
    std::vector<side_head> heads;
    for (const quad_row &q : m->qcon) {
        const auto row = static_cast<size_t>(q.row);
        if (std::isfinite(m->con_lower[row]) != std::isfinite(m->con_upper[row])) add_heads(m, &q, &heads);
    }
    return heads;
}

void sides_hold_heads(const std::vector<side_head> &heads, model *m)
{
    for (const side_head &head : heads) {
        const auto row = static_cast<size_t>(head.row);
        double &lower = m->var_lower[static_cast<size_t>(head.column)];
        const bool has_side = std::isfinite(m->con_lower[row]) || std::isfinite(m->con_upper[row]);
        if (has_side && lower == -model_inf) lower = 0.0;
    }
}

static void copy_heads(const model *m, const std::vector<int32_t> &row_part, const std::vector<int32_t> &col_part,
                       side_problem *s)
{
    for (const side_head &head : sides_heads(m)) {
        const int32_t row = row_part[static_cast<size_t>(head.row)],
                      column = col_part[static_cast<size_t>(head.column)];
        if (row >= 0) s->heads.push_back({row, column}); /* the columns of a row come with it */
    }
    sides_hold_heads(s->heads, s->problem.get());
}

side_problem sides_problem(const model *m, const std::vector<model_side> &sides, bool with_names)
{
    side_problem s;
    std::vector<char> rows(static_cast<size_t>(m->num_con), 0), columns(static_cast<size_t>(m->num_var), 0);

    for (const model_side &side : sides) (side.is_row ? rows : columns)[static_cast<size_t>(side.index)] = 1;
    mark_columns(m, rows, &columns);
    /* Files have no place for rows where there is no column at all. */
    if (m->num_var > 0 && std::find(columns.begin(), columns.end(), 1) == columns.end()) columns[0] = 1;
    mark_members(m, &columns);
    const std::vector<int32_t> row_part = number(rows, &s.row_of), col_part = number(columns, &s.col_of);

    s.problem = std::make_shared<model>();
    model *p = s.problem.get();
    p->num_con = static_cast<int32_t>(s.row_of.size());
    p->num_var = static_cast<int32_t>(s.col_of.size());
    p->c.assign(s.col_of.size(), 0.0);
    p->con_lower.assign(s.row_of.size(), -model_inf);
    p->con_upper.assign(s.row_of.size(), model_inf);
    p->var_lower.assign(s.col_of.size(), -model_inf);
    p->var_upper.assign(s.col_of.size(), model_inf);
    copy_entries(m, row_part, col_part, &s);
    copy_cones(m, col_part, p);
    for (const model_side &side : sides) {
        const model_side part = {side.is_row, side.is_upper,
                                 (side.is_row ? row_part : col_part)[static_cast<size_t>(side.index)]};
        std::vector<double> &bounds =
            side.is_row ? (side.is_upper ? p->con_upper : p->con_lower) : (side.is_upper ? p->var_upper : p->var_lower);
        bounds[static_cast<size_t>(part.index)] = side_value(m, &side);
        s.sides.push_back(part);
    }
    copy_heads(m, row_part, col_part, &s);
    names_resize(&p->con_names, with_names ? 0 : p->num_con);
    names_resize(&p->var_names, with_names ? 0 : p->num_var);
    if (with_names) copy_names(m, &s);
    return s;
}

/* ---- texts */

std::string sides_count_text(const std::vector<model_side> &sides)
{
    size_t rows = 0;
    for (const model_side &side : sides) rows += side.is_row ? 1 : 0;
    const size_t bounds = sides.size() - rows;
    return std::to_string(rows) + (rows == 1 ? " side of a row and " : " sides of rows and ") + std::to_string(bounds) +
           (bounds == 1 ? " bound" : " bounds");
}

static std::string number_text(double value)
{
    char text[32];
    (void)std::snprintf(text, sizeof text, "%.6g", value);
    return text;
}

/* The terms of a row, as far as `width` characters go; "..." in place of the rest. Goes through the whole matrix. */
static std::string row_terms(const model *m, int32_t row, size_t width)
{
    std::string text;
    for (int32_t j = 0; j < m->num_var; j++) {
        for (auto k = static_cast<size_t>(m->a.start[static_cast<size_t>(j)]);
             k < static_cast<size_t>(m->a.start[static_cast<size_t>(j) + 1]); k++) {
            if (m->a.row[k] != row) continue;
            const double value = m->a.value[k];
            std::string term = text.empty() ? (value < 0.0 ? "-" : "") : (value < 0.0 ? " - " : " + ");
            if (std::fabs(value) != 1.0) term += number_text(std::fabs(value)) + " ";
            term += names_shown(&m->var_names, j, 'x');
            if (text.size() + term.size() + 4 > width) return text + " ...";
            text += term;
        }
    }
    const bool is_quadratic =
        std::any_of(m->qcon.begin(), m->qcon.end(), [&](const quad_row &q) { return q.row == row; });
    if (is_quadratic) text += text.empty() ? "[...]" : " + [...]";
    return text.empty() ? "0" : text;
}

/* With all its digits: sides that contradict each other can be near each other. */
static std::string side_number_text(double value)
{
    char text[32];
    for (int digits = 6; digits <= 17; digits++) {
        (void)std::snprintf(text, sizeof text, "%.*g", digits, value);
        if (std::strtod(text, nullptr) == value) break;
    }
    return text;
}

std::string side_text(const model *m, const model_side *side, size_t width)
{
    const std::string end = (side->is_upper ? " <= " : " >= ") + side_number_text(side_value(m, side));
    if (!side->is_row) return names_shown(&m->var_names, side->index, 'x') + end;
    const std::string name = names_shown(&m->con_names, side->index, 'c') + ": ";
    const size_t taken = name.size() + end.size();
    return name + row_terms(m, side->index, width > taken + 12 ? width - taken : 12) + end;
}
