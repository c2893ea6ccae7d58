/// Tests of rigs in a row and in a ring.
#include "Arrangement.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>

#include "Cameras.h"

using world::Rig;
using world::RigCamera;

namespace {

double Degrees(double cosine) {
  return std::acos(std::min(1.0, std::max(-1.0, cosine))) * 180.0 / CV_PI;
}

cv::Vec3d PlaceOf(const RigCamera& camera) {
  return camera.R.t() * camera.T * -1.0;
}

cv::Vec3d AxisOf(const RigCamera& camera) {
  return camera.R.t() * cv::Vec3d(0.0, 0.0, 1.0);
}

double AxesPart(const RigCamera& a, const RigCamera& b) {
  return Degrees(AxisOf(a).dot(AxisOf(b)));
}

void ExpectDifferentLenses(const Rig& rig) {
  for (std::size_t k = 0; k < rig.cameras.size(); ++k) {
    for (std::size_t other = 0; other < k; ++other) {
      const cv::Matx33d a = rig.cameras[k].lens.K();
      const cv::Matx33d b = rig.cameras[other].lens.K();
      EXPECT_NE(a(0, 0), b(0, 0));
      EXPECT_NEAR(a(0, 0), b(0, 0), 0.05 * b(0, 0));
      EXPECT_NEAR(a(0, 2), b(0, 2), 0.03 * rig.cameras[k].size.width);
      EXPECT_NE(rig.cameras[k].lens.D(), rig.cameras[other].lens.D());
    }
  }
}

void ExpectFirstDefinesTheFrame(const Rig& rig) {
  const world::Camera given = OrdinaryCamera();
  EXPECT_EQ(rig.cameras.at(0).R, cv::Matx33d::eye());
  EXPECT_EQ(rig.cameras.at(0).T, cv::Vec3d());
  EXPECT_EQ(rig.cameras.at(0).lens.K(), given.lens.K());
  EXPECT_EQ(rig.cameras.at(0).lens.D(), given.lens.D());
}

}  // namespace

TEST(Arrangement, PutsCamerasInARowAtTheBaseline) {
  const Rig rig = world::RowRig(OrdinaryCamera(), 5, 0.1);
  ASSERT_EQ(rig.cameras.size(), 5U);
  ExpectFirstDefinesTheFrame(rig);
  ExpectDifferentLenses(rig);
  for (std::size_t k = 1; k < rig.cameras.size(); ++k) {
    const cv::Vec3d expected(0.1 * static_cast<double>(k), 0.0, 0.0);
    EXPECT_LT(cv::norm(PlaceOf(rig.cameras[k]) - expected), 0.01) << k;
    EXPECT_LT(AxesPart(rig.cameras[0], rig.cameras[k]), 5.0) << k;
    EXPECT_GT(AxesPart(rig.cameras[0], rig.cameras[k]), 0.01) << k;
  }
}

TEST(Arrangement, LetsCamerasInARingLookAtItsMiddle) {
  const Rig rig = world::RingRig(OrdinaryCamera(), 5, 0.4, 40.0);
  ASSERT_EQ(rig.cameras.size(), 5U);
  ExpectFirstDefinesTheFrame(rig);
  ExpectDifferentLenses(rig);
  const cv::Vec3d middle(0.0, 0.0, 0.4);
  for (std::size_t k = 0; k < rig.cameras.size(); ++k) {
    const cv::Vec3d sight = middle - PlaceOf(rig.cameras[k]);
    EXPECT_NEAR(cv::norm(sight), 0.4, 0.04) << k;
    EXPECT_LT(Degrees(sight.dot(AxisOf(rig.cameras[k])) / cv::norm(sight)), 11.0) << k;
    EXPECT_NEAR(AxesPart(rig.cameras[0], rig.cameras[k]), 40.0 * static_cast<double>(k), 5.0) << k;
  }
}

TEST(Arrangement, DependsOnTheSeedAlone) {
  const auto place = [](std::uint64_t seed) {
    return PlaceOf(world::RowRig(OrdinaryCamera(), 3, 0.1, seed).cameras[2]);
  };
  EXPECT_EQ(place(4), place(4));
  EXPECT_NE(place(4), place(5));
}

TEST(Arrangement, OpensRingsSoFarThatTheirEndsNeverSeeTheSameSide) {
  EXPECT_EQ(world::RingAngle(2), 40.0);
  EXPECT_EQ(world::RingAngle(3), 80.0);
  EXPECT_EQ(world::RingAngle(5), 40.0);
  EXPECT_EQ(world::RingAngle(9), 40.0);
  EXPECT_EQ(world::RingAngle(12), 30.0);
  EXPECT_NO_THROW(world::RingRig(OrdinaryCamera(), 12, 0.4, world::RingAngle(12)));
}

TEST(Arrangement, ShowsTheGridHalfAsWideAsTheImageInTheMiddleOfTheRing) {
  const world::Camera camera = world::CameraFromFieldOfView({640, 480}, 60.0);
  const double radius = world::RingRadius(camera);
  // The grid is 10 row distances of 0.02 m long.
  EXPECT_NEAR(camera.lens.K()(0, 0) * 0.2 / radius, 0.5 * 640, 1.0);
}

TEST(Arrangement, RefusesWhatIsNoRig) {
  const world::Camera camera = OrdinaryCamera();
  const double none = std::numeric_limits<double>::quiet_NaN();
  EXPECT_THROW(world::RowRig(camera, 1, 0.1), std::invalid_argument);
  EXPECT_THROW(world::RowRig(camera, 3, 0.0), std::invalid_argument);
  EXPECT_THROW(world::RowRig(camera, 3, none), std::invalid_argument);
  EXPECT_THROW(world::RingRig(camera, 1, 0.4, 40.0), std::invalid_argument);
  EXPECT_THROW(world::RingRig(camera, 3, -0.4, 40.0), std::invalid_argument);
  EXPECT_THROW(world::RingRig(camera, 3, 0.4, none), std::invalid_argument);
  EXPECT_THROW(world::RingRig(camera, 10, 0.4, 40.0), std::invalid_argument);
  EXPECT_THROW(world::RingAngle(1), std::invalid_argument);
}
