/* memman_faults_test.cpp - faults that end the process, each in a process of its own, and what is no fault. Reports are
 * compared to the byte, and as they hold addresses the process itself tells first what is expected of it: where processes
 * cannot be forked it has made its blocks anew. */
#include "cpub/digest.h"
#include "memman_support.h"

#include <bit>
#include <filesystem>
#include <unistd.h>

enum { STATUS_FATAL = -99, STATUS_NO_MUTEX = -1 };

static testing::ExitedWithCode ends_with(int status) { return testing::ExitedWithCode(shown_status(status)); }

static const std::string BEHIND_EXPECTED = "\n---- what is told ----\n";

static void tell_expected(const std::string &text)
{
    (void)std::fputs((text + BEHIND_EXPECTED).c_str(), stderr);
    (void)std::fflush(stderr); /* on Windows it is buffered unless it is a console */
}

/* For what stands in front of that line and behind it. */
struct twice_the_same {
    using is_gtest_matcher = void;
    static bool MatchAndExplain(const std::string &text, std::ostream *)
    {
        const size_t at = text.find(BEHIND_EXPECTED);
        return at != std::string::npos && text.substr(0, at) == text.substr(at + BEHIND_EXPECTED.size());
    }
    static void DescribeTo(std::ostream *out) { *out << "is told as expected"; }
    static void DescribeNegationTo(std::ostream *out) { *out << "is not told as expected"; }
};

static void say(void *handle, const char *text)
{
    (void)handle;
    (void)std::fprintf(stderr, "msg:%s", text);
}

static void say_fatal(void *handle, const char *file, int32_t line, const char *text, int32_t code)
{
    const memman *man = static_cast<const memman *>(handle);
    (void)std::fprintf(stderr, "hook:%s:%d:%s:%d:%d:%d", file == nullptr ? "null" : file, line, text, code,
                       static_cast<int>(man->curusage), man->echofile == nullptr ? 0 : 1);
}

/* A manager with three blocks, on which faults are made. */
struct fault_scene : memman_scene {
    char *oldest, *block, *newest, *released;

    fault_scene() : memman_scene(1, 1), oldest(make(20)), block(make(100)), newest(make(32)), released(make(8))
    {
        memman_free("unit.c", 5, man, released);
        memman_setmsgfunc(man, say, nullptr);
        std::memset(block, 'u', 100);
    }
    ~fault_scene() { memman_setlevels(man, -1, 0); }
    fault_scene(const fault_scene &) = delete;
    fault_scene &operator=(const fault_scene &) = delete;
};

static std::string guard_fault(const char *which, int id, const char *at, int pos, const char *got)
{
    return memman_text("*** Block %s guard violation. #%d at %p. pos: %d expected: %d got %s", which, id,
                       static_cast<const void *>(at), pos, 0x20 + pos, got);
}

static std::string pointer_fault(const char *before, const void *at, const char *behind)
{
    return memman_text("%s%p%s", before, at, behind);
}

/* What is told about the locked block of 100 bytes if a byte of it is changed. */
static std::string locked_fault(const fault_scene &scene, uint64_t offset)
{
    char bytes[100];
    uint8_t before[DIGEST_BYTES];
    uint8_t after[DIGEST_BYTES];
    std::memcpy(bytes, memman_raw(scene.block), sizeof bytes);
    EXPECT_EQ(digest_md5(bytes, sizeof bytes, before), 0);
    bytes[32 + offset] = 'X';
    EXPECT_EQ(digest_md5(bytes, sizeof bytes, after), 0);
    int i = 0;
    while (before[i] == after[i]) ++i;
    return memman_text(
        "Locked #1      at %p of size 0:0:0:100 has been changed at 'f.c' 7. Digest info.: %d(%d!=%d) \n",
        static_cast<void *>(scene.block + 100), i, after[i], before[i]);
}

static void change_locked(fault_scene *scene)
{
    memman_lockblock("f.c", 6, scene->man, scene->block);
    scene->block[10] = 'X';
}

