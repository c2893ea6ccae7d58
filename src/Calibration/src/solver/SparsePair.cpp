/// Computes both lenses of a pair of cameras and how these stand to each other from the same views.
#include "solver/SparsePair.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

#include "model/LensModel.h"
#include "solver/LensStages.h"

namespace velmora::solver {

namespace {

constexpr int FIRST_OF_DENOMINATOR = 9;
constexpr int LAST_OF_DENOMINATOR = 11;

void Strengthen(Prior& prior) {
  for (int i = FIRST_OF_DENOMINATOR; i <= LAST_OF_DENOMINATOR; ++i) prior[static_cast<size_t>(i)] *= 3.0;
}

/// Coefficients that are held count as they are.
PairEstimate WithFree(PairEstimate estimate, int free) {
  estimate.left.free = free;
  estimate.right.free = free;
  return estimate;
}

double VarianceOf(const PairSolution& solution, const PairTarget& target) {
  return NoiseVariance(solution, target.left.views, LayoutOf(solution.estimate).Shared());
}

}  // namespace

void SetWeakPriors(const PairTarget& target, const PairEstimate& estimate, double variance,
                   PairOptions& options) {
  const auto priorOf = [&](const Target& seen, const Estimate& alone) {
    return alone.lens.free > CLASSIC_PARAMETERS ? WeakPrior(seen.views, alone, variance) : Prior{};
  };
  options.leftPrior = priorOf(target.left, LeftOf(estimate));
  options.rightPrior = priorOf(target.right, RightOf(estimate));
}

RefinedPair RefinePair(const PairTarget& target, PairEstimate start, int free, const cv::Size& imageSize,
                       const PairOptions& options) {
  RefinedPair refined{{}, options};
  const auto solve = [&](const PairEstimate& from) {
    refined.solution = MinimisePair(target.left.views, target.right.views, from, refined.options);
  };
  start = WithFree(std::move(start), free);
  if (free == CLASSIC_PARAMETERS) {
    refined.options.precision = 1e-11;  // as for one camera: there is no flat valley
    solve(start);
    return refined;
  }
  refined.options.firstDamping = 1e-6;
  double variance = VarianceOf(EvaluatedAt(target.left.views, target.right.views, start, options), target);
  SetWeakPriors(target, start, variance, refined.options);
  solve(start);
  // The lenses may have been far off: again with the noise as it is now known.
  for (double known = VarianceOf(refined.solution, target); known < 0.5 * variance;
       known = VarianceOf(refined.solution, target)) {
    variance = known;
    SetWeakPriors(target, refined.solution.estimate, variance, refined.options);
    solve(refined.solution.estimate);
  }
  for (int i = 0; i < 25 && refined.solution.usable; ++i) {
    const bool left = IsFreeOfPoles(refined.solution.estimate.left, imageSize);
    const bool right = IsFreeOfPoles(refined.solution.estimate.right, imageSize);
    if (left && right) break;
    if (!left) Strengthen(refined.options.leftPrior);
    if (!right) Strengthen(refined.options.rightPrior);
    solve(start);
  }
  return refined;
}

}  // namespace velmora::solver

namespace velmora {

namespace {

/// In the form of result files: larger models' coefficients are zeros where there are none.
void CopyLens(const solver::Lens& lens, cv::Mat& K, cv::Mat& D) {
  const auto& p = lens.values;
  K = (cv::Mat_<double>(3, 3) << p[0], 0.0, p[2], 0.0, p[1], p[3], 0.0, 0.0, 1.0);
  D = cv::Mat(1, solver::FULL_PARAMETERS - 4, CV_64F);
  std::copy(p.begin() + 4, p.end(), D.begin<double>());
}

ExtrinsicsResult ResultOf(const solver::PairSolution& solution, double points) {
  StereoIntrinsics lenses;
  CopyLens(solution.estimate.left, lenses.K, lenses.D);
  CopyLens(solution.estimate.right, lenses.KRight, lenses.DRight);
  ExtrinsicsResult result = solver::PairMatricesOf(lenses, solution.estimate.relative);
  result.refined = lenses;
  result.rms = std::sqrt(solution.squares / points);
  return result;
}

}  // namespace

ExtrinsicsResult RefinePairSparsely(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                    const std::vector<std::vector<cv::Point2d>>& leftPoints,
                                    const std::vector<std::vector<cv::Point2d>>& rightPoints,
                                    const StereoIntrinsics& intrinsics, const cv::Size& imageSize, int model,
                                    const SparsePairOptions& options) {
  WarnOfIgnoredCoefficients(intrinsics, model);
  const solver::PairTarget target = solver::PairTargetOf(objectPoints, leftPoints, rightPoints);
  // Not a copy: the one who is told counts.
  std::function<bool(int, double)> progress;
  if (options.progress) progress = std::cref(options.progress);
  double points = 0.0;
  for (const solver::View& view : target.left.views) points += 2.0 * static_cast<double>(view.object.size());
  bool givenUp = false;
  solver::PairOptions solve;
  solve.threads = options.threads;
  solve.progress = [&](int iteration, double squares) {
    givenUp = givenUp || (options.progress && !options.progress(iteration, std::sqrt(squares / points)));
    return !givenUp;
  };
  const solver::PairEstimate start =
      SolveWithKnownLenses(target, solver::KnownLens(intrinsics.K, intrinsics.D, model),
                           solver::KnownLens(intrinsics.KRight, intrinsics.DRight, model),
                           {0.0, options.threads, progress})
          .estimate;
  const int free = velmora::LensModelOf(model).parameters;
  solver::RefinedPair refined = RefinePair(target, start, free, imageSize, solve);
  // Once brings most of it; wide lenses with distortion need it twice.
  for (int i = 0; i < 2 && options.discRadius > 0.0 && refined.solution.usable && !givenUp; ++i) {
    refined = RefinePair(WithoutDiscBias(target, refined.solution.estimate, options.discRadius),
                         refined.solution.estimate, free, imageSize, solve);
  }
  if (givenUp) CV_Error(cv::Error::StsError, "The computation was given up.");
  if (!refined.solution.usable) {
    CV_Error(cv::Error::StsNoConv, "The views do not agree with any pair of cameras.");
  }
  return ResultOf(refined.solution, points);
}

}  // namespace velmora
