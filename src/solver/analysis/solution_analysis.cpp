/* solution_analysis.cpp - how good a solution is on the task's own data: statuses, objectives, sizes, status keys, and the
 * parts of solution_parts.h. Everything is computed from the data and the solution's arrays, nothing is taken from the
 * engine that gave it. */
#include "solver/analysis/solution_parts.h"
#include "solver/engines/answer.h"
#include "solver/report/words.h"

#include <algorithm>
#include <cmath>

static constexpr size_t width = 80;
static constexpr size_t screen_entries = 10; /* of a certificate, listed by default */
static constexpr size_t full_names = 100;

/* ---- what the parts share */

void ranked_add(ranked_list *list, const ranked_item &item)
{
    std::vector<ranked_item> *items = &list->items;
    if (list->capacity == 0) return;
    if (items->size() == list->capacity) {
        if (item.size <= items->back().size) return;
        items->pop_back();
    }
    const auto place = std::upper_bound(items->begin(), items->end(), item,
                                        [](const ranked_item &a, const ranked_item &b) { return a.size > b.size; });
    items->insert(place, item);
}

static std::string item_name(const solution_view *v, bool is_row, int32_t index)
{
    return names_shown(is_row ? &v->m->con_names : &v->m->var_names, index, is_row ? 'c' : 'x');
}

std::string solution_item_text(const solution_view *v, bool is_row, int32_t index)
{
    return (is_row ? "row " : "column ") + item_name(v, is_row, index);
}

void solution_add_named(solution_view *v, const std::string &words, const std::string &name)
{
    const size_t length = 2 + words.size() + 1 + name.size();
    text_append(&v->text, "  %s%s%s\n", words.c_str(), length > width ? "\n                " : " ", name.c_str());
}

void solution_add_list(solution_view *v, const ranked_list *list)
{
    static const char indent[] = "      ";
    std::string line;

    for (const ranked_item &item : list->items) {
        std::string part = solution_item_text(v, item.is_row, item.index);
        if (item.size > 0.0) part += text_format(" %.1e", item.size);
        if (&item != &list->items.back()) part += ",";
        if (!line.empty() && line.size() + 1 + part.size() > width) {
            v->text += line + "\n";
            line.clear();
        }
        line += (line.empty() ? indent : " ") + part;
    }
    if (!line.empty()) v->text += line + "\n";
}

/* ---- the solution, made ready */

static int32_t find_infinite(const std::vector<double> &values)
{
    const auto at = std::find_if(values.begin(), values.end(), [](double value) { return !std::isfinite(value); });
    return at == values.end() ? -1 : static_cast<int32_t>(at - values.begin());
}

/* A part of a solution with an infinite number in it cannot be looked at. */
static void drop_infinite(solution_view *v)
{
    solution *s = &v->sol;
    const int32_t column = s->has_primal ? find_infinite(s->xx) : -1;
    const int32_t row = s->has_dual ? find_infinite(s->y) : -1;

    if (column >= 0) {
        solution_add_named(v, "The values are not looked at, one is infinite:", solution_item_text(v, false, column));
        s->has_primal = false;
    }
    if (row >= 0) {
        solution_add_named(v, "The duals are not looked at, one is infinite:", solution_item_text(v, true, row));
        s->has_dual = false;
    }
}

static bool has_sides(const solution *s)
{
    const auto any = [](const std::vector<double> &values) {
        return std::any_of(values.begin(), values.end(), [](double value) { return value != 0.0; });
    };
    return any(s->slc) || any(s->suc) || any(s->slx) || any(s->sux);
}

static void prepare_point(solution_view *v)
{
    solution *s = &v->sol;

    drop_infinite(v);
    if (s->has_dual && model_problem_type(v->m) != ZLR_PROBTYPE_LO) {
        v->text += "  The duals are not looked at: the problem is not linear.\n";
        s->has_dual = false;
    }
    if (s->has_primal) model_activity(v->m, s->xx.data(), s->xc.data());
    /* A solution that was installed or read may have the multipliers of the rows alone. */
    if (s->has_dual && !has_sides(s)) check_complete(v->m, &v->tol, s);
    if (s->has_dual) v->reduced = gradient_reduced_costs(v->m, &v->tol, s);
    v->found = check_solution(v->m, &v->tol, v->kind == ZLR_SOL_ITG, s);
}

/* ---- statuses and objectives */

/* The bound that branch and cut has proved; NaN where there is none. */
static double bound_of(const solution_view *v)
{
    const double bound = v->task->run.best_bound;
    return std::isfinite(bound) ? bound : std::numeric_limits<double>::quiet_NaN();
}

static void add_status(solution_view *v)
{
    text_append(&v->text, "  Status     %s (problem %s)\n", words_solution_status(v->sol.solsta, v->sol.is_local),
                words_problem_status(v->sol.prosta));
}

/* Where the status is not the one that the check gives: the solution was installed, or the task's parameters are others. */
static void add_earned_status(solution_view *v)
{
    solution earned;
    earned.primal_obj = v->sol.primal_obj;
    if (v->kind == ZLR_SOL_ITG)
        check_set_integer_status(&v->tol, v->m->sense, &v->found, !std::isnan(bound_of(v)), bound_of(v), &earned);
    else
        check_set_status(&v->tol, &v->found, &earned);
    if (earned.solsta == v->sol.solsta) return;
    text_append(&v->text, "  By check   %s\n", words_solution_status(earned.solsta, v->sol.is_local));
}

