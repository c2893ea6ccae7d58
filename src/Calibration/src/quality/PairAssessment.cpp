/// Assesses a computed pair of cameras.
#include "quality/PairAssessment.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <opencv2/core/eigen.hpp>
#include <set>
#include <string>
#include <utility>

#include "model/LensModel.h"
#include "quality/Disagreement.h"
#include "quality/EnlargedEquations.h"
#include "quality/PairCameras.h"
#include "quality/PoseDeviations.h"
#include "quality/RigEffect.h"
#include "quality/SheetRemarks.h"
#include "solver/BundleAdjustment.h"
#include "solver/Covariance.h"
#include "solver/Eccentricity.h"
#include "solver/OpenCvMatrices.h"
#include "solver/PoseGroups.h"
#include "solver/RigStart.h"

namespace velmora {

namespace {

using Grade = PairVerdict::Grade;
using Deviations = PairVerdict::Deviations;

constexpr double MANY_MOVED = 0.25;  // share of the views
constexpr double APART = 5.0;        // the median of all views
constexpr int FEW_VIEWS = 8;

/// The standard deviations of the right camera's pose, whose block is the last one of the shared parameters
/// but for the shape of the sheet.
Deviations OfRight(const Eigen::MatrixXd& covariance, Eigen::Index shape, const cv::Vec3d& T) {
  return DeviationsOf(covariance, covariance.rows() - shape - POSE_PARAMETERS, T);
}

/// Another solver's result with the poses that fit it best.
Solution PosesFor(const PairRecords& records, const StereoIntrinsics& pairIntrinsics,
                  const RigidTransform& rightFromLeft) {
  const solver::Target target =
      solver::PairTargetOf(records.objectPoints, records.leftPoints, records.rightPoints);
  CalibrationProblem start = solver::StartOf(solver::KnownPair(pairIntrinsics, records.model), target.views);
  start.rig.cameras[1].cameraFromRig = rightFromLeft;
  Solution poses = solver::SolvePoses(start.rig, start.views);
  if (records.discRadius == 0.0 || !poses.usable) return poses;
  std::vector<TargetView> corrected =
      solver::CorrectedForEccentricity(start.views, start.rig, poses.views, records.discRadius);
  for (size_t i = 0; i < corrected.size(); ++i) corrected[i].rigFromTarget = poses.views[i].rigFromTarget;
  return solver::SolvePoses(start.rig, std::move(corrected));
}

/// With the equations of a pair of which everything is estimated.
Solution SolutionOf(const PairRecords& records, const StereoIntrinsics& pairIntrinsics,
                    const RigidTransform& rightFromLeft) {
  Solution found =
      records.solution != nullptr ? *records.solution : PosesFor(records, pairIntrinsics, rightFromLeft);
  if (found.kept.empty()) {
    found.kept.resize(found.views.size());
    std::iota(found.kept.begin(), found.kept.end(), size_t{0});
  }
  if (found.estimated.intrinsics) return found;
  Rig rig = found.rig;
  for (Camera& camera : rig.cameras) {
    camera.imageSize = records.imageSize;  // computing poses did not ask for it
    camera.intrinsics.estimated = LensModelOf(records.model).parameters;
  }
  Solution solution = solver::EvaluatedAt({rig, found.views, {}, {}, found.sheet});
  solution.flat = found.flat;
  const double shared =
      (records.lensesRefined ? LayoutOf(solution).sheet : POSE_PARAMETERS) + solution.sheet.counted;
  solution.priors =
      solver::WeakPriors(solution.rig, solution.views, NoiseVariance(solution.cost, solution.views, shared));
  solution.kept = found.kept;
  solution.rejected = found.rejected;
  solution.recounted = found.recounted;
  return solution;
}

/// What errors of the held intrinsics do to the right camera's pose.
class HeldErrors {
 public:
  explicit HeldErrors(const Solution& solution) : layout_(LayoutOf(solution)) {
    const solver::ReducedSystem system = solver::SystemOf(solution);
    const Eigen::Index intrinsics = layout_.sheet - POSE_PARAMETERS;
    const Eigen::Index rest = layout_.shared - intrinsics;
    Eigen::MatrixXd byIntrinsics;
    if (!system.solvable || !SolveScaled(system.matrix.bottomRightCorner(rest, rest),
                                         system.matrix.bottomLeftCorner(rest, intrinsics), byIntrinsics)) {
      return;
    }
    poseByIntrinsics_ = byIntrinsics;
  }

