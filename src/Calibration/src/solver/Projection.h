/// Projects points through a lens, with the derivatives of the pixels.
#pragma once

#include <array>
#include <opencv2/core.hpp>

#include "model/LensModel.h"

namespace velmora::solver {

using velmora::CLASSIC_PARAMETERS;
using velmora::FULL_PARAMETERS;
using velmora::RATIONAL_PARAMETERS;

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
  /// What the formulas use of a lens: its parameters, and the tilt with its derivatives by both angles.
  struct Constants {
    Lens lens;
    bool tilted = false;
    cv::Matx33d tilt, tiltByX, tiltByY;
  };

  explicit Projection(const Lens& lens);

  const Constants& Numbers() const { return constants_; }

  /// The pixel of a point in the camera's frame. False when the point is not in front of the camera, or its
  /// pixel is not finite.
  bool Project(const cv::Vec3d& point, cv::Point2d& pixel) const;

  /// The same with derivatives, of which those by the lens' free parameters are set.
  bool Differentiate(const cv::Vec3d& point, Coordinate& u, Coordinate& v) const;

 private:
  Constants constants_;
};

}  // namespace velmora::solver
