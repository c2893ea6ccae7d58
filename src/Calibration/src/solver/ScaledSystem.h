/// Solves symmetric positive definite systems, whatever the scales of their parameters are.
#pragma once

#include <Eigen/Cholesky>
#include <Eigen/Core>

namespace velmora::solver {

/// A Cholesky decomposition; false where nothing is left of a pivot but rounding, so that the matrix is not
/// positive definite or nearly singular. The lower triangle is read.
template <typename Matrix>
bool Decompose(const Matrix& matrix, Eigen::LLT<Matrix>& cholesky) {
  constexpr double SINGULAR = 1e-15;
  cholesky.compute(matrix);
  if (cholesky.info() != Eigen::Success) return false;
  const auto& factor = cholesky.matrixLLT();
  for (Eigen::Index i = 0; i < matrix.rows(); ++i) {
    if (!(factor(i, i) * factor(i, i) > SINGULAR * matrix(i, i))) return false;
  }
  return true;
}

/// A symmetric positive definite matrix, decomposed after it was scaled to a diagonal of ones: the sizes of
/// parameters lie many orders of magnitude apart.
class ScaledSystem {
 public:
  /// False when the matrix is not positive definite.
  bool Decompose(const Eigen::MatrixXd& matrix);

  /// The inverse of the matrix times these columns.
  Eigen::MatrixXd Solve(const Eigen::MatrixXd& right) const;

 private:
  Eigen::VectorXd scale_;
  Eigen::LLT<Eigen::MatrixXd> cholesky_;
};

}  // namespace velmora::solver
