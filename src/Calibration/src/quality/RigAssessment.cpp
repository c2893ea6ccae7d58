/// Assesses a computed rig of cameras.
#include "quality/RigAssessment.h"

#include <algorithm>
#include <set>

#include "quality/Assessment.h"
#include "quality/Disagreement.h"
#include "quality/PoseDeviations.h"
#include "quality/RigEffect.h"
#include "quality/SearchEnd.h"
#include "quality/SheetRemarks.h"
#include "solver/Covariance.h"
#include "solver/PoseGroups.h"

namespace velmora {

namespace {

using Grade = RigVerdict::Grade;

constexpr double MANY_MOVED = 0.25;  // share of the views
constexpr double APART = 5.0;        // the median of all views
constexpr int FEW_VIEWS = 8;

void AddRemark(RigVerdict& verdict, Grade grade, const std::string& reason, const std::string& advice) {
  verdict.grade = std::max(verdict.grade, grade);
  verdict.remarks.push_back({reason, advice});
}

/// In how many different poses the camera saw the target together with another one.
int LinkingPoses(const Solution& solution, size_t camera) {
  const auto links = [camera](const TargetView& view) {
    const auto images = std::count_if(view.observations.begin(), view.observations.end(),
                                      [](const Observation& image) { return !image.IsEmpty(); });
    return images > 1 && !view.observations[camera].IsEmpty();
  };
  const std::vector<size_t> groups = solver::GroupsOf(solution.views, solution.rig);
  std::set<size_t> poses;
  for (size_t i = 0; i < groups.size(); ++i) {
    if (links(solution.views[i])) poses.insert(groups[i]);
  }
  return static_cast<int>(poses.size());
}

void Measure(const Solution& solution, RigVerdict& verdict) {
  const Layout layout = LayoutOf(solution);
  const Eigen::MatrixXd formal = solver::SharedCovariance(solution);
  const Eigen::MatrixXd jackknife = solver::JackknifeCovariance(solution);
  for (size_t i = 1; i < solution.rig.cameras.size(); ++i) {
    const cv::Vec3d& T = solution.rig.cameras[i].cameraFromRig.t;
    verdict.formal.push_back(DeviationsOf(formal, layout.cameras[i].pose, T));
    verdict.jackknife.push_back(DeviationsOf(jackknife, layout.cameras[i].pose, T));
  }
  const std::vector<double> apart = DisagreementsOf(solution);
  verdict.disagreement = UsualDisagreement(apart);
  for (const PairVerdict::Disagreement& moved : MovedViews(apart)) {
    verdict.disagreements.push_back({solution.kept[moved.view], moved.factor});
  }
}

void AssessPoses(const Solution& solution, RigVerdict& verdict) {
  const char* const more =
      "Take more views that it shares with other cameras, tilted to all sides, near and far.";
  for (size_t i = 1; i < solution.rig.cameras.size(); ++i) {
    const std::string name = "camera " + std::to_string(i);
    const PairVerdict::Deviations known = Larger(verdict.formal[i - 1], verdict.jackknife[i - 1]);
    if (Beyond(known, WORTHLESS_POSE)) {
      AddRemark(verdict, Grade::Worthless,
                "The views do not determine how " + name + " stands to the first one.", more);
    } else if (Beyond(known, CAREFUL_POSE)) {
      AddRemark(verdict, Grade::WithCare, "How " + name + " stands to the first one is known only roughly.",
                more);
    }
    if (LinkingPoses(solution, i) < FEW_VIEWS) {
      AddRemark(verdict, Grade::WithCare, "There are few views that " + name + " shares with others.",
                "Take ten such views or more.");
    }
  }
}

void AssessAgreement(RigVerdict& verdict, size_t views) {
  const auto moved = static_cast<double>(verdict.disagreements.size());
  if (moved > MANY_MOVED * static_cast<double>(views)) {
    AddRemark(verdict, Grade::Worthless, "The images of many views do not show the sheet at the same place.",
              "Have all cameras take their images at the same time, and hold the sheet still.");
  } else if (moved > 0.0) {
    AddRemark(verdict, Grade::WithCare, "The images of a view do not show the sheet at the same place.",
              "Leave that view out: the sheet or a camera moved, or the images are not of the same time.");
  }
  bool disagree = verdict.disagreement > APART;
  for (size_t i = 0; i < verdict.formal.size(); ++i) {
    disagree = disagree || Disagrees(verdict.jackknife[i], verdict.formal[i]);
  }
  if (disagree) {
    AddRemark(verdict, Grade::WithCare, "The views disagree more than noise explains.",
              "Check that the cameras are fixed to each other and take their images at the same time, that "
              "the sheet is "
              "flat, and that given intrinsics are those of these cameras.");
  }
}

void AssessSheet(const Solution& solution, RigVerdict& verdict) {
  if (verdict.grade == Grade::Worthless) return;
  std::vector<std::string> names;
  for (size_t i = 0; i < solution.rig.cameras.size(); ++i) names.push_back("camera " + std::to_string(i));
  const SheetEffect effect = EffectOnRig(solution, names);
  if (effect.reason.empty()) return;
  verdict.sheetBend = effect.bend;
  AddRemark(verdict, Grade::WithCare, effect.reason, effect.advice);
}

void AssessCameras(const Solution& solution, RigVerdict& verdict) {
  if (!solution.estimated.intrinsics) return;
  for (size_t i = 0; i < solution.rig.cameras.size(); ++i) {
    verdict.cameras.push_back(AssessCamera(solution, i, [] { return std::string(); }));
    verdict.grade = std::max(verdict.grade, verdict.cameras.back().grade);
  }
}

}  // namespace

RigVerdict AssessRig(const Solution& solution) {
  RigVerdict verdict;
  verdict.grade = Grade::Good;
  Measure(solution, verdict);
  AssessPoses(solution, verdict);
  AssessAgreement(verdict, solution.views.size());
  AssessSheet(solution, verdict);
  if (EndedEarly(solution)) AddRemark(verdict, Grade::WithCare, EARLY_END, EARLY_END_ADVICE);
  AssessCameras(solution, verdict);
  AssessShapeOfRig(solution, verdict.sheet, verdict.remarks);
  return verdict;
}

}  // namespace velmora
