/// The calibrator's pairs: detection in both frames and stereo snapshots.
#include <chrono>
#include <opencv2/imgproc.hpp>

#include "CalibAssistant.h"
#include "Calibrator.h"
#include "Log.h"
#include "finder/FinderChoice.h"
#include "imaging/Overlay.h"

using namespace velmora;

namespace {

using Centres = std::vector<cv::Point2d>;

constexpr int AROUND_VERTICAL_AXIS = 1;

/// Callers match the whole error: expression, function, file and line are part of it.
void AssertSameSize(const cv::Mat& left, const cv::Mat& right, const char* function, int line) {
  if (left.size() == right.size()) return;
  cv::error(cv::Exception(cv::Error::StsAssert, "mFrameLeft.size() == mFrameRight.size()", function,
                          "src/Calibration/src/Calibrator", line));
}

}  // namespace

bool Calibrator::RefusesStereo() {
  return kind_ != STEREO || GetStatus() == STATUS_PROGRESS;
}

bool Calibrator::BringToProcessingSize(cv::Mat& left, cv::Mat& right) {
  const bool leftReady = BringToProcessingSize(left);
  return BringToProcessingSize(right) && leftReady;
}

void Calibrator::MirrorIfWanted(cv::Mat& left, cv::Mat& right) {
  if (!flipImage_) return;
  cv::flip(right, right, AROUND_VERTICAL_AXIS);
  cv::flip(left, left, AROUND_VERTICAL_AXIS);
}

bool Calibrator::DetectStereoPoints(cv::Mat& left, cv::Mat& right, Centres& leftPoints, Centres& rightPoints,
                                    const bool& draw) {
  const std::lock_guard<std::mutex> lock(pointsLock_);
  if (RefusesStereo()) return false;
  AssertSameSize(left, right, "DetectStereoPoints", 346);
  const auto start = std::chrono::steady_clock::now();
  lastPoints_.clear();
  lastPointsRight_.clear();
  if (!BringToProcessingSize(left, right)) return false;
  const bool found = finder_->FindBoth(left, right, patternSize_, leftPoints, rightPoints);
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;

  if (found) {
    lastFrame_ = left.clone();
    lastFrameRight_ = right.clone();
    lastPoints_ = leftPoints;
    lastPointsRight_ = rightPoints;
    if (draw) DrawGrid(leftPoints, patternSize_, left);
  }
  if (draw) drawInfo(left, elapsed.count());
  if (draw && found) DrawGrid(rightPoints, patternSize_, right);
  MirrorIfWanted(left, right);
  return found;
}

bool Calibrator::AddStereoPoints() {
  const std::lock_guard<std::mutex> lock(pointsLock_);
  const std::lock_guard<std::mutex> data(dataLock_);
  if (RefusesStereo()) return false;
  if (lastPoints_.empty() || lastPointsRight_.empty()) {
    Log::debug("Pattern not detected in both pictures. No points added.");
    return false;
  }
  const int count = StoreStereoSnapshot(lastPoints_, lastPointsRight_);
  Log::debug("New points added. Snapshot count: %d", count);
  lastPoints_.clear();
  lastPointsRight_.clear();
  results_.rms = -1.0F;
  return true;
}

void Calibrator::AddStereoPoints(const Centres& leftPoints, const Centres& rightPoints) {
  const std::lock_guard<std::mutex> lock(pointsLock_);
  const std::lock_guard<std::mutex> data(dataLock_);
  if (RefusesStereo()) return;
  StoreStereoSnapshot(leftPoints, rightPoints);
}

bool Calibrator::AddStereoPoints(cv::Mat& left, cv::Mat& right, const bool& draw) {
  const std::lock_guard<std::mutex> lock(pointsLock_);
  if (RefusesStereo()) return false;
  AssertSameSize(left, right, "AddStereoPoints", 483);
  Centres leftPoints;
  Centres rightPoints;
  if (!BringToProcessingSize(left, right)) return false;
  if (!finder_->FindBoth(left, right, patternSize_, leftPoints, rightPoints)) return false;
  const std::lock_guard<std::mutex> data(dataLock_);
  if (RefusesStereo()) return false;  // a computation began during the search
  lastFrame_ = left.clone();
  lastFrameRight_ = right.clone();
  StoreStereoSnapshot(leftPoints, rightPoints);
  if (draw) {
    DrawGrid(leftPoints, patternSize_, left);
    DrawGrid(rightPoints, patternSize_, right);
  }
  return true;
}

/// With pointsLock_ and dataLock_ held; returns the new count.
int Calibrator::StoreStereoSnapshot(const Centres& leftPoints, const Centres& rightPoints) {
  records_.imageRecordsRight.push_back(rightPoints);
  records_.snapshotsRight.push_back(lastFrameRight_);
  return StoreSnapshot(leftPoints);
}
