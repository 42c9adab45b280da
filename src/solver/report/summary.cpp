/* summary.cpp - see summary.h. */
#include "solver/report/summary.h"

#include "solver/codes/codes.h"
#include "solver/io/io.h"
#include "solver/report/words.h"

#include <algorithm>
#include <cinttypes>
#include <cmath>

/* ---- what was read ------------------------------------------------------------------------------------------------ */

/* Smallest and largest size of the finite values that are not 0. */
struct value_range {
    double least = model_inf;
    double most = 0.0;
};

static void range_add(value_range *range, double value)
{
    const double size = std::fabs(value);
    if (size == 0.0 || std::isinf(size)) return;
    range->least = std::min(range->least, size);
    range->most = std::max(range->most, size);
}

static value_range range_of(const std::vector<double> &values)
{
    value_range range;
    for (double v : values) range_add(&range, v);
    return range;
}

static value_range range_of_sides(const std::vector<double> &lower, const std::vector<double> &upper)
{
    value_range range = range_of(lower);
    for (double v : upper) range_add(&range, v);
    return range;
}

static std::string range_text(const value_range &range)
{
    if (range.most == 0.0) return "none";
    return text_format("[%.0e, %.0e]", range.least, range.most);
}

/* How many of the rows or columns have which bound key, by key. */
struct key_counts {
    int32_t num[5] = {0, 0, 0, 0, 0};
};

static key_counts count_keys(const std::vector<double> &lower, const std::vector<double> &upper)
{
    key_counts counts;
    for (size_t k = 0; k < lower.size(); ++k) ++counts.num[bounds_to_key(lower[k], upper[k])];
    return counts;
}

/* "8 equalities, 19 inequalities": the parts that are not 0. */
static std::string list_counts(std::initializer_list<std::pair<int64_t, const char *>> parts)
{
    std::string text;
    for (const auto &[num, what] : parts) {
        if (num == 0) continue;
        if (!text.empty()) text += ", ";
        text += text_format("%" PRId64 " %s", num, what);
    }
    return text;
}

std::string summary_rows(const model *m)
{
    const key_counts rows = count_keys(m->con_lower, m->con_upper);
    return list_counts({{rows.num[ZLR_BK_FX], "equal"},
                        {rows.num[ZLR_BK_LO] + rows.num[ZLR_BK_UP], "one-sided"},
                        {rows.num[ZLR_BK_RA], "ranged"},
                        {rows.num[ZLR_BK_FR], "free"},
                        {static_cast<int64_t>(m->qcon.size()), "quadratic"},
                        {m->functions != nullptr ? static_cast<int64_t>(m->functions->row.size()) : 0, "nonlinear"}});
}

std::string summary_columns(const model *m)
{
    const key_counts cols = count_keys(m->var_lower, m->var_upper);
    int32_t num_binary = 0;
    for (size_t j = 0; j < m->var_type.size(); ++j)
        if (m->var_type[j] == ZLR_VAR_INT && m->var_lower[j] == 0.0 && m->var_upper[j] == 1.0) ++num_binary;
    return list_counts({{model_num_int(m) - num_binary, "integer"},
                        {num_binary, "binary"},
                        {m->num_var - model_num_int(m), "continuous"},
                        {cols.num[ZLR_BK_FR], "free"},
                        {cols.num[ZLR_BK_FX], "fixed"}});
}

std::string summary_nonzeros(const model *m)
{
    const double cells = static_cast<double>(m->num_con) * static_cast<double>(m->num_var);
    const double density = cells > 0.0 ? 100.0 * static_cast<double>(model_num_nz(m)) / cells : 0.0;
    int64_t num_q = static_cast<int64_t>(m->qobj.size());
    for (const quad_row &row : m->qcon) num_q += static_cast<int64_t>(row.terms.size());

    std::string text = text_format("density %.*g %%", density < 99.5 ? 2 : 3, density); /* not 1e+02 */
    if (num_q > 0) text_append(&text, ", %" PRId64 " quadratic terms", num_q);
    return text;
}

std::vector<std::string> summary_cone_items(const model *m)
{
    static const std::pair<int32_t, const char *> types[] = {{ZLR_CT_QUAD, "quadratic"}, {ZLR_CT_RQUAD, "rotated"}};
    std::vector<std::string> items;
    for (const auto &[type, word] : types) {
        size_t num = 0;
        size_t least = SIZE_MAX;
        size_t most = 0;
        for (const model_cone &cone : m->cones) {
            if (cone.type != type) continue;
            ++num;
            least = std::min(least, cone.member.size());
            most = std::max(most, cone.member.size());
        }
        if (num == 0) continue;
        items.push_back(least == most ? text_format("%zu %s of %zu columns", num, word, most)
                                      : text_format("%zu %s of %zu to %zu columns", num, word, least, most));
    }
    return items;
}

