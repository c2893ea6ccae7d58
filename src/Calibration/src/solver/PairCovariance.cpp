/// How sure what the views of a pair share is, and how well the two pictures of each view agree.
#include "solver/PairCovariance.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace velmora::solver {

namespace {

/// Gauss-Newton steps of a view's pose for as long as they help.
Pose BestPose(const View& left, const View& right, PairEstimate& estimate, size_t view) {
  PairViewEquations now = PairEquationsOf(left, right, estimate, view);
  for (int i = 0; i < 50 && now.usable; ++i) {
    PoseStep step{};
    for (int k = 0; k < POSE_PARAMETERS; ++k) {
      step[static_cast<size_t>(k)] = -now.Gradient(now.layout.Shared() + k);
    }
    if (!SolvePose(now, step)) break;
    const Pose before = estimate.poses[view];
    estimate.poses[view] = Moved(before, step.data());
    const PairViewEquations then = PairEquationsOf(left, right, estimate, view);
    if (!then.usable || !(then.squares < now.squares)) {
      estimate.poses[view] = before;
      break;
    }
    now = then;
  }
  return estimate.poses[view];
}

/// The squares that one camera's own pose would save, to first order.
double SavedBy(const View& view, const Lens& lens, const Pose& pose) {
  const ViewEquations equations = PoseEquationsOf(view, lens, pose);
  const PoseStep step = PoseStepFor(equations, 0, 0.0, Step{});
  double saved = 0.0;
  for (int i = 0; i < POSE_PARAMETERS; ++i) {
    saved -= step[static_cast<size_t>(i)] * equations.At(i, POSE_PARAMETERS);
  }
  return saved;
}

}  // namespace

PairSolution WithBestPoses(const PairTarget& target, const PairEstimate& estimate) {
  PairEstimate best = estimate;
  for (size_t i = 0; i < best.poses.size(); ++i) {
    best.poses[i] = BestPose(target.left.views[i], target.right.views[i], best, i);
  }
  return EvaluatedAt(target.left.views, target.right.views, best, {});
}

cv::Mat SharedCovariance(const PairSolution& solution, const PairTarget& target, const PairOptions& options,
                         int first) {
  const ReducedPair system = SumOf(solution, first, 0.0, options);
  const int count = LayoutOf(solution.estimate).Shared() - first;
  PairSystem scaled;
  if (!system.solvable || !scaled.Decompose(system.matrix, count)) return {};
  const double variance = NoiseVariance(solution, target.left.views, count);
  cv::Mat covariance(count, count, CV_64F);
  for (int j = 0; j < count; ++j) {
    PairStep column{};
    column[static_cast<size_t>(j)] = variance;
    scaled.Solve(column);
    for (int i = 0; i < count; ++i) covariance.at<double>(i, j) = column[static_cast<size_t>(i)];
  }
  return covariance;
}

cv::Mat SharedJackknife(const PairSolution& solution, const PairOptions& options, int first) {
  const ReducedPair system = SumOf(solution, first, 0.0, options);
  if (!system.solvable) return {};
  const int count = LayoutOf(solution.estimate).Shared() - first;
  cv::Mat covariance = cv::Mat::zeros(count, count, CV_64F);
  for (const PairViewEquations& equations : solution.equations) {
    const ReducedPairView view = Reduce(equations, first, 0.0);
    PairMatrix without = system.matrix;
    for (size_t i = 0; i < without.size(); ++i) without[i] -= view.matrix[i];
    PairSystem scaled;
    if (!scaled.Decompose(without, count)) return {};
    PairStep change = view.gradient;
    scaled.Solve(change);
    const cv::Mat column(count, 1, CV_64F, change.data());
    covariance += column * column.t();
  }
  const auto views = static_cast<double>(solution.equations.size());
  return covariance * ((views - 1.0) / views);
}

std::vector<double> DisagreementsOf(const PairSolution& solution, const PairTarget& target) {
  const PairEstimate& estimate = solution.estimate;
  std::vector<double> saved;
  double squares = solution.squares;
  double freedom = 0.0;
  for (size_t i = 0; i < estimate.poses.size(); ++i) {
    const Pose right = BeforeRight(estimate.relative, estimate.poses[i]);
    saved.push_back(SavedBy(target.left.views[i], estimate.left, estimate.poses[i]) +
                    SavedBy(target.right.views[i], estimate.right, right));
    squares -= std::min(saved.back(), solution.equations[i].squares);
    freedom += 4.0 * static_cast<double>(target.left.views[i].object.size()) - 2.0 * POSE_PARAMETERS;
  }
  // Without noise there is nothing to compare with but rounding.
  const double variance = std::max(squares / std::max(freedom, 1.0), std::numeric_limits<double>::min());
  for (double& value : saved) value = std::sqrt(std::max(value, 0.0) / (POSE_PARAMETERS * variance));
  return saved;
}

}  // namespace velmora::solver
