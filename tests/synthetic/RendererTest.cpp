/// Tests of rendered images.
#include "Renderer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>
#include <stdexcept>

#include "Cameras.h"
#include "Centroids.h"
#include "Matchers.h"
#include "Views.h"

using world::Pose;
using world::Renderer;
using world::Scene;

namespace {

/// Half the distance between the nearest discs: a window of that reach holds one disc.
double Reach(const std::vector<cv::Point2d>& centres) {
  double nearest = 1e9;
  for (std::size_t a = 0; a < centres.size(); ++a) {
    for (std::size_t b = 0; b < a; ++b) nearest = std::min(nearest, cv::norm(centres[a] - centres[b]));
  }
  return 0.5 * nearest - 1.0;
}

/// The farthest of the measured centres from the true ones, pixels.
double WorstCentroid(const Scene& scene, const Pose& pose, const cv::Mat& image) {
  const std::vector<cv::Point2d> centres = world::TrueCentres(scene.camera.lens, scene.sheet, pose);
  double worst = 0.0;
  for (const cv::Point2d& centre : centres) {
    worst = std::max(worst, cv::norm(DarkCentroid(image, SquareAround(centre, Reach(centres))) - centre));
  }
  return worst;
}

std::vector<Pose> SmallFrontalViews(const world::Camera& camera) {
  std::vector<Pose> poses;
  for (const cv::Point2d place : {cv::Point2d(0.0, 0.0), cv::Point2d(-0.5, 0.4), cv::Point2d(0.6, -0.5)}) {
    Pose pose;
    EXPECT_TRUE(world::PlaceGrid(camera, world::Sheet(), {place.x, place.y, 0.4, 0, 0, 0}, 5.0, pose));
    poses.push_back(pose);
  }
  return poses;
}

Scene NoisyScene(std::uint64_t seed) {
  Scene scene;
  scene.camera = OrdinaryCamera();
  scene.noise = 3.0;
  scene.blur = 0.6;
  scene.light = 0.5;
  scene.clutter = 30;
  scene.seed = seed;
  return scene;
}

Pose OrdinaryPose(const world::Camera& camera, const world::Sheet& sheet = world::Sheet()) {
  Pose pose;
  EXPECT_TRUE(world::PlaceGrid(camera, sheet, {0.1, -0.1, 0.6, 15, 10, 5}, 5.0, pose));
  return pose;
}

}  // namespace

TEST(Renderer, PutsDiscsWhereTheTruthSaysInFrontalViews) {
  for (const world::Camera& camera : ManyCameras()) {
    Scene scene;
    scene.camera = camera;
    Renderer renderer(scene);
    // Small enough for distortion not to move the discs' centres of gravity.
    for (const Pose& pose : SmallFrontalViews(camera)) {
      EXPECT_LT(WorstCentroid(scene, pose, renderer.Render(pose)), 0.15) << camera.size;
    }
  }
}

TEST(Renderer, FillsExactlyTheDistortedOutlinesOfTheDiscs) {
  constexpr int RIM = 256;
  for (const world::Camera& camera : ManyCameras()) {
    Scene scene;
    scene.camera = camera;
    Renderer renderer(scene);
    for (const Pose& pose : world::SampleViews(camera, 4, 2)) {
      const cv::Mat image = renderer.Render(pose);
      const std::vector<cv::Point2d> rims =
          world::ProjectPoints(camera.lens, scene.sheet.RimPoints(RIM), pose);
      for (std::size_t disc = 0; disc < 44; ++disc) {
        const auto first = rims.begin() + static_cast<std::ptrdiff_t>(disc * RIM);
        const std::vector<cv::Point2d> rim(first, first + RIM);
        const cv::Point2d expected = AreaCentroid(rim);
        const cv::Point2d measured = DarkCentroid(image, Widened(rim, expected, 2.0));
        ASSERT_LT(cv::norm(measured - expected), 0.02) << "disc " << disc << " at " << expected;
      }
    }
  }
}

TEST(Renderer, PutsDiscsOfAPinholeCameraWithinAFiftiethOfAPixel) {
  Scene scene;
  Renderer renderer(scene);
  for (const Pose& pose : world::FrontalViews(scene.camera, 6)) {
    EXPECT_LT(WorstCentroid(scene, pose, renderer.Render(pose)), 0.02);
  }
}

TEST(Renderer, PutsDiscsOfOtherGridsAndUnitsWhereTheTruthSays) {
  Scene scene;
  scene.sheet = world::Sheet(cv::Size(5, 7), 0.035);
  Renderer renderer(scene);
  for (const Pose& pose : world::FrontalViews(scene.camera, 3, scene.sheet)) {
    EXPECT_LT(WorstCentroid(scene, pose, renderer.Render(pose)), 0.15);
  }
}