std::string summary_cones(const model *m)
{
    std::string text;
    for (const std::string &item : summary_cone_items(m)) text += (text.empty() ? "" : ", ") + item;
    return text;
}

std::string summary_cone_name(const model *m, int32_t cone)
{
    if (cone < 0 || cone >= model_num_cones(m)) return "";
    return names_shown(&m->var_names, m->cones[static_cast<size_t>(cone)].member[0], 'x');
}

static void add_sizes(const model *m, std::string *text)
{
    text_append(text, "  Rows       %-10d %s\n", m->num_con, summary_rows(m).c_str());
    text_append(text, "  Columns    %-10d %s\n", m->num_var, summary_columns(m).c_str());
    text_append(text, "  Nonzeros   %-10" PRId64 " %s\n", model_num_nz(m), summary_nonzeros(m).c_str());
    if (!m->cones.empty()) text_append(text, "  Cones      %-10zu %s\n", m->cones.size(), summary_cones(m).c_str());
}

static void add_ranges(const model *m, std::string *text)
{
    text_append(text, "  Ranges     matrix %s  cost %s\n", range_text(range_of(m->a.value)).c_str(),
                range_text(range_of(m->c)).c_str());
    text_append(text, "             bounds %s  right-hand sides %s\n",
                range_text(range_of_sides(m->var_lower, m->var_upper)).c_str(),
                range_text(range_of_sides(m->con_lower, m->con_upper)).c_str());
}

void summary_read(const ZLR_task *task, stream_set *out, int32_t stream)
{
    const model *m = task->problem.get();
    const int32_t detail = param_int(&task->params, IPAR_LOG_PROBLEM);
    std::string text;
    if (detail == LOG_PROBLEM_OFF || !streams_linked(out, stream)) return;

    const char *format = task->data_format >= 0 ? format_table[task->data_format].name : nullptr;
    text_append(&text, "\nProblem '%s', %s, %s", m->name.c_str(), words_problem_type(model_problem_type(m)),
                m->sense == ZLR_SENSE_MAX ? "maximise" : "minimise");
    if (format != nullptr) text_append(&text, ", read as %s in %.2f s", format, task->read_time_s);
    text += "\n";
    add_sizes(m, &text);
    if (detail == LOG_PROBLEM_ALL) add_ranges(m, &text);
    text += "\n";
    streams_write(out, stream, text.c_str());
}

/* ---- what was found ----------------------------------------------------------------------------------------------- */

/* "rows 1.2e-09 (cap)": nothing where the check did not look, and no place where there is none. */
static std::string violation_text(const char *what, double size, const std::string &where)
{
    if (std::isnan(size)) return "";
    std::string text = text_format("  %s %.1e", what, size);
    if (size > 0.0 && !where.empty()) text += " (" + where + ")";
    return text;
}

static std::string place(const name_table *names, int32_t worst, char prefix)
{
    return worst >= 0 ? names_shown(names, worst, prefix) : "";
}

static void add_check(const model *m, const solution_check *check, std::string *text)
{
    const std::string parts[] = {
        violation_text("rows", check->row, place(&m->con_names, check->worst_row, 'c')),
        violation_text("bounds", check->bound, place(&m->var_names, check->worst_bound, 'x')),
        violation_text("integrality", check->integrality, place(&m->var_names, check->worst_int, 'x')),
        violation_text("cones", check->cone, summary_cone_name(m, check->worst_cone)),
        violation_text("duals", check->dual, place(&m->var_names, check->worst_dual, 'x')),
        violation_text("compl.", check->complementarity, ""),
    };
    std::string line = "  Violations ";
    bool any = false;
    for (const std::string &part : parts) {
        if (part.empty()) continue;
        if (any && line.size() + part.size() > 80) {
            text_append(text, "%s\n", line.c_str());
            line = "           ";
        }
        line += any ? part : part.substr(2);
        any = true;
    }
    if (any) text_append(text, "%s\n", line.c_str());
}

