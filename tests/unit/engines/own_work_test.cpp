/* own_work_test.cpp - long work of the library itself: where it runs, how a stop ends it, and what becomes of it then. */
#include "small_models.h"
#include "solver/engines/own_work.h"
#include "solver/report/clock.h"

#include <gtest/gtest.h>
#include <new>
#include <thread>

static constexpr double much = 1e12; /* steps: more than are done on the calling thread */

/* A callback that asks for a stop from a moment on. */
struct own_stopper {
    double at_s = model_inf; /* by clock_now_s */
    int32_t calls = 0;
};

static int32_t stop_at(ZLR_task *, void *handle, const ZLR_progress *)
{
    auto *s = static_cast<own_stopper *>(handle);
    s->calls++;
    return clock_now_s() >= s->at_s ? 1 : 0;
}

class own_works : public testing::Test
{
protected:
    ZLR_task task;
    own_stopper stopper;
    run_watch watch;

    void SetUp() override
    {
        task.problem = std::make_shared<model>(two_row_model(ZLR_SENSE_MIN));
        task.callback = stop_at;
        task.callback_handle = &stopper;
        watch.task = &task;
        watch.start_s = clock_now_s();
    }
};

TEST_F(own_works, little_is_done_at_once_and_much_on_a_thread_of_its_own)
{
    const auto where = std::make_shared<std::thread::id>();
    for (const double steps : {1e3, much}) {
        *where = {};
        const own_work work = [where, steps](work_effort *effort) {
            if (!effort_take(effort, steps)) return;
            *where = std::this_thread::get_id();
            if (steps == much) std::this_thread::sleep_for(std::chrono::milliseconds(60));
        };
        stopper.calls = 0;
        EXPECT_TRUE(own_work_do(&watch, work));
        EXPECT_NE(*where, std::thread::id());
        EXPECT_EQ(*where == std::this_thread::get_id(), steps < much);
        EXPECT_EQ(stopper.calls == 0, steps < much) << "little work asks nobody";
    }
    EXPECT_EQ(watch.done_iterations, 0);
    EXPECT_FALSE(watch.is_aside);
}

TEST_F(own_works, stop_leaves_work_that_does_not_listen_and_that_ends_by_itself)
{
    auto record = std::make_shared<std::atomic<int>>(0);
    const std::weak_ptr<std::atomic<int>> left = record;
    const double begin_s = clock_now_s();
    {
        const own_work deaf = [record](work_effort *effort) {
            if (!effort_take(effort, much)) return;
            const double until_s = clock_now_s() + 0.8;
            while (clock_now_s() < until_s) std::this_thread::sleep_for(std::chrono::milliseconds(5));
            *record = effort_take(effort, 1.0) ? 1 : 2;
        };
        stopper.at_s = begin_s + 0.1;
        EXPECT_FALSE(own_work_do(&watch, deaf));
    }
    EXPECT_LT(clock_now_s() - stopper.at_s, 0.5); /* 0.2, and room for a loaded machine */
    EXPECT_EQ(*record, 0) << "it was waited for";
    EXPECT_EQ(watch.stop_code, ZLR_RES_TRM_USER_STOP);
    while (*record == 0 && clock_now_s() - begin_s < 20.0) std::this_thread::yield();
    EXPECT_EQ(*record, 2) << "the flag was not raised";
    record.reset();
    while (!left.expired() && clock_now_s() - begin_s < 20.0) std::this_thread::yield();
    EXPECT_TRUE(left.expired()) << "what the work held is still held";
}

TEST_F(own_works, stop_is_quick_where_the_work_listens_and_nothing_begins_behind_it)
{
    const own_work listens = [](work_effort *effort) {
        while (effort_take(effort, much / 1e6)) std::this_thread::yield();
    };
    stopper.at_s = clock_now_s() + 0.05;
    EXPECT_FALSE(own_work_do(&watch, listens));
    EXPECT_LT(clock_now_s() - stopper.at_s, 0.15);

    const auto ran = std::make_shared<bool>(false);
    EXPECT_FALSE(own_work_do(&watch, [ran](work_effort *) { *ran = true; }));
    EXPECT_FALSE(*ran);
}

TEST_F(own_works, time_limit_has_its_code_and_the_end_of_a_round_is_none)
{
    const own_work endless = [](work_effort *effort) {
        while (effort_take(effort, much / 1e6)) std::this_thread::yield();
    };
    watch.deadline_s = clock_now_s() + 0.1;
    EXPECT_FALSE(own_work_do(&watch, endless));
    EXPECT_EQ(watch.stop_code, ZLR_RES_TRM_TIME_LIMIT);
    EXPECT_LT(clock_now_s() - watch.deadline_s, 0.5);

    watch.stop_code = ZLR_RES_OK;
    watch.deadline_s = model_inf;
    watch.round_deadline_s = clock_now_s() - 1.0;
    const double past_s = watch.round_deadline_s;
    const auto is_done = std::make_shared<bool>(false);
    EXPECT_TRUE(own_work_do(&watch, [is_done](work_effort *effort) {
        if (!effort_take(effort, much)) return;
        std::this_thread::sleep_for(std::chrono::milliseconds(60));
        *is_done = true;
    }));
    EXPECT_TRUE(*is_done);
    EXPECT_EQ(watch.round_deadline_s, past_s);
}

TEST_F(own_works, memory_that_runs_out_on_the_thread_is_told)
{
    const own_work hungry = [](work_effort *effort) {
        if (effort_take(effort, much)) throw std::bad_alloc();
    };
    EXPECT_THROW((void)own_work_do(&watch, hungry), std::bad_alloc);
    EXPECT_FALSE(watch.is_aside) << "the watch is as it was";
}
