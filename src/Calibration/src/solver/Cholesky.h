/// Solves small symmetric positive definite systems.
#pragma once

#include <array>
#include <cmath>

namespace velmora::solver {

/// L L^T of a matrix of at most N rows, of which the lower triangle is read.
template <int N>
class Cholesky {
 public:
  /// False when the matrix is not positive definite, or so nearly singular that nothing is left of a pivot.
  bool Decompose(const double* matrix, int stride, int rows) {
    rows_ = rows;
    for (int i = 0; i < rows; ++i) {
      for (int j = 0; j <= i; ++j) {
        double sum = matrix[i * stride + j];
        for (int k = 0; k < j; ++k) sum -= At(i, k) * At(j, k);
        if (i != j) {
          At(i, j) = sum * inverse_[static_cast<size_t>(j)];
        } else if (sum > SINGULAR * matrix[i * stride + i]) {
          inverse_[static_cast<size_t>(i)] = 1.0 / std::sqrt(sum);
        } else {
          return false;
        }
      }
    }
    return true;
  }

  /// x = L^-1 x.
  void Forward(double* x) const {
    for (int i = 0; i < rows_; ++i) {
      for (int k = 0; k < i; ++k) x[i] -= At(i, k) * x[k];
      x[i] *= inverse_[static_cast<size_t>(i)];
    }
  }

  /// x = L^-T x.
  void Backward(double* x) const {
    for (int i = rows_ - 1; i >= 0; --i) {
      for (int k = i + 1; k < rows_; ++k) x[i] -= At(k, i) * x[k];
      x[i] *= inverse_[static_cast<size_t>(i)];
    }
  }

  void Solve(double* x) const {
    Forward(x);
    Backward(x);
  }

 private:
  static constexpr double SINGULAR = 1e-15;

  double& At(int row, int column) { return lower_[static_cast<size_t>(row * N + column)]; }
  double At(int row, int column) const { return lower_[static_cast<size_t>(row * N + column)]; }

  std::array<double, static_cast<size_t>(N) * N> lower_{};  ///< but for the diagonal
  std::array<double, N> inverse_{};                         ///< of the diagonal
  int rows_ = 0;
};

}  // namespace velmora::solver
