/// Cameras that are fixed to each other. A single camera is a rig of one.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "model/Intrinsics.h"
#include "model/Observation.h"
#include "model/RigidTransform.h"

namespace velmora {

struct Camera {
  Intrinsics intrinsics;
  RigidTransform cameraFromRig;
  cv::Size imageSize;
};

/// The first camera is where the rig's frame is: its transform is the identity and stays so.
struct Rig {
  std::vector<Camera> cameras;
};

/// One position of the target, and what each camera of the rig observed of it.
struct TargetView {
  RigidTransform rigFromTarget;
  std::vector<Observation>
      observations;  ///< one for each camera; an empty one of a camera that did not observe it
  cv::Vec3d bend{};  ///< the sheet's own, in this view, beside the shape that it has in all
};

/// The number of points that all cameras observed in all views.
double CountOf(const std::vector<TargetView>& views);

}  // namespace velmora
