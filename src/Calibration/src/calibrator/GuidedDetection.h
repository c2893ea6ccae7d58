/// Ties an assistant to a detection.
#pragma once

#include <functional>
#include <memory>

#include "CalibAssistant.h"
#include "calibrator/Detector.h"
#include "calibrator/Guidance.h"

namespace velmora {

/// The part that an assistant, if there is one, has in one detection: its target is drawn, and the grid
/// becomes a snapshot when it is there.
class GuidedDetection : public DetectionGuide {
 public:
  /// `add` makes the detection a snapshot and answers their new number, 0 when it is refused.
  GuidedDetection(Guidance& guidance, std::function<size_t(const CameraSnapshot&)> add)
      : guidance_(guidance), add_(std::move(add)) {}

  bool Draw(cv::Mat& frame) override {
    assistant_ = guidance_.Current();
    if (assistant_ == nullptr) return false;
    assistant_->DrawPose(frame);
    return true;
  }

  bool Take(const CameraSnapshot& detection) override {
    if (assistant_ == nullptr) return false;
    bool taken = false;
    const Guidance::Step step = guidance_.Assess(assistant_, detection.points, [&] {
      const size_t count = add_(detection);
      taken = count > 0;
      return count;
    });
    finished_ = step == Guidance::Step::Finished;
    return taken;
  }

  /// True when a computation is to follow.
  bool Finished() const { return finished_; }

 private:
  Guidance& guidance_;
  const std::function<size_t(const CameraSnapshot&)> add_;
  std::shared_ptr<CalibAssistant> assistant_;
  bool finished_ = false;
};

}  // namespace velmora
