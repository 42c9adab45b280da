/* exit_guard.h - the end of a process in which engines still run.
 *
 * An engine that did not come back goes on while the process ends, and nobody waits for it. But the static data of its
 * library are destroyed on the way out of exit(), under its hands. So where engines run at that moment, the process is
 * ended in front of that: streams of the C library are flushed, and what handlers have been registered before the first
 * engine was loaded are not run. With every engine back, and on systems that end all other threads first, nothing of
 * this happens. A thread whose engine has given its answer and that only tidies up is waited for: that is short. */
#pragma once

#include <cstdint>

/* Counts threads that are about to run engines; negative: that could not be started after all. */
void exit_guard_add(int32_t num_threads);

/* The first thing in such a thread, and the last thing that it does with an engine. It counts as tidying up from there
 * until all of it is gone, its thread-local data included. */
void exit_guard_enter();
void exit_guard_leave();

/* To be called each time that an engine's library has been loaded, by whoever loaded it. */
void exit_guard_arm();
