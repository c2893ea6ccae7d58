/// Which points and views go, by their residuals.
#include "solver/Outliers.h"

#include <gtest/gtest.h>

#include <limits>

#include "solver/Target.h"
#include "solver/WideViews.h"

using namespace velmora;

namespace {

constexpr double HALF = 0.5;

solver::Selection Three() {
  const auto points = unit::CloseAndSmallViews(unit::DistortedCamera(), 3, 0.3, 1);
  return solver::AllOf(
      solver::TargetOf(unit::FlatTargets(3), unit::PointLists(points.begin(), points.begin() + 3)).views);
}

/// One pixel each, and ten for the points named of the second view.
solver::Residuals OffIn(const std::vector<size_t>& points) {
  solver::Residuals residuals(3, {std::vector<double>(44, 1.0)});
  for (const size_t point : points) residuals[1][0][point] = 10.0;
  return residuals;
}

std::vector<size_t> FirstPoints(size_t count) {
  std::vector<size_t> points(count);
  for (size_t i = 0; i < count; ++i) points[i] = i;
  return points;
}

TEST(Outliers, AreBeyondFourAndAHalfDeviations) {
  EXPECT_FALSE(solver::IsOutlier(4.49, 1.0));
  EXPECT_TRUE(solver::IsOutlier(4.51, 1.0));
  EXPECT_TRUE(solver::IsOutlier(std::numeric_limits<double>::infinity(), 1.0));
  EXPECT_TRUE(solver::IsOutlier(std::numeric_limits<double>::quiet_NaN(), 1.0));
}

TEST(Outliers, HardlyMoveTheDeviation) {
  solver::Residuals residuals = OffIn(FirstPoints(44));
  EXPECT_NEAR(solver::StandardDeviationOf(residuals), 1.0 / 1.177, 1e-12);
}

TEST(Outliers, AreRejectedPointByPointWhileHalfOfTheViewIsLeft) {
  const solver::Selection selection = solver::WithoutOutliers(Three(), OffIn(FirstPoints(22)), 1.0, HALF);
  EXPECT_EQ(selection.kept, (std::vector<size_t>{0, 1, 2}));
  ASSERT_EQ(selection.rejected.size(), 22U);
  EXPECT_EQ(selection.rejected.front().view, 1U);
  EXPECT_EQ(selection.rejected.front().point, 0);
  EXPECT_TRUE(selection.views[0].observations[0].weights.empty());
  ASSERT_EQ(selection.views[1].observations[0].weights.size(), 44U);
  EXPECT_EQ(selection.views[1].observations[0].weights[21], 0.0);
  EXPECT_EQ(selection.views[1].observations[0].weights[22], 1.0);
}

TEST(Outliers, AreMeasuredByTheDeviationsOfTheirPoints) {
  const auto views = unit::CloseAndSmallViews(unit::DistortedCamera(), 3, 0.3, 1);
  solver::PointDeviations deviations(3, std::vector<double>(44, 0.1));
  deviations[1][5] = 1.0;
  const solver::Target target =
      solver::TargetOf(unit::FlatTargets(3), unit::PointLists(views.begin(), views.begin() + 3), deviations);
  const double deviation = target.views[1].observations[0].deviations[5];
  ASSERT_GT(deviation, 5.0);
  const solver::Selection selection = solver::AllOf(target.views);
  solver::Residuals residuals = OffIn({5});
  residuals[1][0][5] = 4.0;
  EXPECT_TRUE(solver::WithoutOutliers(selection, residuals, 1.0, HALF).rejected.empty());
  residuals[1][0][5] = 5.0;
  const solver::Selection without = solver::WithoutOutliers(selection, residuals, 1.0, HALF);
  ASSERT_EQ(without.rejected.size(), 1U);
  EXPECT_EQ(without.rejected.front().point, 5);
  EXPECT_DOUBLE_EQ(without.rejected.front().residual, 5.0 * deviation) << "pixels";
  EXPECT_EQ(without.views[1].observations[0].deviations, target.views[1].observations[0].deviations);
}

TEST(Outliers, HaveResidualsOverTheDeviationsOfTheirPoints) {
  Camera camera;
  camera.intrinsics.values = {500.0, 500.0, 320.0, 240.0};
  Rig rig;
  rig.cameras = {camera};
  TargetView view{{},
                  {Observation{{{0.0, 0.0, 0.0}, {0.1, 0.0, 0.0}}, {{323.0, 240.0}, {370.0, 246.0}}, {}}}};
  view.rigFromTarget.t = {0.0, 0.0, 1.0};
  EXPECT_NEAR(solver::ResidualsOf({view}, rig)[0][0][0], 3.0, 1e-9);
  EXPECT_NEAR(solver::ResidualsOf({view}, rig)[0][0][1], 6.0, 1e-9);
  view.observations[0].deviations = {1.0, 2.0};
  EXPECT_NEAR(solver::ResidualsOf({view}, rig)[0][0][0], 3.0, 1e-9);
  EXPECT_NEAR(solver::ResidualsOf({view}, rig)[0][0][1], 3.0, 1e-9);
}

TEST(Outliers, TakeTheirViewAlongWhenLessThanHalfIsLeft) {
  const solver::Selection selection = solver::WithoutOutliers(Three(), OffIn(FirstPoints(23)), 1.0, HALF);
  EXPECT_EQ(selection.kept, (std::vector<size_t>{0, 2}));
  ASSERT_EQ(selection.rejected.size(), 1U);
  EXPECT_EQ(selection.rejected.front().view, 1U);
  EXPECT_EQ(selection.rejected.front().point, Rejected::WHOLE_VIEW);
  EXPECT_NEAR(selection.rejected.front().residual, std::sqrt((23.0 * 100.0 + 21.0) / 44.0), 1e-9);
}

TEST(Outliers, TakeTheirViewAlongWhenTheOthersDoNotSpanTheTarget) {
  // All but the two first rows of eleven.
  std::vector<size_t> points;
  for (size_t i = 8; i < 44; ++i) points.push_back(i);
  const solver::Residuals residuals = OffIn(points);
  EXPECT_EQ(solver::WithoutOutliers(Three(), residuals, 1.0, 0.1).kept, (std::vector<size_t>{0, 2}));
  // As many points, all over the target.
  points.clear();
  for (size_t i = 0; i < 44; ++i) {
    if (i % 11 > 1) points.push_back(i);
  }
  ASSERT_EQ(points.size(), 36U);
  EXPECT_EQ(solver::WithoutOutliers(Three(), OffIn(points), 1.0, 0.1).kept, (std::vector<size_t>{0, 1, 2}));
}

TEST(Outliers, OfSelectionsKeepWhatWasRejectedBefore) {
  solver::Selection before = Three();
  before.kept = {0, 1, 3};
  before.rejected.push_back({2, Rejected::WHOLE_VIEW, 9.0, "no grid"});
  before.tooFewAgree = true;
  const solver::Selection selection = solver::WithoutOutliers(before, OffIn({7}), 1.0, HALF);
  ASSERT_EQ(selection.rejected.size(), 2U);
  EXPECT_EQ(selection.rejected[0].view, 2U);
  EXPECT_EQ(selection.rejected[1].point, 7);
  EXPECT_EQ(selection.kept, before.kept);
  EXPECT_TRUE(selection.tooFewAgree);
}

/// The three views as both cameras of a pair saw them, the second camera with residuals of its own.
solver::Selection ThreeOfAPair() {
  solver::Selection selection = Three();
  for (TargetView& view : selection.views) view.observations.push_back(view.observations.front());
  return selection;
}

TEST(Outliers, OfAPairAreNamedWithTheirCamera) {
  solver::Residuals residuals(3, {std::vector<double>(44, 1.0), std::vector<double>(44, 1.0)});
  residuals[2][1][9] = 10.0;
  const solver::Selection selection = solver::WithoutOutliers(ThreeOfAPair(), residuals, 1.0, HALF);
  ASSERT_EQ(selection.rejected.size(), 1U);
  EXPECT_EQ(selection.rejected[0].view, 2U);
  EXPECT_EQ(selection.rejected[0].camera, 1U);
  EXPECT_EQ(selection.rejected[0].point, 9);
  EXPECT_TRUE(selection.views[2].observations[0].weights.empty());
  EXPECT_EQ(selection.views[2].observations[1].weights[9], 0.0);
}

TEST(Outliers, TakeOneImageOfAPairAlongAndLeaveTheOther) {
  solver::Residuals residuals(3, {std::vector<double>(44, 1.0), std::vector<double>(44, 1.0)});
  residuals[1][0].assign(44, 10.0);
  solver::Selection selection = solver::WithoutOutliers(ThreeOfAPair(), residuals, 1.0, HALF);
  EXPECT_EQ(selection.kept, (std::vector<size_t>{0, 1, 2}));
  EXPECT_TRUE(selection.views[1].observations[0].IsEmpty());
  EXPECT_EQ(selection.views[1].observations[1].Count(), 44.0);
  ASSERT_EQ(selection.rejected.size(), 1U);
  EXPECT_EQ(selection.rejected[0].point, Rejected::WHOLE_VIEW);
  EXPECT_EQ(selection.rejected[0].camera, 0U);
  residuals[1][1].assign(44, 10.0);
  selection = solver::WithoutOutliers(ThreeOfAPair(), residuals, 1.0, HALF);
  EXPECT_EQ(selection.kept, (std::vector<size_t>{0, 2}));
  EXPECT_EQ(selection.rejected.size(), 2U);
}

TEST(Residuals, AreDistancesInEachCameraAndInfiniteBehindIt) {
  Rig rig;
  rig.cameras.resize(2);
  for (Camera& camera : rig.cameras) camera.intrinsics.values = {100.0, 100.0, 50.0, 60.0};
  rig.cameras[1].cameraFromRig.t = {0.0, 0.0, -3.0};
  const Observation observed{{{1.0, 0.0, 0.0}}, {{103.0, 64.0}}, {}};
  const TargetView view{{cv::Matx33d::eye(), {0.0, 0.0, 2.0}}, {observed, observed}};
  const solver::Residuals residuals = solver::ResidualsOf({view, {view.rigFromTarget, {{}, {}}}}, rig);
  EXPECT_NEAR(residuals[0][0][0], 5.0, 1e-12);
  EXPECT_EQ(residuals[0][1][0], std::numeric_limits<double>::infinity());
  EXPECT_TRUE(residuals[1][0].empty());
}

}  // namespace
