/// Where the interactive loops take their frames from.
#pragma once

#include <chrono>
#include <opencv2/core.hpp>

namespace app {

/// A stream of frames that never blocks its user for longer than he allows.
class FrameFeed {
 public:
  virtual ~FrameFeed() = default;

  /// Hands over the next frame, waiting for it up to `patience`. False, with `frame` untouched, without one.
  virtual bool Take(cv::Mat& frame, std::chrono::milliseconds patience) = 0;

  /// True when the source cannot deliver even its first frame and is not expected to.
  virtual bool FailedToStart() const = 0;
};

}  // namespace app
