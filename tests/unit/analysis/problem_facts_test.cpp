/* problem_facts_test.cpp - what the finders find in problems whose answers can be seen with the eye. */
#include "problem_support.h"

#include <gtest/gtest.h>

#include <random>

static constexpr double inf = model_inf;

TEST(problem_sizes, decades_are_exact_at_their_ends)
{
    static const struct {
        double value;
        int32_t decade;
    } cases[] = {{1.0, 0},      {-1.0, 0},        {9.999999, 0}, {10.0, 1},   {0.1, -1},   {0.0999999, -2},
                 {1e-9, -9},    {1e9, 9},         {999.999, 2},  {1e20, 20},  {1e300, 20}, {1e-20, -20},
                 {1e-300, -20}, {5e-324, -20},    {1e-19, -19},  {1024.0, 3}, {1e15, 15},  {9.99e14, 14},
                 {0.001, -3},   {0.00099999, -4}, {1e-5, -5}};
    for (const auto &c : cases) {
        size_counts sizes;
        sizes_add(&sizes, c.value, 3, 4);
        EXPECT_EQ(sizes.num[c.decade - decade_first], 1) << c.value;
        EXPECT_EQ(sizes.total, 1);
        EXPECT_EQ(sizes.most, std::fabs(c.value));
    }
    size_counts none;
    for (const double value : {0.0, -0.0, inf, -inf}) sizes_add(&none, value, 0, 0);
    EXPECT_EQ(none.total, 0);
}

/* Columns 0 to 2 are binary, 3 integer, 4 and 5 continuous. */
TEST(problem_rows, class_of_each_form)
{
    static const struct {
        const char *name;
        test_row row;
        row_class wanted;
    } cases[] = {
        {"free", {-inf, inf, {1, 1, 0, 0, 0, 0}}, ROW_FREE},
        {"empty", {-inf, 1, {0, 0, 0, 0, 0, 0}}, ROW_EMPTY},
        {"singleton", {-inf, 1, {0, 0, 2, 0, 0, 0}}, ROW_SINGLETON},
        {"partitioning", {1, 1, {1, 1, 1, 0, 0, 0}}, ROW_PARTITIONING},
        {"partitioning, scaled and complemented", {0, 0, {3, 3, -3, 0, 0, 0}}, ROW_PARTITIONING},
        {"packing", {-inf, 1, {1, 1, 1, 0, 0, 0}}, ROW_PACKING},
        {"packing written with >=", {-1, inf, {-1, -1, -1, 0, 0, 0}}, ROW_PACKING},
        {"packing of complements", {2, inf, {1, 1, 1, 0, 0, 0}}, ROW_PACKING},
        {"covering", {1, inf, {1, 1, 1, 0, 0, 0}}, ROW_COVERING},
        {"implication", {-inf, 0, {1, -1, 0, 0, 0, 0}}, ROW_PACKING},
        {"cardinality", {0.5, 2, {1, 1, 1, 0, 0, 0}}, ROW_CARDINALITY},
        {"variable bound", {-inf, 0, {-5, 0, 0, 0, 1, 0}}, ROW_VARIABLE_BOUND},
        {"pair", {2, 2, {0, 0, 0, 0, 1, 3}}, ROW_PAIR},
        {"knapsack", {-inf, 4, {2, 3, 1, 0, 0, 0}}, ROW_KNAPSACK},
        {"equal knapsack", {4, 4, {2, 3, 1, 0, 0, 0}}, ROW_KNAPSACK_EQUAL},
        {"integer", {-inf, 4, {2, 3, 0, 1, 0, 0}}, ROW_INTEGER},
        {"integer equal", {4, 4, {2, 3, 0, 1, 0, 0}}, ROW_INTEGER_EQUAL},
        {"mixed with binaries", {4, 4, {2, 3, 0, 1, 1, 0}}, ROW_MIXED_BINARY},
        {"mixed integer", {-inf, 4, {0, 0, 0, 1, 1, 1}}, ROW_MIXED_INTEGER},
        {"continuous", {-inf, 4, {0, 0, 0, 0, 1, 1}}, ROW_CONTINUOUS},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        model m = make_model(ZLR_SENSE_MIN, {1, 1, 1, 1, 1, 1}, {c.row}, {0, 0, 0, 0, 0, 0}, {1, 1, 1, 9, inf, inf});
        make_integer(&m, {0, 1, 2, 3});
        const problem_facts facts = facts_of(&m);
        EXPECT_EQ(facts.row_classes[0], c.wanted);
        EXPECT_EQ(facts.class_count[c.wanted], 1);
    }
}

