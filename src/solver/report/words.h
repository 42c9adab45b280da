/* words.h - the words for statuses, keys and kinds: one table each, for reports, files and the JSON result. */
#pragma once

#include "zelor.h"

#include <string_view>

/* Upper case with underscores: "PRIMAL_AND_DUAL_FEASIBLE". Null for an unknown number. `is_local`: of a
 * solution's field of that name. */
const char *words_problem_status(int32_t prosta);
const char *words_solution_status(int32_t solsta, bool is_local = false);

/* Numbers of words, without regard to case; -1 for an unknown word. */
int32_t words_find_problem_status(std::string_view word);
int32_t words_find_solution_status(std::string_view word, bool *is_local = nullptr);

/* Two letters for a status key, and back (-1: unknown):
 * UN undefined, BS basic, SB superbasic, LL at lower, UL at upper, EQ fixed, IN infinite. */
const char *words_status_key(int32_t key);
int32_t words_find_status_key(std::string_view word);

/* "interior", "basic", "integer". */
const char *words_solution_kind(int32_t kind);

/* "linear", "quadratic objective" ... */
const char *words_problem_type(int32_t type);

/* "QUAD", "RQUAD", and back (-1: unknown). */
const char *words_cone_type(int32_t type);
int32_t words_find_cone_type(std::string_view word);
