/* memory_test.cpp - memory that the interface hands out, and the trace that an environment keeps of it. */
#include "support/files.h"
#include "zelor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#else
static void __lsan_disable() {} /* NOLINT: the sanitizer's own name */
static void __lsan_enable() {}  /* NOLINT */
#endif

/* Opens an environment whose trace goes to `file`, uses it, deletes it, and returns the trace. */
template <class func> static std::string traced(const temp_folder &folder, func use)
{
    const std::string file = folder.file("trace");
    ZLR_env *env = nullptr;
    ZLR_task *task = nullptr;
    EXPECT_EQ(ZLR_makeenv(&env, file.c_str()), ZLR_RES_OK);
    EXPECT_EQ(ZLR_makeemptytask(env, &task), ZLR_RES_OK);
    if (task == nullptr) return "";
    use(env, task);
    EXPECT_EQ(ZLR_deletetask(&task), ZLR_RES_OK);
    EXPECT_EQ(ZLR_deleteenv(&env), ZLR_RES_OK);
    return file_read(file);
}

static bool holds(const std::string &text, const char *part) { return text.find(part) != std::string::npos; }

static const char *const nothing_left = "Checking leaks\nDone checking leaks";

TEST(memory, trace_names_who_allocated_and_who_freed)
{
    const temp_folder folder;
    const std::string trace = traced(folder, [](ZLR_env *env, ZLR_task *task) {
        auto *block = static_cast<unsigned char *>(ZLR_callocdbgenv(env, 3, 8, "my_model.cpp", 77));
        ASSERT_NE(block, nullptr);
        for (int k = 0; k < 24; k++) EXPECT_EQ(block[k], 0);
        ZLR_freedbgenv(env, block, "my_model.cpp", 88);
        char *text = ZLR_strduptask(task, "a text");
        EXPECT_STREQ(text, "a text");
        ZLR_freedbgtask(task, text, "my_model.cpp", 99);
    });
    EXPECT_TRUE(holds(trace, "of size 0:0:0:24 ")) << trace;
    EXPECT_TRUE(holds(trace, "in file 'my_model.cpp(77)'")) << trace;
    EXPECT_TRUE(holds(trace, "in file 'my_model.cpp(88)'")) << trace;
    EXPECT_TRUE(holds(trace, "of size 0:0:0:7 ")) << trace;
    EXPECT_TRUE(holds(trace, "in file 'my_model.cpp(99)'")) << trace;
    EXPECT_FALSE(holds(trace, "'(-1)'") && trace.find("'(-1)'") != trace.rfind("'(-1)'")) << trace;
    EXPECT_TRUE(holds(trace, nothing_left)) << trace;
}

TEST(memory, trace_reports_what_is_left_by_its_number)
{
    const temp_folder folder;
    const std::string trace = traced(folder, [](ZLR_env *env, ZLR_task *task) {
        __lsan_disable(); /* lost on purpose */
        EXPECT_NE(ZLR_callocdbgenv(env, 5, 1, "of_env.cpp", 1), nullptr);
        EXPECT_NE(ZLR_callocdbgtask(task, 5, 1, "of_task.cpp", 2), nullptr);
        __lsan_enable();
    });
    const std::string report = trace.substr(std::min(trace.size(), trace.find("Checking leaks")));
    for (const char *origin : {"of_env.cpp(1)", "of_task.cpp(2)"}) {
        const size_t line = trace.rfind("Allocated()", trace.find(origin));
        ASSERT_NE(line, std::string::npos) << trace;
        const size_t number = trace.find('#', line);
        EXPECT_TRUE(holds(report, (trace.substr(number, trace.find(' ', number) - number) + " at ").c_str())) << trace;
    }
    EXPECT_FALSE(holds(trace, nothing_left)) << trace;
}

TEST(memory, blocks_that_were_not_handed_out_are_left_alone)
{
    const temp_folder folder;
    char own[8] = "own";
    const std::string trace = traced(folder, [&](ZLR_env *env, ZLR_task *task) {
        void *block = ZLR_callocenv(env, 4, 1);
        ZLR_freetask(task, block); /* the environment's, not the task's */
        ZLR_freeenv(env, own);
        ZLR_freeenv(env, nullptr);
        ZLR_freeenv(env, block);
        ZLR_freeenv(env, block);
        EXPECT_EQ(ZLR_callocenv(env, UINT64_MAX, 2), nullptr);
    });
    EXPECT_STREQ(own, "own");
    EXPECT_TRUE(holds(trace, nothing_left)) << trace;
}

TEST(memory, trace_file_that_cannot_be_written)
{
    const temp_folder folder;
    ZLR_env *env = nullptr;
    EXPECT_EQ(ZLR_makeenv(&env, folder.file("none/trace").c_str()), ZLR_RES_ERR_FILE_OPEN);
    EXPECT_EQ(env, nullptr);
}
