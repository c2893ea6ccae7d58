/// Residuals as arrows.
#include "guided/Residuals.h"

#include <gtest/gtest.h>

#include <limits>

#include "Drawn.h"

namespace {

using guided::DrawResiduals;
using guided::ImageView;
using guided::ResidualZoom;

TEST(Residuals, AreEnlargedByARoundNumberUntilTheyAreWellSeen) {
  for (const double length : {0.001, 0.03, 0.2, 1.0, 7.0}) {
    const std::vector<cv::Point2d> residuals(40, cv::Point2d(0.6, 0.8) * length);
    const double zoom = ResidualZoom(residuals, {1280, 720});
    EXPECT_GE(zoom * length, 1280.0 / 60.0) << length;
    EXPECT_LE(zoom * length, 1280.0 / 20.0) << length;
    const double digit = zoom / std::pow(10.0, std::floor(std::log10(zoom * 1.0001)));
    EXPECT_TRUE(std::abs(digit - 1.0) < 1e-9 || std::abs(digit - 2.0) < 1e-9 || std::abs(digit - 5.0) < 1e-9)
        << zoom;
  }
}

TEST(Residuals, OneOutlierDoesNotMakeTheOthersInvisible) {
  std::vector<cv::Point2d> residuals(40, {0.1, 0.1});
  const double zoom = ResidualZoom(residuals, {640, 480});
  residuals[5] = {40.0, 0.0};
  EXPECT_EQ(ResidualZoom(residuals, {640, 480}), zoom);
}

TEST(Residuals, AreNeverMadeSmallerAndNoneAreOne) {
  EXPECT_EQ(ResidualZoom({{900.0, 0.0}}, {640, 480}), 1.0);
  EXPECT_EQ(ResidualZoom({}, {640, 480}), 1.0);
  EXPECT_EQ(ResidualZoom({{0.0, 0.0}}, {640, 480}), 1.0);
  EXPECT_EQ(ResidualZoom({{std::numeric_limits<double>::quiet_NaN(), 0.0}}, {640, 480}), 1.0);
}

TEST(Residuals, PointWhereTheResidualPoints) {
  const cv::Mat ground(480, 640, CV_8UC3, cv::Scalar::all(128));
  cv::Mat drawn = ground.clone();
  DrawResiduals({{100.0, 100.0}, {300.0, 300.0}}, {{0.5, 0.0}, {0.0, -0.5}}, 100.0,
                ImageView({640, 480}, {0, 0, 640, 480}), drawn);
  for (const cv::Point& at : {cv::Point(140, 100), cv::Point(300, 260), cv::Point(100, 100)}) {
    EXPECT_GT(DifferenceAround(drawn, ground, at, 1), 60) << at;
  }
  for (const cv::Point& at : {cv::Point(60, 100), cv::Point(300, 340), cv::Point(170, 100)}) {
    EXPECT_EQ(DifferenceAround(drawn, ground, at, 3), 0) << at;
  }
}

TEST(Residuals, AreLeftOutWhereTheyAreNoNumbersOrMissing) {
  const double none = std::numeric_limits<double>::quiet_NaN();
  cv::Mat drawn(480, 640, CV_8UC3, cv::Scalar::all(128));
  const ImageView view({640, 480}, {0, 0, 640, 480});
  EXPECT_NO_THROW(
      DrawResiduals({{1.0, 1.0}, {none, 2.0}, {3.0, 3.0}}, {{none, 0.0}, {1.0, 1.0}}, 50.0, view, drawn));
  EXPECT_NO_THROW(DrawResiduals({}, {{1.0, 1.0}}, 50.0, view, drawn));
}

}  // namespace
