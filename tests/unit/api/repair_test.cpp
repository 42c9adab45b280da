/* repair_test.cpp - the primal repair against an elastic model of the tests' own. */
#include "api_support.h"
#include "random_problem.h"

#include <random>

/* The least weighted sum of changes, by a task that has a slack for each side that may give way. Bounds become rows. */
static double elastic_optimum(ZLR_env *env, const exact_problem *p, const std::vector<double> *weights)
{
    api_model m = {ZLR_SENSE_MIN, {}, {}, {}, {}, {}, 0.0};
    const auto columns = static_cast<size_t>(p->num_var), rows = p->row.size();
    for (size_t i = 0; i < rows + columns; i++) { /* a row for each side */
        const bool is_row = i < rows;
        api_row row = {-inf, inf, std::vector<double>(columns, 0.0)};
        for (size_t j = 0; j < columns; j++)
            row.a[j] = is_row ? static_cast<double>(p->row[i][j]) : (j == i - rows ? 1.0 : 0.0);
        m.rows.push_back(row);
        m.rows.back().lower = random_side(is_row ? p->row_lower[i] : p->var_lower[i - rows]);
        m.rows.push_back(row);
        m.rows.back().upper = random_side(is_row ? p->row_upper[i] : p->var_upper[i - rows]);
    }
    m.c.assign(columns, 0.0);
    m.lower.assign(columns, -inf);
    m.upper.assign(columns, inf);
    for (size_t j = 0; j < columns; j++)
        if (p->is_int[j]) m.integers.push_back(static_cast<int32_t>(j));
    for (size_t i = 0; i < rows + columns; i++) {
        for (const bool is_upper : {false, true}) {
            const size_t which = i < rows ? (is_upper ? 1U : 0U) : (is_upper ? 3U : 2U);
            const double weight = weights == nullptr ? 1.0 : weights[which][i < rows ? i : i - rows];
            if (weight < 0.0) continue;
            for (size_t k = 0; k < m.rows.size(); k++)
                m.rows[k].a.push_back(k == 2 * i + (is_upper ? 1 : 0) ? (is_upper ? -1.0 : 1.0) : 0.0);
            m.c.push_back(weight);
            m.lower.push_back(0.0);
            m.upper.push_back(inf);
        }
    }
    ZLR_task *task = nullptr;
    double optimum = std::nan("");
    int32_t solsta = -1;
    const int32_t kind = m.integers.empty() ? ZLR_SOL_BAS : ZLR_SOL_ITG;
    EXPECT_EQ(ZLR_makeemptytask(env, &task), 0);
    fill(task, m);
    EXPECT_EQ(ZLR_putparam(task, "MIP_REL_GAP", "0"), 0);
    EXPECT_EQ(ZLR_optimize(task), 0);
    EXPECT_EQ(ZLR_getsolsta(task, kind, &solsta), 0);
    if (solsta != ZLR_SOLSTA_PRIM_INFEAS_CER) {
        EXPECT_EQ(ZLR_getprimalobj(task, kind, &optimum), 0);
    }
    ZLR_deletetask(&task);
    return optimum;
}

/* What was changed, weighted; -1 where a side that may not change has. */
static double change_of(ZLR_task *task, const exact_problem *p, const std::vector<double> *weights)
{
    double total = 0.0;
    const auto add = [&](double before, double after, bool is_upper, size_t which, size_t k) {
        if (before == after) return;
        const double weight = weights == nullptr ? 1.0 : weights[which][k];
        EXPECT_GE(weight, 0.0);
        EXPECT_GT(is_upper ? after - before : before - after, 0.0) << "only a relaxation is a repair";
        total += weight * std::fabs(after - before);
    };
    for (size_t i = 0; i < p->row.size() + p->c.size(); i++) {
        const bool is_row = i < p->row.size();
        const size_t k = is_row ? i : i - p->row.size();
        int32_t key = 0;
        double lower = 0.0, upper = 0.0;
        EXPECT_EQ(ZLR_getbound(task, is_row ? ZLR_ACC_CON : ZLR_ACC_VAR, static_cast<int32_t>(k), &key, &lower, &upper),
                  0);
        add(random_side(is_row ? p->row_lower[k] : p->var_lower[k]), lower, false, is_row ? 0 : 2, k);
        add(random_side(is_row ? p->row_upper[k] : p->var_upper[k]), upper, true, is_row ? 1 : 3, k);
    }
    return total;
}

