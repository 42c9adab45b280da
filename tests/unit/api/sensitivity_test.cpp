/* sensitivity_test.cpp - prices and ranges against published examples and against solving again. */
#include "api_support.h"
#include "random_problem.h"
#include "support/files.h"

struct arrays {
    explicit arrays(size_t num) : left_price(num), right_price(num), left_range(num), right_range(num) {}
    std::vector<double> left_price, right_price, left_range, right_range;
};

/* The example of the lp_solve reference guide's page on sensitivity. */
static const api_model published = {
    ZLR_SENSE_MIN,
    {1.0, 3.0, 6.24, 0.1},
    {{92.3, inf, {0.0, 78.26, 0.0, 2.9}}, {-inf, 14.8, {0.24, 0.0, 11.31, 0.0}}, {4.0, inf, {12.68, 0.0, 0.08, 0.9}}},
    {28.6, 0.0, 0.0, 18.0},
    {inf, inf, inf, 48.98},
    {},
    0.0};

TEST_F(api_optimize, sensitivity_of_the_published_example)
{
    const int32_t rows[] = {0, 1, 2}, row_marks[] = {0, 1, 0}, columns[] = {0, 1, 2, 3, 3}, marks[] = {0, 0, 0, 0, 1};
    arrays row(3), column(5), cost(4);
    fill(task, published);
    EXPECT_EQ(ZLR_dualsensitivity(task, 4, columns, nullptr, nullptr, nullptr, nullptr), ZLR_RES_ERR_NO_SOLUTION);
    ASSERT_EQ(ZLR_optimize(task), 0);
    ASSERT_EQ(ZLR_primalsensitivity(task, 3, rows, row_marks, 5, columns, marks, row.left_price.data(),
                                    row.right_price.data(), row.left_range.data(), row.right_range.data(),
                                    column.left_price.data(), column.right_price.data(), column.left_range.data(),
                                    column.right_range.data()),
              0);
    ASSERT_EQ(ZLR_dualsensitivity(task, 4, columns, cost.left_price.data(), cost.right_price.data(),
                                  cost.left_range.data(), cost.right_range.data()),
              0);
    EXPECT_NEAR(row.left_price[0], 0.03448276, 1e-8);
    EXPECT_NEAR(row.right_price[0], 0.03448276, 1e-8);
    EXPECT_NEAR(92.3 + row.left_range[0], 52.2, 1e-6);
    EXPECT_NEAR(92.3 + row.right_range[0], 142.042, 1e-6);
    EXPECT_EQ(row.left_price[1], 0.0);
    EXPECT_NEAR(14.8 + row.left_range[1], 6.864, 1e-9); /* the activity */
    EXPECT_EQ(row.right_range[1], inf);
    EXPECT_EQ(row.left_range[2], -inf);
    const double till[] = {61.66667, 0.5123946, 0.7016799}, from[] = {-1.943598, -0.6355993, -4841.16};
    const double price[] = {1.0, 0.3013793, 6.24}, at[] = {28.6, 0.0, 0.0};
    for (size_t k = 0; k < 3; k++) {
        EXPECT_NEAR(column.left_price[k], price[k], 1e-7);
        EXPECT_NEAR(at[k] + column.right_range[k], till[k], 1e-5);
        EXPECT_NEAR(at[k] + column.left_range[k], from[k], 1e-2);
    }
    EXPECT_NEAR(0.1 + cost.right_range[3], 0.1111679, 1e-7);
    EXPECT_NEAR(3.0 + cost.left_range[1], 2.698621, 1e-6);
    EXPECT_EQ(cost.right_range[1], inf);
    EXPECT_NEAR(cost.left_price[3], 31.8276, 1e-4);
}

