/// Tests of the shots of rigs: who sees them, and what.
#include "Shots.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>
#include <set>
#include <stdexcept>

#include "Arrangement.h"
#include "Cameras.h"
#include "Placement.h"

using world::Pose;
using world::Rig;
using world::Sheet;
using world::ShotPoints;

namespace {

constexpr std::size_t DISCS = 44;

Rig Row(int count) {
  return world::RowRig(OrdinaryCamera(), count, 0.1, 3);
}

Rig Ring(int count) {
  const world::Camera camera = OrdinaryCamera();
  return world::RingRig(camera, count, world::RingRadius(camera), world::RingAngle(count), 3);
}

int Seeing(const ShotPoints& shot) {
  return static_cast<int>(
      std::count_if(shot.begin(), shot.end(), [](const auto& points) { return !points.empty(); }));
}

/// The cameras that shared shots link to camera 0, itself too.
std::set<std::size_t> LinkedToFirst(const std::vector<ShotPoints>& shots) {
  std::set<std::size_t> linked = {0};
  for (std::size_t before = 0; before != linked.size();) {
    before = linked.size();
    for (const ShotPoints& shot : shots) {
      const bool reached =
          std::any_of(linked.begin(), linked.end(), [&](std::size_t k) { return !shot[k].empty(); });
      for (std::size_t k = 0; reached && k < shot.size(); ++k) {
        if (!shot[k].empty()) linked.insert(k);
      }
    }
  }
  return linked;
}

double Range(const std::vector<double>& values) {
  const auto ends = std::minmax_element(values.begin(), values.end());
  return *ends.second - *ends.first;
}

}  // namespace

TEST(Shots, LinkAllCamerasEvenWhenTheyAreFew) {
  for (const Rig& rig : {Row(3), Row(6), Ring(2), Ring(3), Ring(4), Ring(5), Ring(12)}) {
    const int links = static_cast<int>(rig.cameras.size()) - 1;
    for (const auto& poses : {world::SampleRigShots(rig, links, 7), world::RigShots(rig, links)}) {
      EXPECT_EQ(LinkedToFirst(world::PointsOf(rig, poses)).size(), rig.cameras.size());
    }
    if (links > 1) {
      const auto tooFew = world::SampleRigShots(rig, 1, 7);
      EXPECT_EQ(tooFew.size(), 1U);
    }
  }
}

TEST(Shots, AreSeenWhollyByTwoCamerasAtLeast) {
  for (const Rig& rig : {Row(3), Row(5), Ring(3), Ring(5)}) {
    for (const auto& poses : {world::SampleRigShots(rig, 24, 7), world::RigShots(rig, 24)}) {
      ASSERT_EQ(poses.size(), 24U);
      for (const ShotPoints& shot : world::PointsOf(rig, poses)) {
        ASSERT_EQ(shot.size(), rig.cameras.size());
        EXPECT_GE(Seeing(shot), 2);
        for (const auto& points : shot) EXPECT_TRUE(points.empty() || points.size() == DISCS);
      }
    }
  }
}

TEST(Shots, OfARingAreNeverSeenByAllCameras) {
  for (const int count : {3, 4, 5, 9}) {
    const Rig rig = Ring(count);
    int byTwo = 0;
    const auto shots = world::PointsOf(rig, world::SampleRigShots(rig, 40, 11));
    for (const ShotPoints& shot : shots) {
      EXPECT_LT(Seeing(shot), count);
      const bool endsShare = !shot.front().empty() && !shot.back().empty();
      EXPECT_FALSE(count <= 5 && endsShare);
      byTwo += Seeing(shot) == 2 ? 1 : 0;
    }
    EXPECT_GT(byTwo, 0);
  }
}

TEST(Shots, AreNeverSharedByOppositeCameras) {
  // Wide cameras see sheets far from the middle of the ring, where the angles between them are smaller.
  const world::Camera wide = world::CameraFromFieldOfView({640, 480}, 90.0);
  const Rig rig = world::RingRig(wide, 9, world::RingRadius(wide), 40.0);
  for (const ShotPoints& shot : world::PointsOf(rig, world::SampleRigShots(rig, 160, 1))) {
    for (std::size_t k = 0; k < shot.size(); ++k) {
      for (std::size_t other = 0; other < k; ++other) {
        const cv::Matx33d rotation = rig.cameras[k].R * rig.cameras[other].R.t();
        const bool opposite = rotation(2, 2) < std::cos(130.0 * CV_PI / 180.0);
        EXPECT_FALSE(opposite && !shot[k].empty() && !shot[other].empty());
      }
    }
  }
}

TEST(Shots, OfARowAreOftenSeenByMoreThanTwo) {
  const Rig rig = Row(5);
  int byMore = 0;
  for (const ShotPoints& shot : world::PointsOf(rig, world::SampleRigShots(rig, 40, 11))) {
    byMore += Seeing(shot) > 2 ? 1 : 0;
  }
  EXPECT_GT(byMore, 5);
}

