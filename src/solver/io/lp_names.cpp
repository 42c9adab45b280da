/* lp_names.cpp - names and order of columns for the LP writer. */
#include "solver/io/lp_lexer.h"
#include "solver/io/lp_words.h"
#include "solver/io/lp_writer.h"

#include <algorithm>

/* ---- names */

/* "3 e5" is a number to some readers. Before the colon of a row nothing can be mistaken. */
static bool looks_like_exponent(std::string_view name)
{
    if (name[0] != 'e' && name[0] != 'E') return false;
    return name.size() == 1 || (name[1] >= '0' && name[1] <= '9');
}

bool lp_name_can_stand(std::string_view name) { return lp_name_writable(name) && !lp_is_reserved(name); }

static bool can_write(std::string_view name, bool is_column)
{
    return lp_name_can_stand(name) && !(is_column && looks_like_exponent(name));
}

/* A table may end before the last row or column that has no name. */
static std::string_view name_or_none(const name_table *table, int32_t i)
{
    return static_cast<size_t>(i) < table->start.size() ? names_get(table, i) : std::string_view();
}

std::string lp_name_unused(const lp_names *names, std::string wish)
{
    while (name_index_find(&names->index, names->shown, wish) >= 0) wish += '_';
    return wish;
}

static void replace_names(const io_context *io, const name_table *table, int32_t num, const std::vector<int32_t> *sub,
                          bool is_columns, lp_names *names)
{
    int64_t num_lost = 0;
    std::string lost;
    std::string given;
    names->own = *table;
    names_resize(&names->own, num);
    names->shown = &names->own;
    for (const int32_t i : *sub) {
        const std::string name = lp_name_unused(names, (is_columns ? "x" : "c") + std::to_string(int64_t{i} + 1));
        const std::string_view old = name_or_none(table, i);
        if (!old.empty() && num_lost++ == 0) {
            lost = io_quote(old);
            given = name;
        }
        names_put(&names->own, i, name);
        (void)name_index_add(&names->index, &names->own, i);
    }
    if (num_lost > 0)
        io_warning(io, 0, "%lld names of %s cannot stand in an LP file and were replaced, the first, '%s', by '%s'",
                   static_cast<long long>(num_lost), is_columns ? "variables" : "constraints", lost.c_str(),
                   given.c_str());
}

void lp_names_make(const io_context *io, const name_table *table, int32_t num, bool is_columns, lp_names *names)
{
    std::vector<int32_t> replaced;
    names->shown = table;
    for (int32_t i = 0; i < num; i++)
        if (!can_write(name_or_none(table, i), is_columns) || name_index_add(&names->index, table, i) >= 0)
            replaced.push_back(i);
    if (!replaced.empty()) replace_names(io, table, num, &replaced, is_columns, names);
}

/* ---- the matrix by rows */

void lp_matrix_make(const model *m, lp_matrix *a)
{
    a->start.assign(static_cast<size_t>(m->num_con) + 1, 0);
    for (size_t k = 0; k < m->a.row.size(); k++)
        if (m->a.value[k] != 0.0) a->start[static_cast<size_t>(m->a.row[k]) + 1]++;
    for (size_t i = 1; i < a->start.size(); i++) a->start[i] += a->start[i - 1];
    a->col.resize(static_cast<size_t>(a->start.back()));
    a->value.resize(a->col.size());

    /* start[i] serves as the place of the next entry of row i, and has become start[i + 1] in the end. */
    for (int32_t col = 0; col < m->num_var; col++) {
        const auto j = static_cast<size_t>(col);
        for (auto k = static_cast<size_t>(m->a.start[j]); k < static_cast<size_t>(m->a.start[j + 1]); k++) {
            if (m->a.value[k] == 0.0) continue;
            const auto at = static_cast<size_t>(a->start[static_cast<size_t>(m->a.row[k])]++);
            a->col[at] = col;
            a->value[at] = m->a.value[k];
        }
    }
    for (size_t i = a->start.size() - 1; i > 0; i--) a->start[i] = a->start[i - 1];
    a->start[0] = 0;
}

/* ---- order of columns */

/* Follows a reader: `next` is the first column that it has not met. A column met out of turn makes the objective list
 * all columns before it. */
struct order {
    int32_t next = 0;
    int32_t listed = 0;
};

static void meet(order *o, int32_t col)
{
    if (col < o->next) return;
    if (col > o->next) o->listed = col;
    o->next = col + 1;
}

static void meet_terms(order *o, const std::vector<quad_term> *terms)
{
    for (const quad_term &term : *terms) {
        meet(o, term.j);
        meet(o, term.i);
    }
}

int32_t lp_listed_columns(const model *m, const lp_matrix *a)
{
    order o;
    for (int32_t col = 0; col < m->num_var; col++)
        if (m->c[static_cast<size_t>(col)] != 0.0) meet(&o, col);
    meet_terms(&o, &m->qobj);
    size_t quad = 0;
    for (int32_t row = 0; row < m->num_con; row++) {
        const auto i = static_cast<size_t>(row);
        for (auto k = static_cast<size_t>(a->start[i]); k < static_cast<size_t>(a->start[i + 1]); k++)
            meet(&o, a->col[k]);
        if (quad < m->qcon.size() && m->qcon[quad].row == row) meet_terms(&o, &m->qcon[quad++].terms);
    }
    return o.next < m->num_var ? m->num_var : o.listed;
}
