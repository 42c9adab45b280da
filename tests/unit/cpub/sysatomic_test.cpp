/* sysatomic_test.cpp - counters that several threads step. */
#include "cpub/sysatomic.h"

#include "failing_allocator.h"

#include <gtest/gtest.h>

#include <atomic>
#include <climits>

TEST(sysatomic, stepping)
{
    sysenv *sys = sysenv_create(__FILE__, __LINE__, 1, nullptr);
    ASSERT_NE(sys, nullptr);
    for (const int32_t count : {1, 5, 1000}) {
        sysatomic *atomic = sysatomic_create(sys, count);
        ASSERT_NE(atomic, nullptr);
        EXPECT_EQ(atomic->sys, sys);
        EXPECT_EQ(atomic->count, count);
        EXPECT_EQ(atomic->raw, atomic->counters);
        for (int32_t i = 0; i < count; ++i) EXPECT_EQ(atomic->counters[i], 0);

        const int32_t last = count - 1;
        EXPECT_EQ(sysatomic_inc(atomic, last), 1);
        EXPECT_EQ(sysatomic_inc(atomic, last), 2);
        EXPECT_EQ(sysatomic_dec(atomic, last), 1);
        EXPECT_EQ(sysatomic_dec(atomic, last), 0);
        EXPECT_EQ(sysatomic_dec(atomic, last), -1);
        for (int32_t i = 0; i < last; ++i) EXPECT_EQ(atomic->counters[i], 0);
        atomic->counters[0] = INT32_MAX;
        EXPECT_EQ(sysatomic_inc(atomic, 0), INT32_MIN);
        EXPECT_EQ(sysatomic_dec(atomic, 0), INT32_MAX);

        sysatomic_delete(&atomic);
        EXPECT_EQ(atomic, nullptr);
        sysatomic_delete(&atomic);
    }
    sysatomic_delete(nullptr);
    EXPECT_EQ(sysenv_delete(__FILE__, __LINE__, &sys), 0U);
}

/* Without counters there is still one element, the one that is never used. */
TEST(sysatomic, sizes)
{
    sysenv *sys = sysenv_create(__FILE__, __LINE__, 1, nullptr);
    const struct {
        int32_t count;
        uint64_t elements;
    } cases[] = {{0, 1}, {1, 2}, {7, 8}};
    for (const auto &item : cases) {
        sysatomic *atomic = sysatomic_create(sys, item.count);
        ASSERT_NE(atomic, nullptr);
        EXPECT_EQ(sys->memman->curusage, sizeof(sysatomic) + 4 * item.elements);
        sysatomic_delete(&atomic);
        EXPECT_EQ(sys->memman->curusage, 0U);
    }
    for (const int32_t count : {-1, -2, INT32_MIN}) EXPECT_EQ(sysatomic_create(sys, count), nullptr) << count;
    EXPECT_EQ(sysenv_delete(__FILE__, __LINE__, &sys), 0U);
}

TEST(sysatomic, memory_runs_out)
{
    for (const int32_t debug : {0, 1}) {
        failing_allocator allocator;
        const sysenv_allocator functions = failing_functions(&allocator);
        sysenv *sys = sysenv_create(__FILE__, __LINE__, debug, &functions);
        const int64_t num_live = allocator.num_live;
        sysatomic *atomic = nullptr;
        int64_t n = 0;
        for (; atomic == nullptr && n < 20; ++n) {
            EXPECT_EQ(allocator.num_live, num_live) << n;
            allocator.until_failure = n;
            atomic = sysatomic_create(sys, 3);
        }
        EXPECT_EQ(n, debug == 0 ? 3 : 5); /* with headers twice as many calls */
        sysatomic_delete(&atomic);
        EXPECT_EQ(sysenv_delete(__FILE__, __LINE__, &sys), 0U);
        EXPECT_EQ(allocator.num_live, 0);
    }
}

static const int32_t NUM_STEPS = 100000;

/* Steps counter 0 up and counter 1 down. The sum of what the first gave. */
static int64_t step(void *arg)
{
    sysatomic *atomic = static_cast<sysatomic *>(arg);
    sysatomic_inc(atomic, 2); /* all begin together: a thread alone would be done before the next is there */
    while (std::atomic_ref<int32_t>(atomic->counters[2]).load() < 4) syssleep(0);
    int64_t sum = 0;
    for (int32_t i = 0; i < NUM_STEPS; ++i) {
        sum += sysatomic_inc(atomic, 0);
        sysatomic_dec(atomic, 1);
    }
    return sum;
}

/* No step is lost, and no two threads get the same value. */
TEST(sysatomic, four_threads)
{
    sysenv *sys = sysenv_create(__FILE__, __LINE__, 0, nullptr);
    sysatomic *atomic = sysatomic_create(sys, 3);
    systhread threads[4] = {};
    for (auto &thread : threads) ASSERT_EQ(systhread_create(&thread, nullptr, step, atomic), 0);
    int64_t sum = 0;
    for (auto &thread : threads) {
        int64_t part = 0;
        EXPECT_EQ(systhread_join(&thread, &part), 0);
        sum += part;
    }
    const int64_t all = int64_t{4} * NUM_STEPS;
    EXPECT_EQ(sum, all * (all + 1) / 2);
    EXPECT_EQ(sysatomic_inc(atomic, 0), all + 1);
    EXPECT_EQ(sysatomic_dec(atomic, 1), -all - 1);
    sysatomic_delete(&atomic);
    EXPECT_EQ(sysenv_delete(__FILE__, __LINE__, &sys), 0U);
}
