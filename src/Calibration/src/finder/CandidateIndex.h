/// Finds candidates by their position in the image.
#pragma once

#include <cmath>
#include <opencv2/core.hpp>
#include <vector>

#include "finder/Candidates.h"

namespace velmora::finder {

/// What a search may still spend, in lookups in the index; it bounds the time for any image.
struct SearchBudget {
  int left = 0;
  bool Spent() const { return left <= 0; }
};

/// Candidates sorted into square cells. Keeps no reference to the list.
class CandidateIndex {
 public:
  CandidateIndex(const std::vector<DiscCandidate>& candidates, const cv::Size& size);

  const std::vector<DiscCandidate>& All() const { return candidates_; }
  const DiscCandidate& operator[](int k) const { return candidates_[static_cast<size_t>(k)]; }
  int Count() const { return static_cast<int>(candidates_.size()); }

  /// The candidate nearest to a point, within `reach`, of which `wanted(k)` holds; -1 without one.
  template <typename Wanted>
  int Nearest(const cv::Point2d& at, double reach, SearchBudget& budget, Wanted wanted) const {
    int best = -1;
    double least = reach * reach;
    Visit(at, reach, budget, [&](int k) {
      const cv::Point2d apart = candidates_[static_cast<size_t>(k)].centre - at;
      const double square = apart.dot(apart);
      if (square > least || !wanted(k)) return;
      best = k;
      least = square;
    });
    return best;
  }

  /// Calls `visit(k)` for all candidates of the cells that the circle touches.
  template <typename Visitor>
  void Visit(const cv::Point2d& at, double reach, SearchBudget& budget, Visitor visit) const {
    const int left = Column(at.x - reach);
    const int right = Column(at.x + reach);
    const int bottom = Row(at.y + reach);
    for (int row = Row(at.y - reach); row <= bottom; ++row) {
      for (int column = left; column <= right; ++column) {
        const size_t cell = static_cast<size_t>(row * columns_ + column);
        budget.left -= 1 + (starts_[cell + 1] - starts_[cell]);
        for (int k = starts_[cell]; k < starts_[cell + 1]; ++k) visit(sorted_[static_cast<size_t>(k)]);
      }
    }
  }

 private:
  int Column(double x) const { return Clamped(x, columns_); }
  int Row(double y) const { return Clamped(y, rows_); }
  int Clamped(double coordinate, int count) const {
    const double cell = std::floor(coordinate / side_);
    // What is no number is in the first cell: a projection may have gone astray.
    if (!(cell > 0.0)) return 0;
    return cell < count - 1 ? static_cast<int>(cell) : count - 1;
  }

  std::vector<DiscCandidate> candidates_;
  double side_;
  int columns_;
  int rows_;
  std::vector<int> starts_;  ///< of each cell's candidates in the next list
  std::vector<int> sorted_;
};

}  // namespace velmora::finder
