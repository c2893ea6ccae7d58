/// Moves the discs' centres to where the grey values put them.
#pragma once

#include <opencv2/core.hpp>

#include "finder/GridProjection.h"

namespace velmora::finder {

/// Centres become centroids of the darkness in a window around each disc, radii those of discs of the same
/// darkness. A disc whose surroundings do not allow that stays as it is.
void RefineDiscs(const GridProjection& projection, const cv::Mat& grey, LabelledDiscs& discs);

}  // namespace velmora::finder
