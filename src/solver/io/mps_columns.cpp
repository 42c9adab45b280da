/* mps_columns.cpp - see mps_reader.h: the section COLUMNS, which is most of nearly every file.
 *
 * Entries go straight to their place in the matrix. A column that is met again after others keeps its later entries
 * aside until the section has ended. */
#include "solver/io/mps_reader.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace
{
constexpr std::string_view marker_word = "'MARKER'";

int32_t take_marker(mps_reader *r, std::string_view word)
{
    const bool opens = word == "'INTORG'";
    if (!opens && word != "'INTEND'") {
        if (word == "'SOSORG'" || word == "'SOSEND'")
            return mps_fail(r, ZLR_RES_ERR_FILE_UNSUPPORTED, "special ordered sets are not supported");
        return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found '%s' where 'INTORG' or 'INTEND' was expected",
                        io_quote(word).c_str());
    }
    if (opens == r->in_integers)
        return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found %s where the other marker was expected",
                        opens ? "'INTORG'" : "'INTEND'");
    r->in_integers = opens;
    r->column = mps_none; /* one that goes on behind the marker is found, and looked at, as an earlier one */
    return ZLR_RES_OK;
}

int32_t entry_twice(mps_reader *r, std::string_view row, std::string_view column)
{
    return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT, "the column '%s' has an entry in the row '%s' already",
                    io_quote(column).c_str(), io_quote(row).c_str());
}

/* Which column a line speaks of: the one at hand, an earlier one, or mps_none for a new one. */
int32_t find_line_column(mps_reader *r, std::string_view name, int32_t *column)
{
    if (name.empty())
        return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found a blank where the name of a column was expected");
    *column = name_index_find(&r->column_index, &r->m->var_names, name);
    if (*column == mps_none) {
        if (r->m->num_var == std::numeric_limits<int32_t>::max() - 1)
            return mps_fail(r, ZLR_RES_ERR_FILE_UNSUPPORTED, "there are more columns than can be numbered");
        return ZLR_RES_OK;
    }
    const bool was_integer = r->m->var_type[static_cast<size_t>(*column)] == ZLR_VAR_INT;
    if (was_integer != r->in_integers)
        return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT, "the column '%s' stands inside and outside of integer markers",
                        io_quote(name).c_str());
    return ZLR_RES_OK;
}

/* Where the matrix has an entry of the column at hand; the end of the matrix for one that was dropped or is kept aside. */
size_t entry_place(const mps_reader *r, int32_t row)
{
    const sparse_columns *a = &r->m->a;
    for (size_t k = a->row.size(); k > static_cast<size_t>(a->start.back()); --k)
        if (a->row[k - 1] == row) return k - 1;
    return a->row.size();
}

/* The value of an entry of the column at hand; 0 for one that was dropped or is kept aside. */
double entry_value(const mps_reader *r, int32_t row)
{
    const model *m = r->m;
    if (row == mps_objective) return m->c[static_cast<size_t>(r->column)];
    const size_t k = entry_place(r, row);
    return k < m->a.row.size() ? m->a.value[k] : 0.0;
}

double combined(const mps_reader *r, double old_value, double value)
{
    if (r->duplicates == DUPLICATES_FIRST) return old_value;
    return r->duplicates == DUPLICATES_LAST ? value : old_value + value;
}

bool is_dropped(const mps_reader *r, double value) { return value == 0.0 || std::fabs(value) < r->tiny; }

/* An entry that the column at hand has already, or had before it was dropped. */
void put_again(mps_reader *r, int32_t row, double value)
{
    model *m = r->m;
    const double sum = combined(r, entry_value(r, row), value);
    if (row == mps_objective) {
        m->c[static_cast<size_t>(r->column)] = sum;
        return;
    }
    const size_t k = entry_place(r, row);
    const bool is_there = k < m->a.row.size();
    if (is_there && is_dropped(r, sum)) {
        m->a.row.erase(m->a.row.begin() + static_cast<ptrdiff_t>(k));
        m->a.value.erase(m->a.value.begin() + static_cast<ptrdiff_t>(k));
    } else if (is_there) {
        m->a.value[k] = sum;
    } else if (!is_dropped(r, sum)) {
        m->a.row.push_back(row);
        m->a.value.push_back(sum);
    }
}

/* The last column with an entry in the row. */
int32_t last_column_of(const mps_reader *r, int32_t row)
{
    return row == mps_objective ? r->objective_mark : r->row_mark[static_cast<size_t>(row)];
}

