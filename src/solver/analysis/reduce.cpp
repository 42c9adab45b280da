/* reduce.cpp - see reduce.h. */
#include "solver/analysis/reduce.h"

#include "solver/analysis/filter.h"
#include "solver/analysis/filter_conic.h"
#include "solver/engines/certificate.h"
#include "solver/engines/work.h"
#include "solver/report/clock.h"

#include <algorithm>

static bool is_stopped(work_end end) { return end == WORK_STOPPED || end == WORK_OUT_OF_TIME; }

static bool row_order(const model_side &a, const model_side &b)
{
    if (a.is_row != b.is_row) return a.is_row;
    return a.index != b.index ? a.index < b.index : a.is_upper < b.is_upper;
}

static std::vector<model_side> kept_sides(const side_filter *f, const std::vector<model_side> &sides)
{
    std::vector<model_side> kept;
    for (size_t k = 0; k < sides.size(); k++)
        if (f->state.kept[k] != 0) kept.push_back(sides[k]);
    return kept;
}

/* Leaves out what can be left out. Returns whether the engine finds the given sides infeasible. */
static bool run_filter(ZLR_task *task, const model *m, double deadline_s, reduction *r)
{
    const auto f = std::make_shared<side_filter>();
    f->part = sides_problem(m, r->sides, false);
    f->tol = check_tolerances_of(&task->params);
    f->deadline_s = deadline_s;
    f->state.kept.assign(r->sides.size(), 1);

    const engine_work work = [f](const engine_adapter *adapter, const std::shared_ptr<engine_job> &job) {
        filter_sides(f, adapter, job);
    };
    const double limit_s = deadline_s - clock_now_s();
    const work_end end = filter_is_conic(f->part.problem.get())
                             ? engines_conic_work(task, limit_s, work, &r->failure)
                             : engines_work(task, f->part.problem, {}, limit_s, work, &r->failure);
    const std::lock_guard<std::mutex> lock(f->state.mutex);
    r->sides = kept_sides(f.get(), r->sides);
    r->num_solved += f->state.num_solved;
    r->num_open = f->state.num_open;
    r->is_irreducible = f->state.is_done && f->state.num_open == 0;
    r->is_stopped =
        r->is_stopped || is_stopped(end) || (end == WORK_DONE && f->state.is_confirmed && !f->state.is_done);
    return f->state.is_confirmed;
}

static work_end solve_once(ZLR_task *task, const std::shared_ptr<const model> &problem, double deadline_s,
                           engine_answer *answer, reduction *r)
{
    const auto got = std::make_shared<work_find<engine_answer>>();
    const session_use use = [got, deadline_s](const engine_session_calls *calls, engine_session *session) {
        engine_answer mine;
        calls->solve(session, deadline_s - clock_now_s(), &mine);
        const std::lock_guard<std::mutex> lock(got->mutex);
        got->found = std::move(mine);
    };
    r->num_solved++;
    const work_end end = engines_session(task, problem, deadline_s - clock_now_s(), use, &r->failure);
    const std::lock_guard<std::mutex> lock(got->mutex);
    *answer = std::move(got->found);
    return end;
}

/* ---- the engine's own facility */

/* What it may take of the time: where it finds a set, it mostly does at once, and where it does not come to its end, ours
 * still has to be asked. */
static double engine_limit_s(double rest_s) { return std::min(2.0, rest_s / 4.0); }

static bool is_marked(const engine_sides *marks, const model_side &side)
{
    const std::vector<char> &of = side.is_row ? (side.is_upper ? marks->row_upper : marks->row_lower)
                                              : (side.is_upper ? marks->col_upper : marks->col_lower);
    return !of.empty() && of[static_cast<size_t>(side.index)] != 0;
}

/* The set that the engine claims to be infeasible for the relaxation, within `sides`; none where it has no such facility or
 * finds none. Engines with such a facility know of linear problems. */
