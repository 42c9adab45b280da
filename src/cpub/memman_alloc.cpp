/* memman_alloc.cpp - the list of blocks, and the entries that make new ones.
 *
 * Every entry has two paths. With `debug` 0 it jumps to the given function, without a frame of its own. Else
 * allocate_checked, which is not inlined for that reason, makes the block with all that is recorded about it. What an
 * entry puts into the block itself it writes behind both, without the mutex. */
#include "cpub/memman.h"

#include "cpub/sysformat.h"
#include "memman_internal.h"

#include <csignal>
#include <cstdlib>
#include <cstring>

/* ---- The list ---- */

memman_block *memman_find(const memman *man, const char *raw)
{
    memman_block *block = memman_newest(man);
    while (block != nullptr && block->raw != raw) block = block->next;
    return block;
}

void memman_setbody(memman_block *block, char *raw, uint64_t size)
{
    block->locked = 0;
    block->size = size;
    block->raw = raw;
    block->beginseed = MEMMAN_SEED;
    block->endseed = MEMMAN_SEED;
    char *const end = memman_endguard_of(block);
    for (int i = 0; i < MEMMAN_GUARD_BYTES; ++i) {
        raw[i] = static_cast<char>(MEMMAN_SEED + i);
        end[i] = static_cast<char>(MEMMAN_SEED + i);
    }
}

static void link_newest(memman_list *list, memman_block *block)
{
    block->prev = nullptr;
    block->next = list->head;
    if (list->head != nullptr) list->head->prev = block;
    list->head = block;
}

/* ---- Checked allocation ---- */

static char *allocate_plain(const memman *man, uint64_t size, bool zero)
{
    void *const block = zero ? man->callocfunc(man->allochandle, size, 1) : man->mallocfunc(man->allochandle, size);
    return static_cast<char *>(block);
}

/* A block with header and guards at the head of the list; null without memory. */
static char *allocate_listed(const char *file, int32_t line, memman *man, uint64_t size, bool zero)
{
    memman_block *block = static_cast<memman_block *>(man->mallocfunc(man->allochandle, sizeof(memman_block)));
    char *raw = nullptr;
    /* A size that leaves no number for its guards is one that no memory has. */
    if (size <= UINT64_MAX - MEMMAN_RAW_EXTRA) raw = allocate_plain(man, size + MEMMAN_RAW_EXTRA, zero);
    if (block == nullptr || raw == nullptr) {
        memman_tell(man, MEMMAN_LEVEL_NOTICE, MEMMAN_TEXT_BYTES,
                    "Out of space while trying to allocate a block of size %I64u in file '%s(%d)'\n", size,
                    memman_shown(file), line);
        man->freefunc(man->allochandle, block);
        man->freefunc(man->allochandle, raw);
        return nullptr;
    }
    memman_trace(man, MEMMAN_ALLOCATED, man->list->nextid, raw, size, file, line);
    block->id = man->list->nextid++;
    memman_setbody(block, raw, size);
    link_newest(man->list, block);
    return memman_user_of(block);
}

[[gnu::noinline]] static char *allocate_checked(const char *file, int32_t line, memman *man, uint64_t size, bool zero)
{
    if (!memman_enter(man)) return nullptr;
    char *user = man->list == nullptr ? allocate_plain(man, size, zero) : allocate_listed(file, line, man, size, zero);
    if (user != nullptr) {
        man->curusage += size;
        if (man->curusage > man->maxusage) man->maxusage = man->curusage;
    }
    memman_leave(man);
    return user;
}

/* ---- Entries ---- */

void *memman_malloc(const char *file, int32_t line, memman *man, uint64_t count, uint64_t size)
{
    const uint64_t total = count * size;
    if (total == 0) return nullptr;
    if (man->debug == 0) return man->mallocfunc(man->allochandle, total);
    return allocate_checked(file, line, man, total, false);
}

void *memman_calloc(const char *file, int32_t line, memman *man, uint64_t count, uint64_t size)
{
    const uint64_t total = count * size;
    if (total == 0) return nullptr;
    if (man->debug == 0) return man->callocfunc(man->allochandle, count, size);
    return allocate_checked(file, line, man, total, true);
}

void *memman_allocx(const char *file, int32_t line, memman *man, uint64_t count, uint64_t size, int32_t zero)
{
    return zero != 0 ? memman_calloc(file, line, man, count, size) : memman_malloc(file, line, man, count, size);
}

char *memman_strdup(const char *file, int32_t line, memman *man, const char *text)
{
    const size_t length = sysenv_strlen(text);
    char *copy = static_cast<char *>(memman_malloc(file, line, man, length + 1, 1));
    if (copy == nullptr) return nullptr;
    if (length > 0) std::memcpy(copy, text, length);
    copy[length] = 0;
    return copy;
}

void *memman_aligned_malloc(const char *file, int32_t line, memman *man, uint64_t size, uint64_t alignment)
{
    if (alignment == 0) { /* a division fault, even where the machine or the compiler would let the division pass */
        (void)std::raise(SIGFPE);
        std::abort();
    }
    const uint64_t total = size + alignment;
    if (total < size) return nullptr; /* it would be made, too small for what is stored in it */

    char *body = static_cast<char *>(memman_malloc(file, line, man, total, 1));
    if (body == nullptr) return nullptr;
    /* Not the way to an aligned address, and kept: see the header. */
    const uintptr_t address = reinterpret_cast<uintptr_t>(body);
    char *const result = body + address % alignment;
    std::memcpy(result - sizeof address, &address, sizeof address);
    return result;
}