TEST(problem_rows, bounds_of_columns_tell_on_a_row)
{
    static const struct {
        const char *name;
        test_row row;
        int32_t kind; /* -1: nothing to be said */
        double amount;
    } cases[] = {
        {"fine", {-inf, 7, {1, 2, 0}}, -1, 0},
        {"too low a side", {-inf, -5, {1, 2, 0}}, FIND_UNREACHABLE, 3},
        {"too high a side", {10.5, inf, {1, 2, 0}}, FIND_UNREACHABLE, 2.5},
        {"off by less than the tolerance", {8.0000001, inf, {1, 2, 0}}, FIND_FORCED, 2},
        {"endless column", {1000, inf, {1, 2, 1}}, -1, 0},
        {"endless in the other direction", {1000, inf, {1, 2, -1}}, FIND_UNREACHABLE, 992},
        {"forced at the lower side", {8, inf, {1, 2, 0}}, FIND_FORCED, 2},
        {"forced at the upper side", {-inf, -2, {1, 2, 0}}, FIND_FORCED, 2},
        {"redundant", {-2, 8, {1, 2, 0}}, FIND_REDUNDANT, 2},
        {"empty and fine", {-1, 0, {0, 0, 0}}, FIND_ROW_EMPTY, 0},
        {"empty and not", {1, 2, {0, 0, 0}}, FIND_UNREACHABLE, 1},
        {"free", {-inf, inf, {1, 2, 0}}, FIND_ROW_FREE, 2},
        {"singleton", {-inf, 3, {0, 5, 0}}, FIND_SINGLETON, 0},
        {"crossed", {5, 4, {1, 2, 0}}, FIND_SIDES_CROSSED, 1},
        {"nearly equal", {4, 4 + 1e-12, {1, 2, 0}}, FIND_SIDES_CLOSE, 0},
        {"tiny coefficient", {-inf, 5, {1, 2, 1e-11}}, FIND_COEF_TINY, 1},
        {"large side", {-1e10, 5, {1, 2, 1}}, FIND_SIDE_LARGE, 1e10},
        {"tiny side", {-inf, 1e-9, {1, 2, 0}}, FIND_SIDE_TINY, -1e-9},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        const model m = make_model(ZLR_SENSE_MIN, {1, 5, 7}, {c.row}, {-2, 0, 0}, {2, 3, inf});
        const problem_facts facts = facts_of(&m);
        std::vector<int32_t> kinds = kinds_found(facts);
        std::erase(kinds, FIND_COLUMN_EMPTY); /* columns that the row under test leaves out */
        std::erase(kinds, FIND_SCALING);      /* comes with the tiny coefficient */
        if (c.kind < 0) {
            EXPECT_TRUE(kinds.empty());
            continue;
        }
        ASSERT_EQ(kinds, std::vector<int32_t>{c.kind});
        EXPECT_EQ(facts.found[c.kind][0].index, 0);
        EXPECT_NEAR(facts.found[c.kind][0].rank, c.amount, 1e-9);
    }
}

TEST(problem_rows, equality_of_integers_needs_a_multiple)
{
    model m = make_model(ZLR_SENSE_MIN, {1, 1},
                         {{7, 7, {4, 6}}, {8, 8, {4, 6}}, {2.5, 2.5, {1, 3}}, {7, 7, {0.5, 1}}, {-inf, 7, {4, 6}}},
                         {0, 0}, {9, 9});
    make_integer(&m, {0, 1});
    EXPECT_EQ(found(facts_of(&m), FIND_DIVISOR), (std::vector<int32_t>{0, 2}));
    m.var_type[0] = ZLR_VAR_CONT;
    EXPECT_TRUE(found(facts_of(&m), FIND_DIVISOR).empty());
}

