/* session.h - one solve by HiGHS, through its C interface alone, so that any build of it from 1.10 on will do.
 *
 * The record lives on the engine's thread and belongs to it. The job is shared with the runner; what the runner reads
 * while the engine works is written under the job's mutex. HiGHS copies the model, so that nothing here refers to the
 * task once it is passed.
 *
 *   options.cpp   settings and the start        progress.cpp  callbacks: progress, incumbents, stop
 *   answer.cpp    statuses, vectors, rays       adapter.cpp   the record that the library loads, and the order of it all
 *   sessions.cpp  problems that stay loaded     range_one.cpp  ranging of a single number */
#pragma once

#include "solver/engines/engine.h"

#include "interfaces/highs_c_api.h"

#include <chrono>
#include <memory>
#include <string>

struct highs_session {
    std::shared_ptr<engine_job> job;
    std::shared_ptr<const model> problem; /* the job's, or one of a session's own */
    void *highs = nullptr;
    bool is_mip = false;
    bool has_ipm_limit = false; /* the user's: reaching it is a limit, reaching ours a stall */
    bool crossover = true;      /* a basic solution is wanted of an interior or first-order method */
    const char *phase = "";
    double min_step_s = 0.02; /* between two updates of the progress record */
    std::chrono::steady_clock::time_point last_update{};
    bool is_second = false; /* solves beside another session of the same job: keeps out of its progress record */
    std::string last_error; /* the engine's last error message */

    highs_session() = default;
    highs_session(const highs_session &) = delete;
    highs_session &operator=(const highs_session &) = delete;
    ~highs_session()
    {
        if (highs != nullptr) Highs_destroy(highs);
    }
};

/* Each returns false with job->answer's status and message set when HiGHS does not take what it is given. */
bool highs_set_options(highs_session *s, engine_answer *answer);
bool highs_pass_model(highs_session *s, engine_answer *answer);

/* Loads the library that HiPO needs, where it stands in the folder "hipo" beside HiGHS: HiGHS, which looks for it by
 * name at every run, then finds it loaded. It is kept out of HiGHS's own folder because it would be loaded there for
 * every problem, with a pool of threads, for a third of the time that a small model takes. */
void highs_load_hipo();

/* A start that HiGHS does not take is left out: it is help, not part of the problem. */
void highs_pass_start(highs_session *s);

/* By the bounds of the session's problem. */
void highs_pass_basis(highs_session *s, const std::vector<int32_t> &row_key, const std::vector<int32_t> &col_key);

/* Of the rows. */
std::vector<double> highs_activity(const model *m, const std::vector<double> &x);

/* A basis that a point near an optimum suggests: basic is what lies between its bounds. */
void highs_set_basis_from_point(highs_session *s, const engine_answer *point);

void highs_watch(highs_session *s);

/* What a line of HiGHS's log tells of its progress; lines that are not understood change nothing. */
void highs_read_log_line(const char *line, engine_method method, engine_progress *progress);

/* Makes the engine and hands everything over; false with the answer's status set where it is refused or stopped. */
bool highs_open(highs_session *s, engine_answer *answer);

/* Whether the job is to end. */
inline bool highs_is_stopped(const highs_session *s) { return s->job->stop.load() || s->job->left.load(); }

/* range_one.cpp: see engine_session_calls. */
bool highs_range_one(const highs_session *s, const engine_answer *at, engine_number what, int32_t index,
                     engine_reach *reach);

/* sessions.cpp: problems that stay loaded. */
extern const engine_session_calls highs_session_calls;

/* Fills an answer from the state after a run. */
void highs_get_answer(highs_session *s, engine_answer *answer);

/* Rays of an infeasible or unbounded linear problem. May solve it again without presolve. */
void highs_get_rays(highs_session *s, engine_answer *answer);
