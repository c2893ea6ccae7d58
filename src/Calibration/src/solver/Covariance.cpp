/// How sure the lens and the poses of a solution are.
#include "solver/Covariance.h"

#include <cmath>

#include "solver/Cholesky.h"

namespace sparse {

cv::Mat LensCovariance(const StagedSolution& staged, const std::vector<View>& views) {
  const Lens& lens = staged.solution.estimate.lens;
  ReducedSystem system = SystemOf(staged.solution.equations, lens, staged.prior);
  if (!system.solvable) return {};
  const int free = lens.free;
  std::array<double, FULL_PARAMETERS> scale{};
  for (int i = 0; i < free; ++i) {
    const double own = system.matrix[static_cast<size_t>(i * FULL_PARAMETERS + i)];
    if (!(own > 0.0)) return {};
    scale[static_cast<size_t>(i)] = 1.0 / std::sqrt(own);
  }
  for (int i = 0; i < free; ++i) {
    for (int j = 0; j < free; ++j) {
      system.matrix[static_cast<size_t>(i * FULL_PARAMETERS + j)] *=
          scale[static_cast<size_t>(i)] * scale[static_cast<size_t>(j)];
    }
  }
  Cholesky<FULL_PARAMETERS> cholesky;
  if (!cholesky.Decompose(system.matrix.data(), FULL_PARAMETERS, free)) return {};
  const double variance = NoiseVariance(staged.solution, views);
  cv::Mat covariance(free, free, CV_64F);
  for (int j = 0; j < free; ++j) {
    std::array<double, FULL_PARAMETERS> column{};
    column[static_cast<size_t>(j)] = 1.0;
    cholesky.Solve(column.data());
    for (int i = 0; i < free; ++i) {
      covariance.at<double>(i, j) = variance * column[static_cast<size_t>(i)] *
                                    scale[static_cast<size_t>(i)] * scale[static_cast<size_t>(j)];
    }
  }
  return covariance;
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

}  // namespace sparse
