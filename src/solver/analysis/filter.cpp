/* filter.cpp - see filter.h.
 *
 * A set counts as infeasible where a proof passes the check (integer problems: where branch and cut says so), and as
 * feasible where the engine has a point. Where the engine says one thing and shows nothing, the least violation of the rows
 * decides. Problems with cones or quadratic rows are made anew for each question, as no session holds them; there a proof
 * or a point is asked for on both sides. */
#include "solver/analysis/filter.h"

#include "solver/analysis/filter_conic.h"
#include "solver/engines/aside.h"
#include "solver/engines/certificate.h"
#include "solver/report/clock.h"

#include <algorithm>
#include <cmath>
#include <deque>

/* Up to this many sides are tried one by one; more are first left out in blocks. */
static constexpr size_t single_sides = 48;

/* A proof is worth less the larger the columns may get, and here bounds go: a point that escapes it has to be of the size
 * of the inverse. */
static constexpr double proof_tol = 1e-10;

/* What one integer problem may take of the time that is left. */
static double integer_share_s(double rest_s) { return std::max(1.0, rest_s / 8.0); }

/* The filter at work, on the engine's thread. */
struct filter_run {
    side_filter *filter = nullptr;
    const engine_adapter *adapter = nullptr;
    const engine_session_calls *calls = nullptr; /* and the sessions: of linear problems */
    std::shared_ptr<engine_job> job;
    engine_session *session = nullptr;
    engine_session *phase_one = nullptr; /* made when it is first asked */
    bool is_integer = false, is_conic = false;
    std::vector<char> has_entries; /* rows */
    std::vector<char> active;      /* the sides that stand in the engine: the kept ones without those that are tried */
};

static bool is_over(const filter_run *f)
{
    return f->job->stop.load() || f->job->left.load() || clock_now_s() >= f->filter->deadline_s;
}

static void put_bounds(const filter_run *f, engine_session *session, size_t which)
{
    const std::vector<model_side> &sides = f->filter->part.sides;
    const model_side &side = sides[which];
    double lower = -model_inf, upper = model_inf;

    const size_t first = which > 0 ? which - 1 : 0, last = std::min(which + 2, sides.size());
    for (size_t k = first; k < last; k++) {
        if (sides[k].is_row != side.is_row || sides[k].index != side.index || f->active[k] == 0) continue;
        (sides[k].is_upper ? upper : lower) = side_value(f->filter->part.problem.get(), &sides[k]);
    }
    (side.is_row ? f->calls->row_bounds : f->calls->col_bounds)(session, side.index, lower, upper);
}

static void set_active(filter_run *f, const std::vector<size_t> &which, bool active)
{
    for (const size_t k : which) f->active[k] = active ? 1 : 0;
    if (f->is_conic) return;
    for (const size_t k : which) put_bounds(f, f->session, k);
    if (f->phase_one == nullptr) return;
    for (const size_t k : which) put_bounds(f, f->phase_one, k);
}

/* ---- one question */

/* The problem as it stands in the engine. */
static model active_problem(const filter_run *f)
{
    model m = *f->filter->part.problem;
    for (size_t k = 0; k < f->active.size(); k++) {
        const model_side &side = f->filter->part.sides[k];
        if (f->active[k] != 0) continue;
        std::vector<double> &bounds =
            side.is_row ? (side.is_upper ? m.con_upper : m.con_lower) : (side.is_upper ? m.var_upper : m.var_lower);
        bounds[static_cast<size_t>(side.index)] = side.is_upper ? model_inf : -model_inf;
    }
    sides_hold_heads(f->filter->part.heads, &m);
    return m;
}

/* The active sides that a proof does without, up to multipliers of a size that does not count. */
static void find_spare(const filter_run *f, const solution *proof, double negligible, std::vector<size_t> *spare)
{
    for (size_t k = 0; k < f->active.size(); k++) {
        const model_side &side = f->filter->part.sides[k];
        const std::vector<double> &dual =
            side.is_row ? (side.is_upper ? proof->suc : proof->slc) : (side.is_upper ? proof->sux : proof->slx);
        if (f->active[k] != 0 && dual[static_cast<size_t>(side.index)] <= negligible) spare->push_back(k);
    }
}

static bool is_proof(const filter_run *f, const std::vector<double> &ray, std::vector<size_t> *spare)
{
    const model now = active_problem(f);
    solution proof;
    if (ray.size() != static_cast<size_t>(now.num_con)) return false;
    solution_reset(&proof, now.num_con, now.num_var, model_num_cones(&now));
    check_tolerances tol = f->filter->tol;
    tol.dual = std::min(tol.dual, proof_tol);
    if (!certificate_from_dual_ray(&now, &tol, ray, &proof)) return false;
    find_spare(f, &proof, 0.0, spare);
    return true;
}

