/// Searches the grid in frames, draws what was found, and remembers the last detection.
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "calibrator/Snapshots.h"
#include "finder/FinderChoice.h"
#include "imaging/Overlay.h"

namespace velmora {

/// What is made of a frame in which one camera's grid was searched. Called during the detection, on its
/// thread, in this order; no other detection of the same detector is under way meanwhile.
class DetectionGuide {
 public:
  virtual ~DetectionGuide() = default;
  /// Draws on the frame what it is to show, if anything. True when the corners and the overlay are to be
  /// drawn even without being asked for.
  virtual bool Draw(cv::Mat& frame) = 0;
  /// Told of the centres that were found; `detection` is what a snapshot would keep. True when it became one:
  /// it is then no longer the last detection.
  virtual bool Take(const CameraSnapshot& detection) = 0;
};

/// One detection or collection at a time: the last detection is of the frame that was checked. Frames are
/// brought to the processing size first; they are decorated in place. All functions are thread-safe.
class Detector {
 public:
  Detector(const cv::Size& grid, const cv::Size& processingSize);

  FinderChoice& Finder() { return finder_; }
  /// Whether what is found is remembered with an image in which its centres can be measured anew; from the
  /// next frame on, and of the robust search only. False at first.
  void SetFine(bool fine) { fine_ = fine; }
  bool Fine() const { return fine_; }
  void SetFlip(bool flip) { flip_ = flip; }
  bool Flip() const { return flip_; }

  /// Why the frame cannot be brought to the processing size; empty when it can, and for one without data.
  std::string FaultOf(const cv::Mat& frame) const;

  /// What the overlay says apart from the frame's size and the time, which are the detector's.
  using Overlay = std::function<OverlayState()>;

  /// Searches one camera's frame; see Calibrator::DetectPoints.
  bool Detect(cv::Mat& frame, std::vector<cv::Point2d>& points, bool draw, const Overlay& overlay,
              DetectionGuide& guide);
  /// Searches one camera's frame for the grid or a part of it; see Calibrator::DetectPartial. `seen` has no
  /// frame, and always weights. A part is never the last detection, but its frame is kept.
  bool DetectPartial(cv::Mat& frame, CameraSnapshot& seen, bool draw, const Overlay& overlay);
  /// Searches the frames of a pair; see Calibrator::DetectStereoPoints. Nothing is done when `refuses` says
  /// so at the moment when no other detection is under way any more. Parts are never the last detection; they
  /// are drawn, and their frames kept, where both cameras see enough of the same circles for a snapshot.
  bool DetectPair(cv::Mat& left, cv::Mat& right, std::vector<cv::Point2d>& leftPoints,
                  std::vector<cv::Point2d>& rightPoints, bool draw, const Overlay& overlay,
                  const std::function<bool()>& refuses);
  /// Searches both frames and hands what was found to `add`, which answers whether it was taken. With `draw`
  /// the corners are drawn if so. False without a grid in both.
  bool CollectPair(cv::Mat& left, cv::Mat& right, bool draw, const std::function<bool()>& refuses,
                   const std::function<bool(const std::vector<CameraSnapshot>&)>& add);

  /// Hands the last detection to `take`: one entry for each camera, whose points are empty when there is none
  /// or it was used up. It is used up when `take` answers true; its frames are kept for centres that callers
  /// supply. `take` is called under the lock of detections: it must not detect.
  bool WithLast(const std::function<bool(const std::vector<CameraSnapshot>&)>& take);
  /// The same with what the last frames showed: each camera the whole grid or, with weights, a part of it.
  /// Without points where that is not enough for a snapshot. Both are used up together.
  bool WithSeen(const std::function<bool(const std::vector<CameraSnapshot>&)>& take);
  /// True when the last detection found the grid and was not used up. Waits for a detection under way.
  bool HasLast();

 private:
  void Forget();
  bool Search(cv::Mat& frame, std::vector<cv::Point2d>& points);
  bool SearchPair(cv::Mat& left, cv::Mat& right, std::vector<cv::Point2d>& leftPoints,
                  std::vector<cv::Point2d>& rightPoints);
  GridImage ImageOf(const cv::Mat& frame, std::vector<double> radii) const;
  void KeepFrame(size_t camera, const cv::Mat& frame);
  void DrawSeen(size_t camera, cv::Mat& frame) const;
  bool BringToProcessingSize(cv::Mat& frame) const;
  bool BringToProcessingSize(cv::Mat& left, cv::Mat& right) const;
  void DrawInfo(const Overlay& overlay, double elapsed, cv::Mat& frame) const;

  const cv::Size grid_;
  const cv::Size processingSize_;
  FinderChoice finder_;
  std::atomic<bool> fine_{false};
  std::atomic<bool> flip_{false};

  std::mutex lock_;  ///< one detection or collection at a time; guards the last detection
  std::vector<CameraSnapshot> last_{2};
  /// Of the last frames, where they did not all show the whole grid, and yet enough of it for a snapshot;
  /// without points else.
  std::vector<CameraSnapshot> parts_{2};
};

}  // namespace velmora
