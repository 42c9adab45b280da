/* repair.cpp - the smallest change of sides and bounds that makes a task feasible. See analysis.h.
 *
 * The elastic form of the task: each side that may give way has a slack with its weight as cost, so that the least cost
 * is the least weighted sum of changes, for linear and for integer tasks. Cones do not give way, and neither do the sides of
 * rows that are cones in disguise, nor the 0 that their heads must not fall below. */
#include "solver/analysis/analysis.h"

#include "solver/analysis/reduce.h"
#include "solver/analysis/relax.h"
#include "solver/engines/engines.h"
#include "solver/report/clock.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

struct repair_weights {
    const double *lower, *upper;
};

/* What stands for weights that are not given. */
struct usual_weights {
    std::vector<double> row, column;
};

static usual_weights usual_weights_of(const ZLR_task *task)
{
    const param_set *params = &task->params;
    const model *m = task->problem.get();
    usual_weights usual;
    usual.row.assign(static_cast<size_t>(m->num_con), param_dou(params, DPAR_REPAIR_ROW_WEIGHT));
    usual.column.assign(static_cast<size_t>(m->num_var), param_dou(params, DPAR_REPAIR_COLUMN_WEIGHT));
    for (size_t j = 0; j < usual.column.size(); j++)
        if (m->var_type[j] == ZLR_VAR_INT && param_int(params, IPAR_REPAIR_INTEGER_BOUNDS) == 0) usual.column[j] = -1.0;
    return usual;
}

static size_t screen_lines(const ZLR_task *task)
{
    return static_cast<size_t>(param_int(&task->params, IPAR_REPAIR_NAMES));
}

/* A side that does not exist, or with a negative weight, does not give way. */
static double weight_of(const double *weights, double side, size_t k)
{
    return std::isfinite(side) ? weights[k] : -1.0;
}

static int32_t check_weights(const double *weights, int32_t num)
{
    for (int32_t k = 0; weights != nullptr && k < num; k++)
        if (std::isnan(weights[k])) return ZLR_RES_ERR_NAN;
    return ZLR_RES_OK;
}

/* ---- the elastic form */

static void add_column(model *p, double cost, double lower, double upper)
{
    p->num_var++;
    p->c.push_back(cost);
    p->var_lower.push_back(lower);
    p->var_upper.push_back(upper);
    p->var_type.push_back(ZLR_VAR_CONT);
}

static void add_entry(model *p, int32_t row, double value)
{
    p->a.row.push_back(row);
    p->a.value.push_back(value);
}

static void end_column(model *p) { p->a.start.push_back(static_cast<int64_t>(p->a.row.size())); }

static void add_slacks(model *p, int32_t row, double lower_weight, double upper_weight)
{
    if (lower_weight >= 0.0) {
        add_column(p, lower_weight, 0.0, model_inf);
        add_entry(p, row, 1.0);
        end_column(p);
    }
    if (upper_weight >= 0.0) {
        add_column(p, upper_weight, 0.0, model_inf);
        add_entry(p, row, -1.0);
        end_column(p);
    }
}

/* A row, or a column's bounds as one, with the weights of its sides. */
struct elastic_row {
    int32_t row;
    double lower_weight, upper_weight;
};

static int32_t add_row(model *p, double lower, double upper)
{
    p->con_lower.push_back(lower);
    p->con_upper.push_back(upper);
    return p->num_con++;
}

/* Makes the row that holds the bounds of a column; two rows where they cross, as slacks of one row cannot part them. */
static void add_bound_rows(model *p, double lower, double upper, double lower_weight, double upper_weight,
                           std::vector<elastic_row> *elastic)
{
    if (lower_weight < 0.0) lower = -model_inf;
    if (upper_weight < 0.0) upper = model_inf;
    if (lower <= upper) {
        elastic->push_back({add_row(p, lower, upper), lower_weight, upper_weight});
        add_entry(p, elastic->back().row, 1.0);
        return;
    }
    for (const bool is_upper : {false, true}) {
        const int32_t row = is_upper ? add_row(p, -model_inf, upper) : add_row(p, lower, model_inf);
        elastic->push_back({row, is_upper ? -1.0 : lower_weight, is_upper ? upper_weight : -1.0});
        add_entry(p, row, 1.0);
    }
}