static void spare_others(const filter_run *f, size_t one, size_t two, std::vector<size_t> *spare)
{
    for (size_t k = 0; k < f->active.size(); k++)
        if (f->active[k] != 0 && k != one && k != two) spare->push_back(k);
}

/* A side that no point can meet, or a pair that contradict each other by themselves. */
static bool is_plain(const filter_run *f, std::vector<size_t> *spare)
{
    const std::vector<model_side> &sides = f->filter->part.sides;
    const model *m = f->filter->part.problem.get();
    const double tolerance = f->filter->tol.primal;
    for (size_t k = 0; k < sides.size(); k++) {
        if (f->active[k] == 0 || !sides[k].is_row || f->has_entries[static_cast<size_t>(sides[k].index)] != 0) continue;
        const double value = side_value(m, &sides[k]);
        if (sides[k].is_upper ? value >= -tolerance : value <= tolerance) continue;
        spare_others(f, k, k, spare);
        return true;
    }
    for (size_t k = 1; k < sides.size(); k++) {
        const model_side &low = sides[k - 1], &high = sides[k];
        if (low.is_row != high.is_row || low.index != high.index || f->active[k - 1] == 0 || f->active[k] == 0)
            continue;
        const double lower = side_value(m, &low), upper = side_value(m, &high);
        if (!(lower - upper > tolerance * std::max(1.0, std::fabs(lower)))) continue;
        spare_others(f, k - 1, k, spare);
        return true;
    }
    return false;
}

static double rest_of_time_s(const filter_run *f) { return std::max(0.0, f->filter->deadline_s - clock_now_s()); }

static void solve(filter_run *f, engine_session *session, engine_answer *answer)
{
    const double rest_s = rest_of_time_s(f);
    f->calls->solve(session, f->is_integer ? integer_share_s(rest_s) : rest_s, answer);
    const std::lock_guard<std::mutex> lock(f->filter->state.mutex);
    f->filter->state.num_solved++;
}

/* The least sum of violations of the rows tells which of the two it is, and its multipliers are the proof. */
static verdict ask_phase_one(filter_run *f, std::vector<size_t> *spare)
{
    engine_answer answer;
    if (f->phase_one == nullptr) {
        std::string message;
        const std::shared_ptr<model> problem = aside_phase_one(f->filter->part.problem.get());
        f->phase_one = f->calls->open(f->job, problem.get(), &message);
        if (f->phase_one == nullptr) return NOT_SETTLED;
        for (size_t k = 0; k < f->active.size(); k++)
            if (f->active[k] == 0) put_bounds(f, f->phase_one, k);
    }
    solve(f, f->phase_one, &answer);
    if (answer.status != ENGINE_OPTIMAL || answer.x.empty()) return NOT_SETTLED;
    double violation = 0.0;
    for (auto j = static_cast<size_t>(f->filter->part.problem->num_var); j < answer.x.size(); j++)
        violation = std::max(violation, answer.x[j]);
    if (violation <= f->filter->tol.primal) return IS_FEASIBLE;
    return is_proof(f, answer.y, spare) ? IS_INFEASIBLE : NOT_SETTLED;
}

/* Interior points leave something of every multiplier. */
static verdict ask_conic(filter_run *f, std::vector<size_t> *spare)
{
    constexpr double negligible = 1e-6; /* the largest is 1 */
    solution proof;
    const auto now = std::make_shared<const model>(active_problem(f));
    const verdict v = filter_ask_conic(f->adapter, f->job, now, &f->filter->tol, rest_of_time_s(f), &proof);
    {
        const std::lock_guard<std::mutex> lock(f->filter->state.mutex);
        f->filter->state.num_solved++;
    }
    if (v == IS_INFEASIBLE) find_spare(f, &proof, negligible, spare);
    return v == IS_FEASIBLE && f->is_integer ? NOT_SETTLED : v;
}

/* Whether the sides that stand in the engine are infeasible. For linear problems `spare` receives those that the proof
 * does without. */
static verdict ask(filter_run *f, std::vector<size_t> *spare)
{
    engine_answer answer;
    if (is_plain(f, spare)) return IS_INFEASIBLE;
    if (f->is_conic) return ask_conic(f, spare);
    solve(f, f->session, &answer);
    if (answer.status == ENGINE_OPTIMAL || answer.status == ENGINE_SOLUTION_LIMIT) return IS_FEASIBLE;
    if (f->is_integer) return answer.status == ENGINE_PRIMAL_INFEASIBLE ? IS_INFEASIBLE : NOT_SETTLED;
    if (answer.status == ENGINE_PRIMAL_INFEASIBLE && is_proof(f, answer.dual_ray, spare)) return IS_INFEASIBLE;
    if (is_over(f)) return NOT_SETTLED;
    f->calls->forget(f->session); /* where the simplex has come to can stand in its way later */
    return ask_phase_one(f, spare);
}

