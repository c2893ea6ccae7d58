/// The mark of a computation under way.
#pragma once

#include "Calibrator.h"

/// Marks the calibrator as computing; gives the status back as it was unless the computation was completed.
class Calibrator::ProgressScope {
 public:
  /// Inactive when a computation is under way already.
  explicit ProgressScope(Calibrator& calibrator) : calibrator_(calibrator) {
    const std::lock_guard<std::mutex> lock(calibrator_.statusLock_);
    active_ = calibrator_.status_ != STATUS_PROGRESS;
    endStatus_ = calibrator_.status_;
    calibrator_.status_ = STATUS_PROGRESS;
  }
  ~ProgressScope() {
    if (active_) calibrator_.SetStatus(endStatus_);
  }
  ProgressScope(const ProgressScope&) = delete;
  ProgressScope& operator=(const ProgressScope&) = delete;

  bool Active() const { return active_; }
  void Complete() { endStatus_ = STATUS_COMPLETED; }

 private:
  Calibrator& calibrator_;
  int endStatus_ = STATUS_NOT_READY;
  bool active_ = false;
};
