/// Moves what all views share, and each view's pose, to where the sum of squared distances is least.
#pragma once

#include <functional>
#include <vector>

#include "solver/NormalEquations.h"

namespace velmora::solver {

/// What was seen, in terms of parameters that all views share (a camera's lens, or how two cameras stand to
/// each other) and of a pose for each view.
class Measurements {
 public:
  virtual ~Measurements() = default;
  virtual size_t Views() const = 0;
  virtual int Shared() const = 0;
  /// Numbers measured.
  virtual double Coordinates() const = 0;
  /// Called from several threads.
  virtual ViewEquations EquationsAt(size_t view, const Estimate& estimate) const = 0;
  virtual void MoveShared(Estimate& estimate, const Step& step) const = 0;
};

struct SolveOptions {
  Prior prior{};
  int threads = 1;
  int mostIterations = 500;
  double firstDamping = 1e-3;  ///< shares of the diagonal
  /// Reductions of the sum of squares below this share of the noise's variance end the search.
  double precision = 1e-9;
  /// Called after each iteration with its number and the sum of squares; false ends the computation there.
  std::function<bool(int, double)> progress;
};

struct Solution {
  Estimate estimate;
  std::vector<ViewEquations> equations;  ///< at the estimate
  double squares = 0.0;                  ///< weighted, without the prior
  double priorSquares = 0.0;
  int iterations = 0;
  bool converged = false;
  bool usable = false;  ///< false when the start was not: a point behind the camera
};

/// The reduced equations of all views together, and the prior's.
struct ReducedSystem {
  std::array<double, static_cast<size_t>(FULL_PARAMETERS) * FULL_PARAMETERS> matrix{};
  std::array<double, FULL_PARAMETERS> gradient{};
  bool solvable = false;
};

/// Undamped: the inverse of its matrix, times the noise's variance, is the lens' covariance.
ReducedSystem SystemOf(const std::vector<ViewEquations>& equations, const Lens& lens, const Prior& prior);

/// Levenberg-Marquardt with the poses eliminated view by view. The result is the same for any number of
/// threads: each view is worked out by itself and sums are taken in the order of the views.
Solution Minimise(const Measurements& measurements, const Estimate& start, const SolveOptions& options);

/// Of one camera.
Solution Minimise(const std::vector<View>& views, const Estimate& start, const SolveOptions& options);

}  // namespace velmora::solver
