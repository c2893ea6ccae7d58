/// Moves both lenses, the right camera and each view's pose to where the sum of squared distances is least.
#include "solver/PairMinimiser.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "solver/Damping.h"
#include "solver/Threads.h"

namespace velmora::solver {

namespace {

/// What the priors pull at: strengths and values of the lenses' free parameters, zero for the other ones.
struct Pulls {
  PairStep strengths{};
  PairStep values{};
};

Pulls PullsOf(const PairEstimate& estimate, const PairOptions& options) {
  const PairLayout layout = LayoutOf(estimate);
  Pulls pulls;
  for (int i = 0; i < layout.Lenses(); ++i) {
    const bool left = i < layout.left;
    const auto own = static_cast<size_t>(left ? i : i - layout.left);
    pulls.strengths[static_cast<size_t>(i)] = left ? options.leftPrior[own] : options.rightPrior[own];
    pulls.values[static_cast<size_t>(i)] = left ? estimate.left.values[own] : estimate.right.values[own];
  }
  return pulls;
}

struct FullStep {
  PairStep shared{};
  std::vector<PoseStep> poses;
  double predicted = 0.0;
};

class Minimiser {
 public:
  Minimiser(const std::vector<View>& left, const std::vector<View>& right, const PairEstimate& start,
            const PairOptions& options)
      : left_(left), right_(right), options_(options), solution_(EvaluatedAt(left, right, start, options)) {}

  PairSolution Run() {
    if (!solution_.usable) return std::move(solution_);
    while (!solution_.converged && solution_.iterations < options_.mostIterations) {
      ++solution_.iterations;
      Iterate();
      if (options_.progress && !options_.progress(solution_.iterations, solution_.squares)) break;
    }
    return std::move(solution_);
  }

 private:
  static double Cost(const PairSolution& solution) { return solution.squares + solution.priorSquares; }

  int Shared() const { return LayoutOf(solution_.estimate).Shared(); }

  /// The diagonal of the shared block, of all views and the priors.
  PairStep Diagonal() const {
    PairStep diagonal = PullsOf(solution_.estimate, options_).strengths;
    for (const PairViewEquations& equations : solution_.equations) {
      for (int i = 0; i < Shared(); ++i) diagonal[static_cast<size_t>(i)] += equations.At(i, i);
    }
    return diagonal;
  }

  bool SharedStep(const PairStep& diagonal, PairStep& step) const {
    ReducedPair system = SumOf(solution_, 0, damping_.Value(), options_);
    if (!system.solvable) return false;
    for (int i = 0; i < Shared(); ++i) {
      const auto k = static_cast<size_t>(i);
      system.matrix[static_cast<size_t>(i * MOST_PAIR_PARAMETERS + i)] += damping_.Value() * diagonal[k];
      step[k] = -system.gradient[k];
    }
    PairSystem scaled;
    if (!scaled.Decompose(system.matrix, Shared())) return false;
    scaled.Solve(step);
    return true;
  }

  bool Propose(FullStep& step) const {
    const PairStep diagonal = Diagonal();
    if (!SharedStep(diagonal, step.shared)) return false;
    step.poses.resize(left_.size());
    std::vector<double> predicted(left_.size());
    ForRanges(left_.size(), options_.threads, [&](size_t first, size_t last) {
      for (size_t i = first; i < last; ++i) {
        step.poses[i] = PoseStepFor(solution_.equations[i], 0, damping_.Value(), step.shared);
        predicted[i] = PredictedOf(solution_.equations[i], step.shared, step.poses[i]);
      }
    });
    for (const double value : predicted) step.predicted += value;
    const Pulls pulls = PullsOf(solution_.estimate, options_);
    for (size_t i = 0; i < diagonal.size(); ++i) {
      step.predicted += damping_.Value() * diagonal[i] * step.shared[i] * step.shared[i];
      step.predicted -= pulls.strengths[i] * pulls.values[i] * step.shared[i];
    }
    return true;
  }

  /// A view's share of the reduction of the cost, but for the damping of what is shared.
  double PredictedOf(const PairViewEquations& equations, const PairStep& shared, const PoseStep& pose) const {
    double sum = 0.0;
    for (int i = 0; i < Shared(); ++i) sum -= equations.Gradient(i) * shared[static_cast<size_t>(i)];
    for (int i = 0; i < POSE_PARAMETERS; ++i) {
      const double step = pose[static_cast<size_t>(i)];
      const int row = Shared() + i;
      sum += step * (damping_.Value() * equations.At(row, row) * step - equations.Gradient(row));
    }
    return sum;
  }

