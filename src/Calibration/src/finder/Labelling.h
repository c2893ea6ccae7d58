/// Labels a grown lattice with the grid indices of the pattern.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "finder/Lattice.h"

namespace velmora::finder {

/// Which candidate each disc of the pattern is.
struct Labelling {
  std::vector<int> discs;  ///< candidates, row by row; -1 where there is none
  int covered = 0;         ///< how many discs have one
  int secondBest = 0;      ///< how many have one in the best other labelling
};

/// The unmirrored labelling that gives most of the pattern's discs a candidate, over all bases of the lattice
/// that may be in use and all shifts. The lattice may lack `lacking` rows or columns in all. `discs` is empty
/// when none covers any, or the budget is spent.
Labelling LabelPattern(const Lattice& lattice, const cv::Size& grid, int lacking, SearchBudget& budget);

}  // namespace velmora::finder
