/* api_support.h - small problems through the interface, and the solutions that come back. */
#pragma once

#include "zelor.h"

#include <cmath>
#include <gtest/gtest.h>
#include <string>
#include <vector>

inline const double inf = HUGE_VAL;

struct api_row {
    double lower, upper;
    std::vector<double> a;
};

struct api_model {
    int32_t sense;
    std::vector<double> c;
    std::vector<api_row> rows;
    std::vector<double> lower, upper;
    std::vector<int32_t> integers; /* columns */
    double cfix;
};

inline int32_t key_of(double lower, double upper)
{
    if (std::isinf(lower)) return std::isinf(upper) ? ZLR_BK_FR : ZLR_BK_UP;
    if (std::isinf(upper)) return ZLR_BK_LO;
    return lower == upper ? ZLR_BK_FX : ZLR_BK_RA;
}

inline void fill(ZLR_task *task, const api_model &m)
{
    const auto rows = static_cast<int32_t>(m.rows.size()), columns = static_cast<int32_t>(m.c.size());
    ASSERT_EQ(ZLR_RES_OK, ZLR_appendcons(task, rows));
    ASSERT_EQ(ZLR_RES_OK, ZLR_appendvars(task, columns));
    ASSERT_EQ(ZLR_RES_OK, ZLR_putobjsense(task, m.sense));
    ASSERT_EQ(ZLR_RES_OK, ZLR_putcfix(task, m.cfix));
    for (int32_t i = 0; i < rows; i++) {
        const api_row &r = m.rows[static_cast<size_t>(i)];
        ASSERT_EQ(ZLR_RES_OK, ZLR_putconbound(task, i, key_of(r.lower, r.upper), r.lower, r.upper));
    }
    for (int32_t j = 0; j < columns; j++) {
        const auto at = static_cast<size_t>(j);
        std::vector<int32_t> sub;
        std::vector<double> value;
        for (int32_t i = 0; i < rows; i++) {
            if (m.rows[static_cast<size_t>(i)].a[at] == 0.0) continue;
            sub.push_back(i);
            value.push_back(m.rows[static_cast<size_t>(i)].a[at]);
        }
        ASSERT_EQ(ZLR_RES_OK, ZLR_putclist(task, 1, &j, &m.c[at]));
        ASSERT_EQ(ZLR_RES_OK, ZLR_putvarbound(task, j, key_of(m.lower[at], m.upper[at]), m.lower[at], m.upper[at]));
        ASSERT_EQ(ZLR_RES_OK, ZLR_putacol(task, j, static_cast<int32_t>(sub.size()), sub.data(), value.data()));
    }
    for (const int32_t j : m.integers) ASSERT_EQ(ZLR_RES_OK, ZLR_putvartype(task, j, ZLR_VAR_INT));
}

struct api_solution {
    int32_t prosta = -1, solsta = -1;
    double primal = 0.0, dual = 0.0;
    std::vector<int32_t> skc, skx;
    std::vector<double> xc, xx, y, slc, suc, slx, sux;
};

inline api_solution get_solution(ZLR_task *task, int32_t kind)
{
    api_solution s;
    int32_t rows = 0, columns = 0;
    EXPECT_EQ(ZLR_RES_OK, ZLR_getnumcon(task, &rows));
    EXPECT_EQ(ZLR_RES_OK, ZLR_getnumvar(task, &columns));
    s.skc.resize(static_cast<size_t>(rows));
    s.skx.resize(static_cast<size_t>(columns));
    for (auto *v : {&s.xc, &s.y, &s.slc, &s.suc}) v->resize(static_cast<size_t>(rows));
    for (auto *v : {&s.xx, &s.slx, &s.sux}) v->resize(static_cast<size_t>(columns));
    EXPECT_EQ(ZLR_RES_OK, ZLR_getsolution(task, kind, &s.prosta, &s.solsta, s.skc.data(), s.skx.data(), nullptr,
                                          s.xc.data(), s.xx.data(), s.y.data(), s.slc.data(), s.suc.data(),
                                          s.slx.data(), s.sux.data(), nullptr));
    EXPECT_EQ(ZLR_RES_OK, ZLR_getprimalobj(task, kind, &s.primal));
    EXPECT_EQ(ZLR_RES_OK, ZLR_getdualobj(task, kind, &s.dual));
    return s;
}

class api_optimize : public testing::Test
{
protected:
    ZLR_env *env = nullptr;
    ZLR_task *task = nullptr;
    std::string log;

    void SetUp() override
    {
        ASSERT_EQ(ZLR_RES_OK, ZLR_makeenv(&env, nullptr));
        renew();
    }
    void TearDown() override
    {
        ZLR_deletetask(&task);
        ZLR_deleteenv(&env);
    }
    void renew()
    {
        ZLR_deletetask(&task);
        ASSERT_EQ(ZLR_RES_OK, ZLR_makeemptytask(env, &task));
        const auto append = [](void *text, const char *s) { *static_cast<std::string *>(text) += s; };
        log.clear();
        ASSERT_EQ(ZLR_RES_OK, ZLR_linkfunctotaskstream(task, ZLR_STREAM_LOG, &log, append));
    }
    int32_t defined(int32_t kind) const
    {
        int32_t is = -1;
        EXPECT_EQ(ZLR_RES_OK, ZLR_solutiondef(task, kind, &is));
        return is;
    }
};

/* minimise -x0 - 2 x1 + 10, x0 + x1 <= 5, x0 + 3 x1 <= 6, 0 <= x <= 3; and the same turned round. */
inline api_model two_rows(int32_t sense)
{
    const double s = sense == ZLR_SENSE_MAX ? -1.0 : 1.0;
    return {sense, {-s, -2.0 * s}, {{-inf, 5.0, {1.0, 1.0}}, {-inf, 6.0, {1.0, 3.0}}}, {0.0, 0.0}, {3.0, 3.0},
            {},    s * 10.0};
}
