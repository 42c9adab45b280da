/* memman_trace_test.cpp - what is told, to whom and at which level: trace lines, reports, leaks, the echo file. */
#include "memman_support.h"

#include <regex>

/* A trace line as the manager forms it: `number` is padded to six places, the address to ten. */
static std::string trace_line(const char *word, int number, const void *raw, const char *sizes, const char *behind)
{
    return memman_text("%s #%-6d at %-10p of size %s in file '%s\n", word, number, raw, sizes, behind);
}

TEST(memman_trace, lines)
{
    memman_scene scene(1, 6);
    memman *man = scene.man;
    (void)memman_malloc("a.c", 11, man, 1536, 1);
    char *user = static_cast<char *>(memman_calloc(nullptr, 12, man, 2, 5));
    std::string expected =
        trace_line("Allocated()  ", 0, man->list->head->next->raw, "0:0:1:512 (0:0:0:0)", "a.c(11)'.") +
        trace_line("Allocated()  ", 1, memman_raw(user), "0:0:0:10 (0:0:1:512)", "(-1)'.");
    EXPECT_EQ(scene.told, expected);

    scene.told.clear();
    user = static_cast<char *>(memman_realloc("a.c", 13, man, user, 20));
    expected = trace_line("Rellocated()  ", 1, memman_raw(user), "0:0:0:20 (0:0:1:522)", "a.c(13)'.");
    user = static_cast<char *>(memman_realloc(nullptr, 14, man, user, 30));
    expected += trace_line("Rellocated()  ", 1, memman_raw(user), "0:0:0:30 (0:0:1:532)", "(-1)'.");
    memman_free(nullptr, 15, man, user);
    expected += trace_line("Deallocated()", 1, memman_raw(user), "0:0:0:30 (0:0:1:512)", "(15)'");
    EXPECT_EQ(scene.told, expected);

    scene.told.clear();
    user = static_cast<char *>(memman_realloc("a.c", 16, man, nullptr, 1));
    expected = trace_line("Allocated()  ", 2, memman_raw(user), "0:0:0:1 (0:0:1:512)", "a.c(16)'.");
    EXPECT_EQ(memman_realloc("a.c", 17, man, user, 0), nullptr);
    expected += trace_line("Deallocated()", 2, memman_raw(user), "0:0:0:1 (0:0:1:512)", "a.c(17)'");
    EXPECT_EQ(scene.told, expected);
}

TEST(memman_trace, lines_are_cut)
{
    memman_scene scene(1, 6);
    const std::string file(2000, 'x');
    void *user = memman_malloc(file.c_str(), 1, scene.man, 1, 1);
    EXPECT_EQ(scene.told.size(), 1023U);
    user = memman_realloc(file.c_str(), 1, scene.man, user, 2);
    EXPECT_EQ(scene.told.size(), 1023U + 255U);
    memman_free(file.c_str(), 1, scene.man, user);
    EXPECT_EQ(scene.told.size(), 1023U + 255U + 1023U);
}

/* ---- Levels ---- */

static const std::string usage_line =
    "Space usage. Number of blocks: 2  Current usage: 0:0:2:0 Maximum usage: 0:0:2:0\n";

static const struct {
    const char *name;
    void (*act)(memman *man);
    int32_t threshold;
    std::string first; /* text that is told */
} tellers[] = {
    {"allocation", [](memman *man) { (void)memman_malloc("a.c", 1, man, 1, 1); }, 5, "Allocated"},
    {"release", [](memman *man) { memman_free("a.c", 1, man, man->list->head->raw + 32); }, 5, "Deallocated"},
    {"reallocation", [](memman *man) { (void)memman_realloc("a.c", 1, man, man->list->head->raw + 32, 1); }, 5,
     "Rellocated"},
    {"no memory", [](memman *man) { (void)memman_calloc(nullptr, 1, man, UINT64_MAX, 1); }, 1,
     "Out of space while trying to allocate a block of size 18446744073709551615 in file '(null)(1)'\n"},
    {"no memory to grow",
     [](memman *man) { (void)memman_realloc("a.c", 1, man, man->list->head->raw + 32, uint64_t{1} << 40); }, 1,
     "Out of space while trying to reallocate a block of size 1099511627776 in file 'a.c(1)'\n"},
    {"scan, 3", [](memman *man) { (void)memman_scan("a.c", 1, man, 3); }, 3,
     "Scanning memory at 'a.c'(1)\n" + usage_line},
    {"scan, -1", [](memman *man) { (void)memman_scan(nullptr, 1, man, -1); }, -1,
     "Scanning memory at ''(1)\n" + usage_line},
    {"usage", [](memman *man) { (void)memman_usage("a.c", 1, man, 0, 7); }, 7, usage_line},
    {"usage, large blocks", [](memman *man) { (void)memman_usage("a.c", 1, man, 1030, 2); }, 2,
     "#1      is of size 0:0:1:6.\n" + usage_line},
};

