/* html_report.h - the run report: a page of HTML that needs nothing but itself. docs/run-report.md describes it. */
#pragma once

#include "solver/model/task.h"

#include <string>

/* Begins to keep what the report needs of the optimisation to come, its progress and its log, if REPORT_FILE has a name;
 * else nothing is kept and nothing costs anything. */
void html_report_begin(ZLR_task *task);

/* Writes the report of the last optimisation, which gave `return_code`, beside the file of REPORT_FILE and renames it, and
 * lets go of what was kept; without a name it does nothing else. A failure is told on the error stream and returned. */
[[nodiscard]] int32_t html_report_write(ZLR_task *task, int32_t return_code);

/* The page. The trace is null where nothing was kept of the run. */
std::string html_report_text(const ZLR_task *task, const run_trace *trace, int32_t return_code);
