/// Decides from the settings alone what is to be opened, and how.
#pragma once

#include <opencv2/videoio.hpp>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "common/SourceSettings.h"

namespace common {

/// One capture to open.
struct CaptureRequest {
  /// A file path or pipeline, or the index of a camera.
  std::variant<std::string, int> address;
  /// The back end of the capture library; CAP_ANY leaves the choice to it.
  int backend = cv::CAP_ANY;
  /// Set in this order once the captures are open.
  std::vector<std::pair<int, double>> properties;
  /// What messages call it, such as "webcam 3".
  std::string name;
};

/// What is to be opened: no, one or two captures (left first).
struct SourcePlan {
  std::vector<CaptureRequest> captures;
  bool stereo = false;     ///< the input shows two cameras: two captures, or one that is split
  bool videoFile = false;  ///< recorded frames: none may be skipped, and they are played at a steady pace
};

/// Chooses exactly one kind of source. A GStreamer host comes before an RTMP address, that before a webcam,
/// and that before a video. A right camera or video counts only together with its left one and without a
/// split.
SourcePlan PlanSources(const SourceSettings& settings);

}  // namespace common
