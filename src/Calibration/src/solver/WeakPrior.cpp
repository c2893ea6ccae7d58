/// The weak prior that keeps the larger lens models' coefficients small and their curves smooth, and what it
/// must not let pass.
#include "solver/WeakPrior.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "solver/RadialCurve.h"

namespace velmora::solver {

namespace {

/// What k4, k5 and k6 are free to be of any lens. Fisheyes need it, however far from the axis their data are.
constexpr std::array<double, 3> FREEDOM = {1.0, 0.5, 0.1};
/// Of lenses, which have roughness of a good half: in variances of the noise.
constexpr double SMOOTHNESS = 2.0;

/// Narrower images leave little to guess beyond the data: smoothness counts from 43 degrees off the axis on,
/// and from 57 degrees on in full.
double ShareOf(double angle) {
  return std::clamp((angle - 0.75) / 0.25, 0.0, 1.0);
}

}  // namespace

double DataRadius(const Camera& camera, size_t number, const std::vector<TargetView>& views) {
  double radius = 0.0;
  for (const TargetView& view : views) {
    const RigidTransform pose = number == 0 ? view.rigFromTarget : camera.cameraFromRig * view.rigFromTarget;
    for (const cv::Point3d& point : view.observations[number].object) {
      const cv::Vec3d at = pose * point;
      radius = std::max(radius, std::hypot(at[0], at[1]) / at[2]);
    }
  }
  return radius;
}

Spread SpreadOf(const Camera& camera, size_t number, const std::vector<TargetView>& views) {
  const double radius = DataRadius(camera, number, views);
  return {radius, CornerAngle(camera.intrinsics, camera.imageSize, std::atan(radius))};
}

bool IsWide(const Spread& spread) {
  return ShareOf(spread.angle) > 0.0;
}

Prior PriorFor(const Spread& spread, double variance, double strength) {
  Prior prior;
  const double r2 = spread.radius * spread.radius;
  const auto pull = [&](int parameter, double standardDeviation) {
    prior.pulls[static_cast<size_t>(parameter)] = variance / (standardDeviation * standardDeviation);
  };
  for (size_t i = 0; i < 3; ++i) {
    const double standardDeviation = std::max(0.5 / std::pow(r2, static_cast<double>(i) + 1.0), FREEDOM[i]);
    pull(K4 + static_cast<int>(i), standardDeviation / std::sqrt(strength));
  }
  for (int i = 0; i < 4; ++i) pull(S1 + i, 0.01 / std::pow(r2, i % 2 + 1));
  for (int i = 0; i < 2; ++i) pull(TAU_X + i, 0.02);
  prior.smoothness = SMOOTHNESS * ShareOf(spread.angle) * strength * strength * variance;
  prior.angle = spread.angle;
  return prior;
}

bool IsFreeOfPoles(const Intrinsics& intrinsics, const cv::Size& imageSize) {
  if (intrinsics.IsFisheye()) return true;  // a polynomial has none
  constexpr int STEPS = 2000;
  const double corner = CornerRadius(intrinsics, imageSize);
  // Rays beyond three times the corner's distance are not imaged by any camera that this model describes.
  const double step = 3.0 * corner / STEPS;
  for (int i = 1; i <= STEPS; ++i) {
    const double r = step * i;
    const double denominator = Denominator(intrinsics, r * r);
    if (denominator < LEAST_DENOMINATOR) return false;
    if (r * Numerator(intrinsics, r * r) / denominator >= corner) return true;
  }
  return true;
}

}  // namespace velmora::solver
