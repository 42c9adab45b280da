/* random_problem.cpp - see random_problem.h. */
#include "random_problem.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <random>

int64_t random_env(const char *name, int64_t fallback)
{
    const char *text = std::getenv(name);
    return text != nullptr ? std::strtoll(text, nullptr, 10) : fallback;
}

static int64_t draw(std::mt19937_64 *rng, int64_t from, int64_t to)
{
    return from + static_cast<int64_t>((*rng)() % static_cast<uint64_t>(to - from + 1));
}

/* Two sides of one of the five kinds, sometimes crossed. */
static void draw_sides(std::mt19937_64 *rng, int64_t *lower, int64_t *upper, bool finite)
{
    const int64_t a = draw(rng, -6, 6);
    const int64_t b = a + draw(rng, 0, 6);
    switch (finite ? 4 : draw(rng, 0, 5)) {
    case 0: *lower = a, *upper = exact_none; break;
    case 1: *lower = -exact_none, *upper = b; break;
    case 2: *lower = a, *upper = a; break;
    case 3: *lower = -exact_none, *upper = exact_none; break;
    default: *lower = a, *upper = b; break;
    }
    if (!finite && *lower != -exact_none && *upper != exact_none && draw(rng, 0, 60) == 0) std::swap(*lower, *upper);
}

exact_problem random_problem(uint64_t seed)
{
    std::mt19937_64 rng(seed);
    exact_problem p;
    p.num_var = static_cast<int32_t>(draw(&rng, 1, 4));
    const auto num_con = static_cast<size_t>(draw(&rng, 0, 4));
    const bool integers = draw(&rng, 0, 1) == 1;
    p.maximise = draw(&rng, 0, 1) == 1;
    for (int32_t j = 0; j < p.num_var; ++j) {
        int64_t lower = 0;
        int64_t upper = 0;
        p.is_int.push_back(integers && draw(&rng, 0, 2) > 0);
        draw_sides(&rng, &lower, &upper, p.is_int.back());
        p.var_lower.push_back(lower);
        p.var_upper.push_back(upper);
        p.c.push_back(draw(&rng, -4, 4));
    }
    for (size_t i = 0; i < num_con; ++i) {
        int64_t lower = 0;
        int64_t upper = 0;
        draw_sides(&rng, &lower, &upper, false);
        p.row_lower.push_back(lower);
        p.row_upper.push_back(upper);
        p.row.emplace_back();
        for (int32_t j = 0; j < p.num_var; ++j) p.row.back().push_back(draw(&rng, 0, 2) == 0 ? 0 : draw(&rng, -5, 5));
    }
    return p;
}

double random_side(int64_t value)
{
    if (value == exact_none) return INFINITY;
    return value == -exact_none ? -INFINITY : static_cast<double>(value);
}

static int32_t key_of(int64_t lower, int64_t upper)
{
    if (lower == -exact_none) return upper == exact_none ? ZLR_BK_FR : ZLR_BK_UP;
    if (upper == exact_none) return ZLR_BK_LO;
    return lower == upper ? ZLR_BK_FX : ZLR_BK_RA;
}

void random_fill(ZLR_task *task, const exact_problem *p)
{
    const auto num_con = static_cast<int32_t>(p->row.size());
    ASSERT_EQ(ZLR_appendcons(task, num_con), 0);
    ASSERT_EQ(ZLR_appendvars(task, p->num_var), 0);
    ASSERT_EQ(ZLR_putobjsense(task, p->maximise ? ZLR_SENSE_MAX : ZLR_SENSE_MIN), 0);
    for (int32_t i = 0; i < num_con; ++i) {
        const auto at = static_cast<size_t>(i);
        ASSERT_EQ(ZLR_putconbound(task, i, key_of(p->row_lower[at], p->row_upper[at]), random_side(p->row_lower[at]),
                                  random_side(p->row_upper[at])),
                  0);
    }
    for (int32_t j = 0; j < p->num_var; ++j) {
        const auto at = static_cast<size_t>(j);
        const double c = static_cast<double>(p->c[at]);
        std::vector<int32_t> sub;
        std::vector<double> value;
        for (int32_t i = 0; i < num_con; ++i) {
            sub.push_back(i);
            value.push_back(static_cast<double>(p->row[static_cast<size_t>(i)][at]));
        }
        ASSERT_EQ(ZLR_putvarbound(task, j, key_of(p->var_lower[at], p->var_upper[at]), random_side(p->var_lower[at]),
                                  random_side(p->var_upper[at])),
                  0);
        ASSERT_EQ(ZLR_putclist(task, 1, &j, &c), 0);
        ASSERT_EQ(ZLR_putacol(task, j, num_con, sub.data(), value.data()), 0);
        if (p->is_int[at]) {
            ASSERT_EQ(ZLR_putvartype(task, j, ZLR_VAR_INT), 0);
        }
    }
}
