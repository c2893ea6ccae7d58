/// The life of the reader thread.
#include "capture/CaptureReader.h"

#include <chrono>
#include <system_error>

#include "Log.h"

namespace velmora {

namespace {

/// How long a Close waits for a thread that is in its source: long enough for any frame of a source that is
/// alive, and short enough for somebody who waits for a window to close.
constexpr std::chrono::milliseconds PATIENCE{2000};

/// What the current thread reads for; null on threads that are no reader's. The reader is only compared with:
/// it may be gone when its thread was left behind.
struct ReaderOfThread {
  const CaptureReader* reader = nullptr;
  ReaderRun* run = nullptr;
};
thread_local ReaderOfThread ofThisThread;  // NOLINT: of this thread alone

}  // namespace

CaptureReader::CaptureReader(std::function<void()> body, NewSource newSource)
    : body_(std::move(body)), newSource_(std::move(newSource)) {
}

CaptureReader::~CaptureReader() {
  Stop();
}

bool CaptureReader::OnReaderThread() const {
  return ofThisThread.reader == this;
}

/// True when the thread runs; an error line and released sources otherwise.
bool CaptureReader::Start() {
  // A right camera that was left open makes a pair of any source.
  const auto second = secondOpened_ ? second_ : nullptr;
  run_ = std::make_shared<ReaderRun>(ReaderInput{primary_, second, concatenated_, splitMode_, endsEmpty_});
  stopRequested_ = false;
  ended_ = false;
  try {
    // The thread may outlive the reader: what it needs to come to its end is its own.
    thread_ = std::thread([this, run = run_, body = body_] {
      ofThisThread = {this, run.get()};
      body();
      run->End();
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
  stopRequested_ = true;
  if (run_ != nullptr) run_->RequestStop();
  JoinThread();
}

/// A thread that is stuck in its source is left behind.
void CaptureReader::JoinThread() {
  if (OnReaderThread() || !thread_.joinable()) return;
  run_->RequestStop();
  if (run_->AwaitEnd(PATIENCE)) {
    thread_.join();
  } else {
    thread_.detach();
    Log::warn("The source does not answer; its thread is left behind.");
    running_ = false;
    LeaveSources(run_->HasTwoDevices());
  }
  run_.reset();
}

/// The sources are the thread's that was left behind, which releases them when it ends.
void CaptureReader::LeaveSources(bool both) {
  primary_ = newSource_();
  primaryOpened_ = false;
  if (!both) return;
  second_.reset();
  secondOpened_ = false;
}

void CaptureReader::Read(const Process& process, const Ended& ended) {
  if (!OnReaderThread()) return;
  running_ = true;
  // When the thread was cut off this reader may be gone.
  if (ofThisThread.run->Read(process, ended, {primaryOpened_, ended_})) running_ = false;
}

void CaptureReader::NoteFailedOpen() {
  if (!primaryOpened_) ended_ = true;
}

}  // namespace velmora
