/// The directions of all pixel corners of a camera, computed once.
#pragma once

#include <opencv2/core.hpp>

#include "Camera.h"

namespace world {

/// A CV_64FC3 matrix of (width + 1) x (height + 1) directions: element (row, column) is that of the corner
/// (column - 0.5, row - 0.5), with z = 1 but for fisheyes, whose are of length 1. NaN where the lens images
/// nothing.
cv::Mat MakeRayMap(const Camera& camera);

}  // namespace world
