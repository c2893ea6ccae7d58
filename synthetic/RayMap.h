/// The rays of all pixel corners of a camera, computed once.
#pragma once

#include <opencv2/core.hpp>

#include "Camera.h"

namespace world {

/// A CV_64FC2 matrix of (width + 1) x (height + 1) rays: element (row, column) is the ray of the corner
/// (column - 0.5, row - 0.5). NaN where the lens images nothing.
cv::Mat MakeRayMap(const Camera& camera);

}  // namespace world
