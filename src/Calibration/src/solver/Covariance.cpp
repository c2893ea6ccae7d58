/// How sure the lens and the poses of a solution are.
#include "solver/Covariance.h"

#include <cmath>

#include "solver/ScaledSystem.h"

namespace velmora::solver {

cv::Mat LensCovariance(const StagedSolution& staged, const std::vector<View>& views) {
  const Lens& lens = staged.solution.estimate.lens;
  ReducedSystem system = SystemOf(staged.solution.equations, lens, staged.prior);
  if (!system.solvable) return {};
  ScaledSystem scaled;
  if (!scaled.Decompose(system.matrix, lens.free)) return {};
  const double variance = NoiseVariance(staged.solution, views);
  cv::Mat covariance(lens.free, lens.free, CV_64F);
  for (int j = 0; j < lens.free; ++j) {
    Step column{};
    column[static_cast<size_t>(j)] = variance;
    scaled.Solve(column);
    for (int i = 0; i < lens.free; ++i) covariance.at<double>(i, j) = column[static_cast<size_t>(i)];
  }
  return covariance;
}

cv::Mat JackknifeCovariance(const StagedSolution& staged) {
  const Lens& lens = staged.solution.estimate.lens;
  const ReducedSystem system = SystemOf(staged.solution.equations, lens, staged.prior);
  if (!system.solvable) return {};
  ScaledSystem all;
  if (!all.Decompose(system.matrix, lens.free)) return {};
  // Where all views together would go from here: nowhere, unless the discs were corrected anew.
  Step together = system.gradient;
  all.Solve(together);
  cv::Mat covariance = cv::Mat::zeros(lens.free, lens.free, CV_64F);
  for (const ViewEquations& equations : staged.solution.equations) {
    const ReducedView view = Reduce(equations, lens.free, 0.0);
    LensMatrix without = system.matrix;
    for (size_t i = 0; i < without.size(); ++i) without[i] -= view.matrix[i];
    ScaledSystem scaled;
    if (!scaled.Decompose(without, lens.free)) return {};
    Step change{};
    for (size_t i = 0; i < change.size(); ++i) change[i] = view.gradient[i] - system.gradient[i];
    scaled.Solve(change);
    for (size_t i = 0; i < change.size(); ++i) change[i] += together[i];
    const cv::Mat column(lens.free, 1, CV_64F, change.data());
    covariance += column * column.t();
  }
  const auto count = static_cast<double>(staged.solution.equations.size());
  return covariance * ((count - 1.0) / count);
}

cv::Matx66d PoseCovariance(const ViewEquations& equations, int free, double variance,
                           const cv::Mat& lensCovariance) {
  cv::Matx66d block;
  cv::Mat coupling(POSE_PARAMETERS, free, CV_64F);
  for (int i = 0; i < POSE_PARAMETERS; ++i) {
    for (int j = i; j < POSE_PARAMETERS; ++j) {
      block(i, j) = equations.At(free + i, free + j);
      block(j, i) = block(i, j);
    }
    for (int j = 0; j < free; ++j) coupling.at<double>(i, j) = equations.At(j, free + i);
  }
  const cv::Matx66d inverse = block.inv(cv::DECOMP_CHOLESKY);
  const cv::Mat spread = cv::Mat(inverse) * coupling;
  const cv::Mat byLens = spread * lensCovariance * spread.t();
  return inverse * variance + cv::Matx66d(byLens.ptr<double>());
}

}  // namespace velmora::solver
