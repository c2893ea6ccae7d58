/// Labels a grown lattice with the grid indices of the pattern.
#include "finder/Labelling.h"

#include <algorithm>
#include <array>
#include <opencv2/imgproc.hpp>

#include "finder/Pattern.h"

namespace velmora::finder {

namespace {

using Base = std::array<int, 4>;  ///< a 2 x 2 matrix, row by row

/// The largest step of the pattern's own base in that of the lattice.
constexpr int STEEPEST = 2;

/// All matrices of whole numbers, not too steep, that lead from one base of a lattice to another, turning in
/// the same sense or not.
std::vector<Base> Bases(int determinant) {
  std::vector<Base> bases;
  for (int a = -STEEPEST; a <= STEEPEST; ++a) {
    for (int b = -STEEPEST; b <= STEEPEST; ++b) {
      for (int c = -STEEPEST; c <= STEEPEST; ++c) {
        for (int d = -STEEPEST; d <= STEEPEST; ++d) {
          if (a * d - b * c == determinant) bases.push_back({a, b, c, d});
        }
      }
    }
  }
  return bases;
}

cv::Point Times(const Base& base, const cv::Point& p) {
  return {base[0] * p.x + base[1] * p.y, base[2] * p.x + base[3] * p.y};
}

/// The candidates of a lattice by their lattice index.
class CandidateTable {
 public:
  explicit CandidateTable(const Lattice& lattice) {
    std::vector<cv::Point> gridIndices;
    for (const LatticePoint& point : lattice.points) gridIndices.push_back(point.gridIndex);
    box_ = cv::boundingRect(gridIndices);
    table_ = cv::Mat(box_.size(), CV_32SC1, cv::Scalar(-1));
    for (const LatticePoint& point : lattice.points)
      table_.at<int>(point.gridIndex - box_.tl()) = point.candidate;
  }

  const cv::Rect& Box() const { return box_; }
  int At(const cv::Point& gridIndex) const {
    return box_.contains(gridIndex) ? table_.at<int>(gridIndex - box_.tl()) : -1;
  }

