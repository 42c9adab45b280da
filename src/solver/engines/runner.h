/* runner.h - the one place that starts engines, and that leaves them.
 *
 * Each engine runs on a thread of its own, with the problem shared read-only and everything it writes in a job. The
 * calling thread waits in runner_next, where it polls the progress callback, prints the progress table and watches the
 * time. After a stop the engines get a short while to come back; one that does not is left: its job lives on with its
 * thread, hands over nothing any more, and nobody waits for it. Loading the module and passing the model are done on the
 * engine's thread too, so that nothing keeps the calling thread from a stop. */
#pragma once

#include "solver/engines/exit_guard.h"
#include "solver/engines/table.h"
#include "solver/model/task.h"
#include "solver/report/progress.h"
#include "solver/report/run_history.h"

#include <condition_variable>
#include <memory>
#include <mutex>

/* How often the calling thread looks, and how long an engine that was told to stop is waited for. Together they stay
 * below the 0.2 s within which a stop is served. */
inline constexpr double runner_poll_s = 0.03;
inline constexpr double runner_grace_s = 0.15;
inline constexpr double runner_awake_s = 0.005; /* see wait_a_while */

/* One optimisation as the calling thread watches it: lives through all rounds. */
struct run_watch {
    ZLR_task *task = nullptr;
    progress_table table;
    run_history *history = nullptr; /* the task's, where a report is asked for */
    double start_s = 0.0;
    double deadline_s = model_inf;       /* by clock_now_s */
    double round_deadline_s = model_inf; /* the round ends then with what it has: there is an answer that will do */
    int32_t stop_code = ZLR_RES_OK;      /* not 0 once a stop or the time limit was seen */
    double stop_s = 0.0;                 /* when, by clock_now_s: all that is waited for then is waited for together */
    int64_t done_iterations = 0;         /* of engines that have ended, for the callback */
    int64_t done_nodes = 0;
    bool has_primal = false, has_dual = false; /* best known of the task itself */
    double primal_obj = 0.0, dual_obj = 0.0;
    bool is_aside = false; /* the engines work on a problem of our own: their objectives are not the task's */
};

/* What an engine is to do. */
struct run_order {
    plan_step step;
    std::shared_ptr<const model> problem;
    std::vector<engine_option> options; /* the user's; those of the step come after and win */
    engine_start start;
    bool want_interior = false;
    engine_work work; /* in place of a solve */
};

struct run_entry {
    plan_step step;
    guarded_thread thread; /* until it has come back or is left */
    std::shared_ptr<engine_job> job;
    bool is_reported = false; /* given out by runner_next or runner_halt */
    std::string engine;       /* name and version, when it has come back */
    bool is_missing = false;  /* the module could not be loaded; the answer's message tells */
    engine_answer answer;
    engine_answer interior;
    bool has_interior = false;
    std::vector<double> incumbent; /* the newest, when runner_next says so */
    engine_progress progress;      /* the last word, when it was reported or left */
    double start_s = 0.0;          /* time to load the problem into the engine */
};

struct run_signal;

struct runner {
    runner() = default;
    runner(const runner &) = delete;
    runner &operator=(const runner &) = delete;
    ~runner(); /* leaves what still runs */

    run_watch *watch = nullptr;
    double begin_s = 0.0; /* by clock_now_s */
    std::vector<run_entry> entries;
    std::shared_ptr<run_signal> signal;
};

enum run_event { RUN_ANSWER, RUN_INCUMBENT, RUN_STOP, RUN_END };

/* Asks the callback and looks at the clock. True: stop. */
bool watch_poll(run_watch *watch, const engine_progress *progress);

/* Starts the engines. Returns false when no thread can be had. */
bool runner_start(runner *r, run_watch *watch, const std::vector<run_order> &orders);

/* Waits for the next event: an engine that has ended (*which, each once), an incumbent of one that runs, a stop (then
 * watch->stop_code tells which), or the end: every engine has been reported. */
run_event runner_next(runner *r, size_t *which);

/* After a stop: tells the engines, waits until a short while behind that stop, takes the answers of those that come back, and leaves the
 * others. Entries that came back and were not reported yet are in *back. */
void runner_halt(runner *r, std::vector<size_t> *back);

/* Leaves every engine that still runs, without a wait: the losers of a race. */
void runner_leave(runner *r);
