/* syssync_test.cpp - locks, events and threads. A lock that is held by mistake shows as a test that hangs. */
#include "cpub/syssync.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <ctime>

static int64_t milliseconds()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

/* A mutex and an event with what the tests guard by them. */
struct syncs {
    sysmutex mutex;
    sysevent event = {nullptr};
    int32_t waiting = 0, passed = 0; /* guarded by the mutex */

    syncs()
    {
        EXPECT_EQ(sysmutex_init(&mutex, nullptr), 0);
        EXPECT_EQ(sysevent_create(&event), 0);
    }
    ~syncs()
    {
        EXPECT_EQ(sysevent_close(&event), 0);
        EXPECT_EQ(sysmutex_delete(&mutex), 0);
    }
};

/* A thread that takes a mutex and gives it back. */
struct visitor {
    sysmutex *mutex;
    std::atomic<bool> was_in{false};
    systhread thread = {};
};

static int64_t visit(void *arg)
{
    visitor *self = static_cast<visitor *>(arg);
    sysmutex_lock(self->mutex);
    self->was_in = true;
    sysmutex_unlock(self->mutex);
    return 0;
}

static void start_visitor(visitor *self) { ASSERT_EQ(systhread_create(&self->thread, nullptr, visit, self), 0); }

/* The calling thread holds the mutex once, and no more: a visitor comes in exactly when it is given back. */
static void expect_held_once(sysmutex *mutex)
{
    visitor other{mutex};
    start_visitor(&other);
    syssleep(30);
    EXPECT_FALSE(other.was_in);
    EXPECT_EQ(sysmutex_unlock(mutex), 0);
    EXPECT_EQ(systhread_join(&other.thread, nullptr), 0);
    EXPECT_TRUE(other.was_in);
}

static void expect_free(sysmutex *mutex)
{
    visitor other{mutex};
    start_visitor(&other);
    EXPECT_EQ(systhread_join(&other.thread, nullptr), 0);
}

TEST(syssync, null_arguments)
{
    syncs s;
    sysevent none = {nullptr};
    const int64_t deadline_s = 0;
    int64_t result = 77;
    const struct {
        const char *name;
        int32_t got, expected;
    } cases[] = {
        {"init", sysmutex_init(nullptr, nullptr), 1},
        {"lock", sysmutex_lock(nullptr), 1},
        {"unlock", sysmutex_unlock(nullptr), 1},
        {"delete", sysmutex_delete(nullptr), 1},
        {"create", sysevent_create(nullptr), 1},
        {"signal", sysevent_signal(nullptr), 1},
        {"signal without handle", sysevent_signal(&none), 1},
        {"close", sysevent_close(nullptr), 1},
        {"close without handle", sysevent_close(&none), 1},
        {"wait", sysevent_wait(nullptr, &s.mutex), 6},
        {"wait without handle", sysevent_wait(&none, &s.mutex), 6},
        {"wait without mutex", sysevent_wait(&s.event, nullptr), 6},
        {"timed wait", sysevent_timedwait(nullptr, &s.mutex, &deadline_s), 6},
        {"timed wait without handle", sysevent_timedwait(&none, &s.mutex, &deadline_s), 6},
        {"timed wait without mutex", sysevent_timedwait(&s.event, nullptr, &deadline_s), 6},
        {"timed wait without deadline", sysevent_timedwait(&s.event, &s.mutex, nullptr), 6},
        {"thread", systhread_create(nullptr, nullptr, visit, nullptr), 1},
        {"join", systhread_join(nullptr, &result), 1},
    };
    for (const auto &item : cases) EXPECT_EQ(item.got, item.expected) << item.name;
    EXPECT_EQ(result, 77);
}

TEST(syssync, mutex_is_recursive)
{
    syncs s;
    for (int i = 0; i < 3; ++i) EXPECT_EQ(sysmutex_lock(&s.mutex), 0);
    EXPECT_EQ(sysmutex_unlock(&s.mutex), 0);
    EXPECT_EQ(sysmutex_unlock(&s.mutex), 0);
    expect_held_once(&s.mutex);
}

/* ---- Events ---- */

