/* solution_violations.cpp - the violations of a solution by kind: the largest, their total, how many, and the names of the
 * worst. See solution_parts.h. */
#include "solver/analysis/solution_parts.h"

#include <cmath>

/* All residuals of one kind. */
struct violation_class {
    double largest = 0.0, total = 0.0;
    int64_t num = 0, num_above = 0;
    ranked_list worst;
};

static const char *const class_titles[CHECK_NUM] = {"Rows",       "Bounds",       "Integrality",    "Cones",
                                                    "Dual signs", "Stationarity", "Complementarity"};

static double side_of(double value, double lower, double upper) { return value < lower ? lower : upper; }

static std::string off_side(const char *what, double value, double lower, double upper)
{
    return text_format("%s %.9g %s %.9g", what, value, value < lower ? "below" : "above", side_of(value, lower, upper));
}

/* A multiplier or reduced cost, and where its signs point. */
struct dual_at {
    double value, on_lower, on_upper;
};

static dual_at dual_of(const solution_view *v, bool is_row, int32_t index)
{
    const auto at = static_cast<size_t>(index);
    const solution *s = &v->sol;
    if (is_row) return {s->y[at], s->slc[at], s->suc[at]};
    const double on_cone = s->snx.empty() ? 0.0 : s->snx[at];
    return {v->reduced[at].value - on_cone, s->slx[at], s->sux[at]};
}

static std::string sign_text(const solution_view *v, bool is_row, int32_t index)
{
    const auto at = static_cast<size_t>(index);
    const double sign = v->m->sense == ZLR_SENSE_MAX ? -1.0 : 1.0;
    const dual_at d = dual_of(v, is_row, index);
    const double lower = is_row ? v->m->con_lower[at] : v->m->var_lower[at];
    const double upper = is_row ? v->m->con_upper[at] : v->m->var_upper[at];
    const char *side = is_row ? "side" : "bound";

    if (sign * d.on_lower < 0.0) return text_format("dual %.9g of the lower %s has the wrong sign", d.on_lower, side);
    if (sign * d.on_upper < 0.0) return text_format("dual %.9g of the upper %s has the wrong sign", d.on_upper, side);
    if (d.on_lower != 0.0 && std::isinf(lower))
        return text_format("dual %.9g of a lower %s that is not there", d.on_lower, side);
    if (d.on_upper != 0.0 && std::isinf(upper))
        return text_format("dual %.9g of an upper %s that is not there", d.on_upper, side);
    return text_format("%s %.9g wants %s %s, which is not there", is_row ? "multiplier" : "reduced cost", d.value,
                       sign * d.value > 0.0 ? "a lower" : "an upper", side);
}

static std::string stationarity_text(const solution_view *v, bool is_row, int32_t index)
{
    const dual_at d = dual_of(v, is_row, index);
    return text_format("%s %.6g, its %s give %.6g", is_row ? "multiplier" : "reduced cost", d.value,
                       is_row ? "sides" : "bounds", d.on_lower - d.on_upper);
}

static std::string product_text(const solution_view *v, bool is_row, int32_t index)
{
    const auto at = static_cast<size_t>(index);
    const dual_at d = dual_of(v, is_row, index);
    const double value = is_row ? v->sol.xc[at] : v->sol.xx[at];
    const double lower = is_row ? v->m->con_lower[at] : v->m->var_lower[at];
    const double upper = is_row ? v->m->con_upper[at] : v->m->var_upper[at];
    const double to_lower = d.on_lower != 0.0 ? std::fabs(d.on_lower * (value - lower)) : 0.0;
    const double to_upper = d.on_upper != 0.0 ? std::fabs(d.on_upper * (upper - value)) : 0.0;
    const bool is_lower = to_lower >= to_upper;
    return text_format("dual %.9g of the %s %s, %.9g away", is_lower ? d.on_lower : d.on_upper,
                       is_lower ? "lower" : "upper", is_row ? "side" : "bound",
                       std::fabs(value - (is_lower ? lower : upper)));
}

