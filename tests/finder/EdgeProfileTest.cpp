/// The table of blurred edges, beside what the integrals say.
#include "finder/EdgeProfile.h"

#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/core.hpp>

using namespace velmora;

namespace {

double Below(double z) {
  return 0.5 * std::erfc(-z / std::sqrt(2.0));
}

/// The share of a disc of radius R in what a blur of standard deviation 1 brings to a distance r from its
/// middle: line by line.
double ShareOf(double R, double r) {
  constexpr int LINES = 4000;
  const double half = std::min(R, 8.0);
  const double step = 2.0 * half / LINES;
  double share = 0.0;
  for (int k = 0; k < LINES; ++k) {
    const double y = -half + (k + 0.5) * step;
    const double end = std::sqrt(std::max(0.0, R * R - y * y));
    share += std::exp(-0.5 * y * y) / std::sqrt(2.0 * CV_PI) * step * (Below(end - r) - Below(-end - r));
  }
  return share;
}

TEST(EdgeProfile, IsTheErrorFunctionForStraightEdges) {
  for (float z = -4.9F; z < 5.0F; z += 0.37F) {
    const finder::EdgeProfile::Value edge = finder::EdgeProfile::Instance().At(z, 0.0F);
    EXPECT_NEAR(edge.share, Below(-static_cast<double>(z)), 1e-4) << z;
    EXPECT_NEAR(edge.fall, std::exp(-0.5 * z * z) / std::sqrt(2.0 * CV_PI), 1e-4) << z;
  }
}

TEST(EdgeProfile, IsThatOfABlurredDisc) {
  for (const double q : {0.04, 0.1, 0.25, 0.45, 0.7, 1.0}) {
    const double R = 1.0 / q;
    for (double z = std::max(-4.9, -R); z < 4.9; z += 0.31) {
      const auto edge = finder::EdgeProfile::Instance().At(static_cast<float>(z), static_cast<float>(q));
      EXPECT_NEAR(edge.share, ShareOf(R, R + z), 1e-3) << q << " " << z;
      const double fall = (ShareOf(R, R + z - 0.01) - ShareOf(R, R + z + 0.01)) / 0.02;
      if (z > -R + 0.1) {
        EXPECT_NEAR(edge.fall, fall, 2e-3) << q << " " << z;
      }
    }
  }
}

TEST(EdgeProfile, ChangesWithTheCurvatureAsItSays) {
  for (const double z : {-1.5, -0.3, 0.0, 0.8, 2.0}) {
    const auto edge = finder::EdgeProfile::Instance().At(static_cast<float>(z), 0.25F);
    EXPECT_NEAR(edge.byCurvature, (ShareOf(1.0 / 0.3, 1.0 / 0.3 + z) - ShareOf(4.0, 4.0 + z)) / 0.05, 3e-3)
        << z;
  }
}

TEST(EdgeProfile, IsAllOrNothingFarFromTheEdge) {
  EXPECT_EQ(finder::EdgeProfile::Instance().At(-7.0F, 0.1F).share, 1.0F);
  EXPECT_EQ(finder::EdgeProfile::Instance().At(7.0F, 0.1F).share, 0.0F);
  EXPECT_EQ(finder::EdgeProfile::Instance().At(7.0F, 0.1F).fall, 0.0F);
}

}  // namespace
