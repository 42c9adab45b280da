/* infeasible.cpp - the part of a task that its certificate speaks of, as a task of its own. See analysis.h. */
#include "solver/analysis/analysis.h"

#include "solver/analysis/filter_conic.h"
#include "solver/analysis/reduce.h"
#include "solver/report/clock.h"
#include "solver/report/words.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

static constexpr size_t screen_width = 76;

static std::string count(size_t num, const char *one, const char *many)
{
    return std::to_string(num) + " " + (num == 1 ? one : many);
}

/* Members that are named one by one. */
static size_t screen_lines(const ZLR_task *task)
{
    return static_cast<size_t>(param_int(&task->params, IPAR_ANALYZE_INFEAS_NAMES));
}

/* By the part: a row's text takes a look at every column. */
static void print_members(ZLR_task *task, const side_problem *part)
{
    const std::vector<model_side> &sides = part->sides;
    const bool all =
        sides.size() <= screen_lines(task) || param_int(&task->params, IPAR_ANALYZE_DETAIL) == ANALYSIS_FULL;
    const size_t num = all ? sides.size() : screen_lines(task) - 2;
    std::string text;

    for (size_t k = 0; k < num; k++) text += "  " + side_text(part->problem.get(), &sides[k], screen_width) + "\n";
    if (!all) text += "  and " + std::to_string(sides.size() - num) + " more (ANALYZE_DETAIL=FULL names all)\n";
    streams_write(&task->streams, ZLR_STREAM_MSG, text.c_str());
}

static const char *quality(const reduction *r, bool is_reduced)
{
    if (!r->failure.empty()) return "not reduced";
    if (!is_reduced) return "as the certificate names it";
    if (r->is_irreducible) return "irreducible: it is feasible without any one of these";
    if (r->is_stopped) return "the smallest found when the reduction was stopped";
    return r->num_open > 0 ? "reduced, but not every member was shown to be needed" : "not reduced further";
}

static void print_set(ZLR_task *task, int32_t kind, const reduction *r, const side_problem *part, bool is_reduced,
                      double time_s)
{
    const auto num_int = static_cast<size_t>(model_num_int(part->problem.get()));
    streams_printf(&task->streams, ZLR_STREAM_MSG, "\nInfeasible subproblem (%s solution): %s, %s\n",
                   words_solution_kind(kind), sides_count_text(r->sides).c_str(),
                   count(part->col_of.size(), "column", "columns").c_str());
    streams_printf(&task->streams, ZLR_STREAM_MSG, "  %s\n", quality(r, is_reduced));
    if (num_int > 0)
        streams_printf(&task->streams, ZLR_STREAM_MSG, "  with %s\n",
                       count(num_int, "integer column", "integer columns").c_str());
    if (!part->problem->cones.empty())
        streams_printf(&task->streams, ZLR_STREAM_MSG, "  with %s\n",
                       count(part->problem->cones.size(), "cone", "cones").c_str());
    if (is_reduced)
        streams_printf(&task->streams, ZLR_STREAM_MSG, "  %s solved in %.2f s\n",
                       count(static_cast<size_t>(r->num_solved), "problem", "problems").c_str(), time_s);
    print_members(task, part);
}

static std::unique_ptr<ZLR_task> task_of(const ZLR_task *task, std::shared_ptr<model> problem)
{
    auto made = std::make_unique<ZLR_task>();
    made->env = task->env;
    made->params = task->params;
    made->problem = std::move(problem);
    made->data_format = task->data_format;
    return made;
}

/* Where no proof is at hand, an integer problem's own, the proof of its relaxation is looked for; else every side counts. */
static std::vector<model_side> first_sides(ZLR_task *task, const solution *sol, double time_limit_s, reduction *r)
{
    const model *m = task->problem.get();
    std::vector<model_side> sides = sides_of_certificate(sol);
    if (!sides.empty()) return sides;
    sides = sides_all(m);
    if (filter_is_conic(m)) return sides; /* the proof of a relaxation is a linear problem's */
    const std::vector<model_side> linear = reduce_by_relaxation(task, m, sides, time_limit_s, r);
    return linear.empty() ? sides : linear;
}

static int32_t primal_part(ZLR_task *task, int32_t kind, ZLR_task **subproblem)
{
    const model *m = task->problem.get();
    const double start_s = clock_now_s();
    const double limit_s = param_dou(&task->params, DPAR_ANALYZE_INFEAS_TIME_LIMIT);
    const bool is_reduced = param_int(&task->params, IPAR_ANALYZE_INFEAS_EFFORT) == INFEAS_IRREDUCIBLE;
    reduction r;

    r.sides = first_sides(task, &task->sol[kind], limit_s, &r);
    if (is_reduced && !r.is_stopped && r.failure.empty()) {
        const int32_t before = r.num_solved;
        r = reduce_sides(task, m, sides_all(m), r.sides, limit_s - (clock_now_s() - start_s));
        r.num_solved += before;
    }
    if (!r.failure.empty())
        streams_printf(&task->streams, ZLR_STREAM_WRN, "The infeasible subproblem is not reduced: %s.\n",
                       r.failure.c_str());
    const side_problem part = sides_problem(m, r.sides, true);
    print_set(task, kind, &r, &part, is_reduced, clock_now_s() - start_s);
    *subproblem = task_of(task, part.problem).release();
    return ZLR_RES_OK;
}