TEST(memman_trace, thresholds)
{
    for (const auto &item : tellers) {
        SCOPED_TRACE(item.name);
        for (const int32_t above : {0, 1}) {
            memman_scene scene(1, -10);
            (void)scene.make(1018);
            (void)scene.make(1030);
            memman_setlevels(scene.man, 0, item.threshold + above);
            scene.heap.calls.clear();
            item.act(scene.man);
            EXPECT_EQ(scene.told.substr(0, item.first.size()), above != 0 ? item.first : "");
            if (item.threshold != 5) {
                EXPECT_EQ(scene.told.size(), above != 0 ? item.first.size() : 0);
            }
            memman_setlevels(scene.man, 0, -10);
        }
    }
}

TEST(memman_trace, usage_of_an_empty_list)
{
    memman_scene scene(1, 1);
    const std::string line = "Space usage. Number of blocks: 0  Current usage: 0:0:0:0 Maximum usage: 0:0:0:0\n";
    EXPECT_EQ(memman_scan("a.c", 1, scene.man, 0), 0);
    EXPECT_EQ(scene.told, "Scanning memory at 'a.c'(1)\n" + line);
    scene.told.clear();
    EXPECT_EQ(memman_usage("a.c", 1, scene.man, 1, 0), 0);
    EXPECT_EQ(scene.told, line);
}

/* Both come from the blocks, not from the counters. */
TEST(memman_trace, scan_counts_for_itself)
{
    memman_scene scene(1, 1);
    (void)scene.make(10);
    scene.man->curusage = 77;
    EXPECT_EQ(memman_scan("a.c", 1, scene.man, 0), 0);
    EXPECT_NE(scene.told.find("blocks: 1  Current usage: 0:0:0:10 "), std::string::npos) << scene.told;
    scene.man->curusage = 10;
}

/* ---- The end ---- */

TEST(memman_trace, leaks)
{
    const struct {
        int32_t debug, level, num_blocks;
        const char *before, *behind; /* the lines of the blocks stand between them */
    } cases[] = {
        {1, 2, 0,
         "Deleting mem manager. Scanning memory\nScanning memory at 'd.c'(9)\nSpace usage. Number of blocks: 0  "
         "Current usage: 0:0:0:0 Maximum usage: 0:0:0:0\nChecking leaks\n",
         "Done checking leaks\n"},
        {1, 1, 2, "Checking leaks\n**** ALLOCATED  BLOCKS LEFT\n", "Done checking leaks\n"},
        {1, 0, 2, "", ""},
        {0, 2, 1, "Deleting mem manager. Scanning memory\nChecking leaks\n", "Done checking leaks\n"},
    };
    for (const auto &item : cases) {
        SCOPED_TRACE(memman_text("debug %d, level %d", item.debug, item.level));
        memman_heap heap;
        std::string told;
        memman *man = memman_heap_manager(&heap, item.debug);
        memman_setfatalfunc(man, nullptr, nullptr);
        memman_setmsgfunc(man, memman_hear, &told);
        memman_setlevels(man, -1, item.level);
        std::string lines;
        for (int k = 0; k < item.num_blocks; ++k) {
            const char *user = static_cast<char *>(memman_malloc("d.c", 8, man, 10, 1));
            const char *raw = memman_raw(user);
            lines = memman_text("#%d at %p (%p) is allocated\n", k, static_cast<const void *>(raw),
                                static_cast<const void *>(user)) +
                    lines;
        }
        const bool has_list = item.debug != 0 && item.level > 0;
        const uint64_t num_left = item.debug != 0 ? static_cast<uint64_t>(item.num_blocks) : 0;
        EXPECT_EQ(memman_delete("d.c", 9, &man), num_left);
        EXPECT_EQ(man, nullptr);
        EXPECT_EQ(told, item.before + (has_list ? lines : "") + item.behind);
        /* What is left stays allocated. */
        EXPECT_EQ(heap.live.size(), static_cast<size_t>(item.num_blocks) * (item.debug != 0 ? 2 : 1));
        while (!heap.live.empty()) memman_heap_drop(&heap, heap.live.begin()->first);
    }
}

