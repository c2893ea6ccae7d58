/// Opens the planned captures and turns them into a source of frames.
#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <vector>

#include "common/FrameReader.h"
#include "common/Sources.h"

namespace common {

/// A device, file or stream that delivers frames.
class Capture {
 public:
  virtual ~Capture() = default;

  /// True when it is open.
  virtual bool Open(const CaptureRequest& request) = 0;
  virtual void Set(int property, double value) = 0;
  virtual double Get(int property) = 0;
  virtual bool Read(cv::Mat& frame) = 0;
  /// Goes on to the next frame without decoding it.
  virtual bool Skip() = 0;
};

using Captures = std::vector<std::shared_ptr<Capture>>;

/// A capture of the video library.
std::unique_ptr<Capture> NewVideoCapture();

/// Opens every capture of the plan, then sets their properties. Empty, with a line on `err` that names the
/// source, when there is none or one does not open.
Captures OpenCaptures(const SourcePlan& plan, const std::function<std::unique_ptr<Capture>()>& newCapture,
                      std::ostream& err);

/// Frames of recordings are all delivered.
inline Delivery DeliveryOf(const SourcePlan& plan) {
  return plan.videoFile ? Delivery::EveryFrame : Delivery::NewestFrame;
}

/// The images of one camera: those of the only capture, of the selected one of two, or the selected half of
/// each frame of a split one. The source keeps all the captures open.
FrameReader::Source MonocularSource(const Captures& captures, Split split, Camera camera);

/// The images of both cameras: one of each of two captures, or both halves of each frame of a split one. The
/// source keeps all the captures open.
PairReader::Source StereoSource(const Captures& captures, Split split);

}  // namespace common