TEST(problem_rows, big_m)
{
    /* Columns: x in [0, 20], z in [0, inf), y and w binary. */
    static const struct {
        const char *name;
        test_row row;
        int32_t num;      /* big-M rows */
        double smaller;   /* the M that is enough, 0: no word about it */
        bool is_doubtful; /* leaks */
    } cases[] = {
        {"tight", {-inf, 0, {1, 0, -20, 0}}, 0, 0, false},
        {"one that a bound makes smaller", {-inf, 0, {1, 0, -5000, 0}}, 1, 20, false},
        {"the same with >=", {0, inf, {-1, 0, 5000, 0}}, 1, 20, false},
        {"on at 0: x <= 12 unless y = 0", {-inf, 5012, {1, 0, 5000, 0}}, 1, 5000 - 4992, false},
        {"too large by far", {-inf, 0, {1, 0, -1e5, 0}}, 1, 20, true},
        {"nobody knows", {-inf, 0, {0, 1, -1e5, 0}}, 1, 0, true},
        {"nobody knows, but small", {-inf, 0, {0, 1, -1e3, 0}}, 1, 0, false},
        {"huge", {-inf, 0, {0, 1, -1e7, 0}}, 1, 0, true},
        {"two switches", {-inf, 2000, {1, 0, 1000, 1000}}, 1, 0, false},
        {"equality", {0, 0, {1, 0, -5000, 0}}, 0, 0, false},
        {"continuous with a large coefficient", {-inf, 0, {1, -5000, 0, 1}}, 0, 0, false},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        model m = make_model(ZLR_SENSE_MIN, {1, 1, 1, 1}, {c.row}, {0, 0, 0, 0}, {20, inf, 1, 1});
        make_integer(&m, {2, 3});
        const problem_facts facts = facts_of(&m);
        EXPECT_EQ(facts.big_m.rows, c.num);
        EXPECT_EQ(facts.found[FIND_BIG_M].size(), c.is_doubtful ? 1U : 0U);
        ASSERT_EQ(facts.found[FIND_M_SMALLER].size(), c.smaller > 0 ? 1U : 0U);
        if (c.smaller > 0) {
            EXPECT_NEAR(facts.found[FIND_M_SMALLER][0].b, c.smaller, 1e-9);
        }
        if (c.num > 0) {
            EXPECT_EQ(facts.big_m.most, std::fabs(c.row.a[2]));
        }
    }
}

TEST(problem_columns, findings)
{
    static const struct {
        const char *name;
        double cost, lower, upper;
        bool is_int;
        double in_row; /* coefficient in a row that is at most 100 */
        int32_t kind;  /* -1: nothing to be said */
    } cases[] = {
        {"fine", 1, 0, 5, false, 1, -1},
        {"held by the row", -1, 0, inf, false, 1, -1},
        {"held by its bound", -1, 0, 5, false, -1, -1},
        {"not held", -1, 0, inf, false, -1, FIND_UNBOUNDED},
        {"not held below", 1, -inf, 5, false, 1, FIND_UNBOUNDED},
        {"in no row, not held", -1, 0, inf, false, 0, FIND_UNBOUNDED},
        {"in no row", 1, 0, inf, false, 0, FIND_COLUMN_EMPTY},
        {"fixed", 1, 4, 4, false, 1, FIND_COLUMN_FIXED},
        {"crossed", 1, 5, 4, false, 1, FIND_BOUNDS_CROSSED},
        {"no integer", 1, 0.2, 0.8, true, 1, FIND_NO_INTEGER},
        {"fraction", 1, 0.5, 4, true, 1, FIND_BOUND_FRACTION},
        {"large", 1, -2e9, 5, false, 1, FIND_BOUND_LARGE},
        {"tiny", 1, 1e-8, 5, false, 1, FIND_BOUND_TINY},
        {"close", 1, 3, 3 + 1e-12, false, 1, FIND_BOUNDS_CLOSE},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        /* A second and a third column keep the row from being a singleton, redundant or out of reach. */
        model m = make_model(ZLR_SENSE_MIN, {c.cost, 1, 1}, {{-inf, 100, {c.in_row, 300, 100}}}, {c.lower, 0, 0},
                             {c.upper, 1, 1});
        if (c.is_int) make_integer(&m, {0});
        const problem_facts facts = facts_of(&m);
        if (c.kind < 0) {
            EXPECT_TRUE(kinds_found(facts).empty());
            continue;
        }
        EXPECT_EQ(kinds_found(facts), std::vector<int32_t>{c.kind});
        EXPECT_EQ(found(facts, static_cast<finding_kind>(c.kind)), std::vector<int32_t>{0});

        /* A maximisation of the negative cost is the same problem. */
        for (double &cost : m.c) cost = -cost;
        m.sense = ZLR_SENSE_MAX;
        EXPECT_EQ(kinds_found(facts_of(&m)), std::vector<int32_t>{c.kind});
    }
}

