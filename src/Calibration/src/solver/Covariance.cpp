/// How sure the parameters of a solution are.
#include "solver/Covariance.h"

#include <Eigen/Cholesky>

#include "solver/ScaledSystem.h"

namespace velmora::solver {

namespace {

using Index = Eigen::Index;

/// A view's share among all shared parameters.
ReducedSystem Spread(const ReducedView& view, const std::vector<int>& columns, Index shared) {
  ReducedSystem system{Eigen::MatrixXd::Zero(shared, shared), Eigen::VectorXd::Zero(shared), view.solvable};
  for (size_t j = 0; j < columns.size() && view.solvable; ++j) {
    for (size_t i = j; i < columns.size(); ++i) {
      const double value = view.matrix(static_cast<Index>(i), static_cast<Index>(j));
      system.matrix(columns[i], columns[j]) = value;
      system.matrix(columns[j], columns[i]) = value;
    }
    system.gradient(columns[j]) = view.gradient(static_cast<Index>(j));
  }
  return system;
}

}  // namespace

Eigen::MatrixXd SharedCovariance(const Solution& solution, int firstEstimated) {
  const ReducedSystem system = SystemOf(solution);
  const Index count = system.gradient.size() - firstEstimated;
  ScaledSystem scaled;
  if (!system.solvable || !scaled.Decompose(system.matrix.bottomRightCorner(count, count))) return {};
  const double variance = NoiseVariance(solution.cost, solution.views, static_cast<int>(count));
  return scaled.Solve(Eigen::MatrixXd::Identity(count, count) * variance);
}

Eigen::MatrixXd JackknifeCovariance(const Solution& solution, int firstEstimated) {
  const ReducedSystem system = SystemOf(solution);
  const Index shared = system.gradient.size();
  const Index count = shared - firstEstimated;
  ScaledSystem all;
  if (!system.solvable || !all.Decompose(system.matrix.bottomRightCorner(count, count))) return {};
  // Where all views together would go from here: nowhere, unless the discs were corrected anew.
  const Eigen::VectorXd together = all.Solve(system.gradient.tail(count));
  Eigen::MatrixXd covariance = Eigen::MatrixXd::Zero(count, count);
  for (const ViewEquations& equations : solution.equations) {
    const ReducedSystem view = Spread(Reduce(equations, 0.0), equations.columns, shared);
    ScaledSystem without;
    if (!without.Decompose((system.matrix - view.matrix).bottomRightCorner(count, count))) return {};
    const Eigen::VectorXd change = without.Solve((view.gradient - system.gradient).tail(count)) + together;
    covariance.noalias() += change * change.transpose();
  }
  const auto views = static_cast<double>(solution.equations.size());
  return covariance * ((views - 1.0) / views);
}

Eigen::MatrixXd IntrinsicsCovariance(const Eigen::MatrixXd& shared, const Layout::Block& block) {
  if (shared.size() == 0) return {};
  return shared.block(block.intrinsics, block.intrinsics, block.count, block.count);
}

PoseMatrix PoseCovariance(const ViewEquations& equations, double variance, const Eigen::MatrixXd& shared) {
  const Index own = equations.Own();
  Eigen::MatrixXd covariance(own, own);
  for (Index j = 0; j < own; ++j) {
    for (Index i = 0; i < own; ++i) {
      covariance(i, j) =
          shared(equations.columns[static_cast<size_t>(i)], equations.columns[static_cast<size_t>(j)]);
    }
  }
  const PoseMatrix inverse = PoseBlockOf(equations).llt().solve(PoseMatrix::Identity());
  const Coupling spread = inverse * CouplingOf(equations);
  return inverse * variance + spread * covariance * spread.transpose();
}

}  // namespace velmora::solver
