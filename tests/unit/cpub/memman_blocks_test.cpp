/* memman_blocks_test.cpp - making, resizing and giving back blocks: layout, list, counters, lack of memory, threads. */
#include "memman_support.h"

#include <algorithm>
#include <thread>
#include <vector>

TEST(memman_blocks, fresh_manager)
{
    const memman_scene scene(1, 3);
    const memman *man = scene.man;
    EXPECT_STREQ(man->begin_guard, "begin");
    EXPECT_STREQ(man->end_guard, "end");
    EXPECT_EQ(std::string(man->name, sizeof man->name), std::string(sizeof man->name, '\0'));
    EXPECT_EQ(man->list->head, nullptr);
    EXPECT_EQ(man->list->nextid, 0U);
    EXPECT_EQ(man->list->flags, 0);
    EXPECT_EQ(man->list->level, 3);
    EXPECT_EQ(man->curusage, 0U);
    EXPECT_EQ(man->maxusage, 0U);
    EXPECT_EQ(man->usemutex, 1);
    EXPECT_EQ(man->echofile, nullptr);
    EXPECT_EQ(man->echopath[0], 0);
}

TEST(memman_blocks, creation_and_null_managers)
{
    for (int64_t n = 0; n <= 3; ++n) {
        memman_heap heap;
        heap.until_failure = n;
        memman *man = memman_heap_manager(&heap, 1);
        EXPECT_EQ(man != nullptr, n == 3) << n;
        EXPECT_EQ(heap.live.size(), n == 3 ? 3U : 0U) << n;
        if (man == nullptr) continue;
        memman_setfatalfunc(man, nullptr, nullptr);
        memman_setmsgfunc(man, nullptr, nullptr);
        EXPECT_EQ(man->list->tracefrom, -1);
        memman_setlevels(man, 7, 0);
        EXPECT_EQ(man->list->tracefrom, 7);
        EXPECT_EQ(memman_delete("unit.c", 1, &man), 0U);
        EXPECT_TRUE(heap.live.empty());
        EXPECT_EQ(memman_delete("unit.c", 1, &man), 0U) << "of a null manager";
    }
    memman_setmsgfunc(nullptr, memman_hear, nullptr);
    memman_setfatalfunc(nullptr, nullptr, nullptr);
    memman_setlevels(nullptr, 1, 1);
    memman_openecho(nullptr, "x", "x");
    memman_echotofile(nullptr, "x");
    memman_closeecho(nullptr);
}

/* ---- Entries ---- */

static const struct maker {
    const char *name;
    uint64_t size;
    void *(*make)(memman *man);
    const char *plain, *checked; /* calls of the allocator, in checked mode behind the header */
    char first;                  /* byte of the new block; 0xA5: as the allocator left it */
} makers[] = {
    {"malloc", 12, [](memman *man) { return memman_malloc("unit.c", 5, man, 3, 4); }, "malloc 12; ", "malloc 76; ",
     '\xA5'},
    {"calloc", 12, [](memman *man) { return memman_calloc("unit.c", 5, man, 3, 4); }, "calloc 3 4; ", "calloc 76 1; ",
     0},
    {"strdup", 4, [](memman *man) { return static_cast<void *>(memman_strdup("unit.c", 5, man, "abc")); }, "malloc 4; ",
     "malloc 68; ", 'a'},
    {"strdup, null", 1, [](memman *man) { return static_cast<void *>(memman_strdup("unit.c", 5, man, nullptr)); },
     "malloc 1; ", "malloc 65; ", 0},
    {"allocx", 12, [](memman *man) { return memman_allocx("unit.c", 5, man, 3, 4, 0); }, "malloc 12; ", "malloc 76; ",
     '\xA5'},
    {"allocx, zero", 12, [](memman *man) { return memman_allocx("unit.c", 5, man, 3, 4, 1); }, "calloc 3 4; ",
     "calloc 76 1; ", 0},
    {"realloc, null", 12, [](memman *man) { return memman_realloc("unit.c", 5, man, nullptr, 12); }, "realloc 12; ",
     "malloc 76; ", '\xA5'},
    {"no file", 12, [](memman *man) { return memman_malloc(nullptr, 5, man, 12, 1); }, "malloc 12; ", "malloc 76; ",
     '\xA5'},
};

