/* engine.h - what the library asks of an engine, and what an engine gives.
 *
 * An adapter is a module of its own: a shared object beside the library that exports one symbol, `zelor_engine`, its
 * adapter record. It is loaded on first use with its symbols kept local, and never unloaded. Everything an engine works
 * on stands in a job that is shared (std::shared_ptr) between the runner and the engine's thread: when the runner leaves
 * an engine that does not come back, the job lives on until that thread has ended.
 *
 * Signs: an adapter gives row duals and reduced costs in the library's convention (zelor.h, "Duals"). */
#pragma once

#include "solver/engines/smooth.h"
#include "solver/model/model.h"
#include "zelor.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

inline constexpr int32_t engine_abi = 6;

enum engine_method {
    METHOD_CHOOSE = 0, /* the engine's own choice */
    METHOD_DUAL_SIMPLEX,
    METHOD_PRIMAL_SIMPLEX,
    METHOD_INTPNT, /* interior point, with crossover unless the job says otherwise */
    METHOD_HIPO,
    METHOD_PDLP,
    METHOD_ACTIVE_SET, /* quadratic objectives */
    METHOD_MIP
};

enum engine_status {
    ENGINE_UNKNOWN = 0, /* ended without an answer */
    ENGINE_OPTIMAL,
    ENGINE_PRIMAL_INFEASIBLE,
    ENGINE_DUAL_INFEASIBLE, /* unbounded, or no dual feasible point */
    ENGINE_INFEASIBLE_OR_UNBOUNDED,
    ENGINE_STOPPED, /* the stop flag was seen */
    ENGINE_TIME_LIMIT,
    ENGINE_ITERATION_LIMIT,
    ENGINE_NODE_LIMIT,
    ENGINE_SOLUTION_LIMIT,
    ENGINE_OBJECTIVE_LIMIT,
    ENGINE_MEMORY,
    ENGINE_REFUSED, /* does not take this problem or option; `message` tells */
    ENGINE_FAILED   /* an error inside the engine; `message` tells */
};

/* An engine's own option with the value of the parameter that stands for it. Only parameters that are not at their
 * default are handed over. */
struct engine_option {
    std::string name;
    int32_t param_class; /* ZLR_PAR_... */
    double dou = 0.0;
    int32_t integer = 0;
    std::string str;
};

/* A start: any of the parts may be empty. */
struct engine_start {
    std::vector<int32_t> row_key, col_key; /* ZLR_SK_...: a basis */
    std::vector<double> x, y;
};

/* An answer. Vectors are empty where the engine has nothing to give. */
struct engine_answer {
    engine_status status = ENGINE_UNKNOWN;
    std::string message;
    std::vector<double> x;                 /* columns */
    std::vector<double> y;                 /* row multipliers */
    std::vector<double> reduced;           /* reduced costs */
    std::vector<double> cone_dual;         /* columns: duals of cones, 0 where a column is in none */
    std::vector<int32_t> row_key, col_key; /* a basis */
    std::vector<double> primal_ray;        /* columns: certificate of dual infeasibility */
    std::vector<double> dual_ray;          /* rows: certificate of primal infeasibility */
    double best_bound = 0.0;
    bool has_bound = false;
    int64_t simplex_iterations = 0, ipm_iterations = 0, crossover_iterations = 0, pdlp_iterations = 0;
    int64_t nodes = 0;
};

/* Progress, written by the engine's thread as it goes and read by the runner. */
struct engine_progress {
    int64_t iterations = 0;
    int64_t nodes = 0;
    double primal_obj = 0.0, dual_obj = 0.0;
    bool has_primal = false, has_dual = false;
    double primal_infeas = -1.0, dual_infeas = -1.0; /* negative: not known */
    const char *phase = "";                          /* "presolve", "simplex" ...; a constant */
};

struct engine_adapter;
struct engine_job;

/* Work on an engine's thread other than a solve: see engine_session_calls. It keeps what it finds in records of its own,
 * which it shares with who gave the order. */
typedef std::function<void(const engine_adapter *adapter, const std::shared_ptr<engine_job> &job)> engine_work;

struct engine_job {
    engine_work work; /* done in place of a solve, where given */
    std::shared_ptr<const model> problem;
    engine_method method = METHOD_CHOOSE;
    int32_t threads = 1;
    double time_limit_s = 0.0;  /* what is left of it when the job starts; infinite: none */
    bool want_interior = false; /* keep the interior solution that crossover starts from */
    std::vector<engine_option> options;
    engine_start start;

