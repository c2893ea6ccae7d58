/// The centroids of discs' images, and cameras computed from them.
#include "solver/Eccentricity.h"

#include <gtest/gtest.h>

#include <cmath>

#include "Calibrator.h"
#include "Views.h"
#include "model/TargetGeometry.h"
#include "solver/SparseIntrinsics.h"
#include "unit/Collection.h"
#include "unit/Scopes.h"

using namespace velmora;

namespace {

constexpr double DISC = 0.008;

/// The centroid of an ellipse is its middle: that of a disc's image, without distortion, out of the conic
/// of its rim.
cv::Point2d MiddleOfEllipse(const cv::Matx33d& homography, double radius) {
  const cv::Matx33d rim(1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, -radius * radius);
  const cv::Matx33d back = homography.inv();
  const cv::Matx33d conic = back.t() * rim * back;
  const double determinant = conic(0, 0) * conic(1, 1) - conic(0, 1) * conic(0, 1);
  return {(conic(0, 1) * conic(1, 2) - conic(1, 1) * conic(0, 2)) / determinant,
          (conic(0, 1) * conic(0, 2) - conic(0, 0) * conic(1, 2)) / determinant};
}

/// Centroids by many more rim points than the solver takes, through the synthetic world's own lens.
cv::Point2d Centroid(const world::Camera& camera, const world::Pose& pose, const cv::Point3d& centre) {
  constexpr int POINTS = 2000;
  std::vector<cv::Point3d> rim;
  for (int i = 0; i < POINTS; ++i) {
    const double angle = 2.0 * CV_PI * i / POINTS;
    rim.push_back(centre + cv::Point3d(DISC * std::cos(angle), DISC * std::sin(angle), 0.0));
  }
  const auto pixels = world::ProjectPoints(camera.lens, rim, pose);
  double area = 0.0;
  cv::Point2d moment;
  for (size_t i = 0; i < pixels.size(); ++i) {
    const cv::Point2d a = pixels[i] - pixels[0];
    const cv::Point2d b = pixels[(i + 1) % pixels.size()] - pixels[0];
    area += a.cross(b);
    moment += a.cross(b) * (a + b);
  }
  return pixels[0] + moment / (3.0 * area);
}

TEST(Eccentricity, IsThatOfAnEllipseWithoutDistortion) {
  Intrinsics intrinsics;
  intrinsics.values = {400.0, 410.0, 320.0, 240.0};
  const RigidTransform pose = {RotationOf({0.5, -0.4, 0.1}), {0.05, -0.02, 0.3}};
  const cv::Matx33d K(400.0, 0.0, 320.0, 0.0, 410.0, 240.0, 0.0, 0.0, 1.0);
  const cv::Matx33d axes(pose.R(0, 0), pose.R(0, 1), pose.t[0], pose.R(1, 0), pose.R(1, 1), pose.t[1],
                         pose.R(2, 0), pose.R(2, 1), pose.t[2]);
  const cv::Vec3d centre = K * pose.t;
  const cv::Point2d expected =
      MiddleOfEllipse(K * axes, DISC) - cv::Point2d(centre[0] / centre[2], centre[1] / centre[2]);
  const cv::Point2d bias = solver::EccentricityError(solver::Projection(intrinsics), pose, {}, DISC);
  EXPECT_GT(cv::norm(expected), 0.05);
  EXPECT_LT(cv::norm(bias - expected), 0.01 * cv::norm(expected));
}

TEST(Eccentricity, IsNoneForADiscThatReachesBehindTheCamera) {
  Intrinsics intrinsics;
  intrinsics.values = {400.0, 400.0, 320.0, 240.0};
  const RigidTransform edgeOn = {RotationOf({1.5, 0.0, 0.0}), {0.0, 0.0, 0.005}};
  EXPECT_EQ(solver::EccentricityError(solver::Projection(intrinsics), edgeOn, {}, DISC), cv::Point2d());
}

class DiscCorrection : public ::testing::TestWithParam<double> {};

TEST_P(DiscCorrection, BringsTheFocalLengthToTheTruth) {
  const world::Camera camera =
      world::CameraFromFieldOfView(unit::FRAME, GetParam(), {-0.1, 0.02, 0.0005, -0.0005, -0.001});
  const world::Sheet sheet(unit::GRID, static_cast<double>(unit::UNIT));
  const auto centres = MakeObjectTemplate(unit::GRID, unit::UNIT);
  unit::PointLists views;
  for (const world::Pose& pose : world::SampleViews(camera, 20, 3, sheet)) {
    views.emplace_back();
    for (const cv::Point3d& centre : centres) views.back().push_back(Centroid(camera, pose, centre));
  }
  SparseOptions options;
  const auto focal = [&] {
    return SolveIntrinsicsSparsely({views.size(), centres}, views, unit::FRAME, Calibrator::MODEL_CLASSIC,
                                   options)
        .K.at<double>(0, 0);
  };
  const double truth = camera.lens.K()(0, 0);
  const double before = std::abs(focal() - truth);
  options.discRadius = DISC;
  const double after = std::abs(focal() - truth);
  EXPECT_LT(after, 0.05);
  EXPECT_GT(before, 2.0 * after);
}

INSTANTIATE_TEST_SUITE_P(FieldsOfView, DiscCorrection, ::testing::Values(50.0, 75.0, 100.0));

TEST(DiscRadius, IsRefusedByACalibratorWhenItIsNone) {
  const auto calibrator = unit::MakeCalibrator();
  EXPECT_EQ(unit::PrintedBy([&] { calibrator->SetDiscRadius(-0.5); }),
            "ERROR : There are no discs of radius -0.500000.\n");
  EXPECT_EQ(unit::PrintedBy([&] { calibrator->SetDiscRadius(0.008); }), "");
}

TEST(DiscRadius, ChangesWhatACalibratorComputes) {
  const auto calibrator = unit::CalibratorWith(unit::NoisyViews(6));
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC);
  const double plain = calibrator->GetK().at<double>(0, 0);
  calibrator->SetDiscRadius(DISC);
  calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC);
  EXPECT_NE(calibrator->GetK().at<double>(0, 0), plain);
}

}  // namespace
