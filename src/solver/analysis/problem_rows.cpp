/* problem_rows.cpp - see problem_facts.h. One walk along each row: its class, and what the bounds of its columns say of
 * it. A row gets at most one of the findings that make it superfluous or impossible: the gravest. */
#include "solver/analysis/problem_facts.h"

#include <algorithm>
#include <cmath>

/* What a walk along a row counts. */
struct row_walk {
    int64_t num = 0, binaries = 0, integers = 0; /* binaries are integers too */
    int64_t positive = 0, negative = 0;
    double least = model_inf, most = 0.0; /* sizes of coefficients */
    int32_t tiny_col = -1;                /* column of the first tiny coefficient */
    int64_t tiny = 0;
    row_reach reach;
};

struct row_sides {
    double lower, upper;
    bool is_equal;
};

static row_sides sides_of(const problem_facts *facts, int32_t row)
{
    const auto at = static_cast<size_t>(row);
    const double lower = facts->m->con_lower[at] + 0.0; /* no -0, which only puzzles who reads it */
    const double upper = facts->m->con_upper[at] + 0.0;
    return {lower, upper, lower == upper};
}

void reach_add(row_reach *reach, double value, const column_info *column)
{
    const double at_lower = value * column->lower;
    const double at_upper = value * column->upper;
    const double least = std::min(at_lower, at_upper);
    const double most = std::max(at_lower, at_upper);

    if (std::isinf(least))
        reach->endless_down++;
    else
        reach->least += least;
    if (std::isinf(most))
        reach->endless_up++;
    else
        reach->most += most;
    reach->terms += std::max(std::isinf(least) ? 0.0 : std::fabs(least), std::isinf(most) ? 0.0 : std::fabs(most));
}

static row_walk walk_row(const problem_facts *facts, int32_t row)
{
    const row_matrix *rows = &facts->rows;
    row_walk walk;
    const auto end = static_cast<size_t>(rows->start[static_cast<size_t>(row) + 1]);
    for (auto k = static_cast<size_t>(rows->start[static_cast<size_t>(row)]); k < end; k++) {
        const double value = rows->value[k];
        const double size = std::fabs(value);
        const column_info *column = &facts->columns[static_cast<size_t>(rows->col[k])];
        walk.num++;
        walk.binaries += column->is_binary ? 1 : 0;
        walk.integers += column->is_int ? 1 : 0;
        (value > 0.0 ? walk.positive : walk.negative)++;
        walk.least = std::min(walk.least, size);
        walk.most = std::max(walk.most, size);
        if (size < facts->rules.tiny_coefficient && walk.tiny++ == 0) walk.tiny_col = rows->col[k];
        reach_add(&walk.reach, value, column);
    }
    return walk;
}

/* ---- classes ------------------------------------------------------------------------------------------------------ */

/* A row of binary columns with coefficients a or -a says how many of them, with those of -a complemented, are 1. */
static row_class class_of_count(const row_walk *walk, const row_sides *sides)
{
    const auto shift = static_cast<double>(walk->negative);
    const auto num = static_cast<double>(walk->num);
    const double lower = sides->lower / walk->most + shift;
    const double upper = sides->upper / walk->most + shift;

    if (sides->is_equal) return lower == 1.0 || lower == num - 1.0 ? ROW_PARTITIONING : ROW_CARDINALITY;
    if (std::isinf(lower)) return upper == 1.0 ? ROW_PACKING : (upper == num - 1.0 ? ROW_COVERING : ROW_CARDINALITY);
    if (std::isinf(upper)) return lower == 1.0 ? ROW_COVERING : (lower == num - 1.0 ? ROW_PACKING : ROW_CARDINALITY);
    return ROW_CARDINALITY;
}

static unit_row unit_of(const row_walk *walk, const row_sides *sides)
{
    if (walk->least != 1.0 || walk->most != 1.0) return UNIT_NOT;
    return sides->is_equal && walk->positive > 0 && walk->negative > 0 ? UNIT_BALANCE : UNIT_OTHER;
}

