/* work.cpp - see work.h. */
#include "solver/engines/work.h"

#include "solver/engines/runner.h"
#include "solver/report/clock.h"

static run_order order_of(const ZLR_task *task, const engine_source *source,
                          const std::shared_ptr<const model> &problem, const engine_start &start,
                          const engine_work &work)
{
    run_order order;
    order.start = start;
    order.step.source = source;
    order.step.method = METHOD_CHOOSE;
    order.options = plan_options(order.step.source, &task->params);
    order.problem = problem;
    order.work = work;
    return order;
}

static work_end work_with(ZLR_task *task, const engine_source *source, const std::shared_ptr<const model> &problem,
                          const engine_start &start, double time_limit_s, const engine_work &work, std::string *message)
{
    run_watch watch;
    runner r;
    size_t which = 0;

    watch.task = task;
    watch.start_s = clock_now_s();
    watch.deadline_s = watch.start_s + time_limit_s;
    watch.is_aside = true;
    if (!runner_start(&r, &watch, {order_of(task, source, problem, start, work)})) {
        *message = "no thread can be started";
        return WORK_REFUSED;
    }
    run_event event = RUN_INCUMBENT;
    while (event == RUN_INCUMBENT) event = runner_next(&r, &which);
    if (event == RUN_STOP) {
        std::vector<size_t> back;
        runner_halt(&r, &back);
        return watch.stop_code == ZLR_RES_TRM_TIME_LIMIT ? WORK_OUT_OF_TIME : WORK_STOPPED;
    }
    const run_entry *entry = &r.entries[which];
    if (event == RUN_ANSWER && !entry->is_missing && entry->answer.status != ENGINE_REFUSED &&
        entry->answer.status != ENGINE_MEMORY && entry->answer.status != ENGINE_FAILED)
        return WORK_DONE;
    *message = entry->answer.status == ENGINE_MEMORY ? "out of memory" : entry->answer.message;
    return WORK_REFUSED;
}

work_end engines_work(ZLR_task *task, const std::shared_ptr<const model> &problem, const engine_start &start,
                      double time_limit_s, const engine_work &work, std::string *message)
{
    return work_with(task, engine_table_default()->linear, problem, start, time_limit_s, work, message);
}

work_end engines_conic_work(ZLR_task *task, double time_limit_s, const engine_work &work, std::string *message)
{
    const engine_source *source = engine_table_default()->conic;
    if (source == nullptr) {
        *message = "no engine takes cones";
        return WORK_REFUSED;
    }
    return work_with(task, source, std::make_shared<const model>(), {}, time_limit_s, work, message);
}

work_end engines_session(ZLR_task *task, const std::shared_ptr<const model> &problem, double time_limit_s,
                         const session_use &use, std::string *message)
{
    const engine_work work = [use](const engine_adapter *adapter, const std::shared_ptr<engine_job> &job) {
        std::string refusal = "has no sessions";
        const engine_session_calls *calls = adapter->sessions;
        engine_session *session = calls != nullptr ? calls->open(job, job->problem.get(), &refusal) : nullptr;
        if (session == nullptr) {
            const std::lock_guard<std::mutex> lock(job->mutex);
            job->answer.status = ENGINE_REFUSED;
            job->answer.message = refusal;
            return;
        }
        use(calls, session);
        calls->close(session);
    };
    return engines_work(task, problem, {}, time_limit_s, work, message);
}
