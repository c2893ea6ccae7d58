/// Where the search begins: homographies, focal lengths and poses.
#include "solver/Initialisation.h"

#include <gtest/gtest.h>

#include <cmath>

#include "Camera.h"
#include "Views.h"
#include "model/TargetGeometry.h"
#include "solver/Projection.h"
#include "solver/Target.h"
#include "unit/Collection.h"

using namespace velmora;

namespace {

std::vector<std::vector<cv::Point3d>> Targets(size_t count) {
  return std::vector<std::vector<cv::Point3d>>(count, MakeObjectTemplate(unit::GRID, unit::UNIT));
}

/// Views of a camera without distortion, exact but for single precision.
std::vector<TargetView> ExactViews(const world::Camera& camera, int count) {
  const world::Sheet sheet(unit::GRID, static_cast<double>(unit::UNIT));
  unit::PointLists views;
  for (const world::Pose& pose : world::SpreadViews(camera, count, sheet)) {
    views.push_back(world::TrueCentres(camera.lens, sheet, pose));
  }
  return solver::TargetOf(Targets(views.size()), views).views;
}

TEST(Initialisation, FindsTheCameraOfExactViews) {
  const world::Camera camera = world::CameraFromFieldOfView(unit::FRAME, 62.0);
  const std::vector<TargetView> views = ExactViews(camera, 6);
  const CalibrationProblem start = solver::StartOf(views, unit::FRAME);
  ASSERT_EQ(start.rig.cameras.size(), 1U);
  const Intrinsics& intrinsics = start.rig.cameras.front().intrinsics;
  EXPECT_NEAR(intrinsics.values[0], camera.lens.K()(0, 0), 0.05);
  EXPECT_NEAR(intrinsics.values[1], camera.lens.K()(1, 1), 0.05);
  EXPECT_EQ(intrinsics.values[2], 319.5);
  EXPECT_EQ(intrinsics.values[3], 239.5);
  const solver::Projection projection(intrinsics);
  ASSERT_EQ(start.views.size(), views.size());
  for (size_t i = 0; i < views.size(); ++i) {
    const Observation& observation = views[i].observations.front();
    for (size_t k = 0; k < observation.object.size(); ++k) {
      cv::Point2d pixel;
      ASSERT_TRUE(projection.Project(start.views[i].rigFromTarget * observation.object[k], pixel));
      EXPECT_LT(cv::norm(pixel - observation.image[k]), 0.05);
    }
  }
}

TEST(Initialisation, TellsFocalLengthsOfSqueezedPixelsApart) {
  const world::Camera camera = world::CameraFromFieldOfView(unit::FRAME, 62.0);
  for (const double squeeze : {0.25, 0.5, 2.0, 4.0}) {
    std::vector<TargetView> views = ExactViews(camera, 6);
    for (TargetView& view : views) {
      for (cv::Point2d& pixel : view.observations.front().image) pixel.x = (pixel.x + 0.5) * squeeze - 0.5;
    }
    const cv::Size image(static_cast<int>(unit::FRAME.width * squeeze), unit::FRAME.height);
    const Intrinsics intrinsics = solver::StartOf(views, image).rig.cameras.front().intrinsics;
    EXPECT_NEAR(intrinsics.values[FX], squeeze * camera.lens.K()(0, 0), 1.0) << squeeze;
    EXPECT_NEAR(intrinsics.values[FY], camera.lens.K()(1, 1), 1.0) << squeeze;
  }
}

TEST(Initialisation, TakesUsualIntrinsicsWhereFrontalViewsTellNothing) {
  const world::Camera camera = world::CameraFromFieldOfView(unit::FRAME, 62.0);
  Observation view;
  for (const cv::Point3d& point : MakeObjectTemplate(unit::GRID, unit::UNIT)) {
    view.object.emplace_back(point.x - 0.07, point.y - 0.1, 0.0);
    view.image.emplace_back(320.0 + 1000.0 * (point.x - 0.07), 240.0 + 1000.0 * (point.y - 0.1));
  }
  const CalibrationProblem start =
      solver::StartOf({TargetView{{}, {view}}, TargetView{{}, {view}}}, unit::FRAME);
  const Intrinsics& intrinsics = start.rig.cameras.front().intrinsics;
  EXPECT_TRUE(std::isfinite(intrinsics.values[0]));
  EXPECT_GE(intrinsics.values[0], 0.1 * unit::FRAME.width);
  EXPECT_LE(intrinsics.values[0], 20.0 * unit::FRAME.width);
  EXPECT_GT(start.views.front().rigFromTarget.t[2], 0.0);
}

TEST(Initialisation, RaisesForPointsOnALine) {
  Observation line;
  for (int i = 0; i < 10; ++i) {
    line.object.emplace_back(0.02 * i, 0.0, 0.0);
    line.image.emplace_back(10.0 * i, 20.0);
  }
  EXPECT_THROW(solver::StartOf({TargetView{{}, {line}}}, unit::FRAME), cv::Exception);
}

TEST(Homography, LeavesLittleOfARightViewAndMuchOfAWrongOrder) {
  Observation view = ExactViews(unit::DistortedCamera(), 6).front().observations.front();
  EXPECT_LT(solver::HomographyResidual(view), 5.0);  // of the distortion
  std::rotate(view.image.begin(), view.image.begin() + 1, view.image.end());
  EXPECT_GT(solver::HomographyResidual(view), 10.0);
}

TEST(Homography, LeavesInfinitelyMuchOfPointsThatDetermineNone) {
  Observation view = ExactViews(unit::DistortedCamera(), 1).front().observations.front();
  std::fill(view.image.begin(), view.image.end(), cv::Point2d(100.0, 100.0));
  EXPECT_EQ(solver::HomographyResidual(view), std::numeric_limits<double>::infinity());
}

}  // namespace
