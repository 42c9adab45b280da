/* problem_words.h - how the report on a problem writes names, counts and lists. */
#pragma once

#include "solver/analysis/problem_facts.h"

#include <string>
#include <utility>
#include <vector>

inline constexpr size_t report_width = 80;

std::string row_name(const problem_facts *facts, int32_t row);
std::string column_name(const problem_facts *facts, int32_t col);

/* `lead`, filled up to `indent`, and the items behind it with commas between them, on lines of at most report_width where
 * names let it; lines after the first begin with `indent` blanks. A last item that begins with "and " stands without a
 * comma. */
void words_list(std::string *text, const std::string &lead, size_t indent, const std::vector<std::string> &items);

/* The same with blanks in place of commas: a sentence. */
void words_sentence(std::string *text, const std::string &lead, size_t indent, const std::string &sentence);

/* A count with what is counted, such as "12 equal": the parts that are not 0. */
std::vector<std::string> words_counts(const std::vector<std::pair<int64_t, const char *>> &parts);

/* "1 row", "2 rows". */
std::string words_number(int64_t num, const char *one, const char *many);

/* At most five characters: 12345, 123k, 1.2M; a dot for 0. */
std::string words_short(int64_t num);
