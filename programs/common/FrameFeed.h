/// Where the interactive loops take their frames from.
#pragma once

#include <chrono>
#include <opencv2/core.hpp>

namespace common {

/// What two cameras saw at the same moment.
struct FramePair {
  cv::Mat left;
  cv::Mat right;

  bool empty() const { return left.empty() || right.empty(); }
};

/// A stream of frames (or pairs) that never blocks its user for longer than he allows.
template <typename Frame>
class BasicFrameFeed {
 public:
  virtual ~BasicFrameFeed() = default;

  /// Hands over the next frame, waiting for it up to `patience`. False, with `frame` untouched, without one.
  virtual bool Take(Frame& frame, std::chrono::milliseconds patience) = 0;

  /// True when the source cannot deliver even its first frame and is not expected to.
  virtual bool FailedToStart() const = 0;
};

using FrameFeed = BasicFrameFeed<cv::Mat>;
using PairFeed = BasicFrameFeed<FramePair>;

}  // namespace common