 private:
  cv::Rect box_;
  cv::Mat table_;
};

struct Range {
  int from, to;
};

/// The shifts at which an interval of the pattern may lie over one of the lattice: the shorter one within the
/// longer one, or one index beyond.
Range Shifts(int patternFrom, int patternSize, int latticeFrom, int latticeSize) {
  const int low = latticeFrom - patternFrom;
  const int high = low + latticeSize - patternSize;
  return {std::min(low, high) - 1, std::max(low, high) + 1};
}

/// How many grid indices have a candidate; -1 as soon as it is sure that they are fewer than `least`.
int CountCovered(const CandidateTable& table, const std::vector<cv::Point>& gridIndices,
                 const cv::Point& shift, int least) {
  int lacking = static_cast<int>(gridIndices.size()) - least;
  for (const cv::Point& gridIndex : gridIndices) {
    if (table.At(gridIndex + shift) < 0 && --lacking < 0) return -1;
  }
  return least + lacking;
}

/// Calls `visit(base, shift, covered)` for each way of laying the pattern that covers `least` grid indices,
/// which may change meanwhile. False when the budget was spent on the way.
template <typename Visitor>
bool VisitWays(const Lattice& lattice, const CandidateTable& table, const std::vector<cv::Point>& pattern,
               int lacking, const int& least, SearchBudget& budget, Visitor visit) {
  std::vector<cv::Point> turned(pattern.size());
  // The pattern's own base, (1, 1) and (1, -1), turns against the clock.
  for (const Base& base : Bases(lattice.clockwise ? -1 : 1)) {
    std::transform(pattern.begin(), pattern.end(), turned.begin(),
                   [&](const cv::Point& p) { return Times(base, p); });
    const cv::Rect box = cv::boundingRect(turned);
    const cv::Rect& room = table.Box();
    if (box.width > room.width + lacking || box.height > room.height + lacking) continue;
    const Range xs = Shifts(box.x, box.width, room.x, room.width);
    const Range ys = Shifts(box.y, box.height, room.y, room.height);
    for (int y = ys.from; y <= ys.to; ++y) {
      for (int x = xs.from; x <= xs.to; ++x) {
        if (budget.Spent()) return false;
        budget.left -= static_cast<int>(turned.size() / 4);
        const cv::Point shift(x, y);
        const int covered = CountCovered(table, turned, shift, least);
        if (covered >= 0) visit(base, shift, covered);
      }
    }
  }
  return true;
}

std::vector<cv::Point> LatticeIndices(const cv::Size& grid) {
  std::vector<cv::Point> pattern;
  for (const cv::Point& gridIndex : PatternIndices(grid)) pattern.push_back(LatticeIndex(gridIndex));
  return pattern;
}

}  // namespace

Labelling LabelPattern(const Lattice& lattice, const cv::Size& grid, int lacking, SearchBudget& budget) {
  Labelling best;
  if (lattice.points.empty()) return best;
  const CandidateTable table(lattice);
  const std::vector<cv::Point> pattern = LatticeIndices(grid);
  Base bestBase = {};
  cv::Point bestShift;
  // What covers no more than the second best way changes neither.
  int least = 0;
  const bool all = VisitWays(lattice, table, pattern, lacking, least, budget,
                             [&](const Base& base, const cv::Point& shift, int covered) {
                               if (covered <= best.covered) {
                                 best.secondBest = std::max(best.secondBest, covered);
                                 least = best.secondBest + 1;
                                 return;
                               }
                               best.secondBest = best.covered;
                               least = best.secondBest + 1;
                               best.covered = covered;
                               bestBase = base;
                               bestShift = shift;
                             });
  if (!all) return {};
  for (const cv::Point& p : pattern) best.discs.push_back(table.At(Times(bestBase, p) + bestShift));
  return best;
}

LabelledDiscs DiscsOf(const Labelling& labelling, const cv::Size& grid, const CandidateIndex& index) {
  LabelledDiscs discs;
  discs.grid = grid;
  discs.gridIndices = PatternIndices(grid);
  for (const int k : labelling.discs) {
    discs.centres.push_back(k >= 0 ? index[k].centre : cv::Point2d());
    discs.radii.push_back(k >= 0 ? index[k].radius : 0.0);
  }
  return discs;
}

cv::Point Way::OnLattice(const cv::Point& gridIndex) const {
  return Times(matrix_, LatticeIndex(gridIndex)) + shift_;
}

cv::Point Way::OnPattern(const cv::Point& latticeIndex) const {
  const int determinant = matrix_[0] * matrix_[3] - matrix_[1] * matrix_[2];
  const Base adjugate = {matrix_[3], -matrix_[1], -matrix_[2], matrix_[0]};
  const cv::Point p = determinant * Times(adjugate, latticeIndex - shift_);
  return {p.x + p.y, p.x - p.y};
}

std::vector<Way> WaysToLabel(const Lattice& lattice, const cv::Size& grid, int lacking, int least, int fewer,
                             SearchBudget& budget) {
  if (lattice.points.empty()) return {};
  std::vector<Way> ways;
  int best = least;
  const bool all = VisitWays(lattice, CandidateTable(lattice), LatticeIndices(grid), lacking, least, budget,
                             [&](const Base& base, const cv::Point& shift, int covered) {
                               if (covered < std::max(least, best - fewer)) return;
                               ways.emplace_back(base, shift, covered);
                               best = std::max(best, covered);
                             });
  if (!all) return {};
  const auto tooFew = [&](const Way& way) { return way.covered < best - fewer; };
  ways.erase(std::remove_if(ways.begin(), ways.end(), tooFew), ways.end());
  std::stable_sort(ways.begin(), ways.end(),
                   [](const Way& a, const Way& b) { return a.covered > b.covered; });
  return ways;
}

}  // namespace velmora::finder
