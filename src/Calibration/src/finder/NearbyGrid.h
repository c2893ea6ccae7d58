/// Finds the grid in an image of which it is known where the discs are, about.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "finder/GridProjection.h"

namespace velmora::finder {

/// Where the discs are expected, all of them, and how far off each may be: in steps, and by a pixel more.
struct ExpectedGrid {
  LabelledDiscs discs;
  double slack = 0.0;
};

/// Looks at the part of `grey` (CV_8UC1) where dark discs are expected, in one way or another, and finds what
/// a search of the whole image finds there, by the same candidates, checks and refinement. False whenever
/// anything is doubtful: a disc that is not where it is expected, or that is cut or hidden, another spot
/// around the grid. The image is to be searched as a whole then.
bool FindNearby(const cv::Mat& grey, const std::vector<ExpectedGrid>& expected, LabelledDiscs& discs);

}  // namespace velmora::finder
