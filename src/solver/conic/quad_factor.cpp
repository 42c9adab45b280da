/* quad_factor.cpp - F with F'F = sign * Q for a part that has the sign: see quad_parts.h.
 *
 * C = LL' in some order of the columns gives F = L'S. A definite C is factored in the order at hand. Of a semidefinite
 * one the columns with the largest entries left come first, until nothing is left but what rounding made. */
#include "solver/conic/quad_matrix.h"

#include <algorithm>
#include <cmath>

/* Entries of a row of F that rounding made: nothing in C, whose diagonal is 1, changes by more. */
static constexpr double negligible = 1e-15;

/* Where no pivot is below the square of this, none can be a remainder, and there is no need to choose pivots. */
static constexpr double definite_root = 1e-5;

/* Appends entry by entry; `value` is in scaled columns. */
static void append_entry(const quad_part *part, const quad_scaled *scaled, Eigen::Index i, double value,
                         linear_forms *forms)
{
    if (std::fabs(value) <= negligible) return;
    forms->column.push_back(part->column[i]);
    forms->value.push_back(value * scaled->scale[static_cast<size_t>(i)]);
}

static void end_row(linear_forms *forms) { forms->start.push_back(static_cast<int64_t>(forms->column.size())); }

/* F from the first `rank` columns of L. */
static void append_columns(const quad_part *part, const quad_scaled *scaled, const Eigen::MatrixXd &lower,
                           Eigen::Index rank, linear_forms *forms)
{
    for (Eigen::Index k = 0; k < rank; k++) {
        for (Eigen::Index i = 0; i < part->num; i++) append_entry(part, scaled, i, lower(i, k), forms);
        end_row(forms);
    }
}

/* Column by column, the largest entry that is left on the diagonal first: n r^2 steps for n columns and rank r, where
 * the library's own pivoting takes n^3 and divides by remainders. An entry that becomes negative shows that C is off
 * by more than what is left: then no more is taken away. Returns the rank; the columns of L have their rows in the
 * part's order. */
static Eigen::Index factor_semidefinite(const Eigen::MatrixXd &c, double tolerance, Eigen::MatrixXd *lower,
                                        work_effort *effort)
{
    const double rank_limit = 4.0 * negligible * static_cast<double>(c.rows());
    Eigen::VectorXd left = c.diagonal();
    lower->resize(c.rows(), c.rows());
    for (Eigen::Index k = 0; k < c.rows(); k++) {
        Eigen::Index pivot = 0;
        const double largest = left.maxCoeff(&pivot);
        if (largest <= rank_limit) return k;
        if (!effort_take(effort, static_cast<double>(c.rows()) * static_cast<double>(k))) return k;
        auto column = lower->col(k);
        column = c.col(pivot);
        column.noalias() -= lower->leftCols(k) * lower->row(pivot).head(k).transpose();
        column /= std::sqrt(largest);
        for (Eigen::Index i = 0; i < c.rows(); i++)
            if (left[i] == -model_inf) column[i] = 0.0; /* was a pivot: nothing is left of its row */
        column[pivot] = std::sqrt(largest);
        left -= column.cwiseAbs2();
        left[pivot] = -model_inf;
        for (Eigen::Index i = 0; i < c.rows(); i++)
            if (left[i] < -tolerance && left[i] != -model_inf) return k;
    }
    return c.rows();
}

static void factor_dense(const quad_part *part, const quad_scaled *scaled, linear_forms *forms, work_effort *effort)
{
    if (!effort_take(effort, std::pow(static_cast<double>(part->num), 3.0) / 3.0)) return;
    const Eigen::MatrixXd c = quad_to_dense(scaled, 0.0);
    const Eigen::LLT<Eigen::MatrixXd> llt(c);
    Eigen::MatrixXd lower;
    Eigen::Index rank = part->num;
    if (llt.info() == Eigen::Success && llt.matrixLLT().diagonal().minCoeff() > definite_root)
        lower = llt.matrixL();
    else
        rank = factor_semidefinite(c, part->tolerance, &lower, effort);
    append_columns(part, scaled, lower, rank, forms);
}

/* No pivoting here, which would fill the factor: a pivot of 0 in the middle would be divided by, and a shift of the
 * diagonal keeps it away from 0. The smallest one that does is taken; the last is the one that the test of the sign has
 * shown to do. A definite part needs none. */
static double factor_shifted(const quad_scaled *scaled, quad_sparse_ldlt *ldlt, work_effort *effort)
{
    static constexpr double shifts[] = {0.0, 1e-12, 1e-11, 1e-10, 1e-9};
    const quad_sparse matrix = quad_to_sparse(scaled, 0.0);
    if (!quad_analyze(matrix, ldlt, effort)) return 0.0;
    for (const double shift : shifts) {
        if (shift > 0.0 && !effort_take(effort, 2.0 * ldlt->operations())) return shift;
        ldlt->setShift(shift);
        ldlt->factorize(matrix);
        const double least = shift > 0.0 ? shift / 2 : definite_root * definite_root;
        if (ldlt->info() == Eigen::Success && ldlt->vectorD().minCoeff() > least) return shift;
    }
    if (!effort_take(effort, 2.0 * ldlt->operations())) return 0.0;
    ldlt->setShift(2.0 * scaled->tolerance);
    ldlt->factorize(matrix);
    return 2.0 * scaled->tolerance;
}

static void factor_sparse(const quad_part *part, const quad_scaled *scaled, linear_forms *forms, work_effort *effort)
{
    quad_sparse_ldlt ldlt;
    const double shift = factor_shifted(scaled, &ldlt, effort);
    if (effort_is_over(effort)) return;
    const Eigen::VectorXd pivots = ldlt.vectorD();
    const auto &lower = ldlt.matrixL().nestedExpression();
    const auto &place = ldlt.permutationPinv().indices(); /* of a column of L, its number in the part */
    for (Eigen::Index k = 0; k < pivots.size(); k++) {
        double largest = 1.0;
        for (quad_sparse::InnerIterator it(lower, k); it; ++it)
            if (it.row() > k) largest = std::max(largest, std::fabs(it.value()));
        if (pivots[k] * largest * largest <= 4.0 * shift || pivots[k] <= 0.0) continue; /* nothing but the shift */
        const double root = std::sqrt(pivots[k]);
        append_entry(part, scaled, place[k], root, forms);
        for (quad_sparse::InnerIterator it(lower, k); it; ++it)
            if (it.row() > k) append_entry(part, scaled, place[it.row()], root * it.value(), forms);
        end_row(forms);
    }
}

void quad_part_factor(const quad_part *part, double sign, linear_forms *forms, work_effort *effort)
{
    if (effort_is_over(effort)) return;
    const std::vector<double> diagonal = quad_diagonal(part, sign);
    if (*std::min_element(diagonal.begin(), diagonal.end()) <= 0.0) {
        reduced_part less;
        if (!quad_leave_remainders(part, sign, &less)) return; /* it has not the sign */
        const quad_part rest = quad_view(&less);
        if (rest.num > 0) quad_part_factor(&rest, sign, forms, effort);
        return;
    }
    const quad_scaled scaled = quad_scale(part, sign, diagonal);
    if (part->num == 1) {
        append_entry(part, &scaled, 0, 1.0, forms);
        end_row(forms);
    } else if (quad_is_dense(part)) {
        factor_dense(part, &scaled, forms, effort);
    } else {
        factor_sparse(part, &scaled, forms, effort);
    }
}
