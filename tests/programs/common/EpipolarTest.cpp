/// Distances of points to the epipolar lines of their counterparts.
#include "common/Epipolar.h"

#include <gtest/gtest.h>

namespace {

/// Two cameras side by side without rotation: epipolar lines are the image rows.
cv::Mat FundamentalOfRows() {
  return (cv::Mat_<double>(3, 3) << 0, 0, 0, 0, 0, -1, 0, 1, 0);
}

common::Intrinsics SomeCamera() {
  return {(cv::Mat_<double>(3, 3) << 500, 0, 320, 0, 500, 240, 0, 0, 1), cv::Mat::zeros(1, 14, CV_64F)};
}

TEST(Epipolar, PointsOnEqualRowsAreAtDistanceZero) {
  const std::vector<std::vector<cv::Point2d>> left = {{{100, 50}, {200, 300}}};
  const std::vector<std::vector<cv::Point2d>> right = {{{80, 50}, {150, 300}}};
  EXPECT_NEAR(common::MeanEpipolarDistance(left, right, SomeCamera(), SomeCamera(), FundamentalOfRows()), 0.0,
              1e-9);
}

TEST(Epipolar, TheDistanceIsTheMeanOffsetOfTheRows) {
  const std::vector<std::vector<cv::Point2d>> left = {{{100, 50}}, {{200, 300}}};
  const std::vector<std::vector<cv::Point2d>> right = {{{80, 51}}, {{150, 297}}};
  EXPECT_NEAR(common::MeanEpipolarDistance(left, right, SomeCamera(), SomeCamera(), FundamentalOfRows()), 2.0,
              1e-9);
}

TEST(Epipolar, WithoutPointsTheDistanceIsZero) {
  EXPECT_EQ(common::MeanEpipolarDistance({}, {}, SomeCamera(), SomeCamera(), FundamentalOfRows()), 0.0);
}

}  // namespace
