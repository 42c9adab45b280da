/* html_parts.h - the sections of the run report, each appended to the page, and what they are written with.
 *
 * A section is a heading with its content; one that has nothing to say is left out or says why. Every text that does not
 * stand in the sources goes through html_text.h. */
#pragma once

#include "solver/model/task.h"

#include <string>
#include <string_view>

/* Sections, in the order of the page. The trace is null where nothing was kept of the run. */
void html_outcome(std::string *page, const ZLR_task *task, int32_t return_code);
void html_problem(std::string *page, const ZLR_task *task);
void html_run(std::string *page, const ZLR_task *task, const run_trace *trace, int32_t return_code);
void html_progress(std::string *page, const ZLR_task *task, const run_trace *trace);
void html_quality(std::string *page, const ZLR_task *task);
void html_values(std::string *page, const ZLR_task *task);
void html_numbers(std::string *page, const ZLR_task *task);
void html_matrix(std::string *page, const ZLR_task *task);
void html_parameters(std::string *page, const ZLR_task *task);
void html_log(std::string *page, const run_trace *trace);

/* The anchors and titles of the sections, for the list at the top. */
struct html_section {
    const char *id, *title;
};
inline constexpr html_section html_sections[] = {
    {"outcome", "Outcome"},
    {"problem", "Problem"},
    {"run", "Run"},
    {"progress", "Progress"},
    {"quality", "Quality"},
    {"values", "Values"},
    {"numbers", "Coefficients"},
    {"matrix", "Matrix"},
    {"parameters", "Parameters"},
    {"log", "Log"},
};

/* "<section ...><h2>...</h2>" and its end. */
void html_begin(std::string *page, const char *id, std::string_view title);
void html_end(std::string *page);

/* An entry of a definition list. The value is HTML; nothing is written for an empty one. */
void html_entry(std::string *page, const char *label, std::string_view value_html);

/* "<p class=...>TEXT</p>"; the text is HTML. */
void html_paragraph(std::string *page, const char *css, std::string_view text_html);

/* Tables: cells are HTML. A row starts with a cell that is its heading; `num_text` of its cells are texts, the others
 * numbers, which stand at the right. */
void html_table_begin(std::string *page, std::string_view title_html, std::initializer_list<std::string_view> heads,
                      size_t num_text);
void html_table_row(std::string *page, std::initializer_list<std::string_view> cells, size_t num_text);
void html_table_end(std::string *page);

/* Names of row i and column j as elements; a dash for -1. */
std::string html_row_name(const model *m, int32_t i);
std::string html_column_name(const model *m, int32_t j);
std::string html_cone_name(const model *m, int32_t cone); /* by its head */
