/// Computes how the right camera of a pair stands to the left one, in milliseconds.
#include "solver/SparseExtrinsics.h"

#include <cmath>
#include <utility>

#include "solver/DiscBias.h"
#include "solver/PairMeasurements.h"

namespace velmora::solver {

namespace {

KnownLensesSolution Improved(const PairTarget& target, const PairEstimate& start,
                             const SparsePairOptions& asked) {
  const PairMeasurements measurements(target.left.views, target.right.views, start.left, start.right);
  SolveOptions options;
  options.threads = asked.threads;
  bool givenUp = false;
  const double points = 0.5 * measurements.Coordinates();
  options.progress = [&](int iteration, double squares) {
    givenUp = asked.progress && !asked.progress(iteration, std::sqrt(squares / points));
    return !givenUp;
  };
  Estimate from;
  from.right = start.relative;
  from.poses = start.poses;
  const Solution solution = Minimise(measurements, from, options);
  if (givenUp) CV_Error(cv::Error::StsError, "The computation was given up.");
  if (!solution.usable) CV_Error(cv::Error::StsNoConv, "The views do not agree with any pair of cameras.");
  return {{start.left, start.right, solution.estimate.right, solution.estimate.poses},
          std::sqrt(solution.squares / points)};
}

}  // namespace

PairTarget WithoutDiscBias(const PairTarget& target, const PairEstimate& estimate, double radius) {
  PairTarget corrected = target;
  corrected.left.views = WithoutDiscBias(target.left.views, LeftOf(estimate), radius);
  corrected.right.views = WithoutDiscBias(target.right.views, RightOf(estimate), radius);
  return corrected;
}

KnownLensesSolution SolveWithKnownLenses(const PairTarget& target, const Lens& left, const Lens& right,
                                         const SparsePairOptions& options) {
  KnownLensesSolution solution = Improved(target, StartOf(target, left, right), options);
  // Once brings most of it; wide lenses with distortion need it twice.
  for (int i = 0; i < 2 && options.discRadius > 0.0; ++i) {
    solution =
        Improved(WithoutDiscBias(target, solution.estimate, options.discRadius), solution.estimate, options);
  }
  return solution;
}

}  // namespace velmora::solver

namespace velmora {

ExtrinsicsResult SolveExtrinsicsSparsely(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                         const std::vector<std::vector<cv::Point2d>>& leftPoints,
                                         const std::vector<std::vector<cv::Point2d>>& rightPoints,
                                         const StereoIntrinsics& intrinsics, int model,
                                         const SparsePairOptions& options) {
  WarnOfIgnoredCoefficients(intrinsics, model);
  const solver::KnownLensesSolution solution =
      solver::SolveWithKnownLenses(solver::PairTargetOf(objectPoints, leftPoints, rightPoints),
                                   solver::KnownLens(intrinsics.K, intrinsics.D, model),
                                   solver::KnownLens(intrinsics.KRight, intrinsics.DRight, model), options);
  ExtrinsicsResult result = solver::PairMatricesOf(intrinsics, solution.estimate.relative);
  result.rms = solution.rms;
  return result;
}

}  // namespace velmora
