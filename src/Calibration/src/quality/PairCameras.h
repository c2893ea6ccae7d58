/// What the result of a pair says of each of its cameras.
#pragma once

#include <Eigen/Core>

#include "PairVerdict.h"
#include "model/Solution.h"

namespace velmora {

/// Of one of the solution's cameras, whose intrinsics are estimated; everything is unknown, and infinite, of
/// a solution that is not usable. `covariance` is that of what all views share; when it is empty, or the
/// camera has no image size, nothing is said of projections. `snapshots` is how many views there were before
/// any was left out.
PairVerdict::Camera PairCameraOf(const Solution& solution, size_t number, const Eigen::MatrixXd& covariance,
                                 size_t snapshots);

}  // namespace velmora
