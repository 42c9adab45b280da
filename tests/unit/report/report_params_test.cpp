/* What the parameters RESULT_, STAT_ and REPORT_ make of the JSON result, of statistics and of the run report. */
#include "solver/report/html_report.h"
#include "solver/report/result_file.h"
#include "solver/report/statistics.h"
#include "support/html.h"
#include "support/sys.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <nlohmann/json.hpp>
#include <set>

namespace fs = std::filesystem;
using nlohmann::json;

namespace
{
class report_params : public testing::Test
{
protected:
    void SetUp() override
    {
        std::string made = (fs::temp_directory_path() / "zelor-params-XXXXXX").string();
        ASSERT_NE(mkdtemp(made.data()), nullptr);
        folder = made;
        env.sys = test_sys();
        task.env = &env;
        param_set_defaults(&task.params);
        const auto append = [](void *text, const char *piece) { *static_cast<std::string *>(text) += piece; };
        task.streams.out[ZLR_STREAM_LOG] = {append, &told, nullptr};
        fill();
    }

    void TearDown() override { fs::remove_all(folder); }

    /* 30 rows and columns with a full diagonal; all but one of the columns are 0. */
    void fill()
    {
        task.problem = std::make_shared<model>();
        model *m = task.problem.get();
        model_append_cons(m, 30);
        model_append_vars(m, 30);
        m->name = "diagonal";
        solution *sol = &task.sol[ZLR_SOL_BAS];
        solution_reset(sol, 30, 30);
        for (int32_t j = 0; j < 30; j++) {
            const double one = 1.0;
            model_put_column(m, j, 1, &j, &one);
            m->c[static_cast<size_t>(j)] = 1.0;
            sol->xx[static_cast<size_t>(j)] = j == 3 ? 0.5 : 0.0;
            sol->y[static_cast<size_t>(j)] = 1.0 + j;
        }
        sol->defined = sol->has_primal = sol->has_dual = true;
        sol->solsta = ZLR_SOLSTA_OPTIMAL;
        task.run.ran = true;
    }

    void set(const char *name, const std::string &value)
    {
        ASSERT_EQ(param_put_text(&task.params, name, value.c_str(), &task.streams), ZLR_RES_OK) << told;
    }

    std::string page() const
    {
        std::string text = html_report_text(&task, nullptr, ZLR_RES_OK);
        EXPECT_EQ(html_complaint(text), "");
        return text;
    }

    static size_t count(const std::string &text, const std::string &what)
    {
        size_t num = 0;
        for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) num++;
        return num;
    }

    static bool has(const std::string &text, const std::string &what) { return text.find(what) != std::string::npos; }

    std::string file(const char *name) const { return (folder / name).string(); }

    fs::path folder;
    std::string told;
    ZLR_env env;
    ZLR_task task;
};
}  // namespace

TEST_F(report_params, result_indent)
{
    const std::string usual = result_text(&task, ZLR_RES_OK);
    EXPECT_TRUE(has(usual, "\n  \"rows\": 30,\n")) << usual;
    set("RESULT_INDENT", "4");
    const std::string wide = result_text(&task, ZLR_RES_OK);
    EXPECT_TRUE(has(wide, "\n    \"rows\": 30,\n")) << wide;
    set("RESULT_INDENT", "-1");
    const std::string line = result_text(&task, ZLR_RES_OK);
    EXPECT_EQ(line.find('\n'), line.size() - 1) << line;
    EXPECT_EQ(json::parse(line), json::parse(usual));
}

TEST_F(report_params, result_values)
{
    const auto values = [this] { return json::parse(result_text(&task, ZLR_RES_OK)).at("solution"); };
    EXPECT_TRUE(values().is_null());
    set("RESULT_SOLUTION", "ON");
    EXPECT_EQ(values().at("rows").size(), 30U);
    EXPECT_EQ(values().at("columns").size(), 30U);
    set("RESULT_VALUES", "COLUMNS");
    EXPECT_TRUE(values().at("rows").is_null());
    EXPECT_EQ(values().at("columns").size(), 30U);
    set("RESULT_VALUES", "NONZEROS");
    EXPECT_EQ(values().at("rows").size(), 30U) << "their multipliers are not 0";
    ASSERT_EQ(values().at("columns").size(), 1U);
    EXPECT_EQ(values().at("columns").at(0).at("name"), "x4");
    EXPECT_EQ(values().at("columns").at(0).at("value").get<double>(), 0.5);
}

TEST_F(report_params, result_fields)
{
    set("RESULT_FIELDS", "rows, solution_status,rowz");
    set("RESULT_FILE", file("r.json"));
    EXPECT_EQ(result_file_write(&task, ZLR_RES_OK), ZLR_RES_OK);
    std::ifstream in(file("r.json"));
    const json r = json::parse(in);
    EXPECT_EQ(r.size(), 3U) << r;
    EXPECT_EQ(r.at("schema"), result_schema);
    EXPECT_EQ(r.at("rows"), 30);
    EXPECT_EQ(r.at("solution_status"), "optimal");
    EXPECT_EQ(count(told, "Warning: RESULT_FIELDS: there is no 'rowz'; there are schema, version, "), 1U) << told;
    EXPECT_EQ(count(told, "\n"), 1U) << told;
}

