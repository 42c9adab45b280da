/* counted_ldlt.h - a sparse LDL' factorisation that tells what it will cost before it is made. For files that factor;
 * nobody else sees Eigen. */
#pragma once

#define EIGEN_MPL2_ONLY
#include <Eigen/SparseCholesky>
#include <Eigen/SparseCore>

/* Eigen keeps to itself how many entries the factor will have. */
template <class matrix, class ordering = Eigen::AMDOrdering<typename matrix::StorageIndex>>
struct counted_ldlt : Eigen::SimplicialLDLT<matrix, Eigen::Lower, ordering> {
    /* Behind analyzePattern: the multiplications of a factorisation. */
    double operations() const
    {
        double sum = 0.0;
        for (Eigen::Index j = 0; j < this->m_nonZerosPerCol.size(); j++)
            sum += static_cast<double>(this->m_nonZerosPerCol[j]) * static_cast<double>(this->m_nonZerosPerCol[j]);
        return sum;
    }
};
