/// Hands out the frames of a reader from the first one on, which is read before anybody takes it, and those
/// of a recording at the recording's pace.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

#include "common/FrameFeed.h"
#include "guided/SourceState.h"

namespace guided {

/// When frames of a recording are due. None is dropped: one that is taken late is followed by the next as
/// soon as its own time has come.
class Pace {
 public:
  explicit Pace(double framesPerSecond);

  /// True when the next frame may be handed out, which counts as done then.
  bool Due(Moment now);
  /// How long until that.
  std::chrono::nanoseconds Remaining(Moment now) const;

 private:
  std::chrono::nanoseconds interval_;
  std::optional<Moment> next_;  ///< none before the first frame
};

/// Frames per second to play a recording at that says it has that many. Unknown and absurd rates: 30.
double PlayingRate(double told);

/// One thread takes frames; the state may be asked for by any.
template <typename Frame>
class LiveFeed final : public common::BasicFrameFeed<Frame> {
 public:
  /// Frames are paced where there is a pace. `feed` and `watch` outlive this.
  LiveFeed(common::BasicFrameFeed<Frame>& feed, const SourceWatch& watch, std::optional<Pace> pace,
           Clock clock = std::chrono::steady_clock::now);

  /// Waits for the first frame until it is there, the source has failed to start, or `interrupted`. The frame
  /// (or pair), which stays the first one to be taken; null without one.
  const Frame* AwaitFirst(const std::function<bool()>& interrupted);

  bool Take(Frame& frame, std::chrono::milliseconds patience) override;
  bool FailedToStart() const override;

  /// That of the source; a recording has not ended as long as a frame of it is still to be taken.
  SourceState State() const;

 private:
  bool Fetch(std::chrono::milliseconds patience);

  common::BasicFrameFeed<Frame>& feed_;
  const SourceWatch& watch_;
  std::optional<Pace> pace_;
  const Clock clock_;
  Frame held_;                      ///< read, and not due yet
  std::atomic<bool> holds_{false};  ///< there is such a frame
};

}  // namespace guided
