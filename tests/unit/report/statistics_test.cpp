/* Statistics: every line follows the schema, each optimisation is in the file once, and nothing is lost by a failure. */
#include "solver/io/bytes.h"
#include "solver/report/statistics.h"
#include "support/json_schema.h"
#include "support/sys.h"

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

namespace fs = std::filesystem;
using nlohmann::json;

static std::string text_of(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

class statistics : public testing::Test
{
protected:
    void SetUp() override
    {
        std::string made = (fs::temp_directory_path() / "zelor-stat-XXXXXX").string();
        ASSERT_NE(mkdtemp(made.data()), nullptr);
        folder = made;
        renew();
    }

    void TearDown() override { fs::remove_all(folder); }

    std::string path_of(const std::string &name) const { return (folder / name).string(); }

    void renew()
    {
        const auto append = [](void *text, const char *piece) { *static_cast<std::string *>(text) += piece; };
        task = ZLR_task();
        env.sys = test_sys();
        task.env = &env;
        param_set_defaults(&task.params);
        task.problem = std::make_shared<model>();
        task.streams.out[ZLR_STREAM_ERR] = {append, &errors, nullptr};
        errors.clear();
        put_str(SPAR_STAT_FILE, path_of("stat.jsonl"));
    }

    void put_str(int32_t number, const std::string &value)
    {
        ASSERT_EQ(param_put_str(&task.params, number, value.c_str(), &task.streams), ZLR_RES_OK);
    }

    /* An optimisation that is known by its number of nodes. */
    void optimize(int64_t nodes, int32_t code = ZLR_RES_OK)
    {
        task.run = run_record{};
        task.run.ran = true;
        task.run.nodes = nodes;
        task.run.return_code = code;
        statistics_note(&task);
    }

    std::vector<int64_t> written(const std::string &name = "stat.jsonl") const
    {
        std::vector<int64_t> nodes;
        std::istringstream in(text_of(path_of(name)));
        for (std::string line; std::getline(in, line);) nodes.push_back(json::parse(line).at("nodes").get<int64_t>());
        return nodes;
    }

    /* S start, o optimise, a append, p stop, e the problem is edited. Returns the last code. */
    int32_t play(const char *calls)
    {
        int32_t res = ZLR_RES_OK;
        int64_t nodes = 0;
        for (const char *c = calls; *c != '\0'; c++) {
            if (*c == 'S') res = statistics_start(&task);
            if (*c == 'o') optimize(++nodes);
            if (*c == 'a') res = statistics_append(&task);
            if (*c == 'p') res = statistics_stop(&task);
            if (*c == 'e') (void)task_edit(&task);
        }
        return res;
    }

    fs::path folder;
    std::string errors;
    ZLR_env env;
    ZLR_task task;
};

TEST_F(statistics, each_optimisation_is_written_once)
{
    static const struct {
        const char *calls;
        int32_t res;
        std::vector<int64_t> written;
    } cases[] = {
        {"a", ZLR_RES_ERR_NO_SOLUTION, {}},
        {"p", ZLR_RES_OK, {}},
        {"oa", ZLR_RES_OK, {1}},
        {"oaa", ZLR_RES_OK, {1}},
        {"oaoa", ZLR_RES_OK, {1, 2}},
        {"oea", ZLR_RES_ERR_NO_SOLUTION, {}},
        {"So", ZLR_RES_OK, {}},
        {"Soop", ZLR_RES_OK, {1, 2}},
        {"SSop", ZLR_RES_OK, {1}},
        {"oSop", ZLR_RES_OK, {2}},
        {"SoSop", ZLR_RES_OK, {1, 2}},
        {"Soap", ZLR_RES_OK, {1}},
        {"Sooap", ZLR_RES_OK, {2, 1}},
        {"Sopa", ZLR_RES_OK, {1}},
        {"Sopo", ZLR_RES_OK, {1}},
        {"Sopoa", ZLR_RES_OK, {1, 2}},
        {"Sopp", ZLR_RES_OK, {1}},
        {"SopSop", ZLR_RES_OK, {1, 2}},
        {"Soep", ZLR_RES_OK, {1}},
        {"Soea", ZLR_RES_OK, {1}},
        {"Soeap", ZLR_RES_OK, {1}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.calls);
        renew();
        put_str(SPAR_STAT_FILE, path_of(std::string(c.calls) + ".jsonl"));
        EXPECT_EQ(play(c.calls), c.res);
        EXPECT_EQ(written(std::string(c.calls) + ".jsonl"), c.written);
        EXPECT_EQ(errors.empty(), c.res == ZLR_RES_OK) << errors;
    }
}

TEST_F(statistics, lines_follow_the_committed_schema_whatever_the_outcome)
{
    const json schema = committed_schema("statistics.schema.json");
    expect_schema(schema, json::parse(statistics_line(&task)), "nothing");

    model_append_cons(task.problem.get(), 1);
    model_append_vars(task.problem.get(), 2);
    task.problem->name = "b\"\xff"; /* no valid UTF-8 */
    task.run.engine = "HiGHS 1.15.1";
    task.run.best_bound = model_inf;
    task.run.relative_gap = -model_inf;
    task.params.dou[DPAR_CHECK_TOL] = model_inf;
    solution *sol = &task.sol[ZLR_SOL_BAS];
    solution_reset(sol, 1, 2);
    sol->defined = sol->has_primal = sol->has_dual = true;
    sol->primal_obj = std::nan("");
    sol->dual_obj = model_inf;
    for (int32_t status = 0; status <= ZLR_SOLSTA_NEAR_INTEGER_OPTIMAL; status++) {
        if (status > ZLR_SOLSTA_NEAR_DUAL_INFEAS_CER && status < ZLR_SOLSTA_INTEGER_OPTIMAL) continue;
        sol->solsta = status;
        sol->prosta = status % 9;
        task.run.return_code = status == 0 ? 4711 : ZLR_RES_OK;
        const std::string line = statistics_line(&task);
        expect_schema(schema, json::parse(line), "status " + std::to_string(status));
        EXPECT_EQ(line.find('\n'), line.size() - 1) << "one line";
    }
    const json line = json::parse(statistics_line(&task));
    for (const char *key : {"primal_objective", "dual_objective", "best_bound", "relative_gap", "data_file", "label"})
        EXPECT_TRUE(line.at(key).is_null()) << key;
    EXPECT_TRUE(line.at("parameters").at("CHECK_TOL").is_null());
    EXPECT_EQ(line.at("problem"), "b\"\xEF\xBF\xBD");
}

TEST_F(statistics, a_line_has_the_values_of_the_run)
{
    model_append_vars(task.problem.get(), 3);
    task.problem->var_type[1] = ZLR_VAR_INT;
    task.problem->qobj = {{0, 0, 1.0}};
    solution *sol = &task.sol[ZLR_SOL_ITG];
    solution_reset(sol, 0, 3);
    sol->defined = sol->has_primal = true;
    sol->primal_obj = 1.0 / 3.0;
    sol->check.integrality = 1e-9;
    sol->check.cone = 2e-8;
    put_str(SPAR_STAT_LABEL, "run 7");
    ASSERT_EQ(param_put_text(&task.params, "OPTIMIZER", "INTPNT", &task.streams), ZLR_RES_OK);
    ASSERT_EQ(param_put_text(&task.params, "THREADS", "3", &task.streams), ZLR_RES_OK);
    ASSERT_EQ(param_put_text(&task.params, "TIME_LIMIT", "1.5", &task.streams), ZLR_RES_OK);
    task.run.time_start_s = 0.25;
    task.run.time_check_s = 0.125;
    task.run.best_bound = 0.25;
    task.run.return_code = ZLR_RES_TRM_TIME_LIMIT;

    const json line = json::parse(statistics_line(&task));
    EXPECT_EQ(line.at("label"), "run 7");
    EXPECT_EQ(line.at("columns"), 3);
    EXPECT_EQ(line.at("integer_columns"), 1);
    EXPECT_EQ(line.at("problem_type"), "quadratic_objective");
    EXPECT_EQ(line.at("solution_kind"), "integer");
    EXPECT_EQ(line.at("primal_objective").get<double>(), 1.0 / 3.0);
    EXPECT_EQ(line.at("best_bound").get<double>(), 0.25);
    EXPECT_EQ(line.at("max_violation").at("integrality").get<double>(), 1e-9);
    EXPECT_EQ(line.at("max_violation").at("cones").get<double>(), 2e-8);
    EXPECT_EQ(line.at("time").at("start").get<double>(), 0.25);
    EXPECT_EQ(line.at("time").at("check").get<double>(), 0.125);
    EXPECT_TRUE(line.at("time").at("read").is_null()) << "no file was read";
    EXPECT_EQ(line.at("return_code_name"), "ZLR_RES_TRM_TIME_LIMIT");
    const json expected = {{"OPTIMIZER", "INTPNT"},
                           {"THREADS", 3},
                           {"TIME_LIMIT", 1.5},
                           {"STAT_LABEL", "run 7"},
                           {"STAT_FILE", path_of("stat.jsonl")}};
    EXPECT_EQ(line.at("parameters"), expected);
}

TEST_F(statistics, the_time_is_utc)
{
    static const struct {
        int64_t ms;
        const char *text;
    } cases[] = {
        {0, "1970-01-01T00:00:00.000Z"},
        {951782400001, "2000-02-29T00:00:00.001Z"},
        {1735689599999, "2024-12-31T23:59:59.999Z"},
    };
    for (const auto &c : cases) {
        task.run.ended_ms = c.ms;
        EXPECT_EQ(json::parse(statistics_line(&task)).at("when"), c.text);
    }
}

TEST_F(statistics, without_a_file_name_each_entry_says_so)
{
    put_str(SPAR_STAT_FILE, "");
    optimize(1);
    for (const char *call : {"S", "a", "p"}) {
        errors.clear();
        EXPECT_EQ(play(call), ZLR_RES_ERR_FILE_OPEN);
        EXPECT_NE(errors.find("STAT_FILE"), std::string::npos) << call;
    }
    EXPECT_FALSE(task.stat.is_collecting);
}

TEST_F(statistics, a_failed_write_loses_nothing)
{
    const struct {
        std::string file;
        int32_t code;
    } cases[] = {{path_of("no/stat.jsonl"), ZLR_RES_ERR_FILE_OPEN}, {"/dev/full", ZLR_RES_ERR_FILE_WRITE}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.file);
        renew();
        std::remove(path_of("stat.jsonl").c_str());
        put_str(SPAR_STAT_FILE, c.file);
        EXPECT_EQ(play("Soo"), ZLR_RES_OK);
        EXPECT_EQ(play("a"), c.code);
        EXPECT_NE(errors.find(c.file), std::string::npos) << errors;
        EXPECT_EQ(play("p"), c.code);
        EXPECT_TRUE(task.stat.is_collecting) << "as it was before the call";

        put_str(SPAR_STAT_FILE, path_of("stat.jsonl"));
        EXPECT_EQ(play("p"), ZLR_RES_OK);
        EXPECT_EQ(written(), (std::vector<int64_t>{1, 2}));
    }
}