TEST(problem_parallel, rows)
{
    const model m = make_model(ZLR_SENSE_MIN, {1, 1, 1},
                               {{1, 4, {1, 2, 3}},            /* 0 */
                                {-12, -3, {-3, -6, -9}},      /* 1: the same */
                                {-inf, 0.3, {0.1, 0.2, 0.3}}, /* 2: at most 3 */
                                {-inf, 9, {1, 2, 4}},         /* 3: no multiple */
                                {-inf, 9, {1, 0, 3}},         /* 4: nor that */
                                {7, inf, {2, 4, 6}}},         /* 5: at least 3.5 */
                               {0, 0, 0}, {9, 9, 9});
    const problem_facts facts = facts_of(&m);
    EXPECT_EQ(found(facts, FIND_ROW_PARALLEL), (std::vector<int32_t>{1, 2, 5}));
    EXPECT_EQ(facts.parallel.rows, 3);
    EXPECT_EQ(facts.parallel.equal_rows, 1);
    ASSERT_EQ(facts.found[FIND_CONTRADICTION].size(), 1U);
    EXPECT_EQ(facts.found[FIND_CONTRADICTION][0].index, 2);
    EXPECT_EQ(facts.found[FIND_CONTRADICTION][0].other, 5);
    EXPECT_NEAR(facts.found[FIND_CONTRADICTION][0].a, 0.05, 1e-12) << "in units of row 2";
    for (const finding &f : facts.found[FIND_ROW_PARALLEL])
        EXPECT_NEAR(f.a, m.a.value[static_cast<size_t>(f.index)], 1e-12);
}

TEST(problem_parallel, columns)
{
    model m = make_model(ZLR_SENSE_MIN, {1, 2, 3, 1, -1, 0, 0},
                         {{1, 9, {1, 2, 2, 1, -1, 1, 1}}, {2, 9, {1, 2, 2, 3, -1, 0, 0}}}, {0, 0, 0, 0, 0, 0, 0},
                         {9, 9, 9, 9, 9, 9, 9});
    problem_facts facts = facts_of(&m);
    EXPECT_EQ(found(facts, FIND_COLUMN_EQUAL), (std::vector<int32_t>{1, 4, 6}));
    EXPECT_EQ(facts.parallel.columns, 4) << "column 2 costs too much";
    EXPECT_EQ(facts.parallel.equal_columns, 3);
    EXPECT_EQ(facts.found[FIND_COLUMN_EQUAL][0].a, 2.0);

    make_integer(&m, {0, 1, 2, 3, 4});
    facts = facts_of(&m);
    EXPECT_EQ(found(facts, FIND_COLUMN_EQUAL), (std::vector<int32_t>{4, 6})) << "2 x is no integer step";
}

