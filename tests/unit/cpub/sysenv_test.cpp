/* sysenv_test.cpp - the environment: creation and deletion, what its allocation entries pass on, fatal reports, the path of
 * the library. */
#include "cpub/sysenv.h"

#include "failing_allocator.h"
#include "memman_heap.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include <unistd.h>

/* ---- Creation and deletion ---- */

static void expect_fresh(const sysenv *sys, int32_t debug)
{
    EXPECT_EQ(sys->owner, nullptr);
    EXPECT_EQ(sys->reserved, nullptr);
    EXPECT_EQ(sys->fatal, &sys->own_fatal);
    EXPECT_EQ(sys->own_fatal.func, nullptr);
    for (const auto &func : sys->streamfunc) EXPECT_EQ(func, nullptr);
    EXPECT_EQ(sys->memman->debug, debug);
    EXPECT_EQ(sys->memman->fatalfunc, nullptr);
    EXPECT_EQ(sys->memman->msgfunc, nullptr);
    EXPECT_EQ(sys->memman->list->level, 0);
}

/* In memory that is not cleared, and with every allocation failing once. */
TEST(sysenv, creation)
{
    for (const int32_t debug : {0, 1}) {
        failing_allocator allocator;
        const sysenv_allocator functions = failing_functions(&allocator);
        sysenv *sys = nullptr;
        int64_t n = 0;
        for (; sys == nullptr && n < 20; ++n) {
            EXPECT_EQ(allocator.num_live, 0) << n;
            allocator.until_failure = n;
            sys = sysenv_create(__FILE__, __LINE__, debug, &functions);
        }
        EXPECT_EQ(n, 5); /* record, manager, list, mutex; then success */
        ASSERT_NE(sys, nullptr);
        expect_fresh(sys, debug);
        EXPECT_EQ(sysenv_delete(__FILE__, __LINE__, &sys), 0U);
        EXPECT_EQ(sys, nullptr);
        EXPECT_EQ(allocator.num_live, 0);
    }
}

/* A function that is not given is the C library's. */
TEST(sysenv, partial_allocators)
{
    failing_allocator counts;
    const sysenv_allocator cases[] = {
        {},
        {&counts, failing_malloc, nullptr, nullptr, nullptr},
        {&counts, nullptr, failing_calloc, nullptr, failing_free},
    };
    for (const auto &functions : cases)
        for (const int32_t debug : {0, 1}) {
            sysenv *sys = sysenv_create(__FILE__, __LINE__, debug, &functions);
            ASSERT_NE(sys, nullptr);
            char *block = static_cast<char *>(sysenv_callocdbg(sys, "f", 1, 3, 5));
            EXPECT_EQ(std::string(block, 15), std::string(15, 0));
            block = static_cast<char *>(memman_realloc("f", 2, sys->memman, block, 2000));
            std::memset(block, 1, 2000);
            sysenv_freedbg(sys, "f", 3, block);
            EXPECT_EQ(sysenv_delete(__FILE__, __LINE__, &sys), 0U);
        }
}

TEST(sysenv, deletion_counts_what_is_left)
{
    EXPECT_EQ(sysenv_delete(__FILE__, __LINE__, nullptr), 0U);
    const struct {
        int32_t debug;
        uint64_t num_left;
    } cases[] = {{0, 0}, {1, 2}};
    for (const auto &item : cases) {
        sysenv *sys = nullptr;
        EXPECT_EQ(sysenv_delete(__FILE__, __LINE__, &sys), 0U);
        sys = sysenv_create(__FILE__, __LINE__, item.debug, nullptr);
        ASSERT_NE(sys, nullptr);
        char *blocks[3];
        for (auto &block : blocks) block = static_cast<char *>(sysenv_mallocdbg(sys, "f", 1, 1, 100));
        sysenv_freedbg(sys, "f", 2, blocks[1]);
        memman_block *head = item.debug == 0 ? nullptr : sys->memman->list->head;
        EXPECT_EQ(sysenv_delete(__FILE__, __LINE__, &sys), item.num_left);
        EXPECT_EQ(sys, nullptr);
        /* What is left stays allocated: it is the test's now. */
        for (const int i : {0, 2}) std::free(item.debug == 0 ? blocks[i] : blocks[i] - MEMMAN_GUARD_BYTES);
        while (head != nullptr) {
            memman_block *next = head->next;
            std::free(head);
            head = next;
        }
    }
}

