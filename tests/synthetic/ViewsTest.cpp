/// Tests of the lists of views.
#include "Views.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>

#include "Cameras.h"

using world::Appearance;
using world::Camera;
using world::Pose;
using world::Sheet;

namespace {

cv::Rect2d BoxOf(const Camera& camera, const Pose& pose, const Sheet& sheet = Sheet()) {
  const std::vector<cv::Point2d> rims = world::ProjectPoints(camera.lens, sheet.RimPoints(32), pose);
  cv::Point2d low = rims.front();
  cv::Point2d high = rims.front();
  for (const cv::Point2d& p : rims) {
    low = {std::min(low.x, p.x), std::min(low.y, p.y)};
    high = {std::max(high.x, p.x), std::max(high.y, p.y)};
  }
  return {low, high};
}

double SpanOf(const Camera& camera, const Pose& pose) {
  const cv::Rect2d box = BoxOf(camera, pose);
  return std::max(box.width / camera.size.width, box.height / camera.size.height);
}

/// The angle between the optical axis and the paper's normal, degrees.
double TiltOf(const Pose& pose) {
  cv::Matx33d R;
  cv::Rodrigues(pose.rvec, R);
  return std::acos(std::min(1.0, R(2, 2))) * 180.0 / CV_PI;
}

}  // namespace

TEST(Views, PlacesTheUprightGridAsItIsDrawn) {
  const Camera camera = world::CameraFromFieldOfView({640, 480}, 60.0);
  Pose pose;
  ASSERT_TRUE(world::PlaceGrid(camera, Sheet(), Appearance(), 5.0, pose));
  const std::vector<cv::Point2d> centres = world::TrueCentres(camera.lens, Sheet(), pose);
  EXPECT_LT(centres[40].x, centres[0].x);
  EXPECT_NEAR(centres[40].y, centres[0].y, 1e-6);
  EXPECT_GT(centres[3].y, centres[0].y);
  EXPECT_NEAR(centres[3].x, centres[0].x, 1e-6);
  EXPECT_NEAR(SpanOf(camera, pose), 0.6, 0.005);
}

TEST(Views, PlacesTheGridInTheCornersOfTheRoom) {
  const Camera camera = OrdinaryCamera();
  Pose pose;
  ASSERT_TRUE(world::PlaceGrid(camera, Sheet(), {-1.0, 1.0, 0.5, 10, -10, 5}, 12.0, pose));
  const cv::Rect2d box = BoxOf(camera, pose);
  EXPECT_NEAR(box.x, 12.0, 1.0);
  EXPECT_NEAR(box.br().y, 479 - 12.0, 1.0);
  EXPECT_NEAR(SpanOf(camera, pose), 0.5, 0.005);
}

TEST(Views, FindsNoPlaceForAGridThatIsTooLarge) {
  Pose pose;
  EXPECT_FALSE(world::PlaceGrid(OrdinaryCamera(), Sheet(), {0, 0, 1.2, 0, 0, 0}, 5.0, pose));
}

TEST(Views, SamplesKeepAllDiscsInsideEveryCamera) {
  for (const Camera& camera : ManyCameras()) {
    const std::vector<Pose> poses = world::SampleViews(camera, 30, 5);
    ASSERT_EQ(poses.size(), 30U);
    for (const Pose& pose : poses) {
      EXPECT_TRUE(world::DiscsInside(camera, Sheet(), pose, 0.9 * world::ViewMargin(camera)));
      EXPECT_TRUE(world::FacesCamera(pose));
      EXPECT_GE(SpanOf(camera, pose), 0.35);
      EXPECT_LE(SpanOf(camera, pose), 0.85);
      EXPECT_LT(TiltOf(pose), 55.0);
    }
  }
}

TEST(Views, SamplesDependOnTheSeedAlone) {
  const Camera camera = OrdinaryCamera();
  const std::vector<Pose> first = world::SampleViews(camera, 10, 5);
  const std::vector<Pose> again = world::SampleViews(camera, 10, 5);
  const std::vector<Pose> other = world::SampleViews(camera, 10, 6);
  for (std::size_t k = 0; k < first.size(); ++k) {
    EXPECT_EQ(first[k].rvec, again[k].rvec);
    EXPECT_EQ(first[k].tvec, again[k].tvec);
    EXPECT_NE(first[k].rvec, other[k].rvec);
  }
}

