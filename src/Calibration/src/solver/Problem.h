/// What a camera's computation is given, and what it looks for.
#pragma once

#include <array>
#include <opencv2/core.hpp>
#include <vector>

#include "solver/Projection.h"

namespace velmora::solver {

/// One picture of the target: points in its frame and the pixels where they were seen.
struct View {
  std::vector<cv::Point3d> object;
  std::vector<cv::Point2d> image;
  std::vector<double> weights;  ///< of the points' squared distances; empty: all one
};

/// Pulls each of the lens' parameters toward zero: by its square times this, in squared pixels.
using Prior = std::array<double, FULL_PARAMETERS>;

struct Estimate {
  Lens lens;
  Pose right;               ///< of a pair: from the left camera's frame to the right one's
  std::vector<Pose> poses;  ///< one for each view
};

/// The pose after a step: turn (about the axes of the camera's frame) and shift.
Pose Moved(const Pose& pose, const double* step);

/// The turn of a rotation vector.
cv::Matx33d TurnOf(const cv::Vec3d& rotation);

}  // namespace velmora::solver
