/// Grey values between pixels.
#include "finder/Grey.h"

#include <gtest/gtest.h>

using namespace velmora;

namespace {

using finder::GreyAt;

const cv::Mat PICTURE = (cv::Mat_<unsigned char>(3, 4) << 0, 10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 200);

TEST(Grey, OfAPixelIsItsValue) {
  for (int row = 0; row < 2; ++row) {
    for (int column = 0; column < 3; ++column) {
      EXPECT_EQ(GreyAt(PICTURE, cv::Point2d(column, row)), PICTURE.at<unsigned char>(row, column));
    }
  }
}

TEST(Grey, BetweenPixelsIsTheirMeanByNearness) {
  EXPECT_DOUBLE_EQ(GreyAt(PICTURE, {0.25, 0.0}), 2.5);
  EXPECT_DOUBLE_EQ(GreyAt(PICTURE, {0.0, 0.75}), 30.0);
  EXPECT_DOUBLE_EQ(GreyAt(PICTURE, {2.5, 1.5}), (60.0 + 70.0 + 100.0 + 200.0) / 4.0);
  EXPECT_DOUBLE_EQ(GreyAt(PICTURE, {2.75, 1.5}), 0.25 * 80.0 + 0.75 * 135.0);
}

TEST(Grey, BeyondThePictureIsThatOfItsEdge) {
  EXPECT_EQ(GreyAt(PICTURE, {-5.0, -7.0}), 0.0);
  EXPECT_EQ(GreyAt(PICTURE, {-5.0, 1.0}), 40.0);
  EXPECT_NEAR(GreyAt(PICTURE, {9.0, 0.0}), 30.0, 0.2);
  EXPECT_NEAR(GreyAt(PICTURE, {0.0, 9.0}), 80.0, 0.2);
  EXPECT_NEAR(GreyAt(PICTURE, {1e9, 1e9}), 200.0, 0.5);
}

}  // namespace
