/* quad_matrix.h - a scaled part as a matrix of Eigen's. For the two files that factor; nobody else sees Eigen. */
#pragma once

#include "solver/conic/quad_scaled.h"

#define EIGEN_MPL2_ONLY
#include <Eigen/Cholesky>
#include <Eigen/Eigenvalues>
#include <Eigen/SparseCholesky>
#include <Eigen/SparseCore>

/* 64-bit indices: a factor has more entries than the part. */
typedef Eigen::SparseMatrix<double, Eigen::ColMajor, int64_t> quad_sparse;
typedef Eigen::SimplicialLDLT<quad_sparse, Eigen::Lower, Eigen::AMDOrdering<int64_t>> quad_sparse_ldlt;

/* C + shift I; of the sparse one the lower triangle. */
quad_sparse quad_to_sparse(const quad_scaled *scaled, double shift);
Eigen::MatrixXd quad_to_dense(const quad_scaled *scaled, double shift);
