/* range_one.cpp - how far one number of the problem goes before the optimal basis changes, and whether its price does, from
 * a row and a column of the tableau. HiGHS's own ranging takes all of them.
 *
 * With logical columns s = -r of the row activities r the problem is A x + s = 0, and the tableau of the basis B is
 * inv(B) [A I]. A change of a basic cost moves the reduced costs along its row; a change of the value of a nonbasic column
 * moves the basic values along its column. The first to meet its end ends the range, and enters or leaves the basis there.
 * Where that is a step of some length, the optimal value has another slope beyond: it is convex or concave in the number. */
#include "solver/engines/highs/session.h"

#include <algorithm>
#include <cmath>

static constexpr double least_pivot = 1e-9; /* smaller entries of the tableau are rounding */
static constexpr double least_step = 1e-7;  /* relative: a change of price that is one */

/* A column or the logical column of a row. */
struct variable {
    bool is_row;
    int32_t index;
};

/* A change may go down and up so far, where it meets a limit of something. */
struct ends {
    double down = -model_inf, up = model_inf;
    size_t met_down = 0, met_up = 0;
};

/* One question at one basis. Costs and reduced costs are used as minimised. */
struct tableau {
    const highs_session *s;
    const engine_answer *at;
    double sign; /* -1 where the task is maximised */
    std::vector<HighsInt> basic;
    std::vector<double> activity;
};

/* Places of nonbasic variables: columns first, then rows. */
static variable variable_at(const tableau *t, size_t place)
{
    const auto num = static_cast<size_t>(t->s->problem->num_var);
    return place < num ? variable{false, static_cast<int32_t>(place)}
                       : variable{true, static_cast<int32_t>(place - num)};
}

static int32_t key_of(const tableau *t, variable v)
{
    return (v.is_row ? t->at->row_key : t->at->col_key)[static_cast<size_t>(v.index)];
}

static double lower_of(const tableau *t, variable v)
{
    return (v.is_row ? t->s->problem->con_lower : t->s->problem->var_lower)[static_cast<size_t>(v.index)];
}

static double upper_of(const tableau *t, variable v)
{
    return (v.is_row ? t->s->problem->con_upper : t->s->problem->var_upper)[static_cast<size_t>(v.index)];
}

/* What is to stay at least 0 has `room` and falls by `rate` for each unit of the change. */
static void meet(ends *e, double room, double rate, size_t who)
{
    if (std::fabs(rate) <= least_pivot) return;
    const double at = std::max(room, 0.0) / rate;
    if (rate > 0.0 ? at >= e->up : at <= e->down) return;
    (rate > 0.0 ? e->up : e->down) = at;
    (rate > 0.0 ? e->met_up : e->met_down) = who;
}

/* A reduced cost d - rate * change keeps the sign that belongs to its bound. */
static void meet_reduced(ends *e, int32_t key, double d, double rate, size_t who)
{
    if (key == ZLR_SK_LOWER || key == ZLR_SK_SUPBAS) meet(e, d, rate, who);
    if (key == ZLR_SK_UPPER || key == ZLR_SK_SUPBAS) meet(e, -d, -rate, who);
}

static int32_t mirrored(int32_t key)
{
    if (key == ZLR_SK_LOWER) return ZLR_SK_UPPER;
    return key == ZLR_SK_UPPER ? ZLR_SK_LOWER : key;
}

/* ---- along a row: the cost of a basic variable, a logical one's too, changes */

static bool row_ends(const tableau *t, HighsInt position, std::vector<double> *rate, ends *e)
{
    const model *m = t->s->problem.get();
    const auto num_var = static_cast<size_t>(m->num_var), num_con = static_cast<size_t>(m->num_con);

    rate->resize(num_var + num_con);
    if (Highs_getReducedRow(t->s->highs, position, rate->data(), nullptr, nullptr) != kHighsStatusOk ||
        Highs_getBasisInverseRow(t->s->highs, position, rate->data() + num_var, nullptr, nullptr) != kHighsStatusOk)
        return false;
    for (size_t j = 0; j < num_var; j++) meet_reduced(e, t->at->col_key[j], t->sign * t->at->reduced[j], (*rate)[j], j);
    for (size_t i = 0; i < num_con; i++)
        meet_reduced(e, mirrored(t->at->row_key[i]), -t->sign * t->at->y[i], (*rate)[num_var + i], num_var + i);
    return true;
}

/* ---- along a column: the value of a nonbasic column, or of a row at one of its sides, moves */

static variable basic_at(const tableau *t, size_t position)
{
    const HighsInt index = t->basic[position];
    return index < 0 ? variable{true, -1 - index} : variable{false, index};
}

