/* runner.cpp - see runner.h. */
#include "solver/engines/runner.h"
#include "solver/engines/machine.h"
#include "solver/report/clock.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <new>
#include <system_error>
#include <thread>

/* What the engines' threads use to wake the calling thread. Shared, for a thread may outlive the runner. The
 * thread of an entry fills the place of the same number: `engine` when the module is loaded, `done` and `missing` last. */
struct run_signal {
    std::mutex mutex;
    std::condition_variable wake;
    std::vector<bool> done;
    std::vector<std::string> engine;
    std::vector<bool> missing;
};

static double seconds(double value) { return value > 0.0 ? value : 0.0; }

static std::chrono::duration<double> wait_time(double value) { return std::chrono::duration<double>(seconds(value)); }

static int64_t iterations_of(const engine_answer *a)
{
    return a->simplex_iterations + a->ipm_iterations + a->crossover_iterations + a->pdlp_iterations;
}

bool watch_poll(run_watch *watch, const engine_progress *progress)
{
    if (watch->stop_code != ZLR_RES_OK) return true;
    const ZLR_task *task = watch->task;
    if (task->callback != nullptr) {
        const bool is_max = task->problem->sense == ZLR_SENSE_MAX;
        const bool counts = progress != nullptr && !watch->is_aside;
        ZLR_progress news = {};
        news.time_s = clock_now_s() - watch->start_s;
        news.iterations = watch->done_iterations + (progress != nullptr ? progress->iterations : 0);
        news.nodes = watch->done_nodes + (counts ? progress->nodes : 0);
        news.primal_obj = is_max ? -model_inf : model_inf;
        news.dual_obj = is_max ? model_inf : -model_inf;
        if (watch->has_primal) news.primal_obj = watch->primal_obj;
        if (watch->has_dual) news.dual_obj = watch->dual_obj;
        if (counts && progress->has_primal) news.primal_obj = progress->primal_obj;
        if (counts && progress->has_dual) news.dual_obj = progress->dual_obj;
        if (task->callback(watch->task, task->callback_handle, &news) != 0) watch->stop_code = ZLR_RES_TRM_USER_STOP;
    }
    if (watch->stop_code == ZLR_RES_OK && clock_now_s() >= watch->deadline_s) watch->stop_code = ZLR_RES_TRM_TIME_LIMIT;
    if (watch->stop_code != ZLR_RES_OK) watch->stop_s = clock_now_s();
    return watch->stop_code != ZLR_RES_OK;
}

static void refuse(engine_job *job, engine_status status, const std::string &message)
{
    const std::lock_guard<std::mutex> lock(job->mutex);
    job->answer.status = status;
    job->answer.message = message;
}

/* Body of an engine's thread. `job` and `signal` are its own shares; `source` points to a constant. */
static void engine_thread(const std::shared_ptr<engine_job> &job, const std::shared_ptr<run_signal> &signal,
                          size_t number, const engine_source *source)
{
    bool is_missing = false;
    machine_warm_heap();
    try {
        std::string message;
        const engine_adapter *adapter = source->load(source->name, &message);
        if (adapter == nullptr) {
            is_missing = true;
            refuse(job.get(), ENGINE_REFUSED, message);
        } else {
            const std::string engine = std::string(adapter->name) + " " + adapter->version();
            {
                const std::lock_guard<std::mutex> lock(signal->mutex);
                signal->engine[number] = engine;
            }
            if (job->stop)
                refuse(job.get(), ENGINE_STOPPED, "");
            else if (!adapter->accepts(job->problem.get(), job->method))
                refuse(job.get(), ENGINE_REFUSED, "does not take this problem by this method");
            else if (job->work)
                job->work(adapter, job);
            else
                adapter->solve(job);
        }
    } catch (const std::bad_alloc &) {
        job->answer.status = ENGINE_MEMORY; /* nobody else touches the job before it counts as done */
    }
    {
        const std::lock_guard<std::mutex> lock(signal->mutex);
        signal->missing[number] = is_missing;
        signal->done[number] = true;
    }
    signal->wake.notify_all();
    job->rest.reset();
}

