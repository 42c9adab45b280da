/* solution_basis.cpp - whether the status keys of a basic solution are an optimal basis, from the task's data alone. See
 * solution_parts.h.
 *
 * Asked are: as many basic entries as rows; nonbasic ones at the side that their key names; the basic columns' values,
 * with the nonbasic ones put exactly at their bounds, solve the nonbasic rows; multipliers of basic rows and reduced
 * costs of basic columns are 0, and the others have the sign of their side. Nothing is factorised: whether the basic
 * columns are independent is not looked at. */
#include "solver/analysis/solution_parts.h"

#include <algorithm>
#include <cmath>

/* One row or column as the keys see it. */
struct basis_entry {
    bool is_row;
    int32_t index, key;
    double value, lower, upper;
    double multiplier, multiplier_allowed; /* of the row, or the reduced cost */
};

/* Largest distance from what the keys ask for, how many are above the tolerance, and which. */
struct basis_distance {
    double largest = 0.0;
    int64_t num_above = 0;
    ranked_list worst;
};

struct basis_report {
    int64_t num_basic = 0, num_unknown = 0, num_absent = 0;
    int64_t num_degenerate = 0, num_free_to_move = 0;
    basis_distance nonbasic, rows, duals;
    ranked_list absent; /* keys that name a side that does not exist */
};

static void distance_add(basis_distance *d, const basis_entry *e, double size, double allowed)
{
    if (!(size > 0.0)) return;
    d->largest = std::max(d->largest, size);
    if (size <= allowed) return;
    d->num_above++;
    ranked_add(&d->worst, {e->is_row, e->index, size});
}

/* Where the key puts a value: infinite where it names a side that does not exist, the value itself where any will do. */
static double place_of(const basis_entry *e)
{
    switch (e->key) {
    case ZLR_SK_LOWER: return e->lower;
    case ZLR_SK_UPPER: return e->upper;
    case ZLR_SK_FIXED: return e->lower == e->upper ? e->lower : model_inf;
    case ZLR_SK_SUPBAS: return std::isinf(e->lower) && std::isinf(e->upper) ? 0.0 : e->value;
    default: return e->value;
    }
}

/* By how much a multiplier is not what the key asks for. */
static double dual_distance(const basis_entry *e, double sign)
{
    const double outward = sign * e->multiplier;
    switch (e->key) {
    case ZLR_SK_BASIC:
    case ZLR_SK_SUPBAS: return std::fabs(outward);
    case ZLR_SK_LOWER: return e->lower == e->upper ? 0.0 : std::max(0.0, -outward);
    case ZLR_SK_UPPER: return e->lower == e->upper ? 0.0 : std::max(0.0, outward);
    default: return 0.0;
    }
}

static void look_at_primal(const solution_view *v, const basis_entry *e, basis_report *report)
{
    const double tol = v->tol.primal;

    if (e->key == ZLR_SK_BASIC) {
        if (check_is_at(e->value, e->lower, tol) || check_is_at(e->value, e->upper, tol)) report->num_degenerate++;
        return;
    }
    const double place = place_of(e);
    if (std::isinf(place)) {
        report->num_absent++;
        ranked_add(&report->absent, {e->is_row, e->index, 0.0});
        return;
    }
    distance_add(&report->nonbasic, e, std::fabs(e->value - place), check_allowed(tol, place, 0.0));
}

static void look_at_dual(const solution_view *v, const basis_entry *e, basis_report *report)
{
    const double sign = v->m->sense == ZLR_SENSE_MAX ? -1.0 : 1.0;

    distance_add(&report->duals, e, dual_distance(e, sign), e->multiplier_allowed);
    const bool can_move = e->key != ZLR_SK_BASIC && e->key != ZLR_SK_UNDEF && e->lower < e->upper;
    if (can_move && std::fabs(e->multiplier) <= e->multiplier_allowed) report->num_free_to_move++;
}

static void look_at(const solution_view *v, const basis_entry *e, basis_report *report)
{
    if (e->key == ZLR_SK_BASIC) report->num_basic++;
    if (e->key == ZLR_SK_UNDEF || e->key == ZLR_SK_INFINITE) report->num_unknown++;
    if (v->sol.has_primal) look_at_primal(v, e, report);
    if (v->sol.has_dual) look_at_dual(v, e, report);
}

static basis_entry row_entry(const solution_view *v, size_t i)
{
    const solution *s = &v->sol;
    return {true,       static_cast<int32_t>(i), s->skc[i], s->xc[i], v->m->con_lower[i], v->m->con_upper[i], s->y[i],
            v->tol.dual};
}