TEST_F(report_params, stat_fields_and_events)
{
    const auto collected = [this](const char *events) {
        std::set<int32_t> codes;
        set("STAT_EVENTS", events);
        EXPECT_EQ(statistics_start(&task), ZLR_RES_OK);
        for (const int32_t code : {ZLR_RES_OK, ZLR_RES_TRM_TIME_LIMIT}) {
            task.run.return_code = code;
            statistics_note(&task);
        }
        EXPECT_EQ(statistics_stop(&task), ZLR_RES_OK) << told;
        std::ifstream in(file("s.jsonl"));
        for (std::string line; std::getline(in, line);)
            codes.insert(json::parse(line).at("return_code").get<int32_t>());
        fs::remove(file("s.jsonl"));
        return codes;
    };
    set("STAT_FILE", file("s.jsonl"));
    EXPECT_EQ(collected("ALL"), (std::set<int32_t>{ZLR_RES_OK, ZLR_RES_TRM_TIME_LIMIT}));
    EXPECT_EQ(collected("ANSWERED"), std::set<int32_t>{ZLR_RES_OK});
    EXPECT_EQ(collected("FAILED"), std::set<int32_t>{ZLR_RES_TRM_TIME_LIMIT});
    EXPECT_EQ(told, "");

    set("STAT_FIELDS", "time,columns");
    const json line = json::parse(statistics_line(&task));
    EXPECT_EQ(line.size(), 3U) << line;
    EXPECT_EQ(line.at("columns"), 30);
    EXPECT_TRUE(line.at("time").contains("solve"));
    set("STAT_FIELDS", "tim");
    EXPECT_EQ(statistics_start(&task), ZLR_RES_OK);
    EXPECT_TRUE(has(told, "Warning: STAT_FIELDS: there is no 'tim'; ")) << told;
}

TEST_F(report_params, report_title_and_sections)
{
    const std::string usual = page();
    EXPECT_TRUE(has(usual, "<h1><bdi>diagonal</bdi></h1>"));
    for (const char *id :
         {"outcome", "problem", "run", "progress", "quality", "values", "numbers", "matrix", "parameters", "log"})
        EXPECT_TRUE(has(usual, std::string("<section id=\"") + id + "\"") &&
                    has(usual, std::string("href=\"#") + id + "\""))
            << id;

    set("REPORT_TITLE", "The <plan>");
    set("REPORT_SECTIONS", "run,matrix");
    const std::string asked = page();
    EXPECT_TRUE(has(asked, "<h1><bdi>The &lt;plan&gt;</bdi></h1>"));
    EXPECT_EQ(count(asked, "<section "), 2U);
    EXPECT_EQ(count(asked, "href=\"#"), 2U);
    EXPECT_TRUE(has(asked, "<section id=\"run\"") && has(asked, "<section id=\"matrix\""));
    EXPECT_TRUE(has(asked, "href=\"#run\"") && has(asked, "href=\"#matrix\""));

    set("REPORT_SECTIONS", "matrix mat");
    set("REPORT_FILE", file("r.html"));
    EXPECT_EQ(html_report_write(&task, ZLR_RES_OK), ZLR_RES_OK);
    EXPECT_EQ(count(told, "Warning: REPORT_SECTIONS: there is no 'mat'; there are outcome, "), 1U) << told;
}

TEST_F(report_params, report_theme)
{
    const char choice[] = "@media screen and (prefers-color-scheme: dark) {", dark[] = "--paper: #12171e";
    EXPECT_TRUE(has(page(), choice) && has(page(), dark) && has(page(), "color-scheme: light dark;"));
    set("REPORT_THEME", "LIGHT");
    EXPECT_TRUE(!has(page(), dark) && !has(page(), "prefers-color-scheme") && has(page(), "color-scheme: light;"));
    set("REPORT_THEME", "DARK");
    EXPECT_TRUE(has(page(), "@media screen {") && has(page(), dark) && has(page(), "color-scheme: dark;"));
    EXPECT_FALSE(has(page(), "prefers-color-scheme"));
}

TEST_F(report_params, report_sizes)
{
    const auto listed = [this] {
        const std::string text = page();
        const size_t begin = text.find("Rows with the largest multipliers");
        return count(text.substr(begin, text.find("</table>", begin) - begin), "<tr>") - 1;
    };
    EXPECT_EQ(listed(), 10U);
    set("REPORT_LISTED", "4");
    EXPECT_EQ(listed(), 4U);
    set("REPORT_LISTED", "1000");
    EXPECT_EQ(listed(), 30U);

    const auto matrix = [this] {
        const std::string text = page();
        return text.substr(text.find("<section id=\"matrix\""));
    };
    EXPECT_EQ(count(matrix(), "<rect class=\"cell\""), 30U);
    set("REPORT_MATRIX_CELLS", "10");
    EXPECT_EQ(count(matrix(), "<rect class=\"cell\""), 0U);
    EXPECT_TRUE(has(matrix(), "stands for 3 rows and 3 columns"));
}

TEST_F(report_params, every_row_has_a_case)
{
    const std::set<std::string> seen = {
        "RESULT_INDENT", "RESULT_VALUES",       "RESULT_SOLUTION", "RESULT_FIELDS", "RESULT_FILE",  "STAT_FIELDS",
        "STAT_EVENTS",   "STAT_FILE",           "REPORT_TITLE",    "REPORT_FILE",   "REPORT_THEME", "REPORT_SECTIONS",
        "REPORT_LISTED", "REPORT_MATRIX_CELLS", "STAT_LABEL", /* result_file_test.cpp */
    };
    int32_t num = 0;
    const param_row *table = param_table(&num);
    for (const param_row *row = table; row != table + num; row++) {
        const std::string name = row->name;
        if (name.starts_with("RESULT_") || name.starts_with("STAT_") || name.starts_with("REPORT_")) {
            EXPECT_EQ(seen.count(name), 1U) << name;
        }
    }
}
