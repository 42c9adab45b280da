/* model.cpp - see model.h. */
#include "solver/model/model.h"

#include <algorithm>
#include <cmath>

void model_append_cons(model *m, int32_t num)
{
    const auto total = static_cast<size_t>(m->num_con) + static_cast<size_t>(num);
    m->con_lower.resize(total, -model_inf);
    m->con_upper.resize(total, model_inf);
    names_resize(&m->con_names, m->num_con + num);
    m->num_con += num;
}

void model_append_vars(model *m, int32_t num)
{
    const auto total = static_cast<size_t>(m->num_var) + static_cast<size_t>(num);
    m->c.resize(total, 0.0);
    m->var_lower.resize(total, 0.0);
    m->var_upper.resize(total, 0.0);
    m->var_type.resize(total, ZLR_VAR_CONT);
    m->a.start.resize(total + 1, m->a.start.back());
    names_resize(&m->var_names, m->num_var + num);
    m->num_var += num;
}

int64_t model_num_nz(const model *m) { return m->a.start.back(); }

int32_t model_num_int(const model *m)
{
    return static_cast<int32_t>(std::count(m->var_type.begin(), m->var_type.end(), ZLR_VAR_INT));
}

int32_t model_num_cones(const model *m) { return static_cast<int32_t>(m->cones.size()); }

int32_t model_problem_type(const model *m)
{
    if (m->functions != nullptr) return ZLR_PROBTYPE_NL;
    if (!m->cones.empty()) return ZLR_PROBTYPE_CONIC;
    if (!m->qcon.empty()) return ZLR_PROBTYPE_QCQO;
    return m->qobj.empty() ? ZLR_PROBTYPE_LO : ZLR_PROBTYPE_QO;
}

void model_put_column(model *m, int32_t j, int32_t num, const int32_t *row, const double *value)
{
    sparse_columns *a = &m->a;
    const auto col = static_cast<size_t>(j);
    const auto begin = a->start[col];
    const auto end = a->start[col + 1];
    const int64_t kept = std::min<int64_t>(num, end - begin); /* entries that find room where old ones were */

    std::copy_n(row, kept, a->row.begin() + begin);
    std::copy_n(value, kept, a->value.begin() + begin);
    if (num > kept) {
        a->row.insert(a->row.begin() + end, row + kept, row + num);
        a->value.insert(a->value.begin() + end, value + kept, value + num);
    } else {
        a->row.erase(a->row.begin() + begin + kept, a->row.begin() + end);
        a->value.erase(a->value.begin() + begin + kept, a->value.begin() + end);
    }
    const int64_t change = num - (end - begin);
    if (change == 0) return;
    for (size_t k = col + 1; k < a->start.size(); ++k) a->start[k] += change;
}

void model_close_columns(model *m)
{
    if (m->open_column < 0) return;
    const auto first = static_cast<size_t>(m->open_column) + 2;
    m->open_column = -1;
    const auto end = static_cast<int64_t>(m->a.row.size());
    for (size_t k = first; k < m->a.start.size(); ++k) m->a.start[k] = end;
}

void model_put_column_open(model *m, int32_t j, int32_t num, const int32_t *row, const double *value)
{
    sparse_columns *a = &m->a;
    const auto col = static_cast<size_t>(j);
    if (j <= m->open_column) model_close_columns(m);
    const auto end = static_cast<int64_t>(a->row.size());
    if (m->open_column < 0 && a->start[col] != end) {
        model_put_column(m, j, num, row, value);
        return;
    }
    if (m->open_column >= 0)
        for (size_t k = static_cast<size_t>(m->open_column) + 2; k <= col; ++k) a->start[k] = end;
    m->open_column = j - 1;
    /* Room for both first: memory that runs out between the two would leave them of different lengths. */
    const size_t needed = a->row.size() + static_cast<size_t>(num);
    if (needed > std::min(a->row.capacity(), a->value.capacity())) {
        a->row.reserve(std::max(needed, 2 * a->row.size()));
        a->value.reserve(a->row.capacity());
    }
    a->row.insert(a->row.end(), row, row + num);
    a->value.insert(a->value.end(), value, value + num);
    a->start[col + 1] = end + num;
    m->open_column = j;
}

namespace
{
bool quad_before(const quad_term &a, const quad_term &b) { return a.i != b.i ? a.i < b.i : a.j < b.j; }
}  // namespace

void quad_normalise(std::vector<quad_term> *terms)
{
    for (quad_term &t : *terms)
        if (t.i < t.j) std::swap(t.i, t.j);
    /* Stable, so that repeated entries are added up in the order given and the sum does not depend on the sort. */
    if (!std::is_sorted(terms->begin(), terms->end(), quad_before))
        std::stable_sort(terms->begin(), terms->end(), quad_before);

    size_t kept = 0;
    for (size_t k = 0; k < terms->size();) {
        quad_term sum = (*terms)[k];
        for (++k; k < terms->size() && (*terms)[k].i == sum.i && (*terms)[k].j == sum.j; ++k)
            sum.value += (*terms)[k].value;
        if (sum.value != 0.0) (*terms)[kept++] = sum;
    }
    terms->resize(kept);
}

int32_t bounds_to_key(double lower, double upper)
{
    const bool has_lower = lower != -model_inf;
    const bool has_upper = upper != model_inf;
    if (has_lower && has_upper) return lower == upper ? ZLR_BK_FX : ZLR_BK_RA;
    if (has_lower) return ZLR_BK_LO;
    return has_upper ? ZLR_BK_UP : ZLR_BK_FR;
}

