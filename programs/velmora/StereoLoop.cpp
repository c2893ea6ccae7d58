/// The interactive loop for a pair of cameras: show, take snapshots, calibrate, quit.
#include "velmora/StereoLoop.h"

#include <filesystem>
#include <opencv2/imgcodecs.hpp>

#include "common/Messages.h"
#include "common/Screen.h"

namespace app {

namespace {

constexpr int RECORDING_WAIT = 20;
constexpr char RIGHT_WINDOW[] = "FrameRight";

bool Write(const std::string& file, const cv::Mat& image) {
  try {
    return cv::imwrite(file, image);
  } catch (const cv::Exception&) {
    return false;
  }
}

}  // namespace

StereoLoop::StereoLoop(StereoEngine& engine, common::PairFeed& feed, common::Screen& screen,
                       const LoopOptions& options, std::ostream& out, std::ostream& err)
    : StereoLoop(engine, feed, screen, options, Folders(), out, err) {
}

StereoLoop::StereoLoop(StereoEngine& engine, common::PairFeed& feed, common::Screen& screen,
                       const LoopOptions& options, const Folders& folders, std::ostream& out,
                       std::ostream& err)
    : InteractiveLoop({"stereo", RECORDING_WAIT}, screen, options, out, err),
      engine_(engine),
      feed_(feed),
      folders_(folders) {
}

bool StereoLoop::TakeFrame(std::chrono::milliseconds patience) {
  return feed_.Take(pair_, patience);
}

void StereoLoop::DetectAndShow() {
  pictures_.left = pair_.left.clone();
  pictures_.right = pair_.right.clone();
  detected_ = engine_.Detect(pictures_, points_);
  ShowAgain();
}

void StereoLoop::ShowAgain() {
  screen_.Show(WINDOW, pictures_.left);
  screen_.Show(RIGHT_WINDOW, pictures_.right);
}

void StereoLoop::TakeSnapshot() {
  if (HasFrame()) {
    WriteImage(folders_.left, pictures_.left);
    WriteImage(folders_.right, pictures_.right);
    ++counter_;
  }
  if (detected_) {
    engine_.Add(points_);
    SetOutdated();
  }
  PrintTotal(detected_, engine_.CountSnapshots());
}

void StereoLoop::WriteImage(const std::string& folder, const cv::Mat& image) {
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  const std::string file = folder + std::to_string(counter_) + ".jpg";
  if (!Write(file, image)) common::PrintError(err_, "cannot write '" + file + "'.");
}

void StereoLoop::ComputeAndSave() {
  PrintError(engine_.Compute(options_.model));
  engine_.Save(options_.output);
  engine_.Reset();
}

}  // namespace app
