/// Chooses which shape a sheet is taken to have.
#include "quality/SheetChoice.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <utility>

#include "model/LensModel.h"
#include "quality/PoseDeviations.h"
#include "quality/ProjectionUncertainty.h"
#include "solver/Covariance.h"
#include "solver/OpenCvMatrices.h"
#include "solver/PoseGroups.h"
#include "solver/SheetCalibration.h"
#include "solver/Target.h"

namespace velmora {

namespace {

using solver::SheetRung;

/// The standard deviation of a jackknife's deviation is about a share of this over the root of the poses.
constexpr double CHANCE = 0.85;
/// A result with so much more noise than another one of the same views is not of the same minimum.
constexpr double ASTRAY = 2.0;

/// What is known of where cameras of known intrinsics stand, in radians and shares of the baseline.
double UncertaintyOfPoses(const Solution& solution, const Eigen::MatrixXd& formal,
                          const Eigen::MatrixXd& jackknife) {
  constexpr double RADIANS = CV_PI / 180.0;
  const Layout layout = LayoutOf(solution);
  double squares = 0.0;
  for (size_t i = 1; i < solution.rig.cameras.size(); ++i) {
    const cv::Vec3d& T = solution.rig.cameras[i].cameraFromRig.t;
    const int pose = layout.cameras[i].pose;
    const PairVerdict::Deviations known =
        Larger(DeviationsOf(formal, pose, T), DeviationsOf(jackknife, pose, T));
    squares += std::pow(known.rotation * RADIANS, 2) + std::pow(known.direction * RADIANS, 2) +
               std::pow(known.baseline, 2);
  }
  return std::sqrt(squares);
}

/// What is known of projections where there are data, all cameras together; infinite when nothing is.
double UncertaintyOf(const Solution& solution) {
  const Eigen::MatrixXd formal = solver::SharedCovariance(solution);
  const Eigen::MatrixXd jackknife = solver::JackknifeCovariance(solution);
  if (formal.size() == 0 || jackknife.size() == 0) return std::numeric_limits<double>::infinity();
  if (!solution.estimated.intrinsics) return UncertaintyOfPoses(solution, formal, jackknife);
  const Layout layout = LayoutOf(solution);
  double squares = 0.0;
  for (size_t i = 0; i < solution.rig.cameras.size(); ++i) {
    const Camera& camera = solution.rig.cameras[i];
    const ProjectionUncertainty uncertainty(camera.intrinsics, camera.imageSize,
                                            DataAreaOf(solution.views, i));
    const auto in = [&](const Eigen::MatrixXd& covariance) {
      return uncertainty.InArea(solver::IntrinsicsCovariance(covariance, layout.cameras[i]));
    };
    squares += std::pow(std::max(in(formal), in(jackknife)), 2);
  }
  return std::sqrt(squares);
}

bool IsAsked(const SheetRung& rung, SheetShape shape) {
  switch (shape) {
    case SheetShape::Flat:
      return rung.level == SheetLevel::Flat && !rung.ownBends;
    case SheetShape::Bent:
      return rung.level == SheetLevel::Bent || rung.level == SheetLevel::BentProportions;
    case SheetShape::Free:
      return rung.level >= SheetLevel::FreePoints;
    case SheetShape::Auto:
      break;
  }
  return true;
}

SheetLevel MostOf(SheetShape shape) {
  if (shape == SheetShape::Flat) return SheetLevel::Flat;
  return shape == SheetShape::Bent ? SheetLevel::BentProportions : SheetLevel::FreePointsProportions;
}

/// What was reached before a computation was given up is no result.
void RequireNotGivenUp(const solver::ProgressMonitor& progress) {
  if (progress.IsGivenUp()) CV_Error(cv::Error::StsError, "The computation was given up.");
}

/// The result with the shape that is best, which may be that it has.
SparseResult ShapedFrom(const SparseResult& flat, const solver::Target& target, const SheetAssumption& sheet,
                        const solver::BundleOptions& options) {
  Solution solution = WithShape(target.views, *flat.solution, sheet, options);
  RequireNotGivenUp(options.progress);
  if (solution.sheet.IsFlat()) return flat;
  return solver::SparseResultOf(std::move(solution), target, options.progress);
}

/// The solution of a sheet of known shape.
Solution WithKnownShape(const std::vector<TargetView>& views, const Solution& flat,
                        const std::vector<cv::Point3d>& known, const solver::BundleOptions& options) {
  const solver::SheetShapes shapes = solver::KnownShapesOf(views, flat, known, options);
  RequireNotGivenUp(options.progress);
  const auto best =
      std::min_element(shapes.rungs.begin() + 1, shapes.rungs.end(),
                       [](const SheetRung& a, const SheetRung& b) { return a.criterion < b.criterion; });
  if (best == shapes.rungs.end())
    CV_Error(cv::Error::StsError, "The views agree with no camera before a sheet of the known shape.");
  return solver::Finished(shapes, static_cast<size_t>(best - shapes.rungs.begin()), options);
}

/// The larger model of the lens, of the views and with the freedom of the sheet that the classic one has.
Solution EnlargedLens(const Solution& classic, const solver::BundleOptions& options) {
  Solution larger = solver::SolveLargerModels(classic, options);
  if (!larger.usable) return larger;
  Solution settled =
      solver::SolveShaped({larger.rig, larger.views, larger.estimated, larger.priors, larger.sheet}, options);
  solver::CopySelection(classic, settled);
  settled.flat = classic.flat;
  return settled;
}

}  // namespace

size_t ChooseRung(const std::vector<SheetRung>& rungs, SheetShape shape) {
  size_t best = rungs.size();
  for (size_t i = 0; i < rungs.size(); ++i) {
    if (!IsAsked(rungs[i], shape)) continue;
    if (best == rungs.size() || rungs[i].criterion < rungs[best].criterion) best = i;
  }
  if (best == rungs.size() || best == 0) return 0;
  const bool bends = rungs[best].ownBends;
  const Solution& solution = rungs[best].solution;
  const auto poses =
      static_cast<double>(solver::CountOfGroups(solver::GroupsOf(solution.views, solution.rig)));
  double least = UncertaintyOf(solution) * (1.0 - CHANCE / std::sqrt(poses));
  for (const size_t i : solver::AllowedOf(rungs)) {
    if (rungs[i].level == SheetLevel::Flat || !IsAsked(rungs[i], shape)) continue;
    // Without its own bend all points of a view are off together, of which few poses may tell too little.
    if (bends && !rungs[i].ownBends) continue;
    const double deviation = UncertaintyOf(rungs[i].solution);
    if (!(deviation < least)) continue;
    least = deviation;
    best = i;
  }
  return best;
}

Solution WithShape(const std::vector<TargetView>& views, const Solution& flat, const SheetAssumption& sheet,
                   const solver::BundleOptions& options) {
  if (!sheet.known.empty()) return WithKnownShape(views, flat, sheet.known, options);
  const solver::SheetShapes shapes = solver::ShapesOf(views, flat, MostOf(sheet.allowed), options);
  const size_t chosen = ChooseRung(shapes.rungs, sheet.allowed);
  return chosen == 0 ? flat : solver::Finished(shapes, chosen, options);
}

SheetAssumption AboutMiddle(SheetAssumption sheet, const cv::Vec3d& middle) {
  for (cv::Point3d& point : sheet.known) point -= cv::Point3d(middle);
  return sheet;
}

ExtrinsicsResult PairWithShape(const ExtrinsicsResult& flat, const solver::Target& target,
                               const StereoIntrinsics& intrinsics, int model, const SheetAssumption& sheet,
                               const SparsePairOptions& options) {
  solver::BundleOptions bundle;
  bundle.parameters = LensModelOf(model).parameters;
  bundle.threads = options.threads;
  bundle.discRadius = options.discRadius;
  bundle.progress = [&options, points = CountOf(target.views)](int iteration, double cost) {
    return !options.progress || options.progress(iteration, std::sqrt(cost / points));
  };
  auto solution = std::make_shared<const Solution>(
      WithShape(target.views, *flat.solution, AboutMiddle(sheet, target.middles.front()), bundle));
  RequireNotGivenUp(bundle.progress);
  if (solution->sheet.IsFlat()) return flat;
  const bool refined = solution->estimated.intrinsics;
  const StereoIntrinsics lenses = refined ? solver::PairIntrinsicsOf(solution->rig) : intrinsics;
  ExtrinsicsResult result = solver::PairMatricesOf(lenses, solution->rig.cameras[1].cameraFromRig);
  if (refined) result.refined = lenses;
  result.rms = RmsOf(*solution);
  result.solution = std::move(solution);
  return result;
}

SparseResult SolveIntrinsicsWithSheet(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                      const std::vector<std::vector<cv::Point2d>>& imagePoints,
                                      const cv::Size& imageSize, int model, const SparseOptions& options) {
  SparseResult flat = SolveIntrinsicsSparsely(objectPoints, imagePoints, imageSize, model, options);
  if (options.sheet.IsFlat()) return flat;
  const solver::Target target = solver::TargetOf(objectPoints, imagePoints, options.deviations);
  const SheetAssumption sheet = AboutMiddle(options.sheet, target.middles.front());
  const solver::BundleOptions bundle = solver::BundleOptionsOf(options, target, model);
  SparseResult best = ShapedFrom(flat, target, sheet, bundle);
  if (bundle.parameters == CLASSIC_PARAMETERS) return best;
  // With a flat sheet a larger model may have led far from the lens, where no shape leads back from.
  solver::BundleOptions classic = bundle;
  classic.parameters = CLASSIC_PARAMETERS;
  const SparseResult smaller = ShapedFrom(
      SolveIntrinsicsSparsely(objectPoints, imagePoints, imageSize, LensModels().front().number, options),
      target, sheet, classic);
  if (smaller.solution->sheet.IsFlat()) return best;
  Solution enlarged = EnlargedLens(*smaller.solution, bundle);
  RequireNotGivenUp(bundle.progress);
  if (!enlarged.usable || !(NoiseVariance(enlarged) < NoiseVariance(*best.solution) / ASTRAY)) return best;
  return solver::SparseResultOf(std::move(enlarged), target, bundle.progress);
}

SparseResult SolveFisheyeWithSheet(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                   const std::vector<std::vector<cv::Point2d>>& imagePoints,
                                   const cv::Size& imageSize, const SparseOptions& options) {
  SparseResult flat = SolveFisheyeSparsely(objectPoints, imagePoints, imageSize, options);
  if (options.sheet.IsFlat()) return flat;
  const solver::Target target = solver::TargetOf(objectPoints, imagePoints, options.deviations);
  solver::BundleOptions bundle = solver::BundleOptionsOf(options, target, MODEL_CLASSIC);
  bundle.parameters = FISHEYE_PARAMETERS;
  return ShapedFrom(flat, target, AboutMiddle(options.sheet, target.middles.front()), bundle);
}

}  // namespace velmora
