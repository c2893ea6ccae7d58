/// The calibrator's computation of a pair.
#include "CalibAssistant.h"
#include "Calibrator.h"
#include "JSON.h"
#include "Log.h"
#include "calibrator/Finite.h"
#include "calibrator/ProgressScope.h"
#include "calibrator/SolverChoice.h"
#include "solver/OpenCvExtrinsics.h"

using namespace velmora;

namespace {

constexpr int RATIONAL_COEFFICIENTS = 14;

/// True when the reading succeeds; reported as an unreadable file otherwise.
template <typename Reading>
bool Reads(const std::string& source, Reading reading) {
  bool read = false;
  try {
    read = reading();
  } catch (const nlohmann::json::exception&) {
    read = false;
  } catch (const cv::Exception&) {
    read = false;  // sizes that no matrix can have
  }
  if (!read) Log::error("Cannot open file: %s", source.c_str());
  return read;
}

bool Open(const std::string& source, bool isFile, JSON& document) {
  return Reads(source, [&] {
    if (isFile) return document.load(source);
    document.fromJson(source);
    return true;
  });
}

bool ReadLens(const std::string& source, JSON& document, cv::Mat& K, cv::Mat& D) {
  return Reads(source, [&] {
    K = document.readMat("cameraMatrix");
    D = document.readMat("distCoefs");
    return true;
  });
}

/// Reads two monocular results, files or their texts: both are opened before either is looked into. False,
/// with an error line that names the first of which that cannot be done.
bool ReadIntrinsics(const std::string& left, const std::string& right, bool fromFiles,
                    StereoIntrinsics& intrinsics) {
  JSON leftDocument;
  JSON rightDocument;
  return Open(left, fromFiles, leftDocument) && Open(right, fromFiles, rightDocument) &&
         ReadLens(left, leftDocument, intrinsics.K, intrinsics.D) &&
         ReadLens(right, rightDocument, intrinsics.KRight, intrinsics.DRight);
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
  if (!ReadIntrinsics(left, right, fromFiles, intrinsics)) return 0.0F;

  data.lock();
  if (RefusesStereo() || !HasEnoughRecords()) return -1.0F;  // another thread was faster
  const auto hold = [this](const StereoIntrinsics& lenses) {
    results_.K = lenses.K;
    results_.D = lenses.D;
    results_.KRight = lenses.KRight;
    results_.DRight = lenses.DRight;
  };
  const StereoIntrinsics earlier{results_.K, results_.D, results_.KRight, results_.DRight};
  // What was read stays, even where it is refused; an earlier result keeps the lenses that it was found with.
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
    const StereoIntrinsics& lenses = solved.refined;
    RequireFinite(solved.rms,
                  {solved.R, solved.T, solved.E, solved.F, lenses.K, lenses.D, lenses.KRight, lenses.DRight});
  } catch (...) {  // a progress listener may throw anything
    data.lock();
    if (!results_.R.empty()) hold(earlier);
    if (!progress.Cancelled()) throw;
    return -1.0F;
  }

  data.lock();
  solver_->usedLenses = settings.refineLenses ? solved.refined : intrinsics;
  hold(solver_->usedLenses);
  results_.R = solved.R;
  results_.T = solved.T;
  results_.E = solved.E;
  results_.F = solved.F;
  results_.rms = static_cast<float>(solved.rms);
  solver_->usedDiscRadius = settings.discRadius;
  solver_->usedPairs = records.objectRecords.size();
  solver_->usedPairModel = model;
  solver_->usedRefinement = settings.refineLenses;
  solver_->pairSolution = std::move(solved.solution);
  progress.Complete();
  return results_.rms;
}

void Calibrator::ComputeCalibrationStereoMultithread(const std::string& left, const std::string& right,
                                                     const int& model) {
  RunInBackground("Stereo calibration",
                  [this, left, right, model] { ComputeCalibrationStereo(left, right, model, false); });
}