static std::vector<model_side> engine_set(ZLR_task *task, const model *m, const std::vector<model_side> &sides,
                                          double deadline_s, reduction *r)
{
    const side_problem part = sides_problem(m, sides, false);
    const auto got = std::make_shared<work_find<engine_sides>>();
    const double limit_s = engine_limit_s(deadline_s - clock_now_s());
    const session_use use = [got, limit_s](const engine_session_calls *calls, engine_session *session) {
        engine_sides mine;
        if (calls->infeasible_sides == nullptr || !calls->infeasible_sides(session, limit_s, &mine)) return;
        const std::lock_guard<std::mutex> lock(got->mutex);
        got->found = std::move(mine);
    };
    part.problem->var_type.assign(part.problem->var_type.size(), ZLR_VAR_CONT);
    r->num_solved++;
    const work_end end = engines_session(task, part.problem, deadline_s - clock_now_s(), use, &r->failure);
    r->is_stopped = r->is_stopped || is_stopped(end);
    const std::lock_guard<std::mutex> lock(got->mutex);
    std::vector<model_side> found;
    for (size_t k = 0; k < sides.size(); k++)
        if (is_marked(&got->found, part.sides[k])) found.push_back(sides[k]);
    return found;
}

/* ---- proofs of linear problems */

/* The sides that the proof `y` of the part needs, as those of the whole; none where it is no proof. */
static std::vector<model_side> proven_sides(const side_problem *part, const check_tolerances *tol,
                                            const std::vector<double> &y)
{
    solution proof;
    solution_reset(&proof, part->problem->num_con, part->problem->num_var, model_num_cones(part->problem.get()));
    std::vector<model_side> sides;
    if (!certificate_from_dual_ray(part->problem.get(), tol, y, &proof)) return sides;
    for (model_side side : sides_of_certificate(&proof)) {
        side.index = (side.is_row ? part->row_of : part->col_of)[static_cast<size_t>(side.index)];
        sides.push_back(side);
    }
    return sides;
}

/* All proofs with the sides of `part`, scaled so that they amount to a contradiction of 1: a weight at least 0 a side, a
 * row a column of the part, and the row of the scale. The least sum of weights is a vertex. */
static std::shared_ptr<model> proof_problem(const side_problem *part)
{
    const model *m = part->problem.get();
    auto p = std::make_shared<model>();
    std::vector<std::vector<std::pair<int32_t, double>>> rows(static_cast<size_t>(m->num_con));

    for (int32_t j = 0; j < m->num_var; j++)
        for (auto k = static_cast<size_t>(m->a.start[static_cast<size_t>(j)]);
             k < static_cast<size_t>(m->a.start[static_cast<size_t>(j) + 1]); k++)
            rows[static_cast<size_t>(m->a.row[k])].emplace_back(j, m->a.value[k]);
    p->num_con = m->num_var + 1;
    p->con_lower.assign(static_cast<size_t>(p->num_con), 0.0);
    p->con_upper = p->con_lower;
    p->con_lower.back() = p->con_upper.back() = 1.0;
    p->num_var = static_cast<int32_t>(part->sides.size());
    for (const model_side &side : part->sides) {
        const double sign = side.is_upper ? -1.0 : 1.0;
        if (side.is_row) {
            for (const auto &[j, value] : rows[static_cast<size_t>(side.index)]) {
                p->a.row.push_back(j);
                p->a.value.push_back(sign * value);
            }
        } else {
            p->a.row.push_back(side.index);
            p->a.value.push_back(sign);
        }
        if (side_value(m, &side) != 0.0) {
            p->a.row.push_back(m->num_var);
            p->a.value.push_back(sign * side_value(m, &side));
        }
        p->a.start.push_back(static_cast<int64_t>(p->a.row.size()));
    }
    const auto num = static_cast<size_t>(p->num_var);
    p->c.assign(num, 1.0);
    p->var_lower.assign(num, 0.0);
    p->var_upper.assign(num, model_inf);
    p->var_type.assign(num, ZLR_VAR_CONT);
    names_resize(&p->con_names, p->num_con);
    names_resize(&p->var_names, p->num_var);
    return p;
}

/* Replaces the set by the support of a vertex of its proofs, where the engine finds one that passes the check. */
static void go_to_vertex(ZLR_task *task, const model *m, double deadline_s, reduction *r)
{
    const check_tolerances tol = check_tolerances_of(&task->params);
    const side_problem part = sides_problem(m, r->sides, false);
    engine_answer answer;

    const work_end end = solve_once(task, proof_problem(&part), deadline_s, &answer, r);
    r->is_stopped = r->is_stopped || is_stopped(end);
    if (end != WORK_DONE || answer.status != ENGINE_OPTIMAL || answer.x.size() != part.sides.size()) return;
    std::vector<double> y(static_cast<size_t>(part.problem->num_con), 0.0);
    for (size_t k = 0; k < part.sides.size(); k++)
        if (part.sides[k].is_row && answer.x[k] > 0.0)
            y[static_cast<size_t>(part.sides[k].index)] += part.sides[k].is_upper ? -answer.x[k] : answer.x[k];
    const std::vector<model_side> found = proven_sides(&part, &tol, y);
    if (!found.empty() && found.size() < r->sides.size()) r->sides = found;
}

