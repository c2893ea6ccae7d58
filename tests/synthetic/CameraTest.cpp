/// Tests of cameras and of the true projections.
#include "Camera.h"

#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/calib3d.hpp>
#include <stdexcept>

#include "Cameras.h"
#include "Views.h"

TEST(Camera, HasTheFieldOfViewItIsMadeFor) {
  const world::Camera camera = world::CameraFromFieldOfView({1000, 500}, 90.0);
  EXPECT_NEAR(camera.lens.K()(0, 0), 500.0, 1e-9);
  EXPECT_NEAR(camera.lens.K()(1, 1), 500.0, 1e-9);
  EXPECT_DOUBLE_EQ(camera.lens.K()(0, 2), 499.5);
  EXPECT_DOUBLE_EQ(camera.lens.K()(1, 2), 249.5);
}

TEST(Camera, OfAFisheyeHasTheFieldOfViewItIsMadeFor) {
  const world::Camera even = world::FisheyeFromFieldOfView({1000, 500}, 180.0);
  EXPECT_NEAR(even.lens.K()(0, 0), 1000.0 / CV_PI, 1e-9);
  EXPECT_NEAR(even.lens.K()(1, 1), 1000.0 / CV_PI, 1e-9);
  EXPECT_DOUBLE_EQ(even.lens.K()(0, 2), 499.5);
  EXPECT_DOUBLE_EQ(even.lens.K()(1, 2), 249.5);
  const world::Camera curved = world::FisheyeFromFieldOfView({1000, 500}, 200.0, {0.02, 0.003, 0.0, 0.0});
  const double edge = 100.0 * CV_PI / 180.0;
  const cv::Point2d right = curved.lens.Project(cv::Point3d(std::sin(edge), 0.0, std::cos(edge)));
  EXPECT_NEAR(right.x, 999.5, 1e-9);
  EXPECT_NEAR(right.y, 249.5, 1e-9);
}

TEST(Camera, OfAFisheyeRefusesFieldsOfViewThatItsCurveDoesNotReach) {
  EXPECT_THROW(world::FisheyeFromFieldOfView({640, 480}, 360.0), std::invalid_argument);
  EXPECT_THROW(world::FisheyeFromFieldOfView({640, 480}, 0.0), std::invalid_argument);
  EXPECT_THROW(world::FisheyeFromFieldOfView({640, 480}, 150.0, {-0.3, 0.0, 0.0, 0.0}),
               std::invalid_argument);
  EXPECT_NO_THROW(world::FisheyeFromFieldOfView({640, 480}, 110.0, {-0.3, 0.0, 0.0, 0.0}));
}

TEST(Camera, RefusesImpossibleFieldsOfView) {
  EXPECT_THROW(world::CameraFromFieldOfView({640, 480}, 180.0), std::invalid_argument);
  EXPECT_THROW(world::CameraFromFieldOfView({0, 480}, 60.0), std::invalid_argument);
}

TEST(Camera, HasTrueCentresWhereOpenCVProjectsTheGrid) {
  const world::Sheet sheet(cv::Size(4, 11), 0.017);
  for (const world::Camera& camera : ManyCameras()) {
    for (const world::Pose& pose : world::SampleViews(camera, 8, 3, sheet)) {
      std::vector<cv::Point2d> expected;
      cv::projectPoints(sheet.GridPoints(), pose.rvec, pose.tvec, camera.lens.K(), camera.lens.D(), expected);
      const std::vector<cv::Point2d> centres = world::TrueCentres(camera.lens, sheet, pose);
      ASSERT_EQ(centres.size(), 44U);
      for (std::size_t k = 0; k < centres.size(); ++k) ASSERT_LT(cv::norm(centres[k] - expected[k]), 1e-6);
    }
  }
}

TEST(Camera, OfAFisheyeHasTrueCentresBehindItToo) {
  const world::Sheet sheet;
  const world::Lens lens({300, 0, 320, 0, 300, 240, 0, 0, 1}, world::FisheyeCurve({}));
  // The grid's first disc is to the right of the camera and a little behind it, the paper parallel to the
  // axis.
  const world::Pose pose = {cv::Vec3d(0.0, 0.5 * CV_PI, 0.0), cv::Vec3d(0.3, 0.0, -0.01)};
  const cv::Point2d first = world::TrueCentres(lens, sheet, pose).front();
  EXPECT_NEAR(first.x, 320.0 + 300.0 * (0.5 * CV_PI + std::atan(0.01 / 0.3)), 1e-9);
  EXPECT_NEAR(first.y, 240.0, 1e-9);
  EXPECT_TRUE(std::isnan(world::TrueCentres(OrdinaryCamera().lens, sheet, pose).front().x));
}

