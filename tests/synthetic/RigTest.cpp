/// Tests of rigs and of the lists of views before them.
#include "Rig.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <opencv2/calib3d.hpp>
#include <stdexcept>

#include "Arrangement.h"
#include "Rigs.h"
#include "Views.h"

using world::Pair;
using world::Pose;
using world::Sheet;

namespace {

double Degrees(double radians) {
  return radians * 180.0 / CV_PI;
}

/// The angle of a rotation, degrees; exact for small ones too.
double AngleOf(const cv::Matx33d& R) {
  const cv::Vec3d axis(R(2, 1) - R(1, 2), R(0, 2) - R(2, 0), R(1, 0) - R(0, 1));
  return Degrees(std::atan2(0.5 * cv::norm(axis), 0.5 * (cv::trace(R) - 1.0)));
}

/// The direction of the right camera's optical axis in the left camera's frame.
cv::Vec3d RightAxis(const Pair& rig) {
  return rig.R.t() * cv::Vec3d(0.0, 0.0, 1.0);
}

/// Where the right camera stands in the left camera's frame.
cv::Vec3d RightPlace(const Pair& rig) {
  return rig.R.t() * rig.T * -1.0;
}

double Apart(const Pose& a, const Pose& b) {
  return cv::norm(a.rvec - b.rvec) + cv::norm(a.tvec - b.tvec);
}

/// The middle of the true centres in the left image.
cv::Point2d MiddleOf(const Pair& rig, const Pose& pose) {
  const std::vector<cv::Point2d> centres = world::TrueCentres(rig.left.lens, Sheet(), pose);
  cv::Point2d sum(0.0, 0.0);
  for (const cv::Point2d& p : centres) sum += p;
  return sum / static_cast<double>(centres.size());
}

struct StereoResult {
  cv::Matx33d R;
  cv::Vec3d T;
};

/// Calibrates a pair of cameras of known lenses from the true centres.
StereoResult CalibratedFromTruth(const Pair& rig, const std::vector<Pose>& poses) {
  std::vector<std::vector<cv::Point3f>> objects;
  std::vector<std::vector<cv::Point2f>> left;
  std::vector<std::vector<cv::Point2f>> right;
  const auto floats = [](const std::vector<cv::Point2d>& points) {
    return std::vector<cv::Point2f>(points.begin(), points.end());
  };
  const std::vector<cv::Point3d> grid = Sheet().GridPoints();
  for (const Pose& pose : poses) {
    objects.emplace_back(grid.begin(), grid.end());
    left.push_back(floats(world::TrueCentres(rig.left.lens, Sheet(), pose)));
    right.push_back(floats(world::TrueCentres(rig.right.lens, Sheet(), world::RightPose(rig, pose))));
  }
  cv::Mat leftK(rig.left.lens.K());
  cv::Mat rightK(rig.right.lens.K());
  cv::Mat leftD(rig.left.lens.D(), true);
  cv::Mat rightD(rig.right.lens.D(), true);
  if (leftD.empty()) leftD = cv::Mat::zeros(5, 1, CV_64F);
  if (rightD.empty()) rightD = cv::Mat::zeros(5, 1, CV_64F);
  cv::Mat R;
  cv::Mat T;
  cv::Mat E;
  cv::Mat F;
  cv::stereoCalibrate(objects, left, right, leftK, leftD, rightK, rightD, rig.left.size, R, T, E, F,
                      cv::CALIB_FIX_INTRINSIC,
                      cv::TermCriteria(cv::TermCriteria::COUNT + cv::TermCriteria::EPS, 100, 1e-12));
  return {cv::Matx33d(R), cv::Vec3d(T)};
}

}  // namespace

TEST(Rig, HasItsCamerasSideBySide) {
  const Pair rig =
      world::SideBySidePair({640, 480}, 60.0, 0.1, 0.0, {0.1, 0.0, 0.0, 0.0}, {0.2, 0.0, 0.0, 0.0});
  EXPECT_LT(cv::norm(RightPlace(rig) - cv::Vec3d(0.1, 0.0, 0.0)), 1e-15);
  EXPECT_LT(cv::norm(RightAxis(rig) - cv::Vec3d(0.0, 0.0, 1.0)), 1e-15);
  EXPECT_EQ(rig.left.lens.D().front(), 0.1);
  EXPECT_EQ(rig.right.lens.D().front(), 0.2);
  EXPECT_EQ(rig.left.lens.K(), rig.right.lens.K());
}

