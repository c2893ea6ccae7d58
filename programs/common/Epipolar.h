/// How well pairs of points agree with the geometry of a pair of cameras.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace common {

/// The intrinsics of one camera.
struct Intrinsics {
  cv::Mat K, D;
};

/// The mean distance, in pixels of the undistorted images, of points to the epipolar lines of their
/// counterparts, in both images. F maps points of the left image to lines of the right one.
double MeanEpipolarDistance(const std::vector<std::vector<cv::Point2d>>& left,
                            const std::vector<std::vector<cv::Point2d>>& right, const Intrinsics& leftCamera,
                            const Intrinsics& rightCamera, const cv::Mat& F);

}  // namespace common