/* Optimal value with one number of a random problem changed; infinite where there is none. */
static double value_with(ZLR_env *env, const exact_problem *p, int32_t what, size_t k, bool is_upper, double value)
{
    ZLR_task *task = nullptr;
    double objective = std::nan("");
    int32_t solsta = -1;
    EXPECT_EQ(ZLR_makeemptytask(env, &task), 0);
    random_fill(task, p);
    const auto index = static_cast<int32_t>(k);
    if (what == 2) {
        EXPECT_EQ(ZLR_putclist(task, 1, &index, &value), 0);
    } else {
        double lower = random_side(what == 0 ? p->row_lower[k] : p->var_lower[k]);
        double upper = random_side(what == 0 ? p->row_upper[k] : p->var_upper[k]);
        const bool together = lower == upper;
        if (together || !is_upper) lower = value;
        if (together || is_upper) upper = value;
        EXPECT_EQ((what == 0 ? ZLR_putconbound : ZLR_putvarbound)(task, index, key_of(lower, upper), lower, upper), 0);
    }
    EXPECT_EQ(ZLR_optimize(task), 0);
    EXPECT_EQ(ZLR_getsolsta(task, ZLR_SOL_BAS, &solsta), 0);
    if (solsta == ZLR_SOLSTA_OPTIMAL) {
        EXPECT_EQ(ZLR_getprimalobj(task, ZLR_SOL_BAS, &objective), 0);
    }
    ZLR_deletetask(&task);
    return objective;
}

struct probe {
    ZLR_env *env;
    const exact_problem *p;
    int32_t what;
    size_t k;
    bool is_upper;
    double value, objective;
};

/* The slope holds to the end of the range, and not beyond it. */
static void expect_side(const probe &at, double price, double range, bool right)
{
    if (std::isinf(price)) {
        EXPECT_EQ(range, 0.0);
        EXPECT_TRUE(
            std::isnan(value_with(at.env, at.p, at.what, at.k, at.is_upper, at.value + (right ? 1e-3 : -1e-3))));
        return;
    }
    const double end = std::isinf(range) ? (right ? 50.0 : -50.0) : range;
    EXPECT_GE(right ? end : -end, 0.0);
    for (const double share : {0.5, 1.0}) {
        const double found = value_with(at.env, at.p, at.what, at.k, at.is_upper, at.value + share * end);
        EXPECT_NEAR(found, at.objective + price * share * end, 1e-5 * (1.0 + std::fabs(found))) << "at " << share;
    }
    if (std::isinf(range)) return;
    const double step = right ? 0.01 : -0.01;
    const double beyond = value_with(at.env, at.p, at.what, at.k, at.is_upper, at.value + range + step);
    const bool goes_on = std::fabs(beyond - (at.objective + price * (range + step))) < 1e-7;
    /* A side that is not met has no price up to the activity; beyond, another optimal point may do as well. */
    EXPECT_TRUE(!goes_on || price == 0.0) << "range " << range << " price " << price;
}

