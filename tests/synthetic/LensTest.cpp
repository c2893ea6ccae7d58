/// Tests of lens distortion and its inverse.
#include "Lens.h"

#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/calib3d.hpp>
#include <stdexcept>

#include "Cameras.h"

using world::Lens;

namespace {

const cv::Matx33d MATRIX(610, 0, 322, 0, 605, 237, 0, 0, 1);

void ExpectSameProjections(const std::vector<double>& D) {
  const Lens lens(MATRIX, D);
  cv::RNG random(3);
  std::vector<cv::Point3d> points;
  for (int k = 0; k < 500; ++k)
    points.emplace_back(random.uniform(-0.8, 0.8), random.uniform(-0.6, 0.6), 1.0);
  std::vector<cv::Point2d> expected;
  cv::projectPoints(points, cv::Vec3d(0, 0, 0), cv::Vec3d(0, 0, 0), MATRIX, D, expected);
  for (std::size_t k = 0; k < points.size(); ++k) {
    const cv::Point2d pixel = lens.Project({points[k].x, points[k].y});
    ASSERT_LT(cv::norm(pixel - expected[k]), 1e-9) << points[k];
  }
}

}  // namespace

TEST(Lens, ProjectsLikeOpenCVWithoutCoefficients) {
  ExpectSameProjections({});
}

TEST(Lens, ProjectsLikeOpenCVWithFourCoefficients) {
  ExpectSameProjections({-0.3, 0.1, 0.002, -0.001});
}

TEST(Lens, ProjectsLikeOpenCVWithFiveCoefficients) {
  ExpectSameProjections({-0.28, 0.09, 0.001, -0.002, -0.01});
}

TEST(Lens, ProjectsLikeOpenCVWithEightCoefficients) {
  ExpectSameProjections({0.5, 0.2, 0.001, -0.0015, 0.01, 0.8, 0.3, 0.02});
}

TEST(Lens, ProjectsLikeOpenCVWithTwelveCoefficients) {
  ExpectSameProjections({0.5, 0.2, 0.001, -0.0015, 0.01, 0.8, 0.3, 0.02, 0.004, -0.002, 0.003, 0.001});
}

TEST(Lens, ProjectsLikeOpenCVWithFourteenCoefficientsOfATiltedSensor) {
  ExpectSameProjections(
      {0.5, 0.2, 0.001, -0.0015, 0.01, 0.8, 0.3, 0.02, 0.004, -0.002, 0.003, 0.001, 0.03, -0.05});
}

TEST(Lens, FindsTheRayOfEveryPixelOfManyCameras) {
  for (const world::Camera& camera : ManyCameras()) {
    for (int y = 0; y < camera.size.height; y += 13) {
      for (int x = 0; x < camera.size.width; x += 13) {
        cv::Point2d ray;
        ASSERT_TRUE(camera.lens.Unproject(cv::Point2d(x, y), ray)) << x << ", " << y;
        ASSERT_TRUE(camera.lens.Images(ray));
        ASSERT_LT(cv::norm(camera.lens.Project(ray) - cv::Point2d(x, y)), 1e-8) << x << ", " << y;
      }
    }
  }
}

TEST(Lens, FindsTheRayThatWasProjected) {
  for (const world::Camera& camera : ManyCameras()) {
    cv::RNG random(9);
    for (int k = 0; k < 500; ++k) {
      const cv::Point2d ray(random.uniform(-0.5, 0.5), random.uniform(-0.4, 0.4));
      cv::Point2d found;
      ASSERT_TRUE(camera.lens.Unproject(camera.lens.Project(ray), found));
      ASSERT_LT(cv::norm(found - ray), 1e-10) << ray;
    }
  }
}

TEST(Lens, FindsTheSameRayFromAnyStart) {
  const Lens lens = OrdinaryCamera().lens;
  cv::Point2d cold;
  ASSERT_TRUE(lens.Unproject({20, 30}, cold));
  for (const cv::Point2d start : {cv::Point2d(0, 0), cv::Point2d(0.6, 0.5), cv::Point2d(-3.0, 2.0)}) {
    cv::Point2d ray = start;
    ASSERT_TRUE(lens.Unproject({20, 30}, ray, true));
    EXPECT_LT(cv::norm(ray - cold), 1e-10) << start;
  }
}

TEST(Lens, RefusesPixelsBeyondTheFoldOfAStrongBarrel) {
  // r (1 - 0.5 r^2) has its only maximum, 0.5443, at r = 0.8165.
  const Lens lens(MATRIX, {-0.5, 0.0, 0.0, 0.0});
  const double fold = std::sqrt(2.0 / 3.0);
  const double farthest = fold * (1.0 - 0.5 * fold * fold);
  for (int k = 0; k < 90; ++k) {
    const cv::Point2d direction(std::cos(k * 0.07), std::sin(k * 0.07));
    const auto pixel = [&](double radius) {
      return cv::Point2d(610 * radius * direction.x + 322, 605 * radius * direction.y + 237);
    };
    cv::Point2d ray;
    ASSERT_TRUE(lens.Unproject(pixel(farthest * 0.99), ray)) << k;
    EXPECT_LT(cv::norm(ray), fold);
    ASSERT_FALSE(lens.Unproject(pixel(farthest * 1.01), ray)) << k;
    ASSERT_FALSE(lens.Unproject(pixel(farthest * 2.0), ray)) << k;
  }
}

TEST(Lens, RefusesRootsBehindTheFold) {
  const Lens lens(MATRIX, {-0.5, 0.0, 0.0, 0.0});
  // Past r = sqrt(2) the image is turned around: this ray and another one share their pixel.
  const cv::Point2d mirrored(-1.5, 0.1);
  const cv::Point2d folded(1.1, 0.2);
  EXPECT_FALSE(lens.Images(mirrored));
  EXPECT_FALSE(lens.Images(folded));
  for (const cv::Point2d& wrong : {mirrored, folded}) {
    cv::Point2d ray = wrong;
    ASSERT_TRUE(lens.Unproject(lens.Project(wrong), ray, true));
    EXPECT_LT(cv::norm(ray), std::sqrt(2.0 / 3.0));
    EXPECT_GT(cv::norm(ray - wrong), 0.1);
  }
}

TEST(Lens, RefusesRootsBehindAPoleOfARationalModel) {
  const Lens lens(MATRIX, {0.0, 0.0, 0.0, 0.0, 0.0, -1.0, 0.0, 0.0});
  EXPECT_TRUE(lens.Images({0.9, 0.0}));
  EXPECT_FALSE(lens.Images({1.1, 0.0}));
  cv::Point2d ray(1.3, 0.0);
  ASSERT_TRUE(lens.Unproject(lens.Project({1.3, 0.0}), ray, true));
  EXPECT_LT(cv::norm(ray), 1.0);
}

TEST(Lens, LeavesTheRayAloneWhenItFindsNone) {
  const Lens lens(MATRIX, {-0.5, 0.0, 0.0, 0.0});
  cv::Point2d ray(0.25, 0.125);
  ASSERT_FALSE(lens.Unproject({5000, 4000}, ray, true));
  EXPECT_EQ(ray, cv::Point2d(0.25, 0.125));
}

TEST(Lens, RefusesOtherNumbersOfCoefficients) {
  EXPECT_THROW(Lens(MATRIX, {0.1}), std::invalid_argument);
  EXPECT_THROW(Lens(MATRIX, std::vector<double>(6, 0.0)), std::invalid_argument);
  EXPECT_THROW(static_cast<void>(Lens(cv::Matx33d::zeros())), std::invalid_argument);
}
