/* blocks.h - memory handed out across the interface: from the manager of the environment, which traces and checks it in
 * debug mode.
 *
 * A list knows every block that it gave and releases only those: a pointer that it does not know is left alone, which
 * callers rely on. */
#pragma once

#include "cpub/sysenv.h"

#include <unordered_set>

struct block_list {
    std::unordered_set<void *> blocks;
};

/* A zeroed block, or null. */
void *blocks_calloc(block_list *list, sysenv *sys, uint64_t count, uint64_t size, const char *file, int32_t line);
void blocks_free(block_list *list, sysenv *sys, void *block, const char *file, int32_t line);

/* Releases every block that is still out, but in debug mode, where they are left for the manager to report. */
void blocks_close(block_list *list, sysenv *sys);