static basis_entry column_entry(const solution_view *v, size_t j)
{
    const solution *s = &v->sol;
    basis_entry e = {false, static_cast<int32_t>(j), s->skx[j], s->xx[j], v->m->var_lower[j], v->m->var_upper[j], 0.0,
                     0.0};
    if (s->has_dual) {
        const reduced_cost &d = v->reduced[j];
        e.multiplier = d.value;
        e.multiplier_allowed = d.allowed;
    }
    return e;
}

/* How far the nonbasic rows are off their sides when the nonbasic columns stand exactly at their bounds. */
static void look_at_rows(const solution_view *v, basis_report *report)
{
    std::vector<double> x = v->sol.xx;

    for (size_t j = 0; j < x.size(); j++) {
        const basis_entry e = column_entry(v, j);
        const double place = place_of(&e);
        if (e.key != ZLR_SK_BASIC && std::isfinite(place)) x[j] = place;
    }
    const row_sums sums = check_row_sums(v->m, x);
    for (size_t i = 0; i < sums.value.size(); i++) {
        const basis_entry e = row_entry(v, i);
        const double place = place_of(&e);
        if (e.key == ZLR_SK_BASIC || e.key == ZLR_SK_SUPBAS || std::isinf(place)) continue;
        distance_add(&report->rows, &e, std::fabs(sums.value[i] - place),
                     check_allowed(v->tol.primal, place, sums.terms[i]));
    }
}

static long long shown(int64_t num) { return static_cast<long long>(num); }

static void add_distance(solution_view *v, const char *title, const basis_distance *d)
{
    text_append(&v->text, "  %-20s %10.1e %12lld\n", title, d->largest, shown(d->num_above));
    solution_add_list(v, &d->worst);
}

static void add_degeneracy(solution_view *v, const basis_report *r)
{
    if (v->sol.has_primal) text_append(&v->text, "  Degenerate: %lld basic at a side\n", shown(r->num_degenerate));
    if (!v->sol.has_dual) return;
    text_append(&v->text, "  Nonbasic with a multiplier or reduced cost of 0: %lld\n", shown(r->num_free_to_move));
}

static std::string faults_of(const solution_view *v, const basis_report *r)
{
    std::string faults;
    const auto fault = [&faults](bool is, const char *text) {
        if (is) faults += (faults.empty() ? "" : ", ") + std::string(text);
    };
    fault(r->num_basic != v->m->num_con, "wrong number of basic entries");
    fault(r->num_unknown > 0, "entries without a key");
    fault(r->num_absent > 0, "keys of sides that are not there");
    fault(r->nonbasic.num_above > 0, "nonbasic off their sides");
    fault(r->rows.num_above > 0, "rows not solved");
    fault(v->sol.has_primal && v->found.primal > 1.0, "not feasible");
    fault(r->duals.num_above > 0, "duals against the keys");
    return faults;
}

static void add_result(solution_view *v, const basis_report *r)
{
    const std::string faults = faults_of(v, r);

    if (!faults.empty()) {
        text_append(&v->text, "  Result: not an optimal basis\n    %s\n", faults.c_str());
    } else if (!v->sol.has_primal || !v->sol.has_dual) {
        v->text += "  Result: cannot be told without values and duals\n";
    } else {
        v->text += "  Result: an optimal basis\n";
        if (r->num_free_to_move > 0) v->text += "  Other optimal solutions may exist.\n";
    }
}

void solution_add_basis(solution_view *v)
{
    basis_report r;

    if (v->kind != ZLR_SOL_BAS || !v->sol.has_keys) return;
    for (ranked_list *list : {&r.nonbasic.worst, &r.rows.worst, &r.duals.worst, &r.absent})
        list->capacity = v->num_listed;
    for (size_t i = 0; i < v->sol.skc.size(); i++) {
        const basis_entry e = row_entry(v, i);
        look_at(v, &e, &r);
    }
    for (size_t j = 0; j < v->sol.skx.size(); j++) {
        const basis_entry e = column_entry(v, j);
        look_at(v, &e, &r);
    }
    if (v->sol.has_primal) look_at_rows(v, &r);

    text_append(&v->text, "\nBasis: %lld basic entries, %d rows\n", shown(r.num_basic), v->m->num_con);
    if (r.num_unknown > 0) text_append(&v->text, "  Without a key: %lld\n", shown(r.num_unknown));
    if (r.num_absent > 0) {
        text_append(&v->text, "  Key of a side that is not there: %lld\n", shown(r.num_absent));
        solution_add_list(v, &r.absent);
    }
    if (v->sol.has_primal || v->sol.has_dual) text_append(&v->text, "  %-20s %10s %12s\n", "", "largest", "above tol.");
    if (v->sol.has_primal) add_distance(v, "Nonbasic off sides", &r.nonbasic);
    if (v->sol.has_primal) add_distance(v, "Residual of rows", &r.rows);
    if (v->sol.has_dual) add_distance(v, "Duals against keys", &r.duals);
    add_degeneracy(v, &r);
    add_result(v, &r);
}