TEST(Renderer, ShowsTheSameForASheetTwiceAsLargeTwiceAsFarAway) {
  Scene scene;
  scene.camera = OrdinaryCamera();
  Pose pose = OrdinaryPose(scene.camera);
  const cv::Mat small = Renderer(scene).Render(pose);
  scene.sheet = world::Sheet(cv::Size(4, 11), 0.04);
  pose.tvec *= 2.0;
  EXPECT_MAT_NEAR(Renderer(scene).Render(pose), small, 1.0);
}

TEST(Renderer, GivesTheSameBytesForTheSameSeed) {
  const Scene scene = NoisyScene(11);
  const Pose pose = OrdinaryPose(scene.camera);
  Renderer renderer(scene);
  const cv::Mat first = renderer.Render(pose, 4);
  EXPECT_EQ(first.type(), CV_8UC3);
  EXPECT_EQ(first.size(), scene.camera.size);
  EXPECT_SAME_MAT(Renderer(scene).Render(pose, 4), first);
  EXPECT_FALSE(support::SameMat(Renderer(NoisyScene(12)).Render(pose, 4), first));
}

TEST(Renderer, DoesNotRememberEarlierFrames) {
  const Scene scene = NoisyScene(11);
  const Pose pose = OrdinaryPose(scene.camera);
  Renderer renderer(scene);
  const cv::Mat first = renderer.Render(pose, 4);
  const cv::Mat kept = first.clone();
  const cv::Mat other = renderer.Render(world::FrontalViews(scene.camera, 1).front(), 5);
  EXPECT_FALSE(support::SameMat(other, kept));
  EXPECT_SAME_MAT(first, kept);
  EXPECT_SAME_MAT(renderer.Render(pose, 4), kept);
}

TEST(Renderer, GivesEveryFrameItsOwnNoise) {
  Scene scene = NoisyScene(11);
  const Pose pose = OrdinaryPose(scene.camera);
  EXPECT_FALSE(support::SameMat(Renderer(scene).Render(pose, 1), Renderer(scene).Render(pose, 2)));
  scene.noise = 0.0;
  EXPECT_SAME_MAT(Renderer(scene).Render(pose, 1), Renderer(scene).Render(pose, 2));
}

TEST(Renderer, AddsNoiseOfTheGivenSigmaToEachChannel) {
  Scene scene;
  Renderer quiet(scene);
  scene.noise = 4.0;
  Renderer noisy(scene);
  cv::Mat difference;
  cv::subtract(noisy.RenderEmpty(3), quiet.RenderEmpty(3), difference, cv::noArray(), CV_64F);
  cv::Scalar mean;
  cv::Scalar deviation;
  cv::meanStdDev(difference, mean, deviation);
  for (int channel = 0; channel < 3; ++channel) {
    EXPECT_NEAR(mean[channel], 0.0, 0.05);
    EXPECT_NEAR(deviation[channel], 4.0, 0.05);
  }
  std::vector<cv::Mat> channels;
  cv::split(difference, channels);
  EXPECT_NEAR(channels[0].dot(channels[1]) / static_cast<double>(difference.total()), 0.0, 0.2);
}

TEST(Renderer, KeepsClutterBehindTheSheet) {
  Scene scene;
  scene.camera = OrdinaryCamera();
  const Pose pose = OrdinaryPose(scene.camera);
  scene.backgroundLevel = 0;
  const cv::Mat dark = Renderer(scene).Render(pose);
  scene.backgroundLevel = 255;
  const cv::Mat bright = Renderer(scene).Render(pose);
  scene.clutter = 200;
  const cv::Mat cluttered = Renderer(scene).Render(pose);
  int onSheet = 0;
  int changed = 0;
  for (int y = 0; y < dark.rows; ++y) {
    for (int x = 0; x < dark.cols; ++x) {
      // Where the background's level does not count, the sheet fills the pixel.
      const cv::Vec3b value = cluttered.at<cv::Vec3b>(y, x);
      if (dark.at<cv::Vec3b>(y, x) != bright.at<cv::Vec3b>(y, x)) {
        changed += value != bright.at<cv::Vec3b>(y, x) ? 1 : 0;
        continue;
      }
      ASSERT_EQ(value, bright.at<cv::Vec3b>(y, x)) << x << ", " << y;
      ++onSheet;
    }
  }
  EXPECT_GT(onSheet, 60000);
  EXPECT_GT(changed, 30000);
}

