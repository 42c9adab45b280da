/* html_progress.cpp - the section of the run report that shows how the run went on: charts over time, and the same in
 * numbers. */
#include "solver/report/html_parts.h"

#include "solver/engines/check.h"
#include "solver/report/html_charts.h"
#include "solver/report/html_text.h"
#include "solver/report/reported.h"

#include <algorithm>
#include <cmath>
#include <cstring>

static constexpr size_t table_rows_most = 25;

/* ---- What is shown ---- */

/* A series, and whether its method is the one that gave the answer. */
struct shown_series {
    history_series series;
    bool has_answered = false;
};

/* Of the methods recorded the one whose name begins the answering method's ("interior point with crossover"), the
 * longest such name; else the one with the most points. */
static bool choose_series(const run_trace *trace, const run_record *run, shown_series *shown)
{
    const history_series *best = nullptr;
    for (const history_series &s : trace->history.series) {
        const size_t length = std::strlen(s.method);
        if (run->method.compare(0, length, s.method) != 0) continue;
        if (best == nullptr || length > std::strlen(best->method)) best = &s;
    }
    shown->has_answered = best != nullptr;
    for (const history_series &s : trace->history.series)
        if (!shown->has_answered && (best == nullptr || s.points.size() > best->points.size())) best = &s;
    if (best == nullptr) return false;
    shown->series = *best;
    return true;
}

/* The outcome as the last point, for the last look at an engine is some time before its end. */
static void add_outcome(const ZLR_task *task, shown_series *shown)
{
    const int32_t kind = reported_kind(task);
    if (!shown->has_answered || shown->series.points.empty()) return;
    history_point end = shown->series.points.back();
    end.time_s = std::max(task->run.time_total_s, end.time_s);
    end.primal_infeas = end.dual_infeas = std::nan(""); /* engines measure them in ways of their own */
    end.nodes = std::max(end.nodes, task->run.nodes);
    end.iterations = std::max(end.iterations, task->run.iterations);
    if (kind >= 0) {
        const solution *sol = &task->sol[kind];
        const bool is_integer = kind == ZLR_SOL_ITG;
        end.primal_obj = reported_has_primal_objective(sol) ? sol->primal_obj : std::nan("");
        end.dual_obj = std::nan("");
        if (is_integer) end.dual_obj = task->run.best_bound;
        if (reported_has_dual_objective(sol, kind)) end.dual_obj = sol->dual_obj;
    }
    shown->series.points.push_back(end);
}

static std::vector<chart_point> points_of(const history_series *s, double history_point::*field)
{
    std::vector<chart_point> points;
    for (const history_point &p : s->points) points.push_back({p.time_s, p.*field});
    return points;
}

static double gap_of(const history_point *p)
{
    if (!std::isfinite(p->primal_obj) || !std::isfinite(p->dual_obj)) return std::nan("");
    const double gap = 100.0 * check_relative_gap(p->primal_obj, p->dual_obj);
    return std::isfinite(gap) ? gap : std::nan("");
}

/* ---- Charts ---- */

static std::string ends_at(const history_series *s, double history_point::*field, const char *name)
{
    const auto last = std::find_if(s->points.rbegin(), s->points.rend(),
                                   [field](const history_point &p) { return std::isfinite(p.*field); });
    if (last == s->points.rend()) return "";
    return std::string(" The ") + name + " ends at " + html_number((*last).*field, 8) + ".";
}

static bool append_objectives(std::string *page, const history_series *s)
{
    const char *first = s->is_integer ? "incumbent" : "primal", *second = s->is_integer ? "bound" : "dual";
    const bool is_one = !s->is_integer && std::all_of(s->points.begin(), s->points.end(), [](const history_point &p) {
        return p.primal_obj == p.dual_obj || !(std::isfinite(p.primal_obj) && std::isfinite(p.dual_obj));
    });
    line_chart chart;
    chart.title = s->is_integer ? "Incumbent and bound" : is_one ? "Objective" : "Primal and dual objective";
    chart.description = std::string(chart.title) + " over time." +
                        ends_at(s, &history_point::primal_obj, is_one ? "objective" : first) +
                        (is_one ? "" : ends_at(s, &history_point::dual_obj, second));
    chart.lines.push_back(
        {is_one ? "objective" : first, "first", s->is_integer, points_of(s, &history_point::primal_obj)});
    if (!is_one) chart.lines.push_back({second, "second", s->is_integer, points_of(s, &history_point::dual_obj)});
    return chart_append_lines(page, &chart);
}