using fault_action = void (*)(fault_scene *scene, memman *man);

static void expect_fault(const char *name, fault_scene *scene, fault_action action, const std::string &text)
{
    SCOPED_TRACE(name);
    const std::string report = "msg:Fatal error in file 'f.c(7)'\nmsg:Message(): " + text + "\n";
    EXPECT_EXIT(
        {
            tell_expected(report);
            action(scene, scene->man);
        },
        ends_with(STATUS_FATAL), twice_the_same());
}

TEST(memman_faults_DeathTest, guards)
{
    fault_scene scene;
    const char *raw = memman_raw(scene.block);
    const char *end = scene.block + 100;
    const struct {
        const char *name;
        fault_action action;
        std::string text;
    } cases[] = {
        {"one byte past the end, release",
         [](fault_scene *s, memman *man) { s->block[100] = 'A', memman_free("f.c", 7, man, s->block); },
         guard_fault("end", 1, end, 0, "65")},
        {"last guard byte, reallocation",
         [](fault_scene *s, memman *man) { s->block[131] = 0, (void)memman_realloc("f.c", 7, man, s->block, 5); },
         guard_fault("end", 1, end, 31, "0")},
        {"in front, scan",
         [](fault_scene *s, memman *man) { s->block[-1] = '\xFF', (void)memman_scan("f.c", 7, man, 1); },
         guard_fault("begin", 1, raw, 31, "4294967295")},
        {"both, check",
         [](fault_scene *s, memman *man) {
             s->block[100] = s->block[-27] = '\x80';
             memman_checkblock("f.c", 7, man, s->block);
         },
         guard_fault("begin", 1, raw, 5, "4294967168")},
        {"two blocks: the newer ends the scan",
         [](fault_scene *s, memman *man) {
             s->oldest[-32] = s->newest[32] = 'x';
             (void)memman_scan("f.c", 7, man, 1);
         },
         guard_fault("end", 2, scene.newest + 32, 0, "120")},
        {"unlocking",
         [](fault_scene *s, memman *man) { s->block[105] = 0, memman_unlockblock("f.c", 7, man, s->block); },
         guard_fault("end", 1, end, 5, "0")},
    };
    for (const auto &item : cases) expect_fault(item.name, &scene, item.action, item.text);
    memman_setlevels(scene.man, -1, 0);
    EXPECT_EQ(memman_scan("f.c", 7, scene.man, 1), 0); /* the parent's blocks are whole */
}

/* An aligned body takes the stored pointer on its guard. */
TEST(memman_faults_DeathTest, aligned_body)
{
    fault_scene scene;
    EXPECT_EXIT(
        {
            void *got = memman_aligned_malloc("f.c", 6, scene.man, 40, 16);
            memman_aligned_free("f.c", 7, scene.man, got);
        },
        ends_with(STATUS_FATAL), "Block begin guard violation. #4 at .* pos: 24 expected: 56 got ");
    EXPECT_EXIT((void)memman_aligned_malloc("f.c", 7, scene.man, 40, 0), [](int status) { return status != 0; },
                ""); /* a sanitizer makes an exit of the signal */
}

