/* ranging.cpp - see ranging.h.
 *
 * The engine ranges the optimal basis once, and what can be read off there is read first. Where that gives no room on one
 * side, the value is moved a little that way and the task solved again from where it stands: the new basis has its range
 * around the moved value, and its price is the slope on that side, provided that the objective there bears it out. Where
 * another basis can follow with the same price, it is looked at in the same way, until the price changes. */
#include "solver/analysis/ranging.h"

#include "solver/engines/work.h"

#include <algorithm>
#include <cmath>

/* Shared with the engine's thread. */
struct ranging_state {
    std::mutex mutex;
    ranging out;
    bool is_done = false;
    std::string failure;
};

/* The session at work on one problem. */
struct ranging_run {
    std::shared_ptr<const model> problem;
    const engine_session_calls *calls = nullptr;
    engine_session *session = nullptr;
    std::shared_ptr<engine_job> job;
    engine_answer base;
    engine_ranges ranges;
    std::vector<double> activity;
    double objective = 0.0;
    int32_t num_solved = 0;
    bool is_at_base = false; /* the session stands at the optimal basis */
    bool is_primal_degenerate = false, is_dual_degenerate = false;
};

static constexpr double tiny = 1e-9; /* relative: values closer than this are the same */

static bool same(double a, double b)
{
    return a == b || (std::isfinite(a) && std::isfinite(b) &&
                      std::fabs(a - b) <= tiny * std::max({1.0, std::fabs(a), std::fabs(b)}));
}

static bool is_stopped(const ranging_run *r) { return r->job->stop.load() || r->job->left.load(); }

static double present_value(const model *m, const range_item *item)
{
    const auto k = static_cast<size_t>(item->index);
    if (item->what == RANGE_COST) return m->c[k];
    if (item->what == RANGE_ROW) return item->is_upper ? m->con_upper[k] : m->con_lower[k];
    return item->is_upper ? m->var_upper[k] : m->var_lower[k];
}

static void solve(ranging_run *r, engine_answer *a)
{
    r->calls->solve(r->session, model_inf, a);
    r->is_at_base = false;
    r->num_solved++;
}

/* Back to the optimal basis, with all numbers at their present values. */
static void go_to_base(ranging_run *r)
{
    r->calls->restart(r->session, &r->base);
    r->is_at_base = true;
}

/* Puts the item's number at `value` in the engine. Both sides move where they are equal; a side is never moved past the
 * other one: false. */
static bool put_value(const ranging_run *r, const range_item *item, double value)
{
    const model *m = r->problem.get();
    const auto k = static_cast<size_t>(item->index);
    if (item->what == RANGE_COST) {
        r->calls->col_cost(r->session, item->index, value);
        return true;
    }
    const bool is_row = item->what == RANGE_ROW;
    double lower = is_row ? m->con_lower[k] : m->var_lower[k], upper = is_row ? m->con_upper[k] : m->var_upper[k];
    const bool together = lower == upper;
    if (together || !item->is_upper) lower = value;
    if (together || item->is_upper) upper = value;
    if (lower > upper) return false;
    (is_row ? r->calls->row_bounds : r->calls->col_bounds)(r->session, item->index, lower, upper);
    return true;
}

/* Slope of the optimal value in the item's number, at an answer. What rounding leaves of 0 is 0. */
static double price_of(const range_item *item, const engine_answer *a)
{
    const auto k = static_cast<size_t>(item->index);
    const double price = item->what == RANGE_COST ? a->x[k] : (item->what == RANGE_ROW ? a->y : a->reduced)[k];
    return std::fabs(price) < 1e-3 * tiny ? 0.0 : price;
}

static engine_number number_of(const range_item *item)
{
    if (item->what == RANGE_COST) return NUMBER_COST;
    return item->what == RANGE_ROW ? NUMBER_ROW : NUMBER_COLUMN;
}

static const engine_range *range_of(const range_item *item, const engine_ranges *ranges)
{
    if (item->what == RANGE_COST) return &ranges->cost;
    return item->what == RANGE_ROW ? &ranges->row : &ranges->column;
}

static int32_t key_of(const range_item *item, const engine_answer *a)
{
    const auto k = static_cast<size_t>(item->index);
    return item->what == RANGE_ROW ? a->row_key[k] : a->col_key[k];
}

static double end_of(const engine_range *range, const range_item *item, bool right)
{
    return (right ? range->up : range->down)[static_cast<size_t>(item->index)];
}

static double objective_at(const ranging_run *r, const range_item *item, double value, const engine_answer *a)
{
    double objective = model_objective(r->problem.get(), a->x.data());
    if (item->what == RANGE_COST)
        objective += (value - present_value(r->problem.get(), item)) * a->x[static_cast<size_t>(item->index)];
    return objective;
}

