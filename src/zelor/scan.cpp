/* scan.cpp - what both scanners of the command line share. */
#include "scan.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

bool same_text(const char *a, const char *b) { return std::strcmp(a, b) == 0; }

int32_t solution_kind_of(const char *word)
{
    static const char *const words[NUM_SOLUTION_KINDS] = {"itr", "bas", "itg"};
    for (int32_t kind = 0; kind < NUM_SOLUTION_KINDS; ++kind) {
        if (same_text(word, words[kind])) return kind;
    }
    return -1;
}

int32_t tokens_with_value(token_list at) { return has_value(at) ? 2 : 1; }

int32_t tokens_with_list(token_list at)
{
    int32_t num = 1;
    while (num < at.left && !is_option(at.args[num])) ++num;
    return num;
}

int32_t replace_text(char **field, const char *text)
{
    std::free(*field);
    *field = strdup(text);
    return *field != nullptr ? ZLR_RES_OK : ZLR_RES_ERR_SPACE;
}

int32_t scan_solution_flag(token_list at, int32_t flags[NUM_SOLUTION_KINDS])
{
    const int32_t kind = has_value(at) ? solution_kind_of(at.args[1]) : -1;
    if (kind < 0) {
        print_argument_error(at.args[0]);
        return 0;
    }
    flags[kind] = 1;
    return 1;
}

void print_argument_error(const char *text) { std::printf("Error while procssing argument: %s\n", text); }
