/* memman_heap.h - an allocator for tests of the memory manager: it knows its live blocks, fails at a chosen call, moves
 * at every reallocation, places blocks as asked and writes down how it was called. */
#pragma once

#include "cpub/memman.h"

#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <string>

struct memman_heap {
    struct region {
        void *base;
        uint64_t size;
    };
    std::map<void *, region> live; /* by the address that was given out */
    int64_t until_failure = -1;    /* calls that still go well, then one fails; below 0: all go well */
    uint64_t shift = 0;            /* blocks begin so far behind a multiple of 64 */
    std::string calls;
    std::mutex guard;
};

inline bool memman_heap_fails(memman_heap *heap)
{
    if (heap->until_failure < 0) return false;
    return heap->until_failure-- == 0;
}

inline void *memman_heap_place(memman_heap *heap, uint64_t size)
{
    if (memman_heap_fails(heap) || size > UINT32_MAX) return nullptr;
    char *const base = static_cast<char *>(std::malloc(size + 192));
    if (base == nullptr) std::abort();
    char *const block = base + 128 - reinterpret_cast<uintptr_t>(base) % 64 + heap->shift;
    std::memset(block, 0xA5, size);
    heap->live[block] = {base, size};
    return block;
}

inline void memman_heap_drop(memman_heap *heap, void *block)
{
    const auto found = heap->live.find(block);
    if (found == heap->live.end()) std::abort(); /* not ours, or twice */
    std::free(found->second.base);
    heap->live.erase(found);
}

inline void *memman_heap_malloc(void *handle, uint64_t size)
{
    memman_heap *heap = static_cast<memman_heap *>(handle);
    const std::lock_guard<std::mutex> lock(heap->guard);
    heap->calls += "malloc " + std::to_string(size) + "; ";
    return memman_heap_place(heap, size);
}

inline void *memman_heap_calloc(void *handle, uint64_t count, uint64_t size)
{
    memman_heap *heap = static_cast<memman_heap *>(handle);
    const std::lock_guard<std::mutex> lock(heap->guard);
    heap->calls += "calloc " + std::to_string(count) + " " + std::to_string(size) + "; ";
    void *block = memman_heap_place(heap, count * size);
    return block == nullptr ? nullptr : std::memset(block, 0, count * size);
}

inline void *memman_heap_realloc(void *handle, void *block, uint64_t size)
{
    memman_heap *heap = static_cast<memman_heap *>(handle);
    const std::lock_guard<std::mutex> lock(heap->guard);
    heap->calls += "realloc " + std::to_string(size) + "; ";
    void *moved = memman_heap_place(heap, size);
    if (moved == nullptr || block == nullptr) return moved;
    const uint64_t old_size = heap->live.at(block).size;
    std::memcpy(moved, block, old_size < size ? old_size : size);
    memman_heap_drop(heap, block);
    return moved;
}

inline void memman_heap_free(void *handle, void *block)
{
    memman_heap *heap = static_cast<memman_heap *>(handle);
    const std::lock_guard<std::mutex> lock(heap->guard);
    heap->calls += block == nullptr ? "free null; " : "free; ";
    if (block != nullptr) memman_heap_drop(heap, block);
}

inline memman *memman_heap_manager(memman_heap *heap, int32_t debug)
{
    return memman_create("unit.c", 1, nullptr, debug, heap, memman_heap_malloc, memman_heap_calloc, memman_heap_realloc,
                         memman_heap_free);
}
