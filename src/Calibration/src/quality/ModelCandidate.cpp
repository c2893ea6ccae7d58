/// What speaks for a lens model, in numbers.
#include "quality/ModelCandidate.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "solver/PoseGroups.h"
#include "solver/SheetLadder.h"
#include "solver/WeakPrior.h"

namespace velmora {

namespace {

constexpr size_t MOST_FOLDS = 10;

/// Squared residuals of the views that the camera was not computed from; infinite when it cannot be.
double CostOfFold(const Solution& solution, const solver::BundleOptions& options,
                  const std::vector<size_t>& groups, size_t fold, size_t folds) {
  Solution fitted = solution;
  std::vector<TargetView> heldOut;
  fitted.views.clear();
  for (size_t i = 0; i < solution.views.size(); ++i) {
    (groups[i] % folds == fold ? heldOut : fitted.views).push_back(solution.views[i]);
  }
  const Solution camera = solver::SolveAgain(fitted, fitted.views, options);
  if (!camera.usable) return std::numeric_limits<double>::infinity();
  const Solution poses =
      solver::SolvePoses(camera.rig, std::move(heldOut), solver::HeldShapeOf(camera.sheet));
  return poses.usable ? PixelCostOf(poses) : std::numeric_limits<double>::infinity();
}

double HeldOutRms(const Solution& solution, const solver::BundleOptions& options) {
  const std::vector<size_t> groups = solver::GroupsOf(solution.views, solution.rig);
  const size_t folds = std::min(MOST_FOLDS, solver::CountOfGroups(groups));
  double cost = 0.0;
  for (size_t fold = 0; fold < folds; ++fold) cost += CostOfFold(solution, options, groups, fold, folds);
  return std::sqrt(cost / CountOf(solution.views));
}

}  // namespace

ModelChoice::Candidate CandidateOf(const Solution& solution, const solver::BundleOptions& options,
                                   int model) {
  // Views of like poses repeat each other's errors, and count as one.
  const auto views = static_cast<double>(solution.views.size());
  const auto poses =
      static_cast<double>(solver::CountOfGroups(solver::GroupsOf(solution.views, solution.rig)));
  const double numbers = 2.0 * CountOf(solution.views) * poses / views;
  const double unknowns = options.parameters + solution.sheet.counted + POSE_PARAMETERS * poses;
  ModelChoice::Candidate candidate;
  candidate.model = model;
  candidate.rms = RmsOf(solution);
  candidate.criterion =
      numbers * std::log(solution.cost * poses / views / numbers) + unknowns * std::log(numbers);
  candidate.unseen = HeldOutRms(solution, options);
  const Camera& camera = solution.rig.cameras.front();
  candidate.poleFree = solver::IsFreeOfPoles(camera.intrinsics, camera.imageSize);
  return candidate;
}

}  // namespace velmora
