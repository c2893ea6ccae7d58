/// Tests of the map of pixel corner rays.
#include "RayMap.h"

#include <gtest/gtest.h>

#include <cmath>

#include "Cameras.h"

TEST(RayMap, HoldsTheRaysOfAllPixelCorners) {
  for (const world::Camera& camera : ManyCameras()) {
    const cv::Mat map = world::MakeRayMap(camera);
    ASSERT_EQ(map.size(), camera.size + cv::Size(1, 1));
    for (int row = 0; row < map.rows; row += 7) {
      for (int column = 0; column < map.cols; column += 7) {
        const cv::Vec2d ray = map.at<cv::Vec2d>(row, column);
        const cv::Point2d pixel = camera.lens.Project({ray[0], ray[1]});
        ASSERT_LT(cv::norm(pixel - cv::Point2d(column - 0.5, row - 0.5)), 1e-8);
      }
    }
  }
}

TEST(RayMap, HoldsNoRaysWhereTheLensImagesNothing) {
  const world::Camera camera = world::CameraFromFieldOfView({320, 240}, 70.0, {-0.7, 0.0, 0.0, 0.0});
  const cv::Mat map = world::MakeRayMap(camera);
  EXPECT_TRUE(std::isnan(map.at<cv::Vec2d>(0, 0)[0]));
  EXPECT_TRUE(std::isnan(map.at<cv::Vec2d>(240, 320)[1]));
  EXPECT_NEAR(map.at<cv::Vec2d>(120, 160)[0], 0.0, 1e-12);
  // The images of rays fill a circle.
  const double f = camera.lens.K()(0, 0);
  const double radius = f * std::sqrt(1.0 / 2.1) * (1.0 - 0.7 / 2.1);
  for (int row = 0; row < map.rows; ++row) {
    for (int column = 0; column < map.cols; ++column) {
      const double distance = std::hypot(column - 160, row - 120);
      const bool imaged = !std::isnan(map.at<cv::Vec2d>(row, column)[0]);
      if (std::abs(distance - radius) < 0.1) continue;
      ASSERT_EQ(imaged, distance < radius) << row << ", " << column;
    }
  }
}
