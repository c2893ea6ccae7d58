/// Projects points through a lens, with the derivatives of the pixels.
#pragma once

#include <array>
#include <opencv2/core.hpp>

namespace sparse {

constexpr int CLASSIC_PARAMETERS = 9;
constexpr int RATIONAL_PARAMETERS = 12;
constexpr int FULL_PARAMETERS = 18;
constexpr int POSE_PARAMETERS = 6;

/// fx, fy, cx, cy and the distortion coefficients in OpenCV's order: k1, k2, p1, p2, k3, k4, k5, k6, s1, s2,
/// s3, s4, tauX, tauY. The first `free` are estimated, the others are zero.
struct Lens {
  std::array<double, FULL_PARAMETERS> values{};
  int free = CLASSIC_PARAMETERS;
};

/// From the target's frame to the camera's: R x + t.
struct Pose {
  cv::Matx33d R = cv::Matx33d::eye();
  cv::Vec3d t;
};

/// A pixel's coordinate with its derivatives by the lens' parameters and by the point in the camera's frame.
struct Coordinate {
  double value = 0.0;
  std::array<double, FULL_PARAMETERS> byLens{};
  cv::Vec3d byPoint;
};

/// What is in front of a lens of fixed parameters.
class Projection {
 public:
  explicit Projection(const Lens& lens);

  /// The pixel of a point in the camera's frame. False when the point is not in front of the camera, or its
  /// pixel is not finite.
  bool Project(const cv::Vec3d& point, cv::Point2d& pixel) const;

  /// The same with derivatives, of which those by the lens' free parameters are set.
  bool Differentiate(const cv::Vec3d& point, Coordinate& u, Coordinate& v) const;

 private:
  struct Bent;
  struct Tilted;

  Bent Bend(double x, double y) const;
  Tilted Tilt(const Bent& bent) const;
  static void ByCamera(const Tilted& tilted, Coordinate& u, Coordinate& v);
  void ByRadial(const Bent& bent, const cv::Matx22d& byBent, Coordinate& u, Coordinate& v) const;
  void ByPrismAndTilt(const Bent& bent, const Tilted& tilted, const cv::Matx22d& byBent, Coordinate& u,
                      Coordinate& v) const;
  static void ByPoint(const Bent& bent, const cv::Matx22d& byBent, double nearness, Coordinate& u,
                      Coordinate& v);

  Lens lens_;
  bool tilted_;
  cv::Matx33d tilt_, tiltByX_, tiltByY_;
};

}  // namespace sparse
