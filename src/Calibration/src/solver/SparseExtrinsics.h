/// Computes how the right camera of a pair stands to the left one, in milliseconds.
#pragma once

#include <functional>
#include <opencv2/core.hpp>
#include <vector>

#include "solver/OpenCvExtrinsics.h"
#include "solver/PairProblem.h"

namespace velmora {

struct SparsePairOptions {
  double discRadius = 0.0;  ///< as in SparseOptions
  int threads = 1;
  /// Called after each iteration with its number and the RMS in pixels; false gives up.
  std::function<bool(int iteration, double rms)> progress;
};

/// Like SolveExtrinsics, with the solver of this engine: the same minimum, of the same form. The target must
/// be plane, with its points at z = 0. Raises cv::Exception for lists that do not match, for points that are
/// not finite, and when the caller gives up.
ExtrinsicsResult SolveExtrinsicsSparsely(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                         const std::vector<std::vector<cv::Point2d>>& leftPoints,
                                         const std::vector<std::vector<cv::Point2d>>& rightPoints,
                                         const StereoIntrinsics& intrinsics, int model,
                                         const SparsePairOptions& options = {});

}  // namespace velmora

namespace velmora::solver {

struct KnownLensesSolution {
  PairEstimate estimate;
  double rms = 0.0;
};

/// The same with poses.
KnownLensesSolution SolveWithKnownLenses(const PairTarget& target, const Lens& left, const Lens& right,
                                         const SparsePairOptions& options);

/// With the image points that the discs' centres would have been seen at.
PairTarget WithoutDiscBias(const PairTarget& target, const PairEstimate& estimate, double radius);

}  // namespace velmora::solver
