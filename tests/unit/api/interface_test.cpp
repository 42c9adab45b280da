/* interface_test.cpp - the interface as its header promises it: handles, indices, ownership, streams. */
#include "zelor.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

class interface : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(ZLR_makeenv(&env, nullptr), 0);
        ASSERT_EQ(ZLR_makeemptytask(env, &task), 0);
    }
    void TearDown() override
    {
        EXPECT_EQ(ZLR_deletetask(&task), 0);
        EXPECT_EQ(ZLR_deleteenv(&env), 0);
        EXPECT_EQ(task, nullptr);
        EXPECT_EQ(env, nullptr);
    }
    void three_by_two()
    {
        ASSERT_EQ(ZLR_appendcons(task, 3), 0);
        ASSERT_EQ(ZLR_appendvars(task, 2), 0);
    }
    ZLR_env *env = nullptr;
    ZLR_task *task = nullptr;
};

static void collect(void *handle, const char *text) { *static_cast<std::string *>(handle) += text; }

TEST(null_handles, give_a_code_and_no_crash)
{
    ZLR_task *none = nullptr;
    ZLR_env *env = nullptr;
    int32_t i = 0;
    double d = 0.0;
    char text[1024];
    const std::vector<std::function<int32_t()>> calls = {
        [&] { return ZLR_getenv(none, &env); },
        [&] { return ZLR_putcallbackfunc(none, nullptr, nullptr); },
        [&] { return ZLR_linkfunctotaskstream(none, 0, nullptr, nullptr); },
        [&] { return ZLR_linkfiletotaskstream(none, 0, "x", 0); },
        [&] { return ZLR_echotask(none, 1, "x"); },
        [&] { return ZLR_putdouparam(none, 0, 1.0); },
        [&] { return ZLR_putintparam(none, 0, 1); },
        [&] { return ZLR_putstrparam(none, 0, "x"); },
        [&] { return ZLR_getdouparam(none, 0, &d); },
        [&] { return ZLR_getintparam(none, 0, &i); },
        [&] { return ZLR_putparam(none, "THREADS", "1"); },
        [&] { return ZLR_getparamname(none, 1, 0, text); },
        [&] { return ZLR_readparamfile(none, "x"); },
        [&] { return ZLR_writeparamfile(none, "x"); },
        [&] { return ZLR_printparam(none); },
        [&] { return ZLR_appendcons(none, 1); },
        [&] { return ZLR_appendvars(none, 1); },
        [&] { return ZLR_putconbound(none, 0, 0, 0, 0); },
        [&] { return ZLR_getbound(none, 0, 0, &i, &d, &d); },
        [&] { return ZLR_putacol(none, 0, 0, nullptr, nullptr); },
        [&] { return ZLR_putqconk(none, 0, 0, nullptr, nullptr, nullptr); },
        [&] { return ZLR_getnumcon(none, &i); },
        [&] { return ZLR_getprobtype(none, &i); },
        [&] { return ZLR_readdata(none, "x"); },
        [&] { return ZLR_writedata(none, "x"); },
        [&] { return ZLR_readsolution(none, 0, "x"); },
        [&] { return ZLR_writesolution(none, 0, "x"); },
        [&] { return ZLR_optimize(none); },
        [&] { return ZLR_solutiondef(none, 0, &i); },
        [&] { return ZLR_getsolsta(none, 0, &i); },
        [&] { return ZLR_getprimalobj(none, 0, &d); },
        [&] { return ZLR_readsummary(none, 1); },
        [&] { return ZLR_solutionsummary(none, 1); },
        [&] { return ZLR_optimizersummary(none, 1); },
        [&] { return ZLR_analyzeproblem(none, 1); },
        [&] { return ZLR_toconic(none); },
        [&] { return ZLR_primalrepair(none, nullptr, nullptr, nullptr, nullptr); },
        [&] { return ZLR_putlicensewait(env, 1); },
        [&] { return ZLR_putlicensecode(env, nullptr); },
        [&] { return ZLR_echointro(env, 1); },
        [&] { return ZLR_linkfunctoenvstream(env, 1, nullptr, nullptr); },
        [&] { return ZLR_makeemptytask(env, &none); },
    };
    for (size_t k = 0; k < calls.size(); ++k) EXPECT_EQ(calls[k](), ZLR_RES_ERR_NULL_HANDLE) << "call " << k;
    EXPECT_EQ(ZLR_calloctask(none, 1, 1), nullptr);
    EXPECT_EQ(ZLR_strduptask(none, "x"), nullptr);
    ZLR_freetask(none, text);
    EXPECT_EQ(ZLR_deletetask(&none), 0);
    EXPECT_EQ(ZLR_deleteenv(&env), 0);
    EXPECT_EQ(ZLR_deletetask(nullptr), 0);
}

