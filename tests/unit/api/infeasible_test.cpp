/* infeasible_test.cpp - infeasible subproblems: infeasible by exact arithmetic, feasible without any one member. */
#include "api_support.h"
#include "random_problem.h"

#include <cstdlib>

/* What a subproblem keeps of a random problem, whose rows and columns it names by number. */
struct kept_part {
    exact_problem p;
    std::vector<std::pair<std::vector<int64_t> *, size_t>> members; /* sides that are there */
};

static int32_t number_of(const char *name) { return std::atoi(name + 1) - 1; }

static void read_part(ZLR_task *sub, const exact_problem *whole, kept_part *part)
{
    int32_t rows = 0, columns = 0, key = 0;
    double lower = 0.0, upper = 0.0;
    char name[64];
    std::vector<size_t> column;

    ASSERT_EQ(ZLR_getnumcon(sub, &rows), 0);
    ASSERT_EQ(ZLR_getnumvar(sub, &columns), 0);
    exact_problem &p = part->p;
    p.num_var = columns;
    const auto number = [](double side) {
        return std::isinf(side) ? (side > 0 ? exact_none : -exact_none) : static_cast<int64_t>(side);
    };
    for (int32_t j = 0; j < columns; j++) {
        ASSERT_EQ(ZLR_getvarname(sub, j, sizeof name, name), 0);
        column.push_back(static_cast<size_t>(number_of(name)));
        ASSERT_EQ(ZLR_getbound(sub, ZLR_ACC_VAR, j, &key, &lower, &upper), 0);
        p.var_lower.push_back(number(lower));
        p.var_upper.push_back(number(upper));
        p.c.push_back(0);
        p.is_int.push_back(whole->is_int[column.back()]);
        if (std::isfinite(lower)) {
            EXPECT_EQ(number(lower), whole->var_lower[column.back()]);
        }
        if (std::isfinite(upper)) {
            EXPECT_EQ(number(upper), whole->var_upper[column.back()]);
        }
    }
    for (int32_t i = 0; i < rows; i++) {
        ASSERT_EQ(ZLR_getconname(sub, i, sizeof name, name), 0);
        const auto row = static_cast<size_t>(number_of(name));
        ASSERT_EQ(ZLR_getbound(sub, ZLR_ACC_CON, i, &key, &lower, &upper), 0);
        p.row_lower.push_back(number(lower));
        p.row_upper.push_back(number(upper));
        p.row.emplace_back();
        for (const size_t j : column) p.row.back().push_back(whole->row[row][j]);
    }
    for (std::vector<int64_t> *sides : {&p.row_lower, &p.row_upper, &p.var_lower, &p.var_upper})
        for (size_t k = 0; k < sides->size(); k++)
            if ((*sides)[k] != exact_none && (*sides)[k] != -exact_none) part->members.emplace_back(sides, k);
}

/* The enumeration takes bounded integer columns only. */
static bool is_exact(const exact_problem *p)
{
    for (size_t j = 0; j < p->is_int.size(); j++)
        if (p->is_int[j] && (p->var_lower[j] == -exact_none || p->var_upper[j] == exact_none)) return false;
    return true;
}

static bool is_infeasible(ZLR_env *env, const exact_problem *p)
{
    if (is_exact(p)) return exact_solve(p).status == EXACT_INFEASIBLE;
    ZLR_task *task = nullptr;
    int32_t solsta = -1;
    EXPECT_EQ(ZLR_makeemptytask(env, &task), 0);
    random_fill(task, p);
    EXPECT_EQ(ZLR_optimize(task), 0);
    EXPECT_EQ(ZLR_getsolsta(task, ZLR_SOL_ITG, &solsta), 0);
    ZLR_deletetask(&task);
    return solsta == ZLR_SOLSTA_PRIM_INFEAS_CER;
}

static void expect_irreducible(ZLR_env *env, ZLR_task *sub, const exact_problem *whole)
{
    kept_part part;
    ASSERT_NO_FATAL_FAILURE(read_part(sub, whole, &part));
    ASSERT_FALSE(part.members.empty());
    EXPECT_TRUE(is_infeasible(env, &part.p));
    for (const auto &[sides, k] : part.members) {
        const int64_t value = (*sides)[k];
        const bool is_upper = sides == &part.p.row_upper || sides == &part.p.var_upper;
        (*sides)[k] = is_upper ? exact_none : -exact_none;
        EXPECT_FALSE(is_infeasible(env, &part.p))
            << "member " << (is_upper ? "<= " : ">= ") << value << " is not needed";
        (*sides)[k] = value;
    }
}