TEST(memman_blocks, plain_entries_forward)
{
    memman_scene scene(0, 2000);
    memman *man = scene.man;
    for (const maker &item : makers) {
        SCOPED_TRACE(item.name);
        scene.heap.calls.clear();
        char *block = static_cast<char *>(item.make(man));
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(scene.heap.calls, item.plain);
        EXPECT_EQ(block[0], item.first);
        block = static_cast<char *>(memman_realloc("unit.c", 5, man, block, 20));
        EXPECT_EQ(scene.heap.calls, std::string(item.plain) + "realloc 20; ");
        memman_free("unit.c", 5, man, block);
    }
    scene.heap.calls.clear();
    memman_free("unit.c", 5, man, nullptr);
    memman_freex("unit.c", 5, man, nullptr);
    memman_aligned_free("unit.c", 5, man, nullptr);
    memman_free("unit.c", 5, man, memman_realloc("unit.c", 5, man, nullptr, 0)); /* the allocator's word */
    EXPECT_EQ(scene.heap.calls, "free null; free null; realloc 0; free; ");

    char foreign = 0; /* nothing is checked */
    memman_checkblock("unit.c", 5, man, &foreign);
    memman_checkptr("unit.c", 5, man, &foreign);
    memman_lockblock("unit.c", 5, man, &foreign);
    memman_unlockblock("unit.c", 5, man, &foreign);
    memman_lockall("unit.c", 5, man);
    memman_unlockall("unit.c", 5, man);
    EXPECT_EQ(memman_scan("unit.c", 5, man, 0), 0);
    EXPECT_EQ(memman_usage("unit.c", 5, man, 1, 0), 0);
    EXPECT_EQ(scene.told, "");
    EXPECT_EQ(man->curusage + man->maxusage + man->list->nextid, 0U);
}

static void expect_guards(const memman_block *block)
{
    for (int i = 0; i < MEMMAN_GUARD_BYTES; ++i) {
        EXPECT_EQ(block->raw[i], 0x20 + i);
        EXPECT_EQ(block->raw[MEMMAN_GUARD_BYTES + block->size + static_cast<uint64_t>(i)], 0x20 + i);
    }
}

TEST(memman_blocks, checked_entries_record)
{
    memman_scene scene(1);
    memman *man = scene.man;
    const std::string header = "malloc " + std::to_string(sizeof(memman_block)) + "; ";
    uint64_t usage = 0;
    uint64_t id = 0;
    for (const maker &item : makers) {
        SCOPED_TRACE(item.name);
        scene.heap.calls.clear();
        char *user = static_cast<char *>(item.make(man));
        ASSERT_NE(user, nullptr);
        EXPECT_EQ(scene.heap.calls, header + item.checked);
        const memman_block *block = man->list->head; /* newest first */
        EXPECT_EQ(block->raw, memman_raw(user));
        EXPECT_EQ(block->id, id++);
        EXPECT_EQ(block->size, item.size);
        EXPECT_EQ(block->locked, 0);
        EXPECT_EQ(block->prev, nullptr);
        if (block->next != nullptr) {
            EXPECT_EQ(block->next->prev, block);
        }
        EXPECT_EQ(user[0], item.first);
        expect_guards(block);
        usage += item.size;
        EXPECT_EQ(man->curusage, usage);
        EXPECT_EQ(man->maxusage, usage);
    }
    EXPECT_STREQ(man->list->head->next->next->next->next->next->raw + MEMMAN_GUARD_BYTES, "abc");

    /* From the middle, the newest and the oldest; ids are not used again. */
    const memman_block *second = man->list->head->next;
    memman_free("unit.c", 6, man, second->raw + MEMMAN_GUARD_BYTES);
    memman_freex("unit.c", 6, man, man->list->head->raw + MEMMAN_GUARD_BYTES);
    const memman_block *oldest = man->list->head;
    while (oldest->next != nullptr) oldest = oldest->next;
    memman_free("unit.c", 6, man, oldest->raw + MEMMAN_GUARD_BYTES);
    std::vector<uint64_t> ids;
    for (const memman_block *block = man->list->head; block != nullptr; block = block->next) ids.push_back(block->id);
    EXPECT_EQ(ids, (std::vector<uint64_t>{5, 4, 3, 2, 1}));
    EXPECT_EQ(man->curusage, usage - 36);
    EXPECT_EQ(man->maxusage, usage);
    EXPECT_EQ(man->list->nextid, 8U);
    (void)scene.make(1);
    EXPECT_EQ(man->list->head->id, 8U);

    man->list->nextid = UINT32_MAX; /* wraps, and ids are wider */
    (void)scene.make(1);
    EXPECT_EQ(man->list->head->id, UINT32_MAX);
    (void)scene.make(1);
    EXPECT_EQ(man->list->head->id, 0U);
}

