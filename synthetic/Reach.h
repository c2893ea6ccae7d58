/// Finds where the sheet has to be to appear as asked for, disc by disc.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "Camera.h"

namespace world {

/// The pose before the camera in which the discs come nearest to these pixels (one for each disc, in order):
/// of a fisheye, to their rays as a pinhole sees them that looks that way.
/// Throws std::runtime_error when the number differs or there is no pose on the printed side.
Pose PoseNearest(const Camera& camera, const Sheet& sheet, const std::vector<cv::Point2d>& centres);

}  // namespace world