  /// The covariance of the pose, and of what shape the sheet has, with that of both cameras' intrinsics.
  /// Unchanged where nothing is known of those, as of refined ones, which are in the covariance themselves.
  Eigen::MatrixXd In(const Eigen::MatrixXd& pose, const cv::Mat& left, const cv::Mat& right) const {
    const bool isKnown = !left.empty() || !right.empty();
    if (!isKnown || pose.rows() != poseByIntrinsics_.rows() || poseByIntrinsics_.size() == 0) return pose;
    const Eigen::Index intrinsics = poseByIntrinsics_.cols();
    Eigen::MatrixXd held = Eigen::MatrixXd::Zero(intrinsics, intrinsics);
    Fill(left, layout_.cameras[0], held);
    Fill(right, layout_.cameras[1], held);
    return pose + poseByIntrinsics_ * held * poseByIntrinsics_.transpose();
  }

 private:
  /// Both may be of another lens model: they share the first parameters.
  static void Fill(const cv::Mat& covariance, const Layout::Block& block, Eigen::MatrixXd& held) {
    Eigen::MatrixXd own;
    if (covariance.empty()) return;
    cv::cv2eigen(covariance, own);
    const Eigen::Index count = std::min<Eigen::Index>(block.count, own.rows());
    held.block(block.intrinsics, block.intrinsics, count, count) = own.topLeftCorner(count, count);
  }