TEST(Shots, PointsAreTheProjectionsByTheComposedPose) {
  const std::vector<cv::Point3d> grid = Sheet().GridPoints();
  for (const Rig& rig : {Row(3), Ring(5)}) {
    const std::vector<Pose> poses = world::SampleRigShots(rig, 12, 2);
    const std::vector<ShotPoints> shots = world::PointsOf(rig, poses);
    for (std::size_t i = 0; i < poses.size(); ++i) {
      for (std::size_t k = 0; k < rig.cameras.size(); ++k) {
        if (shots[i][k].empty()) continue;
        cv::Vec3d rigRotation;
        cv::Rodrigues(rig.cameras[k].R, rigRotation);
        cv::Vec3d rvec;
        cv::Vec3d tvec;
        cv::composeRT(poses[i].rvec, poses[i].tvec, rigRotation, rig.cameras[k].T, rvec, tvec);
        std::vector<cv::Point2d> expected;
        cv::projectPoints(grid, rvec, tvec, rig.cameras[k].lens.K(), rig.cameras[k].lens.D(), expected);
        for (std::size_t p = 0; p < DISCS; ++p) EXPECT_LT(cv::norm(shots[i][k][p] - expected[p]), 1e-6);
      }
    }
  }
}

TEST(Shots, VaryInTiltAndDistance) {
  for (const Rig& rig : {Row(3), Ring(5)}) {
    const std::vector<Pose> poses = world::SampleRigShots(rig, 40, 5);
    for (std::size_t k = 0; k < rig.cameras.size(); ++k) {
      std::vector<double> tilts;
      std::vector<double> distances;
      for (const Pose& shot : poses) {
        const Pose pose = world::PoseFor(rig, k, shot);
        if (!world::SeesSheet(rig.cameras[k], Sheet(), pose)) continue;
        tilts.push_back(world::Obliqueness(Sheet(), pose));
        distances.push_back(cv::norm(pose.tvec));
      }
      ASSERT_GE(tilts.size(), 5U) << k;
      EXPECT_GT(Range(tilts), 15.0) << k;
      EXPECT_GT(Range(distances), 0.1) << k;
    }
  }
}

TEST(Shots, DependOnTheSeedAlone) {
  const Rig rig = Ring(5);
  const std::vector<Pose> first = world::SampleRigShots(rig, 9, 5);
  const std::vector<Pose> again = world::SampleRigShots(rig, 9, 5);
  const std::vector<Pose> other = world::SampleRigShots(rig, 9, 6);
  for (std::size_t k = 0; k < first.size(); ++k) {
    EXPECT_EQ(first[k].rvec, again[k].rvec);
    EXPECT_EQ(first[k].tvec, again[k].tvec);
    EXPECT_NE(first[k].rvec, other[k].rvec);
  }
}

TEST(Shots, HaveGaussianNoiseOfTheAskedSize) {
  const Rig rig = Row(3);
  const std::vector<Pose> poses = world::SampleRigShots(rig, 20, 5);
  const std::vector<ShotPoints> exact = world::PointsOf(rig, poses);
  const std::vector<ShotPoints> noisy = world::PointsOf(rig, poses, Sheet(), 0.2, 8);
  const std::vector<ShotPoints> again = world::PointsOf(rig, poses, Sheet(), 0.2, 8);
  const std::vector<ShotPoints> other = world::PointsOf(rig, poses, Sheet(), 0.2, 9);
  EXPECT_EQ(noisy, again);
  EXPECT_NE(noisy, other);
  double squares = 0.0;
  int count = 0;
  for (std::size_t i = 0; i < exact.size(); ++i) {
    for (std::size_t k = 0; k < exact[i].size(); ++k) {
      ASSERT_EQ(noisy[i][k].size(), exact[i][k].size());
      for (std::size_t p = 0; p < exact[i][k].size(); ++p) {
        const cv::Point2d off = noisy[i][k][p] - exact[i][k][p];
        squares += off.dot(off);
        count += 2;
      }
    }
  }
  EXPECT_NEAR(std::sqrt(squares / count), 0.2, 0.01);
}

TEST(Shots, AreNotSeenFromBehindNorTooObliquelyNorPartly) {
  const world::Camera camera = world::CameraFromFieldOfView({640, 480}, 60.0);
  const auto sees = [&](double tilt, double aside) {
    cv::Matx33d rotation;
    cv::Rodrigues(cv::Vec3d(0.0, tilt * CV_PI / 180.0, 0.0), rotation);
    const cv::Point3d middle = Sheet().GridMiddle();
    Pose pose;
    cv::Rodrigues(rotation, pose.rvec);
    pose.tvec = cv::Vec3d(aside, 0.0, 0.6) - rotation * cv::Vec3d(middle.x, middle.y, middle.z);
    return world::SeesSheet(camera, Sheet(), pose);
  };
  EXPECT_TRUE(sees(0.0, 0.0));
  EXPECT_TRUE(sees(60.0, 0.0));
  EXPECT_FALSE(sees(70.0, 0.0));
  EXPECT_FALSE(sees(180.0, 0.0));
  EXPECT_FALSE(sees(0.0, 0.3));
}

TEST(Shots, AskForTwoCamerasThatSeeTheGridTogether) {
  EXPECT_THROW(world::SampleRigShots(Rig{{world::RigCamera{OrdinaryCamera()}}}, 3, 1), std::invalid_argument);
  const world::Pair parting = world::SideBySidePair({640, 480}, 60.0, 0.1, -120.0);
  EXPECT_THROW(world::SampleRigShots(parting, 3, 1), std::runtime_error);
  EXPECT_THROW(world::RigShots(parting, 3), std::runtime_error);
}
