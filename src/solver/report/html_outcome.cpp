/* html_outcome.cpp - the first section of the run report: how it ended, in plain words, with the numbers that matter. */
#include "solver/report/html_parts.h"

#include "solver/codes/codes.h"
#include "solver/report/html_text.h"
#include "solver/report/reported.h"
#include "solver/report/summary.h"
#include "solver/report/words.h"

#include <algorithm>
#include <cmath>
#include <iterator>

/* What a status means to somebody who has not read the manual. `tone`: good, part or bad. */
struct verdict {
    int32_t solsta;
    const char *tone, *title, *text;
};

static const verdict verdicts[] = {
    {ZLR_SOLSTA_UNKNOWN, "bad", "No answer", "The run has left a point that passes none of the checks."},
    {ZLR_SOLSTA_OPTIMAL, "good", "Optimal", "No point is better than the one found, within the tolerances."},
    {ZLR_SOLSTA_INTEGER_OPTIMAL, "good", "Optimal",
     "The point found satisfies everything, and none is better by more than the gap asked for."},
    {ZLR_SOLSTA_NEAR_OPTIMAL, "part", "Nearly optimal",
     "The point found is optimal but for violations somewhat beyond the tolerances."},
    {ZLR_SOLSTA_NEAR_INTEGER_OPTIMAL, "part", "Nearly optimal",
     "The point found is optimal but for violations somewhat beyond the tolerances."},
    {ZLR_SOLSTA_PRIM_FEAS, "part", "Feasible, not known to be optimal",
     "The point found satisfies all rows and bounds; there may be better ones."},
    {ZLR_SOLSTA_NEAR_PRIM_FEAS, "part", "Nearly feasible",
     "The point found satisfies rows and bounds but for violations somewhat beyond the tolerances."},
    {ZLR_SOLSTA_DUAL_FEAS, "part", "A bound, and no feasible point",
     "The duals found bound the objective; no point that satisfies all rows and bounds is known."},
    {ZLR_SOLSTA_NEAR_DUAL_FEAS, "part", "Nearly a bound, and no feasible point",
     "The duals found bound the objective but for violations somewhat beyond the tolerances."},
    {ZLR_SOLSTA_PRIM_AND_DUAL_FEAS, "part", "Feasible, with a bound",
     "The point found satisfies all rows and bounds, and the duals bound how much better another one may be."},
    {ZLR_SOLSTA_PRIM_INFEAS_CER, "bad", "Infeasible", "The problem has no solution. "},
    {ZLR_SOLSTA_NEAR_PRIM_INFEAS_CER, "bad", "Probably infeasible",
     "The proof holds but for violations somewhat beyond the tolerances. "},
    {ZLR_SOLSTA_DUAL_INFEAS_CER, "bad", "Unbounded", "The problem has no finite optimum. "},
    {ZLR_SOLSTA_NEAR_DUAL_INFEAS_CER, "bad", "Probably unbounded",
     "The proof holds but for violations somewhat beyond the tolerances. "},
};

static const verdict *find_verdict(const solution *sol)
{
    const verdict *found = std::find_if(std::begin(verdicts), std::end(verdicts),
                                        [sol](const verdict &v) { return v.solsta == sol->solsta; });
    return found != std::end(verdicts) ? found : verdicts;
}

/* A sign of its own shape for each tone. */
static const char *mark_path(const char *tone)
{
    switch (tone[0]) {
    case 'g': return "M2 12a10 10 0 1 0 20 0a10 10 0 1 0 -20 0M7 12.5l3.5 3.5L17 9"; /* a tick in a circle */
    case 'p': return "M12 3L22.5 21h-21zM12 10v5M12 18v.1";                          /* a mark in a triangle */
    default: return "M8 2h8l6 6v8l-6 6h-8l-6-6v-8zM8.5 8.5l7 7M15.5 8.5l-7 7";       /* a cross in an octagon */
    }
}

static double largest(std::initializer_list<double> values)
{
    double most = std::nan("");
    for (const double v : values)
        if (!std::isnan(v) && !(most >= v)) most = v;
    return most;
}

