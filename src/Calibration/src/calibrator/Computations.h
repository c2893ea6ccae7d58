/// Computes and assesses one camera or a pair from snapshots.
#pragma once

#include <functional>
#include <mutex>
#include <opencv2/core.hpp>
#include <string>

#include "ModelChoice.h"
#include "PairVerdict.h"
#include "Verdict.h"
#include "calibrator/BackgroundTasks.h"
#include "calibrator/Snapshots.h"
#include "calibrator/SolverSettings.h"
#include "quality/PairAssessment.h"

namespace velmora {

/// The results of both cameras, calibrated alone: names of files, or their texts.
struct PairSources {
  std::string left;
  std::string right;
  bool areFiles = false;
};

/// Runs one computation at a time for a collection of snapshots, which decides by its number of cameras
/// whether there is one camera to compute, a pair, or nothing. Each goes by the settings of its start and
/// holds no lock while it solves. All functions are thread-safe. The destructor waits for the threads.
class Computations {
 public:
  /// Gets the number of iterations so far and the RMS in pixels.
  using ProgressListener = std::function<void(int iterations, double rms)>;
  /// Called when a computation is under way, before it solves.
  using Begun = std::function<void()>;

  Computations(Snapshots& snapshots, const cv::Size& imageSize, Begun begun)
      : snapshots_(snapshots), imageSize_(imageSize), begun_(std::move(begun)) {}

  SolverChoice& Choice() { return choice_; }
  void SetProgressListener(ProgressListener listener);

  /// See Calibrator::ComputeCalibration and ComputeCalibrationStereo: the RMS, or -1 (0 for sources that
  /// cannot be read) without a result. What a solver raises reaches the caller.
  float ComputeCamera(int model);
  /// See Calibrator::ComputeFisheye.
  float ComputeFisheye();
  float ComputePair(const PairSources& sources, int model);
  /// The same on threads of their own; a failure is logged.
  void ComputeCameraInBackground(int model);
  void ComputeFisheyeInBackground();
  void ComputePairInBackground(const PairSources& sources, int model);
  /// True while one of those is under way.
  bool Busy() const { return background_.Busy(); }
  void AwaitBackground() { background_.AwaitAll(); }

  /// Which lens model the snapshots of one camera ask for; nothing is chosen while a computation is under way
  /// and, with an error line, when there are too few.
  ModelChoice ChooseModel() const;
  /// Of the last result; grade None while a computation is under way and when snapshots were added since.
  CalibrationVerdict AssessCamera() const;
  PairVerdict AssessPair(const HeldIntrinsics& left = {}, const HeldIntrinsics& right = {}) const;

 private:
  using Progress = std::function<bool(int, double)>;

  Progress NewProgress(const Snapshots::Computation& computation);
  Result SolvePair(const SnapshotList& views, const StereoIntrinsics& intrinsics, int model,
                   const Progress& progress) const;
  Result SolveCamera(const SnapshotList& views, int model, const Progress& progress) const;
  Result SolveFisheye(const SnapshotList& views, const Progress& progress) const;
  /// Computes the camera as `solve` does, and publishes the result as one of that model.
  using Solve = std::function<Result(const SnapshotList& views, const Progress& progress)>;
  float ComputeOneCamera(const Solve& solve, int model);
  void RunInBackground(const char* name, std::function<void()> task);

  Snapshots& snapshots_;
  const cv::Size imageSize_;
  const Begun begun_;
  SolverChoice choice_;
  mutable std::mutex listenerLock_;
  ProgressListener listener_;
  BackgroundTasks background_;  // last: its end waits for those who use the others
};

}  // namespace velmora
