/// Pairs of views of the grid with their truth, and what is computed from them.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>

#include "Calibrator.h"
#include "model/TargetGeometry.h"
#include "solver/SparseIntrinsics.h"
#include "solver/SparsePair.h"
#include "unit/StereoCollection.h"

namespace unit {

using namespace velmora;

inline const world::Sheet& Paper() {
  static const world::Sheet sheet(GRID, static_cast<double>(UNIT));
  return sheet;
}

inline std::vector<std::vector<cv::Point3d>> Targets(size_t count) {
  return std::vector<std::vector<cv::Point3d>>(count, MakeObjectTemplate(GRID, UNIT));
}

/// The pair of cameras, with as many distortion coefficients as the model has.
inline world::Pair RigFor(int model) {
  world::Pair rig = PairOfCameras();
  const size_t count = model == Calibrator::MODEL_CLASSIC ? 5 : model == Calibrator::MODEL_RATIONAL ? 8 : 14;
  for (world::Camera* camera : {&rig.left, &rig.right}) {
    std::vector<double> D = camera->lens.D();
    std::fill(D.begin() + static_cast<std::ptrdiff_t>(count), D.end(), 0.0);
    camera->lens = world::Lens(camera->lens.K(), D);
  }
  return rig;
}

/// What both cameras see of these poses before the left one, with noise.
inline PointPairs ObservedByBoth(const world::Pair& rig, const std::vector<world::Pose>& poses,
                                 std::uint64_t seed, double noise) {
  cv::RNG random(seed + 1);
  const auto noisy = [&](std::vector<cv::Point2d> centres) {
    for (cv::Point2d& centre : centres) {
      centre += cv::Point2d(random.gaussian(noise), random.gaussian(noise));
    }
    return centres;
  };
  PointPairs pairs;
  for (const world::Pose& pose : poses) {
    pairs.left.push_back(noisy(world::TrueCentres(rig.left.lens, Paper(), pose)));
    pairs.right.push_back(noisy(world::TrueCentres(rig.right.lens, Paper(), world::RightPose(rig, pose))));
  }
  return pairs;
}

/// Observations of random poses.
inline PointPairs Observed(const world::Pair& rig, int count, std::uint64_t seed, double noise) {
  return ObservedByBoth(rig, world::SampleRigViews(rig, count, seed, Paper()), seed, noise);
}

/// As a monocular result of the larger models has them.
inline cv::Mat Padded(const cv::Mat& D) {
  cv::Mat padded = cv::Mat::zeros(1, 14, CV_64F);
  D.copyTo(padded.colRange(0, D.cols));
  return padded;
}

/// The intrinsics that each camera's own views lead to.
inline StereoIntrinsics EachAlone(const PointPairs& pairs, int model) {
  const auto targets = Targets(pairs.left.size());
  const SparseResult left = SolveIntrinsicsSparsely(targets, pairs.left, FRAME, model);
  const SparseResult right = SolveIntrinsicsSparsely(targets, pairs.right, FRAME, model);
  return {left.K, Padded(left.D), right.K, Padded(right.D)};
}

inline StereoIntrinsics TruePairIntrinsics(const world::Pair& rig) {
  const auto left = IntrinsicsOf(rig.left);
  const auto right = IntrinsicsOf(rig.right);
  return {left.K.clone(), Padded(left.D), right.K.clone(), Padded(right.D)};
}

inline ExtrinsicsResult Refined(const PointPairs& pairs, const StereoIntrinsics& start, int model,
                                const SparsePairOptions& options = {}) {
  return RefinePairSparsely(Targets(pairs.left.size()), pairs.left, pairs.right, start, FRAME, model,
                            options);
}

inline ExtrinsicsResult WithFixedIntrinsics(const PointPairs& pairs, const StereoIntrinsics& pairIntrinsics,
                                            int model) {
  return SolveExtrinsicsSparsely(Targets(pairs.left.size()), pairs.left, pairs.right, pairIntrinsics, model);
}

}  // namespace unit