TEST_F(interface, bounds_come_back_by_their_key)
{
    static const struct {
        const char *name;
        int32_t key;
        double lower, upper;
        int32_t code, key_back;
        double lower_back, upper_back;
    } cases[] = {
        {"lower", ZLR_BK_LO, 1, 7, 0, ZLR_BK_LO, 1, INFINITY},
        {"upper", ZLR_BK_UP, 1, 7, 0, ZLR_BK_UP, -INFINITY, 7},
        {"fixed", ZLR_BK_FX, 2, 2, 0, ZLR_BK_FX, 2, 2},
        {"free", ZLR_BK_FR, 1, 7, 0, ZLR_BK_FR, -INFINITY, INFINITY},
        {"ranged", ZLR_BK_RA, 1, 7, 0, ZLR_BK_RA, 1, 7},
        {"crossed is taken", ZLR_BK_RA, 7, 1, 0, ZLR_BK_RA, 7, 1},
        {"1e16 is infinite", ZLR_BK_RA, -1e16, 1e16, 0, ZLR_BK_FR, -INFINITY, INFINITY},
        {"just below is not", ZLR_BK_LO, -9.9e15, 0, 0, ZLR_BK_LO, -9.9e15, INFINITY},
        {"nan", ZLR_BK_LO, NAN, 0, ZLR_RES_ERR_NAN, 0, 0, 0},
        {"nan where the key does not look", ZLR_BK_LO, 3, NAN, 0, ZLR_BK_LO, 3, INFINITY},
        {"fixed at two values", ZLR_BK_FX, 1, 2, ZLR_RES_ERR_BOUNDS, 0, 0, 0},
        {"fixed at infinity", ZLR_BK_FX, INFINITY, INFINITY, ZLR_RES_ERR_BOUNDS, 0, 0, 0},
        {"unknown key", 5, 0, 0, ZLR_RES_ERR_ARGUMENT, 0, 0, 0},
    };
    three_by_two();
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        for (const int32_t accessor : {ZLR_ACC_CON, ZLR_ACC_VAR}) {
            const int32_t res = accessor == ZLR_ACC_CON ? ZLR_putconbound(task, 1, c.key, c.lower, c.upper)
                                                        : ZLR_putvarbound(task, 1, c.key, c.lower, c.upper);
            EXPECT_EQ(res, c.code);
            int32_t key = -1;
            double lower = 0.0;
            double upper = 0.0;
            if (res != 0) continue;
            EXPECT_EQ(ZLR_getbound(task, accessor, 1, &key, &lower, &upper), 0);
            EXPECT_EQ(key, c.key_back);
            EXPECT_EQ(lower, c.lower_back);
            EXPECT_EQ(upper, c.upper_back);
        }
    }
    EXPECT_EQ(ZLR_putconbound(task, 3, ZLR_BK_FR, 0, 0), ZLR_RES_ERR_INDEX);
    EXPECT_EQ(ZLR_putvarbound(task, -1, ZLR_BK_FR, 0, 0), ZLR_RES_ERR_INDEX);
    EXPECT_EQ(ZLR_putvarbound(task, 2, ZLR_BK_FR, 0, 0), ZLR_RES_ERR_INDEX);
}

TEST_F(interface, refused_columns_leave_the_matrix_as_it_was)
{
    three_by_two();
    const int32_t rows[] = {0, 2};
    const double values[] = {1.5, -2.0};
    const int32_t twice[] = {1, 1};
    const int32_t outside[] = {0, 3};
    const double nan[] = {1.0, NAN};
    const double tiny[] = {1e-13, 3.0};
    int64_t num = 0;

    ASSERT_EQ(ZLR_putacol(task, 0, 2, rows, values), 0);
    EXPECT_EQ(ZLR_putacol(task, 0, 2, twice, values), ZLR_RES_ERR_ARGUMENT);
    EXPECT_EQ(ZLR_putacol(task, 0, 2, outside, values), ZLR_RES_ERR_INDEX);
    EXPECT_EQ(ZLR_putacol(task, 0, 2, rows, nan), ZLR_RES_ERR_NAN);
    EXPECT_EQ(ZLR_putacol(task, 2, 2, rows, values), ZLR_RES_ERR_INDEX);
    EXPECT_EQ(ZLR_putacol(task, 0, -1, rows, values), ZLR_RES_ERR_ARGUMENT);
    EXPECT_EQ(ZLR_putacol(task, 0, 2, nullptr, values), ZLR_RES_ERR_NULL_POINTER);
    EXPECT_EQ(ZLR_getnumanz(task, &num), 0);
    EXPECT_EQ(num, 2);

    ASSERT_EQ(ZLR_putacol(task, 1, 2, rows, tiny), 0); /* below DATA_TOL_COEF: dropped */
    EXPECT_EQ(ZLR_getnumanz(task, &num), 0);
    EXPECT_EQ(num, 3);
    ASSERT_EQ(ZLR_putacol(task, 0, 0, nullptr, nullptr), 0); /* an earlier column is replaced */
    EXPECT_EQ(ZLR_getnumanz(task, &num), 0);
    EXPECT_EQ(num, 1);
}

