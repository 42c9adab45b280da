/* filter.h - leaving out one side after the other, on an engine's thread. */
#pragma once

#include "solver/analysis/sides.h"
#include "solver/engines/check.h"
#include "solver/engines/engine.h"

/* What is known so far: shared by the engine's thread, which may outlive a stop, and the calling one. */
struct filter_state {
    std::mutex mutex;
    std::vector<char> kept; /* infeasible together, at any time, once confirmed */
    int32_t num_open = 0, num_solved = 0;
    bool is_confirmed = false; /* the sides that were given are infeasible */
    bool is_done = false;
};

struct side_filter {
    side_problem part; /* members of one row or column are neighbours */
    check_tolerances tol;
    double deadline_s = model_inf; /* by clock_now_s */
    filter_state state;
};

/* Tries what can be left out, until the deadline or a stop. Without sessions the job's answer tells the refusal. */
void filter_sides(const std::shared_ptr<side_filter> &filter, const engine_adapter *adapter,
                  const std::shared_ptr<engine_job> &job);
