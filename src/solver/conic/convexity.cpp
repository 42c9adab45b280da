/* convexity.cpp - see convexity.h. */
#include "solver/conic/convexity.h"

#include "solver/report/streams.h"

#include <algorithm>
#include <cmath>
#include <numeric>

static constexpr size_t columns_shown = 4; /* of a point that shows a wrong sign */
static constexpr size_t line_length = 80;

double convexity_objective_sign(const model *m) { return m->sense == ZLR_SENSE_MIN ? 1.0 : -1.0; }

double convexity_row_sign(const model *m, int32_t row)
{
    const auto at = static_cast<size_t>(row);
    if (m->con_upper[at] != model_inf) return 1.0;
    return m->con_lower[at] != -model_inf ? -1.0 : 0.0;
}

/* A blank at which no line ends. */
static constexpr char hard_blank = '\x01';

/* Text in lines that fit the console, the second and later ones set in. */
static std::string wrapped(const std::string &text)
{
    std::string out, line;
    for (size_t begin = 0; begin < text.size();) {
        const size_t end = std::min(text.find(' ', begin), text.size());
        if (!line.empty() && line != "  " && line.size() + 1 + (end - begin) > line_length) {
            out += line + "\n";
            line = "  ";
        }
        if (!line.empty() && line != "  ") line += ' ';
        line.append(text, begin, end - begin);
        begin = end + 1;
    }
    out += line + "\n";
    std::replace(out.begin(), out.end(), hard_blank, ' ');
    return out;
}

static std::string row_text(const model *m, int32_t row) { return "Row " + names_shown(&m->con_names, row, 'c'); }

/* "-0.75 at x = 1, y = -0.5 and 0 elsewhere": the largest values, which show it best. */
static std::string witness_text(const model *m, const quad_witness *witness)
{
    std::vector<size_t> order(witness->x.size());
    std::iota(order.begin(), order.end(), size_t{0});
    const size_t shown = std::min(order.size(), columns_shown);
    const auto larger = [&](size_t a, size_t b) {
        const double xa = std::fabs(witness->x[a]), xb = std::fabs(witness->x[b]);
        return xa != xb ? xa > xb : a < b;
    };
    std::partial_sort(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(shown), order.end(), larger);

    std::string text = text_format("%.6g at ", witness->value);
    for (size_t k = 0; k < shown; k++)
        text_append(&text, "%s%s%c=%c%.6g", k == 0 ? "" : ", ",
                    names_shown(&m->var_names, witness->column[order[k]], 'x').c_str(), hard_blank, hard_blank,
                    witness->x[order[k]]);
    if (order.size() > shown) return text + text_format(" and values for %zu other columns", order.size() - shown);
    return text;
}

/* Whether a form has the sign; where not, `*why` says so. */
static bool form_has_sign(const model *m, const std::vector<quad_term> &terms, double sign, double tolerance,
                          std::string *why, work_effort *effort)
{
    const quad_parts parts = quad_split(terms, effort, tolerance);
    if (!parts.is_finite) {
        *why = "its quadratic part has an infinite coefficient.";
        return false;
    }
    quad_witness witness;
    for (int32_t p = 0; p < quad_num_parts(&parts); p++) {
        const quad_part part = quad_part_at(&parts, p);
        if (quad_part_has_sign(&part, sign, &witness, effort)) continue;
        *why =
            text_format("its quadratic part must not be %s anywhere, and is ", sign > 0.0 ? "negative" : "positive") +
            witness_text(m, &witness) + ".";
        return false;
    }
    return true;
}

static bool all_zero(const std::vector<quad_term> &terms)
{
    return std::all_of(terms.begin(), terms.end(), [](const quad_term &t) { return t.value == 0.0; });
}

static void fail(convexity *out, int32_t code, int32_t row, const std::string &text)
{
    out->code = code;
    out->row = row;
    out->message = wrapped(text);
}

static void check_objective(const model *m, const convexity_rules *rules, convexity *out, work_effort *effort)
{
    const bool is_min = m->sense == ZLR_SENSE_MIN;
    std::string why;
    if (form_has_sign(m, m->qobj, convexity_objective_sign(m), rules->tolerance, &why, effort)) return;
    fail(out, ZLR_RES_ERR_NONCONVEX, -1,
         std::string("The objective is not ") +
             (is_min ? "convex: in a minimisation " : "concave: in a maximisation ") + why);
}

static void check_row(const model *m, const quad_row *q, bool has_linear, const convexity_rules *rules, convexity *out,
                      work_effort *effort)
{
    const double lower = m->con_lower[static_cast<size_t>(q->row)], upper = m->con_upper[static_cast<size_t>(q->row)];
    const double sign = convexity_row_sign(m, q->row);
    if (sign == 0.0 || all_zero(q->terms)) return;
    const std::string name = row_text(m, q->row);
    if (lower != -model_inf && upper != model_inf) {
        if (lower == upper)
            fail(out, ZLR_RES_ERR_QCON_EQUALITY, q->row,
                 name +
                     text_format(" has a quadratic part and is an equality (= %g): it cannot be convex. Only rows with "
                                 "one side can.",
                                 upper));
        else
            fail(out, ZLR_RES_ERR_QCON_RANGE, q->row,
                 name +
                     text_format(" has a quadratic part and two sides, %g and %g: it cannot be convex. Only rows with "
                                 "one side can.",
                                 lower, upper));
        return;
    }
    std::string why, near_miss;
    if (form_has_sign(m, q->terms, sign, rules->tolerance, &why, effort)) return;
    disguised_cone cone;
    if (rules->disguised && disguise_of_row(m, q, has_linear, &cone, &near_miss, effort, rules->tolerance)) {
        out->disguised.push_back(std::move(cone));
        return;
    }
    std::string text = name + " is not convex: with " + (sign > 0.0 ? "an upper" : "a lower") + " side " + why;
    if (!near_miss.empty()) text += " It would be a cone " + near_miss + ".";
    fail(out, ZLR_RES_ERR_NONCONVEX, q->row, text);
}

convexity convexity_check(const model *m, work_effort *effort, const convexity_rules &rules)
{
    convexity out;
    check_objective(m, &rules, &out, effort);
    if (out.code != ZLR_RES_OK || m->qcon.empty()) return out;
    if (!effort_take(effort, static_cast<double>(m->a.row.size()))) return out;
    const std::vector<uint8_t> linear = disguise_linear_rows(m);
    for (const quad_row &q : m->qcon) {
        check_row(m, &q, linear[static_cast<size_t>(q.row)] != 0, &rules, &out, effort);
        if (out.code != ZLR_RES_OK || effort_is_over(effort)) break;
    }
    return out;
}
