/// Solves equations of the lens, whatever the scales of its parameters are.
#pragma once

#include <array>
#include <cmath>

#include "solver/Cholesky.h"
#include "solver/NormalEquations.h"

namespace sparse {

using LensMatrix = std::array<double, static_cast<size_t>(FULL_PARAMETERS) * FULL_PARAMETERS>;

/// A symmetric positive definite matrix, decomposed after it was scaled to a diagonal of ones.
class ScaledSystem {
 public:
  /// False when the matrix is not positive definite.
  bool Decompose(LensMatrix matrix, int free) {
    for (int i = 0; i < free; ++i) {
      const double own = matrix[static_cast<size_t>(i * FULL_PARAMETERS + i)];
      if (!(own > 0.0)) return false;
      scale_[static_cast<size_t>(i)] = 1.0 / std::sqrt(own);
    }
    for (int i = 0; i < free; ++i) {
      for (int j = 0; j < free; ++j) {
        matrix[static_cast<size_t>(i * FULL_PARAMETERS + j)] *=
            scale_[static_cast<size_t>(i)] * scale_[static_cast<size_t>(j)];
      }
    }
    return cholesky_.Decompose(matrix.data(), FULL_PARAMETERS, free);
  }

  void Solve(Step& x) const {
    for (size_t i = 0; i < x.size(); ++i) x[i] *= scale_[i];
    cholesky_.Solve(x.data());
    for (size_t i = 0; i < x.size(); ++i) x[i] *= scale_[i];
  }

 private:
  Cholesky<FULL_PARAMETERS> cholesky_;
  std::array<double, FULL_PARAMETERS> scale_{};
};

}  // namespace sparse
