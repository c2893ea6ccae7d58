/// Finds the views and points that do not belong to the image of a rig that the others give.
#include "solver/OutlierRejection.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "solver/Eccentricity.h"
#include "solver/FisheyeStart.h"
#include "solver/Initialisation.h"
#include "solver/Outliers.h"
#include "solver/Readmission.h"
#include "solver/Screening.h"
#include "solver/SheetLadder.h"

namespace velmora::solver {

namespace {

constexpr int ROUNDS = 15;
constexpr int ITERATIONS_OF_A_ROUND = 30;
constexpr double CAUCHY = 3.0;  // in standard deviations
/// The share of an image's points that must be left, or it is rejected. A little more than half, since of a
/// grid in reverse order 24 of 44 points fit another pose.
constexpr double ABOUT_HALF = 0.55;
/// The share of an image's points that must be left where too few views agree.
constexpr double HARDLY_ANY = 0.25;

void Weigh(std::vector<TargetView>& views, const Residuals& residuals, double scale) {
  for (size_t i = 0; i < views.size(); ++i) {
    for (size_t camera = 0; camera < views[i].observations.size(); ++camera) {
      const std::vector<double>& own = residuals[i][camera];
      std::vector<double>& weights = views[i].observations[camera].weights;
      weights.resize(own.size());
      for (size_t k = 0; k < own.size(); ++k) {
        const double relative = own[k] / scale;
        weights[k] = 1.0 / (1.0 + relative * relative);
      }
    }
  }
}

void CopyPoses(const std::vector<TargetView>& from, std::vector<TargetView>& to) {
  for (size_t i = 0; i < to.size(); ++i) to[i].rigFromTarget = from[i].rigFromTarget;
}

/// Puts the points to where the shape of the sheet has them.
void CopyShape(const std::vector<TargetView>& from, std::vector<TargetView>& to) {
  for (size_t i = 0; i < to.size(); ++i) {
    to[i].bend = from[i].bend;
    for (size_t camera = 0; camera < to[i].observations.size(); ++camera) {
      to[i].observations[camera].object = from[i].observations[camera].object;
    }
  }
}

/// The solution in which points weigh the less the further they are off.
struct Weighted {
  Solution solution;
  Residuals residuals;
  double standardDeviation = 0.0;
};

/// Weighs and solves in turn, until the standard deviation stays. The start's views have the poses of the
/// given ones.
Weighted Settled(const std::vector<TargetView>& views, Solution start, const BundleOptions& options) {
  Weighted weighted;
  weighted.solution = std::move(start);
  for (int round = 0; round < ROUNDS; ++round) {
    const Solution& now = weighted.solution;
    std::vector<TargetView> corrected =
        options.discRadius > 0.0 ? CorrectedForEccentricity(views, now.rig, now.views, options.discRadius)
                                 : views;
    CopyPoses(now.views, corrected);
    if (!now.sheet.IsFlat()) CopyShape(now.views, corrected);
    weighted.residuals = ResidualsOf(corrected, now.rig);
    const double standardDeviation = StandardDeviationOf(weighted.residuals);
    if (std::abs(standardDeviation - weighted.standardDeviation) < 1e-4 * standardDeviation) break;
    weighted.standardDeviation = standardDeviation;
    Weigh(corrected, weighted.residuals, CAUCHY * standardDeviation);
    if (!now.sheet.IsFlat()) weighted.solution.sheet.variance = std::pow(standardDeviation, 2);
    weighted.solution = SolveAgain(now, std::move(corrected), options);
    if (options.progress.IsGivenUp()) break;
  }
  return weighted;
}

bool IsMostlyOutlying(const std::vector<double>& residuals, double standardDeviation) {
  const auto agree = std::count_if(residuals.begin(), residuals.end(),
                                   [&](double residual) { return !IsOutlier(residual, standardDeviation); });
  return static_cast<double>(agree) < ABOUT_HALF * static_cast<double>(residuals.size());
}

/// Where the target is by one camera's image alone, whatever the other images of the view are. Its cost is
/// not that of the computation: nobody is told.
RigidTransform PoseOfImage(const TargetView& view, size_t camera, const Rig& rig, BundleOptions options) {
  options.progress = {};
  TargetView alone{{}, std::vector<Observation>(view.observations.size())};
  alone.observations[camera] = view.observations[camera];
  alone.rigFromTarget = Inverse(rig.cameras[camera].cameraFromRig) *
                        KnownPoseOf(view.observations[camera], rig.cameras[camera].intrinsics);
  return Settled({alone}, SolvePoses(rig, {alone}), options).solution.views.front().rigFromTarget;
}

/// How many points the pose explains less well than by that scale: each counts one at the most.
double DisagreementOf(TargetView view, const RigidTransform& pose, const Rig& rig, double scale) {
  view.rigFromTarget = pose;
  const Residuals residuals = ResidualsOf({view}, rig);
  double disagreement = 0.0;
  for (const auto& camera : residuals.front()) {
    for (const double residual : camera) disagreement += 1.0 - 1.0 / (1.0 + std::pow(residual / scale, 2.0));
  }
  return disagreement;
}

/// A wrong image may hold the target where it fits no image of its view: such a view's target goes to where
/// one of the images alone has it, if more points agree there.
bool TakePosesOfSingleImages(const std::vector<TargetView>& views, const BundleOptions& options,
                             Weighted& weighted) {
  bool taken = false;
  const Rig& rig = weighted.solution.rig;
  for (size_t i = 0; i < views.size(); ++i) {
    const auto& residuals = weighted.residuals[i];
    if (std::none_of(residuals.begin(), residuals.end(), [&](const std::vector<double>& image) {
          return IsMostlyOutlying(image, weighted.standardDeviation);
        })) {
      continue;
    }
    const TargetView& now = weighted.solution.views[i];
    RigidTransform best = now.rigFromTarget;
    const double scale = CAUCHY * weighted.standardDeviation;
    double least = DisagreementOf(now, best, rig, scale);
    for (size_t camera = 0; camera < views[i].observations.size(); ++camera) {
      if (!HasPose(views[i].observations[camera], rig.cameras[camera].intrinsics)) continue;
      const RigidTransform pose = PoseOfImage(views[i], camera, rig, options);
      const double disagreement = DisagreementOf(now, pose, rig, scale);
      if (!(disagreement < least)) continue;
      least = disagreement;
      best = pose;
      taken = true;
    }
    weighted.solution.views[i].rigFromTarget = best;
  }
  return taken;
}

/// Where the target is by the first of its images that tells it. False when none does.
bool FindPose(const Rig& rig, TargetView& view) {
  for (size_t camera = 0; camera < view.observations.size(); ++camera) {
    const Observation& observation = view.observations[camera];
    if (observation.IsEmpty() || !HasPose(observation, rig.cameras[camera].intrinsics)) continue;
    view.rigFromTarget =
        Inverse(rig.cameras[camera].cameraFromRig) * KnownPoseOf(observation, rig.cameras[camera].intrinsics);
    return true;
  }
  return false;
}

void RejectView(size_t view, Selection& selection) {
  const auto at = static_cast<std::ptrdiff_t>(view);
  selection.kept.erase(selection.kept.begin() + at);
  selection.views.erase(selection.views.begin() + at);
  selection.rejected.push_back({view, Rejected::WHOLE_VIEW, std::numeric_limits<double>::infinity(),
                                "its points are no image of a plane grid", 0});
}

Selection WithoutOutliers(const Selection& screened, const Weighted& weighted, size_t of) {
  Selection selection = WithoutOutliers(screened, weighted.residuals, weighted.standardDeviation, ABOUT_HALF);
  if (AreEnough(selection.kept.size(), of)) return selection;
  selection = WithoutOutliers(screened, weighted.residuals, weighted.standardDeviation, HARDLY_ANY);
  if (!AreEnough(selection.kept.size(), of)) selection = screened;
  selection.tooFewAgree = true;
  return selection;
}

/// From the camera that the screened views give.
Selection SelectedFrom(const std::vector<TargetView>& views, Selection screened, Solution start,
                       const BundleOptions& options) {
  if (!start.usable) return screened;
  Weighted weighted = Settled(screened.views, std::move(start), options);
  CopyPoses(weighted.solution.views, screened.views);
  if (Readmit(views, weighted.solution.rig.cameras.front(), screened)) {
    // Before the rig that is known, the views that came back count as they are from here on.
    weighted.solution.views = screened.views;
    weighted = Settled(screened.views, std::move(weighted.solution), options);
  }
  return WithoutOutliers(screened, weighted, views.size());
}

}  // namespace

Selection SelectedOfFisheye(const std::vector<TargetView>& views, const cv::Size& imageSize,
                            const BundleOptions& options) {
  const FisheyeStart start = FisheyeStartOf(views, imageSize);
  Selection screened = ScreenedBy(start);
  CalibrationProblem problem = start.problem;
  problem.views = screened.views;
  return SelectedFrom(views, std::move(screened), SolveFisheye(std::move(problem), options), options);
}

Selection Selected(const std::vector<TargetView>& views, const cv::Size& imageSize,
                   const BundleOptions& options) {
  Selection screened = Screened(views, imageSize);
  Solution start = SolveModels(StartOf(screened.views, imageSize), options);
  return SelectedFrom(views, std::move(screened), std::move(start), options);
}

Selection Selected(const CalibrationProblem& start, const BundleOptions& options) {
  Selection all = AllOf(start.views);
  // Between images that contradict each other the search may go on for long, where weights change anyway.
  BundleOptions round = options;
  round.mostIterations = ITERATIONS_OF_A_ROUND;
  BundleOptions first = round;
  first.discRadius = 0.0;
  Solution solution = Adjust(start, first);
  if (!solution.usable) return all;
  Weighted weighted = Settled(all.views, std::move(solution), round);
  if (!options.progress.IsGivenUp() && TakePosesOfSingleImages(all.views, round, weighted)) {
    weighted = Settled(all.views, std::move(weighted.solution), round);
  }
  return WithoutOutliers(all, weighted, start.views.size());
}

Selection SelectedAgain(const std::vector<TargetView>& views, const Solution& solution,
                        const BundleOptions& options) {
  BundleOptions round = options;
  round.mostIterations = ITERATIONS_OF_A_ROUND;
  Selection all = AllOf(views);
  std::vector<bool> known(views.size(), false);
  for (size_t i = 0; i < solution.views.size(); ++i) {
    TargetView& view = all.views[solution.kept[i]];
    view.rigFromTarget = solution.views[i].rigFromTarget;
    view.bend = solution.views[i].bend;
    known[solution.kept[i]] = true;
  }
  for (size_t i = views.size(); i-- > 0;) {
    if (!known[i] && !FindPose(solution.rig, all.views[i])) RejectView(i, all);
  }
  if (!NotePlaces(solution.sheet.target, all.views)) return all;
  Solution start = solution;
  start.views = all.views;
  PutToShape(start.sheet, start.views);
  Weighted weighted = Settled(all.views, std::move(start), round);
  CopyPoses(weighted.solution.views, all.views);
  return WithoutOutliers(all, weighted, views.size());
}

}  // namespace velmora::solver
