/* memman_fuzz.cpp - fuzz target of the memory manager: bytes are a sequence of calls, each checked against a simple
 * model of the live blocks. The first byte says whether `debug` is on; then each byte is an operation, its operands
 * behind it. Nothing here is a fault, so that the process must not end. */
#include "unit/cpub/memman_heap.h"

#include <algorithm>
#include <cstdint>
#include <vector>

static void require(bool holds)
{
    if (!holds) std::abort();
}

/* A live block: what the caller was given, and what it has written there. */
struct model_block {
    char *user;  /* as given; of an aligned block inside its body */
    char *body;  /* as the manager counts it */
    uint64_t id; /* as far as `debug` is on */
    uint64_t body_size;
    bool is_locked, is_aligned;
    std::vector<char> bytes; /* of the user */
};

struct model_state {
    memman_heap heap;
    memman *man = nullptr;
    bool debug = false;
    std::vector<model_block> blocks; /* oldest first */
    uint64_t max_usage = 0;
    uint32_t next_id = 0;
    uint8_t next_mark = 1;
    size_t num_texts = 0;
};

struct input {
    const uint8_t *at, *end;
};

static uint8_t next_byte(input *in) { return in->at < in->end ? *in->at++ : 0; }

static model_block *pick(model_state *state, input *in)
{
    const uint8_t choice = next_byte(in);
    return state->blocks.empty() ? nullptr : &state->blocks[choice % state->blocks.size()];
}

static uint64_t usage(const model_state *state)
{
    uint64_t sum = 0;
    if (state->debug)
        for (const model_block &block : state->blocks) sum += block.body_size;
    return sum;
}

/* ---- Checks ---- */

static void check_listed(const model_state *state)
{
    const memman_block *before = nullptr;
    const memman_block *listed = state->man->list->head;
    for (auto block = state->blocks.rbegin(); block != state->blocks.rend(); ++block, listed = listed->next) {
        require(listed != nullptr && listed->prev == before);
        require(listed->raw + MEMMAN_GUARD_BYTES == block->body && listed->size == block->body_size);
        require(listed->id == block->id && listed->locked == (block->is_locked ? 1 : 0));
        before = listed;
    }
    require(listed == nullptr);
}

static void check(const model_state *state)
{
    const memman *man = state->man;
    require(man->curusage == usage(state) && man->maxusage == state->max_usage);
    require(man->list->nextid == state->next_id);
    require(state->heap.live.size() == 3 + state->blocks.size() * (state->debug ? 2 : 1));
    if (state->debug)
        check_listed(state);
    else
        require(man->list->head == nullptr);
}

static void check_contents(const model_block *block)
{
    require(std::equal(block->bytes.begin(), block->bytes.end(), block->user));
}

/* ---- Operations ---- */

static void fill(model_state *state, model_block *block)
{
    for (char &byte : block->bytes) byte = static_cast<char>(state->next_mark++);
    std::copy(block->bytes.begin(), block->bytes.end(), block->user);
}

/* Takes up what an allocation has given. `should_fail`: the allocator refuses, or there is nothing to allocate. */
static void take_up(model_state *state, char *user, uint64_t size, uint64_t alignment, bool should_fail)
{
    require((user == nullptr) == should_fail);
    if (user == nullptr) return;
    model_block block = {user, user, 0, size + alignment, false, alignment != 0, std::vector<char>(size)};
    if (alignment != 0) std::memcpy(&block.body, user - sizeof block.body, sizeof block.body);
    require(user >= block.body && user + size <= block.body + block.body_size);
    if (state->debug) block.id = state->next_id++;
    fill(state, &block);
    state->blocks.push_back(block);
    state->max_usage = std::max(state->max_usage, usage(state));
}

/* Whether an operation of `num_calls` calls of the allocator meets the failure that was asked for. */
static bool meets_failure(const model_state *state, int64_t num_calls)
{
    return state->heap.until_failure >= 0 && state->heap.until_failure < num_calls;
}

static void allocate(model_state *state, input *in, uint8_t kind)
{
    const uint64_t count = next_byte(in);
    const uint64_t size = next_byte(in) % 8;
    const bool fails = meets_failure(state, state->debug ? 2 : 1);
    const bool nothing = count * size == 0;
    const char *file = count % 5 == 0 ? nullptr : "fuzz.c";
    memman *man = state->man;
    if (kind == 0) {
        take_up(state, static_cast<char *>(memman_malloc(file, 1, man, count, size)), count * size, 0,
                fails || nothing);
    } else if (kind == 1) {
        char *user = static_cast<char *>(memman_calloc(file, 1, man, count, size));
        if (user != nullptr) require(std::count(user, user + count * size, 0) == static_cast<long>(count * size));
        take_up(state, user, count * size, 0, fails || nothing);
    } else if (kind == 2) {
        const std::string text(count, 'x');
        char *user = memman_strdup(file, 1, man, size == 0 ? nullptr : text.c_str());
        if (user != nullptr) require(size == 0 ? user[0] == 0 : text == user);
        take_up(state, user, (size == 0 ? 0 : count) + 1, 0, fails);
    } else {
        const uint64_t alignment = uint64_t{16} << size;
        char *user = static_cast<char *>(memman_aligned_malloc(file, 1, man, count, alignment));
        take_up(state, user, count, alignment, fails);
    }
}

