/// Tests of images as fisheyes see the sheet.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "Cameras.h"
#include "Centroids.h"
#include "Matchers.h"
#include "Placement.h"
#include "Renderer.h"
#include "Views.h"

using world::Pose;
using world::Renderer;
using world::Scene;

namespace {

/// The angle of a point from the axis, degrees.
double AngleOf(const cv::Point3d& point) {
  return std::atan2(std::hypot(point.x, point.y), point.z) * 180.0 / CV_PI;
}

constexpr int RIM = 256;

/// One disc's part of the pixels of all rim points.
std::vector<cv::Point2d> RimOf(const std::vector<cv::Point2d>& rims, std::size_t disc) {
  const auto first = rims.begin() + static_cast<std::ptrdiff_t>(disc * RIM);
  return {first, first + RIM};
}

/// What the directions of places in pixels meet, one by one.
class MetByDirections {
 public:
  MetByDirections(const Scene& scene, const Pose& pose) : scene_(scene) {
    const std::vector<cv::Point3d> ends = {cv::Point3d(), cv::Point3d(1, 0, 0), cv::Point3d(0, 1, 0),
                                           cv::Point3d(0, 0, 1)};
    const std::vector<cv::Point3d> frame = world::ToCamera(ends, pose);
    origin_ = frame[0];
    x_ = frame[1] - origin_;
    y_ = frame[2] - origin_;
    normal_ = frame[3] - origin_;
  }

  /// The mean of the levels of a pixel's parts.
  double LevelOf(const cv::Point& pixel) const {
    double sum = 0.0;
    const int n = scene_.supersampling;
    for (int k = 0; k < n * n; ++k) {
      const int row = k / n;
      sum += LevelAt({pixel.x - 0.5 + (k % n + 0.5) / n, pixel.y - 0.5 + (row + 0.5) / n});
    }
    return sum / (n * n);
  }

 private:
  int LevelAt(const cv::Point2d& place) const {
    cv::Point3d direction;
    if (!scene_.camera.lens.Unproject(place, direction)) return scene_.backgroundLevel;
    const double length = normal_.dot(origin_) / normal_.dot(direction);
    if (!(length > 0.0)) return scene_.backgroundLevel;
    const cv::Point3d met = (direction * length - origin_) * (1.0 / scene_.sheet.Unit());
    const world::Surface surface = scene_.sheet.At({met.dot(x_), met.dot(y_)});
    if (surface == world::Surface::Background) return scene_.backgroundLevel;
    return surface == world::Surface::Ink ? scene_.inkLevel : scene_.paperLevel;
  }

  const Scene& scene_;
  cv::Point3d origin_;
  cv::Point3d x_;
  cv::Point3d y_;
  cv::Point3d normal_;
};

}  // namespace

TEST(FisheyeRenderer, FillsExactlyTheOutlinesOfTheDiscs) {
  int beyond = 0;
  std::vector<world::Camera> cameras = ManyFisheyes();
  cameras.push_back(world::FisheyeFromFieldOfView({1280, 960}, 220.0));
  for (const world::Camera& camera : cameras) {
    Scene scene;
    scene.camera = camera;
    Renderer renderer(scene);
    for (const Pose& pose : world::SampleViews(camera, 8, 2)) {
      const cv::Mat image = renderer.Render(pose);
      const std::vector<cv::Point3d> centres = world::ToCamera(scene.sheet.GridPoints(), pose);
      const std::vector<cv::Point2d> rims =
          world::ProjectPoints(camera.lens, scene.sheet.RimPoints(RIM), pose);
      for (std::size_t disc = 0; disc < centres.size(); ++disc) {
        const std::vector<cv::Point2d> rim = RimOf(rims, disc);
        const cv::Point2d expected = AreaCentroid(rim);
        const cv::Point2d measured = DarkCentroid(image, Widened(rim, expected, 2.0));
        ASSERT_LT(cv::norm(measured - expected), 0.02) << "disc " << disc << " at " << expected;
        beyond += AngleOf(centres[disc]) > 90.0 ? 1 : 0;
      }
    }
  }
  EXPECT_GT(beyond, 40);
}

