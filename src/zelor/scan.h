/* scan.h - the two scanners of the command line and what they share.
 *
 * The line is read several times, because what an option needs does not exist at once. prescan_arguments runs before
 * there is any library object, apply_arguments against the task, once before the data is read and once after it. Each
 * is a dispatch on the key, the character behind the dash, followed by comparisons of the whole token. They differ in
 * what they accept, and scripts rely on those differences: a token that one refuses may be passed over by another. */
#pragma once

#include "run_options.h"

/* Sets every field that it owns to its default and reads what is needed before the library is used.
 * Returns 1 to go on, 0 to stop: a message or the usage was printed. */
[[nodiscard]] int32_t prescan_arguments(int32_t argc, char **argv, run_options *options);

/* Applies the options to the task and to the record. `before_read` not 0: all of the line; 0: what stands behind the
 * first "-+". Returns 1 to go on, 0 to stop; the return code of a failure is left in run_status, which is cleared on
 * entry with write_parameters and objective_sense. A result of 0 with run_status 0 is a bad command line. */
[[nodiscard]] int32_t apply_arguments(int32_t argc, char **argv, ZLR_task *task, int32_t before_read,
                                      run_options *options);

/* ---- Shared by both scanners ---- */

/* A token with what stands behind it: args[0] is the token, `left` counts it and all that follow. */
struct token_list {
    int32_t left;
    char **args;
};

inline token_list tokens_from(int32_t argc, char **argv, int32_t i) { return {argc - i, argv + i}; }

inline bool is_option(const char *token) { return token[0] == '-'; }

inline bool has_value(token_list at) { return at.left > 1; }

bool same_text(const char *a, const char *b);

/* Solution kind of "itr", "bas" or "itg", or -1. */
int32_t solution_kind_of(const char *word);

/* Tokens that an option takes: itself and its value, where there is one. */
int32_t tokens_with_value(token_list at);

/* Tokens of a list option: itself and all up to the next option. */
int32_t tokens_with_list(token_list at);

/* Replaces a text by a copy of another and frees the old one. Returns 0, or 1051 with the field empty. */
int32_t replace_text(char **field, const char *text);

/* "-anasoli word" and "-anasolo word": sets the flag of the kind, or prints what is wrong. Returns 1, or 0. */
[[nodiscard]] int32_t scan_solution_flag(token_list at, int32_t flags[NUM_SOLUTION_KINDS]);

/* The message for a value that is missing or wrong. Its wording is kept, as are the others': scripts look for them. */
void print_argument_error(const char *text);