TEST(Views, SamplesSpreadOverImageSizesAndTilts) {
  const Camera camera = OrdinaryCamera();
  std::vector<double> x;
  std::vector<double> y;
  std::vector<double> spans;
  std::vector<double> tilts;
  for (const Pose& pose : world::SampleViews(camera, 40, 5)) {
    const cv::Rect2d box = BoxOf(camera, pose);
    x.push_back((box.tl().x + box.br().x) / 2.0);
    y.push_back((box.tl().y + box.br().y) / 2.0);
    spans.push_back(SpanOf(camera, pose));
    tilts.push_back(TiltOf(pose));
  }
  const auto range = [](const std::vector<double>& values) {
    const auto ends = std::minmax_element(values.begin(), values.end());
    return *ends.second - *ends.first;
  };
  EXPECT_GT(range(x), 0.4 * 640);
  EXPECT_GT(range(y), 0.4 * 480);
  EXPECT_GT(range(spans), 0.4);
  EXPECT_GT(range(tilts), 35.0);
}

TEST(Views, SpreadListFitsCamerasFromFortyToNinetyDegrees) {
  for (const double degrees : {40.0, 50.0, 60.0, 75.0, 90.0}) {
    for (const cv::Size size : {cv::Size(640, 480), cv::Size(1280, 720)}) {
      const Camera camera = world::CameraFromFieldOfView(size, degrees, {-0.1, 0.01, 0.0, 0.0, 0.0});
      const std::vector<Pose> poses = world::SpreadViews(camera, 30);
      ASSERT_EQ(poses.size(), 30U);
      for (const Pose& pose : poses) {
        EXPECT_TRUE(world::DiscsInside(camera, Sheet(), pose, 0.9 * world::ViewMargin(camera)))
            << degrees << size;
      }
    }
  }
}

TEST(Views, FrontalListHasNoTilt) {
  const Camera camera = OrdinaryCamera();
  for (const Pose& pose : world::FrontalViews(camera, 10)) {
    EXPECT_NEAR(TiltOf(pose), 0.0, 1e-4);
    EXPECT_TRUE(world::DiscsInside(camera, Sheet(), pose, 1.0));
  }
}

TEST(Views, ListsFitOtherGrids) {
  const Camera camera = OrdinaryCamera();
  const Sheet sheet(cv::Size(5, 6), 0.05);
  for (const std::vector<Pose>& poses :
       {world::SampleViews(camera, 8, 2, sheet), world::SpreadViews(camera, 8, sheet),
        world::FrontalViews(camera, 8, sheet)}) {
    for (const Pose& pose : poses) EXPECT_TRUE(world::DiscsInside(camera, sheet, pose, 1.0));
  }
}

TEST(Views, SheetThatFillsTheImageIsShown) {
  const Camera camera = world::CameraFromFieldOfView({640, 480}, 60.0);
  Pose pose = world::SpreadViews(camera, 1).front();
  pose.tvec *= 0.2;
  EXPECT_TRUE(world::ShowsSheet(camera, Sheet(), pose));
}

TEST(Views, AwayPoseShowsNoPartOfTheSheet) {
  for (const Camera& camera : ManyCameras()) {
    const Pose view = world::SpreadViews(camera, 1).front();
    EXPECT_TRUE(world::ShowsSheet(camera, Sheet(), view));
    const Pose away = world::AwayPose(camera, Sheet(), view);
    EXPECT_FALSE(world::ShowsSheet(camera, Sheet(), away));
    for (const cv::Point2d& p : world::ProjectPoints(camera.lens, Sheet().OutlinePoints(), away)) {
      EXPECT_FALSE(p.x > 0 && p.y > 0 && p.x < camera.size.width - 1 && p.y < camera.size.height - 1);
    }
  }
}
