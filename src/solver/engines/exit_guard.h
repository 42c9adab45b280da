/* exit_guard.h - the end of a process in which threads of engines still run.
 *
 * A thread whose engine has given its answer and that only tidies up is waited for: that is short. An engine that did not
 * come back goes on, and nobody waits for it; but the static data of its library are destroyed on the way out of exit(),
 * under its hands. So where such a one runs, the process is ended in front of that: streams of the C library are flushed,
 * and handlers that were registered before the first engine was loaded are not run. With every engine back, and on systems
 * that end all other threads first, nothing of this happens. */
#pragma once

#include <cstdint>
#include <thread>

/* Counts threads that are about to run engines; negative: that could not be started after all. */
void exit_guard_add(int32_t num_threads);

/* The first thing in such a thread: it stops to count when its thread-local data have gone. */
void exit_guard_enter();

/* Takes over a thread whose engine has given its answer. It is joined when the next one is taken over, or at the exit. */
void exit_guard_retire(std::thread thread);

/* To be called each time that an engine's library has been loaded, by whoever loaded it. */
void exit_guard_arm();
