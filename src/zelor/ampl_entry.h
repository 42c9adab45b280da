/* ampl_entry.h - the hand-over to the AMPL front end. */
#pragma once

#include "zelor.h"

/* Runs one AMPL job on an empty task: stub in, answer out.
 *   argv        in, ends in null: the name that the program was called by, the stub, what follows it; not kept
 *   optimize    in, 0: the task is filled and nothing more
 *   solve_code  in and out, AMPL's solve result code; left alone when no answer was written
 * Returns a return code of the library. */
[[nodiscard]] int32_t ZLR_amplrun(char **argv, ZLR_task *task, int32_t optimize, int32_t *solve_code);