  void Iterate() {
    FullStep step;
    if (!Propose(step)) {
      solution_.converged = !damping_.Reject();
      return;
    }
    const double variance = NoiseVariance(solution_, left_, Shared());
    if (step.predicted < options_.precision * variance && damping_.Value() <= options_.firstDamping) {
      solution_.converged = true;
      return;
    }
    PairSolution trial = EvaluatedAt(left_, right_, After(step), options_);
    const double gain = (Cost(solution_) - Cost(trial)) / step.predicted;
    if (trial.usable && Cost(trial) < Cost(solution_)) {
      trial.iterations = solution_.iterations;
      solution_ = std::move(trial);
      damping_.Accept(gain);
    } else {
      solution_.converged = !damping_.Reject();
    }
  }

  PairEstimate After(const FullStep& step) const {
    PairEstimate estimate = solution_.estimate;
    const PairLayout layout = LayoutOf(estimate);
    const double* shared = step.shared.data();
    for (int i = 0; i < layout.left; ++i) estimate.left.values[static_cast<size_t>(i)] += shared[i];
    for (int i = 0; i < layout.right; ++i) {
      estimate.right.values[static_cast<size_t>(i)] += shared[layout.left + i];
    }
    estimate.relative = Moved(estimate.relative, shared + layout.Lenses());
    for (size_t i = 0; i < step.poses.size(); ++i) {
      estimate.poses[i] = Moved(estimate.poses[i], step.poses[i].data());
    }
    return estimate;
  }

  const std::vector<View>& left_;
  const std::vector<View>& right_;
  const PairOptions& options_;
  PairSolution solution_;
  Damping damping_{options_.firstDamping};
};

}  // namespace

ReducedPair SumOf(const PairSolution& solution, int first, double damping, const PairOptions& options) {
  std::vector<ReducedPairView> views(solution.equations.size());
  ForRanges(views.size(), options.threads, [&](size_t from, size_t to) {
    for (size_t i = from; i < to; ++i) views[i] = Reduce(solution.equations[i], first, damping);
  });
  ReducedPair sum;
  sum.solvable = !views.empty();
  for (const ReducedPairView& view : views) {
    sum.solvable = sum.solvable && view.solvable;
    for (size_t i = 0; i < sum.matrix.size(); ++i) sum.matrix[i] += view.matrix[i];
    for (size_t i = 0; i < sum.gradient.size(); ++i) sum.gradient[i] += view.gradient[i];
  }
  const Pulls pulls = PullsOf(solution.estimate, options);
  for (int i = first; i < LayoutOf(solution.estimate).Lenses(); ++i) {
    const auto k = static_cast<size_t>(i);
    const auto row = static_cast<size_t>(i - first);
    sum.matrix[row * MOST_PAIR_PARAMETERS + row] += pulls.strengths[k];
    sum.gradient[row] += pulls.strengths[k] * pulls.values[k];
  }
  return sum;
}

PairSolution EvaluatedAt(const std::vector<View>& left, const std::vector<View>& right,
                         const PairEstimate& estimate, const PairOptions& options) {
  PairSolution solution;
  solution.estimate = estimate;
  solution.equations.resize(left.size());
  ForRanges(left.size(), options.threads, [&](size_t first, size_t last) {
    for (size_t i = first; i < last; ++i) {
      solution.equations[i] = PairEquationsOf(left[i], right[i], estimate, i);
    }
  });
  solution.usable = true;
  for (const PairViewEquations& equations : solution.equations) {
    solution.squares += equations.squares;
    solution.usable = solution.usable && equations.usable;
  }
  const Pulls pulls = PullsOf(estimate, options);
  for (size_t i = 0; i < pulls.values.size(); ++i) {
    solution.priorSquares += pulls.strengths[i] * pulls.values[i] * pulls.values[i];
  }
  return solution;
}

double NoiseVariance(const PairSolution& solution, const std::vector<View>& left, int shared) {
  double freedom = -shared;
  for (const View& view : left) freedom += 4.0 * static_cast<double>(view.object.size()) - POSE_PARAMETERS;
  return solution.squares / std::max(freedom, 1.0);
}

PairSolution MinimisePair(const std::vector<View>& left, const std::vector<View>& right,
                          const PairEstimate& start, const PairOptions& options) {
  return Minimiser(left, right, start, options).Run();
}

}  // namespace velmora::solver
