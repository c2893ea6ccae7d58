/// Computes how the right camera of a pair stands to the left one, in milliseconds.
#pragma once

#include <functional>
#include <opencv2/core.hpp>
#include <vector>

#include "engine/Extrinsics.h"
#include "solver/PairProblem.h"

/// Like SolveExtrinsics, with the solver of this engine: the same minimum, of the same form. The target must
/// be plane, with its points at z = 0. `progress` is called after each iteration with its number and the RMS;
/// false gives up. Raises cv::Exception for lists that do not match, for points that are not finite, and when
/// the caller gives up.
ExtrinsicsResult SolveExtrinsicsSparsely(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                         const std::vector<std::vector<cv::Point2d>>& leftPoints,
                                         const std::vector<std::vector<cv::Point2d>>& rightPoints,
                                         const StereoIntrinsics& intrinsics, int model, int threads = 1,
                                         const std::function<bool(int, double)>& progress = {});

namespace sparse {

struct KnownLensesSolution {
  PairEstimate estimate;
  double rms = 0.0;
};

/// The same with poses. Raises as SolveExtrinsicsSparsely does.
KnownLensesSolution SolveWithKnownLenses(const PairTarget& target, const Lens& left, const Lens& right,
                                         int threads, const std::function<bool(int, double)>& progress);

}  // namespace sparse
