/// The standard deviations of a camera's pose relative to another's, and what is small enough.
#pragma once

#include <Eigen/Core>
#include <limits>
#include <opencv2/core.hpp>

#include "PairVerdict.h"

namespace velmora {

/// A direction that is off by 5 degrees leads a tenth of the disparity away from epipolar lines.
constexpr PairVerdict::Deviations WORTHLESS_POSE = {1.0, 0.03, 5.0};
constexpr PairVerdict::Deviations CAREFUL_POSE = {0.2, 0.01, 0.5};
constexpr PairVerdict::Deviations UNKNOWN_POSE = {std::numeric_limits<double>::infinity(),
                                                  std::numeric_limits<double>::infinity(),
                                                  std::numeric_limits<double>::infinity()};

/// From a covariance of which six rows, from `pose` on, are rotation and translation of a camera that stands
/// at T; unknown when the covariance is empty.
PairVerdict::Deviations DeviationsOf(const Eigen::MatrixXd& covariance, Eigen::Index pose,
                                     const cv::Vec3d& T);

/// Whether any of them is larger than its limit, or not known.
bool Beyond(const PairVerdict::Deviations& deviations, const PairVerdict::Deviations& limits);

/// The larger one of each; NaN where either is.
PairVerdict::Deviations Larger(const PairVerdict::Deviations& a, const PairVerdict::Deviations& b);

/// Whether any is much more than the usual ones let expect, and enough to matter.
bool Disagrees(const PairVerdict::Deviations& jackknife, const PairVerdict::Deviations& usual);

}  // namespace velmora
