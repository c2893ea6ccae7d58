/// Tests of matrix comparisons.
#include "Matchers.h"

#include <gtest/gtest.h>

#include <cmath>

TEST(SameMat, WantsSizeTypeAndBitsEqual) {
  const cv::Mat a = (cv::Mat_<double>(2, 2) << 1, 2, 3, std::nan(""));
  EXPECT_TRUE(support::SameMat(a, a.clone()));
  EXPECT_FALSE(support::SameMat(a, a.reshape(1, 1)));
  cv::Mat floats;
  a.convertTo(floats, CV_32F);
  EXPECT_FALSE(support::SameMat(a, floats));
  cv::Mat b = a.clone();
  b.at<double>(1, 0) = std::nextafter(3.0, 4.0);
  EXPECT_FALSE(support::SameMat(a, b));
}

TEST(SameMat, LooksThroughViewsIntoLargerMatrices) {
  cv::Mat large(10, 10, CV_8UC3, cv::Scalar(1, 2, 3));
  const cv::Mat view = large(cv::Rect(2, 3, 4, 5));
  EXPECT_TRUE(support::SameMat(view, view.clone()));
  large.at<cv::Vec3b>(3, 6) = cv::Vec3b(9, 9, 9);
  EXPECT_TRUE(support::SameMat(view, cv::Mat(5, 4, CV_8UC3, cv::Scalar(1, 2, 3))));
}

TEST(SameMat, SaysWhereMatricesDiffer) {
  const cv::Mat a = cv::Mat::zeros(3, 3, CV_8UC1);
  cv::Mat b = a.clone();
  b.at<uchar>(2, 1) = 7;
  const std::string message = support::SameMat(b, a).message();
  EXPECT_NE(message.find("row 2, column 1"), std::string::npos) << message;
}

TEST(MatNear, WantsEveryElementWithinTheTolerance) {
  const cv::Mat a = (cv::Mat_<float>(1, 3) << 1, 2, 3);
  const cv::Mat b = (cv::Mat_<float>(1, 3) << 1, 2.25F, 3);
  EXPECT_TRUE(support::MatNear(a, b, 0.25));
  EXPECT_FALSE(support::MatNear(a, b, 0.2));
  const cv::Mat none = (cv::Mat_<float>(1, 3) << 1, 2, NAN);
  EXPECT_FALSE(support::MatNear(none, none, 1.0));
}

TEST(MatNear, LooksAtAllChannels) {
  const cv::Mat a(4, 4, CV_8UC3, cv::Scalar(10, 20, 30));
  const cv::Mat b(4, 4, CV_8UC3, cv::Scalar(10, 20, 33));
  EXPECT_TRUE(support::MatNear(a, b, 3.0));
  EXPECT_FALSE(support::MatNear(a, b, 2.0));
}
