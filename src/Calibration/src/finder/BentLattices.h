/// Finds the grid where a wide lens bends it too much for a plane.
#pragma once

#include <opencv2/core.hpp>
#include <set>
#include <vector>

#include "finder/CandidateIndex.h"
#include "finder/GridProjection.h"
#include "finder/Lattice.h"

namespace velmora::finder {

/// Lattices of the grid's size that a search met and could not take, for when it has found nothing.
class BentLattices {
 public:
  explicit BentLattices(const cv::Size& grid) : grid_(grid) {}

  /// Keeps a lattice if it may be the grid: the first few, each once however often it was grown.
  void Keep(const Lattice& lattice);

  /// Fits to each a plane, seen through a lens whose bend the discs tell. All discs must be there, and what
  /// CompleteGrid asks of a grid is asked of these. False when none is the grid.
  bool FindGrid(const CandidateIndex& index, const cv::Mat& grey, LabelledDiscs& discs) const;

 private:
  const cv::Size grid_;
  std::vector<Lattice> lattices_;
  std::set<std::set<int>> known_;  ///< their candidates
};

}  // namespace velmora::finder
