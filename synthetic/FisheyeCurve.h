/// How far from the middle a fisheye images what is at an angle from its axis.
#pragma once

#include <array>

namespace world {

/// The curve of Kannala and Brandt: a direction at the angle a (radians) from the axis is imaged at the
/// distance a (1 + k1 a^2 + k2 a^4 + k3 a^6 + k4 a^8) from the middle, in focal lengths. It holds from the
/// axis to where distances no longer grow, beyond 90 degrees too.
class FisheyeCurve {
 public:
  using Coefficients = std::array<double, 4>;

  /// Throws std::invalid_argument for coefficients that are not finite.
  explicit FisheyeCurve(const Coefficients& k);

  const Coefficients& D() const { return k_; }

  /// By the formula, where distances grow and beyond.
  double Distance(double angle) const;

  /// Nothing at this angle or beyond is imaged; 180 degrees at most.
  double WidestAngle() const { return widest_; }

  /// False when nothing is imaged so far from the middle; `angle` is then unchanged.
  bool AngleAt(double distance, double& angle) const;

 private:
  double Slope(double angle) const;

  Coefficients k_;
  double widest_;
};

}  // namespace world