static bool is_whole(const engine_answer *a)
{
    return a->status == ENGINE_OPTIMAL && !a->x.empty() && a->reduced.size() == a->x.size() && !a->col_key.empty();
}

struct one_side {
    double price = 0.0, range = 0.0;
    bool is_known = false;
    bool is_moved = false; /* of another basis than the optimal one */
    bool turns = false;    /* the range is known to end where the basis does */
};

/* How far the basis of `a`, found at `moved`, holds on: in the direction of the move, as a change from the present value. */
static bool hold(const ranging_run *r, const range_item *item, const engine_answer *a, double value, double moved,
                 bool right, one_side *side)
{
    const double far = right ? model_inf : -model_inf;
    engine_reach reach;
    if (item->what != RANGE_COST && key_of(item, a) == ZLR_SK_BASIC) { /* the side is met no more: up to the activity */
        const auto k = static_cast<size_t>(item->index);
        double at = a->x[k];
        if (item->what == RANGE_ROW) {
            std::vector<double> activity(static_cast<size_t>(r->problem->num_con));
            model_activity(r->problem.get(), a->x.data(), activity.data());
            at = activity[k];
        }
        side->range = right == item->is_upper ? far : at - value;
        return true;
    }
    if (!r->calls->range_one(r->session, a, number_of(item), item->index, &reach)) return false;
    side->range = moved + (right ? reach.up : reach.down) - value;
    side->turns = right ? reach.turns_up : reach.turns_down;
    return true;
}

/* Moves the value to one side, as little as it takes, and reads slope and range off there. */
static one_side move_aside(ranging_run *r, const range_item *item, bool right)
{
    const double value = present_value(r->problem.get(), item), size = std::max(1.0, std::fabs(value));
    bool was_infeasible = false;
    one_side found;
    found.is_moved = true;

    /* Steps stay far above what the engine takes as feasible. */
    for (double step = 1e-3 * size; step > 3e-6 * size && !found.is_known && !is_stopped(r); step /= 10.0) {
        const double moved = right ? value + step : value - step;
        engine_answer a;
        go_to_base(r);
        if (!put_value(r, item, moved)) {
            was_infeasible = true;
            continue;
        }
        solve(r, &a);
        was_infeasible = a.status == ENGINE_PRIMAL_INFEASIBLE || a.status == ENGINE_DUAL_INFEASIBLE ||
                         a.status == ENGINE_INFEASIBLE_OR_UNBOUNDED;
        if (!is_whole(&a) || !hold(r, item, &a, value, moved, right, &found)) continue;
        /* The line from here to there has the slope of the basis there: no other one lies between. */
        const double price = price_of(item, &a), objective = objective_at(r, item, moved, &a);
        const double line = r->objective + price * (moved - value);
        if (std::fabs(objective - line) >
                1e-7 * std::max(1.0, std::fabs(objective)) * std::min(1.0, step / size * 1e3) &&
            std::fabs(objective - line) > 1e-6 * std::fabs(price) * step)
            continue;
        found.price = price;
        found.is_known = true;
    }
    (void)put_value(r, item, value);
    if (found.is_known || !was_infeasible || is_stopped(r)) return found;
    const bool is_max = r->problem->sense == ZLR_SENSE_MAX;
    const bool cost = item->what == RANGE_COST;
    /* Beyond, a minimisation has the value +inf where it is infeasible and -inf where a cost makes it unbounded. */
    const double beyond = (is_max == cost) ? model_inf : -model_inf;
    found.price = right ? beyond : -beyond;
    found.range = 0.0;
    found.is_known = true;
    return found;
}

/* One side by the ranging of the optimal basis; not known where the basis has no room there. */
static one_side read_side(const ranging_run *r, const range_item *item, bool right)
{
    const double value = present_value(r->problem.get(), item);
    one_side side;
    if (item->what != RANGE_COST && key_of(item, &r->base) == ZLR_SK_BASIC) return side;
    const double end = end_of(range_of(item, &r->ranges), item, right);
    const bool is_endless = !std::isfinite(end) || std::fabs(end) >= 1e29;
    side.is_known = is_endless || (!same(end, value) && (right ? end > value : end < value));
    if (!side.is_known) return side;
    side.price = price_of(item, &r->base);
    side.range = is_endless ? (right ? model_inf : -model_inf) : end - value;
    return side;
}

/* A side that is not met has no price, up to the activity. */
static bool is_slack(const ranging_run *r, const range_item *item, range_result *result)
{
    if (item->what == RANGE_COST) return false;
    const double value = present_value(r->problem.get(), item);
    const auto k = static_cast<size_t>(item->index);
    const double at = item->what == RANGE_ROW ? r->activity[k] : r->base.x[k];
    if (same(at, value)) return false;
    result->left_range = item->is_upper ? std::min(0.0, at - value) : -model_inf;
    result->right_range = item->is_upper ? model_inf : std::max(0.0, at - value);
    result->is_known = true;
    return true;
}

