/* progress.cpp - see progress.h. */
#include "solver/report/progress.h"

#include <algorithm>
#include <cmath>
#include <cstring>

void progress_begin(progress_table *table, const param_set *params, stream_set *out)
{
    *table = progress_table{};
    table->out = out;
    const bool is_heard = param_int(params, IPAR_LOG_LEVEL) > 0 && streams_linked(out, ZLR_STREAM_MSG);
    const int32_t detail = param_int(params, IPAR_LOG_PROGRESS);
    table->is_on = is_heard && detail == LOG_PROGRESS_ALL;
    table->tells_notes = is_heard && detail != LOG_PROGRESS_OFF;
    table->interval_s = param_dou(params, DPAR_LOG_INTERVAL);
    table->delay_s = param_dou(params, DPAR_LOG_DELAY);
    table->first_lines = param_int(params, IPAR_LOG_FIRST_LINES);
    table->header_every = param_int(params, IPAR_LOG_HEADER_EVERY);
    table->shows_incumbents = param_int(params, IPAR_LOG_INCUMBENTS) != 0;
}

static bool is_same(const progress_line *a, const progress_line *b)
{
    return std::strcmp(a->method, b->method) == 0 && a->iterations == b->iterations && a->nodes == b->nodes &&
           a->has_primal == b->has_primal && a->has_dual == b->has_dual &&
           (!a->has_primal || a->primal_obj == b->primal_obj) && (!a->has_dual || a->dual_obj == b->dual_obj);
}

static void print_header(const progress_table *table, bool is_integer)
{
    if (is_integer)
        streams_printf(table->out, ZLR_STREAM_MSG, "%-15s%8s%11s%15s%15s%9s%7s\n", "Method", "Node", "Iteration",
                       "Incumbent", "Bound", "Gap", "Time");
    else
        streams_printf(table->out, ZLR_STREAM_MSG, "%-14s%9s%17s%16s%9s%9s%6s\n", "Method", "Iteration",
                       "Primal objective", "Dual objective", "P.infeas", "D.infeas", "Time");
}

/* Room for the widest double that the formats give. */
struct cell {
    char text[40];
};

static cell number(bool known, const char *format, double value)
{
    cell c;
    if (!known || !std::isfinite(value))
        (void)std::snprintf(c.text, sizeof(c.text), "-");
    else
        (void)std::snprintf(c.text, sizeof(c.text), format, value);  // NOLINT(clang-diagnostic-format-nonliteral)
    return c;
}

static cell gap_of(const progress_line *line)
{
    if (!line->has_primal || !line->has_dual) return number(false, "", 0.0);
    const double gap = std::fabs(line->primal_obj - line->dual_obj);
    if (gap == 0.0) return number(true, "%.2f%%", 0.0);
    const double share = 100.0 * gap / std::fabs(line->primal_obj);
    return share < 10000.0 ? number(true, "%.2f%%", share) : number(false, "", 0.0);
}

static cell time_of(double time_s) { return number(true, time_s < 1000.0 ? "%.1f" : "%.0f", time_s); }

static void print_line(const progress_table *table, const progress_line *line)
{
    const char *method = line->method;
    const auto iter = static_cast<long long>(line->iterations);
    const auto node = static_cast<long long>(line->nodes);

    if (line->is_integer)
        streams_printf(table->out, ZLR_STREAM_MSG, "%-15.15s%8lld%11lld%15s%15s%9s%7s\n", method, node, iter,
                       number(line->has_primal, "%.8g", line->primal_obj).text,
                       number(line->has_dual, "%.8g", line->dual_obj).text, gap_of(line).text,
                       time_of(line->time_s).text);
    else
        streams_printf(table->out, ZLR_STREAM_MSG, "%-14.14s%9lld%17s%16s%9s%9s%6s\n", method, iter,
                       number(line->has_primal, "%.8e", line->primal_obj).text,
                       number(line->has_dual, "%.8e", line->dual_obj).text,
                       number(line->primal_infeas >= 0.0, "%.1e", line->primal_infeas).text,
                       number(line->dual_infeas >= 0.0, "%.1e", line->dual_infeas).text, time_of(line->time_s).text);
}

static bool is_due(const progress_table *table, const progress_line *line)
{
    const bool has_waited = table->num_lines > 0 ? line->time_s - table->last_s >= table->interval_s : true;
    const bool is_incumbent =
        line->is_integer && line->has_primal && (!table->last.has_primal || line->primal_obj != table->last.primal_obj);
    return has_waited || table->num_lines < table->first_lines || (table->shows_incumbents && is_incumbent);
}

void progress_show(progress_table *table, const progress_line *line, bool force)
{
    if (!table->is_on || line->time_s < table->delay_s) return;
    const bool is_first = table->num_lines == 0;
    if (!is_first && is_same(line, &table->last)) return;
    if (!force && !is_due(table, line)) return;
    const bool is_far = table->header_every > 0 && table->num_since_header >= table->header_every;
    if (is_first || is_far || line->is_integer != table->last.is_integer) {
        print_header(table, line->is_integer);
        table->num_since_header = 0;
    }
    print_line(table, line);
    table->num_lines++;
    table->num_since_header++;
    table->last = *line;
    table->last_s = line->time_s;
}

void progress_note(progress_table *table, const char *text)
{
    if (table->tells_notes) streams_printf(table->out, ZLR_STREAM_MSG, "%s\n", text);
}
