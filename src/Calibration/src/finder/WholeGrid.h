/// From discs with labels to a whole grid with measured centres, or to why they are none.
#pragma once

#include <opencv2/core.hpp>

#include "finder/CandidateIndex.h"
#include "finder/GridFinding.h"
#include "finder/GridProjection.h"

namespace velmora::finder {

/// Brings the discs, to which the projection was fitted, to a whole grid with refined centres: outliers go,
/// missing discs are looked for, and what is no such grid is refused. GridFault::None for a grid.
GridFault CompleteGrid(GridProjection& projection, LabelledDiscs& discs, const CandidateIndex& index,
                       const cv::Mat& grey, SearchBudget& budget);

/// What CompleteGrid does when every disc is among the candidates, and in place. False whenever one is not,
/// or there is so much as one more disc around the grid.
bool ConfirmGrid(LabelledDiscs& discs, const CandidateIndex& index, const cv::Mat& grey,
                 SearchBudget& budget);

}  // namespace velmora::finder
