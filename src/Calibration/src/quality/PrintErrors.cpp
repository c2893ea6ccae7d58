/// Discs that are not printed where they should be.
#include "quality/PrintErrors.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <opencv2/core.hpp>

#include "quality/EnlargedEquations.h"
#include "solver/PoseGroups.h"
#include "solver/Projection.h"

namespace velmora {

namespace {

/// Offsets that a view of a plane cannot tell from another pose and another shape of the pixels.
constexpr int OF_A_HOMOGRAPHY = 8;

/// What all views say of where a point lies on the sheet.
struct Block {
  cv::Matx22d information = cv::Matx22d::zeros();
  cv::Vec2d slope;

  void Add(const cv::Vec2d& derivative, double residual, double weight) {
    information += weight * (derivative * derivative.t());
    slope += weight * residual * derivative;
  }
};

using Places = std::map<cv::Point3d, Block, TargetOrder>;

void Add(const Observation& observation, const RigidTransform& pose, const solver::Projection& projection,
         const Sheet& sheet, Places& places) {
  for (size_t k = 0; k < observation.object.size(); ++k) {
    solver::Coordinate u;
    solver::Coordinate v;
    if (!projection.Differentiate(pose * observation.object[k], u, v)) continue;
    const cv::Vec3d alongU = pose.R.t() * u.byPoint;
    const cv::Vec3d alongV = pose.R.t() * v.byPoint;
    const double weight = observation.Weight(k);
    Block& place = places[PlaceOnTarget(sheet, observation.Place(k), observation.object[k])];
    place.Add({alongU[0], alongU[1]}, u.value - observation.image[k].x, weight);
    place.Add({alongV[0], alongV[1]}, v.value - observation.image[k].y, weight);
  }
}

/// Of each point that was observed; none when the views do not determine all of them.
Places PlacesOf(const Solution& solution) {
  std::vector<solver::Projection> projections;
  for (const Camera& camera : solution.rig.cameras) projections.emplace_back(camera.intrinsics);
  Places places;
  for (const TargetView& view : solution.views) {
    for (size_t camera = 0; camera < view.observations.size(); ++camera) {
      const RigidTransform pose = solution.rig.cameras[camera].cameraFromRig * view.rigFromTarget;
      Add(view.observations[camera], pose, projections[camera], solution.sheet, places);
    }
  }
  const bool known = std::all_of(places.begin(), places.end(), [](const auto& place) {
    return cv::determinant(place.second.information) > 0.0;
  });
  return known ? places : Places();
}

}  // namespace

OmittedEffect OmittedPrintErrors(const Solution& solution) {
  OmittedEffect effect;
  if (HasFreePoints(solution.sheet.level)) return effect;  // they are where they were found
  const Places places = PlacesOf(solution);
  const auto degrees = 2 * static_cast<Eigen::Index>(places.size()) - OF_A_HOMOGRAPHY;
  if (degrees <= 0) return effect;
  const double variance = NoiseVariance(solution);
  TargetOffsets offsets;
  double squares = 0.0;
  double size = 0.0;
  for (const auto& [point, block] : places) {
    const cv::Matx22d inverse = block.information.inv();
    const cv::Vec2d offset = -(inverse * block.slope);
    offsets[point] = {offset[0], offset[1]};
    squares -= block.slope.dot(offset) / variance;
    size += offset.dot(offset) - variance * cv::trace(inverse);
  }
  // Views of like poses repeat each other's errors.
  const auto poses =
      static_cast<double>(solver::CountOfGroups(solver::GroupsOf(solution.views, solution.rig)));
  squares *= poses / static_cast<double>(solution.views.size());
  if (!(squares > Threshold(degrees))) return effect;
  const OmittedEffect printed = OmittedOffsets(solution, offsets);
  if (printed.values.size() == 0 || !printed.significant) return effect;
  effect.values = Eigen::VectorXd::Constant(
      1, printed.values(0) * std::sqrt(std::max(size, 0.0) / (2.0 * static_cast<double>(places.size()))));
  effect.shift = printed.shift;
  effect.costReduction = squares;
  effect.chance = static_cast<double>(degrees);
  effect.significant = true;
  return effect;
}

}  // namespace velmora