TEST(memman_blocks, sizes_without_a_block)
{
    for (const int32_t debug : {0, 1}) {
        memman_scene scene(debug);
        memman *man = scene.man;
        EXPECT_EQ(memman_malloc("unit.c", 5, man, 0, 8), nullptr);
        EXPECT_EQ(memman_malloc("unit.c", 5, man, 8, 0), nullptr);
        EXPECT_EQ(memman_calloc("unit.c", 5, man, 0, 8), nullptr);
        EXPECT_EQ(memman_allocx("unit.c", 5, man, 8, 0, 1), nullptr);
        EXPECT_EQ(memman_malloc("unit.c", 5, man, uint64_t{1} << 63, 2), nullptr) << "a product of 0";
        EXPECT_EQ(memman_aligned_malloc("unit.c", 5, man, UINT64_MAX - 7, 8), nullptr) << "a sum of 0";
        EXPECT_EQ(memman_aligned_malloc("unit.c", 5, man, UINT64_MAX - 7, 64), nullptr);
        EXPECT_EQ(scene.heap.calls, "");
        EXPECT_EQ(man->list->nextid, 0U);
    }
    memman_scene scene(1, 2);
    EXPECT_EQ(scene.make(UINT64_MAX - 63), nullptr) << "no room for the guards";
    char *block = scene.make(1);
    EXPECT_EQ(memman_realloc("unit.c", 5, scene.man, block, UINT64_MAX), nullptr);
    EXPECT_EQ(scene.told,
              "Out of space while trying to allocate a block of size 18446744073709551552 in file 'unit.c(4)'\n"
              "Out of space while trying to reallocate a block of size 18446744073709551615 in file 'unit.c(5)'\n");
}

/* The result is body + body % alignment, with the body's address in front of it; aligned or not. */
TEST(memman_blocks, alignment_formula)
{
    static const struct {
        uint64_t shift, size, alignment, distance;
    } cases[] = {
        {8, 100, 16, 8}, {40, 100, 64, 40}, {24, 0, 32, 24}, {56, 100, 32, 24}, {8, 1, 4096, 8}, {16, 5, 16, 0},
    };
    for (const int32_t debug : {0, 1}) {
        for (const auto &item : cases) {
            if (debug != 0 && item.distance < 8) continue; /* a fault */
            SCOPED_TRACE(memman_text("debug %d, shift %d, alignment %d", debug, static_cast<int>(item.shift),
                                     static_cast<int>(item.alignment)));
            memman_scene scene(debug);
            scene.heap.shift = (item.shift + (debug != 0 ? 32 : 0)) % 64; /* of the raw region */
            char *got = static_cast<char *>(memman_aligned_malloc("unit.c", 5, scene.man, item.size, item.alignment));
            char *body = nullptr;
            std::memcpy(&body, got - 8, 8);
            const uintptr_t address = reinterpret_cast<uintptr_t>(body);
            EXPECT_EQ(static_cast<uint64_t>(got - body), address % item.alignment);
            if (item.alignment <= 64) {
                EXPECT_EQ(address % item.alignment, item.distance);
            }
            EXPECT_EQ(scene.man->curusage, debug != 0 ? item.size + item.alignment : 0);
            std::memset(got, 'x', item.size);
            EXPECT_EQ(memman_scan("unit.c", 5, scene.man, 0), 0);
            memman_aligned_free("unit.c", 5, scene.man, got);
            EXPECT_EQ(scene.man->curusage, 0U);
        }
    }
}

