/* Sums of products in twice the precision of a double. */
#include "solver/model/exact_sum.h"
#include "solver/model/model.h"

#include <gtest/gtest.h>
#include <limits>

TEST(exact_sum, what_cancels_out_leaves_the_rest)
{
    exact_sum sum;
    for (const double term : {1.0, 1e17, 1.0, -1e17, 0.5}) sum.add(term);
    EXPECT_EQ(sum.value(), 2.5);
}

TEST(exact_sum, products_keep_their_low_half)
{
    const double tiny = std::ldexp(1.0, -30);
    exact_sum two, three;
    two.add_product(1.0 + tiny, 1.0 + tiny); /* 1 + 2 tiny + tiny^2, of which the last has no place in a double */
    two.add(-1.0);
    two.add(-2.0 * tiny);
    EXPECT_EQ(two.value(), tiny * tiny);
    three.add_product(1.0 + tiny, 1.0 + tiny, 3.0);
    three.add(-3.0);
    three.add(-6.0 * tiny);
    EXPECT_EQ(three.value(), 3.0 * tiny * tiny);
}

TEST(exact_sum, an_infinite_term_makes_it_infinite_and_no_other_number)
{
    constexpr double inf = std::numeric_limits<double>::infinity();
    exact_sum sum;
    sum.add(1.0);
    sum.add_product(-2.0, inf);
    sum.add(5.0);
    EXPECT_EQ(sum.value(), -inf);
}

/* 1e8 x0 - 1e8 x1 + x0^2/2 - x1^2/2 with the constant: what is left of terms of 1e16 is 1. */
TEST(exact_sum, an_objective_of_large_terms_is_right_to_the_last_digit)
{
    model m;
    model_append_vars(&m, 3);
    m.cfix = 0.25;
    m.c = {1e8, -1e8, 0.75};
    m.qobj = {{0, 0, 1e8}, {1, 1, -1e8}};
    const double x[] = {12345678.1, 12345678.1, 1.0};
    EXPECT_EQ(model_objective(&m, x), 1.0);
}