TEST(infeasible, random_subproblems_are_irreducible)
{
    const int64_t count = random_env("ZELOR_RANDOM_COUNT", 1000);
    int32_t num_continuous = 0, num_mixed = 0;
    ZLR_env *env = nullptr;
    ASSERT_EQ(ZLR_makeenv(&env, nullptr), 0);
    for (int64_t seed = 1; seed <= count && !::testing::Test::HasFailure(); seed++) {
        const exact_problem p = random_problem(static_cast<uint64_t>(seed));
        if (exact_solve(&p).status != EXACT_INFEASIBLE) continue;
        SCOPED_TRACE("seed " + std::to_string(seed));
        bool mixed = false;
        for (const bool is_int : p.is_int) mixed = mixed || is_int;
        (mixed ? num_mixed : num_continuous)++;
        ZLR_task *task = nullptr, *sub = nullptr;
        ASSERT_EQ(ZLR_makeemptytask(env, &task), 0);
        random_fill(task, &p);
        EXPECT_EQ(ZLR_optimize(task), 0);
        EXPECT_EQ(ZLR_putparam(task, "ANALYZE_INFEAS_TIME_LIMIT", "4"), 0);
        EXPECT_EQ(ZLR_getinfeasiblesubproblem(task, mixed ? ZLR_SOL_ITG : ZLR_SOL_BAS, &sub), 0);
        if (sub != nullptr) expect_irreducible(env, sub, &p);
        EXPECT_EQ(ZLR_deletetask(&sub), 0);
        EXPECT_EQ(ZLR_deletetask(&task), 0);
    }
    EXPECT_GT(num_continuous, 30);
    EXPECT_GT(num_mixed, 30);
    EXPECT_EQ(ZLR_deleteenv(&env), 0);
}

TEST(infeasible, random_unbounded_subproblems_are_unbounded)
{
    int32_t num = 0;
    ZLR_env *env = nullptr;
    ASSERT_EQ(ZLR_makeenv(&env, nullptr), 0);
    for (uint64_t seed = 1; seed <= 600; seed++) {
        const exact_problem p = random_problem(seed);
        bool mixed = false;
        for (const bool is_int : p.is_int) mixed = mixed || is_int;
        if (mixed || exact_solve(&p).status != EXACT_UNBOUNDED) continue;
        SCOPED_TRACE("seed " + std::to_string(seed));
        ZLR_task *task = nullptr, *sub = nullptr;
        int32_t solsta = -1, columns = 0;
        ASSERT_EQ(ZLR_makeemptytask(env, &task), 0);
        random_fill(task, &p);
        EXPECT_EQ(ZLR_optimize(task), 0);
        ASSERT_EQ(ZLR_getinfeasiblesubproblem(task, ZLR_SOL_BAS, &sub), 0);
        EXPECT_EQ(ZLR_getnumvar(sub, &columns), 0);
        EXPECT_GT(columns, 0);
        EXPECT_EQ(ZLR_optimize(sub), 0);
        EXPECT_EQ(ZLR_getsolsta(sub, ZLR_SOL_BAS, &solsta), 0);
        EXPECT_EQ(solsta, ZLR_SOLSTA_DUAL_INFEAS_CER);
        EXPECT_EQ(ZLR_deletetask(&sub), 0);
        EXPECT_EQ(ZLR_deletetask(&task), 0);
        num++;
    }
    EXPECT_GT(num, 30);
    EXPECT_EQ(ZLR_deleteenv(&env), 0);
}

/* x0 + x1 >= 4 with x <= 1 each; a third row and its column have nothing to do with it. */
static const api_model small_clash = {ZLR_SENSE_MIN,
                                      {1.0, 1.0, 1.0},
                                      {{4.0, inf, {1.0, 1.0, 0.0}}, {-inf, 9.0, {0.0, 1.0, 1.0}}},
                                      {0.0, 0.0, 0.0},
                                      {1.0, 1.0, 5.0},
                                      {},
                                      0.0};

