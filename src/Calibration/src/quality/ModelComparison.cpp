/// Compares the lens models on the same views.
#include "quality/ModelComparison.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <sstream>
#include <utility>

#include "model/LensModel.h"
#include "quality/ModelCandidate.h"
#include "quality/OmittedEffects.h"
#include "quality/SheetChoice.h"
#include "solver/CameraCalibration.h"
#include "solver/Target.h"
#include "solver/WeakPrior.h"

namespace velmora {

namespace {

using Candidate = ModelChoice::Candidate;

constexpr int SHEET_ROUNDS = 2;
/// Degrees from the axis to which lenses of planes follow any lens.
constexpr double NARROW = 45.0;

Solution Solved(const solver::Selection& selection, const cv::Size& imageSize,
                const solver::BundleOptions& options) {
  Solution solution = solver::CalibrateCamera(selection, imageSize, options);
  if (!solution.usable) CV_Error(cv::Error::StsNoConv, "The views do not agree with any camera.");
  return solution;
}

/// Whether the residuals of the largest model show a fault of the sheet: then every model is compared with a
/// sheet as it has it itself, so that no lens is chosen for what is not the lens.
bool HasFaultySheet(const solver::Selection& selection, const cv::Size& imageSize,
                    const solver::BundleOptions& largest) {
  return OmittedSheetOf(Solved(selection, imageSize, largest)).both.significant;
}

/// Gives the target the shape that the model's residuals show.
solver::Selection WithoutFaultOfSheet(solver::Selection selection, const cv::Size& imageSize,
                                      const solver::BundleOptions& options) {
  for (int round = 0; round < SHEET_ROUNDS; ++round) {
    const OmittedEffect sheet = OmittedSheetOf(Solved(selection, imageSize, options)).both;
    if (sheet.values.size() == 0) break;
    const Eigen::VectorXd& e = sheet.values;
    for (TargetView& view : selection.views) {
      for (cv::Point3d& p : view.observations.front().object) {
        p = {p.x + e(4) * p.y, p.y + e(3) * p.y,
             p.z + e(0) * p.x * p.x + e(1) * p.x * p.y + e(2) * p.y * p.y};
      }
    }
  }
  return selection;
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

/// Why the fisheye is not better than the model that it was compared with; empty when it is. It has fewer
/// coefficients and follows narrow lenses as well: those are left to what every tool reads.
std::string FaultOfFisheye(const FisheyeComparison& compared) {
  if (!compared.planeComputed) return "";
  if (compared.widest < NARROW) {
    char text[96];
    std::snprintf(text, sizeof(text), "no point is more than %.0f degrees off the axis", compared.widest);
    return text;
  }
  return FaultOf(compared.fisheye, compared.plane);
}

/// Each model with a sheet that is as free as the classic one asks for.
std::vector<Candidate> CandidatesWithShape(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                           const std::vector<std::vector<cv::Point2d>>& imagePoints,
                                           const cv::Size& imageSize, const SparseOptions& options) {
  const auto& models = LensModels();
  const SparseResult classic =
      SolveIntrinsicsWithSheet(objectPoints, imagePoints, imageSize, models.front().number, options);
  if (classic.solution->sheet.IsFlat()) return {};
  solver::BundleOptions bundle;
  bundle.threads = std::max(options.threads, 1);
  std::vector<Candidate> candidates;
  for (const LensModel& model : models) {
    bundle.parameters = model.parameters;
    Solution solution = solver::SolveLargerModels(*classic.solution, bundle);
    if (!solution.usable) continue;
    solution.sheet.counted = classic.solution->sheet.counted;
    candidates.push_back(CandidateOf(solution, bundle, model.number));
  }
  return candidates;
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

ModelChoice ChooseWithFisheye(ModelChoice choice, const FisheyeComparison& compared) {
  if (!compared.computed) return choice;
  choice.fisheye = compared.fisheye;
  const std::string plane = ModelChoice::NameOf(choice.model);
  const std::string fault = FaultOfFisheye(compared);
  choice.prefersFisheye = fault.empty();
  if (!compared.planeComputed) {
    choice.reasons.push_back("The views fit a fisheye, but no " + plane + " model.");
  } else if (fault.empty()) {
    choice.reasons.push_back("The fisheye model is better than the " + plane + " one: RMS " +
                             Instead(compared.fisheye.rms, compared.plane.rms) +
                             ", of views that it did not see " +
                             Instead(compared.fisheye.unseen, compared.plane.unseen) + ".");
  } else {
    choice.reasons.push_back("The fisheye model is not better than the " + plane + " one: " + fault + ".");
  }
  return choice;
}

ModelChoice CompareAllModels(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                             const std::vector<std::vector<cv::Point2d>>& imagePoints,
                             const cv::Size& imageSize, const SparseOptions& options) {
  ModelChoice choice;
  try {
    choice = CompareModels(objectPoints, imagePoints, imageSize, options);
  } catch (const cv::Exception&) {
    // Views as wide as a fisheye's may fit no other lens.
    choice = ChooseWithFisheye(
        choice, CompareWithFisheye(objectPoints, imagePoints, imageSize, MODEL_CLASSIC, options));
    if (!choice.prefersFisheye) throw;
    choice.model = MODEL_CLASSIC;
    return choice;
  }
  return ChooseWithFisheye(choice,
                           CompareWithFisheye(objectPoints, imagePoints, imageSize, choice.model, options));
}

ModelChoice CompareModels(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                          const std::vector<std::vector<cv::Point2d>>& imagePoints, const cv::Size& imageSize,
                          const SparseOptions& options) {
  if (!options.sheet.IsFlat()) {
    const auto shaped = CandidatesWithShape(objectPoints, imagePoints, imageSize, options);
    if (!shaped.empty()) return ChooseAmong(shaped);
  }
  const solver::Target target = solver::TargetOf(objectPoints, imagePoints, options.deviations);
  solver::BundleOptions bundle;
  bundle.threads = std::max(options.threads, 1);
  bundle.parameters = FULL_PARAMETERS;
  bundle.discRadius = options.discRadius;
  const solver::Selection selection = solver::SelectedFrom(target.views, imageSize, options.robust, bundle);
  const bool faulty = HasFaultySheet(selection, imageSize, bundle);
  std::vector<Candidate> candidates;
  for (const LensModel& model : LensModels()) {
    bundle.parameters = model.parameters;
    const solver::Selection own = faulty ? WithoutFaultOfSheet(selection, imageSize, bundle) : selection;
    candidates.push_back(CandidateOf(Solved(own, imageSize, bundle), bundle, model.number));
  }
  return ChooseAmong(candidates);
}

}  // namespace velmora

std::string ModelChoice::NameOf(int model) {
  return velmora::LensModelName(model);
}

int ModelChoice::NumberOf(const std::string& name) {
  for (const velmora::LensModel& model : velmora::LensModels()) {
    if (name == model.name) return model.number;
  }
  return 0;
}

std::string ModelChoice::Name() const {
  return prefersFisheye ? "fisheye" : NameOf(model);
}
