/// The life of the reader thread and its turns.
#include "capture/CaptureReader.h"

#include <chrono>
#include <system_error>

#include "Log.h"

namespace {

/// After a turn without a frame.
constexpr std::chrono::microseconds EMPTY_PAUSE{32000};

/// So many of them in a row, a third of a second, are the end of a file or stream.
constexpr int TURNS_OF_AN_END = 10;

/// The library ends its texts with a line break.
std::string FirstLine(const std::exception& fault) {
  const std::string text = fault.what();
  return text.substr(0, text.find('\n'));
}

}  // namespace

/// Tells that the thread reads, until the end of the scope.
class CaptureReader::RunningScope {
 public:
  explicit RunningScope(std::atomic<bool>& running) : running_(running) { running_ = true; }
  ~RunningScope() { running_ = false; }
  RunningScope(const RunningScope&) = delete;
  RunningScope& operator=(const RunningScope&) = delete;

 private:
  std::atomic<bool>& running_;
};

CaptureReader::CaptureReader(std::function<void()> body, NewSource newSource)
    : body_(std::move(body)), newSource_(std::move(newSource)) {
}

CaptureReader::~CaptureReader() {
  Stop();
}

/// True when the thread runs; an error line and released sources otherwise.
bool CaptureReader::Start() {
  twoDevices_ = secondOpened_;  // a right camera that was left open makes a pair of any source
  reported_ = OncePerCause();
  stopRequested_ = false;
  ended_ = false;
  try {
    thread_ = std::thread([this] {
      readerId_ = std::this_thread::get_id();
      body_();
      readerId_ = std::thread::id();
    });
    return true;
  } catch (const std::system_error& fault) {
    Log::error("Cannot start the reader: %s", fault.what());
    ReleasePrimary();
    ReleaseSecond();
    return false;
  }
}

/// Asks the thread to end and, on any other thread, waits until it has.
void CaptureReader::StopThread() {
  {
    const std::lock_guard<std::mutex> lock(pauseLock_);
    stopRequested_ = true;
  }
  stopping_.notify_all();
  JoinThread();
}

void CaptureReader::JoinThread() {
  if (!OnReaderThread() && thread_.joinable()) thread_.join();
}

void CaptureReader::Read(const Process& process, const Ended& ended) {
  if (!OnReaderThread()) return;
  const RunningScope running(running_);
  CapturedViews views;
  int emptyTurns = 0;
  while (!stopRequested_) {
    primaryOpened_ = primary_->IsOpened();
    if (!primaryOpened_) {
      Log::warn("The source is no longer open. Reading ends.");
      NoteEnd(ended);
      return;
    }
    if (!ReadViews(views)) {
      if (endsEmpty_ && ++emptyTurns == TURNS_OF_AN_END) NoteEnd(ended);
      Pause();
      continue;
    }
    emptyTurns = 0;
    ended_ = false;
    try {
      process(views);
    } catch (const std::exception& fault) {
      const std::string cause = FirstLine(fault);
      if (reported_.IsNew(cause)) Log::error("A frame was left out: %s", cause.c_str());
    }
  }
}

/// False when a source delivered nothing.
bool CaptureReader::ReadViews(CapturedViews& views) {
  views = CapturedViews();
  cv::Mat frame;
  if (!ReadFrom(*primary_, frame)) return false;
  if (twoDevices_) {
    views = {frame, {}, true};
    return ReadFrom(*second_, views.right);
  }
  if (!concatenated_) {
    views.frame = frame;
    return true;
  }
  views = SplitViews(frame, splitMode_);
  if (views.frame.empty() && reported_.IsNew("narrow")) Log::error("Cannot split a frame one pixel wide.");
  return !views.frame.empty();
}

bool CaptureReader::ReadFrom(FrameSource& source, cv::Mat& frame) {
  try {
    // A failed grab leaves the frame before in the source.
    if (source.Grab() && source.Retrieve(frame) && !frame.empty()) return true;
    if (reported_.IsNew("empty")) Log::warn("The source delivers no frames.");
  } catch (const std::exception& fault) {
    const std::string cause = FirstLine(fault);
    if (reported_.IsNew(cause)) Log::error("The source failed: %s", cause.c_str());
  }
  return false;
}

/// Not of a source that is being closed.
void CaptureReader::NoteEnd(const Ended& ended) {
  if (stopRequested_) return;
  ended_ = true;
  if (ended) ended();
}

void CaptureReader::NoteFailedOpen() {
  if (!primaryOpened_) ended_ = true;
}

void CaptureReader::Pause() {
  std::unique_lock<std::mutex> lock(pauseLock_);
  stopping_.wait_for(lock, EMPTY_PAUSE, [this] { return stopRequested_.load(); });
}
