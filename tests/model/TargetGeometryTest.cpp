/// The printed grid's points in its own frame.
#include "model/TargetGeometry.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace velmora;

namespace {

TEST(TargetGeometry, HasOnePointForEachCircle) {
  EXPECT_EQ(MakeObjectTemplate({4, 11}, 0.019F).size(), 44U);
  EXPECT_EQ(MakeObjectTemplate({3, 5}, 1.0F).size(), 15U);
  EXPECT_TRUE(MakeObjectTemplate({0, 11}, 1.0F).empty());
}

TEST(TargetGeometry, ShiftsOddRowsByOneUnit) {
  const auto points = MakeObjectTemplate({4, 11}, 0.019F);
  ASSERT_EQ(points.size(), 44U);
  EXPECT_EQ(points[0], cv::Point3d(0.0, 0.0, 0.0));
  EXPECT_LT(cv::norm(points[4] - cv::Point3d(0.019, 0.019, 0.0)), 1e-8);
  EXPECT_LT(cv::norm(points[43] - cv::Point3d(0.114, 0.19, 0.0)), 1e-7);
}

TEST(TargetGeometry, RunsRowByRow) {
  const auto points = MakeObjectTemplate({3, 4}, 1.0F);
  const std::vector<cv::Point3d> expected = {{0, 0, 0}, {2, 0, 0}, {4, 0, 0}, {1, 1, 0},
                                             {3, 1, 0}, {5, 1, 0}, {0, 2, 0}, {2, 2, 0},
                                             {4, 2, 0}, {1, 3, 0}, {3, 3, 0}, {5, 3, 0}};
  EXPECT_EQ(points, expected);
}

TEST(TargetGeometry, MultipliesInSinglePrecision) {
  const float unit = 0.019F;
  const auto points = MakeObjectTemplate({4, 11}, unit);
  ASSERT_EQ(points.size(), 44U);
  EXPECT_EQ(points[43].x, static_cast<double>(unit * 6.0F));
  EXPECT_EQ(points[43].y, static_cast<double>(unit * 10.0F));
  // The sample tells the two precisions apart.
  EXPECT_NE(points[43].x, static_cast<double>(unit) * 6.0);
}

TEST(TargetGeometry, SpansSevenByTenUnits) {
  const auto points = MakeObjectTemplate({4, 11}, 1.0F);
  const auto byX = [](const cv::Point3d& a, const cv::Point3d& b) { return a.x < b.x; };
  EXPECT_EQ(std::min_element(points.begin(), points.end(), byX)->x, 0.0);
  EXPECT_EQ(std::max_element(points.begin(), points.end(), byX)->x, 7.0);
  EXPECT_EQ(points.front().y, 0.0);
  EXPECT_EQ(points.back().y, 10.0);
}

}  // namespace