TEST(sensitivity, random_problems_against_solving_again)
{
    int32_t num_items = 0, num_split = 0;
    ZLR_env *env = nullptr;
    ASSERT_EQ(ZLR_makeenv(&env, nullptr), 0);
    const auto count = static_cast<uint64_t>(random_env("ZELOR_RANDOM_COUNT", 250));
    for (uint64_t seed = 1; seed <= count && !::testing::Test::HasFailure(); seed++) {
        exact_problem p = random_problem(seed);
        p.is_int.assign(p.is_int.size(), false);
        if (exact_solve(&p).status != EXACT_OPTIMAL) continue;
        ZLR_task *task = nullptr;
        double objective = 0.0;
        ASSERT_EQ(ZLR_makeemptytask(env, &task), 0);
        random_fill(task, &p);
        ASSERT_EQ(ZLR_optimize(task), 0);
        ASSERT_EQ(ZLR_getprimalobj(task, ZLR_SOL_BAS, &objective), 0);
        for (int32_t what = 0; what < 3; what++) {
            const size_t size = what == 0 ? p.row.size() : p.c.size();
            for (size_t k = 0; k < size; k++) {
                for (const bool is_upper : {false, true}) {
                    if (what == 2 && is_upper) continue;
                    const double value = what == 2 ? static_cast<double>(p.c[k])
                                                   : random_side(what == 0 ? (is_upper ? p.row_upper : p.row_lower)[k]
                                                                           : (is_upper ? p.var_upper : p.var_lower)[k]);
                    if (std::isinf(value)) continue;
                    const auto index = static_cast<int32_t>(k);
                    const int32_t mark = is_upper ? 1 : 0;
                    double lp = 0.0, rp = 0.0, lr = 0.0, rr = 0.0;
                    SCOPED_TRACE("seed " + std::to_string(seed) + " what " + std::to_string(what) + " number " +
                                 std::to_string(k) + (is_upper ? " upper" : " lower"));
                    if (what == 0)
                        ASSERT_EQ(ZLR_primalsensitivity(task, 1, &index, &mark, 0, nullptr, nullptr, &lp, &rp, &lr, &rr,
                                                        nullptr, nullptr, nullptr, nullptr),
                                  0);
                    else if (what == 1)
                        ASSERT_EQ(ZLR_primalsensitivity(task, 0, nullptr, nullptr, 1, &index, &mark, nullptr, nullptr,
                                                        nullptr, nullptr, &lp, &rp, &lr, &rr),
                                  0);
                    else
                        ASSERT_EQ(ZLR_dualsensitivity(task, 1, &index, &lp, &rp, &lr, &rr), 0);
                    const probe at = {env, &p, what, k, is_upper, value, objective};
                    expect_side(at, lp, lr, false);
                    expect_side(at, rp, rr, true);
                    num_items++;
                    num_split += lp != rp ? 1 : 0;
                }
            }
        }
        EXPECT_EQ(ZLR_deletetask(&task), 0);
    }
    EXPECT_GT(num_items, 300);
    EXPECT_GT(num_split, 20); /* degenerate ones, where a basis alone would tell nothing */
    EXPECT_EQ(ZLR_deleteenv(&env), 0);
}

