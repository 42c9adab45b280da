/* functions_test.cpp - what an expression can be made of: every operator, common expressions, user functions. */
#include "ampl/evaluation/evaluated_stubs.h"
#include "ampl/evaluation/slopes.h"

#include "zelor.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

/* Two columns, an expression as the objective, its square as the first row, itself plus a product as the second. */
static nl_model model_of(const nl_expression &expression)
{
    const nl_terms all = {{0, 0.0}, {1, 0.0}};
    nl_model m;
    m.columns = {{-nl_infinite, nl_infinite}, {-nl_infinite, nl_infinite}};
    m.nlvc = m.nlvo = m.nlvb = 2;
    m.objectives = {{.linear = {{0, 0.5}, {1, 0.0}}, .nonlinear = expression}};
    m.rows = {{.upper = 1.0, .linear = all, .nonlinear = "o5\n" + expression + "n2\n"},
              {.upper = 1.0, .linear = {{0, 0.0}, {1, -2.0}}, .nonlinear = nl_plus(expression, "o2\nv0\nv1\n")}};
    return m;
}

/* ---- Operators ---- */

struct operator_case {
    const char *name;
    const char *expression;
    double x, y;  /* a point */
    double value; /* and the value there */
};

/* Alternatives are no single columns: of those the library's second derivatives are not to be had. */
static const operator_case operators[] = {
    {"plus", "o0\nv0\nv1\n", 1.5, -2.5, -1.0},
    {"minus", "o1\nv0\nv1\n", 1.5, -2.5, 4.0},
    {"product", "o2\nv0\nv1\n", 1.5, -2.5, -3.75},
    {"quotient", "o3\nv0\nv1\n", 1.5, -2.5, -0.6},
    {"remainder", "o4\nv0\nv1\n", 7.5, 2.25, 0.75},
    {"power", "o5\nv0\nv1\n", 1.5, -2.5, 0.36288736930121157},
    {"power of a constant", "o5\nn1.5\nv1\n", 1.0, -2.5, 0.36288736930121157},
    {"power to a constant", "o5\nv0\nn-2.5\n", 1.5, 1.0, 0.36288736930121157},
    {"cube of a negative number", "o5\nv0\nn3\n", -1.5, 1.0, -3.375},
    {"less", "o6\nv0\nv1\n", 1.5, 0.5, 1.0},
    {"less, at its end", "o6\nv0\nv1\n", 0.5, 1.5, 0.0},
    {"minimum", "o11\n3\no2\nn2\nv0\no2\nv1\nv1\nn9\n", 1.5, 1.0, 1.0},
    {"maximum", "o12\n3\no2\nn2\nv0\no2\nv1\nv1\nn-9\n", 1.5, -2.0, 4.0},
    {"floor", "o13\nv0\n", 1.5, 1.0, 1.0},
    {"ceiling", "o14\nv0\n", 1.5, 1.0, 2.0},
    {"absolute value", "o15\no2\nv0\nv1\n", 1.5, -2.0, 3.0},
    {"negation", "o16\no2\nv0\nv1\n", 1.5, -2.0, 3.0},
    {"choice, true", "o35\no22\nv0\nv1\no2\nv0\nv0\no2\nv0\nv1\n", 1.5, 2.0, 2.25},
    {"choice, false", "o35\no22\nv0\nv1\no2\nv0\nv0\no2\nv0\nv1\n", 1.5, 1.0, 1.5},
    {"choice of a choice", "o35\no21\no28\nv0\nn0\no34\no24\nv1\nn0\no44\nv0\nn3\n", 0.5, 1.0, 1.6487212707001282},
    {"hyperbolic tangent", "o37\nv0\n", 0.5, 1.0, 0.46211715726000973},
    {"tangent", "o38\nv0\n", 0.5, 1.0, 0.54630248984379048},
    {"root", "o39\nv0\n", 2.25, 1.0, 1.5},
    {"hyperbolic sine", "o40\nv0\n", 0.5, 1.0, 0.52109530549374738},
    {"sine", "o41\nv0\n", 0.5, 1.0, 0.47942553860420301},
    {"logarithm of base 10", "o42\nv0\n", 0.5, 1.0, -0.3010299956639812},
    {"logarithm", "o43\nv0\n", 0.5, 1.0, -0.69314718055994529},
    {"exponential", "o44\nv0\n", 0.5, 1.0, 1.6487212707001282},
    {"hyperbolic cosine", "o45\nv0\n", 0.5, 1.0, 1.1276259652063807},
    {"cosine", "o46\nv0\n", 0.5, 1.0, 0.87758256189037276},
    {"inverse hyperbolic tangent", "o47\nv0\n", 0.5, 1.0, 0.54930614433405489},
    {"angle", "o48\nv0\nv1\n", 0.5, -1.0, 2.677945044588987},
    {"inverse tangent", "o49\nv0\n", 0.5, 1.0, 0.46364760900080609},
    {"inverse hyperbolic sine", "o50\nv0\n", 0.5, 1.0, 0.48121182505960347},
    {"inverse sine", "o51\nv0\n", 0.5, 1.0, 0.52359877559829893},
    {"inverse hyperbolic cosine", "o52\nv0\n", 1.5, 1.0, 0.96242365011920694},
    {"inverse cosine", "o53\nv0\n", 0.5, 1.0, 1.0471975511965979},
    {"sum", "o54\n4\nv0\no2\nv0\nv1\nn2\no44\nv1\n", 1.5, 0.5, 5.8987212707001282},
    {"slopes", "o64\n3\nn-1\nn0\nn1\nn2\nn3\nv0\n", 3.0, 1.0, 5.0},
    {"slopes in a product", "o2\nv1\no64\n2\nn-1\nn0\nn1\nv0\n", -3.0, 2.0, 6.0},
};