TEST_F(statistics, a_cut_line_is_ended_before_the_next)
{
    std::ofstream(path_of("stat.jsonl"), std::ios::binary) << "{\"nodes\": 7}\n{\"nod";
    EXPECT_EQ(play("oa"), ZLR_RES_OK);
    const std::string text = text_of(path_of("stat.jsonl"));
    const std::string kept = "{\"nodes\": 7}\n{\"nod\n";
    ASSERT_EQ(text.substr(0, kept.size()), kept);
    EXPECT_EQ(json::parse(text.substr(kept.size())).at("nodes"), 1);
}

TEST_F(statistics, many_lines_stay_whole_and_in_order)
{
    std::vector<int64_t> expected;
    put_str(SPAR_STAT_LABEL, std::string(2000, 'x'));
    EXPECT_EQ(play("S"), ZLR_RES_OK);
    for (int64_t k = 1; k <= 200; k++) {
        optimize(k);
        expected.push_back(k);
    }
    EXPECT_EQ(play("p"), ZLR_RES_OK);
    EXPECT_EQ(written(), expected);
}

TEST_F(statistics, a_compressed_file_takes_further_lines)
{
    const std::string name = path_of("stat.jsonl.gz");
    put_str(SPAR_STAT_FILE, name);
    EXPECT_EQ(play("oaoa"), ZLR_RES_OK) << errors;
    byte_source *in = nullptr;
    ASSERT_EQ(source_open(test_sys(), &in, name.c_str()), ZLR_RES_OK);
    std::string text;
    char piece[4096];
    for (size_t got = 1; got > 0; text.append(piece, got))
        ASSERT_EQ(source_read(in, piece, sizeof piece, &got), ZLR_RES_OK);
    source_close(&in);
    EXPECT_EQ(text_of(name).substr(0, 2), "\x1f\x8b");
    const size_t end = text.find('\n');
    ASSERT_NE(end, std::string::npos);
    EXPECT_EQ(json::parse(text.substr(0, end)).at("nodes"), 1);
    EXPECT_EQ(json::parse(text.substr(end)).at("nodes"), 2);
}

TEST_F(statistics, lines_that_nobody_writes_are_told)
{
    std::string warnings;
    const auto append = [](void *text, const char *piece) { *static_cast<std::string *>(text) += piece; };
    task.streams.out[ZLR_STREAM_WRN] = {append, &warnings, nullptr};
    EXPECT_EQ(play("Soop"), ZLR_RES_OK);
    statistics_warn_of_loss(&task);
    EXPECT_EQ(warnings, "");
    EXPECT_EQ(play("Soo"), ZLR_RES_OK);
    statistics_warn_of_loss(&task);
    EXPECT_NE(warnings.find("(lines: 2)"), std::string::npos) << warnings;
}
