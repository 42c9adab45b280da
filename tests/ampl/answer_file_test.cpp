/* answer_file_test.cpp - a run that cannot leave its .sol file says so, and leaves no piece of one. */
#include "ampl_support.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <unistd.h>

static temp_folder *folder_of_example(temp_folder *folder)
{
    std::filesystem::copy_file(ZELOR_SOURCE_DIR "/examples/tin.nl", folder->file("tin.nl"));
    return folder;
}

static process_result run_in(const temp_folder &folder, const std::string &mode)
{
    process_options options;
    options.args = {folder.file("tin"), "-AMPL", "ampl_extended=" + mode};
    return process_run(ZELOR_PROGRAM, options);
}

TEST(ampl_answer, example)
{
    temp_folder folder;
    const ampl_run run = run_ampl(*folder_of_example(&folder), "tin", {"ampl_extended=on"});
    ASSERT_TRUE(run.has_sol);
    EXPECT_EQ(run.sol.code, 0);
    ASSERT_EQ(run.sol.num_x, 2);
    EXPECT_NEAR(run.sol.x[0], 4.301270069, 1e-5);
    EXPECT_NEAR(run.sol.x[1], 8.602540138, 1e-5);
    EXPECT_NE(run.sol.message.find("LOCALLY_OPTIMAL"), std::string::npos) << run.sol.message;
}

TEST(ampl_answer, full_disk)
{
    if (access("/dev/full", W_OK) != 0) GTEST_SKIP() << "no /dev/full";
    for (const char *mode : {"off", "on"}) {
        temp_folder folder;
        std::filesystem::create_symlink("/dev/full", folder_of_example(&folder)->file("tin.sol"));
        const process_result run = run_in(folder, mode);
        EXPECT_EQ(run.status, 2);
        EXPECT_NE(run.err.find("can't write " + folder.file("tin.sol") + ": No space left"), std::string::npos)
            << run.err;
    }
}

TEST(ampl_answer, place_is_taken)
{
    temp_folder folder;
    std::filesystem::create_directory(folder_of_example(&folder)->file("tin.sol"));
    const process_result run = run_in(folder, "on");
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.err.find("can't write " + folder.file("tin.sol") + ": "), std::string::npos) << run.err;
}

/* Files may have no bytes here, as on a disk that is full: the answer of before is not taken for one of this run. */
TEST(ampl_answer, no_piece_is_left)
{
    temp_folder folder;
    file_write(folder_of_example(&folder)->file("tin.sol"), "old\n");
    process_options options;
    options.args = {"-c", "trap '' XFSZ; ulimit -f 0; exec \"$0\" \"$1\" -AMPL", ZELOR_PROGRAM, folder.file("tin")};
    const process_result run = process_run("/bin/bash", options);
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.err.find("can't write "), std::string::npos) << run.err;
    EXPECT_FALSE(std::filesystem::exists(folder.file("tin.sol")));
}