/* In the three functions of model_of, at the point and beside it. */
TEST(ampl_functions, operators)
{
    for (const operator_case &item : operators) {
        SCOPED_TRACE(item.name);
        const open_stub stub(model_of(item.expression));
        if (stub.callbacks.handle == nullptr) continue; /* quadratic */
        const std::vector<double> x = {item.x, item.y};
        const point_values at = values_at(stub.callbacks, x);
        EXPECT_EQ(at.code, 0);
        EXPECT_NEAR(at.objective, item.value + 0.5 * item.x, 1e-13 * (1.0 + std::fabs(item.value)));
        EXPECT_NEAR(at.rows[0], item.value * item.value, 1e-13 * (1.0 + item.value * item.value));
        EXPECT_NEAR(at.rows[1], item.value + item.x * item.y - 2 * item.y, 1e-13 * (1.0 + std::fabs(item.value)));
        const slope_check check = check_slopes(stub.callbacks, x, 2.0, {0.5, -0.25});
        EXPECT_TRUE(check.has_values);
        EXPECT_LT(check.worst, 1e-7) << "direction " << check.direction;
    }
}

/* ---- Common expressions ---- */

/* Common expressions of common expressions, with linear terms, used by all functions. */
TEST(ampl_functions, common_expressions)
{
    nl_model m = model_of(nl_product("v3\n", "v2\n"));
    m.commons = {{.linear = {{0, 2.0}}, .nonlinear = "o41\nv1\n"},
                 {.linear = {{1, -1.0}}, .nonlinear = nl_exp("o2\nn0.25\nv2\n")}};
    const open_stub stub(m);
    ASSERT_NE(stub.callbacks.handle, nullptr);
    for (const std::vector<double> &x : {std::vector<double>{0.5, 1.5}, {-1.0, 0.25}}) {
        const double first = 2 * x[0] + std::sin(x[1]);
        const double value = (std::exp(first / 4) - x[1]) * first;
        const point_values at = values_at(stub.callbacks, x);
        EXPECT_NEAR(at.objective, value + 0.5 * x[0], 1e-14);
        EXPECT_NEAR(at.rows[0], value * value, 1e-14);
        const slope_check check = check_slopes(stub.callbacks, x, 2.0, {0.5, -0.25});
        EXPECT_LT(check.worst, 1e-8);
    }
}

/* ---- User functions ---- */

/* The library loads what this variable names while it reads a stub. */
struct user_functions {
    user_functions() { setenv("AMPLFUNC", ZELOR_USER_FUNCTIONS, 1); }
    ~user_functions() { unsetenv("AMPLFUNC"); }
};

static nl_model with_user_function(const char *name, int num_args, const nl_expression &call)
{
    nl_model m = model_of(call);
    m.functions = {{name, num_args}};
    return m;
}

TEST(ampl_functions, user_functions)
{
    const user_functions loaded;
    const open_stub stub(with_user_function("zelor_square_from", 2, "f0 2\nv0\no44\nv1\n"));
    ASSERT_NE(stub.callbacks.handle, nullptr);
    const std::vector<double> x = {1.5, 0.25};
    const double distance = x[0] - std::exp(x[1]);
    EXPECT_NEAR(values_at(stub.callbacks, x).objective, distance * distance + 0.5 * x[0], 1e-14);
    const slope_check check = check_slopes(stub.callbacks, x, 2.0, {0.5, -0.25});
    EXPECT_TRUE(check.has_values);
    EXPECT_LT(check.worst, 1e-8);
}

/* What a user function says of itself is an evaluation error, in a function and in a common expression. */
TEST(ampl_functions, user_functions_without_value)
{
    const user_functions loaded;
    const nl_model alone = with_user_function("zelor_root", 1, "f0 1\no2\nv0\nv1\n");
    nl_model shared = with_user_function("zelor_root", 1, nl_product("v2\n", "v1\n"));
    shared.commons = {{.linear = {}, .nonlinear = "f0 1\no2\nv0\nv1\n"}};
    for (const nl_model &model : {alone, shared}) {
        const open_stub stub(model);
        const stub_callbacks &c = stub.callbacks;
        ASSERT_NE(c.handle, nullptr);
        const std::vector<double> good = {0.5, 0.5}, below = {-0.5, 0.5}, at_zero = {0.0, 0.5}, y = {0.5, -0.25};
        for (int turn = 0; turn < 2; ++turn) {
            EXPECT_LT(check_slopes(c, good, 2.0, y).worst, 1e-8);
            EXPECT_EQ(values_at(c, below).code, ZLR_RES_ERR_NL_EVALUATION);
            EXPECT_EQ(derivatives_at(c, below, 2.0, y).code, ZLR_RES_ERR_NL_EVALUATION);
            EXPECT_EQ(values_at(c, at_zero).code, 0);
            EXPECT_EQ(derivatives_at(c, at_zero, 2.0, y).code, ZLR_RES_ERR_NL_EVALUATION);
        }
    }
}
