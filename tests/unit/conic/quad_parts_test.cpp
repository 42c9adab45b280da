/* quad_parts_test.cpp - signs and factors of quadratic forms. */
#include "conic_support.h"

#include <algorithm>

using namespace conic_support;

TEST(quad_split, parts_are_what_terms_connect)
{
    /* 2-5-7 by a chain, 3 alone, 9 with 4; a term of 0 connects nothing. */
    const quad_parts parts =
        quad_split({{2, 2, 1.0}, {3, 3, 4.0}, {5, 2, -1.0}, {7, 5, 6.0}, {7, 3, 0.0}, {9, 4, 2.0}, {9, 9, 8.0}});
    ASSERT_EQ(quad_num_parts(&parts), 3);
    const std::vector<std::vector<int32_t>> columns = {{2, 5, 7}, {3}, {4, 9}};
    for (int32_t p = 0; p < 3; p++) {
        const quad_part part = quad_part_at(&parts, p);
        EXPECT_EQ(std::vector<int32_t>(part.column, part.column + part.num), columns[static_cast<size_t>(p)]);
        for (int64_t k = 0; k < part.num_terms; k++) {
            EXPECT_GE(part.term[k].i, part.term[k].j);
            EXPECT_LT(part.term[k].i, part.num);
        }
    }
    EXPECT_EQ(quad_part_at(&parts, 0).num_terms, 3);
    EXPECT_EQ(quad_num_parts(&parts), static_cast<int32_t>(parts.first_term.size()) - 1);
    const quad_parts none = quad_split({});
    EXPECT_EQ(quad_num_parts(&none), 0);
}

static const struct {
    const char *name;
    std::vector<quad_term> terms;
    bool positive, negative;
} cases[] = {
    {"empty", {}, true, true},
    {"vanishing", {{3, 3, 0.0}, {4, 3, 0.0}}, true, true},
    {"a square", {{0, 0, 2.0}}, true, false},
    {"minus a square", {{0, 0, -2.0}}, false, true},
    {"a product", {{1, 0, 1.0}}, false, false},
    {"a tiny negative square beside a large one", {{0, 0, 1.0}, {1, 1, -1e-30}}, false, false},
    {"the square of a sum", {{0, 0, 1.0}, {1, 0, 1.0}, {1, 1, 1.0}}, true, false},
    {"a bit too much between", {{0, 0, 1.0}, {1, 0, 1.0001}, {1, 1, 1.0}}, false, false},
    {"the square of x1 - x2/3, 12 digits", {{0, 0, 1.0}, {1, 0, -0.333333333333}, {1, 1, 0.111111111111}}, true, false},
    {"huge", {{0, 0, 1e300}, {1, 0, -1e300}, {1, 1, 1e300}}, true, false},
    {"tiny", {{0, 0, 1e-300}, {1, 0, 1e-300}, {1, 1, 1e-300}}, true, false},
    {"tiny, not convex", {{0, 0, 1e-300}, {1, 0, 2e-300}, {1, 1, 1e-300}}, false, false},
    {"huge beside tiny", {{0, 0, 1e200}, {1, 0, 1.0}, {1, 1, 1e-200}}, true, false},
    {"huge beside tiny, not convex", {{0, 0, 1e200}, {1, 0, 3.0}, {1, 1, 1e-200}}, false, false},
    {"a remainder on the diagonal", {{0, 0, 1.0}, {1, 0, 1e-17}, {1, 1, -1e-17}}, true, false},
    {"no square, something beside", {{0, 0, 1.0}, {1, 0, 1e-6}}, false, false},
    {"three, each pair fits",
     {{0, 0, 1.0}, {1, 0, -0.9}, {1, 1, 1.0}, {2, 0, -0.9}, {2, 1, -0.9}, {2, 2, 1.0}},
     false,
     false},
};

TEST(quad_sign, table)
{
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(has_sign(c.terms, 1.0), c.positive);
        EXPECT_EQ(has_sign(c.terms, -1.0), c.negative);
        std::vector<quad_term> turned = c.terms;
        for (quad_term &t : turned) t.value = -t.value;
        EXPECT_EQ(has_sign(turned, -1.0), c.positive);
    }
}

