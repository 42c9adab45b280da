/* mps_quad.cpp - see mps_reader.h: quadratic sections.
 *
 *   QUADOBJ           objective, x'Qx/2, one triangle of Q (either)
 *   QSECTION name     the same, of the objective or of a row
 *   QMATRIX           objective, x'Qx/2, all of Q
 *   QCMATRIX name     a row, x'Qx without the half, all of Q
 *
 * Entries are gathered until the section has ended: only then can it be seen whether Q is symmetric. */
#include "solver/io/mps_reader.h"

#include <algorithm>
#include <cmath>

namespace
{
bool holds_all_of_q(mps_section section) { return section == mps_section::qmatrix || section == mps_section::qcmatrix; }

const char *section_name(mps_section section)
{
    switch (section) {
    case mps_section::quadobj: return "QUADOBJ";
    case mps_section::qsection: return "QSECTION";
    case mps_section::qmatrix: return "QMATRIX";
    default: return "QCMATRIX";
    }
}

size_t qcon_place(const model *m, int32_t row)
{
    const auto at = std::lower_bound(m->qcon.begin(), m->qcon.end(), row,
                                     [](const quad_row &q, int32_t number) { return q.row < number; });
    return static_cast<size_t>(at - m->qcon.begin());
}

bool has_quad(const model *m, int32_t row)
{
    if (row == mps_objective) return !m->qobj.empty();
    const size_t at = qcon_place(m, row);
    return at < m->qcon.size() && m->qcon[at].row == row;
}
}  // namespace

int32_t mps_begin_quad(mps_reader *r, std::string_view row_name)
{
    r->quad_row = mps_objective;
    r->quad.clear();
    if (r->section == mps_section::qcmatrix || (r->section == mps_section::qsection && !row_name.empty())) {
        if (row_name.empty())
            return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT,
                            "found the end of the line where the name of a row was expected");
        const int32_t res = mps_need_row(r, row_name, &r->quad_row);
        if (res != ZLR_RES_OK) return res;
        if (r->section == mps_section::qcmatrix && r->quad_row == mps_objective)
            return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT,
                            "found the objective '%s' where the name of a constraint was expected",
                            io_quote(row_name).c_str());
    }
    if (has_quad(r->m, r->quad_row))
        return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT, "the row '%s' has a quadratic part already",
                        io_quote(r->quad_row == mps_objective ? r->m->obj_name : row_name).c_str());
    return ZLR_RES_OK;
}

int32_t mps_line_quad(mps_reader *r, const mps_fields *fields)
{
    const int32_t first = fields->fixed ? 1 : 0;
    const int32_t num = mps_before_comment(fields, 3);
    double value = 0.0;
    int32_t i = mps_none;
    int32_t j = mps_none;
    if (num < first + 3)
        return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT,
                        "found the end of the line where two columns and a number were expected");
    if (num > first + 3)
        return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found '%s' where the end of the line was expected",
                        io_quote(fields->text[first + 3]).c_str());
    int32_t res = mps_need_column(r, fields->text[first], &i);
    if (res == ZLR_RES_OK) res = mps_need_column(r, fields->text[first + 1], &j);
    if (res == ZLR_RES_OK) res = mps_take_number(r, fields->text[first + 2], &value);
    if (res != ZLR_RES_OK) return res;
    if (!std::isfinite(value))
        return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found an infinite coefficient where a finite one was expected");
    r->quad.push_back({i, j, value, r->lines.number});
    return ZLR_RES_OK;
}

