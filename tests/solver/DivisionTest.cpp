/// The one-parameter distortion that views share.
#include "solver/Division.h"

#include <gtest/gtest.h>

#include <cmath>

#include "solver/Initialisation.h"
#include "solver/Target.h"
#include "solver/WideViews.h"

using namespace velmora;

namespace {

std::vector<Observation> ViewsOf(const unit::PointLists& points) {
  std::vector<Observation> observations;
  for (const TargetView& view : solver::TargetOf(unit::FlatTargets(points.size()), points).views) {
    observations.push_back(view.observations.front());
  }
  return observations;
}

TEST(Division, UndistortsWhatItDistorts) {
  for (const double lambda : {-0.9, -0.3, 0.0, 0.2}) {
    const solver::Division division(lambda, unit::FRAME);
    for (const cv::Point2d& pixel :
         {cv::Point2d(0.0, 0.0), cv::Point2d(639.0, 200.0), cv::Point2d(319.5, 239.5)}) {
      EXPECT_LT(cv::norm(division.Distorted(division.Undistorted(pixel)) - pixel), 1e-9) << lambda;
    }
  }
}

TEST(Division, OfABarrelPutsPixelsFurtherOut) {
  const solver::Division division(-0.5, unit::FRAME);
  EXPECT_GT(division.Undistorted({600.0, 239.5}).x, 620.0);
  EXPECT_LT(division.Distorted({600.0, 239.5}).x, 590.0);
}

TEST(Division, HasNoPixelForWhatAPincushionDoesNotImage) {
  EXPECT_FALSE(std::isfinite(solver::Division(0.4, unit::FRAME).Distorted({1200.0, 239.5}).x));
}

TEST(Division, OfNothingLeavesHomographiesAsTheyAre) {
  const auto views = ViewsOf(unit::CloseAndSmallViews(unit::FisheyeCamera(90.0), 1, 0.3, 1));
  const solver::Division none(0.0, unit::FRAME);
  for (const Observation& view : views) {
    EXPECT_NEAR(solver::HomographyResidual(view, none), solver::HomographyResidual(view), 1e-9);
  }
}

TEST(BestDivision, BringsCloseViewsOfWideLensesNearHomographies) {
  for (const double degrees : {90.0, 120.0}) {
    const auto views = ViewsOf(unit::CloseAndSmallViews(unit::FisheyeCamera(degrees), 6, 0.3, 2));
    const solver::Division division = solver::BestDivision(views, unit::FRAME, 5.0);
    EXPECT_LT(division.Lambda(), -0.1);
    double before = 0.0;
    double after = 0.0;
    for (const Observation& view : views) {
      before = std::max(before, solver::HomographyResidual(view));
      after = std::max(after, solver::HomographyResidual(view, division));
    }
    EXPECT_GT(before, 5.0) << degrees;
    EXPECT_LT(after, 0.3 * before) << degrees;
  }
}

TEST(BestDivision, IsNotLedAstrayByViewsInAWrongOrder) {
  auto points = unit::CloseAndSmallViews(unit::FisheyeCamera(100.0), 6, 0.3, 3);
  const double alone = solver::BestDivision(ViewsOf(points), unit::FRAME, 5.0).Lambda();
  for (const size_t i : {0U, 8U, 9U, 10U, 11U, 12U}) std::reverse(points[i].begin(), points[i].end());
  EXPECT_NEAR(solver::BestDivision(ViewsOf(points), unit::FRAME, 5.0).Lambda(), alone, 0.05);
}

TEST(BestDivision, IsNoneWhereThereIsNoDistortion) {
  const auto views =
      ViewsOf(unit::CloseAndSmallViews(world::CameraFromFieldOfView(unit::FRAME, 60.0), 6, 0.3, 4));
  EXPECT_NEAR(solver::BestDivision(views, unit::FRAME, 5.0).Lambda(), 0.0, 0.02);
}

}  // namespace
