/* stub_expression.h - the check of one expression of a stub: the operators are known, have what they work on, and name
 * columns, common expressions and functions that are there.
 *
 * Expressions stand in prefix order. The library reads, and later walks them by recursion: how deep they may be is bounded
 * here, by what fits the stack that a program usually has. */
#pragma once

#include "ampl/stub_degree.h"
#include "ampl/stub_reader.h"

/* The library takes 200 bytes of stack and more for each level, to read it and to evaluate it. */
inline constexpr int32_t stub_max_depth = 10000;

/* An operator that is not yet complete. */
struct stub_operator {
    int32_t code;    /* -1: a user's function */
    int32_t missing; /* operands that are still to come */
    bool takes_text; /* they may be texts */
    bool has_term;   /* the next: there was an operand */
    stub_term term;
};

struct stub_expression_scope {
    int32_t num_var, num_variables; /* columns, and with the common expressions behind them */
    int32_t num_func;
    const unsigned char *has_common; /* one a common expression: it was defined before */
    const unsigned char *has_func;   /* one a function */
    const int32_t *common_degree;    /* one a common expression: of what stub_take_expression told */
    stub_operator *operators;        /* stub_max_depth and one more */
};

/* `degree` gets what is sure of it (stub_degree.h). */
template <bool binary>
[[nodiscard]] bool stub_take_expression(stub_reader *r, const stub_expression_scope *scope, int32_t *degree);