TEST_F(api_optimize, infeasible_subproblem_is_told_and_named)
{
    ZLR_task *sub = nullptr;
    int32_t rows = 0, columns = 0, key = 0;
    double lower = 0.0, upper = 0.0;
    fill(task, small_clash);
    ASSERT_EQ(ZLR_putconname(task, 0, "demand"), 0);
    ASSERT_EQ(ZLR_putvarname(task, 1, "x.2"), 0);
    EXPECT_EQ(ZLR_getinfeasiblesubproblem(task, ZLR_SOL_BAS, &sub), ZLR_RES_ERR_NO_SOLUTION);
    ASSERT_EQ(ZLR_optimize(task), 0);
    EXPECT_EQ(ZLR_getinfeasiblesubproblem(task, 3, &sub), ZLR_RES_ERR_ARGUMENT);
    EXPECT_EQ(ZLR_getinfeasiblesubproblem(task, ZLR_SOL_BAS, nullptr), ZLR_RES_ERR_NULL_POINTER);
    log.clear();
    ASSERT_EQ(ZLR_getinfeasiblesubproblem(task, ZLR_SOL_BAS, &sub), 0);
    EXPECT_NE(log.find("1 side of a row and 2 bounds, 2 columns"), std::string::npos) << log;
    EXPECT_NE(log.find("irreducible"), std::string::npos) << log;
    EXPECT_NE(log.find("  demand: x1 + x.2 >= 4\n"), std::string::npos) << log;
    EXPECT_NE(log.find("  x.2 <= 1\n"), std::string::npos) << log;
    ASSERT_EQ(ZLR_getnumcon(sub, &rows), 0);
    ASSERT_EQ(ZLR_getnumvar(sub, &columns), 0);
    EXPECT_EQ(rows, 1);
    EXPECT_EQ(columns, 2);
    ASSERT_EQ(ZLR_getbound(sub, ZLR_ACC_VAR, 0, &key, &lower, &upper), 0);
    EXPECT_EQ(key, ZLR_BK_UP);
    EXPECT_EQ(upper, 1.0);
    EXPECT_EQ(ZLR_deletetask(&sub), 0);
}

/* Sides that look the same with few digits contradict each other. */
TEST_F(api_optimize, infeasible_subproblem_shows_sides_with_all_digits)
{
    ZLR_task *sub = nullptr;
    fill(task, {ZLR_SENSE_MIN, {1.0}, {{-inf, 97.699987, {1.0}}}, {97.700105}, {inf}, {}, 0.0});
    ASSERT_EQ(ZLR_optimize(task), 0);
    log.clear();
    ASSERT_EQ(ZLR_getinfeasiblesubproblem(task, ZLR_SOL_BAS, &sub), 0);
    EXPECT_NE(log.find("  c1: x1 <= 97.699987\n"), std::string::npos) << log;
    EXPECT_NE(log.find("  x1 >= 97.700105\n"), std::string::npos) << log;
    EXPECT_EQ(ZLR_deletetask(&sub), 0);
}

TEST_F(api_optimize, infeasible_subproblem_without_time_is_the_certificate)
{
    ZLR_task *sub = nullptr;
    fill(task, small_clash);
    ASSERT_EQ(ZLR_optimize(task), 0);
    ASSERT_EQ(ZLR_putparam(task, "ANALYZE_INFEAS_TIME_LIMIT", "0"), 0);
    log.clear();
    ASSERT_EQ(ZLR_getinfeasiblesubproblem(task, ZLR_SOL_BAS, &sub), 0);
    EXPECT_NE(log.find("stopped"), std::string::npos) << log;
    ASSERT_EQ(ZLR_optimize(sub), 0);
    int32_t solsta = -1;
    EXPECT_EQ(ZLR_getsolsta(sub, ZLR_SOL_BAS, &solsta), 0);
    EXPECT_EQ(solsta, ZLR_SOLSTA_PRIM_INFEAS_CER);
    EXPECT_EQ(ZLR_deletetask(&sub), 0);
    ASSERT_EQ(ZLR_putparam(task, "ANALYZE_INFEAS_EFFORT", "CERTIFICATE"), 0);
    log.clear();
    ASSERT_EQ(ZLR_getinfeasiblesubproblem(task, ZLR_SOL_BAS, &sub), 0);
    EXPECT_NE(log.find("as the certificate names it"), std::string::npos) << log;
    EXPECT_EQ(ZLR_deletetask(&sub), 0);
}

TEST_F(api_optimize, solution_that_is_no_certificate_has_no_subproblem)
{
    ZLR_task *sub = nullptr;
    fill(task, two_rows(ZLR_SENSE_MIN));
    ASSERT_EQ(ZLR_optimize(task), 0);
    EXPECT_EQ(ZLR_getinfeasiblesubproblem(task, ZLR_SOL_BAS, &sub), ZLR_RES_ERR_NO_SOLUTION);
    EXPECT_EQ(sub, nullptr);
}