static bool append_gap(std::string *page, const history_series *s)
{
    line_chart chart;
    chart_line line = {"gap", "first", true, {}};
    for (const history_point &p : s->points) line.points.push_back({p.time_s, gap_of(&p)});
    chart.title = "Gap, relative to the incumbent";
    chart.description = "The gap between incumbent and bound over time, in percent.";
    chart.unit = " %";
    chart.is_log = true;
    chart.lines.push_back(std::move(line));
    return chart_append_lines(page, &chart);
}

static bool append_residuals(std::string *page, const history_series *s)
{
    line_chart chart;
    chart.title = "Infeasibility, as the engine measures it";
    chart.description = std::string("Primal and dual infeasibility over time.") +
                        ends_at(s, &history_point::primal_infeas, "primal one") +
                        ends_at(s, &history_point::dual_infeas, "dual one");
    chart.is_log = true;
    chart.lines.push_back({"primal", "first", false, points_of(s, &history_point::primal_infeas)});
    chart.lines.push_back({"dual", "second", false, points_of(s, &history_point::dual_infeas)});
    return chart_append_lines(page, &chart);
}

/* ---- Numbers ---- */

static void append_integer_row(std::string *page, const history_point *p)
{
    const double gap = gap_of(p);
    html_table_row(page,
                   {html_seconds(p->time_s), html_count(p->nodes), html_count(p->iterations),
                    html_number(p->primal_obj), html_number(p->dual_obj),
                    std::isnan(gap) ? html_number(gap) : html_number(gap, 4) + " %"},
                   0);
}

static void append_continuous_row(std::string *page, const history_point *p)
{
    html_table_row(page,
                   {html_seconds(p->time_s), html_count(p->iterations), html_number(p->primal_obj),
                    html_number(p->dual_obj), html_residual(p->primal_infeas), html_residual(p->dual_infeas)},
                   0);
}

static void append_table(std::string *page, const history_series *s)
{
    const size_t num = s->points.size(), stride = (num + table_rows_most - 1) / table_rows_most;
    *page += "<details><summary>The progress in numbers</summary>\n";
    if (s->is_integer)
        html_table_begin(page, "", {"Time", "Nodes", "Iterations", "Incumbent", "Bound", "Gap"}, 0);
    else
        html_table_begin(page, "",
                         {"Time", "Iterations", "Primal objective", "Dual objective", "Primal infeas.", "Dual infeas."},
                         0);
    for (size_t k = 0; k < num; k++) {
        if (k % stride != 0 && k + 1 != num) continue;
        if (s->is_integer)
            append_integer_row(page, &s->points[k]);
        else
            append_continuous_row(page, &s->points[k]);
    }
    html_table_end(page);
    *page += "</details>\n";
}

/* ---- The section ---- */

static std::string who_is_shown(const run_trace *trace, const shown_series *shown)
{
    std::string text = "Shown is " + html_escape(shown->series.method);
    text += shown->has_answered ? ", which gave the answer."
                                : "; the method that gave the answer ended before it was looked at.";
    std::string others;
    for (const history_series &s : trace->history.series) {
        if (std::strcmp(s.method, shown->series.method) == 0) continue;
        others += (others.empty() ? "" : ", ") + html_escape(s.method);
    }
    return others.empty() ? text : text + " Also at work: " + others + ".";
}

void html_progress(std::string *page, const ZLR_task *task, const run_trace *trace)
{
    shown_series shown;
    html_begin(page, "progress", "Progress");
    const bool any = trace != nullptr && choose_series(trace, &task->run, &shown);
    std::string charts;
    bool drawn = false;
    if (any) {
        add_outcome(task, &shown);
        drawn = append_objectives(&charts, &shown.series);
        drawn |=
            shown.series.is_integer ? append_gap(&charts, &shown.series) : append_residuals(&charts, &shown.series);
    }
    if (drawn) {
        html_paragraph(page, "", who_is_shown(trace, &shown));
        *page += "<div class=\"pair\">\n" + charts + "</div>\n";
        append_table(page, &shown.series);
    } else {
        html_paragraph(page, "", "The run was over before there was any progress to draw.");
    }
    html_end(page);
}
