/* problem_advice.cpp - see problem_facts.h. The findings in words: what was found, where, how much, what to do. */
#include "solver/analysis/problem_words.h"
#include "solver/report/streams.h"

#include <algorithm>
#include <cmath>
#include <iterator>

enum severity { NO_SOLUTION, DOUBTFUL, SIMPLER };

/* What to say of one and of many, the latter null where there is never more than one to count; and what to do about it,
 * null where nothing needs to be done. An @ stands for the limit that was passed. */
struct advice_row {
    severity grade;
    const char *one, *many;
    const char *todo;
};

/* By finding_kind. */
// clang-format off
static const advice_row advice_rows[] = {
    {NO_SOLUTION, "row has its lower side above its upper side",
                  "rows have their lower side above their upper side", "Correct the sides."},
    {NO_SOLUTION, "column has its lower bound above its upper bound",
                  "columns have their lower bound above their upper bound", "Correct the bounds."},
    {NO_SOLUTION, "integer column has no integer between its bounds",
                  "integer columns have no integer between their bounds", "Correct the bounds."},
    {NO_SOLUTION, "row cannot be met within the bounds of its columns",
                  "rows cannot be met within the bounds of their columns",
                  "Relax the side, or the bounds of the columns in the row."},
    {NO_SOLUTION, "equality of integer columns never adds up to its side",
                  "equalities of integer columns never add up to their side",
                  "Correct the side, or let a column be continuous."},
    {NO_SOLUTION, "pair of parallel rows contradicts itself", "pairs of parallel rows contradict themselves",
                  "Correct a side, or drop one of the rows."},
    {NO_SOLUTION, "column improves the objective without end, stopped by neither bound nor row",
                  "columns improve the objective without end, stopped by neither bound nor row",
                  "Give a bound, or the row that was forgotten; check the sign of the cost."},

    {DOUBTFUL, "The quadratic objective is not convex (a maximised one: not concave)", nullptr,
               "A proven optimum needs a convex objective; check the signs."},
    {DOUBTFUL, "quadratic row is not convex", "quadratic rows are not convex",
               "A convex row has one side, and squares on it that point away from it."},
    {DOUBTFUL, "row has coefficients too far apart for any scaling",
               "rows have coefficients too far apart for any scaling",
               "Choose other units, or split the row by a column for the small part."},
    {DOUBTFUL, "The costs are so far apart that the smallest are lost beside the largest", nullptr,
               "Choose other units, or solve for the large costs first."},
    {DOUBTFUL, "row has coefficients below @, which engines take for 0",
               "rows have coefficients below @, which engines take for 0",
               "Leave them out if they are rounding; else choose other units."},
    {DOUBTFUL, "big-M row leaks: a switch that is off by the tolerance lets this much through",
               "big-M rows leak: a switch that is off by the tolerance lets this much through",
               "Take the least M that does, and bound the columns that M must outdo."},
    {DOUBTFUL, "column has a bound of @ or more", "columns have bounds of @ or more",
               "Where no bound is meant, give none; else choose larger units."},
    {DOUBTFUL, "row has a side of @ or more", "rows have sides of @ or more",
               "Where no side is meant, give none; else choose larger units."},
    {DOUBTFUL, "column has a bound below the tolerance, yet not 0", "columns have bounds below the tolerance, yet not 0",
               "Write 0 if it is rounding; else choose smaller units."},
    {DOUBTFUL, "row has a side below the tolerance, yet not 0", "rows have sides below the tolerance, yet not 0",
               "Write 0 if it is rounding; else choose smaller units."},
    {DOUBTFUL, "column has bounds that differ by rounding only", "columns have bounds that differ by rounding only",
               "Give both bounds the same value."},
    {DOUBTFUL, "row has sides that differ by rounding only", "rows have sides that differ by rounding only",
               "Give both sides the same value."},
    {DOUBTFUL, "integer column has a bound that is no integer", "integer columns have bounds that are no integers",
               "The next integer inside is what acts; check that it is meant."},

    {SIMPLER, "big-M row can do with a smaller M", "big-M rows can do with a smaller M", nullptr},
    {SIMPLER, "row holds all its columns at a bound", "rows hold all their columns at a bound", nullptr},
    {SIMPLER, "row is met by all points within bounds", "rows are met by all points within bounds", nullptr},
    {SIMPLER, "row is a multiple of another", "rows are multiples of another", nullptr},
    {SIMPLER, "row of one column could be a bound", "rows of one column could be bounds", nullptr},
    {SIMPLER, "row is empty", "rows are empty", nullptr},
    {SIMPLER, "row is free: it has no side", "rows are free: they have no side", nullptr},
    {SIMPLER, "column repeats another, cost included", "columns repeat another, cost included", nullptr},
    {SIMPLER, "column is in no row", "columns are in no row", nullptr},
    {SIMPLER, "column is fixed", "columns are fixed", nullptr},
};
// clang-format on
static_assert(std::size(advice_rows) == NUM_FINDINGS, "one row a kind of finding");