/* Many rows from few directions, entries in any order: groups as by a comparison of all with all. */
TEST(problem_parallel, random_against_all_pairs)
{
    std::mt19937 random(5);
    const auto draw = [&random](int from, int to) {
        return static_cast<double>(std::uniform_int_distribution(from, to)(random));
    };
    for (int round = 0; round < 50; round++) {
        std::vector<test_row> rows;
        for (int i = 0; i < 30; i++) {
            const double factor = draw(1, 5) * (draw(0, 1) == 0.0 ? -0.1 : 0.7);
            rows.push_back({-inf, factor, {draw(1, 2) * factor, draw(0, 1) * factor, draw(-1, 1) * factor, factor}});
        }
        const model m = make_model(ZLR_SENSE_MIN, {1, 1, 1, 1}, rows, {0, 0, 0, 0}, {inf, inf, inf, inf});
        std::vector<int32_t> wanted;
        for (size_t i = 0; i < rows.size(); i++) {
            for (size_t k = 0; k < i; k++) {
                bool is_same = true;
                for (size_t j = 0; j < 4; j++)
                    is_same = is_same && std::fabs(rows[i].a[j] * rows[k].a[3] - rows[k].a[j] * rows[i].a[3]) < 1e-9;
                if (!is_same) continue;
                wanted.push_back(static_cast<int32_t>(i));
                break;
            }
        }
        ASSERT_EQ(found(facts_of(&m), FIND_ROW_PARALLEL), wanted);
    }
}

TEST(problem_network, transport_problem_is_one)
{
    /* Supplies at most, demands at least: all 1, so that the demands must be turned. The last row has other numbers. */
    const model m = make_model(ZLR_SENSE_MIN, {1, 2, 3, 4},
                               {{-inf, 5, {1, 1, 0, 0}},
                                {-inf, 5, {0, 0, 1, 1}},
                                {3, inf, {1, 0, 1, 0}},
                                {3, inf, {0, 1, 0, 1}},
                                {-inf, 9, {1, 2, 1, 3}}},
                               {0, 0, 0, 0}, {inf, inf, inf, inf});
    const problem_facts facts = facts_of(&m);
    EXPECT_EQ(facts.network.rows, 4);
    EXPECT_EQ(facts.network.columns, 4);
    EXPECT_EQ(facts.network.arcs, 4);
}

TEST(problem_network, odd_cycle_and_third_entry_are_kept_out)
{
    /* Three rows, each two of them tied by a column of two ones: the third cannot be turned against both others. */
    const model cycle =
        make_model(ZLR_SENSE_MIN, {1, 1, 1}, {{1, inf, {1, 1, 0}}, {1, inf, {0, 1, 1}}, {1, inf, {1, 0, 1}}}, {0, 0, 0},
                   {9, 9, 9});
    EXPECT_EQ(facts_of(&cycle).network.rows, 2);
    const model third =
        make_model(ZLR_SENSE_MIN, {1, 1}, {{0, 0, {1, -1}}, {1, inf, {1, 1}}, {2, inf, {-1, 1}}, {3, inf, {1, -1}}},
                   {0, 0}, {9, 9});
    const network_facts network = facts_of(&third).network;
    EXPECT_EQ(network.rows, 2) << "the second ties the columns the other way, the fourth is one too many";
    EXPECT_EQ(network.arcs, 2);
}

