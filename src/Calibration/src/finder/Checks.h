/// What tells the grid from other things that its pattern can be laid on.
#pragma once

#include <opencv2/core.hpp>

#include "finder/CandidateIndex.h"
#include "finder/SheetPlane.h"

namespace finder {

/// Declares discs missing that are not where their neighbours say. Returns how many.
int DropStrays(const SheetPlane& plane, PlacedDiscs& discs);

/// True when all discs are near enough to the plane, each alone and all together.
bool LiesOnPlane(const SheetPlane& plane, const PlacedDiscs& discs);

/// True when the pattern goes on beyond the grid's size: discs like those of the grid lie on places around it.
bool GoesOn(const SheetPlane& plane, const PlacedDiscs& discs, const CandidateIndex& index, Effort& effort);

/// True when the spots touch at their corners as the dark squares of a chessboard do.
bool IsChessboard(const SheetPlane& plane, const PlacedDiscs& discs, const cv::Mat& grey);

}  // namespace finder
