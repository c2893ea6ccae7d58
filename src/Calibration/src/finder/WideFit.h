/// Finds how much a wide lens bends the image of a grid.
#pragma once

#include <opencv2/core.hpp>

#include "finder/GridProjection.h"

namespace velmora::finder {

/// Fits the projection to discs that a wide lens shows, in an image of a size: with the lens through which
/// they are nearest to a plane. False when no lens puts them near one, and when they are near one without
/// any.
bool FitWide(GridProjection& projection, const LabelledDiscs& discs, const cv::Size& image);

}  // namespace velmora::finder