TEST(Rig, TurnsItsCamerasTowardEachOtherByTheToeIn) {
  const Pair rig = world::SideBySidePair({640, 480}, 60.0, 0.2, 20.0);
  EXPECT_NEAR(cv::norm(RightPlace(rig)), 0.2, 1e-15);
  EXPECT_NEAR(Degrees(std::acos(RightAxis(rig)[2])), 20.0, 1e-9);
  // Both axes meet before the cameras, as far from the one as from the other: 0.1 m / sin(10 degrees).
  const double distance = 0.1 / std::sin(10.0 * CV_PI / 180.0);
  const cv::Vec3d meeting = RightPlace(rig) + distance * RightAxis(rig);
  EXPECT_LT(cv::norm(meeting - cv::Vec3d(0.0, 0.0, distance)), 1e-12);
}

TEST(Rig, RefusesBaselinesAndToeInsThatCannotBe) {
  EXPECT_THROW(world::SideBySidePair({640, 480}, 60.0, 0.0), std::invalid_argument);
  EXPECT_THROW(world::SideBySidePair({640, 480}, 60.0, -0.1), std::invalid_argument);
  EXPECT_THROW(world::SideBySidePair({640, 480}, 60.0, std::nan("")), std::invalid_argument);
  EXPECT_THROW(world::SideBySidePair({640, 480}, 60.0, 0.1, 180.0), std::invalid_argument);
  EXPECT_THROW(world::SideBySidePair({640, 480}, 60.0, 0.1, std::nan("")), std::invalid_argument);
}

TEST(Rig, RightPoseLeadsToTheRightCamerasCoordinates) {
  for (const Pair& rig : ManyRigs()) {
    for (const Pose& pose : world::RigViews(rig, 3)) {
      const std::vector<cv::Point3d> left = world::ToCamera(Sheet().GridPoints(), pose);
      const std::vector<cv::Point3d> right =
          world::ToCamera(Sheet().GridPoints(), world::RightPose(rig, pose));
      for (std::size_t k = 0; k < left.size(); ++k) {
        const cv::Vec3d expected = rig.R * cv::Vec3d(left[k].x, left[k].y, left[k].z) + rig.T;
        EXPECT_LT(cv::norm(cv::Vec3d(right[k].x, right[k].y, right[k].z) - expected), 1e-12);
      }
    }
  }
}

TEST(Rig, OfAPairHasTheLeftCameraFirst) {
  const Pair pair = ManyRigs().back();
  const world::Rig rig = pair;
  ASSERT_EQ(rig.cameras.size(), 2U);
  EXPECT_EQ(rig.cameras[0].R, cv::Matx33d::eye());
  EXPECT_EQ(rig.cameras[0].T, cv::Vec3d());
  EXPECT_EQ(rig.cameras[0].lens.K(), pair.left.lens.K());
  EXPECT_EQ(rig.cameras[1].lens.K(), pair.right.lens.K());
  const Pose pose = world::RigViews(pair, 2).back();
  EXPECT_EQ(Apart(world::PoseFor(rig, 0, pose), pose), 0.0);
  EXPECT_EQ(Apart(world::PoseFor(rig, 1, pose), world::RightPose(pair, pose)), 0.0);
}

TEST(Rig, PosesLeadFromTheRigToACameraAndBack) {
  const world::Rig rig = world::RowRig(OrdinaryRig().left, 4, 0.1);
  const Pose pose = world::SpreadViews(rig.cameras[0], 2).back();
  for (const world::RigCamera& camera : rig.cameras) {
    const Pose own = world::PoseFor(camera, pose);
    EXPECT_LT(Apart(world::RigPoseFrom(camera, own), pose), 1e-12);
    const cv::Point3d inRig = world::ToCamera({{0.06, 0.2, 0.0}}, pose).front();
    const cv::Point3d inCamera = world::ToCamera({{0.06, 0.2, 0.0}}, own).front();
    const cv::Vec3d expected = camera.R * cv::Vec3d(inRig.x, inRig.y, inRig.z) + camera.T;
    EXPECT_LT(cv::norm(cv::Vec3d(inCamera.x, inCamera.y, inCamera.z) - expected), 1e-12);
  }
}

