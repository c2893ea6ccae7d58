/// Smooth changes of a lens' radial curve, beyond what the lens models hold.
#include "quality/RadialTerms.h"

#include <algorithm>
#include <cmath>

namespace velmora {

std::array<double, RadialTerms::COUNT> RadialTerms::Derivatives(const cv::Vec3d& point,
                                                                const cv::Vec3d& byPoint) const {
  std::array<double, COUNT> derivatives{};
  const double fromAxis = std::hypot(point[0], point[1]);
  if (!(fromAxis > 0.0)) return derivatives;
  // Where the point goes when its angle grows.
  const cv::Vec3d outward(point[0] / fromAxis * point[2], point[1] / fromAxis * point[2], -fromAxis);
  const double byAngle = byPoint.dot(outward);
  // Chebyshev's polynomials of odd degrees from the third on: of like size everywhere, and hardly alike.
  const double t = std::min(std::atan2(fromAxis, point[2]) / rim_, 1.0);
  const double twice = 4.0 * t * t - 2.0;
  // That of degree -1 is that of degree 1.
  double before = t;
  double polynomial = t;
  for (double& derivative : derivatives) {
    const double next = twice * polynomial - before;
    before = polynomial;
    polynomial = next;
    derivative = byAngle * polynomial;
  }
  return derivatives;
}

}  // namespace velmora
