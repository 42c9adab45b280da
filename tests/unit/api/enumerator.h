/* enumerator.h - exact answers to tiny problems with integer data, by trying every vertex and every integer point.
 *
 * It shares nothing with the library: the arithmetic is on integers, so that a status or an optimal value from here is
 * right, not right within a tolerance. Cost is exponential; meant for up to four columns and four rows. */
#pragma once

#include <cstdint>
#include <vector>

enum exact_status { EXACT_OPTIMAL, EXACT_INFEASIBLE, EXACT_UNBOUNDED };

/* One side of a row or bound: a'x >= b. */
struct exact_half {
    std::vector<int64_t> a;
    int64_t b;
};

/* A side that does not exist is +-exact_none. */
inline constexpr int64_t exact_none = INT64_MAX / 4;

struct exact_problem {
    int32_t num_var = 0;
    bool maximise = false;
    std::vector<int64_t> c;
    std::vector<std::vector<int64_t>> row; /* dense */
    std::vector<int64_t> row_lower, row_upper, var_lower, var_upper;
    std::vector<bool> is_int; /* integer columns have finite bounds */
};

struct exact_answer {
    exact_status status;
    double objective;
};

exact_answer exact_solve(const exact_problem *p);
