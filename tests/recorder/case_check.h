/* case_check.h - one row of a table of whole runs, and its check. */
#pragma once

#include "recorded_run.h"

/* A run and what must be seen of it. Null: not looked at. */
struct run_case {
    const char *name;
    const char *line;
    const char *script;
    int status;                   /* exit status */
    const char *calls;            /* these calls, whole, in this order, others between them; "; " between two */
    const char *absent;           /* no call begins with one of these; "; " between two */
    const char *out;              /* standard output holds this */
    bool may_keep_blocks = false; /* as in run_request */
};

/* Returns the run, so that a test can look further. */
recorded_run check_case(const run_case &item);

std::vector<std::string> split(const std::string &text, const std::string &separator);
