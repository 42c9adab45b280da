/* exit_guard_posix.cpp - see exit_guard.h. */
#include "solver/engines/exit_guard.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <sched.h>
#include <unistd.h>

static std::atomic<int32_t> num_running{0}; /* threads in an engine */
static std::atomic<int32_t> num_leaving{0}; /* threads that tidy up */

/* Thread-local data go in the reverse order of their making: the mark is made first and goes last. */
struct thread_mark {
    thread_mark() = default;
    thread_mark(const thread_mark &) = delete;
    thread_mark &operator=(const thread_mark &) = delete;
    ~thread_mark() { num_leaving--; }
};

void exit_guard_add(int32_t num_threads) { num_running += num_threads; }

void exit_guard_enter()
{
    static thread_local const thread_mark mark;
    (void)&mark;
}

void exit_guard_leave()
{
    num_leaving++;
    num_running--;
}

static void end_process(int status, void *)
{
    if (num_running == 0) {
        while (num_leaving > 0) sched_yield();
        return;
    }
    (void)std::fflush(nullptr);
    _exit(status);
}

/* Handlers run in the reverse order too: one that is registered behind the load runs before the library's own. */
void exit_guard_arm() { (void)on_exit(end_process, nullptr); }
