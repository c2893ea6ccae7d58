/// Solves for one lens model after the other, each from where the smaller one ended.
#include "solver/LensStages.h"

#include <algorithm>
#include <cmath>

namespace velmora::solver {

namespace {

constexpr int K1 = 4;
constexpr int K2 = 5;
constexpr int K3 = 8;
constexpr int K4 = 9;
constexpr int S1 = 12;
constexpr int TAU_X = 16;

/// Denominators below this are taken for the neighbourhood of a pole.
constexpr double LEAST_DENOMINATOR = 0.05;

double Denominator(const Lens& lens, double r2) {
  const auto& p = lens.values;
  return 1.0 + r2 * (p[K4] + r2 * (p[K4 + 1] + r2 * p[K4 + 2]));
}

double Numerator(const Lens& lens, double r2) {
  const auto& p = lens.values;
  return 1.0 + r2 * (p[K1] + r2 * (p[K2] + r2 * p[K3]));
}

/// The largest distance from the axis, at depth one, of the image's corners.
double CornerRadius(const Lens& lens, const cv::Size& imageSize) {
  const auto& p = lens.values;
  const double x = std::max(p[2], imageSize.width - 1 - p[2]) / p[0];
  const double y = std::max(p[3], imageSize.height - 1 - p[3]) / p[1];
  return std::hypot(x, y);
}

/// The largest distance from the axis, at depth one, of any point of any view.
double DataRadius(const std::vector<View>& views, const Estimate& estimate) {
  double radius = 0.0;
  for (size_t i = 0; i < views.size(); ++i) {
    const Pose& pose = estimate.poses[i];
    for (const cv::Point3d& point : views[i].object) {
      const cv::Vec3d at = pose.R * cv::Vec3d(point.x, point.y, point.z) + pose.t;
      radius = std::max(radius, std::hypot(at[0], at[1]) / at[2]);
    }
  }
  return radius;
}

/// Standard deviations that leave the coefficients free to do all that is seen of lenses: at the rim of the
/// data the denominator may change by half, prisms by a hundredth, and the sensor may lean by a degree.
///
/// `denominator` is how much stronger that of the denominator is.
Prior PriorFor(double radius, double variance, double denominator) {
  Prior prior{};
  const double r2 = radius * radius;
  const auto pull = [&](int parameter, double deviation) {
    prior[static_cast<size_t>(parameter)] = variance / (deviation * deviation);
  };
  for (int i = 0; i < 3; ++i) pull(K4 + i, 0.5 / (std::sqrt(denominator) * std::pow(r2, i + 1)));
  for (int i = 0; i < 4; ++i) pull(S1 + i, 0.01 / std::pow(r2, i % 2 + 1));
  for (int i = 0; i < 2; ++i) pull(TAU_X + i, 0.02);
  return prior;
}

class Stages {
 public:
  Stages(const std::vector<View>& views, const StageOptions& options) : views_(views), options_(options) {}

  StagedSolution Run(const Estimate& start) const {
    StagedSolution best = Solve(start, CLASSIC_PARAMETERS, Prior{});
    for (const int free : {RATIONAL_PARAMETERS, FULL_PARAMETERS}) {
      if (free <= options_.free && best.solution.usable) best = Enlarged(best, free);
    }
    return best;
  }

  StagedSolution Solve(const Estimate& start, int free, const Prior& prior) const {
    SolveOptions solve;
    solve.prior = prior;
    // The classic model has no flat valley: digits that others can be compared with cost one more step.
    if (free == options_.free && free == CLASSIC_PARAMETERS) solve.precision = 1e-11;
    // What is only a start for the next model need not be exact, and is near that one's minimum.
    if (free < options_.free) solve.precision = 1e-2;
    if (free > CLASSIC_PARAMETERS) solve.firstDamping = 1e-6;
    solve.threads = options_.threads;
    solve.progress = options_.progress;
    Estimate from = start;
    from.lens.free = free;
    return {Minimise(views_, from, solve), prior};
  }

 private:
  /// With the weak prior the larger models have one minimum, wherever the search begins.
  StagedSolution Enlarged(const StagedSolution& smaller, int free) const {
    const Estimate& from = smaller.solution.estimate;
    const double radius = DataRadius(views_, from);
    double variance = NoiseVariance(smaller.solution, views_);
    StagedSolution larger;
    for (double strength = 1.0; strength < 1e13; strength *= 3.0) {
      larger = Solve(from, free, PriorFor(radius, variance, strength));
      // The smaller model may have been far off: once more with the noise as it is now known.
      const double known = NoiseVariance(larger.solution, views_);
      if (known < 0.5 * variance) {
        variance = known;
        larger = Solve(larger.solution.estimate, free, PriorFor(radius, variance, strength));
      }
      if (IsFreeOfPoles(larger.solution.estimate.lens, options_.imageSize)) break;
    }
    return larger;
  }

  const std::vector<View>& views_;
  const StageOptions& options_;
};

}  // namespace

StagedSolution SolveStages(const std::vector<View>& views, const Estimate& start,
                           const StageOptions& options) {
  return Stages(views, options).Run(start);
}

StagedSolution SolveAgain(const std::vector<View>& views, const StagedSolution& earlier,
                          const StageOptions& options) {
  return Stages(views, options).Solve(earlier.solution.estimate, options.free, earlier.prior);
}

Prior WeakPrior(const std::vector<View>& views, const Estimate& estimate, double variance) {
  return PriorFor(DataRadius(views, estimate), variance, 1.0);
}

bool IsFreeOfPoles(const Lens& lens, const cv::Size& imageSize) {
  constexpr int STEPS = 2000;
  const double corner = CornerRadius(lens, imageSize);
  // Rays beyond three times the corner's distance are not imaged by any lens that this model describes.
  const double step = 3.0 * corner / STEPS;
  for (int i = 1; i <= STEPS; ++i) {
    const double r = step * i;
    const double denominator = Denominator(lens, r * r);
    if (denominator < LEAST_DENOMINATOR) return false;
    if (r * Numerator(lens, r * r) / denominator >= corner) return true;
  }
  return true;
}

double NoiseVariance(const Solution& solution, const std::vector<View>& views) {
  double freedom = -solution.estimate.lens.free;
  for (const View& view : views) {
    const auto kept = view.weights.empty() ? static_cast<std::ptrdiff_t>(view.object.size())
                                           : std::count_if(view.weights.begin(), view.weights.end(),
                                                           [](double weight) { return weight > 0.0; });
    freedom += 2.0 * static_cast<double>(kept) - POSE_PARAMETERS;
  }
  return solution.squares / std::max(freedom, 1.0);
}

}  // namespace velmora::solver