/* `rate`: by how much the values of the basic variables, activities of rows among them, rise with it. */
static bool column_ends(const tableau *t, variable v, std::vector<double> *rate, ends *e)
{
    rate->resize(t->basic.size());
    const HighsInt got = v.is_row ? Highs_getBasisInverseCol(t->s->highs, v.index, rate->data(), nullptr, nullptr)
                                  : Highs_getReducedColumn(t->s->highs, v.index, rate->data(), nullptr, nullptr);
    if (got != kHighsStatusOk) return false;
    for (size_t p = 0; p < rate->size(); p++) {
        const variable b = basic_at(t, p);
        const double value = (b.is_row ? t->activity : t->at->x)[static_cast<size_t>(b.index)];
        if (b.is_row == v.is_row) (*rate)[p] = -(*rate)[p];
        if (std::isfinite(upper_of(t, b))) meet(e, upper_of(t, b) - value, (*rate)[p], p);
        if (std::isfinite(lower_of(t, b))) meet(e, value - lower_of(t, b), -(*rate)[p], p);
    }
    return true;
}

static double length_up(double step, double limit) { return std::isfinite(limit) ? std::min(step, limit) : step; }

/* How far a nonbasic variable goes that enters the basis. */
static double entering_step(const tableau *t, variable v, bool *is_known)
{
    std::vector<double> rate;
    ends e;
    const int32_t key = key_of(t, v);
    *is_known = (key == ZLR_SK_LOWER || key == ZLR_SK_UPPER) && column_ends(t, v, &rate, &e);
    return length_up(key == ZLR_SK_LOWER ? e.up : -e.down, upper_of(t, v) - lower_of(t, v));
}

static bool is_step(double change, double price)
{
    return std::fabs(change) > least_step * std::max(1.0, std::fabs(price));
}

/* ---- the three cases */

static bool basic_cost(const tableau *t, variable v, engine_reach *reach)
{
    const auto found = std::find(t->basic.begin(), t->basic.end(), v.index);
    const double price = t->at->x[static_cast<size_t>(v.index)];
    std::vector<double> rate;
    ends e;

    if (found == t->basic.end() || !row_ends(t, static_cast<HighsInt>(found - t->basic.begin()), &rate, &e))
        return false;
    const double low = t->sign > 0.0 ? e.down : -e.up, high = t->sign > 0.0 ? e.up : -e.down;
    const size_t met_low = t->sign > 0.0 ? e.met_down : e.met_up, met_high = t->sign > 0.0 ? e.met_up : e.met_down;
    reach->down = low;
    reach->up = high;
    for (const bool up : {false, true}) {
        bool is_known = false;
        if (!std::isfinite(up ? high : low)) continue;
        const size_t met = up ? met_high : met_low;
        const double step = entering_step(t, variable_at(t, met), &is_known);
        (up ? reach->turns_up : reach->turns_down) = is_known && is_step(step * rate[met], price);
    }
    return true;
}

static bool nonbasic_cost(const tableau *t, variable v, engine_reach *reach)
{
    const auto j = static_cast<size_t>(v.index);
    bool is_known = false;
    ends e;

    meet_reduced(&e, key_of(t, v), t->sign * t->at->reduced[j], -1.0, 0);
    reach->down = t->sign > 0.0 ? e.down : -e.up;
    reach->up = t->sign > 0.0 ? e.up : -e.down;
    const double step = entering_step(t, v, &is_known);
    reach->turns_down = reach->turns_up = is_known && is_step(step, t->at->x[j]);
    return true;
}

/* A basic variable that meets its bound leaves: its reduced cost grows, and the item's price with it. */
static bool leaving_turns(const tableau *t, size_t position, bool at_upper, double rate, double price)
{
    std::vector<double> row;
    ends e;
    if (!row_ends(t, static_cast<HighsInt>(position), &row, &e)) return false;
    if (basic_at(t, position).is_row) at_upper = !at_upper;
    return is_step((at_upper ? e.up : -e.down) * rate, price);
}

static bool nonbasic_value(const tableau *t, variable v, engine_reach *reach)
{
    const double price = (v.is_row ? t->at->y : t->at->reduced)[static_cast<size_t>(v.index)];
    std::vector<double> rate;
    ends e;

    if (!column_ends(t, v, &rate, &e)) return false;
    reach->down = e.down;
    reach->up = e.up;
    if (std::isfinite(e.down))
        reach->turns_down = leaving_turns(t, e.met_down, rate[e.met_down] < 0.0, rate[e.met_down], price);
    if (std::isfinite(e.up)) reach->turns_up = leaving_turns(t, e.met_up, rate[e.met_up] > 0.0, rate[e.met_up], price);
    return true;
}

bool highs_range_one(const highs_session *s, const engine_answer *at, engine_number what, int32_t index,
                     engine_reach *reach)
{
    const variable v = {what == NUMBER_ROW, index};
    tableau t = {s, at, s->problem->sense == ZLR_SENSE_MAX ? -1.0 : 1.0, {}, {}};
    const bool is_basic = key_of(&t, v) == ZLR_SK_BASIC;

    *reach = engine_reach{};
    if (what != NUMBER_COST && is_basic) return false;
    t.basic.resize(static_cast<size_t>(s->problem->num_con));
    if (Highs_getBasicVariables(s->highs, t.basic.data()) != kHighsStatusOk) return false;
    t.activity = highs_activity(s->problem.get(), at->x); /* HiGHS's own may be of another solve */
    if (what != NUMBER_COST) return nonbasic_value(&t, v, reach);
    return is_basic ? basic_cost(&t, v, reach) : nonbasic_cost(&t, v, reach);
}
