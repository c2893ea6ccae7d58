/// Solves for one lens model after the other, each from where the smaller one ended.
#pragma once

#include <vector>

#include "solver/LevenbergMarquardt.h"

namespace velmora::solver {

struct StageOptions {
  int free = CLASSIC_PARAMETERS;  ///< of the model asked for
  cv::Size imageSize;
  int threads = 1;
  std::function<bool(int, double)> progress;
};

struct StagedSolution {
  Solution solution;
  Prior prior{};
};

/// The larger models have a flat valley in which coefficients grow without an effect on the pixels: a weak
/// prior on those beyond the classic ones keeps them out of it. That of the denominator is strengthened as
/// far as it takes to have no pole of the distortion within the image.
StagedSolution SolveStages(const std::vector<View>& views, const Estimate& start,
                           const StageOptions& options);

/// Improves a solution of the same views, with its prior, after weights or pixels changed.
StagedSolution SolveAgain(const std::vector<View>& views, const StagedSolution& earlier,
                          const StageOptions& options);

/// The weak prior for the noise and the spread of these views.
Prior WeakPrior(const std::vector<View>& views, const Estimate& estimate, double variance);

/// True when the denominator of the radial distortion stays well above zero over the whole image.
bool IsFreeOfPoles(const Lens& lens, const cv::Size& imageSize);

/// The variance of a coordinate's noise: weighted squares per degree of freedom, in squared pixels.
double NoiseVariance(const Solution& solution, const std::vector<View>& views);

}  // namespace velmora::solver
