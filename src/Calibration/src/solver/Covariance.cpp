/// How sure the parameters of a solution are.
#include "solver/Covariance.h"

#include <Eigen/Cholesky>
#include <utility>
#include <vector>

#include "solver/ClusterCovariance.h"
#include "solver/PoseGroups.h"
#include "solver/ScaledSystem.h"

namespace velmora::solver {

namespace {

using Index = Eigen::Index;

}  // namespace

Eigen::MatrixXd SharedCovariance(const Solution& solution, int firstEstimated) {
  const ReducedSystem system = SystemOf(solution);
  const Index count = system.gradient.size() - firstEstimated;
  ScaledSystem scaled;
  if (!system.solvable || !scaled.Decompose(system.matrix.bottomRightCorner(count, count))) return {};
  const Sheet& sheet = solution.sheet;
  const double variance = NoiseVariance(solution.cost, solution.views,
                                        static_cast<double>(count - sheet.terms.Count()) + sheet.counted);
  return scaled.Solve(Eigen::MatrixXd::Identity(count, count) * variance);
}

Eigen::MatrixXd JackknifeCovariance(const Solution& solution, int firstEstimated) {
  const ReducedSystem system = SystemOf(solution);
  const Index count = system.gradient.size() - firstEstimated;
  const auto estimated = [count](const ReducedSystem& whole) {
    return ReducedSystem{whole.matrix.bottomRightCorner(count, count), whole.gradient.tail(count),
                         whole.solvable};
  };
  std::vector<ReducedSystem> parts = PartsOf(solution, GroupsOf(solution.views, solution.rig));
  for (ReducedSystem& part : parts) part = estimated(part);
  return ClusterCovariance(estimated(system), parts);
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
