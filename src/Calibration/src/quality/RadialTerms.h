/// Smooth changes of a lens' radial curve, beyond what the lens models hold.
#pragma once

#include <array>
#include <opencv2/core.hpp>

namespace velmora {

/// Rays bent toward or away from the axis, by odd polynomials of their angle to it that reach from the axis
/// to the rim of the data. A turn and the focal length take up the first one, which is left out.
class RadialTerms {
 public:
  static constexpr int COUNT = 5;
  /// What the terms may be, radians: standard deviation. Far more than any lens needs.
  static constexpr double DEVIATION = 0.05;

  /// `rim`: the largest angle to the axis of any point of the data, radians.
  explicit RadialTerms(double rim) : rim_(rim) {}

  /// The derivatives of a coordinate by the terms, from that by a point in the camera's frame.
  std::array<double, COUNT> Derivatives(const cv::Vec3d& point, const cv::Vec3d& byPoint) const;

 private:
  double rim_;
};

}  // namespace velmora
