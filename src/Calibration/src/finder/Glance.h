/// A quick look at a picture of half the size: where the grid is, about, if it is plain to see.
#pragma once

#include <opencv2/core.hpp>

#include "finder/NearbyGrid.h"

namespace velmora::finder {

/// Where `grey` (CV_8UC1) shows a grid of dark discs. False when none is plain to see, which says nothing
/// about whether there is one.
bool GlanceAtGrid(const cv::Mat& grey, const cv::Size& grid, ExpectedGrid& expected);

}  // namespace velmora::finder
