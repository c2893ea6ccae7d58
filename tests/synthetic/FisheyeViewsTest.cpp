/// Tests of the lists of views before fisheyes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "Arrangement.h"
#include "Cameras.h"
#include "Placement.h"
#include "Rig.h"
#include "Views.h"

using world::Camera;
using world::Pose;
using world::Sheet;

namespace {

cv::Point3d MiddleOf(const Pose& pose, const Sheet& sheet = Sheet()) {
  return world::ToCamera({sheet.GridMiddle()}, pose).front();
}

/// The angle of a point from the axis, degrees.
double AngleOf(const cv::Point3d& point) {
  return std::atan2(std::hypot(point.x, point.y), point.z) * 180.0 / CV_PI;
}

double RangeOf(const std::vector<double>& values) {
  const auto ends = std::minmax_element(values.begin(), values.end());
  return *ends.second - *ends.first;
}

}  // namespace

TEST(FisheyeViews, SamplesKeepAllDiscsInsideTheImageAndToBeFound) {
  for (const Camera& camera : ManyFisheyes()) {
    const std::vector<Pose> poses = world::SampleViews(camera, 30, 5);
    ASSERT_EQ(poses.size(), 30U);
    for (const Pose& pose : poses) {
      EXPECT_TRUE(world::DiscsInside(camera, Sheet(), pose, 0.9 * world::ViewMargin(camera)));
      EXPECT_TRUE(world::FacesCamera(pose));
      EXPECT_LT(world::Obliqueness(Sheet(), pose), 55.0);
      EXPECT_LT(world::LargestObliqueness(Sheet(), pose), 70.0);
      EXPECT_GT(cv::norm(MiddleOf(pose)), 0.0999);
      EXPECT_LT(cv::norm(MiddleOf(pose)), 0.4001);
    }
  }
}

TEST(FisheyeViews, SamplesAreAllOverTheImageAndBehindTheCameraToo) {
  const Camera camera = ManyFisheyes()[2];
  std::vector<double> x;
  std::vector<double> y;
  std::vector<double> distances;
  std::vector<double> tilts;
  double widest = 0.0;
  for (const Pose& pose : world::SampleViews(camera, 40, 5)) {
    const cv::Point2d middle = camera.lens.Project(MiddleOf(pose));
    x.push_back(middle.x);
    y.push_back(middle.y);
    distances.push_back(cv::norm(MiddleOf(pose)));
    tilts.push_back(world::Obliqueness(Sheet(), pose));
    for (const cv::Point3d& point : world::ToCamera(Sheet().GridPoints(), pose)) {
      widest = std::max(widest, AngleOf(point));
    }
  }
  EXPECT_GT(RangeOf(x), 0.7 * camera.size.width);
  EXPECT_GT(RangeOf(y), 0.6 * camera.size.height);
  EXPECT_GT(RangeOf(distances), 0.2);
  EXPECT_GT(RangeOf(tilts), 35.0);
  EXPECT_GT(widest, 91.0);
}

TEST(FisheyeViews, SamplesDependOnTheSeedAlone) {
  const Camera camera = ManyFisheyes()[1];
  const std::vector<Pose> first = world::SampleViews(camera, 10, 5);
  const std::vector<Pose> again = world::SampleViews(camera, 10, 5);
  const std::vector<Pose> other = world::SampleViews(camera, 10, 6);
  for (std::size_t k = 0; k < first.size(); ++k) {
    EXPECT_EQ(first[k].rvec, again[k].rvec);
    EXPECT_EQ(first[k].tvec, again[k].tvec);
    EXPECT_NE(first[k].rvec, other[k].rvec);
  }
}

TEST(FisheyeViews, TiltsAreAgainstTheLineOfSight) {
  const Camera camera = ManyFisheyes()[2];
  Pose pose;
  for (const cv::Point2d pixel :
       {cv::Point2d(640.0, 480.0), cv::Point2d(1100.0, 500.0), cv::Point2d(300.0, 200.0)}) {
    ASSERT_TRUE(world::PoseAt(camera.lens, Sheet(), world::RotationFor({0, 0, 0, 20.0, 0.0, 70.0}), pixel,
                              0.25, pose));
    EXPECT_NEAR(world::Obliqueness(Sheet(), pose), 20.0, 1e-9);
    EXPECT_NEAR(cv::norm(MiddleOf(pose)), 0.25, 1e-12);
    EXPECT_LT(cv::norm(camera.lens.Project(MiddleOf(pose)) - pixel), 1e-9);
  }
}

TEST(FisheyeViews, ListsFitTheirImages) {
  for (const Camera& camera : ManyFisheyes()) {
    for (const std::vector<Pose>& poses : {world::SpreadViews(camera, 24), world::FrontalViews(camera, 6)}) {
      for (const Pose& pose : poses) {
        EXPECT_TRUE(world::DiscsInside(camera, Sheet(), pose, 0.9 * world::ViewMargin(camera)));
        EXPECT_LT(world::Obliqueness(Sheet(), pose), 55.0);
      }
    }
    for (const Pose& pose : world::FrontalViews(camera, 6))
      EXPECT_LT(world::Obliqueness(Sheet(), pose), 1e-3);
  }
}

TEST(FisheyeViews, ListsFitOtherGridsAndUnits) {
  const Sheet sheet(cv::Size(5, 6), 0.05);
  for (const Pose& pose : world::SampleViews(ManyFisheyes()[0], 8, 2, sheet)) {
    EXPECT_TRUE(world::DiscsInside(ManyFisheyes()[0], sheet, pose, 1.0));
    EXPECT_GT(cv::norm(MiddleOf(pose, sheet)), 0.1249);
    EXPECT_LT(cv::norm(MiddleOf(pose, sheet)), 0.5001);
  }
}

TEST(FisheyeViews, AwayPoseShowsNoPartOfTheSheet) {
  for (const Camera& camera : ManyFisheyes()) {
    for (const Pose& view : world::SampleViews(camera, 6, 8)) {
      EXPECT_TRUE(world::ShowsSheet(camera, Sheet(), view));
      EXPECT_FALSE(world::ShowsSheet(camera, Sheet(), world::AwayPose(camera, Sheet(), view)));
    }
  }
}

TEST(FisheyeViews, RigsOfFisheyesHaveViewsTogether) {
  const Camera camera = ManyFisheyes()[2];
  const world::Rig row = world::RowRig(camera, 3, 0.1, 7);
  EXPECT_NE(row.cameras[1].lens.Curve()->D(), row.cameras[2].lens.Curve()->D());
  for (const std::vector<Pose>& poses : {world::RigViews(row, 6), world::SampleRigViews(row, 6, 3)}) {
    for (const Pose& pose : poses) EXPECT_TRUE(world::DiscsInsideAll(row, Sheet(), pose, 0.9));
  }
  const Pose view = world::RigViews(row, 1).front();
  const Pose away = world::AwayPose(row, Sheet(), view);
  for (std::size_t k = 0; k < 3; ++k) {
    EXPECT_FALSE(world::ShowsSheet(row.cameras[k], Sheet(), world::PoseFor(row, k, away)));
  }
}