/* ---- Allocation ---- */

static void keep_text(void *handle, const char *text) { static_cast<std::string *>(handle)->append(text); }

/* Every entry passes on its file, its line and its sizes, as the manager's trace shows. */
TEST(sysenv, entries_pass_on_what_they_get)
{
    memman_heap heap; /* its blocks begin at multiples of 64 */
    const sysenv_allocator functions = {&heap, memman_heap_malloc, memman_heap_calloc, memman_heap_realloc,
                                        memman_heap_free};
    sysenv *sys = sysenv_create(__FILE__, __LINE__, 1, &functions);
    ASSERT_NE(sys, nullptr);
    std::string text;
    memman_setmsgfunc(sys->memman, keep_text, &text);
    memman_setlevels(sys->memman, 0, 6);
    const auto expect_trace = [&text](const char *word, const char *size, const char *place) {
        EXPECT_EQ(text.find(word), 0U) << text;
        EXPECT_NE(text.find(std::string("of size 0:0:0:") + size + " "), std::string::npos) << text;
        EXPECT_NE(text.find(std::string("in file '") + place + "'"), std::string::npos) << text;
        text.clear();
    };

    void *block = sysenv_mallocdbg(sys, "a.cpp", 11, 3, 50);
    expect_trace("Allocated", "150", "a.cpp(11)");
    sysenv_freedbg(sys, "b.cpp", 12, block);
    expect_trace("Deallocated", "150", "b.cpp(12)");
    unsigned char *zeroed = static_cast<unsigned char *>(sysenv_callocdbg(sys, "c.cpp", 13, 6, 20));
    expect_trace("Allocated", "120", "c.cpp(13)");
    for (int i = 0; i < 120; ++i) EXPECT_EQ(zeroed[i], 0);
    sysenv_freedbg(sys, "d.cpp", 14, zeroed);
    expect_trace("Deallocated", "120", "d.cpp(14)");
    /* Behind a guard of 32 bytes, so that an alignment of 64 comes out. */
    void *aligned = sysenv_aligned_mallocdbg(sys, "e.cpp", 15, 136, 64);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(aligned) % 64, 0U);
    expect_trace("Allocated", "200", "e.cpp(15)");
    sysenv_aligned_freedbg(sys, "g.cpp", 16, aligned);
    expect_trace("Deallocated", "200", "g.cpp(16)");
    sysenv_freedbg(sys, "h.cpp", 17, nullptr);
    sysenv_aligned_freedbg(sys, "h.cpp", 18, nullptr);
    EXPECT_EQ(text, "");

    heap.until_failure = 0;
    EXPECT_EQ(sysenv_mallocdbg(sys, "i.cpp", 19, 2, 10000), nullptr);
    EXPECT_EQ(text, "Out of space while trying to allocate a block of size 20000 in file 'i.cpp(19)'\n");
    EXPECT_EQ(sysenv_delete(__FILE__, __LINE__, &sys), 0U);
    EXPECT_TRUE(heap.live.empty());
}

/* ---- Fatal reports. Each runs in a child. Standard output is buffered there and the abort ends it without writing
 * anything out, so that what arrives was flushed by the report. ---- */

static const int ABORTED = 66;

static void end_on_abort(int number) { std::_Exit(number == SIGABRT ? ABORTED : 1); }

static void watch_abort()
{
    static char buffer[8192];
    std::fflush(stdout);
    dup2(2, 1);
    std::setvbuf(stdout, buffer, _IOFBF, sizeof buffer);
    std::signal(SIGABRT, end_on_abort);
}

static void tell_stream(void *handle, const char *text) { std::printf("[%s|%s]", static_cast<char *>(handle), text); }

