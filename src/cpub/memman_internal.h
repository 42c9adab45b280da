/* memman_internal.h - what the parts of the memory manager share. What concerns one block, one text or one fault is
 * written once: finding a block and its guards (memman_alloc.cpp), verifying it (memman_scan.cpp), telling and dying
 * (memman_trace.cpp). All of it is called with the manager's mutex held, unless told otherwise. */
#pragma once

#include "cpub/memman.h"

#include <cstddef>
#include <cstdint>
#include <ctime>

enum {
    /* Texts reach the message hook if the list's level is above these. */
    MEMMAN_LEVEL_LEAK = 0,
    MEMMAN_LEVEL_NOTICE = 1,
    MEMMAN_LEVEL_TRACE = 5,
    MEMMAN_LEVEL_FATAL = 0,        /* of a fault's lines ... */
    MEMMAN_LEVEL_FATALHOOK = 1000, /* ... and where a fatal hook hears of it anyway */

    MEMMAN_TEXT_BYTES = 1024,      /* room of a text, terminator included; longer ones are cut */
    MEMMAN_SHORT_TEXT_BYTES = 256, /* the same of a reallocation's trace line: kept, files compared by eye rely on it */
    MEMMAN_SIZE_BYTES = 64,        /* room of a size as text */
    MEMMAN_RAW_EXTRA = 2 * MEMMAN_GUARD_BYTES
};

/* ---- The mutex. False: it could not be taken, and the entry does what its failure asks for. */
inline bool memman_enter(const memman *man) { return man->usemutex == 0 || sysmutex_lock(man->mutex) == 0; }

inline void memman_leave(const memman *man)
{
    if (man->usemutex != 0) (void)sysmutex_unlock(man->mutex);
}

/* ---- Blocks. */

/* The newest block, from which `next` leads to the oldest; null for none. */
inline memman_block *memman_newest(const memman *man) { return man->list == nullptr ? nullptr : man->list->head; }

/* The raw region of a user pointer, which may be any address, null included: hence no pointer arithmetic. */
inline char *memman_raw_of(const void *user)
{
    const uintptr_t raw = reinterpret_cast<uintptr_t>(user) - MEMMAN_GUARD_BYTES;
    return reinterpret_cast<char *>(raw);  // NOLINT(performance-no-int-to-ptr)
}

inline char *memman_user_of(const memman_block *block) { return block->raw + MEMMAN_GUARD_BYTES; }
inline char *memman_endguard_of(const memman_block *block) { return memman_user_of(block) + block->size; }

/* Null if there is none. */
memman_block *memman_find(const memman *man, const char *raw);

/* Makes a block unlocked, of `size` user bytes in `raw`, and writes its guards. */
void memman_setbody(memman_block *block, char *raw, uint64_t size);

/* Guards, and the digest of a locked block. Returns only if all is as it should be. */
void memman_verify(memman *man, const memman_block *block, const char *file, int32_t line);

/* The lines about blocks that are left. Takes no lock. Returns how many there are. */
uint64_t memman_tellleaks(const memman *man);

/* ---- Texts. Each goes to the echo file, and to the message hook if the level is above the threshold. */
void memman_emit(const memman *man, int32_t threshold, const char *text);
void memman_tell(const memman *man, int32_t threshold, size_t capacity, const char *format, ...);

/* What "%s" shows for a file text that was not given. */
inline const char *memman_shown(const char *file) { return file == nullptr ? "(null)" : file; }

enum memman_event { MEMMAN_ALLOCATED, MEMMAN_DEALLOCATED, MEMMAN_REALLOCATED };

/* The trace line of an event, with `curusage` as it is now; formatted only if somebody hears it. */
void memman_trace(const memman *man, memman_event event, uint64_t id, const char *raw, uint64_t size, const char *file,
                  int32_t line);

/* ---- The two ends of the process. Nothing is allocated. The mutex stays held. */

/* Reports a fault of the heap and exits with -99. */
#if defined(__GNUC__)
__attribute__((noreturn))
#endif
void memman_fatal(memman *man, const char *file, int32_t line, const char *format, ...);

/* The same for a manager that is itself damaged: on standard output, hooks and echo file left alone. */
[[noreturn]] void memman_fataldamaged(const memman *man, const char *file, int32_t line);

/* ---- Platform (memman_posix.cpp, memman_win32.cpp). */

/* The local time, free of buffers that threads share. False: not known. */
[[nodiscard]] bool memman_localtime(std::tm *local);
