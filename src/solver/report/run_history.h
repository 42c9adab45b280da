/* run_history.h - the progress of a run, kept for its report: one series of points for each method that was at work.
 *
 * A series never has more than max_points. When it is full every second point goes, and from then on points come no
 * closer to each other than the mean distance of those that are left; so a run of a second and one of a day are both
 * drawn evenly. The first point and the newest are always there. */
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

struct progress_line;

/* NaN stands for what is not known. */
struct history_point {
    double time_s;
    int64_t iterations, nodes;
    double primal_obj, dual_obj; /* branch and cut: incumbent and bound */
    double primal_infeas, dual_infeas;
};

struct history_series {
    const char *method = ""; /* a constant text */
    bool is_integer = false;
    double step_s = 0.0; /* least distance of two points, but for the newest */
    std::vector<history_point> points;
};

struct run_history {
    size_t max_points = 300; /* at least 4 */
    std::vector<history_series> series;
};

/* Adds a line to the series of its method, unless it says nothing new. */
void run_history_add(run_history *history, const progress_line *line);
