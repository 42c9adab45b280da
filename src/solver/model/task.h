/* task.h - the records behind the handles ZLR_env and ZLR_task. */
#pragma once

#include "solver/model/blocks.h"
#include "solver/model/model.h"
#include "solver/model/solution.h"
#include "solver/params/params.h"
#include "solver/report/run_trace.h"
#include "solver/report/streams.h"
#include "zelor.h"

#include <memory>
#include <string>
#include <vector>

struct ZLR_env {
    sysenv *sys = nullptr; /* owned: memory that is handed out, and the streams of files */
    stream_set streams;
    block_list blocks;
    std::string licence_path;
    std::vector<int32_t> licence_codes;
    int32_t licence_wait = 0;
    int32_t licence_debug = 0;
};

/* What the last ZLR_optimize did, for summaries and the result file. */
struct run_record {
    bool ran = false;
    int32_t return_code = ZLR_RES_OK;
    std::string engine;     /* name and version of the engine that answered, empty if none did */
    std::string method;     /* "dual simplex", "interior point with crossover", "branch and cut" ... */
    std::string remark;     /* why this engine answered, when it was not the first choice */
    int64_t iterations = 0; /* simplex, interior point and first order together */
    int64_t simplex_iterations = 0, ipm_iterations = 0, crossover_iterations = 0, pdlp_iterations = 0;
    int64_t nodes = 0;
    double best_bound = std::numeric_limits<double>::quiet_NaN();
    double relative_gap = std::numeric_limits<double>::quiet_NaN();
    double time_start_s = 0.0, time_solve_s = 0.0, time_check_s = 0.0, time_total_s = 0.0;
    int32_t threads = 1;
    int64_t ended_ms = 0; /* when, in milliseconds since 1970, UTC */
};

/* What statistics have collected; see ZLR_startstat. An optimisation goes into a file once. */
struct stat_record {
    bool is_collecting = false;
    std::vector<std::string> waiting; /* lines of collected optimisations that no file has yet, oldest first */
    bool last_waits = false;          /* the newest of them is about the last optimisation */
    bool last_is_written = false;     /* a file has the last optimisation */
};

struct ZLR_task {
    ZLR_env *env = nullptr;
    stream_set streams;
    block_list blocks;
    param_set params;
    std::shared_ptr<model> problem; /* never null; change it through task_edit alone */
    solution sol[3];                /* by solution kind */
    ZLR_callbackfunc callback = nullptr;
    void *callback_handle = nullptr;
    run_record run;
    stat_record stat;
    std::unique_ptr<run_trace> trace; /* null but for an optimisation with REPORT_FILE; see html_report.h */
    std::string data_file;            /* where the problem was read from, for reports */
    int32_t data_format = -1;         /* format it was read in, an index of the format table; -1 none */
    double read_time_s = 0.0;
};

/* The model, for a change: a copy of its own is made first if an engine that was left behind still holds it. Drops the
 * solutions, which belong to the old data. */
model *task_edit(ZLR_task *task);

/* The same for a change that leaves the mathematics alone (names): solutions stay. */
model *task_own_problem(ZLR_task *task);

/* Drops the solutions and the record of the last run. */
void task_drop_solutions(ZLR_task *task);
