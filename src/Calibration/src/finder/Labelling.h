/// Labels a grown lattice with the grid indices of the pattern.
#pragma once

#include <array>
#include <opencv2/core.hpp>
#include <vector>

#include "finder/GridProjection.h"
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

/// The discs of the grid as they are labelled; those without a candidate are missing.
LabelledDiscs DiscsOf(const Labelling& labelling, const cv::Size& grid, const CandidateIndex& index);

/// One way of labelling a lattice, as a map between the grid indices of the pattern and those of the lattice.
class Way {
 public:
  /// `matrix`, row by row and of determinant 1 or -1, leads from the pattern's base to the lattice's.
  Way(const std::array<int, 4>& matrix, const cv::Point& shift, int discs)
      : covered(discs), matrix_(matrix), shift_(shift) {}

  /// The lattice's index of a grid index of the pattern.
  cv::Point OnLattice(const cv::Point& gridIndex) const;
  /// The grid index of the pattern of a lattice's index: the inverse.
  cv::Point OnPattern(const cv::Point& latticeIndex) const;

  int covered;  ///< how many discs of the pattern have a candidate

 private:
  std::array<int, 4> matrix_;
  cv::Point shift_;
};

/// All unmirrored ways that cover at most `fewer` discs less than the best one, and `least` at least; one of
/// the best is the first. The lattice may lack `lacking` rows or columns in all. Empty when the budget is
/// spent.
std::vector<Way> WaysToLabel(const Lattice& lattice, const cv::Size& grid, int lacking, int least, int fewer,
                             SearchBudget& budget);

}  // namespace velmora::finder
