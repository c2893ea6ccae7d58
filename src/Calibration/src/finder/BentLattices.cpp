/// Finds the grid where a wide lens bends it too much for a plane.
#include "finder/BentLattices.h"

#include <algorithm>
#include <utility>

#include "finder/Labelling.h"
#include "finder/WholeGrid.h"
#include "finder/WideFit.h"

namespace velmora::finder {

namespace {

/// How many lattices are tried, and the lookups that each may take.
constexpr size_t MOST = 4;
constexpr int BUDGET = 60000;
/// Spots beside the grid that may have grown onto it.
constexpr size_t MORE_POINTS = 10;

}  // namespace

void BentLattices::Keep(const Lattice& lattice) {
  const size_t size = lattice.points.size();
  const size_t wanted = static_cast<size_t>(grid_.area());
  if (lattices_.size() == MOST || size < wanted || size > wanted + MORE_POINTS) return;
  std::set<int> candidates;
  for (const LatticePoint& point : lattice.points) candidates.insert(point.candidate);
  if (known_.insert(std::move(candidates)).second) lattices_.push_back(lattice);
}

bool BentLattices::FindGrid(const CandidateIndex& index, const cv::Mat& grey, LabelledDiscs& discs) const {
  return std::any_of(lattices_.begin(), lattices_.end(), [&](const Lattice& lattice) {
    SearchBudget budget{BUDGET};
    const Labelling labelling = LabelPattern(lattice, grid_, 2, budget);
    if (labelling.covered < grid_.area() || labelling.covered < labelling.secondBest + 2) return false;
    discs = DiscsOf(labelling, grid_, index);
    GridProjection projection;
    return FitWide(projection, discs, grey.size()) &&
           CompleteGrid(projection, discs, index, grey, budget) == GridFault::None;
  });
}

}  // namespace velmora::finder
