/* The JSON result: every field of the schema is there whatever the outcome, and what does not exist is null. */
#include "solver/report/result_file.h"
#include "support/json_schema.h"
#include "support/sys.h"

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace fs = std::filesystem;
using nlohmann::json;

class result_file : public testing::Test
{
protected:
    void SetUp() override
    {
        env.sys = test_sys();
        task.env = &env;
        std::string made = (fs::temp_directory_path() / "zelor-result-XXXXXX").string();
        ASSERT_NE(mkdtemp(made.data()), nullptr);
        folder = made;
        param_set_defaults(&task.params);
        task.problem = std::make_shared<model>();
        const auto append = [](void *text, const char *piece) { *static_cast<std::string *>(text) += piece; };
        task.streams.out[ZLR_STREAM_ERR] = {append, &errors, nullptr};
    }

    void TearDown() override { fs::remove_all(folder); }

    /* One row, two columns, solved. */
    void fill(int32_t kind, int32_t solsta)
    {
        model *m = task.problem.get();
        model_append_cons(m, 1);
        model_append_vars(m, 2);
        m->name = "tiny";
        names_put(&m->var_names, 1, "b\"\xff"); /* no valid UTF-8 */
        solution *sol = &task.sol[kind];
        solution_reset(sol, 1, 2);
        sol->defined = sol->has_keys = sol->has_primal = sol->has_dual = true;
        sol->prosta = ZLR_PRO_PRIM_AND_DUAL_FEAS;
        sol->solsta = solsta;
        sol->primal_obj = 1.0 / 3.0;
        sol->dual_obj = 0.25;
        sol->xx = {0.1, -2.0};
        sol->xc = {7.5};
        sol->y = {-1.5};
        sol->slx = {2.0, 0.0};
        sol->sux = {0.5, 1.0};
        sol->skx = {ZLR_SK_LOWER, ZLR_SK_BASIC};
        sol->check.row = 1e-9;
        task.run.engine = "HiGHS 1.15.1";
        task.run.best_bound = model_inf;
    }

    json result(int32_t code) const { return json::parse(result_text(&task, code)); }

    fs::path folder;
    std::string errors;
    ZLR_env env;
    ZLR_task task;
};

TEST_F(result_file, follows_the_committed_schema_whatever_the_outcome)
{
    const json schema = committed_schema("result.schema.json");
    expect_schema(schema, result(ZLR_RES_ERR_NO_ENGINE), "no solution");
    expect_schema(schema, result(4711), "unknown code");
    fill(ZLR_SOL_BAS, ZLR_SOLSTA_OPTIMAL);
    ASSERT_EQ(param_put_int(&task.params, IPAR_RESULT_SOLUTION, 1, &task.streams), ZLR_RES_OK);
    for (int32_t status = 0; status <= ZLR_SOLSTA_NEAR_INTEGER_OPTIMAL; status++) {
        task.sol[ZLR_SOL_BAS].solsta = status;
        task.sol[ZLR_SOL_BAS].prosta = status % 9;
        if (status > ZLR_SOLSTA_NEAR_DUAL_INFEAS_CER && status < ZLR_SOLSTA_INTEGER_OPTIMAL) continue;
        expect_schema(schema, result(ZLR_RES_OK), "status " + std::to_string(status));
    }
}

TEST_F(result_file, without_a_solution_values_are_null)
{
    const json r = result(ZLR_RES_ERR_ENGINE);
    for (const char *key : {"problem", "data_file", "label", "primal_objective", "dual_objective", "best_bound",
                            "relative_gap", "solution_kind", "engine", "solution"})
        EXPECT_TRUE(r.at(key).is_null()) << key << ": " << r.at(key);
    for (const auto &[key, value] : r.at("max_violation").items()) EXPECT_TRUE(value.is_null()) << key;
    EXPECT_TRUE(r.at("time").at("read").is_null());
    EXPECT_EQ(r.at("problem_status"), "unknown");
    EXPECT_EQ(r.at("solution_status"), "unknown");
    EXPECT_EQ(r.at("return_code"), ZLR_RES_ERR_ENGINE);
    EXPECT_EQ(r.at("return_code_name"), "ZLR_RES_ERR_ENGINE");
}

TEST_F(result_file, with_a_solution_values_are_exact)
{
    fill(ZLR_SOL_BAS, ZLR_SOLSTA_OPTIMAL);
    ASSERT_EQ(param_put_str(&task.params, SPAR_STAT_LABEL, "run 7", &task.streams), ZLR_RES_OK);
    EXPECT_TRUE(result(ZLR_RES_OK).at("solution").is_null()) << "only when asked for";
    ASSERT_EQ(param_put_int(&task.params, IPAR_RESULT_SOLUTION, 1, &task.streams), ZLR_RES_OK);
    const json r = result(ZLR_RES_OK);
    EXPECT_EQ(r.at("problem"), "tiny");
    EXPECT_EQ(r.at("label"), "run 7");
    EXPECT_EQ(r.at("problem_status"), "primal_and_dual_feasible");
    EXPECT_EQ(r.at("solution_status"), "optimal");
    EXPECT_EQ(r.at("solution_kind"), "basic");
    EXPECT_EQ(r.at("primal_objective").get<double>(), 1.0 / 3.0);
    EXPECT_EQ(r.at("dual_objective").get<double>(), 0.25);
    EXPECT_TRUE(r.at("best_bound").is_null()) << "infinite";
    EXPECT_EQ(r.at("max_violation").at("rows").get<double>(), 1e-9);
    EXPECT_TRUE(r.at("max_violation").at("dual").is_null());
    EXPECT_TRUE(r.at("max_violation").at("cones").is_null());
    const json &columns = r.at("solution").at("columns"), &rows = r.at("solution").at("rows");
    ASSERT_EQ(columns.size(), 2U);
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(columns[0].at("name"), "x1");
    EXPECT_EQ(columns[0].at("value").get<double>(), 0.1);
    EXPECT_EQ(columns[0].at("dual").get<double>(), 1.5);
    EXPECT_EQ(columns[0].at("key"), "LL");
    EXPECT_EQ(columns[1].at("name"), "b\"\xEF\xBF\xBD");
    EXPECT_EQ(rows[0].at("name"), "c1");
    EXPECT_EQ(rows[0].at("value").get<double>(), 7.5);
    EXPECT_EQ(rows[0].at("dual").get<double>(), -1.5);
}

