/* syssync_win32.cpp - locks, events and threads on Win32. */
#include "syssync_platform.h"

#include <cstring>

#include <process.h>
#include <windows.h>

/* ---- Mutexes: critical sections in the caller's storage ---- */

static_assert(sizeof(CRITICAL_SECTION) <= sizeof(sysmutex), "the storage of a mutex holds the platform's");
static_assert(alignof(CRITICAL_SECTION) <= alignof(sysmutex), "the storage of a mutex holds the platform's");

/* How often who meets a held mutex tries again before it sleeps. */
static const DWORD SPIN_COUNT = 4000;

static CRITICAL_SECTION *native(sysmutex *mutex) { return reinterpret_cast<CRITICAL_SECTION *>(mutex->storage); }

int32_t sysmutex_init(sysmutex *mutex, const void *unused)
{
    (void)unused;
    if (mutex == nullptr) return SYSSYNC_NULL;
    (void)InitializeCriticalSectionAndSpinCount(native(mutex), SPIN_COUNT);
    return SYSSYNC_OK;
}

int32_t sysmutex_lock(sysmutex *mutex)
{
    if (mutex == nullptr) return SYSSYNC_NULL;
    EnterCriticalSection(native(mutex));
    return SYSSYNC_OK;
}

int32_t sysmutex_unlock(sysmutex *mutex)
{
    if (mutex == nullptr) return SYSSYNC_NULL;
    LeaveCriticalSection(native(mutex));
    return SYSSYNC_OK;
}

int32_t sysmutex_delete(sysmutex *mutex)
{
    if (mutex == nullptr) return SYSSYNC_NULL;
    DeleteCriticalSection(native(mutex));
    return SYSSYNC_OK;
}

/* ---- Events: the system's own ---- */

void *syssync_event_new(void) { return CreateEventA(nullptr, FALSE, FALSE, nullptr); }

void syssync_event_release(void *event) { (void)CloseHandle(event); }

void syssync_event_set(void *event) { (void)SetEvent(event); }

void syssync_event_reset(void *event) { (void)ResetEvent(event); }

int32_t syssync_event_wait(void *event, uint64_t wait_ms)
{
    const DWORD limit_ms = wait_ms == SYSSYNC_FOREVER ? INFINITE : static_cast<DWORD>(wait_ms);
    const DWORD answer = WaitForSingleObject(event, limit_ms);
    if (answer == WAIT_TIMEOUT) return SYSSYNC_TIMEOUT;
    return answer == WAIT_FAILED ? SYSSYNC_FAILED : SYSSYNC_OK;
}

void syssleep(uint32_t wait_ms) { Sleep(wait_ms); }

/* ---- Threads ---- */

static unsigned __stdcall systhread_entry(void *arg)
{
    syssync_thread_body(static_cast<systhread *>(arg));
    _endthreadex(0);
    return 0;
}

void syssync_thread_start(systhread *thread)
{
    const uintptr_t started = _beginthreadex(nullptr, 0, systhread_entry, thread, 0, &thread->id);
    std::memcpy(&thread->handle, &started, sizeof started);
}

bool syssync_thread_wait(systhread *thread)
{
    if (WaitForSingleObject(thread->done.handle, INFINITE) != WAIT_FAILED) return true;
    return GetLastError() == ERROR_INVALID_HANDLE; /* counts as success: kept */
}

void syssync_thread_release(void *handle) { (void)CloseHandle(handle); }