static void tell_hook(void *handle, const char *file, int32_t line, const char *text, int32_t code)
{
    std::printf("{%s|%s|%d|%s|%d}", static_cast<char *>(handle), file, line, text, code);
}

static char first_name[] = "0", middle_name[] = "4", last_name[] = "9", hook_name[] = "hook";

static sysenv *with_streams()
{
    sysenv *sys = sysenv_create(__FILE__, __LINE__, 1, nullptr);
    sys->streamhandle[0] = first_name;
    sys->streamhandle[4] = middle_name;
    sys->streamhandle[9] = last_name;
    for (const int i : {0, 4, 9}) sys->streamfunc[i] = tell_stream;
    return sys;
}

static sysenv *with_hook()
{
    sysenv *sys = sysenv_create(__FILE__, __LINE__, 1, nullptr);
    sys->fatal->handle = hook_name;
    sys->fatal->func = tell_hook;
    return sys;
}

static void die_without_environment() { sysenv_fatal(nullptr, "src\\a", 12, "%d of %s, %Iu", 3, "x", size_t{5}); }

static void die_without_record()
{
    sysenv *sys = with_streams();
    sys->fatal = nullptr;
    sysenv_fatal(sys, "src\\a", 12, "%d", 3);
}

static void die_to_streams() { sysenv_fatal(with_streams(), "src\\a", -1, "%s", "text"); }

static void die_to_hook() { sysenv_fatal(with_hook(), "src\\a", 12, "%d of %s", 3, "x"); }

static void die_to_both()
{
    sysenv *sys = with_streams();
    static fatal_record record = {hook_name, tell_hook};
    sys->fatal = &record;
    sys->streamfunc[0] = sys->streamfunc[9] = nullptr;
    sysenv_fatal(sys, "src\\a", 12, "m");
}

/* The hook gets 2047 bytes; in the streams' last text "\nMsg. : " takes 8 of 1047 bytes. */
static void die_long()
{
    const std::string text(5000, 'x');
    sysenv *sys = with_hook();
    sys->streamhandle[4] = middle_name;
    sys->streamfunc[4] = tell_stream;
    sysenv_fatal(sys, "f", 1, "%s", text.c_str());
}

static void die_at_fit() /* the terminator takes the place of the last byte */
{
    const std::string text(2048, 'y');
    sysenv_fatal(with_hook(), "f", 1, "%s", text.c_str());
}

static void die_of_assertion()
{
    sysenv *sys = with_streams();
    sysenv_assert(sys, "f", 1, 1);
    sysenv_assert(sys, "f", 2, -1);
    sysenv_assert(sys, "f", 3, 256);
    sys->fatal->handle = hook_name;
    sys->fatal->func = tell_hook;
    for (auto &func : sys->streamfunc) func = nullptr;
    sysenv_assert(sys, "src\\b", 4, 0);
}

static void die_of_assertion_without_environment() { sysenv_assert(nullptr, "f", 7, 0); }

static void die_of_assertfail() { sysenv_assertfail("a > b%d", "src\\c.cpp", 12); }

static void tell_if_same(void *handle, const char *file, int32_t line, const char *text, int32_t code)
{
    char expected[200];
    sysenv_snprintf(sizeof expected, expected, "Trying to free the sysenv. sys: %p == buffer: %p", handle, handle);
    std::printf("%s %s %d %d", std::strcmp(text, expected) == 0 ? "same" : text, file, line, code);
}

static void die_of_self_free()
{
    sysenv *sys = with_hook();
    sys->fatal->handle = sys;
    sys->fatal->func = tell_if_same;
    sysenv_freedbg(sys, "d", 5, sys);
}

