/// The drawing of the pose to reach.
#include "assistant/AssistantDrawing.h"

#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/imgproc.hpp>

#include "Matchers.h"

using namespace velmora;

namespace {

const cv::Scalar PALETTE[] = {{0, 0, 255},   {0, 128, 255}, {0, 200, 200}, {0, 255, 0},
                              {200, 200, 0}, {255, 0, 0},   {255, 0, 255}};

class TargetDrawn : public ::testing::Test {
 protected:
  TargetDrawn() {
    for (int row = 0; row < 8; ++row) {
      for (int column = 0; column < 3; ++column) {
        circles_.emplace_back(560.0F - 60.0F * static_cast<float>(row),
                              90.0F + 120.0F * static_cast<float>(column));
      }
    }
  }

  TargetDrawing Drawing() const {
    return {circles_, outline_, homography_, 3, scale_, score_, cv::Size(640, 480), age_};
  }

  cv::Mat Drawn() const {
    cv::Mat frame = image_.clone();
    DrawingLayers layers;
    DrawTarget(Drawing(), frame, layers);
    return frame;
  }

  cv::Point2f Mapped(const cv::Point2f& point) const {
    std::vector<cv::Point2f> mapped;
    cv::perspectiveTransform(std::vector<cv::Point2f>{point}, mapped, homography_);
    return mapped[0];
  }
  cv::Point Round(size_t corner) const { return Mapped(outline_[corner]); }
  cv::Point Cut(size_t corner) const {
    const cv::Point2f at = Mapped(outline_[corner]);
    return {static_cast<int>(at.x), static_cast<int>(at.y)};
  }

  static bool IsGreen(const cv::Mat& frame, int x) {
    const cv::Vec3b pixel = frame.at<cv::Vec3b>(478, x);
    return pixel == cv::Vec3b(0, 255, 0);
  }

