/// Where the cameras of a rig stand, as far as single views tell.
#pragma once

#include <vector>

#include "model/Solution.h"

namespace velmora::solver {

/// From the known intrinsics of each camera (`rig`, whose transforms are not used) and what each saw of the
/// views: the poses of the cameras, each linked to the first by a chain of cameras that share as many views
/// as can be, with the median of what these views say; and the poses of the target. `views` have no poses
/// yet. Raises cv::Exception when a camera is linked to none, or an observation's points determine no pose;
/// the text names the camera, from 0.
CalibrationProblem StartOf(Rig rig, std::vector<TargetView> views);

/// The cameras that no chain of shared views links to the first.
std::vector<size_t> UnlinkedCameras(const std::vector<TargetView>& views, size_t cameras);

}  // namespace velmora::solver