    std::atomic<bool> stop{false}; /* the runner raises it; the engine ends at its next poll */
    std::atomic<bool> left{false}; /* the runner has gone: hand over nothing any more */

    std::mutex mutex; /* guards all below */
    engine_progress progress;
    std::vector<double> incumbent; /* newest feasible x of branch and cut; empty when taken */
    double incumbent_obj = 0.0;
    engine_answer interior; /* the interior solution before crossover, if want_interior */
    bool has_interior = false;
    double start_s = 0.0; /* time that the adapter took to load the problem into the engine */
    engine_answer answer;

    /* What the engine still holds when it has given its answer. Only its own thread touches this, and frees it while the
     * answer is looked at. */
    std::shared_ptr<void> rest;
};

/* Ranging of an optimal basis. Each pair holds, for a column or a row, how far a number of the problem can go down or up
 * before the basis changes, and the objective there. Infinite: no end. */
struct engine_range {
    std::vector<double> down, up, objective_down, objective_up;
};

enum engine_number { NUMBER_COST, NUMBER_COLUMN, NUMBER_ROW };

struct engine_ranges {
    engine_range cost, column, row; /* costs; bounds of columns and sides of rows, by activity where they are basic */
};

/* Changes of one number, down at most 0 and up at least 0, up to which the basis stays optimal. */
struct engine_reach {
    double down = 0.0, up = 0.0;
    bool turns_down = false, turns_up = false; /* the price is another one beyond; false: that is not known */
};

/* Sides of rows and bounds of columns: not 0 for those that belong to it. */
struct engine_sides {
    std::vector<char> row_lower, row_upper, col_lower, col_upper;
};

/* What a violation of 1 costs; negative: may not be violated. */
struct engine_weights {
    std::vector<double> col_lower, col_upper, row;
};

/* A problem that stays loaded while bounds and costs change and that is solved again from where it stood: for what asks
 * many small questions. All calls on one session come from one thread, the job's. */
struct engine_session;
struct engine_session_calls {
    /* Loads a copy of a problem, by the job's method and options. Null: refused, `message` tells. */
    engine_session *(*open)(const std::shared_ptr<engine_job> &job, const model *problem, std::string *message);
    void (*row_bounds)(engine_session *session, int32_t i, double lower, double upper);
    void (*col_bounds)(engine_session *session, int32_t j, double lower, double upper);
    void (*col_cost)(engine_session *session, int32_t j, double cost);
    void (*solve)(engine_session *session, double time_limit_s, engine_answer *answer); /* infinite: no limit */
    void (*forget)(engine_session *session); /* the next solve starts from nothing */

    /* The next solve starts from this answer's basis, with what is changed from here on: costs alone keep it feasible,
     * bounds alone keep it dual feasible, and the session solves by what is kept. */
    void (*restart)(engine_session *session, const engine_answer *basis);
    bool (*ranges)(engine_session *session, engine_ranges *ranges); /* behind a solve that ended optimal */

    /* The same for one number: a cost, or the bound or side that a nonbasic column or row is at. `at` is the answer of
     * that solve. False: not so, or no such basis. */
    bool (*range_one)(engine_session *session, const engine_answer *at, engine_number what, int32_t index,
                      engine_reach *reach);
    void (*close)(engine_session *session);

    /* Optional, null where the engine has none. The engine's own infeasible part of a continuous problem, as the engine
     * claims it; false where it finds none within the time. */
    bool (*infeasible_sides)(engine_session *session, double time_limit_s, engine_sides *sides);

    /* Optional, null where the engine has none. The point of least weighted violation of a continuous problem, as the
     * engine claims it, in answer->x, with multipliers of the rows in answer->y; false where it finds none within the
     * time. The statuses of the answer say nothing. */
    bool (*relax)(engine_session *session, double time_limit_s, const engine_weights *weights, engine_answer *answer);
};

struct engine_adapter {
    int32_t abi; /* engine_abi */
    const char *name;
    const char *(*version)(void);
    const char *licence;

    /* Whether the engine takes the problem by this method. */
    bool (*accepts)(const model *problem, engine_method method);

    /* Solves and fills job->answer (under the mutex). Runs on a thread of its own; throws nothing. */
    void (*solve)(const std::shared_ptr<engine_job> &job);

    const engine_session_calls *sessions; /* null: the engine has none */

    /* Problems of smooth functions, on the calling thread; null: the engine takes none. One that takes only these accepts
     * no problem. */
    smooth_solve solve_smooth = nullptr;
};
