/// Grids of which some discs cannot be seen: beyond the image's border, cut by it, or behind something.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "finder/Lattice.h"

namespace velmora {

/// What is seen of a grid: three quarters of its discs at least. All lists are of all discs, row by row.
struct PartialGrid {
  std::vector<cv::Point2d> points;  ///< centres, pixels; of discs that are not seen, where they would be
  std::vector<double> radii;        ///< of the discs of equal area, pixels; 0 for those that are not seen
  std::vector<double> weights;      ///< 1 for a disc that is seen, 0 for one that is not

  bool Found() const { return !points.empty(); }
  int Seen() const;
};

namespace finder {

/// The grid that a lattice in `grey` shows a part of; none is found when it may be of something else, or when
/// it is not sure which part (LabelPart()). Discs that the border cuts or that are partly hidden count as not
/// seen.
PartialGrid CompletePart(const Lattice& lattice, const CandidateIndex& index, const cv::Mat& grey,
                         const cv::Size& grid, SearchBudget& budget);

}  // namespace finder

}  // namespace velmora
