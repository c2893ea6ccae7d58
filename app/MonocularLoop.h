/// The interactive loop for one camera: show, take snapshots, calibrate, quit.
#pragma once

#include <opencv2/core.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "FrameFeed.h"
#include "MonocularEngine.h"
#include "Screen.h"

namespace app {

/// What the loop needs to know of the settings.
struct LoopOptions {
  int model = Calibrator::MODEL_RATIONAL;
  std::string output;      ///< path of the result file, without its extension
  bool videoFile = false;  ///< play at the pace of a recording
  cv::Size size;           ///< of the picture that is shown while no frame has come yet
  std::string sourceName;  ///< what messages call the source
};

/// Shows each frame with what was detected in it, in the window "Frame", and acts on three keys: p takes a
/// snapshot, ENTER computes, saves and reviews the calibration and starts over, q quits.
///
/// A source that has ended or pauses leaves its last frame on the screen, and the keys go on working on it. A
/// source that has delivered nothing yet is waited for behind a black picture that says so.
class MonocularLoop {
 public:
  MonocularLoop(MonocularEngine& engine, FrameFeed& feed, Screen& screen, const LoopOptions& options,
                std::ostream& out, std::ostream& err);

  /// Runs until q is pressed (1) or the source turns out to deliver nothing at all (-1); the value is the
  /// exit status of the application.
  int Run();

 private:
  enum class Arrival { NewFrame, Nothing, Broken };

  Arrival ShowNext();
  void DetectAndShow();
  void ShowWaiting();
  void ShowAgain();
  void TakeSnapshot();
  void Calibrate();
  void ComputeAndReview();
  void PrintModel();

  MonocularEngine& engine_;
  FrameFeed& feed_;
  Screen& screen_;
  const LoopOptions options_;
  std::ostream& out_;
  std::ostream& err_;

  cv::Mat frame_;    ///< the last frame as it came; empty before the first
  cv::Mat picture_;  ///< what the window shows; empty before anything was shown
  std::vector<cv::Point2d> points_;
  bool detected_ = false;
  bool outdated_ = false;  ///< a key has changed what the picture tells, or closed the window
  int idleTurns_ = 0;
};

}  // namespace app
