/// How far the errors of observed points reach, one beside the other.
#include "solver/PointDeviations.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <opencv2/core.hpp>

using namespace velmora;
using solver::PointDeviations;
using solver::RelativeDeviations;

namespace {

double WeightOf(double relative) {
  return 1.0 / (relative * relative);
}

}  // namespace

TEST(PointDeviations, TheMedianPointOfAllCamerasHasOne) {
  const std::vector<PointDeviations> relative =
      RelativeDeviations({{{0.01, 0.02}, {0.02}}, {{0.05}, {0.02, 0.02, 0.03}}});
  EXPECT_DOUBLE_EQ(relative[0][0][1], 1.0);
  EXPECT_DOUBLE_EQ(relative[0][1][0], 1.0);
  EXPECT_DOUBLE_EQ(relative[1][1][0], 1.0);
  EXPECT_LT(relative[0][0][0], 1.0);
  EXPECT_GT(relative[1][0][0], relative[1][1][2]);
  EXPECT_GT(relative[1][1][2], 1.0);
}

TEST(PointDeviations, NoPointWeighsMoreThanThreeTimesTheUsualOne) {
  const std::vector<PointDeviations> relative = RelativeDeviations({{{1e-9, 0.02, 0.02, 0.02}}});
  EXPECT_NEAR(WeightOf(relative[0][0][0]), 3.0, 1e-6);
}

TEST(PointDeviations, PointsThatAreHardlyKnownHardlyCount) {
  const std::vector<PointDeviations> relative = RelativeDeviations({{{0.01, 0.01, 0.01, 0.2}}});
  EXPECT_LT(WeightOf(relative[0][0][3]), 0.005);
}

TEST(PointDeviations, PointsOfWhichNothingIsKnownCountAsUsualOnes) {
  const std::vector<PointDeviations> relative = RelativeDeviations({{{0.0, 0.02, 0.02}, {}}, {}});
  EXPECT_DOUBLE_EQ(relative[0][0][0], 1.0);
  EXPECT_TRUE(relative[0][1].empty());
  EXPECT_TRUE(relative[1].empty());
}

TEST(PointDeviations, OfNothingNothingFollows) {
  EXPECT_TRUE(RelativeDeviations({}).empty());
  EXPECT_TRUE(RelativeDeviations({{}, {{}, {}}}).empty());
  EXPECT_TRUE(RelativeDeviations({{{0.0, 0.0}}}).empty());
}

TEST(PointDeviations, AreFiniteAndNotNegative) {
  EXPECT_THROW(RelativeDeviations({{{0.01, -0.01}}}), cv::Exception);
  EXPECT_THROW(RelativeDeviations({{{0.01, std::numeric_limits<double>::infinity()}}}), cv::Exception);
  EXPECT_THROW(RelativeDeviations({{{std::nan("")}}}), cv::Exception);
}
