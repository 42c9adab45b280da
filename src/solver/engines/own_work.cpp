/* own_work.cpp - see own_work.h. */
#include "solver/engines/own_work.h"

#include <new>

/* 20 ms or so: a tenth of the time within which a stop is served, and some hundred times what a thread costs. */
static constexpr double steps_here = 2e7;

/* To the runner the library is one more engine, which takes every problem and solves none. */
static const char *version(void) { return ""; }
static bool accepts(const model *, engine_method) { return true; }
static const engine_adapter self = {engine_abi, "ZELOR", version, "", accepts, nullptr, nullptr};
static const engine_adapter *load(const char *, std::string *) { return &self; }
static const engine_source source = {"", "ZELOR", "", load};

static run_order order_of(const own_work &work)
{
    run_order order;
    order.step.source = &source;
    order.work = [work](const engine_adapter *, const std::shared_ptr<engine_job> &job) {
        work_effort effort;
        effort.stop = &job->stop;
        work(&effort);
    };
    return order;
}

enum own_end { OWN_DONE, OWN_STOPPED, OWN_MEMORY };

static own_end do_aside(run_watch *watch, const own_work &work)
{
    runner r;
    size_t which = 0;

    if (!runner_start(&r, watch, {order_of(work)})) {
        work(nullptr);
        return OWN_DONE;
    }
    if (runner_next(&r, &which) == RUN_STOP) {
        std::vector<size_t> back;
        runner_halt(&r, &back);
        return OWN_STOPPED;
    }
    return r.entries[which].answer.status == ENGINE_MEMORY ? OWN_MEMORY : OWN_DONE;
}

bool own_work_do(run_watch *watch, const own_work &work)
{
    work_effort effort;

    if (watch->stop_code != ZLR_RES_OK) return false;
    effort.steps_left = steps_here;
    work(&effort);
    if (!effort.is_given_up) return true;

    /* Work on an answer may outlast the round that the answer is from. */
    const double round_deadline_s = watch->round_deadline_s;
    const bool is_aside = watch->is_aside;
    watch->round_deadline_s = model_inf;
    watch->is_aside = true;
    const own_end end = do_aside(watch, work);
    watch->round_deadline_s = round_deadline_s;
    watch->is_aside = is_aside;
    if (end == OWN_MEMORY) throw std::bad_alloc();
    return end == OWN_DONE;
}
