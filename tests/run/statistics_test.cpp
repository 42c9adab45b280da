/* statistics_test.cpp - `-stat` on whole runs, and many of them at once on one file. */
#include "run_support.h"
#include "support/json_schema.h"
#include "zelor.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <set>
#include <sstream>
#include <thread>
#include <unistd.h>

static const char *const small_model = "Minimize\n obj: x + 2 y\nSubject To\n c1: x + y >= 2\nBounds\n x <= 1\nEnd\n";

static std::vector<nlohmann::json> lines_of(const std::string &path)
{
    std::vector<nlohmann::json> lines;
    std::istringstream in(file_read(path));
    for (std::string line; std::getline(in, line);)
        if (!line.empty()) lines.push_back(nlohmann::json::parse(line, nullptr, false));
    return lines;
}

static process_result run_stat(const temp_folder &folder, std::vector<std::string> args)
{
    process_options options;
    args.insert(args.begin(), {"m.lp", "-nowrsol"});
    options.args = std::move(args);
    options.folder = folder.path;
    return process_run(ZELOR_PROGRAM, options);
}

TEST(statistics, of_a_run_with_every_option_are_one_line)
{
    const nlohmann::json schema = committed_schema("statistics.schema.json");
    const temp_folder folder;
    file_write(folder.file("m.lp"), small_model);
    const zelor_run run = run_zelor(folder, {"m.lp", "-d", "STAT_FILE", "s.jsonl", "-stat", "start", "-stat", "append",
                                             "-stat", "stop", "-stat", "first try", "-d", "THREADS", "1"});
    ASSERT_EQ(run.process.status, 0) << run.process.out;
    EXPECT_EQ(run.process.out.find("Statistics"), std::string::npos) << "nothing was lost: " << run.process.out;
    const std::vector<nlohmann::json> lines = lines_of(folder.file("s.jsonl"));
    ASSERT_EQ(lines.size(), 1U) << "once, not by append and by stop";
    const nlohmann::json &line = lines[0];
    expect_schema(schema, line, "line");
    EXPECT_EQ(line.at("label"), "first try");
    EXPECT_EQ(line.at("data_file"), "m.lp");
    EXPECT_EQ(line.at("rows"), 1);
    EXPECT_EQ(line.at("columns"), 2);
    EXPECT_EQ(line.at("nonzeros"), 2);
    EXPECT_EQ(line.at("problem_type"), "linear");
    EXPECT_NEAR(line.at("primal_objective").get<double>(), 3.0, 1e-9);
    EXPECT_EQ(line.at("parameters").at("THREADS"), 1);
    EXPECT_EQ(line.at("parameters").at("STAT_FILE"), "s.jsonl");
    EXPECT_TRUE(line.at("time").at("read").is_number());
    /* What both files tell is the same. */
    for (const auto &[key, value] : run.result.items()) {
        if (key == "schema" || key == "time" || key == "solution") continue;
        EXPECT_EQ(line.at(key), value) << key;
    }
    EXPECT_EQ(line.at("time").at("total"), run.result.at("time").at("total"));
}

TEST(statistics, each_option_does_its_part)
{
    static const struct {
        const char *name;
        std::vector<std::string> words;
        size_t num_lines;
    } cases[] = {
        {"append alone", {"append"}, 1}, {"start and stop", {"start", "stop"}, 1},
        {"start alone", {"start"}, 0},   {"stop alone", {"stop"}, 0},
        {"label alone", {"label"}, 0},   {"append and stop", {"append", "stop"}, 1},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        const temp_folder folder;
        file_write(folder.file("m.lp"), small_model);
        std::vector<std::string> args = {"-d", "STAT_FILE", "s.jsonl"};
        for (const std::string &word : c.words) args.insert(args.end(), {"-stat", word});
        for (size_t repeat = 1; repeat <= 2; repeat++) {
            const process_result run = run_stat(folder, args);
            EXPECT_EQ(run.status, 0) << run.out;
            EXPECT_EQ(lines_of(folder.file("s.jsonl")).size(), repeat * c.num_lines) << "lines are added";
        }
    }
}