TEST(memman_blocks, reallocation)
{
    memman_scene scene(1);
    memman *man = scene.man;
    (void)scene.make(10);
    char *user = scene.make(50);
    char *newest = scene.make(10);
    memman_free("unit.c", 5, man, scene.make(30));
    const memman_block *block = man->list->head->next;
    std::memcpy(user, "contents", sizeof "contents");
    memman_lockblock("unit.c", 5, man, user);

    scene.heap.until_failure = 0;
    EXPECT_EQ(memman_realloc("unit.c", 5, man, user, 200), nullptr);
    EXPECT_EQ(block->raw, memman_raw(user));
    EXPECT_EQ(block->locked, 1);
    EXPECT_EQ(block->size, 50U);
    EXPECT_EQ(man->curusage, 70U);
    memman_checkblock("unit.c", 5, man, user);

    static const struct {
        uint64_t size, usage;
    } cases[] = {{200, 220}, {9, 29}, {9, 29}, {77, 97}};
    for (const auto &item : cases) {
        SCOPED_TRACE(item.size);
        user = static_cast<char *>(memman_realloc("unit.c", 5, man, user, item.size));
        EXPECT_STREQ(user, "contents");
        EXPECT_EQ(man->list->head->next, block) << "its place";
        EXPECT_EQ(block->raw, memman_raw(user));
        EXPECT_EQ(block->id, 1U);
        EXPECT_EQ(block->locked, 0);
        EXPECT_EQ(block->size, item.size);
        EXPECT_EQ(man->curusage, item.usage);
        EXPECT_EQ(man->maxusage, 100U) << "only allocations raise it";
        expect_guards(block);
    }
    EXPECT_EQ(man->list->nextid, 4U);
    (void)scene.make(1);
    EXPECT_EQ(man->maxusage, 100U);

    EXPECT_EQ(memman_realloc("unit.c", 5, man, newest, 0), nullptr);
    EXPECT_EQ(man->curusage, 88U);
    EXPECT_EQ(memman_realloc("unit.c", 5, man, nullptr, 0), nullptr);
    memman_free("unit.c", 5, man, nullptr);
    memman_aligned_free("unit.c", 5, man, nullptr);
    EXPECT_EQ(man->curusage, 88U);
}

/* ---- What is missing ---- */

TEST(memman_blocks, without_list)
{
    memman_scene scene(1, 2000);
    memman *man = scene.man;
    memman_list *const list = man->list;
    man->list = nullptr;
    memman_setlevels(man, 5, 5);
    for (const maker &item : makers) {
        SCOPED_TRACE(item.name);
        scene.heap.calls.clear();
        const uint64_t usage = man->curusage;
        void *block = item.make(man);
        const std::string total = std::to_string(item.size);
        EXPECT_EQ(scene.heap.calls, item.checked[0] == 'c' ? "calloc " + total + " 1; " : "malloc " + total + "; ");
        EXPECT_EQ(man->curusage, usage + item.size);
        memman_free("unit.c", 5, man, block); /* not in the list that is not there: stays */
        EXPECT_EQ(man->curusage, usage + item.size);
        memman_heap_drop(&scene.heap, block);
    }
    scene.heap.until_failure = 0;
    EXPECT_EQ(scene.make(5), nullptr);
    char foreign = 0;
    memman_checkblock("unit.c", 5, man, &foreign);
    memman_lockblock("unit.c", 5, man, &foreign);
    memman_lockall("unit.c", 5, man);
    memman_unlockall("unit.c", 5, man);
    EXPECT_EQ(memman_scan("unit.c", 5, man, 0), 0);
    EXPECT_EQ(memman_usage("unit.c", 5, man, 0, 0), 0);
    EXPECT_EQ(scene.told, "");
    man->list = list;
    man->curusage = 0;
    EXPECT_EQ(list->level, 2000);
}

TEST(memman_blocks, without_mutex)
{
    memman_scene scene(1, 2000);
    memman *man = scene.man;
    char *block = scene.make(100);
    sysmutex *const mutex = man->mutex;
    scene.told.clear();
    man->mutex = nullptr; /* cannot be taken */
    for (const maker &item : makers) EXPECT_EQ(item.make(man), nullptr) << item.name;
    EXPECT_EQ(memman_aligned_malloc("unit.c", 5, man, 10, 16), nullptr);
    block[-1] = 'x'; /* nobody looks */
    EXPECT_EQ(memman_scan("unit.c", 5, man, 0), 0);
    EXPECT_EQ(memman_usage("unit.c", 5, man, 0, 0), 0);
    memman_checkblock("unit.c", 5, man, block);
    memman_lockblock("unit.c", 5, man, block);
    memman_lockall("unit.c", 5, man);
    EXPECT_EQ(man->list->head->locked, 0);
    memman_setlevels(man, 5, 5);
    memman_setmsgfunc(man, nullptr, nullptr);
    memman_setfatalfunc(
        man, [](void *, const char *, int32_t, const char *, int32_t) {}, nullptr);
    memman_openecho(man, "/dev/null", "");
    EXPECT_EQ(man->echofile, nullptr);
    EXPECT_EQ(man->echopath[0], 0);
    EXPECT_EQ(man->list->level, 2000);
    EXPECT_EQ(man->msgfunc, memman_hear);
    EXPECT_EQ(man->fatalfunc, nullptr);

    man->usemutex = 0; /* nobody takes it */
    block[-1] = 0x3F;
    memman_free("unit.c", 5, man, block);
    EXPECT_EQ(man->curusage, 0U);
    man->usemutex = 1;
    man->mutex = mutex;
}

