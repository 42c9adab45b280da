/* html_values.cpp - sections of the run report about the solution: its largest violations, and the rows and columns that
 * matter most in it. */
#include "solver/report/html_parts.h"

#include "solver/report/html_text.h"
#include "solver/report/reported.h"
#include "solver/report/words.h"

#include <algorithm>
#include <cmath>

/* ---- Quality ---- */

static void append_violation(std::string *page, const char *what, double size, const std::string &where)
{
    if (std::isnan(size)) return; /* not looked at */
    const std::string at = size > 0.0 ? where : html_number(std::nan(""));
    html_table_row(page, {what, at, html_residual(size)}, 2);
}

static void append_check(std::string *page, const ZLR_task *task, int32_t kind)
{
    const model *m = task->problem.get();
    const solution_check *check = &task->sol[kind].check;
    std::string title = std::string("Largest violations of the ") + words_solution_kind(kind) + " solution";
    html_table_begin(page, title, {"Of", "Worst at", "Size"}, 2);
    append_violation(page, "row limits", check->row, html_row_name(m, check->worst_row));
    append_violation(page, "column bounds", check->bound, html_column_name(m, check->worst_bound));
    append_violation(page, "integrality", check->integrality, html_column_name(m, check->worst_int));
    append_violation(page, "cones", check->cone, html_cone_name(m, check->worst_cone));
    append_violation(page, "reduced costs and dual signs", check->dual, html_column_name(m, check->worst_dual));
    append_violation(page, "complementarity", check->complementarity, html_number(std::nan("")));
    html_table_end(page);
}

static bool was_checked(const solution_check *check)
{
    return !std::isnan(check->row) || !std::isnan(check->bound) || !std::isnan(check->dual);
}

void html_quality(std::string *page, const ZLR_task *task)
{
    bool any = false;
    html_begin(page, "quality", "Quality of the solution");
    *page += "<div class=\"tables\">\n";
    for (const int32_t kind : {ZLR_SOL_ITG, ZLR_SOL_BAS, ZLR_SOL_ITR}) {
        if (!task->sol[kind].defined || !was_checked(&task->sol[kind].check)) continue;
        append_check(page, task, kind);
        any = true;
    }
    *page += "</div>\n";
    html_paragraph(page, any ? "note" : "",
                   any ? "Absolute violations, computed anew from the problem's own, unscaled data. The check takes " +
                             html_number(param_dou(&task->params, DPAR_CHECK_TOL), 3) +
                             " relative to the size of the bound or cost, and a share for rounding on top."
                       : std::string("There was no point to check."));
    html_end(page);
}

/* ---- Values ---- */

/* The numbers of the `num_listed` largest sizes above 0, largest first; of equal ones the first. */
static std::vector<int32_t> largest_of(int32_t num, const std::vector<double> &sizes, size_t num_listed)
{
    std::vector<int32_t> best; /* kept sorted: it is short, and hardly ever changes after the first part */
    const auto before = [&sizes](int32_t a, int32_t b) {
        return sizes[static_cast<size_t>(a)] > sizes[static_cast<size_t>(b)];
    };
    for (int32_t k = 0; k < num; k++) {
        if (!(sizes[static_cast<size_t>(k)] > 0.0)) continue;
        if (best.size() == num_listed && !before(k, best.back())) continue;
        best.insert(std::upper_bound(best.begin(), best.end(), k, before), k);
        if (best.size() > num_listed) best.pop_back();
    }
    return best;
}

static std::string key_cell(const solution *sol, const std::vector<int32_t> &keys, int32_t k)
{
    const char *word = sol->has_keys ? words_status_key(keys[static_cast<size_t>(k)]) : nullptr;
    return word != nullptr ? std::string("<code>") + word + "</code>" : html_number(std::nan(""));
}

static std::string limits_cell(double lower, double upper)
{
    if (lower == upper) return "= " + html_number(lower, 6);
    return html_number(lower, 6) + " \xE2\x80\xA6 " + html_number(upper, 6); /* an ellipsis between them */
}