/* A witness must show by the form's own terms what it claims. */
static void expect_witness(const std::vector<quad_term> &terms, double sign)
{
    quad_witness witness;
    ASSERT_FALSE(has_sign(terms, sign, &witness));
    ASSERT_FALSE(witness.column.empty());
    std::map<int32_t, double> x;
    double largest = 0.0, value = 0.0;
    for (size_t k = 0; k < witness.column.size(); k++) x[witness.column[k]] = witness.x[k];
    for (const auto &[j, v] : x) largest = std::max(largest, std::fabs(v));
    for (const quad_term &t : terms) {
        if (x.count(t.i) != 0 && x.count(t.j) != 0) value += (t.i == t.j ? 0.5 : 1.0) * t.value * x[t.i] * x[t.j];
    }
    EXPECT_DOUBLE_EQ(largest, 1.0);
    EXPECT_NEAR(value, witness.value, 1e-9 * std::fabs(witness.value));
    EXPECT_LT(sign * value, 0.0);
}

TEST(quad_sign, what_fails_is_shown_by_a_point)
{
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        if (!c.positive) expect_witness(c.terms, 1.0);
        if (!c.negative) expect_witness(c.terms, -1.0);
    }
}

TEST(quad_sign, random_semidefinite_forms_pass_and_slightly_indefinite_ones_do_not)
{
    std::mt19937 random(7);
    for (const int32_t num : {3, 5, 8, 20, 60, 120})
        for (const int32_t rank : {1, num / 2, num - 1}) {
            SCOPED_TRACE(std::to_string(num) + " columns, rank " + std::to_string(rank));
            matrix q = random_gram(&random, num, rank);
            EXPECT_TRUE(has_sign(terms_of(q), 1.0));

            matrix rounded = q; /* 10 digits */
            for (auto &row : rounded)
                for (double &v : row) v = std::strtod(text_format("%.9e", v / 3.0).c_str(), nullptr);
            EXPECT_TRUE(has_sign(terms_of(rounded), 1.0));

            /* Singular, so that whatever goes off the diagonal makes it indefinite. */
            for (size_t i = 0; i < q.size(); i++) q[i][i] *= 1.0 - 1e-6;
            EXPECT_FALSE(has_sign(terms_of(q), 1.0));
            expect_witness(terms_of(q), 1.0);
        }
}

/* The decision must not depend on the units of the columns. */
TEST(quad_sign, units_do_not_matter)
{
    std::mt19937 random(11);
    std::uniform_int_distribution<int> power(-30, 30);
    for (int round = 0; round < 20; round++) {
        matrix q = random_gram(&random, 12, 5);
        std::vector<double> unit(12);
        for (double &u : unit) u = std::ldexp(1.0, power(random));
        for (const double change : {0.0, 1e-6}) {
            matrix scaled = q;
            for (size_t i = 0; i < 12; i++)
                for (size_t j = 0; j < 12; j++) scaled[i][j] *= unit[i] * unit[j] * (i == j ? 1.0 - change : 1.0);
            EXPECT_EQ(has_sign(terms_of(scaled), 1.0), change == 0.0);
        }
    }
}

/* A grid's differences, which are singular, with `weight` times the smallest square taken away: sparse, large. */
static std::vector<quad_term> grid(int32_t side, double diagonal_change)
{
    std::vector<quad_term> terms;
    std::vector<double> diagonal(static_cast<size_t>(side) * static_cast<size_t>(side));
    const auto join = [&](int32_t a, int32_t b) {
        terms.push_back({std::max(a, b), std::min(a, b), -1.0});
        diagonal[static_cast<size_t>(a)] += 1.0;
        diagonal[static_cast<size_t>(b)] += 1.0;
    };
    for (int32_t r = 0; r < side; r++)
        for (int32_t c = 0; c < side; c++) {
            if (c > 0) join(r * side + c, r * side + c - 1);
            if (r > 0) join(r * side + c, r * side + c - side);
        }
    for (size_t j = 0; j < diagonal.size(); j++)
        terms.push_back({static_cast<int32_t>(j), static_cast<int32_t>(j), diagonal[j] * (1.0 + diagonal_change)});
    quad_normalise(&terms);
    return terms;
}

TEST(quad_sign, large_sparse_forms)
{
    EXPECT_TRUE(has_sign(grid(40, 0.0), 1.0));
    EXPECT_FALSE(has_sign(grid(40, -1e-6), 1.0));
    expect_witness(grid(40, -1e-6), 1.0);
    expect_witness(grid(40, 0.0), -1.0);
}

