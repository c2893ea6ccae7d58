/// Searches the grid in frames, draws what was found, and remembers the last detection.
#include "calibrator/Detector.h"

#include <algorithm>
#include <chrono>
#include <opencv2/imgproc.hpp>
#include <sstream>

#include "Log.h"
#include "calibrator/ObservedPoints.h"
#include "finder/Grey.h"
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

/// What a camera sees, the whole grid or a part of it, with a weight for each point.
CameraSnapshot ObservedOf(const Centres& points, const PartialGrid& part) {
  if (!part.points.empty()) return {part.points, {}, part.weights};
  return {points, {}, std::vector<double>(points.size(), 1.0)};
}

/// The radii of the discs that are seen, 0 for the others.
const std::vector<double>& RadiiOf(const GridDetails& details) {
  return details.part.points.empty() ? details.radii : details.part.radii;
}

}  // namespace

Detector::Detector(const cv::Size& grid, const cv::Size& processingSize)
    : grid_(grid), processingSize_(processingSize) {
}

void Detector::Forget() {
  for (CameraSnapshot& camera : last_) {
    camera.points.clear();
    camera.image = {};
  }
  parts_.assign(last_.size(), {});
}

/// Searches the frame and remembers what it shows.
bool Detector::Search(cv::Mat& frame, Centres& points) {
  GridDetails details;
  const bool found = finder_.Find(frame, grid_, points, details);
  if (found) {
    last_[0].points = points;
    last_[0].image = ImageOf(frame, std::move(details.radii));
  } else {
    PartialGrid& part = details.part;
    parts_[0] = {std::move(part.points), {}, std::move(part.weights)};
    parts_[0].image = ImageOf(frame, std::move(part.radii));
  }
  return found;
}

/// Searches the frames of a pair and remembers what both show.
bool Detector::SearchPair(cv::Mat& left, cv::Mat& right, Centres& leftPoints, Centres& rightPoints) {
  GridDetails leftDetails;
  GridDetails rightDetails;
  if (finder_.FindBoth(left, right, grid_, leftPoints, rightPoints, leftDetails, rightDetails)) {
    last_[0].points = leftPoints;
    last_[1].points = rightPoints;
    last_[0].image = ImageOf(left, std::move(leftDetails.radii));
    last_[1].image = ImageOf(right, std::move(rightDetails.radii));
    return true;
  }
  // Points of a search that failed are none, unless the other search could have answered a part: it was the
  // robust one then, and so was this.
  if (leftDetails.part.points.empty() && rightDetails.part.points.empty()) return false;
  std::vector<CameraSnapshot> seen = {ObservedOf(leftPoints, leftDetails.part),
                                      ObservedOf(rightPoints, rightDetails.part)};
  if (!FaultOfSnapshot(grid_, seen).empty()) return false;
  seen[0].image = ImageOf(left, RadiiOf(leftDetails));
  seen[1].image = ImageOf(right, RadiiOf(rightDetails));
  parts_ = std::move(seen);
  return false;
}

/// Empty when centres are not to be measured there.
GridImage Detector::ImageOf(const cv::Mat& frame, std::vector<double> radii) const {
  if (!fine_ || radii.empty()) return {};
  const cv::Mat grey = finder::GreyOf(frame);
  // A grey frame will be drawn on.
  return {frame.channels() == 1 ? grey.clone() : grey, std::move(radii)};
}

void Detector::KeepFrame(size_t camera, const cv::Mat& frame) {
  if (last_[camera].points.empty() && parts_[camera].points.empty()) return;
  last_[camera].frame = frame.clone();
  parts_[camera].frame = last_[camera].frame;
}

void Detector::DrawSeen(size_t camera, cv::Mat& frame) const {
  const CameraSnapshot& whole = last_[camera];
  const CameraSnapshot& part = parts_[camera];
  if (!whole.points.empty()) DrawGrid(whole.points, grid_, frame);
  if (!part.points.empty()) DrawSeenGrid(part.points, part.weights, grid_, frame);
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
  KeepFrame(0, frame);
  if (draw || guided) DrawSeen(0, frame);
  if (draw || (found && guided)) DrawInfo(overlay, elapsed, frame);
  // Within the lock: what becomes the snapshot is the detection that was checked.
  if (found && guide.Take(last_[0])) Forget();
  if (flip_) cv::flip(frame, frame, AROUND_VERTICAL_AXIS);
  return found;
}

bool Detector::DetectPartial(cv::Mat& frame, CameraSnapshot& seen, bool draw, const Overlay& overlay) {
  const std::lock_guard<std::mutex> lock(lock_);
  const Stopwatch stopwatch;
  Forget();
  seen = {};
  if (!BringToProcessingSize(frame)) return false;
  Centres points;
  if (Search(frame, points)) {
    seen = last_[0];
    seen.weights.assign(points.size(), 1.0);
  } else {
    seen = parts_[0];
  }
  seen.frame = cv::Mat();
  const double elapsed = stopwatch.Seconds();
  KeepFrame(0, frame);
  if (draw) {
    DrawSeen(0, frame);
    DrawInfo(overlay, elapsed, frame);
  }
  if (flip_) cv::flip(frame, frame, AROUND_VERTICAL_AXIS);
  return !seen.points.empty();
}

bool Detector::DetectPair(cv::Mat& left, cv::Mat& right, Centres& leftPoints, Centres& rightPoints, bool draw,
                          const Overlay& overlay, const std::function<bool()>& refuses) {
  const std::lock_guard<std::mutex> lock(lock_);
  if (refuses()) return false;
  AssertSameSize(left, right, "DetectStereoPoints", 346);
  const Stopwatch stopwatch;
  Forget();
  if (!BringToProcessingSize(left, right)) return false;
  const bool found = SearchPair(left, right, leftPoints, rightPoints);
  const double elapsed = stopwatch.Seconds();

  KeepFrame(0, left);
  KeepFrame(1, right);
  if (draw) {
    DrawSeen(0, left);
    DrawInfo(overlay, elapsed, left);
    DrawSeen(1, right);
  }
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
  GridDetails leftDetails;
  GridDetails rightDetails;
  if (!finder_.FindBoth(left, right, grid_, found[0].points, found[1].points, leftDetails, rightDetails)) {
    return false;
  }
  found[0].image = ImageOf(left, std::move(leftDetails.radii));
  found[1].image = ImageOf(right, std::move(rightDetails.radii));
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

bool Detector::WithSeen(const std::function<bool(const std::vector<CameraSnapshot>&)>& take) {
  const std::lock_guard<std::mutex> lock(lock_);
  if (!take(last_[0].points.empty() ? parts_ : last_)) return false;
  Forget();
  return true;
}

bool Detector::HasLast() {
  const std::lock_guard<std::mutex> lock(lock_);
  return !last_[0].points.empty();
}

}  // namespace velmora