TEST_F(interface, quadratic_parts_decide_the_problem_type)
{
    three_by_two();
    const int32_t i[] = {0, 1, 1};
    const int32_t j[] = {0, 0, 1};
    const double q[] = {2.0, 1.0, 2.0};
    int32_t type = -1;
    ASSERT_EQ(ZLR_putqobj(task, 3, i, j, q), 0);
    ZLR_getprobtype(task, &type);
    EXPECT_EQ(type, ZLR_PROBTYPE_QO);
    ASSERT_EQ(ZLR_putqconk(task, 1, 3, i, j, q), 0);
    ZLR_getprobtype(task, &type);
    EXPECT_EQ(type, ZLR_PROBTYPE_QCQO);
    EXPECT_EQ(ZLR_putqconk(task, 1, 3, j, i, q), ZLR_RES_ERR_ARGUMENT); /* the upper triangle */
    ASSERT_EQ(ZLR_putqconk(task, 1, 0, nullptr, nullptr, nullptr), 0);
    ASSERT_EQ(ZLR_putqobj(task, 0, nullptr, nullptr, nullptr), 0);
    ZLR_getprobtype(task, &type);
    EXPECT_EQ(type, ZLR_PROBTYPE_LO);
}

TEST_F(interface, log_stream_is_the_union_of_the_others)
{
    std::string log;
    std::string err;
    ASSERT_EQ(ZLR_linkfunctotaskstream(task, ZLR_STREAM_LOG, &log, collect), 0);
    ASSERT_EQ(ZLR_linkfunctotaskstream(task, ZLR_STREAM_ERR, &err, collect), 0);
    EXPECT_EQ(ZLR_echotask(task, ZLR_STREAM_MSG, "m%d ", 1), 0);
    EXPECT_EQ(ZLR_echotask(task, ZLR_STREAM_ERR, "e "), 0);
    EXPECT_EQ(ZLR_echotask(task, ZLR_STREAM_LOG, "l "), 0);
    const std::string longer(5000, 'x');
    EXPECT_EQ(ZLR_echotask(task, ZLR_STREAM_WRN, "%s", longer.c_str()), 0);
    EXPECT_EQ(log, "m1 e l " + longer);
    EXPECT_EQ(err, "e ");
    EXPECT_EQ(ZLR_linkfunctotaskstream(task, 4, nullptr, nullptr), ZLR_RES_ERR_INDEX);
    EXPECT_EQ(ZLR_linkfiletotaskstream(task, 0, "/nonexistent/folder/log", 0), ZLR_RES_ERR_FILE_OPEN);
}

TEST_F(interface, memory_that_was_not_handed_out_is_left_alone)
{
    char own[] = "own";
    char *copy = ZLR_strduptask(task, "text");
    ASSERT_STREQ(copy, "text");
    ZLR_freetask(task, own);
    ZLR_freeenv(env, own);
    ZLR_freeenv(env, copy); /* the task's, not the environment's */
    EXPECT_STREQ(copy, "text");
    ZLR_freetask(task, copy);
    ZLR_freetask(task, copy); /* no longer known */
    ZLR_freetask(task, nullptr);

    auto *zeroed = static_cast<char *>(ZLR_callocdbgtask(task, 3, 7, "here", 1));
    ASSERT_NE(zeroed, nullptr);
    for (int k = 0; k < 21; ++k) EXPECT_EQ(zeroed[k], 0);
    EXPECT_NE(ZLR_calloctask(task, 0, 8), nullptr);
    EXPECT_EQ(ZLR_calloctask(task, UINT64_MAX, 2), nullptr);
    /* What is still out is released with the task: the leak checker watches. */
}

