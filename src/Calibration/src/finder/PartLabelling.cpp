/// Which discs of the grid those are that a lattice shows a part of, if only one answer is possible.
#include "finder/PartLabelling.h"

#include <algorithm>
#include <vector>

#include "finder/Checks.h"
#include "finder/Labelling.h"
#include "finder/Pattern.h"
#include "finder/Sights.h"

namespace velmora::finder {

namespace {

/// A way that leaves out this many more discs than the best one is wrong; a single disc may be something
/// else.
constexpr int LEAVES_OUT = 2;
/// Blank grid indices that speak against a way, or for the end of the pattern; one may be a fault of the
/// light.
constexpr int TELLING = 2;
/// The most points of a lattice that no disc of the grid is at.
constexpr size_t MOST_BESIDE = 2;
/// Points up to this many steps of the lattice away are around a disc; its radius is a multiple, from the
/// smallest to the largest of these, of the median of theirs.
constexpr int AROUND = 2;
constexpr double SMALLEST = 0.78;
constexpr double LARGEST = 1.28;

double Median(std::vector<double>& values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

/// The lattice without the points that are smaller or larger than those around them: it grows along print and
/// whatever else is beside a grid.
Lattice OfOneSize(const Lattice& lattice, const CandidateIndex& index) {
  Lattice rest;
  rest.clockwise = lattice.clockwise;
  for (const LatticePoint& point : lattice.points) {
    std::vector<double> around;
    for (const LatticePoint& other : lattice.points) {
      const cv::Point apart = other.gridIndex - point.gridIndex;
      if (std::max(std::abs(apart.x), std::abs(apart.y)) <= AROUND)
        around.push_back(index[other.candidate].radius);
    }
    const double usual = Median(around);
    const double radius = index[point.candidate].radius;
    if (radius > SMALLEST * usual && radius < LARGEST * usual) rest.points.push_back(point);
  }
  return rest;
}

/// The candidates of a lattice laid in one way.
LabelledDiscs DiscsOf(const Lattice& lattice, const Way& way, const CandidateIndex& index,
                      const cv::Size& grid) {
  LabelledDiscs discs;
  discs.grid = grid;
  discs.gridIndices = PatternIndices(grid);
  discs.centres.resize(discs.gridIndices.size());
  discs.radii.assign(discs.gridIndices.size(), 0.0);
  for (const LatticePoint& point : lattice.points) {
    const cv::Point gridIndex = way.OnPattern(point.gridIndex);
    const auto found = std::find(discs.gridIndices.begin(), discs.gridIndices.end(), gridIndex);
    if (found == discs.gridIndices.end()) continue;
    const size_t k = static_cast<size_t>(found - discs.gridIndices.begin());
    discs.centres[k] = index[point.candidate].centre;
    discs.radii[k] = index[point.candidate].radius;
  }
  return discs;
}

/// The lattice without the points that one way lays the missing discs on.
Lattice Without(const Lattice& lattice, const Way& way, const LabelledDiscs& discs) {
  Lattice rest;
  rest.clockwise = lattice.clockwise;
  for (const LatticePoint& point : lattice.points) {
    const cv::Point gridIndex = way.OnPattern(point.gridIndex);
    const auto found = std::find(discs.gridIndices.begin(), discs.gridIndices.end(), gridIndex);
    if (found != discs.gridIndices.end() &&
        !discs.Has(static_cast<size_t>(found - discs.gridIndices.begin())))
      continue;
    rest.points.push_back(point);
  }
  return rest;
}

/// The grid indices, in steps of one way, of the discs that another way has.
std::vector<cv::Point> IndicesIn(const Way& one, const Way& other, const cv::Size& grid) {
  std::vector<cv::Point> gridIndices;
  for (const cv::Point& gridIndex : PatternIndices(grid))
    gridIndices.push_back(one.OnPattern(other.OnLattice(gridIndex)));
  return gridIndices;
}

bool IsOfGrid(const cv::Point& gridIndex, const cv::Size& grid) {
  return gridIndex.x >= 0 && gridIndex.y >= 0 && gridIndex.x < 2 * grid.width && gridIndex.y < grid.height;
}

/// How many of the grid indices outside the grid are blank.
int CountBlank(const Sights& sights, const std::vector<cv::Point>& gridIndices, const cv::Size& grid) {
  return static_cast<int>(
      std::count_if(gridIndices.begin(), gridIndices.end(), [&](const cv::Point& gridIndex) {
        return !IsOfGrid(gridIndex, grid) && sights.At(gridIndex) == PointState::Paper;
      }));
}

/// How many grid indices the way lacks that the border does not cut; `discs` are those of `one`.
int CountHidden(const Sights& sights, const LabelledDiscs& discs, const Way& one, const Way& other) {
  const std::vector<cv::Point> gridIndices = IndicesIn(one, other, discs.grid);
  return static_cast<int>(std::count_if(
      gridIndices.begin(), gridIndices.end(),
      [&](const cv::Point& gridIndex) { return discs.At(gridIndex) < 0 && !sights.IsBeyond(gridIndex); }));
}

/// True when all discs of some row or column are missing, and not all by the border.
bool LacksLine(const Sights& sights, const LabelledDiscs& discs) {
  const auto lacks = [&](auto isOnLine) {
    bool hidden = false;
    for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
      if (!isOnLine(discs.gridIndices[k])) continue;
      if (discs.Has(k)) return false;
      hidden = hidden || !sights.IsBeyond(discs.gridIndices[k]);
    }
    return hidden;
  };
  for (int y = 0; y < discs.grid.height; ++y) {
    if (lacks([&](const cv::Point& gridIndex) { return gridIndex.y == y; })) return true;
  }
  for (int x = 0; x < 2 * discs.grid.width; ++x) {
    if (lacks([&](const cv::Point& gridIndex) { return gridIndex.x == x; })) return true;
  }
  return false;
}

/// True when the paper is blank where one more row or column would be, at one end at least each way.
bool SeesEnds(const Sights& sights, const cv::Size& grid) {
  std::vector<cv::Point> above, below, left, right;
  for (int x = 0; x < 2 * grid.width; ++x) {
    (x % 2 != 0 ? above : below).emplace_back(x, x % 2 != 0 ? -1 : grid.height);
  }
  for (int y = 0; y < grid.height; ++y) {
    (y % 2 != 0 ? left : right).emplace_back(y % 2 != 0 ? -1 : 2 * grid.width, y);
  }
  const auto blank = [&](const std::vector<cv::Point>& gridIndices) {
    return CountBlank(sights, gridIndices, grid) >= TELLING;
  };
  return (blank(above) || blank(below)) && (blank(left) || blank(right));
}

/// All ways that may be the right one; none when the lattice is no part of such a grid.
std::vector<Way> PossibleWays(const Lattice& lattice, const cv::Size& grid, SearchBudget& budget) {
  std::vector<Way> ways =
      WaysToLabel(lattice, grid, grid.width + grid.height, FewestOfPart(grid), LEAVES_OUT - 1, budget);
  if (!ways.empty() && lattice.points.size() > static_cast<size_t>(ways[0].covered) + MOST_BESIDE) return {};
  return ways;
}

/// The one of the best ways that lacks fewest discs for no reason.
size_t BestOf(const std::vector<Way>& ways, const Sights& sights, const LabelledDiscs& discsOfFirst) {
  size_t best = 0;
  int fewest = static_cast<int>(discsOfFirst.gridIndices.size()) + 1;
  for (size_t k = 0; k < ways.size() && ways[k].covered == ways[0].covered; ++k) {
    const int hidden = CountHidden(sights, discsOfFirst, ways[0], ways[k]);
    if (hidden >= fewest) continue;
    fewest = hidden;
    best = k;
  }
  return best;
}

/// Chooses one of the ways, if the image speaks against all others.
bool Choose(const std::vector<Way>& ways, const Lattice& lattice, const CandidateIndex& index,
            const cv::Mat& grey, const cv::Size& grid, LabelledDiscs& discs) {
  discs = DiscsOf(lattice, ways[0], index, grid);
  GridProjection projection;
  if (!projection.Fit(discs)) return false;
  const size_t best = BestOf(ways, Sights(projection, discs, grey), discs);
  if (best != 0) {
    discs = DiscsOf(lattice, ways[best], index, grid);
    if (!projection.Fit(discs)) return false;
  }
  const Sights sights(projection, discs, grey);
  if (LacksLine(sights, discs) || !SeesEnds(sights, grid)) return false;
  for (size_t k = 0; k < ways.size(); ++k) {
    if (k == best) continue;
    if (CountBlank(sights, IndicesIn(ways[best], ways[k], grid), grid) < TELLING) return false;
  }
  return true;
}

}  // namespace

int FewestOfPart(const cv::Size& grid) {
  return (3 * grid.area() + 3) / 4;
}

bool LabelPart(const Lattice& whole, const CandidateIndex& index, const cv::Mat& grey, const cv::Size& grid,
               SearchBudget& budget, LabelledDiscs& discs) {
  // A good deal larger, and it is none whatever is left out.
  if (whole.points.size() > static_cast<size_t>(3 * grid.area() / 2)) return false;
  Lattice lattice = OfOneSize(whole, index);
  if (lattice.points.size() > static_cast<size_t>(grid.area()) + MOST_BESIDE) return false;
  for (;;) {
    const std::vector<Way> ways = PossibleWays(lattice, grid, budget);
    if (ways.empty()) return false;
    discs = DiscsOf(lattice, ways[0], index, grid);
    const int missing = discs.Missing();
    GridProjection projection;
    if (!projection.Fit(discs) || !RejectOutliers(projection, discs, grid.area() - FewestOfPart(grid)))
      return false;
    if (discs.Missing() == missing) return Choose(ways, lattice, index, grey, grid, discs);
    // Without the outliers another way may be as good.
    lattice = Without(lattice, ways[0], discs);
  }
}

bool IsOnlyLabelling(const LabelledDiscs& labelled, const cv::Mat& grey, SearchBudget& budget) {
  LabelledDiscs discs = labelled;
  GridProjection projection;
  if (!projection.Fit(discs)) return false;
  const Sights sights(projection, labelled, grey);
  Lattice lattice;
  lattice.clockwise = false;
  std::vector<DiscCandidate> candidates;
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    // Specks speak for nothing.
    if (discs.Has(k) && !sights.ShowsDisc(discs.centres[k], discs.gridIndices[k])) discs.radii[k] = 0.0;
    if (!discs.Has(k)) continue;
    lattice.points.push_back({LatticeIndex(discs.gridIndices[k]), static_cast<int>(candidates.size())});
    candidates.push_back({discs.centres[k], discs.radii[k], 1});
  }
  const CandidateIndex index(candidates, grey.size());
  const std::vector<Way> ways = PossibleWays(lattice, discs.grid, budget);
  LabelledDiscs chosen;
  if (ways.empty() || !Choose(ways, lattice, index, grey, discs.grid, chosen)) return false;
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    if (discs.Has(k) && (!chosen.Has(k) || chosen.centres[k] != discs.centres[k])) return false;
  }
  return true;
}

}  // namespace velmora::finder
