/// Cameras that are calibrated together with the shape of the sheet.
#include "solver/SheetCalibration.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "solver/CameraCalibration.h"
#include "solver/ShapedViews.h"
#include "solver/Target.h"

using namespace velmora;
using unit::ShapedSheet;

namespace {

solver::BundleOptions Options() {
  solver::BundleOptions options;
  options.parameters = CLASSIC_PARAMETERS;
  return options;
}

/// A strongly bent sheet, of which one disc of each view is not where it should be.
unit::PointLists SpoiltViews() {
  ShapedSheet sheet;
  sheet.bend = {0.0, 0.001, 0.003};
  unit::PointLists views = unit::ViewsOf(sheet, unit::DistortedCamera(), 14, 0.05, 6);
  for (size_t i = 0; i < views.size(); ++i) views[i][3 * i] += cv::Point2d(3.0, 3.0);
  return views;
}

double PointsOf(const Solution& solution) {
  return CountOf(solution.views);
}

TEST(SheetCalibration, SelectsAnewByTheShape) {
  const unit::PointLists views = SpoiltViews();
  const auto targets = solver::TargetOf(unit::Targets(views), views).views;
  const Solution flat = solver::CalibrateCamera(targets, unit::FRAME, true, Options());
  const solver::SheetShapes shapes =
      solver::ShapesOf(targets, flat, SheetLevel::FreePointsProportions, Options());
  ASSERT_GT(shapes.rungs.size(), 3U);
  // All from the same points: those that are spoilt are left out, hardly any other one is.
  for (const solver::SheetRung& rung : shapes.rungs) {
    EXPECT_EQ(PointsOf(rung.solution), PointsOf(shapes.rungs.front().solution));
    EXPECT_EQ(rung.solution.kept.size(), views.size());
    EXPECT_TRUE(rung.solution.robust);
  }
  EXPECT_GT(PointsOf(shapes.rungs.front().solution), 44.0 * 14.0 - 14.0 - 4.0);
  EXPECT_LE(PointsOf(shapes.rungs.front().solution), 44.0 * 14.0 - 14.0);
}

TEST(SheetCalibration, KeepsAllWhereNothingIsToBeLeftOut) {
  const unit::PointLists views = SpoiltViews();
  const auto targets = solver::TargetOf(unit::Targets(views), views).views;
  const Solution flat = solver::CalibrateCamera(targets, unit::FRAME, false, Options());
  const solver::SheetShapes shapes = solver::ShapesOf(targets, flat, SheetLevel::BentProportions, Options());
  for (const solver::SheetRung& rung : shapes.rungs) {
    EXPECT_EQ(PointsOf(rung.solution), 44.0 * 14.0);
    EXPECT_FALSE(HasFreePoints(rung.level));
  }
}

TEST(SheetCalibration, OfFlatSheetsIsWhatItWas) {
  const unit::PointLists views = SpoiltViews();
  const auto targets = solver::TargetOf(unit::Targets(views), views).views;
  const Solution flat = solver::CalibrateCamera(targets, unit::FRAME, true, Options());
  const solver::SheetShapes shapes = solver::ShapesOf(targets, flat, SheetLevel::Flat, Options());
  ASSERT_EQ(shapes.rungs.size(), 1U);
  EXPECT_EQ(shapes.rungs.front().solution.cost, flat.cost);
  EXPECT_EQ(solver::Finished(shapes, 0, Options()).cost, flat.cost);
}

TEST(SheetCalibration, FinishesWithTheDiscsCorrected) {
  ShapedSheet sheet;
  sheet.bend = {0.0, 0.0, 0.001};
  const unit::PointLists views = unit::ViewsOf(sheet, unit::DistortedCamera(), 14, 0.05, 7);
  const auto targets = solver::TargetOf(unit::Targets(views), views).views;
  solver::BundleOptions options = Options();
  options.discRadius = 0.008;
  const Solution flat = solver::CalibrateCamera(targets, unit::FRAME, true, options);
  const solver::SheetShapes shapes = solver::ShapesOf(targets, flat, SheetLevel::BentProportions, options);
  const Solution finished = solver::Finished(shapes, 2, options);
  EXPECT_EQ(finished.sheet.level, SheetLevel::Bent);
  EXPECT_EQ(finished.discRadius, 0.008);
  EXPECT_EQ(finished.kept, shapes.rungs[2].solution.kept);
  ASSERT_NE(finished.flat, nullptr);
  EXPECT_EQ(finished.flat->cost, shapes.rungs.front().solution.cost);
  // What was observed, moved by what the discs' centres are off.
  double most = 0.0;
  for (size_t i = 0; i < finished.views.size(); ++i) {
    const auto& pixels = finished.views[i].observations[0].image;
    for (size_t k = 0; k < pixels.size(); ++k) {
      most = std::max(most, cv::norm(pixels[k] - targets[finished.kept[i]].observations[0].image[k]));
    }
  }
  EXPECT_GT(most, 0.01);
  EXPECT_LT(most, 2.0);
}

}  // namespace
