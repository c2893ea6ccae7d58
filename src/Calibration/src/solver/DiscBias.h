/// How far the centre of a disc's picture is from the picture of its centre.
#pragma once

#include <vector>

#include "solver/Problem.h"

namespace velmora::solver {

/// The centroid of the disc's picture minus the picture of its centre, in pixels, for a disc of the target.
/// Zero where some of the rim is behind the camera.
cv::Point2d DiscBias(const Projection& projection, const Pose& pose, const cv::Point3d& centre,
                     double radius);

/// The views with the pixels that they would have if pictures of centres had been seen: seen are centroids.
std::vector<View> WithoutDiscBias(const std::vector<View>& views, const Estimate& estimate, double radius);

}  // namespace velmora::solver
