/// Which solver a calibrator computes with, and how.
#pragma once

#include <atomic>
#include <opencv2/core.hpp>
#include <vector>

#include "Calibrator.h"
#include "solver/SparseIntrinsics.h"

struct Calibrator::SolverChoice {
  /// What a computation goes by from its start to its end.
  struct Settings {
    int solver = SOLVER_OPENCV;
    bool robust = false;
    double discRadius = 0.0;  ///< zero for a solver that does not correct it

    /// Tells in the log what was left out.
    SparseResult Solve(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                       const std::vector<std::vector<cv::Point2d>>& imagePoints, const cv::Size& imageSize,
                       int model) const;
  };

  Settings Now() const {
    const int chosen = solver;
    return {chosen, robust, chosen == SOLVER_SPARSE ? discRadius.load() : 0.0};
  }

  std::atomic<int> solver{SOLVER_OPENCV};
  std::atomic<bool> robust{false};
  std::atomic<double> discRadius{0.0};

  /// What the last result left out, and its disc radius; guarded as results are.
  std::vector<sparse::Rejected> rejected;
  double usedDiscRadius = 0.0;
};
