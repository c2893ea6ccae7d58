/// Tests of the curves of fisheyes.
#include "FisheyeCurve.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>

#include "Cameras.h"

using world::FisheyeCurve;

TEST(FisheyeCurve, IsTheAngleItselfWithoutCoefficients) {
  const FisheyeCurve curve({});
  for (double angle = 0.0; angle < 3.1; angle += 0.1) EXPECT_EQ(curve.Distance(angle), angle);
  EXPECT_EQ(curve.WidestAngle(), CV_PI);
}

TEST(FisheyeCurve, IsThePolynomialOfItsCoefficients) {
  const FisheyeCurve curve({0.1, -0.02, 0.003, -0.0004});
  const double a = 1.7;
  const double expected =
      a + 0.1 * std::pow(a, 3) - 0.02 * std::pow(a, 5) + 0.003 * std::pow(a, 7) - 0.0004 * std::pow(a, 9);
  EXPECT_NEAR(curve.Distance(a), expected, 1e-14);
}

TEST(FisheyeCurve, FindsTheAngleOfEveryDistance) {
  for (const world::Camera& camera : ManyFisheyes()) {
    const FisheyeCurve& curve = *camera.lens.Curve();
    ASSERT_GT(curve.WidestAngle(), 105.5 * CV_PI / 180.0);
    for (double degrees = 0.0; degrees <= 105.0; degrees += 0.25) {
      const double angle = degrees * CV_PI / 180.0;
      double found = -1.0;
      ASSERT_TRUE(curve.AngleAt(curve.Distance(angle), found)) << degrees;
      ASSERT_NEAR(found, angle, 1e-13) << degrees;
    }
  }
}

TEST(FisheyeCurve, EndsWhereDistancesNoLongerGrow) {
  const FisheyeCurve curve({-0.3, 0.0, 0.0, 0.0});
  const double widest = 1.0 / std::sqrt(0.9);
  EXPECT_NEAR(curve.WidestAngle(), widest, 1e-12);
  double angle = 0.25;
  EXPECT_FALSE(curve.AngleAt(1.0001 * curve.Distance(widest), angle));
  EXPECT_FALSE(curve.AngleAt(std::numeric_limits<double>::quiet_NaN(), angle));
  EXPECT_EQ(angle, 0.25);
  ASSERT_TRUE(curve.AngleAt(0.999999 * curve.Distance(widest), angle));
  EXPECT_NEAR(curve.Distance(angle), 0.999999 * curve.Distance(widest), 1e-14);
}

TEST(FisheyeCurve, RefusesCoefficientsThatAreNotFinite) {
  EXPECT_THROW(FisheyeCurve({0.0, std::numeric_limits<double>::quiet_NaN(), 0.0, 0.0}),
               std::invalid_argument);
}
