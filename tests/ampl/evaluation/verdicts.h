/* verdicts.h - whether a stub's objective or row is quadratic: what the look through the stub says, and the AMPL Solver
 * Library. */
#pragma once

#include <string>

struct ZLR_env;
struct ZLR_task;

struct verdicts {
    bool is_read = false;
    bool by_look = false;    /* it is not */
    bool by_library = false; /* asked where it is not by the look */
};

/* Where stubs are judged. */
struct verdict_task {
    verdict_task();
    ~verdict_task();
    verdict_task(const verdict_task &) = delete;
    verdict_task &operator=(const verdict_task &) = delete;

    ZLR_env *env = nullptr;
    ZLR_task *task = nullptr;
};

/* Of the first row, or the objective. The stub's name is without ".nl". */
verdicts judge_function(const verdict_task &where, const std::string &stub, bool is_row);
