/* cbf_data.cpp - see cbf_reader.h: the coefficients. They come in any order, each at most once: what a second one is to
 * do, be added or take the place of the first, is for no reader to guess. */
#include "solver/io/cbf_reader.h"

#include <algorithm>
#include <cinttypes>
#include <cmath>

/* Reads entries of a vector: a number of a row or column and a value each. */
static int32_t read_vector(cbf_reader *r, const char *what, int32_t num, std::vector<double> *vector)
{
    int64_t num_entries = 0;
    int32_t res = cbf_count_line(r, "a number of entries", num, &num_entries);
    if (res != ZLR_RES_OK) return res;
    r->listed.assign(static_cast<size_t>(num), 0);
    for (int64_t k = 0; k < num_entries; k++) {
        std::string_view line;
        int32_t index = 0;
        double value = 0.0;
        res = cbf_body_line(r, "an entry", &line);
        if (res == ZLR_RES_OK) res = cbf_take_index(r, &line, what, num, &index);
        if (res == ZLR_RES_OK) res = cbf_take_value(r, &line, &value);
        if (res == ZLR_RES_OK) res = cbf_end_line(r, line);
        if (res != ZLR_RES_OK) return res;
        const auto at = static_cast<size_t>(index);
        if (r->listed[at] != 0)
            return cbf_fail(r, ZLR_RES_ERR_FILE_FORMAT, "the entry of %s %d stands twice in %s", what, index,
                            r->section);
        r->listed[at] = 1;
        (*vector)[at] = value;
    }
    return ZLR_RES_OK;
}

int32_t cbf_section_objacoord(cbf_reader *r) { return read_vector(r, "column", r->num_var, &r->m->c); }

int32_t cbf_section_bcoord(cbf_reader *r) { return read_vector(r, "row", r->num_con, &r->b); }

int32_t cbf_section_objbcoord(cbf_reader *r)
{
    std::string_view line;
    int32_t res = cbf_body_line(r, "a number", &line);
    if (res == ZLR_RES_OK) res = cbf_take_value(r, &line, &r->m->cfix);
    return res == ZLR_RES_OK ? cbf_end_line(r, line) : res;
}

/* ---- the matrix -------------------------------------------------------------------------------------------------- */

static void note_line(cbf_reader *r)
{
    const size_t entry = r->row.size();
    if (!r->runs.empty()) {
        const cbf_line_run *last = &r->runs.back();
        if (last->line + static_cast<int64_t>(entry - last->first) == r->lines.number) return;
    }
    r->runs.push_back({entry, r->lines.number});
}

static int64_t line_of(const cbf_reader *r, size_t entry)
{
    const auto behind = std::upper_bound(r->runs.begin(), r->runs.end(), entry,
                                         [](size_t k, const cbf_line_run &run) { return k < run.first; });
    const cbf_line_run *run = &*(behind - 1);
    return run->line + static_cast<int64_t>(entry - run->first);
}

static int32_t read_entry(cbf_reader *r)
{
    std::string_view line;
    int32_t i = 0;
    int32_t j = 0;
    double value = 0.0;
    int32_t res = cbf_body_line(r, "an entry", &line);
    if (res == ZLR_RES_OK) res = cbf_take_index(r, &line, "row", r->num_con, &i);
    if (res == ZLR_RES_OK) res = cbf_take_index(r, &line, "column", r->num_var, &j);
    if (res == ZLR_RES_OK) res = cbf_take_value(r, &line, &value);
    if (res == ZLR_RES_OK) res = cbf_end_line(r, line);
    if (res != ZLR_RES_OK) return res;
    note_line(r);
    r->row.push_back(i);
    r->col.push_back(j);
    r->value.push_back(value);
    return ZLR_RES_OK;
}

/* The line of the entry that is the second one of its place. */
static int32_t tell_twice(const cbf_reader *r, int32_t i, int32_t j)
{
    size_t num = 0;
    size_t k = 0;
    for (; k < r->row.size(); k++)
        if (r->row[k] == i && r->col[k] == j && ++num == 2) break;
    return io_error(r->io, ZLR_RES_ERR_FILE_FORMAT, line_of(r, k),
                    "the entry of row %d and column %d stands twice in %s", i, j, r->section);
}

/* The entries by columns, in the order of the file in each. */
static void sort_entries(const cbf_reader *r, sparse_columns *a)
{
    const auto num_var = static_cast<size_t>(r->num_var);
    std::vector<int64_t> next(num_var + 1, 0);
    for (const int32_t j : r->col) next[static_cast<size_t>(j) + 1]++;
    for (size_t j = 0; j < num_var; j++) next[j + 1] += next[j];
    a->start = next;
    a->row.resize(r->row.size());
    a->value.resize(r->row.size());
    for (size_t k = 0; k < r->row.size(); k++) {
        const auto to = static_cast<size_t>(next[static_cast<size_t>(r->col[k])]++);
        a->row[to] = r->row[k];
        a->value[to] = r->value[k];
    }
}

/* Takes out what counts as 0, and finds entries that stand twice. */
static int32_t tidy_entries(const cbf_reader *r, sparse_columns *a)
{
    std::vector<int32_t> mark(static_cast<size_t>(r->num_con), -1);
    size_t kept = 0;
    size_t k = 0;
    for (int32_t j = 0; j < r->num_var; j++) {
        const auto end = static_cast<size_t>(a->start[static_cast<size_t>(j) + 1]);
        for (; k < end; k++) {
            int32_t *last = &mark[static_cast<size_t>(a->row[k])];
            if (*last == j) return tell_twice(r, a->row[k], j);
            *last = j;
            if (a->value[k] == 0.0 || std::fabs(a->value[k]) < r->tiny) continue;
            a->row[kept] = a->row[k];
            a->value[kept++] = a->value[k];
        }
        a->start[static_cast<size_t>(j) + 1] = static_cast<int64_t>(kept);
    }
    a->row.resize(kept);
    a->value.resize(kept);
    return ZLR_RES_OK;
}

int32_t cbf_section_acoord(cbf_reader *r)
{
    /* Room for what a file of usual size has: the count is only believed as its entries come. */
    constexpr int64_t most_reserved = int64_t{1} << 20;
    int64_t num = 0;
    int32_t res = cbf_count_line(r, "a number of entries", int64_t{r->num_con} * r->num_var, &num);
    if (res != ZLR_RES_OK) return res;
    const auto room = static_cast<size_t>(std::min(num, most_reserved));
    r->row.reserve(room);
    r->col.reserve(room);
    r->value.reserve(room);
    for (int64_t k = 0; k < num && res == ZLR_RES_OK; k++) res = read_entry(r);
    if (res != ZLR_RES_OK) return res;
    sort_entries(r, &r->m->a);
    res = tidy_entries(r, &r->m->a);
    std::vector<int32_t>().swap(r->row);
    std::vector<int32_t>().swap(r->col);
    std::vector<double>().swap(r->value);
    return res;
}
