/// The projection of fisheyes by Kannala and Brandt: the distance from the principal point is an odd
/// polynomial of the angle between ray and axis.
#pragma once

#include <opencv2/core.hpp>

#include "solver/Coordinate.h"

namespace velmora::solver {

/// theta (1 + k1 theta^2 + k2 theta^4 + k3 theta^6 + k4 theta^8), in focal lengths. Points beside and behind
/// the camera have an image, too, up to the angle at which that no longer grows.
class FisheyeProjection {
 public:
  explicit FisheyeProjection(const Intrinsics& intrinsics);

  /// False beyond the largest angle that has an image, and of the camera's own centre.
  bool Project(const cv::Vec3d& point, cv::Point2d& pixel) const;
  /// With the derivatives by fx, fy, cx, cy, k1 to k4 and by the point.
  bool Differentiate(const cv::Vec3d& point, Coordinate& u, Coordinate& v) const;
  /// The unit ray of a pixel; false where none is imaged.
  bool RayOf(const cv::Point2d& pixel, cv::Vec3d& ray) const;

  /// Radians: pi where the distance grows all the way.
  double LargestAngle() const { return largest_; }

 private:
  double Distance(double angle) const;
  double Slope(double angle) const;

  Intrinsics intrinsics_;
  double largest_;
};

}  // namespace velmora::solver
