/// The robust search of the asymmetric circles grid: by growing lattices of round spots.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "finder/GridFinding.h"
#include "finder/GridTracker.h"
#include "finder/PartialGrid.h"

namespace velmora {

/// Searches for the grid in a frame of 8 bits and 1, 3 (BGR) or 4 channels: dark discs on a light ground, or
/// light ones on a dark ground. For sizes with one order only (finder::HasOneOrder); others are not found.
/// The work is bounded for any frame, and so are the answers: the same frame always gives the same.
/// Thread-safe.
GridFinding SearchGridRobust(const cv::Mat& frame, const cv::Size& patternSize);

/// SearchGridRobust that, when there is no whole grid, also looks for a part of one. `part` is not found when
/// too little is seen of the grid, or when it is not sure which of its discs are seen. The finding is the
/// same.
GridFinding SearchGridRobust(const cv::Mat& frame, const cv::Size& patternSize, PartialGrid& part);

/// SearchGridRobust for the next frame of a sequence: where the last ones had the grid is looked at first,
/// and searched is as ever when it is not there, or anything is doubtful. `tracker` is brought up to date.
/// The finding is the same, but for centres of at most a thousandth of a pixel elsewhere in rare frames;
/// where two such grids are in sight it stays with the one it had. `part` may be null.
GridFinding SearchGridRobust(const cv::Mat& frame, const cv::Size& patternSize, GridTracker& tracker,
                             PartialGrid* part = nullptr);

/// SearchGridRobust with the signature of the default search. `points` is left empty when nothing is found.
bool FindGridRobust(const cv::Mat& frame, const cv::Size& patternSize, std::vector<cv::Point2d>& points);

/// The fault in words; empty for none.
std::string DescribeFault(GridFault fault);

}  // namespace velmora
