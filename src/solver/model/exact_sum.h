/* exact_sum.h - sums of products in twice the precision of a double.
 *
 * Objectives are sums of large terms that cancel out, and the gap between two of them is a number that is looked at: of sums
 * of 1e10 with a thousand terms plain addition leaves nothing below 1e-5. Here each rounding error is kept and added too
 * (Knuth's sum and Dekker's product of two numbers), so that what is left is the rounding of the result. */
#pragma once

#include <cmath>

struct exact_sum {
    double sum = 0.0, rest = 0.0;

    void add(double term)
    {
        const double total = sum + term, part = total - sum;
        rest += (sum - (total - part)) + (term - part);
        sum = total;
    }

    void add_product(double a, double b)
    {
        const double product = a * b;
        add(product);
        rest += std::fma(a, b, -product);
    }

    void add_product(double a, double b, double c)
    {
        const double product = a * b;
        add_product(product, c);
        rest += std::fma(a, b, -product) * c;
    }

    /* An infinite term makes the sum infinite; its rounding error is no number. */
    double value() const { return std::isfinite(sum) ? sum + rest : sum; }
};
