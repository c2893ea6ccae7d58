/// The sheet in a camera's image.
#include "guided/SheetDrawing.h"

#include <gtest/gtest.h>

#include <limits>
#include <numeric>
#include <opencv2/calib3d.hpp>

#include "Camera.h"
#include "Drawn.h"
#include "Sheet.h"

namespace {

using guided::ImageView;
using guided::ShapeOfSheet;
using guided::SheetShape;

const cv::Size GRID(4, 11);
const cv::Size FRAME(640, 480);
const world::Pose POSE{{0.4, -0.3, 1.4}, {0.08, -0.06, 0.45}};

double DistanceTo(const std::vector<cv::Point2d>& outline, const cv::Point2d& point) {
  const std::vector<cv::Point2f> polygon(outline.begin(), outline.end());
  return std::abs(cv::pointPolygonTest(polygon, cv::Point2f(point), true));
}

cv::Point2d MiddleOf(const std::vector<cv::Point2d>& points) {
  return std::accumulate(points.begin(), points.end(), cv::Point2d()) *
         (1.0 / static_cast<double>(points.size()));
}

TEST(SheetDrawing, HasTheOutlineOfThePrintedSheet) {
  const world::Camera camera = world::CameraFromFieldOfView(FRAME, 60.0);
  const world::Sheet sheet;
  const auto centres = TrueCentres(camera.lens, sheet, POSE);
  const SheetShape shape = ShapeOfSheet(centres, GRID);
  ASSERT_EQ(shape.discs.size(), 44U);
  for (const cv::Point2d& corner : ProjectPoints(camera.lens, sheet.OutlinePoints(), POSE)) {
    EXPECT_LT(DistanceTo(shape.outline, corner), 1.5) << corner;
  }
}

TEST(SheetDrawing, FollowsALensThatBendsLines) {
  const world::Camera camera = world::CameraFromFieldOfView(FRAME, 80.0, {-0.28, 0.08, 0.0, 0.0, 0.0});
  const world::Sheet sheet;
  const world::Pose near{{0.3, -0.2, 1.5}, {0.1, -0.07, 0.28}};
  const auto centres = TrueCentres(camera.lens, sheet, near);
  const SheetShape shape = ShapeOfSheet(centres, GRID);
  ASSERT_EQ(shape.discs.size(), 44U);
  for (size_t i = 0; i < centres.size(); ++i) {
    EXPECT_LT(cv::norm(MiddleOf(shape.discs[i]) - centres[i]), 0.5) << i;
  }
  // A homography alone would not do.
  std::vector<cv::Point2d> steps;
  std::vector<cv::Point2d> flat;
  for (const cv::Point3d& point : sheet.GridPoints()) steps.emplace_back(point.x, point.y);
  cv::perspectiveTransform(steps, flat, cv::findHomography(steps, centres, 0));
  double beside = 0.0;
  for (size_t i = 0; i < centres.size(); ++i) beside = std::max(beside, cv::norm(flat[i] - centres[i]));
  EXPECT_GT(beside, 2.0);
}

TEST(SheetDrawing, HasNoShapeForWhatIsNoGrid) {
  const auto centres = GridCentres({100, 100}, {20, 0}, {0, 20});
  EXPECT_TRUE(ShapeOfSheet({}, GRID).discs.empty());
  EXPECT_TRUE(ShapeOfSheet({centres.begin(), centres.end() - 1}, GRID).discs.empty());
  EXPECT_TRUE(ShapeOfSheet(centres, {0, 0}).discs.empty());
  EXPECT_TRUE(ShapeOfSheet(std::vector<cv::Point2d>(44, {5.0, 5.0}), GRID).discs.empty());
  EXPECT_TRUE(ShapeOfSheet(GridCentres({100, 100}, {20, 20}, {10, 10}), GRID).discs.empty());
  auto broken = centres;
  broken[7].x = std::numeric_limits<double>::quiet_NaN();
  EXPECT_TRUE(ShapeOfSheet(broken, GRID).discs.empty());
}

TEST(SheetDrawing, TheTargetIsSeenOnAnyGround) {
  const auto centres = GridCentres({420, 120}, {0, 22}, {-22, 0});
  const SheetShape shape = ShapeOfSheet(centres, GRID);
  const cv::Rect place(0, 0, 960, 720);
  const ImageView view(FRAME, place);
  for (const cv::Mat& ground : Grounds(place.size())) {
    cv::Mat drawn = ground.clone();
    DrawTarget(centres, GRID, view, false, drawn);
    for (const cv::Point2d& point : shape.outline) {
      const cv::Point2d at = view(point);
      EXPECT_GT(DifferenceAround(drawn, ground, at, 3), 80) << at;
    }
    for (const auto& disc : shape.discs)
      EXPECT_GT(DifferenceAround(drawn, ground, view(disc.front()), 2), 80);
  }
}

TEST(SheetDrawing, LeavesTheSheetsInsideFree) {
  const auto centres = GridCentres({420, 120}, {0, 22}, {-22, 0});
  const ImageView view(FRAME, {0, 0, 960, 720});
  const cv::Mat ground(720, 960, CV_8UC3, cv::Scalar::all(128));
  cv::Mat drawn = ground.clone();
  DrawTarget(centres, GRID, view, false, drawn);
  for (size_t i = 1; i < centres.size(); ++i)
    EXPECT_EQ(DifferenceAround(drawn, ground, view(centres[i]), 3), 0);
}

TEST(SheetDrawing, FillsTheTargetsFirstCircleAlone) {
  const auto centres = GridCentres({420, 120}, {0, 22}, {-22, 0});
  const ImageView view(FRAME, {0, 0, 960, 720});
  const cv::Mat ground(720, 960, CV_8UC3, cv::Scalar::all(128));
  cv::Mat drawn = ground.clone();
  DrawTarget(centres, GRID, view, false, drawn);
  EXPECT_GT(DifferenceAround(drawn, ground, view(centres.front()), 0), 80);
  EXPECT_EQ(DifferenceAround(drawn, ground, view(centres.back()), 0), 0);
}

TEST(SheetDrawing, TheTargetChangesItsColourWhenItIsReached) {
  const auto centres = GridCentres({420, 120}, {0, 22}, {-22, 0});
  const ImageView view(FRAME, {0, 0, 960, 720});
  cv::Mat before(720, 960, CV_8UC3, cv::Scalar::all(128));
  cv::Mat reached = before.clone();
  DrawTarget(centres, GRID, view, false, before);
  DrawTarget(centres, GRID, view, true, reached);
  EXPECT_GT(DifferenceAround(before, reached, view(centres.front()), 0), 80);
}

TEST(SheetDrawing, WhatWasFoundIsLighterThanTheTarget) {
  const auto centres = GridCentres({420, 120}, {0, 22}, {-22, 0});
  const ImageView view(FRAME, {0, 0, 960, 720});
  const auto changed = [&](const auto& draw) {
    cv::Mat drawn(720, 960, CV_8UC3, cv::Scalar::all(128));
    draw(drawn);
    cv::Mat grey;
    cv::cvtColor(drawn, grey, cv::COLOR_BGR2GRAY);
    return cv::countNonZero(grey != 128);
  };
  const int target = changed([&](cv::Mat& drawn) { DrawTarget(centres, GRID, view, false, drawn); });
  const int found = changed([&](cv::Mat& drawn) { DrawFound(centres, {}, view, drawn); });
  EXPECT_GT(found, 44 * 9);
  EXPECT_LT(3 * found, target);
}

TEST(SheetDrawing, DrawsOnlyWhatWasObserved) {
  const auto centres = GridCentres({420, 120}, {0, 22}, {-22, 0});
  std::vector<double> weights(centres.size(), 1.0);
  weights[0] = 0.0;
  weights[9] = 0.0;
  const ImageView view(FRAME, {0, 0, 960, 720});
  const cv::Mat ground(720, 960, CV_8UC3, cv::Scalar::all(128));
  cv::Mat drawn = ground.clone();
  DrawFound(centres, weights, view, drawn);
  MarkFirst(centres, weights, view, drawn);
  for (size_t i = 0; i < centres.size(); ++i) {
    EXPECT_EQ(DifferenceAround(drawn, ground, view(centres[i]), 1) > 60, weights[i] > 0.0) << i;
  }
}

TEST(SheetDrawing, MarksTheFirstCircleThatWasFound) {
  const auto centres = GridCentres({420, 120}, {0, 22}, {-22, 0});
  const ImageView view(FRAME, {0, 0, 960, 720});
  cv::Mat plain(720, 960, CV_8UC3, cv::Scalar::all(128));
  DrawFound(centres, {}, view, plain);
  cv::Mat marked = plain.clone();
  MarkFirst(centres, {}, view, marked);
  EXPECT_GT(DifferenceAround(marked, plain, view(centres.front()), 9), 80);
  for (size_t i = 1; i < centres.size(); ++i) {
    EXPECT_EQ(DifferenceAround(marked, plain, view(centres[i]), 2), 0) << i;
  }
}

TEST(SheetDrawing, StandsPointsThatAreNowhere) {
  const ImageView view(FRAME, {0, 0, 320, 240});
  cv::Mat drawn(240, 320, CV_8UC3, cv::Scalar::all(128));
  const double none = std::numeric_limits<double>::quiet_NaN();
  std::vector<cv::Point2d> centres(44, {none, none});
  centres[3] = {1e30, -1e30};
  centres[4] = {std::numeric_limits<double>::infinity(), 3.0};
  EXPECT_NO_THROW(DrawTarget(centres, GRID, view, false, drawn));
  EXPECT_NO_THROW(DrawFound(centres, {}, view, drawn));
  EXPECT_NO_THROW(MarkFirst(centres, {}, view, drawn));
  EXPECT_NO_THROW(DrawTarget({}, GRID, view, false, drawn));
  EXPECT_EQ(cv::norm(drawn, cv::Mat(240, 320, CV_8UC3, cv::Scalar::all(128)), cv::NORM_INF), 0.0);
}

}  // namespace
