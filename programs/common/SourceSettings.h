/// Where frames come from, as a command line asks for it.
#pragma once

#include <optional>
#include <string>

namespace common {

/// How one frame is cut into a left and a right image: a horizontal cut makes the upper half the left image.
enum class Split { None = 0, Horizontal = 1, Vertical = 2 };

/// A camera of a pair; None stands for no choice.
enum class Camera { None = 0, Left = 1, Right = 2 };

/// The source and its frames. Options that were not given are empty or at their default.
struct SourceSettings {
  int width = 640;   ///< pixels, asked of a camera and handed to the calibrator
  int height = 480;  ///< pixels, asked of a camera and handed to the calibrator
  int fps = 60;      ///< asked of a camera
  Split split = Split::None;

  std::optional<std::string> gstreamerHost;
  std::string codec = "h264";
  std::string port = "5000";
  std::optional<std::string> rtmp;
  std::optional<std::string> video;
  std::optional<std::string> videoRight;
  std::optional<int> webcam;
  std::optional<int> webcamRight;
};

}  // namespace common