TEST(Camera, IsRecoveredFromItsTrueCentres) {
  const world::Camera camera = OrdinaryCamera();
  const world::Sheet sheet;
  std::vector<std::vector<cv::Point3f>> objects;
  std::vector<std::vector<cv::Point2f>> images;
  for (const world::Pose& pose : world::SpreadViews(camera, 12)) {
    std::vector<cv::Point3f> object;
    std::vector<cv::Point2f> image;
    for (const cv::Point3d& p : sheet.GridPoints()) object.push_back(cv::Point3f(p));
    for (const cv::Point2d& p : world::TrueCentres(camera.lens, sheet, pose)) image.push_back(cv::Point2f(p));
    objects.push_back(object);
    images.push_back(image);
  }
  cv::Mat K;
  cv::Mat D;
  std::vector<cv::Mat> rvecs;
  std::vector<cv::Mat> tvecs;
  const cv::TermCriteria precise(cv::TermCriteria::COUNT + cv::TermCriteria::EPS, 200, 1e-14);
  const double rms = cv::calibrateCamera(objects, images, camera.size, K, D, rvecs, tvecs, 0, precise);
  // Points narrowed to float are off by up to 3e-5 pixels.
  EXPECT_LT(rms, 1e-4);
  EXPECT_NEAR(K.at<double>(0, 0), camera.lens.K()(0, 0), 0.01);
  EXPECT_NEAR(K.at<double>(0, 2), camera.lens.K()(0, 2), 0.01);
  EXPECT_NEAR(K.at<double>(1, 2), camera.lens.K()(1, 2), 0.01);
  EXPECT_NEAR(D.at<double>(0), -0.28, 1e-3);
}

TEST(Camera, SeesNoPointsBehindItOrPastTheFold) {
  const world::Camera camera = world::CameraFromFieldOfView({640, 480}, 60.0, {-0.5, 0.0, 0.0, 0.0});
  const world::Pose pose = {cv::Vec3d(0, 0, 0), cv::Vec3d(0, 0, 1)};
  const std::vector<cv::Point2d> pixels =
      world::ProjectPoints(camera.lens, {{0, 0, 0}, {0, 0, -2}, {1.0, 0, 0}}, pose);
  EXPECT_NEAR(pixels[0].x, 319.5, 1e-9);
  EXPECT_TRUE(std::isnan(pixels[1].x));
  EXPECT_TRUE(std::isnan(pixels[2].x));
}

TEST(Camera, KnowsWhetherWholeDiscsAreInside) {
  const world::Camera camera = OrdinaryCamera();
  const world::Sheet sheet;
  world::Pose pose;
  ASSERT_TRUE(world::PlaceGrid(camera, sheet, {-1.0, 0.0, 0.5, 0, 0, 0}, 10.0, pose));
  EXPECT_TRUE(world::DiscsInside(camera, sheet, pose, 9.0));
  EXPECT_FALSE(world::DiscsInside(camera, sheet, pose, 12.0));
  pose.tvec[0] -= 0.02;
  EXPECT_FALSE(world::DiscsInside(camera, sheet, pose));
}

TEST(Camera, KnowsTheSideOfTheSheetItIsOn) {
  world::Pose pose;
  ASSERT_TRUE(world::PlaceGrid(OrdinaryCamera(), world::Sheet(), {0, 0, 0.6, 30, -20, 15}, 5.0, pose));
  EXPECT_TRUE(world::FacesCamera(pose));
  cv::Matx33d R;
  cv::Rodrigues(pose.rvec, R);
  const cv::Matx33d turned = R * cv::Matx33d(-1, 0, 0, 0, 1, 0, 0, 0, -1);
  cv::Rodrigues(turned, pose.rvec);
  EXPECT_FALSE(world::FacesCamera(pose));
}