static row_class class_of(const problem_facts *facts, int32_t row, const row_walk *walk, const row_sides *sides)
{
    if (facts->is_quadratic_row[static_cast<size_t>(row)] != 0) return ROW_QUADRATIC;
    if (std::isinf(sides->lower) && std::isinf(sides->upper)) return ROW_FREE;
    if (walk->num == 0) return ROW_EMPTY;
    if (walk->num == 1) return ROW_SINGLETON;
    if (walk->binaries == walk->num && walk->least == walk->most) return class_of_count(walk, sides);
    if (walk->num == 2 && walk->binaries == 1 && !sides->is_equal) return ROW_VARIABLE_BOUND;
    if (walk->num == 2 && sides->is_equal) return ROW_PAIR;
    if (walk->binaries == walk->num) return sides->is_equal ? ROW_KNAPSACK_EQUAL : ROW_KNAPSACK;
    if (walk->integers == walk->num) return sides->is_equal ? ROW_INTEGER_EQUAL : ROW_INTEGER;
    if (walk->binaries > 0) return ROW_MIXED_BINARY;
    if (walk->integers > 0) return ROW_MIXED_INTEGER;
    if (!sides->is_equal) return ROW_CONTINUOUS;
    return unit_of(walk, sides) == UNIT_BALANCE ? ROW_BALANCE : ROW_CONTINUOUS_EQUAL;
}

/* ---- findings ----------------------------------------------------------------------------------------------------- */

static double size_of(double side) { return std::isfinite(side) ? std::max(1.0, std::fabs(side)) : 1.0; }

/* FIND_UNREACHABLE: rank is the amount, a what can be reached, b the side. Returns whether the row is one. */
static bool note_unreachable(problem_facts *facts, int32_t row, const row_reach *reach, const row_sides *sides)
{
    const double least = reach_least(reach);
    const double most = reach_most(reach);
    const double room = rounding_share * reach->terms;
    const double above = least - sides->upper;
    const double below = sides->lower - most;

    if (below > facts->tol.primal * size_of(sides->lower) + room) {
        facts->found[FIND_UNREACHABLE].push_back({row, below, most, sides->lower});
        return true;
    }
    if (above > facts->tol.primal * size_of(sides->upper) + room) {
        facts->found[FIND_UNREACHABLE].push_back({row, above, least, sides->upper});
        return true;
    }
    return false;
}

/* A row that no point within the bounds violates, or that only one corner of the bounds satisfies (FIND_FORCED: a is the
 * side). Rows of fixed columns alone are redundant, not forced. */
static void note_forced_or_redundant(problem_facts *facts, int32_t row, int64_t num, const row_reach *reach,
                                     const row_sides *sides)
{
    const double least = reach_least(reach);
    const double most = reach_most(reach);
    const double room_lower = rounding_room(std::isfinite(sides->lower) ? sides->lower : 0.0);
    const double room_upper = rounding_room(std::isfinite(sides->upper) ? sides->upper : 0.0);

    if (least >= sides->lower - room_lower && most <= sides->upper + room_upper)
        facts->found[FIND_REDUNDANT].push_back({row, static_cast<double>(num), least, most});
    else if (most <= sides->lower + room_lower)
        facts->found[FIND_FORCED].push_back({row, static_cast<double>(num), sides->lower});
    else if (least >= sides->upper - room_upper)
        facts->found[FIND_FORCED].push_back({row, static_cast<double>(num), sides->upper});
}

/* Greatest common divisor of the coefficients of a row; 0 if they are not whole numbers of a safe size. */
static int64_t divisor_of(const problem_facts *facts, int32_t row)
{
    constexpr double exact = 9007199254740992.0; /* 2^53 */
    const row_matrix *rows = &facts->rows;
    int64_t divisor = 0;
    const auto end = static_cast<size_t>(rows->start[static_cast<size_t>(row) + 1]);
    for (auto k = static_cast<size_t>(rows->start[static_cast<size_t>(row)]); k < end; k++) {
        const double size = std::fabs(rows->value[k]);
        if (size != std::floor(size) || size > exact) return 0;
        int64_t rest = divisor;
        divisor = static_cast<int64_t>(size);
        while (rest != 0) {
            const int64_t next = divisor % rest;
            divisor = rest;
            rest = next;
        }
    }
    return divisor;
}

