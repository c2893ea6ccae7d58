/// Everything that a series of images has in common.
#pragma once

#include <cstdint>

#include "Camera.h"
#include "Sheet.h"

namespace world {

struct Scene {
  Camera camera = CameraFromFieldOfView(cv::Size(640, 480), 60.0);
  Sheet sheet;
  /// Gaussian blur, sigma in pixels.
  double blur = 0.0;
  /// Sensor noise, sigma in grey levels, independent per channel.
  double noise = 0.0;
  /// Unevenness of the light, 0 to 1.
  double light = 0.0;
  /// Number of objects behind the sheet; none leaves a plain grey of the level below.
  int clutter = 0;
  int backgroundLevel = 110;
  int paperLevel = 225;
  int inkLevel = 30;
  /// Samples along each side of a pixel that an edge crosses.
  int supersampling = 6;
  /// Background, light and noise all depend on it.
  std::uint64_t seed = 1;
};

}  // namespace world
