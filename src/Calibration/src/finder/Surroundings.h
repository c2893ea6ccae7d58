/// What the discs around a place say about the disc on it.
#pragma once

#include <opencv2/core.hpp>

#include "finder/Rim.h"
#include "finder/SheetPlane.h"

namespace velmora::finder {

/// The disc on a place as those around it continue, without a word from itself: place and size by
/// polynomials, whatever the lens; the contrast is left alone. False when there are too few.
bool ExpectDisc(const SheetPlane& plane, const PlacedDiscs& discs, size_t k, ExpectedDisc& expected);

/// The median contrast between paper and ink of the nearest discs, grey levels; 0 when they have none.
double ContrastAround(const SheetPlane& plane, const cv::Mat& grey, const PlacedDiscs& discs, size_t k);

}  // namespace velmora::finder
