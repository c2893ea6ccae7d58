/// Discs beside something that hides others.
#pragma once

#include <opencv2/core.hpp>

#include "finder/GridProjection.h"

namespace velmora::finder {

/// Declares discs missing that are beside missing ones which the border does not cut. A disc stays if it is
/// dark all over, with even paper all around it, and where the others put it; else what hides its neighbours
/// may have moved its middle too.
void DropBitten(const GridProjection& projection, const cv::Mat& grey, LabelledDiscs& discs);

}  // namespace velmora::finder
