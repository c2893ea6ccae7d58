/// How smooth the radial curve of a lens is: what is left to tell where no data do.
#include "solver/RadialCurve.h"

#include <algorithm>
#include <cmath>

namespace velmora::solver {

namespace {

/// Beyond it the rational model images little that it could be told from.
constexpr double MOST_ANGLE = 80.0 * CV_PI / 180.0;

using Curve = Eigen::Matrix<double, Roughness::PLACES, 1 + RADIAL_COUNT>;

/// g(a) / a and its derivatives by the coefficients.
Curve CurveOf(const Intrinsics& intrinsics, double angle) {
  Curve curve;
  for (int i = 0; i < Roughness::PLACES; ++i) {
    const double a = angle * std::sqrt((i + 1.0) / Roughness::PLACES);
    const double r = std::tan(a);
    const double r2 = r * r;
    const double byNumerator = r / (a * Denominator(intrinsics, r2));
    const double value = byNumerator * Numerator(intrinsics, r2);
    const double byDenominator = -value / Denominator(intrinsics, r2);
    curve.row(i) << value, byNumerator * r2, byNumerator * r2 * r2, byNumerator * r2 * r2 * r2,
        byDenominator * r2, byDenominator * r2 * r2, byDenominator * r2 * r2 * r2;
  }
  return curve;
}

}  // namespace

Roughness RoughnessOf(const Intrinsics& intrinsics, double angle) {
  constexpr int COUNT = Roughness::COUNT;
  constexpr double SCALE = 1.0 * Roughness::PLACES * Roughness::PLACES * Roughness::PLACES;
  const Curve curve = CurveOf(intrinsics, angle);
  const Eigen::Matrix<double, COUNT, 1 + RADIAL_COUNT> third =
      SCALE * (curve.middleRows<COUNT>(3) - curve.middleRows<COUNT>(0) +
               3.0 * (curve.middleRows<COUNT>(1) - curve.middleRows<COUNT>(2)));
  return {third.col(0), third.rightCols<RADIAL_COUNT>()};
}

double CornerRadius(const Intrinsics& intrinsics, const cv::Size& imageSize) {
  const auto& p = intrinsics.values;
  const double x = std::max(p[CX], imageSize.width - 1 - p[CX]) / p[FX];
  const double y = std::max(p[CY], imageSize.height - 1 - p[CY]) / p[FY];
  return std::hypot(x, y);
}

double CornerAngle(const Intrinsics& intrinsics, const cv::Size& imageSize, double known) {
  const double r = std::tan(known);
  const double imaged = r * Numerator(intrinsics, r * r) / Denominator(intrinsics, r * r);
  const double angle = known * CornerRadius(intrinsics, imageSize) / imaged;
  return angle > 0.0 ? std::clamp(angle, std::min(known, MOST_ANGLE), MOST_ANGLE) : MOST_ANGLE;
}

double Denominator(const Intrinsics& intrinsics, double r2) {
  const auto& p = intrinsics.values;
  return 1.0 + r2 * (p[K4] + r2 * (p[K5] + r2 * p[K6]));
}

double Numerator(const Intrinsics& intrinsics, double r2) {
  const auto& p = intrinsics.values;
  return 1.0 + r2 * (p[K1] + r2 * (p[K2] + r2 * p[K3]));
}

}  // namespace velmora::solver