int32_t bounds_from_key(int32_t key, double lower, double upper, double infinite, double *out_lower, double *out_upper)
{
    if (key < ZLR_BK_LO || key > ZLR_BK_RA) return ZLR_RES_ERR_ARGUMENT;
    const bool has_lower = key == ZLR_BK_LO || key == ZLR_BK_FX || key == ZLR_BK_RA;
    const bool has_upper = key == ZLR_BK_UP || key == ZLR_BK_FX || key == ZLR_BK_RA;
    if ((has_lower && std::isnan(lower)) || (has_upper && std::isnan(upper))) return ZLR_RES_ERR_NAN;
    if (key == ZLR_BK_FX && (lower != upper || std::fabs(lower) >= infinite)) return ZLR_RES_ERR_BOUNDS;

    *out_lower = has_lower && std::fabs(lower) < infinite ? lower : -model_inf;
    *out_upper = has_upper && std::fabs(upper) < infinite ? upper : model_inf;
    return ZLR_RES_OK;
}

std::string model_cone_complaint(const model *m, int32_t type, const std::vector<int32_t> &member)
{
    if (type != ZLR_CT_QUAD && type != ZLR_CT_RQUAD) return "its type is not known";
    const size_t heads = cone_num_heads(type);
    if (member.size() < heads + 1)
        return "it has " + std::to_string(member.size()) + " columns, and needs at least " + std::to_string(heads + 1);
    const auto name = [&](int32_t j) { return names_shown(&m->var_names, j, 'x'); };
    std::vector<int32_t> sorted = member;
    std::sort(sorted.begin(), sorted.end());
    const auto twice = std::adjacent_find(sorted.begin(), sorted.end());
    if (twice != sorted.end()) return "column " + name(*twice) + " is in it twice";
    for (const model_cone &other : m->cones)
        for (const int32_t j : other.member)
            if (std::binary_search(sorted.begin(), sorted.end(), j))
                return "column " + name(j) + " is in another cone already";
    for (size_t k = 0; k < heads; k++)
        if (m->var_upper[static_cast<size_t>(member[k])] < 0.0)
            return "the upper bound of its head " + name(member[k]) + " is below 0";
    return "";
}

double cone_violation(const model_cone *cone, const double *x)
{
    const auto value = [&](size_t k) { return x[cone->member[k]]; };
    const size_t heads = cone_num_heads(cone->type);
    double norm = 0.0;
    for (size_t k = heads; k < cone->member.size(); k++) norm = std::hypot(norm, value(k));
    if (cone->type == ZLR_CT_QUAD) return std::max(0.0, norm - value(0));
    /* 2uv >= w^2 is the quadratic cone in (u + v, u - v, sqrt(2) w), whose head moves by twice as much as u and v. */
    const double u = value(0), v = value(1);
    return std::max({0.0, -u, -v, (std::hypot(u - v, std::sqrt(2.0) * norm) - (u + v)) / 2.0});
}

void quad_add_product(const std::vector<quad_term> &terms, const double *x, double factor, double *out)
{
    for (const quad_term &t : terms) {
        out[t.i] += factor * t.value * x[t.j];
        if (t.i != t.j) out[t.j] += factor * t.value * x[t.i];
    }
}

/* By the lower triangle: an entry off the diagonal stands for itself and its mirror image. */
void quad_add_value(const std::vector<quad_term> &terms, const double *x, double factor, exact_sum *sum)
{
    for (const quad_term &t : terms) sum->add_product((t.i == t.j ? 0.5 : 1.0) * t.value, factor * x[t.i], x[t.j]);
}

double quad_value(const std::vector<quad_term> &terms, const double *x)
{
    exact_sum sum;
    quad_add_value(terms, x, 1.0, &sum);
    return sum.value();
}

double model_objective(const model *m, const double *x)
{
    exact_sum sum;
    if (m->functions == nullptr) {
        sum.add(m->cfix);
    } else {
        int32_t code = ZLR_RES_OK;
        const function_values *at = functions_at(m->functions.get(), x, false, &code);
        if (at == nullptr) return std::numeric_limits<double>::quiet_NaN();
        sum.add(at->objective);
    }
    for (int32_t j = 0; j < m->num_var; ++j)
        if (const double c = m->c[static_cast<size_t>(j)]; c != 0.0) sum.add_product(c, x[j]);
    quad_add_value(m->qobj, x, 1.0, &sum);
    return sum.value();
}

void model_activity(const model *m, const double *x, double *activity)
{
    if (activity == nullptr) return;
    std::fill_n(activity, m->num_con, 0.0);
    for (int32_t j = 0; j < m->num_var; ++j) {
        if (x[j] == 0.0) continue;
        const auto end = static_cast<size_t>(m->a.start[static_cast<size_t>(j) + 1]);
        for (auto k = static_cast<size_t>(m->a.start[static_cast<size_t>(j)]); k < end; ++k)
            activity[m->a.row[k]] += m->a.value[k] * x[j];
    }
    for (const quad_row &q : m->qcon) activity[q.row] += quad_value(q.terms, x);
    if (m->functions == nullptr) return;
    int32_t code = ZLR_RES_OK;
    const function_values *at = functions_at(m->functions.get(), x, false, &code);
    for (size_t k = 0; k < m->functions->row.size(); k++)
        activity[m->functions->row[k]] += at != nullptr ? at->row[k] : std::numeric_limits<double>::quiet_NaN();
}
