/// Solves equations a second way, to compare with: by Gauss's elimination in extended precision.
#pragma once

#include <cmath>
#include <utility>
#include <vector>

namespace unit {

using Wide = long double;
using WideMatrix = std::vector<std::vector<Wide>>;

/// Least squares: the sums that a solution is found from.
class WideEquations {
 public:
  /// `ridge` is added to the diagonal.
  WideEquations(size_t unknowns, size_t rights, Wide ridge = 0.0L)
      : rows_(unknowns, std::vector<Wide>(unknowns + rights, 0.0L)) {
    for (size_t k = 0; k < unknowns; ++k) rows_[k][k] = ridge;
  }

  void Add(const std::vector<Wide>& terms, const std::vector<Wide>& right, Wide weight = 1.0L) {
    for (size_t row = 0; row < terms.size(); ++row) {
      for (size_t k = 0; k < terms.size(); ++k) rows_[row][k] += weight * terms[row] * terms[k];
      for (size_t k = 0; k < right.size(); ++k) {
        rows_[row][terms.size() + k] += weight * terms[row] * right[k];
      }
    }
  }

  /// Replaces the right side and keeps the left one.
  void Replace(const std::vector<Wide>& right) {
    for (size_t row = 0; row < rows_.size(); ++row) {
      rows_[row].resize(rows_.size());
      rows_[row].push_back(right[row]);
    }
  }

  /// A row for each unknown, a column for each right side.
  WideMatrix Solve() const {
    WideMatrix rows = rows_;
    const size_t unknowns = rows.size();
    for (size_t pivot = 0; pivot < unknowns; ++pivot) {
      size_t largest = pivot;
      for (size_t row = pivot; row < unknowns; ++row) {
        if (std::abs(rows[row][pivot]) > std::abs(rows[largest][pivot])) largest = row;
      }
      std::swap(rows[pivot], rows[largest]);
      for (size_t row = 0; row < unknowns; ++row) {
        if (row == pivot) continue;
        const Wide share = rows[row][pivot] / rows[pivot][pivot];
        for (size_t k = pivot; k < rows[row].size(); ++k) rows[row][k] -= share * rows[pivot][k];
      }
    }
    WideMatrix solution;
    for (size_t row = 0; row < unknowns; ++row) {
      solution.emplace_back();
      for (size_t k = unknowns; k < rows[row].size(); ++k) {
        solution.back().push_back(rows[row][k] / rows[row][row]);
      }
    }
    return solution;
  }

 private:
  WideMatrix rows_;
};

}  // namespace unit
