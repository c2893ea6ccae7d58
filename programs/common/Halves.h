/// Cuts a frame that shows two cameras into the image of each.
#pragma once

#include <opencv2/core.hpp>

#include "common/SourceSettings.h"

namespace common {

/// The half of the frame that belongs to the camera, copied into an image of its own: left is the left or the
/// upper half. An odd last column or row belongs to neither. Empty when the frame is too small to be cut.
cv::Mat HalfOf(const cv::Mat& frame, Split split, Camera camera);

}  // namespace common