/* ---- factors */

static void expect_factor(const std::vector<quad_term> &terms, double sign, double tolerance, int64_t rank)
{
    const linear_forms f = factor(terms, sign);
    if (rank >= 0) {
        EXPECT_EQ(forms_num(&f), rank);
    }
    std::map<std::pair<int32_t, int32_t>, double> product;
    for (int64_t k = 0; k < forms_num(&f); k++)
        for (auto a = static_cast<size_t>(f.start[static_cast<size_t>(k)]);
             a < static_cast<size_t>(f.start[static_cast<size_t>(k) + 1]); a++)
            for (auto b = static_cast<size_t>(f.start[static_cast<size_t>(k)]);
                 b < static_cast<size_t>(f.start[static_cast<size_t>(k) + 1]); b++)
                if (f.column[a] >= f.column[b]) product[{f.column[a], f.column[b]}] += f.value[a] * f.value[b];
    std::map<int32_t, double> diagonal;
    for (const quad_term &t : terms) {
        if (t.i == t.j) diagonal[t.i] = sign * t.value;
        product[{t.i, t.j}] -= sign * t.value;
    }
    for (const auto &[at, left] : product) {
        const double scale = std::sqrt(diagonal[at.first]) * std::sqrt(diagonal[at.second]);
        ASSERT_LE(std::fabs(left), tolerance * scale) << at.first << ' ' << at.second;
    }
}

TEST(quad_factor, random_forms_of_given_rank)
{
    std::mt19937 random(3);
    for (const int32_t num : {1, 2, 3, 7, 30, 90})
        for (const int32_t rank : {1, (num + 1) / 2, num}) {
            SCOPED_TRACE(std::to_string(num) + " columns, rank " + std::to_string(rank));
            matrix q = random_gram(&random, num, rank);
            for (size_t j = 0; j < q.size() && rank == num; j++) q[j][j] += 1.0; /* small integers may be dependent */
            expect_factor(terms_of(q, 5, 2), 1.0, 1e-13, rank > 1 && rank < num && num < 10 ? -1 : rank);
            for (auto &row : q)
                for (double &v : row) v *= -1e-3;
            expect_factor(terms_of(q), -1.0, 1e-13, -1);
        }
}

TEST(quad_factor, whole_squares_keep_their_coefficients)
{
    const linear_forms f = factor({{0, 0, 4.0}, {1, 0, -6.0}, {1, 1, 9.0}}, 1.0); /* (2 x1 - 3 x2)^2 */
    ASSERT_EQ(forms_num(&f), 1);
    ASSERT_EQ(f.column.size(), 2U);
    EXPECT_DOUBLE_EQ(f.value[0] * f.value[1], -6.0);
    EXPECT_DOUBLE_EQ(std::fabs(f.value[f.column[0] == 0 ? 0 : 1]), 2.0);
}

TEST(quad_factor, large_forms)
{
    expect_factor(grid(30, 0.0), 1.0, 1e-11, -1);   /* singular */
    expect_factor(grid(30, 1e-3), 1.0, 1e-13, 900); /* definite */
    std::vector<quad_term> diagonal;
    for (int32_t j = 0; j < 20000; j++) diagonal.push_back({j, j, 1.0 + j});
    expect_factor(diagonal, 1.0, 1e-15, 20000);
}

/* Rounded to few digits a semidefinite form is off by that much, and its factor need not be nearer. */
TEST(quad_factor, rounded_forms_stay_near)
{
    std::mt19937 random(19);
    for (const int32_t num : {10, 40, 400}) {
        matrix q = random_gram(&random, num, 4);
        for (size_t i = 0; i < q.size(); i++)
            for (size_t j = 0; j <= i; j++)
                q[i][j] = q[j][i] = std::strtod(text_format("%.10e", q[i][j] / 7.0).c_str(), nullptr);
        const std::vector<quad_term> terms = terms_of(q);
        ASSERT_TRUE(has_sign(terms, 1.0));
        expect_factor(terms, 1.0, 3e-8, -1);
    }
}

TEST(quad_factor, remainders_are_left_out)
{
    const linear_forms f = factor({{0, 0, 1.0}, {1, 0, 1e-17}, {1, 1, -1e-17}}, 1.0);
    ASSERT_EQ(forms_num(&f), 1);
    EXPECT_EQ(f.column, std::vector<int32_t>{0});
}
