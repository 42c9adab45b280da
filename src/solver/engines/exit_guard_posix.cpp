/* exit_guard_posix.cpp - see exit_guard.h. */
#include "solver/engines/exit_guard.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <unistd.h>
#include <vector>

static std::atomic<int32_t> num_running{0};

/* Never freed: threads may come and go while static data are destroyed. */
struct retired_threads {
    std::mutex mutex;
    std::vector<std::thread> threads;
};
static retired_threads *const retired = new retired_threads;

/* Thread-local data go in the reverse order of their making: the mark is made first and goes last. */
struct thread_mark {
    thread_mark() = default;
    thread_mark(const thread_mark &) = delete;
    thread_mark &operator=(const thread_mark &) = delete;
    ~thread_mark() { num_running--; }
};

void exit_guard_add(int32_t num_threads) { num_running += num_threads; }

void exit_guard_enter()
{
    static thread_local const thread_mark mark;
    (void)&mark;
}

static void join_all(std::vector<std::thread> *threads)
{
    for (std::thread &thread : *threads) thread.join();
    threads->clear();
}

static void end_process(int status, void *)
{
    {
        const std::lock_guard<std::mutex> lock(retired->mutex);
        join_all(&retired->threads);
    }
    if (num_running == 0) return;
    (void)std::fflush(nullptr);
    _exit(status);
}

void exit_guard_retire(std::thread thread)
{
    const std::lock_guard<std::mutex> lock(retired->mutex);
    static const int registered = on_exit(end_process, nullptr); /* engines that are no modules load nothing */
    (void)registered;
    join_all(&retired->threads);
    retired->threads.push_back(std::move(thread));
}

/* Handlers run in the reverse order too: one that is registered behind the load runs before the library's own. */
void exit_guard_arm() { (void)on_exit(end_process, nullptr); }
