/// The normal equations of a rig's computation, and their reduction to what all views share.
#pragma once

#include <Eigen/Core>
#include <vector>

#include "model/Solution.h"

namespace velmora::solver {

using PoseStep = Eigen::Matrix<double, POSE_PARAMETERS, 1>;
using Coupling = Eigen::Matrix<double, POSE_PARAMETERS, Eigen::Dynamic>;
using PoseMatrix = Eigen::Matrix<double, POSE_PARAMETERS, POSE_PARAMETERS>;

/// The equations of one view: the sum over the cameras that observed it, each chained to the rig.
ViewEquations EquationsOf(const TargetView& view, const RigidTransform& rigFromTarget, const Rig& rig,
                          const Layout& layout);
/// The same, in the memory of earlier equations.
void TakeEquations(const TargetView& view, const RigidTransform& rigFromTarget, const Rig& rig,
                   const Layout& layout, ViewEquations& equations);

/// One view's share in the equations of its own shared parameters, once its pose is eliminated.
struct ReducedView {
  Eigen::MatrixXd matrix;  ///< lower triangle
  Eigen::VectorXd gradient;
  bool solvable = false;
};

/// Eliminates the pose; `damping` is added to the diagonal of its block, as a share of it.
ReducedView Reduce(const ViewEquations& equations, double damping);

/// The view's own among all shared parameters, in the memory of another's.
void TakeOwn(const ViewEquations& equations, const Eigen::VectorXd& shared, Eigen::VectorXd& own);

/// The pose's step that belongs to a step of the view's own shared parameters. False when the view determines
/// none.
bool PoseStepFor(const ViewEquations& equations, double damping, const Eigen::VectorXd& own, PoseStep& step);

/// The pose's own block, both triangles.
PoseMatrix PoseBlockOf(const ViewEquations& equations);
/// The blocks of its coupling with the view's own shared parameters.
Coupling CouplingOf(const ViewEquations& equations);
/// The slope of half the cost along the pose.
PoseStep PoseGradientOf(const ViewEquations& equations);

/// What priors add to the equations of the shared parameters.
struct PriorTerms {
  Eigen::MatrixXd matrix;  ///< both triangles
  Eigen::VectorXd gradient;
  double cost = 0.0;
};
PriorTerms PriorTermsOf(const std::vector<Prior>& priors, const Rig& rig, const Layout& layout);
/// Adds what is known beforehand of a sheet, of which `shape` are the values.
void AddShapePrior(const Sheet& sheet, const Eigen::VectorXd& shape, const Layout& layout, PriorTerms& terms);
/// Of all that views share, at the solution.
PriorTerms PriorTermsOf(const Solution& solution);

/// The reduced equations of all views together, and of the priors.
struct ReducedSystem {
  Eigen::MatrixXd matrix;  ///< both triangles
  Eigen::VectorXd gradient;
  bool solvable = false;
};

/// The reduced system of all views. It does not depend on the number of threads: views are summed in their
/// order, a fixed number of them at a time.
ReducedSystem SystemOf(const std::vector<ViewEquations>& equations, const PriorTerms& priors, double damping,
                       int threads);

/// Undamped: the inverse of its matrix, times the noise's variance, is the covariance of what all views
/// share.
ReducedSystem SystemOf(const Solution& solution);

}  // namespace velmora::solver
