/* syssync_posix.cpp - locks, events and threads on POSIX threads. */
#include "syssync_platform.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include <pthread.h>

/* ---- Mutexes: the C library's recursive one in the caller's storage. Its own results are not looked at. ---- */

static_assert(sizeof(pthread_mutex_t) <= sizeof(sysmutex), "the storage of a mutex holds the platform's");
static_assert(alignof(pthread_mutex_t) <= alignof(sysmutex), "the storage of a mutex holds the platform's");

static pthread_mutex_t *native(sysmutex *mutex) { return reinterpret_cast<pthread_mutex_t *>(mutex->storage); }

int32_t sysmutex_init(sysmutex *mutex, const void *unused)
{
    (void)unused;
    if (mutex == nullptr) return SYSSYNC_NULL;
    pthread_mutexattr_t attributes;
    (void)pthread_mutexattr_init(&attributes);
    (void)pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    (void)pthread_mutex_init(native(mutex), &attributes);
    (void)pthread_mutexattr_destroy(&attributes);
    return SYSSYNC_OK;
}

int32_t sysmutex_lock(sysmutex *mutex)
{
    if (mutex == nullptr) return SYSSYNC_NULL;
    (void)pthread_mutex_lock(native(mutex));
    return SYSSYNC_OK;
}

int32_t sysmutex_unlock(sysmutex *mutex)
{
    if (mutex == nullptr) return SYSSYNC_NULL;
    (void)pthread_mutex_unlock(native(mutex));
    return SYSSYNC_OK;
}

int32_t sysmutex_delete(sysmutex *mutex)
{
    if (mutex == nullptr) return SYSSYNC_NULL;
    (void)pthread_mutex_destroy(native(mutex));
    return SYSSYNC_OK;
}

/* ---- Events ----
 * A signal goes to one waiting thread by name: were it a flag that whoever comes first takes down, the reset of a thread
 * that begins to wait could swallow a signal that another one, let through but not yet running, was given. */

/* A thread that waits, on its own stack and in the list of its event. */
typedef struct waiter {
    pthread_cond_t wakeup;
    bool is_let_through;
    struct waiter *next;
} waiter;

typedef struct event_record {
    pthread_mutex_t lock; /* of the fields below; never held while waiting */
    bool is_set;          /* only while nobody waits */
    waiter *first;        /* who waits, longest first */
} event_record;

void *syssync_event_new(void)
{
    event_record *event = static_cast<event_record *>(std::malloc(sizeof *event));
    if (event == nullptr) return nullptr;
    event->is_set = false;
    event->first = nullptr;
    if (pthread_mutex_init(&event->lock, nullptr) != 0) {
        std::free(event);
        return nullptr;
    }
    return event;
}

void syssync_event_release(void *event)
{
    event_record *record = static_cast<event_record *>(event);
    (void)pthread_mutex_destroy(&record->lock);
    std::free(record);
}

/* The last touch of the record is the unlock: who is let through may release it at once. */
void syssync_event_set(void *event)
{
    event_record *record = static_cast<event_record *>(event);
    (void)pthread_mutex_lock(&record->lock);
    waiter *chosen = record->first;
    if (chosen == nullptr) {
        record->is_set = true;
    } else {
        record->first = chosen->next;
        chosen->is_let_through = true;
        (void)pthread_cond_signal(&chosen->wakeup);
    }
    (void)pthread_mutex_unlock(&record->lock);
}

void syssync_event_reset(void *event)
{
    event_record *record = static_cast<event_record *>(event);
    (void)pthread_mutex_lock(&record->lock);
    record->is_set = false;
    (void)pthread_mutex_unlock(&record->lock);
}

/* Conditions go by the monotonic clock: a clock that is set must not stretch a wait. */
static int init_wakeup(pthread_cond_t *wakeup)
{
    pthread_condattr_t attributes;
    int error = pthread_condattr_init(&attributes);
    if (error != 0) return error;
    error = pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
    if (error == 0) error = pthread_cond_init(wakeup, &attributes);
    (void)pthread_condattr_destroy(&attributes);
    return error;
}

