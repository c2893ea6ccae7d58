/// How smooth the curves of lenses are.
#include "solver/RadialCurve.h"

#include <gtest/gtest.h>

#include <cmath>

#include "solver/WideViews.h"
#include "unit/Collection.h"

using namespace velmora;

namespace {

Intrinsics Lens(double k1, double k2, double k4, double k5 = 0.0) {
  Intrinsics intrinsics;
  intrinsics.estimated = RATIONAL_PARAMETERS;
  intrinsics.values = {500.0, 500.0, 319.5, 239.5};
  intrinsics.values[K1] = k1;
  intrinsics.values[K2] = k2;
  intrinsics.values[K4] = k4;
  intrinsics.values[K5] = k5;
  return intrinsics;
}

/// Coefficients that image rays at distances that grow evenly with their angle.
Intrinsics Fisheye() {
  Intrinsics intrinsics = Lens(0.0, 0.0, 0.0);
  const std::vector<double> D = unit::EquidistantCamera(120.0).lens.D();
  for (size_t k = 0; k < 8; ++k) intrinsics.values[K1 + k] = D[k];
  return intrinsics;
}

double RoughnessIn(const Intrinsics& intrinsics, double angle) {
  return solver::RoughnessOf(intrinsics, angle).values.cwiseAbs().maxCoeff();
}

TEST(RadialCurve, IsSmoothOfIntrinsicsAndRoughWhereItFolds) {
  EXPECT_LT(RoughnessIn(Lens(0.0, 0.0, 0.0), 0.7), 1.0);    // straight lines
  EXPECT_LT(RoughnessIn(Lens(-0.2, 0.05, 0.0), 0.7), 1.0);  // a usual lens
  EXPECT_LT(RoughnessIn(Fisheye(), 1.2), 0.1);
  EXPECT_GT(RoughnessIn(Lens(-0.2, 0.05, 0.0), 1.2), 10.0);
}

TEST(RadialCurve, HasTheSlopesOfItsRoughness) {
  Intrinsics intrinsics = Lens(0.3, 0.02, 0.6, 0.05);
  const solver::Roughness roughness = solver::RoughnessOf(intrinsics, 1.0);
  for (int i = 0; i < solver::RADIAL_COUNT; ++i) {
    constexpr double STEP = 1e-6;
    double& value = intrinsics.values[solver::RADIAL[static_cast<size_t>(i)]];
    value += STEP;
    const auto after = solver::RoughnessOf(intrinsics, 1.0).values;
    value -= 2.0 * STEP;
    const auto before = solver::RoughnessOf(intrinsics, 1.0).values;
    value += STEP;
    const auto slope = ((after - before) / (2.0 * STEP)).eval();
    EXPECT_LT((slope - roughness.slopes.col(i)).cwiseAbs().maxCoeff(),
              1e-5 * roughness.slopes.col(i).cwiseAbs().maxCoeff())
        << i;
  }
}

TEST(RadialCurve, EndsAtTheCornerOfTheImage) {
  const double corner = std::hypot(319.5, 239.5) / 500.0;
  EXPECT_DOUBLE_EQ(solver::CornerRadius(Lens(0.0, 0.0, 0.0), unit::FRAME), corner);
  // Known to the corner; of straight lines as far as 30 degrees only; and hardly at all.
  const double whole = std::atan(corner);
  EXPECT_NEAR(solver::CornerAngle(Lens(0.0, 0.0, 0.0), unit::FRAME, whole), whole, 1e-9);
  const double known = CV_PI / 6.0;
  EXPECT_NEAR(solver::CornerAngle(Lens(0.0, 0.0, 0.0), unit::FRAME, known), known * corner / std::tan(known),
              1e-9);
  EXPECT_NEAR(solver::CornerAngle(Lens(-2.5, 0.0, 0.0), unit::FRAME, 0.55), 80.0 * CV_PI / 180.0, 1e-9);
}

}  // namespace
