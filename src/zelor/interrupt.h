/* interrupt.h - CTRL-C. The signal only counts; the library's progress callback turns the count into a request to stop,
 * and the run goes on behind the optimiser as after any other return from it. One press is enough; further ones add to
 * the count and change nothing. */
#pragma once

#include "zelor.h"

#include <atomic>
#include <cstdint>

/* Deliveries so far. The signal may arrive on any thread, and the callback reads on another: both variables are of a
 * kind that needs no lock. They are independent of each other, so that no order between them is asked for. */
extern std::atomic<int64_t> sigint_count;

/* 1: the interrupt has reached the optimiser. */
extern std::atomic<int32_t> break_reported;

/* Catches the signals that count: the interrupt, and on POSIX the termination signal as well, since batch systems send
 * it and the answer found so far must not be lost. */
void interrupt_install(void);

/* Clears both variables. An interrupt behind the optimiser is counted, and has no effect. */
void interrupt_clear(void);

extern "C" {
/* Counts, and installs itself again for C libraries that reset a handler at each delivery. */
void sigint_handler(int number);

/* The progress callback: says so once, and asks for a stop from then on. */
int32_t break_callback(ZLR_task *task, void *handle, const ZLR_progress *progress);
}