static timespec time_in(uint64_t wait_ms)
{
    timespec time;
    (void)clock_gettime(CLOCK_MONOTONIC, &time);
    time.tv_sec += static_cast<time_t>(wait_ms / 1000);
    time.tv_nsec += static_cast<long>(wait_ms % 1000) * 1000000;
    if (time.tv_nsec >= 1000000000) {
        ++time.tv_sec;
        time.tv_nsec -= 1000000000;
    }
    return time;
}

static void append_waiter(event_record *record, waiter *self)
{
    waiter **at = &record->first;
    while (*at != nullptr) at = &(*at)->next;
    *at = self;
}

static void remove_waiter(event_record *record, const waiter *self)
{
    waiter **at = &record->first;
    while (*at != self) at = &(*at)->next;
    *at = self->next;
}

/* Waits with the lock of the record held, which is given up meanwhile. Returns 0 or the error that has ended the wait. */
static int wait_in_list(event_record *record, uint64_t wait_ms)
{
    waiter self = {};
    int error = init_wakeup(&self.wakeup);
    if (error != 0) return error;
    append_waiter(record, &self);
    const timespec end = wait_ms == SYSSYNC_FOREVER ? timespec() : time_in(wait_ms);
    while (!self.is_let_through && error == 0)
        error = wait_ms == SYSSYNC_FOREVER ? pthread_cond_wait(&self.wakeup, &record->lock)
                                           : pthread_cond_timedwait(&self.wakeup, &record->lock, &end);
    if (self.is_let_through)
        error = 0; /* a signal that came with the end of the time counts */
    else
        remove_waiter(record, &self);
    (void)pthread_cond_destroy(&self.wakeup);
    return error;
}

int32_t syssync_event_wait(void *event, uint64_t wait_ms)
{
    event_record *record = static_cast<event_record *>(event);
    (void)pthread_mutex_lock(&record->lock);
    int error = 0;
    if (record->is_set)
        record->is_set = false;
    else
        error = wait_in_list(record, wait_ms);
    (void)pthread_mutex_unlock(&record->lock);
    if (error == 0) return SYSSYNC_OK;
    return error == ETIMEDOUT ? SYSSYNC_TIMEOUT : SYSSYNC_FAILED;
}

void syssleep(uint32_t wait_ms)
{
    timespec rest = {static_cast<time_t>(wait_ms / 1000), static_cast<long>(wait_ms % 1000) * 1000000};
    while (nanosleep(&rest, &rest) != 0 && errno == EINTR) continue;
}

/* ---- Threads ---- */

static_assert(sizeof(pthread_t) <= sizeof(void *), "a thread fits into a handle");

extern "C" {
static void *systhread_entry(void *arg)
{
    syssync_thread_body(static_cast<systhread *>(arg));
    return nullptr;
}
}

static pthread_t native_thread(void *handle)
{
    pthread_t thread;
    std::memcpy(&thread, &handle, sizeof thread);
    return thread;
}

void syssync_thread_start(systhread *thread)
{
    /* Threads have no 32-bit number here: they are counted, from 1. Filled in first: the thread may read it at once. */
    static uint32_t num_started;
    thread->id = __atomic_add_fetch(&num_started, 1, __ATOMIC_RELAXED);
    pthread_t started;
    if (pthread_create(&started, nullptr, systhread_entry, thread) != 0) return;
    std::memcpy(&thread->handle, &started, sizeof started);
}

bool syssync_thread_wait(systhread *thread)
{
    if (thread->done.handle != nullptr) return syssync_event_wait(thread->done.handle, SYSSYNC_FOREVER) == SYSSYNC_OK;
    /* There was no memory for the event: the end of the thread does as well. */
    const int error = pthread_join(native_thread(thread->handle), nullptr);
    thread->handle = nullptr;
    return error == 0;
}

void syssync_thread_release(void *handle) { (void)pthread_detach(native_thread(handle)); }
