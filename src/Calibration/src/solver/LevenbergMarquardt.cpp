/// Moves what all views share, and each view's pose, to where the sum of squared distances is least.
#include "solver/LevenbergMarquardt.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "solver/Cholesky.h"
#include "solver/Damping.h"
#include "solver/Threads.h"

namespace velmora::solver {

namespace {

size_t Index(int row, int column) {
  return static_cast<size_t>(row * FULL_PARAMETERS + column);
}

/// A step of everything, and by how much it should reduce the sum of squares.
struct FullStep {
  Step lens{};
  std::vector<PoseStep> poses;
  double predicted = 0.0;
};

class Minimiser {
 public:
  Minimiser(const Measurements& measurements, const Estimate& start, const SolveOptions& options)
      : measurements_(measurements), options_(options), solution_(Evaluated(start)) {}

  Solution Run() {
    if (!solution_.usable) return std::move(solution_);
    while (!solution_.converged && solution_.iterations < options_.mostIterations) {
      ++solution_.iterations;
      Iterate();
      if (options_.progress && !options_.progress(solution_.iterations, solution_.squares)) break;
    }
    return std::move(solution_);
  }

 private:
  Solution Evaluated(const Estimate& estimate) const {
    Solution solution;
    solution.estimate = estimate;
    solution.equations.resize(Views());
    ForRanges(Views(), options_.threads, [&](size_t first, size_t last) {
      for (size_t i = first; i < last; ++i) {
        solution.equations[i] = measurements_.EquationsAt(i, estimate);
      }
    });
    solution.usable = true;
    for (const ViewEquations& equations : solution.equations) {
      solution.squares += equations.squares;
      solution.usable = solution.usable && equations.usable;
    }
    for (size_t i = 0; i < options_.prior.size(); ++i) {
      solution.priorSquares += options_.prior[i] * estimate.lens.values[i] * estimate.lens.values[i];
    }
    return solution;
  }

  double Cost(const Solution& solution) const { return solution.squares + solution.priorSquares; }

  size_t Views() const { return measurements_.Views(); }
  int Free() const { return measurements_.Shared(); }

  /// Of a coordinate of a pixel, as far as the present estimate can tell.
  double Variance() const {
    const double unknowns = Free() + POSE_PARAMETERS * static_cast<double>(Views());
    return solution_.squares / std::max(measurements_.Coordinates() - unknowns, 1.0);
  }

  /// The diagonal of the lens' own block, of all views and the prior.
  std::array<double, FULL_PARAMETERS> LensDiagonal() const {
    std::array<double, FULL_PARAMETERS> diagonal = options_.prior;
    for (const ViewEquations& equations : solution_.equations) {
      for (int i = 0; i < Free(); ++i) diagonal[static_cast<size_t>(i)] += equations.At(i, i);
    }
    return diagonal;
  }

  /// False when the damped equations cannot be solved.
  bool LensStep(Step& step) const {
    ReducedSystem system;
    if (!Sum(system)) return false;
    const auto diagonal = LensDiagonal();
    // Scaled to a diagonal of one: the parameters' sizes lie many orders of magnitude apart.
    std::array<double, FULL_PARAMETERS> scale{};
    for (int i = 0; i < Free(); ++i) {
      double& own = system.matrix[Index(i, i)];
      own += damping_.Value() * diagonal[static_cast<size_t>(i)];
      if (!(own > 0.0)) return false;
      scale[static_cast<size_t>(i)] = 1.0 / std::sqrt(own);
    }
    for (int i = 0; i < Free(); ++i) {
      for (int j = 0; j < Free(); ++j) {
        system.matrix[Index(i, j)] *= scale[static_cast<size_t>(i)] * scale[static_cast<size_t>(j)];
      }
      step[static_cast<size_t>(i)] = -system.gradient[static_cast<size_t>(i)] * scale[static_cast<size_t>(i)];
    }
    Cholesky<FULL_PARAMETERS> cholesky;
    if (!cholesky.Decompose(system.matrix.data(), FULL_PARAMETERS, Free())) return false;
    cholesky.Solve(step.data());
    for (size_t i = 0; i < scale.size(); ++i) step[i] *= scale[i];
    return true;
  }

  bool Sum(ReducedSystem& system) const {
    const size_t count = Views();
    std::vector<ReducedView> reduced(count);
    ForRanges(count, options_.threads, [&](size_t first, size_t last) {
      for (size_t i = first; i < last; ++i) {
        reduced[i] = Reduce(solution_.equations[i], Free(), damping_.Value());
      }
    });
    for (const ReducedView& view : reduced) {
      if (!view.solvable) return false;
      for (size_t i = 0; i < system.matrix.size(); ++i) system.matrix[i] += view.matrix[i];
      for (size_t i = 0; i < system.gradient.size(); ++i) system.gradient[i] += view.gradient[i];
    }
    for (int i = 0; i < Free(); ++i) {
      const auto k = static_cast<size_t>(i);
      system.matrix[Index(i, i)] += options_.prior[k];
      system.gradient[k] += options_.prior[k] * solution_.estimate.lens.values[k];
    }
    return true;
  }

