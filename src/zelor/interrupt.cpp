/* interrupt.cpp - counting interrupts and passing them on. */
#include "interrupt.h"

#include <csignal>
#include <cstdio>

std::atomic<int64_t> sigint_count = 0;
std::atomic<int32_t> break_reported = 0;

static_assert(std::atomic<int64_t>::is_always_lock_free, "a signal handler may not wait for a lock");

extern "C" void sigint_handler(int number)
{
    sigint_count.fetch_add(1, std::memory_order_relaxed);
    (void)std::signal(number, sigint_handler);
}

extern "C" int32_t break_callback(ZLR_task *task, void *handle, const ZLR_progress *progress)
{
    (void)task;
    (void)handle;
    (void)progress;
    if (break_reported == 0 && sigint_count != 0) {
        break_reported = 1;
        std::printf("CTRLC-C has been pressed.\n");
    }
    return break_reported;
}

void interrupt_clear(void)
{
    break_reported = 0;
    sigint_count = 0;
}
