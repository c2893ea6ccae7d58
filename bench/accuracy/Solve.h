/// The engine's computations, by the numbers that its users choose them with.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "solver/OpenCvExtrinsics.h"
#include "solver/SparseIntrinsics.h"

namespace accuracy {

using Points = std::vector<std::vector<cv::Point2d>>;

std::string NameOfModel(int model);
std::string NameOfSolver(int solver);
/// The number of parameters that a model estimates.
int ParametersOfModel(int model);

extern const cv::Size GRID;
extern const float UNIT;  ///< metres

/// One camera, from views of the grid; on one thread. The sparse solver counts points by their deviations,
/// where there are any.
velmora::SparseResult Solve(const Points& views, const cv::Size& imageSize, int model, int solver,
                            double discRadius = 0.0, const std::vector<std::vector<double>>& deviations = {});

/// A pair, each camera alone first, as users do it.
struct PairResult {
  velmora::SparseResult left;
  velmora::SparseResult right;
  velmora::ExtrinsicsResult pair;
};
PairResult SolvePair(const Points& left, const Points& right, const cv::Size& imageSize, int model,
                     int solver);

/// Solves a pair with both cameras' intrinsics refined together with it, from where SolvePair ended.
PairResult RefinedPair(const PairResult& fixed, const Points& left, const Points& right,
                       const cv::Size& imageSize, int model);

}  // namespace accuracy
