/// What effects that the computation took for zero do to the pixels.
#pragma once

#include <Eigen/Core>

#include "model/Solution.h"
#include "solver/NormalEquations.h"
#include "solver/ViewJacobian.h"

namespace velmora {

using EffectRow = solver::JacobianRow;
using EffectColumns = solver::ExtraColumns;
using solver::ByTarget;
using solver::ObservedPoint;

/// One after the other.
EffectColumns Joined(const EffectColumns& a, const EffectColumns& b);

/// Makes the equations of views with columns for effects.
class EffectJacobian {
 public:
  EffectJacobian(const Solution& solution, EffectColumns columns);

  Eigen::Index Shared() const { return jacobian_.Shared(); }
  Eigen::Index Effects() const { return jacobian_.Extra(); }

  /// The products of a view's derivatives with themselves: by what all views share, by the effects, by the
  /// pose, by the sheet's own bend in the view if it has one, and last the residuals.
  Eigen::MatrixXd ProductsOf(const TargetView& view) const;

 private:
  const solver::ViewJacobian jacobian_;
};

/// What is left of the first `kept` of a view's products when the pose, and the bend, which follow them, are
/// free.
solver::ReducedSystem WithoutPose(const Eigen::MatrixXd& products, Eigen::Index kept);

}  // namespace velmora
