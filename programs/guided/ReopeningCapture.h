/// A camera that may be unplugged and plugged in again.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "common/Captures.h"
#include "guided/SourceState.h"

namespace guided {

/// Who looks after the camera, called on the thread that reads.
struct CameraCare {
  /// Whether the machine has the camera of that number.
  std::function<bool(int)> present;
  /// It was found to be gone, or there again; with its name.
  std::function<void(const std::string&, bool)> tellGone;
  /// The camera of that number was opened again, with the properties that were set.
  std::function<void(int)> reopened;
};

/// Opens its camera again, with all that was set, once it is back after it was gone, or when it fails for
/// seconds although it is there. It lets go of a camera that is gone, which would get another number
/// otherwise.
class ReopeningCapture final : public common::Capture {
 public:
  using NewCapture = std::function<std::unique_ptr<common::Capture>()>;

  ReopeningCapture(NewCapture newCapture, CameraCare care, Clock clock);

  /// Sources that are no cameras are opened once and for all.
  bool Open(const common::CaptureRequest& request) override;
  void Set(int property, double value) override;
  double Get(int property) override { return capture_->Get(property); }
  bool Read(cv::Mat& frame) override;
  bool Skip() override { return capture_->Skip(); }

 private:
  bool TryRead(cv::Mat& frame);
  void Recover(int camera);
  bool Reopen();

  const NewCapture newCapture_;
  const CameraCare care_;
  const Clock clock_;
  std::unique_ptr<common::Capture> capture_;
  common::CaptureRequest request_;
  std::vector<std::pair<int, double>> set_;  ///< in this order
  std::optional<Moment> tryAt_;              ///< while reads fail: when it is opened again
  bool open_ = false;
};

}  // namespace guided