TEST(sysenv_death, reports)
{
    const std::string head = "\n\nFatal error";
    const struct {
        const char *name;
        void (*die)();
        std::string report;
    } cases[] = {
        {"no environment", die_without_environment, head + "\nFile : src\\a\nLine : 12\nMsg. : 3 of x, 5\n"},
        {"no record", die_without_record, ""},
        {"streams", die_to_streams,
         "[0|" + head + "][4|" + head + "][9|" + head + "]" +
             "[0|\nFile : src\\a][4|\nFile : src\\a][9|\nFile : src\\a]" +
             "[0|\nLine : -1][4|\nLine : -1][9|\nLine : -1]" +
             "[0|\nMsg. : text\n][4|\nMsg. : text\n][9|\nMsg. : text\n]"},
        {"hook", die_to_hook, "{hook|src\\a|12|3 of x|-1}"},
        {"client's record", die_to_both,
         "{hook|src\\a|12|m|-1}[4|" + head + "][4|\nFile : src\\a][4|\nLine : 12][4|\nMsg. : m\n]"},
        {"long", die_long,
         "{hook|f|1|" + std::string(2047, 'x') + "|-1}[4|" + head +
             "][4|\nFile : f][4|\nLine : 1][4|\nMsg. : " + std::string(1039, 'x') + "]"},
        {"fit", die_at_fit, "{hook|f|1|" + std::string(2047, 'y') + "|-1}"},
        {"assertion", die_of_assertion, "{hook|src\\b|4|Assertion failed at src\\b(4).|-1}"},
        {"assertion, no environment", die_of_assertion_without_environment,
         head + "\nFile : f\nLine : 7\nMsg. : Assertion failed at f(7).\n"},
        {"assertfail", die_of_assertfail, "Assertion 'a > b%d' failed at src\\c.cpp:12.\n"},
        {"self-free", die_of_self_free, "same d 5 -1"},
    };
    for (const auto &item : cases) {
        SCOPED_TRACE(item.name);
        EXPECT_EXIT(
            {
                watch_abort();
                item.die();
            },
            testing::ExitedWithCode(ABORTED), testing::Eq(item.report));
    }
}

/* ---- Streams, library ---- */

TEST(sysenv, broadcast)
{
    sysenv *sys = sysenv_create(__FILE__, __LINE__, 0, nullptr);
    std::string texts[2];
    sys->streamhandle[2] = &texts[0];
    sys->streamhandle[9] = &texts[1];
    sysenv_broadcast(sys, "nobody hears %d", 1);
    for (const int i : {2, 9}) sys->streamfunc[i] = keep_text;
    const struct {
        size_t length, expected;
    } cases[] = {{0, 0}, {1046, 1046}, {1047, 1047}, {1048, 1047}, {1049, 1047}, {4000, 1047}};
    for (const auto &item : cases) {
        sysenv_broadcast(sys, "%s", std::string(item.length, 'x').c_str());
        for (auto &text : texts) {
            EXPECT_EQ(text, std::string(item.expected, 'x')) << item.length;
            text.clear();
        }
    }
    sysenv_broadcast(sys, "%I64u%%%s\n", uint64_t{7}, "%d");
    EXPECT_EQ(texts[0], "7%%d\n");
    EXPECT_EQ(sysenv_delete(__FILE__, __LINE__, &sys), 0U);
}

/* The code stands in this program here. */
TEST(sysenv, library_path)
{
    char path[5000];
    ASSERT_EQ(sysenv_getdllname(nullptr, sizeof path, path), 0);
    EXPECT_TRUE(std::filesystem::path(path).is_absolute()) << path;
    EXPECT_TRUE(std::filesystem::is_regular_file(path)) << path;
    EXPECT_EQ(std::filesystem::path(path).filename(),
              std::filesystem::path(testing::internal::GetArgvs()[0]).filename());

    const size_t length = std::strlen(path);
    const struct {
        size_t capacity;
        int32_t res;
        const char *expected;
    } cases[] = {{length + 1, 0, path}, {length, 1, ""}, {2, 1, ""}, {1, 1, ""}, {0, 1, "###"}};
    for (const auto &item : cases) {
        std::string room(sizeof path, '#');
        room[3] = 0;
        EXPECT_EQ(sysenv_getdllname(nullptr, item.capacity, room.data()), item.res) << item.capacity;
        EXPECT_STREQ(room.c_str(), item.expected);
    }
}
