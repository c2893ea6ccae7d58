/// Moves what all views share, and each view's pose, to where the cost is least.
#pragma once

#include "solver/NormalEquations.h"
#include "solver/ProgressMonitor.h"

namespace velmora::solver {

struct SolveOptions {
  int threads = 1;
  int mostIterations = 500;
  double firstDamping = 1e-3;  ///< shares of the diagonal
  /// Reductions of the cost below this share of the noise's variance end the search.
  double precision = 1e-9;
  ProgressMonitor progress;  ///< told after each iteration; once it is given up there is none any more
};

/// Levenberg-Marquardt with the poses eliminated view by view. The result is the same for any number of
/// threads.
Solution Minimise(CalibrationProblem problem, const SolveOptions& options);

/// The solution that the problem's start would be, with the equations there.
Solution EvaluatedAt(CalibrationProblem problem, int threads = 1);

}  // namespace velmora::solver
