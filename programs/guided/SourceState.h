/// What a source of frames is doing, as a value that a loop can ask for at every turn.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <string>

#include "common/FrameReader.h"

namespace guided {

enum class SourceKind {
  Camera,     ///< a device, which may be unplugged and plugged in again
  Stream,     ///< live, from somewhere else
  Recording,  ///< has an end
};

struct SourceState {
  enum class Kind {
    Live,           ///< frames arrive, or are about to
    Ended,          ///< a recording has no more frames
    Stalled,        ///< a frame is awaited for longer than STALLED_AFTER
    Unplugged,      ///< a camera is gone; it is opened again once it is back
    FailedToStart,  ///< there was not even a first frame
  };
  Kind kind = Kind::Live;
  std::chrono::milliseconds silence{0};  ///< for how long a frame has been awaited
  std::string gone{};                    ///< of Unplugged: which camera, such as "webcam 2"
};

/// What to write into the picture, such as "No picture for 5 s: is the camera still plugged in?". Empty while
/// frames arrive.
std::string WordsOf(const SourceState& state, SourceKind kind);

using Moment = std::chrono::steady_clock::time_point;
/// What time it is.
using Clock = std::function<Moment()>;

/// Makes out the state of a source from what becomes of its reads. A consumer that takes its time before it
/// takes the next frame of a recording is no stall. Thread-safe.
class SourceWatch {
 public:
  static constexpr std::chrono::milliseconds STALLED_AFTER{2000};
  /// A source that is still without a frame has failed to start.
  static constexpr std::chrono::milliseconds START_PATIENCE{10000};

  explicit SourceWatch(SourceKind kind, Clock clock = std::chrono::steady_clock::now);

  void ReadBegins();
  void ReadEnds(bool delivered);
  /// A camera was found to be gone, or there again.
  void SetGone(const std::string& name, bool gone);

  SourceState State() const;
  SourceKind Kind() const { return kind_; }

 private:
  bool EndedOrBroken() const;

  const SourceKind kind_;
  const Clock clock_;

  mutable std::mutex lock_;  ///< guards everything below
  bool waiting_ = false;     ///< a frame is awaited
  Moment since_{};           ///< when that began
  int failures_ = 0;         ///< reads that failed since the last frame
  bool delivered_ = false;   ///< there was a frame
  std::set<std::string> gone_;
};

/// The source, of whose reads the watch learns.
template <typename Frame>
typename common::BasicFrameReader<Frame>::Source Watched(
    typename common::BasicFrameReader<Frame>::Source source, const std::shared_ptr<SourceWatch>& watch) {
  return [source = std::move(source), watch](Frame& frame) {
    watch->ReadBegins();
    bool delivered = false;
    try {
      delivered = source(frame) && !frame.empty();
    } catch (const std::exception&) {
      delivered = false;  // as the reader takes it
    }
    watch->ReadEnds(delivered);
    return delivered;
  };
}

}  // namespace guided
