/* slopes.h - derivatives against differences of the callbacks' own values: the objective's and the rows' slopes, and those
 * of the Lagrangian's gradient, which are the Hessian's. */
#pragma once

#include "ampl/evaluation/stub_callbacks.h"

#include <cstddef>

struct slope_check {
    bool has_values = false; /* at the point and beside it */
    double worst = 0.0;      /* how far the two are apart, relative to 1 and the size of the terms; of all functions */
    size_t direction = 0;    /* where that is */
};

/* Along the directions of three columns, and along all columns at once, three times with other signs. */
slope_check check_slopes(const stub_callbacks &callbacks, const std::vector<double> &x, double weight,
                         const std::vector<double> &y);
