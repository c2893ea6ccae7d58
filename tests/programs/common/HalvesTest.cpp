/// Cutting a frame in two.
#include "common/Halves.h"

#include <gtest/gtest.h>

using common::Camera;
using common::HalfOf;
using common::Split;

namespace {

/// Every pixel tells its place: 10 * row + column.
cv::Mat Numbered(int rows, int columns) {
  cv::Mat frame(rows, columns, CV_8UC1);
  for (int row = 0; row < rows; ++row) {
    for (int column = 0; column < columns; ++column) {
      frame.at<uchar>(row, column) = cv::saturate_cast<uchar>(10 * row + column);
    }
  }
  return frame;
}

void ExpectPart(const cv::Mat& half, const cv::Mat& frame, const cv::Rect& part) {
  ASSERT_EQ(half.size(), part.size());
  ASSERT_EQ(half.type(), frame.type());
  EXPECT_EQ(cv::norm(half, frame(part), cv::NORM_INF), 0.0);
}

TEST(Halves, AVerticalSplitCutsLeftFromRight) {
  const cv::Mat frame = Numbered(5, 8);
  ExpectPart(HalfOf(frame, Split::Vertical, Camera::Left), frame, {0, 0, 4, 5});
  ExpectPart(HalfOf(frame, Split::Vertical, Camera::Right), frame, {4, 0, 4, 5});
}

TEST(Halves, AHorizontalSplitCutsUpperFromLower) {
  const cv::Mat frame = Numbered(6, 3);
  ExpectPart(HalfOf(frame, Split::Horizontal, Camera::Left), frame, {0, 0, 3, 3});
  ExpectPart(HalfOf(frame, Split::Horizontal, Camera::Right), frame, {0, 3, 3, 3});
}

TEST(Halves, AnOddLastColumnOrRowBelongsToNeither) {
  const cv::Mat frame = Numbered(7, 9);
  ExpectPart(HalfOf(frame, Split::Vertical, Camera::Right), frame, {4, 0, 4, 7});
  ExpectPart(HalfOf(frame, Split::Horizontal, Camera::Right), frame, {0, 3, 9, 3});
}

TEST(Halves, AHalfOwnsItsPixels) {
  cv::Mat frame = Numbered(4, 4);
  const cv::Mat half = HalfOf(frame, Split::Vertical, Camera::Right);
  frame.setTo(255);
  EXPECT_EQ(half.at<uchar>(1, 0), 12);
  EXPECT_TRUE(half.isContinuous());
}

TEST(Halves, FramesOfSeveralChannelsKeepThem) {
  EXPECT_EQ(HalfOf(cv::Mat(4, 4, CV_8UC3, cv::Scalar(1, 2, 3)), Split::Vertical, Camera::Left).type(),
            CV_8UC3);
  EXPECT_EQ(HalfOf(cv::Mat(4, 4, CV_8UC4, cv::Scalar(1, 2, 3, 4)), Split::Vertical, Camera::Left).type(),
            CV_8UC4);
}

TEST(Halves, AFrameTooSmallToCutGivesEmptyHalves) {
  EXPECT_TRUE(HalfOf(Numbered(5, 1), Split::Vertical, Camera::Left).empty());
  EXPECT_TRUE(HalfOf(Numbered(5, 1), Split::Vertical, Camera::Right).empty());
  EXPECT_TRUE(HalfOf(Numbered(1, 5), Split::Horizontal, Camera::Right).empty());
  EXPECT_TRUE(HalfOf(cv::Mat(), Split::Vertical, Camera::Left).empty());
}

}  // namespace
