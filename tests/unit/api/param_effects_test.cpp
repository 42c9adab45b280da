/* param_effects_test.cpp - parameters of the analyses, each by what it changes in a report or a result. */
#include "api_support.h"

#include <algorithm>
#include <functional>

class api_params : public api_optimize
{
protected:
    void put(const char *name, const char *value) { ASSERT_EQ(ZLR_putparam(task, name, value), ZLR_RES_OK) << log; }

    /* The text that `act` leaves in the log of a new task with `m`, with a parameter set or all at their defaults. */
    std::string text_with(const api_model &m, const char *name, const char *value, const std::function<void()> &act)
    {
        renew();
        fill(task, m);
        put("LOG_LEVEL", "0");
        if (name != nullptr) put(name, value);
        act();
        return log;
    }
};

static bool has(const std::string &text, const char *part) { return text.find(part) != std::string::npos; }

static ptrdiff_t lines_of(const std::string &text) { return std::count(text.begin(), text.end(), '\n'); }

/* ---- problem analysis */

/* Something of everything: large and small numbers, a big M, spread coefficients, parallel rows, many empty columns. */
static api_model odd_model()
{
    api_model m = {ZLR_SENSE_MIN, {}, {}, {}, {}, {6}, 0.0};
    m.rows = {{-inf, 5e6, {1.0, 1.0}},
              {-inf, 4.0, {2.0, 2.0}},
              {1.0, inf, {1.0, 1e-7, 2e4}},
              {-inf, 0.0, {0.0, 0.0, 0.0, 1.0, 0.0, 0.0, -50.0}},
              {1.0, 1.0, {0.0, 0.0, 0.0, 1.0, 1.0, 1.0}}};
    m.c.assign(20, 1.0);
    m.lower.assign(20, 0.0);
    m.upper.assign(20, 10.0);
    m.upper[3] = 40.0;
    m.upper[6] = 1.0;
    m.upper[1] = 2e6;
    for (api_row &row : m.rows) row.a.resize(20, 0.0);
    return m;
}

TEST_F(api_params, problem_analysis)
{
    static const struct {
        const char *name, *value, *part;
        bool by_default, changed;
    } cases[] = {
        {"ANALYZE_LARGE_VALUE", "1e6", "row has a side of 1e6 or more", false, true},
        {"ANALYZE_LARGE_VALUE", "2e6", "column has a bound of 2e6 or more", false, true},
        {"ANALYZE_SMALL_COEF", "1e-6", "row has coefficients below 1e-6", false, true},
        {"ANALYZE_BIG_M_RATIO", "10", "Big-M      1 row", false, true},
        {"ANALYZE_SPREAD", "100", "too far apart for any scaling", false, true},
        {"ANALYZE_ADVICE", "OFF", "Advice:", true, false},
        {"ANALYZE_SIZES", "OFF", "Sizes", true, false},
        {"ANALYZE_STRUCTURE", "OFF", "Structure", true, false},
        {"ANALYZE_PARALLEL", "OFF", "Parallel", true, false},
        {"ANALYZE_NAMES", "5", "x8, x9, x10, x11, x12 and 8 more", false, true},
        {"ANALYZE_NAMES", "5", "x8, x9, x10 and 10 more", true, false},
        {"ANALYZE_LONGEST", "0", "Longest", true, false},
        {"ANALYZE_LONGEST", "4", "columns x1 (3), x2 (3), x4 (2), x3 (1)", false, true},
        {"ANALYZE_MAX_LINES", "1", "more point", false, true},
        {"ANALYZE_DETAIL", "FULL", "Rows by structure", false, true},
    };
    const auto analyze = [&] { ASSERT_EQ(ZLR_analyzeproblem(task, ZLR_STREAM_MSG), ZLR_RES_OK); };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.name) + " " + c.value);
        const std::string usual = text_with(odd_model(), nullptr, nullptr, analyze);
        const std::string changed = text_with(odd_model(), c.name, c.value, analyze);
        EXPECT_EQ(has(usual, c.part), c.by_default) << usual;
        EXPECT_EQ(has(changed, c.part), c.changed) << changed;
    }
}

/* ---- solution analysis */

