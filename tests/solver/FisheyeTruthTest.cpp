/// Fisheyes against the truth: how far projections are off, angle by angle, and from how far the way back
/// leads.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "LensError.h"
#include "Views.h"
#include "solver/BundleAdjustment.h"
#include "solver/CameraCalibration.h"
#include "solver/FisheyeStart.h"
#include "solver/WideViews.h"
#include "unit/Collection.h"

using namespace velmora;

namespace {

const cv::Size IMAGE(1280, 960);
const std::vector<double> ANGLES = {0.0, 30.0, 45.0, 60.0, 75.0, 85.0, 90.0, 95.0, 105.0, 115.0};

/// With a curve of its own, pixels that are not square and a principal point beside the middle.
world::Camera FisheyeOf(double degrees) {
  const world::Camera camera = world::FisheyeFromFieldOfView(IMAGE, degrees, {0.012, -0.021, 0.009, -0.001});
  cv::Matx33d K = camera.lens.K();
  K(1, 1) *= 1.004;
  K(0, 2) += 6.3;
  K(1, 2) -= 9.1;
  return {IMAGE, camera.lens.WithMatrix(K)};
}

TargetView ViewOf(const std::vector<cv::Point2d>& pixels) {
  Observation observation;
  observation.object = world::Sheet(unit::GRID, 0.02).GridPoints();
  observation.image = pixels;
  TargetView view;
  view.observations = {observation};
  return view;
}

struct Observed {
  std::vector<TargetView> views;
  unit::PointLists truth;
  int beyond = 0;  ///< points beyond 90 degrees
};

Observed Observe(const world::Camera& camera, int count, std::uint64_t seed, double noise) {
  cv::RNG random(seed + 77);
  const world::Sheet sheet(unit::GRID, 0.02);
  Observed observed;
  for (const world::Pose& pose : world::SampleViews(camera, count, seed, sheet)) {
    observed.truth.push_back(world::TrueCentres(camera.lens, sheet, pose));
    std::vector<cv::Point2d> pixels = observed.truth.back();
    for (cv::Point2d& pixel : pixels) pixel += cv::Point2d(random.gaussian(noise), random.gaussian(noise));
    observed.views.push_back(ViewOf(pixels));
    for (const cv::Point3d& point : world::ToCamera(sheet.GridPoints(), pose)) {
      observed.beyond += point.z < 0.0 ? 1 : 0;
    }
  }
  return observed;
}

world::Lens LensOf(const Solution& solution) {
  const auto& p = solution.rig.cameras.front().intrinsics.values;
  return {cv::Matx33d(p[FX], 0.0, p[CX], 0.0, p[FY], p[CY], 0.0, 0.0, 1.0),
          world::FisheyeCurve({p[FISHEYE_K], p[FISHEYE_K + 1], p[FISHEYE_K + 2], p[FISHEYE_K + 3]})};
}

std::vector<world::ProjectionDistance> ErrorsOf(const Solution& solution, const world::Camera& camera,
                                                const unit::PointLists& truth) {
  return world::ProjectionDistancesByAngle(camera.lens, LensOf(solution), camera.size, ANGLES,
                                           world::CoveredRegion(truth), world::Alignment::Rotated);
}

class FisheyeTruth : public ::testing::TestWithParam<double> {};

TEST_P(FisheyeTruth, IsFoundByExactPoints) {
  const world::Camera camera = FisheyeOf(GetParam());
  const Observed observed = Observe(camera, 20, 1, 0.0);
  EXPECT_EQ(observed.beyond > 0, GetParam() > 170.0);
  const Solution solution = solver::CalibrateFisheye(observed.views, IMAGE, true, {});
  ASSERT_TRUE(solution.usable);
  EXPECT_TRUE(solution.rejected.empty());
  int pixels = 0;
  for (const world::ProjectionDistance& error : ErrorsOf(solution, camera, observed.truth)) {
    EXPECT_LT(error.max, 1e-4);
    pixels += error.count;
  }
  EXPECT_GT(pixels, 600);
}

TEST_P(FisheyeTruth, IsFoundToATwentiethOfAPixelAtAllAngles) {
  const world::Camera camera = FisheyeOf(GetParam());
  for (std::uint64_t seed = 1; seed <= 3; ++seed) {
    const Observed observed = Observe(camera, 30, seed, 0.02);
    const Solution solution = solver::CalibrateFisheye(observed.views, IMAGE, true, {});
    ASSERT_TRUE(solution.usable);
    EXPECT_NEAR(std::sqrt(NoiseVariance(solution)), 0.02, 0.001);
    const auto errors = ErrorsOf(solution, camera, observed.truth);
    for (std::size_t band = 0; band < errors.size(); ++band) {
      EXPECT_LT(errors[band].rms, 0.05) << seed << ", " << ANGLES[band] << " degrees and more";
    }
  }
}

TEST_P(FisheyeTruth, IsFoundByTheCentroidsOfDiscs) {
  const world::Camera camera = FisheyeOf(GetParam());
  const world::Sheet sheet(unit::GRID, 0.02);
  std::vector<TargetView> views;
  unit::PointLists truth;
  for (const world::Pose& pose : world::SampleViews(camera, 20, 4, sheet)) {
    truth.emplace_back();
    for (const cv::Point3d& disc : sheet.GridPoints()) {
      truth.back().push_back(unit::CentroidOf(camera, pose, disc));
    }
    views.push_back(ViewOf(truth.back()));
  }
  solver::BundleOptions options;
  options.discRadius = unit::DISC;
  const Solution corrected = solver::CalibrateFisheye(views, IMAGE, true, options);
  ASSERT_TRUE(corrected.usable);
  for (const world::ProjectionDistance& error : ErrorsOf(corrected, camera, truth))
    EXPECT_LT(error.max, 0.05);
  // Taken for the images of centres, they are no such points.
  const Solution uncorrected = solver::CalibrateFisheye(views, IMAGE, true, {});
  EXPECT_GT(RmsOf(uncorrected), 4.0 * RmsOf(corrected));
}

INSTANTIATE_TEST_SUITE_P(OfView, FisheyeTruth, ::testing::Values(120.0, 150.0, 180.0, 200.0));

TEST(FisheyeStart, LeadsToTheTruthOfEveryOneOfAHundredLenses) {
  cv::RNG random(5);
  int right = 0;
  for (std::uint64_t seed = 1; seed <= 100; ++seed) {
    const double degrees = random.uniform(95.0, 200.0);
    const double k1 = random.uniform(-0.05, 0.05);
    const world::Camera even = world::FisheyeFromFieldOfView(IMAGE, degrees, {k1, random.uniform(0.0, 0.01)});
    cv::Matx33d K = even.lens.K();
    K(1, 1) *= random.uniform(0.97, 1.03);
    K(0, 2) += random.uniform(-80.0, 80.0);
    K(1, 2) += random.uniform(-60.0, 60.0);
    const world::Camera camera = {IMAGE, even.lens.WithMatrix(K)};
    const Observed observed = Observe(camera, 12, seed, 0.0);
    const Solution solution = solver::SolveFisheye(solver::FisheyeStartOf(observed.views, IMAGE).problem, {});
    double worst = 0.0;
    for (const world::ProjectionDistance& error : ErrorsOf(solution, camera, observed.truth)) {
      worst = std::max(worst, error.max);
    }
    if (solution.usable && worst < 0.001) {
      ++right;
    } else {
      std::cout << "lens " << seed << ": " << degrees << " degrees, k1 " << k1 << ", off by " << worst
                << " px\n";
    }
  }
  EXPECT_EQ(right, 100);
}

TEST(SolveFisheye, ComesBackFromAHundredBadStarts) {
  const world::Camera camera = FisheyeOf(180.0);
  const Observed observed = Observe(camera, 12, 3, 0.0);
  const CalibrationProblem start = solver::FisheyeStartOf(observed.views, IMAGE).problem;
  cv::RNG random(6);
  int right = 0;
  for (int k = 0; k < 100; ++k) {
    CalibrationProblem bad = start;
    auto& values = bad.rig.cameras.front().intrinsics.values;
    const double scale = random.uniform(0.7, 1.5);
    values[FX] *= scale;
    values[FY] *= scale * random.uniform(0.9, 1.1);
    values[CX] += random.uniform(-100.0, 100.0);
    values[CY] += random.uniform(-100.0, 100.0);
    for (TargetView& view : bad.views) {
      const cv::Vec3d turn(random.uniform(-0.25, 0.25), random.uniform(-0.25, 0.25),
                           random.uniform(-0.25, 0.25));
      view.rigFromTarget.R = RotationOf(turn) * view.rigFromTarget.R;
      view.rigFromTarget.t *= random.uniform(0.7, 1.4);
    }
    const Solution solution = solver::SolveFisheye(bad, {});
    const bool isRight = solution.usable && RmsOf(solution) < 1e-5;
    if (!isRight) std::cout << "start " << k << ": rms " << RmsOf(solution) << " px\n";
    right += isRight ? 1 : 0;
  }
  EXPECT_EQ(right, 100);
}

}  // namespace
