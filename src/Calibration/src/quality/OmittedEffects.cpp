/// Effects that a solution did not model, estimated from its residuals.
#include "quality/OmittedEffects.h"

#include <Eigen/SVD>
#include <cmath>
#include <utility>

#include "quality/EffectColumns.h"
#include "quality/EnlargedEquations.h"
#include "solver/WeakPrior.h"

namespace velmora {

using Eigen::Index;

namespace {

constexpr Index BEND = 3;
constexpr Index PROPORTIONS = 2;
constexpr Index MOTION = 2;

EffectColumns BendColumns() {
  return {BEND, [](const ObservedPoint& observed, const solver::Coordinate& coordinate, EffectRow to) {
            const double byDepth = ByTarget(observed, coordinate)[2];
            to << byDepth * observed.point.x * observed.point.x,
                byDepth * observed.point.x * observed.point.y, byDepth * observed.point.y * observed.point.y;
          }};
}

EffectColumns ProportionColumns() {
  return {PROPORTIONS, [](const ObservedPoint& observed, const solver::Coordinate& coordinate, EffectRow to) {
            const cv::Vec3d byTarget = ByTarget(observed, coordinate);
            to << byTarget[1] * observed.point.y, byTarget[0] * observed.point.y;
          }};
}

/// The target's motion along both sides of the image, for as long as reading takes it to get as many rows
/// further as the focal length has.
EffectColumns MotionColumns(const Solution& solution) {
  std::vector<cv::Matx33d> rigFromCamera;
  for (const Camera& camera : solution.rig.cameras) rigFromCamera.push_back(camera.cameraFromRig.R.t());
  return {MOTION,
          [rigFromCamera](const ObservedPoint& observed, const solver::Coordinate& coordinate, EffectRow to) {
            const cv::Vec3d byRig = rigFromCamera[observed.camera] * coordinate.byPoint;
            to << byRig[0] * observed.row, byRig[1] * observed.row;
          }};
}

/// How many terms the full model has beyond that of the camera; a fisheye's model is none of its parts.
int TermsBeyond(const Intrinsics& intrinsics) {
  return intrinsics.IsFisheye() ? 0 : FULL_PARAMETERS - intrinsics.estimated;
}

EffectColumns LensColumns(const Solution& solution, size_t camera) {
  const int estimated = solution.rig.cameras[camera].intrinsics.estimated;
  const int terms = TermsBeyond(solution.rig.cameras[camera].intrinsics);
  return {terms, [=](const ObservedPoint& observed, const solver::Coordinate& coordinate, EffectRow to) {
            for (int i = 0; i < terms; ++i) {
              to(i) = observed.camera == camera ? coordinate.byIntrinsics[static_cast<size_t>(estimated + i)]
                                                : 0.0;
            }
          }};
}

EffectColumns RadialColumns(const Solution& solution, size_t camera) {
  if (!HasRadialTerms(solution, camera)) return {0, [](const auto&, const auto&, const EffectRow&) {}};
  const RadialTerms terms = RadialTermsFor(solution, camera);
  return {RadialTerms::COUNT,
          [=](const ObservedPoint& observed, const solver::Coordinate& coordinate, EffectRow to) {
            to.setZero();
            if (observed.camera != camera) return;
            const auto derivatives = terms.Derivatives(observed.inCamera, coordinate.byPoint);
            for (int i = 0; i < RadialTerms::COUNT; ++i) to(i) = derivatives[static_cast<size_t>(i)];
          }};
}

EnlargedEquations EquationsWith(const Solution& solution, const EffectColumns& columns) {
  const EffectJacobian jacobian(solution, columns);
  const Index kept = jacobian.Shared() + jacobian.Effects();
  std::vector<solver::ReducedSystem> views;
  for (const TargetView& view : solution.views) {
    views.push_back(WithoutPose(jacobian.ProductsOf(view), kept));
    if (!views.back().solvable) break;
  }
  return EnlargedEquations(solution, std::move(views), jacobian.Effects());
}

/// Of the terms from `first` on, which have their prior; its shift is of all of the full model's parameters.
OmittedEffect LensEffect(const Solution& solution, size_t camera, EnlargedEquations& equations, Index first) {
  const int estimated = solution.rig.cameras[camera].intrinsics.estimated;
  const int terms = TermsBeyond(solution.rig.cameras[camera].intrinsics);
  if (terms == 0) return {};
  const Prior prior = solver::PriorFor(solver::SpreadOf(solution.rig.cameras[camera], camera, solution.views),
                                       NoiseVariance(solution), 1.0);
  for (int i = 0; i < terms; ++i) {
    equations.Restrain(first + i, prior.pulls[static_cast<size_t>(estimated + i)]);
  }
  OmittedEffect effect = equations.EffectOf(first, terms);
  if (effect.values.size() == 0) return effect;
  const Layout::Block block = LayoutOf(solution).cameras[camera];
  Eigen::VectorXd shift = Eigen::VectorXd::Zero(FULL_PARAMETERS);
  shift.head(block.count) = effect.shift.segment(block.intrinsics, block.count);
  shift.tail(terms) = effect.values;
  effect.shift = shift;
  return effect;
}

OmittedEffect RadialEffect(const Solution& solution, size_t camera, EnlargedEquations& equations,
                           Index first) {
  if (!HasRadialTerms(solution, camera)) return {};
  const double pull = NoiseVariance(solution) / (RadialTerms::DEVIATION * RadialTerms::DEVIATION);
  for (int i = 0; i < RadialTerms::COUNT; ++i) equations.Restrain(first + i, pull);
  OmittedEffect effect = equations.EffectOf(first, RadialTerms::COUNT);
  if (effect.values.size() == 0) return effect;
  const Layout::Block block = LayoutOf(solution).cameras[camera];
  Eigen::VectorXd shift(block.count + RadialTerms::COUNT);
  shift << effect.shift.segment(block.intrinsics, block.count), effect.values;
  effect.shift = shift;
  return effect;
}

}  // namespace

bool HasRadialTerms(const Solution& solution, size_t camera) {
  const Camera& own = solution.rig.cameras[camera];
  return own.intrinsics.estimated >= RATIONAL_PARAMETERS && !own.imageSize.empty() &&
         solver::IsWide(solver::SpreadOf(own, camera, solution.views));
}

RadialTerms RadialTermsFor(const Solution& solution, size_t camera) {
  return RadialTerms(std::atan(solver::DataRadius(solution.rig.cameras[camera], camera, solution.views)));
}

OmittedEffect OmittedBend(const Solution& solution) {
  return EquationsWith(solution, BendColumns()).EffectOf(0, BEND);
}

OmittedEffect OmittedProportions(const Solution& solution) {
  return EquationsWith(solution, ProportionColumns()).EffectOf(0, PROPORTIONS);
}

OmittedEffect OmittedLensTerms(const Solution& solution, size_t camera) {
  EnlargedEquations equations = EquationsWith(solution, LensColumns(solution, camera));
  return LensEffect(solution, camera, equations, 0);
}

OmittedEffects OmittedEffectsOf(const Solution& solution, size_t camera) {
  const EffectColumns sheet = Joined(BendColumns(), ProportionColumns());
  const EffectColumns byView = Joined(sheet, MotionColumns(solution));
  const EffectColumns lens = Joined(byView, LensColumns(solution, camera));
  EnlargedEquations equations = EquationsWith(solution, Joined(lens, RadialColumns(solution, camera)));
  OmittedEffects effects;
  // What the computation has estimated is not omitted.
  const SheetLevel level = solution.sheet.level;
  if (!HasBend(level)) effects.bend = equations.EffectOf(0, BEND);
  if (!HasProportions(level)) effects.proportions = equations.EffectOf(BEND, PROPORTIONS);
  effects.motion = equations.EffectByView(sheet.count, MOTION);
  if (!solution.sheet.HasOwnBends()) effects.bendByView = equations.EffectByView(0, BEND);
  effects.lensTerms = LensEffect(solution, camera, equations, byView.count);
  effects.radial = RadialEffect(solution, camera, equations, lens.count);
  return effects;
}

OmittedSheet OmittedSheetOf(const Solution& solution) {
  const EnlargedEquations equations = EquationsWith(solution, Joined(BendColumns(), ProportionColumns()));
  OmittedSheet sheet;
  const SheetLevel level = solution.sheet.level;
  if (!HasBend(level)) sheet.bend = equations.EffectOf(0, BEND);
  if (!HasProportions(level)) sheet.proportions = equations.EffectOf(BEND, PROPORTIONS);
  if (level == SheetLevel::Flat) sheet.both = equations.EffectOf(0, BEND + PROPORTIONS);
  return sheet;
}

OmittedEffect OmittedOffsets(const Solution& solution, const TargetOffsets& offsets) {
  const EffectColumns columns = {
      1, [&](const ObservedPoint& observed, const solver::Coordinate& coordinate, EffectRow to) {
        const cv::Vec3d byTarget = ByTarget(observed, coordinate);
        const cv::Point2d& offset = offsets.at(PlaceOnTarget(solution.sheet, observed.place, observed.point));
        to(0) = byTarget[0] * offset.x + byTarget[1] * offset.y;
      }};
  return EquationsWith(solution, columns).EffectOf(0, 1);
}

cv::Point3d PlaceOnTarget(const Sheet& sheet, size_t place, const cv::Point3d& point) {
  return sheet.IsFlat() ? point : sheet.target[place];
}

double DepthOfBend(const OmittedEffect& bend, const std::vector<cv::Point3d>& object) {
  const auto count = static_cast<Index>(object.size());
  Eigen::VectorXd depths(count);
  Eigen::MatrixXd plane(count, 3);
  for (Index i = 0; i < count; ++i) {
    const cv::Point3d& point = object[static_cast<size_t>(i)];
    depths(i) = bend.values(0) * point.x * point.x + bend.values(1) * point.x * point.y +
                bend.values(2) * point.y * point.y;
    plane.row(i) << point.x, point.y, 1.0;
  }
  const Eigen::VectorXd best = plane.jacobiSvd(Eigen::ComputeThinU | Eigen::ComputeThinV).solve(depths);
  const Eigen::VectorXd heights = depths - plane * best;
  return heights.maxCoeff() - heights.minCoeff();
}

const std::vector<cv::Point3d>& MostPointsOf(const std::vector<TargetView>& views) {
  const Observation* most = &views.front().observations.front();
  for (const TargetView& view : views) {
    for (const Observation& image : view.observations) {
      if (image.object.size() > most->object.size()) most = &image;
    }
  }
  return most->object;
}

}  // namespace velmora
