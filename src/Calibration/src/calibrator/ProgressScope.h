/// The mark of a computation under way.
#pragma once

#include "Calibrator.h"
#include "Log.h"
#include "calibrator/SolverChoice.h"

/// Marks the calibrator as computing; gives the status back as it was, and notes a failure, unless the
/// computation was completed.
class Calibrator::ProgressScope {
 public:
  /// Inactive when a computation is under way already.
  explicit ProgressScope(Calibrator& calibrator) : calibrator_(calibrator) {
    const std::lock_guard<std::mutex> lock(calibrator_.statusLock_);
    active_ = calibrator_.status_ != STATUS_PROGRESS;
    endStatus_ = calibrator_.status_;
    calibrator_.status_ = STATUS_PROGRESS;
    if (active_) calibrator_.solver_->cancelled = false;
  }
  ~ProgressScope() {
    if (!active_) return;
    const std::lock_guard<std::mutex> lock(calibrator_.statusLock_);
    calibrator_.status_ = endStatus_;
    calibrator_.failed_ = !completed_;
    if (completed_) ++calibrator_.completed_;
  }
  ProgressScope(const ProgressScope&) = delete;
  ProgressScope& operator=(const ProgressScope&) = delete;

  bool Active() const { return active_; }
  /// True when the computation was told to end; says so in the log.
  bool Cancelled() const {
    const bool cancelled = calibrator_.solver_->cancelled;
    if (cancelled) Log::warn("The computation was cancelled.");
    return cancelled;
  }
  void Complete() {
    endStatus_ = STATUS_COMPLETED;
    completed_ = true;
  }

 private:
  Calibrator& calibrator_;
  int endStatus_ = STATUS_NOT_READY;
  bool active_ = false;
  bool completed_ = false;
};