/* ---- Lack of memory at every call ---- */

struct memman_held {
    void *block;
    uint64_t size;
    bool is_aligned;
};

/* Makes, resizes and gives back blocks of all kinds. Whatever fails, what is held is what is counted. */
static void live_through(memman *man)
{
    std::vector<memman_held> all;
    uint64_t usage = 0;
    for (const maker &item : makers) {
        const uint32_t id = man->list->nextid;
        all.push_back({item.make(man), item.size, false});
        EXPECT_EQ(man->list->nextid, all.back().block == nullptr ? id : id + 1) << item.name;
    }
    all.push_back({memman_aligned_malloc("unit.c", 5, man, 30, 16), 46, true});
    all.erase(std::remove_if(all.begin(), all.end(), [](const memman_held &item) { return item.block == nullptr; }),
              all.end());
    memman_lockall("unit.c", 5, man);
    for (memman_held &item : all) {
        if (item.is_aligned) continue;
        void *moved = memman_realloc("unit.c", 5, man, item.block, item.size * 3);
        if (moved != nullptr) item = {moved, item.size * 3, false};
    }
    for (const memman_held &item : all) usage += item.size;
    EXPECT_EQ(man->curusage, usage);
    EXPECT_EQ(memman_scan("unit.c", 5, man, 1), 0);
    for (const memman_held &item : all) {
        if (item.is_aligned)
            memman_aligned_free("unit.c", 5, man, item.block);
        else
            memman_free("unit.c", 5, man, item.block);
    }
    EXPECT_EQ(man->curusage, 0U);
    EXPECT_EQ(man->list->head, nullptr);
}

TEST(memman_blocks, memory_runs_out_at_every_call)
{
    bool failed = true;
    for (int64_t n = 0; failed; ++n) {
        SCOPED_TRACE(n);
        memman_heap heap;
        heap.shift = 8;
        heap.until_failure = n;
        memman *man = memman_heap_manager(&heap, 1);
        std::string told;
        if (man != nullptr) {
            memman_setfatalfunc(man, nullptr, nullptr);
            memman_setmsgfunc(man, memman_hear, &told);
            memman_setlevels(man, -1, 2);
            live_through(man);
            EXPECT_EQ(memman_delete("unit.c", 5, &man), 0U);
        }
        failed = heap.until_failure < 0;
        EXPECT_TRUE(heap.live.empty());
        EXPECT_EQ(told.find("Out of space") != std::string::npos, failed && n >= 3);
        ASSERT_LT(n, 100);
    }
}

/* ---- Threads ---- */

static void work_beside_others(memman *man, char mark, int num_rounds)
{
    for (int k = 0; k < num_rounds; ++k) {
        const uint64_t size = 33 + static_cast<uint64_t>(k % 50);
        char *block = static_cast<char *>(memman_malloc("unit.c", 5, man, size, 1));
        std::memset(block, mark, size);
        if (k % 4 == 0) memman_lockblock("unit.c", 5, man, block);
        block = static_cast<char *>(memman_realloc("unit.c", 5, man, block, size + 40));
        std::memset(block + size, mark, 40);
        if (k % 16 == 0) (void)memman_scan("unit.c", 5, man, 1000);
        if (k % 16 == 8) memman_setlevels(man, -1, k % 7);
        EXPECT_EQ(std::count(block, block + size + 40, mark), static_cast<long>(size + 40));
        memman_free("unit.c", 5, man, block);
    }
}

TEST(memman_blocks, four_threads)
{
    for (const int32_t debug : {0, 1}) {
        memman_scene scene(debug);
        memman_setmsgfunc(scene.man, nullptr, nullptr);
        std::vector<char *> kept(20);
        for (char *&block : kept) block = scene.make(64);
        std::vector<std::thread> threads;
        for (const char mark : {'a', 'b', 'c', 'd'}) threads.emplace_back(work_beside_others, scene.man, mark, 500);
        for (std::thread &thread : threads) thread.join();
        EXPECT_EQ(scene.man->curusage, debug != 0 ? 20U * 64U : 0U);
        EXPECT_EQ(scene.man->list->nextid, debug != 0 ? 2020U : 0U);
        for (char *block : kept) memman_free("unit.c", 5, scene.man, block);
    }
}
