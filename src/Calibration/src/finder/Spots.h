/// Spots that several grey levels see.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "finder/Regions.h"

namespace velmora::finder {

struct DiscCandidate {
  cv::Point2d centre;
  double radius = 0.0;  ///< of the disc of equal area, pixels
  int levels = 0;       ///< how many grey levels see it
};

/// One candidate for each spot that two levels at least see, one for small spots, as its middle level sees
/// it. The regions are of an image of this size.
std::vector<DiscCandidate> MergeSpots(const std::vector<Region>& found, const cv::Size& size);

}  // namespace velmora::finder
