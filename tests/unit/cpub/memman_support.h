/* memman_support.h - what the tests of the memory manager share. */
#pragma once

#include "memman_heap.h"
#include "platform.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdio>
#include <string>

inline void memman_hear(void *handle, const char *text) { *static_cast<std::string *>(handle) += text; }

/* A manager on a heap of its own, and what its message hook has heard. */
struct memman_scene {
    memman_heap heap;
    std::string told;
    memman *man;

    explicit memman_scene(int32_t debug, int32_t level = 0) : man(memman_heap_manager(&heap, debug))
    {
        memman_setfatalfunc(man, nullptr, nullptr);
        memman_setmsgfunc(man, memman_hear, &told);
        memman_setlevels(man, -1, level);
        heap.calls.clear();
    }
    /* Blocks that are left are given back; nothing else may be. */
    ~memman_scene()
    {
        while (man->list->head != nullptr) memman_free("unit.c", 2, man, man->list->head->raw + MEMMAN_GUARD_BYTES);
        EXPECT_EQ(memman_delete("unit.c", 3, &man), 0U);
        EXPECT_EQ(man, nullptr);
        EXPECT_TRUE(heap.live.empty());
    }
    memman_scene(const memman_scene &) = delete;
    memman_scene &operator=(const memman_scene &) = delete;

    char *make(uint64_t size) { return static_cast<char *>(memman_malloc("unit.c", 4, man, size, 1)); }
};

inline char *memman_raw(const void *user) { return static_cast<char *>(const_cast<void *>(user)) - MEMMAN_GUARD_BYTES; }

/* The C library's formatter, not the one under test. */
__attribute__((format(printf, 1, 2))) inline std::string memman_text(const char *format, ...)
{
    char text[4096];
    va_list args;
    va_start(args, format);
    library_format(sizeof text, text, format, args);
    va_end(args);
    return text;
}
