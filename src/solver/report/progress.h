/* progress.h - the one progress table, whatever engine is at work. Goes to the message stream, unless the log level is 0.
 *
 * A line shows the method, its iteration (branch and cut: node), the primal and dual objective (incumbent and bound), the
 * infeasibilities or the gap, and the time; what is not known is a dash. A line is printed when something has changed,
 * the first ones as they come, later ones not before the log interval has passed. 80 columns. The parameters LOG_PROGRESS
 * to LOG_INCUMBENTS, LOG_INTERVAL and LOG_DELAY say how many lines there are. */
#pragma once

#include "solver/params/params.h"
#include "solver/report/streams.h"

#include <cstdint>

/* What a line shows. Negative infeasibilities and a missing objective are not known. */
struct progress_line {
    const char *method = "";
    bool is_integer = false;
    int64_t iterations = 0, nodes = 0;
    bool has_primal = false, has_dual = false;
    double primal_obj = 0.0, dual_obj = 0.0;
    double primal_infeas = -1.0, dual_infeas = -1.0;
    double time_s = 0.0;
};

struct progress_table {
    stream_set *out = nullptr;
    bool is_on = false, tells_notes = false;
    bool shows_incumbents = false; /* each one, whatever the interval */
    double interval_s = 0.5, delay_s = 0.0;
    int32_t first_lines = 20;
    int32_t header_every = 0; /* lines between two headings; 0: there is one */
    int32_t num_lines = 0, num_since_header = 0;
    double last_s = 0.0;
    progress_line last;
};

void progress_begin(progress_table *table, const param_set *params, stream_set *out);

/* Prints the line if it is due and says something new; `force` prints it in any case when it is new. */
void progress_show(progress_table *table, const progress_line *line, bool force);

/* A remark between the lines of the table. */
void progress_note(progress_table *table, const char *text);