  std::vector<cv::Point2f> circles_;
  std::vector<cv::Point2f> outline_ = {{20, 20}, {620, 20}, {620, 450}, {20, 450}, {90, 450}, {20, 380}};
  cv::Mat homography_ = (cv::Mat_<double>(3, 3) << 0.8, 0.07, 30.3, -0.05, 0.85, 40.7, 1e-4, -5e-5, 1.0);
  float scale_ = 0.7F;
  float score_ = 150.0F;
  double age_ = 0.3;
  cv::Mat image_ = cv::Mat(480, 640, CV_8UC3, cv::Scalar(100, 110, 120));
};

TEST_F(TargetDrawn, EqualsItsStepsOneByOne) {
  score_ = 1575.0F;
  cv::Mat figure = image_.clone();
  cv::Mat sheet = image_.clone();
  cv::Mat expected = image_.clone();
  for (size_t i = 0; i < circles_.size(); ++i) {
    cv::circle(figure, cv::Point(Mapped(circles_[i])), 6, PALETTE[(i / 3) % 7], 1, cv::LINE_AA);
  }
  const std::pair<size_t, size_t> edges[] = {{0, 1}, {1, 2}, {2, 3}, {3, 0}, {4, 5}};
  for (const auto& edge : edges) {
    cv::line(figure, Round(edge.first), Round(edge.second), cv::Scalar(0, 0, 0), 2, cv::LINE_AA);
  }
  cv::fillPoly(figure, std::vector<std::vector<cv::Point>>{{Cut(3), Cut(4), Cut(5)}}, cv::Scalar(0, 0, 0));
  cv::fillPoly(sheet, std::vector<std::vector<cv::Point>>{{Cut(0), Cut(1), Cut(2), Cut(3)}},
               cv::Scalar(255, 255, 255));
  cv::addWeighted(sheet, 0.3, expected, 0.7, 0.0, expected);
  const double weight = 1.0 - 0.5 * std::cos(5.0 * age_);
  cv::addWeighted(figure, weight, expected, 1.0 - weight, 0.0, expected);
  cv::line(expected, {480, 478}, {160, 478}, cv::Scalar(0, 255, 0), 2, cv::LINE_AA);
  EXPECT_SAME_MAT(Drawn(), expected);
}

TEST_F(TargetDrawn, ColoursTheRowsInTurnWithRedFirst) {
  homography_ = cv::Mat::eye(3, 3, CV_64F);
  age_ = CV_PI / 10.0;  // the pulse is zero: the figure is shown as it is
  scale_ = 2.0F;        // radius 18
  const cv::Mat frame = Drawn();
  for (size_t i = 0; i < circles_.size(); ++i) {
    // The strongest colour on the way across the rim.
    const cv::Scalar& colour = PALETTE[(i / 3) % 7];
    double nearest = 1e9;
    for (int x = 16; x <= 20; ++x) {
      const cv::Vec3b pixel = frame.at<cv::Vec3b>(cv::Point(circles_[i]) + cv::Point(x, 0));
      nearest = std::min(nearest, cv::norm(cv::Vec3d(pixel) - cv::Vec3d(colour[0], colour[1], colour[2])));
    }
    EXPECT_LT(nearest, 60.0) << "circle " << i;
  }
}

TEST_F(TargetDrawn, HasCirclesOfTheRadiusThatDoublePrecisionGives) {
  // 9 times the nearest float is 10.999..., which single precision rounds to 11.
  scale_ = 704.0F / 576.0F;
  const cv::Mat drawn = Drawn();
  scale_ = 1.15F;
  EXPECT_SAME_MAT(Drawn(), drawn);
  scale_ = 1.25F;
  EXPECT_FALSE(support::SameMat(Drawn(), drawn));
}

TEST_F(TargetDrawn, PulsesWithItsAge) {
  const cv::Mat first = Drawn();
  age_ = 0.5;
  EXPECT_FALSE(support::SameMat(Drawn(), first));
  age_ = 0.3 + 2.0 * CV_PI / 5.0;
  EXPECT_MAT_NEAR(Drawn(), first, 1.0);
}

TEST_F(TargetDrawn, ShowsNoBarAtTheThreshold) {
  for (const float score : {0.0F, 149.0F, 150.0F}) {
    score_ = score;
    const cv::Mat frame = Drawn();
    for (const int x : {0, 160, 310, 330, 480, 639}) EXPECT_FALSE(IsGreen(frame, x)) << score << " at " << x;
  }
}

TEST_F(TargetDrawn, ShowsABarOfHalfTheWidthHalfWay) {
  score_ = 1575.0F;
  const cv::Mat frame = Drawn();
  for (const int x : {162, 320, 478}) EXPECT_TRUE(IsGreen(frame, x)) << x;
  for (const int x : {150, 490}) EXPECT_FALSE(IsGreen(frame, x)) << x;
}

TEST_F(TargetDrawn, ShowsABarOfTheWholeWidthFarFromTheTarget) {
  for (const float score : {3000.0F, 10000.0F}) {
    score_ = score;
    const cv::Mat frame = Drawn();
    for (const int x : {2, 320, 637}) EXPECT_TRUE(IsGreen(frame, x)) << score << " at " << x;
  }
}

TEST_F(TargetDrawn, IsTheSameWhateverWasDrawnBefore) {
  const cv::Mat expected = Drawn();
  const cv::Mat first = homography_;
  DrawingLayers layers;
  cv::Mat narrow(480, 320, CV_8UC3, cv::Scalar(10, 20, 30));
  DrawTarget(Drawing(), narrow, layers);
  cv::Mat frame = image_.clone();
  DrawTarget(Drawing(), frame, layers);
  EXPECT_SAME_MAT(frame, expected);
  homography_ = (cv::Mat_<double>(3, 3) << 0.5, 0.2, 90.0, -0.1, 0.6, 70.0, 0.0, 0.0, 1.0);
  frame = image_.clone();
  DrawTarget(Drawing(), frame, layers);
  EXPECT_SAME_MAT(frame, Drawn());
  homography_ = first;
  frame = image_.clone();
  DrawTarget(Drawing(), frame, layers);
  EXPECT_SAME_MAT(frame, expected);
}

TEST_F(TargetDrawn, OutsideTheFrameLeavesTheBarAlone) {
  homography_ = (cv::Mat_<double>(3, 3) << 1.0, 0.0, 5000.0, 0.0, 1.0, 5000.0, 0.0, 0.0, 1.0);
  score_ = 1575.0F;
  cv::Mat expected = image_.clone();
  cv::line(expected, {480, 478}, {160, 478}, cv::Scalar(0, 255, 0), 2, cv::LINE_AA);
  EXPECT_SAME_MAT(Drawn(), expected);
}

}  // namespace
