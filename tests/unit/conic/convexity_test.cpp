/* convexity_test.cpp - which problems are convex, which rows are cones in disguise, and what is said about the others.
 * */
#include "conic_support.h"

#include <sstream>

using namespace conic_support;

static const struct {
    const char *name, *lp;
    int32_t code, row;
    const char *says; /* part of the message */
    size_t num_disguised;
} cases[] = {
    {"linear", "min x st c: x + y >= 1 end", 0, -1, "", 0},
    {"objective", "min [ x^2 + y^2 ] / 2 st c: x + y >= 1 end", 0, -1, "", 0},
    {"objective to be maximised", "max x - [ x^2 ] st c: x + y <= 1 end", 0, -1, "", 0},
    {"indefinite objective", "min [ x^2 + 4 x*y + y^2 ] / 2 st c: x + y >= 1 end", ZLR_RES_ERR_NONCONVEX, -1,
     "The objective is not convex: in a minimisation its quadratic part must not be negative", 0},
    {"convex objective to be maximised", "max [ 3 x^2 ] st c: x <= 1 end", ZLR_RES_ERR_NONCONVEX, -1, "is 3 at x = 1.",
     0},
    {"upper side", "min x st c: x + [ x^2 + 2 x*y + y^2 ] <= 1 end", 0, -1, "", 0},
    {"lower side", "min x st c: x - [ x^2 ] >= -1 end", 0, -1, "", 0},
    {"lower side of a convex form", "min x st a: x <= 1 c: x + [ 2 x^2 ] >= 1 end", ZLR_RES_ERR_NONCONVEX, 1,
     "is 2 at x = 1.", 0},
    {"upper side of a concave form", "min x st c: x - [ x^2 ] <= 1 end", ZLR_RES_ERR_NONCONVEX, 0,
     "Row c is not convex", 0},
    {"equality", "min x st a: x <= 4 q: x + [ x^2 ] = 1 end", ZLR_RES_ERR_QCON_EQUALITY, 1, "Row q has", 0},
    {"range", "min x st q: -1 <= x + [ x^2 ] <= 1 end", ZLR_RES_ERR_QCON_RANGE, 0, "two sides, -1 and 1", 0},
    {"the first of several", "min x st a: [ x^2 ] <= 1 b: [ x*y ] <= 1 c: [ x*y ] = 1 end", ZLR_RES_ERR_NONCONVEX, 1,
     "Row b is", 0},

    {"disguise: norm", "min t st q: [ x^2 + y^2 - t^2 ] <= 0 bounds x free end", 0, -1, "", 1},
    {"disguise: constant", "min t st q: [ x^2 - 3 t^2 ] <= -2 bounds x free end", 0, -1, "", 1},
    {"disguise: turned", "min t st q: [ 2 t^2 - 3 x^2 + x*y - y^2 ] >= 0 bounds x free end", 0, -1, "", 1},
    {"disguise: product", "min u st q: [ x^2 - 2 u*v ] <= 0 bounds x free end", 0, -1, "", 1},
    {"disguise: product with constant", "min u st q: [ u*v ] >= 4 end", 0, -1, "", 1},
    {"disguise: bound above 0", "min t st q: [ x^2 - t^2 ] <= 0 bounds x free t >= 2 end", 0, -1, "", 1},
    {"two rows", "min t st q: [ x^2 - t^2 ] <= 0 r: [ x^2 - t*u ] <= 0 bounds x free end", 0, -1, "", 2},
    {"head may be negative", "min t st q: [ x^2 - t^2 ] <= 0 bounds t >= -1 x free end", ZLR_RES_ERR_NONCONVEX, 0,
     "cone if column t were at least 0; its lower bound is -1.", 0},
    {"head is free", "min u st q: [ x^2 - u*v ] <= 0 bounds v free end", ZLR_RES_ERR_NONCONVEX, 0, "column v were", 0},
    {"both heads are free", "min u st q: [ x^2 - u*v ] <= 0 bounds u free v free end", ZLR_RES_ERR_NONCONVEX, 0,
     "is -1 at", 0},
    {"linear part", "min t st q: x + [ x^2 - t^2 ] <= 0 end", ZLR_RES_ERR_NONCONVEX, 0, "cone without its linear part",
     0},
    {"positive constant", "min t st q: [ x^2 - t^2 ] <= 1 end", ZLR_RES_ERR_NONCONVEX, 0,
     "with 0 on its side in place of 1", 0},
    {"two negative squares", "min t st q: [ x^2 - t^2 - u^2 ] <= 0 end", ZLR_RES_ERR_NONCONVEX, 0, "is -1 at t = 1.",
     0},
    {"a square and a product", "min t st q: [ x^2 - t^2 - u*v ] <= 0 end", ZLR_RES_ERR_NONCONVEX, 0, "is -1 at t = 1.",
     0},
    {"product of the wrong sign", "min t st q: [ x^2 + u*v ] <= 0 end", ZLR_RES_ERR_NONCONVEX, 0, "is -1 at", 0},
    {"head in the rest", "min t st q: [ x^2 + x*t - t^2 ] <= 0 end", ZLR_RES_ERR_NONCONVEX, 0, "t = 1", 0},
    {"rest not convex", "min t st q: [ x^2 + 3 x*y + y^2 - t^2 ] <= 0 end", ZLR_RES_ERR_NONCONVEX, 0, "Row q", 0},
};

