/// What the stereo loop asks of a calibrator.
#include "velmora/StereoEngine.h"

namespace app {

bool StereoCalibratorEngine::Detect(common::FramePair& pair, PairPoints& points) {
  return calibrator_.DetectStereoPoints(pair.left, pair.right, points.left, points.right, true);
}

void StereoCalibratorEngine::Add(const PairPoints& points) {
  calibrator_.AddStereoPoints(points.left, points.right);
}

int StereoCalibratorEngine::CountSnapshots() {
  return calibrator_.GetNumberOfRecords();
}

float StereoCalibratorEngine::Compute(int model) {
  return calibrator_.ComputeCalibrationStereo(calibLeft_, calibRight_, model, true);
}

void StereoCalibratorEngine::Save(const std::string& path) {
  calibrator_.SaveResult(true, path);
}

void StereoCalibratorEngine::Reset() {
  calibrator_.Reset();
}

}  // namespace app