TEST_F(api_params, solution_analysis)
{
    api_model m = {ZLR_SENSE_MIN, std::vector<double>(6, 1.0), {}, std::vector<double>(6, 0.0), {}, {}, 0.0};
    m.upper.assign(6, 10.0);
    for (size_t i = 0; i < 6; i++) m.rows.push_back({1.0, inf, std::vector<double>(6, 0.0)});
    for (size_t i = 0; i < 6; i++) m.rows[i].a[i] = 1.0;
    const auto analyze = [&] {
        const std::vector<double> x = {0.1, 0.2, 0.3, 0.4, 0.5, 0.6}; /* breaks all rows */
        ASSERT_EQ(ZLR_putsolution(task, ZLR_SOL_BAS, nullptr, nullptr, nullptr, nullptr, x.data(), nullptr, nullptr,
                                  nullptr, nullptr, nullptr, nullptr),
                  ZLR_RES_OK);
        ASSERT_EQ(ZLR_analyzesolution(task, ZLR_STREAM_MSG, ZLR_SOL_BAS), ZLR_RES_OK);
    };
    const std::string usual = text_with(m, nullptr, nullptr, analyze);
    const std::string changed = text_with(m, "ANALYZE_SOLUTION_NAMES", "5", analyze);
    EXPECT_TRUE(has(usual, "below 1: row c3") && !has(usual, "below 1: row c4")) << usual;
    EXPECT_TRUE(has(changed, "below 1: row c5") && !has(changed, "below 1: row c6")) << changed;
}

/* ---- infeasible subproblem */

/* x1 + ... + xn >= n + 1 with x <= 1: all of it clashes. */
static api_model clashing_model(size_t n)
{
    api_model m = {ZLR_SENSE_MIN,
                   std::vector<double>(n, 1.0),
                   {{static_cast<double>(n) + 1.0, inf, {}}},
                   std::vector<double>(n, 0.0),
                   std::vector<double>(n, 1.0),
                   {},
                   0.0};
    m.rows[0].a.assign(n, 1.0);
    return m;
}

TEST_F(api_params, infeasible_subproblem)
{
    int32_t num_columns = 0;
    const auto reduce = [&] {
        ZLR_task *sub = nullptr;
        ASSERT_EQ(ZLR_optimize(task), ZLR_RES_OK);
        log.clear();
        ASSERT_EQ(ZLR_getinfeasiblesubproblem(task, ZLR_SOL_BAS, &sub), ZLR_RES_OK);
        EXPECT_EQ(ZLR_getnumvar(sub, &num_columns), ZLR_RES_OK);
        ZLR_deletetask(&sub);
    };
    const std::string usual = text_with(clashing_model(30), nullptr, nullptr, reduce);
    EXPECT_TRUE(has(usual, "and 13 more")) << usual;
    const std::string few = text_with(clashing_model(30), "ANALYZE_INFEAS_NAMES", "5", reduce);
    EXPECT_TRUE(has(few, "and 28 more")) << few;
    const std::string all = text_with(clashing_model(30), "ANALYZE_INFEAS_NAMES", "31", reduce);
    EXPECT_FALSE(has(all, "more")) << all;

    /* The engine's finder sees that one row clashes with bounds; the proof of the optimiser speaks of two. */
    const api_model two_ways = {ZLR_SENSE_MIN,
                                std::vector<double>(5, 1.0),
                                {{4.0, inf, {1.0, 1.0, 0.0, 0.0, 0.0}},
                                 {-inf, 0.0, {1.0, 0.0, -1.0, 0.0, 0.0}},
                                 {-inf, 0.0, {0.0, 1.0, 0.0, -1.0, 0.0}},
                                 {-inf, 3.0, {0.0, 0.0, 1.0, 1.0, 1.0}},
                                 {9.0, inf, {1.0, 1.0, 1.0, 1.0, 0.0}}},
                                std::vector<double>(5, 0.0),
                                std::vector<double>(5, 2.0),
                                {},
                                0.0};
    const std::string by_engine = text_with(two_ways, nullptr, nullptr, reduce);
    EXPECT_TRUE(has(by_engine, "irreducible") && has(by_engine, "1 side of a row and 4 bounds")) << by_engine;
    EXPECT_EQ(num_columns, 4);
    const std::string by_proof = text_with(two_ways, "ANALYZE_INFEAS_ENGINE", "OFF", reduce);
    EXPECT_TRUE(has(by_proof, "irreducible") && has(by_proof, "2 sides of rows and 3 bounds")) << by_proof;
    EXPECT_EQ(num_columns, 5);
}

/* ---- primal repair */

