/// Finds discs of which a part is hidden, and puts centres right that a shadow's edge or a reflection moved.
#pragma once

#include <opencv2/core.hpp>

#include "finder/GridProjection.h"

namespace velmora::finder {

/// Looks at each disc, refined before, that is not quite where the others put it: the rim of a whole one goes
/// all around. Those whose rim has another middle than their darkness get the rim's. False when a part of one
/// is hidden.
bool AreWhole(const GridProjection& projection, const cv::Mat& grey, LabelledDiscs& discs);

/// AreWhole for grids of which discs may be missing: discs that are partly hidden become missing too. False
/// when the discs fit no projection.
bool DropHidden(const GridProjection& projection, const cv::Mat& grey, LabelledDiscs& discs);

}  // namespace velmora::finder
