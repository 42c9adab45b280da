/* random_problem.h - tiny random problems, in exact form and as tasks. */
#pragma once

#include "enumerator.h"
#include "zelor.h"

/* A number from the environment: how many problems are tried (ZELOR_RANDOM_COUNT), where they begin (ZELOR_RANDOM_SEED). */
int64_t random_env(const char *name, int64_t fallback);

/* Up to four rows and columns, all kinds of sides, some crossed; integer columns are bounded. */
exact_problem random_problem(uint64_t seed);

/* A side as the interface has it. */
double random_side(int64_t value);

/* Fills an empty task. Rows and columns have no names, so that they go by c1, c2 ... and x1, x2 ... */
void random_fill(ZLR_task *task, const exact_problem *p);