/* The reduced cost of a column in a cone is what its bounds and its cone take together. */
TEST_F(result_file, duals_of_cones)
{
    fill(ZLR_SOL_ITR, ZLR_SOLSTA_OPTIMAL);
    ASSERT_EQ(param_put_int(&task.params, IPAR_RESULT_SOLUTION, 1, &task.streams), ZLR_RES_OK);
    task.problem->cones = {{ZLR_CT_QUAD, {1, 0}}};
    solution *sol = &task.sol[ZLR_SOL_ITR];
    sol->snx = {0.25, -2.0};
    sol->check.cone = 3e-9;
    const json r = result(ZLR_RES_OK);
    EXPECT_EQ(r.at("max_violation").at("cones").get<double>(), 3e-9);
    EXPECT_EQ(r.at("solution").at("columns").at(0).at("dual").get<double>(), sol->slx[0] - sol->sux[0] + 0.25);
    EXPECT_EQ(r.at("solution").at("columns").at(1).at("dual").get<double>(), sol->slx[1] - sol->sux[1] - 2.0);
}

/* What a reader may take for the problem's objective or point must be one. */
TEST_F(result_file, rays_and_integer_solutions_have_what_belongs_to_them)
{
    static const struct {
        const char *name;
        int32_t kind, solsta;
        bool primal_obj, dual_obj, values, duals;
    } cases[] = {
        {"optimal", ZLR_SOL_ITR, ZLR_SOLSTA_OPTIMAL, true, true, true, true},
        {"feasible", ZLR_SOL_BAS, ZLR_SOLSTA_PRIM_FEAS, true, true, true, true},
        {"infeasible", ZLR_SOL_BAS, ZLR_SOLSTA_PRIM_INFEAS_CER, false, false, false, true},
        {"unbounded", ZLR_SOL_BAS, ZLR_SOLSTA_DUAL_INFEAS_CER, false, false, true, false},
        {"integer", ZLR_SOL_ITG, ZLR_SOLSTA_INTEGER_OPTIMAL, true, false, true, false},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        task.problem = std::make_shared<model>();
        for (solution &sol : task.sol) solution_clear(&sol);
        ASSERT_EQ(param_put_int(&task.params, IPAR_RESULT_SOLUTION, 1, &task.streams), ZLR_RES_OK);
        fill(c.kind, c.solsta);
        const json r = result(ZLR_RES_OK), column = r.at("solution").at("columns").at(0);
        EXPECT_EQ(r.at("primal_objective").is_number(), c.primal_obj);
        EXPECT_EQ(r.at("dual_objective").is_number(), c.dual_obj);
        EXPECT_EQ(column.at("value").is_number(), c.values);
        EXPECT_EQ(column.at("dual").is_number(), c.duals);
    }
}

TEST_F(result_file, an_integer_problem_reports_its_integer_solution)
{
    fill(ZLR_SOL_BAS, ZLR_SOLSTA_OPTIMAL);
    task.sol[ZLR_SOL_ITG] = task.sol[ZLR_SOL_BAS];
    EXPECT_EQ(result(ZLR_RES_OK).at("solution_kind"), "basic");
    task.problem->var_type[0] = ZLR_VAR_INT;
    EXPECT_EQ(result(ZLR_RES_OK).at("solution_kind"), "integer");
}

TEST_F(result_file, is_written_where_the_parameter_says)
{
    EXPECT_EQ(result_file_write(&task, ZLR_RES_OK), ZLR_RES_OK) << "no name: nothing to do";
    EXPECT_TRUE(fs::is_empty(folder));

    const std::string path = (folder / "r.json").string();
    ASSERT_EQ(param_put_str(&task.params, SPAR_RESULT_FILE, path.c_str(), &task.streams), ZLR_RES_OK);
    EXPECT_EQ(result_file_write(&task, ZLR_RES_TRM_TIME_LIMIT), ZLR_RES_OK) << errors;
    std::ifstream in(path);
    EXPECT_EQ(json::parse(in).at("return_code"), ZLR_RES_TRM_TIME_LIMIT);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 1);

    const std::string absent = (folder / "no" / "r.json").string();
    ASSERT_EQ(param_put_str(&task.params, SPAR_RESULT_FILE, absent.c_str(), &task.streams), ZLR_RES_OK);
    EXPECT_EQ(result_file_write(&task, ZLR_RES_OK), ZLR_RES_ERR_FILE_OPEN);
    EXPECT_NE(errors.find("r.json"), std::string::npos) << errors;
}