/* ---- the order of questions */

/* Leaves out what a proof does without, where that bears another look: a proof holds within the tolerances only. */
static void leave_out(filter_run *f, const std::vector<size_t> &spare)
{
    std::vector<size_t> more;
    if (spare.empty()) return;
    set_active(f, spare, false);
    if (ask(f, &more) != IS_INFEASIBLE) set_active(f, spare, true);
}

/* Blocks in the order in which they are left out: bounds before rows, as rows say more to who reads the result. */
static std::deque<std::vector<size_t>> first_blocks(const filter_run *f)
{
    std::vector<size_t> order;
    for (const bool rows : {false, true})
        for (size_t k = 0; k < f->active.size(); k++)
            if (f->filter->part.sides[k].is_row == rows && f->active[k] != 0) order.push_back(k);
    const size_t size = order.size() <= single_sides ? 1 : std::max<size_t>(1, order.size() / 16);
    std::deque<std::vector<size_t>> blocks;
    for (size_t begin = 0; begin < order.size(); begin += size) {
        const size_t end = std::min(begin + size, order.size());
        blocks.emplace_back(order.begin() + static_cast<std::ptrdiff_t>(begin),
                            order.begin() + static_cast<std::ptrdiff_t>(end));
    }
    return blocks;
}

static void settle_block(filter_run *f, std::vector<size_t> block, std::deque<std::vector<size_t>> *blocks)
{
    filter_state *state = &f->filter->state;
    std::vector<size_t> spare;

    std::erase_if(block, [&](size_t k) { return f->active[k] == 0; });
    if (block.empty()) return;
    set_active(f, block, false);
    const verdict v = ask(f, &spare);
    if (v == IS_INFEASIBLE) {
        leave_out(f, spare);
        const std::lock_guard<std::mutex> lock(state->mutex);
        state->kept = f->active;
        return;
    }
    set_active(f, block, true);
    if (block.size() > 1) {
        const auto half = block.begin() + static_cast<std::ptrdiff_t>(block.size() / 2);
        blocks->emplace_front(half, block.end());
        blocks->emplace_front(block.begin(), half);
        return;
    }
    if (v == IS_FEASIBLE || is_over(f)) return;
    const std::lock_guard<std::mutex> lock(state->mutex);
    state->num_open++;
}

static void run(filter_run *f)
{
    filter_state *state = &f->filter->state;
    std::vector<size_t> spare;

    if (ask(f, &spare) != IS_INFEASIBLE) return;
    leave_out(f, spare);
    {
        const std::lock_guard<std::mutex> lock(state->mutex);
        state->kept = f->active;
        state->is_confirmed = true;
    }
    std::deque<std::vector<size_t>> blocks = first_blocks(f);
    while (!blocks.empty() && !is_over(f)) {
        std::vector<size_t> block = std::move(blocks.front());
        blocks.pop_front();
        settle_block(f, std::move(block), &blocks);
    }
    const std::lock_guard<std::mutex> lock(state->mutex);
    state->is_done = blocks.empty() && !is_over(f);
}

void filter_sides(const std::shared_ptr<side_filter> &filter, const engine_adapter *adapter,
                  const std::shared_ptr<engine_job> &job)
{
    std::string message = "has no sessions";
    filter_run f;

    f.filter = filter.get();
    f.adapter = adapter;
    f.calls = adapter->sessions;
    f.is_conic = filter_is_conic(filter->part.problem.get());
    f.job = job;
    f.is_integer = model_num_int(filter->part.problem.get()) > 0;
    f.active.assign(filter->part.sides.size(), 1);
    f.has_entries.assign(static_cast<size_t>(filter->part.problem->num_con), 0);
    for (const int32_t i : filter->part.problem->a.row) f.has_entries[static_cast<size_t>(i)] = 1;
    for (const quad_row &q : filter->part.problem->qcon) f.has_entries[static_cast<size_t>(q.row)] = 1;
    if (f.is_conic) {
        run(&f);
        return;
    }
    if (f.calls != nullptr) f.session = f.calls->open(job, filter->part.problem.get(), &message);
    if (f.session == nullptr) {
        const std::lock_guard<std::mutex> lock(job->mutex);
        job->answer.status = ENGINE_REFUSED;
        job->answer.message = message;
        return;
    }
    run(&f);
    f.calls->close(f.session);
    if (f.phase_one != nullptr) f.calls->close(f.phase_one);
}
