/// Grids of which some discs cannot be seen: beyond the image's border, cut by it, or behind something.
#include "finder/PartialGrid.h"

#include <algorithm>
#include <cmath>

#include "finder/Bites.h"
#include "finder/Checks.h"
#include "finder/HiddenDiscs.h"
#include "finder/PartLabelling.h"
#include "finder/Refinement.h"
#include "finder/Shape.h"
#include "finder/Sights.h"

namespace velmora {

int PartialGrid::Seen() const {
  return static_cast<int>(std::count(weights.begin(), weights.end(), 1.0));
}

namespace finder {

namespace {

/// One spot around the grid may be anything.
constexpr int BEYOND_AT_MOST = 1;

/// Discs that the border cuts are missing: their darkness has another middle.
void DropCut(const GridProjection& projection, const cv::Mat& grey, LabelledDiscs& discs) {
  const Sights sights(projection, discs, grey);
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    if (discs.Has(k) && sights.IsCut(discs.centres[k], discs.gridIndices[k], 0.0)) discs.radii[k] = 0.0;
  }
}

/// Leaves the discs that are whole, in place; false when they are too few, or no discs of such a grid.
bool KeepWhole(GridProjection& projection, LabelledDiscs& discs, const CandidateIndex& index,
               const cv::Mat& grey, SearchBudget& budget) {
  const int mostMissing = discs.grid.area() - FewestOfPart(discs.grid);
  if (!projection.Fit(discs)) return false;
  DropCut(projection, grey, discs);
  if (discs.Missing() > mostMissing || !projection.Fit(discs)) return false;
  if (!RejectOutliers(projection, discs, mostMissing) || !FitsProjection(projection, discs)) return false;
  if (CountBeyond(projection, discs, index, budget) > BEYOND_AT_MOST) return false;
  if (IsChessboard(projection, discs, grey)) return false;
  RefineDiscs(projection, grey, discs);
  if (!AreDiscs(projection, grey, discs) || !DropHidden(projection, grey, discs)) return false;
  if (discs.Missing() > mostMissing || !projection.Fit(discs)) return false;
  DropBitten(projection, grey, discs);
  return discs.Missing() <= mostMissing && projection.Fit(discs);
}

}  // namespace

PartialGrid CompletePart(const Lattice& lattice, const CandidateIndex& index, const cv::Mat& grey,
                         const cv::Size& grid, SearchBudget& budget) {
  LabelledDiscs discs;
  GridProjection projection;
  if (!LabelPart(lattice, index, grey, grid, budget, discs)) return {};
  if (!KeepWhole(projection, discs, index, grey, budget)) return {};
  // A spot that was none of the discs may have chosen their grid indices.
  if (!IsOnlyLabelling(discs, grey, budget)) return {};
  PartialGrid part;
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    const cv::Point2d at = discs.Has(k) ? discs.centres[k] : projection.Predict(discs.gridIndices[k]);
    if (!std::isfinite(at.x) || !std::isfinite(at.y)) return {};
    part.points.push_back(at);
    part.radii.push_back(discs.radii[k]);
    part.weights.push_back(discs.Has(k) ? 1.0 : 0.0);
  }
  return part;
}

}  // namespace finder

}  // namespace velmora