TEST(Rig, PartsHaveTheirFirstCamerasFrame) {
  const world::Rig rig = world::RowRig(OrdinaryRig().left, 4, 0.1);
  const world::Rig part = world::PartOf(rig, {2, 0, 3});
  ASSERT_EQ(part.cameras.size(), 3U);
  EXPECT_EQ(part.cameras[0].R, cv::Matx33d::eye());
  EXPECT_EQ(part.cameras[0].T, cv::Vec3d());
  const Pose pose = world::SpreadViews(rig.cameras[0], 2).back();
  const Pose forPart = world::PoseFor(rig, 2, pose);
  EXPECT_LT(Apart(world::PoseFor(part, 1, forPart), pose), 1e-12);
  EXPECT_LT(Apart(world::PoseFor(part, 2, forPart), world::PoseFor(rig, 3, pose)), 1e-12);
  EXPECT_EQ(part.cameras[2].lens.K(), rig.cameras[3].lens.K());
}

TEST(Rig, ViewsOfThreeCamerasKeepAllDiscsInsideAllImages) {
  const world::Rig rig = world::RowRig(OrdinaryRig().left, 3, 0.06);
  for (const Pose& pose : world::RigViews(rig, 12)) {
    EXPECT_TRUE(world::DiscsInsideAll(rig, Sheet(), pose, 0.9));
  }
  const Pose away = world::AwayPose(rig, Sheet(), world::RigViews(rig, 1).front());
  for (std::size_t k = 0; k < 3; ++k) {
    EXPECT_FALSE(world::ShowsSheet(rig.cameras[k], Sheet(), world::PoseFor(rig, k, away)));
  }
}

TEST(Rig, ViewsKeepAllDiscsInsideAllImages) {
  int number = 0;
  for (const Pair& rig : ManyRigs()) {
    const std::vector<Pose> poses = world::RigViews(rig, 30);
    ASSERT_EQ(poses.size(), 30U);
    for (const Pose& pose : poses) {
      EXPECT_TRUE(world::DiscsInsideAll(rig, Sheet(), pose, 0.9)) << "rig " << number;
      EXPECT_TRUE(world::FacesCamera(pose)) << "rig " << number;
      EXPECT_TRUE(world::FacesCamera(world::RightPose(rig, pose))) << "rig " << number;
    }
    ++number;
  }
}

TEST(Rig, InsideBothMeansInsideEach) {
  const Pair rig = OrdinaryRig();
  Pose pose = world::RigViews(rig, 1).front();
  EXPECT_TRUE(world::DiscsInsideAll(rig, Sheet(), pose));
  // Moved so far to one side that one camera alone sees it all.
  Pose left = pose;
  while (world::DiscsInside(rig.right, Sheet(), world::RightPose(rig, left))) left.tvec[0] -= 0.005;
  EXPECT_TRUE(world::DiscsInside(rig.left, Sheet(), left));
  EXPECT_FALSE(world::DiscsInsideAll(rig, Sheet(), left));
  Pose right = pose;
  while (world::DiscsInside(rig.left, Sheet(), right)) right.tvec[0] += 0.005;
  EXPECT_TRUE(world::DiscsInside(rig.right, Sheet(), world::RightPose(rig, right)));
  EXPECT_FALSE(world::DiscsInsideAll(rig, Sheet(), right));
}

TEST(Rig, ViewsOfARoundOfTheListAllDiffer) {
  for (const Pair& rig : ManyRigs()) {
    const std::vector<Pose> poses = world::RigViews(rig, 24);
    for (std::size_t k = 0; k < poses.size(); ++k) {
      for (std::size_t other = 0; other < k; ++other) EXPECT_GT(Apart(poses[k], poses[other]), 0.02);
    }
  }
}

TEST(Rig, ViewsMakeTheMostOfTheImagesTheyShare) {
  // Cameras that nearly coincide have the views of a single one.
  const Pair close = world::SideBySidePair({640, 480}, 60.0, 1e-6);
  const std::vector<Pose> single = world::SpreadViews(close.left, 24);
  const std::vector<Pose> both = world::RigViews(close, 24);
  for (std::size_t k = 0; k < single.size(); ++k) EXPECT_LT(Apart(single[k], both[k]), 1e-2) << k;
  // Further apart, the places still spread over the left image.
  const Pair wide = world::SideBySidePair({640, 480}, 60.0, 0.15);
  double least = 640.0;
  double most = 0.0;
  for (const Pose& pose : world::RigViews(wide, 12)) {
    least = std::min(least, MiddleOf(wide, pose).x);
    most = std::max(most, MiddleOf(wide, pose).x);
  }
  EXPECT_GT(most - least, 0.2 * 640);
}

