/// How well the images that several cameras took of a view agree.
#include "quality/Disagreement.h"

#include <Eigen/Core>
#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

#include "foundation/Median.h"
#include "solver/NormalEquations.h"

namespace velmora {

namespace {

constexpr double MOVED = 3.0;         // images of a view apart, in units of the noise
constexpr double MOVED_BESIDE = 3.0;  // the same over the median of all views

/// The squared residuals that a camera's own pose would save, to first order.
double SavedBy(const Observation& observation, const Camera& camera, const RigidTransform& cameraFromTarget) {
  Rig alone;
  alone.cameras.resize(1);
  alone.cameras.front().intrinsics = camera.intrinsics;
  const TargetView view{cameraFromTarget, {observation}};
  const ViewEquations equations =
      solver::EquationsOf(view, cameraFromTarget, alone, LayoutOf(alone, {false, false}));
  solver::PoseStep step;
  if (!equations.usable || !solver::PoseStepFor(equations, 0.0, {}, step)) return 0.0;
  return -step.dot(solver::PoseGradientOf(equations));
}

}  // namespace

std::vector<double> DisagreementsOf(const Solution& solution) {
  std::vector<double> saved;
  std::vector<double> images;
  double cost = solution.cost;
  double freedom = 0.0;
  for (size_t i = 0; i < solution.views.size(); ++i) {
    const TargetView& view = solution.views[i];
    saved.push_back(0.0);
    images.push_back(0.0);
    for (size_t camera = 0; camera < view.observations.size(); ++camera) {
      if (view.observations[camera].IsEmpty()) continue;
      const Camera& own = solution.rig.cameras[camera];
      saved.back() += SavedBy(view.observations[camera], own, own.cameraFromRig * view.rigFromTarget);
      images.back() += 1.0;
    }
    cost -= std::min(saved.back(), solution.equations[i].cost);
    freedom += 2.0 * CountOf(view.observations) - POSE_PARAMETERS * images.back();
  }
  // Without noise there is nothing to compare with but rounding.
  const double variance = std::max(cost / std::max(freedom, 1.0), std::numeric_limits<double>::min());
  for (size_t i = 0; i < saved.size(); ++i) {
    const double degrees = POSE_PARAMETERS * std::max(images[i] - 1.0, 1.0);
    saved[i] = images[i] > 1.0 ? std::sqrt(std::max(saved[i], 0.0) / (degrees * variance)) : 0.0;
  }
  return saved;
}

double UsualDisagreement(const std::vector<double>& disagreements) {
  std::vector<double> known;
  std::copy_if(disagreements.begin(), disagreements.end(), std::back_inserter(known),
               [](double value) { return value > 0.0; });
  return MedianOf(known);
}

std::vector<PairVerdict::Disagreement> MovedViews(const std::vector<double>& disagreements) {
  const double usual = UsualDisagreement(disagreements);
  std::vector<PairVerdict::Disagreement> moved;
  for (size_t i = 0; i < disagreements.size(); ++i) {
    if (disagreements[i] > MOVED && disagreements[i] > MOVED_BESIDE * usual)
      moved.push_back({i, disagreements[i]});
  }
  return moved;
}

}  // namespace velmora
