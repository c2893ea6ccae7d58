/// Computes how the right camera of a pair stands to the left one, in milliseconds.
#pragma once

#include <functional>
#include <opencv2/core.hpp>
#include <vector>

#include "model/Solution.h"
#include "solver/OpenCvExtrinsics.h"
#include "solver/PointDeviations.h"

namespace velmora {

struct SparsePairOptions {
  double discRadius = 0.0;  ///< as in SparseOptions
  int threads = 1;
  /// Called after each iteration with its number and the RMS in pixels; false gives up.
  std::function<bool(int iteration, double rms)> progress;
  /// Leave out images and points that do not belong to the pair that the others show.
  bool robust = false;
  std::vector<solver::PointDeviations> deviations{};  ///< of both cameras' points, as in SparseOptions
};

/// Like SolveExtrinsics, with the solver of this engine: the same minimum, of the same form. The target must
/// be plane, with its points at z = 0. Raises cv::Exception for lists that do not match, for points that are
/// not finite, and when the caller gives up.
ExtrinsicsResult SolveExtrinsicsSparsely(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                         const std::vector<std::vector<cv::Point2d>>& leftPoints,
                                         const std::vector<std::vector<cv::Point2d>>& rightPoints,
                                         const StereoIntrinsics& intrinsics, int model,
                                         const SparsePairOptions& options = {});

/// Starts from the pair with these intrinsics fixed, then estimates them too, with all poses. Estimated are
/// the coefficients of the model; of larger ones the rational model holds those that it has not, the classic
/// model drops them (a warning says so). A weak prior keeps the larger models' coefficients small and their
/// distortion without a pole within the image. The result has both cameras' intrinsics, with D of 1 x 14.
/// Raises cv::Exception as SolveExtrinsicsSparsely does.
ExtrinsicsResult RefinePairSparsely(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                    const std::vector<std::vector<cv::Point2d>>& leftPoints,
                                    const std::vector<std::vector<cv::Point2d>>& rightPoints,
                                    const StereoIntrinsics& intrinsics, const cv::Size& imageSize, int model,
                                    const SparsePairOptions& options = {});

}  // namespace velmora
