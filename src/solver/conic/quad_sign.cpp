/* quad_sign.cpp - whether a part of a quadratic form has a sign: see quad_parts.h.
 *
 * C + tolerance I has a Cholesky factor exactly when C has no eigenvalue below -tolerance. Rounding in that
 * factorisation acts on C, whose diagonal is 1, like a change by some 1e-16 an entry: far below the tolerance. */
#include "solver/conic/quad_matrix.h"

#include <algorithm>
#include <cmath>

quad_sparse quad_to_sparse(const quad_scaled *scaled, double shift)
{
    const auto num = static_cast<int64_t>(scaled->scale.size());
    std::vector<Eigen::Triplet<double, int64_t>> entries;
    entries.reserve(scaled->term.size() + scaled->scale.size());
    for (int64_t i = 0; i < num; i++) entries.emplace_back(i, i, 1.0 + shift);
    for (const quad_term &t : scaled->term) entries.emplace_back(t.i, t.j, t.value);
    quad_sparse out(num, num);
    out.setFromTriplets(entries.begin(), entries.end());
    return out;
}

Eigen::MatrixXd quad_to_dense(const quad_scaled *scaled, double shift)
{
    const auto num = static_cast<Eigen::Index>(scaled->scale.size());
    Eigen::MatrixXd out = Eigen::MatrixXd::Zero(num, num);
    out.diagonal().setConstant(1.0 + shift);
    for (const quad_term &t : scaled->term) out(t.i, t.j) = out(t.j, t.i) = t.value;
    return out;
}

bool quad_analyze(const quad_sparse &matrix, quad_sparse_ldlt *ldlt, work_effort *effort)
{
    static constexpr double order_steps = 300.0; /* by the entry */
    if (!effort_take(effort, order_steps * static_cast<double>(matrix.nonZeros()))) return false;
    ldlt->analyzePattern(matrix);
    return effort_take(effort, 2.0 * ldlt->operations());
}

/* ---- points that show a wrong sign */

static void set_witness(const quad_part *part, const double *x, quad_witness *witness)
{
    if (witness == nullptr) return;
    const double largest =
        *std::max_element(x, x + part->num, [](double a, double b) { return std::fabs(a) < std::fabs(b); });
    std::vector<double> full(static_cast<size_t>(part->num));
    *witness = {};
    for (int32_t i = 0; i < part->num; i++) {
        if (x[i] == 0.0) continue;
        full[static_cast<size_t>(i)] = x[i] / largest; /* that one is 1 then, not -1 */
        witness->column.push_back(part->column[i]);
        witness->x.push_back(x[i] / largest);
    }
    witness->value = quad_value({part->term, part->term + part->num_terms}, full.data());
}

static void set_pair_witness(const quad_part *part, int32_t i, double xi, int32_t j, double xj, quad_witness *witness)
{
    std::vector<double> x(static_cast<size_t>(part->num));
    x[static_cast<size_t>(i)] = xi;
    x[static_cast<size_t>(j)] = xj;
    set_witness(part, x.data(), witness);
}

/* A negative diagonal entry, or one of 0 beside which something stands. */
static bool diagonal_fits(const quad_part *part, double sign, const std::vector<double> &diagonal,
                          quad_witness *witness)
{
    const auto at = [&](int32_t i) { return diagonal[static_cast<size_t>(i)]; };
    const auto least = std::min_element(diagonal.begin(), diagonal.end());
    const auto worst = static_cast<int32_t>(least - diagonal.begin());
    if (*least < 0.0) {
        set_pair_witness(part, worst, 1.0, worst, 1.0, witness);
        return false;
    }
    for (int64_t k = 0; k < part->num_terms; k++) {
        const quad_term t = part->term[k];
        if (t.i == t.j || (at(t.i) > 0.0 && at(t.j) > 0.0)) continue;
        const int32_t i = at(t.i) > 0.0 ? t.j : t.i; /* has the diagonal entry that is not above 0 */
        const int32_t j = i == t.i ? t.j : t.i;
        const double q = sign * t.value;
        /* At x_j = 1, x_i = -d/q the form is d - 2 d, with d the larger of the other's entry and |q|. */
        set_pair_witness(part, i, -std::max(at(j), std::fabs(q)) / q, j, 1.0, witness);
        return false;
    }
    return true;
}

/* Two columns with more between them than their squares bear. */
static bool pairs_fit(const quad_part *part, const quad_scaled *scaled, quad_witness *witness)
{
    for (const quad_term &t : scaled->term) {
        if (std::fabs(t.value) <= 1.0 + part->tolerance) continue;
        const double a = scaled->scale[static_cast<size_t>(t.i)], b = scaled->scale[static_cast<size_t>(t.j)];
        const double least = std::min(a, b); /* x = 1/scale, made so that the largest is 1 */
        set_pair_witness(part, t.i, least / a, t.j, std::copysign(least / b, -t.value), witness);
        return false;
    }
    return true;
}

