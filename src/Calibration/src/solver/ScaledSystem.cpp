/// Solves symmetric positive definite systems, whatever the scales of their parameters are.
#include "solver/ScaledSystem.h"

namespace velmora::solver {

bool ScaledSystem::Decompose(const Eigen::MatrixXd& matrix) {
  if (!(matrix.diagonal().array() > 0.0).all()) return false;
  scale_ = matrix.diagonal().array().rsqrt();
  const Eigen::MatrixXd scaled = scale_.asDiagonal() * matrix * scale_.asDiagonal();
  return solver::Decompose(scaled, cholesky_);
}

Eigen::MatrixXd ScaledSystem::Solve(const Eigen::MatrixXd& right) const {
  return scale_.asDiagonal() * cholesky_.solve(scale_.asDiagonal() * right);
}

}  // namespace velmora::solver
