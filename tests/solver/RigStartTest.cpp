/// Where cameras of rigs stand as single views tell, and which are linked to none.
#include "solver/RigStart.h"

#include <gtest/gtest.h>

#include "solver/RigProblems.h"

using namespace velmora;

namespace {

/// The true problem without what a start does not know: where the cameras and the target are.
CalibrationProblem WithoutPoses(CalibrationProblem problem) {
  for (Camera& camera : problem.rig.cameras)
    camera.cameraFromRig = {RotationOf({1.0, 2.0, 3.0}), {9.0, 9.0, 9.0}};
  for (TargetView& view : problem.views) view.rigFromTarget = {};
  return problem;
}

void ExpectPosesNear(const CalibrationProblem& start, const CalibrationProblem& truth, double degrees,
                     double metres) {
  ASSERT_EQ(start.rig.cameras.size(), truth.rig.cameras.size());
  ASSERT_EQ(start.views.size(), truth.views.size());
  for (size_t i = 0; i < truth.rig.cameras.size(); ++i) {
    const RigidTransform& own = start.rig.cameras[i].cameraFromRig;
    const RigidTransform& other = truth.rig.cameras[i].cameraFromRig;
    EXPECT_LT(unit::AngleBetween(own.R, other.R), degrees) << "camera " << i;
    EXPECT_LT(cv::norm(own.t - other.t), metres) << "camera " << i;
  }
  for (size_t i = 0; i < truth.views.size(); ++i) {
    EXPECT_LT(unit::AngleBetween(start.views[i].rigFromTarget.R, truth.views[i].rigFromTarget.R),
              3.0 * degrees);
    EXPECT_LT(cv::norm(start.views[i].rigFromTarget.t - truth.views[i].rigFromTarget.t), 3.0 * metres);
  }
}

TEST(RigStart, IsTheTruthOfExactViews) {
  for (const world::Rig& rig : {unit::RowOf(2), unit::RowOf(3), unit::RingOf(5)}) {
    const CalibrationProblem truth = unit::TrueProblem(rig, 4 * static_cast<int>(rig.cameras.size()), 0.0, 1);
    const CalibrationProblem unknown = WithoutPoses(truth);
    const CalibrationProblem start = solver::StartOf(unknown.rig, unknown.views);
    ExpectPosesNear(start, truth, 1e-3, 1e-5);
    EXPECT_EQ(start.rig.cameras[0].cameraFromRig.R, cv::Matx33d::eye());
    EXPECT_EQ(start.rig.cameras[0].cameraFromRig.t, cv::Vec3d());
  }
}

TEST(RigStart, IsNearTheTruthOfNoisyViews) {
  for (const world::Rig& rig : {unit::RowOf(3), unit::RingOf(5)}) {
    const CalibrationProblem truth = unit::TrueProblem(rig, 6 * static_cast<int>(rig.cameras.size()), 0.1, 2);
    const CalibrationProblem unknown = WithoutPoses(truth);
    ExpectPosesNear(solver::StartOf(unknown.rig, unknown.views), truth, 0.5, 0.005);
  }
}

TEST(RigStart, IsNotMovedByAFewWrongViews) {
  const CalibrationProblem truth = unit::TrueProblem(unit::RowOf(2), 12, 0.1, 3);
  CalibrationProblem unknown = WithoutPoses(truth);
  for (const size_t i : {0U, 4U, 9U}) {
    for (cv::Point2d& point : unknown.views[i].observations[1].image) point += cv::Point2d(90.0, -60.0);
  }
  const RigidTransform right = solver::StartOf(unknown.rig, unknown.views).rig.cameras[1].cameraFromRig;
  EXPECT_LT(unit::AngleBetween(right.R, truth.rig.cameras[1].cameraFromRig.R), 0.3);
  EXPECT_LT(cv::norm(right.t - truth.rig.cameras[1].cameraFromRig.t), 0.003);
}

/// Only neighbours share views: of camera 0 with 1, of 1 with 2, and so on.
CalibrationProblem OfNeighbours(int cameras, double noise) {
  CalibrationProblem problem = unit::TrueProblem(unit::RowOf(cameras), 5 * (cameras - 1), noise, 4);
  for (size_t i = 0; i < problem.views.size(); ++i) {
    const size_t link = i % (static_cast<size_t>(cameras) - 1);
    for (size_t k = 0; k < problem.views[i].observations.size(); ++k) {
      if (k != link && k != link + 1) problem.views[i].observations[k] = {};
    }
  }
  return problem;
}

TEST(RigStart, PlacesACameraThatIsLinkedThroughOthersAlone) {
  const CalibrationProblem truth = OfNeighbours(4, 0.0);
  for (const TargetView& view : truth.views) {
    EXPECT_TRUE(view.observations[0].IsEmpty() || view.observations[3].IsEmpty());
  }
  const CalibrationProblem unknown = WithoutPoses(truth);
  EXPECT_TRUE(solver::UnlinkedCameras(unknown.views, 4).empty());
  ExpectPosesNear(solver::StartOf(unknown.rig, unknown.views), truth, 1e-3, 1e-5);
}

TEST(RigStart, FollowsLinksAgainstTheOrderOfTheCameras) {
  CalibrationProblem truth = OfNeighbours(3, 0.0);
  // Camera 1 is now linked to the first through camera 2 alone.
  std::swap(truth.rig.cameras[1], truth.rig.cameras[2]);
  for (TargetView& view : truth.views) std::swap(view.observations[1], view.observations[2]);
  const CalibrationProblem unknown = WithoutPoses(truth);
  ExpectPosesNear(solver::StartOf(unknown.rig, unknown.views), truth, 1e-3, 1e-5);
}

TEST(RigStart, TakesTheStrongestOfSeveralChains) {
  // The only view that cameras 0 and 2 share is a wrong one; with camera 1 each shares five.
  CalibrationProblem truth = OfNeighbours(3, 0.0);
  CalibrationProblem unknown = WithoutPoses(truth);
  Observation wrong = unknown.views[1].observations[2];
  for (cv::Point2d& point : wrong.image) point += cv::Point2d(60.0, 60.0);
  unknown.views[0].observations[2] = wrong;
  const Rig rig = solver::StartOf(unknown.rig, unknown.views).rig;
  EXPECT_LT(cv::norm(rig.cameras[2].cameraFromRig.t - truth.rig.cameras[2].cameraFromRig.t), 1e-5);
}

std::string TextOf(const CalibrationProblem& problem) {
  try {
    solver::StartOf(problem.rig, problem.views);
  } catch (const cv::Exception& error) {
    return error.what();
  }
  return "";
}

TEST(RigStart, NamesACameraThatIsLinkedToNone) {
  for (const size_t lonely : {1U, 2U}) {
    CalibrationProblem problem = unit::TrueProblem(unit::RowOf(3), 12, 0.1, 5);
    for (size_t i = 0; i < problem.views.size(); ++i) {
      for (size_t k = 0; k < 3; ++k) {
        if ((k == lonely) == (i % 3 != 0)) problem.views[i].observations[k] = {};
      }
    }
    EXPECT_EQ(solver::UnlinkedCameras(problem.views, 3), (std::vector<size_t>{lonely}));
    EXPECT_NE(TextOf(problem).find("Camera " + std::to_string(lonely) + " "), std::string::npos)
        << TextOf(problem);
  }
}

TEST(RigStart, FindsGroupsThatAreLinkedAmongThemselvesAlone) {
  CalibrationProblem problem = OfNeighbours(4, 0.0);
  for (TargetView& view : problem.views) {
    if (!view.observations[1].IsEmpty() && !view.observations[2].IsEmpty()) view.observations[1] = {};
  }
  EXPECT_EQ(solver::UnlinkedCameras(problem.views, 4), (std::vector<size_t>{2, 3}));
  EXPECT_NE(TextOf(problem).find("Camera 2 "), std::string::npos);
}

TEST(RigStart, RaisesWhenTheFirstCameraSawNothing) {
  CalibrationProblem problem = unit::TrueProblem(unit::RowOf(2), 6, 0.1, 6);
  for (TargetView& view : problem.views) view.observations[0] = {};
  EXPECT_NE(TextOf(problem).find("Camera 1 "), std::string::npos) << TextOf(problem);
}

TEST(RigStart, NamesACameraWhosePointsDetermineNoPose) {
  CalibrationProblem problem = unit::TrueProblem(unit::RowOf(2), 6, 0.1, 6);
  Observation& observation = problem.views[3].observations[1];
  const Observation all = observation;
  observation.object.resize(3);
  observation.image.resize(3);
  EXPECT_NE(TextOf(problem).find("Camera 1 "), std::string::npos) << TextOf(problem);
  observation = {};
  for (size_t i = 0; i < all.object.size(); i += 8) {  // a column of the grid
    observation.object.push_back(all.object[i]);
    observation.image.push_back(all.image[i]);
  }
  EXPECT_NE(TextOf(problem).find("Camera 1 "), std::string::npos) << TextOf(problem);
}

}  // namespace
