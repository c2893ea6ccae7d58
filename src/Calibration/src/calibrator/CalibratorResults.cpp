/// How results leave the calibrator: getters, result file, status answer.
#include "Calibrator.h"
#include "JSON.h"
#include "Log.h"
#include "calibrator/ResultDocument.h"
#include "calibrator/SolverChoice.h"

using namespace velmora;

cv::Mat Calibrator::ResultOf(int ofKind, cv::Mat Results::*member) {
  const std::lock_guard<std::mutex> data(dataLock_);
  if (GetStatus() == STATUS_PROGRESS || kind_ != ofKind) return cv::Mat();
  return results_.*member;
}

cv::Mat Calibrator::GetK() {
  return ResultOf(MONOCULAR, &Results::K);
}
cv::Mat Calibrator::GetDistCoefs() {
  return ResultOf(MONOCULAR, &Results::D);
}
cv::Mat Calibrator::GetKLeft() {
  return ResultOf(STEREO, &Results::K);
}
cv::Mat Calibrator::GetDistCoefsLeft() {
  return ResultOf(STEREO, &Results::D);
}
cv::Mat Calibrator::GetKRight() {
  return ResultOf(STEREO, &Results::KRight);
}
cv::Mat Calibrator::GetDistCoefsRight() {
  return ResultOf(STEREO, &Results::DRight);
}
cv::Mat Calibrator::GetR() {
  return ResultOf(STEREO, &Results::R);
}
cv::Mat Calibrator::GetStereoTranslation() {
  return ResultOf(STEREO, &Results::T);
}
cv::Mat Calibrator::GetEssentialMatrix() {
  return ResultOf(STEREO, &Results::E);
}
cv::Mat Calibrator::GetFundamentalMatrix() {
  return ResultOf(STEREO, &Results::F);
}
cv::Mat Calibrator::GetStdDevIntrinsics() {
  return ResultOf(MONOCULAR, &Results::stdDevIntrinsics);
}
cv::Mat Calibrator::GetPerViewErrors() {
  return ResultOf(MONOCULAR, &Results::perViewErrors);
}
cv::Mat Calibrator::GetRotationVectors() {
  return ResultOf(MONOCULAR, &Results::rvecs);
}
cv::Mat Calibrator::GetTranslationVectors() {
  return ResultOf(MONOCULAR, &Results::tvecs);
}

/// Callers rely on these getters answering "not available" in every status: the guard wants a status above
/// 399 that is not STATUS_PROGRESS (400), which none of the four is.
bool Calibrator::GuardOfUnreachableResults() {
  if (GetStatus() <= 399) {
    Log::error("Cannot perform any action while computing calibration.");
    return false;
  }
  return true;
}

cv::Mat Calibrator::GetT() {
  const int status = GetStatus();
  if (status == STATUS_PROGRESS || !GuardOfUnreachableResults() || status != STEREO) return cv::Mat();
  return ResultOf(STEREO, &Results::T);
}

cv::Mat Calibrator::GetE() {
  if (GetStatus() == STATUS_PROGRESS || !GuardOfUnreachableResults()) return cv::Mat();
  return ResultOf(STEREO, &Results::E);
}

cv::Mat Calibrator::GetF() {
  if (GetStatus() == STATUS_PROGRESS || !GuardOfUnreachableResults()) return cv::Mat();
  return ResultOf(STEREO, &Results::F);
}

double Calibrator::GetBaseline() {
  if (GetStatus() == STATUS_PROGRESS) return -1.0;
  if (!GuardOfUnreachableResults() || kind_ != STEREO) return 0.0;
  return cv::norm(ResultOf(STEREO, &Results::T), cv::NORM_L2);
}

float Calibrator::GetRMS() {
  const std::lock_guard<std::mutex> data(dataLock_);
  return GetStatus() == STATUS_PROGRESS ? -1.0F : results_.rms;
}

std::string Calibrator::currentDateTime() {
  return CurrentDateTime();
}

/// With dataLock_ held: what is saved. A pair's lenses are those that its result was found with, whatever was
/// read since.
Calibrator::Results Calibrator::ResultsToSave() const {
  Results results = results_;
  if (kind_ == STEREO) {
    const StereoIntrinsics& lenses = solver_->usedLenses;
    results.K = lenses.K;
    results.D = lenses.D;
    results.KRight = lenses.KRight;
    results.DRight = lenses.DRight;
  }
  return results;
}

std::string Calibrator::ResultText(const Results& results, JSON& document) const {
  const bool mono = results.rms != -1.0F && !results.K.empty() && !results.D.empty();
  const bool stereo =
      mono && !results.KRight.empty() && !results.DRight.empty() && !results.R.empty() && !results.T.empty();
  if (kind_ == MONOCULAR ? !mono : !stereo) return "";
  document.addInt("sensor", kind_);
  document.addDouble("error", results.rms);
  document.addInt("imgWidth", frameWidth_);
  document.addInt("imgHeight", frameHeight_);
  document.addMat("cameraMatrix", results.K);
  document.addMat("distCoefs", results.D);
  if (kind_ == STEREO) {
    document.addMat("cameraMatrix2", results.KRight);
    document.addMat("distCoefs2", results.DRight);
    document.addMat("R", results.R);
    document.addMat("T", results.T);
  }
  return document.toJson();
}

std::string Calibrator::SaveResult(const bool& save, const std::string& path) {
  Results results;
  {
    const std::lock_guard<std::mutex> data(dataLock_);
    const int status = GetStatus();
    if (status == STATUS_PROGRESS) return "";
    if (status != STATUS_COMPLETED) {
      Log::error("The calibration process has not been performed yet.");
      return "";
    }
    results = ResultsToSave();
  }
  if (kind_ != MONOCULAR && kind_ != STEREO) return "";
  JSON document;
  std::string text = ResultText(results, document);
  if (text.empty()) return "";
  const std::string fileName = ResultFileName(path, kind_);
  if (save && !document.save(fileName)) Log::error("Cannot save file: %s", fileName.c_str());
  return text;
}

std::string Calibrator::GetStatus_QVX() {
  // All of one moment: who reads "completed" finds the result beside it.
  std::unique_lock<std::mutex> data(dataLock_);
  const int status = GetStatus();
  const int count = static_cast<int>(records_.objectRecords.size());
  const Results results = status == STATUS_COMPLETED ? ResultsToSave() : Results{};
  data.unlock();

  JSON answer;
  answer.addString("op", "cs");
  answer.addString("c", "success");
  answer.addInt("ii", status);
  answer.addInt("ni", count);
  answer.addString("it", StatusSentence(status));
  if (status == STATUS_COMPLETED) {
    JSON document;
    answer.addString("cj", ResultText(results, document));
  }
  return answer.toJson();
}