static std::string residual_text(const solution_view *v, check_what what, bool is_row, int32_t index)
{
    const auto at = static_cast<size_t>(index);
    switch (what) {
    case CHECK_ROW: return off_side("activity", v->sol.xc[at], v->m->con_lower[at], v->m->con_upper[at]);
    case CHECK_BOUND: return off_side("value", v->sol.xx[at], v->m->var_lower[at], v->m->var_upper[at]);
    case CHECK_INTEGRALITY: return text_format("value %.9g", v->sol.xx[at]);
    case CHECK_CONE: return "outside the cone with the head";
    case CHECK_SIGN: return sign_text(v, is_row, index);
    case CHECK_STATIONARITY: return stationarity_text(v, is_row, index);
    default: return product_text(v, is_row, index);
    }
}

/* Whether the solution has what a kind of violation is about. */
static bool is_looked_at(const solution_view *v, int32_t what)
{
    const bool primal = v->sol.has_primal, dual = v->sol.has_dual;
    switch (what) {
    case CHECK_ROW:
    case CHECK_BOUND: return primal;
    case CHECK_CONE: return primal && !v->m->cones.empty();
    case CHECK_INTEGRALITY: return primal && v->kind == ZLR_SOL_ITG && model_num_int(v->m) > 0;
    case CHECK_SIGN:
    case CHECK_STATIONARITY: return dual;
    default: return primal && dual;
    }
}

/* What is above the tolerance is told with its values, what is not by name alone. */
static void add_class(solution_view *v, check_what what, const violation_class *c)
{
    text_append(&v->text, "  %-16s %10.1e %10.1e %10lld %10lld\n", class_titles[what], c->largest, c->total,
                static_cast<long long>(c->num), static_cast<long long>(c->num_above));
    if (c->num_above == 0) {
        solution_add_list(v, &c->worst);
        return;
    }
    for (const ranked_item &item : c->worst.items)
        solution_add_named(v,
                           text_format("%10.1e  ", item.size) + residual_text(v, what, item.is_row, item.index) + ":",
                           solution_item_text(v, item.is_row, item.index));
}

static void add_tolerances(solution_view *v)
{
    const check_tolerances *tol = &v->tol;
    text_append(&v->text, "  Tolerances: rows and bounds %.0e", tol->primal);
    if (is_looked_at(v, CHECK_INTEGRALITY)) text_append(&v->text, ", integers %.0e", tol->integer);
    if (v->sol.has_dual) text_append(&v->text, ", duals %.0e, gap %.0e", tol->dual, tol->gap);
    v->text += ",\n  relative to bound, cost or objective where that is above 1.\n";
}

void solution_add_violations(solution_view *v)
{
    violation_class classes[CHECK_NUM];

    if (!v->sol.has_primal && !v->sol.has_dual) return;
    for (violation_class &c : classes) c.worst.capacity = v->num_listed;
    check_each(v->m, &v->tol, v->kind == ZLR_SOL_ITG, &v->sol, [&](const check_residual &r) {
        violation_class *c = &classes[r.what];
        c->largest = std::fmax(c->largest, r.size);
        c->total += r.size;
        c->num++;
        if (r.size > r.allowed) c->num_above++;
        const bool is_cone = r.what == CHECK_CONE; /* named by its head */
        const int32_t index = is_cone ? v->m->cones[static_cast<size_t>(r.index)].member[0] : r.index;
        ranked_add(&c->worst, {r.is_row, index, r.size});
    });

    text_append(&v->text, "\nViolations on the problem's own data\n  %-16s %10s %10s %10s %10s\n", "", "largest",
                "total", "number", "above tol.");
    for (int32_t what = 0; what < CHECK_NUM; what++)
        if (is_looked_at(v, what)) add_class(v, static_cast<check_what>(what), &classes[what]);
    add_tolerances(v);
}
