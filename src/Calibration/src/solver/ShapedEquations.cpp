/// The normal equations of views of a sheet whose shape is estimated, too.
#include "solver/ShapedEquations.h"

#include <Eigen/Cholesky>
#include <cmath>
#include <numeric>

#include "solver/NormalEquations.h"

namespace velmora::solver {

using Eigen::Index;

namespace {

/// Takes the last three of the parameters, a bend, out of the products.
void Eliminate(const Eigen::MatrixXd& products, Index kept, ViewEquations& equations) {
  const Index residual = products.rows() - 1;
  EliminatedBend& bend = equations.bend;
  const Eigen::Matrix3d block = products.block<3, 3>(kept, kept).selfadjointView<Eigen::Lower>();
  const Eigen::LLT<Eigen::Matrix3d> cholesky(block);
  equations.usable = equations.usable && cholesky.info() == Eigen::Success;
  if (!equations.usable) return;
  const Eigen::MatrixXd coupling = products.block(kept, 0, 3, kept);
  const Eigen::Vector3d gradient = products.block<1, 3>(residual, kept).transpose();
  bend.inverse = cholesky.solve(Eigen::Matrix3d::Identity());
  bend.spread = bend.inverse * coupling;
  bend.step = -bend.inverse * gradient;
  bend.gain = -gradient.dot(bend.step);
  equations.products.triangularView<Eigen::Lower>() -= coupling.transpose() * bend.spread;
  equations.gradient += coupling.transpose() * bend.step;
}

}  // namespace

void TakeShapedEquations(const ViewJacobian& jacobian, const Sheet& sheet, const TargetView& view,
                         ViewEquations& equations) {
  const ViewJacobian::Products products = jacobian.ProductsOf(view);
  const Index kept = jacobian.Shared() + POSE_PARAMETERS;
  equations.columns.resize(static_cast<size_t>(jacobian.Shared()));
  std::iota(equations.columns.begin(), equations.columns.end(), 0);
  equations.products = products.matrix.topLeftCorner(kept, kept);
  equations.gradient = products.matrix.row(products.matrix.rows() - 1).head(kept).transpose();
  equations.pixelCosts = products.pixelCosts;
  equations.cost = products.cost;
  equations.usable = products.usable && std::isfinite(equations.cost);
  equations.bend = {};
  if (!sheet.HasOwnBends()) return;
  Eliminate(products.matrix, kept, equations);
  const Eigen::Map<const Eigen::Vector3d> value(view.bend.val);
  equations.bend.priorCost = value.cwiseAbs2().dot(PullsOf(sheet.ownBend, sheet.variance));
}

Eigen::Vector3d BendStepFor(const ViewEquations& equations, const Eigen::VectorXd& own,
                            const PoseStep& pose) {
  const EliminatedBend& bend = equations.bend;
  return bend.step - bend.spread.leftCols(own.size()) * own - bend.spread.rightCols<POSE_PARAMETERS>() * pose;
}

Eigen::Matrix3d BendCovarianceOf(const ViewEquations& equations) {
  const EliminatedBend& bend = equations.bend;
  const auto byPose = bend.spread.rightCols<POSE_PARAMETERS>();
  const Eigen::LLT<PoseMatrix> pose(PoseBlockOf(equations));
  return bend.inverse + byPose * pose.solve(byPose.transpose());
}

}  // namespace velmora::solver
