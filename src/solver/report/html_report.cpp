/* html_report.cpp - see html_report.h. The page as a whole; its sections stand in html_parts.h. */
#include "solver/report/html_report.h"

#include "solver/codes/version.h"
#include "solver/io/io.h"
#include "solver/report/html_parts.h"
#include "solver/report/html_style.h"
#include "solver/report/html_text.h"
#include "solver/report/word_list.h"

#include <cerrno>
#include <cstring>

/* The last part of a path. */
static std::string file_part(const std::string &path)
{
    const size_t at = path.find_last_of("/\\");
    return at == std::string::npos ? path : path.substr(at + 1);
}

static std::string shown_title(const ZLR_task *task)
{
    const char *given = param_str(&task->params, SPAR_REPORT_TITLE);
    if (given[0] != '\0') return given;
    if (!task->problem->name.empty()) return task->problem->name;
    return task->data_file.empty() ? "Problem without a name" : file_part(task->data_file);
}

static bool is_wanted(const ZLR_task *task, const char *section)
{
    return word_list_wants(param_str(&task->params, SPAR_REPORT_SECTIONS), section);
}

static void check_sections(const ZLR_task *task, stream_set *out)
{
    std::vector<std::string_view> known;
    for (const html_section &s : html_sections) known.emplace_back(s.id);
    word_list_check(param_str(&task->params, SPAR_REPORT_SECTIONS), known, "REPORT_SECTIONS", out);
}

/* The policy forbids every request, even if a name should find a way past the escapes. */
static void append_head(std::string *page, const std::string &title, int32_t theme)
{
    *page += "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
             "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src 'unsafe-inline'\">\n"
             "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>";
    html_append(page, title);
    *page += " - ZELOR run report</title>\n<style>";
    *page += html_style(theme);
    *page += "</style>\n</head>\n";
}

static void append_top(std::string *page, const ZLR_task *task, const std::string &title)
{
    const model *m = task->problem.get();
    *page += "<header>\n<p class=\"brand\">ZELOR run report</p>\n<h1>" + html_name(title) + "</h1>\n<p class=\"soft\">";
    *page += m->sense == ZLR_SENSE_MAX ? "Maximise: " : "Minimise: ";
    *page += html_count(m->num_con) + (m->num_con == 1 ? " row, " : " rows, ");
    *page += html_count(m->num_var) + (m->num_var == 1 ? " column" : " columns");
    if (const int32_t num = model_num_int(m); num > 0) *page += " of which " + html_count(num) + " integer";
    *page +=
        ", " + html_count(model_num_nz(m)) + (model_num_nz(m) == 1 ? " nonzero" : " nonzeros") + "</p>\n</header>\n";
    *page += "<nav aria-label=\"Sections\"><ul>\n";
    for (const html_section &s : html_sections)
        if (is_wanted(task, s.id)) text_append(page, "<li><a href=\"#%s\">%s</a></li>\n", s.id, s.title);
    *page += "</ul></nav>\n";
}

static void append_sections(std::string *page, const ZLR_task *task, const run_trace *trace, int32_t return_code)
{
    const bool has_problem = is_wanted(task, "problem"), has_run = is_wanted(task, "run");
    if (is_wanted(task, "outcome")) html_outcome(page, task, return_code);
    if (has_problem || has_run) *page += "<div class=\"pair\">\n";
    if (has_problem) html_problem(page, task);
    if (has_run) html_run(page, task, trace, return_code);
    if (has_problem || has_run) *page += "</div>\n";
    if (is_wanted(task, "progress")) html_progress(page, task, trace);
    if (is_wanted(task, "quality")) html_quality(page, task);
    if (is_wanted(task, "values")) html_values(page, task);
    if (is_wanted(task, "numbers")) html_numbers(page, task);
    if (is_wanted(task, "matrix")) html_matrix(page, task);
    if (is_wanted(task, "parameters")) html_parameters(page, task);
    if (is_wanted(task, "log")) html_log(page, trace);
}

std::string html_report_text(const ZLR_task *task, const run_trace *trace, int32_t return_code)
{
    const std::string title = shown_title(task);
    std::string page;

    append_head(&page, title, param_int(&task->params, IPAR_REPORT_THEME));
    page += "<body>\n";
    append_top(&page, task, title);
    page += "<main>\n";
    append_sections(&page, task, trace, return_code);
    page += "</main>\n";
    text_append(
        &page,
        "<footer>Written by ZELOR %d.%d.%d. The page holds all that it shows and asks nobody for more.</footer>\n",
        version_major, version_minor, version_revision);
    page += "</body>\n</html>\n";
    return page;
}

void html_report_begin(ZLR_task *task)
{
    task->trace.reset();
    task->streams.capture = nullptr;
    if (param_str(&task->params, SPAR_REPORT_FILE)[0] == '\0') return;
    task->trace = std::make_unique<run_trace>();
    task->trace->begun = std::chrono::system_clock::now();
    task->streams.capture = &task->trace->log;
}

int32_t html_report_write(ZLR_task *task, int32_t return_code)
{
    /* Let go of in any case: the capture must not outlive the run, not even where memory runs out here. */
    const std::unique_ptr<run_trace> trace = std::move(task->trace);
    task->streams.capture = nullptr;

    const char *target = param_str(&task->params, SPAR_REPORT_FILE);
    if (target[0] == '\0') return ZLR_RES_OK;
    const io_context io = {target, &task->params, &task->streams, task->env->sys};
    check_sections(task, io.out);
    if (trace != nullptr) stream_capture_end(&trace->log);
    errno = 0;
    const int32_t res = sink_whole_file(io.sys, target, io_sink_options_replacing(&io),
                                        html_report_text(task, trace.get(), return_code));
    if (res == ZLR_RES_OK) return res;
    return io_error(&io, res, 0, "the run report cannot be written%s%s", errno != 0 ? ": " : "",
                    errno != 0 ? std::strerror(errno) : "");
}