static void limit_by_other_side(const ranging_run *r, const range_item *item, range_result *result)
{
    const model *m = r->problem.get();
    const auto k = static_cast<size_t>(item->index);
    if (item->what == RANGE_COST) return;
    const bool is_row = item->what == RANGE_ROW;
    const double lower = is_row ? m->con_lower[k] : m->var_lower[k], upper = is_row ? m->con_upper[k] : m->var_upper[k];
    if (lower == upper) return;
    if (item->is_upper)
        result->left_range = std::max(result->left_range, lower - upper);
    else
        result->right_range = std::min(result->right_range, upper - lower);
}

/* A range that ends with its basis goes on as long as the price stays. Costs can change the basis without a change of the
 * point only where that is degenerate, sides without a change of the duals only where those are. */
static constexpr int32_t most_bases = 200;

static bool can_extend(const ranging_run *r, const range_item *item, const one_side *side)
{
    if (!std::isfinite(side->range) || side->range == 0.0) return false;
    return !side->turns &&
           (side->is_moved || (item->what == RANGE_COST ? r->is_primal_degenerate : r->is_dual_degenerate));
}

static void extend(ranging_run *r, const range_item *item, bool right, one_side *side)
{
    const double value = present_value(r->problem.get(), item);
    for (int32_t k = 0; k < most_bases && std::isfinite(side->range) && !side->turns && !is_stopped(r); k++) {
        const double end = value + side->range, step = 1e-5 * std::max(1.0, std::fabs(end));
        const double moved = right ? end + step : end - step;
        engine_answer a;
        if (k == 0 && !side->is_moved) go_to_base(r);
        if (!put_value(r, item, moved)) break;
        solve(r, &a);
        if (!is_whole(&a) || !same(price_of(item, &a), side->price) || !hold(r, item, &a, value, moved, right, side))
            break;
    }
    (void)put_value(r, item, value);
}

/* A side that is worth nothing when it gives way stays so: prices only fall that way. */
static void loosen(const ranging_run *r, const range_item *item, bool right, one_side *side)
{
    const model *m = r->problem.get();
    const auto k = static_cast<size_t>(item->index);
    if (item->what == RANGE_COST || right != item->is_upper || !side->is_known || std::fabs(side->price) > tiny) return;
    const bool is_row = item->what == RANGE_ROW;
    if ((is_row ? m->con_lower : m->var_lower)[k] == (is_row ? m->con_upper : m->var_upper)[k]) return;
    side->range = right ? model_inf : -model_inf;
}

/* Whether the price changes where the optimal basis does. */
static bool ends_with_basis(ranging_run *r, const range_item *item, bool right)
{
    engine_reach reach;
    if (!r->is_at_base) go_to_base(r);
    return r->calls->range_one(r->session, &r->base, number_of(item), item->index, &reach) &&
           (right ? reach.turns_up : reach.turns_down);
}

/* False: it takes moves, and none are made. */
static bool range_side(ranging_run *r, const range_item *item, bool right, bool moves, one_side *side)
{
    *side = read_side(r, item, right);
    if (!side->is_known && !moves) return false;
    if (!side->is_known) *side = move_aside(r, item, right);
    loosen(r, item, right, side);
    if (!can_extend(r, item, side)) return true;
    if (!side->is_moved && ends_with_basis(r, item, right)) return true;
    if (moves) extend(r, item, right, side);
    return moves;
}

/* Without moves only what can be read off the optimal basis; else nothing is known yet. */
static range_result range_one(ranging_run *r, const range_item *item, bool moves)
{
    range_result result;
    one_side left, right;
    if (!std::isfinite(present_value(r->problem.get(), item))) { /* a side that is not there */
        result.left_range = -model_inf;
        result.right_range = model_inf;
        result.is_known = true;
        return result;
    }
    if (is_slack(r, item, &result)) return result;
    if (!range_side(r, item, false, moves, &left) || !range_side(r, item, true, moves, &right)) return result;
    result.left_price = left.price;
    result.left_range = std::min(0.0, left.range);
    result.right_price = right.price;
    result.right_range = std::max(0.0, right.range);
    result.is_known = left.is_known && right.is_known;
    limit_by_other_side(r, item, &result);
    return result;
}

/* First all that takes no moves: a stop leaves as little unknown as may be. */
static void range_items(ranging_run *r, const std::vector<range_item> &items, bool may_move, ranging_state *state)
{
    std::vector<char> is_known(items.size(), 0);
    for (const bool moves : {false, true}) {
        if (moves && !may_move) return;
        for (size_t k = 0; k < items.size() && !is_stopped(r); k++) {
            if (is_known[k] != 0) continue;
            const range_result result = range_one(r, &items[k], moves);
            is_known[k] = result.is_known ? 1 : 0;
            const std::lock_guard<std::mutex> lock(state->mutex);
            state->out.results[k] = result;
            state->out.num_solved = r->num_solved;
        }
    }
}

