/* failing_allocator.h - an allocator that fails once, at a chosen call, and counts what is not given back. */
#pragma once

#include "cpub/sysenv.h"

#include <cstdlib>
#include <cstring>

struct failing_allocator {
    int64_t until_failure = -1; /* calls that still go well; below 0: all do */
    int64_t num_live = 0;
};

inline void *failing_malloc(void *handle, uint64_t size)
{
    failing_allocator *self = static_cast<failing_allocator *>(handle);
    if (self->until_failure == 0) {
        self->until_failure = -1;
        return nullptr;
    }
    if (self->until_failure > 0) --self->until_failure;
    void *block = std::malloc(size);
    if (block != nullptr) {
        std::memset(block, 0xA5, size);
        ++self->num_live;
    }
    return block;
}

inline void *failing_calloc(void *handle, uint64_t count, uint64_t size)
{
    void *block = failing_malloc(handle, count * size);
    return block == nullptr ? nullptr : std::memset(block, 0, count * size);
}

inline void failing_free(void *handle, void *block)
{
    if (block != nullptr) --static_cast<failing_allocator *>(handle)->num_live;
    std::free(block);
}

/* Reallocation is the C library's. */
inline sysenv_allocator failing_functions(failing_allocator *self)
{
    return {self, failing_malloc, failing_calloc, nullptr, failing_free};
}