TEST(FisheyeRenderer, PutsSmallDiscsWhereTheTruthSaysBeyondNinetyDegreesToo) {
  Scene scene;
  scene.camera = world::FisheyeFromFieldOfView({1280, 960}, 210.0);
  Renderer renderer(scene);
  for (const double x : {1180.0, 100.0, 640.0}) {
    Pose pose;
    ASSERT_TRUE(world::PoseAt(scene.camera.lens, scene.sheet, world::RotationFor({}), {x, 480.0}, 0.8, pose));
    const cv::Mat image = renderer.Render(pose);
    const std::vector<cv::Point2d> centres = world::TrueCentres(scene.camera.lens, scene.sheet, pose);
    const std::vector<cv::Point2d> rims =
        world::ProjectPoints(scene.camera.lens, scene.sheet.RimPoints(RIM), pose);
    for (std::size_t disc = 0; disc < centres.size(); ++disc) {
      // Of discs of a hundredth of a radian, the centre of the image is the image of the centre.
      const cv::Point2d measured = DarkCentroid(image, Widened(RimOf(rims, disc), centres[disc], 2.0));
      ASSERT_LT(cv::norm(measured - centres[disc]), 0.1) << centres[disc];
    }
    const double angle = AngleOf(world::ToCamera({scene.sheet.GridMiddle()}, pose).front());
    EXPECT_EQ(angle > 88.0, x != 640.0) << angle;
  }
}

TEST(FisheyeRenderer, ShowsInEachPixelWhatItsDirectionsMeet) {
  Scene scene;
  // Few pixels: the larger their part of the field of view, the more its curves count.
  scene.camera = world::FisheyeFromFieldOfView({160, 120}, 190.0, {0.02, 0.003, 0.0, 0.0});
  Renderer renderer(scene);
  for (const Pose& pose : world::SampleViews(scene.camera, 4, 3)) {
    const cv::Mat image = renderer.Render(pose);
    const MetByDirections expected(scene, pose);
    double sum = 0.0;
    for (int y = 0; y < image.rows; ++y) {
      for (int x = 0; x < image.cols; ++x) {
        const double off = std::abs(image.at<cv::Vec3b>(y, x)[0] - expected.LevelOf({x, y}));
        // A row of samples of a pixel on an edge may be on its other side.
        ASSERT_LT(off, 40.0) << x << ", " << y;
        sum += off;
      }
    }
    EXPECT_LT(sum / static_cast<double>(image.total()), 0.3);
  }
}

TEST(FisheyeRenderer, ShowsTheBackgroundOutsideItsCircle) {
  Scene scene;
  scene.camera = {
      {320, 240},
      world::Lens({80, 0, 159.5, 0, 80, 119.5, 0, 0, 1}, world::FisheyeCurve({-0.13, 0.0, 0.0, 0.0}))};
  // A wall, whose paper is before the whole camera.
  scene.sheet = world::Sheet(cv::Size(40, 110), 2.0);
  Pose pose;
  ASSERT_TRUE(
      world::PoseAt(scene.camera.lens, scene.sheet, world::RotationFor({}), {159.5, 119.5}, 1.0, pose));
  const cv::Mat image = Renderer(scene).Render(pose);
  EXPECT_EQ(image.at<cv::Vec3b>(2, 2)[0], scene.backgroundLevel);
  EXPECT_EQ(image.at<cv::Vec3b>(237, 317)[0], scene.backgroundLevel);
  EXPECT_NE(image.at<cv::Vec3b>(120, 160)[0], scene.backgroundLevel);
  EXPECT_NE(image.at<cv::Vec3b>(40, 160)[0], scene.backgroundLevel);
}

TEST(FisheyeRenderer, ShowsOnlyTheBackgroundWithTheSheetBehindTheCamera) {
  Scene scene;
  scene.camera = ManyFisheyes().back();
  Renderer renderer(scene);
  Pose pose;
  ASSERT_TRUE(world::PlaceGrid(scene.camera, scene.sheet, {0, 0, 0.2, 0, 0, 0}, 5.0, pose));
  EXPECT_FALSE(support::SameMat(renderer.Render(pose), renderer.RenderEmpty()));
  const Pose away = world::AwayPose(scene.camera, scene.sheet, pose);
  EXPECT_SAME_MAT(renderer.Render(away), renderer.RenderEmpty());
}
