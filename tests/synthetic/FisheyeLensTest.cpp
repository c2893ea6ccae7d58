/// Tests of fisheyes: directions to pixels and back.
#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/calib3d.hpp>
#include <stdexcept>
#include <vector>

#include "Cameras.h"
#include "Lens.h"

using world::FisheyeCurve;
using world::Lens;

namespace {

cv::Point3d Direction(double degrees, double turn, double length = 1.0) {
  const double angle = degrees * CV_PI / 180.0;
  return {length * std::sin(angle) * std::cos(turn), length * std::sin(angle) * std::sin(turn),
          length * std::cos(angle)};
}

}  // namespace

TEST(FisheyeLens, ProjectsLikeOpenCV) {
  for (const world::Camera& camera : ManyFisheyes()) {
    const FisheyeCurve::Coefficients& k = camera.lens.Curve()->D();
    for (double degrees = 0.0; degrees <= 85.0; degrees += 2.5) {
      for (double turn = 0.1; turn < 6.3; turn += 0.7) {
        const std::vector<cv::Point3d> points = {Direction(degrees, turn, 0.1 + turn)};
        std::vector<cv::Point2d> expected;
        cv::fisheye::projectPoints(points, expected, cv::Vec3d(), cv::Vec3d(), camera.lens.K(),
                                   cv::Vec4d(k[0], k[1], k[2], k[3]));
        ASSERT_TRUE(camera.lens.Images(points[0]));
        ASSERT_LT(cv::norm(camera.lens.Project(points[0]) - expected[0]), 1e-9) << degrees << ", " << turn;
      }
    }
  }
}

TEST(FisheyeLens, ImagesWhatIsBesideAndBehindTheCamera) {
  const Lens lens({400.0, 0.0, 640.0, 0.0, 410.0, 480.0, 0.0, 0.0, 1.0}, FisheyeCurve({}));
  const double hundred = 100.0 * CV_PI / 180.0;
  EXPECT_LT(cv::norm(lens.Project(Direction(100.0, 0.0, 3.0)) - cv::Point2d(640.0 + 400.0 * hundred, 480.0)),
            1e-9);
  EXPECT_LT(
      cv::norm(lens.Project(Direction(100.0, -0.5 * CV_PI)) - cv::Point2d(640.0, 480.0 - 410.0 * hundred)),
      1e-9);
  EXPECT_TRUE(lens.Images(Direction(179.0, 1.0)));
  EXPECT_FALSE(lens.Images(cv::Point3d(0.0, 0.0, -1.0)));
  EXPECT_FALSE(lens.Images(cv::Point3d()));
  EXPECT_FALSE(OrdinaryCamera().lens.Images(Direction(90.0, 0.3)));
  EXPECT_TRUE(std::isinf(OrdinaryCamera().lens.Project(Direction(100.0, 0.3)).x));
}

TEST(FisheyeLens, FindsTheDirectionThatWasProjected) {
  for (const world::Camera& camera : ManyFisheyes()) {
    for (double degrees = 0.0; degrees <= 105.0; degrees += 0.5) {
      for (double turn = 0.0; turn < 6.3; turn += 0.3) {
        const cv::Point3d direction = Direction(degrees, turn);
        cv::Point3d found;
        ASSERT_TRUE(camera.lens.Unproject(camera.lens.Project(direction), found));
        ASSERT_LT(cv::norm(found - direction), 1e-12) << degrees << ", " << turn;
      }
    }
  }
}

TEST(FisheyeLens, EndsWithItsCurve) {
  const Lens lens({400.0, 0.0, 640.0, 0.0, 400.0, 480.0, 0.0, 0.0, 1.0},
                  FisheyeCurve({-0.13, 0.0, 0.0, 0.0}));
  const double widest = lens.Curve()->WidestAngle() * 180.0 / CV_PI;
  EXPECT_NEAR(widest, 180.0 / CV_PI / std::sqrt(0.39), 1e-9);
  EXPECT_TRUE(lens.Images(Direction(widest - 0.01, 2.0)));
  EXPECT_FALSE(lens.Images(Direction(widest + 0.01, 2.0)));
  cv::Point3d direction(1.0, 2.0, 3.0);
  EXPECT_FALSE(lens.Unproject(
      {640.0 + 1.001 * 400.0 * lens.Curve()->Distance(lens.Curve()->WidestAngle()), 480.0}, direction));
  EXPECT_EQ(direction, cv::Point3d(1.0, 2.0, 3.0));
}

TEST(FisheyeLens, HasRaysBeforeTheCameraAlone) {
  const Lens lens = ManyFisheyes().front().lens;
  const cv::Point2d ray(0.6, -0.8);
  EXPECT_EQ(lens.Project(ray), lens.Project(cv::Point3d(0.6, -0.8, 1.0)));
  EXPECT_TRUE(lens.Images(ray));
  cv::Point2d found;
  ASSERT_TRUE(lens.Unproject(lens.Project(ray), found));
  EXPECT_LT(cv::norm(found - ray), 1e-12);
  EXPECT_FALSE(lens.Unproject(lens.Project(Direction(95.0, 1.0)), found));
}

TEST(FisheyeLens, KeepsItsCurveWithAnotherMatrix) {
  const Lens lens = ManyFisheyes().back().lens;
  cv::Matx33d K = lens.K();
  K(0, 2) += 7.0;
  const cv::Point3d direction = Direction(97.0, 1.0);
  const cv::Point2d moved = lens.WithMatrix(K).Project(direction);
  EXPECT_LT(cv::norm(moved - lens.Project(direction) - cv::Point2d(7.0, 0.0)), 1e-9);
  EXPECT_EQ(OrdinaryCamera().lens.WithMatrix(K).D(), OrdinaryCamera().lens.D());
}

TEST(FisheyeLens, RefusesFocalLengthsThatAreNotPositive) {
  EXPECT_THROW(Lens(cv::Matx33d::zeros(), FisheyeCurve({})), std::invalid_argument);
}