TEST_F(api_params, repair)
{
    /* x >= 5 in a row, x <= 1 by its bound, integer. */
    const api_model m = {ZLR_SENSE_MIN, {1.0}, {{5.0, inf, {1.0}}}, {0.0}, {1.0}, {0}, 0.0};
    static const struct {
        const char *name, *value;
        bool is_integer;
        int32_t code;
        double row_lower, upper; /* afterwards; NaN: any */
    } cases[] = {
        {"REPAIR_ROW_WEIGHT", "-1", false, ZLR_RES_OK, 5.0, 5.0},
        {"REPAIR_ROW_WEIGHT", "10", false, ZLR_RES_OK, 5.0, 5.0},
        {"REPAIR_COLUMN_WEIGHT", "-1", false, ZLR_RES_OK, 1.0, 1.0},
        {"REPAIR_COLUMN_WEIGHT", "10", false, ZLR_RES_OK, 1.0, 1.0},
        {"REPAIR_INTEGER_BOUNDS", "OFF", true, ZLR_RES_OK, 1.0, 1.0},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.name) + " " + c.value);
        double lower = 0.0, upper = 0.0, none = 0.0;
        int32_t key = 0;
        api_model with = m;
        if (!c.is_integer) with.integers.clear();
        (void)text_with(with, c.name, c.value,
                        [&] { EXPECT_EQ(ZLR_primalrepair(task, nullptr, nullptr, nullptr, nullptr), c.code); });
        EXPECT_EQ(ZLR_getbound(task, ZLR_ACC_CON, 0, &key, &lower, &none), ZLR_RES_OK);
        EXPECT_EQ(ZLR_getbound(task, ZLR_ACC_VAR, 0, &key, &none, &upper), ZLR_RES_OK);
        EXPECT_EQ(lower, c.row_lower);
        EXPECT_EQ(upper, c.upper);
    }
    /* With the weight of a bound below that of the row the integer column's bound gives way, unless it may not. */
    for (const bool may : {true, false}) {
        int32_t key = 0;
        double none = 0.0, upper = 0.0;
        (void)text_with(m, "REPAIR_INTEGER_BOUNDS", may ? "ON" : "OFF", [&] {
            put("REPAIR_ROW_WEIGHT", "10");
            EXPECT_EQ(ZLR_primalrepair(task, nullptr, nullptr, nullptr, nullptr), ZLR_RES_OK);
        });
        EXPECT_EQ(ZLR_getbound(task, ZLR_ACC_VAR, 0, &key, &none, &upper), ZLR_RES_OK);
        EXPECT_EQ(upper, may ? 5.0 : 1.0);
    }
    /* Weights that are given stand for themselves. */
    const double one = 1.0, never = -1.0;
    double lower = 0.0, none = 0.0;
    int32_t key = 0;
    (void)text_with(m, "REPAIR_ROW_WEIGHT", "-1",
                    [&] { EXPECT_EQ(ZLR_primalrepair(task, &one, &one, &never, &never), ZLR_RES_OK); });
    EXPECT_EQ(ZLR_getbound(task, ZLR_ACC_CON, 0, &key, &lower, &none), ZLR_RES_OK);
    EXPECT_EQ(lower, 1.0);
}

/* Nothing may change: the clash is told. */
TEST_F(api_params, repair_of_what_may_not_change)
{
    renew();
    fill(task, clashing_model(3));
    put("REPAIR_ROW_WEIGHT", "-1");
    put("REPAIR_COLUMN_WEIGHT", "-1");
    EXPECT_EQ(ZLR_primalrepair(task, nullptr, nullptr, nullptr, nullptr), ZLR_RES_ERR_NO_REPAIR);
    EXPECT_TRUE(has(log, "what may not be changed contradicts itself")) << log;
}

TEST_F(api_params, repair_report_and_engine)
{
    api_model m = {ZLR_SENSE_MIN, std::vector<double>(25, 1.0), {}, std::vector<double>(25, 0.0), {}, {}, 0.0};
    m.upper.assign(25, 1.0);
    for (size_t i = 0; i < 25; i++) m.rows.push_back({2.0, inf, std::vector<double>(25, 0.0)});
    for (size_t i = 0; i < 25; i++) m.rows[i].a[i] = 1.0;
    const auto repair = [&] { ASSERT_EQ(ZLR_primalrepair(task, nullptr, nullptr, nullptr, nullptr), ZLR_RES_OK); };
    const std::string usual = text_with(m, nullptr, nullptr, repair);
    EXPECT_TRUE(has(usual, "and 7 more")) << usual;
    EXPECT_TRUE(has(text_with(m, "REPAIR_NAMES", "7", repair), "and 20 more"));
    EXPECT_FALSE(has(text_with(m, "REPAIR_NAMES", "25", repair), "more"));
    EXPECT_GE(lines_of(log), 26);

    EXPECT_TRUE(has(usual, "weighted sum 25") && has(text_with(m, "REPAIR_ENGINE", "OFF", repair), "weighted sum 25"));
    /* Which of the two is at work shows where the elastic form is to be solved by a method that may not do its work. */
    for (const bool asks_engine : {true, false})
        (void)text_with(m, "REPAIR_ENGINE", asks_engine ? "ON" : "OFF", [&] {
            put("OPTIMIZER", "PDLP");
            put("PRESOLVE_LEVEL", "OFF");
            put("PDLP_MAX_ITERATIONS", "1");
            EXPECT_EQ(ZLR_primalrepair(task, nullptr, nullptr, nullptr, nullptr),
                      asks_engine ? ZLR_RES_OK : ZLR_RES_TRM_MAX_ITERATIONS);
        });
}

