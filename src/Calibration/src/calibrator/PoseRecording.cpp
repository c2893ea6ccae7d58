/// Records the poses of snapshots for a model of the assistant.
#include "calibrator/PoseRecording.h"

#include "Log.h"

namespace velmora {

namespace {

constexpr const char* DEFAULT_FILE = "model_tmp.json";

}  // namespace

void PoseRecording::Start() {
  const std::lock_guard<std::mutex> lock(lock_);
  if (recording_) return;
  Log::info("Start model recording");
  document_ = JSON();
  document_.addInt("imgWidth", processingSize_.width);
  document_.addInt("imgHeight", processingSize_.height);
  recording_ = true;
}

void PoseRecording::Add(const std::vector<cv::Point2d>& points) {
  const std::lock_guard<std::mutex> lock(lock_);
  if (!recording_) return;
  cv::Mat pose;
  cv::Mat(points).convertTo(pose, CV_32F);
  document_.addMat("points" + std::to_string(poses_), pose);
  ++poses_;
}

void PoseRecording::Stop() {
  JSON document;
  if (!Current(document)) return;
  Log::info("Stop model recording");
  End();
  document.save(DEFAULT_FILE);
}

bool PoseRecording::StopInto(const std::string& path) {
  JSON document;
  if (!Current(document) || !document.save(path)) return false;
  Log::info("Stop model recording");
  End();
  return true;
}

/// What the file is to hold by now; false without a recording.
bool PoseRecording::Current(JSON& document) {
  const std::lock_guard<std::mutex> lock(lock_);
  document = document_;
  document.addInt("count", poses_);
  return recording_;
}

void PoseRecording::End() {
  const std::lock_guard<std::mutex> lock(lock_);
  recording_ = false;
}

}  // namespace velmora
