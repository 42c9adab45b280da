/* conic_infeasible_test.cpp - infeasible parts and repairs of problems with cones and quadratic rows, each with an answer that
 * a pencil finds. */
#include "api_support.h"

#include <set>

struct conic_cone {
    int32_t type;
    std::vector<int32_t> members;
};

struct conic_quad {
    int32_t row, i, j;
    double value; /* of Q: the row has half of it for a square */
};

/* A problem with the sides that contradict each other, by the texts that name them. */
struct conic_case {
    const char *name;
    api_model m;
    std::vector<conic_quad> quad;
    std::vector<conic_cone> cones;
    std::set<std::string> part;
    double total; /* of the repair with weights 1 */
};

static void PrintTo(const conic_case &c, std::ostream *out) { *out << c.name; }

static void fill_case(ZLR_task *task, const conic_case &c)
{
    fill(task, c.m);
    for (int32_t i = 0; i < static_cast<int32_t>(c.m.rows.size()); i++) {
        std::vector<int32_t> subi, subj;
        std::vector<double> value;
        for (const conic_quad &q : c.quad) {
            if (q.row != i) continue;
            subi.push_back(q.i);
            subj.push_back(q.j);
            value.push_back(q.value);
        }
        if (value.empty()) continue;
        ASSERT_EQ(0, ZLR_putqconk(task, i, static_cast<int32_t>(value.size()), subi.data(), subj.data(), value.data()));
    }
    for (const conic_cone &cone : c.cones)
        ASSERT_EQ(0,
                  ZLR_appendcone(task, cone.type, 0.0, static_cast<int32_t>(cone.members.size()), cone.members.data()));
}

/* Columns are x1, x2, ..., rows c1, c2, ...; what has nothing to do with the contradiction is there as well. */
static const conic_case conic_cases[] = {
    {"norm_against_bounds", /* x1 >= 2, |x1| <= x2, x2 <= 1 */
     {ZLR_SENSE_MIN, {0, 1, 1}, {{-inf, 9, {1, 1, 1}}}, {2, -inf, 0}, {inf, 1, 5}, {}, 0},
     {},
     {{ZLR_CT_QUAD, {1, 0}}},
     {"x1 >= 2", "x2 <= 1"},
     1.0},
    {"norm_against_rows", /* x2 + x3 >= 6 needs |(x2, x3)| >= 6 / sqrt 2, x1 <= 3 */
     {ZLR_SENSE_MAX,
      {1, 0, 0, 1},
      {{6, inf, {0, 1, 1, 0}}, {-inf, 3, {1, 0, 0, 0}}, {-inf, 8, {0, 1, 0, 1}}},
      {-inf, -inf, -inf, 0},
      {inf, inf, inf, 2},
      {},
      0},
     {},
     {{ZLR_CT_QUAD, {0, 1, 2}}},
     {"c1: x2 + x3 >= 6", "c2: x1 <= 3"},
     /* The head can rise by 1 for one unit, which lets the sum rise by sqrt 2: so the head gives way alone. */
     3.0 * std::sqrt(2.0) - 3.0},
    {"rotated", /* 2 x1 x2 >= x3^2, x1 <= 1, x2 <= 1, x3 >= 4 */
     {ZLR_SENSE_MIN, {1, 1, 0, 1}, {{0, inf, {1, 0, 0, 1}}}, {-inf, -inf, 4, 0}, {1, 1, inf, 3}, {}, 0},
     {},
     {{ZLR_CT_RQUAD, {0, 1, 2}}},
     {"x1 <= 1", "x2 <= 1", "x3 >= 4"},
     /* The heads lift x3 by x2 / x3 and x1 / x3 for one unit, 0.71 at x3 = sqrt 2 and less behind: x3 gives way alone. */
     4.0 - std::sqrt(2.0)},
    {"quadratic_row", /* x1^2 + x2^2 <= 1, x1 + x2 >= 3 */
     {ZLR_SENSE_MIN,
      {1, 1, 0},
      {{-inf, 1, {0, 0, 0}}, {3, inf, {1, 1, 0}}, {-inf, 4, {1, 0, 1}}},
      {-inf, -inf, 0},
      {inf, inf, inf},
      {},
      0},
     {{0, 0, 0, 2}, {0, 1, 1, 2}},
     {},
     {"c1: [...] <= 1", "c2: x1 + x2 >= 3"},
     /* The second row gives way by d and the first by what is left of (3 - d)^2 / 2 - 1: their sum falls until nothing is
      * left, where x1 + x2 = sqrt 2. */
     3.0 - std::sqrt(2.0)},
    {"concave_row_with_a_lower_side", /* x2 - x1^2 >= 1 is x1^2 + 1 <= x2, x1 >= 1, x2 <= 1.5 */
     {ZLR_SENSE_MAX, {0, 0}, {{1, inf, {0, 1}}}, {1, -inf}, {inf, 1.5}, {}, 0},
     {{0, 0, 0, -2}},
     {},
     {"c1: x2 + [...] >= 1", "x1 >= 1", "x2 <= 1.5"},
     /* By the row or the bound of x2 it costs 1/2; x1 at 1 - d saves 2 d - d^2 of it, more than d, until nothing is left at
      * x1^2 = 1/2. */
     1.0 - std::sqrt(0.5)},
    {"cone_in_disguise", /* x1^2 + x2^2 <= x3^2, x1 >= 2, x3 <= 1, x3 >= 0 by its bound, which does not count */
     {ZLR_SENSE_MIN, {0, 0, 1}, {{-inf, 0, {0, 0, 0}}, {-inf, 7, {1, 1, 1}}}, {2, -inf, 0}, {inf, inf, 1}, {}, 0},
     {{0, 0, 0, 2}, {0, 1, 1, 2}, {0, 2, 2, -2}},
     {},
     {"c1: [...] <= 0", "x1 >= 2", "x3 <= 1"},
     1.0},
};