/* ---- one finding -------------------------------------------------------------------------------------------------- */

static std::string multiple_text(double factor, const std::string &name)
{
    return factor == 1.0 ? "like " + name : text_format("%.6g times ", factor) + name;
}

static std::string unbounded_text(const finding *f)
{
    return text_format("cost %.6g, no %s bound", f->a, f->b > 0.0 ? "upper" : "lower");
}

static std::string not_convex_text(const problem_facts *facts, int32_t i, int32_t j, double value)
{
    if (i < 0) return "two sides";
    if (i == j) return text_format("square of %s: %.6g", column_name(facts, i).c_str(), value);
    return text_format("product of %s and %s: %.6g", column_name(facts, i).c_str(), column_name(facts, j).c_str(),
                       value);
}

static std::string coefficient_text(const problem_facts *facts, double value, int32_t col)
{
    return text_format("%.3g on %s", value, column_name(facts, col).c_str());
}

static std::string tiny_text(const problem_facts *facts, const finding *f)
{
    std::string text = coefficient_text(facts, f->a, f->other);
    if (f->third > 1) text += text_format(" and %d more", f->third - 1);
    return text;
}

static std::string pair_text(double lower, double upper) { return text_format("[%.10g, %.10g]", lower, upper); }

/* What stands in brackets behind the name; empty: nothing. */
static std::string detail_text(const problem_facts *facts, int32_t kind, const finding *f)
{
    switch (kind) {
    case FIND_SIDES_CROSSED:
    case FIND_BOUNDS_CROSSED: return text_format("%.10g above %.10g", f->a, f->b);
    case FIND_BOUNDS_CLOSE:
    case FIND_SIDES_CLOSE: return text_format("by %.1e", f->rank);
    case FIND_NO_INTEGER:
    case FIND_BOUND_FRACTION: return pair_text(f->a, f->b);
    case FIND_UNREACHABLE:
        return text_format(f->a < f->b ? "at most %.6g, needs %.6g" : "at least %.6g, allowed %.6g", f->a, f->b) +
               text_format(": %.3g off", f->rank);
    case FIND_DIVISOR: return text_format("multiples of %.10g, side %.10g", f->a, f->b);
    case FIND_CONTRADICTION: return text_format("%.6g apart from %s", f->a, row_name(facts, f->other).c_str());
    case FIND_UNBOUNDED: return unbounded_text(f);
    case FIND_OBJ_NOT_CONVEX: return not_convex_text(facts, f->index, f->other, f->a);
    case FIND_ROW_NOT_CONVEX: return not_convex_text(facts, f->other, f->third, f->a);
    case FIND_SCALING: return coefficient_text(facts, f->a, f->other) + ", " + coefficient_text(facts, f->b, f->third);
    case FIND_COST_SPREAD:
        return coefficient_text(facts, f->a, f->index) + ", " + coefficient_text(facts, f->b, f->other);
    case FIND_COEF_TINY: return tiny_text(facts, f);
    case FIND_BIG_M: return text_format("%.2g by M of ", f->rank) + coefficient_text(facts, f->a, f->other);
    case FIND_BOUND_LARGE:
    case FIND_SIDE_LARGE:
    case FIND_BOUND_TINY:
    case FIND_SIDE_TINY: return text_format("%.3g", f->a);
    case FIND_FORCED: return text_format("side %.6g", f->a);
    case FIND_SINGLETON: return column_name(facts, f->other);
    case FIND_COLUMN_FIXED: return text_format("at %.6g", f->a);
    case FIND_M_SMALLER: return text_format("%.6g to %.6g", f->a, f->b);
    case FIND_ROW_PARALLEL:
        return (f->b == 1.0 ? "repeats " : "") +
               (f->b == 1.0 ? row_name(facts, f->other) : multiple_text(f->a, row_name(facts, f->other)));
    case FIND_COLUMN_EQUAL: return multiple_text(f->a, column_name(facts, f->other));
    default: return "";
    }
}

