/// Computes both lenses of a pair of cameras and how these stand to each other from the same views.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "solver/OpenCvExtrinsics.h"
#include "solver/PairMinimiser.h"
#include "solver/SparseExtrinsics.h"

namespace velmora {

/// Starts from the pair with these lenses held, then moves them too, with all poses. Free are the
/// coefficients of the model; of larger ones the rational model holds those that it has not, the classic
/// model drops them (a warning says so). A weak prior keeps the larger models' coefficients small and their
/// distortion without a pole within the image. The result has both lenses, with D of 1 x 14. Raises
/// cv::Exception as SolveExtrinsicsSparsely does.
ExtrinsicsResult RefinePairSparsely(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                    const std::vector<std::vector<cv::Point2d>>& leftPoints,
                                    const std::vector<std::vector<cv::Point2d>>& rightPoints,
                                    const StereoIntrinsics& intrinsics, const cv::Size& imageSize, int model,
                                    const SparsePairOptions& options = {});

}  // namespace velmora

namespace velmora::solver {

struct RefinedPair {
  PairSolution solution;
  PairOptions options;  ///< with the priors
};

/// Of a model with so many free parameters.
RefinedPair RefinePair(const PairTarget& target, PairEstimate start, int free, const cv::Size& imageSize,
                       const PairOptions& options);

/// The weak priors of both lenses for the noise and the spread of these views; none for the classic model.
void SetWeakPriors(const PairTarget& target, const PairEstimate& estimate, double variance,
                   PairOptions& options);

}  // namespace velmora::solver
