/* local_attempts.h - the ways to try a local solve, in order: settings and starts. */
#pragma once

#include "solver/engines/optimize.h"

/* One way to try. */
struct local_attempt {
    const char *what; /* for the log, behind the method's name */
    std::vector<engine_option> extra;
    bool is_warm = false;      /* from multipliers as well */
    bool is_perturbed = false; /* from somewhere near the start */
    bool is_random = false;    /* from anywhere within the bounds */
    bool has_ranges = false;   /* equations are taken as narrow ranges */
    bool goes_on = false;      /* from where the last attempt ended, with its multipliers */
};

/* All that are tried, as far as NLP_MAX_ATTEMPTS allows. */
std::vector<local_attempt> local_attempts(const optimization *o);

/* The attempt that goes on from an answer by the engine's measure that misses the library's: the engine's is of the scaled
 * problem, with bounds widened by a share of their size, and the point is put back on them at the end, which can move rows. */
local_attempt local_sharper(const param_set *params);

/* Where an attempt starts that does not go on; `sign` is the form's. */
smooth_start local_start(const optimization *o, const local_attempt *attempt, double sign);

/* The engine's options for it: the user's parameters, the attempt's own, NLP_OPTIONS. */
std::vector<engine_option> local_options(const optimization *o, const local_attempt *attempt);