TEST(Rig, SampledViewsKeepAllDiscsInsideAllImages) {
  for (const Pair& rig : {ManyRigs().front(), ManyRigs().back()}) {
    for (const Pose& pose : world::SampleRigViews(rig, 20, 5)) {
      EXPECT_TRUE(world::DiscsInsideAll(rig, Sheet(), pose, 0.9));
      EXPECT_TRUE(world::FacesCamera(pose));
      EXPECT_TRUE(world::FacesCamera(world::RightPose(rig, pose)));
    }
  }
}

TEST(Rig, SampledViewsDependOnTheSeedAlone) {
  const std::vector<Pose> first = world::SampleRigViews(OrdinaryRig(), 8, 5);
  const std::vector<Pose> again = world::SampleRigViews(OrdinaryRig(), 8, 5);
  const std::vector<Pose> other = world::SampleRigViews(OrdinaryRig(), 8, 6);
  for (std::size_t k = 0; k < first.size(); ++k) {
    EXPECT_EQ(Apart(first[k], again[k]), 0.0);
    EXPECT_GT(Apart(first[k], other[k]), 1e-3);
  }
}

TEST(Rig, ViewsFitOtherGrids) {
  const Pair rig = OrdinaryRig();
  const Sheet sheet(cv::Size(5, 6), 0.05);
  for (const Pose& pose : world::RigViews(rig, 16, sheet)) {
    EXPECT_TRUE(world::DiscsInsideAll(rig, sheet, pose, 0.9));
  }
}

TEST(Rig, SaysWhenItsCamerasCannotSeeTheGridTogether) {
  const Pair parting = world::SideBySidePair({640, 480}, 60.0, 0.1, -120.0);
  const Pair facing = world::SideBySidePair({640, 480}, 60.0, 2.0, 160.0);
  for (const Pair& rig : {parting, facing}) {
    for (const auto& views : {std::function<void()>([&] { world::RigViews(rig, 1); }),
                              std::function<void()>([&] { world::SampleRigViews(rig, 1, 1); })}) {
      try {
        views();
        ADD_FAILURE() << "found a view";
      } catch (const std::runtime_error& fault) {
        EXPECT_STREQ(fault.what(), "the cameras cannot see the whole grid together");
      }
    }
  }
}

TEST(Rig, AwayPoseShowsNoPartOfTheSheetInEitherImage) {
  for (const Pair& rig : ManyRigs()) {
    const Pose away = world::AwayPose(rig, Sheet(), world::RigViews(rig, 1).front());
    EXPECT_FALSE(world::ShowsSheet(rig.left, Sheet(), away));
    EXPECT_FALSE(world::ShowsSheet(rig.right, Sheet(), world::RightPose(rig, away)));
  }
}

TEST(Rig, PathGoesThroughItsViewsAndAwayFromBothCameras) {
  const Pair rig = OrdinaryRig();
  const std::vector<Pose> views = world::RigViews(rig, 4);
  const world::Trajectory path = world::ThroughViews(rig, Sheet(), views, 10.0, 2);
  ASSERT_EQ(path.Keys(), 5U);
  EXPECT_LT(Apart(path.At(path.TimeOf(1)), views[1]), 1e-9);
  EXPECT_LT(Apart(path.At(path.TimeOf(2)), world::AwayPose(rig, Sheet(), views[1])), 1e-9);
  EXPECT_LT(Apart(path.At(10.0), views[3]), 1e-9);
}

TEST(Rig, IsRecoveredFromTheTrueCentresOfTwelveViews) {
  for (const Pair& rig : ManyRigs()) {
    const StereoResult result = CalibratedFromTruth(rig, world::RigViews(rig, 12));
    EXPECT_NEAR(cv::norm(result.T), cv::norm(rig.T), 1e-4 * cv::norm(rig.T));
    EXPECT_LT(cv::norm(result.T - rig.T), 1e-4 * cv::norm(rig.T));
    EXPECT_LT(AngleOf(result.R * rig.R.t()), 1e-3);
  }
}
