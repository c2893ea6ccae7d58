/// Fits poses, sheet and lens to new views of a camera that was calibrated before.
#include "quality/CheckFit.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "quality/ProjectionUncertainty.h"
#include "solver/BundleAdjustment.h"
#include "solver/Eccentricity.h"
#include "solver/Initialisation.h"
#include "solver/Outliers.h"
#include "solver/SheetLadder.h"

namespace velmora {

namespace {

/// For the same views and the same freedom of the sheet: a few, but for another camera altogether.
constexpr int MOST_STEPS = 25;
/// Changes below this share of what stays unknown of a move end the search.
constexpr double SETTLED = 0.02;
/// The radial distortion of nothing but the middle of an image is not asked for.
constexpr double LEAST_RADIUS = 0.05;
/// The share of an image's points that must be left of it.
constexpr double ENOUGH = 0.5;

class Fitting {
 public:
  explicit Fitting(const CheckProblem& problem) : problem_(problem), follower_(problem.lens) {}

  CheckFit Run() {
    solver::Selection all = WithPoses();
    if (all.views.empty()) return {};
    selection_ = all;
    FollowLens();
    selection_ = Selected(all);
    FollowLens();
    if (TakeSheet()) {
      FollowLens();
      selection_ = Selected(all);
      FollowLens();
    }
    CheckFit fit = std::move(fit_);
    fit.kept = selection_.kept;
    fit.moved = Solved(follower_);
    fit.held = Solved(problem_.lens);
    return fit;
  }

 private:
  Rig RigOf(const Intrinsics& intrinsics) const {
    Rig rig;
    rig.cameras.push_back({intrinsics, {}, problem_.imageSize});
    return rig;
  }

  /// The views whose grid may be before the camera at all.
  solver::Selection WithPoses() const {
    solver::Selection with;
    for (size_t i = 0; i < problem_.views.size(); ++i) {
      TargetView view = problem_.views[i];
      try {
        if (!solver::HasPose(view.observations.front(), problem_.lens)) continue;
        view.rigFromTarget = solver::KnownPoseOf(view.observations.front(), problem_.lens);
      } catch (const cv::Exception&) {
        continue;
      }
      const Solution alone = solver::SolvePoses(RigOf(problem_.lens), {view});
      if (!alone.usable) continue;
      view.rigFromTarget = alone.views.front().rigFromTarget;
      with.views.push_back(std::move(view));
      with.kept.push_back(i);
    }
    return with;
  }

  /// Poses and sheet that fit a lens best.
  Solution Solved(const Intrinsics& intrinsics) const {
    std::vector<TargetView> views = selection_.views;
    const Rig rig = RigOf(intrinsics);
    if (problem_.discRadius > 0.0) {
      views = solver::CorrectedForEccentricity(views, rig, selection_.views, problem_.discRadius);
    }
    Solution solution = solver::SolvePoses(rig, std::move(views), sheet_);
    solution.kept = selection_.kept;
    return solution;
  }

  /// The observed pixels again, with the poses, the points and the bends of a solution of the same views.
  void TakePoses(const Solution& solution) {
    for (size_t i = 0; i < selection_.views.size(); ++i) {
      TargetView& view = selection_.views[i];
      view.rigFromTarget = solution.views[i].rigFromTarget;
      view.bend = solution.views[i].bend;
      view.observations.front().object = solution.views[i].observations.front().object;
    }
    sheet_.values = solution.sheet.values;
  }

  /// Finds the lens that suits the result and the views.
  void FollowLens() {
    for (int i = 0; i < MOST_STEPS; ++i) {
      const Solution solution = Solved(follower_);
      if (!solution.usable) return;
      TakePoses(solution);
      LensScore score;
      fit_.determined = ScoreOf(solution, problem_.lens, score);
      fit_.area = DataAreaOf(solution.views, 0);
      if (!fit_.determined) return;
      fit_.columns = MoveColumns::Of(problem_.lens, RadiusOf(solution));
      const LensMove before =
          std::exchange(fit_.move, MoveOf(score, fit_.columns, problem_.uncertainty(fit_.area)));
      if (!Take(fit_.move.parameters) || (i > 0 && IsSettled(before, fit_.move))) return;
    }
  }

  /// Whether a step changed hardly anything beside what stays unknown.
  static bool IsSettled(const LensMove& before, const LensMove& now) {
    const Eigen::ArrayXd deviations = now.covariance.diagonal().array().sqrt();
    return ((now.move - before.move).array().abs() < SETTLED * deviations).all();
  }