static int64_t wait_once(void *arg)
{
    syncs *s = static_cast<syncs *>(arg);
    sysmutex_lock(&s->mutex);
    ++s->waiting;
    const int32_t res = sysevent_wait(&s->event, &s->mutex);
    ++s->passed;
    sysmutex_unlock(&s->mutex);
    return res;
}

static int32_t read_guarded(syncs *s, const int32_t *value)
{
    sysmutex_lock(&s->mutex);
    const int32_t now = *value;
    sysmutex_unlock(&s->mutex);
    return now;
}

static void wait_until(syncs *s, const int32_t *value, int32_t expected)
{
    while (read_guarded(s, value) < expected) syssleep(1);
}

TEST(syssync, each_signal_lets_one_thread_pass)
{
    const int32_t num = 4;
    syncs s;
    systhread threads[num] = {};
    for (auto &thread : threads) ASSERT_EQ(systhread_create(&thread, nullptr, wait_once, &s), 0);
    wait_until(&s, &s.waiting, num);
    for (int32_t k = 1; k <= num; ++k) {
        EXPECT_EQ(sysevent_signal(&s.event), 0);
        wait_until(&s, &s.passed, k);
        syssleep(10);
        EXPECT_EQ(read_guarded(&s, &s.passed), k);
    }
    for (auto &thread : threads) {
        int64_t res = 99;
        EXPECT_EQ(systhread_join(&thread, &res), 0);
        EXPECT_EQ(res, 0);
    }
}

static int64_t wait_seconds(void *arg)
{
    syncs *s = static_cast<syncs *>(arg);
    const int64_t deadline_s = std::time(nullptr) + 3;
    sysmutex_lock(&s->mutex);
    ++s->waiting;
    const int32_t res = sysevent_timedwait(&s->event, &s->mutex, &deadline_s);
    if (res == SYSSYNC_TIMEOUT) sysmutex_unlock(&s->mutex);
    return res;
}

/* A wait begins with a reset: it must not take the signal from a thread that was let through but does not run yet. On a
 * busy machine that thread may not have begun to wait when it is signalled: so not every round need succeed. */
TEST(syssync, signal_given_stays_given)
{
    const int64_t past_s = 0;
    int32_t num_passed = 0;
    for (int32_t round = 0; round < 6; ++round) {
        syncs s;
        systhread thread = {};
        ASSERT_EQ(systhread_create(&thread, nullptr, wait_seconds, &s), 0);
        wait_until(&s, &s.waiting, 1);
        syssleep(20);
        sysmutex_lock(&s.mutex);
        sysevent_signal(&s.event);
        EXPECT_EQ(sysevent_timedwait(&s.event, &s.mutex, &past_s), 138);
        sysmutex_unlock(&s.mutex);
        int64_t res = 99;
        systhread_join(&thread, &res);
        if (res == 0) ++num_passed;
    }
    EXPECT_GE(num_passed, 3);
}

TEST(syssync, timed_wait_runs_out)
{
    const struct {
        const char *name;
        int64_t from_now_s, at_least_ms, at_most_ms;
    } cases[] = {
        {"long past", -4294970, 0, 500},
        {"past", -1, 0, 500},
        {"present", 0, 0, 500},
        /* The clock may tick between its reading here and there. */
        {"two seconds", 2, 500, 20000},
        {"49 days: 32 bits of milliseconds", 4294970, 500, 20000},
    };
    for (const auto &item : cases) {
        SCOPED_TRACE(item.name);
        syncs s;
        sysevent_signal(&s.event); /* in front of the wait, which takes it back */
        sysmutex_lock(&s.mutex);
        const int64_t begin_ms = milliseconds();
        const int64_t deadline_s = std::time(nullptr) + item.from_now_s;
        EXPECT_EQ(sysevent_timedwait(&s.event, &s.mutex, &deadline_s), 138);
        const int64_t time_ms = milliseconds() - begin_ms;
        EXPECT_GE(time_ms, item.at_least_ms);
        EXPECT_LE(time_ms, item.at_most_ms);
        expect_held_once(&s.mutex);
    }
}