static bool is_about_columns(int32_t kind)
{
    switch (kind) {
    case FIND_BOUNDS_CROSSED:
    case FIND_NO_INTEGER:
    case FIND_UNBOUNDED:
    case FIND_BOUND_LARGE:
    case FIND_BOUND_TINY:
    case FIND_BOUNDS_CLOSE:
    case FIND_BOUND_FRACTION:
    case FIND_COLUMN_EQUAL:
    case FIND_COLUMN_EMPTY:
    case FIND_COLUMN_FIXED: return true;
    default: return false;
    }
}

static std::string finding_text(const problem_facts *facts, int32_t kind, const finding *f)
{
    std::string detail = detail_text(facts, kind, f);
    if (kind == FIND_OBJ_NOT_CONVEX || kind == FIND_COST_SPREAD) return detail;
    const std::string name = is_about_columns(kind) ? column_name(facts, f->index) : row_name(facts, f->index);
    return detail.empty() ? name : name + " (" + detail + ")";
}

/* ---- points ------------------------------------------------------------------------------------------------------- */

static constexpr size_t point_indent = 5;

/* The findings to name, the gravest first. */
static std::vector<finding> findings_shown(const std::vector<finding> &found, size_t num)
{
    std::vector<finding> shown(std::min(num, found.size()));
    std::partial_sort_copy(
        found.begin(), found.end(), shown.begin(), shown.end(),
        [](const finding &a, const finding &b) { return a.rank != b.rank ? a.rank > b.rank : a.index < b.index; });
    return shown;
}

static const char *mark_of(severity grade)
{
    switch (grade) {
    case NO_SOLUTION: return "  !! ";
    case DOUBTFUL: return "  !  ";
    default: return "  -  ";
    }
}

/* "1e9", "2.5e-7": without the signs and zeros that a console has no use for. */
static std::string size_text(double value)
{
    std::string text = text_format("%.3g", value);
    const size_t at = text.find('e');
    if (at == std::string::npos) return text;
    const std::string sign = text[at + 1] == '-' ? "-" : "";
    return text.substr(0, at + 1) + sign +
           text.substr(std::min(text.find_first_not_of("+-0", at + 1), text.size() - 1));
}

static std::string title_of(const problem_facts *facts, int32_t kind)
{
    const advice_row *row = &advice_rows[kind];
    const size_t num = facts->found[kind].size();
    std::string title = row->many == nullptr ? row->one : words_number(static_cast<int64_t>(num), row->one, row->many);
    const double limit = kind == FIND_COEF_TINY ? facts->rules.tiny_coefficient : facts->rules.large_value;
    const size_t at = title.find('@');
    if (at != std::string::npos) title.replace(at, 1, size_text(limit));
    return title;
}

