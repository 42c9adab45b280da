/* table.h - which engine solves what: the one table, and the plan that is made from it for a task. */
#pragma once

#include "solver/engines/engine.h"
#include "solver/params/params.h"

#include <string>
#include <vector>

/* An engine that the library knows. Tests put tables of their own in place of the library's. */
struct engine_source {
    const char *name;   /* names the module */
    const char *title;  /* as users know it */
    const char *advice; /* how to get it */
    const engine_adapter *(*load)(const char *name, std::string *message);
};

/* One way to solve: an engine, a method, and options that differ from the user's for this attempt. */
struct plan_step {
    const engine_source *source = nullptr;
    engine_method method = METHOD_CHOOSE;
    int32_t threads = 1;
    std::vector<engine_option> extra;
    const char *what = ""; /* what the extra options mean, for the log: "without presolve" */
};

/* Rounds are tried in order until one gives an answer that passes; the steps of a round race. */
struct engine_plan {
    std::vector<std::vector<plan_step>> rounds;
    bool sought[3] = {false, false, false}; /* solution kinds */
    bool want_interior = false;
    int32_t num_better = 1; /* quadratic and conic: rounds that run even when an answer passes, but not by far */
    std::string refusal;    /* why there is no plan */
};

struct engine_table {
    const engine_source *linear = nullptr;
    const engine_source *conic = nullptr;  /* quadratic and conic problems; null: none */
    const engine_source *smooth = nullptr; /* general nonlinear problems, solved locally; null: none */
};

/* The library's own. */
const engine_table *engine_table_default();

/* What a plan depends on besides the task. */
struct plan_machine {
    int32_t cores = 1;
    uint64_t memory_bytes = 0; /* 0: not known */
};

engine_plan plan_make(const engine_table *table, const model *m, const param_set *params, const plan_machine *machine);

/* An interior point of the conic engine with more digits than by its own tolerances. */
plan_step plan_sharp_step(const engine_source *source);

/* An engine's option with a number or a word; where the engine knows the word as a number, with that too. */
engine_option plan_number_option(const char *name, double value);
engine_option plan_word_option(const char *name, const char *word, int32_t value = 0);

/* The user's parameters that are an engine's own options, as far as they are not at their defaults. */
std::vector<engine_option> plan_options(const engine_source *source, const param_set *params);

/* "dual simplex", "interior point" ... */
const char *plan_method_name(engine_method method);
