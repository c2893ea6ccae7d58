/// Frames of a sheet that moves before a camera, and the search that follows it.
#pragma once

#include <functional>
#include <opencv2/core.hpp>
#include <vector>

#include "Scene.h"
#include "finder/RobustFinder.h"

namespace unit {

/// How a search that follows the grid and one that does not compare, over all frames of a sequence.
struct FollowedFrames {
  int frames = 0;
  int found = 0;          ///< by the search that does not follow
  int followed = 0;       ///< near where the last frames had the grid
  int otherFaults = 0;    ///< of the two
  double farthest = 0.0;  ///< distance between centres of the two, pixels
};

/// Searches the frames in both ways; `frame(k)` gives frame k.
FollowedFrames Follow(int count, const std::function<cv::Mat(int)>& frame);

/// Views of the sheet on a smooth path: once around in the image, coming nearer and going away, rolling and
/// tilting.
class MovingSheet {
 public:
  explicit MovingSheet(const world::Scene& scene) : scene_(scene) {}
  /// The sheet after a share of its path, 0 to 1.
  world::Pose PoseAt(double share) const;

 private:
  const world::Scene scene_;
};

}  // namespace unit