class conic_infeasible : public api_optimize, public testing::WithParamInterface<conic_case>
{
};

/* The members that the report names. */
static std::set<std::string> named_members(const std::string &log)
{
    std::set<std::string> members;
    size_t begin = log.find("solved in ");
    while (begin != std::string::npos && (begin = log.find('\n', begin)) != std::string::npos) {
        const size_t end = log.find('\n', ++begin);
        if (end == std::string::npos || log.compare(begin, 2, "  ") != 0) break;
        members.insert(log.substr(begin + 2, end - begin - 2));
    }
    return members;
}

static int32_t status_of(ZLR_task *task)
{
    int32_t solsta = -1;
    EXPECT_EQ(0, ZLR_optimize(task));
    EXPECT_EQ(0, ZLR_getsolsta(task, ZLR_SOL_ITR, &solsta));
    return solsta;
}

struct side_place {
    int32_t accessor, index;
    bool is_upper;
    double lower, upper;
};

static std::vector<side_place> finite_sides(ZLR_task *task)
{
    std::vector<side_place> sides;
    for (const int32_t accessor : {ZLR_ACC_CON, ZLR_ACC_VAR}) {
        int32_t num = 0;
        EXPECT_EQ(0, accessor == ZLR_ACC_CON ? ZLR_getnumcon(task, &num) : ZLR_getnumvar(task, &num));
        for (int32_t k = 0; k < num; k++) {
            int32_t key = 0;
            double lower = 0.0, upper = 0.0;
            EXPECT_EQ(0, ZLR_getbound(task, accessor, k, &key, &lower, &upper));
            const bool has_lower = key != ZLR_BK_FR && key != ZLR_BK_UP,
                       has_upper = key != ZLR_BK_FR && key != ZLR_BK_LO;
            if (has_lower) sides.push_back({accessor, k, false, lower, has_upper ? upper : inf});
            if (has_upper) sides.push_back({accessor, k, true, has_lower ? lower : -inf, upper});
        }
    }
    return sides;
}

