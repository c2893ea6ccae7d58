/// Where the computation of a fisheye begins.
#pragma once

#include <vector>

#include "model/Solution.h"

namespace velmora::solver {

/// The pose of a plane target from the rays to its points, also from those beside and behind the camera. False
/// when they determine none.
bool PoseFromRays(const Observation& observation, const std::vector<cv::Vec3d>& rays, RigidTransform& pose);

/// A fisheye that nothing is known of: distances grow evenly with the angle over the field of view, of several
/// from 100 to 220 degrees, that fits the views best; the principal point in the middle of the image. Raises
/// cv::Exception when an observation determines no pose.
CalibrationProblem FisheyeStartOf(std::vector<TargetView> views, const cv::Size& imageSize);

}  // namespace velmora::solver