TEST(memman_faults_DeathTest, unknown_blocks)
{
    fault_scene scene;
    const void *raw = memman_raw(scene.released);
    const char *behind = " cannot be deallocated because it is not in the allocation list.\n";
    const void *before_null = std::bit_cast<void *>(UINTPTR_MAX - 31);
    const struct {
        const char *name;
        fault_action action;
        std::string text;
    } cases[] = {
        {"double release", [](fault_scene *s, memman *man) { memman_free("f.c", 7, man, s->released); },
         pointer_fault("Block ", raw, behind)},
        {"freex", [](fault_scene *s, memman *man) { memman_freex("f.c", 7, man, s->released); },
         pointer_fault("Block ", raw, behind)},
        {"aligned_free",
         [](fault_scene *s, memman *man) {
             std::memcpy(s->block, &s->released, 8);
             memman_aligned_free("f.c", 7, man, s->block + 8);
         },
         pointer_fault("Block ", raw, behind)},
        {"inside a block", [](fault_scene *s, memman *man) { memman_free("f.c", 7, man, s->block + 1); },
         pointer_fault("Block ", memman_raw(scene.block + 1), behind)},
        {"realloc", [](fault_scene *s, memman *man) { (void)memman_realloc("f.c", 7, man, s->released, 5); },
         pointer_fault("Block at adr. ", raw, " is not allocated.\n")},
        {"checkblock", [](fault_scene *s, memman *man) { memman_checkblock("f.c", 7, man, s->released); },
         pointer_fault("Block at adr. ", raw, " is not in list.\n")},
        {"unlockblock", [](fault_scene *s, memman *man) { memman_unlockblock("f.c", 7, man, s->released); },
         pointer_fault("Block at adr. ", raw, " is not in list.\n")},
        {"unlockblock, null", [](fault_scene *, memman *man) { memman_unlockblock("f.c", 7, man, nullptr); },
         pointer_fault("Block at adr. ", before_null, " is not in list.\n")},
        {"lockblock: as given", [](fault_scene *s, memman *man) { memman_lockblock("f.c", 7, man, s->released); },
         pointer_fault("Block at adr. ", scene.released, " is not in list.\n")},
        {"realloc without mutex",
         [](fault_scene *s, memman *man) {
             man->mutex = nullptr;
             (void)memman_realloc("f.c", 7, man, s->block, 5);
         },
         "Could not lock mutex"},
    };
    for (const auto &item : cases) expect_fault(item.name, &scene, item.action, item.text);
    memman_checkblock("f.c", 7, scene.man, nullptr);
    memman_lockblock("f.c", 7, scene.man, nullptr);
}

TEST(memman_faults_DeathTest, pointers)
{
    fault_scene scene;
    memman_checkptr("f.c", 7, scene.man, scene.block);
    memman_checkptr("f.c", 7, scene.man, scene.block + 68);
    memman_checkptr("f.c", 7, scene.man, scene.newest); /* of 32 bytes: only its first */
    const char *const outside[] = {scene.block - 1, scene.block + 69,  scene.newest + 1,
                                   scene.oldest,    scene.oldest + 19, nullptr};
    for (const char *pointer : outside) {
        const std::string report = "msg:Fatal error in file 'f.c(7)'\nmsg:Message(): " +
                                   pointer_fault("Block is not allocated. Block: ", pointer, "\n");
        EXPECT_EXIT(
            {
                tell_expected(report);
                memman_checkptr("f.c", 7, scene.man, pointer);
            },
            ends_with(STATUS_FATAL), twice_the_same());
    }
}

/* ---- Locked contents ---- */

/* The digest is over the guard in front and what follows, as many bytes as the block has, in 32 bits. */
TEST(memman_faults, digest_range)
{
    const struct {
        uint64_t size, shown_size; /* what the header says while the block is locked */
        const char *digest;        /* of the bytes 0x20 to 0x3F and then "abcdefgh", so many as there are */
    } cases[] = {
        {32, 32, "bf61e899560fabde2f6d76f405a6eb70"},
        {40, 40, "5165aa1f68b41fe31693cbaae9299e31"},
        {40, 40 + (uint64_t{1} << 32), "5165aa1f68b41fe31693cbaae9299e31"},
        {5, 5, "d8869b70aac4f94544c2b0b6c29d4778"},
    };
    for (const auto &item : cases) {
        SCOPED_TRACE(item.shown_size);
        memman_scene scene(1);
        char *user = scene.make(item.size);
        std::memcpy(user, "abcdefghijklmnopqrstuvwxyzabcdefghijklmn", item.size);
        memman_block *block = scene.man->list->head;
        block->size = item.shown_size;
        memman_lockblock("f.c", 7, scene.man, user);
        block->size = item.size;
        EXPECT_EQ(block->locked, 1);
        std::string digest;
        for (const uint8_t byte : block->digest) digest += memman_text("%02x", byte);
        EXPECT_EQ(digest, item.digest);
    }
}

