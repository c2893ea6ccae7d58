/// Computes cameras and pairs with Ceres: derivatives and search share nothing with the engine's.
#pragma once

#include <array>
#include <opencv2/core.hpp>
#include <vector>

namespace independent {

/// fx, fy, cx, cy, k1, k2, p1, p2, k3.
using Camera = std::array<double, 9>;
/// Rotation vector and translation.
using Pose = std::array<double, 6>;
using Views = std::vector<std::vector<cv::Point2d>>;

struct Solution {
  double cost = 0.0;  ///< the sum of squared residuals
  Camera left{}, right{};
  Pose relative{};  ///< from the left camera's frame to the right one's
  std::vector<Pose> poses;
};

/// Solves one camera from views of the same points, started by OpenCV's estimate for a plane.
Solution SolveCamera(const std::vector<cv::Point3d>& object, const Views& views, cv::Size imageSize);

/// Solves a pair, everything together, started from each camera alone.
Solution SolvePair(const std::vector<cv::Point3d>& object, const Views& left, const Views& right,
                   cv::Size imageSize);

}  // namespace independent
