/* exit_guard.h - threads that run engines, and the end of a process in which some of them still run.
 *
 * A thread whose engine has given its answer and that only tidies up is waited for: that is short. An engine that did not
 * come back goes on, and nobody waits for it; but the static data of its library are destroyed on the way out of exit(),
 * under its hands. So where such a one runs, the process is ended in front of that: streams of the C library are flushed,
 * and handlers that were registered before the first engine was loaded are not run. With every engine back, and on systems
 * that end all other threads first, nothing of this happens.
 *
 * No thread is let go of before it has gone: what its last steps still hold would be taken for lost. */
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <thread>

struct guarded_thread {
    std::thread thread;
    std::shared_ptr<std::atomic<bool>> is_gone; /* its thread-local data are destroyed: joining it is short */
};

/* Starts `body` in a thread of its own. Throws std::system_error or std::bad_alloc where that cannot be. */
guarded_thread exit_guard_start(std::function<void()> body);

/* Takes over a thread whose engine has given its answer. It is joined when the next one is taken over, or at the exit. */
void exit_guard_retire(guarded_thread thread);

/* Takes over a thread whose engine did not come back. It is joined once it has gone, or never. */
void exit_guard_leave(guarded_thread thread);

/* To be called each time that an engine's library has been loaded, by whoever loaded it. */
void exit_guard_arm();

/* To be called where a program takes its leave of the library: engines make static data of their own while they run, which
 * go in front of whatever was armed before they were made. */
void exit_guard_arm_again();
