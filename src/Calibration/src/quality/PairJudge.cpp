/// Judges a computed pair of cameras.
#include "quality/PairJudge.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "foundation/Median.h"
#include "model/LensModel.h"
#include "quality/Disagreement.h"
#include "solver/BundleAdjustment.h"
#include "solver/Covariance.h"
#include "solver/DiscBias.h"
#include "solver/OpenCvMatrices.h"
#include "solver/RigStart.h"

namespace velmora {

namespace {

using Grade = PairVerdict::Grade;
using Deviations = PairVerdict::Deviations;

constexpr double DEGREES = 180.0 / CV_PI;
/// A direction that is off by 5 degrees leads a tenth of the disparity away from epipolar lines.
constexpr Deviations WORTHLESS = {1.0, 0.03, 5.0};
constexpr Deviations CAREFUL = {0.2, 0.01, 0.5};
constexpr double DISAGREEMENT = 2.5;  // jackknife over formal
constexpr double MOVED = 3.0;         // pictures of a view apart, in units of the noise
constexpr double MOVED_BESIDE = 3.0;  // the same over the median of all views
constexpr double MANY_MOVED = 0.25;   // share of the views
constexpr double APART = 5.0;         // the median of all views
constexpr int FEW_VIEWS = 8;

bool Beyond(const Deviations& deviations, const Deviations& limits) {
  return !(deviations.rotation <= limits.rotation) || !(deviations.baseline <= limits.baseline) ||
         !(deviations.direction <= limits.direction);
}

Deviations Larger(const Deviations& a, const Deviations& b) {
  return {std::max(a.rotation, b.rotation), std::max(a.baseline, b.baseline),
          std::max(a.direction, b.direction)};
}

constexpr double NOTHING = std::numeric_limits<double>::infinity();
constexpr Deviations UNKNOWN{NOTHING, NOTHING, NOTHING};

/// From the covariance whose last six rows are rotation and translation of the right camera.
Deviations DeviationsOf(const Eigen::MatrixXd& covariance, const cv::Vec3d& T) {
  if (covariance.size() == 0) return UNKNOWN;
  const Eigen::Matrix<double, 6, 6> own = covariance.bottomRightCorner<6, 6>();
  const Eigen::Vector3d along = Eigen::Vector3d(T[0], T[1], T[2]).normalized();
  const double length = cv::norm(T);
  const Eigen::Matrix3d translation = own.bottomRightCorner<3, 3>();
  const double onAxis = along.dot(translation * along);
  return {std::sqrt(own.topLeftCorner<3, 3>().trace()) * DEGREES, std::sqrt(onAxis) / length,
          std::sqrt(std::max(translation.trace() - onAxis, 0.0)) / length * DEGREES};
}

/// The result with the poses that fit it best, and the image points that count. Its equations are those of a
/// rig of which everything is estimated.
Solution SolutionOf(const PairRecords& records, const StereoIntrinsics& lenses,
                    const RigidTransform& rightFromLeft) {
  const solver::Target target =
      solver::PairTargetOf(records.objectPoints, records.leftPoints, records.rightPoints);
  CalibrationProblem start = solver::StartOf(solver::KnownPair(lenses, records.model), target.views);
  start.rig.cameras[1].cameraFromRig = rightFromLeft;
  const int parameters = LensModelOf(records.model).parameters;
  for (Camera& camera : start.rig.cameras) camera.intrinsics.estimated = parameters;
  Solution poses = solver::SolvePoses(start.rig, start.views);
  if (records.discRadius > 0.0 && poses.usable) {
    std::vector<TargetView> corrected =
        solver::WithoutDiscBias(start.views, start.rig, poses.views, records.discRadius);
    for (size_t i = 0; i < corrected.size(); ++i) corrected[i].rigFromTarget = poses.views[i].rigFromTarget;
    poses = solver::SolvePoses(start.rig, std::move(corrected));
  }
  Solution solution = solver::EvaluatedAt({poses.rig, poses.views, {}, {}});
  const int shared =
      records.lensesRefined ? LayoutOf(solution.rig, solution.estimated).shared : POSE_PARAMETERS;
  solution.priors =
      solver::WeakPriors(solution.rig, solution.views, NoiseVariance(solution.cost, solution.views, shared));
  solution.discRadius = records.discRadius;
  return solution;
}

void Measure(const Solution& solution, PairVerdict& verdict) {
  const cv::Vec3d& T = solution.rig.cameras[1].cameraFromRig.t;
  const int intrinsics = LayoutOf(solution.rig, solution.estimated).shared - POSE_PARAMETERS;
  const int first = verdict.lensesRefined ? 0 : intrinsics;
  verdict.formal = DeviationsOf(solver::SharedCovariance(solution, first), T);
  verdict.withLenses = DeviationsOf(solver::SharedCovariance(solution), T);
  verdict.jackknife = DeviationsOf(solver::JackknifeCovariance(solution, first), T);
  const std::vector<double> apart = DisagreementsOf(solution);
  verdict.disagreement = MedianOf(apart);
  for (size_t i = 0; i < apart.size(); ++i) {
    if (apart[i] > MOVED && apart[i] > MOVED_BESIDE * verdict.disagreement) {
      verdict.disagreements.push_back({i, apart[i]});
    }
  }
}

void Grant(PairVerdict& verdict, Grade grade, const char* reason, const char* advice) {
  verdict.grade = std::max(verdict.grade, grade);
  verdict.remarks.push_back({reason, advice});
}

/// The tilt of a full model's sensor can stand for a turn of its camera: rotation and direction are then
/// right with the lenses of the same result only, and say nothing about the pair.
Deviations BesideTilt(Deviations deviations, bool fullModel) {
  if (fullModel) deviations.rotation = deviations.direction = 0.0;
  return deviations;
}

void JudgeDeviations(bool fullModel, PairVerdict& verdict) {
  const char* const more = "Take more common views, tilted to all sides, near and far.";
  const Deviations known = Larger(verdict.formal, verdict.jackknife);
  if (Beyond(BesideTilt(known, fullModel && verdict.lensesRefined), WORTHLESS)) {
    Grant(verdict, Grade::Worthless, "The views do not determine how the cameras stand to each other.", more);
  } else if (Beyond(known, WORTHLESS)) {
    Grant(verdict, Grade::WithCare,
          "Rotation and translation are right together with the refined lenses only.",
          "Use the lenses of the same result, or choose the rational model.");
  } else if (Beyond(known, CAREFUL)) {
    Grant(verdict, Grade::WithCare, "Rotation or translation is known only roughly.", more);
  } else if (Beyond(BesideTilt(verdict.withLenses, fullModel), CAREFUL)) {
    Grant(verdict, Grade::WithCare,
          "The result is as good as the lenses that were given: these views would not show their errors.",
          "Make sure that the lenses come from more views, tilted to all sides, or take such views here.");
  }
}

/// Much more than the noise lets expect, and enough to matter.
bool IsDisagreement(double jackknife, double usual, double limit) {
  return jackknife > DISAGREEMENT * usual && jackknife > limit / 3.0;
}

void JudgeAgreement(PairVerdict& verdict) {
  const auto count = static_cast<double>(verdict.disagreements.size());
  if (count > MANY_MOVED * verdict.views) {
    Grant(verdict, Grade::Worthless,
          "The two pictures of many views do not show the sheet at the same place.",
          "Have both cameras take their pictures at the same time, and hold the sheet still.");
  } else if (count > 0.0) {
    Grant(verdict, Grade::WithCare, "The two pictures of a view do not show the sheet at the same place.",
          "Leave that view out: the sheet or a camera moved, or the pictures are not of the same time.");
  }
  const Deviations& jackknife = verdict.jackknife;
  // Lenses that these views do not determine at all are no measure of what is usual.
  const Deviations usual =
      Beyond(verdict.withLenses, WORTHLESS) ? verdict.formal : Larger(verdict.formal, verdict.withLenses);
  if (verdict.disagreement > APART || IsDisagreement(jackknife.rotation, usual.rotation, CAREFUL.rotation) ||
      IsDisagreement(jackknife.baseline, usual.baseline, CAREFUL.baseline) ||
      IsDisagreement(jackknife.direction, usual.direction, CAREFUL.direction)) {
    Grant(verdict, Grade::WithCare, "The views disagree more than noise explains.",
          "Check that the cameras are fixed to each other and take their pictures at the same time, that the "
          "sheet is flat, and that the lenses are those of these cameras.");
  }
  if (verdict.views < FEW_VIEWS) {
    Grant(verdict, Grade::WithCare, "There are few views: the deviations are themselves unsure.",
          "Take ten common views or more.");
  }
}

}  // namespace

PairVerdict JudgePair(const PairRecords& records, const StereoIntrinsics& lenses, const cv::Mat& R,
                      const cv::Mat& T) {
  PairVerdict verdict;
  if (R.empty() || T.empty() || lenses.K.empty() || lenses.KRight.empty() || records.objectPoints.empty()) {
    return verdict;
  }
  const Solution solution = SolutionOf(records, lenses, {cv::Matx33d(R), cv::Vec3d(T.ptr<double>())});
  verdict.grade = solution.usable ? Grade::Good : Grade::Worthless;
  verdict.views = static_cast<int>(records.objectPoints.size());
  verdict.lensesRefined = records.lensesRefined;
  if (!solution.usable) {
    verdict.formal = verdict.jackknife = verdict.withLenses = UNKNOWN;
    Grant(verdict, Grade::Worthless, "The views do not agree with this pair of cameras.",
          "Check that the result and the views belong together.");
    return verdict;
  }
  Measure(solution, verdict);
  JudgeDeviations(LensModelOf(records.model).parameters == FULL_PARAMETERS, verdict);
  JudgeAgreement(verdict);
  return verdict;
}

}  // namespace velmora
