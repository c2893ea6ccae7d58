/// The interactive loop for a pair of cameras: show, take snapshots, calibrate, quit.
#pragma once

#include "common/FrameFeed.h"
#include "common/Screen.h"
#include "velmora/InteractiveLoop.h"
#include "velmora/StereoEngine.h"

namespace app {

/// Shows the left image in the window "Frame" and the right one in "FrameRight". The key p also writes both
/// images as they are shown, numbered by key presses, into folders that are made when they are first needed.
class StereoLoop final : public InteractiveLoop {
 public:
  /// Folders of the left and right images, each with a slash at its end.
  struct Folders {
    std::string left = "../res/left/";
    std::string right = "../res/right/";
  };

  StereoLoop(StereoEngine& engine, common::PairFeed& feed, common::Screen& screen, const LoopOptions& options,
             std::ostream& out, std::ostream& err);
  StereoLoop(StereoEngine& engine, common::PairFeed& feed, common::Screen& screen, const LoopOptions& options,
             const Folders& folders, std::ostream& out, std::ostream& err);

 private:
  bool TakeFrame(std::chrono::milliseconds patience) override;
  bool SourceFailed() const override { return feed_.FailedToStart(); }
  bool HasFrame() const override { return !pair_.empty(); }
  void DetectAndShow() override;
  void ShowAgain() override;
  void TakeSnapshot() override;
  void ComputeAndSave() override;

  void WriteImage(const std::string& folder, const cv::Mat& image);

  StereoEngine& engine_;
  common::PairFeed& feed_;
  const Folders folders_;
  common::FramePair pair_;      ///< the last pair as it came; empty before the first
  common::FramePair pictures_;  ///< the same as shown
  PairPoints points_;
  bool detected_ = false;
  int counter_ = 0;  ///< names the next images; counts key presses, not snapshots
};

}  // namespace app
