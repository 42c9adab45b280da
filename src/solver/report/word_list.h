/* word_list.h - parameters that hold a list of words with commas between, such as fields that are wanted. */
#pragma once

#include "solver/report/streams.h"

#include <string>
#include <string_view>
#include <vector>

/* The words of a list. Commas and blanks divide them; none is empty. */
std::vector<std::string_view> word_list_split(std::string_view list);

/* Whether a word is wanted: it is in the list, with regard to case, or the list is empty. */
bool word_list_wants(std::string_view list, std::string_view word);

/* Warns of each word of the list that is none of those known. `param` is the parameter's name. */
void word_list_check(std::string_view list, const std::vector<std::string_view> &known, const char *param,
                     stream_set *out);
