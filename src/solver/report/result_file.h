/* result_file.h - the result of an optimisation for programs to read: the JSON file named by parameter RESULT_FILE.
 * docs/result-file.md describes it, docs/result.schema.json is its schema. */
#pragma once

#include "solver/model/task.h"

#include <string>

/* Raised when a field changes its meaning or goes; new fields may come under the same name. */
inline constexpr const char *result_schema = "zelor-result-1";

/* Writes the result of the last ZLR_optimize, which gave `return_code`, beside the file named by RESULT_FILE and renames
 * it; does nothing when the parameter is empty. A failure is told on the error stream and returned. */
[[nodiscard]] int32_t result_file_write(ZLR_task *task, int32_t return_code);

/* The text of that file. */
std::string result_text(const ZLR_task *task, int32_t return_code);
