/// What is said of sheets whose shape was estimated.
#include "quality/SheetRemarks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "Calibrator.h"
#include "quality/Assessment.h"
#include "quality/SheetChoice.h"
#include "solver/ShapedViews.h"
#include "solver/WideViews.h"

using namespace velmora;
using unit::ShapedSheet;

namespace {

unit::PointLists Views(const ShapedSheet& sheet, std::uint64_t seed, int count = 15, double noise = 0.1) {
  return unit::ViewsOf(sheet, unit::DistortedCamera(), count, noise, seed);
}

SparseResult Solved(const unit::PointLists& views, SheetShape shape) {
  SparseOptions options;
  options.sheet = shape;
  return SolveIntrinsicsWithSheet(unit::Targets(views), views, unit::FRAME, Calibrator::MODEL_CLASSIC,
                                  options);
}

double ErrorOf(const SparseResult& result, const unit::PointLists& views) {
  return unit::TrueErrorOf(result, unit::DistortedCamera(), views);
}

CalibrationVerdict VerdictOn(const unit::PointLists& views, const SparseResult& result) {
  return AssessIntrinsics(unit::Targets(views), views, unit::FRAME, result);
}

std::string TextOf(const CalibrationVerdict& verdict) {
  std::string text;
  for (const auto& remark : verdict.remarks) text += remark.reason + " " + remark.advice + "\n";
  return text;
}

TEST(VerdictOnShapes, TellsTheBendThatIsInTheResult) {
  ShapedSheet sheet;
  sheet.bend = {0.0, 0.0, 0.001};
  const unit::PointLists views = Views(sheet, 8, 20);
  const CalibrationVerdict verdict = VerdictOn(views, Solved(views, SheetShape::Auto));
  EXPECT_EQ(verdict.grade, CalibrationVerdict::Grade::Good) << verdict.ToJson();
  EXPECT_NE(
      TextOf(verdict).find("The sheet is bent by 1.0 mm. This is taken into account; projections would be "
                           "off by "),
      std::string::npos)
      << TextOf(verdict);
  EXPECT_EQ(verdict.sheetBend, 0.0) << "it moves nothing any more";
  EXPECT_EQ(verdict.systematicInData, 0.0);
  EXPECT_EQ(verdict.sheet.model, "bent");
  ASSERT_EQ(verdict.sheet.points.size(), 44U);
  EXPECT_NEAR(verdict.sheet.bend, 0.001, 3.0 * verdict.sheet.bendDeviation);
  EXPECT_LT(verdict.sheet.bendDeviation, 0.0002);
  EXPECT_GT(verdict.sheet.shift, 1.0);
  EXPECT_GT(verdict.sheet.flatRms, 0.15);
  // The frame is the grid's own.
  EXPECT_NEAR(verdict.sheet.points.front().x, 0.0, 0.001);
  EXPECT_NEAR(verdict.sheet.points.back().y, 0.2, 0.001);
}

TEST(VerdictOnShapes, CountsPosesOfASheetThatBendsInAnotherWayInEachView) {
  ShapedSheet sheet;
  sheet.bend = {0.0, 0.0, 0.001};
  cv::RNG random(5);
  const auto poses = world::SampleViews(unit::DistortedCamera(), 4, 31, unit::PrintedGrid());
  const std::vector<cv::Point3d> points = unit::PointsOf(sheet, random);
  unit::PointLists views;
  for (size_t i = 0; i < 20; ++i) {
    std::vector<cv::Point3d> own = points;
    unit::Bend({random.gaussian(5e-4), random.gaussian(5e-4), random.gaussian(5e-4)}, own);
    views.push_back(world::ProjectPoints(unit::DistortedCamera().lens, own, poses[i % poses.size()]));
    for (cv::Point2d& pixel : views.back())
      pixel += cv::Point2d(random.gaussian(0.05), random.gaussian(0.05));
  }
  SparseOptions options;
  options.sheet = SheetShape::Bent;
  const SparseResult result =
      SolveIntrinsicsWithSheet(unit::Targets(views), views, unit::FRAME, Calibrator::MODEL_CLASSIC, options);
  ASSERT_TRUE(result.solution->sheet.HasOwnBends());
  const CalibrationVerdict verdict = VerdictOn(views, result);
  EXPECT_EQ(verdict.poses, 4);
  EXPECT_NE(verdict.grade, CalibrationVerdict::Grade::Good) << verdict.ToJson();
}

TEST(VerdictOnShapes, TellsWhatIsWrongWithThePrint) {
  ShapedSheet sheet;
  sheet.stretch = -0.01;
  sheet.misprint = 0.0001;
  const unit::PointLists views = Views(sheet, 9, 20, 0.05);
  const CalibrationVerdict verdict = VerdictOn(views, Solved(views, SheetShape::Auto));
  EXPECT_NE(TextOf(verdict).find(" % short along its columns. Measure it"), std::string::npos)
      << TextOf(verdict);
  EXPECT_EQ(TextOf(verdict).find("The dots are off their places by 0.1"), 0U) << TextOf(verdict);
  EXPECT_NE(TextOf(verdict).find("This is taken into account; projections would be off by"),
            std::string::npos)
      << TextOf(verdict);
  EXPECT_EQ(TextOf(verdict).find("is bent"), std::string::npos) << TextOf(verdict);
  EXPECT_EQ(verdict.sheet.model, "free");
  EXPECT_NEAR(verdict.sheet.stretch, -0.01, 0.002);
  EXPECT_NEAR(verdict.sheet.misprint, std::sqrt(2.0) * 0.0001, 0.00004);
}

TEST(VerdictOnShapes, TellsThatTheBendChanges) {
  ShapedSheet sheet;
  sheet.bend = {0.0, 0.0, 0.0005};
  sheet.changing = 0.001;
  const unit::PointLists views = Views(sheet, 10, 20);
  const CalibrationVerdict verdict = VerdictOn(views, Solved(views, SheetShape::Auto));
  EXPECT_NE(TextOf(verdict).find("The sheet's bend changes from view to view by 0."), std::string::npos)
      << verdict.ToJson();
  EXPECT_EQ(verdict.sheet.bends.size(), views.size());
  EXPECT_GT(verdict.sheet.bendChanges, 0.0001);
}

TEST(VerdictOnShapes, OfAFlatSheetSaysNothingOfIt) {
  const unit::PointLists views = Views({}, 11, 20);
  const CalibrationVerdict verdict = VerdictOn(views, Solved(views, SheetShape::Auto));
  EXPECT_TRUE(verdict.sheet.points.empty());
  EXPECT_EQ(verdict.ToJson().find("\"sheet\""), std::string::npos);
  EXPECT_EQ(TextOf(verdict).find("sheet is bent"), std::string::npos);
}

TEST(VerdictOnShapes, HasDeviationsThatCountTheShape) {
  // About as large as the true errors, over many sets.
  ShapedSheet sheet;
  sheet.bend = {0.0003, -0.0002, 0.0008};
  sheet.changing = 0.0002;
  double told = 0.0;
  double truth = 0.0;
  for (std::uint64_t seed = 1; seed <= 12; ++seed) {
    const unit::PointLists views = Views(sheet, seed, 15);
    const SparseResult result = Solved(views, SheetShape::Auto);
    const CalibrationVerdict verdict = VerdictOn(views, result);
    told += std::pow(std::max(verdict.deviationInData, verdict.jackknifeInData), 2);
    truth += std::pow(ErrorOf(result, views), 2);
  }
  EXPECT_GT(std::sqrt(told / truth), 0.7);
  EXPECT_LT(std::sqrt(told / truth), 1.7);
}

}  // namespace
