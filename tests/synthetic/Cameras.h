/// The cameras that the synthetic world is tested with.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "Camera.h"

/// A 60 degree camera with the barrel distortion of an ordinary lens.
inline world::Camera OrdinaryCamera() {
  return world::CameraFromFieldOfView(cv::Size(640, 480), 60.0, {-0.28, 0.09, 0.0, 0.0, 0.0});
}

/// Cameras of every model, 40 to 90 degrees wide, some with an off-centre principal point.
inline std::vector<world::Camera> ManyCameras() {
  std::vector<world::Camera> cameras;
  cameras.push_back(world::CameraFromFieldOfView({640, 480}, 60.0));
  cameras.push_back(OrdinaryCamera());
  cameras.push_back(world::CameraFromFieldOfView({1280, 720}, 75.0, {-0.15, 0.04, 0.001, -0.0008, -0.005}));
  cameras.push_back(
      world::CameraFromFieldOfView({640, 480}, 90.0, {0.4, 0.1, 0.0005, 0.0003, 0.01, 0.6, 0.15, 0.02}));
  const cv::Matx33d K(880, 0, 310, 0, 884, 255, 0, 0, 1);
  cameras.push_back({cv::Size(640, 480), world::Lens(K, {-0.2, 0.05, 0.001, -0.001, 0.0, 0.01, 0.0, 0.0,
                                                         0.002, -0.001, -0.003, 0.001, 0.02, -0.015})});
  return cameras;
}

/// Fisheyes that see 120 to 200 degrees, of even and of other curves, some with an off-centre principal
/// point.
inline std::vector<world::Camera> ManyFisheyes() {
  std::vector<world::Camera> cameras;
  cameras.push_back(world::FisheyeFromFieldOfView({1280, 960}, 120.0));
  cameras.push_back(world::FisheyeFromFieldOfView({1280, 960}, 150.0, {-0.03, 0.004, -0.001, 0.0001}));
  cameras.push_back(world::FisheyeFromFieldOfView({1280, 960}, 180.0, {0.012, -0.021, 0.009, -0.001}));
  const cv::Matx33d K(341, 0, 652, 0, 343, 468, 0, 0, 1);
  cameras.push_back({cv::Size(1280, 960), world::Lens(K, world::FisheyeCurve({0.02, 0.003, 0.0, 0.0}))});
  return cameras;
}
