/// Finds the views of one camera that are no image of a plane target, before anything is known of the camera.
#pragma once

#include <vector>

#include "solver/Selection.h"

namespace velmora::solver {

/// Selects the views of one camera whose points are near those of a homography, once the distortion that all
/// views share is taken off: others are in a wrong order or no grid at all. Where too few are, all views are
/// kept.
Selection Screened(const std::vector<TargetView>& views, const cv::Size& imageSize);

}  // namespace velmora::solver