/* Signals as soon as it gets the mutex, that is when the other thread waits. */
static int64_t signal_when_free(void *arg)
{
    syncs *s = static_cast<syncs *>(arg);
    sysmutex_lock(&s->mutex);
    ++s->passed;
    const int32_t res = sysevent_signal(&s->event);
    sysmutex_unlock(&s->mutex);
    return res;
}

TEST(syssync, mutex_behind_a_signal)
{
    for (const bool timed : {false, true}) {
        SCOPED_TRACE(timed);
        syncs s;
        const int64_t deadline_s = std::time(nullptr) + 100;
        systhread thread = {};
        sysmutex_lock(&s.mutex);
        ASSERT_EQ(systhread_create(&thread, nullptr, signal_when_free, &s), 0);
        if (timed) {
            EXPECT_EQ(sysevent_timedwait(&s.event, &s.mutex, &deadline_s), 0);
            expect_free(&s.mutex);
        } else {
            EXPECT_EQ(sysevent_wait(&s.event, &s.mutex), 0);
            EXPECT_EQ(s.passed, 1);
            expect_held_once(&s.mutex);
        }
        EXPECT_EQ(systhread_join(&thread, nullptr), 0);
    }
}

/* Two threads that wake each other in turn. */
struct game {
    syncs sides[2]; /* of the first one only the mutex guards */
    int32_t turn = 0;
    int32_t moves = 0;
};

struct player {
    game *on;
    int32_t side;
};

static int64_t play(void *arg)
{
    const player *self = static_cast<player *>(arg);
    game *on = self->on;
    sysmutex *mutex = &on->sides[0].mutex;
    for (int32_t i = 0; i < 2000; ++i) {
        sysmutex_lock(mutex);
        while (on->turn != self->side) sysevent_wait(&on->sides[self->side].event, mutex);
        on->turn = 1 - self->side;
        ++on->moves;
        sysevent_signal(&on->sides[1 - self->side].event);
        sysmutex_unlock(mutex);
    }
    return self->side;
}

TEST(syssync, threads_in_turn)
{
    game on;
    player players[2] = {{&on, 0}, {&on, 1}};
    systhread threads[2] = {};
    for (int32_t i = 0; i < 2; ++i) ASSERT_EQ(systhread_create(&threads[i], nullptr, play, &players[i]), 0);
    for (int32_t i = 0; i < 2; ++i) {
        int64_t side = 99;
        EXPECT_EQ(systhread_join(&threads[i], &side), 0);
        EXPECT_EQ(side, i);
    }
    EXPECT_EQ(on.moves, 4000);
}

/* ---- Threads ---- */

static int64_t negate_large(void *arg) { return -*static_cast<int64_t *>(arg); }

TEST(syssync, thread_results)
{
    int64_t values[4] = {1, 2, INT64_MAX, 4};
    systhread threads[4] = {};
    for (int i = 0; i < 4; ++i) {
        ASSERT_EQ(systhread_create(&threads[i], nullptr, negate_large, &values[i]), 0);
        EXPECT_NE(threads[i].handle, nullptr);
        EXPECT_NE(threads[i].id, 0U);
        EXPECT_EQ(threads[i].func, &negate_large);
        EXPECT_EQ(threads[i].arg, &values[i]);
        for (int k = 0; k < i; ++k) EXPECT_NE(threads[i].id, threads[k].id);
    }
    for (int i = 0; i < 4; ++i) {
        int64_t result = 99;
        EXPECT_EQ(systhread_join(&threads[i], &result), 0);
        EXPECT_EQ(result, -values[i]);
        EXPECT_EQ(threads[i].result, -values[i]);
    }
    /* Joined is joined. */
    int64_t result = 77;
    EXPECT_EQ(systhread_join(&threads[0], &result), 0);
    EXPECT_EQ(result, 77);
}

TEST(syssync, join_of_a_failed_start)
{
    systhread thread = {};
    ASSERT_EQ(sysevent_create(&thread.done), 0);
    int64_t result = 77;
    EXPECT_EQ(systhread_join(&thread, &result), 0);
    EXPECT_EQ(result, 77);
    EXPECT_EQ(thread.done.handle, nullptr); /* closed: the leak checker looks for it */
}
