#include "MonocularLoop.h"

#include <algorithm>
#include <exception>
#include <opencv2/imgproc.hpp>

#include "OneLine.h"

namespace app {

namespace {

constexpr int KEY_ENTER = 13;
constexpr int KEY_SNAPSHOT = 112;  // p
constexpr int KEY_QUIT = 113;      // q

constexpr int QUIT_STATUS = 1;
constexpr int ERROR_STATUS = -1;

constexpr int RECORDING_WAIT = 42;  // milliseconds for a key, per frame
constexpr int LIVE_WAIT = 1;
constexpr int IDLE_WAIT = 10;
/// Idle waits after which the picture is shown again, should the user have closed the window.
constexpr int IDLE_TURNS_PER_SHOW = 50;
constexpr std::chrono::milliseconds FIRST_FRAME_PATIENCE{1000};

constexpr char WINDOW[] = "Frame";
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

MonocularLoop::MonocularLoop(MonocularEngine& engine, FrameFeed& feed, Screen& screen,
                             const LoopOptions& options, std::ostream& out, std::ostream& err)
    : engine_(engine), feed_(feed), screen_(screen), options_(options), out_(out), err_(err) {
}

int MonocularLoop::Run() {
  for (;;) {
    const Arrival arrival = ShowNext();
    if (arrival == Arrival::Broken) {
      err_ << "ERROR: cannot read " << options_.sourceName << "." << std::endl;
      return ERROR_STATUS;
    }
    const int frameWait = options_.videoFile ? RECORDING_WAIT : LIVE_WAIT;
    switch (screen_.WaitKey(arrival == Arrival::NewFrame ? frameWait : IDLE_WAIT)) {
      case KEY_ENTER:
        Calibrate();
        break;
      case KEY_SNAPSHOT:
        TakeSnapshot();
        break;
      case KEY_QUIT:
        out_ << "Bye." << std::endl;
        return QUIT_STATUS;
      default:
        break;
    }
  }
}

MonocularLoop::Arrival MonocularLoop::ShowNext() {
  const bool nothingShown = picture_.empty();
  if (feed_.Take(frame_, nothingShown ? FIRST_FRAME_PATIENCE : std::chrono::milliseconds(0))) {
    DetectAndShow();
    return Arrival::NewFrame;
  }
  if (feed_.FailedToStart()) {
    return Arrival::Broken;
  }
  if (nothingShown) {
    ShowWaiting();
  } else if (outdated_) {
    ShowAgain();
  } else if (++idleTurns_ % IDLE_TURNS_PER_SHOW == 0) {
    screen_.Show(WINDOW, picture_);
  }
  return Arrival::Nothing;
}

void MonocularLoop::DetectAndShow() {
  outdated_ = false;
  picture_ = frame_.clone();
  detected_ = engine_.Detect(picture_, points_);
  screen_.Show(WINDOW, picture_);
}

void MonocularLoop::ShowWaiting() {
  picture_ = WaitingPicture(options_.size);
  screen_.Show(WINDOW, picture_);
}

void MonocularLoop::ShowAgain() {
  if (frame_.empty()) {
    outdated_ = false;
    screen_.Show(WINDOW, picture_);
  } else {
    DetectAndShow();
  }
}

void MonocularLoop::TakeSnapshot() {
  if (detected_) {
    engine_.Add(points_);
    outdated_ = true;
  }
  out_ << (detected_ ? "New points added." : "Failed to add points.")
       << " Total number of pictures: " << engine_.CountSnapshots() << std::endl;
}

void MonocularLoop::Calibrate() {
  screen_.Close(WINDOW);
  outdated_ = true;
  out_ << std::endl << SEPARATOR << std::endl << std::endl;
  PrintModel();
  try {
    ComputeAndReview();
  } catch (const std::exception& failure) {
    err_ << "ERROR: the calibration failed: " << OneLine(failure.what()) << std::endl;
  }
  out_ << std::endl << SEPARATOR << std::endl << std::endl;
}

void MonocularLoop::ComputeAndReview() {
  const float error = engine_.Compute(options_.model);
  out_ << "Calibration computed! Error = " << error << std::endl << std::endl;
  engine_.Save(options_.output);
  engine_.Review();
  engine_.Reset();
}

void MonocularLoop::PrintModel() {
  const char* name = nullptr;
  switch (options_.model) {
    case Calibrator::MODEL_FULL:
      name = "full";
      break;
    case Calibrator::MODEL_RATIONAL:
      name = "rational";
      break;
    case Calibrator::MODEL_CLASSIC:
      name = "classic";
      break;
    default:
      return;
  }
  out_ << "Computing monocular calibration, model '" << name << "'. This may take a while..." << std::endl;
}

}  // namespace app
