/// The intrinsics of a camera: what its lens makes of a ray.
#pragma once

#include <array>

#include "model/LensModel.h"

namespace velmora {

/// The index of each parameter among a camera's intrinsics.
enum Parameter { FX, FY, CX, CY, K1, K2, P1, P2, K3, K4, K5, K6, S1, S2, S3, S4, TAU_X, TAU_Y };

/// What becomes of a ray: where it meets a plane, distorted (rational, of which the classic and the full
/// model are others of more or fewer terms), or an angle, as fisheyes have it (Kannala and Brandt).
enum class LensFamily { Plane, Angle };

/// The coefficients of a lens of angles take the places after cx and cy.
constexpr int FISHEYE_K = 4;
constexpr int FISHEYE_COEFFICIENTS = 4;

/// fx, fy, cx, cy in pixels and the distortion coefficients in OpenCV's order: of a lens of angles k1 to k4,
/// of its own. Those beyond the first `estimated` are not a computation's to change: they are zero, or known.
struct Intrinsics {
  std::array<double, FULL_PARAMETERS> values{};
  int estimated = CLASSIC_PARAMETERS;
  LensFamily family = LensFamily::Plane;

  bool IsFisheye() const { return family == LensFamily::Angle; }
};

/// What is known of any lens before it is seen. Costs are in squared pixels.
struct Prior {
  std::array<double, FULL_PARAMETERS> pulls{};  ///< each parameter toward zero: its square times this
  /// The radial curve toward a smooth one: the mean square of its roughness (`RadialCurve`) times this.
  double smoothness = 0.0;
  double angle = 0.0;  ///< as far from the axis as the curve is to be smooth, radians
};

}  // namespace velmora
