/* evaluated_stubs.cpp - see evaluated_stubs.h. */
#include "ampl/evaluation/evaluated_stubs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iterator>

std::vector<data_row> evaluated_stubs()
{
    static const char *const classes[] = {"NLP", "MINLP", "QCQP", "MIQCQP", "QP", "MIQP"};
    std::vector<data_row> stubs;
    for (const data_row &row : data_rows("nl"))
        if (std::find(std::begin(classes), std::end(classes), row.problem_class) != std::end(classes))
            stubs.push_back(row);
    return stubs;
}

open_stub::open_stub(const data_row &row)
{
    path = folder.file(copy_stub(folder, row));
    EXPECT_TRUE(open_callbacks(path, &callbacks));
}

open_stub::open_stub(const nl_model &model)
{
    write_stub(folder, model);
    path = folder.file("model");
    EXPECT_TRUE(open_callbacks(path, &callbacks));
}

open_stub::~open_stub() { close_callbacks(&callbacks); }

/* Between -1 and 1, the same on every machine. */
static double noise(size_t j, unsigned turn)
{
    uint64_t state = (j + 1) * 6364136223846793005U + turn * 1442695040888963407U;
    state ^= state >> 29U;
    state *= 0x9E3779B97F4A7C15U;
    return static_cast<double>(state >> 11U) / 4503599627370496.0 - 1.0;
}

std::vector<double> point_about_start(const stub_callbacks &c, unsigned turn)
{
    std::vector<double> x = c.start;
    for (size_t j = 0; j < x.size(); ++j) {
        if (std::isnan(x[j])) x[j] = 1.0;
        if (turn == 0) continue;
        x[j] += (0.05 + 0.1 * (turn % 4)) * (1.0 + std::fabs(x[j])) * noise(j, turn);
        const double width = std::min(1.0, c.upper[j] - c.lower[j]);
        if (x[j] < c.lower[j] + 0.01 * width) x[j] = c.lower[j] + width * (0.5 + 0.3 * noise(j, turn + 50));
        if (x[j] > c.upper[j] - 0.01 * width) x[j] = c.upper[j] - width * (0.5 + 0.3 * noise(j, turn + 90));
    }
    return x;
}
