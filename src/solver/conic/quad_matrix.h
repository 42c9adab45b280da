/* quad_matrix.h - a scaled part as a matrix of Eigen's. For the two files that factor; nobody else sees Eigen. */
#pragma once

#include "solver/conic/counted_ldlt.h"
#include "solver/conic/quad_scaled.h"

#include <Eigen/Cholesky>
#include <Eigen/Eigenvalues>

/* 64-bit indices: a factor has more entries than the part. */
typedef Eigen::SparseMatrix<double, Eigen::ColMajor, int64_t> quad_sparse;
typedef counted_ldlt<quad_sparse> quad_sparse_ldlt;

/* Orders the columns of a matrix and looks where its factor has entries, which takes effort, and asks for what the numbers
 * of a factor will take. False: the effort has been given up. */
bool quad_analyze(const quad_sparse &matrix, quad_sparse_ldlt *ldlt, work_effort *effort);

/* C + shift I; of the sparse one the lower triangle. */
quad_sparse quad_to_sparse(const quad_scaled *scaled, double shift);
Eigen::MatrixXd quad_to_dense(const quad_scaled *scaled, double shift);
