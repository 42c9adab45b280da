/* conic_support.h - models from LP texts, random forms, and what the tests of convexity and the conic form evaluate. */
#pragma once

#include "solver/conic/conic_form.h"
#include "solver/io/io.h"
#include "support/sys.h"

#include <cmath>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace conic_support
{
inline model from_lp(const std::string &text)
{
    param_set params;
    param_set_defaults(&params);
    stream_set streams;
    const io_context io = {"t.lp", &params, &streams, test_sys()};
    byte_source *in = nullptr;
    model m;
    EXPECT_EQ(source_open_memory(&in, text.data(), text.size()), ZLR_RES_OK);
    EXPECT_EQ(lp_read(&io, in, &m), ZLR_RES_OK) << text;
    source_close(&in);
    return m;
}

inline int32_t column(const model &m, const std::string &name)
{
    for (int32_t j = 0; j < m.num_var; j++)
        if (names_shown(&m.var_names, j, 'x') == name) return j;
    return -1;
}

/* A message for the console in one line again. */
inline std::string joined(const std::string &message)
{
    std::string text;
    for (size_t k = 0; k < message.size(); k++) {
        if (message.compare(k, 3, "\n  ") == 0)
            k += 1;
        else
            text += message[k];
    }
    return text;
}

typedef std::vector<std::vector<double>> matrix;

/* F'F for a random rank x num matrix of small integers: exact. */
inline matrix random_gram(std::mt19937 *random, int32_t num, int32_t rank)
{
    std::uniform_int_distribution<int> size(1, 3), side(0, 1); /* none is 0, so that the form is in one part */
    matrix f(static_cast<size_t>(rank), std::vector<double>(static_cast<size_t>(num)));
    for (auto &row : f)
        for (double &v : row) v = size(*random) * (side(*random) == 0 ? -1 : 1);
    matrix q(static_cast<size_t>(num), std::vector<double>(static_cast<size_t>(num)));
    for (size_t i = 0; i < q.size(); i++)
        for (size_t j = 0; j < q.size(); j++)
            for (const auto &row : f) q[i][j] += row[i] * row[j];
    return q;
}

/* Columns numbered from `first` on, every `step`-th. */
inline std::vector<quad_term> terms_of(const matrix &q, int32_t first = 0, int32_t step = 1)
{
    std::vector<quad_term> terms;
    for (size_t i = 0; i < q.size(); i++)
        for (size_t j = 0; j <= i; j++)
            if (q[i][j] != 0.0)
                terms.push_back(
                    {first + step * static_cast<int32_t>(i), first + step * static_cast<int32_t>(j), q[i][j]});
    return terms;
}

inline bool has_sign(const std::vector<quad_term> &terms, double sign, quad_witness *witness = nullptr)
{
    const quad_parts parts = quad_split(terms);
    for (int32_t p = 0; p < quad_num_parts(&parts); p++) {
        const quad_part part = quad_part_at(&parts, p);
        if (!quad_part_has_sign(&part, sign, witness)) return false;
    }
    return true;
}

inline linear_forms factor(const std::vector<quad_term> &terms, double sign)
{
    linear_forms forms;
    const quad_parts parts = quad_split(terms);
    for (int32_t p = 0; p < quad_num_parts(&parts); p++) {
        const quad_part part = quad_part_at(&parts, p);
        quad_part_factor(&part, sign, &forms);
    }
    return forms;
}

inline std::vector<double> random_point(std::mt19937 *random, int32_t num, double low, double high)
{
    std::uniform_real_distribution<double> value(low, high);
    std::vector<double> x(static_cast<size_t>(num));
    for (double &v : x) v = value(*random);
    return x;
}

/* The point of the form over a point of the problem: columns that rows link by the rows, fixed ones at their value,
 * and the heads NAME.w as small as their cones let them be. */
inline std::vector<double> lift(const model &m, const model &form, const std::vector<double> &x)
{
    std::vector<double> z = x;
    z.resize(static_cast<size_t>(form.num_var), 0.0);
    for (size_t j = x.size(); j < z.size(); j++)
        if (form.var_lower[j] == form.var_upper[j]) z[j] = form.var_lower[j];
    std::vector<double> activity(static_cast<size_t>(form.num_con));
    model_activity(&form, z.data(), activity.data());
    for (size_t j = x.size(); j < z.size(); j++)
        for (int64_t k = form.a.start[j]; k < form.a.start[j + 1]; k++) {
            const int32_t row = form.a.row[static_cast<size_t>(k)];
            if (row >= m.num_con) z[j] = -activity[static_cast<size_t>(row)];
        }
    for (size_t c = m.cones.size(); c < form.cones.size(); c++) {
        const model_cone &cone = form.cones[c];
        if (cone.type != ZLR_CT_RQUAD || cone.member[0] < m.num_var) continue;
        const auto head = static_cast<size_t>(cone.member[0]);
        if (form.var_lower[head] != 0.0) continue; /* a linked copy, which is free */
        double sum = 0.0;
        for (size_t k = 2; k < cone.member.size(); k++) sum += std::pow(z[static_cast<size_t>(cone.member[k])], 2);
        z[head] = sum / 2.0 / z[static_cast<size_t>(cone.member[1])];
    }
    return z;
}

/* Largest entry of c + Q0 x - sum y_i (a_i + Q_i x) - slx + sux - snx: 0 at a stationary point. */
inline double stationarity(const model &m, const solution &sol)
{
    std::vector<double> d = m.c;
    quad_add_product(m.qobj, sol.xx.data(), 1.0, d.data());
    for (const quad_row &q : m.qcon)
        quad_add_product(q.terms, sol.xx.data(), -sol.y[static_cast<size_t>(q.row)], d.data());
    double worst = 0.0;
    for (size_t j = 0; j < d.size(); j++) {
        for (int64_t k = m.a.start[j]; k < m.a.start[j + 1]; k++)
            d[j] -= m.a.value[static_cast<size_t>(k)] * sol.y[static_cast<size_t>(m.a.row[static_cast<size_t>(k)])];
        d[j] -= sol.slx[j] - sol.sux[j] + (sol.snx.empty() ? 0.0 : sol.snx[j]);
        worst = std::max(worst, std::fabs(d[j]));
    }
    return worst;
}
}  // namespace conic_support
