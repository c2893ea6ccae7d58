/// Tests of paths for videos.
#include "Trajectory.h"

#include <gtest/gtest.h>

#include <opencv2/calib3d.hpp>
#include <stdexcept>

#include "Cameras.h"
#include "Matchers.h"
#include "Renderer.h"
#include "Views.h"

using world::Pose;
using world::Trajectory;

namespace {

double Apart(const Pose& a, const Pose& b) {
  cv::Matx33d from;
  cv::Matx33d to;
  cv::Rodrigues(a.rvec, from);
  cv::Rodrigues(b.rvec, to);
  return cv::norm(from - to) + cv::norm(a.tvec - b.tvec);
}

}  // namespace

TEST(Trajectory, PassesThroughItsKeys) {
  const std::vector<Pose> keys = world::SpreadViews(OrdinaryCamera(), 5);
  const Trajectory path(keys, 8.0);
  for (std::size_t k = 0; k < keys.size(); ++k) EXPECT_LT(Apart(path.At(path.TimeOf(k)), keys[k]), 1e-9);
  EXPECT_LT(Apart(path.At(-1.0), keys.front()), 1e-9);
  EXPECT_LT(Apart(path.At(100.0), keys.back()), 1e-9);
}

TEST(Trajectory, MovesSlowlyNearTheKeysAndNeverJumps) {
  const Trajectory path(world::SpreadViews(OrdinaryCamera(), 5), 8.0);
  const double step = 0.01;
  const auto speed = [&](double t) { return Apart(path.At(t), path.At(t + step)) / step; };
  for (std::size_t k = 1; k + 1 < path.Keys(); ++k) {
    EXPECT_LT(speed(path.TimeOf(k) - 0.5 * step), 0.05 * speed(path.TimeOf(k) + 1.0));
  }
  for (double t = 0.0; t < 8.0; t += step) EXPECT_LT(Apart(path.At(t), path.At(t + step)), 0.05);
}

TEST(Trajectory, StaysAtASingleKey) {
  const std::vector<Pose> keys = world::SpreadViews(OrdinaryCamera(), 1);
  EXPECT_LT(Apart(Trajectory(keys, 2.0).At(1.3), keys.front()), 1e-12);
}

TEST(Trajectory, TakesTheSheetOutOfTheImageWhenAsked) {
  world::Scene scene;
  scene.camera = OrdinaryCamera();
  const std::vector<Pose> views = world::SpreadViews(scene.camera, 4);
  EXPECT_EQ(world::ThroughViews(scene.camera, scene.sheet, views, 10.0).Keys(), 4U);
  const Trajectory path = world::ThroughViews(scene.camera, scene.sheet, views, 10.0, 2);
  ASSERT_EQ(path.Keys(), 5U);
  world::Renderer renderer(scene);
  EXPECT_SAME_MAT(renderer.Render(path.At(path.TimeOf(2))), renderer.RenderEmpty());
  EXPECT_TRUE(world::DiscsInside(scene.camera, scene.sheet, path.At(10.0)));
}

TEST(Trajectory, RefusesNoKeysAndNoTime) {
  EXPECT_THROW(Trajectory({}, 1.0), std::invalid_argument);
  EXPECT_THROW(Trajectory({Pose()}, 0.0), std::invalid_argument);
}
