/// The turns of a reader's thread, and how it is let go of.
#include "capture/ReaderRun.h"

#include <string>

#include "Log.h"

namespace velmora {

namespace {

/// After a turn without a frame.
constexpr std::chrono::microseconds EMPTY_PAUSE{32000};

/// This many of them in a row, a third of a second, are the end of a file or stream.
constexpr int TURNS_OF_AN_END = 10;

/// The library ends its texts with a line break.
std::string FirstLine(const std::exception& fault) {
  const std::string text = fault.what();
  return text.substr(0, text.find('\n'));
}

}  // namespace

void ReaderRun::RequestStop() {
  const std::lock_guard<std::mutex> lock(lock_);
  stopRequested_ = true;
  changed_.notify_all();
}

bool ReaderRun::AwaitEnd(std::chrono::milliseconds patience) {
  std::unique_lock<std::mutex> lock(lock_);
  changed_.wait_for(lock, patience, [this] { return ended_; });
  changed_.wait(lock, [this] { return ended_ || inSource_; });  // it enters no source any more
  cutOff_ = !ended_;
  return ended_;
}

void ReaderRun::End() {
  const std::lock_guard<std::mutex> lock(lock_);
  ended_ = true;
  changed_.notify_all();
}

bool ReaderRun::EnterSource() {
  const std::lock_guard<std::mutex> lock(lock_);
  inSource_ = !stopRequested_;
  return inSource_;
}

/// False when nobody waited for it.
bool ReaderRun::LeaveSource() {
  const std::lock_guard<std::mutex> lock(lock_);
  inSource_ = false;
  return !cutOff_;
}

bool ReaderRun::CutOff() {
  const std::lock_guard<std::mutex> lock(lock_);
  return cutOff_;
}

bool ReaderRun::StopRequested() {
  const std::lock_guard<std::mutex> lock(lock_);
  return stopRequested_;
}

bool ReaderRun::Read(const Process& process, const Ended& ended, const ReaderFlags& flags) {
  CapturedViews views;
  int emptyTurns = 0;
  while (EnterSource()) {
    const Turn turn = AskSource(views);
    if (!LeaveSource()) return false;
    flags.opened = turn != Turn::SourceClosed;
    if (turn == Turn::SourceClosed) {
      Log::warn("The source is no longer open. Reading ends.");
      NoteEnd(ended, flags);
      return true;
    }
    if (turn == Turn::NothingRead) {
      if (input_.endsEmpty && ++emptyTurns == TURNS_OF_AN_END) NoteEnd(ended, flags);
      Pause();
      continue;
    }
    emptyTurns = 0;
    flags.ended = false;
    Hand(views, process);
  }
  return true;
}

/// Not of a source that is being closed.
void ReaderRun::NoteEnd(const Ended& ended, const ReaderFlags& flags) {
  if (StopRequested()) return;
  flags.ended = true;
  if (ended) ended();
}

ReaderRun::Turn ReaderRun::AskSource(CapturedViews& views) {
  if (!input_.primary->IsOpened()) return Turn::SourceClosed;
  return ReadViews(views) ? Turn::FrameRead : Turn::NothingRead;
}

/// False when a source delivered nothing.
bool ReaderRun::ReadViews(CapturedViews& views) {
  views = CapturedViews();
  cv::Mat frame;
  if (!ReadFrom(*input_.primary, frame)) return false;
  if (HasTwoDevices()) {
    views = {frame, {}, true};
    return ReadFrom(*input_.second, views.right);
  }
  if (!input_.concatenated) {
    views.frame = frame;
    return true;
  }
  views = SplitViews(frame, input_.splitMode);
  if (views.frame.empty() && reported_.IsNew("narrow")) Log::error("Cannot split a frame one pixel wide.");
  return !views.frame.empty();
}

/// What goes wrong with a source that nobody waits for any more is of no interest.
bool ReaderRun::ReadFrom(FrameSource& source, cv::Mat& frame) {
  try {
    // A failed grab leaves the frame before in the source.
    if (source.Grab() && source.Retrieve(frame) && !frame.empty()) return true;
    if (!CutOff() && reported_.IsNew("empty")) Log::warn("The source delivers no frames.");
  } catch (const std::exception& fault) {
    const std::string cause = FirstLine(fault);
    if (!CutOff() && reported_.IsNew(cause)) Log::error("The source failed: %s", cause.c_str());
  }
  return false;
}

void ReaderRun::Hand(CapturedViews& views, const Process& process) {
  try {
    process(views);
  } catch (const std::exception& fault) {
    const std::string cause = FirstLine(fault);
    if (reported_.IsNew(cause)) Log::error("A frame was left out: %s", cause.c_str());
  }
}

void ReaderRun::Pause() {
  std::unique_lock<std::mutex> lock(lock_);
  changed_.wait_for(lock, EMPTY_PAUSE, [this] { return stopRequested_; });
}

}  // namespace velmora