static void draw_weights(std::mt19937_64 *rng, const exact_problem *p, std::vector<double> *weights)
{
    for (size_t which = 0; which < 4; which++)
        for (size_t k = 0; k < (which < 2 ? p->row.size() : p->c.size()); k++)
            weights[which].push_back((*rng)() % 4 == 0 ? -1.0 : static_cast<double>((*rng)() % 5));
}

static void repair_random(ZLR_env *env, uint64_t seed, bool weighted, int32_t *num_repaired, int32_t *num_clash)
{
    std::mt19937_64 rng(seed);
    const exact_problem p = random_problem(seed);
    std::vector<double> weights[4];
    if (weighted) draw_weights(&rng, &p, weights);
    const std::vector<double> *given = weighted ? weights : nullptr;
    bool mixed = false;
    for (const bool is_int : p.is_int) mixed = mixed || is_int;

    ZLR_task *task = nullptr;
    ASSERT_EQ(ZLR_makeemptytask(env, &task), 0);
    random_fill(task, &p);
    ASSERT_EQ(ZLR_putparam(task, "ANALYZE_INFEAS_TIME_LIMIT", "1"), 0);
    const int32_t code =
        ZLR_primalrepair(task, weighted ? weights[0].data() : nullptr, weighted ? weights[1].data() : nullptr,
                         weighted ? weights[2].data() : nullptr, weighted ? weights[3].data() : nullptr);
    const double optimum = elastic_optimum(env, &p, given);
    const double change = change_of(task, &p, given);
    if (std::isnan(optimum)) {
        EXPECT_EQ(code, ZLR_RES_ERR_NO_REPAIR);
        EXPECT_EQ(change, 0.0);
        (*num_clash)++;
    } else {
        EXPECT_EQ(code, 0);
        EXPECT_NEAR(change, optimum, 1e-6 * (1.0 + optimum));
        int32_t solsta = -1;
        EXPECT_EQ(ZLR_optimize(task), 0);
        EXPECT_EQ(ZLR_getsolsta(task, mixed ? ZLR_SOL_ITG : ZLR_SOL_BAS, &solsta), 0);
        EXPECT_NE(solsta, ZLR_SOLSTA_PRIM_INFEAS_CER);
        *num_repaired += optimum > 1e-7 ? 1 : 0;
    }
    EXPECT_EQ(ZLR_deletetask(&task), 0);
}

TEST(repair, random_problems_change_as_little_as_an_elastic_model)
{
    int32_t num_repaired = 0, num_clash = 0;
    ZLR_env *env = nullptr;
    ASSERT_EQ(ZLR_makeenv(&env, nullptr), 0);
    const auto count = static_cast<uint64_t>(random_env("ZELOR_RANDOM_COUNT", 400));
    for (uint64_t seed = 1; seed <= count && !::testing::Test::HasFailure(); seed++) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        repair_random(env, seed, seed % 2 == 0, &num_repaired, &num_clash);
    }
    EXPECT_GT(num_repaired, 50);
    EXPECT_GT(num_clash, 5);
    EXPECT_EQ(ZLR_deleteenv(&env), 0);
}

/* A row that nothing comes near, with one weight a side: no engine's own relaxation serves that, so that the elastic form
 * answers. */
static double repaired_total(ZLR_env *env, const exact_problem *p, bool by_elastic_form)
{
    exact_problem whole = *p;
    if (by_elastic_form) {
        whole.row.emplace_back(p->c.size(), 1);
        whole.row_lower.push_back(-100000);
        whole.row_upper.push_back(100000);
    }
    const std::vector<double> lower(whole.row.size(), 1.0);
    std::vector<double> upper(lower);
    if (by_elastic_form) upper.back() = 2.0;
    std::vector<double> weights[4] = {lower, upper, std::vector<double>(p->c.size(), 1.0),
                                      std::vector<double>(p->c.size(), 1.0)};
    ZLR_task *task = nullptr;
    EXPECT_EQ(ZLR_makeemptytask(env, &task), 0);
    random_fill(task, &whole);
    EXPECT_EQ(ZLR_primalrepair(task, weights[0].data(), weights[1].data(), weights[2].data(), weights[3].data()), 0);
    const double total = change_of(task, &whole, weights);
    EXPECT_EQ(ZLR_deletetask(&task), 0);
    return total;
}

