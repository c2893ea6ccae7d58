/// Where the computation of a fisheye begins.
#pragma once

#include <vector>

#include "model/Solution.h"
#include "solver/Selection.h"

namespace velmora::solver {

/// The pose of a plane target from the rays to its points, also from those beside and behind the camera.
/// False when they determine none.
bool PoseFromRays(const Observation& observation, const std::vector<cv::Vec3d>& rays, RigidTransform& pose);

/// The rays of an observation's pixels; none at all when one has none.
std::vector<cv::Vec3d> RaysOf(const Observation& observation, const Intrinsics& fisheye);

struct FisheyeStart {
  CalibrationProblem problem;  ///< of all views
  /// Of each view: by how much the target is off before the rays, root of the mean squared angle, radians;
  /// infinite of a view without a pose.
  std::vector<double> residuals;
};

/// A fisheye that nothing is known of: distances grow evenly with the angle over the field of view, of
/// several from 100 to 220 degrees, that fits most views best; the principal point in the middle of the
/// image. Raises cv::Exception when half of the views or more have no pose before any.
FisheyeStart FisheyeStartOf(std::vector<TargetView> views, const cv::Size& imageSize);

/// The views that may be images of a plane grid before that lens: those that are not many times further off
/// than most.
Selection ScreenedBy(const FisheyeStart& start);

}  // namespace velmora::solver
