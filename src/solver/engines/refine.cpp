/* refine.cpp - see refine.h. */
#include "solver/engines/refine.h"
#include "solver/engines/gradient.h"

#include <algorithm>
#include <cmath>

/* Nothing moves farther than this in a step, of values and of multipliers: sides and costs that are farther away come
 * nearer, for large numbers would take digits from the small ones. */
static constexpr double reach = 1e3;

static double sign_of(const model *m) { return m->sense == ZLR_SENSE_MAX ? -1.0 : 1.0; }

static double within_reach(double v) { return std::max(-reach, std::min(reach, v)); }

/* A side of the step, from a distance; none where there is none. */
static double side_of(double distance, double scale)
{
    return std::isinf(distance) ? distance : within_reach(scale * distance);
}

static void add_slack(refinement *r, size_t row, double lower, double upper)
{
    model *p = r->problem.get();
    p->num_var++;
    p->c.push_back(within_reach(r->y_scale * r->y[row]));
    p->var_lower.push_back(side_of(lower, r->x_scale));
    p->var_upper.push_back(side_of(upper, r->x_scale));
    p->var_type.push_back(ZLR_VAR_CONT);
    p->a.row.push_back(static_cast<int32_t>(row));
    p->a.value.push_back(-1.0);
    p->a.start.push_back(static_cast<int64_t>(p->a.row.size()));
}

/* Rows become equations: what one with two different sides may move is a column of its own, whose reduced cost is the
 * row's multiplier. */
static void add_rows(const model *m, refinement *r)
{
    const row_sums at = check_row_sums(m, r->x);
    model *p = r->problem.get();

    for (size_t i = 0; i < r->y.size(); i++) {
        const double lower = m->con_lower[i], upper = m->con_upper[i];
        const bool is_free = std::isinf(lower) && std::isinf(upper);
        const double from = std::max(lower, std::min(upper, at.value[i]));
        const double rest = r->x_scale * (from - at.value[i]);
        p->con_lower.push_back(is_free ? -model_inf : rest);
        p->con_upper.push_back(is_free ? model_inf : rest);
        if (is_free) r->y[i] = 0.0;
        if (!is_free && lower < upper) add_slack(r, i, lower - from, upper - from);
    }
}

refinement refine_problem(const model *m, const solution *sol, double x_scale, double y_scale)
{
    const double sign = sign_of(m);
    const std::vector<reduced_cost> d = gradient_reduced_costs(m, nullptr, sol);
    refinement r;

    r.problem = std::make_shared<model>();
    r.x = sol->xx;
    r.y = sol->y;
    r.x_scale = x_scale;
    r.y_scale = y_scale;
    for (double &v : r.y) v *= sign;
    model *p = r.problem.get();
    p->num_con = m->num_con;
    p->num_var = m->num_var;
    p->var_type = m->var_type;
    p->a = m->a;
    p->qobj = m->qobj;
    for (quad_term &t : p->qobj) t.value *= sign * y_scale / x_scale;
    for (size_t j = 0; j < r.x.size(); j++) {
        p->c.push_back(within_reach(y_scale * sign * d[j].value));
        p->var_lower.push_back(side_of(m->var_lower[j] - r.x[j], x_scale));
        p->var_upper.push_back(side_of(m->var_upper[j] - r.x[j], x_scale));
    }
    add_rows(m, &r);
    return r;
}

bool refine_take(const model *m, const refinement *r, engine_answer *answer)
{
    const double sign = sign_of(m);

    if (answer->x.size() != static_cast<size_t>(r->problem->num_var) || answer->y.size() != r->y.size()) return false;
    answer->x.resize(r->x.size());
    for (size_t j = 0; j < r->x.size(); j++) {
        const double x = r->x[j] + answer->x[j] / r->x_scale;
        answer->x[j] = std::max(m->var_lower[j], std::min(m->var_upper[j], x));
    }
    for (size_t i = 0; i < r->y.size(); i++) answer->y[i] = sign * (r->y[i] + answer->y[i] / r->y_scale);
    answer->reduced.clear();
    return true;
}
