/* streams_test.cpp - texts reach functions and files, and a full disk is told at the end. */
#include "solver/report/streams.h"
#include "solver/report/words.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <unistd.h>

static std::string file_text(const std::string &name)
{
    std::ifstream in(name);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

TEST(streams, file_replaced_by_a_failed_link_stays)
{
    const std::string name = ::testing::TempDir() + "streams_test_" + std::to_string(getpid());
    stream_set set;
    ASSERT_EQ(streams_link_file(&set, ZLR_STREAM_LOG, name.c_str(), false), ZLR_RES_OK);
    streams_write(&set, ZLR_STREAM_MSG, "one\n");
    EXPECT_EQ(streams_link_file(&set, ZLR_STREAM_LOG, "/nonexistent/x", false), ZLR_RES_ERR_FILE_OPEN);
    streams_write(&set, ZLR_STREAM_ERR, "two\n");
    EXPECT_EQ(file_text(name), "one\ntwo\n"); /* on disk while the stream is still open */
    ASSERT_EQ(streams_link_file(&set, ZLR_STREAM_LOG, name.c_str(), true), ZLR_RES_OK);
    streams_write(&set, ZLR_STREAM_LOG, "three\n");
    EXPECT_EQ(streams_close(&set), ZLR_RES_OK);
    EXPECT_EQ(file_text(name), "one\ntwo\nthree\n");
    std::remove(name.c_str());
}

TEST(streams, full_disk_is_a_code_at_the_close)
{
    stream_set set;
    if (streams_link_file(&set, ZLR_STREAM_LOG, "/dev/full", false) != ZLR_RES_OK) GTEST_SKIP();
    streams_write(&set, ZLR_STREAM_LOG, "text\n");
    EXPECT_EQ(streams_close(&set), ZLR_RES_ERR_FILE_WRITE);
}

TEST(words, every_status_and_key_reads_back)
{
    for (int32_t k = 0; k <= 20; ++k) {
        if (words_problem_status(k) != nullptr) {
            EXPECT_EQ(words_find_problem_status(words_problem_status(k)), k);
        }
        if (words_solution_status(k) != nullptr) {
            EXPECT_EQ(words_find_solution_status(words_solution_status(k)), k);
        }
        if (words_status_key(k) != nullptr) {
            EXPECT_EQ(words_find_status_key(words_status_key(k)), k);
        }
    }
    EXPECT_EQ(words_find_status_key("bs"), ZLR_SK_BASIC);
    EXPECT_EQ(words_find_status_key("B"), -1);
    EXPECT_EQ(words_find_status_key("BSX"), -1);
    EXPECT_EQ(words_find_problem_status(""), -1);
}
