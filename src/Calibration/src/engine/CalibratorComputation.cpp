/// The calibrator's computation of one camera.
#include "CalibAssistant.h"
#include "Calibrator.h"
#include "JSON.h"
#include "Log.h"
#include "engine/Intrinsics.h"

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

float Calibrator::ComputeCalibration(const int& model) {
  if (kind_ != MONOCULAR || GetStatus() == STATUS_PROGRESS) return -1.0F;

  // Records cannot change between the count and the mark that keeps others from changing them.
  std::unique_lock<std::mutex> data(dataLock_);
  if (records_.objectRecords.size() < 5) {
    Log::error("Can't compute calibration. At least 5 pictures are needed. Current: %d",
               static_cast<int>(records_.imageRecords.size()));
    return -1.0F;
  }
  ProgressScope progress(*this);
  if (!progress.Active()) return -1.0F;
  const auto objectPoints = records_.objectRecords;
  const auto imagePoints = records_.imageRecords;
  assistant_.reset();  // a computation ends guided collection
  data.unlock();

  const IntrinsicsResult solved = SolveIntrinsics(objectPoints, imagePoints, {frameWidth_, frameHeight_}, model);

  data.lock();
  results_.K = solved.K;
  results_.D = solved.D;
  results_.rvecs = solved.rvecs;
  results_.tvecs = solved.tvecs;
  results_.stdDevIntrinsics = solved.stdDevIntrinsics;
  results_.stdDevExtrinsics = solved.stdDevExtrinsics;
  results_.perViewErrors = solved.perViewErrors;
  results_.rms = static_cast<float>(solved.rms);
  progress.Complete();
  return results_.rms;
}

void Calibrator::ComputeCalibrationMultithread(const int& model) {
  RunInBackground("Calibration", [this, model] { ComputeCalibration(model); });
}
