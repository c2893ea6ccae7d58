/// A quick look at a picture of half the size: where the grid is, about, if it is plain to see.
#include "finder/Glance.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>

#include "finder/CandidateIndex.h"
#include "finder/Candidates.h"
#include "finder/Checks.h"
#include "finder/Labelling.h"
#include "finder/Lattice.h"
#include "finder/Pattern.h"

namespace velmora::finder {

namespace {

constexpr int SHRUNK = 2;
/// In smaller pictures there is little to spare.
constexpr int LEAST_SIDE = 240;
/// Lookups in the index: a grid that is plain to see takes a few thousand.
constexpr int BUDGET = 20000;
/// By how much the smaller picture may mistake a disc's place, steps.
constexpr double SLACK = 0.1;

/// The labelled discs of a lattice; false when the pattern can be laid onto it in several ways.
bool Label(const Lattice& lattice, const CandidateIndex& index, SearchBudget& budget, LabelledDiscs& discs) {
  const Labelling labelling = LabelPattern(lattice, discs.grid, 2, budget);
  if (labelling.covered < labelling.secondBest + 2) return false;
  discs.centres.clear();
  discs.radii.clear();
  for (const int k : labelling.discs) {
    discs.centres.push_back(k >= 0 ? index[k].centre : cv::Point2d());
    discs.radii.push_back(k >= 0 ? index[k].radius : 0.0);
  }
  return true;
}

/// True when the discs say where the missing ones among them are.
bool CanFill(GridProjection& projection, LabelledDiscs& discs) {
  const int missing = MissingAllowed(discs.grid);
  return discs.Missing() <= missing && projection.Fit(discs) && RejectOutliers(projection, discs, missing);
}

/// Puts missing discs where the others have them, and all into the picture of the whole size.
void Enlarge(const GridProjection& projection, LabelledDiscs& discs) {
  const double usual = discs.MedianRadius();
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    if (!discs.Has(k)) {
      discs.centres[k] = projection.Predict(discs.gridIndices[k]);
      discs.radii[k] = usual;
    }
    // Pixels have their middles at whole numbers.
    discs.centres[k] = SHRUNK * (discs.centres[k] + cv::Point2d(0.5, 0.5)) - cv::Point2d(0.5, 0.5);
    discs.radii[k] *= SHRUNK;
  }
}

}  // namespace

bool GlanceAtGrid(const cv::Mat& grey, const cv::Size& grid, ExpectedGrid& expected) {
  if (std::min(grey.cols, grey.rows) < LEAST_SIDE) return false;
  const cv::Size size(grey.cols / SHRUNK, grey.rows / SHRUNK);
  cv::Mat smaller;
  cv::resize(grey(cv::Rect(0, 0, SHRUNK * size.width, SHRUNK * size.height)), smaller, size, 0.0, 0.0,
             cv::INTER_AREA);
  const size_t least = static_cast<size_t>(grid.area() - MissingAllowed(grid));
  const std::vector<DiscCandidate> candidates = GlanceAtCandidates(smaller, grid.area());
  if (candidates.size() < least) return false;
  const CandidateIndex index(candidates, size);
  SearchBudget budget{BUDGET};
  LabelledDiscs& discs = expected.discs;
  discs.grid = grid;
  discs.gridIndices = PatternIndices(grid);
  expected.slack = SLACK;
  GridProjection projection;
  const bool found =
      SearchLattices(index, least, 3 * discs.gridIndices.size() + 60, budget, [&](const Lattice& lattice) {
        return lattice.points.size() >= least && Label(lattice, index, budget, discs) &&
               (discs.Missing() == 0 || CanFill(projection, discs));
      });
  if (found) Enlarge(projection, discs);
  return found;
}

}  // namespace velmora::finder
