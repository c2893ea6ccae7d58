/// What the discs around a grid point say about the disc on it.
#pragma once

#include <opencv2/core.hpp>

#include "finder/GridProjection.h"
#include "finder/Rim.h"

namespace velmora::finder {

/// The disc at a grid index as those around it predict it, itself left aside: position and size by
/// polynomials, whatever the lens; the contrast is left alone. False when there are too few.
bool ExpectDisc(const GridProjection& projection, const LabelledDiscs& discs, size_t k,
                ExpectedDisc& expected);

/// The median contrast between paper and ink of the nearest discs, grey levels; 0 when they have none.
double ContrastAround(const GridProjection& projection, const cv::Mat& grey, const LabelledDiscs& discs,
                      size_t k);

}  // namespace velmora::finder