int32_t find_pair_row(mps_reader *r, const mps_pairs *pairs, int32_t i, int32_t *row)
{
    const std::string_view name = pairs->name[i];
    if (!pairs->hashed || (r->has_objective && name == r->m->obj_name)) return mps_need_row(r, name, row);
    *row = name_index_find_hashed(&r->row_index, &r->m->con_names, name, pairs->hash[i]);
    return *row == mps_none ? mps_need_row(r, name, row) : ZLR_RES_OK; /* which tells that there is none */
}

/* Rows of the pairs. An entry that the column has already is an error, unless it only says the same again: then its row
 * becomes mps_none. Where READ_MPS_DUPLICATES takes such entries, they are dealt with when they are put. */
int32_t find_pair_rows(mps_reader *r, const mps_pairs *pairs, int32_t column, int32_t *row)
{
    for (int32_t i = 0; i < pairs->num; ++i) {
        const int32_t res = find_pair_row(r, pairs, i, &row[i]);
        if (res != ZLR_RES_OK) return res;
        if (!std::isfinite(pairs->value[i]))
            return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT,
                            "found an infinite coefficient where a finite one was expected");
        if (r->duplicates != DUPLICATES_ERROR) continue;
        const int32_t mark = last_column_of(r, row[i]);
        if (i == 1 && row[0] == row[1]) return entry_twice(r, pairs->name[i], pairs->set);
        if (column == mps_none || mark != column) continue;
        if (r->column_late || column != r->column || entry_value(r, row[i]) != pairs->value[i])
            return entry_twice(r, pairs->name[i], names_get(&r->m->var_names, column));
        row[i] = mps_none;
    }
    return ZLR_RES_OK;
}

void begin_column(mps_reader *r, std::string_view name, int32_t column)
{
    model *m = r->m;
    r->column_late = column != mps_none;
    r->column_name = name;
    if (r->column_late) {
        r->column = column;
        mps_count(&r->column_twice, name, r->lines.number);
        return;
    }
    bool is_new = false;
    r->column = name_index_intern(&r->column_index, &m->var_names, name, &is_new);
    if (m->num_var++ > 0) m->a.start.push_back(static_cast<int64_t>(m->a.row.size()));
    m->c.push_back(0.0);
    m->var_lower.push_back(0.0);
    m->var_upper.push_back(model_inf);
    m->var_type.push_back(r->in_integers ? ZLR_VAR_INT : ZLR_VAR_CONT);
}

void put_entry(mps_reader *r, int32_t row, double value)
{
    model *m = r->m;
    if (r->column_late) {
        r->late.push_back({r->column, row, value, r->lines.number});
    } else if (r->duplicates != DUPLICATES_ERROR && last_column_of(r, row) == r->column) {
        mps_count(&r->entry_again, r->column_name, r->lines.number);
        put_again(r, row, value);
    } else if (row == mps_objective) {
        m->c[static_cast<size_t>(r->column)] = value;
        r->objective_mark = r->column;
    } else {
        r->row_mark[static_cast<size_t>(row)] = r->column;
        if (is_dropped(r, value)) return;
        m->a.row.push_back(row);
        m->a.value.push_back(value);
    }
}
}  // namespace

int32_t mps_line_columns(mps_reader *r, const mps_fields *fields)
{
    const int32_t marker = fields->fixed ? 2 : 1;
    if (fields->num > marker && fields->text[marker] == marker_word)
        return take_marker(r, fields->fixed ? fields->text[4] : fields->text[2]);

    mps_pairs pairs;
    int32_t row[2] = {mps_none, mps_none};
    int32_t column = r->column;
    int32_t res = mps_take_pairs(r, fields, column != mps_none, &pairs);
    if (res != ZLR_RES_OK) return res;

    /* A line without the name of a column goes on with the one before. */
    const bool goes_on = column != mps_none && (pairs.set == r->column_name || pairs.set.empty());
    if (!goes_on && (res = find_line_column(r, pairs.set, &column)) != ZLR_RES_OK) return res;
    if ((res = find_pair_rows(r, &pairs, column, row)) != ZLR_RES_OK) return res;

    if (!goes_on) begin_column(r, pairs.set, column);
    for (int32_t i = 0; i < pairs.num && i < 2; ++i) {
        if (row[i] == mps_none)
            mps_count(&r->entry_twice, r->column_name, r->lines.number);
        else
            put_entry(r, row[i], pairs.value[i]);
    }
    return ZLR_RES_OK;
}

/* ---- Columns in several places ------------------------------------------------------------------------------------- */

