/* blocks.cpp - see blocks.h. */
#include "solver/model/blocks.h"

#include <new>

void *blocks_calloc(block_list *list, sysenv *sys, uint64_t count, uint64_t size, const char *file, int32_t line)
{
    uint64_t bytes = 0;
    if (__builtin_mul_overflow(count, size, &bytes)) return nullptr;
    /* The manager gives nothing for nothing, callers want a block. */
    void *block = sysenv_callocdbg(sys, file, line, bytes != 0 ? bytes : 1, 1);
    if (block == nullptr) return nullptr;
    try {
        list->blocks.insert(block);
    } catch (const std::bad_alloc &) {
        sysenv_freedbg(sys, file, line, block);
        return nullptr;
    }
    return block;
}

void blocks_free(block_list *list, sysenv *sys, void *block, const char *file, int32_t line)
{
    if (list->blocks.erase(block) != 0) sysenv_freedbg(sys, file, line, block);
}

void blocks_close(block_list *list, sysenv *sys)
{
    if (sys->memman->debug == 0)
        for (void *block : list->blocks) sysenv_freedbg(sys, nullptr, 0, block);
    list->blocks.clear();
}
