/// Tests of the sheet's geometry.
#include "Sheet.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <stdexcept>

using world::Sheet;
using world::Surface;

namespace {

constexpr double MILLIMETRES = 25.4 / 150.0;

}  // namespace

TEST(Sheet, IsAnA4LandscapeByDefault) {
  const cv::Size2d paper = Sheet().PaperSize();
  EXPECT_NEAR(paper.width, 1753.0, 1e-9);
  EXPECT_NEAR(paper.height, 1239.0, 1e-9);
  EXPECT_NEAR(paper.width * MILLIMETRES, 297.0, 0.2);
  EXPECT_NEAR(paper.height * MILLIMETRES, 210.0, 0.2);
}

TEST(Sheet, HasItsCentresWithinEightTenthsOfTheWholeUnitTable) {
  const std::array<int, 11> x = {1467, 1349, 1231, 1113, 994, 876, 758, 640, 522, 404, 286};
  const std::array<int, 4> even = {206, 443, 679, 915};
  const std::array<int, 4> odd = {324, 560, 797, 1033};
  const std::vector<cv::Point2d> centres = Sheet().DrawingCentres();
  ASSERT_EQ(centres.size(), 44U);
  for (std::size_t i = 0; i < x.size(); ++i) {
    for (std::size_t j = 0; j < even.size(); ++j) {
      const cv::Point2d listed(x[i], i % 2 == 0 ? even[j] : odd[j]);
      EXPECT_LT(cv::norm(centres[4 * i + j] - listed), 0.8) << "row " << i << ", column " << j;
    }
  }
}

TEST(Sheet, HasRowsTwentyAndNeighboursFortyMillimetresApart) {
  const std::vector<cv::Point2d> centres = Sheet().DrawingCentres();
  EXPECT_NEAR((centres[0].x - centres[4].x) * MILLIMETRES, 20.0, 1e-3);
  EXPECT_NEAR((centres[1].y - centres[0].y) * MILLIMETRES, 40.0, 1e-3);
}

TEST(Sheet, PutsGridPointsWhereTheDrawingHasItsCentres) {
  const Sheet sheet(cv::Size(4, 11), 0.015);
  const std::vector<cv::Point2d> drawn = sheet.DrawingCentres();
  const std::vector<cv::Point3d> points = sheet.GridPoints();
  ASSERT_EQ(points.size(), drawn.size());
  for (std::size_t k = 0; k < points.size(); ++k) {
    const int i = static_cast<int>(k) / 4;
    const int j = static_cast<int>(k) % 4;
    EXPECT_DOUBLE_EQ(points[k].x, 0.015 * (2 * j + i % 2));
    EXPECT_DOUBLE_EQ(points[k].y, 0.015 * i);
    EXPECT_EQ(points[k].z, 0.0);
    const cv::Point2d steps = sheet.StepsFromDrawing(drawn[k]);
    EXPECT_NEAR(0.015 * steps.x, points[k].x, 1e-12);
    EXPECT_NEAR(0.015 * steps.y, points[k].y, 1e-12);
  }
}

TEST(Sheet, IsNotMirrored) {
  const Sheet sheet;
  const cv::Point2d origin = sheet.StepsFromDrawing({500, 500});
  const cv::Point2d right = sheet.StepsFromDrawing({600, 500}) - origin;
  const cv::Point2d down = sheet.StepsFromDrawing({500, 600}) - origin;
  EXPECT_GT(right.cross(down), 0.0);
  EXPECT_LT(right.y, 0.0);
  EXPECT_GT(down.x, 0.0);
}