TEST_F(api_optimize, sensitivity_report_by_file)
{
    const temp_folder folder;
    fill(task, published);
    ASSERT_EQ(ZLR_putconname(task, 0, "this row"), 0);
    ASSERT_EQ(ZLR_putvarname(task, 3, "a_column_with_a_long_name"), 0);
    ASSERT_EQ(ZLR_optimize(task), 0);
    ASSERT_TRUE(
        file_write(folder.file("ask"), "# only these\nrow \"this row\" lower\n  cost a_column_with_a_long_name\n"));
    ASSERT_EQ(ZLR_putparam(task, "SENSITIVITY_FILE", folder.file("ask").c_str()), 0);
    ASSERT_EQ(ZLR_putparam(task, "SENSITIVITY_RES_FILE", folder.file("out").c_str()), 0);
    log.clear();
    ASSERT_EQ(ZLR_sensitivityreport(task, ZLR_STREAM_LOG), 0);
    const std::string text = file_read(folder.file("out"));
    EXPECT_EQ(text, log);
    EXPECT_NE(text.find("this row       lower        92.3    0.034483    0.034483        52.2      142.04\n"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("a_column_with_a_long_name\n"), std::string::npos) << text;
    EXPECT_EQ(text.find("\nx1 "), std::string::npos) << text;
    for (const auto &[line, want] : std::vector<std::pair<const char *, const char *>>{
             {"row nosuch\n", "(1): the problem has no row 'nosuch'"},
             {"\nbound x1 sideways\n", "(2): found 'sideways' where lower or upper was expected"},
             {"cost\n", "(1): a name is missing behind cost"},
             {"rows \"open\n", "(1): the closing quote is missing"},
             {"everything\n", "(1): found 'everything' where"}}) {
        ASSERT_TRUE(file_write(folder.file("ask"), line));
        log.clear();
        EXPECT_EQ(ZLR_sensitivityreport(task, ZLR_STREAM_LOG), ZLR_RES_ERR_FILE_FORMAT);
        EXPECT_NE(log.find(want), std::string::npos) << log;
    }
    ASSERT_EQ(ZLR_putparam(task, "SENSITIVITY_FILE", folder.file("none").c_str()), 0);
    EXPECT_EQ(ZLR_sensitivityreport(task, ZLR_STREAM_LOG), ZLR_RES_ERR_FILE_READ);
    ASSERT_EQ(ZLR_putvartype(task, 0, ZLR_VAR_INT), 0);
    EXPECT_EQ(ZLR_sensitivityreport(task, ZLR_STREAM_LOG), ZLR_RES_ERR_FILE_READ);
}

/* The example of the GLPK reference manual: activity ranges of nonbasic rows, cost ranges of columns. */
TEST_F(api_optimize, sensitivity_of_the_published_plan)
{
    const std::string file = ZELOR_DATA_DIR "/ranging/plan.mps";
    if (!file_exists(file)) GTEST_SKIP() << "no data";
    ASSERT_EQ(ZLR_readdata(task, file.c_str()), 0);
    ASSERT_EQ(ZLR_optimize(task), 0);
    const struct {
        const char *name;
        int32_t mark;
        double value, price, from, till;
    } rows[] = {{"YIELD", 0, 2000.0, -0.0136, 1995.06864, 2014.03479},
                {"FE", 1, 60.0, -2.56823, 55.89016, 62.69978},
                {"MN", 1, 40.0, -0.5444, 34.42336, 41.68691},
                {"AL", 0, 1500.0, 0.25199, 1485.78425, 1504.92126},
                {"SI", 0, 250.0, 0.4852, 235.32871, 255.06073}};
    const struct {
        const char *name;
        double value, from, till;
    } costs[] = {{"BIN1", 0.03, -0.22362, inf},      {"BIN2", 0.08, 0.01722, 0.08863}, {"BIN3", 0.17, 0.15982, 0.17948},
                 {"BIN4", 0.12, 0.10899, 0.14651},   {"BIN5", 0.15, 0.13544, inf},     {"ALUM", 0.21, 0.18885, 0.22622},
                 {"SILICON", 0.38, 0.14828, 0.46667}};
    int32_t num_rows = 0, num_columns = 0, found = 0;
    char name[64];
    ASSERT_EQ(ZLR_getnumcon(task, &num_rows), 0);
    ASSERT_EQ(ZLR_getnumvar(task, &num_columns), 0);
    for (int32_t i = 0; i < num_rows; i++) {
        ASSERT_EQ(ZLR_getconname(task, i, sizeof name, name), 0);
        for (const auto &want : rows) {
            if (std::string(name) != want.name) continue;
            SCOPED_TRACE(name);
            double lp = 0.0, rp = 0.0, lr = 0.0, rr = 0.0;
            ASSERT_EQ(ZLR_primalsensitivity(task, 1, &i, &want.mark, 0, nullptr, nullptr, &lp, &rp, &lr, &rr, nullptr,
                                            nullptr, nullptr, nullptr),
                      0);
            EXPECT_NEAR(lp, want.price, 1e-5);
            EXPECT_NEAR(rp, want.price, 1e-5);
            EXPECT_NEAR(want.value + lr, want.from, 1e-5);
            EXPECT_NEAR(want.value + rr, want.till, 1e-5);
            found++;
        }
    }
    for (int32_t j = 0; j < num_columns; j++) {
        ASSERT_EQ(ZLR_getvarname(task, j, sizeof name, name), 0);
        for (const auto &want : costs) {
            if (std::string(name) != want.name) continue;
            SCOPED_TRACE(name);
            double lr = 0.0, rr = 0.0;
            ASSERT_EQ(ZLR_dualsensitivity(task, 1, &j, nullptr, nullptr, &lr, &rr), 0);
            EXPECT_NEAR(want.value + lr, want.from, 1e-5);
            if (std::isinf(want.till)) {
                EXPECT_EQ(rr, inf);
            } else {
                EXPECT_NEAR(want.value + rr, want.till, 1e-5);
            }
            found++;
        }
    }
    EXPECT_EQ(found, 12);
}
