/// What effects that the computation took for zero do to the pixels.
#include "quality/EffectColumns.h"

#include <utility>

#include "quality/EnlargedEquations.h"

namespace velmora {

using Eigen::Index;

EffectColumns Joined(const EffectColumns& a, const EffectColumns& b) {
  return {a.count + b.count,
          [a, b](const ObservedPoint& observed, const solver::Coordinate& coordinate, EffectRow columns) {
            a.fill(observed, coordinate, columns.head(a.count));
            b.fill(observed, coordinate, columns.tail(b.count));
          }};
}

EffectJacobian::EffectJacobian(const Solution& solution, EffectColumns columns)
    : jacobian_(solution.rig, LayoutOf(solution), solution.sheet, std::move(columns)) {
}

Eigen::MatrixXd EffectJacobian::ProductsOf(const TargetView& view) const {
  Eigen::MatrixXd products = jacobian_.ProductsOf(view).matrix;
  products.triangularView<Eigen::StrictlyUpper>() = products.transpose();
  return products;
}

solver::ReducedSystem WithoutPose(const Eigen::MatrixXd& products, Index kept) {
  const Index last = products.rows() - 1;
  const Index own = last - kept;
  Eigen::MatrixXd coupled(own, kept + 1);
  coupled.leftCols(kept) = products.block(kept, 0, own, kept);
  coupled.col(kept) = products.col(last).segment(kept, own);
  solver::ReducedSystem left;
  Eigen::MatrixXd spread;
  left.solvable = SolveScaled(products.block(kept, kept, own, own), coupled, spread);
  if (!left.solvable) return left;
  left.matrix =
      products.topLeftCorner(kept, kept) - coupled.leftCols(kept).transpose() * spread.leftCols(kept);
  left.gradient = products.col(last).head(kept) - coupled.leftCols(kept).transpose() * spread.col(kept);
  return left;
}

}  // namespace velmora
