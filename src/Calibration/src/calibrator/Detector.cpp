/// Searches the grid in frames, draws what was found, and remembers the last detection.
#include "calibrator/Detector.h"

#include <algorithm>
#include <chrono>
#include <opencv2/imgproc.hpp>
#include <sstream>

#include "Log.h"
#include "imaging/FrameKind.h"
#include "imaging/FrameResize.h"

namespace velmora {

namespace {

constexpr int AROUND_VERTICAL_AXIS = 1;

using Centres = std::vector<cv::Point2d>;

class Stopwatch {
 public:
  double Seconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
  }

 private:
  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

/// Callers match the whole error: expression, function, file and line are part of it.
void AssertSameSize(const cv::Mat& left, const cv::Mat& right, const char* function, int line) {
  if (left.size() == right.size()) return;
  cv::error(cv::Exception(cv::Error::StsAssert, "mFrameLeft.size() == mFrameRight.size()", function,
                          "src/Calibration/src/Calibrator", line));
}

}  // namespace

Detector::Detector(const cv::Size& grid, const cv::Size& processingSize)
    : grid_(grid), processingSize_(processingSize) {
}

void Detector::Forget() {
  for (CameraSnapshot& camera : last_) camera.points.clear();
  part_ = {};
}

/// Searches the frame and remembers what it shows.
bool Detector::Search(cv::Mat& frame, Centres& points) {
  PartialGrid part;
  const bool found = finder_.Find(frame, grid_, points, part);
  if (found) {
    last_[0].points = points;
  } else {
    part_.points = std::move(part.points);
    part_.weights = std::move(part.weights);
  }
  return found;
}

void Detector::KeepFrame(const cv::Mat& frame) {
  if (last_[0].points.empty() && part_.points.empty()) return;
  last_[0].frame = frame.clone();
  part_.frame = last_[0].frame;
}

void Detector::DrawSeen(cv::Mat& frame) const {
  if (!last_[0].points.empty()) DrawGrid(last_[0].points, grid_, frame);
  if (!part_.points.empty()) DrawSeenGrid(part_.points, part_.weights, grid_, frame);
}

std::string Detector::FaultOf(const cv::Mat& frame) const {
  if (frame.empty()) return "";
  std::ostringstream fault;
  if (!IsSupportedFrame(frame)) {
    fault << "Cannot process a frame of OpenCV type " << frame.type()
          << ": 8 bits and 1, 3 or 4 channels are needed.";
  } else if (!CanCover(frame.size(), processingSize_)) {
    fault << "Cannot process a frame of " << frame.cols << " x " << frame.rows << " pixels.";
  }
  return fault.str();
}

bool Detector::BringToProcessingSize(cv::Mat& frame) const {
  const std::string fault = FaultOf(frame);
  if (!fault.empty()) Log::error("%s", fault.c_str());
  return fault.empty() && ResizeFrame(frame, frame, processingSize_, true, cv::INTER_NEAREST);
}

bool Detector::BringToProcessingSize(cv::Mat& left, cv::Mat& right) const {
  const bool leftReady = BringToProcessingSize(left);
  return BringToProcessingSize(right) && leftReady;
}

void Detector::DrawInfo(const Overlay& overlay, double elapsed, cv::Mat& frame) const {
  OverlayState state = overlay();
  state.frameSize = frame.size();
  state.elapsed = elapsed;
  DrawOverlay(state, frame);
}

bool Detector::Detect(cv::Mat& frame, Centres& points, bool draw, const Overlay& overlay,
                      DetectionGuide& guide) {
  const std::lock_guard<std::mutex> lock(lock_);
  const Stopwatch stopwatch;
  Forget();
  if (!BringToProcessingSize(frame)) return false;
  const bool found = Search(frame, points);
  const double elapsed = stopwatch.Seconds();

  const bool guided = guide.Draw(frame);
  KeepFrame(frame);
  if (draw || guided) DrawSeen(frame);
  if (draw || (found && guided)) DrawInfo(overlay, elapsed, frame);
  // Within the lock: what becomes the snapshot is the detection that was checked.
  if (found && guide.Take(last_[0])) Forget();
  if (flip_) cv::flip(frame, frame, AROUND_VERTICAL_AXIS);
  return found;
}

bool Detector::DetectPartial(cv::Mat& frame, Centres& points, std::vector<double>& weights, bool draw,
                             const Overlay& overlay) {
  const std::lock_guard<std::mutex> lock(lock_);
  const Stopwatch stopwatch;
  Forget();
  points.clear();
  weights.clear();
  if (!BringToProcessingSize(frame)) return false;
  if (Search(frame, points)) {
    weights.assign(points.size(), 1.0);
  } else {
    points = part_.points;
    weights = part_.weights;
  }
  const double elapsed = stopwatch.Seconds();
  KeepFrame(frame);
  if (draw) {
    DrawSeen(frame);
    DrawInfo(overlay, elapsed, frame);
  }
  if (flip_) cv::flip(frame, frame, AROUND_VERTICAL_AXIS);
  return !points.empty();
}

bool Detector::DetectPair(cv::Mat& left, cv::Mat& right, Centres& leftPoints, Centres& rightPoints, bool draw,
                          const Overlay& overlay, const std::function<bool()>& refuses) {
  const std::lock_guard<std::mutex> lock(lock_);
  if (refuses()) return false;
  AssertSameSize(left, right, "DetectStereoPoints", 346);
  const Stopwatch stopwatch;
  Forget();
  if (!BringToProcessingSize(left, right)) return false;
  const bool found = finder_.FindBoth(left, right, grid_, leftPoints, rightPoints);
  const double elapsed = stopwatch.Seconds();

  if (found) {
    last_[0] = {leftPoints, left.clone(), {}};
    last_[1] = {rightPoints, right.clone(), {}};
  }
  if (draw && found) DrawGrid(leftPoints, grid_, left);
  if (draw) DrawInfo(overlay, elapsed, left);
  if (draw && found) DrawGrid(rightPoints, grid_, right);
  if (flip_) {
    cv::flip(right, right, AROUND_VERTICAL_AXIS);
    cv::flip(left, left, AROUND_VERTICAL_AXIS);
  }
  return found;
}

bool Detector::CollectPair(cv::Mat& left, cv::Mat& right, bool draw, const std::function<bool()>& refuses,
                           const std::function<bool(const std::vector<CameraSnapshot>&)>& add) {
  const std::lock_guard<std::mutex> lock(lock_);
  if (refuses()) return false;
  AssertSameSize(left, right, "AddStereoPoints", 483);
  std::vector<CameraSnapshot> found(2);
  if (!BringToProcessingSize(left, right)) return false;
  if (!finder_.FindBoth(left, right, grid_, found[0].points, found[1].points)) return false;
  found[0].frame = left.clone();
  found[1].frame = right.clone();
  if (!add(found)) return false;
  for (size_t i = 0; i < found.size(); ++i) last_[i].frame = found[i].frame;
  if (draw) {
    DrawGrid(found[0].points, grid_, left);
    DrawGrid(found[1].points, grid_, right);
  }
  return true;
}

bool Detector::WithLast(const std::function<bool(const std::vector<CameraSnapshot>&)>& take) {
  const std::lock_guard<std::mutex> lock(lock_);
  if (!take(last_)) return false;
  Forget();
  return true;
}

bool Detector::WithSeen(const std::function<bool(const CameraSnapshot&)>& take) {
  const std::lock_guard<std::mutex> lock(lock_);
  if (!take(last_[0].points.empty() ? part_ : last_[0])) return false;
  Forget();
  return true;
}

bool Detector::HasLast() {
  const std::lock_guard<std::mutex> lock(lock_);
  return !last_[0].points.empty();
}

}  // namespace velmora
