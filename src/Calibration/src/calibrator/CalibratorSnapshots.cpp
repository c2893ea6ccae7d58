/// The calibrator's collection of monocular snapshots.
#include "Calibrator.h"
#include "JSON.h"
#include "Log.h"

using namespace velmora;

bool Calibrator::AddPoints() {
  const std::lock_guard<std::mutex> lock(pointsLock_);
  const std::lock_guard<std::mutex> data(dataLock_);
  if (kind_ != MONOCULAR || GetStatus() == STATUS_PROGRESS) return false;
  if (lastPoints_.empty()) {
    Log::debug("Pattern not detected. No points added.");
    return false;
  }
  if (recording_ != nullptr) RecordPose(lastPoints_);
  const int count = StoreSnapshot(lastPoints_);
  Log::debug("New points added. Snapshot count: %d", count);
  lastPoints_.clear();
  results_.rms = -1.0F;  // earlier results stay, but describe other snapshots
  return true;
}

void Calibrator::AddPoints(const std::vector<cv::Point2d>& points) {
  const std::lock_guard<std::mutex> lock(pointsLock_);
  const std::lock_guard<std::mutex> data(dataLock_);
  if (kind_ != MONOCULAR || GetStatus() == STATUS_PROGRESS || points.empty()) return;
  StoreSnapshot(points);
  lastPoints_.clear();
  results_.rms = -1.0F;
}

bool Calibrator::AddPoints(cv::Mat& frame, const bool& draw) {
  std::vector<cv::Point2d> points;
  DetectPoints(frame, points, draw);
  if (Assistant() == nullptr) AddPoints();
  return true;
}

/// With pointsLock_ and dataLock_ held; returns the new count.
int Calibrator::StoreSnapshot(const std::vector<cv::Point2d>& points) {
  records_.imageRecords.push_back(points);
  records_.objectRecords.push_back(objectTemplate_);
  records_.snapshots.push_back(lastFrame_);
  const size_t count = records_.objectRecords.size();
  if (count >= ENOUGH_SNAPSHOTS) SetStatus(STATUS_READY);
  return static_cast<int>(count);
}

/// With dataLock_ held and a recording open.
void Calibrator::RecordPose(const std::vector<cv::Point2d>& points) {
  cv::Mat pose;
  cv::Mat(points).convertTo(pose, CV_32F);
  recording_->addMat("points" + std::to_string(recordCounter_), pose);
  ++recordCounter_;
}

void Calibrator::StartModelRecording() {
  const std::lock_guard<std::mutex> data(dataLock_);
  if (recording_ != nullptr) return;
  Log::info("Start model recording");
  recording_ = std::make_unique<JSON>();
  recording_->addInt("imgWidth", frameWidth_);
  recording_->addInt("imgHeight", frameHeight_);
}

void Calibrator::StopModelRecording() {
  const std::lock_guard<std::mutex> data(dataLock_);
  if (recording_ == nullptr) return;
  Log::info("Stop model recording");
  SaveRecording("model_tmp.json");
  recording_.reset();
}

bool Calibrator::StopModelRecording(const std::string& path) {
  const std::lock_guard<std::mutex> data(dataLock_);
  if (recording_ == nullptr || !SaveRecording(path)) return false;
  Log::info("Stop model recording");
  recording_.reset();
  return true;
}

/// With dataLock_ held and a recording open. The counter runs on over recordings: a second one holds poses
/// from the first one's count on.
bool Calibrator::SaveRecording(const std::string& path) {
  recording_->addInt("count", recordCounter_);
  return recording_->save(path);
}