static void release(model_state *state, input *in)
{
    model_block *block = pick(state, in);
    if (block == nullptr) {
        if (state->debug) memman_free("fuzz.c", 2, state->man, nullptr);
        return;
    }
    check_contents(block);
    if (block->is_aligned)
        memman_aligned_free("fuzz.c", 2, state->man, block->user);
    else
        memman_free("fuzz.c", 2, state->man, block->user);
    state->blocks.erase(state->blocks.begin() + (block - state->blocks.data()));
}

static void resize(model_state *state, input *in)
{
    model_block *block = pick(state, in);
    const uint64_t size = uint64_t{5} * next_byte(in);
    if (block == nullptr || block->is_aligned || (size == 0 && !state->debug)) return;
    const bool fails = meets_failure(state, 1);
    char *moved = static_cast<char *>(memman_realloc("fuzz.c", 3, state->man, block->user, size));
    if (size == 0) {
        require(moved == nullptr);
        state->blocks.erase(state->blocks.begin() + (block - state->blocks.data()));
        return;
    }
    require((moved == nullptr) == fails);
    if (moved != nullptr) {
        block->user = block->body = moved;
        block->body_size = size;
        block->is_locked = false;
        block->bytes.resize(std::min<uint64_t>(block->bytes.size(), size));
        check_contents(block);
        block->bytes.resize(size);
        fill(state, block);
    }
    check_contents(block);
}

/* Writes what may be written: all of an open block, of a locked one what its digest leaves out. */
static void write_into(model_state *state, input *in)
{
    model_block *block = pick(state, in);
    if (block == nullptr) return;
    if (!block->is_locked) {
        fill(state, block);
        return;
    }
    const char *const frozen_end = block->body + (block->body_size > 32 ? block->body_size - 32 : 0);
    for (size_t i = 0; i < block->bytes.size(); ++i)
        if (block->user + i >= frozen_end) block->user[i] = block->bytes[i] = static_cast<char>(state->next_mark++);
}

static void lock_one(model_state *state, input *in, bool locks)
{
    model_block *block = pick(state, in);
    if (block == nullptr) return;
    if (locks)
        memman_lockblock("fuzz.c", 4, state->man, block->body);
    else
        memman_unlockblock("fuzz.c", 4, state->man, block->body);
    block->is_locked = locks && state->debug;
}

static void lock_all(model_state *state, bool locks)
{
    if (locks)
        memman_lockall("fuzz.c", 5, state->man);
    else
        memman_unlockall("fuzz.c", 5, state->man);
    for (model_block &block : state->blocks) block.is_locked = locks && state->debug;
}

static void look(model_state *state, input *in)
{
    const model_block *block = pick(state, in);
    const uint8_t level = next_byte(in);
    require(memman_scan("fuzz.c", 6, state->man, level) == 0);
    require(memman_usage("fuzz.c", 6, state->man, level, level % 4) == 0);
    if (block == nullptr) return;
    memman_checkblock("fuzz.c", 6, state->man, block->body);
    if (block->body_size >= 32) memman_checkptr("fuzz.c", 6, state->man, block->body + (block->body_size - 32));
}

static void hear(void *handle, const char *text)
{
    ++*static_cast<size_t *>(handle);
    require(std::strlen(text) > 0 && std::strlen(text) < 1024 && text[std::strlen(text) - 1] == '\n');
}

static void operate(model_state *state, input *in)
{
    const uint8_t operation = next_byte(in) % 16;
    switch (operation) {
    case 0:
    case 1:
    case 2:
    case 3: allocate(state, in, operation); break;
    case 4:
    case 5: release(state, in); break;
    case 6:
    case 7: resize(state, in); break;
    case 8: write_into(state, in); break;
    case 9:
    case 10: lock_one(state, in, operation == 9); break;
    case 11:
    case 12: lock_all(state, operation == 11); break;
    case 13: look(state, in); break;
    case 14: memman_setlevels(state->man, -1, next_byte(in) % 10); break;
    default: state->heap.until_failure = next_byte(in) % 4; break;
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    input in = {data, data + size};
    model_state state;
    state.debug = next_byte(&in) % 2 != 0;
    state.heap.shift = 8; /* bodies for which the stored pointer of an aligned block stays off the guard */
    state.man = memman_heap_manager(&state.heap, state.debug ? 1 : 0);
    require(state.man != nullptr);
    memman_setfatalfunc(state.man, nullptr, nullptr);
    memman_setmsgfunc(state.man, hear, &state.num_texts);
    memman_setlevels(state.man, -1, 0);

    while (in.at < in.end) {
        operate(&state, &in);
        check(&state);
    }
    for (const model_block &block : state.blocks) check_contents(&block);
    const uint64_t num_left = state.debug ? state.blocks.size() : 0;
    require(memman_delete("fuzz.c", 9, &state.man) == num_left && state.man == nullptr);
    require(state.heap.live.size() == state.blocks.size() * (state.debug ? 2 : 1));
    while (!state.heap.live.empty()) memman_heap_drop(&state.heap, state.heap.live.begin()->first);
    return 0;
}