TEST(convexity, table)
{
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        const model m = from_lp(c.lp);
        const convexity found = convexity_check(&m);
        EXPECT_EQ(found.code, c.code) << found.message;
        EXPECT_EQ(found.row, c.row);
        if (c.code == ZLR_RES_OK) {
            EXPECT_EQ(found.disguised.size(), c.num_disguised);
        }
        if (c.code == ZLR_RES_OK) {
            EXPECT_EQ(disguise_list(&m).size(), c.num_disguised);
        }

        std::istringstream lines(found.message);
        for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 80U);
        EXPECT_NE(joined(found.message).find(c.says), std::string::npos) << found.message;
        EXPECT_EQ(found.message.empty(), c.code == ZLR_RES_OK);
    }
}

TEST(convexity, forms_that_say_nothing_need_no_sign)
{
    model m = from_lp("min x st q: x + [ x^2 - y^2 ] <= 1 end");
    m.con_upper[0] = model_inf; /* no sides left */
    EXPECT_EQ(convexity_check(&m).code, ZLR_RES_OK);

    m = from_lp("min x st q: x + [ x^2 ] = 1 end");
    m.qcon[0].terms = {{0, 0, 0.0}};
    EXPECT_EQ(convexity_check(&m).code, ZLR_RES_OK);
    m.qcon[0].terms.clear();
    EXPECT_EQ(convexity_check(&m).code, ZLR_RES_OK);

    m = model();
    EXPECT_EQ(convexity_check(&m).code, ZLR_RES_OK);
}

TEST(convexity, infinite_coefficients_are_told)
{
    model m = from_lp("min x st q: x + [ x^2 ] <= 1 end");
    m.qcon[0].terms[0].value = model_inf;
    const convexity found = convexity_check(&m);
    EXPECT_EQ(found.code, ZLR_RES_ERR_NONCONVEX);
    EXPECT_NE(joined(found.message).find("infinite coefficient"), std::string::npos);
}

/* With many columns in the point, four are named and the others counted. */
TEST(convexity, long_points_are_cut)
{
    model m = from_lp("min x1 st q: x1 + x2 + x3 + x4 + x5 + x6 + x7 + x8 + [ x1^2 ] <= 1 end");
    m.qcon[0].terms.clear();
    for (int32_t i = 0; i < 8; i++)
        for (int32_t j = 0; j <= i; j++) m.qcon[0].terms.push_back({i, j, i == j ? 1.0 : -0.5});
    const convexity found = convexity_check(&m);
    EXPECT_EQ(found.code, ZLR_RES_ERR_NONCONVEX);
    EXPECT_NE(joined(found.message).find("is -10 at"), std::string::npos)
        << found.message; /* (8 - 56/2)/2 at all ones */
    EXPECT_NE(joined(found.message).find("4 other"), std::string::npos) << found.message;
}

TEST(disguise, members_are_told)
{
    const model m =
        from_lp("min t st q: [ 3 x^2 + 12 y^2 - 3 t^2 ] <= -6 r: [ 8 u*v - x^2 ] >= 0 bounds x free y free end");
    const std::vector<disguised_cone> list = disguise_list(&m);
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0].row, 0);
    EXPECT_EQ(list[0].type, ZLR_CT_QUAD);
    EXPECT_EQ(list[0].head[0], column(m, "t"));
    EXPECT_EQ(list[0].tail.column, (std::vector<int32_t>{column(m, "x"), column(m, "y")}));
    EXPECT_EQ(list[0].tail.value, (std::vector<double>{1.0, 2.0}));
    EXPECT_DOUBLE_EQ(list[0].constant, std::sqrt(2.0));
    EXPECT_EQ(list[1].type, ZLR_CT_RQUAD);
    EXPECT_EQ(list[1].head[0] + list[1].head[1], column(m, "u") + column(m, "v"));
    EXPECT_DOUBLE_EQ(list[1].tail.value[0], 0.5); /* 2 u v >= (x/2)^2 */
    EXPECT_EQ(list[1].constant, 0.0);
}
