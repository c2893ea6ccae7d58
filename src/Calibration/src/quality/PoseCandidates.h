/// Poses in which the target could be shown next.
#pragma once

#include <limits>
#include <opencv2/core.hpp>
#include <vector>

#include "model/Intrinsics.h"
#include "model/Observation.h"
#include "model/RigidTransform.h"

namespace velmora {

/// A pose of the target, and where its points would be observed.
struct PoseCandidate {
  RigidTransform pose;
  Observation view;
};

/// Up to `count` poses in which somebody can hold the target and a search finds it: all of it in the image,
/// with some room around it, upright as the assistant's sheet is, 30 to 85 percent of the image long, tilted
/// by 40 degrees at most. The same arguments give the same poses, spread all over what is possible. The
/// object points are about their middle, in the plane z = 0. Before a fisheye the tilt is that against the
/// ray to the target's middle. Neighbours in a row are `mostSpacing` pixels apart at most.
std::vector<PoseCandidate> CandidatesFor(const Intrinsics& intrinsics, const std::vector<cv::Point3d>& object,
                                         const cv::Size& imageSize, int count,
                                         double mostSpacing = std::numeric_limits<double>::infinity());

}  // namespace velmora
