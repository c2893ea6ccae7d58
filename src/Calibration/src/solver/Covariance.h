/// How sure the parameters of a solution are.
#pragma once

#include <Eigen/Core>

#include "solver/NormalEquations.h"

namespace velmora::solver {

/// The covariance of what all views share, in the order of the solution's layout; empty when the views do not
/// determine it. Shared parameters before `firstEstimated` are taken for known, and have no rows and columns.
Eigen::MatrixXd SharedCovariance(const Solution& solution, int firstEstimated = 0);

/// The same by the jackknife: from what leaving out each pose of the target in turn would change, to first
/// order, corrected for how much each has drawn the result to its side. Views of like poses (see GroupsOf)
/// are one. Empty also when the views would not determine it without one of them.
Eigen::MatrixXd JackknifeCovariance(const Solution& solution, int firstEstimated = 0);

/// The part of such a covariance that is of a camera's intrinsics; empty of an empty one.
Eigen::MatrixXd IntrinsicsCovariance(const Eigen::MatrixXd& shared, const Layout::Block& block);

/// The covariance of rotation and translation of a view's pose, given that of what all views share.
PoseMatrix PoseCovariance(const ViewEquations& equations, double variance, const Eigen::MatrixXd& shared);

}  // namespace velmora::solver