static std::string percent(double share)
{
    if (!std::isfinite(share)) return html_number(share);
    return html_number(100.0 * share, 4) + " %";
}

static void append_facts(std::string *page, const ZLR_task *task, int32_t kind)
{
    const run_record *run = &task->run;
    *page += "<dl class=\"facts\">\n";
    if (kind >= 0) {
        const solution *sol = &task->sol[kind];
        if (reported_has_primal_objective(sol)) html_entry(page, "Objective", html_number(sol->primal_obj));
        if (kind == ZLR_SOL_ITG && !std::isnan(run->best_bound)) {
            html_entry(page, "Bound", html_number(run->best_bound));
            html_entry(page, "Gap", percent(run->relative_gap));
        }
        if (reported_has_dual_objective(sol, kind) && !std::isnan(sol->check.dual))
            html_entry(page, "Dual objective", html_number(sol->dual_obj));
        const double worst = largest({sol->check.row, sol->check.bound, sol->check.integrality});
        if (reported_has_primal_objective(sol) && !std::isnan(worst))
            html_entry(page, "Largest violation", html_residual(worst));
    }
    html_entry(page, "Time", html_seconds(run->time_total_s));
    html_entry(page, "Method", html_escape(run->method));
    *page += "</dl>\n";
}

static std::string status_word(const char *word)
{
    return std::string("<code>") + (word != nullptr ? word : "UNKNOWN") + "</code>";
}

static void append_solutions(std::string *page, const ZLR_task *task)
{
    const bool any =
        std::any_of(std::begin(task->sol), std::end(task->sol), [](const solution &s) { return s.defined; });
    if (!any) return;
    html_table_begin(page, "", {"Solution", "Its status", "Problem status", "Objective", "Dual objective or bound"}, 3);
    for (const int32_t kind : {ZLR_SOL_ITG, ZLR_SOL_BAS, ZLR_SOL_ITR}) {
        const solution *sol = &task->sol[kind];
        if (!sol->defined) continue;
        const double primal = reported_has_primal_objective(sol) ? sol->primal_obj : std::nan("");
        double dual = std::nan("");
        if (kind == ZLR_SOL_ITG) dual = task->run.best_bound;
        if (reported_has_dual_objective(sol, kind)) dual = sol->dual_obj;
        html_table_row(page,
                       {words_solution_kind(kind), status_word(words_solution_status(sol->solsta, sol->is_local)),
                        status_word(words_problem_status(sol->prosta)), html_number(primal, 16), html_number(dual, 16)},
                       3);
    }
    html_table_end(page);
}

void html_outcome(std::string *page, const ZLR_task *task, int32_t return_code)
{
    static const verdict no_solution = {0, "bad", "No answer", "The run has left no solution."};
    const int32_t kind = reported_kind(task);
    const verdict *v = kind >= 0 ? find_verdict(&task->sol[kind]) : &no_solution;
    const code_row *code = code_find(return_code);

    text_append(page, "<section id=\"outcome\" class=\"verdict %s\" aria-labelledby=\"outcome-title\">\n", v->tone);
    text_append(page,
                "<h2 id=\"outcome-title\"><svg class=\"mark\" viewBox=\"0 0 24 24\" aria-hidden=\"true\">"
                "<path d=\"%s\"/></svg>%s</h2>\n",
                mark_path(v->tone), v->title);
    std::string text = v->text;
    if (kind >= 0)
        if (const char *meaning = summary_certificate(kind, task->sol[kind].solsta); meaning != nullptr)
            text += meaning;
    html_paragraph(page, "", text);
    if (return_code != ZLR_RES_OK)
        html_paragraph(page, "", html_escape(code != nullptr ? code->text : "Ended by an unknown code") + ".");
    append_facts(page, task, kind);
    html_end(page);
    if (kind < 0) return;
    html_begin(page, "solutions", "Solutions");
    append_solutions(page, task);
    html_end(page);
}
