/// The eccentricity error: how far the centre of a disc's image is from the image of its centre.
#pragma once

#include <vector>

#include "model/Rig.h"
#include "solver/Projection.h"

namespace velmora::solver {

/// The centroid of the disc's image minus the image of its centre, in pixels, for a disc of the target. Zero
/// where some of the rim is behind the camera.
cv::Point2d EccentricityError(const Projection& projection, const RigidTransform& cameraFromTarget,
                              const cv::Point3d& centre, double radius);

/// The views with the pixels that they would have if images of centres had been observed: centroids were. The
/// poses of the target are those of `estimate`.
std::vector<TargetView> CorrectedForEccentricity(const std::vector<TargetView>& views, const Rig& rig,
                                                 const std::vector<TargetView>& estimate, double radius);

}  // namespace velmora::solver