TEST(statistics, outcomes_without_an_answer_are_noted_too)
{
    const temp_folder folder;
    file_write(folder.file("m.lp"), "Minimize\n obj: x - [ x ^ 2 ] / 2\nSubject To\n c1: x >= 1\nEnd\n");
    (void)run_stat(folder, {"-d", "STAT_FILE", "s.jsonl", "-stat", "append"});
    file_write(folder.file("m.lp"), "Minimize\n x\nSubject To\n a: x + y >= 3\n b: x + y <= 2\nEnd\n");
    (void)run_stat(folder, {"-d", "STAT_FILE", "s.jsonl", "-stat", "start", "-stat", "stop"});
    const std::vector<nlohmann::json> lines = lines_of(folder.file("s.jsonl"));
    ASSERT_EQ(lines.size(), 2U);
    const nlohmann::json schema = committed_schema("statistics.schema.json");
    for (const nlohmann::json &line : lines) {
        expect_schema(schema, line, "line");
        EXPECT_TRUE(line.at("primal_objective").is_null());
    }
    EXPECT_EQ(lines[0].at("return_code"), ZLR_RES_ERR_NONCONVEX);
    EXPECT_EQ(lines[0].at("problem_type"), "quadratic_objective");
    EXPECT_EQ(lines[1].at("solution_status"), "primal_infeasible");
}

TEST(statistics, without_a_place_to_write_are_told)
{
    const temp_folder folder;
    file_write(folder.file("m.lp"), small_model);
    process_result run = run_stat(folder, {"-stat", "append"});
    EXPECT_NE(run.out.find("STAT_FILE names no file"), std::string::npos) << run.out;
    run = run_stat(folder, {"-stat", "start"});
    EXPECT_EQ(run.status, ZLR_RES_ERR_FILE_OPEN % 256) << run.out;

    run = run_stat(folder, {"-d", "STAT_FILE", "no/s.jsonl", "-stat", "append"});
    EXPECT_NE(run.out.find("no/s.jsonl"), std::string::npos) << run.out;
    if (access("/dev/full", W_OK) == 0) {
        run = run_stat(folder, {"-d", "STAT_FILE", "/dev/full", "-stat", "append"});
        EXPECT_NE(run.out.find("/dev/full"), std::string::npos) << run.out;
        EXPECT_NE(run.out.find("No space left"), std::string::npos) << run.out;
    }
}

TEST(statistics, of_a_folder_that_cannot_be_written_are_told)
{
    if (geteuid() == 0) GTEST_SKIP() << "root may write anywhere";
    const temp_folder folder;
    file_write(folder.file("m.lp"), small_model);
    std::filesystem::create_directory(folder.file("ro"));
    std::filesystem::permissions(folder.file("ro"), std::filesystem::perms::owner_read);
    const process_result run = run_stat(folder, {"-d", "STAT_FILE", "ro/s.jsonl", "-stat", "append"});
    std::filesystem::permissions(folder.file("ro"), std::filesystem::perms::owner_all);
    EXPECT_NE(run.out.find("ro/s.jsonl"), std::string::npos) << run.out;
}

TEST(statistics, of_processes_at_once_do_not_mix)
{
    const size_t num = 20;
    const temp_folder folder;
    file_write(folder.file("m.lp"), small_model);
    std::vector<std::thread> threads;
    for (size_t k = 0; k < num; k++)
        threads.emplace_back([&folder, k] {
            /* Long labels of different lengths: a line that is cut, or mixed with another, is no JSON. */
            const std::string label = std::to_string(k) + std::string(1000 + 997 * k, 'x');
            (void)run_stat(folder, {"-d", "STAT_FILE", "s.jsonl", "-stat", "append", "-stat", label});
        });
    for (std::thread &thread : threads) thread.join();

    const nlohmann::json schema = committed_schema("statistics.schema.json");
    std::set<int> labels;
    const std::vector<nlohmann::json> lines = lines_of(folder.file("s.jsonl"));
    EXPECT_EQ(lines.size(), num);
    for (const nlohmann::json &line : lines) {
        ASSERT_FALSE(line.is_discarded());
        expect_schema(schema, line, "line");
        const std::string label = line.at("label").get<std::string>();
        const int k = std::stoi(label);
        EXPECT_EQ(label.size(), std::to_string(k).size() + 1000 + 997 * static_cast<size_t>(k));
        labels.insert(k);
    }
    EXPECT_EQ(labels.size(), num);
}
