/// Finds the grid in an image of which it is known where the discs are, about.
#include "finder/NearbyGrid.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "finder/CandidateIndex.h"
#include "finder/Candidates.h"
#include "finder/Lattice.h"
#include "finder/Pattern.h"
#include "finder/WholeGrid.h"

namespace velmora::finder {

namespace {

/// Lookups in the index: more than such a look can take.
constexpr int BUDGET = 100000;
/// A lattice that is less regular is left to the search of the whole image.
constexpr double REGULAR = 0.05;
/// How far beyond the discs' centres regions of theirs may reach, in radii, and what blur and the positions
/// around the grid need, in steps and in pixels.
constexpr double LARGEST = 1.5;
constexpr double AROUND = 0.2;
constexpr double BLUR = 3.0;

const std::array<cv::Point, 6> STEPS = {cv::Point(1, 1),   cv::Point(1, -1), cv::Point(-1, 1),
                                        cv::Point(-1, -1), cv::Point(2, 0),  cv::Point(-2, 0)};

/// The length of a step at a disc, by its nearest neighbours.
double StepAt(const LabelledDiscs& discs, size_t k) {
  double nearest = 1e9;
  for (size_t step = 0; step < 4; ++step) {
    const int beside = discs.At(discs.gridIndices[k] + STEPS[step]);
    if (beside < 0) continue;
    nearest = std::min(nearest, cv::norm(discs.centres[static_cast<size_t>(beside)] - discs.centres[k]));
  }
  return nearest * std::sqrt(0.5);
}

/// The part of an image around points.
class PartAround {
 public:
  explicit PartAround(const cv::Size& size)
      : size_(size), rows_(static_cast<size_t>(size.height), cv::Range(size.width, 0)) {}

  void Add(const cv::Point2d& at, double margin) {
    if (!(std::abs(at.x) < 1e6 && std::abs(at.y) < 1e6 && margin < 1e6)) return;
    const int left = std::max(0, cvFloor(at.x - margin));
    const int right = std::min(size_.width, cvCeil(at.x + margin) + 1);
    const int top = std::max(0, cvFloor(at.y - margin));
    const int bottom = std::min(size_.height, cvCeil(at.y + margin) + 1);
    for (int row = top; row < bottom && left < right; ++row) {
      cv::Range& columns = rows_[static_cast<size_t>(row)];
      columns.start = std::min(columns.start, left);
      columns.end = std::max(columns.end, right);
    }
  }

  /// Rows without points between others get the columns of the row above.
  ImagePart Get() const {
    ImagePart part;
    const auto isEmpty = [](const cv::Range& columns) { return columns.start >= columns.end; };
    const auto first = std::find_if_not(rows_.begin(), rows_.end(), isEmpty);
    const auto last = std::find_if_not(rows_.rbegin(), rows_.rend(), isEmpty).base();
    if (first == rows_.end()) return part;
    part.top = static_cast<int>(first - rows_.begin());
    for (auto row = first; row != last; ++row) part.rows.push_back(isEmpty(*row) ? part.rows.back() : *row);
    return part;
  }

 private:
  const cv::Size size_;
  std::vector<cv::Range> rows_;
};

/// With the places of the pattern around the grid: there are no discs on them.
void AddGrid(const ExpectedGrid& expected, PartAround& part) {
  const LabelledDiscs& discs = expected.discs;
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    const cv::Point& gridIndex = discs.gridIndices[k];
    const double margin = LARGEST * discs.radii[k] + (AROUND + expected.slack) * StepAt(discs, k) + BLUR;
    part.Add(discs.centres[k], margin);
    for (const cv::Point& step : STEPS) {
      const int behind = discs.At(gridIndex - step);
      if (behind < 0 || discs.At(gridIndex + step) >= 0) continue;
      part.Add(2.0 * discs.centres[k] - discs.centres[static_cast<size_t>(behind)], margin);
    }
  }
}

/// Takes the candidate where each disc is expected. False when there is none, or more than one.
bool Assign(const ExpectedGrid& expected, const CandidateIndex& index, SearchBudget& budget,
            LabelledDiscs& discs, Lattice& lattice) {
  discs = expected.discs;
  lattice.points.clear();
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    const cv::Point2d at = expected.discs.centres[k];
    const double radius = expected.discs.radii[k];
    const double reach = expected.slack * StepAt(expected.discs, k) + 1.0;
    int found = -1;
    int count = 0;
    index.Visit(at, reach, budget, [&](int candidate) {
      const cv::Point2d apart = index[candidate].centre - at;
      if (!(apart.dot(apart) <= reach * reach) || !AlikeInSize(radius, index[candidate].radius)) return;
      found = candidate;
      ++count;
    });
    if (count != 1) return false;
    discs.centres[k] = index[found].centre;
    discs.radii[k] = index[found].radius;
    lattice.points.push_back({LatticeIndex(discs.gridIndices[k]), found});
  }
  return true;
}

}  // namespace

bool FindNearby(const cv::Mat& grey, const std::vector<ExpectedGrid>& expected, LabelledDiscs& discs) {
  const std::vector<int> levels = ChooseLevels(grey);
  if (levels.empty() || expected.empty()) return false;
  PartAround part(grey.size());
  for (const ExpectedGrid& one : expected) AddGrid(one, part);
  const CandidateIndex index(FindCandidatesIn(grey, part.Get(), levels, expected[0].discs.grid.area()),
                             grey.size());
  SearchBudget budget{BUDGET};
  Lattice lattice;
  return std::any_of(expected.begin(), expected.end(), [&](const ExpectedGrid& one) {
    return Assign(one, index, budget, discs, lattice) && Irregularity(lattice, index) < REGULAR &&
           ConfirmGrid(discs, index, grey, budget);
  });
}

}  // namespace velmora::finder
