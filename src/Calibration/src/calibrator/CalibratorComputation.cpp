/// The calibrator's computation of one camera.
#include "CalibAssistant.h"
#include "Calibrator.h"
#include "Log.h"
#include "calibrator/Finite.h"
#include "calibrator/ProgressScope.h"
#include "calibrator/SolverChoice.h"

using namespace velmora;

/// With dataLock_ held.
bool Calibrator::HasEnoughRecords() {
  if (records_.objectRecords.size() >= ENOUGH_SNAPSHOTS) return true;
  Log::error("Can't compute %scalibration. At least 5 pictures are needed. Current: %d",
             kind_ == STEREO ? "stereo " : "", static_cast<int>(records_.imageRecords.size()));
  return false;
}

float Calibrator::ComputeCalibration(const int& model) {
  if (kind_ != MONOCULAR || GetStatus() == STATUS_PROGRESS) return -1.0F;

  // Records cannot change between the count and the mark that keeps others from changing them.
  std::unique_lock<std::mutex> data(dataLock_);
  if (!HasEnoughRecords()) return -1.0F;
  ProgressScope progress(*this);
  if (!progress.Active()) return -1.0F;
  const auto objectPoints = records_.objectRecords;
  const auto imagePoints = records_.imageRecords;
  assistant_.reset();  // a computation ends guided collection
  data.unlock();

  const SolverChoice::Settings settings = solver_->Now();
  SparseResult solved;
  try {
    solved = settings.Solve(objectPoints, imagePoints, {frameWidth_, frameHeight_}, model);
  } catch (const cv::Exception&) {
    if (!progress.Cancelled()) throw;
    return -1.0F;
  }
  RequireFinite(solved.rms, {solved.K, solved.D, solved.rvecs, solved.tvecs});

  data.lock();
  results_.K = solved.K;
  results_.D = solved.D;
  results_.rvecs = solved.rvecs;
  results_.tvecs = solved.tvecs;
  results_.stdDevIntrinsics = solved.stdDevIntrinsics;
  results_.stdDevExtrinsics = solved.stdDevExtrinsics;
  results_.perViewErrors = solved.perViewErrors;
  results_.rms = static_cast<float>(solved.rms);
  solver_->rejected = std::move(solved.rejected);
  solver_->usedRobust = solved.robust;
  solver_->tooFewAgree = solved.tooFewAgree;
  solver_->solution = std::move(solved.solution);
  solver_->usedDiscRadius = settings.discRadius;
  progress.Complete();
  return results_.rms;
}

void Calibrator::ComputeCalibrationMultithread(const int& model) {
  RunInBackground("Calibration", [this, model] { ComputeCalibration(model); });
}
