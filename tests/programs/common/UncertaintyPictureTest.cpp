/// The picture of how sure projections are.
#include "common/UncertaintyPicture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

const cv::Size FRAME(640, 480);

/// Ten times as unsure at the right as at the left, without a ray in the upper left corner.
CalibrationVerdict Assessed() {
  CalibrationVerdict verdict;
  verdict.grade = CalibrationVerdict::Grade::Good;
  verdict.dataArea = {{80.0F, 60.0F}, {560.0F, 60.0F}, {560.0F, 420.0F}, {80.0F, 420.0F}};
  verdict.deviationMap.create(30, 40, CV_64F);
  for (int row = 0; row < 30; ++row) {
    for (int column = 0; column < 40; ++column) {
      verdict.deviationMap.at<double>(row, column) = row < 10 && column < 10
                                                         ? std::numeric_limits<double>::quiet_NaN()
                                                         : 0.05 * std::pow(10.0, column / 39.0);
    }
  }
  return verdict;
}

/// The colour at a pixel of the camera's image.
cv::Vec3b At(const cv::Mat& picture, double x, double y) {
  const common::UncertaintyLayout layout(FRAME);
  const double zoom = static_cast<double>(layout.map.width) / FRAME.width;
  return picture.at<cv::Vec3b>(layout.map.y + cvRound(y * zoom), layout.map.x + cvRound(x * zoom));
}

int Apart(const cv::Vec3b& a, const cv::Vec3b& b) {
  return cvRound(cv::norm(a, b, cv::NORM_INF));
}

TEST(UncertaintyPicture, HasTheShapeOfTheImageBesideItsScale) {
  for (const cv::Size& frame : {FRAME, cv::Size(480, 640), cv::Size(1920, 1080), cv::Size(64, 48)}) {
    const common::UncertaintyLayout layout(frame);
    const cv::Mat picture = common::DrawUncertainty(Assessed(), frame, {});
    EXPECT_EQ(picture.size(), layout.picture);
    EXPECT_EQ(picture.type(), CV_8UC3);
    EXPECT_EQ(std::max(layout.map.width, layout.map.height), 800);
    EXPECT_NEAR(static_cast<double>(layout.map.width) / layout.map.height,
                static_cast<double>(frame.width) / frame.height, 0.01);
    const cv::Rect whole(cv::Point(), layout.picture);
    EXPECT_EQ(layout.map & whole, layout.map);
    EXPECT_EQ(layout.scale & whole, layout.scale);
    EXPECT_EQ((layout.map & layout.scale).area(), 0);
  }
}

TEST(UncertaintyPicture, IsGreyWithoutDataAndWithoutARay) {
  const cv::Mat picture = common::DrawUncertainty(Assessed(), FRAME, {});
  EXPECT_EQ(At(picture, 20, 240), common::NO_DATA);   // left of the data
  EXPECT_EQ(At(picture, 600, 450), common::NO_DATA);  // right of and below them
  EXPECT_EQ(At(picture, 120, 100), common::NO_DATA);  // within them, without a ray
  EXPECT_GT(Apart(At(picture, 230, 260), common::NO_DATA), 30);
  EXPECT_GT(Apart(At(picture, 520, 380), common::NO_DATA), 30);
}

TEST(UncertaintyPicture, HasTheColoursOfItsScale) {
  const cv::Mat picture = common::DrawUncertainty(Assessed(), FRAME, {});
  const common::UncertaintyLayout layout(FRAME);
  const auto nearest = [&](const cv::Vec3b& colour) {
    int best = 0;
    for (int y = 0; y < layout.scale.height; ++y) {
      const auto at = [&](int row) {
        return Apart(picture.at<cv::Vec3b>(layout.scale.y + row, layout.scale.x + 3), colour);
      };
      if (at(y) < at(best)) best = y;
    }
    return static_cast<double>(best) / layout.scale.height;
  };
  // The standard deviations of the data: equal factors over equal distances, the largest at the top of the
  // scale.
  EXPECT_GT(nearest(At(picture, 90, 350)), 0.9);
  EXPECT_NEAR(nearest(At(picture, 317, 350)), 0.5, 0.1);
  EXPECT_LT(nearest(At(picture, 550, 350)), 0.1);
}

TEST(UncertaintyPicture, ShowsTheCirclesThatWereSeenAndTheirHull) {
  const cv::Mat without = common::DrawUncertainty(Assessed(), FRAME, {});
  const cv::Mat with = common::DrawUncertainty(Assessed(), FRAME, {{{400.0, 350.0}}, {{450.0, 350.0}}});
  for (const double x : {400.0, 450.0}) EXPECT_GT(Apart(At(with, x, 350), At(without, x, 350)), 30);
  EXPECT_EQ(At(with, 425, 350), At(without, 425, 350));
  EXPECT_LT(Apart(At(without, 300, 420), {255, 255, 255}), 30);
}

TEST(UncertaintyPicture, HasLinesAtRoundValuesWithinTheData) {
  EXPECT_EQ(common::UncertaintyLevels(0.06, 1.1), (std::vector<double>{0.1, 0.2, 0.5, 1.0}));
  EXPECT_EQ(common::UncertaintyLevels(3.0, 40.0), (std::vector<double>{5.0, 10.0, 20.0}));
  EXPECT_TRUE(common::UncertaintyLevels(0.0, 1.0).empty());
  EXPECT_TRUE(common::UncertaintyLevels(1.0, std::numeric_limits<double>::infinity()).empty());
  // 0.1 px is at 39 lg 2 = 11.7 cells, the middle of which are half a cell further right.
  const cv::Mat picture = common::DrawUncertainty(Assessed(), FRAME, {});
  double whitest = 0.0;
  double at = 0.0;
  for (double x = 180.0; x < 215.0; x += 0.5) {
    const cv::Vec3b colour = At(picture, x, 400);
    const double white = std::min({colour[0], colour[1], colour[2]});
    if (white > whitest) at = x;
    whitest = std::max(whitest, white);
  }
  EXPECT_GT(whitest, 150.0);
  EXPECT_NEAR(at, (39.0 * std::log10(2.0) + 0.5) * 16.0 - 0.5, 4.0);
}

TEST(UncertaintyPicture, HasATitleAboveTheMapThatMayBeAnotherOne) {
  const common::UncertaintyLayout layout(FRAME);
  const auto parts = [&](const std::string& title) {
    const cv::Mat picture = common::DrawUncertainty(Assessed(), FRAME, {}, title);
    return std::pair(picture.rowRange(0, layout.map.y).clone(),
                     picture.rowRange(layout.map.y, picture.rows).clone());
  };
  const auto [usual, below] = parts("");
  const auto [other, belowOther] = parts("Another camera");
  const auto [spelt, belowSpelt] = parts("Standard deviation of projections. Verdict: good");
  EXPECT_GT(cv::norm(usual, other, cv::NORM_INF), 100.0);
  EXPECT_EQ(cv::norm(usual, spelt, cv::NORM_INF), 0.0);
  EXPECT_EQ(cv::norm(below, belowOther, cv::NORM_INF), 0.0);
}

TEST(UncertaintyPicture, OfNoResultIsGrey) {
  const cv::Mat picture = common::DrawUncertainty({}, FRAME, {{{100.0, 100.0}}});
  EXPECT_EQ(At(picture, 320, 240), common::NO_DATA);
  const common::UncertaintyLayout layout(FRAME);
  EXPECT_EQ(picture.at<cv::Vec3b>(layout.scale.y + 5, layout.scale.x + 5), common::NO_DATA);
}

}  // namespace
