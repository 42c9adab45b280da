/* problem_parallel.cpp - see problem_facts.h. Rows and columns that are multiples of an earlier one. Each line of the
 * matrix is divided by its pivot, the entry with the lowest index, and hashed; lines with the same hash are compared
 * entry by entry. So the time is linear, however many lines are alike. */
#include "solver/analysis/problem_facts.h"

#include <algorithm>
#include <bit>
#include <cmath>

/* The lines of a matrix by rows or by columns. */
struct line_set {
    const std::vector<int64_t> *start;
    const std::vector<int32_t> *index;
    const std::vector<double> *value;
    std::vector<uint8_t> takes_part;
    std::vector<double> pivot;
    std::vector<uint64_t> hash;
};

static size_t line_begin(const line_set *set, size_t line) { return static_cast<size_t>((*set->start)[line]); }

static size_t line_end(const line_set *set, size_t line) { return static_cast<size_t>((*set->start)[line + 1]); }

static uint64_t mix(uint64_t value)
{
    constexpr uint64_t factor = 0x9e3779b97f4a7c15U;
    value = (value ^ (value >> 32U)) * factor;
    value = (value ^ (value >> 29U)) * factor;
    return value ^ (value >> 32U);
}

/* Added up over the entries, so that their order does not matter. Quotients go in as floats: the quotient of multiples
 * may differ in the last bits of a double. */
static void hash_line(line_set *set, size_t line)
{
    int32_t least = INT32_MAX;
    uint64_t hash = 0;
    double pivot = 0.0;

    for (size_t k = line_begin(set, line); k < line_end(set, line); k++) {
        if ((*set->index)[k] >= least || (*set->value)[k] == 0.0) continue;
        least = (*set->index)[k];
        pivot = (*set->value)[k];
    }
    for (size_t k = line_begin(set, line); k < line_end(set, line); k++) {
        if ((*set->value)[k] == 0.0) continue;
        const auto quotient = static_cast<float>((*set->value)[k] / pivot);
        const auto index = static_cast<uint64_t>(static_cast<uint32_t>((*set->index)[k]));
        hash += mix(index << 32U | std::bit_cast<uint32_t>(quotient));
    }
    set->pivot[line] = pivot;
    set->hash[line] = hash;
}

/* Lists of lines with the same hash: the first of each, and behind each line the next one of its list, -1 at the end. */
struct line_lists {
    std::vector<int32_t> first, next;
};

static line_lists gather(const line_set *set)
{
    const size_t num = set->hash.size();
    const size_t num_slots = std::bit_ceil(2 * num + 2);
    std::vector<int32_t> slots(num_slots, -1); /* first line of a list */
    std::vector<int32_t> last(num, -1);        /* by first line */
    line_lists lists;

    lists.next.assign(num, -1);
    for (size_t line = 0; line < num; line++) {
        if (set->takes_part[line] == 0) continue;
        const auto number = static_cast<int32_t>(line);
        size_t at = set->hash[line] & (num_slots - 1);
        while (slots[at] >= 0 && set->hash[static_cast<size_t>(slots[at])] != set->hash[line])
            at = (at + 1) & (num_slots - 1);
        if (slots[at] < 0) {
            slots[at] = last[line] = number;
            continue;
        }
        const auto first = static_cast<size_t>(slots[at]);
        if (last[first] == slots[at]) lists.first.push_back(slots[at]);
        lists.next[static_cast<size_t>(last[first])] = number;
        last[first] = number;
    }
    return lists;
}

/* Whether the entries of a line, by its pivot, are those that stand in `work`. */
static bool is_multiple(const line_set *set, size_t line, const std::vector<double> *work, int64_t num)
{
    constexpr double few_roundings = 1e-15;
    int64_t found = 0;
    for (size_t k = line_begin(set, line); k < line_end(set, line); k++) {
        if ((*set->value)[k] == 0.0) continue;
        const double quotient = (*set->value)[k] / set->pivot[line];
        const double wanted = (*work)[static_cast<size_t>((*set->index)[k])];
        if (!(std::fabs(quotient - wanted) <= few_roundings * std::fabs(wanted)) || wanted == 0.0) return false;
        found++;
    }
    return found == num;
}

