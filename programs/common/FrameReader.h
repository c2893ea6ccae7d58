/// Reads frames on a thread of its own, so that a source that stalls stalls nothing else.
#pragma once

#include <functional>
#include <memory>
#include <thread>

#include "common/FrameFeed.h"

namespace common {

/// What becomes of a frame that was not taken when the next one could be read.
enum class Delivery {
  EveryFrame,   ///< reading waits until it was taken: for recordings
  NewestFrame,  ///< it is replaced: for live sources
};

/// A frame feed fed by a thread that calls a source over and over. A read that fails, delivers an empty frame
/// or raises an exception is repeated after a short pause.
///
/// All functions are thread-safe, but only one thread may stop and destroy the reader.
template <typename Frame>
class BasicFrameReader final : public BasicFrameFeed<Frame> {
 public:
  /// Reads one frame; false when there was none. Called, and in the end destroyed, on the reader's thread
  /// only.
  using Source = std::function<bool(Frame&)>;

  BasicFrameReader(Source source, Delivery delivery);
  /// Gives the thread a short time to end. One that is stuck in its source is left behind, with all it needs.
  ~BasicFrameReader() override;
  BasicFrameReader(const BasicFrameReader&) = delete;
  BasicFrameReader& operator=(const BasicFrameReader&) = delete;

  bool Take(Frame& frame, std::chrono::milliseconds patience) override;
  /// True when the first read of a recording failed, until a later one succeeds. Never for live sources.
  bool FailedToStart() const override;

  /// Asks the thread to end, source and all, and waits for it up to `grace`. False when it is stuck in its
  /// source: the process should then end without waiting for it.
  bool Stop(std::chrono::milliseconds grace);

 private:
  struct Shared;

  static void Read(const std::shared_ptr<Shared>& shared, Source source);

  const std::shared_ptr<Shared> shared_;
  std::thread thread_;
};

using FrameReader = BasicFrameReader<cv::Mat>;
using PairReader = BasicFrameReader<FramePair>;

}  // namespace common
