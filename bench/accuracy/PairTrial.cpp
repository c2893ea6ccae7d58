/// Calibrates pairs from points with noise and compares with the truth.
#include "PairTrial.h"

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>

#include "LensError.h"
#include "Seed.h"

using namespace velmora;

namespace accuracy {

namespace {

constexpr double DEGREES = 180.0 / CV_PI;

struct PairPoints {
  Points left;
  Points right;
};

/// Rays of a calibrated camera for the pixels, as single column of x, y.
std::vector<cv::Point2d> Undistorted(const std::vector<cv::Point2d>& pixels, const SparseResult& camera) {
  std::vector<cv::Point2d> rays;
  cv::undistortPoints(pixels, rays, camera.K, camera.D);
  return rays;
}

/// What the calibrated pair makes of exact images of the grid: the error of depths, as a share of them.
double MedianDepthError(const world::Pair& rig, const std::vector<world::Pose>& poses,
                        const PairResult& result) {
  const world::Sheet sheet(GRID, static_cast<double>(UNIT));
  cv::Mat right;
  cv::hconcat(result.pair.R, result.pair.T, right);
  const cv::Mat left = cv::Mat::eye(3, 4, CV_64F);
  std::vector<double> errors;
  for (const world::Pose& pose : poses) {
    const auto truth = world::ToCamera(sheet.GridPoints(), pose);
    const auto leftRays = Undistorted(world::TrueCentres(rig.left.lens, sheet, pose), result.left);
    const auto rightRays =
        Undistorted(world::TrueCentres(rig.right.lens, sheet, world::RightPose(rig, pose)), result.right);
    cv::Mat_<double> points;
    cv::triangulatePoints(left, right, leftRays, rightRays, points);
    for (int i = 0; i < points.cols; ++i) {
      const double z = truth[static_cast<std::size_t>(i)].z;
      errors.push_back(std::abs(points(2, i) / points(3, i) / z - 1.0));
    }
  }
  const auto middle = errors.begin() + static_cast<std::ptrdiff_t>(errors.size() / 2);
  std::nth_element(errors.begin(), middle, errors.end());
  return *middle;
}

PairTrial Compared(const world::Pair& rig, const std::vector<world::Pose>& poses, const PairResult& result) {
  PairTrial trial;
  trial.rms = result.pair.rms;
  cv::Vec3d rotationError;
  cv::Rodrigues(cv::Matx33d(result.pair.R) * rig.R.t(), rotationError);
  trial.rotationError = cv::norm(rotationError) * DEGREES;
  const cv::Vec3d T(result.pair.T.ptr<double>());
  trial.translationError = 1000.0 * cv::norm(T - rig.T);
  trial.direction = std::atan2(cv::norm(T.cross(rig.T)), T.dot(rig.T)) * DEGREES;
  trial.baseline = cv::norm(T) / cv::norm(rig.T) - 1.0;
  trial.depth = MedianDepthError(rig, poses, result);
  return trial;
}

}  // namespace

PairTrial RunPairTrial(const PairCase& what, std::uint64_t seed) {
  const world::Pair rig = MakeRig(what.lens, what.fieldOfView, what.baseline, what.toeIn);
  const auto poses =
      world::SampleRigViews(rig, what.views, seed, world::Sheet(GRID, static_cast<double>(UNIT)));
  cv::RNG random(world::MixSeeds(seed, 2));
  PairPoints points;
  for (const world::Pose& pose : poses) {
    points.left.push_back(NoisyPoints(rig.left, pose, what.noise, 0.0, random));
    points.right.push_back(NoisyPoints(rig.right, world::RightPose(rig, pose), what.noise, 0.0, random));
  }
  try {
    const PairResult fixed = SolvePair(points.left, points.right, rig.left.size, what.model, what.solver);
    return Compared(
        rig, poses,
        what.refined ? RefinedPair(fixed, points.left, points.right, rig.left.size, what.model) : fixed);
  } catch (const std::exception&) {
    PairTrial trial;
    trial.failed = true;
    return trial;
  }
}

}  // namespace accuracy
