/* statistics.h - the statistics facility: a line of JSON for each optimisation, appended to the file of STAT_FILE.
 * docs/statistics.md describes it, docs/statistics.schema.json is its schema; zelor.h tells when what is written. */
#pragma once

#include "solver/model/task.h"

#include <string>

/* Raised when a field changes its meaning or goes; new fields may come under the same name. */
inline constexpr const char *statistics_schema = "zelor-statistics-1";

/* ZLR_startstat, ZLR_stopstat, ZLR_appendstat. */
[[nodiscard]] int32_t statistics_start(ZLR_task *task);
[[nodiscard]] int32_t statistics_stop(ZLR_task *task);
[[nodiscard]] int32_t statistics_append(ZLR_task *task);

/* To be called behind every optimisation, when its record is complete. */
void statistics_note(ZLR_task *task);

/* Tells that collected lines go with the task, if there are any. */
void statistics_warn_of_loss(ZLR_task *task);

/* The line about the last optimisation, from the task as it is, with its line end. */
std::string statistics_line(const ZLR_task *task);
