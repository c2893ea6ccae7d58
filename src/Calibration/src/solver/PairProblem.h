/// What a pair's computation is given, what it looks for, and where it starts.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "solver/OpenCvExtrinsics.h"
#include "solver/Target.h"

namespace velmora::solver {

/// Views of both cameras in the same order, of the same points.
struct PairTarget {
  Target left;
  Target right;
};

struct PairEstimate {
  Lens left;
  Lens right;
  Pose relative;            ///< from the left camera's frame to the right one's
  std::vector<Pose> poses;  ///< before the left camera, one for each view
};

/// Image points beyond the number of object points are left out. Raises cv::Exception as TargetOf does.
PairTarget PairTargetOf(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                        const std::vector<std::vector<cv::Point2d>>& leftPoints,
                        const std::vector<std::vector<cv::Point2d>>& rightPoints);

/// With all coefficients that D has, as free ones, but of the classic model with the first five alone.
Lens KnownLens(const cv::Mat& K, const cv::Mat& D, int model);

/// The same point of the target before the right camera.
Pose BeforeRight(const Pose& relative, const Pose& left);

/// What one of the cameras alone makes of it.
Estimate LeftOf(const PairEstimate& pair);
Estimate RightOf(const PairEstimate& pair);

/// Poses before the left camera, and the median of what the views say of the right one.
PairEstimate StartOf(const PairTarget& target, const Lens& left, const Lens& right);

/// Rotation, translation, essential and fundamental matrix, the latter with a one in its corner where it can
/// have it.
ExtrinsicsResult PairMatricesOf(const StereoIntrinsics& intrinsics, const Pose& relative);

}  // namespace velmora::solver
