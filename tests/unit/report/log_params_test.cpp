/* What the LOG_ parameters make of the progress table, the summaries and the file of the log. */
#include "solver/report/progress.h"
#include "solver/report/summary.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <set>

namespace fs = std::filesystem;

namespace
{
struct told {
    std::string text;
    stream_set streams;
    param_set params;

    told()
    {
        param_set_defaults(&params);
        streams.out[ZLR_STREAM_MSG].handle = &text;
        streams.out[ZLR_STREAM_MSG].func = [](void *handle, const char *piece) {
            *static_cast<std::string *>(handle) += piece;
        };
    }
    told(const told &) = delete;
    told &operator=(const told &) = delete;

    void set(const char *name, const char *value)
    {
        if (name != nullptr) {
            ASSERT_EQ(param_put_text(&params, name, value, &streams), ZLR_RES_OK) << text;
        }
    }
};

/* 60 lines of branch and cut, an eighth of a second apart, with a better incumbent at every seventh, and a remark. */
std::string progress_text(const char *param, const char *value)
{
    told out;
    progress_table table;
    progress_line line;
    out.set(param, value);
    progress_begin(&table, &out.params, &out.streams);
    progress_note(&table, "a remark");
    line.method = "branch and cut";
    line.is_integer = true;
    for (int k = 1; k <= 60; k++) {
        line.nodes = k;
        line.has_primal = k >= 7;
        line.primal_obj = 1000.0 - k / 7;
        line.time_s = 0.125 * k;
        progress_show(&table, &line, false);
    }
    return out.text;
}

size_t count(const std::string &text, const std::string &what)
{
    size_t num = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) num++;
    return num;
}

/* All three summaries of a solved problem. */
std::string summaries(const char *param, const char *value)
{
    told out;
    ZLR_task task;
    out.set(param, value);
    task.params = out.params;
    auto m = std::make_shared<model>();
    model_append_vars(m.get(), 1);
    m->c = {3.0};
    task.problem = m;
    solution *sol = &task.sol[ZLR_SOL_BAS];
    solution_reset(sol, 0, 1);
    sol->defined = true;
    sol->solsta = ZLR_SOLSTA_OPTIMAL;
    sol->primal_obj = 2.0 / 3.0;
    sol->check.row = 1e-9;
    task.run.ran = true;
    task.run.engine = "some engine";
    summary_read(&task, &out.streams, ZLR_STREAM_MSG);
    summary_solution(&task, &out.streams, ZLR_STREAM_MSG);
    summary_optimizer(&task, &out.streams, ZLR_STREAM_MSG);
    return out.text;
}

const struct {
    const char *param, *value;
    const char *left_out; /* of what is printed at the defaults */
    const char *stays;
} summary_cases[] = {
    {"LOG_PROBLEM", "OFF", "Problem ''", "Basic solution"},
    {"LOG_PROBLEM", "SIZES", "  Ranges ", "  Columns "},
    {"LOG_SOLUTION", "OFF", "Basic solution", "Problem ''"},
    {"LOG_SOLUTION", "STATUS", "  Violations ", "  Objective  6.6666666667e-01\n"},
    {"LOG_ENGINE", "OFF", "Optimizer: some engine", "Basic solution"},
    {"LOG_DIGITS", "4", "6.6666666667e-01\n", "  Objective  6.667e-01\n"},
};

std::string text_of(const fs::path &path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}
}  // namespace

TEST(log_params, of_the_progress_table)
{
    const std::string usual = progress_text(nullptr, nullptr);
    const auto lines = [](const std::string &text) { return count(text, "\nbranch and cut"); };
    EXPECT_EQ(count(usual, "Method "), 1U) << usual;
    EXPECT_EQ(lines(usual), 30U) << usual; /* twenty, then one each half second */
    EXPECT_EQ(lines(progress_text("LOG_INTERVAL", "2")), 22U);
    EXPECT_EQ(lines(progress_text("LOG_INTERVAL", "0")), 60U);
    EXPECT_EQ(lines(progress_text("LOG_FIRST_LINES", "5")), 18U);
    EXPECT_EQ(lines(progress_text("LOG_FIRST_LINES", "60")), 60U);
    EXPECT_EQ(lines(progress_text("LOG_INCUMBENTS", "ON")), 32U);
    EXPECT_EQ(lines(progress_text("LOG_DELAY", "7")), 5U);
    EXPECT_EQ(count(progress_text("LOG_HEADER_EVERY", "10"), "Method "), 3U);
    EXPECT_EQ(lines(progress_text("LOG_HEADER_EVERY", "10")), 30U);

    EXPECT_EQ(progress_text("LOG_PROGRESS", "NOTES"), "a remark\n");
    EXPECT_EQ(progress_text("LOG_PROGRESS", "OFF"), "");
    EXPECT_EQ(progress_text("LOG_LEVEL", "0"), "");
}

