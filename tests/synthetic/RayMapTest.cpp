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
        const cv::Vec3d ray = map.at<cv::Vec3d>(row, column);
        const cv::Point2d pixel = camera.lens.Project(cv::Point2d(ray[0], ray[1]));
        ASSERT_LT(cv::norm(pixel - cv::Point2d(column - 0.5, row - 0.5)), 1e-8);
        ASSERT_EQ(ray[2], 1.0);
      }
    }
  }
}

TEST(RayMap, HoldsTheDirectionsOfAllPixelCornersOfFisheyes) {
  for (const world::Camera& camera : ManyFisheyes()) {
    const cv::Mat map = world::MakeRayMap(camera);
    ASSERT_EQ(map.size(), camera.size + cv::Size(1, 1));
    for (int row = 0; row < map.rows; row += 7) {
      for (int column = 0; column < map.cols; column += 7) {
        const cv::Vec3d direction = map.at<cv::Vec3d>(row, column);
        const cv::Point2d pixel = camera.lens.Project(cv::Point3d(direction));
        ASSERT_LT(cv::norm(pixel - cv::Point2d(column - 0.5, row - 0.5)), 1e-9);
        ASSERT_NEAR(cv::norm(direction), 1.0, 1e-12);
      }
    }
  }
}

TEST(RayMap, HoldsNoDirectionsOutsideTheCircleOfAFisheye) {
  const cv::Matx33d K(100, 0, 159.5, 0, 100, 119.5, 0, 0, 1);
  const world::Camera camera = {{320, 240}, world::Lens(K, world::FisheyeCurve({-0.13, 0.0, 0.0, 0.0}))};
  const cv::Mat map = world::MakeRayMap(camera);
  const double end = 1.0 / std::sqrt(0.39);
  const double radius = 100.0 * end * (1.0 - 0.13 * end * end);
  for (int row = 0; row < map.rows; ++row) {
    for (int column = 0; column < map.cols; ++column) {
      const double distance = std::hypot(column - 160, row - 120);
      if (std::abs(distance - radius) < 1e-6) continue;
      ASSERT_EQ(!std::isnan(map.at<cv::Vec3d>(row, column)[2]), distance < radius) << row << ", " << column;
    }
  }
}

TEST(RayMap, HoldsNoRaysWhereTheLensImagesNothing) {
  const world::Camera camera = world::CameraFromFieldOfView({320, 240}, 70.0, {-0.7, 0.0, 0.0, 0.0});
  const cv::Mat map = world::MakeRayMap(camera);
  EXPECT_TRUE(std::isnan(map.at<cv::Vec3d>(0, 0)[0]));
  EXPECT_TRUE(std::isnan(map.at<cv::Vec3d>(240, 320)[1]));
  EXPECT_NEAR(map.at<cv::Vec3d>(120, 160)[0], 0.0, 1e-12);
  // The images of rays fill a circle.
  const double f = camera.lens.K()(0, 0);
  const double radius = f * std::sqrt(1.0 / 2.1) * (1.0 - 0.7 / 2.1);
  for (int row = 0; row < map.rows; ++row) {
    for (int column = 0; column < map.cols; ++column) {
      const double distance = std::hypot(column - 160, row - 120);
      const bool imaged = !std::isnan(map.at<cv::Vec3d>(row, column)[0]);
      if (std::abs(distance - radius) < 0.1) continue;
      ASSERT_EQ(imaged, distance < radius) << row << ", " << column;
    }
  }
}