static std::shared_ptr<engine_job> make_job(const run_order *order, const run_watch *watch)
{
    auto job = std::make_shared<engine_job>();
    job->problem = order->problem;
    job->method = order->step.method;
    job->threads = order->step.threads;
    job->time_limit_s = std::isfinite(watch->deadline_s) ? seconds(watch->deadline_s - clock_now_s()) : model_inf;
    job->want_interior = order->want_interior;
    job->work = order->work;
    job->options = order->options;
    job->start = order->start;
    job->options.insert(job->options.end(), order->step.extra.begin(), order->step.extra.end());
    return job;
}

/* Engines are loaded before their threads start. The dynamic linker changes the address space in many small steps, and
 * each costs more, up to a third, once two threads share it. And a race may be over, and the process end, while an engine
 * would still be loading: its data would be made and destroyed at the same time. What fails here is told by the thread,
 * which tries again. */
static void load_before(const std::vector<run_order> &orders)
{
    std::string message;
    for (const run_order &order : orders) (void)order.step.source->load(order.step.source->name, &message);
}

bool runner_start(runner *r, run_watch *watch, const std::vector<run_order> &orders)
{
    r->watch = watch;
    r->begin_s = clock_now_s();
    r->signal = std::make_shared<run_signal>();
    r->signal->done.assign(orders.size(), false);
    r->signal->missing.assign(orders.size(), false);
    r->signal->engine.resize(orders.size());
    r->entries.resize(orders.size());

    bool any = false;
    load_before(orders);
    for (size_t k = 0; k < orders.size(); k++) {
        r->entries[k].step = orders[k].step;
        r->entries[k].job = make_job(&orders[k], watch);
        try {
            r->entries[k].thread =
                exit_guard_start([job = r->entries[k].job, signal = r->signal, k, source = orders[k].step.source] {
                    engine_thread(job, signal, k, source);
                });
            any = true;
        } catch (const std::system_error &) { /* no more threads: the race goes on with those that run */
            r->entries[k].is_reported = true;
        }
    }
    return any;
}

static bool tells(const engine_progress *p)
{
    return p->iterations != 0 || p->nodes != 0 || p->has_primal || p->has_dual;
}

static progress_line line_of(const runner *r, const engine_progress *p, engine_method method)
{
    progress_line line;
    line.method = plan_method_name(method);
    line.is_integer = method == METHOD_MIP;
    line.iterations = p->iterations;
    line.nodes = p->nodes;
    line.has_primal = p->has_primal;
    line.has_dual = p->has_dual;
    line.primal_obj = p->primal_obj;
    line.dual_obj = p->dual_obj;
    line.primal_infeas = p->primal_infeas;
    line.dual_infeas = p->dual_infeas;
    line.time_s = clock_now_s() - r->watch->start_s;
    return line;
}

/* Keeps an engine's progress for the report. */
static void record(const runner *r, const engine_progress *p, engine_method method)
{
    if (r->watch->history == nullptr || r->watch->is_aside || !tells(p)) return;
    const progress_line line = line_of(r, p, method);
    run_history_add(r->watch->history, &line);
}

/* Of a race every engine is recorded, for it is not known yet who will answer. */
static void record_all(runner *r)
{
    if (r->watch->history == nullptr) return;
    for (run_entry &e : r->entries) {
        if (e.is_reported) continue;
        const std::lock_guard<std::mutex> lock(e.job->mutex);
        record(r, &e.job->progress, e.step.method);
    }
}

/* Takes over what an engine has left in its job. */
static void collect(runner *r, size_t which)
{
    run_entry *e = &r->entries[which];
    engine_job *job = e->job.get();

    exit_guard_retire(std::move(e->thread));
    {
        const std::lock_guard<std::mutex> lock(r->signal->mutex);
        e->engine = r->signal->engine[which];
        e->is_missing = r->signal->missing[which];
    }
    const std::lock_guard<std::mutex> lock(job->mutex);
    e->answer = std::move(job->answer);
    e->interior = std::move(job->interior);
    e->has_interior = job->has_interior;
    e->progress = job->progress;
    e->start_s = job->start_s;
    record(r, &e->progress, e->step.method);
    if (!job->incumbent.empty()) e->incumbent = std::move(job->incumbent);
    job->incumbent.clear();
    e->is_reported = true;
    r->watch->done_iterations += iterations_of(&e->answer);
    if (!r->watch->is_aside) r->watch->done_nodes += e->answer.nodes;
}

static bool is_done(runner *r, size_t which)
{
    const std::lock_guard<std::mutex> lock(r->signal->mutex);
    return r->signal->done[which];
}