static void put_side(ZLR_task *task, const side_place &s, double lower, double upper)
{
    const int32_t key = key_of(lower, upper);
    EXPECT_EQ(0, s.accessor == ZLR_ACC_CON ? ZLR_putconbound(task, s.index, key, lower, upper)
                                           : ZLR_putvarbound(task, s.index, key, lower, upper));
}

TEST_P(conic_infeasible, part_is_infeasible_and_needs_each_member)
{
    const conic_case &c = GetParam();
    ZLR_task *sub = nullptr;
    fill_case(task, c);
    ASSERT_EQ(ZLR_SOLSTA_PRIM_INFEAS_CER, status_of(task)) << log;
    log.clear();
    ASSERT_EQ(0, ZLR_getinfeasiblesubproblem(task, ZLR_SOL_ITR, &sub)) << log;
    EXPECT_NE(std::string::npos, log.find("irreducible")) << log;
    EXPECT_EQ(c.part, named_members(log)) << log;

    /* By the optimiser: infeasible as it is, feasible without any one of the sides. The head of a cone in disguise has its 0
     * besides, without which there would be no cone. */
    EXPECT_EQ(ZLR_SOLSTA_PRIM_INFEAS_CER, status_of(sub)) << log;
    size_t num = 0;
    for (const side_place &s : finite_sides(sub)) {
        if (!s.is_upper && s.lower == 0.0) continue;
        SCOPED_TRACE(std::string(s.accessor == ZLR_ACC_CON ? "row " : "column ") + std::to_string(s.index + 1));
        num++;
        put_side(sub, s, s.is_upper ? s.lower : -inf, s.is_upper ? inf : s.upper);
        EXPECT_EQ(ZLR_SOLSTA_OPTIMAL, status_of(sub));
        put_side(sub, s, s.lower, s.upper);
    }
    EXPECT_EQ(c.part.size(), num);
    EXPECT_EQ(0, ZLR_deletetask(&sub));
}

/* The sum of all changes, as the task stands. */
static double changes_since(ZLR_task *task, const api_model &before)
{
    double total = 0.0;
    for (const side_place &s : finite_sides(task)) {
        const auto k = static_cast<size_t>(s.index);
        const bool is_row = s.accessor == ZLR_ACC_CON;
        const double old = s.is_upper ? (is_row ? before.rows[k].upper : before.upper[k])
                                      : (is_row ? before.rows[k].lower : before.lower[k]);
        const double change = s.is_upper ? s.upper - old : old - s.lower;
        EXPECT_GE(change, 0.0) << "a side was made tighter";
        total += change;
    }
    return total;
}

TEST_P(conic_infeasible, repair_comes_to_the_least_total)
{
    const conic_case &c = GetParam();
    fill_case(task, c);
    ASSERT_EQ(0, ZLR_primalrepair(task, nullptr, nullptr, nullptr, nullptr)) << log;
    EXPECT_NEAR(c.total, changes_since(task, c.m), 1e-5) << log;
    EXPECT_EQ(ZLR_SOLSTA_OPTIMAL, status_of(task)) << log;
}

INSTANTIATE_TEST_SUITE_P(cases, conic_infeasible, testing::ValuesIn(conic_cases),
                         [](const auto &tested) { return std::string(tested.param.name); });

