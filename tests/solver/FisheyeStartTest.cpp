/// Fisheyes that nothing is known of, from rays beside and behind the camera too.
#include "solver/FisheyeStart.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "model/TargetGeometry.h"
#include "solver/BundleAdjustment.h"
#include "solver/CameraCalibration.h"
#include "solver/Covariance.h"
#include "unit/Collection.h"

using namespace velmora;

namespace {

const cv::Size IMAGE(1280, 960);

/// A lens of an even curve with a little of its own, that sees these degrees from left to right. Its
/// projection is written out here.
struct Lens {
  double f;
  cv::Point2d middle;
  double k1;
  double k2;

  explicit Lens(double degrees)
      : f(640.0 / (0.5 * degrees * CV_PI / 180.0)), middle(645.2, 471.8), k1(-0.01), k2(0.002) {}

  cv::Point2d operator()(const cv::Vec3d& p) const {
    const double away = std::sqrt(p[0] * p[0] + p[1] * p[1]);
    const double angle = std::acos(p[2] / std::sqrt(p.dot(p)));
    const double distance = f * (angle + k1 * std::pow(angle, 3) + k2 * std::pow(angle, 5));
    return middle + distance * cv::Point2d(p[0] / away, p[1] / away);
  }
};

std::vector<cv::Point3d> CentredGrid() {
  std::vector<cv::Point3d> grid = MakeObjectTemplate(unit::GRID, unit::UNIT);
  cv::Point3d middle;
  for (const cv::Point3d& point : grid) middle += point * (1.0 / static_cast<double>(grid.size()));
  for (cv::Point3d& point : grid) point -= middle;
  return grid;
}

/// Sheets 12 to 35 cm away all over the image, tilted against the line of sight.
std::vector<TargetView> Views(const Lens& lens, double degrees, int count, double noise, std::uint64_t seed) {
  cv::RNG random(seed);
  const std::vector<cv::Point3d> grid = CentredGrid();
  std::vector<TargetView> views;
  while (static_cast<int>(views.size()) < count) {
    const double angle = random.uniform(0.0, 0.5 * degrees * CV_PI / 180.0);
    const double turn = random.uniform(0.0, 2.0 * CV_PI);
    const cv::Vec3d sight(std::sin(angle) * std::cos(turn), std::sin(angle) * std::sin(turn),
                          std::cos(angle));
    const cv::Vec3d axis = cv::Vec3d(-std::sin(turn), std::cos(turn), 0.0) * angle;
    const cv::Vec3d tilt(random.uniform(-0.7, 0.7), random.uniform(-0.7, 0.7), random.uniform(-3.0, 3.0));
    TargetView view;
    view.rigFromTarget = {RotationOf(axis) * RotationOf(tilt), random.uniform(0.12, 0.35) * sight};
    Observation observation;
    bool inside = true;
    for (const cv::Point3d& point : grid) {
      const cv::Point2d pixel = lens(view.rigFromTarget * point);
      inside = inside && cv::Rect2d(0.0, 0.0, IMAGE.width, IMAGE.height).contains(pixel);
      observation.object.push_back(point);
      observation.image.push_back(pixel + cv::Point2d(random.gaussian(noise), random.gaussian(noise)));
    }
    if (!inside) continue;
    view.observations = {observation};
    views.push_back(view);
  }
  return views;
}

class Field : public ::testing::TestWithParam<double> {};

TEST_P(Field, IsFoundAndTheLensWithIt) {
  const Lens lens(GetParam());
  for (std::uint64_t seed = 1; seed <= 12; ++seed) {
    std::vector<TargetView> views = Views(lens, GetParam(), 15, 0.1, seed);
    for (TargetView& view : views) view.rigFromTarget = {};
    const Solution solution = solver::SolveFisheye(solver::FisheyeStartOf(views, IMAGE).problem, {});
    ASSERT_TRUE(solution.usable) << seed;
    EXPECT_TRUE(solution.converged) << seed;
    EXPECT_NEAR(std::sqrt(NoiseVariance(solution)), 0.1, 0.01) << seed;
    const Eigen::MatrixXd covariance = solver::SharedCovariance(solution);
    ASSERT_EQ(covariance.rows(), FISHEYE_PARAMETERS);
    const auto& values = solution.rig.cameras.front().intrinsics.values;
    const double truth[] = {lens.f, lens.f, lens.middle.x, lens.middle.y, lens.k1, lens.k2, 0.0, 0.0};
    for (int i = 0; i < FISHEYE_PARAMETERS; ++i) {
      EXPECT_NEAR(values[static_cast<size_t>(i)], truth[i], 4.5 * std::sqrt(covariance(i, i)))
          << seed << " " << i;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(OfView, Field, ::testing::Values(90.0, 120.0, 150.0, 180.0, 200.0));

TEST(Fisheye, IsCalibratedWithoutWhatDisagrees) {
  const Lens lens(180.0);
  std::vector<TargetView> views = Views(lens, 180.0, 16, 0.1, 3);
  cv::RNG random(4);
  for (size_t i = 0; i < 5; ++i) views[i].observations[0].image[8 * i] += cv::Point2d(5.0, -7.0);
  // One in reverse order, and one that is no image of a grid.
  std::reverse(views[7].observations[0].image.begin(), views[7].observations[0].image.end());
  for (cv::Point2d& pixel : views[11].observations[0].image) {
    pixel = {random.uniform(300.0, 900.0), random.uniform(200.0, 700.0)};
  }
  for (TargetView& view : views) view.rigFromTarget = {};
  const Solution solution = solver::CalibrateFisheye(views, IMAGE, true, {});
  ASSERT_TRUE(solution.usable);
  EXPECT_NEAR(std::sqrt(NoiseVariance(solution)), 0.1, 0.01);
  EXPECT_NEAR(solution.rig.cameras[0].intrinsics.values[FX], lens.f, 0.5);
  const auto rejects = [&](size_t view, int point) {
    return std::any_of(solution.rejected.begin(), solution.rejected.end(), [=](const Rejected& rejected) {
      return rejected.view == view && rejected.point == point;
    });
  };
  for (size_t i = 0; i < 5; ++i) EXPECT_TRUE(rejects(i, static_cast<int>(8 * i))) << i;
  EXPECT_TRUE(rejects(7, Rejected::WHOLE_VIEW));
  EXPECT_TRUE(rejects(11, Rejected::WHOLE_VIEW));
  EXPECT_EQ(solution.kept.size(), 14U);
}

TEST(PoseFromRays, IsRightBehindTheCameraToo) {
  const std::vector<cv::Point3d> grid = CentredGrid();
  const RigidTransform truth{RotationOf({0.3, 1.4, -0.5}), {0.3, 0.05, -0.02}};
  Observation observation;
  std::vector<cv::Vec3d> rays;
  for (const cv::Point3d& point : grid) {
    const cv::Vec3d at = truth * point;
    observation.object.push_back(point);
    observation.image.emplace_back();
    rays.push_back(at * (1.0 / cv::norm(at)));
  }
  RigidTransform pose;
  ASSERT_TRUE(solver::PoseFromRays(observation, rays, pose));
  EXPECT_LT(cv::norm(pose.R - truth.R), 1e-9);
  EXPECT_LT(cv::norm(pose.t - truth.t), 1e-9);
  // Points on a line determine none.
  for (size_t i = 0; i < grid.size(); ++i) {
    observation.object[i].y = 0.0;
    const cv::Vec3d at = truth * observation.object[i];
    rays[i] = at * (1.0 / cv::norm(at));
  }
  EXPECT_FALSE(solver::PoseFromRays(observation, rays, pose));
}

TEST(FisheyeStart, RefusesViewsOfNoFisheye) {
  TargetView view;
  view.observations.emplace_back();
  for (const cv::Point3d& point : CentredGrid()) {
    view.observations[0].object.push_back(point);
    view.observations[0].image.emplace_back(100.0, 100.0);
  }
  EXPECT_THROW(solver::FisheyeStartOf({view, view}, IMAGE), cv::Exception);
}

}  // namespace