/* ---- Echo file ---- */

/* Replaces the two times by "TIME\n" and checks their form. */
static std::string without_times(const std::string &echo)
{
    static const std::regex time("(Sun|Mon|Tue|Wed|Thu|Fri|Sat) [A-Z][a-z][a-z] [ 1-3][0-9] "
                                 "[0-9][0-9]:[0-9][0-9]:[0-9][0-9] [0-9]{4}\n");
    return std::regex_replace(echo, time, "TIME\n");
}

TEST(memman_trace, echo_file)
{
    const temp_folder folder;
    const std::string first = folder.file("first");
    const std::string second = folder.file("second");
    memman_scene scene(1);
    memman *man = scene.man;
    memman_closeecho(man);
    memman_echotofile(man, "nowhere");

    memman_openecho(man, first.c_str(), "head 100%");
    EXPECT_STREQ(man->echopath, first.c_str());
    EXPECT_EQ(without_times(text_file_read(first)), "Header: head 100%\n\nFile opened: TIME\n\n") << "flushed";
    char *user = scene.make(5);
    const std::string line = trace_line("Allocated()  ", 0, memman_raw(user), "0:0:0:5 (0:0:0:0)", "unit.c(4)'.");
    EXPECT_EQ(without_times(text_file_read(first)), "Header: head 100%\n\nFile opened: TIME\n\n" + line)
        << "whatever the level";
    memman_echotofile(man, "%s text\n");
    memman_openecho(man, second.c_str(), "");
    EXPECT_EQ(without_times(text_file_read(first)),
              "Header: head 100%\n\nFile opened: TIME\n\n" + line + "%s text\n\nFile closed: TIME\n\n");
    memman_closeecho(man);
    EXPECT_EQ(man->echofile, nullptr);
    EXPECT_EQ(man->echopath[0], 0);
    EXPECT_EQ(without_times(text_file_read(second)), "Header: \n\nFile opened: TIME\n\n\nFile closed: TIME\n\n");

    memman_openecho(man, first.c_str(), "again"); /* truncates, and is closed with the manager */
    (void)memman_scan("a.c", 1, man, 1000);
    EXPECT_EQ(without_times(text_file_read(first)).substr(0, 67),
              "Header: again\n\nFile opened: TIME\n\nScanning memory at 'a.c'(1)\nSpace");
    EXPECT_EQ(scene.told, "");
}

TEST(memman_trace, echo_files_that_cannot_be)
{
    const temp_folder folder;
    memman_scene scene(1, 2);
    memman *man = scene.man;
    const std::string missing = folder.file("none/echo");
    memman_openecho(man, missing.c_str(), "h");
    EXPECT_EQ(man->echofile, nullptr);
    EXPECT_STREQ(man->echopath, missing.c_str());
    EXPECT_NE(scene.make(3), nullptr);
    EXPECT_EQ(scene.told, "");

    std::string path = folder.path; /* long, but a file all the same */
    while (path.size() < 2100) path += "/.";
    path += "/echo";
    memman_openecho(man, path.c_str(), "h");
    EXPECT_NE(man->echofile, nullptr);
    EXPECT_EQ(man->echopath, path.substr(0, 2047));
    memman_closeecho(man);
    EXPECT_TRUE(file_exists(folder.file("echo")));
}

TEST(memman_trace, echo_of_a_deleted_manager)
{
    const temp_folder folder;
    memman_heap heap;
    for (const int32_t debug : {0, 1}) {
        memman *man = memman_heap_manager(&heap, debug);
        memman_setfatalfunc(man, nullptr, nullptr);
        memman_setmsgfunc(man, nullptr, nullptr);
        memman_setlevels(man, -1, 0);
        memman_openecho(man, folder.file("echo").c_str(), "h");
        memman_free("a.c", 1, man, memman_malloc("a.c", 1, man, 5, 1));
        EXPECT_EQ(memman_delete("a.c", 1, &man), 0U);
        const std::string echo = without_times(text_file_read(folder.file("echo")));
        const std::string end = "Checking leaks\nDone checking leaks\n\nFile closed: TIME\n\n";
        EXPECT_EQ(echo.substr(echo.size() - end.size()), end);
        EXPECT_EQ(echo.find("llocated()") != std::string::npos, debug != 0);
    }
}