TEST(repair, engines_own_relaxation_and_elastic_form_come_to_the_same_total)
{
    int32_t num_repaired = 0;
    ZLR_env *env = nullptr;
    ASSERT_EQ(ZLR_makeenv(&env, nullptr), 0);
    for (uint64_t seed = 1; seed <= 1000 && !::testing::Test::HasFailure(); seed++) {
        const exact_problem p = random_problem(seed);
        bool mixed = false;
        for (const bool is_int : p.is_int) mixed = mixed || is_int;
        if (mixed) continue;
        SCOPED_TRACE("seed " + std::to_string(seed));
        const double elastic = repaired_total(env, &p, true);
        EXPECT_NEAR(repaired_total(env, &p, false), elastic, 1e-6 * (1.0 + elastic));
        num_repaired += elastic > 1e-7 ? 1 : 0;
    }
    EXPECT_GT(num_repaired, 50);
    EXPECT_EQ(ZLR_deleteenv(&env), 0);
}

/* x0 + x1 >= 4 with x <= 1 each. */
static const api_model clash = {ZLR_SENSE_MIN, {1.0, 2.0}, {{4.0, inf, {1.0, 1.0}}}, {0.0, 0.0}, {1.0, 1.0}, {}, 0.0};

TEST_F(api_optimize, repair_tells_what_it_changes_by_name)
{
    const double may_not[] = {-1.0, -1.0};
    const double prices[] = {1.0, 5.0};
    fill(task, clash);
    ASSERT_EQ(ZLR_putvarname(task, 0, "a.b/c"), 0);
    log.clear();
    ASSERT_EQ(ZLR_primalrepair(task, may_not, may_not, may_not, prices), 0);
    EXPECT_NE(log.find("0 sides of rows and 1 bound changed, weighted sum 2"), std::string::npos) << log;
    EXPECT_NE(log.find("column a.b/c upper bound 1 becomes 3 (+2)"), std::string::npos) << log;
    log.clear();
    ASSERT_EQ(ZLR_primalrepair(task, nullptr, nullptr, nullptr, nullptr), 0);
    EXPECT_NE(log.find("nothing to change"), std::string::npos) << log;
    ASSERT_EQ(ZLR_optimize(task), 0);
    EXPECT_EQ(get_solution(task, ZLR_SOL_BAS).solsta, ZLR_SOLSTA_OPTIMAL);
    EXPECT_NEAR(get_solution(task, ZLR_SOL_BAS).primal, 5.0, 1e-7);
}

TEST_F(api_optimize, repair_that_is_not_allowed_names_the_clash)
{
    const double may_not[] = {-1.0, -1.0}, not_a_number[] = {1.0, std::nan("")};
    fill(task, clash);
    EXPECT_EQ(ZLR_primalrepair(task, nullptr, nullptr, nullptr, not_a_number), ZLR_RES_ERR_NAN);
    log.clear();
    EXPECT_EQ(ZLR_primalrepair(task, may_not, may_not, nullptr, may_not), ZLR_RES_ERR_NO_REPAIR);
    EXPECT_NE(log.find("c1: x1 + x2 >= 4"), std::string::npos) << log;
    EXPECT_NE(log.find("x2 <= 1"), std::string::npos) << log;
    EXPECT_EQ(log.find("x2 >= 0"), std::string::npos) << log;
    int32_t key = 0;
    double lower = 0.0, upper = 0.0;
    ASSERT_EQ(ZLR_getbound(task, ZLR_ACC_CON, 0, &key, &lower, &upper), 0);
    EXPECT_EQ(lower, 4.0);
}
