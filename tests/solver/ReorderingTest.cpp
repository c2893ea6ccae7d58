/// Images of a pair whose points were counted from another end of the grid.
#include "solver/Reordering.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "solver/PairViews.h"

using namespace velmora;

namespace {

/// The rows from the last to the first, as if counted from the other end.
void CountRowsFromTheOtherEnd(std::vector<cv::Point2d>& image) {
  const auto columns = static_cast<std::ptrdiff_t>(unit::GRID.width);
  std::reverse(image.begin(), image.end());
  for (auto row = image.begin(); row != image.end(); row += columns) std::reverse(row, row + columns);
}

ExtrinsicsResult Solved(const unit::PointPairs& pairs, const StereoIntrinsics& intrinsics, bool refine) {
  SparsePairOptions options;
  options.robust = true;
  const auto targets = unit::Targets(pairs.left.size());
  return refine ? RefinePairSparsely(targets, pairs.left, pairs.right, intrinsics, unit::FRAME,
                                     Calibrator::MODEL_CLASSIC, options)
                : SolveExtrinsicsSparsely(targets, pairs.left, pairs.right, intrinsics,
                                          Calibrator::MODEL_CLASSIC, options);
}

TEST(OtherOrders, AreThoseInWhichTheGridLooksTheSame) {
  // Eleven rows are their own mirror image; twelve are the same after half a turn.
  const auto odd = solver::OtherOrders(MakeObjectTemplate({4, 11}, 0.02F));
  ASSERT_EQ(odd.size(), 1U);
  EXPECT_EQ(odd[0].front(), 40U);
  EXPECT_EQ(odd[0].back(), 3U);
  const auto even = solver::OtherOrders(MakeObjectTemplate({4, 12}, 0.02F));
  ASSERT_EQ(even.size(), 1U);
  EXPECT_EQ(even[0].front(), 47U);
  EXPECT_EQ(even[0].back(), 0U);
}

TEST(Reordering, TakesTheDeviationsOfPointsAlong) {
  const auto points = MakeObjectTemplate(unit::GRID, unit::UNIT);
  const auto order = solver::OtherOrders(points).front();
  Observation observation{points, {}, {}};
  for (size_t k = 0; k < points.size(); ++k) {
    observation.image.emplace_back(static_cast<double>(k), 0.0);
    observation.deviations.push_back(1.0 + static_cast<double>(k));
  }
  TargetView view{{}, {observation}};
  solver::Reorder({0, 0, order}, view);
  const Observation& reordered = view.observations.front();
  EXPECT_NE(reordered.image[0].x, 0.0);
  for (size_t k = 0; k < points.size(); ++k) {
    EXPECT_EQ(reordered.deviations[k], 1.0 + reordered.image[k].x);
  }
}

TEST(Reordering, PutsImagesOfAPairRightWhoseRowsWereCountedFromTheOtherEnd) {
  const world::Pair rig = unit::RigFor(Calibrator::MODEL_CLASSIC);
  const StereoIntrinsics intrinsics = unit::TruePairIntrinsics(rig);
  const unit::PointPairs right = unit::Observed(rig, 12, 5, 0.1);
  unit::PointPairs wrong = right;
  CountRowsFromTheOtherEnd(wrong.right[2]);
  CountRowsFromTheOtherEnd(wrong.left[7]);
  for (const bool refine : {false, true}) {
    const ExtrinsicsResult expected = Solved(right, intrinsics, refine);
    const ExtrinsicsResult result = Solved(wrong, intrinsics, refine);
    EXPECT_LT(cv::norm(result.R, expected.R), 1e-6);
    EXPECT_LT(cv::norm(result.T, expected.T), 1e-6);
    EXPECT_NEAR(result.rms, expected.rms, 1e-6);
    EXPECT_TRUE(expected.solution->recounted.empty());
    ASSERT_EQ(result.solution->recounted.size(), 2U);
    EXPECT_EQ(result.solution->recounted[0].view + result.solution->recounted[1].view, 9U);
    EXPECT_EQ(result.solution->rejected.size(), expected.solution->rejected.size());
  }
}

TEST(Reordering, LeavesImagesAloneThatFitInNoOrder) {
  const world::Pair rig = unit::RigFor(Calibrator::MODEL_CLASSIC);
  unit::PointPairs pairs = unit::Observed(rig, 12, 5, 0.1);
  pairs.right[2] = pairs.right[3];
  const ExtrinsicsResult result = Solved(pairs, unit::TruePairIntrinsics(rig), false);
  EXPECT_TRUE(result.solution->recounted.empty());
  EXPECT_FALSE(result.solution->rejected.empty());
}

/// What the right camera sees of the pose, with other points of a bigger sheet in place of the grid's.
std::vector<cv::Point2d> SeenByTheRight(const world::Pair& rig, const world::Pose& pose,
                                        const cv::Point2d& steps) {
  std::vector<cv::Point3d> points = MakeObjectTemplate(unit::GRID, unit::UNIT);
  const auto step = static_cast<double>(unit::UNIT);
  for (cv::Point3d& point : points) point += step * cv::Point3d(steps.x, steps.y, 0.0);
  return world::ProjectPoints(rig.right.lens, points, world::RightPose(rig, pose));
}

TEST(Reordering, NamesImagesOfAnotherPartOfABiggerGrid) {
  const world::Pair rig = unit::RigFor(Calibrator::MODEL_CLASSIC);
  const StereoIntrinsics intrinsics = unit::TruePairIntrinsics(rig);
  const std::vector<world::Pose> poses = world::SampleRigViews(rig, 12, 5, unit::Paper());
  unit::PointPairs pairs = unit::ObservedByBoth(rig, poses, 5, 0.1);
  // A column further, and two rows further.
  pairs.right[2] = SeenByTheRight(rig, poses[2], {2.0, 0.0});
  pairs.right[5] = SeenByTheRight(rig, poses[5], {0.0, -2.0});
  for (const bool refine : {false, true}) {
    const ExtrinsicsResult result = Solved(pairs, intrinsics, refine);
    EXPECT_TRUE(result.solution->recounted.empty());
    std::set<size_t> named;
    for (const Rejected& rejected : result.solution->rejected) {
      if (rejected.reason != "shows another part of a bigger grid than the other images") continue;
      EXPECT_EQ(rejected.point, Rejected::WHOLE_VIEW);
      named.insert(rejected.view);
    }
    EXPECT_EQ(named, (std::set<size_t>{2, 5})) << refine;
    EXPECT_LT(cv::norm(result.T, cv::Mat(rig.T)), 0.001) << result.T;
    EXPECT_LT(result.rms, 0.25);
  }
}

TEST(Reordering, SaysOfOtherImagesThatDisagreeOnlyThat) {
  const world::Pair rig = unit::RigFor(Calibrator::MODEL_CLASSIC);
  unit::PointPairs pairs = unit::Observed(rig, 12, 5, 0.1);
  pairs.right[2] = pairs.right[3];
  const ExtrinsicsResult result = Solved(pairs, unit::TruePairIntrinsics(rig), false);
  ASSERT_FALSE(result.solution->rejected.empty());
  for (const Rejected& rejected : result.solution->rejected) {
    EXPECT_EQ(rejected.reason.find("bigger"), std::string::npos) << rejected.view;
  }
}

}  // namespace