static bool take_incumbent(run_entry *e)
{
    const std::lock_guard<std::mutex> lock(e->job->mutex);
    if (e->job->incumbent.empty()) return false;
    e->incumbent = std::move(e->job->incumbent);
    e->job->incumbent.clear();
    return true;
}

/* The progress of the first engine that runs and has something to tell, else of the first that runs. */
static bool leading_progress(runner *r, engine_progress *progress, engine_method *method)
{
    bool found = false;
    for (run_entry &e : r->entries) {
        if (e.is_reported) continue;
        const std::lock_guard<std::mutex> lock(e.job->mutex);
        const bool has_objective = e.job->progress.has_primal || e.job->progress.has_dual;
        if (found && !has_objective) continue;
        *progress = e.job->progress;
        *method = e.step.method;
        found = true;
        if (has_objective) break;
    }
    return found;
}

static void show(runner *r, const engine_progress *p, engine_method method)
{
    if (!tells(p)) return;
    const progress_line line = line_of(r, p, method);
    progress_show(&r->watch->table, &line, false);
}

static bool any_news(runner *r)
{
    for (size_t k = 0; k < r->entries.size(); k++)
        if (!r->entries[k].is_reported && is_done(r, k)) return true;
    return false;
}

/* Waits until an engine ends that was not reported, or for the time between two polls. Small models take a few
 * milliseconds, of which waking up would be a noticeable part: for so long the thread stays awake. */
static void wait_a_while(runner *r, double wait_s)
{
    while (clock_now_s() - r->begin_s < runner_awake_s) {
        if (any_news(r)) return;
        std::this_thread::yield();
    }
    std::unique_lock<std::mutex> lock(r->signal->mutex);
    r->signal->wake.wait_for(lock, wait_time(wait_s), [&] {
        for (size_t k = 0; k < r->entries.size(); k++)
            if (r->signal->done[k] && !r->entries[k].is_reported) return true;
        return false;
    });
}

run_event runner_next(runner *r, size_t *which)
{
    for (;;) {
        bool any = false;
        for (size_t k = 0; k < r->entries.size(); k++) {
            if (r->entries[k].is_reported) continue;
            any = true;
            *which = k;
            if (is_done(r, k)) {
                collect(r, k);
                return RUN_ANSWER;
            }
            if (take_incumbent(&r->entries[k])) return RUN_INCUMBENT;
        }
        if (!any || clock_now_s() >= r->watch->round_deadline_s) return RUN_END;

        engine_progress progress;
        engine_method method = METHOD_CHOOSE;
        const bool found = leading_progress(r, &progress, &method);
        record_all(r);
        if (watch_poll(r->watch, found ? &progress : nullptr)) return RUN_STOP;
        if (found) show(r, &progress, method);
        wait_a_while(r, std::min({runner_poll_s, r->watch->deadline_s - clock_now_s(),
                                  r->watch->round_deadline_s - clock_now_s()}));
    }
}

void runner_halt(runner *r, std::vector<size_t> *back)
{
    const double until = r->watch->stop_s + runner_grace_s;

    for (run_entry &e : r->entries) e.job->stop = true;
    for (;;) {
        bool any = false;
        for (size_t k = 0; k < r->entries.size(); k++) {
            if (r->entries[k].is_reported) continue;
            if (is_done(r, k)) {
                collect(r, k);
                back->push_back(k);
            } else {
                any = true;
            }
        }
        const double rest = until - clock_now_s();
        if (!any || rest <= 0.0) break;
        wait_a_while(r, rest);
    }
    runner_leave(r);
}

void runner_leave(runner *r)
{
    for (run_entry &e : r->entries) {
        if (e.is_reported || !e.thread.thread.joinable()) continue; /* or it never started */
        (void)take_incumbent(&e);
        {
            const std::lock_guard<std::mutex> lock(e.job->mutex);
            e.progress = e.job->progress;
            e.start_s = e.job->start_s;
        }
        {
            const std::lock_guard<std::mutex> lock(r->signal->mutex);
            e.engine = r->signal->engine[static_cast<size_t>(&e - r->entries.data())];
        }
        e.job->stop = true;
        e.job->left = true;
        e.is_reported = true;
        exit_guard_leave(std::move(e.thread));
    }
}

runner::~runner() { runner_leave(this); }