static void count_degenerate(const ranging_run *r, ranging *out)
{
    const model *m = r->problem.get();
    for (size_t i = 0; i < r->activity.size(); i++) {
        const bool at = same(r->activity[i], m->con_lower[i]) || same(r->activity[i], m->con_upper[i]);
        if (r->base.row_key[i] == ZLR_SK_BASIC)
            out->num_primal_degenerate += at ? 1 : 0;
        else
            out->num_dual_degenerate += m->con_lower[i] != m->con_upper[i] && std::fabs(r->base.y[i]) <= tiny ? 1 : 0;
    }
    for (size_t j = 0; j < r->base.x.size(); j++) {
        const bool at = same(r->base.x[j], m->var_lower[j]) || same(r->base.x[j], m->var_upper[j]);
        if (r->base.col_key[j] == ZLR_SK_BASIC)
            out->num_primal_degenerate += at ? 1 : 0;
        else
            out->num_dual_degenerate +=
                m->var_lower[j] != m->var_upper[j] && std::fabs(r->base.reduced[j]) <= tiny ? 1 : 0;
    }
}

static void range_all(ranging_run *r, const std::vector<range_item> &items, bool may_move, ranging_state *state)
{
    solve(r, &r->base);
    r->is_at_base = true;
    if (!is_whole(&r->base) || !r->calls->ranges(r->session, &r->ranges)) {
        const std::lock_guard<std::mutex> lock(state->mutex);
        state->failure = "the engine does not range the basis";
        return;
    }
    r->activity.resize(static_cast<size_t>(r->problem->num_con));
    model_activity(r->problem.get(), r->base.x.data(), r->activity.data());
    r->objective = model_objective(r->problem.get(), r->base.x.data());
    {
        const std::lock_guard<std::mutex> lock(state->mutex);
        count_degenerate(r, &state->out);
        r->is_primal_degenerate = state->out.num_primal_degenerate > 0;
        r->is_dual_degenerate = state->out.num_dual_degenerate > 0;
        state->out.objective = r->objective;
        state->out.x = r->base.x;
        state->out.activity = r->activity;
    }
    range_items(r, items, may_move, state);
    const std::lock_guard<std::mutex> lock(state->mutex);
    state->is_done = true;
}

/* Engines make a basis only where the matrix has an entry: a problem without one gets a free row for it. */
static std::shared_ptr<const model> with_entry(const std::shared_ptr<const model> &problem)
{
    if (!problem->a.row.empty() || problem->num_var == 0) return problem;
    auto p = std::make_shared<model>(*problem);
    model_append_cons(p.get(), 1);
    const int32_t row = p->num_con - 1;
    const double one = 1.0;
    model_put_column(p.get(), 0, 1, &row, &one);
    return p;
}

int32_t ranging_compute(ZLR_task *task, const solution *basis, const std::vector<range_item> &items, ranging *out,
                        std::string *message)
{
    const auto state = std::make_shared<ranging_state>();
    const auto shared_items = std::make_shared<const std::vector<range_item>>(items);
    const std::shared_ptr<const model> problem = with_entry(task->problem);
    engine_start start;

    state->out.results.resize(items.size());
    if (basis->has_keys && problem == task->problem) {
        start.row_key = basis->skc;
        start.col_key = basis->skx;
    }
    const bool may_move = param_int(&task->params, IPAR_SENSITIVITY_MOVES) != 0;
    const engine_work work = [state, shared_items, problem, may_move](const engine_adapter *adapter,
                                                                      const std::shared_ptr<engine_job> &job) {
        ranging_run r;
        std::string why = "has no sessions";
        r.problem = problem;
        r.job = job;
        r.calls = adapter->sessions;
        if (r.calls != nullptr) r.session = r.calls->open(job, problem.get(), &why);
        if (r.session == nullptr) {
            const std::lock_guard<std::mutex> lock(state->mutex);
            state->failure = why;
            return;
        }
        range_all(&r, *shared_items, may_move, state.get());
        r.calls->close(r.session);
    };
    const work_end end = engines_work(task, problem, start, param_dou(&task->params, DPAR_TIME_LIMIT), work, message);
    const std::lock_guard<std::mutex> lock(state->mutex);
    *out = state->out;
    if (end == WORK_STOPPED) return ZLR_RES_TRM_USER_STOP;
    if (end == WORK_OUT_OF_TIME) return ZLR_RES_TRM_TIME_LIMIT;
    if (state->is_done) return ZLR_RES_OK;
    if (!state->failure.empty()) *message = state->failure;
    return ZLR_RES_ERR_ENGINE;
}