/* ---- unbounded problems */

static double recede(double side) { return std::isfinite(side) ? 0.0 : side; }

/* Columns that came into the part because a cone has them, and along which the ray does not go, stay at 0. */
static void hold_others(const side_problem *part, const std::vector<double> &ray)
{
    model *p = part->problem.get();
    for (size_t j = 0; j < part->col_of.size(); j++)
        if (ray[static_cast<size_t>(part->col_of[j])] == 0.0) p->var_lower[j] = p->var_upper[j] = 0.0;
}

/* The directions of the ray's columns: finite sides become 0, infinite ones stay. Improves without end from 0 on. */
static std::shared_ptr<model> recession_part(const model *m, const std::vector<double> &ray)
{
    std::vector<model_side> sides = sides_all(m);
    std::vector<char> rows(static_cast<size_t>(m->num_con), 0);
    for (size_t j = 0; j < ray.size(); j++)
        for (auto k = static_cast<size_t>(m->a.start[j]); ray[j] != 0.0 && k < static_cast<size_t>(m->a.start[j + 1]);
             k++)
            rows[static_cast<size_t>(m->a.row[k])] = 1;
    std::erase_if(sides, [&](const model_side &side) {
        return side.is_row ? rows[static_cast<size_t>(side.index)] == 0 : ray[static_cast<size_t>(side.index)] == 0.0;
    });
    /* All other columns of these rows stay at 0: they are left out of the part by their own numbers. */
    model alone = *m;
    for (size_t j = 0, at = 0; j < ray.size(); j++) {
        const auto begin = static_cast<size_t>(m->a.start[j]), end = static_cast<size_t>(m->a.start[j + 1]);
        for (size_t k = begin; ray[j] != 0.0 && k < end; k++, at++) {
            alone.a.row[at] = m->a.row[k];
            alone.a.value[at] = m->a.value[k];
        }
        alone.a.start[j + 1] = static_cast<int64_t>(at);
    }
    alone.a.row.resize(static_cast<size_t>(alone.a.start.back()));
    alone.a.value.resize(alone.a.row.size());
    for (size_t j = 0; j < ray.size(); j++) /* a free column without a row is in no side */
        if (ray[j] != 0.0 && !std::isfinite(m->var_lower[j]) && !std::isfinite(m->var_upper[j]))
            sides.push_back({false, true, static_cast<int32_t>(j)});

    const side_problem part = sides_problem(&alone, sides, true);
    model *p = part.problem.get();
    for (std::vector<double> *v : {&p->con_lower, &p->con_upper, &p->var_lower, &p->var_upper})
        for (double &side : *v) side = recede(side);
    p->sense = m->sense;
    p->obj_name = m->obj_name;
    for (size_t j = 0; j < part.col_of.size(); j++) p->c[j] = m->c[static_cast<size_t>(part.col_of[j])];
    hold_others(&part, ray);
    p->qcon.clear();
    return part.problem;
}

static int32_t dual_part(ZLR_task *task, int32_t kind, ZLR_task **subproblem)
{
    const model *m = task->problem.get();
    const std::vector<double> &ray = task->sol[kind].xx;
    std::string names;
    size_t num = 0;

    if (std::all_of(ray.begin(), ray.end(), [](double value) { return value == 0.0; })) {
        streams_write(&task->streams, ZLR_STREAM_ERR,
                      "The solution has no direction in which the problem is unbounded.\n");
        return ZLR_RES_ERR_NO_SOLUTION;
    }
    std::unique_ptr<ZLR_task> made = task_of(task, recession_part(m, ray));
    for (size_t j = 0; j < ray.size(); j++) {
        if (ray[j] == 0.0 || ++num > screen_lines(task)) continue;
        char line[64];
        (void)std::snprintf(line, sizeof line, "  %+.6g  ", ray[j]);
        names += line + names_shown(&m->var_names, static_cast<int32_t>(j), 'x') + "\n";
    }
    streams_printf(&task->streams, ZLR_STREAM_MSG,
                   "\nUnbounded subproblem (%s solution): %s, %s\n  the objective improves without end along\n",
                   words_solution_kind(kind), count(num, "column", "columns").c_str(),
                   count(static_cast<size_t>(made->problem->num_con), "row", "rows").c_str());
    if (num > screen_lines(task)) names += "  and " + std::to_string(num - screen_lines(task)) + " more\n";
    streams_write(&task->streams, ZLR_STREAM_MSG, names.c_str());
    *subproblem = made.release();
    return ZLR_RES_OK;
}

int32_t infeasible_subproblem(ZLR_task *task, int32_t kind, ZLR_task **subproblem)
{
    const solution *sol = &task->sol[kind];
    if (!sol->defined) return ZLR_RES_ERR_NO_SOLUTION;
    if (solution_is_dual_ray(sol)) return primal_part(task, kind, subproblem);
    if (solution_is_primal_ray(sol)) return dual_part(task, kind, subproblem);
    streams_printf(&task->streams, ZLR_STREAM_ERR, "The %s solution is no certificate of infeasibility.\n",
                   words_solution_kind(kind));
    return ZLR_RES_ERR_NO_SOLUTION;
}