TEST(Renderer, ChangesBrightnessButNotPlacesByTheLight) {
  Scene scene;
  scene.camera = OrdinaryCamera();
  const Pose pose = world::FrontalViews(scene.camera, 1).front();
  const cv::Mat even = Renderer(scene).Render(pose);
  scene.light = 0.8;
  const cv::Mat uneven = Renderer(scene).Render(pose);
  EXPECT_LT(cv::mean(uneven)[0], 0.9 * cv::mean(even)[0]);
  const std::vector<cv::Point2d> centres = world::TrueCentres(scene.camera.lens, scene.sheet, pose);
  for (const cv::Point2d& centre : centres) {
    const std::vector<cv::Point2d> window = SquareAround(centre, Reach(centres));
    const cv::Point2d moved = DarkCentroid(uneven, window, 0.75) - DarkCentroid(even, window, 0.75);
    EXPECT_LT(cv::norm(moved), 0.15) << centre;
  }
}

TEST(Renderer, BlursWithoutMovingDiscs) {
  Scene scene;
  const Pose pose = world::FrontalViews(scene.camera, 1).front();
  const cv::Mat sharp = Renderer(scene).Render(pose);
  scene.blur = 1.5;
  const cv::Mat soft = Renderer(scene).Render(pose);
  EXPECT_LT(WorstCentroid(scene, pose, soft), 0.15);
  EXPECT_FALSE(support::SameMat(sharp, soft));
  EXPECT_GT(cv::norm(sharp, soft, cv::NORM_INF), 30.0);
}

TEST(Renderer, RendersEdgesBetweenInkAndPaper) {
  Scene scene;
  const Pose pose = world::FrontalViews(scene.camera, 1).front();
  const cv::Mat image = Renderer(scene).Render(pose);
  double area = 0.0;
  for (const cv::Point2d& centre : world::TrueCentres(scene.camera.lens, scene.sheet, pose)) {
    const double reach = 0.6 * scene.sheet.Unit() / pose.tvec[2] * scene.camera.lens.K()(0, 0);
    const int size = static_cast<int>(2.0 * reach) + 1;
    const cv::Rect window(static_cast<int>(centre.x - reach), static_cast<int>(centre.y - reach), size, size);
    area +=
        window.area() * (scene.paperLevel - cv::mean(image(window))[0]) / (scene.paperLevel - scene.inkLevel);
  }
  const double radius =
      world::Sheet::DISC_RADIUS * scene.sheet.Unit() / pose.tvec[2] * scene.camera.lens.K()(0, 0);
  EXPECT_NEAR(area / 44.0, CV_PI * radius * radius, 0.003 * CV_PI * radius * radius);
}

TEST(Renderer, ShowsBlankPaperFromBehind) {
  Scene scene;
  Pose pose = world::FrontalViews(scene.camera, 1).front();
  cv::Matx33d R;
  cv::Rodrigues(pose.rvec, R);
  const cv::Point3d middle = world::ToCamera({scene.sheet.GridMiddle()}, pose).front();
  const cv::Matx33d turned = R * cv::Matx33d(-1, 0, 0, 0, 1, 0, 0, 0, -1);
  cv::Rodrigues(turned, pose.rvec);
  const cv::Point3d moved = world::ToCamera({scene.sheet.GridMiddle()}, pose).front();
  pose.tvec += cv::Vec3d(middle.x - moved.x, middle.y - moved.y, middle.z - moved.z);
  const cv::Mat image = Renderer(scene).Render(pose);
  double darkest = 0.0;
  double brightest = 0.0;
  cv::minMaxLoc(image.reshape(1), &darkest, &brightest);
  EXPECT_EQ(darkest, scene.backgroundLevel);
  EXPECT_EQ(brightest, scene.paperLevel);
}

TEST(Renderer, ShowsOnlyTheBackgroundWithTheSheetBehindTheCamera) {
  const Scene scene = NoisyScene(3);
  Pose pose = OrdinaryPose(scene.camera);
  pose.tvec[2] = -1.0;
  Renderer renderer(scene);
  EXPECT_SAME_MAT(renderer.Render(pose, 7), renderer.RenderEmpty(7));
}

TEST(Renderer, RendersASheetSeenEdgeOn) {
  Scene scene;
  Renderer renderer(scene);
  const Pose pose = {cv::Vec3d(0.0, CV_PI / 2.0, 0.0), cv::Vec3d(0.0, 0.0, 0.5)};
  EXPECT_SAME_MAT(renderer.Render(pose), renderer.RenderEmpty());
}

TEST(Renderer, RefusesOptionsOutOfRange) {
  const auto refused = [](auto change) {
    Scene scene;
    change(scene);
    EXPECT_THROW(Renderer{scene}, std::invalid_argument);
  };
  refused([](Scene& scene) { scene.blur = -1.0; });
  refused([](Scene& scene) { scene.noise = std::nan(""); });
  refused([](Scene& scene) { scene.light = 1.5; });
  refused([](Scene& scene) { scene.clutter = -3; });
  refused([](Scene& scene) { scene.supersampling = 0; });
  refused([](Scene& scene) { scene.paperLevel = 256; });
  refused([](Scene& scene) { scene.camera.size = cv::Size(0, 0); });
}
