/* memory_test.cpp - the memory trace of whole runs: no example leaves a block. */
#include "run_support.h"

#include <gtest/gtest.h>

#include <filesystem>

TEST(memory_trace, no_example_leaves_a_block)
{
    int32_t num = 0;
    for (const auto &entry : std::filesystem::directory_iterator(ZELOR_SOURCE_DIR "/examples")) {
        const std::string end = entry.path().extension().string();
        if (end == ".md" || end == ".nl") continue; /* stubs: tests/ampl */
        SCOPED_TRACE(entry.path().filename().string());
        const temp_folder folder;
        const std::string file = folder.file(entry.path().filename().string());
        std::filesystem::copy_file(entry.path(), file);
        for (const bool convert : {false, true}) {
            std::vector<std::string> args = {file, "-dbgmem", folder.file("trace")};
            if (convert) args.insert(args.end(), {"-x", "-out", folder.file("out.mps.gz")});
            (void)run_zelor(folder, args);
            const std::string trace = file_read(folder.file("trace"));
            EXPECT_NE(trace.find("src/zelor/zelorbin("), std::string::npos) << trace;
            EXPECT_NE(trace.find("Number of blocks: 0 "), std::string::npos) << trace;
            EXPECT_NE(trace.find("Checking leaks\nDone checking leaks\n"), std::string::npos) << trace;
        }
        num++;
    }
    EXPECT_GT(num, 3);
}