/* ---- sensitivity */

TEST_F(api_params, sensitivity_report)
{
    static const struct {
        const char *name, *value, *part;
        bool by_default, changed;
    } cases[] = {
        {"SENSITIVITY_ROWS", "OFF", "\nRows:", true, false},   {"SENSITIVITY_BOUNDS", "OFF", "\nBounds:", true, false},
        {"SENSITIVITY_COSTS", "OFF", "\nCosts:", true, false}, {"SENSITIVITY_DIGITS", "9", "0.666666667", false, true},
        {"SENSITIVITY_DIGITS", "2", " 0.67 ", false, true},
    };
    const auto report = [&] {
        ASSERT_EQ(ZLR_optimize(task), ZLR_RES_OK);
        log.clear();
        ASSERT_EQ(ZLR_sensitivityreport(task, ZLR_STREAM_MSG), ZLR_RES_OK);
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.name) + " " + c.value);
        const std::string usual = text_with(two_rows(ZLR_SENSE_MAX), nullptr, nullptr, report);
        const std::string changed = text_with(two_rows(ZLR_SENSE_MAX), c.name, c.value, report);
        EXPECT_EQ(has(usual, c.part), c.by_default) << usual;
        EXPECT_EQ(has(changed, c.part), c.changed) << changed;
    }
}

/* x + y <= 2, x <= 1, y <= 1 by rows: the optimum (1, 1) has three rows through it, and a basis tells of two of them. */
TEST_F(api_params, sensitivity_without_moves)
{
    const api_model m = {ZLR_SENSE_MAX,
                         {1.0, 1.0},
                         {{-inf, 2.0, {1.0, 1.0}}, {-inf, 1.0, {1.0, 0.0}}, {-inf, 1.0, {0.0, 1.0}}},
                         {0.0, 0.0},
                         {inf, inf},
                         {},
                         0.0};
    const auto report = [&] {
        ASSERT_EQ(ZLR_optimize(task), ZLR_RES_OK);
        log.clear();
        (void)ZLR_sensitivityreport(task, ZLR_STREAM_MSG);
    };
    EXPECT_FALSE(has(text_with(m, nullptr, nullptr, report), "not known")) << log;
    EXPECT_TRUE(has(text_with(m, "SENSITIVITY_MOVES", "OFF", report), "not known")) << log;
}

/* ---- settings of the engine, by codes and counts of a whole run */

/* As much on the one side of each row as on the other, as nearly as can be: takes branching. */
static api_model split_model()
{
    constexpr size_t num = 14, rows = 2;
    api_model m = {ZLR_SENSE_MIN, std::vector<double>(num, 0.0), {}, std::vector<double>(num, 0.0), {}, {}, 0.0};
    m.upper.assign(num, 1.0);
    for (size_t i = 0; i < rows; i++) {
        double sum = 0.0;
        api_row row = {0.0, 0.0, {}};
        for (size_t j = 0; j < num; j++) {
            row.a.push_back(static_cast<double>(5 + (37 * j * j + 61 * i * j + 29 * (i + 1)) % 97));
            sum += row.a.back();
        }
        row.lower = row.upper = std::floor(sum / 2.0);
        m.rows.push_back(row);
    }
    for (size_t j = 0; j < num; j++) m.integers.push_back(static_cast<int32_t>(j));
    for (size_t i = 0; i < rows; i++) {
        for (const double sign : {1.0, -1.0}) {
            for (size_t k = 0; k < rows; k++) m.rows[k].a.push_back(k == i ? sign : 0.0);
            m.c.push_back(1.0);
            m.lower.push_back(0.0);
            m.upper.push_back(inf);
        }
    }
    return m;
}

TEST_F(api_params, limits_of_the_engine_have_their_codes)
{
    int32_t code = -1;
    const auto run = [&] { code = ZLR_optimize(task); };
    (void)text_with(split_model(), nullptr, nullptr, run);
    EXPECT_EQ(code, ZLR_RES_OK);
    (void)text_with(split_model(), "MIP_MAX_LEAVES", "1", run);
    EXPECT_EQ(code, ZLR_RES_TRM_MAX_NODES);
    (void)text_with(two_rows(ZLR_SENSE_MIN), "ENGINE_LARGE_COEF", "4", run);
    EXPECT_EQ(code, ZLR_RES_OK);
    const std::string refused = text_with(two_rows(ZLR_SENSE_MIN), "ENGINE_LARGE_COEF", "2", run);
    EXPECT_EQ(code, ZLR_RES_ERR_ENGINE);
    EXPECT_TRUE(has(refused, "does not take the model")) << refused;
}
