/// The discs of the flat image of the 4 x 11 grid, as a search would have labelled them.
#pragma once

#include <opencv2/core.hpp>

#include "finder/GridProjection.h"

namespace unit {

const cv::Size FLAT_GRID(4, 11);
constexpr double FLAT_STEP = 24.0;
constexpr double FLAT_RADIUS = 0.4 * FLAT_STEP;

/// Where FlatGrid() has a point of the pattern, or one around it.
cv::Point2d InFlatGrid(const cv::Point& gridIndex);

/// The discs of FlatGrid(FLAT_GRID).
velmora::finder::LabelledDiscs FlatDiscs();

/// The discs of the flat grid as a lens of much distortion projects them.
velmora::finder::LabelledDiscs BentDiscs();

/// The discs of any size of grid where a homography puts them; `radius` is in steps.
velmora::finder::LabelledDiscs DiscsProjectedBy(const cv::Matx33d& H, const cv::Size& grid,
                                                double radius = 0.4);

/// The projection of discs that have one.
velmora::finder::GridProjection PlaneOf(const velmora::finder::LabelledDiscs& discs);

}  // namespace unit