std::vector<model_side> reduce_by_relaxation(ZLR_task *task, const model *m, const std::vector<model_side> &sides,
                                             double time_limit_s, reduction *found)
{
    const check_tolerances tol = check_tolerances_of(&task->params);
    const side_problem part = sides_problem(m, sides, false);
    engine_answer answer;

    part.problem->var_type.assign(part.problem->var_type.size(), ZLR_VAR_CONT);
    const work_end end = solve_once(task, part.problem, clock_now_s() + time_limit_s, &answer, found);
    found->is_stopped = found->is_stopped || is_stopped(end);
    if (end != WORK_DONE || answer.dual_ray.empty()) return {};
    return proven_sides(&part, &tol, answer.dual_ray);
}

/* Ours: a vertex of the proofs, and then each side in turn. */
static void reduce_from_proof(ZLR_task *task, const model *m, const std::vector<model_side> &sides,
                              const std::vector<model_side> &proof, double deadline_s, reduction *r)
{
    bool has_proof = true;
    r->sides = proof;
    if (model_num_int(m) > 0 && !filter_is_conic(m)) {
        /* Where the relaxation is infeasible already, its sides are few, and integrality has little left to do. */
        const std::vector<model_side> linear = reduce_by_relaxation(task, m, proof, deadline_s - clock_now_s(), r);
        has_proof = !linear.empty();
        if (has_proof) r->sides = linear;
    }
    const std::vector<model_side> given = r->sides;
    if (has_proof && !filter_is_conic(m) && !r->is_stopped && r->failure.empty()) go_to_vertex(task, m, deadline_s, r);
    if (r->is_stopped || !r->failure.empty() || run_filter(task, m, deadline_s, r) || r->is_stopped) return;
    /* A proof holds within the tolerances, and the engine may find a point within its own: then more sides are needed. */
    for (const std::vector<model_side> &more : {given, sides}) {
        r->sides = more;
        if (run_filter(task, m, deadline_s, r) || r->is_stopped || !r->failure.empty()) return;
    }
    r->failure = "no part of it is infeasible beyond the tolerances, so all of it is given";
}

/* The engine's own set, where it passes: found infeasible by the filter, each member tried. Returns whether that holds of
 * all members. */
static bool reduce_by_engine(ZLR_task *task, const model *m, const std::vector<model_side> &sides, double deadline_s,
                             reduction *r)
{
    if (filter_is_conic(m)) return false;
    r->sides = engine_set(task, m, sides, deadline_s, r);
    if (r->sides.empty() || r->is_stopped || !r->failure.empty()) return false;
    if (!run_filter(task, m, deadline_s, r)) r->sides.clear();
    return r->is_irreducible && !r->sides.empty();
}

reduction reduce_sides(ZLR_task *task, const model *m, std::vector<model_side> sides, std::vector<model_side> proof,
                       double time_limit_s)
{
    const double deadline_s = clock_now_s() + time_limit_s;
    reduction first;

    std::sort(sides.begin(), sides.end(), row_order);
    std::sort(proof.begin(), proof.end(), row_order);
    const bool asks_engine = param_int(&task->params, IPAR_ANALYZE_INFEAS_ENGINE) != 0;
    if (asks_engine && reduce_by_engine(task, m, sides, deadline_s, &first)) return first;
    reduction r;
    r.is_stopped = first.is_stopped;
    r.failure = first.failure;
    r.num_solved = first.num_solved;
    r.sides = proof;
    if (!r.is_stopped && r.failure.empty()) reduce_from_proof(task, m, sides, proof, deadline_s, &r);
    if (r.is_irreducible || first.sides.empty() || first.sides.size() >= r.sides.size()) return r;
    first.num_solved = r.num_solved;
    return first;
}