/* Every diagonal entry outweighs the rest of its row: then there is nothing to factor. */
static bool diagonal_dominates(const quad_part *part, const std::vector<double> &diagonal)
{
    std::vector<double> sum(diagonal.size(), 0.0);
    for (int64_t k = 0; k < part->num_terms; k++) {
        const quad_term t = part->term[k];
        if (t.i == t.j) continue;
        sum[static_cast<size_t>(t.i)] += std::fabs(t.value);
        sum[static_cast<size_t>(t.j)] += std::fabs(t.value);
    }
    for (size_t i = 0; i < sum.size(); i++)
        if (sum[i] > diagonal[i] * (1.0 + part->tolerance)) return false;
    return true;
}

/* From x in scaled columns. What is too small there to turn the sign is left out. */
static void set_scaled_witness(const quad_part *part, const quad_scaled *scaled, const Eigen::VectorXd &x,
                               quad_witness *witness)
{
    const double least = *std::min_element(scaled->scale.begin(), scaled->scale.end());
    const double noise = 1e-12 * x.cwiseAbs().maxCoeff();
    std::vector<double> point(static_cast<size_t>(part->num));
    for (int32_t i = 0; i < part->num; i++) {
        if (std::fabs(x[i]) <= noise) continue;
        point[static_cast<size_t>(i)] = x[i] * (least / scaled->scale[static_cast<size_t>(i)]);
    }
    set_witness(part, point.data(), witness);
}

/* The first pivot of LDL' that is not above 0 gives a direction d, L'd = e_k, with d'(C + shift I)d = that pivot. The
 * columns of L behind k are not used: they need not be there. */
static bool sparse_fits(const quad_part *part, const quad_scaled *scaled, quad_witness *witness, work_effort *effort)
{
    quad_sparse_ldlt ldlt;
    const quad_sparse matrix = quad_to_sparse(scaled, part->tolerance);
    if (!quad_analyze(matrix, &ldlt, effort)) return true;
    ldlt.factorize(matrix);
    const Eigen::VectorXd pivots = ldlt.vectorD();
    Eigen::Index bad = 0;
    while (bad < pivots.size() && pivots[bad] > 0.0) bad++;
    if (bad == pivots.size()) return true;
    if (witness == nullptr) return false;

    const auto &lower = ldlt.matrixL().nestedExpression();
    Eigen::VectorXd d = Eigen::VectorXd::Zero(pivots.size());
    d[bad] = 1.0;
    for (Eigen::Index j = bad - 1; j >= 0; j--)
        for (quad_sparse::InnerIterator it(lower, j); it; ++it)
            if (it.row() > j && it.row() <= bad) d[j] -= it.value() * d[it.row()];
    const Eigen::VectorXd x = ldlt.permutationPinv() * d;
    set_scaled_witness(part, scaled, x, witness);
    return false;
}

static bool dense_fits(const quad_part *part, const quad_scaled *scaled, quad_witness *witness, work_effort *effort)
{
    const double cube = std::pow(static_cast<double>(part->num), 3.0);
    if (!effort_take(effort, cube / 3.0)) return true;
    Eigen::LLT<Eigen::MatrixXd> llt(quad_to_dense(scaled, part->tolerance));
    if (llt.info() == Eigen::Success) return true;
    if (witness == nullptr) return false;
    /* The eigenvector is the clearest point, but takes thirty times as long as the factorisation. */
    if (part->num > quad_dense_size) return sparse_fits(part, scaled, witness, effort);
    if (!effort_take(effort, 10.0 * cube)) return true;
    const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> eigen(quad_to_dense(scaled, 0.0));
    const Eigen::VectorXd x = eigen.eigenvectors().col(0);
    set_scaled_witness(part, scaled, x, witness);
    return false;
}

bool quad_part_has_sign(const quad_part *part, double sign, quad_witness *witness, work_effort *effort)
{
    if (effort_is_over(effort)) return true;
    const std::vector<double> diagonal = quad_diagonal(part, sign);
    if (part->num == 1) { /* the usual case of a diagonal form; a single square has no scale but its own */
        if (diagonal[0] > 0.0) return true;
        const double x = 1.0;
        set_witness(part, &x, witness);
        return false;
    }
    if (*std::min_element(diagonal.begin(), diagonal.end()) <= 0.0) {
        reduced_part less;
        if (quad_leave_remainders(part, sign, &less)) {
            const quad_part rest = quad_view(&less);
            return rest.num == 0 || quad_part_has_sign(&rest, sign, witness, effort);
        }
        if (!diagonal_fits(part, sign, diagonal, witness)) return false;
    }
    if (diagonal_dominates(part, diagonal)) return true;
    const quad_scaled scaled = quad_scale(part, sign, diagonal);
    if (!pairs_fit(part, &scaled, witness)) return false;
    if (part->num == 2) return true;
    return quad_is_dense(part) ? dense_fits(part, &scaled, witness, effort)
                               : sparse_fits(part, &scaled, witness, effort);
}
