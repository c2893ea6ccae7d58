/// Which solver a calibrator computes with, and how.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <opencv2/core.hpp>
#include <vector>

#include "Calibrator.h"
#include "solver/OpenCvExtrinsics.h"
#include "solver/SparseIntrinsics.h"

struct Calibrator::SolverChoice {
  /// What a computation goes by from its start to its end.
  struct Settings {
    int solver = SOLVER_OPENCV;
    bool robust = false;
    double discRadius = 0.0;    ///< zero for a solver that does not correct it
    bool refineLenses = false;  ///< of pairs; false for a solver that does not
    /// Called after each iteration of the sparse solver with its number and the RMS; false gives up.
    std::function<bool(int, double)> progress;

    /// Tells in the log what was left out.
    velmora::SparseResult Solve(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                const std::vector<std::vector<cv::Point2d>>& imagePoints,
                                const cv::Size& imageSize, int model) const;

    /// Of a pair.
    velmora::ExtrinsicsResult SolvePair(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                        const std::vector<std::vector<cv::Point2d>>& leftPoints,
                                        const std::vector<std::vector<cv::Point2d>>& rightPoints,
                                        const velmora::StereoIntrinsics& intrinsics,
                                        const cv::Size& imageSize, int model) const;
  };

  Settings Now() {
    const int chosen = solver;
    const bool sparse = chosen == SOLVER_SPARSE;
    return {chosen, robust, sparse ? discRadius.load() : 0.0, sparse && refineLenses, Progress()};
  }

  /// Tells the listener of the moment and gives up once cancelled.
  std::function<bool(int, double)> Progress() {
    const std::lock_guard<std::mutex> lock(listenerLock);
    return [this, told = listener, iterations = 0](int /*ofThisStage*/, double rms) mutable {
      ++iterations;
      if (told) told(iterations, rms);
      return !cancelled.load();
    };
  }

  std::atomic<int> solver{SOLVER_OPENCV};
  std::atomic<bool> robust{false};
  std::atomic<double> discRadius{0.0};
  std::atomic<bool> refineLenses{false};
  /// Falls when a computation is marked as under way, and is raised only during one: under the status' lock.
  std::atomic<bool> cancelled{false};

  std::mutex listenerLock;
  ProgressListener listener;

  /// What the last result left out, whether it was to and could, and its disc radius; guarded as results are.
  std::vector<velmora::Rejected> rejected;
  bool usedRobust = false;
  bool tooFewAgree = false;
  std::shared_ptr<const velmora::Solution> solution;  ///< null where OpenCV's solver found it
  double usedDiscRadius = 0.0;
  /// Of the last pair's result, if there is one: the number of snapshots, the lenses that it was found with,
  /// the lens model, and whether the lenses were refined.
  size_t usedPairs = 0;
  velmora::StereoIntrinsics usedLenses;
  std::shared_ptr<const velmora::Solution> pairSolution;
  int usedPairModel = MODEL_CLASSIC;
  bool usedRefinement = false;
};
