/// The robust search of the asymmetric circles grid: by growing lattices of round spots.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "finder/PartialGrid.h"

namespace velmora {

/// Why a search found no grid.
enum class GridFault {
  None,
  TooFewCandidates,
  CirclesTooSmall,
  CirclesTooLarge,
  BiggerLattice,
  PartOutside,
  WrongSize,
  PartlyHidden,
  NothingLikeIt
};

/// What a robust search found.
struct GridFinding {
  GridFault fault = GridFault::NothingLikeIt;
  std::vector<cv::Point2d> centres;  ///< row by row, pixels; empty without a grid
  std::vector<double> radii;         ///< of the discs of equal area, pixels, in the same order

  bool Found() const { return fault == GridFault::None; }
};

/// Searches for the grid in a frame of 8 bits and 1, 3 (BGR) or 4 channels: dark discs on a light ground, or
/// light ones on a dark ground. For sizes with one order only (finder::HasOneOrder); others are not found.
/// The work is bounded for any frame, and so are the answers: the same frame always gives the same.
/// Thread-safe.
GridFinding SearchGridRobust(const cv::Mat& frame, const cv::Size& patternSize);

/// SearchGridRobust that, when there is no whole grid, also looks for a part of one. `part` is not found when
/// too little is seen of the grid, or when it is not sure which of its discs are seen. The finding is the
/// same.
GridFinding SearchGridRobust(const cv::Mat& frame, const cv::Size& patternSize, PartialGrid& part);

/// SearchGridRobust with the signature of the default search. `points` is left empty when nothing is found.
bool FindGridRobust(const cv::Mat& frame, const cv::Size& patternSize, std::vector<cv::Point2d>& points);

/// The fault in words; empty for none.
std::string DescribeFault(GridFault fault);

}  // namespace velmora
