/// What a search for the grid found, or why it found nothing.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

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

/// Which discs a search found.
enum class DiscTone {
  Dark,   ///< on a light ground
  Light,  ///< on a dark ground
  Faint   ///< of little contrast, dark or light
};

/// What a robust search found.
struct GridFinding {
  GridFault fault = GridFault::NothingLikeIt;
  std::vector<cv::Point2d> centres;  ///< row by row, pixels; empty without a grid
  std::vector<double> radii;         ///< of the discs of equal area, pixels, in the same order
  DiscTone tone = DiscTone::Dark;    ///< of a grid that was found

  bool Found() const { return fault == GridFault::None; }
};

}  // namespace velmora