static void add_integer_objective(solution_view *v)
{
    const double incumbent = v->sol.primal_obj, bound = bound_of(v);

    if (!v->sol.has_primal) return;
    text_append(&v->text, "  Objective  incumbent %.10e", incumbent);
    if (std::isnan(bound)) {
        v->text += "  bound none\n";
        return;
    }
    const double relative = check_relative_gap(incumbent, bound);
    text_append(&v->text, "  bound %.10e\n  Gap        absolute %.1e", bound, std::fabs(incumbent - bound));
    if (std::isfinite(relative)) text_append(&v->text, "  relative %.1e", relative);
    v->text += "\n";
}

static void add_objectives(solution_view *v)
{
    const bool dual = v->sol.has_dual && std::isfinite(v->sol.dual_obj);

    if (!v->sol.has_primal && !v->sol.has_dual) return;
    v->text += "  Objective";
    if (v->sol.has_primal) text_append(&v->text, "  primal %.10e", v->sol.primal_obj);
    if (dual) text_append(&v->text, "  dual %.10e", v->sol.dual_obj);
    if (v->sol.has_dual && !dual) v->text += "  dual none: a dual has no side";
    v->text += "\n";
    if (!v->sol.has_primal || !dual) return;
    const double gap = std::fabs(v->sol.primal_obj - v->sol.dual_obj);
    text_append(&v->text, "  Gap        absolute %.1e  relative %.1e\n", gap,
                gap / check_objective_size(v->m, &v->sol));
}

/* ---- sizes and keys */

static void add_size(solution_view *v, const char *title, const std::vector<double> &values, bool is_row)
{
    ranked_list largest;
    double sum = 0.0;

    largest.capacity = 1;
    for (size_t k = 0; k < values.size(); k++) {
        if (values[k] == 0.0) continue;
        sum = std::hypot(sum, values[k]); /* squares of large values do not fit */
        ranked_add(&largest, {is_row, static_cast<int32_t>(k), std::fabs(values[k])});
    }
    const std::string words =
        text_format("%-16s %10.1e %10.1e ", title, largest.items.empty() ? 0.0 : largest.items[0].size, sum);
    if (largest.items.empty())
        text_append(&v->text, "  %s\n", words.c_str());
    else
        solution_add_named(v, words, solution_item_text(v, is_row, largest.items[0].index));
}

static void add_sizes(solution_view *v)
{
    const solution *s = &v->sol;

    if (!s->has_primal && !s->has_dual) return;
    text_append(&v->text, "\n%-18s %10s %10s\n", "Sizes", "largest", "2-norm");
    if (s->has_primal) add_size(v, "Columns", s->xx, false);
    if (s->has_primal) add_size(v, "Row activities", s->xc, true);
    if (!s->has_dual) return;
    std::vector<double> reduced;
    for (const reduced_cost &d : v->reduced) reduced.push_back(d.value);
    add_size(v, "Row duals", s->y, true);
    add_size(v, "Reduced costs", reduced, false);
}

static const int32_t key_order[] = {ZLR_SK_BASIC,  ZLR_SK_LOWER,    ZLR_SK_UPPER, ZLR_SK_FIXED,
                                    ZLR_SK_SUPBAS, ZLR_SK_INFINITE, ZLR_SK_UNDEF};

static void add_key_counts(solution_view *v, const char *title, const std::vector<int32_t> &keys)
{
    text_append(&v->text, "  %-14s", title);
    for (const int32_t key : key_order)
        text_append(&v->text, " %8lld", static_cast<long long>(std::count(keys.begin(), keys.end(), key)));
    v->text += "\n";
}

static void add_keys(solution_view *v)
{
    const auto known = [](int32_t key) { return key != ZLR_SK_UNDEF; };
    const solution *s = &v->sol;

    if (std::none_of(s->skc.begin(), s->skc.end(), known) && std::none_of(s->skx.begin(), s->skx.end(), known)) return;
    text_append(&v->text, "\n%-16s", "Status keys");
    for (const int32_t key : key_order) text_append(&v->text, " %8s", words_status_key(key));
    v->text += "\n";
    add_key_counts(v, "Rows", s->skc);
    add_key_counts(v, "Columns", s->skx);
}

/* ---- the whole */

static void add_point(solution_view *v)
{
    prepare_point(v);
    add_earned_status(v);
    if (v->kind == ZLR_SOL_ITG)
        add_integer_objective(v);
    else
        add_objectives(v);
    if (!v->sol.has_primal) v->text += "  It has no values of columns.\n";
    if (!v->sol.has_dual && v->kind != ZLR_SOL_ITG) v->text += "  It has no duals.\n";
    solution_add_violations(v);
    add_sizes(v);
    add_keys(v);
    solution_add_basis(v);
}

int32_t solution_analysis_print(ZLR_task *task, int32_t stream, int32_t kind)
{
    solution_view v;

    if (!task->sol[kind].defined) {
        streams_printf(&task->streams, stream, "There is no %s solution to analyse.\n", words_solution_kind(kind));
        return ZLR_RES_ERR_NO_SOLUTION;
    }
    if (!streams_linked(&task->streams, stream)) return ZLR_RES_OK;
    const bool is_certificate = solution_is_certificate(&task->sol[kind]);
    const bool is_full = param_int(&task->params, IPAR_ANALYZE_DETAIL) == ANALYSIS_FULL;
    const auto num_names = static_cast<size_t>(param_int(&task->params, IPAR_ANALYZE_SOLUTION_NAMES));
    v.task = task;
    v.m = task->problem.get();
    v.kind = kind;
    v.tol = check_tolerances_of(&task->params);
    v.sol = task->sol[kind];
    v.num_listed = is_full ? full_names : (is_certificate ? screen_entries : num_names);

    text_append(&v.text, "\nAnalysis of the %s solution\n", words_solution_kind(kind));
    add_status(&v);
    if (is_certificate)
        solution_add_certificate(&v);
    else
        add_point(&v);
    streams_write(&task->streams, stream, v.text.c_str());
    return ZLR_RES_OK;
}
