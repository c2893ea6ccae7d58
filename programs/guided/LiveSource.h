/// The camera, pair, stream or recording that a guided calibration is fed from, opened and with its first
/// frame read.
#pragma once

#include <functional>
#include <memory>
#include <opencv2/core.hpp>
#include <ostream>
#include <string>
#include <thread>
#include <utility>

#include "common/Captures.h"
#include "common/FrameFeed.h"
#include "guided/Arguments.h"
#include "guided/SourceState.h"

namespace guided {

/// A source that delivers. Frames are read on a thread of their own; they are taken on one thread, and the
/// state may be asked for by any.
class LiveSource {
 public:
  virtual ~LiveSource() = default;

  /// Whether it delivers pairs: two captures or halves, of which none was selected.
  bool IsPair() const { return pair_; }
  /// What messages call it, such as "webcam 0" or "video 'a.avi'".
  const std::string& Name() const { return name_; }
  SourceKind Kind() const { return kind_; }
  /// Of a recording: the frames per second that it was taken at, as far as that is known.
  double FrameRate() const { return rate_; }
  /// The size to work at: that of the frames that arrive (of each half, when they are split), or, of
  /// recordings and streams, the one that was asked for.
  cv::Size FrameSize() const { return size_; }

  /// The frames of one camera, the very first one included. Raises std::logic_error of a pair.
  virtual common::FrameFeed& Frames() = 0;
  /// The frames of a pair, the very first one included. Raises std::logic_error of one camera.
  virtual common::PairFeed& Pairs() = 0;

  virtual SourceState State() const = 0;
  /// The state in words for the picture; empty while frames arrive.
  std::string Remark() const { return WordsOf(State(), kind_); }

  /// Ends reading and closes the source. False when it is stuck: the process should then end without waiting
  /// for it (see Finish).
  virtual bool Close(std::chrono::milliseconds grace) = 0;

 protected:
  LiveSource(bool pair, std::string name, SourceKind kind, double rate)
      : pair_(pair), name_(std::move(name)), kind_(kind), rate_(rate) {}

  cv::Size size_;  ///< known with the first frame

 private:
  const bool pair_;
  const std::string name_;
  const SourceKind kind_;
  const double rate_;
};

/// What a source is opened in; tests have their own.
struct Surroundings {
  std::function<std::unique_ptr<common::Capture>()> newCapture = common::NewVideoCapture;
  std::string devices = "/dev";  ///< folder of the cameras
  /// How time is given to a camera that focuses by itself.
  std::function<void(std::chrono::milliseconds)> wait = [](std::chrono::milliseconds time) {
    std::this_thread::sleep_for(time);
  };
  /// Asked now and then while the first frame is awaited; true gives up.
  std::function<bool()> interrupted = [] { return false; };
  Clock clock = std::chrono::steady_clock::now;
};

/// Opens what the arguments ask for, switches autofocus off, waits for the first frame (seconds at most), and
/// tells on `out` what arrives. Null, after a line on `err` that says why (none after an interruption). A
/// source that is stuck and cannot be closed then ends the process with status 2.
std::unique_ptr<LiveSource> OpenLiveSource(const Arguments& arguments, const Surroundings& around,
                                           std::ostream& out, std::ostream& err);

/// Closes the source. A process whose source is stuck ends here and now with the status; otherwise it is
/// returned.
int Finish(std::unique_ptr<LiveSource> source, int status);

}  // namespace guided
