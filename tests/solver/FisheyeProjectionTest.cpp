/// The projection of fisheyes beside OpenCV's, its own differences, and itself the other way round.
#include "solver/FisheyeProjection.h"

#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/calib3d.hpp>
#include <vector>

#include "solver/Projection.h"

using namespace velmora;
using solver::Coordinate;
using solver::FisheyeProjection;

namespace {

Intrinsics Fisheye() {
  Intrinsics intrinsics;
  intrinsics.family = LensFamily::Angle;
  intrinsics.estimated = FISHEYE_PARAMETERS;
  intrinsics.values = {401.2, 403.7, 638.3, 481.9, 0.012, -0.021, 0.009, -0.0018};
  return intrinsics;
}

std::vector<cv::Vec3d> Points() {
  std::vector<cv::Vec3d> points;
  for (const double angle : {0.0, 1e-11, 1e-4, 0.3, 0.9, 1.5, 1.57, 1.6}) {
    for (const double turn : {0.1, 1.7, 3.9, 5.5}) {
      const double length = 0.2 + turn;
      points.push_back(length * cv::Vec3d(std::sin(angle) * std::cos(turn), std::sin(angle) * std::sin(turn),
                                          std::cos(angle)));
    }
  }
  return points;
}

TEST(FisheyeProjection, IsOpenCvs) {
  const FisheyeProjection projection(Fisheye());
  const auto& p = Fisheye().values;
  const cv::Matx33d K(p[0], 0.0, p[2], 0.0, p[1], p[3], 0.0, 0.0, 1.0);
  const cv::Vec4d D(p[4], p[5], p[6], p[7]);
  for (const cv::Vec3d& point : Points()) {
    if (!(point[2] > 0.01)) continue;  // OpenCV's goes by what is in front of the camera
    std::vector<cv::Point2d> expected;
    cv::fisheye::projectPoints(std::vector<cv::Point3d>{cv::Point3d(point)}, expected, cv::Vec3d(),
                               cv::Vec3d(), K, D);
    cv::Point2d pixel;
    ASSERT_TRUE(projection.Project(point, pixel));
    EXPECT_LT(cv::norm(pixel - expected[0]), 1e-9) << point;
  }
}

TEST(FisheyeProjection, ReachesBehindTheCamera) {
  const FisheyeProjection projection(Fisheye());
  ASSERT_GT(projection.LargestAngle(), 1.7);
  cv::Point2d beside;
  cv::Point2d behind;
  ASSERT_TRUE(projection.Project({1.0, 0.0, 0.0}, beside));
  ASSERT_TRUE(projection.Project({1.0, 0.0, -0.1}, behind));
  EXPECT_GT(behind.x, beside.x);
  EXPECT_FALSE(projection.Project({0.0, 0.0, 0.0}, beside));
}

TEST(FisheyeProjection, EndsWhereDistancesNoLongerGrow) {
  Intrinsics intrinsics = Fisheye();
  intrinsics.values[FISHEYE_K] = -0.3;
  intrinsics.values[FISHEYE_K + 1] = intrinsics.values[FISHEYE_K + 2] = intrinsics.values[FISHEYE_K + 3] =
      0.0;
  const FisheyeProjection projection(intrinsics);
  const double end = 1.0 / std::sqrt(3.0 * 0.3);
  EXPECT_NEAR(projection.LargestAngle(), end, 1e-9);
  cv::Point2d pixel;
  EXPECT_TRUE(projection.Project({std::sin(end - 0.01), 0.0, std::cos(end - 0.01)}, pixel));
  EXPECT_FALSE(projection.Project({std::sin(end + 0.01), 0.0, std::cos(end + 0.01)}, pixel));
  cv::Vec3d ray;
  EXPECT_FALSE(projection.RayOf({1200.0, 481.9}, ray)) << "farther out than any ray is imaged";
}

TEST(FisheyeProjection, HasItsDerivatives) {
  constexpr double STEP = 1e-6;
  for (const cv::Vec3d& point : Points()) {
    Coordinate u;
    Coordinate v;
    ASSERT_TRUE(FisheyeProjection(Fisheye()).Differentiate(point, u, v));
    for (int i = 0; i < 3; ++i) {
      cv::Vec3d step;
      step[i] = STEP * cv::norm(point);
      cv::Point2d ahead;
      cv::Point2d back;
      ASSERT_TRUE(FisheyeProjection(Fisheye()).Project(point + step, ahead));
      ASSERT_TRUE(FisheyeProjection(Fisheye()).Project(point - step, back));
      const cv::Point2d slope = (ahead - back) * (0.5 / step[i]);
      EXPECT_NEAR(u.byPoint[i], slope.x, 1e-4 * 400.0 / cv::norm(point)) << point << i;
      EXPECT_NEAR(v.byPoint[i], slope.y, 1e-4 * 400.0 / cv::norm(point)) << point << i;
    }
    for (size_t i = 0; i < FISHEYE_PARAMETERS; ++i) {
      Intrinsics more = Fisheye();
      Intrinsics less = Fisheye();
      more.values[i] += STEP;
      less.values[i] -= STEP;
      cv::Point2d ahead;
      cv::Point2d back;
      ASSERT_TRUE(FisheyeProjection(more).Project(point, ahead));
      ASSERT_TRUE(FisheyeProjection(less).Project(point, back));
      const cv::Point2d slope = (ahead - back) * (0.5 / STEP);
      EXPECT_NEAR(u.byIntrinsics[i], slope.x, 1e-5 * (1.0 + std::abs(slope.x))) << point << i;
      EXPECT_NEAR(v.byIntrinsics[i], slope.y, 1e-5 * (1.0 + std::abs(slope.y))) << point << i;
    }
  }
}

TEST(FisheyeProjection, FindsTheRaysOfPixels) {
  const FisheyeProjection projection(Fisheye());
  for (const cv::Vec3d& point : Points()) {
    cv::Point2d pixel;
    cv::Vec3d ray;
    ASSERT_TRUE(projection.Project(point, pixel));
    ASSERT_TRUE(projection.RayOf(pixel, ray));
    EXPECT_LT(cv::norm(ray - point * (1.0 / cv::norm(point))), 1e-9) << point;
  }
}

TEST(Projection, OfAFisheyeIsThatOfItsAngles) {
  const solver::Projection projection(Fisheye());
  const cv::Vec3d point(0.5, -0.3, -0.01);
  cv::Point2d expected;
  cv::Point2d pixel;
  ASSERT_TRUE(FisheyeProjection(Fisheye()).Project(point, expected));
  ASSERT_TRUE(projection.Project(point, pixel));
  EXPECT_EQ(pixel, expected);
  Coordinate u;
  Coordinate v;
  ASSERT_TRUE(projection.Differentiate(point, u, v));
  EXPECT_EQ(cv::Point2d(u.value, v.value), expected);
}

}  // namespace
