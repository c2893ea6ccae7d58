/// What tells the grid from other things that its pattern can be laid on.
#pragma once

#include <opencv2/core.hpp>

#include "finder/CandidateIndex.h"
#include "finder/SheetPlane.h"

namespace velmora::finder {

/// Declares discs missing that are outliers among the others, and fits the plane to the rest. False when more
/// than so many are missing then, or nothing fits.
bool RejectOutliers(SheetPlane& plane, PlacedDiscs& discs, int atMost);

/// True when all discs are near the plane, as far as a lens may distort it, and none is an outlier.
bool LiesOnPlane(const SheetPlane& plane, const PlacedDiscs& discs);

/// True when the pattern goes on beyond the grid's size: discs like those of the grid lie on places around
/// it.
bool GoesOn(const SheetPlane& plane, const PlacedDiscs& discs, const CandidateIndex& index, Effort& effort);

/// True when the spots touch at their corners as the dark squares of a chessboard do.
bool IsChessboard(const SheetPlane& plane, const PlacedDiscs& discs, const cv::Mat& grey);

}  // namespace velmora::finder