TEST(memman_faults_DeathTest, locked_contents)
{
    fault_scene scene;
    memman *man = scene.man;
    const std::string text = locked_fault(scene, 10);
    const struct {
        const char *name;
        fault_action action;
    } cases[] = {
        {"scan", [](fault_scene *s, memman *m) { change_locked(s), (void)memman_scan("f.c", 7, m, 1); }},
        {"check", [](fault_scene *s, memman *m) { change_locked(s), memman_checkblock("f.c", 7, m, s->block); }},
        {"unlock", [](fault_scene *s, memman *m) { change_locked(s), memman_unlockblock("f.c", 7, m, s->block); }},
        {"free", [](fault_scene *s, memman *m) { change_locked(s), memman_free("f.c", 7, m, s->block); }},
        {"realloc", [](fault_scene *s, memman *m) { change_locked(s), memman_realloc("f.c", 7, m, s->block, 5); }},
        {"all locked, delete",
         [](fault_scene *s, memman *m) {
             memman_lockall("f.c", 6, m);
             s->block[10] = 'X';
             (void)memman_delete("f.c", 7, &m);
         }},
    };
    for (const auto &item : cases) expect_fault(item.name, &scene, item.action, text);

    memman_lockall("f.c", 6, man);
    std::memset(scene.block + 68, 'X', 32); /* the last 32 bytes are outside the digest */
    std::memset(scene.newest, 'X', 32);     /* and so is all of a block that has no more */
    EXPECT_EQ(memman_scan("f.c", 7, man, 1), 0);
    memman_unlockblock("f.c", 7, man, scene.block);
    scene.block[10] = 'X';
    EXPECT_EQ(memman_scan("f.c", 7, man, 1), 0);
    memman_lockblock("f.c", 7, man, scene.block);
    scene.block[90] = 'Y';
    memman_lockblock("f.c", 7, man, scene.block); /* again: a new digest */
    memman_checkblock("f.c", 7, man, scene.block);
    memman_free("f.c", 7, man, scene.block); /* locked blocks may be given back */
    memman_unlockall("f.c", 7, man);
    for (const memman_block *block = man->list->head; block != nullptr; block = block->next)
        EXPECT_EQ(block->locked, 0);
}

/* ---- The way out ---- */

TEST(memman_faults_DeathTest, levels_and_hooks)
{
    fault_scene scene;
    memman *man = scene.man;
    const std::string place = "Fatal error in file 'f.c(7)'\n";
    const std::string fault = "Message(): " + pointer_fault("Block ", memman_raw(scene.released), "") +
                              " cannot be deallocated because it is not in the allocation list.\n\n";
    const std::string hook = "hook:f.c:7:" + fault + ":-1:152:0";
    const struct {
        int32_t level;
        bool with_hook;
        std::string report;
    } cases[] = {
        {0, false, ""},     {1, false, "msg:" + place + "msg:" + fault},          {0, true, hook},
        {1000, true, hook}, {1001, true, "msg:" + place + "msg:" + fault + hook},
    };
    for (const auto &item : cases) {
        SCOPED_TRACE(item.level);
        memman_setlevels(man, -1, item.level);
        memman_setfatalfunc(man, item.with_hook ? say_fatal : nullptr, man);
        EXPECT_EXIT(
            {
                tell_expected(item.report);
                memman_free("f.c", 7, man, scene.released);
            },
            ends_with(STATUS_FATAL), twice_the_same());
    }
    memman_setfatalfunc(man, nullptr, nullptr);
}

static std::string echo_path;

/* Tells the report that is in the echo file too, and removes the folder, which nobody else will. */
static void say_echo(void *handle, const char *file, int32_t line, const char *text, int32_t code)
{
    say_fatal(handle, file, line, text, code);
    const std::string echo = text_file_read(echo_path);
    const size_t begin = echo.find("Fatal error");
    const size_t end = echo.find("closed: ");
    if (begin < end && end != std::string::npos) (void)std::fputs(echo.substr(begin, end - begin).c_str(), stderr);
    std::filesystem::remove_all(std::filesystem::path(echo_path).parent_path());
}

