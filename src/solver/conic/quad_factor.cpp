/* quad_factor.cpp - F with F'F = sign * Q for a part that has the sign: see quad_parts.h.
 *
 * C = P'LDL'P gives F = sqrt(D) L'P S. A semidefinite C has pivots that are 0 but for rounding, and these rows are left
 * out. Pivoting on the largest entry brings them to the end, where nothing is divided by them any more. */
#include "solver/conic/quad_matrix.h"

#include <algorithm>
#include <cmath>

/* Entries of a row of F that rounding made: nothing in C, whose diagonal is 1, changes by more. */
static constexpr double negligible = 1e-15;

/* Appends entry by entry; `value` is in scaled columns. */
static void append_entry(const quad_part *part, const quad_scaled *scaled, Eigen::Index i, double value,
                         linear_forms *forms)
{
    if (std::fabs(value) <= negligible) return;
    forms->column.push_back(part->column[i]);
    forms->value.push_back(value * scaled->scale[static_cast<size_t>(i)]);
}

static void end_row(linear_forms *forms) { forms->start.push_back(static_cast<int64_t>(forms->column.size())); }

/* V'max(lambda, 0)V: nothing moves C less, and the rows are full. For what is semidefinite only within the tolerance. */
static void factor_by_eigenvalues(const quad_part *part, const quad_scaled *scaled, linear_forms *forms)
{
    const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> eigen(quad_to_dense(scaled, 0.0));
    const double rank_limit = negligible * part->num * eigen.eigenvalues().tail(1)[0];
    for (Eigen::Index k = eigen.eigenvalues().size() - 1; k >= 0 && eigen.eigenvalues()[k] > rank_limit; k--) {
        const double root = std::sqrt(eigen.eigenvalues()[k]);
        for (Eigen::Index i = 0; i < part->num; i++)
            append_entry(part, scaled, i, root * eigen.eigenvectors()(i, k), forms);
        end_row(forms);
    }
}

/* How much the pivots that are left out would add to a diagonal entry of C. */
static double left_out(const Eigen::MatrixXd &packed, double rank_limit)
{
    Eigen::VectorXd sum = Eigen::VectorXd::Zero(packed.rows());
    for (Eigen::Index k = 0; k < packed.rows(); k++) {
        const double pivot = packed(k, k);
        if (pivot > rank_limit || pivot == 0.0) continue;
        sum[k] += std::fabs(pivot);
        for (Eigen::Index i = k + 1; i < packed.rows(); i++) sum[i] += std::fabs(pivot) * packed(i, k) * packed(i, k);
    }
    return sum.maxCoeff();
}

static void factor_dense(const quad_part *part, const quad_scaled *scaled, linear_forms *forms)
{
    const Eigen::LDLT<Eigen::MatrixXd> ldlt(quad_to_dense(scaled, 0.0));
    const Eigen::MatrixXd &packed = ldlt.matrixLDLT();
    const double rank_limit = 4.0 * negligible * part->num;
    if (ldlt.info() != Eigen::Success || !(left_out(packed, rank_limit) <= quad_sign_tolerance)) {
        factor_by_eigenvalues(part, scaled, forms);
        return;
    }
    Eigen::Matrix<Eigen::Index, Eigen::Dynamic, 1> place(part->num);
    for (Eigen::Index i = 0; i < place.size(); i++) place[i] = i;
    place = ldlt.transpositionsP() * place;
    for (Eigen::Index k = 0; k < packed.rows(); k++) {
        if (packed(k, k) <= rank_limit) continue;
        const double root = std::sqrt(packed(k, k));
        append_entry(part, scaled, place[k], root, forms);
        for (Eigen::Index i = k + 1; i < packed.rows(); i++)
            append_entry(part, scaled, place[i], root * packed(i, k), forms);
        end_row(forms);
    }
}

/* No pivoting here, which would fill the factor: a pivot of 0 in the middle would be divided by, and a shift of the
 * diagonal keeps it away from 0. The smallest one that does is taken; the last is the one that the test of the sign has
 * shown to do. A definite part needs none. */
static double factor_shifted(const quad_scaled *scaled, quad_sparse_ldlt *ldlt)
{
    static constexpr double shifts[] = {0.0, 1e-12, 1e-11, 1e-10, 1e-9};
    const quad_sparse matrix = quad_to_sparse(scaled, 0.0);
    ldlt->analyzePattern(matrix);
    for (const double shift : shifts) {
        ldlt->setShift(shift);
        ldlt->factorize(matrix);
        const double least = shift > 0.0 ? shift / 2 : 1e-10;
        if (ldlt->info() == Eigen::Success && ldlt->vectorD().minCoeff() > least) return shift;
    }
    ldlt->setShift(2.0 * quad_sign_tolerance);
    ldlt->factorize(matrix);
    return 2.0 * quad_sign_tolerance;
}

static void factor_sparse(const quad_part *part, const quad_scaled *scaled, linear_forms *forms)
{
    quad_sparse_ldlt ldlt;
    const double shift = factor_shifted(scaled, &ldlt);
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

void quad_part_factor(const quad_part *part, double sign, linear_forms *forms)
{
    const std::vector<double> diagonal = quad_diagonal(part, sign);
    if (*std::min_element(diagonal.begin(), diagonal.end()) <= 0.0) {
        reduced_part less;
        if (!quad_leave_remainders(part, sign, &less)) return; /* it has not the sign */
        const quad_part rest = quad_view(&less);
        if (rest.num > 0) quad_part_factor(&rest, sign, forms);
        return;
    }
    const quad_scaled scaled = quad_scale(part, sign, diagonal);
    if (part->num == 1) {
        append_entry(part, &scaled, 0, 1.0, forms);
        end_row(forms);
    } else if (quad_is_dense(part)) {
        factor_dense(part, &scaled, forms);
    } else {
        factor_sparse(part, &scaled, forms);
    }
}
