/* memman_scan.cpp - verification of blocks, locked contents, scans and the leak report. */
#include "cpub/memman.h"

#include "cpub/sysformat.h"
#include "digest.h"
#include "memman_internal.h"

#include <cstring>

/* ---- Verification ---- */

static const char BEGIN_FAULT[] = "*** Block begin guard violation. #%I64u at %p. pos: %u expected: %u got %u";
static const char END_FAULT[] = "*** Block end guard violation. #%I64u at %p. pos: %u expected: %u got %u";

static void verify_guard(memman *man, const memman_block *block, const char *guard, int32_t seed, const char *fault,
                         const char *file, int32_t line)
{
    for (int32_t i = 0; i < MEMMAN_GUARD_BYTES; ++i) {
        const int32_t expected = seed + i;
        const signed char got = static_cast<signed char>(guard[i]);
        if (got == expected) continue;
        /* With its sign in 32 bits: 0xFF is 4294967295 in the report. */
        memman_fatal(man, file, line, fault, block->id, static_cast<const void *>(guard), static_cast<uint32_t>(i),
                     static_cast<uint32_t>(expected), static_cast<uint32_t>(got));
    }
}

/* The digest of a block: from the guard in front on and so without its last 32 user bytes, see the header. */
static int32_t digest_block(const memman_block *block, uint8_t digest[DIGEST_BYTES])
{
    return digest_md5(block->raw, static_cast<uint32_t>(block->size), digest);
}

static void verify_digest(memman *man, const memman_block *block, const char *file, int32_t line)
{
    uint8_t digest[DIGEST_BYTES];
    if (digest_block(block, digest) != 0) return; /* no word about the block */
    for (int32_t i = 0; i < DIGEST_BYTES; ++i) {
        if (digest[i] == block->digest[i]) continue;
        char size_text[MEMMAN_SIZE_BYTES];
        (void)sysenv_sizetostr(1, sizeof size_text, size_text, block->size);
        memman_fatal(man, file, line,
                     "Locked #%-6I64u at %p of size %s has been changed at '%s' %u. Digest info.: %d(%d!=%d) \n",
                     block->id, static_cast<void *>(memman_endguard_of(block)), size_text, memman_shown(file),
                     static_cast<uint32_t>(line), i, static_cast<int32_t>(digest[i]),
                     static_cast<int32_t>(block->digest[i]));
    }
}

void memman_verify(memman *man, const memman_block *block, const char *file, int32_t line)
{
    verify_guard(man, block, block->raw, block->beginseed, BEGIN_FAULT, file, line);
    verify_guard(man, block, memman_endguard_of(block), block->endseed, END_FAULT, file, line);
    if (block->locked != 0) verify_digest(man, block, file, line);
}

/* ---- One block ---- */

static const char NOT_IN_LIST[] = "Block at adr. %p is not in list.\n";

void memman_checkblock(const char *file, int32_t line, memman *man, const void *block)
{
    if (man->debug == 0 || !memman_enter(man)) return;
    if (man->list != nullptr && block != nullptr) {
        const char *raw = memman_raw_of(block);
        const memman_block *found = memman_find(man, raw);
        if (found == nullptr) memman_fatal(man, file, line, NOT_IN_LIST, static_cast<const void *>(raw));
        memman_verify(man, found, file, line);
    }
    memman_leave(man);
}

void memman_checkptr(const char *file, int32_t line, memman *man, const void *pointer)
{
    if (man->debug == 0) return;
    const uintptr_t address = reinterpret_cast<uintptr_t>(pointer);
    for (const memman_block *block = memman_newest(man); block != nullptr; block = block->next) {
        if (block->raw == nullptr) continue;
        const uintptr_t raw = reinterpret_cast<uintptr_t>(block->raw);
        /* Up to raw + size only: the last 32 user bytes do not count, see the header. */
        if (raw + MEMMAN_GUARD_BYTES <= address && address <= raw + block->size) return;
    }
    memman_fatal(man, file, line, "Block is not allocated. Block: %p", pointer);
}

/* ---- Locked contents ---- */

static void freeze(const memman *man, memman_block *block)
{
    if (!memman_enter(man)) return;
    /* Without a digest there is nothing to compare: the block stays open rather than that it is reported later on. */
    block->locked = digest_block(block, block->digest) == 0 ? 1 : 0;
    memman_leave(man);
}

void memman_lockblock(const char *file, int32_t line, memman *man, void *block)
{
    if (man->debug == 0 || !memman_enter(man)) return;
    if (man->list != nullptr && block != nullptr) {
        memman_block *found = memman_find(man, memman_raw_of(block));
        if (found == nullptr)
            memman_fatal(man, file, line, NOT_IN_LIST, block); /* not the raw one, unlike the others */
        freeze(man, found);
    }
    memman_leave(man);
}

