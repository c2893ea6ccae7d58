/// The shape of a sheet that was measured before.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "model/Rig.h"

namespace velmora::solver {

/// Notes of which of the target's known points, those of a sheet that is not quite flat, each observation is:
/// the one that is nearest to its flat place in the same frame. False when there are too few for a target,
/// when a place is farther from all of them than half of their least distance, and when places share one.
bool NoteNearestPlaces(const std::vector<cv::Point3d>& known, std::vector<TargetView>& views);

/// Whether the points can be a shape of the flat target: as many, in the same order, finite, each not far
/// from its place.
bool IsShapeOf(const std::vector<cv::Point3d>& target, const std::vector<cv::Point3d>& known);

}  // namespace velmora::solver
