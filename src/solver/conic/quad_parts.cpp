/* quad_parts.cpp - see quad_parts.h. The signs and factors are in quad_sign.cpp and quad_factor.cpp. */
#include "solver/conic/quad_parts.h"

#include <algorithm>
#include <cmath>
#include <numeric>

static int32_t root_of(std::vector<int32_t> *parent, int32_t i)
{
    auto at = [&](int32_t k) -> int32_t & { return (*parent)[static_cast<size_t>(k)]; };
    while (at(i) != i) i = at(i) = at(at(i));
    return i;
}

/* The terms that are not 0, counting within the columns that they name. */
static std::vector<quad_term> local_terms(const std::vector<quad_term> &terms, std::vector<int32_t> *columns)
{
    std::vector<quad_term> local;
    local.reserve(terms.size());
    for (const quad_term &t : terms) {
        if (t.value == 0.0) continue;
        columns->push_back(t.i);
        if (t.j != t.i) columns->push_back(t.j);
        local.push_back(t);
    }
    if (!std::is_sorted(columns->begin(), columns->end())) std::sort(columns->begin(), columns->end());
    columns->erase(std::unique(columns->begin(), columns->end()), columns->end());
    const auto number = [&](int32_t j) {
        return static_cast<int32_t>(std::lower_bound(columns->begin(), columns->end(), j) - columns->begin());
    };
    for (quad_term &t : local) {
        const bool same = t.i == t.j;
        t.i = number(t.i);
        t.j = same ? t.i : number(t.j);
    }
    return local;
}

/* The part of each column, parts numbered by their first columns. Joining towards the smaller number makes that the
 * root. */
static std::vector<int32_t> part_numbers(size_t num, const std::vector<quad_term> &terms, int32_t *num_parts)
{
    std::vector<int32_t> parent(num);
    std::iota(parent.begin(), parent.end(), 0);
    for (const quad_term &t : terms) {
        if (t.i == t.j) continue;
        const int32_t a = root_of(&parent, t.i), b = root_of(&parent, t.j);
        parent[static_cast<size_t>(std::max(a, b))] = std::min(a, b);
    }
    std::vector<int32_t> part(num);
    *num_parts = 0;
    for (size_t i = 0; i < num; i++) {
        const int32_t root = root_of(&parent, static_cast<int32_t>(i));
        part[i] = root == static_cast<int32_t>(i) ? (*num_parts)++ : part[static_cast<size_t>(root)];
    }
    return part;
}

/* Sorting and two counting sorts, by the term. */
static constexpr double split_steps = 180.0;

quad_parts quad_split(const std::vector<quad_term> &terms, work_effort *effort, double tolerance)
{
    quad_parts out;
    out.tolerance = tolerance;
    if (!effort_take(effort, split_steps * static_cast<double>(terms.size()))) return out;
    out.is_finite = std::all_of(terms.begin(), terms.end(), [](const quad_term &t) { return std::isfinite(t.value); });
    if (!out.is_finite) return out;

    std::vector<int32_t> columns;
    const std::vector<quad_term> local = local_terms(terms, &columns);
    int32_t num_parts = 0;
    const std::vector<int32_t> part = part_numbers(columns.size(), local, &num_parts);

    /* Counting sorts of columns and terms by part; `place` becomes the number of a column within its part. */
    const auto ends = static_cast<size_t>(num_parts) + 1;
    out.first.assign(ends, 0);
    out.first_term.assign(ends, 0);
    for (const int32_t p : part) out.first[static_cast<size_t>(p) + 1]++;
    for (const quad_term &t : local) out.first_term[static_cast<size_t>(part[static_cast<size_t>(t.i)]) + 1]++;
    std::partial_sum(out.first.begin(), out.first.end(), out.first.begin());
    std::partial_sum(out.first_term.begin(), out.first_term.end(), out.first_term.begin());

    std::vector<int32_t> place(columns.size()), next(out.first.begin(), out.first.end() - 1);
    out.column.resize(columns.size());
    for (size_t i = 0; i < columns.size(); i++) {
        const auto p = static_cast<size_t>(part[i]);
        place[i] = next[p] - out.first[p];
        out.column[static_cast<size_t>(next[p]++)] = columns[i];
    }
    std::vector<int64_t> next_term(out.first_term.begin(), out.first_term.end() - 1);
    out.term.resize(local.size());
    for (const quad_term &t : local) {
        const int32_t a = place[static_cast<size_t>(t.i)], b = place[static_cast<size_t>(t.j)];
        const auto p = static_cast<size_t>(part[static_cast<size_t>(t.i)]);
        out.term[static_cast<size_t>(next_term[p]++)] = {std::max(a, b), std::min(a, b), t.value};
    }
    return out;
}

quad_part quad_part_at(const quad_parts *parts, int32_t p)
{
    const auto at = static_cast<size_t>(p);
    const int32_t begin = parts->first[at];
    const int64_t term = parts->first_term[at];
    return {parts->column.data() + begin, parts->first[at + 1] - begin, parts->term.data() + term,
            parts->first_term[at + 1] - term, parts->tolerance};
}
