/// Tests of images of two cameras at once.
#include "RigRenderer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/calib3d.hpp>
#include <opencv2/features2d.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "Arrangement.h"
#include "Matchers.h"
#include "Rigs.h"

using world::Pose;
using world::RigRenderer;

namespace {

world::Scene NoisyScene() {
  world::Scene scene;
  scene.noise = 2.0;
  return scene;
}

/// True when the grid search finds all centres within a pixel of the truth.
bool Finds(const cv::Mat& image, const world::Scene& scene, const Pose& pose) {
  cv::Mat grey;
  cv::cvtColor(image, grey, cv::COLOR_BGR2GRAY);
  std::vector<cv::Point2f> centres;
  if (!cv::findCirclesGrid(grey, scene.sheet.Grid(), centres, cv::CALIB_CB_ASYMMETRIC_GRID)) return false;
  const std::vector<cv::Point2d> truth = world::TrueCentres(scene.camera.lens, scene.sheet, pose);
  double worst = 0.0;
  for (std::size_t k = 0; k < truth.size(); ++k) {
    worst = std::max(worst, cv::norm(cv::Point2d(centres[k]) - truth[k]));
  }
  return worst < 1.5;
}

}  // namespace

TEST(RigRenderer, RendersWhatEachCameraSees) {
  const world::Pair rig = OrdinaryRig();
  const Pose pose = world::RigViews(rig, 2).back();
  RigRenderer renderer(rig, NoisyScene());
  const std::vector<cv::Mat> pair = renderer.Render(pose, 3);
  EXPECT_SAME_MAT(pair[0], world::Renderer(renderer.SceneOf(0)).Render(pose, 3));
  EXPECT_SAME_MAT(pair[1], world::Renderer(renderer.SceneOf(1)).Render(world::RightPose(rig, pose), 3));
  EXPECT_EQ(renderer.SceneOf(0).camera.lens.D(), rig.left.lens.D());
  EXPECT_EQ(renderer.SceneOf(1).camera.lens.D(), rig.right.lens.D());
  EXPECT_EQ(renderer.SceneOf(0).seed, NoisyScene().seed);
}

TEST(RigRenderer, GivesEachCameraItsOwnNoise) {
  RigRenderer renderer(world::SideBySidePair({64, 48}, 60.0, 0.1), NoisyScene());
  const std::vector<cv::Mat> pair = renderer.RenderEmpty();
  EXPECT_FALSE(support::SameMat(pair[0], pair[1]));
  cv::Mat left;
  cv::Mat right;
  pair[0].reshape(1).convertTo(left, CV_64F);
  pair[1].reshape(1).convertTo(right, CV_64F);
  left -= cv::mean(left);
  right -= cv::mean(right);
  const double correlation = left.dot(right) / std::sqrt(left.dot(left) * right.dot(right));
  EXPECT_LT(std::abs(correlation), 0.05);
}

TEST(RigRenderer, RendersAnyNumberOfCamerasAsAloneAndWithTheirOwnNoise) {
  const world::Rig rig = world::RowRig(world::CameraFromFieldOfView({64, 48}, 60.0), 4, 0.05);
  const Pose pose = world::RigViews(world::PartOf(rig, {0, 1}), 1).front();
  RigRenderer renderer(rig, NoisyScene());
  const std::vector<cv::Mat> images = renderer.Render(pose, 3);
  const std::vector<cv::Mat> empty = renderer.RenderEmpty();
  ASSERT_EQ(images.size(), 4U);
  for (std::size_t k = 0; k < images.size(); ++k) {
    const Pose own = world::PoseFor(rig, k, pose);
    EXPECT_SAME_MAT(images[k], world::Renderer(renderer.SceneOf(k)).Render(own, 3));
    for (std::size_t other = 0; other < k; ++other) EXPECT_FALSE(support::SameMat(empty[k], empty[other]));
  }
}

TEST(RigRenderer, ShowsNothingOfASheetThatIsAway) {
  const world::Pair rig = world::SideBySidePair({320, 240}, 60.0, 0.15, 10.0);
  RigRenderer renderer(rig, NoisyScene());
  const Pose away = world::AwayPose(rig, world::Sheet(), world::RigViews(rig, 1).front());
  const std::vector<cv::Mat> pair = renderer.Render(away, 2);
  const std::vector<cv::Mat> empty = renderer.RenderEmpty(2);
  EXPECT_SAME_MAT(pair[0], empty[0]);
  EXPECT_SAME_MAT(pair[1], empty[1]);
}

TEST(RigRenderer, JoinsPicturesWithTheLeftOneFirst) {
  const world::Pair rig = OrdinaryRig();
  const std::vector<cv::Mat> pair = RigRenderer(rig, NoisyScene()).Render(world::RigViews(rig, 1).front());
  const cv::Mat beside = world::SideBySide(pair);
  ASSERT_EQ(beside.size(), cv::Size(1280, 480));
  EXPECT_SAME_MAT(beside.colRange(0, 640), pair[0]);
  EXPECT_SAME_MAT(beside.colRange(640, 1280), pair[1]);
  const cv::Mat above = world::OneAboveTheOther(pair);
  ASSERT_EQ(above.size(), cv::Size(640, 960));
  EXPECT_SAME_MAT(above.rowRange(0, 480), pair[0]);
  EXPECT_SAME_MAT(above.rowRange(480, 960), pair[1]);
}

TEST(RigRenderer, RefusesToJoinPicturesThatDiffer) {
  const cv::Mat image(48, 64, CV_8UC3);
  for (const cv::Mat& other :
       {cv::Mat(48, 32, CV_8UC3), cv::Mat(32, 64, CV_8UC3), cv::Mat(48, 64, CV_8UC1)}) {
    EXPECT_THROW(world::SideBySide({image, other}), std::invalid_argument);
    EXPECT_THROW(world::OneAboveTheOther({image, other}), std::invalid_argument);
  }
}

TEST(RigRenderer, ShowsTheGridSoThatItIsFoundInNearlyAllPairs) {
  const world::Pair rig = OrdinaryRig();
  RigRenderer renderer(rig, NoisyScene());
  int found = 0;
  std::uint64_t frame = 0;
  for (const Pose& pose : world::RigViews(rig, 12)) {
    const std::vector<cv::Mat> pair = renderer.Render(pose, frame++);
    const bool both = Finds(pair[0], renderer.SceneOf(0), pose) &&
                      Finds(pair[1], renderer.SceneOf(1), world::RightPose(rig, pose));
    found += both ? 1 : 0;
  }
  EXPECT_GE(found, 11);
  RecordProperty("pairs", found);
}
