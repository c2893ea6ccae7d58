/// What tells the grid from other things that can be labelled like it.
#pragma once

#include <opencv2/core.hpp>

#include "finder/CandidateIndex.h"
#include "finder/GridProjection.h"

namespace velmora::finder {

/// Declares discs missing that are outliers among the others, and fits the projection to the rest. False when
/// more than `atMost` are missing then, or nothing fits.
bool RejectOutliers(GridProjection& projection, LabelledDiscs& discs, int atMost);

/// True when all discs that are not missing are near the homography, as far as a lens may distort it, and
/// none is an outlier.
bool FitsProjection(const GridProjection& projection, const LabelledDiscs& discs);

/// How many discs like those of the grid there are at indices around it.
int CountBeyond(const GridProjection& projection, const LabelledDiscs& discs, const CandidateIndex& index,
                SearchBudget& budget);

/// True when the pattern goes on beyond the grid's size: there are discs like those of the grid at indices
/// around it.
bool GoesOn(const GridProjection& projection, const LabelledDiscs& discs, const CandidateIndex& index,
            SearchBudget& budget);

/// True when the spots that are not missing touch at their corners as the dark squares of a chessboard do.
bool IsChessboard(const GridProjection& projection, const LabelledDiscs& discs, const cv::Mat& grey);

}  // namespace velmora::finder
