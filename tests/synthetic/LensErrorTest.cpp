/// Tests of the distance between camera models.
#include "LensError.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>

#include "Cameras.h"

using world::Alignment;
using world::Lens;
using world::MeanProjectionDistance;
using world::ProjectionDistance;

namespace {

Lens Changed(const Lens& lens, double focal, double cx, double cy) {
  cv::Matx33d K = lens.K();
  K(0, 0) *= focal;
  K(1, 1) *= focal;
  K(0, 2) += cx;
  K(1, 2) += cy;
  return lens.WithMatrix(K);
}

}  // namespace

TEST(LensError, IsZeroBetweenEqualCameras) {
  for (const world::Camera& camera : ManyCameras()) {
    for (const Alignment alignment : {Alignment::Raw, Alignment::Rotated}) {
      const ProjectionDistance distance =
          MeanProjectionDistance(camera.lens, camera.lens, camera.size, {}, alignment);
      EXPECT_LT(distance.max, 1e-8);
      EXPECT_EQ(distance.count, 1200);
    }
  }
}

TEST(LensError, IsTheShiftOfThePrincipalPoint) {
  const world::Camera camera = OrdinaryCamera();
  const ProjectionDistance distance =
      MeanProjectionDistance(camera.lens, Changed(camera.lens, 1.0, 3.0, -4.0), camera.size);
  EXPECT_NEAR(distance.mean, 5.0, 1e-6);
  EXPECT_NEAR(distance.max, 5.0, 1e-6);
}

TEST(LensError, HardlyCountsAShiftThatARotationMakesUpFor) {
  const world::Camera camera = world::CameraFromFieldOfView({640, 480}, 40.0);
  const Lens shifted = Changed(camera.lens, 1.0, 4.0, 0.0);
  const ProjectionDistance raw = MeanProjectionDistance(camera.lens, shifted, camera.size);
  const ProjectionDistance aligned =
      MeanProjectionDistance(camera.lens, shifted, camera.size, {}, Alignment::Rotated);
  EXPECT_NEAR(raw.mean, 4.0, 1e-6);
  EXPECT_LT(aligned.mean, 0.4);
  EXPECT_GT(aligned.mean, 0.001);
}

TEST(LensError, GrowsWithTheDistanceFromTheMiddleForAFocalError) {
  const world::Camera camera = world::CameraFromFieldOfView({641, 481}, 60.0);
  const ProjectionDistance distance =
      MeanProjectionDistance(camera.lens, Changed(camera.lens, 1.01, 0.0, 0.0), camera.size);
  EXPECT_NEAR(distance.max, 4.0, 1e-6);
  EXPECT_GT(distance.mean, 1.8);
  EXPECT_LT(distance.mean, 2.3);
  // The error is a hundredth of the distance from the middle: the sides' squares over twelve, a cell's width
  // wider.
  EXPECT_NEAR(distance.rms,
              0.01 * std::sqrt((640.0 * 640.0 * 41.0 / 39.0 + 480.0 * 480.0 * 31.0 / 29.0) / 12.0), 1e-6);
  const ProjectionDistance aligned = MeanProjectionDistance(camera.lens, Changed(camera.lens, 1.01, 0.0, 0.0),
                                                            camera.size, {}, Alignment::Rotated);
  EXPECT_NEAR(aligned.mean, distance.mean, 0.01);
}

TEST(LensError, LooksOnlyInsideTheRegion) {
  const world::Camera camera = world::CameraFromFieldOfView({641, 481}, 60.0);
  const Lens larger = Changed(camera.lens, 1.01, 0.0, 0.0);
  const std::vector<cv::Point2f> region = {{270, 190}, {370, 190}, {370, 290}, {270, 290}};
  const ProjectionDistance distance = MeanProjectionDistance(camera.lens, larger, camera.size, region);
  EXPECT_LE(distance.max, 0.01 * std::hypot(50, 50) + 1e-9);
  EXPECT_GT(distance.count, 10);
  EXPECT_LT(distance.count, 100);
  EXPECT_THROW(MeanProjectionDistance(camera.lens, larger, camera.size, {{-9, -9}, {-8, -9}, {-8, -8}}),
               std::runtime_error);
}

TEST(LensError, TakesMatricesOfOpenCV) {
  const world::Camera camera = OrdinaryCamera();
  const cv::Mat K(camera.lens.K());
  const cv::Mat D(camera.lens.D());
  cv::Mat other = K.clone();
  other.at<double>(0, 2) += 2.0;
  cv::Mat padded = cv::Mat::zeros(1, 14, CV_64F);
  for (int k = 0; k < 5; ++k) padded.at<double>(k) = D.at<double>(k);
  EXPECT_NEAR(MeanProjectionDistance(K, D.t(), other, padded, camera.size).mean, 2.0, 1e-6);
  EXPECT_THROW(world::LensFrom(cv::Mat::eye(2, 2, CV_64F), D), std::invalid_argument);
}

