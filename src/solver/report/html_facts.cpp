/* html_facts.cpp - sections of the run report that list what is known: the run, the problem, parameters, the log. */
#include "solver/report/html_parts.h"

#include "solver/codes/codes.h"
#include "solver/codes/version.h"
#include "solver/io/io.h"
#include "solver/report/html_text.h"
#include "solver/report/summary.h"
#include "solver/report/words.h"

#include <algorithm>
#include <chrono>

/* A log of so many lines is shown at once, a longer one when it is asked for. */
static constexpr int64_t log_lines_open = 40;

/* Universal time: the same on every machine that looks at the page. */
static std::string time_element(std::chrono::system_clock::time_point when)
{
    const auto day = std::chrono::floor<std::chrono::days>(when);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss clock(std::chrono::floor<std::chrono::seconds>(when - day));
    const std::string ymd = text_format("%04d-%02u-%02u", static_cast<int>(date.year()),
                                        static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
    const std::string hms =
        text_format("%02d:%02d:%02d", static_cast<int>(clock.hours().count()),
                    static_cast<int>(clock.minutes().count()), static_cast<int>(clock.seconds().count()));
    return "<time datetime=\"" + ymd + "T" + hms + "Z\">" + ymd + " " + hms + " UTC</time>";
}

static std::string code_text(int32_t return_code)
{
    const code_row *row = code_find(return_code);
    if (row == nullptr) return std::to_string(return_code);
    return text_format("%d <code>%s</code>: %s", return_code, row->symbol, html_escape(row->text).c_str());
}

void html_run(std::string *page, const ZLR_task *task, const run_trace *trace, int32_t return_code)
{
    const run_record *run = &task->run;
    const std::string phases = "start " + html_seconds(run->time_start_s) + ", solve " +
                               html_seconds(run->time_solve_s) + ", check " + html_seconds(run->time_check_s);
    html_begin(page, "run", "Run");
    *page += "<dl class=\"list\">\n";
    if (trace != nullptr) html_entry(page, "Begun", time_element(trace->begun));
    html_entry(page, "Label", html_escape(param_str(&task->params, SPAR_STAT_LABEL)));
    html_entry(page, "Engine", run->engine.empty() ? "none" : html_escape(run->engine));
    html_entry(page, "Method", html_escape(run->method));
    html_entry(page, "Remark", html_escape(run->remark));
    html_entry(page, "Threads", html_count(run->threads));
    html_entry(page, "Work", html_escape(summary_work(run)));
    html_entry(page, "Time", html_seconds(run->time_total_s) + " <span class=\"soft\">(" + phases + ")</span>");
    html_entry(page, "Return code", code_text(return_code));
    html_entry(page, "Program",
               text_format("ZELOR %d.%d.%d, build %d", version_major, version_minor, version_revision, version_build));
    *page += "</dl>\n";
    html_end(page);
}

static std::string with_detail(std::string_view text, const std::string &detail)
{
    std::string html(text);
    if (!detail.empty()) html += " <span class=\"soft\">(" + html_escape(detail) + ")</span>";
    return html;
}

void html_problem(std::string *page, const ZLR_task *task)
{
    const model *m = task->problem.get();
    const char *format = task->data_format >= 0 ? format_table[task->data_format].name : nullptr;

    html_begin(page, "problem", "Problem");
    *page += "<dl class=\"list\">\n";
    html_entry(page, "Name", m->name.empty() ? "none" : html_name(m->name));
    if (!task->data_file.empty())
        html_entry(
            page, "File",
            with_detail(html_name(task->data_file),
                        format != nullptr ? std::string(format) + ", read in " + html_seconds(task->read_time_s) : ""));
    html_entry(page, "Type", html_escape(words_problem_type(model_problem_type(m))));
    html_entry(page, "Objective", with_detail(m->sense == ZLR_SENSE_MAX ? "maximise" : "minimise", m->obj_name));
    html_entry(page, "Rows", with_detail(html_count(m->num_con), summary_rows(m)));
    html_entry(page, "Columns", with_detail(html_count(m->num_var), summary_columns(m)));
    html_entry(page, "Nonzeros", with_detail(html_count(model_num_nz(m)), summary_nonzeros(m)));
    if (!m->cones.empty()) html_entry(page, "Cones", with_detail(html_count(model_num_cones(m)), summary_cones(m)));
    *page += "</dl>\n";
    html_end(page);
}

/* ---- Parameters ---- */

static std::string value_cell(const param_set *set, const param_row *row)
{
    const std::string value = param_value_text(set, row);
    return value.empty() ? "<span class=\"soft\">none</span>" : "<code>" + html_escape(value) + "</code>";
}

void html_parameters(std::string *page, const ZLR_task *task)
{
    int32_t num = 0, num_changed = 0;
    const param_row *rows = param_table(&num);
    param_set defaults;

    param_set_defaults(&defaults);
    html_begin(page, "parameters", "Parameters");
    for (const param_row *row = rows; row != rows + num; row++) {
        if (param_is_default(&task->params, row)) continue;
        if (num_changed++ == 0)
            html_table_begin(page, "Those that were not at their defaults",
                             {"Name", "Value", "Default", "What it does"}, 4);
        html_table_row(page,
                       {std::string("<code>") + row->name + "</code>", value_cell(&task->params, row),
                        value_cell(&defaults, row), html_escape(row->text)},
                       4);
    }
    if (num_changed > 0)
        html_table_end(page);
    else
        html_paragraph(page, "", "All parameters were at their defaults.");
    html_end(page);
}

/* ---- The log ---- */

void html_log(std::string *page, const run_trace *trace)
{
    html_begin(page, "log", "Log");
    const stream_capture *log = trace != nullptr ? &trace->log : nullptr;
    if (log == nullptr || log->head.empty()) {
        html_paragraph(page, "", "The optimisation has printed nothing.");
        html_end(page);
        return;
    }
    const int64_t num_lines =
        std::count(log->head.begin(), log->head.end(), '\n') + std::count(log->tail.begin(), log->tail.end(), '\n');
    text_append(page, "<details%s><summary>What the optimisation has printed: %s %s</summary>\n<pre>",
                num_lines <= log_lines_open ? " open" : "", html_count(num_lines).c_str(),
                num_lines == 1 ? "line" : "lines");
    html_append(page, log->head);
    if (log->left_out_bytes > 0)
        *page += "\n[" + html_count(log->left_out_bytes) + " bytes of the log are left out here]\n";
    html_append(page, log->tail);
    *page += "</pre></details>\n";
    html_end(page);
}
