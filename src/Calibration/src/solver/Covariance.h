/// How sure the lens and the poses of a solution are.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "solver/LensStages.h"

namespace velmora::solver {

/// The covariance of the lens' free parameters; empty when the views do not determine them.
cv::Mat LensCovariance(const StagedSolution& staged, const std::vector<View>& views);

/// The covariance of the lens' free parameters by the jackknife: from what leaving out each view in turn
/// would change, to first order. Empty when the views do not determine the lens, or would not without one of
/// them.
cv::Mat JackknifeCovariance(const StagedSolution& staged);

/// The covariance of a view's turn and shift, given that of the lens.
cv::Matx66d PoseCovariance(const ViewEquations& equations, int free, double variance,
                           const cv::Mat& lensCovariance);

}  // namespace velmora::solver
