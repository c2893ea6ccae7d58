/// Where the search begins: homographies, focal lengths and poses.
#include "solver/Start.h"

#include <gtest/gtest.h>

#include <cmath>

#include "Camera.h"
#include "Views.h"
#include "model/TargetGeometry.h"
#include "solver/Target.h"
#include "unit/Collection.h"

using namespace velmora;

namespace {

std::vector<std::vector<cv::Point3d>> Targets(size_t count) {
  return std::vector<std::vector<cv::Point3d>>(count, MakeObjectTemplate(unit::GRID, unit::UNIT));
}

/// Views of a camera without distortion, exact but for single precision.
solver::Target ExactViews(const world::Camera& camera, int count) {
  const world::Sheet sheet(unit::GRID, static_cast<double>(unit::UNIT));
  unit::PointLists views;
  for (const world::Pose& pose : world::SpreadViews(camera, count, sheet)) {
    views.push_back(world::TrueCentres(camera.lens, sheet, pose));
  }
  return solver::TargetOf(Targets(views.size()), views);
}

TEST(Start, FindsTheCameraOfExactViews) {
  const world::Camera camera = world::CameraFromFieldOfView(unit::FRAME, 62.0);
  const solver::Target target = ExactViews(camera, 6);
  const solver::Estimate start = solver::StartOf(target.views, unit::FRAME);
  EXPECT_NEAR(start.lens.values[0], camera.lens.K()(0, 0), 0.05);
  EXPECT_NEAR(start.lens.values[1], camera.lens.K()(1, 1), 0.05);
  EXPECT_EQ(start.lens.values[2], 319.5);
  EXPECT_EQ(start.lens.values[3], 239.5);
  const solver::Projection projection(start.lens);
  for (size_t i = 0; i < target.views.size(); ++i) {
    for (size_t k = 0; k < target.views[i].object.size(); ++k) {
      cv::Point2d pixel;
      const cv::Vec3d point(target.views[i].object[k].x, target.views[i].object[k].y, 0.0);
      ASSERT_TRUE(projection.Project(start.poses[i].R * point + start.poses[i].t, pixel));
      EXPECT_LT(cv::norm(pixel - target.views[i].image[k]), 0.05);
    }
  }
}

TEST(Start, TakesAUsualLensWhereFrontalViewsTellNothing) {
  const world::Camera camera = world::CameraFromFieldOfView(unit::FRAME, 62.0);
  solver::View view;
  for (const cv::Point3d& point : MakeObjectTemplate(unit::GRID, unit::UNIT)) {
    view.object.emplace_back(point.x - 0.07, point.y - 0.1, 0.0);
    view.image.emplace_back(320.0 + 1000.0 * (point.x - 0.07), 240.0 + 1000.0 * (point.y - 0.1));
  }
  const solver::Estimate start = solver::StartOf({view, view}, unit::FRAME);
  EXPECT_TRUE(std::isfinite(start.lens.values[0]));
  EXPECT_GE(start.lens.values[0], 0.1 * unit::FRAME.width);
  EXPECT_LE(start.lens.values[0], 20.0 * unit::FRAME.width);
  EXPECT_GT(start.poses.front().t[2], 0.0);
}

TEST(Start, RaisesForPointsOnALine) {
  solver::View line;
  for (int i = 0; i < 10; ++i) {
    line.object.emplace_back(0.02 * i, 0.0, 0.0);
    line.image.emplace_back(10.0 * i, 20.0);
  }
  EXPECT_THROW(solver::StartOf({line}, unit::FRAME), cv::Exception);
}

TEST(Homography, LeavesLittleOfARightViewAndMuchOfAWrongOrder) {
  const solver::Target target = ExactViews(unit::DistortedCamera(), 6);
  solver::View view = target.views.front();
  EXPECT_LT(solver::HomographyResidual(view), 5.0);  // of the distortion
  std::rotate(view.image.begin(), view.image.begin() + 1, view.image.end());
  EXPECT_GT(solver::HomographyResidual(view), 10.0);
}

TEST(Homography, LeavesInfinitelyMuchOfPointsThatDetermineNone) {
  solver::View view = ExactViews(unit::DistortedCamera(), 1).views.front();
  std::fill(view.image.begin(), view.image.end(), cv::Point2d(100.0, 100.0));
  EXPECT_EQ(solver::HomographyResidual(view), std::numeric_limits<double>::infinity());
}

TEST(Target, IsCentredAndInSinglePrecision) {
  const auto views = unit::NoisyViews(2);
  const solver::Target target = solver::TargetOf(Targets(2), views);
  cv::Point3d sum;
  for (const cv::Point3d& point : target.views[1].object) sum += point;
  EXPECT_LT(cv::norm(sum), 1e-14);
  EXPECT_NEAR(target.middles[1][0], 3.5 * static_cast<double>(unit::UNIT), 0.1);
  EXPECT_EQ(target.views[1].image[3].x, static_cast<double>(static_cast<float>(views[1][3].x)));
}

TEST(Target, RaisesForRecordsThatNoCameraHas) {
  const auto views = unit::NoisyViews(5);
  auto uneven = views;
  uneven.back().pop_back();
  auto endless = views;
  endless.back().back().x = std::nan("");
  auto bent = Targets(5);
  bent.back().back().z = 0.01;
  EXPECT_THROW(solver::TargetOf({}, {}), cv::Exception);
  EXPECT_THROW(solver::TargetOf(Targets(4), views), cv::Exception);
  EXPECT_THROW(solver::TargetOf(Targets(5), uneven), cv::Exception);
  EXPECT_THROW(solver::TargetOf(Targets(5), endless), cv::Exception);
  EXPECT_THROW(solver::TargetOf(bent, views), cv::Exception);
}

}  // namespace