  const Layout layout_;
  Eigen::MatrixXd poseByIntrinsics_;
};

void Measure(const Solution& solution, const PairRecords& records, PairVerdict& verdict) {
  const cv::Vec3d& T = solution.rig.cameras[1].cameraFromRig.t;
  const int intrinsics = LayoutOf(solution).sheet - POSE_PARAMETERS;
  const Eigen::Index shape = solution.sheet.terms.Count();
  const int first = verdict.lensesRefined ? 0 : intrinsics;
  const HeldErrors held(solution);
  const HeldIntrinsics none;
  const HeldIntrinsics& left = verdict.lensesRefined ? none : records.left;
  const HeldIntrinsics& right = verdict.lensesRefined ? none : records.right;
  verdict.lensesKnown = !left.formal.empty() && !right.formal.empty();
  verdict.formal =
      OfRight(held.In(solver::SharedCovariance(solution, first), left.formal, right.formal), shape, T);
  const Eigen::MatrixXd withLenses = solver::SharedCovariance(solution);
  verdict.withLenses = OfRight(withLenses, shape, T);
  verdict.left = PairCameraOf(solution, 0, withLenses, records.objectPoints.size());
  verdict.right = PairCameraOf(solution, 1, withLenses, records.objectPoints.size());
  verdict.jackknife = OfRight(
      held.In(solver::JackknifeCovariance(solution, first), left.jackknife, right.jackknife), shape, T);
  const std::vector<double> apart = DisagreementsOf(solution);
  verdict.disagreement = UsualDisagreement(apart);
  for (const PairVerdict::Disagreement& moved : MovedViews(apart)) {
    verdict.disagreements.push_back({solution.kept[moved.view], moved.factor});
  }
}

void CopyRejected(const Solution& solution, PairVerdict& verdict) {
  for (const Rejected& rejected : solution.rejected) {
    verdict.leftOut.push_back(
        {rejected.view, rejected.camera == 1, rejected.point, rejected.residual, rejected.reason});
  }
  for (const Recounted& image : solution.recounted) {
    verdict.recounted.push_back({image.view, image.camera == 1});
  }
  const std::vector<size_t> groups = solver::GroupsOf(solution.views, solution.rig);
  std::set<size_t> poses;
  for (size_t i = 0; i < solution.views.size(); ++i) {
    const auto& images = solution.views[i].observations;
    if (images[0].IsEmpty() || images[1].IsEmpty()) continue;
    ++verdict.views;
    poses.insert(groups[i]);
  }
  verdict.poses = static_cast<int>(poses.size());
}

void AssessSheet(const Solution& solution, PairVerdict& verdict) {
  if (verdict.grade == Grade::Worthless) return;
  const SheetEffect effect = EffectOnRig(solution, {"the left camera", "the right camera"});
  if (effect.reason.empty()) return;
  verdict.sheetBend = effect.bend;
  verdict.grade = std::max(verdict.grade, Grade::WithCare);
  verdict.remarks.push_back({effect.reason, effect.advice});
}

void AddRemark(PairVerdict& verdict, Grade grade, const std::string& reason, const char* advice) {
  verdict.grade = std::max(verdict.grade, grade);
  verdict.remarks.push_back({reason, advice});
}

/// The tilt of a full model's sensor can stand for a rotation of its camera: rotation and direction are then
/// right with the intrinsics of the same result only, and say nothing about the pair.
Deviations BesideTilt(Deviations deviations, bool fullModel) {
  if (fullModel) deviations.rotation = deviations.direction = 0.0;
  return deviations;
}

void AssessDeviations(bool fullModel, PairVerdict& verdict) {
  const char* const more = "Take more common views, tilted to all sides, near and far.";
  const Deviations known = Larger(verdict.formal, verdict.jackknife);
  if (Beyond(BesideTilt(known, fullModel && verdict.lensesRefined), WORTHLESS_POSE)) {
    AddRemark(verdict, Grade::Worthless, "The views do not determine how the cameras stand to each other.",
              more);
  } else if (Beyond(known, WORTHLESS_POSE)) {
    AddRemark(verdict, Grade::WithCare,
              "Rotation and translation are right together with the refined lenses only.",
              "Use the lenses of the same result, or choose the rational model.");
  } else if (Beyond(known, CAREFUL_POSE)) {
    AddRemark(verdict, Grade::WithCare, "Rotation or translation is known only roughly.", more);
  } else if (!verdict.lensesKnown && Beyond(BesideTilt(verdict.withLenses, fullModel), CAREFUL_POSE)) {
    AddRemark(
        verdict, Grade::WithCare,
        "The result is as good as the lenses that were given: these views would not show their errors.",
        "Make sure that the lenses come from more views, tilted to all sides, or take such views here.");
  }
}

void AssessAgreement(PairVerdict& verdict) {
  const auto count = static_cast<double>(verdict.disagreements.size());
  if (count > MANY_MOVED * verdict.views) {
    AddRemark(verdict, Grade::Worthless,
              "The two pictures of many views do not show the sheet at the same place.",
              "Have both cameras take their pictures at the same time, and hold the sheet still.");
  } else if (count > 0.0) {
    AddRemark(verdict, Grade::WithCare, "The two pictures of a view do not show the sheet at the same place.",
              "Leave that view out: the sheet or a camera moved, or the pictures are not of the same time.");
  }
  const Deviations& jackknife = verdict.jackknife;
  // Intrinsics that these views do not determine at all are no measure of what is usual.
  const Deviations usual = Beyond(verdict.withLenses, WORTHLESS_POSE)
                               ? verdict.formal
                               : Larger(verdict.formal, verdict.withLenses);
  if (verdict.disagreement > APART || Disagrees(jackknife, usual)) {
    AddRemark(
        verdict, Grade::WithCare, "The views disagree more than noise explains.",
        "Check that the cameras are fixed to each other and take their pictures at the same time, that the "
        "sheet is flat, and that the lenses are those of these cameras.");
  }
  if (verdict.views < FEW_VIEWS) {
    AddRemark(verdict, Grade::WithCare, "There are few views: the deviations are themselves unsure.",
              "Take ten common views or more.");
  } else if (verdict.poses < FEW_VIEWS) {
    AddRemark(verdict, Grade::WithCare,
              "There are " + std::to_string(verdict.views) + " views, but only " +
                  std::to_string(verdict.poses) + " different poses: the deviations are themselves unsure.",
              "Take ten common poses or more.");
  }
}

}  // namespace

PairVerdict AssessPair(const PairRecords& records, const StereoIntrinsics& pairIntrinsics, const cv::Mat& R,
                       const cv::Mat& T) {
  PairVerdict verdict;
  if (R.empty() || T.empty() || pairIntrinsics.K.empty() || pairIntrinsics.KRight.empty() ||
      records.objectPoints.empty()) {
    return verdict;
  }
  const Solution solution = SolutionOf(records, pairIntrinsics, {cv::Matx33d(R), cv::Vec3d(T.ptr<double>())});
  verdict.grade = solution.usable ? Grade::Good : Grade::Worthless;
  CopyRejected(solution, verdict);
  verdict.lensesRefined = records.lensesRefined;
  if (!solution.usable) {
    verdict.formal = verdict.jackknife = verdict.withLenses = UNKNOWN_POSE;
    verdict.left = verdict.right = PairCameraOf(solution, 0, {}, records.objectPoints.size());
    AddRemark(verdict, Grade::Worthless, "The views do not agree with this pair of cameras.",
              "Check that the result and the views belong together.");
    return verdict;
  }
  Measure(solution, records, verdict);
  AssessDeviations(LensModelOf(records.model).parameters == FULL_PARAMETERS, verdict);
  AssessAgreement(verdict);
  AssessSheet(solution, verdict);
  std::vector<CalibrationVerdict::Remark> remarks;
  AssessShapeOfRig(solution, verdict.sheet, remarks);
  for (const CalibrationVerdict::Remark& remark : remarks) {
    verdict.remarks.push_back({remark.reason, remark.advice});
  }
  const cv::Vec3d middle =
      solver::PairTargetOf(records.objectPoints, records.leftPoints, records.rightPoints).middles.front();
  for (cv::Point3d& point : verdict.sheet.points) point += cv::Point3d(middle);
  return verdict;
}

}  // namespace velmora
