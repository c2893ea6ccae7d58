/// Which discs of the grid those are that a lattice shows a part of, if only one answer is possible.
#pragma once

#include <opencv2/core.hpp>

#include "finder/GridProjection.h"
#include "finder/Lattice.h"

namespace velmora::finder {

/// The fewest discs that speak for a whole grid: three quarters of it.
int FewestOfPart(const cv::Size& grid);

/// Puts the discs of a lattice in `grey` on their grid indices; the others are missing. False when the
/// lattice is no part of such a grid, or may be two. The pattern can be laid in several ways on a lattice
/// that lacks a row or a column: turned by half, say. The one that lacks fewest discs but for the border is
/// taken, if
///  - no row or column is missing whole that the border does not cut: something hides it, or there is none;
///  - for all others the image shows blank paper where they have discs: discs that are hidden would not do;
///  - the paper is blank beyond one of the ends at least, along and across: elsewhere the pattern may go on.
bool LabelPart(const Lattice& lattice, const CandidateIndex& index, const cv::Mat& grey, const cv::Size& grid,
               SearchBudget& budget, LabelledDiscs& discs);

/// True when discs that were labelled, and of which some were dropped since, can still be labelled in that
/// way only; those that are not as dark as the others do not count.
bool IsOnlyLabelling(const LabelledDiscs& labelled, const cv::Mat& grey, SearchBudget& budget);

}  // namespace velmora::finder
