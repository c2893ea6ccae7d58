/// What the interactive loops have in common: keys, waiting, the texts around a calibration.
#include "velmora/InteractiveLoop.h"

#include <algorithm>
#include <exception>
#include <opencv2/imgproc.hpp>

#include "common/ExitStatus.h"
#include "common/Messages.h"

namespace app {

namespace {

constexpr int KEY_ENTER = 13;
constexpr int KEY_SNAPSHOT = 112;  // p
constexpr int KEY_QUIT = 113;      // q

constexpr int LIVE_WAIT = 1;
constexpr int IDLE_WAIT = 10;
/// Idle waits after which the picture is shown again, should the user have closed the window.
constexpr int IDLE_TURNS_PER_SHOW = 50;
constexpr std::chrono::milliseconds FIRST_FRAME_PATIENCE{1000};

constexpr char SEPARATOR[] = "---------------------------------------------------------";
constexpr char WAITING_TEXT[] = "Waiting for the first frame";

cv::Mat WaitingPicture(cv::Size size) {
  cv::Mat picture(std::max(size.height, 1), std::max(size.width, 1), CV_8UC3, cv::Scalar::all(0));
  const int font = cv::FONT_HERSHEY_DUPLEX;
  const cv::Size unscaled = cv::getTextSize(WAITING_TEXT, font, 1.0, 1, nullptr);
  const double scale = std::min(0.75, 0.9 * picture.cols / unscaled.width);
  const cv::Size text = cv::getTextSize(WAITING_TEXT, font, scale, 1, nullptr);
  const cv::Point origin((picture.cols - text.width) / 2, (picture.rows + text.height) / 2);
  cv::putText(picture, WAITING_TEXT, origin, font, scale, cv::Scalar::all(255), 1, cv::LINE_AA);
  return picture;
}

}  // namespace

const char* const InteractiveLoop::WINDOW = "Frame";

InteractiveLoop::InteractiveLoop(const Kind& kind, common::Screen& screen, const LoopOptions& options,
                                 std::ostream& out, std::ostream& err)
    : screen_(screen), options_(options), out_(out), err_(err), kind_(kind) {
}

int InteractiveLoop::Run() {
  for (;;) {
    const Arrival arrival = ShowNext();
    if (arrival == Arrival::Broken) {
      common::PrintError(err_, "cannot read " + options_.sourceName + ".");
      return common::APPLICATION_FAILED;
    }
    const int frameWait = options_.videoFile ? kind_.recordingWait : LIVE_WAIT;
    switch (screen_.WaitKey(arrival == Arrival::NewFrame ? frameWait : IDLE_WAIT)) {
      case KEY_ENTER:
        Calibrate();
        break;
      case KEY_SNAPSHOT:
        TakeSnapshot();
        break;
      case KEY_QUIT:
        out_ << "Bye." << std::endl;
        return common::APPLICATION_LEFT;
      default:
        break;  // upper-case P and Q do nothing, although the help text shows them
    }
  }
}

InteractiveLoop::Arrival InteractiveLoop::ShowNext() {
  if (TakeFrame(shown_ ? std::chrono::milliseconds(0) : FIRST_FRAME_PATIENCE)) {
    Refresh();
    return Arrival::NewFrame;
  }
  if (SourceFailed()) return Arrival::Broken;
  if (!HasFrame()) {
    if (!shown_ || outdated_ || ++idleTurns_ % IDLE_TURNS_PER_SHOW == 0) ShowWaiting();
  } else if (outdated_) {
    Refresh();
  } else if (++idleTurns_ % IDLE_TURNS_PER_SHOW == 0) {
    ShowAgain();
  }
  return Arrival::Nothing;
}

void InteractiveLoop::Refresh() {
  shown_ = true;
  outdated_ = false;
  DetectAndShow();
}

void InteractiveLoop::ShowWaiting() {
  shown_ = true;
  outdated_ = false;
  screen_.Show(WINDOW, WaitingPicture(options_.size));
}

void InteractiveLoop::Calibrate() {
  screen_.Close(WINDOW);
  outdated_ = true;
  out_ << std::endl << SEPARATOR << std::endl << std::endl;
  PrintModel();
  try {
    ComputeAndSave();
  } catch (const std::exception& failure) {
    common::PrintError(err_, failure, "the calibration failed");
  }
  out_ << std::endl << SEPARATOR << std::endl << std::endl;
}

void InteractiveLoop::PrintModel() {
  const std::string model = ModelChoice::NameOf(options_.model);
  if (ModelChoice::NumberOf(model) != 0) {
    out_ << "Computing " << kind_.name << " calibration, model '" << model << "'. This may take a while..."
         << std::endl;
  }
}

void InteractiveLoop::PrintTotal(bool added, int total) {
  out_ << (added ? "New points added." : "Failed to add points.") << " Total number of pictures: " << total
       << std::endl;
}

void InteractiveLoop::PrintError(float error) {
  out_ << "Calibration computed! Error = " << error << std::endl << std::endl;
}

}  // namespace app
