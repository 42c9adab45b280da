/* own_work.h - long work of the library itself, stopped as engines are.
 *
 * It begins on the calling thread, with an effort (solver/conic/effort.h) that is used up long before a stop would have to
 * wait. Most problems are done with then. What would take longer is begun anew on a thread of its own, which the runner
 * watches and leaves like an engine's. */
#pragma once

#include "solver/conic/effort.h"
#include "solver/engines/runner.h"

#include <functional>

/* Works with data that it holds shares of, and writes to records that it holds shares of: a thread that is left keeps them
 * alive and nobody looks at them any more. Begins from nothing each time that it is called. */
typedef std::function<void(work_effort *effort)> own_work;

/* True: the work is done, and what it has written can be read. False: the progress callback or the time limit came in
 * between, now or before (watch->stop_code tells which). Memory that runs out on the thread is std::bad_alloc here. */
[[nodiscard]] bool own_work_do(run_watch *watch, const own_work &work);
