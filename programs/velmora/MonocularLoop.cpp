/// The interactive loop for one camera: show, take snapshots, calibrate, quit.
#include "velmora/MonocularLoop.h"

#include "common/Messages.h"
#include "common/Screen.h"

namespace app {

namespace {

constexpr int RECORDING_WAIT = 42;

}  // namespace

MonocularLoop::MonocularLoop(MonocularEngine& engine, common::FrameFeed& feed, common::Screen& screen,
                             const LoopOptions& options, std::ostream& out, std::ostream& err)
    : InteractiveLoop({"monocular", RECORDING_WAIT}, screen, options, out, err),
      engine_(engine),
      feed_(feed) {
}

bool MonocularLoop::TakeFrame(std::chrono::milliseconds patience) {
  return feed_.Take(frame_, patience);
}

void MonocularLoop::DetectAndShow() {
  picture_ = frame_.clone();
  detected_ = engine_.Detect(picture_, points_);
  ShowAgain();
}

void MonocularLoop::ShowAgain() {
  screen_.Show(WINDOW, picture_);
}

void MonocularLoop::TakeSnapshot() {
  if (detected_) {
    engine_.Add(points_);
    SetOutdated();
  }
  PrintTotal(detected_, engine_.CountSnapshots());
}

void MonocularLoop::ComputeAndSave() {
  PrintError(engine_.Compute(options_.model));
  engine_.Save(options_.output);
  engine_.Review();
  engine_.Reset();
}

}  // namespace app
