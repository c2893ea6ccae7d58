/// Compares the lens models on the same views.
#include "quality/ModelComparison.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <sstream>

#include "model/LensModel.h"
#include "solver/KnownLens.h"
#include "solver/SelectedViews.h"
#include "solver/Start.h"
#include "solver/Target.h"

namespace velmora {

namespace {

using Candidate = ModelChoice::Candidate;

constexpr size_t MOST_FOLDS = 10;

double PointsOf(const solver::View& view) {
  return view.weights.empty()
             ? static_cast<double>(view.object.size())
             : static_cast<double>(std::count_if(view.weights.begin(), view.weights.end(),
                                                 [](double weight) { return weight > 0.0; }));
}

double PointsOf(const std::vector<solver::View>& views) {
  double points = 0.0;
  for (const solver::View& view : views) points += PointsOf(view);
  return points;
}

/// Squared distances of the views that the lens was not computed from; infinite when it cannot be.
double SquaresOfFold(const solver::Solved& solved, const solver::StageOptions& stages, size_t fold,
                     size_t folds) {
  solver::StagedSolution seen = solved.staged;
  std::vector<solver::View> seenViews;
  std::vector<solver::View> unseenViews;
  solver::Estimate unseen;
  seen.solution.estimate.poses.clear();
  for (size_t i = 0; i < solved.views.size(); ++i) {
    const bool left = i % folds == fold;
    (left ? unseenViews : seenViews).push_back(solved.views[i]);
    (left ? unseen : seen.solution.estimate).poses.push_back(solved.staged.solution.estimate.poses[i]);
  }
  const solver::Solution lens = solver::SolveAgain(seenViews, seen, stages).solution;
  if (!lens.usable) return std::numeric_limits<double>::infinity();
  unseen.lens = lens.estimate.lens;
  const solver::Solution poses = solver::SolvePoses(unseenViews, unseen);
  return poses.usable ? poses.squares : std::numeric_limits<double>::infinity();
}

double UnseenRms(const solver::Solved& solved, const solver::StageOptions& stages) {
  const size_t folds = std::min(MOST_FOLDS, solved.views.size());
  double squares = 0.0;
  for (size_t fold = 0; fold < folds; ++fold) squares += SquaresOfFold(solved, stages, fold, folds);
  return std::sqrt(squares / PointsOf(solved.views));
}

Candidate CandidateOf(const solver::Selection& selection, const solver::StageOptions& stages, int model,
                      double discRadius) {
  const solver::Solved solved = solver::SolveSelected(selection, stages, discRadius);
  if (!solved.staged.solution.usable) {
    CV_Error(cv::Error::StsNoConv, "The views do not agree with any camera.");
  }
  const double points = PointsOf(solved.views);
  const double squares = solved.staged.solution.squares;
  const double unknowns = stages.free + solver::POSE_PARAMETERS * static_cast<double>(solved.views.size());
  Candidate candidate;
  candidate.model = model;
  candidate.rms = std::sqrt(squares / points);
  candidate.criterion = 2.0 * points * std::log(squares / (2.0 * points)) + unknowns * std::log(2.0 * points);
  candidate.unseen = UnseenRms(solved, stages);
  candidate.poleFree = solver::IsFreeOfPoles(solved.staged.solution.estimate.lens, stages.imageSize);
  return candidate;
}

/// "0.1234 instead of 0.2345 px".
std::string Instead(double larger, double smaller) {
  char text[64];
  std::snprintf(text, sizeof(text), "%.4f instead of %.4f px", larger, smaller);
  return text;
}

/// "0.123 px against 0.234 px".
std::string Against(double larger, double smaller) {
  char text[64];
  std::snprintf(text, sizeof(text), "%.3f px against %.3f px", larger, smaller);
  return text;
}

/// Why the larger model is not better than the smaller one; empty when it is.
std::string FaultOf(const Candidate& larger, const Candidate& smaller) {
  if (!larger.poleFree) return "its distortion has a pole within the image";
  if (!(larger.criterion < smaller.criterion)) {
    return "its closer fit (RMS " + Instead(larger.rms, smaller.rms) + ") is not worth its coefficients";
  }
  if (!(larger.unseen <= smaller.unseen)) {
    return "it predicts views kept out of the fit less well (" + Against(larger.unseen, smaller.unseen) + ")";
  }
  return {};
}

}  // namespace

ModelChoice ChooseAmong(const std::vector<Candidate>& candidates) {
  ModelChoice choice;
  choice.candidates = candidates;
  if (candidates.empty()) return choice;
  const Candidate* best = &candidates.front();
  for (size_t i = 1; i < candidates.size(); ++i) {
    const Candidate& larger = candidates[i];
    const std::string fault = FaultOf(larger, *best);
    std::ostringstream reason;
    reason << "The " << ModelChoice::NameOf(larger.model) << " model is " << (fault.empty() ? "" : "not ")
           << "better than the " << ModelChoice::NameOf(best->model) << " one: ";
    if (!fault.empty()) {
      reason << fault << ".";
      choice.reasons.push_back(reason.str());
      continue;
    }
    reason << "RMS " << Instead(larger.rms, best->rms) << ", of views that it did not see "
           << Instead(larger.unseen, best->unseen) << ".";
    choice.reasons.push_back(reason.str());
    best = &larger;
  }
  choice.model = best->model;
  return choice;
}

ModelChoice CompareModels(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                          const std::vector<std::vector<cv::Point2d>>& imagePoints, const cv::Size& imageSize,
                          const SparseOptions& options) {
  const solver::Target target = solver::TargetOf(objectPoints, imagePoints);
  solver::StageOptions stages;
  stages.imageSize = imageSize;
  stages.threads = std::max(options.threads, 1);
  stages.free = solver::FULL_PARAMETERS;
  const solver::Selection selection =
      solver::SelectedFrom(target.views, stages, {options.robust, options.discRadius});
  std::vector<Candidate> candidates;
  for (const velmora::LensModel& model : velmora::LensModels()) {
    stages.free = model.parameters;
    candidates.push_back(CandidateOf(selection, stages, model.number, options.discRadius));
  }
  return ChooseAmong(candidates);
}

}  // namespace velmora

std::string ModelChoice::NameOf(int model) {
  return velmora::LensModelName(model);
}

std::string ModelChoice::Name() const {
  return NameOf(model);
}