TEST_F(interface, names_are_cut_to_the_buffer_and_generated_where_absent)
{
    three_by_two();
    char text[8];
    ASSERT_EQ(ZLR_putconname(task, 1, "supply_north"), 0);
    EXPECT_EQ(ZLR_getconname(task, 1, sizeof text, text), 0);
    EXPECT_STREQ(text, "supply_");
    EXPECT_EQ(ZLR_getconname(task, 2, sizeof text, text), 0);
    EXPECT_STREQ(text, "c3");
    EXPECT_EQ(ZLR_getvarname(task, 0, sizeof text, text), 0);
    EXPECT_STREQ(text, "x1");
    EXPECT_EQ(ZLR_getvarname(task, 2, sizeof text, text), ZLR_RES_ERR_INDEX);
    EXPECT_EQ(ZLR_getvarname(task, 0, 0, text), ZLR_RES_ERR_ARGUMENT);
}

/* ---- conic form */

TEST_F(interface, conic_form_appends_and_tells)
{
    three_by_two();
    std::string said;
    ASSERT_EQ(ZLR_linkfunctotaskstream(task, ZLR_STREAM_MSG, &said, collect), 0);
    EXPECT_EQ(ZLR_toconic(task), 0);
    EXPECT_EQ(said, ""); /* nothing quadratic */

    const int32_t sub[] = {0, 1};
    const double value[] = {2.0, 4.0};
    ASSERT_EQ(ZLR_putobjsense(task, ZLR_SENSE_MIN), 0);
    ASSERT_EQ(ZLR_putqobj(task, 2, sub, sub, value), 0);
    ASSERT_EQ(ZLR_putqconk(task, 1, 1, sub, sub, value), 0);
    ASSERT_EQ(ZLR_putconbound(task, 1, ZLR_BK_UP, 0.0, 7.0), 0);
    EXPECT_EQ(ZLR_toconic(task), 0);
    EXPECT_EQ(said, "Conic form: 2 cones, for the objective, 1 convex row\n  New        7 columns, 3 rows\n");
    int32_t num = 0, type = -1;
    EXPECT_EQ(ZLR_getnumvar(task, &num), 0);
    EXPECT_EQ(num, 9);
    EXPECT_EQ(ZLR_getnumcon(task, &num), 0);
    EXPECT_EQ(num, 6);
    EXPECT_EQ(ZLR_getprobtype(task, &type), 0);
    EXPECT_EQ(type, ZLR_PROBTYPE_CONIC);
    EXPECT_EQ(ZLR_toconic(task), 0); /* again: there is nothing left to do */
    EXPECT_EQ(ZLR_getnumvar(task, &num), 0);
    EXPECT_EQ(num, 9);
}

TEST_F(interface, conic_form_of_what_is_not_convex_is_refused_and_changes_nothing)
{
    three_by_two();
    const int32_t i[] = {1}, j[] = {0};
    const double value[] = {1.0};
    ASSERT_EQ(ZLR_putqconk(task, 2, 1, i, j, value), 0);
    ASSERT_EQ(ZLR_putvarbound(task, 0, ZLR_BK_FR, 0.0, 0.0), 0); /* else a product that is at least 3 is a cone */
    ASSERT_EQ(ZLR_putconname(task, 2, "blend"), 0);
    std::string err;
    ASSERT_EQ(ZLR_linkfunctotaskstream(task, ZLR_STREAM_ERR, &err, collect), 0);
    static const struct {
        int32_t key, code;
    } cases[] = {{ZLR_BK_UP, ZLR_RES_ERR_NONCONVEX},
                 {ZLR_BK_LO, ZLR_RES_ERR_NONCONVEX},
                 {ZLR_BK_FX, ZLR_RES_ERR_QCON_EQUALITY},
                 {ZLR_BK_RA, ZLR_RES_ERR_QCON_RANGE}};
    for (const auto &c : cases) {
        ASSERT_EQ(ZLR_putconbound(task, 2, c.key, c.key == ZLR_BK_RA ? 2.0 : 3.0, 3.0), 0);
        err.clear();
        EXPECT_EQ(ZLR_toconic(task), c.code);
        EXPECT_EQ(err.rfind("Row blend ", 0), 0U) << err;
        int32_t num = 0, type = -1;
        EXPECT_EQ(ZLR_getnumvar(task, &num), 0);
        EXPECT_EQ(num, 2);
        EXPECT_EQ(ZLR_getprobtype(task, &type), 0);
        EXPECT_EQ(type, ZLR_PROBTYPE_QCQO);
    }
}