/* The echo file hears all of it and is closed before the hook is called; usage is already without the block. */
TEST(memman_faults_DeathTest, echo_file)
{
    fault_scene scene;
    memman *man = scene.man;
    const temp_folder folder;
    echo_path = folder.file("echo");
    const std::string fault = "Message(): " + guard_fault("begin", 1, memman_raw(scene.block), 0, "120") + "\n";
    memman_setlevels(man, -1, 0);
    memman_setfatalfunc(man, say_echo, man);
    EXPECT_EXIT(
        {
            tell_expected("hook:null:7:" + fault + ":-1:52:0" + "Fatal error in file '(null)(7)'\n" + fault +
                          "\nFile ");
            memman_openecho(man, echo_path.c_str(), "h");
            scene.block[-32] = 'x';
            memman_free(nullptr, 7, man, scene.block);
        },
        ends_with(STATUS_FATAL), twice_the_same());
    memman_setfatalfunc(man, nullptr, nullptr);
}

TEST(memman_faults_DeathTest, long_texts_are_cut)
{
    fault_scene scene;
    const std::string file(3000, 'x');
    const std::string place = "Fatal error in file '" + file.substr(0, 1023 - 21);
    const std::string fault = pointer_fault("Message(): Block ", memman_raw(scene.released), "") +
                              " cannot be deallocated because it is not in the allocation list.\n\n";
    EXPECT_EXIT(
        {
            tell_expected("msg:" + place + "msg:" + fault);
            memman_free(file.c_str(), 7, scene.man, scene.released);
        },
        ends_with(STATUS_FATAL), twice_the_same());
}

/* Hooks and echo file are not trusted then. */
TEST(memman_faults_DeathTest, damaged_manager)
{
    fault_scene scene;
    memman *man = scene.man;
    memman_setfatalfunc(man, say_fatal, man);
    memman_setlevels(man, -1, 2000);
    const std::string report =
        "Fatal error in file 'f.c(7)'\nMessage(): " + pointer_fault("begin guard of mman: ", man, "\n");
    EXPECT_EXIT(
        {
            tell_expected(report);
            (void)std::fflush(stdout);
            (void)dup2(STDERR_FILENO, STDOUT_FILENO);
            man->begin_guard[2] = 'x';
            (void)memman_scan("f.c", 7, man, 1);
        },
        ends_with(STATUS_FATAL), twice_the_same());
    memman_setfatalfunc(man, nullptr, nullptr);
    man->end_guard[0] = 'x'; /* nobody looks at this one */
    memman_setlevels(man, -1, 0);
    EXPECT_EQ(memman_scan("f.c", 7, man, 1), 0);
}

TEST(memman_faults_DeathTest, release_without_mutex)
{
    fault_scene scene;
    memman *man = scene.man;
    memman_setfatalfunc(man, say_fatal, man);
    const struct {
        const char *name;
        fault_action action;
    } cases[] = {
        {"free", [](fault_scene *s, memman *m) { memman_free("f.c", 7, m, s->block); }},
        {"free of null", [](fault_scene *, memman *m) { memman_free("f.c", 7, m, nullptr); }},
        {"freex", [](fault_scene *s, memman *m) { memman_freex("f.c", 7, m, s->block); }},
        {"aligned_free", [](fault_scene *s, memman *m) { memman_aligned_free("f.c", 7, m, s->block + 8); }},
        {"realloc to 0", [](fault_scene *s, memman *m) { (void)memman_realloc("f.c", 7, m, s->block, 0); }},
    };
    for (const auto &item : cases) {
        SCOPED_TRACE(item.name);
        EXPECT_EXIT(
            {
                man->mutex = nullptr;
                item.action(&scene, man);
            },
            ends_with(STATUS_NO_MUTEX), testing::Eq(""));
    }
    memman_setfatalfunc(man, nullptr, nullptr);
}