TEST(Sheet, TellsInkPaperAndBackgroundApart) {
  const Sheet sheet;
  const auto at = [&](double x, double y) { return sheet.Sample(sheet.StepsFromDrawing({x, y})).surface; };
  const double radius = 8.0 / MILLIMETRES;
  EXPECT_EQ(at(1466.9, 206.25), Surface::Ink);
  EXPECT_EQ(at(1466.9 + radius - 0.5, 206.25), Surface::Ink);
  EXPECT_EQ(at(1466.9 + radius + 0.5, 206.25), Surface::Paper);
  EXPECT_EQ(at(1466.9, 206.25 + 118.11), Surface::Paper);
  EXPECT_EQ(at(1, 1), Surface::Paper);
  EXPECT_EQ(at(-1, 1), Surface::Background);
  EXPECT_EQ(at(1754, 600), Surface::Background);
  EXPECT_EQ(at(800, 1240), Surface::Background);
}

TEST(Sheet, HasItsBottomLeftCornerCutOff) {
  const Sheet sheet;
  const auto at = [&](double x, double y) { return sheet.Sample(sheet.StepsFromDrawing({x, y})).surface; };
  EXPECT_EQ(at(1, 1238), Surface::Background);
  EXPECT_EQ(at(84.5 - 2, 1141 + 2), Surface::Background);
  EXPECT_EQ(at(84.5 + 2, 1141 - 2), Surface::Paper);
  EXPECT_EQ(at(171, 1238), Surface::Paper);
  EXPECT_EQ(at(1, 1041), Surface::Paper);
  EXPECT_EQ(at(1752, 1238), Surface::Paper);
}

TEST(Sheet, SeesNoOtherSurfaceWithinItsClearance) {
  const Sheet sheet;
  cv::RNG random(5);
  for (int k = 0; k < 4000; ++k) {
    const cv::Point2d point(random.uniform(-3.0, 10.0), random.uniform(-4.0, 14.0));
    const world::SurfaceSample sample = sheet.Sample(point);
    for (int step = 0; step < 16; ++step) {
      const double angle = step * CV_PI / 8.0;
      const cv::Point2d other =
          point + 0.999 * sample.clearance * cv::Point2d(std::cos(angle), std::sin(angle));
      ASSERT_EQ(sheet.Sample(other).surface, sample.surface) << point << " and " << other;
    }
  }
}

TEST(Sheet, ShowsExactlyItsDiscsInOtherGridSizes) {
  for (const cv::Size grid : {cv::Size(3, 5), cv::Size(5, 8), cv::Size(1, 1), cv::Size(2, 1)}) {
    const Sheet sheet(grid, 0.02);
    const cv::Mat image = sheet.Draw();
    const double expected = grid.area() * CV_PI * std::pow(Sheet::STEP * Sheet::DISC_RADIUS, 2);
    cv::Mat dark;
    cv::subtract(cv::Scalar::all(255), image, dark);
    // The cut corner, and what of the last pixels is beyond the paper, is drawn half grey.
    const double outside = static_cast<double>(image.total()) - sheet.PaperSize().area() + 0.5 * 169 * 196;
    EXPECT_NEAR(cv::sum(dark)[0] / 255.0 - outside * 127.0 / 255.0, expected, 0.001 * expected + 5.0) << grid;
    for (const cv::Point2d& centre : sheet.DrawingCentres()) {
      EXPECT_EQ(image.at<uchar>(static_cast<int>(centre.y), static_cast<int>(centre.x)), 0) << grid;
    }
  }
}

TEST(Sheet, DrawsThePaperAtItsSize) {
  const cv::Mat image = Sheet().Draw(100);
  EXPECT_EQ(image.size(), cv::Size(1753, 1239));
  EXPECT_EQ(image.at<uchar>(10, 10), 255);
  EXPECT_EQ(image.at<uchar>(1230, 10), 100);
  EXPECT_EQ(image.at<uchar>(206, 1466), 0);
}

TEST(Sheet, RefusesGridsAndUnitsThatAreNotPositive) {
  EXPECT_THROW(Sheet(cv::Size(0, 11), 0.02), std::invalid_argument);
  EXPECT_THROW(Sheet(cv::Size(4, -1), 0.02), std::invalid_argument);
  EXPECT_THROW(Sheet(cv::Size(4, 11), 0.0), std::invalid_argument);
}
