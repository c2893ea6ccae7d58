/// The weak prior that keeps the larger lens models' coefficients small, and what it must not let pass.
#include "solver/WeakPrior.h"

#include <algorithm>
#include <cmath>

namespace velmora::solver {

namespace {

/// Denominators below this are taken for the neighbourhood of a pole.
constexpr double LEAST_DENOMINATOR = 0.05;

double Denominator(const Intrinsics& intrinsics, double r2) {
  const auto& p = intrinsics.values;
  return 1.0 + r2 * (p[K4] + r2 * (p[K4 + 1] + r2 * p[K4 + 2]));
}

double Numerator(const Intrinsics& intrinsics, double r2) {
  const auto& p = intrinsics.values;
  return 1.0 + r2 * (p[K1] + r2 * (p[K2] + r2 * p[K3]));
}

/// The largest distance from the axis, at depth one, of the image's corners.
double CornerRadius(const Intrinsics& intrinsics, const cv::Size& imageSize) {
  const auto& p = intrinsics.values;
  const double x = std::max(p[2], imageSize.width - 1 - p[2]) / p[0];
  const double y = std::max(p[3], imageSize.height - 1 - p[3]) / p[1];
  return std::hypot(x, y);
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

Prior PriorFor(double radius, double variance, double denominator) {
  Prior prior{};
  const double r2 = radius * radius;
  const auto pull = [&](int parameter, double standardDeviation) {
    prior[static_cast<size_t>(parameter)] = variance / (standardDeviation * standardDeviation);
  };
  for (int i = 0; i < 3; ++i) pull(K4 + i, 0.5 / (std::sqrt(denominator) * std::pow(r2, i + 1)));
  for (int i = 0; i < 4; ++i) pull(S1 + i, 0.01 / std::pow(r2, i % 2 + 1));
  for (int i = 0; i < 2; ++i) pull(TAU_X + i, 0.02);
  return prior;
}

bool IsFreeOfPoles(const Intrinsics& intrinsics, const cv::Size& imageSize) {
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
