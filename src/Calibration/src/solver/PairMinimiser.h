/// Moves both lenses, the right camera and each view's pose to where the sum of squared distances is least.
#pragma once

#include <functional>
#include <vector>

#include "solver/PairEquations.h"

namespace velmora::solver {

struct PairOptions {
  Prior leftPrior{};
  Prior rightPrior{};
  int threads = 1;
  int mostIterations = 500;
  double firstDamping = 1e-3;  ///< as in SolveOptions
  double precision = 1e-9;
  std::function<bool(int, double)> progress;
};

struct PairSolution {
  PairEstimate estimate;
  std::vector<PairViewEquations> equations;  ///< at the estimate
  double squares = 0.0;                      ///< without the priors
  double priorSquares = 0.0;
  int iterations = 0;
  bool converged = false;
  bool usable = false;  ///< false when the start was not: a point behind a camera
};

/// The reduced equations of all views together, and the priors'.
struct ReducedPair {
  PairMatrix matrix{};
  PairStep gradient{};
  bool solvable = false;
};

/// With damping 0 the inverse of its matrix, times the noise's variance, is the covariance of what is shared.
ReducedPair SumOf(const PairSolution& solution, int first, double damping, const PairOptions& options);

/// With the equations there, where nothing has moved.
PairSolution EvaluatedAt(const std::vector<View>& left, const std::vector<View>& right,
                         const PairEstimate& estimate, const PairOptions& options);

/// The variance of a coordinate's noise: squares per degree of freedom, when so many parameters that all
/// views share were estimated.
double NoiseVariance(const PairSolution& solution, const std::vector<View>& left, int shared);

/// Levenberg-Marquardt as for one camera: the poses eliminated view by view, the same result for any number
/// of threads. The lenses' free parameters move.
PairSolution MinimisePair(const std::vector<View>& left, const std::vector<View>& right,
                          const PairEstimate& start, const PairOptions& options);

}  // namespace velmora::solver
