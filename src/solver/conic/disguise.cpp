/* disguise.cpp - see disguise.h.
 *
 * With the signs turned where the side is a lower one, a row says r(x)/2 - b h <= u, where r is the rest and b h is q
 * t^2/2 or p u v. Divided by q or p: r/q + c^2 <= t^2 or r/p + c^2 <= 2 u v, with c^2 = -2u over q or p. */
#include "solver/conic/disguise.h"

#include "solver/report/streams.h"

#include <algorithm>
#include <cmath>

/* What of a row may be a cone, before the bounds are looked at. */
struct candidate {
    int32_t part = -1;   /* of the parts, the one that is negative */
    double weight = 0.0; /* q or p */
    int32_t head[2] = {-1, -1};
};

/* The one part without the sign, if it is a square or a product. */
static bool find_candidate(const quad_parts *parts, double sign, candidate *out, work_effort *effort)
{
    for (int32_t p = 0; p < quad_num_parts(parts); p++) {
        const quad_part part = quad_part_at(parts, p);
        if (quad_part_has_sign(&part, sign, nullptr, effort)) continue;
        if (out->part >= 0 || part.num > 2 || part.num_terms != 1) return false;
        const bool is_product = part.num == 2;
        const double weight = -sign * part.term[0].value;
        if (weight < 0.0) return false; /* a product with the other sign */
        *out = {p, weight, {part.column[0], is_product ? part.column[1] : -1}};
    }
    return out->part >= 0;
}

/* The rest, divided by the weight. */
static void make_tail(const quad_parts *parts, double sign, const candidate *found, linear_forms *tail,
                      work_effort *effort)
{
    std::vector<quad_term> terms;
    for (int32_t p = 0; p < quad_num_parts(parts); p++) {
        if (p == found->part) continue;
        quad_part part = quad_part_at(parts, p);
        terms.assign(part.term, part.term + part.num_terms);
        for (quad_term &t : terms) t.value /= found->weight;
        part.term = terms.data();
        quad_part_factor(&part, sign, tail, effort);
    }
}

/* What stands in the way of a candidate; "" if nothing does. */
static std::string obstacle(const model *m, const candidate *found, bool has_linear, double side)
{
    std::vector<std::string> reasons;
    for (const int32_t j : found->head) {
        if (j < 0 || m->var_lower[static_cast<size_t>(j)] >= 0.0) continue;
        reasons.push_back(text_format("if column %s were at least 0; its lower bound is %g",
                                      names_shown(&m->var_names, j, 'x').c_str(),
                                      m->var_lower[static_cast<size_t>(j)]));
    }
    if (has_linear) reasons.emplace_back("without its linear part");
    if (side > 0.0) reasons.push_back(text_format("with 0 on its side in place of %g", side));
    if (reasons.empty()) return "";
    return reasons.size() == 1 ? reasons[0] : "?";
}

bool disguise_of_row(const model *m, const quad_row *q, bool has_linear, disguised_cone *cone, std::string *near_miss,
                     work_effort *effort, double tolerance)
{
    if (near_miss != nullptr) near_miss->clear();
    const auto at = static_cast<size_t>(q->row);
    const bool has_lower = m->con_lower[at] != -model_inf, has_upper = m->con_upper[at] != model_inf;
    if (has_lower == has_upper) return false;
    const double sign = has_upper ? 1.0 : -1.0;
    const double side = has_upper ? m->con_upper[at] : -m->con_lower[at];

    const quad_parts parts = quad_split(q->terms, effort, tolerance);
    candidate found;
    if (!parts.is_finite || !std::isfinite(side) || !find_candidate(&parts, sign, &found, effort)) return false;
    const std::string reason = obstacle(m, &found, has_linear, side);
    if (!reason.empty()) {
        if (near_miss != nullptr && reason != "?") *near_miss = reason;
        return false;
    }
    if (cone == nullptr) return true;
    *cone = {};
    cone->row = q->row;
    cone->type = found.head[1] >= 0 ? ZLR_CT_RQUAD : ZLR_CT_QUAD;
    std::copy_n(found.head, 2, cone->head);
    make_tail(&parts, sign, &found, &cone->tail, effort);
    cone->constant = std::sqrt(-2.0 * side / found.weight);
    return true;
}

std::vector<uint8_t> disguise_linear_rows(const model *m)
{
    std::vector<uint8_t> has(static_cast<size_t>(m->num_con));
    for (size_t k = 0; k < m->a.row.size(); k++)
        if (m->a.value[k] != 0.0) has[static_cast<size_t>(m->a.row[k])] = 1;
    return has;
}

std::vector<disguised_cone> disguise_list(const model *m)
{
    std::vector<disguised_cone> list;
    if (m->qcon.empty()) return list;
    const std::vector<uint8_t> linear = disguise_linear_rows(m);
    disguised_cone cone;
    for (const quad_row &q : m->qcon)
        if (disguise_of_row(m, &q, linear[static_cast<size_t>(q.row)] != 0, &cone, nullptr))
            list.push_back(std::move(cone));
    return list;
}