/* x1 >= 2, |x1| <= x2, x2 <= 1 with prices: the cheaper side gives way, or the one that may. */
TEST_F(api_optimize, conic_repair_goes_by_the_weights)
{
    const conic_case &c = conic_cases[0];
    struct {
        double lower1, upper2;
        const char *says;
        double change1, change2;
    } const rows[] = {
        {1.0, 3.0, "weighted sum 1\n", 1.0, 0.0},
        {3.0, 2.0, "weighted sum 2\n", 0.0, 1.0},
        {5.0, -1.0, "weighted sum 5\n", 1.0, 0.0},
        {-1.0, 0.5, "weighted sum 0.5\n", 0.0, 1.0},
    };
    for (const auto &r : rows) {
        SCOPED_TRACE(r.says);
        const double lower[] = {r.lower1, 1.0, 1.0}, upper[] = {1.0, r.upper2, 1.0};
        int32_t key = 0;
        double lower1 = 0.0, upper2 = 0.0, none = 0.0;
        renew();
        fill_case(task, c);
        ASSERT_EQ(0, ZLR_primalrepair(task, nullptr, nullptr, lower, upper)) << log;
        ASSERT_EQ(0, ZLR_getbound(task, ZLR_ACC_VAR, 0, &key, &lower1, &none));
        ASSERT_EQ(0, ZLR_getbound(task, ZLR_ACC_VAR, 1, &key, &none, &upper2));
        EXPECT_NEAR(2.0 - r.change1, lower1, 1e-6) << log;
        EXPECT_NEAR(1.0 + r.change2, upper2, 1e-6) << log;
        const size_t sum = log.find("weighted sum ");
        ASSERT_NE(std::string::npos, sum) << log;
        EXPECT_NEAR(std::atof(r.says + 13), std::atof(log.c_str() + sum + 13), 1e-5) << log;
    }
}

TEST_F(api_optimize, conic_repair_that_is_not_allowed_names_the_clash)
{
    const double may_not[] = {-1.0, -1.0, -1.0};
    fill_case(task, conic_cases[0]);
    log.clear();
    EXPECT_EQ(ZLR_RES_ERR_NO_REPAIR, ZLR_primalrepair(task, nullptr, nullptr, may_not, may_not)) << log;
    EXPECT_NE(std::string::npos, log.find("  x1 >= 2\n")) << log;
    EXPECT_NE(std::string::npos, log.find("  x2 <= 1\n")) << log;
    EXPECT_EQ(std::string::npos, log.find("x3")) << log;
    EXPECT_EQ(0.0, changes_since(task, conic_cases[0].m));

    /* Rows that are cones in disguise are held in any case. */
    const conic_case &disguised = conic_cases[5];
    renew();
    fill_case(task, disguised);
    log.clear();
    EXPECT_EQ(ZLR_RES_ERR_NO_REPAIR, ZLR_primalrepair(task, nullptr, nullptr, may_not, may_not)) << log;
    EXPECT_NE(std::string::npos, log.find("  c1: [...] <= 0\n")) << log;
    EXPECT_EQ(std::string::npos, log.find("x3 >= 0")) << log;
}

TEST_F(api_optimize, feasible_conic_problem_needs_no_repair)
{
    conic_case c = conic_cases[0];
    c.m.upper[1] = 4.0;
    fill_case(task, c);
    ASSERT_EQ(0, ZLR_primalrepair(task, nullptr, nullptr, nullptr, nullptr));
    EXPECT_NE(std::string::npos, log.find("nothing to change")) << log;
    EXPECT_EQ(0.0, changes_since(task, c.m));
}

TEST_F(api_optimize, infeasible_part_of_a_cone_is_kept_whole_without_time)
{
    ZLR_task *sub = nullptr;
    int32_t cones = 0;
    fill_case(task, conic_cases[0]);
    ASSERT_EQ(ZLR_SOLSTA_PRIM_INFEAS_CER, status_of(task));
    ASSERT_EQ(0, ZLR_putparam(task, "ANALYZE_INFEAS_TIME_LIMIT", "0"));
    log.clear();
    ASSERT_EQ(0, ZLR_getinfeasiblesubproblem(task, ZLR_SOL_ITR, &sub));
    EXPECT_NE(std::string::npos, log.find("stopped")) << log;
    EXPECT_NE(std::string::npos, log.find("with 1 cone\n")) << log;
    ASSERT_EQ(0, ZLR_getnumcone(sub, &cones));
    EXPECT_EQ(1, cones);
    EXPECT_EQ(ZLR_SOLSTA_PRIM_INFEAS_CER, status_of(sub));
    EXPECT_EQ(0, ZLR_deletetask(&sub));
}