namespace
{
bool entry_before(const mps_quad_entry &a, const mps_quad_entry &b)
{
    const int32_t a_high = std::max(a.i, a.j);
    const int32_t b_high = std::max(b.i, b.j);
    return a_high != b_high ? a_high < b_high : std::min(a.i, a.j) < std::min(b.i, b.j);
}

int32_t bad_entry(mps_reader *r, const mps_quad_entry *e, const char *what)
{
    const std::string first = io_quote(names_get(&r->m->var_names, e->i));
    const std::string second = io_quote(names_get(&r->m->var_names, e->j));
    return io_error(r->io, ZLR_RES_ERR_FILE_FORMAT, e->line, "the entry of '%s' and '%s' in %s %s", first.c_str(),
                    second.c_str(), section_name(r->section), what);
}

/* Whether the entries of one place off the diagonal stand in both triangles. */
bool in_both_triangles(const mps_quad_entry *e, size_t num)
{
    return std::any_of(e + 1, e + num, [e](const mps_quad_entry &other) { return other.i != e->i; });
}

/* Puts the entries of one place of the lower triangle together. A section that holds one triangle may list an entry
 * several times, a few of them in the other triangle: they add up, which the files that do so rely on. One that holds
 * all of Q has every entry off the diagonal twice. */
int32_t merge_group(mps_reader *r, const mps_quad_entry *e, size_t num, double *value)
{
    *value = e->value;
    if (!holds_all_of_q(r->section)) {
        for (size_t k = 1; k < num; ++k) {
            *value += e[k].value;
            mps_tally *tally = e[k].i == e->i ? &r->quad_twice : &r->quad_both;
            mps_count(tally, names_get(&r->m->var_names, e[k].i), e[k].line);
        }
        return ZLR_RES_OK;
    }
    const size_t expected = e->i == e->j ? 1 : 2;
    if (num < expected) return bad_entry(r, e, "has no mirror image where both triangles were expected");
    if (num > expected) return bad_entry(r, &e[expected], "stands twice");
    if (num == 2 && e[0].i == e[1].i) return bad_entry(r, &e[1], "stands twice");
    if (num == 2 && e[0].value != e[1].value) return bad_entry(r, &e[1], "differs from its mirror image");
    return ZLR_RES_OK;
}

/* A section that gives both triangles of Q throughout is meant as all of it: added up, every entry off the diagonal would
 * count twice. Returns the first such entry; null if a place stands in one triangle, or there is none off the diagonal.
 */
const mps_quad_entry *all_stand_in_both(const std::vector<mps_quad_entry> &sorted)
{
    const mps_quad_entry *first = nullptr;
    for (size_t k = 0, num = 0; k < sorted.size(); k += num) {
        const mps_quad_entry *e = &sorted[k];
        for (num = 1; k + num < sorted.size() && !entry_before(*e, e[num]);) ++num;
        if (e->i == e->j) continue;
        if (!in_both_triangles(e, num)) return nullptr;
        if (first == nullptr) first = e;
    }
    return first;
}

void keep_terms(mps_reader *r, std::vector<quad_term> *terms)
{
    model *m = r->m;
    if (r->quad_row == mps_objective) {
        m->qobj.swap(*terms);
    } else if (!terms->empty()) {
        const auto at = m->qcon.begin() + static_cast<ptrdiff_t>(qcon_place(m, r->quad_row));
        m->qcon.insert(at, {r->quad_row, std::move(*terms)});
    }
}
}  // namespace

int32_t mps_end_quad(mps_reader *r)
{
    std::vector<quad_term> terms;
    const double factor = r->section == mps_section::qcmatrix ? 2.0 : 1.0;
    if (!std::is_sorted(r->quad.begin(), r->quad.end(), entry_before))
        std::stable_sort(r->quad.begin(), r->quad.end(), entry_before);
    const mps_quad_entry *twice = all_stand_in_both(r->quad);
    if (twice != nullptr && !holds_all_of_q(r->section))
        return bad_entry(r, twice,
                         "stands in both triangles, as all the others off the diagonal do, where one triangle was "
                         "expected: QMATRIX and QCMATRIX are for all of Q");

    for (size_t k = 0; k < r->quad.size();) {
        const mps_quad_entry *e = &r->quad[k];
        size_t num = 1;
        while (k + num < r->quad.size() && !entry_before(*e, e[num])) ++num;
        double value = 0.0;
        const int32_t res = merge_group(r, e, num, &value);
        if (res != ZLR_RES_OK) return res;
        if (value != 0.0) terms.push_back({std::max(e->i, e->j), std::min(e->i, e->j), factor * value});
        k += num;
    }
    std::vector<mps_quad_entry>().swap(r->quad);
    keep_terms(r, &terms);
    return ZLR_RES_OK;
}
