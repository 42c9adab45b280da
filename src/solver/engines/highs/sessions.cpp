/* sessions.cpp - problems that stay loaded in HiGHS while bounds and costs change. See engine_session_calls. */
#include "solver/engines/highs/session.h"

#include <cmath>
#include <exception>
#include <new>

/* The copy of the problem changes with the engine's, so that bases are read by the bounds that hold now. */
struct engine_session {
    highs_session highs;
    std::shared_ptr<model> problem;
    bool has_restarted = false, costs_changed = false, bounds_changed = false; /* since the restart */
};

static engine_session *open_session(const std::shared_ptr<engine_job> &job, const model *problem, std::string *message)
{
    try {
        auto made = std::make_unique<engine_session>();
        made->problem = std::make_shared<model>(*problem);
        made->highs.job = job;
        made->highs.problem = made->problem;
        made->highs.is_second = true; /* what the caller asks for is no progress of the job's */
        engine_answer answer;
        if (!highs_open(&made->highs, &answer)) {
            *message = answer.message;
            return nullptr;
        }
        return made.release();
    } catch (const std::bad_alloc &) {
        *message = "out of memory";
    } catch (const std::exception &e) {
        *message = e.what();
    }
    return nullptr;
}

static void row_bounds(engine_session *session, int32_t i, double lower, double upper)
{
    session->problem->con_lower[static_cast<size_t>(i)] = lower;
    session->problem->con_upper[static_cast<size_t>(i)] = upper;
    session->bounds_changed = true;
    (void)Highs_changeRowBounds(session->highs.highs, i, lower, upper);
}

static void col_bounds(engine_session *session, int32_t j, double lower, double upper)
{
    session->problem->var_lower[static_cast<size_t>(j)] = lower;
    session->problem->var_upper[static_cast<size_t>(j)] = upper;
    session->bounds_changed = true;
    (void)Highs_changeColBounds(session->highs.highs, j, lower, upper);
}

static void col_cost(engine_session *session, int32_t j, double cost)
{
    session->problem->c[static_cast<size_t>(j)] = cost;
    session->costs_changed = true;
    (void)Highs_changeColCost(session->highs.highs, j, cost);
}

/* From a basis that is feasible still, the primal simplex has a few steps to go, the dual one all of its first phase. */
static void choose_simplex(const engine_session *session)
{
    constexpr HighsInt dual = 1, primal = 4;
    if (!session->has_restarted) return;
    (void)Highs_setIntOptionValue(session->highs.highs, "simplex_strategy",
                                  session->costs_changed && !session->bounds_changed ? primal : dual);
}

static void solve(engine_session *session, double time_limit_s, engine_answer *answer)
{
    highs_session *s = &session->highs;
    *answer = engine_answer{};
    answer->status = ENGINE_STOPPED;
    if (highs_is_stopped(s)) return;
    try {
        choose_simplex(session);
        (void)Highs_zeroAllClocks(s->highs); /* the limit counts from the first run otherwise */
        (void)Highs_setDoubleOptionValue(s->highs, "time_limit", time_limit_s);
        (void)Highs_run(s->highs);
        highs_get_answer(s, answer);
        if (!s->is_mip && !highs_is_stopped(s)) highs_get_rays(s, answer);
    } catch (const std::bad_alloc &) {
        *answer = engine_answer{};
        answer->status = ENGINE_MEMORY;
    } catch (const std::exception &e) {
        *answer = engine_answer{};
        answer->status = ENGINE_FAILED;
        answer->message = e.what();
    }
}

static void restart(engine_session *session, const engine_answer *basis)
{
    highs_pass_basis(&session->highs, basis->row_key, basis->col_key);
    session->has_restarted = true;
    session->costs_changed = session->bounds_changed = false;
}

static void forget(engine_session *session) { (void)Highs_clearSolver(session->highs.highs); }

static void resize(engine_range *range, int32_t num)
{
    for (std::vector<double> *v : {&range->down, &range->up, &range->objective_down, &range->objective_up})
        v->resize(static_cast<size_t>(num));
}

static bool ranges(engine_session *session, engine_ranges *r)
{
    const model *m = session->problem.get();
    resize(&r->cost, m->num_var);
    resize(&r->column, m->num_var);
    resize(&r->row, m->num_con);
    return Highs_getRanging(session->highs.highs, r->cost.up.data(), r->cost.objective_up.data(), nullptr, nullptr,
                            r->cost.down.data(), r->cost.objective_down.data(), nullptr, nullptr, r->column.up.data(),
                            r->column.objective_up.data(), nullptr, nullptr, r->column.down.data(),
                            r->column.objective_down.data(), nullptr, nullptr, r->row.up.data(),
                            r->row.objective_up.data(), nullptr, nullptr, r->row.down.data(),
                            r->row.objective_down.data(), nullptr, nullptr) == kHighsStatusOk;
}

