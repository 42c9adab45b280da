/* exit_guard_posix.cpp - see exit_guard.h. */
#include "solver/engines/exit_guard.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <unistd.h>
#include <utility>
#include <vector>

static std::atomic<int32_t> num_running{0};

/* Never freed: threads may come and go while static data are destroyed. */
struct kept_threads {
    std::mutex mutex;
    std::vector<std::thread> answered;
    std::vector<guarded_thread> left;
};
static kept_threads *const kept = new kept_threads;

/* Thread-local data go in the reverse order of their making: the mark is made first and goes last. */
struct thread_mark {
    explicit thread_mark(std::shared_ptr<std::atomic<bool>> flag) : is_gone(std::move(flag)) {}
    thread_mark(const thread_mark &) = delete;
    thread_mark &operator=(const thread_mark &) = delete;
    ~thread_mark()
    {
        *is_gone = true;
        num_running--;
    }
    std::shared_ptr<std::atomic<bool>> is_gone;
};

guarded_thread exit_guard_start(std::function<void()> body)
{
    guarded_thread made;
    made.is_gone = std::make_shared<std::atomic<bool>>(false);
    num_running++;
    try {
        made.thread = std::thread([flag = made.is_gone, body = std::move(body)] {
            static thread_local const thread_mark mark(flag);
            (void)&mark;
            body();
        });
    } catch (...) {
        num_running--;
        throw;
    }
    return made;
}

/* Both under the lock. */
static void join_answered()
{
    for (std::thread &thread : kept->answered) thread.join();
    kept->answered.clear();
}

static void join_gone()
{
    std::erase_if(kept->left, [](guarded_thread &one) {
        if (!*one.is_gone) return false;
        one.thread.join();
        return true;
    });
}

static void end_process(int status, void *)
{
    {
        const std::lock_guard<std::mutex> lock(kept->mutex);
        join_answered();
        if (num_running == 0) {
            join_gone();
            return;
        }
    }
    (void)std::fflush(nullptr);
    _exit(status);
}

/* Engines that are no modules load nothing, so nobody else arms the guard for them. */
static void arm_once()
{
    static const int registered = on_exit(end_process, nullptr);
    (void)registered;
}

void exit_guard_retire(guarded_thread thread)
{
    const std::lock_guard<std::mutex> lock(kept->mutex);
    arm_once();
    join_answered();
    join_gone();
    kept->answered.push_back(std::move(thread.thread));
}

void exit_guard_leave(guarded_thread thread)
{
    const std::lock_guard<std::mutex> lock(kept->mutex);
    exit_guard_arm();
    join_gone();
    kept->left.push_back(std::move(thread));
}

/* Handlers run in the reverse order too: one that is registered behind the load runs before the library's own. */
void exit_guard_arm() { (void)on_exit(end_process, nullptr); }

void exit_guard_arm_again()
{
    const std::lock_guard<std::mutex> lock(kept->mutex);
    join_gone();
    if (!kept->left.empty() || !kept->answered.empty()) exit_guard_arm();
}
