/// The interactive loop for one camera: show, take snapshots, calibrate, quit.
#pragma once

#include <vector>

#include "common/FrameFeed.h"
#include "common/Screen.h"
#include "velmora/InteractiveLoop.h"
#include "velmora/MonocularEngine.h"

namespace app {

/// Shows each frame in the window "Frame". After a computation the result is saved and the snapshots are
/// reviewed.
class MonocularLoop final : public InteractiveLoop {
 public:
  MonocularLoop(MonocularEngine& engine, common::FrameFeed& feed, common::Screen& screen,
                const LoopOptions& options, std::ostream& out, std::ostream& err);

 private:
  bool TakeFrame(std::chrono::milliseconds patience) override;
  bool SourceFailed() const override { return feed_.FailedToStart(); }
  bool HasFrame() const override { return !frame_.empty(); }
  void DetectAndShow() override;
  void ShowAgain() override;
  void TakeSnapshot() override;
  void ComputeAndSave() override;

  MonocularEngine& engine_;
  common::FrameFeed& feed_;
  cv::Mat frame_;    ///< the last frame as it came; empty before the first
  cv::Mat picture_;  ///< the same as shown
  std::vector<cv::Point2d> points_;
  bool detected_ = false;
};

}  // namespace app