/* How many findings of a kind are named. */
static size_t num_named(const problem_facts *facts, int32_t kind)
{
    const size_t num = facts->found[kind].size();
    const problem_rules *rules = &facts->rules;
    return rules->full ? num
                       : std::min(num, advice_rows[kind].grade == SIMPLER ? rules->names_simple : rules->names_grave);
}

static std::string point_text(const problem_facts *facts, int32_t kind)
{
    const std::vector<finding> &found = facts->found[kind];
    const advice_row *row = &advice_rows[kind];
    const std::string title = title_of(facts, kind) + ":";
    std::string text;

    std::vector<std::string> items;
    for (const finding &f : findings_shown(found, num_named(facts, kind)))
        items.push_back(finding_text(facts, kind, &f));
    if (items.empty())
        items.push_back("not named");
    else if (found.size() > items.size())
        items.push_back(text_format("and %zu more", found.size() - items.size()));
    if (row->grade == SIMPLER && !facts->rules.full) {
        words_list(&text, mark_of(row->grade) + title, point_indent, items);
        return text;
    }
    words_sentence(&text, mark_of(row->grade), point_indent, title);
    if (row->todo != nullptr) items.back() += ".";
    words_list(&text, "", point_indent, items);
    if (row->todo != nullptr) words_sentence(&text, "", point_indent, row->todo);
    return text;
}

static bool any_of_grade(const problem_facts *facts, severity grade)
{
    for (int32_t kind = 0; kind < NUM_FINDINGS; kind++)
        if (advice_rows[kind].grade == grade && !facts->found[kind].empty()) return true;
    return false;
}

static bool is_infeasible(const problem_facts *facts)
{
    for (int32_t kind = 0; kind < FIND_UNBOUNDED; kind++)
        if (!facts->found[kind].empty()) return true;
    return false;
}

static const char *verdict(const problem_facts *facts)
{
    if (is_infeasible(facts)) return "Advice: the problem has no feasible point (!!).\n";
    if (any_of_grade(facts, NO_SOLUTION))
        return "Advice: the problem is unbounded, if a point is feasible at all (!!).\n";
    if (any_of_grade(facts, DOUBTFUL)) return "Advice: some of the data are doubtful (!).\n";
    if (any_of_grade(facts, SIMPLER)) return "Advice: no fault stands out. What could be simpler:\n";
    return "Advice: nothing stands out.\n";
}

/* The points in their order; from the first on that the screen has no room for, titles alone, and then their number. */
static void add_points(const problem_facts *facts, std::string *text)
{
    const bool full = facts->rules.full;
    const int64_t most_lines = facts->rules.most_lines;
    int64_t num_lines = 0;
    int64_t num_left = 0;
    bool is_short = false;
    bool is_all = true;

    for (int32_t kind = 0; kind < NUM_FINDINGS; kind++) {
        if (facts->found[kind].empty()) continue;
        std::string point = point_text(facts, kind);
        auto lines = std::count(point.begin(), point.end(), '\n');
        is_short = is_short || (!full && num_lines > 0 && num_lines + lines > most_lines);
        is_all = is_all && !is_short && num_named(facts, kind) == facts->found[kind].size();
        if (is_short) {
            point.clear();
            words_sentence(&point, mark_of(advice_rows[kind].grade), point_indent, title_of(facts, kind));
            lines = std::count(point.begin(), point.end(), '\n');
            if (num_lines + lines > most_lines) {
                num_left++;
                continue;
            }
        }
        *text += point;
        num_lines += lines;
    }
    if (num_left > 0) *text += "  and " + words_number(num_left, "more point", "more points") + "\n";
    if (!is_all) *text += "  ANALYZE_DETAIL=FULL shows all names and classes.\n";
}

std::string problem_advice(const problem_facts *facts)
{
    std::string text = verdict(facts);
    add_points(facts, &text);
    return text;
}
