/* second_reader_test.cpp - values and derivatives of every nonlinear stub of the data at its start against those of
 * gjh_asl_json, a program of its own on the AMPL Solver Library that prints them. It tells 15 digits. */
#include "ampl/evaluation/evaluated_stubs.h"

#include "zelor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using json = nlohmann::json;

/* What the program writes is JSON but for numbers that are not finite: those become null. */
static json read_report(const std::string &path)
{
    if (!file_exists(path)) return json();
    std::string text = file_read(path);
    for (const char *word : {"-Infinity", "Infinity", "-inf", "inf", "-nan", "nan"})
        for (size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) {
            const bool is_value = at > 0 && (text[at - 1] == '[' || text[at - 1] == ',' || text[at - 1] == ' ');
            if (is_value) text.replace(at, std::string(word).size(), "null");
        }
    return json::parse(text, nullptr, false);
}

/* What the program says and leaves. */
struct second_opinion {
    std::string said;
    json report;
};

/* Rows and columns have numbers in the report where there are no names beside the stub. */
static second_opinion ask_second_reader(const open_stub &stub)
{
    file_write(stub.folder.file("plain.nl"), file_read(stub.path + ".nl"));
    process_options options;
    options.args = {"-c", "exec gjh_asl_json plain json=report.json"};
    options.folder = stub.folder.path;
    const process_result run = process_run("/bin/sh", options);
    EXPECT_TRUE(run.started);
    return {run.out + run.err, read_report(stub.folder.file("report.json"))};
}

static double number_in(const json &object, const std::string &key, double otherwise)
{
    const auto found = object.find(key);
    return found != object.end() && found->is_number() ? found->get<double>() : otherwise;
}

static std::vector<double> numbers_in(const json &object, size_t num, double otherwise)
{
    std::vector<double> values;
    for (size_t k = 0; k < num; ++k) values.push_back(number_in(object, std::to_string(k), otherwise));
    return values;
}

/* Against the larger of 1 and the values. */
static void expect_close(double found, double expected, const std::string &what)
{
    EXPECT_TRUE(close_to(found, expected, 1e-11)) << what << ": " << found << ", not " << expected;
}

static void compare_objective(const stub_callbacks &c, const point_values &at, const std::vector<double> &x,
                              const json &objective)
{
    double value = at.objective;
    const std::vector<double> gradient = numbers_in(objective["gradient"], x.size(), 0.0);
    for (size_t j = 0; j < x.size(); ++j) {
        value += c.linear[j] * x[j];
        expect_close(at.gradient[j] + c.linear[j], gradient[j], "gradient " + std::to_string(j));
    }
    expect_close(value, number_in(objective, "value", 0.0), "objective");
}

static std::string entry_key(size_t i, int32_t j) { return std::to_string(i) + "_" + std::to_string(j); }
static std::string entry_key(int32_t i, int32_t j) { return entry_key(static_cast<size_t>(i), j); }

static void compare_rows(const stub_callbacks &c, const point_values &at, const json &report)
{
    const json &values = report["constraints"];
    const json &jacobian = report["constraints' jacobian"];
    for (size_t i = 0; i < at.rows.size(); ++i) {
        expect_close(at.rows[i], number_in(values, std::to_string(i), 0.0), "row " + std::to_string(i));
        for (size_t p = 0; p < c.row_columns[i].size(); ++p) {
            const std::string key = entry_key(i, c.row_columns[i][p]);
            expect_close(at.row_gradients[i][p], number_in(jacobian, key, 0.0), "entry " + key);
        }
    }
}

/* The program prints both triangles. Every entry of it is in the pattern, and the other way round with the value 0. */
static void compare_hessian(const stub_callbacks &c, const point_values &at, const json &hessian)
{
    size_t num_known = 0;
    double largest = 1.0;
    for (const double value : at.hessian) largest = std::max(largest, std::fabs(value));
    for (size_t p = 0; p < c.hes_i.size(); ++p) {
        const std::string key = entry_key(c.hes_i[p], c.hes_j[p]);
        num_known += hessian.count(key);
        if (c.hes_i[p] != c.hes_j[p]) num_known += hessian.count(entry_key(c.hes_j[p], c.hes_i[p]));
        EXPECT_NEAR(at.hessian[p], number_in(hessian, key, 0.0), 1e-11 * largest) << key;
    }
    EXPECT_EQ(num_known, hessian.size());
}

class ampl_second_reader : public ::testing::TestWithParam<data_row>
{
};

TEST_P(ampl_second_reader, agrees)
{
    if (!have_command("gjh_asl_json")) GTEST_SKIP() << "gjh_asl_json is missing; scripts/install-deps test gets it";
    const open_stub stub(GetParam());
    const stub_callbacks &c = stub.callbacks;
    if (c.handle == nullptr) return; /* quadratic or linear: nothing is evaluated */
    second_opinion opinion = ask_second_reader(stub);
    if (opinion.said.find("multiple objectives") != std::string::npos) GTEST_SKIP() << "it takes one objective only";
    if (opinion.said.find("Problem evaluating") != std::string::npos) {
        const std::vector<double> ones(static_cast<size_t>(c.num_con), 1.0);
        EXPECT_EQ(derivatives_at(c, point_about_start(c, 0), 1.0, ones).code, ZLR_RES_ERR_NL_EVALUATION);
        return;
    }
    json &report = opinion.report;
    ASSERT_TRUE(report.is_object()) << opinion.said;
    json &start = report["supplied starting points"];
    const std::vector<double> x = numbers_in(start["primal"], static_cast<size_t>(c.num_var), 1.0);
    const std::vector<double> y = numbers_in(start["dual"], static_cast<size_t>(c.num_con), 1.0);
    for (size_t j = 0; j < x.size(); ++j) expect_close(std::isnan(c.start[j]) ? 1.0 : c.start[j], x[j], "start");

    const point_values at = derivatives_at(c, x, 1.0, y);
    json &found = report["initial evaluations"];
    ASSERT_EQ(at.code, 0);
    compare_rows(c, at, found);
    if (found["objective function"].empty()) return;
    compare_objective(c, at, x, found["objective function"]["0"]);
    compare_hessian(c, at, found["objective function"]["0"]["lagrangian hessian"]);
}

INSTANTIATE_TEST_SUITE_P(data, ampl_second_reader, ::testing::ValuesIn(evaluated_stubs()),
                         [](const auto &tested) { return tested.param.name; });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ampl_second_reader);
