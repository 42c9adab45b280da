/* work.h - many small questions to one engine: work on its thread, watched by the calling thread like an optimisation. */
#pragma once

#include "solver/engines/engine.h"
#include "solver/model/task.h"

/* How a piece of work came to its end. */
enum work_end {
    WORK_DONE,
    WORK_STOPPED,     /* by the progress callback; what was found so far stands in the work's own records */
    WORK_OUT_OF_TIME, /* the same by the time limit */
    WORK_REFUSED      /* no engine, or none with sessions; `message` tells */
};

/* Runs `work` with the problem, and a start for it, on a thread of the linear engine. `time_limit_s` may be infinite; the progress callback of
 * the task is polled. Nothing is printed. The work must look at job->stop and job->left between two solves, and write
 * what it finds under a lock, as it may go on for a while behind a stop: nobody waits for it longer than for any engine. */
[[nodiscard]] work_end engines_work(ZLR_task *task, const std::shared_ptr<const model> &problem,
                                    const engine_start &start, double time_limit_s, const engine_work &work,
                                    std::string *message);

/* The same on a thread of the conic engine, with an empty problem: the work brings its own. */
[[nodiscard]] work_end engines_conic_work(ZLR_task *task, double time_limit_s, const engine_work &work,
                                          std::string *message);

/* The same with a session of the problem, open while `use` works with it. */
typedef std::function<void(const engine_session_calls *calls, engine_session *session)> session_use;
[[nodiscard]] work_end engines_session(ZLR_task *task, const std::shared_ptr<const model> &problem, double time_limit_s,
                                       const session_use &use, std::string *message);

/* What a work has found: it may come behind a stop, when nobody waits for it any more. */
template <class found_type> struct work_find {
    std::mutex mutex;
    found_type found;
};