/* Columns by their share in the objective, or the entries of a ray. */
static bool append_columns(std::string *page, const model *m, const solution *sol, size_t num_listed)
{
    const bool is_ray = solution_is_primal_ray(sol);
    if (!is_ray && (!sol->has_primal || solution_is_dual_ray(sol))) return false;
    std::vector<double> sizes(sol->xx.size());
    for (size_t j = 0; j < sizes.size(); j++) sizes[j] = std::fabs(is_ray ? sol->xx[j] : m->c[j] * sol->xx[j]);
    const std::vector<int32_t> listed = largest_of(m->num_var, sizes, num_listed);
    if (listed.empty()) return false;
    html_table_begin(page, is_ray ? "Columns that move most along the ray" : "Columns that weigh most in the objective",
                     {"Column", is_ray ? "Movement" : "Value", "Bounds", "Key", "Cost", "Cost \xC3\x97 value"}, 1);
    for (const int32_t j : listed) {
        const auto at = static_cast<size_t>(j);
        html_table_row(page,
                       {html_column_name(m, j), html_number(sol->xx[at], 8),
                        limits_cell(m->var_lower[at], m->var_upper[at]), key_cell(sol, sol->skx, j),
                        html_number(m->c[at], 6), html_number(m->c[at] * sol->xx[at], 8)},
                       1);
    }
    html_table_end(page);
    return true;
}

/* The weights with which the rows, added up, contradict the bounds. */
static void append_proof(std::string *page, const model *m, const solution *sol, const std::vector<int32_t> &listed)
{
    html_table_begin(page, "Rows that weigh most in the proof", {"Row", "Limits", "Weight"}, 1);
    for (const int32_t i : listed) {
        const auto at = static_cast<size_t>(i);
        html_table_row(
            page, {html_row_name(m, i), limits_cell(m->con_lower[at], m->con_upper[at]), html_number(sol->y[at], 8)},
            1);
    }
    html_table_end(page);
}

static void append_prices(std::string *page, const model *m, const solution *sol, const std::vector<int32_t> &listed)
{
    html_table_begin(page, "Rows with the largest multipliers", {"Row", "Activity", "Limits", "Key", "Multiplier"}, 1);
    for (const int32_t i : listed) {
        const auto at = static_cast<size_t>(i);
        html_table_row(page,
                       {html_row_name(m, i), html_number(sol->has_primal ? sol->xc[at] : std::nan(""), 8),
                        limits_cell(m->con_lower[at], m->con_upper[at]), key_cell(sol, sol->skc, i),
                        html_number(sol->y[at], 8)},
                       1);
    }
    html_table_end(page);
}

static bool append_rows(std::string *page, const model *m, const solution *sol, int32_t kind, size_t num_listed)
{
    const bool is_proof = solution_is_dual_ray(sol);
    if (kind == ZLR_SOL_ITG || (!is_proof && (!sol->has_dual || solution_is_primal_ray(sol)))) return false;
    std::vector<double> sizes(sol->y.size());
    for (size_t i = 0; i < sizes.size(); i++) sizes[i] = std::fabs(sol->y[i]);
    const std::vector<int32_t> listed = largest_of(m->num_con, sizes, num_listed);
    if (listed.empty()) return false;
    if (is_proof)
        append_proof(page, m, sol, listed);
    else
        append_prices(page, m, sol, listed);
    return true;
}

void html_values(std::string *page, const ZLR_task *task)
{
    const int32_t kind = reported_kind(task);
    const auto num_listed = static_cast<size_t>(param_int(&task->params, IPAR_REPORT_LISTED));
    html_begin(page, "values", "Values that matter most");
    *page += "<div class=\"tables\">\n";
    const bool columns = kind >= 0 && append_columns(page, task->problem.get(), &task->sol[kind], num_listed);
    const bool rows = kind >= 0 && append_rows(page, task->problem.get(), &task->sol[kind], kind, num_listed);
    *page += "</div>\n";
    if (!columns && !rows) html_paragraph(page, "", "There are no values other than 0 to show.");
    html_end(page);
}
