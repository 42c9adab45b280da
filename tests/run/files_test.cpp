/* files_test.cpp - files that are missing, empty, cut, garbage, or cannot be written; and what a run leaves behind. */
#include "run_support.h"
#include "zelor.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <unistd.h>

static const char *const small_model = "Minimize\n obj: x + 2 y\nSubject To\n c1: x + y >= 2\nBounds\n x <= 1\nEnd\n";

static std::string return_line(int32_t code, const char *symbol)
{
    return "Return code - " + std::to_string(code) + "  [" + symbol + "]\n";
}

TEST(input, that_cannot_be_read_is_told_with_its_place)
{
    static const struct {
        const char *name, *file, *text;
        int32_t code;
        const char *told;
    } cases[] = {
        {"missing", "absent.mps", nullptr, ZLR_RES_ERR_FILE_READ, "absent.mps"},
        {"empty", "empty.mps", "", ZLR_RES_ERR_FILE_FORMAT, "empty.mps"},
        {"cut in the middle", "cut.mps", "NAME cut\nROWS\n N obj\n L r1\nCOLUMNS\n x obj 1 r1", ZLR_RES_ERR_FILE_FORMAT,
         "cut.mps(6)"},
        {"garbage", "garbage.lp", "\x01\x02\x7f\x80\xff garbage", ZLR_RES_ERR_FILE_FORMAT, "garbage.lp(1)"},
        {"cut gzip", "cut.mps.gz", "\x1f\x8b\x08", ZLR_RES_ERR_FILE_READ, "cut.mps.gz"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        const temp_folder folder;
        if (c.text != nullptr) file_write(folder.file(c.file), c.text);
        const zelor_run run = run_zelor(folder, {c.file, "-out", "out.lp"});
        EXPECT_EQ(run.process.status, c.code % 256) << run.process.out;
        EXPECT_NE(run.process.out.find(c.told), std::string::npos) << run.process.out;
        EXPECT_FALSE(file_exists(folder.file("out.lp")));
        EXPECT_TRUE(run.result.is_null()) << "no optimisation, no result";
    }
}

TEST(input, folder_in_place_of_a_file_is_an_error)
{
    const temp_folder folder;
    std::filesystem::create_directory(folder.file("model.mps"));
    EXPECT_EQ(run_zelor(folder, {"model.mps"}).process.status, ZLR_RES_ERR_FILE_READ % 256);
}

TEST(output, full_disk_is_a_code_and_leaves_nothing)
{
    if (access("/dev/full", W_OK) != 0) GTEST_SKIP() << "no /dev/full";
    const temp_folder folder;
    file_write(folder.file("m.lp"), small_model);

    zelor_run run = run_zelor(folder, {"m.lp", "-baso", "/dev/full"});
    EXPECT_EQ(run.process.status, ZLR_RES_ERR_FILE_WRITE % 256) << run.process.out;
    EXPECT_EQ(run.result["return_code"], 0) << "the optimum was found all the same";

    run = run_zelor(folder, {"m.lp", "-x", "-out", "/dev/full"});
    EXPECT_EQ(run.process.status, ZLR_RES_ERR_FILE_WRITE % 256) << run.process.out;

    run = run_zelor(folder, {"m.lp", "-paro", "/dev/full"});
    EXPECT_NE(run.process.out.find("/dev/full"), std::string::npos) << run.process.out;
}

TEST(output, read_only_folder_is_a_code)
{
    if (geteuid() == 0) GTEST_SKIP() << "root may write anywhere";
    const temp_folder folder;
    file_write(folder.file("m.lp"), small_model);
    std::filesystem::permissions(folder.path, std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
    process_options options;
    options.args = {"m.lp"};
    options.folder = folder.path;
    const process_result run = process_run(ZELOR_PROGRAM, options);
    std::filesystem::permissions(folder.path, std::filesystem::perms::owner_all);
    EXPECT_EQ(run.status, ZLR_RES_ERR_FILE_OPEN % 256) << run.out;
}

TEST(output, path_that_is_no_folder_is_a_code)
{
    const temp_folder folder;
    file_write(folder.file("m.lp"), small_model);
    const zelor_run run = run_zelor(folder, {"m.lp", "-x", "-out", "absent/out.lp"});
    EXPECT_EQ(run.process.status, ZLR_RES_ERR_FILE_OPEN % 256) << run.process.out;
    EXPECT_NE(run.process.out.find("absent/out.lp"), std::string::npos);
}

TEST(run, leaves_the_stated_files_and_no_other)
{
    const temp_folder folder;
    std::filesystem::create_directory(folder.file("run.d"));
    file_write(folder.file("run.d/model"), small_model); /* no extension: told by its content */
    const zelor_run run = run_zelor(folder, {"run.d/model", "-rout", "code.txt", "-q", "log.txt"});
    EXPECT_EQ(run.process.status, 0) << run.process.out;
    EXPECT_TRUE(file_exists(folder.file("run.d/model.bas")));
    EXPECT_EQ(file_read(folder.file("code.txt")), "ZLR_RES_OK\n");
    EXPECT_NE(file_read(folder.file("log.txt")).find("OPTIMAL"), std::string::npos);
    EXPECT_NE(run.process.out.find(return_line(0, "ZLR_RES_OK")), std::string::npos);

    size_t num = 0;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(folder.path)) num += entry.is_regular_file();
    EXPECT_EQ(num, 5U) << "model, model.bas, code.txt, log.txt, result.json";
}

/* Libraries are not looked for in the folder that the user stands in. */
TEST(run, does_not_load_what_lies_about)
{
    const temp_folder folder;
    for (const char *name : {"libstdc++.so.6", "libm.so.6", "libzelor64_8_1.so", "libhighs.so", "libz.so.1"})
        ASSERT_TRUE(file_write(folder.file(name), "not a library"));
    file_write(folder.file("m.lp"), small_model);
    const zelor_run run = run_zelor(folder, {"m.lp"});
    EXPECT_EQ(run.process.status, 0) << run.process.out;
}

TEST(run, silent_prints_nothing)
{
    const temp_folder folder;
    file_write(folder.file("m.lp"), small_model);
    EXPECT_EQ(run_zelor(folder, {"m.lp", "-silent"}).process.out, "");
}

TEST(run, infeasible_and_unbounded_are_answers)
{
    const temp_folder folder;
    file_write(folder.file("inf.lp"), "Minimize\n x\nSubject To\n a: x + y >= 3\n b: x + y <= 2\nEnd\n");
    file_write(folder.file("unb.lp"), "Maximize\n x\nSubject To\n a: x - y <= 2\nEnd\n");
    file_write(folder.file("iinf.lp"), "Minimize\n x\nSubject To\n a: 2 x = 1\nBounds\n x <= 5\nGeneral\n x\nEnd\n");

    zelor_run run = run_zelor(folder, {"inf.lp"});
    EXPECT_EQ(run.process.status, 0);
    EXPECT_EQ(run.result["solution_status"], "primal_infeasible");
    run = run_zelor(folder, {"unb.lp"});
    EXPECT_EQ(run.process.status, 0);
    EXPECT_EQ(run.result["solution_status"], "dual_infeasible");
    run = run_zelor(folder, {"iinf.lp"});
    EXPECT_EQ(run.process.status, 0);
    EXPECT_EQ(run.result["problem_status"], "primal_infeasible");
}

TEST(run, quadratic_task_is_read_written_and_solved)
{
    const temp_folder folder;
    file_write(folder.file("q.lp"), "Minimize\n obj: x + [ x ^ 2 ] / 2\nSubject To\n c1: x >= 1\nEnd\n");
    zelor_run run = run_zelor(folder, {"q.lp", "-x", "-out", "q.mps"});
    EXPECT_EQ(run.process.status, 0) << run.process.out;
    EXPECT_NE(file_read(folder.file("q.mps")).find("QUADOBJ"), std::string::npos);
    run = run_zelor(folder, {"q.mps"});
    EXPECT_EQ(run.process.status, 0) << run.process.out;
    EXPECT_NE(run.process.out.find("Objective  1.5000000"), std::string::npos) << run.process.out;
    EXPECT_TRUE(file_exists(folder.file("q.sol")));
    run = run_zelor(folder, {"q.mps", "-toconic", "-x", "-out", "q.cbf"});
    EXPECT_EQ(run.process.status, 0) << run.process.out;
    run = run_zelor(folder, {"q.cbf"});
    EXPECT_NE(run.process.out.find("Interior solution: OPTIMAL"), std::string::npos) << run.process.out;
    file_write(folder.file("n.lp"), "Minimize\n obj: x - [ x ^ 2 ] / 2\nSubject To\n c1: x >= 1\nEnd\n");
    run = run_zelor(folder, {"n.lp"});
    EXPECT_EQ(run.process.status, ZLR_RES_ERR_NONCONVEX % 256) << run.process.out;
}

TEST(parameters, typo_is_told_with_the_nearest_name)
{
    const temp_folder folder;
    file_write(folder.file("m.lp"), small_model);
    zelor_run run = run_zelor(folder, {"m.lp", "-d", "TIME_LIMTI", "3"});
    EXPECT_EQ(run.process.status, ZLR_RES_ERR_PARAM_NAME % 256);
    EXPECT_NE(run.process.out.find("TIME_LIMIT"), std::string::npos) << run.process.out;
    run = run_zelor(folder, {"m.lp", "-d", "MIP_REL_GAP", "-1"});
    EXPECT_EQ(run.process.status, ZLR_RES_ERR_PARAM_VALUE % 256) << run.process.out;
}
