/// The normal equations of views of a sheet whose shape is estimated, too.
#pragma once

#include "solver/ViewJacobian.h"

namespace velmora::solver {

/// The equations of a view by all shared parameters and its pose. The bend that its sheet has of its own, if
/// there are such, is eliminated.
void TakeShapedEquations(const ViewJacobian& jacobian, const Sheet& sheet, const TargetView& view,
                         ViewEquations& equations);

/// The step of a view's own bend that belongs to a step of the shared parameters and of the pose.
Eigen::Vector3d BendStepFor(const ViewEquations& equations, const Eigen::VectorXd& own,
                            const Eigen::Matrix<double, POSE_PARAMETERS, 1>& pose);

/// The covariance of a view's own bend, for known shared parameters and a noise of variance one.
Eigen::Matrix3d BendCovarianceOf(const ViewEquations& equations);

}  // namespace velmora::solver