/* The rows, crossed ones parted in two: the number of the second one, -1 where there is none. */
static std::vector<int32_t> add_rows(model *p, const model *m, const repair_weights *weights,
                                     std::vector<elastic_row> *elastic)
{
    std::vector<int32_t> second(static_cast<size_t>(m->num_con), -1);
    for (int32_t i = 0; i < m->num_con; i++)
        (void)add_row(p, m->con_lower[static_cast<size_t>(i)], m->con_upper[static_cast<size_t>(i)]);
    for (int32_t i = 0; i < m->num_con; i++) {
        const auto k = static_cast<size_t>(i);
        const double wl = weight_of(weights->lower, m->con_lower[k], k),
                     wu = weight_of(weights->upper, m->con_upper[k], k);
        if (m->con_lower[k] <= m->con_upper[k]) {
            elastic->push_back({i, wl, wu});
            continue;
        }
        p->con_upper[k] = model_inf;
        second[k] = add_row(p, -model_inf, m->con_upper[k]);
        elastic->push_back({i, wl, -1.0});
        elastic->push_back({second[k], -1.0, wu});
    }
    return second;
}

static std::vector<char> head_columns(const model *m)
{
    std::vector<char> is_head(static_cast<size_t>(m->num_var), 0);
    for (const side_head &head : sides_heads(m)) is_head[static_cast<size_t>(head.column)] = 1;
    return is_head;
}

/* The task's columns come first; a column whose bounds may give way has them in a row of their own. */
static std::shared_ptr<model> elastic_form(const model *m, const repair_weights *rows, const repair_weights *columns)
{
    auto p = std::make_shared<model>();
    std::vector<elastic_row> elastic;
    const std::vector<char> is_head = head_columns(m);
    const std::vector<int32_t> second = add_rows(p.get(), m, rows, &elastic);

    for (int32_t j = 0; j < m->num_var; j++) {
        const auto k = static_cast<size_t>(j);
        const double wl = weight_of(columns->lower, m->var_lower[k], k),
                     wu = weight_of(columns->upper, m->var_upper[k], k);
        add_column(p.get(), 0.0, wl >= 0.0 ? (is_head[k] != 0 ? 0.0 : -model_inf) : m->var_lower[k],
                   wu >= 0.0 ? model_inf : m->var_upper[k]);
        p->var_type.back() = m->var_type[k];
        for (auto e = static_cast<size_t>(m->a.start[k]); e < static_cast<size_t>(m->a.start[k + 1]); e++) {
            add_entry(p.get(), m->a.row[e], m->a.value[e]);
            const int32_t other = second[static_cast<size_t>(m->a.row[e])];
            if (other >= 0) add_entry(p.get(), other, m->a.value[e]);
        }
        if (wl >= 0.0 || wu >= 0.0) add_bound_rows(p.get(), m->var_lower[k], m->var_upper[k], wl, wu, &elastic);
        end_column(p.get());
    }
    p->qcon = m->qcon;
    p->cones = m->cones; /* they do not give way */
    for (const elastic_row &row : elastic) add_slacks(p.get(), row.row, row.lower_weight, row.upper_weight);
    names_resize(&p->con_names, p->num_con);
    names_resize(&p->var_names, p->num_var);
    return p;
}

/* ---- solving it */

static int32_t forward_callback(ZLR_task *, void *handle, const ZLR_progress *progress)
{
    auto *owner = static_cast<ZLR_task *>(handle);
    return owner->callback(owner, owner->callback_handle, progress);
}

/* Solves a problem of our own with the task's parameters, silently; its solution is left in *sol. */
static int32_t solve_elastic(ZLR_task *task, std::shared_ptr<model> problem, double time_limit_s, solution *sol)
{
    ZLR_task own;
    own.env = task->env;
    own.params = task->params;
    own.problem = std::move(problem);
    own.params.dou[DPAR_TIME_LIMIT] = std::max(0.0, time_limit_s);
    if (task->callback != nullptr) {
        own.callback = forward_callback;
        own.callback_handle = task;
    }
    /* Limits on the task's objective say nothing here, and the least change is asked for. */
    param_set defaults;
    param_set_defaults(&defaults);
    for (const int32_t k : {DPAR_SIMPLEX_OBJECTIVE_BOUND, DPAR_MIP_OBJECTIVE_TARGET})
        own.params.dou[static_cast<size_t>(k)] = defaults.dou[static_cast<size_t>(k)];
    own.params.integer[IPAR_MIP_MAX_SOLUTIONS] = defaults.integer[IPAR_MIP_MAX_SOLUTIONS];
    double &gap = own.params.dou[DPAR_MIP_REL_GAP];
    gap = std::min(gap, 1e-7);

    const int32_t code = engines_optimize(&own);
    for (const int32_t kind : {ZLR_SOL_ITG, ZLR_SOL_BAS, ZLR_SOL_ITR})
        if (own.sol[kind].defined) {
            *sol = std::move(own.sol[kind]);
            break;
        }
    return code;
}

static bool is_optimal(int32_t solsta)
{
    return solsta == ZLR_SOLSTA_OPTIMAL || solsta == ZLR_SOLSTA_NEAR_OPTIMAL || solsta == ZLR_SOLSTA_INTEGER_OPTIMAL ||
           solsta == ZLR_SOLSTA_NEAR_INTEGER_OPTIMAL;
}

