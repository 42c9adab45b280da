/* memman.cpp - creation, setters and the end of a manager. */
#include "cpub/memman.h"

#include "memman_internal.h"

#include <cstring>

static bool create_mutex(memman *man)
{
    man->mutex = static_cast<sysmutex *>(man->mallocfunc(man->allochandle, sizeof(sysmutex)));
    if (man->mutex == nullptr || sysmutex_init(man->mutex, nullptr) != 0) return false;
    man->usemutex = 1;
    return true;
}

memman *memman_create(const char *file, int32_t line, const void *unused, int32_t debug, void *allochandle,
                      memman_mallocfunc mallocfunc, memman_callocfunc callocfunc, memman_reallocfunc reallocfunc,
                      memman_freefunc freefunc)
{
    (void)file;
    (void)line;
    (void)unused;
    memman *man = static_cast<memman *>(mallocfunc(allochandle, sizeof(memman)));
    if (man == nullptr) return nullptr;
    memman_list *list = static_cast<memman_list *>(mallocfunc(allochandle, sizeof(memman_list)));
    if (list == nullptr) {
        freefunc(allochandle, man);
        return nullptr;
    }
    *list = {};
    list->tracefrom = -1;

    *man = {};
    std::memcpy(man->begin_guard, "begin", sizeof "begin");
    std::memcpy(man->end_guard, "end", sizeof "end");
    man->allochandle = allochandle;
    man->mallocfunc = mallocfunc;
    man->callocfunc = callocfunc;
    man->reallocfunc = reallocfunc;
    man->freefunc = freefunc;
    man->list = list;
    man->debug = debug;
    if (!create_mutex(man)) (void)memman_delete("src\\cpub\\memman", 333, &man); /* sets it to null */
    return man;
}

void memman_setmsgfunc(memman *man, memman_msgfunc func, void *handle)
{
    if (man == nullptr || !memman_enter(man)) return;
    man->msgfunc = func;
    man->msghandle = handle;
    memman_leave(man);
}

void memman_setfatalfunc(memman *man, memman_fatalfunc func, void *handle)
{
    if (man == nullptr || !memman_enter(man)) return;
    man->fatalfunc = func;
    man->fatalhandle = handle;
    memman_leave(man);
}

void memman_setlevels(memman *man, int32_t tracefrom, int32_t level)
{
    if (man == nullptr || !memman_enter(man)) return;
    if (man->list != nullptr) {
        man->list->tracefrom = tracefrom;
        man->list->level = level;
    }
    memman_leave(man);
}

/* Gives back the list, the mutex and the manager. The pointers in it are cleared first, so that a use of the deleted
 * manager is more likely to be seen at once. */
static void teardown(memman *man)
{
    void *const handle = man->allochandle;
    const memman_freefunc freefunc = man->freefunc;

    freefunc(handle, man->list);
    if (man->mutex != nullptr) {
        (void)sysmutex_delete(man->mutex);
        freefunc(handle, man->mutex);
        man->mutex = nullptr;
    }
    man->allochandle = nullptr;
    man->mallocfunc = nullptr;
    man->callocfunc = nullptr;
    man->reallocfunc = nullptr;
    man->freefunc = nullptr;
    man->list = nullptr;
    freefunc(handle, man);
}

uint64_t memman_delete(const char *file, int32_t line, memman **man)
{
    if (man == nullptr || *man == nullptr) return 0;
    memman_emit(*man, MEMMAN_LEVEL_NOTICE, "Deleting mem manager. Scanning memory\n");
    (void)memman_scan(file, line, *man, MEMMAN_LEVEL_NOTICE);
    const uint64_t num_left = memman_tellleaks(*man);
    memman_closeecho(*man);
    teardown(*man);
    *man = nullptr;
    return num_left;
}
