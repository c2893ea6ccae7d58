/// What the command line asks for, converted and with the defaults filled in.
#pragma once

#include <optional>
#include <string>

#include "Calibrator.h"

namespace app {

/// How one frame is cut into a left and a right image.
enum class Split { None = 0, Horizontal = 1, Vertical = 2 };

/// A camera of a pair; None stands for no choice.
enum class Camera { None = 0, Left = 1, Right = 2 };

/// The settings of a run. Options that were not given are empty or at their default.
struct Settings {
  int width = 640;   ///< pixels, asked of a camera and handed to the calibrator
  int height = 480;  ///< pixels, asked of a camera and handed to the calibrator
  int fps = 60;      ///< asked of a camera
  /// The grid's unit as the calibrator receives it, metres. The default is handed over as it stands; a value
  /// from the command line is a tenth of what was typed.
  float hdist = 0.19F;
  int model = Calibrator::MODEL_RATIONAL;
  Split split = Split::None;
  std::optional<std::string> select;  ///< as typed; checked once it is known whether the input is stereo
  std::string output;                 ///< path of the result file, without its extension

  std::optional<std::string> calibLeft;
  std::optional<std::string> calibRight;

  std::optional<std::string> gstreamerHost;
  std::string codec = "h264";
  std::string port = "5000";
  std::optional<std::string> rtmp;
  std::optional<std::string> video;
  std::optional<std::string> videoRight;
  std::optional<int> webcam;
  std::optional<int> webcamRight;
};

}  // namespace app
