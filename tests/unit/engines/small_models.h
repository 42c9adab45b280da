/* small_models.h - hand-made problems whose answers can be checked with a pencil. */
#pragma once

#include "solver/model/model.h"

#include <vector>

/* A row: bounds and coefficients of all columns. */
struct test_row {
    double lower, upper;
    std::vector<double> a;
};

inline model make_model(int32_t sense, const std::vector<double> &c, const std::vector<test_row> &rows,
                        const std::vector<double> &lower, const std::vector<double> &upper)
{
    model m;
    model_append_cons(&m, static_cast<int32_t>(rows.size()));
    model_append_vars(&m, static_cast<int32_t>(c.size()));
    m.sense = sense;
    m.c = c;
    m.var_lower = lower;
    m.var_upper = upper;
    for (size_t i = 0; i < rows.size(); i++) {
        m.con_lower[i] = rows[i].lower;
        m.con_upper[i] = rows[i].upper;
    }
    for (size_t j = 0; j < c.size(); j++) {
        std::vector<int32_t> sub;
        std::vector<double> value;
        for (size_t i = 0; i < rows.size(); i++) {
            if (rows[i].a[j] == 0.0) continue;
            sub.push_back(static_cast<int32_t>(i));
            value.push_back(rows[i].a[j]);
        }
        model_put_column(&m, static_cast<int32_t>(j), static_cast<int32_t>(sub.size()), sub.data(), value.data());
    }
    return m;
}

/* minimise -x0 - 2 x1, x0 + x1 <= 5, x0 + 3 x1 <= 6, 0 <= x <= 3. Optimum -5 at (3, 1): the second row has multiplier
 * -2/3 and x0 is at its upper bound with reduced cost -1/3. As a maximisation all signs turn. */
inline model two_row_model(int32_t sense)
{
    const double s = sense == ZLR_SENSE_MAX ? -1.0 : 1.0;
    return make_model(sense, {-s, -2.0 * s}, {{-model_inf, 5.0, {1.0, 1.0}}, {-model_inf, 6.0, {1.0, 3.0}}}, {0.0, 0.0},
                      {3.0, 3.0});
}
