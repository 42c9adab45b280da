/* blocks.cpp - see blocks.h. */
#include "solver/model/blocks.h"

#include <cinttypes>
#include <cstdlib>
#include <new>

block_trace::~block_trace()
{
    if (file != nullptr) std::fclose(file);
}

static void trace_line(const block_list *list, const char *event, const void *block, const block_origin *origin,
                       const char *file, int32_t line)
{
    if (list->trace == nullptr || list->trace->file == nullptr) return;
    std::fprintf(list->trace->file, "%s id %" PRIu64 " block %p bytes %" PRIu64 " at %s(%" PRId32 ")\n", event,
                 origin->id, block, origin->bytes, file != nullptr ? file : "?", line);
}

void *blocks_calloc(block_list *list, uint64_t count, uint64_t size, const char *file, int32_t line)
{
    uint64_t bytes = 0;
    if (__builtin_mul_overflow(count, size, &bytes)) return nullptr;
    void *block = std::calloc(1, bytes != 0 ? bytes : 1);
    if (block == nullptr) return nullptr;

    block_origin origin = {bytes, file, line, list->trace != nullptr ? list->trace->next_id++ : 0};
    try {
        list->blocks.emplace(block, origin);
    } catch (const std::bad_alloc &) {
        std::free(block);
        return nullptr;
    }
    trace_line(list, "alloc", block, &origin, file, line);
    return block;
}

void blocks_free(block_list *list, void *block, const char *file, int32_t line)
{
    const auto found = list->blocks.find(block);
    if (found == list->blocks.end()) return;
    trace_line(list, "free", block, &found->second, file, line);
    list->blocks.erase(found);
    std::free(block);
}

void blocks_close(block_list *list, const char *owner)
{
    for (const auto &[block, origin] : list->blocks) {
        trace_line(list, "leak", block, &origin, origin.file, origin.line);
        std::free(block);
    }
    if (list->trace != nullptr && list->trace->file != nullptr)
        std::fprintf(list->trace->file, "%s closed, %zu blocks leaked\n", owner, list->blocks.size());
    list->blocks.clear();
}
