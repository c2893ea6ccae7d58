/// Opens sources of frames and reads them on a thread of its own.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "capture/FrameSource.h"
#include "capture/FrameSplit.h"
#include "capture/ReaderRun.h"

namespace velmora {

/// Size and rate of frames: what is asked of a camera, or what a source reports.
struct FrameFormat {
  int width = 0;
  int height = 0;
  int rate = 0;
};

/// What closing a source prints, in this order; the last one when there is nothing to close.
struct CloseMessages {
  const char* waiting;
  const char* releasing;
  const char* closed;
  const char* notOpened;
};

/// The capture state of a calibrator: sources, mode, thread and flags.
///
/// An Open starts the thread, a Close stops it and waits for it. All functions are thread-safe; Opens and
/// Closes of different threads wait for each other. On the reader's own thread, that is from within
/// `process`, a Close does not wait: the thread ends after the frame at hand; an Open is refused there.
///
/// No function waits for a source without end: after two seconds a thread that is stuck in one is left
/// behind, with a warning line, and its sources with it. The next Open takes fresh ones.
///
/// While the thread runs the sources are its own; otherwise they belong to the Open or Close under way.
class CaptureReader {
 public:
  using NewSource = std::function<std::unique_ptr<FrameSource>()>;
  using Process = ReaderRun::Process;
  using Ended = ReaderRun::Ended;

  /// `body` is what the thread runs: it calls Read.
  explicit CaptureReader(std::function<void()> body, NewSource newSource = NewVideoSource);
  /// Stops the thread and waits for it, as a Close does.
  ~CaptureReader();
  CaptureReader(const CaptureReader&) = delete;
  CaptureReader& operator=(const CaptureReader&) = delete;

  /// True when the source is open and the thread started; otherwise an error line is printed.
  bool OpenCamera(int index, const FrameFormat& asked, int splitMode);
  bool OpenCameraPair(int leftIndex, int rightIndex, const FrameFormat& asked);
  bool OpenContent(const std::string& content);
  bool OpenPipe(const std::string& pipe);

  /// Closes the first (or only) source, whichever way it was opened. True when there was something to close.
  bool Close(const CloseMessages& words);
  void ClosePair();

  /// Ends the thread, waits for it as a Close does, and releases the sources.
  void Stop();

  /// Reads frames and hands them to `process` until a stop is requested or the source is no longer open.
  /// Calls `ended` when the source ends by itself. For the body: returns at once on any other thread.
  void Read(const Process& process, const Ended& ended = {});

  bool Running() const { return running_; }
  /// From a Close on until the next source opens.
  bool StopRequested() const { return stopRequested_; }
  /// True when no frame comes any more though a source was asked for: see Calibrator::HasSourceEnded.
  bool SourceEnded() const { return ended_; }
  /// Frames come from elsewhere now.
  void ForgetEnd() { ended_ = false; }
  /// After an Open that failed.
  void NoteFailedOpen();
  bool SecondOpened() const { return secondOpened_; }
  /// As the source reported it when it was opened.
  FrameFormat Format();
  /// True when the last camera was found to deliver two views side by side.
  bool Concatenated() const { return concatenated_; }

 private:
  using OperationLock = std::unique_lock<std::mutex>;

  OperationLock BeginOperation();
  bool OnReaderThread() const;
  bool MayOpen(const char* alreadyOpened, const char* rightAlreadyOpened = nullptr);
  bool OpenSource(const std::function<void()>& open);
  void OpenMonoOrConcatenated(int device, const FrameFormat& asked);
  void OpenRight(int device, const FrameFormat& asked);
  void ReadFormat();
  bool ClosePrimary(const CloseMessages& words);
  bool Start();
  void StopThread();
  void JoinThread();
  void LeaveSources(bool both);
  void ReleasePrimary();
  void ReleaseSecond();

  const std::function<void()> body_;
  const NewSource newSource_;

  std::mutex operationLock_;  ///< one Open or Close at a time
  std::shared_ptr<FrameSource> primary_;
  std::shared_ptr<FrameSource> second_;
  int splitMode_ = 0;
  FrameFormat format_;
  std::thread thread_;
  std::shared_ptr<ReaderRun> run_;  ///< of the thread, until it was waited for
  bool endsEmpty_ = false;          ///< a source that delivers nothing has ended: it is no camera

  // As of the last look: only the owner of the sources may ask them.
  std::atomic<bool> primaryOpened_{false};
  std::atomic<bool> secondOpened_{false};
  std::atomic<bool> concatenated_{false};
  std::atomic<bool> running_{false};
  std::atomic<bool> stopRequested_{false};
  std::atomic<bool> ended_{false};
};

}  // namespace velmora