/* FIND_DIVISOR: an equality of integer columns adds up to multiples of a, and its side b is none. */
static bool note_divisor(problem_facts *facts, int32_t row, const row_walk *walk, const row_sides *sides)
{
    if (!sides->is_equal || walk->num == 0 || walk->integers < walk->num) return false;
    const auto divisor = static_cast<double>(divisor_of(facts, row));
    if (divisor == 0.0) return false;
    const double times = sides->lower / divisor;
    const double off = std::fabs(times - std::round(times)) * divisor;
    if (off <= facts->tol.primal * size_of(sides->lower)) return false;
    facts->found[FIND_DIVISOR].push_back({row, off, divisor, sides->lower});
    return true;
}

/* Sides by themselves: crossed (a and b), as good as equal, huge, tiny (a). */
static bool note_sides(problem_facts *facts, int32_t row, const row_sides *sides)
{
    const double gap = sides->upper - sides->lower;
    if (gap < 0.0 || sides->lower == model_inf || sides->upper == -model_inf) {
        facts->found[FIND_SIDES_CROSSED].push_back(
            {row, std::isnan(gap) ? model_inf : -gap, sides->lower, sides->upper});
        return true;
    }
    if (gap > 0.0 && gap < rounding_room(sides->upper))
        facts->found[FIND_SIDES_CLOSE].push_back({row, gap, sides->lower, sides->upper});
    for (const double side : {sides->lower, sides->upper}) {
        const double size = std::fabs(side);
        if (std::isinf(size) || size == 0.0) continue;
        if (size >= facts->rules.large_value)
            facts->found[FIND_SIDE_LARGE].push_back({row, size, side});
        else if (size < facts->tol.primal)
            facts->found[FIND_SIDE_TINY].push_back({row, -size, side});
        else
            continue;
        break; /* one finding a row */
    }
    return false;
}

static void look_at_row(problem_facts *facts, int32_t row)
{
    const row_walk walk = walk_row(facts, row);
    const row_sides sides = sides_of(facts, row);
    const row_class which = class_of(facts, row, &walk, &sides);
    const auto num = static_cast<double>(walk.num);

    facts->row_classes[static_cast<size_t>(row)] = static_cast<uint8_t>(which);
    facts->unit_rows[static_cast<size_t>(row)] = unit_of(&walk, &sides);
    facts->class_count[which]++;
    if (walk.tiny > 0)
        facts->found[FIND_COEF_TINY].push_back(
            {row, static_cast<double>(walk.tiny), walk.least, 0.0, walk.tiny_col, static_cast<int32_t>(walk.tiny)});
    if (note_sides(facts, row, &sides) || which == ROW_QUADRATIC) return;
    if (note_unreachable(facts, row, &walk.reach, &sides) || note_divisor(facts, row, &walk, &sides)) return;
    if (which == ROW_FREE) {
        facts->found[FIND_ROW_FREE].push_back({row, num, num});
    } else if (which == ROW_EMPTY) {
        facts->found[FIND_ROW_EMPTY].push_back({row, 0.0});
    } else if (which == ROW_SINGLETON) {
        facts->found[FIND_SINGLETON].push_back(
            {row, 0.0, 0.0, 0.0, facts->rows.col[static_cast<size_t>(facts->rows.start[static_cast<size_t>(row)])]});
    } else {
        note_forced_or_redundant(facts, row, walk.num, &walk.reach, &sides);
        if (walk.binaries > 0) problem_look_for_big_m(facts, row, walk.most);
    }
}

void problem_find_rows(problem_facts *facts)
{
    facts->row_classes.assign(static_cast<size_t>(facts->m->num_con), ROW_FREE);
    facts->unit_rows.assign(static_cast<size_t>(facts->m->num_con), UNIT_NOT);
    for (int32_t i = 0; i < facts->m->num_con; i++) look_at_row(facts, i);
}