static bool range_one(engine_session *session, const engine_answer *at, engine_number what, int32_t index,
                      engine_reach *reach)
{
    return highs_range_one(&session->highs, at, what, index, reach);
}

/* Members with what HiGHS says of their sides. Those that it calls free are there for their entries alone. */
static void mark_sides(const std::vector<HighsInt> &which, const std::vector<HighsInt> &bound, std::vector<char> *lower,
                       std::vector<char> *upper)
{
    for (size_t k = 0; k < which.size(); k++) {
        const auto index = static_cast<size_t>(which[k]);
        (*lower)[index] = bound[k] == kHighsIisBoundLower || bound[k] == kHighsIisBoundBoxed ? 1 : 0;
        (*upper)[index] = bound[k] == kHighsIisBoundUpper || bound[k] == kHighsIisBoundBoxed ? 1 : 0;
    }
}

/* HiGHS leaves its arrays of sides unfilled where it has shown nothing, and reads past their end when it copies them: the
 * first call asks for the numbers only, and the second one, answered from what the first has left, only behind a set
 * that it stands by. */
static bool find_infeasible(highs_session *s, double time_limit_s, engine_sides *sides)
{
    void *h = s->highs;
    const model *m = s->problem.get();
    HighsInt num_col = 0, num_row = 0;

    (void)Highs_setIntOptionValue(h, "iis_strategy", kHighsIisStrategyFromLpRowPriority);
    (void)Highs_setDoubleOptionValue(h, "iis_time_limit", time_limit_s);
    if (Highs_getIis(h, &num_col, &num_row, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr) != kHighsStatusOk ||
        num_col + num_row <= 0 || highs_is_stopped(s))
        return false;
    std::vector<HighsInt> col(static_cast<size_t>(m->num_var)), row(static_cast<size_t>(m->num_con)), col_bound(col),
        row_bound(row);
    if (Highs_getIis(h, &num_col, &num_row, col.data(), row.data(), col_bound.data(), row_bound.data(), nullptr,
                     nullptr) != kHighsStatusOk)
        return false;
    for (std::vector<HighsInt> *v : {&col, &col_bound}) v->resize(static_cast<size_t>(num_col));
    for (std::vector<HighsInt> *v : {&row, &row_bound}) v->resize(static_cast<size_t>(num_row));
    sides->row_lower.assign(static_cast<size_t>(m->num_con), 0);
    sides->row_upper = sides->row_lower;
    sides->col_lower.assign(static_cast<size_t>(m->num_var), 0);
    sides->col_upper = sides->col_lower;
    mark_sides(row, row_bound, &sides->row_lower, &sides->row_upper);
    mark_sides(col, col_bound, &sides->col_lower, &sides->col_upper);
    return true;
}

static bool infeasible_sides(engine_session *session, double time_limit_s, engine_sides *sides)
{
    if (highs_is_stopped(&session->highs)) return false;
    try {
        return find_infeasible(&session->highs, time_limit_s, sides);
    } catch (const std::exception &) { /* help that did not come */
        return false;
    }
}

/* HiGHS calls neither the point nor the multipliers valid when it has put its model back, though it leaves both. */
static bool relax(engine_session *session, double time_limit_s, const engine_weights *w, engine_answer *answer)
{
    highs_session *s = &session->highs;
    if (highs_is_stopped(s)) return false;
    try {
        (void)Highs_zeroAllClocks(s->highs);
        (void)Highs_setDoubleOptionValue(s->highs, "time_limit", time_limit_s);
        answer->x.assign(static_cast<size_t>(s->problem->num_var), 0.0);
        answer->y.assign(static_cast<size_t>(s->problem->num_con), 0.0);
        return Highs_feasibilityRelaxation(s->highs, 1.0, 1.0, 1.0, w->col_lower.data(), w->col_upper.data(),
                                           w->row.data()) == kHighsStatusOk &&
               Highs_getSolution(s->highs, answer->x.data(), nullptr, nullptr, answer->y.data()) == kHighsStatusOk;
    } catch (const std::exception &) { /* help that did not come */
        return false;
    }
}

static void close_session(engine_session *session) { delete session; }

const engine_session_calls highs_session_calls = {open_session, row_bounds,    col_bounds,       col_cost,
                                                  solve,        forget,        restart,          ranges,
                                                  range_one,    close_session, infeasible_sides, relax};
