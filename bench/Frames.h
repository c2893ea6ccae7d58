/// Frames that the benchmarks work on.
#pragma once

#include <opencv2/core.hpp>

#include "Renderer.h"
#include "Views.h"

namespace bench {

/// A slightly noisy frame that the grid fills for the most part.
inline cv::Mat GridFrame(const cv::Size& size, int view = 0) {
  world::Scene scene;
  scene.camera = world::CameraFromFieldOfView(size, 60.0, {-0.25, 0.08, 0.0, 0.0, 0.0});
  scene.noise = 2.0;
  scene.light = 0.3;
  scene.clutter = 10;
  return world::Renderer(scene).Render(world::SpreadViews(scene.camera, view + 1).back());
}

/// A frame of the background without the sheet.
inline cv::Mat EmptyFrame(const cv::Size& size) {
  world::Scene scene;
  scene.camera = world::CameraFromFieldOfView(size, 60.0);
  scene.noise = 2.0;
  return world::Renderer(scene).RenderEmpty();
}

}  // namespace bench
