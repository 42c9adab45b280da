/* syssync.cpp - events and threads: statuses, and who holds the mutex behind a wait. The platform's part, with the mutexes,
 * is in syssync_posix.cpp and syssync_win32.cpp. */
#include "syssync_platform.h"

#include <ctime>

/* ---- Events ---- */

int32_t sysevent_create(sysevent *event)
{
    if (event == nullptr) return SYSSYNC_NULL;
    event->handle = syssync_event_new(); /* not looked at: waits tell of a missing one with SYSSYNC_BADEVENT */
    return SYSSYNC_OK;
}

int32_t sysevent_signal(sysevent *event)
{
    if (event == nullptr || event->handle == nullptr) return SYSSYNC_NULL;
    syssync_event_set(event->handle);
    return SYSSYNC_OK;
}

int32_t sysevent_close(sysevent *event)
{
    if (event == nullptr || event->handle == nullptr) return SYSSYNC_NULL;
    syssync_event_release(event->handle);
    event->handle = nullptr;
    return SYSSYNC_OK;
}

int32_t sysevent_wait(sysevent *event, sysmutex *mutex)
{
    if (event == nullptr || event->handle == nullptr || mutex == nullptr) return SYSSYNC_BADEVENT;
    syssync_event_reset(event->handle);
    (void)sysmutex_unlock(mutex);
    const int32_t res = syssync_event_wait(event->handle, SYSSYNC_FOREVER);
    (void)sysmutex_lock(mutex);
    return res;
}

int32_t sysevent_timedwait(sysevent *event, sysmutex *mutex, const int64_t *deadline_s)
{
    if (event == nullptr || event->handle == nullptr || mutex == nullptr || deadline_s == nullptr)
        return SYSSYNC_BADEVENT;
    syssync_event_reset(event->handle);
    (void)sysmutex_unlock(mutex);

    const int64_t now_s = std::time(nullptr);
    int32_t res = SYSSYNC_TIMEOUT;
    if (*deadline_s > now_s) {
        /* 32 bits of milliseconds: a deadline more than 49 days ahead comes early. Kept, the same on every platform. */
        const uint64_t remainder_s = static_cast<uint64_t>(*deadline_s) - static_cast<uint64_t>(now_s);
        res = syssync_event_wait(event->handle, static_cast<uint32_t>(remainder_s * 1000));
    }
    /* The other results come back without the mutex: kept, clients take it themselves there. */
    if (res == SYSSYNC_TIMEOUT) (void)sysmutex_lock(mutex);
    return res;
}

/* ---- Threads ---- */

int32_t systhread_create(systhread *thread, const void *unused, systhread_func func, void *arg)
{
    (void)unused;
    if (thread == nullptr) return SYSSYNC_NULL;
    thread->handle = nullptr;
    thread->id = 0;
    thread->result = 0;
    thread->func = func;
    thread->arg = arg;
    thread->done.handle = nullptr;
    if (func == nullptr) return SYSSYNC_NULL;
    (void)sysevent_create(&thread->done);
    syssync_thread_start(thread);
    return thread->handle == nullptr ? SYSSYNC_NULL : SYSSYNC_OK;
}

void syssync_thread_body(systhread *thread)
{
    thread->result = thread->func(thread->arg); /* in front of the signal: the join reads it behind its wait */
    (void)sysevent_signal(&thread->done);
}

int32_t systhread_join(systhread *thread, int64_t *result)
{
    if (thread == nullptr) return SYSSYNC_NULL;
    int32_t res = SYSSYNC_OK;
    if (thread->handle != nullptr) {
        if (!syssync_thread_wait(thread)) res = SYSSYNC_NULL;
        if (result != nullptr) *result = thread->result; /* whatever the wait has given */
    }
    (void)sysevent_close(&thread->done);
    if (thread->handle != nullptr) syssync_thread_release(thread->handle);
    thread->handle = nullptr;
    return res;
}
