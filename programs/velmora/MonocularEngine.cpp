/// What the monocular loop asks of a calibrator.
#include "velmora/MonocularEngine.h"

namespace app {

bool CalibratorEngine::Detect(cv::Mat& frame, std::vector<cv::Point2d>& points) {
  return calibrator_.DetectPoints(frame, points, true);
}

void CalibratorEngine::Add(const std::vector<cv::Point2d>& points) {
  calibrator_.AddPoints(points);
}

int CalibratorEngine::CountSnapshots() {
  return calibrator_.GetNumberOfRecords();
}

float CalibratorEngine::Compute(int model) {
  return calibrator_.ComputeCalibration(model);
}

void CalibratorEngine::Save(const std::string& path) {
  calibrator_.SaveResult(true, path);
}

void CalibratorEngine::Review() {
  calibrator_.WatchReprojection();
}

void CalibratorEngine::Reset() {
  calibrator_.Reset();
}

}  // namespace app
