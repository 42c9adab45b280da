/* syssync_platform.h - what syssync.cpp stands on: auto-reset events behind a handle and the start of threads, by the means
 * of the platform. Mutexes and the sleep have nothing in common between platforms and stand in the platform's file. */
#pragma once

#include "cpub/syssync.h"

/* A null handle is no event, and only the setter, the waits of threads and release take it. */
void *syssync_event_new(void); /* null without memory */
void syssync_event_release(void *event);
void syssync_event_set(void *event);
void syssync_event_reset(void *event);

/* Waits until the event is set and takes it down again, in one step; a later reset does not touch a waiting thread that
 * was let through. SYSSYNC_OK, SYSSYNC_TIMEOUT, SYSSYNC_FAILED. */
const uint64_t SYSSYNC_FOREVER = UINT64_MAX;
int32_t syssync_event_wait(void *event, uint64_t wait_ms);

/* What a thread does: runs the function, stores its result, sets `done` last. Behind that the record may be gone. */
void syssync_thread_body(systhread *thread);

/* Starts syssync_thread_body and fills in handle and id; the handle stays null if there is no thread. */
void syssync_thread_start(systhread *thread);

/* Waits for `done`. False: the wait has failed. */
bool syssync_thread_wait(systhread *thread);

/* Gives the handle up; the thread goes on to its end. */
void syssync_thread_release(void *handle);
