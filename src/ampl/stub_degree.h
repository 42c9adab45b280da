/* stub_degree.h - the degree of an expression, as far as it is sure: whether the AMPL Solver Library's test for quadratic
 * functions (nqpcheck) has to find that it is none.
 *
 * A stub that is known for nonlinear before it is read need not be read as a quadratic model first. What is told here is a
 * bound from below: numbers and whatever is not looked into count as 0. */
#pragma once

#include <algorithm>
#include <cstdint>

/* Not a linear or quadratic function: this, or a function that is no polynomial. */
inline constexpr int32_t stub_degree_nonlinear = 3;

/* A part of an expression. */
struct stub_term {
    double value;   /* of a number */
    int32_t degree; /* at least */
    int32_t column; /* the last one that may be in it; -1: none */
    bool is_number; /* one that is written down, not a result */
};

/* Numbers of the operators that matter here; the rest of them counts as 0. */
enum {
    STUB_PLUS = 0,
    STUB_MINUS = 1,
    STUB_TIMES = 2,
    STUB_OVER = 3,
    STUB_POWER = 5,
    STUB_ABSOLUTE = 15,
    STUB_NEGATIVE = 16,
    STUB_FIRST_FUNCTION = 37, /* of one operand, from tanh to acos, but for one of two */
    STUB_LAST_FUNCTION = 53,
    STUB_ANGLE = 48,
    STUB_SUM = 54,
    STUB_SQUARE = 77
};

inline stub_term stub_of_degree(int32_t degree, int32_t column)
{
    return {0.0, std::min(degree, stub_degree_nonlinear), column, false};
}

inline bool stub_is_factor(stub_term term) { return term.is_number && term.value != 0.0; }

/* Linear terms may cancel each other, which the library then sees; the last column of all does not, where it is in one of the
 * parts alone. Quadratic terms that cancel stay in the library's lists, and count. */
inline int32_t stub_sum_degree(stub_term a, stub_term b)
{
    const int32_t degree = std::max(a.degree, b.degree);
    if (degree > 1) return degree;
    return a.column == b.column ? 0 : (a.column > b.column ? a : b).degree;
}

inline int32_t stub_product_degree(stub_term a, stub_term b)
{
    if (stub_is_factor(a) || stub_is_factor(b)) return std::max(a.degree, b.degree);
    return a.degree == 0 || b.degree == 0 ? 0 : a.degree + b.degree;
}

inline int32_t stub_quotient_degree(stub_term a, stub_term b)
{
    if (stub_is_factor(b)) return a.degree;
    return b.degree > 0 && (a.degree > 0 || stub_is_factor(a)) ? stub_degree_nonlinear : 0;
}

inline int32_t stub_power_degree(stub_term a, stub_term b)
{
    if (!b.is_number || a.degree == 0 || b.value == 0.0) return 0;
    if (b.value == 1.0) return a.degree;
    return b.value == 2.0 ? 2 * a.degree : stub_degree_nonlinear;
}

/* An operator with one operand, or with the first of several. */
inline stub_term stub_degree_begin(int32_t code, stub_term operand)
{
    switch (code) {
    case STUB_NEGATIVE: return stub_of_degree(operand.degree, operand.column);
    case STUB_SQUARE: return stub_of_degree(2 * operand.degree, operand.column);
    case STUB_PLUS:
    case STUB_MINUS:
    case STUB_TIMES:
    case STUB_OVER:
    case STUB_POWER:
    case STUB_SUM: return operand;
    default: break;
    }
    const bool is_function = code >= STUB_FIRST_FUNCTION && code <= STUB_LAST_FUNCTION && code != STUB_ANGLE;
    const bool is_nonlinear = (is_function || code == STUB_ABSOLUTE) && operand.degree > 0;
    return stub_of_degree(is_nonlinear ? stub_degree_nonlinear : 0, operand.column);
}

/* With one more. */
inline stub_term stub_degree_join(int32_t code, stub_term so_far, stub_term operand)
{
    const int32_t column = std::max(so_far.column, operand.column);
    switch (code) {
    case STUB_PLUS:
    case STUB_MINUS:
    case STUB_SUM: return stub_of_degree(stub_sum_degree(so_far, operand), column);
    case STUB_TIMES: return stub_of_degree(stub_product_degree(so_far, operand), column);
    case STUB_OVER: return stub_of_degree(stub_quotient_degree(so_far, operand), column);
    case STUB_POWER: return stub_of_degree(stub_power_degree(so_far, operand), column);
    default: return stub_of_degree(0, column);
    }
}
