/// Standard deviations of a camera's pose, from covariances, and their limits.
#include "quality/PoseDeviations.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace velmora;

/// A covariance of eight parameters, the pose from the second on.
Eigen::MatrixXd Covariance() {
  Eigen::VectorXd deviations(8);
  deviations << 5.0, 0.001, 0.002, 0.002, 0.0003, 0.0004, 0.0012, 7.0;
  return deviations.array().square().matrix().asDiagonal();
}

TEST(PoseDeviations, AreOfTheAngleTheLengthAndTheDirection) {
  const PairVerdict::Deviations deviations = DeviationsOf(Covariance(), 1, {0.0, 0.0, 0.2});
  EXPECT_NEAR(deviations.rotation, 0.003 * 180.0 / CV_PI, 1e-12);
  EXPECT_NEAR(deviations.baseline, 0.0012 / 0.2, 1e-12);
  EXPECT_NEAR(deviations.direction, 0.0005 / 0.2 * 180.0 / CV_PI, 1e-12);
}

TEST(PoseDeviations, AreUnknownWithoutACovariance) {
  const PairVerdict::Deviations unknown = DeviationsOf({}, 0, {0.1, 0.0, 0.0});
  EXPECT_TRUE(std::isinf(unknown.rotation));
  EXPECT_TRUE(Beyond(unknown, WORTHLESS_POSE));
}

TEST(PoseDeviations, AreBeyondALimitWhenAnyOfThemIs) {
  EXPECT_FALSE(Beyond({0.2, 0.01, 0.5}, CAREFUL_POSE));
  EXPECT_TRUE(Beyond({0.21, 0.0, 0.0}, CAREFUL_POSE));
  EXPECT_TRUE(Beyond({0.0, 0.011, 0.0}, CAREFUL_POSE));
  EXPECT_TRUE(Beyond({0.0, 0.0, 0.51}, CAREFUL_POSE));
  EXPECT_TRUE(Beyond({0.0, std::nan(""), 0.0}, CAREFUL_POSE));
}

TEST(PoseDeviations, AreNoNumberBesideAnyOtherWhereOneIsNone) {
  const double none = std::nan("");
  const PairVerdict::Deviations known = {0.1, 0.002, 0.3};
  for (const PairVerdict::Deviations& larger :
       {Larger(known, {none, none, none}), Larger({none, none, none}, known)}) {
    EXPECT_TRUE(std::isnan(larger.rotation));
    EXPECT_TRUE(std::isnan(larger.baseline));
    EXPECT_TRUE(std::isnan(larger.direction));
    EXPECT_TRUE(Beyond(larger, WORTHLESS_POSE));
  }
  const PairVerdict::Deviations larger = Larger(known, {0.2, 0.001, 0.4});
  EXPECT_EQ(larger.rotation, 0.2);
  EXPECT_EQ(larger.baseline, 0.002);
  EXPECT_EQ(larger.direction, 0.4);
}

TEST(PoseDeviations, DisagreeWhenTheyAreUnusualAndLargeEnoughToMatter) {
  const PairVerdict::Deviations usual = {0.01, 0.0001, 0.01};
  EXPECT_FALSE(Disagrees({0.024, 0.0002, 0.02}, usual));
  EXPECT_FALSE(Disagrees({0.06, 0.0002, 0.02}, usual)) << "too small to matter";
  EXPECT_TRUE(Disagrees({0.07, 0.0002, 0.02}, usual));
  EXPECT_TRUE(Disagrees({0.01, 0.004, 0.02}, usual));
  EXPECT_FALSE(Disagrees({0.07, 0.0002, 0.02}, {0.03, 0.0001, 0.01}));
}

}  // namespace