static std::vector<double> weights_of(const double *weights, const std::vector<double> &sides)
{
    std::vector<double> of(sides.size());
    for (size_t k = 0; k < of.size(); k++) of[k] = weight_of(weights, sides[k], k);
    return of;
}

/* A point of least violation: the engine's own where it is shown to be one, else by the elastic form. */
static int32_t find_least(ZLR_task *task, const repair_weights *rows, const repair_weights *columns,
                          std::vector<double> *x)
{
    const model *m = task->problem.get();
    const side_weights weights = {weights_of(rows->lower, m->con_lower), weights_of(rows->upper, m->con_upper),
                                  weights_of(columns->lower, m->var_lower), weights_of(columns->upper, m->var_upper)};
    const double start_s = clock_now_s(), limit_s = param_dou(&task->params, DPAR_TIME_LIMIT);
    solution sol;

    /* What both together take is within the limit. */
    const bool asks_engine = param_int(&task->params, IPAR_REPAIR_ENGINE) != 0;
    const relax_end end = asks_engine ? relax_by_engine(task, &weights, limit_s / 2.0, x) : RELAX_NONE;
    if (end == RELAX_FOUND) return ZLR_RES_OK;
    if (end == RELAX_STOPPED) return ZLR_RES_TRM_USER_STOP;
    const int32_t code = solve_elastic(task, elastic_form(m, rows, columns), limit_s - (clock_now_s() - start_s), &sol);
    if (code != ZLR_RES_OK) return code;
    if (sol.solsta == ZLR_SOLSTA_PRIM_INFEAS_CER) return ZLR_RES_ERR_NO_REPAIR;
    if (!is_optimal(sol.solsta) || !sol.has_primal) return ZLR_RES_TRM_STALL;
    *x = std::move(sol.xx);
    x->resize(static_cast<size_t>(m->num_var));
    return ZLR_RES_OK;
}

/* ---- what has to change */

struct side_change {
    model_side side;
    double from, to, weight;
};

/* What the optimiser takes as met needs no change. */
struct change_list {
    std::vector<side_change> all;
    double tolerance;
};

static void note_change(change_list *changes, const model_side &side, double from, double to, const double *weights)
{
    const double change = side.is_upper ? to - from : from - to;
    const double weight = weights[side.index];
    if (weight < 0.0 || !(change > changes->tolerance * std::max(1.0, std::fabs(from)))) return;
    changes->all.push_back({side, from, to, weight});
}

static std::vector<side_change> changes_of(const ZLR_task *task, const std::vector<double> &x,
                                           const repair_weights *rows, const repair_weights *columns)
{
    const model *m = task->problem.get();
    change_list changes = {{}, param_dou(&task->params, DPAR_PRIMAL_FEASIBILITY_TOL)};
    std::vector<double> activity(static_cast<size_t>(m->num_con));

    model_activity(m, x.data(), activity.data());
    for (int32_t i = 0; i < m->num_con; i++) {
        const auto k = static_cast<size_t>(i);
        if (std::isfinite(m->con_lower[k]))
            note_change(&changes, {true, false, i}, m->con_lower[k], activity[k], rows->lower);
        if (std::isfinite(m->con_upper[k]))
            note_change(&changes, {true, true, i}, m->con_upper[k], activity[k], rows->upper);
    }
    for (int32_t j = 0; j < m->num_var; j++) {
        const auto k = static_cast<size_t>(j);
        const double value = m->var_type[k] == ZLR_VAR_INT ? std::round(x[k]) : x[k];
        if (std::isfinite(m->var_lower[k]))
            note_change(&changes, {false, false, j}, m->var_lower[k], value, columns->lower);
        if (std::isfinite(m->var_upper[k]))
            note_change(&changes, {false, true, j}, m->var_upper[k], value, columns->upper);
    }
    return changes.all;
}

static void apply_changes(ZLR_task *task, const std::vector<side_change> &changes)
{
    model *m = task_edit(task);
    for (const side_change &c : changes) {
        std::vector<double> &sides = c.side.is_row ? (c.side.is_upper ? m->con_upper : m->con_lower)
                                                   : (c.side.is_upper ? m->var_upper : m->var_lower);
        sides[static_cast<size_t>(c.side.index)] = c.to;
    }
}

/* ---- the report */

