/* effort.h - what a piece of work may cost, and whether it is still wanted.
 *
 * Work that can take long asks in front of each step that can: it gives up where the step would cost more than is left, or
 * where somebody has raised the flag. Its results mean nothing then. So the same code runs on the calling thread up to a
 * small cost, and on a thread of its own beyond. A step is about a nanosecond's worth; the costs are rough. */
#pragma once

#include <atomic>
#include <limits>

struct work_effort {
    double steps_left = std::numeric_limits<double>::infinity();
    const std::atomic<bool> *stop = nullptr; /* another thread raises it; null: nobody does */
    bool is_given_up = false;
};

/* Whether there is effort for so many more steps. `effort` may be null: no limits. */
inline bool effort_take(work_effort *effort, double steps)
{
    if (effort == nullptr) return true;
    effort->steps_left -= steps;
    const bool is_stopped = effort->stop != nullptr && effort->stop->load();
    if (is_stopped || !(effort->steps_left >= 0.0)) effort->is_given_up = true;
    return !effort->is_given_up;
}

inline bool effort_is_over(const work_effort *effort) { return effort != nullptr && effort->is_given_up; }
