/// From discs with labels to a whole grid with measured centres, or to why they are none.
#include "finder/WholeGrid.h"

#include "finder/Checks.h"
#include "finder/HiddenDiscs.h"
#include "finder/MissingDiscs.h"
#include "finder/Pattern.h"
#include "finder/Refinement.h"
#include "finder/Shape.h"

namespace velmora::finder {

namespace {

GridFault FaultOfGaps(const GridProjection& projection, const LabelledDiscs& discs, const cv::Size& size) {
  return MissesOutside(projection, discs, size) ? GridFault::PartOutside : GridFault::WrongSize;
}

/// Refines the discs; false when they are other shapes.
bool RefineAsDiscs(const GridProjection& projection, const cv::Mat& grey, LabelledDiscs& discs) {
  RefineDiscs(projection, grey, discs);
  return AreDiscs(projection, grey, discs);
}

}  // namespace

GridFault CompleteGrid(GridProjection& projection, LabelledDiscs& discs, const CandidateIndex& index,
                       const cv::Mat& grey, SearchBudget& budget) {
  const int mostMissing = MissingAllowed(discs.grid);
  if (discs.Missing() > mostMissing) return FaultOfGaps(projection, discs, grey.size());
  if (!RejectOutliers(projection, discs, mostMissing)) return GridFault::NothingLikeIt;
  const bool gaps = discs.Missing() > 0;
  if (gaps) RecoverMissing(projection, grey, discs);
  if (discs.Missing() > 0) return FaultOfGaps(projection, discs, grey.size());
  // What was recovered is in place but for what hides a part of it.
  const GridFault offPlane = gaps ? GridFault::PartlyHidden : GridFault::NothingLikeIt;
  if (gaps && !projection.Fit(discs)) return offPlane;
  if (!FitsProjection(projection, discs)) return offPlane;
  if (GoesOn(projection, discs, index, budget)) return GridFault::BiggerLattice;
  if (IsChessboard(projection, discs, grey)) return GridFault::NothingLikeIt;
  if (!RefineAsDiscs(projection, grey, discs)) return GridFault::NothingLikeIt;
  return AreWhole(projection, grey, discs) ? GridFault::None : GridFault::PartlyHidden;
}

bool ConfirmGrid(LabelledDiscs& discs, const CandidateIndex& index, const cv::Mat& grey,
                 SearchBudget& budget) {
  GridProjection projection;
  if (discs.Missing() > 0 || !projection.Fit(discs)) return false;
  if (!RejectOutliers(projection, discs, 0) || !FitsProjection(projection, discs)) return false;
  if (CountBeyond(projection, discs, index, budget) > 0) return false;
  if (IsChessboard(projection, discs, grey)) return false;
  return RefineAsDiscs(projection, grey, discs) && AreWhole(projection, grey, discs);
}

}  // namespace velmora::finder
