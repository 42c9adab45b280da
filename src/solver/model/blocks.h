/* blocks.h - memory handed out across the interface.
 *
 * A list knows every block that it gave and releases only those: a pointer that it does not know is left alone, which
 * callers rely on. With a trace file each event is written there with the caller's file and line, and blocks that are
 * still out when the list is closed are told as leaks. */
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <unordered_map>

struct block_origin {
    uint64_t bytes;
    const char *file; /* the caller's constant; may be null */
    int32_t line;
    uint64_t id; /* counts from 1 */
};

struct block_trace {
    std::FILE *file = nullptr;
    uint64_t next_id = 1;
    ~block_trace();
};

struct block_list {
    std::unordered_map<void *, block_origin> blocks;
    std::shared_ptr<block_trace> trace; /* shared by an environment and its tasks; null: no trace */
};

/* A zeroed block, or null. */
void *blocks_calloc(block_list *list, uint64_t count, uint64_t size, const char *file, int32_t line);
void blocks_free(block_list *list, void *block, const char *file, int32_t line);

/* Tells leaks in the trace, if there is one, and releases every block. */
void blocks_close(block_list *list, const char *owner);