const char *summary_certificate(int32_t kind, int32_t solsta)
{
    switch (solsta) {
    case ZLR_SOLSTA_PRIM_INFEAS_CER:
    case ZLR_SOLSTA_NEAR_PRIM_INFEAS_CER:
        return kind == ZLR_SOL_ITG ? "No integer point satisfies all rows and bounds."
                                   : "No point satisfies all rows and bounds: the row duals prove it.";
    case ZLR_SOLSTA_DUAL_INFEAS_CER:
    case ZLR_SOLSTA_NEAR_DUAL_INFEAS_CER: return "The objective improves without end along the column values.";
    default: return nullptr;
    }
}

static void add_objectives(const ZLR_task *task, int32_t kind, const solution *sol, std::string *text)
{
    if (const char *meaning = summary_certificate(kind, sol->solsta); meaning != nullptr) {
        text_append(text, "  %s\n", meaning);
        return;
    }
    const int places = param_int(&task->params, IPAR_LOG_DIGITS) - 1; /* behind the point */
    text_append(text, "  Objective  %.*e", places, sol->primal_obj);
    if (kind == ZLR_SOL_ITG) {
        if (!std::isnan(task->run.best_bound)) text_append(text, "  bound %.*e", places, task->run.best_bound);
        if (!std::isnan(task->run.relative_gap)) text_append(text, "  gap %.4g %%", 100.0 * task->run.relative_gap);
    } else if (!std::isnan(sol->check.dual)) {
        text_append(text, "  dual %.*e", places, sol->dual_obj);
    }
    *text += "\n";
}

void summary_solution(const ZLR_task *task, stream_set *out, int32_t stream)
{
    const int32_t detail = param_int(&task->params, IPAR_LOG_SOLUTION);
    std::string text;
    bool any = false;
    if (detail == LOG_SOLUTION_OFF || !streams_linked(out, stream)) return;
    for (int32_t kind = ZLR_SOL_ITR; kind <= ZLR_SOL_ITG; ++kind) {
        const solution *sol = &task->sol[kind];
        if (!sol->defined) continue;
        any = true;
        std::string title = words_solution_kind(kind);
        title[0] = static_cast<char>(title[0] - 'a' + 'A');
        text_append(&text, "\n%s solution: %s (problem %s)\n", title.c_str(),
                    words_solution_status(sol->solsta, sol->is_local), words_problem_status(sol->prosta));
        add_objectives(task, kind, sol, &text);
        if (detail == LOG_SOLUTION_ALL) add_check(task->problem.get(), &sol->check, &text);
    }
    if (!any) text += "\nNo solution.\n";
    streams_write(out, stream, text.c_str());
}

/* ---- how ---------------------------------------------------------------------------------------------------------- */

/* What to say when nothing was counted. */
static const char *idle_text(const run_record *run)
{
    if (run->engine.empty()) return "none";
    return run->return_code == ZLR_RES_OK ? "none: solved by presolve" : "none that was counted";
}

std::string summary_work(const run_record *run)
{
    const std::string work = list_counts({{run->simplex_iterations, "simplex iterations"},
                                          {run->ipm_iterations, "interior-point iterations"},
                                          {run->crossover_iterations, "crossover steps"},
                                          {run->pdlp_iterations, "first-order iterations"},
                                          {run->nodes, "nodes"}});
    return work.empty() ? idle_text(run) : work;
}

void summary_optimizer(const ZLR_task *task, stream_set *out, int32_t stream)
{
    const run_record *run = &task->run;
    std::string text;
    if (param_int(&task->params, IPAR_LOG_ENGINE) == 0 || !streams_linked(out, stream)) return;
    if (!run->ran) {
        streams_write(out, stream, "Optimizer: has not run.\n");
        return;
    }

    text_append(&text, "Optimizer: %s", run->engine.empty() ? "no engine answered" : run->engine.c_str());
    if (!run->method.empty()) text_append(&text, ", %s", run->method.c_str());
    text_append(&text, ", %d %s\n", run->threads, run->threads == 1 ? "thread" : "threads");
    if (!run->remark.empty()) text_append(&text, "  Remark     %s\n", run->remark.c_str());

    text_append(&text, "  Work       %s\n", summary_work(run).c_str());
    text_append(&text, "  Time       %.2f s (start %.2f, solve %.2f, check %.2f)\n", run->time_total_s,
                run->time_start_s, run->time_solve_s, run->time_check_s);
    if (run->return_code != ZLR_RES_OK) {
        const code_row *row = code_find(run->return_code);
        text_append(&text, "  Ended by   %s\n", row != nullptr ? row->text : "an unknown code");
    }
    streams_write(out, stream, text.c_str());
}
