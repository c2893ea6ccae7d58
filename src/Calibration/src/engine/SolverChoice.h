/// Which solver a calibrator computes with, and how.
#pragma once

#include <atomic>
#include <opencv2/core.hpp>
#include <vector>

#include "Calibrator.h"
#include "solver/SparseIntrinsics.h"

struct Calibrator::SolverChoice {
  std::atomic<int> solver{SOLVER_OPENCV};
  std::atomic<bool> robust{false};
  std::atomic<double> discRadius{0.0};

  /// Tells in the log what was left out.
  IntrinsicsResult SolveSparsely(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                 const std::vector<std::vector<cv::Point2d>>& imagePoints,
                                 const cv::Size& imageSize, int model) const;
};
