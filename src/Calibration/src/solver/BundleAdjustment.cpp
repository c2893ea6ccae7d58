/// Adjusts a rig of cameras and the poses of the target to what was observed.
#include "solver/BundleAdjustment.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "solver/Eccentricity.h"
#include "solver/WeakPrior.h"

namespace velmora::solver {

namespace {

/// The first correction brings most of it; wide lenses with distortion need a second one.
constexpr int ECCENTRICITY_CORRECTIONS = 2;
/// Each strengthens a prior three times: together by thirteen powers of ten.
constexpr int MOST_STRENGTHS = 28;
/// None is needed where the start was near, and two nearly everywhere else.
constexpr int MOST_RENEWALS = 6;
/// What of the cost a larger model may have at most.
constexpr double LOST = 2.0;
/// Before the model is known to fit, residuals beyond this share of the image's width are not all noise.
constexpr double BELIEVED_NOISE = 0.001;

CalibrationProblem ProblemFrom(const Solution& solution) {
  return {solution.rig, solution.views, solution.estimated, solution.priors, solution.sheet};
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

/// Goes from a model to a larger one, with priors that are made stronger until no distortion has a pole
/// within its image.
class Enlargement {
 public:
  Enlargement(const Solution& from, int parameters, const BundleOptions& options)
      : from_(ProblemFrom(from)), mostCost_(LOST * from.cost), parameters_(parameters), options_(options) {
    SetParameters(from_.rig, parameters);
    const double width = from_.rig.cameras.front().imageSize.width;
    firstVariance_ = std::min(NoiseVariance(from), std::pow(BELIEVED_NOISE * width, 2));
  }

  Solution Run() {
    Solution larger = Searched();
    if (!smooth_ || options_.progress.IsGivenUp() || !IsLost(larger)) return larger;
    // Where views do not determine how far a camera sees, a smooth curve may lead nowhere.
    smooth_ = false;
    return Searched();
  }

 private:
  /// With the weak prior the larger models have one minimum, wherever the search begins.
  Solution Searched() {
    Solution larger;
    strengths_.assign(from_.rig.cameras.size(), 1.0);
    for (int i = 0; i < MOST_STRENGTHS; ++i) {
      spreads_ = SpreadsOf(from_.rig, from_.views);
      variance_ = firstVariance_;
      larger = Solved(from_);
      // A search that did not settle tells nothing that the next one could go by.
      for (int again = 0; again < MOST_RENEWALS && larger.converged && Renew(larger); ++again) {
        larger = Solved(ProblemFrom(larger));
      }
      if (options_.progress.IsGivenUp() || IsLost(larger) || !StrengthenWherePoles(larger.rig)) break;
    }
    return larger;
  }

  /// A larger model explains no less than what it came from, but for what the prior takes.
  bool IsLost(const Solution& solution) const { return !solution.usable || !(solution.cost <= mostCost_); }

  Solution Solved(CalibrationProblem problem) const {
    problem.priors.clear();
    for (size_t i = 0; i < spreads_.size(); ++i) {
      problem.priors.push_back(PriorFor(spreads_[i], variance_, strengths_[i]));
      if (!smooth_) problem.priors.back().smoothness = 0.0;
    }
    return Solve(std::move(problem), parameters_, options_);
  }

  static std::vector<Spread> SpreadsOf(const Rig& rig, const std::vector<TargetView>& views) {
    std::vector<Spread> spreads;
    for (size_t i = 0; i < rig.cameras.size(); ++i) spreads.push_back(SpreadOf(rig.cameras[i], i, views));
    return spreads;
  }

  /// What it started from may have been far off: true when the noise and how far the cameras see, as they are
  /// now known, are others than the priors were made for.
  bool Renew(const Solution& solution) {
    const std::vector<Spread> spreads = SpreadsOf(solution.rig, solution.views);
    const double variance = NoiseVariance(solution);
    bool isNew = variance < 0.5 * variance_;
    for (size_t i = 0; i < spreads.size(); ++i) {
      // Narrow images hardly need to know, and may not determine it: the focal length would wander off.
      if (!smooth_ || !IsWide(spreads_[i])) continue;
      isNew = isNew || IsOther(variance, variance_) || IsOther(spreads[i].radius, spreads_[i].radius) ||
              IsOther(spreads[i].angle, spreads_[i].angle);
      spreads_[i] = spreads[i];
    }
    variance_ = variance;
    return isNew;
  }

  static bool IsOther(double now, double before) { return !(std::abs(now - before) <= 0.1 * before); }

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
  const double mostCost_;
  const int parameters_;
  const BundleOptions& options_;
  double firstVariance_;  ///< of the noise, as it was known before
  bool smooth_ = true;    ///< whether priors are of the curve, too
  double variance_ = 0.0;
  std::vector<Spread> spreads_;
  std::vector<double> strengths_;
};

}  // namespace

Solution SolveModels(const CalibrationProblem& start, const BundleOptions& options) {
  return SolveLargerModels(Solve(start, CLASSIC_PARAMETERS, options), options);
}

Solution SolveLargerModels(Solution classic, const BundleOptions& options) {
  Solution best = std::move(classic);
  for (const int parameters : {RATIONAL_PARAMETERS, FULL_PARAMETERS}) {
    if (parameters > options.parameters || !best.usable || options.progress.IsGivenUp()) continue;
    best = Enlargement(best, parameters, options).Run();
  }
  return best;
}

Solution SolveFisheye(CalibrationProblem start, const BundleOptions& options) {
  SolveOptions solve = SolveOptionsFrom(options);
  Solution solution;
  for (const int parameters : {int{CX}, FISHEYE_K + 2, FISHEYE_PARAMETERS}) {
    solve.precision = parameters < FISHEYE_PARAMETERS ? 1e-2 : 1e-9;
    SetParameters(start.rig, parameters);
    solution = Minimise(std::move(start), solve);
    if (!solution.usable || options.progress.IsGivenUp()) break;
    start = ProblemFrom(solution);
  }
  return solution;
}

Solution SolveModel(CalibrationProblem start, const BundleOptions& options) {
  SetParameters(start.rig, options.parameters);
  start.priors.clear();
  const bool fisheye = start.rig.cameras.front().intrinsics.IsFisheye();
  if (fisheye || options.parameters == CLASSIC_PARAMETERS)
    return Solve(std::move(start), options.parameters, options);
  return Enlargement(EvaluatedAt(start, options.threads), options.parameters, options).Run();
}

Solution SolveAgain(const Solution& earlier, std::vector<TargetView> views, const BundleOptions& options) {
  CalibrationProblem problem{earlier.rig, std::move(views), earlier.estimated, earlier.priors, earlier.sheet};
  for (size_t i = 0; i < problem.views.size(); ++i) {
    problem.views[i].rigFromTarget = earlier.views[i].rigFromTarget;
    problem.views[i].bend = earlier.views[i].bend;
  }
  if (earlier.estimated.intrinsics) return Solve(std::move(problem), options.parameters, options);
  return Minimise(std::move(problem), SolveOptionsFrom(options));
}

Solution SolvePoses(const Rig& rig, std::vector<TargetView> views, const Sheet& sheet) {
  return Minimise({rig, std::move(views), {false, false}, {}, sheet}, {});
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
    priors.push_back(larger ? PriorFor(SpreadOf(rig.cameras[i], i, views), variance, 1.0) : Prior{});
  }
  return priors;
}

}  // namespace velmora::solver