static void print_changes(ZLR_task *task, const std::vector<side_change> &changes)
{
    const model *m = task->problem.get();
    const bool all =
        changes.size() <= screen_lines(task) || param_int(&task->params, IPAR_ANALYZE_DETAIL) == ANALYSIS_FULL;
    const size_t num = all ? changes.size() : screen_lines(task) - 2;
    double total = 0.0;
    std::vector<model_side> sides;
    std::string text;

    for (const side_change &c : changes) {
        total += c.weight * std::fabs(c.to - c.from);
        sides.push_back(c.side);
    }
    if (changes.empty()) {
        streams_write(&task->streams, ZLR_STREAM_MSG, "\nPrimal repair: nothing to change, the problem is feasible.\n");
        return;
    }
    streams_printf(&task->streams, ZLR_STREAM_MSG, "\nPrimal repair: %s changed, weighted sum %.10g\n",
                   sides_count_text(sides).c_str(), total);
    for (size_t k = 0; k < num; k++) {
        const side_change &c = changes[k];
        char line[160];
        (void)std::snprintf(line, sizeof line, " %s bound %.10g becomes %.10g (%+.6g)\n",
                            c.side.is_upper ? "upper" : "lower", c.from, c.to, c.to - c.from);
        text += std::string(c.side.is_row ? "  row " : "  column ") +
                names_shown(c.side.is_row ? &m->con_names : &m->var_names, c.side.index, c.side.is_row ? 'c' : 'x') +
                line;
    }
    if (!all) text += "  and " + std::to_string(changes.size() - num) + " more (ANALYZE_DETAIL=FULL names all)\n";
    streams_write(&task->streams, ZLR_STREAM_MSG, text.c_str());
}

/* The conditions that may not give way contradict each other: names an irreducible set of them. */
static int32_t tell_clash(ZLR_task *task, const repair_weights *rows, const repair_weights *columns)
{
    const model *m = task->problem.get();
    std::vector<model_side> hard = sides_all(m);
    std::erase_if(hard, [&](const model_side &side) {
        const repair_weights *w = side.is_row ? rows : columns;
        const double *weights = side.is_upper ? w->upper : w->lower;
        return weights[side.index] >= 0.0;
    });
    const reduction r = reduce_sides(task, m, hard, hard, param_dou(&task->params, DPAR_ANALYZE_INFEAS_TIME_LIMIT));
    std::string text = "The problem cannot be repaired: what may not be changed contradicts itself";
    text += r.sides.size() <= screen_lines(task) ? ":\n" : "; among others:\n";
    for (size_t k = 0; k < std::min(r.sides.size(), screen_lines(task)); k++)
        text += "  " + side_text(m, &r.sides[k], 76) + "\n";
    streams_write(&task->streams, ZLR_STREAM_ERR, text.c_str());
    return ZLR_RES_ERR_NO_REPAIR;
}

/* The weights of the rows, with those that are cones in disguise held as they are. */
static repair_weights hold_disguised(const model *m, repair_weights given, std::vector<double> *lower,
                                     std::vector<double> *upper)
{
    const std::vector<side_head> heads = sides_heads(m);
    if (heads.empty()) return given;
    lower->assign(given.lower, given.lower + m->num_con);
    upper->assign(given.upper, given.upper + m->num_con);
    for (const side_head &head : heads)
        (*lower)[static_cast<size_t>(head.row)] = (*upper)[static_cast<size_t>(head.row)] = -1.0;
    return {lower->data(), upper->data()};
}

int32_t primal_repair(ZLR_task *task, const double *wlc, const double *wuc, const double *wlx, const double *wux)
{
    const usual_weights usual = usual_weights_of(task);
    const auto given = [](const double *weights, const std::vector<double> &others) {
        return weights != nullptr ? weights : others.data();
    };
    const repair_weights columns = {given(wlx, usual.column), given(wux, usual.column)};
    const model *m = task->problem.get();
    std::vector<double> x;

    for (const double *weights : {wlc, wuc})
        if (check_weights(weights, m->num_con) != ZLR_RES_OK) return ZLR_RES_ERR_NAN;
    for (const double *weights : {wlx, wux})
        if (check_weights(weights, m->num_var) != ZLR_RES_OK) return ZLR_RES_ERR_NAN;

    std::vector<double> own_lower, own_upper;
    const repair_weights rows =
        hold_disguised(m, {given(wlc, usual.row), given(wuc, usual.row)}, &own_lower, &own_upper);
    const int32_t code = find_least(task, &rows, &columns, &x);
    if (code == ZLR_RES_ERR_NO_REPAIR) return tell_clash(task, &rows, &columns);
    if (code == ZLR_RES_TRM_STALL) {
        streams_write(&task->streams, ZLR_STREAM_ERR, "The primal repair found no answer; nothing is changed.\n");
        return code;
    }
    if (code != ZLR_RES_OK) {
        streams_write(&task->streams, ZLR_STREAM_ERR,
                      "The primal repair did not come to its end; nothing is changed.\n");
        return code;
    }
    const std::vector<side_change> changes = changes_of(task, x, &rows, &columns);
    print_changes(task, changes);
    if (!changes.empty()) apply_changes(task, changes);
    return ZLR_RES_OK;
}
