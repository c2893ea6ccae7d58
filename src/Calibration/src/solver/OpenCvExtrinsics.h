/// Computes how the right camera of a pair stands to the left one.
#pragma once

#include <memory>
#include <opencv2/core.hpp>
#include <vector>

#include "model/Solution.h"

namespace velmora {

/// The intrinsics of both cameras, as calibrated alone.
struct StereoIntrinsics {
  cv::Mat K, D, KRight, DRight;  ///< 3 x 3 and 1 x 14 double
};

struct ExtrinsicsResult {
  double rms = -1.0;
  cv::Mat R, T, E, F;        ///< right from left: x_right = R x_left + T; T in the unit of the object points
  StereoIntrinsics refined;  ///< of a computation that estimates the intrinsics too; else empty
  /// What the matrices are of; null of OpenCV's solver.
  std::shared_ptr<const Solution> solution;
};

/// Says so, once for each camera, where the classic model ignores coefficients that are not zero.
void WarnOfIgnoredCoefficients(const StereoIntrinsics& intrinsics, int model);

/// Solves with OpenCV's stereo calibration and fixed intrinsics, which are not changed. The classic model
/// ignores the coefficients beyond the fifth; a warning says so where they are not zero. Image points beyond
/// the number of object points are left out. Raises cv::Exception when the solver does, as for too few image
/// points.
ExtrinsicsResult SolveExtrinsics(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                 const std::vector<std::vector<cv::Point2d>>& leftPoints,
                                 const std::vector<std::vector<cv::Point2d>>& rightPoints,
                                 const StereoIntrinsics& intrinsics, const cv::Size& imageSize, int model);

}  // namespace velmora
