/* magnitudes.cpp - see magnitudes.h. */
#include "solver/report/magnitudes.h"

#include "solver/io/number.h"

#include <algorithm>
#include <cmath>
#include <string>

/* The nearest doubles to the powers of ten, by number of the decade from the least on. Parsed and not multiplied, so
 * that a value at the edge of a decade falls on its right side. */
static const std::array<double, decade_most - decade_least + 1> &powers_of_ten()
{
    static const auto powers = [] {
        std::array<double, decade_most - decade_least + 1> table = {};
        for (int32_t d = decade_least; d <= decade_most; d++) {
            double *power = &table[static_cast<size_t>(d - decade_least)];
            if (!number_parse("1e" + std::to_string(d), power)) *power = 0.0; /* not reached: all of them parse */
        }
        return table;
    }();
    return powers;
}

int32_t magnitude_decade(double value)
{
    constexpr double log_of_two = 0.30102999566398120;
    const double size = std::fabs(value);
    /* The binary exponent tells the decade or the one below it, at a small part of the cost of a logarithm. */
    const auto decade = static_cast<int32_t>(std::floor(std::ilogb(size) * log_of_two));
    if (decade >= decade_most) return decade_most;
    return size >= powers_of_ten()[static_cast<size_t>(decade + 1 - decade_least)] ? decade + 1 : decade;
}

void magnitudes_add(magnitudes *found, double value)
{
    if (value == 0.0 || !std::isfinite(value)) return;
    const int32_t decade = magnitude_decade(value);
    if (found->total == 0) found->first = found->last = decade;
    found->first = std::min(found->first, decade);
    found->last = std::max(found->last, decade);
    found->count[static_cast<size_t>(decade - decade_least)]++;
    found->total++;
    found->least = std::min(found->least, std::fabs(value));
    found->most = std::max(found->most, std::fabs(value));
}

static void add_bounds(magnitudes *found, const std::vector<double> &lower, const std::vector<double> &upper)
{
    for (size_t k = 0; k < lower.size(); k++) {
        magnitudes_add(found, lower[k]);
        if (upper[k] != lower[k]) magnitudes_add(found, upper[k]);
    }
}

problem_magnitudes magnitudes_of_problem(const model *m)
{
    problem_magnitudes found;
    for (const double value : m->a.value) magnitudes_add(&found.matrix, value);
    for (const double value : m->c) magnitudes_add(&found.cost, value);
    add_bounds(&found.bounds, m->var_lower, m->var_upper);
    add_bounds(&found.sides, m->con_lower, m->con_upper);
    for (const quad_term &t : m->qobj) magnitudes_add(&found.quadratic, t.value);
    for (const quad_row &row : m->qcon)
        for (const quad_term &t : row.terms) magnitudes_add(&found.quadratic, t.value);
    return found;
}