namespace
{
int32_t late_twice(mps_reader *r, const mps_late_entry *entry)
{
    const std::string_view row =
        entry->row == mps_objective ? std::string_view(r->m->obj_name) : names_get(&r->m->con_names, entry->row);
    const int32_t res = entry_twice(r, row, names_get(&r->m->var_names, entry->column));
    return mps_tell(r, res, entry->line);
}

/* A late entry that the column has already. `old_value` may be that of an entry of any place. */
int32_t merge_again(mps_reader *r, const mps_late_entry *e, double *old_value)
{
    if (r->duplicates == DUPLICATES_ERROR) return late_twice(r, e);
    mps_count(&r->entry_again, names_get(&r->m->var_names, e->column), e->line);
    *old_value = combined(r, *old_value, e->value);
    return ZLR_RES_OK;
}

/* The entry of a row among those of the last column of `to`; there is one. */
double *merged_value(sparse_columns *to, int32_t row)
{
    const auto at = std::find(to->row.rbegin(), to->row.rend(), row);
    return &to->value[static_cast<size_t>(to->row.rend() - at) - 1];
}

/* Entries of the last column of `to` that are too small to stay, with those that came to be so. */
void drop_merged(const mps_reader *r, size_t begin, sparse_columns *to)
{
    size_t kept = begin;
    for (size_t k = begin; k < to->row.size(); ++k) {
        if (is_dropped(r, to->value[k])) continue;
        to->row[kept] = to->row[k];
        to->value[kept++] = to->value[k];
    }
    to->row.resize(kept);
    to->value.resize(kept);
}

/* Puts the late entries of one column behind its others. */
int32_t merge_column(mps_reader *r, const mps_late_entry *first, const mps_late_entry *last, sparse_columns *to)
{
    const int32_t column = first->column;
    const auto begin = static_cast<size_t>(to->start[static_cast<size_t>(column)]);
    double *cost = &r->m->c[static_cast<size_t>(column)];
    for (size_t k = begin; k < to->row.size(); ++k) r->row_mark[static_cast<size_t>(to->row[k])] = column;
    for (const mps_late_entry *e = first; e != last; ++e) {
        int32_t res = ZLR_RES_OK;
        if (e->row == mps_objective) {
            if (*cost != 0.0)
                res = merge_again(r, e, cost);
            else
                *cost = e->value;
        } else if (r->row_mark[static_cast<size_t>(e->row)] == column) {
            res = merge_again(r, e, merged_value(to, e->row));
        } else {
            r->row_mark[static_cast<size_t>(e->row)] = column;
            to->row.push_back(e->row);
            to->value.push_back(e->value);
        }
        if (res != ZLR_RES_OK) return res;
    }
    drop_merged(r, begin, to);
    return ZLR_RES_OK;
}

int32_t merge_late(mps_reader *r)
{
    const sparse_columns *from = &r->m->a;
    sparse_columns to;
    std::stable_sort(r->late.begin(), r->late.end(),
                     [](const mps_late_entry &a, const mps_late_entry &b) { return a.column < b.column; });
    std::fill(r->row_mark.begin(), r->row_mark.end(), mps_none);
    to.start.reserve(from->start.size());
    to.row.reserve(from->row.size() + r->late.size());
    to.value.reserve(from->row.size() + r->late.size());

    const mps_late_entry *next = r->late.data();
    const mps_late_entry *end = next + r->late.size();
    for (int32_t j = 0; j < r->m->num_var; ++j) {
        const int64_t begin_j = from->start[static_cast<size_t>(j)];
        const int64_t end_j = from->start[static_cast<size_t>(j) + 1];
        to.row.insert(to.row.end(), from->row.begin() + begin_j, from->row.begin() + end_j);
        to.value.insert(to.value.end(), from->value.begin() + begin_j, from->value.begin() + end_j);
        const mps_late_entry *last = next;
        while (last != end && last->column == j) ++last;
        const int32_t res = last == next ? ZLR_RES_OK : merge_column(r, next, last, &to);
        if (res != ZLR_RES_OK) return res;
        next = last;
        to.start.push_back(static_cast<int64_t>(to.row.size()));
    }
    r->m->a = std::move(to);
    return ZLR_RES_OK;
}
}  // namespace

int32_t mps_end_columns(mps_reader *r)
{
    model *m = r->m;
    if (m->num_var > 0) m->a.start.push_back(static_cast<int64_t>(m->a.row.size()));
    r->bound_given.assign(static_cast<size_t>(m->num_var), 0);
    return r->late.empty() ? ZLR_RES_OK : merge_late(r);
}