  bool Propose(FullStep& step) const {
    if (!LensStep(step.lens)) return false;
    step.poses.resize(Views());
    std::vector<double> predicted(Views());
    ForRanges(Views(), options_.threads, [&](size_t first, size_t last) {
      for (size_t i = first; i < last; ++i) {
        step.poses[i] = PoseStepFor(solution_.equations[i], Free(), damping_.Value(), step.lens);
        predicted[i] = PredictedOf(solution_.equations[i], step.lens, step.poses[i]);
      }
    });
    for (const double value : predicted) step.predicted += value;
    const auto& values = solution_.estimate.lens.values;
    const auto diagonal = LensDiagonal();
    for (size_t i = 0; i < values.size(); ++i) {
      step.predicted += damping_.Value() * diagonal[i] * step.lens[i] * step.lens[i];
      step.predicted -= options_.prior[i] * values[i] * step.lens[i];
    }
    return true;
  }

  /// With (H + damping D) d = -g, the reduction is d (damping D d - g): a view's share of it, but for the
  /// damping of the lens.
  double PredictedOf(const ViewEquations& equations, const Step& lens, const PoseStep& pose) const {
    const int residual = Free() + POSE_PARAMETERS;
    double sum = 0.0;
    for (int i = 0; i < Free(); ++i) sum -= equations.At(i, residual) * lens[static_cast<size_t>(i)];
    for (int i = 0; i < POSE_PARAMETERS; ++i) {
      const double step = pose[static_cast<size_t>(i)];
      const int row = Free() + i;
      sum += step * (damping_.Value() * equations.At(row, row) * step - equations.At(row, residual));
    }
    return sum;
  }

  void Iterate() {
    FullStep step;
    if (!Propose(step)) {
      solution_.converged = !damping_.Reject();
      return;
    }
    if (step.predicted < options_.precision * Variance() && damping_.Value() <= options_.firstDamping) {
      solution_.converged = true;
      return;
    }
    Solution trial = Evaluated(After(step));
    const double gain = (Cost(solution_) - Cost(trial)) / step.predicted;
    if (trial.usable && Cost(trial) < Cost(solution_)) {
      trial.iterations = solution_.iterations;
      solution_ = std::move(trial);
      damping_.Accept(gain);
    } else {
      solution_.converged = !damping_.Reject();
    }
  }

  Estimate After(const FullStep& step) const {
    Estimate estimate = solution_.estimate;
    measurements_.MoveShared(estimate, step.lens);
    for (size_t i = 0; i < step.poses.size(); ++i) {
      estimate.poses[i] = Moved(estimate.poses[i], step.poses[i].data());
    }
    return estimate;
  }

  const Measurements& measurements_;
  const SolveOptions& options_;
  Solution solution_;
  Damping damping_{options_.firstDamping};
};

/// Views of one camera.
class CameraMeasurements : public Measurements {
 public:
  CameraMeasurements(const std::vector<View>& views, int free) : views_(views), free_(free) {
    for (const View& view : views) coordinates_ += 2.0 * static_cast<double>(view.object.size());
  }

  size_t Views() const override { return views_.size(); }
  int Shared() const override { return free_; }
  double Coordinates() const override { return coordinates_; }
  ViewEquations EquationsAt(size_t view, const Estimate& estimate) const override {
    return EquationsOf(views_[view], estimate.lens, estimate.poses[view]);
  }
  void MoveShared(Estimate& estimate, const Step& step) const override {
    for (size_t i = 0; i < step.size(); ++i) estimate.lens.values[i] += step[i];
  }

 private:
  const std::vector<View>& views_;
  const int free_;
  double coordinates_ = 0.0;
};

}  // namespace

ReducedSystem SystemOf(const std::vector<ViewEquations>& equations, const Lens& lens, const Prior& prior) {
  ReducedSystem system;
  system.solvable = !equations.empty();
  for (const ViewEquations& view : equations) {
    const ReducedView reduced = Reduce(view, lens.free, 0.0);
    system.solvable = system.solvable && reduced.solvable;
    for (size_t i = 0; i < system.matrix.size(); ++i) system.matrix[i] += reduced.matrix[i];
    for (size_t i = 0; i < system.gradient.size(); ++i) system.gradient[i] += reduced.gradient[i];
  }
  for (int i = 0; i < lens.free; ++i) {
    const auto k = static_cast<size_t>(i);
    system.matrix[Index(i, i)] += prior[k];
    system.gradient[k] += prior[k] * lens.values[k];
  }
  return system;
}

Solution Minimise(const Measurements& measurements, const Estimate& start, const SolveOptions& options) {
  return Minimiser(measurements, start, options).Run();
}

Solution Minimise(const std::vector<View>& views, const Estimate& start, const SolveOptions& options) {
  return Minimise(CameraMeasurements(views, start.lens.free), start, options);
}

}  // namespace velmora::solver