/* Splits a list into groups of multiples and hands over each group of two and more. Lines of the same hash that are no
 * multiples (they differ behind the digits of a float) are looked at a few times more, then left alone: the time must
 * stay linear. */
template <class see_type>
static void split_list(const line_set *set, const line_lists *lists, int32_t first, std::vector<double> *work,
                       const see_type &see)
{
    std::vector<int32_t> left, group;
    for (int32_t line = first; line >= 0; line = lists->next[static_cast<size_t>(line)]) left.push_back(line);
    for (int32_t round = 0; round < 4 && left.size() > 1; round++) {
        const auto base = static_cast<size_t>(left.front());
        int64_t num = 0;
        for (size_t k = line_begin(set, base); k < line_end(set, base); k++) {
            (*work)[static_cast<size_t>((*set->index)[k])] = (*set->value)[k] / set->pivot[base];
            num += (*set->value)[k] != 0.0 ? 1 : 0;
        }
        const auto rest = std::stable_partition(left.begin() + 1, left.end(), [&](int32_t line) {
            return is_multiple(set, static_cast<size_t>(line), work, num);
        });
        group.assign(left.begin(), rest);
        left.erase(left.begin(), rest);
        for (size_t k = line_begin(set, base); k < line_end(set, base); k++)
            (*work)[static_cast<size_t>((*set->index)[k])] = 0.0;
        if (group.size() > 1) see(group);
    }
}

template <class see_type> static void find_groups(line_set *set, size_t num_indices, const see_type &see)
{
    const size_t num = set->takes_part.size();
    set->pivot.assign(num, 1.0);
    set->hash.assign(num, 0);
    for (size_t line = 0; line < num; line++)
        if (set->takes_part[line] != 0) hash_line(set, line);
    const line_lists lists = gather(set);
    std::vector<double> work(num_indices, 0.0);
    for (const int32_t first : lists.first) split_list(set, &lists, first, &work, see);
}

/* ---- rows --------------------------------------------------------------------------------------------------------- */

struct side_pair {
    double lower, upper;
};

/* The sides of a row in units of another whose coefficients are `factor` times smaller. */
static side_pair sides_by(const model *m, int32_t row, double factor)
{
    const double lower = m->con_lower[static_cast<size_t>(row)] / factor;
    const double upper = m->con_upper[static_cast<size_t>(row)] / factor;
    return factor > 0.0 ? side_pair{lower, upper} : side_pair{upper, lower};
}

static bool is_same(double a, double b)
{
    if (std::isinf(a) || std::isinf(b)) return a == b;
    return std::fabs(a - b) <= rounding_room(std::max(std::fabs(a), std::fabs(b)));
}

/* FIND_ROW_PARALLEL: `other` is the first of its group, a the factor to it, b 1 when the sides agree.
 * FIND_CONTRADICTION: `other` is the row that asks for more than this one allows, a by how much, in this row's units. */
