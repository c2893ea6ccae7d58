/// Which views count as repetitions of others.
#include "solver/PoseGroups.h"

#include <gtest/gtest.h>

#include "solver/RigProblems.h"

using namespace velmora;

namespace {

/// Each view several times, every image moved by as many pixels more.
std::vector<TargetView> Repeated(const std::vector<TargetView>& views, int times, double pixels) {
  std::vector<TargetView> repeated;
  for (const TargetView& view : views) {
    for (int i = 0; i < times; ++i) {
      repeated.push_back(view);
      for (Observation& observed : repeated.back().observations) {
        for (cv::Point2d& point : observed.image) point.x += i * pixels;
      }
    }
  }
  return repeated;
}

TEST(PoseGroups, OfDifferentPosesAreTheViews) {
  const CalibrationProblem problem = unit::TrueProblem(unit::DistortedCamera(), 6, 0.1, 3);
  EXPECT_EQ(solver::GroupsOf(problem.views, problem.rig), (std::vector<size_t>{0, 1, 2, 3, 4, 5}));
}

TEST(PoseGroups, HoldViewsWhosePointsAreNearEachOther) {
  const CalibrationProblem problem = unit::TrueProblem(unit::DistortedCamera(), 3, 0.1, 3);
  EXPECT_EQ(solver::GroupsOf(Repeated(problem.views, 3, 1.0), problem.rig),
            (std::vector<size_t>{0, 0, 0, 1, 1, 1, 2, 2, 2}));
  EXPECT_EQ(solver::CountOfGroups(solver::GroupsOf(Repeated(problem.views, 2, 4.0), problem.rig)), 6U);
}

TEST(PoseGroups, OfASheetThatMovesOnSlowlyAreSeveral) {
  const CalibrationProblem problem = unit::TrueProblem(unit::DistortedCamera(), 1, 0.1, 3);
  const auto groups = solver::GroupsOf(Repeated(problem.views, 20, 1.0), problem.rig);
  EXPECT_EQ(solver::CountOfGroups(groups), 5U);
}

TEST(PoseGroups, OfACameraWithFourTimesThePixelsReachFourTimesAsFar) {
  CalibrationProblem problem = unit::TrueProblem(unit::DistortedCamera(), 1, 0.1, 3);
  const auto twice = Repeated(problem.views, 2, 10.0);
  EXPECT_EQ(solver::CountOfGroups(solver::GroupsOf(twice, problem.rig)), 2U);
  problem.rig.cameras.front().imageSize *= 4;
  EXPECT_EQ(solver::CountOfGroups(solver::GroupsOf(twice, problem.rig)), 1U);
}

TEST(PoseGroups, HoldViewsOfASheetThatBendsInAnotherWayInEach) {
  const CalibrationProblem problem = unit::TrueProblem(unit::DistortedCamera(), 2, 0.1, 3);
  auto views = Repeated(problem.views, 3, 1.0);
  for (size_t i = 0; i < views.size(); ++i) {
    Observation& observation = views[i].observations.front();
    for (size_t k = 0; k < observation.object.size(); ++k) {
      observation.places.push_back(k);
      observation.object[k].z += 1e-5 * static_cast<double>(i * k);
    }
  }
  EXPECT_EQ(solver::GroupsOf(views, problem.rig), (std::vector<size_t>{0, 0, 0, 1, 1, 1}));
}

TEST(PoseGroups, AreOfAllCamerasThatSawBothViews) {
  const CalibrationProblem problem = unit::TrueProblem(unit::RowOf(2), 2, 0.1, 3);
  auto views = Repeated(problem.views, 2, 0.5);
  EXPECT_EQ(solver::CountOfGroups(solver::GroupsOf(views, problem.rig)), 2U);
  views[1].observations[0] = {};
  EXPECT_EQ(solver::CountOfGroups(solver::GroupsOf(views, problem.rig)), 2U);
  views[1].observations[1] = views[2].observations[1];
  EXPECT_EQ(solver::CountOfGroups(solver::GroupsOf(views, problem.rig)), 2U);
  views[0].observations[1] = {};
  // Of one camera each: nothing tells that they are of one place.
  views.resize(1);
  views.push_back(problem.views[0]);
  views.back().observations[0] = {};
  EXPECT_EQ(solver::CountOfGroups(solver::GroupsOf(views, problem.rig)), 2U);
}

TEST(PoseGroups, AreNotDisturbedByPointsThatWereRejected) {
  const CalibrationProblem problem = unit::TrueProblem(unit::DistortedCamera(), 1, 0.1, 3);
  auto views = Repeated(problem.views, 2, 1.0);
  Observation& observed = views[1].observations[0];
  observed.image[7].x += 200.0;
  EXPECT_EQ(solver::CountOfGroups(solver::GroupsOf(views, problem.rig)), 2U);
  observed.weights.assign(observed.object.size(), 1.0);
  observed.weights[7] = 0.0;
  EXPECT_EQ(solver::CountOfGroups(solver::GroupsOf(views, problem.rig)), 1U);
}

/// Without every point of which the number leaves that rest.
Observation Without(const Observation& whole, size_t divisor, size_t rest) {
  Observation part;
  for (size_t k = 0; k < whole.object.size(); ++k) {
    if (k % divisor == rest) continue;
    part.object.push_back(whole.object[k]);
    part.image.push_back(whole.image[k]);
  }
  return part;
}

TEST(PoseGroups, CompareParts) {
  const CalibrationProblem problem = unit::TrueProblem(unit::DistortedCamera(), 2, 0.1, 3);
  auto views = Repeated(problem.views, 2, 1.0);
  views[0].observations[0] = Without(views[0].observations[0], 4, 1);
  views[1].observations[0] = Without(views[1].observations[0], 4, 2);
  views[3].observations[0] = Without(views[3].observations[0], 5, 0);
  EXPECT_EQ(solver::GroupsOf(views, problem.rig), (std::vector<size_t>{0, 0, 1, 1}));
}

TEST(PoseGroups, OfDifferentTargetsAreTheViews) {
  const CalibrationProblem problem = unit::TrueProblem(unit::DistortedCamera(), 1, 0.1, 3);
  auto views = Repeated(problem.views, 2, 0.0);
  for (cv::Point3d& point : views[1].observations[0].object) point *= 2.0;
  EXPECT_EQ(solver::CountOfGroups(solver::GroupsOf(views, problem.rig)), 2U);
}

TEST(PoseGroups, OfNoViewsAreNone) {
  EXPECT_EQ(solver::CountOfGroups(solver::GroupsOf({}, unit::TrueRig(unit::RowOf(2)))), 0U);
}

}  // namespace