TEST(log_params, of_the_summaries)
{
    const std::string usual = summaries(nullptr, nullptr);
    for (const auto &c : summary_cases) {
        SCOPED_TRACE(std::string(c.param) + " " + c.value);
        const std::string asked = summaries(c.param, c.value);
        EXPECT_NE(usual.find(c.left_out), std::string::npos) << usual;
        EXPECT_EQ(asked.find(c.left_out), std::string::npos) << asked;
        EXPECT_NE(asked.find(c.stays), std::string::npos) << asked;
    }
}

TEST(log_params, file_of_the_log)
{
    std::string folder = (fs::temp_directory_path() / "zelor-log-XXXXXX").string();
    ASSERT_NE(mkdtemp(folder.data()), nullptr);
    const std::string first = folder + "/first.log", second = folder + "/second.log";
    stream_set set;

    EXPECT_FALSE(streams_linked(&set, ZLR_STREAM_MSG));
    streams_name_log_file(&set, first.c_str(), false);
    EXPECT_TRUE(streams_linked(&set, ZLR_STREAM_MSG));
    EXPECT_FALSE(fs::exists(first)); /* nothing has been written */
    streams_write(&set, ZLR_STREAM_MSG, "one\n");
    streams_name_log_file(&set, first.c_str(), false); /* goes on */
    streams_write(&set, ZLR_STREAM_ERR, "two\n");
    EXPECT_EQ(text_of(first), "one\ntwo\n");

    streams_name_log_file(&set, second.c_str(), false);
    streams_write(&set, ZLR_STREAM_LOG, "three\n");
    EXPECT_EQ(text_of(first), "one\ntwo\n");
    EXPECT_EQ(text_of(second), "three\n");
    streams_name_log_file(&set, first.c_str(), true);
    streams_write(&set, ZLR_STREAM_LOG, "four\n");
    EXPECT_EQ(text_of(first), "one\ntwo\nfour\n");
    streams_name_log_file(&set, "", false);
    streams_write(&set, ZLR_STREAM_LOG, "five\n");
    EXPECT_EQ(text_of(first), "one\ntwo\nfour\n");
    EXPECT_FALSE(streams_linked(&set, ZLR_STREAM_MSG));
    streams_name_log_file(&set, first.c_str(), false);
    streams_write(&set, ZLR_STREAM_LOG, "six\n");
    EXPECT_EQ(streams_close(&set), ZLR_RES_OK);
    EXPECT_EQ(text_of(first), "six\n");
    fs::remove_all(folder);
}

TEST(log_params, a_file_that_cannot_be_opened_is_told_once)
{
    std::string errors;
    stream_set set;
    set.out[ZLR_STREAM_ERR].handle = &errors;
    set.out[ZLR_STREAM_ERR].func = [](void *handle, const char *piece) {
        *static_cast<std::string *>(handle) += piece;
    };
    streams_name_log_file(&set, "/none/x.log", false);
    streams_write(&set, ZLR_STREAM_MSG, "one\n");
    streams_write(&set, ZLR_STREAM_MSG, "two\n");
    EXPECT_EQ(errors, "/none/x.log: cannot be opened as a log file: No such file or directory.\n");
    EXPECT_EQ(streams_close(&set), ZLR_RES_OK);
}

TEST(log_params, every_row_has_a_case)
{
    std::set<std::string> seen = {"LOG_INTERVAL", "LOG_FIRST_LINES",  "LOG_INCUMBENTS",
                                  "LOG_DELAY",    "LOG_HEADER_EVERY", "LOG_PROGRESS",
                                  "LOG_LEVEL",    "LOG_FILE",         "LOG_FILE_MODE"};
    for (const auto &c : summary_cases) seen.insert(c.param);
    int32_t num = 0;
    const param_row *table = param_table(&num);
    for (const param_row *row = table; row != table + num; row++) {
        if (std::string(row->name).starts_with("LOG_")) {
            EXPECT_EQ(seen.count(row->name), 1U) << row->name;
        }
    }
}
