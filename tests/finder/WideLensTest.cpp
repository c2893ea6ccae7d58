/// The radial curve by which wide lenses bend the image.
#include "finder/WideLens.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace velmora;

namespace {

using finder::WideLens;

const cv::Size IMAGE(640, 480);
const cv::Point2d MIDDLE(319.5, 239.5);

TEST(WideLens, LeadsFromPixelsToRaysAndBack) {
  for (const double bend : {0.03, 0.3, 1.0, 3.0}) {
    const WideLens lens(IMAGE, bend);
    EXPECT_TRUE(lens.Bends());
    for (double y = -20.0; y < 500.0; y += 37.0) {
      for (double x = -20.0; x < 660.0; x += 37.0) {
        const cv::Vec3d ray = lens.RayOf({x, y});
        EXPECT_NEAR(cv::norm(ray), 1.0, 1e-12);
        EXPECT_LT(cv::norm(lens.PixelOf(ray) - cv::Point2d(x, y)), 1e-9) << bend << ": " << x << ", " << y;
        EXPECT_LT(cv::norm(lens.PixelOf(7.0 * ray) - cv::Point2d(x, y)), 1e-9) << "rays have any length";
      }
    }
  }
}

TEST(WideLens, HasRaysBesideAndBehindTheCamera) {
  const WideLens lens(IMAGE, 1.0);
  EXPECT_GT(lens.RayOf(MIDDLE + cv::Point2d(310.0, 0.0))[2], 0.0);
  EXPECT_NEAR(lens.RayOf(MIDDLE + cv::Point2d(0.0, 320.0))[2], 0.0, 1e-12);
  EXPECT_LT(lens.RayOf(MIDDLE + cv::Point2d(-240.0, 240.0))[2], 0.0);
}

TEST(WideLens, BendsAsAStereographicLensDoes) {
  // What is at an angle from the axis is at 2 f tan(angle / 2) from the middle.
  constexpr double F = 180.0;
  const WideLens lens(IMAGE, 320.0 * 320.0 / (4.0 * F * F));
  for (double angle = 0.05; angle < 2.0; angle += 0.1) {
    const cv::Vec3d ray = lens.RayOf(MIDDLE + cv::Point2d(2.0 * F * std::tan(0.5 * angle), 0.0));
    EXPECT_NEAR(std::atan2(ray[0] * 320.0, ray[2] * F), angle, 1e-9);
  }
}

TEST(WideLens, KnowsHowPixelsChangeWithTheRay) {
  constexpr double LITTLE = 1e-6;
  const WideLens lens(IMAGE, 0.8);
  for (const cv::Vec3d& ray :
       {cv::Vec3d(0.1, -0.2, 1.0), cv::Vec3d(0.9, 0.4, 0.02), cv::Vec3d(-0.7, 0.5, -0.4)}) {
    const cv::Matx23d slope = lens.SlopeAt(ray);
    for (int k = 0; k < 3; ++k) {
      cv::Vec3d step;
      step[k] = LITTLE;
      const cv::Point2d expected = (lens.PixelOf(ray + step) - lens.PixelOf(ray - step)) / (2.0 * LITTLE);
      EXPECT_NEAR(slope(0, k), expected.x, 1e-4) << ray << k;
      EXPECT_NEAR(slope(1, k), expected.y, 1e-4) << ray << k;
    }
  }
}

TEST(WideLens, BendsNothingUnlessItIsToldTo) {
  EXPECT_FALSE(WideLens().Bends());
  EXPECT_FALSE(WideLens(IMAGE, 0.0).Bends());
}

}  // namespace