static void note_parallel_rows(problem_facts *facts, const line_set *set, const std::vector<int32_t> &group)
{
    const model *m = facts->m;
    const double pivot = set->pivot[static_cast<size_t>(group.front())];
    const side_pair base = sides_by(m, group.front(), 1.0);
    int32_t low_row = group.front();
    int32_t up_row = group.front();
    side_pair tight = base;

    for (const int32_t row : group) {
        const double factor = set->pivot[static_cast<size_t>(row)] / pivot;
        const side_pair sides = sides_by(m, row, factor);
        if (row != group.front()) {
            const bool is_repeat = is_same(sides.lower, base.lower) && is_same(sides.upper, base.upper);
            facts->parallel.rows++;
            facts->parallel.equal_rows += is_repeat ? 1 : 0;
            facts->found[FIND_ROW_PARALLEL].push_back(
                {row, is_repeat ? 1.0 : 0.0, factor, is_repeat ? 1.0 : 0.0, group.front()});
        }
        if (sides.lower > tight.lower) low_row = row;
        if (sides.upper < tight.upper) up_row = row;
        tight = {std::max(tight.lower, sides.lower), std::min(tight.upper, sides.upper)};
    }
    const double gap = tight.lower - tight.upper;
    const double size = std::max({1.0, std::fabs(tight.lower), std::fabs(tight.upper)});
    if (low_row == up_row || !(gap > facts->tol.primal * size)) return;
    const double factor = set->pivot[static_cast<size_t>(up_row)] / pivot;
    facts->found[FIND_CONTRADICTION].push_back(
        {up_row, gap * std::fabs(factor), gap * std::fabs(factor), 0.0, low_row});
}

static void find_parallel_rows(problem_facts *facts)
{
    line_set set = {&facts->rows.start, &facts->rows.col, &facts->rows.value, {}, {}, {}};
    set.takes_part.assign(static_cast<size_t>(facts->m->num_con), 0);
    for (size_t i = 0; i < set.takes_part.size(); i++) {
        const uint8_t which = facts->row_classes[i];
        /* Singletons are bounds and told as such. */
        const bool is_left_out = which == ROW_QUADRATIC || which == ROW_FREE || which == ROW_EMPTY ||
                                 which == ROW_SINGLETON || facts->m->con_lower[i] > facts->m->con_upper[i];
        set.takes_part[i] = is_left_out ? 0 : 1;
    }
    find_groups(&set, static_cast<size_t>(facts->m->num_var),
                [&](const std::vector<int32_t> &group) { note_parallel_rows(facts, &set, group); });
}

/* ---- columns ------------------------------------------------------------------------------------------------------ */

/* FIND_COLUMN_EQUAL: `other` is the first of its group, a the factor to it. Integer columns are equal only with a factor of
 * 1 or -1: otherwise their sum does not take the same values. */
static void note_parallel_columns(problem_facts *facts, const line_set *set, const std::vector<int32_t> &group)
{
    const auto first = static_cast<size_t>(group.front());
    const model *m = facts->m;
    const bool is_single = facts->column_length[first] == 1;

    for (size_t k = 1; k < group.size(); k++) {
        const auto col = static_cast<size_t>(group[k]);
        const double factor = set->pivot[col] / set->pivot[first];
        const bool is_equal = m->var_type[col] == m->var_type[first] && is_same(m->c[col] / factor, m->c[first]) &&
                              (m->var_type[col] == ZLR_VAR_CONT || std::fabs(factor) == 1.0);
        if (is_equal) {
            facts->parallel.equal_columns++;
            facts->found[FIND_COLUMN_EQUAL].push_back({group[k], 0.0, factor, 0.0, group.front()});
        }
        /* Columns of one entry in the same row are slacks, parallel by nature. */
        if (is_equal || !is_single) facts->parallel.columns++;
    }
}

static void find_parallel_columns(problem_facts *facts)
{
    const model *m = facts->m;
    line_set set = {&m->a.start, &m->a.row, &m->a.value, {}, {}, {}};
    set.takes_part.assign(static_cast<size_t>(m->num_var), 0);
    for (size_t j = 0; j < set.takes_part.size(); j++) {
        const bool is_linear = !facts->columns[j].is_quadratic && !facts->columns[j].is_conic;
        set.takes_part[j] = facts->column_length[j] > 0 && is_linear ? 1 : 0;
    }
    find_groups(&set, static_cast<size_t>(m->num_con),
                [&](const std::vector<int32_t> &group) { note_parallel_columns(facts, &set, group); });
}

void problem_find_parallel(problem_facts *facts)
{
    find_parallel_rows(facts);
    find_parallel_columns(facts);
}
