/// The intrinsics of a camera: what its lens makes of a ray.
#pragma once

#include <array>

#include "model/LensModel.h"

namespace velmora {

/// The index of each parameter among a camera's intrinsics.
enum Parameter { FX, FY, CX, CY, K1, K2, P1, P2, K3, K4, K5, K6, S1, S2, S3, S4, TAU_X, TAU_Y };

/// fx, fy, cx, cy in pixels and the distortion coefficients in OpenCV's order. Those beyond the first
/// `estimated` are not a computation's to change: they are zero, or known.
struct Intrinsics {
  std::array<double, FULL_PARAMETERS> values{};
  int estimated = CLASSIC_PARAMETERS;
};

/// What is known of any lens before it is seen. Costs are in squared pixels.
struct Prior {
  std::array<double, FULL_PARAMETERS> pulls{};  ///< each parameter toward zero: its square times this
  /// The radial curve toward a smooth one: the mean square of its roughness (`RadialCurve`) times this.
  double smoothness = 0.0;
  double angle = 0.0;  ///< as far from the axis as the curve is to be smooth, radians
};

}  // namespace velmora
