/* exit_guard_posix.cpp - see exit_guard.h. */
#include "solver/engines/exit_guard.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

static std::atomic<int32_t> num_running{0};

/* Thread-local data go in the reverse order of their making: the mark is made first and goes last. */
struct thread_mark {
    thread_mark() = default;
    thread_mark(const thread_mark &) = delete;
    thread_mark &operator=(const thread_mark &) = delete;
    ~thread_mark() { num_running--; }
};

void exit_guard_add(int32_t num_threads) { num_running += num_threads; }

void exit_guard_in_thread()
{
    static thread_local const thread_mark mark;
    (void)&mark;
}

static void end_process(int status, void *)
{
    if (num_running == 0) return;
    (void)std::fflush(nullptr);
    _exit(status);
}

/* Handlers run in the reverse order too: one that is registered behind the load runs before the library's own. */
void exit_guard_arm() { (void)on_exit(end_process, nullptr); }
