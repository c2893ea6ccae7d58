/// What a computation was given, and what came out of it.
#include "model/Solution.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace velmora {

namespace {

bool HasDeviations(const std::vector<TargetView>& views) {
  return std::any_of(views.begin(), views.end(), [](const TargetView& view) {
    return std::any_of(view.observations.begin(), view.observations.end(),
                       [](const Observation& observation) { return !observation.deviations.empty(); });
  });
}

}  // namespace

Layout LayoutOf(const Rig& rig, const Estimated& estimated) {
  Layout layout;
  for (const Camera& camera : rig.cameras) {
    Layout::Block block;
    block.intrinsics = layout.shared;
    block.count = estimated.intrinsics ? camera.intrinsics.estimated : 0;
    layout.shared += block.count;
    layout.cameras.push_back(block);
  }
  for (size_t i = 1; i < layout.cameras.size() && estimated.cameraPoses; ++i) {
    layout.cameras[i].pose = layout.shared;
    layout.shared += POSE_PARAMETERS;
  }
  layout.sheet = layout.shared;
  return layout;
}

Layout LayoutOf(const Rig& rig, const Estimated& estimated, const Sheet& sheet) {
  Layout layout = LayoutOf(rig, estimated);
  layout.shared += static_cast<int>(sheet.terms.Count());
  return layout;
}

Layout LayoutOf(const Solution& solution) {
  return LayoutOf(solution.rig, solution.estimated, solution.sheet);
}

double CountOf(const std::vector<TargetView>& views) {
  double count = 0.0;
  for (const TargetView& view : views) count += CountOf(view.observations);
  return count;
}

double PixelCostOf(const Solution& solution) {
  if (!HasDeviations(solution.views)) return solution.cost;
  double cost = 0.0;
  for (const ViewEquations& view : solution.equations) {
    cost += std::accumulate(view.pixelCosts.begin(), view.pixelCosts.end(), 0.0);
  }
  return cost;
}

double RmsOf(const Solution& solution) {
  return std::sqrt(PixelCostOf(solution) / CountOf(solution.views));
}

double RmsOfCamera(const Solution& solution, size_t camera) {
  double cost = 0.0;
  double points = 0.0;
  for (size_t i = 0; i < solution.views.size(); ++i) {
    cost += solution.equations[i].pixelCosts[camera];
    points += solution.views[i].observations[camera].Count();
  }
  return std::sqrt(cost / std::max(points, 1.0));
}

double RmsOfImage(const Solution& solution, size_t view, size_t camera) {
  const double points = solution.views[view].observations[camera].Count();
  return points > 0.0 ? std::sqrt(solution.equations[view].pixelCosts[camera] / points) : -1.0;
}

double NoiseVariance(const Solution& solution) {
  return NoiseVariance(solution.cost, solution.views, LayoutOf(solution).sheet + solution.sheet.counted);
}

double NoiseVariance(double cost, const std::vector<TargetView>& views, double shared) {
  const double unknowns = shared + POSE_PARAMETERS * static_cast<double>(views.size());
  return cost / std::max(2.0 * CountOf(views) - unknowns, 1.0);
}

}  // namespace velmora
