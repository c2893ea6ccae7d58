/// Adjusts a rig of cameras and the poses of the target to what was observed.
#include "solver/BundleAdjustment.h"

#include <utility>

#include "solver/Eccentricity.h"
#include "solver/WeakPrior.h"

namespace velmora::solver {

namespace {

/// The first correction brings most of it; wide lenses with distortion need a second one.
constexpr int ECCENTRICITY_CORRECTIONS = 2;
/// Each strengthens a prior three times: together by thirteen powers of ten.
constexpr int MOST_STRENGTHS = 28;

CalibrationProblem ProblemFrom(const Solution& solution) {
  return {solution.rig, solution.views, solution.estimated, solution.priors};
}

void SetParameters(Rig& rig, int parameters) {
  for (Camera& camera : rig.cameras) camera.intrinsics.estimated = parameters;
}

SolveOptions SolveOptionsFrom(const BundleOptions& options) {
  SolveOptions solve;
  solve.threads = options.threads;
  solve.mostIterations = options.mostIterations;
  solve.progress = options.progress;
  return solve;
}

Solution Solve(CalibrationProblem problem, int parameters, const BundleOptions& options) {
  SolveOptions solve = SolveOptionsFrom(options);
  // The classic model has no flat valley: digits that others can be compared with cost one more step.
  if (parameters == options.parameters && parameters == CLASSIC_PARAMETERS) solve.precision = 1e-11;
  // What is only a start for the next model need not be exact, and is near that one's minimum.
  if (parameters < options.parameters) solve.precision = 1e-2;
  if (parameters > CLASSIC_PARAMETERS) solve.firstDamping = 1e-6;
  SetParameters(problem.rig, parameters);
  return Minimise(std::move(problem), solve);
}

/// Makes priors stronger until no distortion has a pole within its image.
class Enlargement {
 public:
  Enlargement(CalibrationProblem from, int parameters, double variance, const BundleOptions& options)
      : from_(std::move(from)), parameters_(parameters), variance_(variance), options_(options) {
    SetParameters(from_.rig, parameters);
    for (size_t i = 0; i < from_.rig.cameras.size(); ++i) {
      radii_.push_back(DataRadius(from_.rig.cameras[i], i, from_.views));
    }
    strengths_.assign(radii_.size(), 1.0);
  }

  /// With the weak prior the larger models have one minimum, wherever the search begins.
  Solution Run() {
    Solution larger;
    for (int i = 0; i < MOST_STRENGTHS; ++i) {
      larger = Solved(from_);
      // What it started from may have been far off: again with the noise as it is now known.
      for (double known = NoiseVariance(larger); known < 0.5 * variance_; known = NoiseVariance(larger)) {
        variance_ = known;
        larger = Solved(ProblemFrom(larger));
      }
      if (!larger.usable || options_.progress.IsGivenUp() || !StrengthenWherePoles(larger.rig)) break;
    }
    return larger;
  }

 private:
  Solution Solved(CalibrationProblem problem) const {
    problem.priors.clear();
    for (size_t i = 0; i < radii_.size(); ++i)
      problem.priors.push_back(PriorFor(radii_[i], variance_, strengths_[i]));
    return Solve(std::move(problem), parameters_, options_);
  }

  bool StrengthenWherePoles(const Rig& rig) {
    bool strengthened = false;
    for (size_t i = 0; i < rig.cameras.size(); ++i) {
      if (IsFreeOfPoles(rig.cameras[i].intrinsics, rig.cameras[i].imageSize)) continue;
      strengths_[i] *= 3.0;
      strengthened = true;
    }
    return strengthened;
  }

  CalibrationProblem from_;
  const int parameters_;
  double variance_;
  const BundleOptions& options_;
  std::vector<double> radii_;
  std::vector<double> strengths_;
};

}  // namespace

Solution SolveModels(const CalibrationProblem& start, const BundleOptions& options) {
  Solution best = Solve(start, CLASSIC_PARAMETERS, options);
  for (const int parameters : {RATIONAL_PARAMETERS, FULL_PARAMETERS}) {
    if (parameters > options.parameters || !best.usable || options.progress.IsGivenUp()) continue;
    best = Enlargement(ProblemFrom(best), parameters, NoiseVariance(best), options).Run();
  }
  return best;
}

Solution SolveModel(CalibrationProblem start, const BundleOptions& options) {
  SetParameters(start.rig, options.parameters);
  start.priors.clear();
  if (options.parameters == CLASSIC_PARAMETERS) return Solve(std::move(start), options.parameters, options);
  const double variance = NoiseVariance(EvaluatedAt(start, options.threads));
  return Enlargement(std::move(start), options.parameters, variance, options).Run();
}

Solution SolveAgain(const Solution& earlier, std::vector<TargetView> views, const BundleOptions& options) {
  CalibrationProblem problem{earlier.rig, std::move(views), earlier.estimated, earlier.priors};
  for (size_t i = 0; i < problem.views.size(); ++i) {
    problem.views[i].rigFromTarget = earlier.views[i].rigFromTarget;
  }
  if (earlier.estimated.intrinsics) return Solve(std::move(problem), options.parameters, options);
  return Minimise(std::move(problem), SolveOptionsFrom(options));
}

Solution SolvePoses(const Rig& rig, std::vector<TargetView> views) {
  return Minimise({rig, std::move(views), {false, false}, {}}, {});
}

Solution Calibrate(const CalibrationProblem& start, const BundleOptions& options) {
  Solution solution = SolveModels(start, options);
  for (int i = 0; i < ECCENTRICITY_CORRECTIONS && options.discRadius > 0.0 && solution.usable; ++i) {
    solution = SolveAgain(
        solution, CorrectedForEccentricity(start.views, solution.rig, solution.views, options.discRadius),
        options);
  }
  return solution;
}

Solution Adjust(const CalibrationProblem& start, const BundleOptions& options) {
  const auto solve = [&](CalibrationProblem problem) {
    if (problem.estimated.intrinsics) return SolveModel(std::move(problem), options);
    return Minimise(std::move(problem), SolveOptionsFrom(options));
  };
  Solution solution = solve(start);
  for (int i = 0; i < ECCENTRICITY_CORRECTIONS && options.discRadius > 0.0 && solution.usable; ++i) {
    CalibrationProblem corrected = ProblemFrom(solution);
    corrected.views = CorrectedForEccentricity(start.views, solution.rig, solution.views, options.discRadius);
    for (size_t k = 0; k < corrected.views.size(); ++k) {
      corrected.views[k].rigFromTarget = solution.views[k].rigFromTarget;
    }
    solution = solve(std::move(corrected));
  }
  return solution;
}

std::vector<Prior> WeakPriors(const Rig& rig, const std::vector<TargetView>& views, double variance) {
  std::vector<Prior> priors;
  for (size_t i = 0; i < rig.cameras.size(); ++i) {
    const bool larger = rig.cameras[i].intrinsics.estimated > CLASSIC_PARAMETERS;
    priors.push_back(larger ? PriorFor(DataRadius(rig.cameras[i], i, views), variance, 1.0) : Prior{});
  }
  return priors;
}

}  // namespace velmora::solver
