/* memman_free.cpp - the entries that give blocks back or change their size. A block is found and verified before
 * anything is done to it. What `debug` asks for stands in functions that are not inlined: with `debug` 0 an entry is a
 * test and a jump, without a frame. */
#include "cpub/memman.h"

#include "memman_internal.h"

#include <cstdlib>
#include <cstring>

/* ---- Release ---- */

static void unlink_block(memman_list *list, const memman_block *block)
{
    if (block->next != nullptr) block->next->prev = block->prev;
    if (block->prev == nullptr)
        list->head = block->next;
    else
        block->prev->next = block->next;
}

static void release_listed(const char *file, int32_t line, memman *man, const void *user)
{
    char *const raw = memman_raw_of(user);
    memman_block *block = memman_find(man, raw);
    if (block == nullptr)
        memman_fatal(man, file, line, "Block %p cannot be deallocated because it is not in the allocation list.\n",
                     static_cast<void *>(raw));

    man->curusage -= block->size; /* before a report that may end the process: hooks read the usage without the block */
    memman_verify(man, block, file, line);
    unlink_block(man->list, block);
    memman_trace(man, MEMMAN_DEALLOCATED, block->id, raw, block->size, file, line);
    man->freefunc(man->allochandle, block);
    man->freefunc(man->allochandle, raw);
}

[[gnu::noinline]] static void release_checked(const char *file, int32_t line, memman *man, const void *user)
{
    /* Without a text, unlike every other end: kept, the status alone tells this one from a fault of the heap. */
    if (!memman_enter(man)) std::exit(-1);
    if (user != nullptr && man->list != nullptr) release_listed(file, line, man, user);
    memman_leave(man);
}

void memman_free(const char *file, int32_t line, memman *man, void *block)
{
    if (man->debug == 0) {
        man->freefunc(man->allochandle, block);
        return;
    }
    release_checked(file, line, man, block);
}

void memman_freex(const char *file, int32_t line, memman *man, void *block) { memman_free(file, line, man, block); }

void memman_aligned_free(const char *file, int32_t line, memman *man, void *block)
{
    if (block == nullptr) return;
    void *body = nullptr; /* where memman_aligned_malloc has left it */
    std::memcpy(&body, static_cast<const char *>(block) - sizeof body, sizeof body);
    memman_free(file, line, man, body);
}

/* ---- Reallocation ---- */

static void *resize_listed(const char *file, int32_t line, memman *man, const void *user, uint64_t size)
{
    char *const old_raw = memman_raw_of(user);
    memman_block *block = memman_find(man, old_raw);
    if (block == nullptr)
        memman_fatal(man, file, line, "Block at adr. %p is not allocated.\n", static_cast<void *>(old_raw));
    memman_verify(man, block, file, line);

    void *raw = nullptr;
    if (size <= UINT64_MAX - MEMMAN_RAW_EXTRA)
        raw = man->reallocfunc(man->allochandle, old_raw, size + MEMMAN_RAW_EXTRA);
    if (raw == nullptr) {
        memman_tell(man, MEMMAN_LEVEL_NOTICE, MEMMAN_TEXT_BYTES,
                    "Out of space while trying to reallocate a block of size %I64u in file '%s(%d)'\n", size,
                    memman_shown(file), line);
        return nullptr;
    }
    memman_trace(man, MEMMAN_REALLOCATED, block->id, static_cast<char *>(raw), size, file, line);
    man->curusage = man->curusage - block->size + size; /* maxusage is left alone: see the header */
    memman_setbody(block, static_cast<char *>(raw), size);
    return memman_user_of(block);
}

[[gnu::noinline]] static void *resize_checked(const char *file, int32_t line, memman *man, void *user, uint64_t size)
{
    if (size == 0) {
        memman_freex(file, line, man, user);
        return nullptr;
    }
    if (user == nullptr) return memman_allocx(file, line, man, size, 1, 0);

    if (!memman_enter(man)) memman_fatal(man, file, line, "Could not lock mutex");
    void *const result = resize_listed(file, line, man, user, size);
    memman_leave(man);
    return result;
}

void *memman_realloc(const char *file, int32_t line, memman *man, void *block, uint64_t size)
{
    if (man->debug == 0) return man->reallocfunc(man->allochandle, block, size);
    return resize_checked(file, line, man, block, size);
}
