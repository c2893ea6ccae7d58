/// The calibrator's detection: one frame in, centres and a decorated frame out.
#include <chrono>
#include <opencv2/imgproc.hpp>
#include <sstream>

#include "CalibAssistant.h"
#include "Calibrator.h"
#include "Log.h"
#include "finder/FinderChoice.h"
#include "imaging/FrameKind.h"
#include "imaging/FrameResize.h"
#include "imaging/Overlay.h"

using namespace velmora;

namespace {

constexpr int AROUND_VERTICAL_AXIS = 1;

}  // namespace

void Calibrator::Resize(const cv::Mat& src, cv::Mat& dst, const bool& fill, const int& interpolation) {
  ResizeFrame(src, dst, {frameWidth_, frameHeight_}, fill, interpolation);
}

/// Why the frame cannot be brought to the processing size; empty for one without data, too.
std::string Calibrator::FaultOf(const cv::Mat& frame) const {
  if (frame.empty()) return "";
  std::ostringstream fault;
  if (!IsSupportedFrame(frame)) {
    fault << "Cannot process a frame of OpenCV type " << frame.type()
          << ": 8 bits and 1, 3 or 4 channels are needed.";
  } else if (!CanCover(frame.size(), {frameWidth_, frameHeight_})) {
    fault << "Cannot process a frame of " << frame.cols << " x " << frame.rows << " pixels.";
  }
  return fault.str();
}

bool Calibrator::BringToProcessingSize(cv::Mat& frame) {
  const std::string fault = FaultOf(frame);
  if (!fault.empty()) Log::error("%s", fault.c_str());
  return fault.empty() && ResizeFrame(frame, frame, {frameWidth_, frameHeight_}, true, cv::INTER_NEAREST);
}

bool Calibrator::DetectPoints(cv::Mat& frame, std::vector<cv::Point2d>& points, const bool& draw) {
  std::unique_lock<std::mutex> lock(pointsLock_);
  if (kind_ != MONOCULAR) return false;
  const auto start = std::chrono::steady_clock::now();
  lastPoints_.clear();
  if (!BringToProcessingSize(frame)) return false;
  const bool found = finder_->Find(frame, patternSize_, points);
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;

  const auto assistant = Assistant();
  if (assistant != nullptr) assistant->DrawPose(frame);
  if (found) {
    lastFrame_ = frame.clone();
    if (draw || assistant != nullptr) {
      DrawGrid(points, patternSize_, frame);
      drawInfo(frame, elapsed.count());
    }
    lastPoints_ = points;
    lock.unlock();  // the snapshot below takes the lock itself
    if (assistant != nullptr) Guide(assistant, points);
  } else if (draw) {
    drawInfo(frame, elapsed.count());
  }
  if (flipImage_) cv::flip(frame, frame, AROUND_VERTICAL_AXIS);
  return found;
}

void Calibrator::Guide(const std::shared_ptr<CalibAssistant>& assistant,
                       const std::vector<cv::Point2d>& points) {
  if (!assistant->CheckValidity(points)) return;
  AddPoints();
  if (!assistant->Next()) return;
  {
    // The computation would end guidance too, but its thread may start after the next frame, which would then
    // be taken once more at the last pose.
    const std::lock_guard<std::mutex> data(dataLock_);
    const bool enough = records_.objectRecords.size() >= ENOUGH_SNAPSHOTS;
    if ((enough || assistant->IsSinglePose()) && assistant_ == assistant) assistant_.reset();
  }
  if (assistant->IsSinglePose()) return;
  ComputeCalibrationMultithread(MODEL_RATIONAL);
}

void Calibrator::drawInfo(cv::Mat& frame, const double& elapsed) {
  OverlayState state;
  state.snapshots = GetNumberOfRecords();
  state.goal = GetAssistantGoal();
  state.frameSize = frame.size();
  state.status = GetStatus();
  state.elapsed = elapsed;
  DrawOverlay(state, frame);
}
