/* verdict.h - what the outside world is told at the end of a run: console line, return-code file, exit status. */
#pragma once

#include "run_options.h"

/* Gives back the texts of the pre-scan, tells the run's return code and returns the exit status. `code_name` is the
 * code's symbolic name or empty; `ampl_exit` is the solve code that the AMPL front end left. */
[[nodiscard]] int32_t verdict_report(run_options *options, const char *code_name, int32_t ampl_exit);