TEST(problem_quadratic, convexity)
{
    static const struct {
        const char *name;
        std::vector<quad_term> terms;
        double lower, upper;
        bool is_convex;
        int32_t cones;
    } cases[] = {
        {"squares", {{0, 0, 2}, {1, 1, 2}}, -inf, 4, true, 0},
        {"squares below", {{0, 0, 2}}, 4, inf, false, 0},
        {"negative squares below", {{0, 0, -2}}, -4, inf, true, 0},
        {"equality", {{0, 0, 2}}, 4, 4, false, 0},
        {"free", {{0, 0, -2}}, -inf, inf, true, 0},
        {"product within its squares", {{0, 0, 2}, {1, 0, 2}, {1, 1, 2}}, -inf, 4, true, 0},
        {"product beyond", {{0, 0, 2}, {1, 0, 2.1}, {1, 1, 2}}, -inf, 4, false, 0},
        {"product alone", {{1, 0, 1}}, -inf, 4, false, 0},
        {"cone", {{0, 0, 2}, {1, 1, 2}, {2, 2, -2}}, -inf, 0, true, 1},
        {"rotated cone", {{0, 0, 2}, {2, 1, -2}}, -inf, 0, true, 1},
        {"cone with another side", {{0, 0, 2}, {2, 2, -2}}, -inf, 1, false, 0},
        {"cone of a free column", {{0, 0, 2}, {3, 3, -2}}, -inf, 0, false, 0},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        model m = make_model(ZLR_SENSE_MIN, {1, 1, 1, 1}, {{c.lower, c.upper, {0, 0, 0, 0}}}, {0, 0, 0, -inf},
                             {9, 9, inf, inf});
        m.qcon = {{0, c.terms}};
        const problem_facts facts = facts_of(&m);
        EXPECT_EQ(facts.found[FIND_ROW_NOT_CONVEX].empty(), c.is_convex);
        EXPECT_EQ(facts.quadratic.cones, c.cones);
        EXPECT_EQ(facts.quadratic.row_terms, static_cast<int64_t>(c.terms.size()));
        EXPECT_EQ(facts.row_classes[0], ROW_QUADRATIC);
    }
    model m = make_model(ZLR_SENSE_MAX, {1, 1}, {}, {0, 0}, {9, 9});
    m.qobj = {{0, 0, -1}};
    EXPECT_TRUE(found(facts_of(&m), FIND_OBJ_NOT_CONVEX).empty());
    m.sense = ZLR_SENSE_MIN;
    EXPECT_EQ(found(facts_of(&m), FIND_OBJ_NOT_CONVEX), std::vector<int32_t>{0});
}

/* What nothing but a cone stops is stopped, and its columns are not the same for having the same entries. */
TEST(problem_quadratic, columns_in_cones)
{
    model m = make_model(ZLR_SENSE_MIN, {-1, 0, -1, -1}, {{-inf, 4, {0, 0, 1, 1}}}, {-inf, -inf, -inf, -inf},
                         {inf, inf, inf, inf});
    m.a.value[0] = m.a.value[1] = -1.0; /* growth makes the row smaller */
    const problem_facts without = facts_of(&m);
    EXPECT_EQ(found(without, FIND_UNBOUNDED), (std::vector<int32_t>{0, 2, 3}));
    EXPECT_EQ(found(without, FIND_COLUMN_EMPTY), (std::vector<int32_t>{1}));
    EXPECT_EQ(without.parallel.equal_columns, 1);
    m.cones = {{ZLR_CT_QUAD, {1, 0}}, {ZLR_CT_QUAD, {2, 3}}};
    const problem_facts with = facts_of(&m);
    EXPECT_TRUE(found(with, FIND_UNBOUNDED).empty());
    EXPECT_TRUE(found(with, FIND_COLUMN_EMPTY).empty());
    EXPECT_EQ(with.parallel.equal_columns, 0);
}

TEST(problem_scaling, units_do_no_harm_but_spread_within_a_row_does)
{
    /* Row i has unit 1e4^i and column j unit 1e3^j: twelve decades that scaling takes away. */
    std::vector<test_row> rows;
    for (int i = 0; i < 3; i++)
        rows.push_back({-inf, 1.0, {std::pow(1e4, i), std::pow(1e4, i) * 1e3, std::pow(1e4, i) * 1e6}});
    model m = make_model(ZLR_SENSE_MIN, {1, 1, 1}, rows, {0, 0, 0}, {inf, inf, inf});
    EXPECT_TRUE(found(facts_of(&m), FIND_SCALING).empty());
    EXPECT_LT(facts_of(&m).scaled_spread, 100.0);

    m.a.value[4] *= 1e14; /* the middle one: its row and its column need it small, the others in them do not */
    const problem_facts facts = facts_of(&m);
    const std::vector<finding> &rows_found = facts.found[FIND_SCALING];
    const auto middle =
        std::find_if(rows_found.begin(), rows_found.end(), [](const finding &f) { return f.index == 1; });
    ASSERT_NE(middle, rows_found.end());
    EXPECT_EQ(middle->third, 1);
    EXPECT_EQ(middle->b, m.a.value[4]);
    EXPECT_GT(facts.scaled_spread, 1e6);
}
