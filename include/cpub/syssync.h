/* syssync.h - locks, events and threads.
 *
 * Results are 0 for success; unless told otherwise 1 means that a pointer was null, and then nothing was done. The other
 * numbers (SYSSYNC_...) are the same on every platform. Records are the caller's; entries keep no pointers to them but
 * those of a running thread. */
#ifndef CPUB_SYSSYNC_H
#define CPUB_SYSSYNC_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

enum {
    SYSSYNC_OK = 0,
    SYSSYNC_NULL = 1,     /* a null pointer; of systhread_create: no thread could be started */
    SYSSYNC_FAILED = 5,   /* the wait itself failed */
    SYSSYNC_BADEVENT = 6, /* a wait without an event, a mutex or a deadline */
    SYSSYNC_TIMEOUT = 138
};

/* A recursive mutex: who holds it may take it again, and gives it back as often. Held by address: it must not be moved
 * or copied between sysmutex_init and sysmutex_delete. */
typedef struct sysmutex {
    uint64_t storage[8];
} sysmutex;

int32_t sysmutex_init(sysmutex *mutex, const void *unused);
int32_t sysmutex_lock(sysmutex *mutex);
int32_t sysmutex_unlock(sysmutex *mutex);
int32_t sysmutex_delete(sysmutex *mutex);

/* An event that lets one waiting thread pass for each signal and is then down again. A signal that nobody waits for is
 * kept, once, until a wait begins: the waits below take it back before they wait. So what is waited for is guarded by
 * the mutex, and the signal is given by a thread that takes it after the waiting one has let go. */
typedef struct sysevent {
    void *handle;
} sysevent;

int32_t sysevent_create(sysevent *event);
int32_t sysevent_signal(sysevent *event);
int32_t sysevent_close(sysevent *event);

/* Waits, with the mutex let go meanwhile and held again behind it. SYSSYNC_OK, SYSSYNC_FAILED, SYSSYNC_BADEVENT. */
int32_t sysevent_wait(sysevent *event, sysmutex *mutex);

/* The same until a deadline at the latest, in seconds of calendar time (as time() gives it). SYSSYNC_TIMEOUT for a
 * deadline that has passed, with the mutex held. On SYSSYNC_OK and SYSSYNC_FAILED the mutex is NOT held, unlike
 * sysevent_wait: kept, for clients take it themselves there. */
int32_t sysevent_timedwait(sysevent *event, sysmutex *mutex, const int64_t *deadline_s);

void syssleep(uint32_t wait_ms);

typedef int64_t (*systhread_func)(void *arg);

/* A thread and what it has returned. Must stay where it is until it was joined. */
typedef struct systhread {
    void *handle; /* null: the start has failed */
    uint32_t id;
    int64_t result; /* of func; valid behind systhread_join */
    systhread_func func;
    void *arg;
    sysevent done; /* signalled when func has returned */
} systhread;

/* Starts func(arg) on a thread of its own. 1: it could not be started; systhread_join is due all the same. */
int32_t systhread_create(systhread *thread, const void *unused, systhread_func func, void *arg);

/* Waits until func has returned, stores its result where asked (null: not wanted), and gives back what the record holds.
 * The thread itself may still be passing through its last instructions. A record whose start failed: 0, and `result`
 * stays untouched. */
int32_t systhread_join(systhread *thread, int64_t *result);

#ifdef __cplusplus
}
#endif

#endif
