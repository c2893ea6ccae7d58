/// One run of a reader's thread: what the thread owns, and what ties it to the reader.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <opencv2/core.hpp>

#include "capture/FrameSource.h"
#include "capture/FrameSplit.h"
#include "capture/LogOncePerMessage.h"

namespace velmora {

/// What a run reads from, and how.
struct ReaderInput {
  std::shared_ptr<FrameSource> primary;
  std::shared_ptr<FrameSource> second;  ///< null unless there are two devices
  bool concatenated = false;
  int splitMode = 0;
  bool endsEmpty = false;  ///< a source that delivers nothing has ended: it is no camera
};

/// What a run notes of its source with each turn. They are the reader's.
struct ReaderFlags {
  std::atomic<bool>& opened;
  std::atomic<bool>& ended;
};

/// A call of the library that reads a frame may never return, so nobody waits for one without end: a thread
/// that is stuck in its source is cut off from the reader and left behind with the run, which it shares. When
/// its call returns after all it ends without touching anything else.
///
/// RequestStop and AwaitEnd are for others, all else is for the thread.
class ReaderRun {
 public:
  using Process = std::function<void(CapturedViews& views)>;
  using Ended = std::function<void()>;

  explicit ReaderRun(ReaderInput input) : input_(std::move(input)) {}
  ReaderRun(const ReaderRun&) = delete;
  ReaderRun& operator=(const ReaderRun&) = delete;

  bool HasTwoDevices() const { return input_.second != nullptr; }

  /// The thread ends after the frame at hand.
  void RequestStop();
  /// After RequestStop. True when the thread has ended; false when it is still in its source after this time,
  /// and cut off now. A frame that is being processed is waited for however long that takes.
  bool AwaitEnd(std::chrono::milliseconds patience);

  /// Hands frames to `process` until a stop is requested or the source is no longer open. Calls `ended` when
  /// the source ends by itself. False when the thread was cut off: whoever is behind the functions and the
  /// flags may be gone by then.
  bool Read(const Process& process, const Ended& ended, const ReaderFlags& flags);
  /// To be called last, cut off or not.
  void End();

 private:
  enum class Turn { FrameRead, NothingRead, SourceClosed };

  bool EnterSource();
  bool LeaveSource();
  bool CutOff();
  bool StopRequested();
  Turn AskSource(CapturedViews& views);
  bool ReadViews(CapturedViews& views);
  bool ReadFrom(FrameSource& source, cv::Mat& frame);
  void Hand(CapturedViews& views, const Process& process);
  void NoteEnd(const Ended& ended, const ReaderFlags& flags);
  void Pause();

  const ReaderInput input_;
  LogOncePerMessage reported_;

  std::mutex lock_;  ///< guards what follows
  std::condition_variable changed_;
  bool stopRequested_ = false;
  bool inSource_ = false;
  bool cutOff_ = false;
  bool ended_ = false;
};

}  // namespace velmora
