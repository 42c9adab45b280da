/* run_history.cpp - see run_history.h. */
#include "solver/report/run_history.h"

#include "solver/report/progress.h"

#include <cmath>
#include <cstring>
#include <limits>

static double value_or_nan(bool is_known, double value)
{
    return is_known && std::isfinite(value) ? value : std::numeric_limits<double>::quiet_NaN();
}

static history_point point_of(const progress_line *line)
{
    history_point p = {};
    p.time_s = line->time_s;
    p.iterations = line->iterations;
    p.nodes = line->nodes;
    p.primal_obj = value_or_nan(line->has_primal, line->primal_obj);
    p.dual_obj = value_or_nan(line->has_dual, line->dual_obj);
    p.primal_infeas = value_or_nan(line->primal_infeas >= 0.0, line->primal_infeas);
    p.dual_infeas = value_or_nan(line->dual_infeas >= 0.0, line->dual_infeas);
    return p;
}

static bool same_value(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

/* Alike in all but the time. */
static bool says_the_same(const history_point *a, const history_point *b)
{
    return a->iterations == b->iterations && a->nodes == b->nodes && same_value(a->primal_obj, b->primal_obj) &&
           same_value(a->dual_obj, b->dual_obj) && same_value(a->primal_infeas, b->primal_infeas) &&
           same_value(a->dual_infeas, b->dual_infeas);
}

static history_series *series_of(run_history *history, const progress_line *line)
{
    for (history_series &s : history->series)
        if (std::strcmp(s.method, line->method) == 0) return &s;
    history_series made;
    made.method = line->method;
    made.is_integer = line->is_integer;
    history->series.push_back(made);
    return &history->series.back();
}

static void thin(history_series *s)
{
    std::vector<history_point> &points = s->points;
    const history_point newest = points.back();
    size_t kept = 0;
    for (size_t k = 0; k + 1 < points.size(); k += 2) points[kept++] = points[k];
    points.resize(kept);
    points.push_back(newest);
    s->step_s = (newest.time_s - points.front().time_s) / static_cast<double>(kept);
}

void run_history_add(run_history *history, const progress_line *line)
{
    history_series *s = series_of(history, line);
    std::vector<history_point> &points = s->points;
    const history_point p = point_of(line);
    const size_t num = points.size();

    if (num > 0 && says_the_same(&points.back(), &p)) return;
    if (num >= 2 && points[num - 1].time_s - points[num - 2].time_s < s->step_s) {
        points.back() = p; /* the newest was there for being the newest only */
        return;
    }
    if (num >= history->max_points) thin(s);
    points.push_back(p);
}