TEST(LensError, IsZeroBetweenEqualFisheyes) {
  for (const world::Camera& camera : ManyFisheyes()) {
    for (const Alignment alignment : {Alignment::Raw, Alignment::Rotated}) {
      const ProjectionDistance distance =
          MeanProjectionDistance(camera.lens, camera.lens, camera.size, {}, alignment);
      EXPECT_LT(distance.max, 1e-8);
      EXPECT_EQ(distance.count, 1200);
    }
  }
}

TEST(LensError, HardlyCountsARotationOfAFisheye) {
  const world::Camera camera = world::FisheyeFromFieldOfView({641, 481}, 180.0);
  const Lens shifted = Changed(camera.lens, 1.0, 4.0, 0.0);
  const ProjectionDistance raw = MeanProjectionDistance(camera.lens, shifted, camera.size);
  const ProjectionDistance aligned =
      MeanProjectionDistance(camera.lens, shifted, camera.size, {}, Alignment::Rotated);
  EXPECT_NEAR(raw.mean, 4.0, 1e-6);
  EXPECT_LT(aligned.rms, 0.5 * raw.rms);
  EXPECT_GT(aligned.rms, 0.01);
}

TEST(LensError, GrowsWithTheAngleForAFocalErrorOfAFisheye) {
  const world::Camera camera = world::FisheyeFromFieldOfView({641, 481}, 180.0);
  const std::vector<double> limits = {0.0, 30.0, 60.0, 90.0, 115.0, 180.0};
  const auto bands = world::ProjectionDistancesByAngle(camera.lens, Changed(camera.lens, 1.01, 0.0, 0.0),
                                                       camera.size, limits);
  ASSERT_EQ(bands.size(), 5U);
  int count = 0;
  for (std::size_t k = 0; k < 4; ++k) {
    // A hundredth of the distance from the middle.
    const double farthest = 0.01 * camera.lens.K()(0, 0) * limits[k + 1] * CV_PI / 180.0;
    EXPECT_LE(bands[k].max, farthest) << k;
    EXPECT_GT(bands[k].mean, k == 0 ? 0.0 : farthest * limits[k] / limits[k + 1]) << k;
    EXPECT_LE(bands[k].mean, bands[k].rms) << k;
    EXPECT_GT(bands[k].count, 10) << k;
    count += bands[k].count;
  }
  EXPECT_EQ(count, 1200);
  EXPECT_EQ(bands[4].count, 0);
  EXPECT_EQ(bands[4].max, 0.0);
}

TEST(LensError, IsInfiniteWhereAPinholeHasNoPixel) {
  const world::Camera camera = world::FisheyeFromFieldOfView({641, 481}, 180.0);
  const Lens pinhole(camera.lens.K());
  EXPECT_TRUE(std::isinf(MeanProjectionDistance(camera.lens, pinhole, camera.size).mean));
  const auto bands = world::ProjectionDistancesByAngle(camera.lens, pinhole, camera.size,
                                                       {0.0, 10.0, 91.0, 180.0}, {}, Alignment::Rotated);
  EXPECT_LT(bands[0].max, 1.0);
  EXPECT_GT(bands[1].max, 100.0);
  EXPECT_TRUE(std::isinf(bands[2].mean));
}

TEST(LensError, TakesFisheyesOfOpenCV) {
  const Lens lens = ManyFisheyes().back().lens;
  const auto& k = lens.Curve()->D();
  const Lens taken = world::FisheyeFrom(cv::Mat(lens.K()), cv::Mat(cv::Vec4d(k[0], k[1], k[2], k[3])));
  EXPECT_EQ(taken.K(), lens.K());
  EXPECT_EQ(taken.Curve()->D(), k);
  EXPECT_THROW(world::FisheyeFrom(cv::Mat(lens.K()), cv::Mat::zeros(1, 5, CV_64F)), std::invalid_argument);
}

TEST(LensError, CoversTheHullOfAllViews) {
  const double none = std::numeric_limits<double>::quiet_NaN();
  const std::vector<cv::Point2f> hull =
      world::CoveredRegion({{{0, 0}, {10, 0}, {5, 5}}, {{10, 10}, {0, 10}, {none, none}}});
  EXPECT_EQ(hull.size(), 4U);
  EXPECT_TRUE(world::CoveredRegion({}).empty());
}

TEST(LensError, ResizesACameraWithItsPictures) {
  const world::Camera camera = OrdinaryCamera();
  const Lens half = world::Resized(camera.lens, {640, 480}, {320, 240});
  const cv::Point2d pixel = camera.lens.Project({0.2, -0.1});
  const cv::Point2d small = half.Project({0.2, -0.1});
  EXPECT_NEAR(small.x + 0.5, 0.5 * (pixel.x + 0.5), 1e-9);
  EXPECT_NEAR(small.y + 0.5, 0.5 * (pixel.y + 0.5), 1e-9);
}
