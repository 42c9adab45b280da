/* result_values.h - what programs are told of an optimisation, for the result file and the statistics alike. For the few
 * sources that write JSON: the JSON library is slow to compile.
 *
 * Rule for values: what does not exist is null, never 0 and never left out, so that a reader can ask for every field. */
#pragma once

#include "solver/model/task.h"

#include <nlohmann/json.hpp>
#include <string>

typedef nlohmann::ordered_json json; /* fields in the order of the documentation */

json result_number(double value);
json result_text_or_null(const std::string &text);

/* A word of words.h in lower case with underscores; null gives "unknown". */
json result_word(const char *word);

std::string result_version();

/* The groups of fields: the problem, its answer of a kind (-1: none), how it was found. */
void result_put_problem(json *result, const ZLR_task *task);
void result_put_answer(json *result, const ZLR_task *task, int32_t kind);
void result_put_run(json *result, const ZLR_task *task, int32_t return_code);

/* Leaves the fields that a parameter lists, and the schema; all where it lists none. */
void result_keep_fields(json *result, const char *list);

/* Warns of fields in the list that there are not. */
void result_check_fields(const json &result, const char *list, const char *param, stream_set *out);

/* Seconds that reading took, null for a problem that was not read. */
json result_read_time(const ZLR_task *task);