  /// How far from the axis there are points, in focal lengths; of a fisheye in radians.
  double RadiusOf(const Solution& solution) const {
    double radius = LEAST_RADIUS;
    for (const TargetView& view : solution.views) {
      for (const cv::Point3d& point : view.observations.front().object) {
        const cv::Vec3d at = view.rigFromTarget * point;
        const double side = std::hypot(at[0], at[1]);
        const double own = problem_.lens.IsFisheye() ? std::atan2(side, at[2]) : side / at[2];
        radius = std::max(radius, own);
      }
    }
    return radius;
  }

  /// False when the lens would be none.
  bool Take(const Eigen::VectorXd& move) {
    if (!move.allFinite()) return false;
    Intrinsics next = problem_.lens;
    for (Eigen::Index i = 0; i < move.size(); ++i) next.values[static_cast<size_t>(i)] += move(i);
    if (!(next.values[FX] > 0.5 * problem_.lens.values[FX]) ||
        !(next.values[FY] > 0.5 * problem_.lens.values[FY]))
      return false;
    const Intrinsics before = std::exchange(follower_, next);
    if (Solved(follower_).usable) return true;
    follower_ = before;
    return false;
  }

  /// What of all views agrees with the lens and the sheet; everything where that would be too little.
  solver::Selection Selected(const solver::Selection& all) const {
    solver::Selection from;
    for (size_t i = 0; i < all.kept.size(); ++i) {
      TargetView view = all.views[i];
      const auto known = std::find(selection_.kept.begin(), selection_.kept.end(), all.kept[i]);
      if (known != selection_.kept.end()) {
        const TargetView& last = selection_.views[static_cast<size_t>(known - selection_.kept.begin())];
        view.rigFromTarget = last.rigFromTarget;
        view.bend = last.bend;
        view.observations.front().object = last.observations.front().object;
        view.observations.front().places = last.observations.front().places;
      } else if (!sheet_.IsFlat()) {
        continue;  // of its sheet nothing is known
      }
      from.views.push_back(std::move(view));
      from.kept.push_back(all.kept[i]);
    }
    solver::Selection observed = from;
    if (problem_.discRadius > 0.0) {
      from.views =
          solver::CorrectedForEccentricity(from.views, RigOf(follower_), from.views, problem_.discRadius);
    }
    const solver::Residuals residuals = solver::ResidualsOf(from.views, RigOf(follower_));
    solver::Selection left =
        solver::WithoutOutliers(observed, residuals, solver::StandardDeviationOf(residuals), ENOUGH);
    return 2 * left.kept.size() < all.kept.size() || left.kept.empty() ? observed : left;
  }

  /// Lets the sheet have the shape that the views ask for, each a bend of its own included; false where that
  /// is none but what it has.
  bool TakeSheet() {
    Solution flat = Solved(follower_);
    if (!flat.usable || !solver::HasOneTarget(flat.views)) return false;
    solver::BundleOptions options;
    std::vector<solver::SheetRung> rungs =
        solver::ClimbSheet(flat, SheetLevel::FreePointsProportions, options);
    if (!problem_.known.empty()) {
      for (solver::SheetRung& rung : solver::ClimbKnown(flat, problem_.known, options))
        rungs.push_back(std::move(rung));
    }
    const auto best = std::min_element(
        rungs.begin(), rungs.end(), [](const auto& a, const auto& b) { return a.criterion < b.criterion; });
    Solution shaped = WithOwnBends(best->level, best->ownBends, best->solution, options);
    if (!shaped.usable || !std::isfinite(shaped.sheet.counted)) shaped = best->solution;
    if (shaped.sheet.IsFlat()) return false;
    sheet_ = shaped.sheet;
    for (size_t i = 0; i < selection_.views.size(); ++i) {
      selection_.views[i].observations.front().places = shaped.views[i].observations.front().places;
    }
    TakePoses(shaped);
    return true;
  }

  /// Each view's sheet with a bend of its own, too: those that are too small to be told from noise would move
  /// the lens all the same.
  static Solution WithOwnBends(SheetLevel level, bool ownBends, const Solution& solution,
                               const solver::BundleOptions& options) {
    if (ownBends) return solution;
    CalibrationProblem problem = solution.sheet.IsFlat()
                                     ? solver::ShapedProblem(solution, level, true)
                                     : CalibrationProblem{solution.rig, solution.views, solution.estimated,
                                                          solution.priors, solution.sheet};
    if (!problem.sheet.HasOwnBends()) solver::AddOwnBends(problem.sheet);
    return solver::SolveShaped(std::move(problem), options);
  }

  const CheckProblem& problem_;
  Intrinsics follower_;  ///< the lens, as far as it is known
  Sheet sheet_;
  solver::Selection selection_;  ///< with pixels as they were observed
  CheckFit fit_;
};

}  // namespace

CheckFit FitCheck(const CheckProblem& problem) {
  return Fitting(problem).Run();
}

}  // namespace velmora
