/// Computes how the right camera of a pair stands to the left one, in milliseconds.
#include "solver/SparseExtrinsics.h"

#include <cmath>

#include "solver/PairMeasurements.h"
#include "solver/PairProblem.h"

namespace sparse {

KnownLensesSolution SolveWithKnownLenses(const PairTarget& target, const Lens& left, const Lens& right,
                                         int threads, const std::function<bool(int, double)>& progress) {
  const PairMeasurements measurements(target.left.views, target.right.views, left, right);
  SolveOptions options;
  options.threads = threads;
  bool givenUp = false;
  const double points = 0.5 * measurements.Coordinates();
  options.progress = [&](int iteration, double squares) {
    givenUp = progress && !progress(iteration, std::sqrt(squares / points));
    return !givenUp;
  };
  const PairEstimate start = StartOf(target, left, right);
  Estimate from;
  from.right = start.relative;
  from.poses = start.poses;
  const Solution solution = Minimise(measurements, from, options);
  if (givenUp) CV_Error(cv::Error::StsError, "The computation was given up.");
  if (!solution.usable) CV_Error(cv::Error::StsNoConv, "The views do not agree with any pair of cameras.");
  return {{left, right, solution.estimate.right, solution.estimate.poses},
          std::sqrt(solution.squares / points)};
}

}  // namespace sparse

ExtrinsicsResult SolveExtrinsicsSparsely(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                         const std::vector<std::vector<cv::Point2d>>& leftPoints,
                                         const std::vector<std::vector<cv::Point2d>>& rightPoints,
                                         const StereoIntrinsics& intrinsics, int model, int threads,
                                         const std::function<bool(int, double)>& progress) {
  WarnOfIgnoredCoefficients(intrinsics, model);
  const sparse::KnownLensesSolution solution = sparse::SolveWithKnownLenses(
      sparse::PairTargetOf(objectPoints, leftPoints, rightPoints),
      sparse::KnownLens(intrinsics.K, intrinsics.D, model),
      sparse::KnownLens(intrinsics.KRight, intrinsics.DRight, model), threads, progress);
  ExtrinsicsResult result = sparse::PairMatricesOf(intrinsics, solution.estimate.relative);
  result.rms = solution.rms;
  return result;
}