void memman_unlockblock(const char *file, int32_t line, memman *man, void *block)
{
    if (man->debug == 0 || !memman_enter(man)) return;
    memman_checkblock(file, line, man, block);
    const char *raw = memman_raw_of(block);
    memman_block *found = memman_find(man, raw);
    if (found == nullptr) memman_fatal(man, file, line, NOT_IN_LIST, static_cast<const void *>(raw));
    found->locked = 0;
    memman_leave(man);
}

void memman_lockall(const char *file, int32_t line, memman *man)
{
    (void)file;
    (void)line;
    if (!memman_enter(man)) return;
    for (memman_block *block = memman_newest(man); block != nullptr; block = block->next)
        if (man->debug != 0) freeze(man, block);
    memman_leave(man);
}

void memman_unlockall(const char *file, int32_t line, memman *man)
{
    (void)file;
    (void)line;
    if (!memman_enter(man)) return;
    for (memman_block *block = memman_newest(man); block != nullptr; block = block->next) block->locked = 0;
    memman_leave(man);
}

/* ---- All blocks ---- */

/* Count and sum come from a walk, not from the counters, so that a difference between them would show here. */
static void tell_usage(const memman *man, uint64_t num_blocks, uint64_t num_bytes, int32_t level)
{
    char count_text[MEMMAN_SIZE_BYTES];
    char usage_text[MEMMAN_SIZE_BYTES];
    char max_text[MEMMAN_SIZE_BYTES];
    (void)sysenv_sizetostr(0, sizeof count_text, count_text, num_blocks);
    (void)sysenv_sizetostr(1, sizeof usage_text, usage_text, num_bytes);
    (void)sysenv_sizetostr(1, sizeof max_text, max_text, man->maxusage);
    memman_tell(man, level, MEMMAN_TEXT_BYTES,
                "Space usage. Number of blocks: %s  Current usage: %s Maximum usage: %s\n", count_text, usage_text,
                max_text);
}

static void scan_listed(const char *file, int32_t line, memman *man, int32_t level)
{
    if (std::strncmp(man->begin_guard, "begin", sizeof man->begin_guard) != 0) memman_fataldamaged(man, file, line);
    memman_tell(man, level, MEMMAN_TEXT_BYTES, "Scanning memory at '%s'(%d)\n", file == nullptr ? "" : file, line);
    uint64_t num_blocks = 0;
    uint64_t num_bytes = 0;
    for (const memman_block *block = memman_newest(man); block != nullptr; block = block->next) {
        ++num_blocks;
        num_bytes += block->size;
        memman_verify(man, block, file, line);
    }
    tell_usage(man, num_blocks, num_bytes, level);
}

int32_t memman_scan(const char *file, int32_t line, memman *man, int32_t level)
{
    if (man->debug == 0 || !memman_enter(man)) return 0;
    if (man->list != nullptr) scan_listed(file, line, man, level);
    memman_leave(man);
    return 0;
}

int32_t memman_usage(const char *file, int32_t line, memman *man, uint64_t min_size, int32_t level)
{
    (void)file;
    (void)line;
    if (man->debug == 0 || !memman_enter(man)) return 0;
    uint64_t num_blocks = 0;
    uint64_t num_bytes = 0;
    for (const memman_block *block = memman_newest(man); block != nullptr; block = block->next) {
        ++num_blocks;
        num_bytes += block->size;
        if (min_size == 0 || block->size < min_size) continue;
        char size_text[MEMMAN_SIZE_BYTES];
        (void)sysenv_sizetostr(1, sizeof size_text, size_text, block->size);
        memman_tell(man, level, MEMMAN_TEXT_BYTES, "#%-6I64u is of size %s.\n", block->id, size_text);
    }
    tell_usage(man, num_blocks, num_bytes, level);
    memman_leave(man);
    return 0;
}

uint64_t memman_tellleaks(const memman *man)
{
    uint64_t num_left = 0;
    if (man->list == nullptr) return num_left;
    memman_emit(man, MEMMAN_LEVEL_LEAK, "Checking leaks\n");
    if (man->debug != 0 && man->list->head != nullptr) {
        memman_emit(man, MEMMAN_LEVEL_LEAK, "**** ALLOCATED  BLOCKS LEFT\n");
        for (const memman_block *block = man->list->head; block != nullptr; block = block->next) {
            ++num_left;
            memman_tell(man, MEMMAN_LEVEL_LEAK, MEMMAN_TEXT_BYTES, "#%-I64u at %p (%p) is allocated\n", block->id,
                        static_cast<void *>(block->raw), static_cast<void *>(memman_user_of(block)));
        }
    }
    memman_emit(man, MEMMAN_LEVEL_LEAK, "Done checking leaks\n");
    return num_left;
}
