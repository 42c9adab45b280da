/* quad_scaled.cpp - see quad_scaled.h. */
#include "solver/conic/quad_scaled.h"

#include <algorithm>
#include <cmath>

std::vector<double> quad_diagonal(const quad_part *part, double sign)
{
    std::vector<double> diagonal(static_cast<size_t>(part->num), 0.0);
    for (int64_t k = 0; k < part->num_terms; k++) {
        const quad_term t = part->term[k];
        if (t.i == t.j) diagonal[static_cast<size_t>(t.i)] = sign * t.value;
    }
    return diagonal;
}

bool quad_leave_remainders(const quad_part *part, double sign, reduced_part *out)
{
    const std::vector<double> diagonal = quad_diagonal(part, sign);
    const double limit = quad_remainder * *std::max_element(diagonal.begin(), diagonal.end());
    std::vector<uint8_t> is_zero(diagonal.size());
    for (size_t i = 0; i < diagonal.size(); i++) is_zero[i] = diagonal[i] <= 0.0;
    for (int64_t k = 0; k < part->num_terms; k++) {
        const quad_term t = part->term[k];
        if (std::fabs(t.value) > limit) is_zero[static_cast<size_t>(t.i)] = is_zero[static_cast<size_t>(t.j)] = 0;
    }
    if (std::find(is_zero.begin(), is_zero.end(), 1) == is_zero.end()) return false;

    *out = {};
    out->tolerance = part->tolerance;
    std::vector<int32_t> number(diagonal.size(), -1);
    for (size_t i = 0; i < number.size(); i++) {
        if (is_zero[i]) continue;
        number[i] = static_cast<int32_t>(out->column.size());
        out->column.push_back(part->column[i]);
    }
    for (int64_t k = 0; k < part->num_terms; k++) {
        const quad_term t = part->term[k];
        const int32_t i = number[static_cast<size_t>(t.i)], j = number[static_cast<size_t>(t.j)];
        if (i >= 0 && j >= 0) out->term.push_back({i, j, t.value});
    }
    return true;
}

quad_part quad_view(const reduced_part *part)
{
    return {part->column.data(), static_cast<int32_t>(part->column.size()), part->term.data(),
            static_cast<int64_t>(part->term.size()), part->tolerance};
}

quad_scaled quad_scale(const quad_part *part, double sign, const std::vector<double> &diagonal)
{
    quad_scaled out;
    out.tolerance = part->tolerance;
    out.scale.resize(diagonal.size());
    std::transform(diagonal.begin(), diagonal.end(), out.scale.begin(), [](double d) { return std::sqrt(d); });
    for (int64_t k = 0; k < part->num_terms; k++) {
        const quad_term t = part->term[k];
        if (t.i == t.j) continue;
        const double a = out.scale[static_cast<size_t>(t.i)], b = out.scale[static_cast<size_t>(t.j)];
        /* One after the other: the product of the scales may be beyond the range of doubles. */
        out.term.push_back({t.i, t.j, sign * t.value / std::max(a, b) / std::min(a, b)});
    }
    return out;
}

bool quad_is_dense(const quad_part *part)
{
    const double num = part->num;
    return part->num <= quad_dense_size || static_cast<double>(part->num_terms) > 0.05 * num * num;
}
