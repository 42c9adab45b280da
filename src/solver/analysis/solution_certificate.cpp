/* solution_certificate.cpp - what a certificate proves, by how much, and through which rows and columns. See
 * solution_parts.h. */
#include "solver/analysis/solution_parts.h"
#include "solver/engines/certificate.h"

#include <algorithm>
#include <cmath>

/* One side with its multiplier. */
struct proof_side {
    ranked_item item; /* its size: of the multiplier */
    bool is_upper;
};

static void add_check(solution_view *v, const certificate_proof *p)
{
    text_append(&v->text, "  Residual         %.10e\n", p->residual);
    if (p->ratio <= 1.0)
        v->text += "  Check            holds\n";
    else if (std::isinf(p->ratio))
        v->text += "  Check            fails: it proves nothing\n";
    else
        text_append(&v->text, "  Check            %s: the residual is %.3g times what is allowed\n",
                    p->ratio <= v->tol.near ? "holds nearly" : "fails", p->ratio);
}

static void collect_sides(const std::vector<double> &on_side, bool is_row, bool is_upper,
                          std::vector<proof_side> *sides)
{
    for (size_t k = 0; k < on_side.size(); k++)
        if (on_side[k] != 0.0) sides->push_back({{is_row, static_cast<int32_t>(k), std::fabs(on_side[k])}, is_upper});
}

static double side_value(const solution_view *v, const proof_side *s)
{
    const auto at = static_cast<size_t>(s->item.index);
    if (s->item.is_row) return s->is_upper ? v->m->con_upper[at] : v->m->con_lower[at];
    return s->is_upper ? v->m->var_upper[at] : v->m->var_lower[at];
}

/* Rows first, by their multipliers; then columns, by what they add to the contradiction: most of them are bounds of 0. */
static bool side_before(const solution_view *v, const proof_side *a, const proof_side *b)
{
    if (a->item.is_row != b->item.is_row) return a->item.is_row;
    const double part_a = a->item.is_row ? 0.0 : std::fabs(a->item.size * side_value(v, a));
    const double part_b = b->item.is_row ? 0.0 : std::fabs(b->item.size * side_value(v, b));
    return part_a != part_b ? part_a > part_b : a->item.size > b->item.size;
}

static int64_t num_of(const std::vector<proof_side> &sides, bool is_row)
{
    return std::count_if(sides.begin(), sides.end(), [&](const proof_side &s) { return s.item.is_row == is_row; });
}

static void add_sides(solution_view *v)
{
    std::vector<proof_side> sides;
    collect_sides(v->sol.slc, true, false, &sides);
    collect_sides(v->sol.suc, true, true, &sides);
    collect_sides(v->sol.slx, false, false, &sides);
    collect_sides(v->sol.sux, false, true, &sides);
    const size_t num = std::min(sides.size(), v->num_listed);
    std::partial_sort(sides.begin(), sides.begin() + static_cast<std::ptrdiff_t>(num), sides.end(),
                      [v](const proof_side &a, const proof_side &b) { return side_before(v, &a, &b); });

    text_append(&v->text, "  Sides in it      %lld of rows, %lld of columns%s\n",
                static_cast<long long>(num_of(sides, true)), static_cast<long long>(num_of(sides, false)),
                sides.size() > num ? "; the first by size:" : ":");
    for (size_t k = 0; k < num; k++)
        solution_add_named(v,
                           text_format("%12.4e  %s %.9g:", sides[k].item.size,
                                       sides[k].is_upper ? "at most" : "at least", side_value(v, &sides[k])),
                           solution_item_text(v, sides[k].item.is_row, sides[k].item.index));
}

static void add_infeasible(solution_view *v)
{
    const certificate_proof p = certificate_check(v->m, &v->tol, &v->sol);

    v->text += "\nProof that no point satisfies all rows and bounds\n"
               "  The sides below, each times its multiplier, add up to a contradiction.\n";
    text_append(&v->text, "  Contradiction    %.10e\n", p.value);
    add_check(v, &p);
    add_sides(v);
}

static void add_steps(solution_view *v)
{
    ranked_list steps;
    int64_t num = 0;

    steps.capacity = v->num_listed;
    for (size_t j = 0; j < v->sol.xx.size(); j++) {
        if (v->sol.xx[j] == 0.0) continue;
        num++;
        ranked_add(&steps, {false, static_cast<int32_t>(j), std::fabs(v->sol.xx[j])});
    }
    text_append(&v->text, "  Columns in it    %lld%s\n", static_cast<long long>(num),
                static_cast<size_t>(num) > steps.items.size() ? "; the largest steps:" : ":");
    for (const ranked_item &item : steps.items) {
        const auto at = static_cast<size_t>(item.index);
        solution_add_named(v, text_format("%12.4e  cost %.9g:", v->sol.xx[at], v->m->c[at]),
                           solution_item_text(v, false, item.index));
    }
}

static void add_unbounded(solution_view *v)
{
    const certificate_proof p = certificate_check(v->m, &v->tol, &v->sol);

    v->text += "\nDirection along which the objective improves without end\n"
               "  From any feasible point the steps below keep all rows and bounds.\n";
    text_append(&v->text, "  Improvement      %.10e for a step of 1\n", p.value);
    add_check(v, &p);
    add_steps(v);
}

static bool all_zero(const std::vector<double> &values)
{
    return std::all_of(values.begin(), values.end(), [](double value) { return value == 0.0; });
}

void solution_add_certificate(solution_view *v)
{
    const solution *s = &v->sol;
    const bool is_ray = solution_is_primal_ray(s);
    const bool is_empty =
        is_ray ? all_zero(s->xx)
               : all_zero(s->y) && all_zero(s->slc) && all_zero(s->suc) && all_zero(s->slx) && all_zero(s->sux);
    if (is_empty)
        v->text += "\nThe solution has this status alone, without the numbers that prove it.\n";
    else if (is_ray)
        add_unbounded(v);
    else
        add_infeasible(v);
}
