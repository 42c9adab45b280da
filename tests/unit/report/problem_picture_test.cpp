/* Sizes of coefficients by power of ten, and where nonzeros lie: compared with counts made in another way. */
#include "solver/report/magnitudes.h"
#include "solver/report/matrix_bins.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <map>
#include <numeric>
#include <random>

TEST(magnitudes, decades_at_their_edges)
{
    for (int32_t d = -300; d <= 308; d++) {
        const double power = std::strtod(("1e" + std::to_string(d)).c_str(), nullptr);
        EXPECT_EQ(magnitude_decade(power), d);
        EXPECT_EQ(magnitude_decade(-power), d);
        EXPECT_EQ(magnitude_decade(std::nextafter(power, 0.0)), d - 1);
        EXPECT_EQ(magnitude_decade(std::nextafter(power, HUGE_VAL)), d);
    }
    EXPECT_EQ(magnitude_decade(std::numeric_limits<double>::max()), decade_most);
    EXPECT_EQ(magnitude_decade(std::numeric_limits<double>::denorm_min()), decade_least);
}

TEST(magnitudes, count_finite_values_that_are_not_zero)
{
    magnitudes found;
    for (const double v : {0.0, -0.0, HUGE_VAL, -HUGE_VAL, 5.0, -7.5, 0.02, 1e100}) magnitudes_add(&found, v);
    EXPECT_EQ(found.total, 4);
    EXPECT_EQ(found.first, -2);
    EXPECT_EQ(found.last, 100);
    EXPECT_EQ(found.least, 0.02);
    EXPECT_EQ(found.most, 1e100);
    EXPECT_EQ(magnitudes_of(&found, 0), 2);
    EXPECT_EQ(magnitudes_of(&found, -2), 1);
    EXPECT_EQ(magnitudes_of(&found, 100), 1);
    EXPECT_EQ(std::accumulate(found.count.begin(), found.count.end(), int64_t{0}), found.total);
}

TEST(magnitudes, of_a_problem)
{
    model m;
    model_append_cons(&m, 3);
    model_append_vars(&m, 2);
    m.con_lower = {5.0, -model_inf, 10.0};
    m.con_upper = {5.0, 300.0, 20.0}; /* an equality counts once, a range twice */
    m.var_lower = {0.0, -4.0};
    m.var_upper = {model_inf, 4.0};
    m.c = {0.0, 0.5};
    const int32_t rows[] = {0, 2};
    const double values[] = {-12.0, 3e-5};
    model_put_column(&m, 0, 2, rows, values);
    m.qobj = {{0, 0, 2000.0}};
    m.qcon = {{1, {{1, 0, 0.25}}}};

    const problem_magnitudes found = magnitudes_of_problem(&m);
    EXPECT_EQ(found.matrix.total, 2);
    EXPECT_EQ(magnitudes_of(&found.matrix, 1), 1);
    EXPECT_EQ(magnitudes_of(&found.matrix, -5), 1);
    EXPECT_EQ(found.cost.total, 1);
    EXPECT_EQ(found.bounds.total, 2);
    EXPECT_EQ(found.sides.total, 4);
    EXPECT_EQ(magnitudes_of(&found.sides, 0), 1);
    EXPECT_EQ(magnitudes_of(&found.sides, 1), 2);
    EXPECT_EQ(magnitudes_of(&found.sides, 2), 1);
    EXPECT_EQ(found.quadratic.total, 2);
}

/* ---- The matrix ---- */

static model random_model(int32_t rows, int32_t columns, uint32_t seed)
{
    model m;
    std::mt19937 random(seed);
    model_append_cons(&m, rows);
    model_append_vars(&m, columns);
    for (int32_t j = 0; j < columns; j++) {
        std::map<int32_t, double> column;
        for (int k = 0; k < 3; k++) column[static_cast<int32_t>(random() % static_cast<uint32_t>(rows))] = 1.0;
        std::vector<int32_t> sub;
        std::vector<double> value;
        for (const auto &[i, v] : column) {
            sub.push_back(i);
            value.push_back(v);
        }
        model_put_column(&m, j, static_cast<int32_t>(sub.size()), sub.data(), value.data());
    }
    return m;
}

TEST(matrix_bins, hold_each_nonzero_in_the_cell_whose_rows_and_columns_it_has)
{
    static const struct {
        int32_t rows, columns, most;
    } cases[] = {{7, 12, 160}, {160, 160, 160}, {161, 5, 160}, {1000, 333, 160}, {17, 4001, 16}, {1, 1, 160}};
    for (const auto &c : cases) {
        const model m = random_model(c.rows, c.columns, 7);
        const matrix_bins bins = matrix_bins_of(&m, c.most, c.most);
        ASSERT_EQ(bins.rows, std::min(c.rows, c.most));
        ASSERT_EQ(bins.columns, std::min(c.columns, c.most));
        EXPECT_EQ(std::accumulate(bins.count.begin(), bins.count.end(), int64_t{0}), model_num_nz(&m));
        EXPECT_EQ(matrix_bin_start(m.num_con, bins.rows, 0), 0);
        EXPECT_EQ(matrix_bin_start(m.num_con, bins.rows, bins.rows), m.num_con);

        std::vector<int64_t> count(bins.count.size(), 0); /* by the starts of the cells */
        for (int32_t j = 0; j < m.num_var; j++)
            for (int64_t k = m.a.start[static_cast<size_t>(j)]; k < m.a.start[static_cast<size_t>(j) + 1]; k++) {
                int32_t r = 0, col = 0;
                while (matrix_bin_start(m.num_con, bins.rows, r + 1) <= m.a.row[static_cast<size_t>(k)]) r++;
                while (matrix_bin_start(m.num_var, bins.columns, col + 1) <= j) col++;
                count[static_cast<size_t>(r) * static_cast<size_t>(bins.columns) + static_cast<size_t>(col)]++;
            }
        EXPECT_EQ(bins.count, count) << c.rows << " x " << c.columns;
    }
}

TEST(matrix_bins, of_a_matrix_without_rows_or_columns)
{
    model m;
    EXPECT_TRUE(matrix_bins_of(&m, 160, 160).count.empty());
    model_append_cons(&m, 3);
    EXPECT_TRUE(matrix_bins_of(&m, 160, 160).count.empty());
    model_append_vars(&m, 2);
    EXPECT_EQ(matrix_bins_of(&m, 160, 160).count, std::vector<int64_t>(6, 0));
}
