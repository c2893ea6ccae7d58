/// Images of the review: a snapshot with the grid reprojected through the model.
#include "imaging/Review.h"

#include <gtest/gtest.h>

#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>

#include "Matchers.h"
#include "model/TargetGeometry.h"

using namespace velmora;

namespace {

class Review : public ::testing::Test {
 protected:
  Review() {
    view_.snapshot = cv::Mat(480, 640, CV_8UC3, cv::Scalar(40, 80, 120));
    view_.blankSize = {320, 240};
    view_.number = 2;
    view_.total = 7;
    view_.patternSize = {4, 11};
    const cv::Matx33d K(500, 0, 320, 0, 505, 240, 0, 0, 1);
    const cv::Vec<double, 5> D(-0.2, 0.05, 0.001, -0.001, 0.0);
    cv::projectPoints(MakeObjectTemplate({4, 11}, 0.02F), cv::Vec3d(0.1, -0.2, 0.3),
                      cv::Vec3d(-0.07, -0.1, 0.5), K, D, result_.projected);
    result_.error = 0.12345678;
    result_.rms = 0.25F;
  }

  static void Put(cv::Mat& image, const char* text, int y) {
    cv::putText(image, text, {10, y}, cv::FONT_HERSHEY_SIMPLEX, 0.5, cv::Scalar(255, 255, 255), 1, cv::LINE_8,
                false);
  }

  void DrawProjectedGrid(cv::Mat& image) const {
    const std::vector<cv::Point2d>& projected = result_.projected;
    cv::drawChessboardCorners(image, view_.patternSize,
                              std::vector<cv::Point2f>(projected.begin(), projected.end()), true);
  }

  ReviewView view_;
  ReviewResult result_;
};

TEST_F(Review, TellsTheFrameItsErrorAndTheTotal) {
  EXPECT_EQ(ReviewTexts(view_, &result_),
            (std::vector<std::string>{"Frame: 2 / 7", "Error: 0.123457", "Total RMS: 0.25"}));
}

TEST_F(Review, TellsOnlyTheFrameWithoutAResult) {
  EXPECT_EQ(ReviewTexts(view_, nullptr), (std::vector<std::string>{"Frame: 2 / 7"}));
}

TEST_F(Review, WritesNumbersInTheDefaultNotation) {
  result_.error = 1234567.0;
  result_.rms = -1.0F;
  EXPECT_EQ(ReviewTexts(view_, &result_)[1], "Error: 1.23457e+06");
  EXPECT_EQ(ReviewTexts(view_, &result_)[2], "Total RMS: -1");
}

TEST_F(Review, DrawsTextsAndProjectedGridOnTheSnapshot) {
  cv::Mat expected = view_.snapshot.clone();
  Put(expected, "Frame: 2 / 7", 20);
  Put(expected, "Error: 0.123457", 40);
  Put(expected, "Total RMS: 0.25", 60);
  DrawProjectedGrid(expected);
  EXPECT_SAME_MAT(DrawReview(view_, &result_), expected);
}

TEST_F(Review, DrawsNoGridWithoutAResult) {
  cv::Mat expected = view_.snapshot.clone();
  Put(expected, "Frame: 2 / 7", 20);
  EXPECT_SAME_MAT(DrawReview(view_, nullptr), expected);
}

TEST_F(Review, LeavesTheSnapshotAlone) {
  const cv::Mat before = view_.snapshot.clone();
  DrawReview(view_, &result_);
  EXPECT_SAME_MAT(view_.snapshot, before);
}

TEST_F(Review, DrawsOnBlackWithoutAPicture) {
  view_.snapshot = cv::Mat();
  cv::Mat expected = cv::Mat::zeros(240, 320, CV_8UC3);
  Put(expected, "Frame: 2 / 7", 20);
  EXPECT_SAME_MAT(DrawReview(view_, nullptr), expected);
}

TEST_F(Review, DrawsOnGreySnapshotsToo) {
  view_.snapshot = cv::Mat(480, 640, CV_8UC1, cv::Scalar(40));
  cv::Mat expected = view_.snapshot.clone();
  Put(expected, "Frame: 2 / 7", 20);
  Put(expected, "Error: 0.123457", 40);
  Put(expected, "Total RMS: 0.25", 60);
  DrawProjectedGrid(expected);
  EXPECT_SAME_MAT(DrawReview(view_, &result_), expected);
}

}  // namespace
