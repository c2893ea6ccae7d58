/// Solves equations of a lens or of a pair of cameras, whatever the scales of their parameters are.
#pragma once

#include <array>
#include <cmath>

#include "solver/Cholesky.h"
#include "solver/NormalEquations.h"

namespace velmora::solver {

/// A symmetric positive definite matrix of at most MOST rows, decomposed after it was scaled to a diagonal of
/// ones.
template <int MOST>
class ScaledSystemOf {
 public:
  using Matrix = std::array<double, static_cast<size_t>(MOST) * MOST>;
  using Vector = std::array<double, MOST>;

  /// Of the first `free` rows. False when the matrix is not positive definite.
  bool Decompose(Matrix matrix, int free) {
    for (int i = 0; i < free; ++i) {
      const double own = matrix[static_cast<size_t>(i * MOST + i)];
      if (!(own > 0.0)) return false;
      scale_[static_cast<size_t>(i)] = 1.0 / std::sqrt(own);
    }
    for (int i = 0; i < free; ++i) {
      for (int j = 0; j < free; ++j) {
        matrix[static_cast<size_t>(i * MOST + j)] *=
            scale_[static_cast<size_t>(i)] * scale_[static_cast<size_t>(j)];
      }
    }
    return cholesky_.Decompose(matrix.data(), MOST, free);
  }

  void Solve(Vector& x) const {
    for (size_t i = 0; i < x.size(); ++i) x[i] *= scale_[i];
    cholesky_.Solve(x.data());
    for (size_t i = 0; i < x.size(); ++i) x[i] *= scale_[i];
  }

 private:
  Cholesky<MOST> cholesky_;
  Vector scale_{};
};

using ScaledSystem = ScaledSystemOf<FULL_PARAMETERS>;
using LensMatrix = ScaledSystem::Matrix;

}  // namespace velmora::solver
