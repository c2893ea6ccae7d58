/// Projects points to pixels, with the derivatives of the pixels.
#pragma once

#include <opencv2/core.hpp>
#include <optional>

#include "model/Intrinsics.h"
#include "solver/Coordinate.h"
#include "solver/FisheyeProjection.h"

namespace velmora::solver {

/// The projection of a camera of known intrinsics.
class Projection {
 public:
  /// What the formulas use of a camera: its intrinsics, and the tilt with its derivatives by both angles.
  struct Constants {
    Intrinsics intrinsics;
    bool tilted = false;
    cv::Matx33d tilt, tiltByX, tiltByY;
  };

  explicit Projection(const Intrinsics& intrinsics);

  const Constants& Numbers() const { return constants_; }

  /// The pixel of a point in the camera's frame. False when the point is not in front of the camera (of a
  /// fisheye: beyond what it sees), or its pixel is not finite.
  bool Project(const cv::Vec3d& point, cv::Point2d& pixel) const;

  /// Projects a point with derivatives; of those by the intrinsics the estimated ones' are set.
  bool Differentiate(const cv::Vec3d& point, Coordinate& u, Coordinate& v) const;

 private:
  Constants constants_;
  std::optional<FisheyeProjection> fisheye_;  ///< of a fisheye
};

}  // namespace velmora::solver
