/// Moves what all views share, and each view's pose, to where the cost is least.
#pragma once

#include <functional>

#include "solver/NormalEquations.h"

namespace velmora::solver {

struct SolveOptions {
  int threads = 1;
  int mostIterations = 500;
  double firstDamping = 1e-3;  ///< shares of the diagonal
  /// Reductions of the cost below this share of the noise's variance end the search.
  double precision = 1e-9;
  /// Called after each iteration with its number and the cost; false ends the computation there.
  std::function<bool(int, double)> progress;
};

/// Levenberg-Marquardt with the poses eliminated view by view. The result is the same for any number of
/// threads.
Solution Minimise(CalibrationProblem problem, const SolveOptions& options);

/// The solution that the problem's start would be, with the equations there.
Solution EvaluatedAt(CalibrationProblem problem, int threads = 1);

}  // namespace velmora::solver
