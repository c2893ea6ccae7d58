/// How a blurred edge looks: straight, or the rim of a circle.
#include "finder/EdgeProfile.h"

#include <cmath>
#include <opencv2/core.hpp>

namespace velmora::finder {

namespace {

/// exp(-x) I1(x), by the polynomials of Abramowitz and Stegun (9.8.3 and 9.8.4).
double ScaledBessel(double x) {
  constexpr double SMALL = 3.75;
  const auto polynomial = [](const std::array<double, 9>& coefficients, double t) {
    double sum = 0.0;
    for (size_t k = coefficients.size(); k-- > 0;) sum = sum * t + coefficients[k];
    return sum;
  };
  if (x < SMALL) {
    const double t = (x / SMALL) * (x / SMALL);
    return std::exp(-x) * x *
           polynomial({0.5, 0.87890594, 0.51498869, 0.15084934, 0.02658733, 0.00301532, 0.00032411}, t);
  }
  return polynomial({0.39894228, -0.03988024, -0.00362018, 0.00163801, -0.01031555, 0.02282967, -0.02895312,
                     0.01787654, -0.00420059},
                    SMALL / x) /
         std::sqrt(x);
}

/// R exp(-(r² + R²) / 2) I1(r R) at r = R + z, where R = 1 / q is the circle's radius.
double FallAt(double z, double q) {
  const double gauss = std::exp(-0.5 * z * z);
  if (q == 0.0) return gauss / std::sqrt(2.0 * CV_PI);
  const double radius = 1.0 / q;
  // Distances are counted from the circle's middle: there are none below zero.
  return radius + z <= 0.0 ? 0.0 : radius * gauss * ScaledBessel((radius + z) * radius);
}

}  // namespace

const EdgeProfile& EdgeProfile::Instance() {
  static const EdgeProfile profile;
  return profile;
}

/// The share is the sum of all that falls farther out (Simpson's rule).
EdgeProfile::EdgeProfile() {
  constexpr int STEPS_TO_NODE = 4;
  constexpr double STEP = 1.0 / (STEPS_TO_NODE * PER_UNIT);
  constexpr int BEYOND = 2 * PER_UNIT;
  for (int k = 0; k <= PER_CURVATURE; ++k) {
    const double q = static_cast<double>(k) / PER_CURVATURE;
    double z = static_cast<double>(REACH) + static_cast<double>(BEYOND) / PER_UNIT;
    double share = 0.0;
    double fall = FallAt(z, q);
    for (int i = LAST + BEYOND; i >= 0; --i) {
      if (i <= LAST) {
        nodes_[static_cast<size_t>(k * (LAST + 1) + i)] = {static_cast<float>(share),
                                                           static_cast<float>(fall)};
      }
      for (int step = 0; step < STEPS_TO_NODE; ++step) {
        const double middle = FallAt(z - 0.5 * STEP, q);
        z -= STEP;
        const double next = FallAt(z, q);
        share += STEP / 6.0 * (fall + 4.0 * middle + next);
        fall = next;
      }
    }
  }
}

}  // namespace velmora::finder
