/// The calibrator's computation of a pair.
#include <exception>
#include <utility>

#include "CalibAssistant.h"
#include "Calibrator.h"
#include "JSON.h"
#include "Log.h"
#include "engine/Extrinsics.h"
#include "engine/ProgressScope.h"
#include "engine/SolverChoice.h"

namespace {

constexpr int RATIONAL_COEFFICIENTS = 14;

/// Reads a monocular result, a file or its text, into K and D. False, reported as an unreadable file, for
/// whatever holds no such result.
bool ReadIntrinsics(const std::string& source, bool fromFile, cv::Mat& K, cv::Mat& D) {
  bool read = false;
  try {
    JSON document;
    read = !fromFile || document.load(source);
    if (!fromFile) document.fromJson(source);
    if (read) {
      K = document.readMat("cameraMatrix");
      D = document.readMat("distCoefs");
    }
  } catch (const nlohmann::json::exception&) {
    read = false;
  } catch (const cv::Exception&) {
    read = false;  // sizes that no matrix can have
  }
  if (!read) Log::error("Cannot open file: %s", source.c_str());
  return read;
}

bool IsRational(const cv::Mat& D, const std::string& source) {
  if (D.cols >= RATIONAL_COEFFICIENTS) return true;
  Log::error("ERROR: The calibration model of '%s' is not rational. Stereo calibration cannot be processed.",
             source.c_str());
  return false;
}

}  // namespace

float Calibrator::ComputeCalibrationStereo(const std::string& left, const std::string& right,
                                           const int& model, const bool& fromFiles) {
  if (RefusesStereo()) return -1.0F;
  std::unique_lock<std::mutex> data(dataLock_);
  if (!HasEnoughRecords()) return -1.0F;
  data.unlock();

  StereoIntrinsics intrinsics;
  if (!ReadIntrinsics(left, fromFiles, intrinsics.K, intrinsics.D)) return 0.0F;
  if (!ReadIntrinsics(right, fromFiles, intrinsics.KRight, intrinsics.DRight)) return 0.0F;

  data.lock();
  if (RefusesStereo() || !HasEnoughRecords()) return -1.0F;  // another thread was faster
  const auto hold = [this](const StereoIntrinsics& lenses) {
    results_.K = lenses.K;
    results_.D = lenses.D;
    results_.KRight = lenses.KRight;
    results_.DRight = lenses.DRight;
  };
  const StereoIntrinsics earlier{results_.K, results_.D, results_.KRight, results_.DRight};
  const size_t earlierPairs = std::exchange(solver_->usedPairs, 0);
  // What was read stays, whatever becomes of the computation: but a failure leaves an earlier result whole.
  hold(intrinsics);
  if (!IsRational(intrinsics.D, left) || !IsRational(intrinsics.DRight, right)) return -1.0F;
  ProgressScope progress(*this);
  if (!progress.Active()) return -1.0F;
  const Records records = records_;
  assistant_.reset();  // a computation ends guided collection
  data.unlock();

  const SolverChoice::Settings settings = solver_->Now();
  ExtrinsicsResult solved;
  try {
    solved = settings.SolvePair(records.objectRecords, records.imageRecords, records.imageRecordsRight,
                                intrinsics, {frameWidth_, frameHeight_}, model);
  } catch (const std::exception&) {
    data.lock();
    if (!results_.R.empty()) hold(earlier);
    solver_->usedPairs = earlierPairs;
    if (!progress.Cancelled()) throw;
    return -1.0F;
  }

  data.lock();
  if (settings.refineLenses) hold(solved.refined);
  results_.R = solved.R;
  results_.T = solved.T;
  results_.E = solved.E;
  results_.F = solved.F;
  results_.rms = static_cast<float>(solved.rms);
  solver_->usedDiscRadius = settings.discRadius;
  solver_->usedPairs = records.objectRecords.size();
  solver_->usedPairModel = model;
  solver_->usedRefinement = settings.refineLenses;
  progress.Complete();
  return results_.rms;
}

void Calibrator::ComputeCalibrationStereoMultithread(const std::string& left, const std::string& right,
                                                     const int& model) {
  RunInBackground("Stereo calibration",
                  [this, left, right, model] { ComputeCalibrationStereo(left, right, model, false); });
}
