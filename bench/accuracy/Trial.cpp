/// Calibrates from points with noise and compares with the truth.
#include "Trial.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "LensError.h"
#include "Seed.h"
#include "Views.h"
#include "model/TargetGeometry.h"
#include "quality/Assessment.h"

using namespace velmora;

namespace accuracy {

const std::array<const char*, PARAMETERS> PARAMETER_NAMES = {"fx", "fy", "cx", "cy", "k1",   "k2",
                                                             "p1", "p2", "k3", "k4", "k5",   "k6",
                                                             "s1", "s2", "s3", "s4", "tauX", "tauY"};

namespace {

const double UNKNOWN_ERROR = std::numeric_limits<double>::infinity();

std::vector<world::Pose> PosesFor(const Case& what, const world::Camera& camera, std::uint64_t seed) {
  const world::Sheet sheet(GRID, static_cast<double>(UNIT));
  if (what.viewKind == ViewKind::Frontal) return world::FrontalViews(camera, what.views, sheet);
  return world::SampleViews(camera, what.views, seed, sheet);
}

/// The camera with a focal length that is longer by a share.
world::Camera Zoomed(const world::Camera& camera, double share) {
  cv::Matx33d K = camera.lens.K();
  K(0, 0) *= 1.0 + share;
  K(1, 1) *= 1.0 + share;
  return {camera.size, world::Lens(K, camera.lens.D())};
}

/// Views of a sheet that is held still share most of their noise.
void Repeat(const std::vector<cv::Point2d>& view, int copies, double noise, cv::RNG& random, Points& views) {
  constexpr double OWN = 0.3;
  for (int i = 0; i < copies; ++i) {
    views.push_back(view);
    if (copies == 1) continue;
    for (cv::Point2d& point : views.back())
      point += cv::Point2d(random.gaussian(OWN * noise), random.gaussian(OWN * noise));
  }
}

double Finite(double value) {
  return std::isfinite(value) ? value : UNKNOWN_ERROR;
}

/// In the order of PARAMETER_NAMES, with zeros for coefficients that the lens has not.
std::array<double, PARAMETERS> ValuesOf(const world::Lens& lens) {
  std::array<double, PARAMETERS> values = {lens.K()(0, 0), lens.K()(1, 1), lens.K()(0, 2), lens.K()(1, 2)};
  std::copy(lens.D().begin(), lens.D().end(), values.begin() + 4);
  return values;
}

void CompareParameters(const world::Lens& truth, const world::Lens& estimate, const cv::Mat& deviations,
                       Trial& trial) {
  const auto expected = ValuesOf(truth);
  const auto values = ValuesOf(estimate);
  for (std::size_t i = 0; i < PARAMETERS; ++i) {
    trial.errors[i] = Finite(values[i] - expected[i]);
    trial.deviations[i] = deviations.at<double>(static_cast<int>(i));
  }
}

void CompareForecast(const Points& views, const SparseResult& result, const cv::Size& size, double discRadius,
                     double rmsInData, Trial& trial) {
  const std::vector<std::vector<cv::Point3d>> targets(views.size(), MakeObjectTemplate(GRID, UNIT));
  const CalibrationVerdict verdict = AssessIntrinsics(targets, views, size, result, discRadius);
  trial.grade = verdict.grade;
  trial.deviationInData = verdict.deviationInData;
  // Standard deviations are of one coordinate.
  const double error = rmsInData / std::sqrt(2.0);
  trial.overFormal = Finite(error / verdict.deviationInData);
  trial.overVerdict = Finite(error / verdict.ExpectedInData());
}

}  // namespace

Trial Assessed(const world::Camera& camera, const Points& views, const SparseResult& result,
               double discRadius) {
  Trial trial;
  trial.rms = result.rms;
  const world::Lens estimate = world::LensFrom(result.K, result.D);
  CompareParameters(camera.lens, estimate, result.stdDevIntrinsics, trial);
  trial.imageError = Finite(world::MeanProjectionDistance(camera.lens, estimate, camera.size).mean);
  trial.turnedError = Finite(
      world::MeanProjectionDistance(camera.lens, estimate, camera.size, {}, world::Alignment::Rotated).mean);
  const world::ProjectionDistance inData = world::MeanProjectionDistance(
      camera.lens, estimate, camera.size, world::CoveredRegion(views), world::Alignment::Rotated);
  trial.dataError = Finite(inData.mean);
  CompareForecast(views, result, camera.size, discRadius, inData.rms, trial);
  return trial;
}

std::vector<cv::Point2d> NoisyPoints(const world::Camera& camera, const world::Pose& pose, double noise,
                                     double sag, cv::RNG& random) {
  const world::Sheet sheet(GRID, static_cast<double>(UNIT));
  std::vector<cv::Point3d> grid = sheet.GridPoints();
  const double half = sheet.GridMiddle().y;
  for (cv::Point3d& point : grid) {
    const double along = (point.y - half) / half;
    point.z = sag * (1.0 - along * along);
  }
  std::vector<cv::Point2d> points = world::ProjectPoints(camera.lens, grid, pose);
  for (cv::Point2d& point : points) point += cv::Point2d(random.gaussian(noise), random.gaussian(noise));
  return points;
}

Trial RunTrial(const Case& what, std::uint64_t seed) {
  const world::Camera camera = MakeCamera(what.lens, what.fieldOfView);
  cv::RNG random(world::MixSeeds(seed, 1));
  Points views;
  const std::vector<world::Pose> poses = PosesFor(what, camera, seed);
  for (std::size_t i = 0; i < poses.size(); ++i) {
    const world::Camera own = 2 * i < poses.size() ? camera : Zoomed(camera, what.zoom);
    Repeat(NoisyPoints(own, poses[i], what.noise, what.sag, random), what.copies, what.noise, random, views);
  }
  try {
    return Assessed(camera, views, Solve(views, camera.size, what.model, what.solver));
  } catch (const std::exception&) {
    // No result, or a focal length that is none.
    Trial trial;
    trial.failed = true;
    return trial;
  }
}

}  // namespace accuracy
